// SPDX-License-Identifier: MIT
#include "python/core/calls.h"

#include "python/core/notebook_object.h"

#include <array>
#include <chrono>
#include <filesystem>
#include <memory>
#include <mutex>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include <qpsreader/host/notebook.hpp>
#include "python/core/cells_object.h"

namespace qps::python {
namespace {

// Everything that a notebook's calls share. Whoever waits for the mutex does not hold the GIL, so
// that the one who has it may take the GIL (Decoder).
struct OpenNotebook {
  OpenNotebook(std::string filename, Decoder texts)
      : name(std::move(filename)), decoder(std::move(texts)) {}

  std::string name;  // for messages, as the file system has it
  Decoder decoder;
  std::shared_ptr<Budget> budget = std::make_shared<Budget>();
  Object bytes;  // of a notebook in memory; its owner
  std::mutex mutex;
  std::optional<Notebook> notebook;  // none after close
  std::vector<bool> wasRead;         // worksheets; reading one again is not the file's doing
};
using Handle = std::unique_ptr<OpenNotebook>;

struct Closed {};

// Runs `work` on the notebook without the GIL and makes a Python object of its result.
template <class Work, class Make>
PyObject* call(PyObject* self, Work&& work, Make&& make) {
  OpenNotebook& open = *valueOf<Handle>(self);
  try {
    return guarded(open.name.c_str(), [&]() -> PyObject* {
      auto result = [&] {
        const GilReleased noGil;
        const std::lock_guard lock(open.mutex);
        if (!open.notebook) throw Closed();
        return work(open, *open.notebook);
      }();
      return make(std::move(result));
    });
  } catch (const Closed&) {
    PyErr_SetString(PyExc_ValueError, "the notebook is closed");
    return nullptr;
  }
}

std::vector<std::string> sheetNames(const OpenNotebook& open, const Notebook& notebook) {
  std::vector<std::string> names;
  for (const Sheet& sheet : notebook.sheets())
    names.push_back(open.decoder.decode(sheet.name));
  return names;
}

PyObject* newTextList(const std::vector<std::string>& texts) {
  Object list(PyList_New(0));
  for (const std::string& text : texts) {
    const Object item(newText(text));
    if (!list || !item || PyList_Append(list.get(), item.get()) < 0) return nullptr;
  }
  return list.release();
}

PyObject* names(PyObject* self, PyObject*) {
  return call(self, sheetNames, newTextList);
}

// read(index, salvage)
PyObject* readSheet(PyObject* self, PyObject* arguments) {
  Py_ssize_t index = 0;
  int salvage = 0;
  if (PyArg_ParseTuple(arguments, "np", &index, &salvage) == 0) return nullptr;
  return call(
      self,
      [&](OpenNotebook& open, const Notebook& notebook) -> std::shared_ptr<const CellTable> {
        const auto sheets = notebook.sheets();
        const auto at = static_cast<std::size_t>(index);
        if (at >= sheets.size()) return nullptr;
        open.wasRead.resize(sheets.size());
        auto table = readTable(notebook, sheets[at], open.decoder, open.budget, !open.wasRead[at]);
        open.wasRead[at] = true;
        if (!table->damage.empty() && salvage == 0)
          throw ReadFailure{{Reason::kDamaged, table->damage}};
        return table;
      },
      [](std::shared_ptr<const CellTable> table) -> PyObject* {
        if (table) return newCells(std::move(table));
        PyErr_SetString(PyExc_IndexError, "there is no such worksheet");
        return nullptr;
      });
}

// The notebook's own texts stand before the first cell of every worksheet.
PyObject* texts(PyObject* self, PyObject*) {
  return call(
      self,
      [](const OpenNotebook& open, const Notebook& notebook) {
        std::vector<std::string> found;
        auto items = notebook.items(notebook.sheets().front());
        for (const Item& item : items) {
          if (item.kind() == Item::Kind::kCell) break;
          if (const auto text = item.notebookText()) found.push_back(open.decoder.decode(*text));
        }
        return found;
      },
      newTextList);
}

template <auto find>
PyObject* messageOf(PyObject* self, PyObject*) {
  return call(
      self, [](const OpenNotebook&, const Notebook& notebook) { return (notebook.*find)(); },
      [](const std::optional<Error>& error) {
        return newText(error ? std::optional<std::string_view>(error->message) : std::nullopt);
      });
}

PyObject* facts(PyObject* self, PyObject*) {
  return call(
      self, [](const OpenNotebook&, const Notebook& notebook) { return notebook.facts(); },
      [](const NotebookFacts& facts) {
        return Py_BuildValue("(sssIIIII)", fileKindName(facts.kind), fileKindMimeType(facts.kind),
                             facts.containerStream, static_cast<unsigned>(facts.formatVersion),
                             facts.fontCount, facts.styleCount, facts.namedStyleCount,
                             facts.userFormatCount);
      });
}

PyObject* memoryInUse(PyObject* self, PyObject*) {
  return call(
      self,
      [](const OpenNotebook& open, const Notebook& notebook) {
        return open.budget->held + notebook.memoryInUse();
      },
      PyLong_FromSize_t);
}

PyObject* close(PyObject* self, PyObject*) {
  OpenNotebook& open = *valueOf<Handle>(self);
  {
    const GilReleased noGil;
    const std::lock_guard lock(open.mutex);
    open.notebook.reset();
  }
  open.bytes.reset();
  Py_RETURN_NONE;
}

std::optional<std::array<std::string, 256>> characters(PyObject* list) {
  std::array<std::string, 256> single;
  for (std::size_t byte = 0; byte < single.size(); ++byte) {
    PyObject* const item = PyList_GetItem(list, static_cast<Py_ssize_t>(byte));
    Py_ssize_t size = 0;
    const char* const utf8 = item != nullptr ? PyUnicode_AsUTF8AndSize(item, &size) : nullptr;
    if (utf8 == nullptr) return std::nullopt;
    single[byte].assign(utf8, static_cast<std::size_t>(size));
  }
  return single;
}

// Opens from `bytes`, or from the file where that is null.
std::optional<Error> openInto(OpenNotebook& open, std::span<const char> bytes, bool inMemory,
                              bool salvage) {
  const OpenOptions options{.memoryLimit = open.budget->limit, .salvage = salvage};
  auto notebook = inMemory ? Notebook::openBytes(bytes, options)
                           : Notebook::open(std::filesystem::path(open.name), options);
  if (!notebook) return notebook.error();
  open.notebook.emplace(*std::move(notebook));
  return std::nullopt;
}

// Notebook(name: bytes, content: bytes | None, encoding: str, multibyte: bool,
//          characters: list[str], memory_limit: int, time_limit: float, salvage: bool)
PyObject* newNotebook(PyTypeObject* type, PyObject* arguments, PyObject*) {
  const char* name = nullptr;
  const char* encoding = nullptr;
  PyObject* content = nullptr;
  PyObject* list = nullptr;
  int multibyte = 0;
  Py_ssize_t limit = 0;
  double seconds = 0;
  int salvage = 0;
  if (PyArg_ParseTuple(arguments, "yOspOndp", &name, &content, &encoding, &multibyte, &list, &limit,
                       &seconds, &salvage) == 0)
    return nullptr;
  char* data = nullptr;
  Py_ssize_t size = 0;
  const bool inMemory = content != Py_None;
  if (inMemory && PyBytes_AsStringAndSize(content, &data, &size) < 0) return nullptr;

  return guarded(name, [&]() -> PyObject* {
    auto single = characters(list);
    if (!single) return nullptr;
    auto open =
        std::make_unique<OpenNotebook>(name, Decoder(encoding, multibyte != 0, *std::move(single)));
    open->budget->limit = static_cast<std::size_t>(limit);
    open->budget->timeLimit = std::chrono::duration_cast<std::chrono::nanoseconds>(
        std::chrono::duration<double>(seconds));
    if (inMemory) open->bytes.reset(Py_NewRef(content));
    const auto error = [&] {
      const GilReleased noGil;
      return openInto(*open, {data, static_cast<std::size_t>(size)}, inMemory, salvage != 0);
    }();
    if (error) throw ReadFailure{*error};
    return wrap<Handle>(reinterpret_cast<PyObject*>(type), std::move(open));
  });
}

PyMethodDef kMethods[] = {
    {"names", names, METH_NOARGS, nullptr},
    {"read", readSheet, METH_VARARGS, nullptr},
    {"texts", texts, METH_NOARGS, nullptr},
    {"damage", messageOf<&Notebook::damage>, METH_NOARGS, nullptr},
    {"suspicion", messageOf<&Notebook::suspicion>, METH_NOARGS, nullptr},
    {"facts", facts, METH_NOARGS, nullptr},
    {"memory_in_use", memoryInUse, METH_NOARGS, nullptr},
    {"close", close, METH_NOARGS, nullptr},
    {},
};

PyType_Slot kSlots[] = {
    {Py_tp_new, slot<void*>(newNotebook)},
    {Py_tp_dealloc, slot<void*>(destroy<Handle>)},
    {Py_tp_methods, kMethods},
    {},
};
PyType_Spec kSpec = {"qpsreader._core.Notebook", sizeof(Wrapped<Handle>), 0, Py_TPFLAGS_DEFAULT,
                     kSlots};

}  // namespace

bool addNotebookType(PyObject* module) {
  return addType(module, kSpec) != nullptr;
}

}  // namespace qps::python
