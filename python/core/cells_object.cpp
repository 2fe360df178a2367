// SPDX-License-Identifier: MIT
#include "python/core/calls.h"

#include "python/core/cells_object.h"

#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <qpsreader/host/item.hpp>
#include "python/core/arrow_stream.h"

namespace qps::python {
namespace {

using Table = std::shared_ptr<const CellTable>;

const CellTable& tableOf(PyObject* self) {
  return *valueOf<Table>(self);
}

// One column of a table, for the buffer protocol.
struct Buffer {
  Table table;
  const void* data = nullptr;
  const char* format = "";  // of the struct module
  Py_ssize_t itemBytes = 0;
  Py_ssize_t count = 0;
};

constexpr const char* kNoName = "cells";  // for messages, where the notebook's is not known

PyObject* bufferType = nullptr;
PyObject* cellsType = nullptr;

int getBuffer(PyObject* self, Py_buffer* view, int flags) {
  Buffer& buffer = valueOf<Buffer>(self);
  // Of an empty column too a pointer that is not null.
  void* const data = buffer.count > 0 ? const_cast<void*>(buffer.data) : &buffer;
  if (PyBuffer_FillInfo(view, self, data, buffer.count * buffer.itemBytes, 1, flags) < 0) return -1;
  view->itemsize = buffer.itemBytes;
  if ((flags & PyBUF_FORMAT) == PyBUF_FORMAT) view->format = const_cast<char*>(buffer.format);
  if ((flags & PyBUF_ND) == PyBUF_ND) view->shape = &buffer.count;
  if ((flags & PyBUF_STRIDES) == PyBUF_STRIDES) view->strides = &buffer.itemBytes;
  return 0;
}

template <class T>
constexpr const char* kStructFormat = nullptr;
template <>
constexpr const char* kStructFormat<std::uint8_t> = "B";
template <>
constexpr const char* kStructFormat<std::uint16_t> = "H";
template <>
constexpr const char* kStructFormat<std::uint32_t> = "I";
template <>
constexpr const char* kStructFormat<std::int64_t> = "q";
template <>
constexpr const char* kStructFormat<double> = "d";

template <auto Column>
PyObject* getColumn(PyObject* self, void*) {
  const Table& table = valueOf<Table>(self);
  const auto& values = (*table).*Column;
  using Value = typename std::remove_cvref_t<decltype(values)>::value_type;
  return guarded(kNoName, [&] {
    const Object buffer(wrap(bufferType, Buffer{table, values.data(), kStructFormat<Value>,
                                                static_cast<Py_ssize_t>(sizeof(Value)),
                                                static_cast<Py_ssize_t>(values.size())}));
    return buffer ? PyMemoryView_FromObject(buffer.get()) : nullptr;
  });
}

// A list with one object a row; `make` returns a new reference or null.
template <class Make>
PyObject* newList(std::size_t count, Make&& make) {
  Object list(PyList_New(static_cast<Py_ssize_t>(count)));
  for (std::size_t at = 0; list && at < count; ++at) {
    PyObject* const row = make(at);
    if (row == nullptr) return nullptr;
    PyList_SetItem(list.get(), static_cast<Py_ssize_t>(at), row);
  }
  return list.release();
}

template <TextColumn CellTable::*Column>
PyObject* listTexts(PyObject* self, PyObject*) {
  const CellTable& table = tableOf(self);
  return newList(table.size(), [&](std::size_t at) { return newText((table.*Column)[at]); });
}

template <std::vector<Run> CellTable::*Column>
PyObject* listRuns(PyObject* self, PyObject*) {
  const std::vector<Run>& runs = tableOf(self).*Column;
  return newList(runs.size(), [&](std::size_t at) {
    return Py_BuildValue("(III)", runs[at].first, runs[at].last, runs[at].size);
  });
}

// The argument as the number of a cell, or none with IndexError set.
std::optional<std::size_t> cellNumber(PyObject* self, PyObject* argument) {
  const std::size_t at = PyLong_AsSize_t(argument);
  if (PyErr_Occurred() != nullptr) return std::nullopt;
  if (at < tableOf(self).size()) return at;
  PyErr_SetString(PyExc_IndexError, "there is no such cell");
  return std::nullopt;
}

template <TextColumn CellTable::*Column>
PyObject* textOf(PyObject* self, PyObject* argument) {
  const auto at = cellNumber(self, argument);
  return at ? newText((tableOf(self).*Column)[*at]) : nullptr;
}

PyObject* isFormula(PyObject* self, PyObject* argument) {
  const auto at = cellNumber(self, argument);
  return at ? PyBool_FromLong(tableOf(self).isFormula[*at]) : nullptr;
}

PyObject* find(PyObject* self, PyObject* arguments) {
  unsigned int row = 0, column = 0;
  if (PyArg_ParseTuple(arguments, "II", &row, &column) == 0) return nullptr;
  return guarded(kNoName, [&]() -> PyObject* {
    const auto at = tableOf(self).find(row, column);
    if (!at) Py_RETURN_NONE;
    return PyLong_FromSize_t(*at);
  });
}

Py_ssize_t cellCount(PyObject* self) {
  return static_cast<Py_ssize_t>(tableOf(self).size());
}

PyObject* getSize(PyObject* self, void*) {
  const CellTable& table = tableOf(self);
  return Py_BuildValue("(II)", table.lastRow, table.lastColumn);
}

PyObject* getDefaults(PyObject* self, void*) {
  const SheetInfo& info = tableOf(self).info;
  return Py_BuildValue("(II)", info.defaultColumnWidth, info.defaultRowHeight);
}

PyObject* getDamage(PyObject* self, void*) {
  const std::string& damage = tableOf(self).damage;
  return newText(damage.empty() ? std::nullopt : std::optional<std::string_view>(damage));
}

// (format, style): the arguments of the package's classes of these names.
PyObject* newLook(const Look& look) {
  const CellStyle style = CellView(look.item).style();
  const auto colour = [](SSColour value) {
    return value == SS_NO_COLOUR ? Py_NewRef(Py_None) : PyLong_FromUnsignedLong(value);
  };
  const Object borders(newList(style.borders.size(), [&](std::size_t side) {
    const Border& border = style.borders[side];
    return Py_BuildValue("(BN)", static_cast<unsigned>(border.line), colour(border.colour));
  }));
  if (!borders) return nullptr;
  const Object font(style.font ? Py_BuildValue("(y#INNNN)", style.font->name.data(),
                                               static_cast<Py_ssize_t>(style.font->name.size()),
                                               style.font->size, PyBool_FromLong(style.font->bold),
                                               PyBool_FromLong(style.font->italic),
                                               PyBool_FromLong(style.font->underline),
                                               PyBool_FromLong(style.font->strikeOut))
                               : Py_NewRef(Py_None));
  if (!font) return nullptr;
  return Py_BuildValue(
      "((BBNNN)(NBBNNOO))", look.format.code, look.format.decimals,
      newText(look.formatText ? std::optional<std::string_view>(*look.formatText) : std::nullopt),
      PyBool_FromLong(look.format.showsDate), PyBool_FromLong(look.format.showsTime),
      newText(look.styleName), static_cast<unsigned>(style.horizontal),
      static_cast<unsigned>(style.vertical), colour(style.fillColour), colour(style.textColour),
      borders.get(), font.get());
}

PyObject* listLooks(PyObject* self, PyObject*) {
  const std::vector<Look>& looks = tableOf(self).looks;
  return newList(looks.size(), [&](std::size_t at) { return newLook(looks[at]); });
}

void releaseCapsule(PyObject* capsule) {
  auto* const stream =
      static_cast<ArrowArrayStream*>(PyCapsule_GetPointer(capsule, "arrow_array_stream"));
  if (stream->release != nullptr) stream->release(stream);
  delete stream;
}

PyObject* newStreamCapsule(std::vector<NamedTable> tables) {
  auto stream = std::make_unique<ArrowArrayStream>();
  exportStream(std::move(tables), *stream);
  PyObject* const capsule = PyCapsule_New(stream.get(), "arrow_array_stream", releaseCapsule);
  if (capsule == nullptr) {
    stream->release(stream.get());
    return nullptr;
  }
  static_cast<void>(stream.release());  // the capsule's now
  return capsule;
}

PyMethodDef kCellsMethods[] = {
    {"strings", listTexts<&CellTable::string>, METH_NOARGS, nullptr},
    {"texts", listTexts<&CellTable::text>, METH_NOARGS, nullptr},
    {"looks", listLooks, METH_NOARGS, nullptr},
    {"widths", listRuns<&CellTable::widths>, METH_NOARGS, nullptr},
    {"heights", listRuns<&CellTable::heights>, METH_NOARGS, nullptr},
    {"string", textOf<&CellTable::string>, METH_O, nullptr},
    {"text", textOf<&CellTable::text>, METH_O, nullptr},
    {"is_formula", isFormula, METH_O, nullptr},
    {"find", find, METH_VARARGS, nullptr},
    {},
};

PyGetSetDef kCellsProperties[] = {
    {"row", getColumn<&CellTable::row>, nullptr, nullptr, nullptr},
    {"column", getColumn<&CellTable::column>, nullptr, nullptr, nullptr},
    {"kind", getColumn<&CellTable::kind>, nullptr, nullptr, nullptr},
    {"number", getColumn<&CellTable::number>, nullptr, nullptr, nullptr},
    {"when", getColumn<&CellTable::when>, nullptr, nullptr, nullptr},
    {"look", getColumn<&CellTable::look>, nullptr, nullptr, nullptr},
    {"size", getSize, nullptr, nullptr, nullptr},
    {"defaults", getDefaults, nullptr, nullptr, nullptr},
    {"damage", getDamage, nullptr, nullptr, nullptr},
    {},
};

PyType_Slot kCellsSlots[] = {
    {Py_tp_dealloc, slot<void*>(destroy<Table>)},
    {Py_tp_methods, kCellsMethods},
    {Py_tp_getset, kCellsProperties},
    {Py_mp_length, slot<void*>(cellCount)},
    {},
};
PyType_Spec kCellsSpec = {"qpsreader._core.Cells", sizeof(Wrapped<Table>), 0,
                          Py_TPFLAGS_DEFAULT | Py_TPFLAGS_DISALLOW_INSTANTIATION, kCellsSlots};

PyType_Slot kBufferSlots[] = {
    {Py_tp_dealloc, slot<void*>(destroy<Buffer>)},
    {Py_bf_getbuffer, slot<void*>(getBuffer)},
    {},
};
PyType_Spec kBufferSpec = {"qpsreader._core.Buffer", sizeof(Wrapped<Buffer>), 0,
                           Py_TPFLAGS_DEFAULT | Py_TPFLAGS_DISALLOW_INSTANTIATION, kBufferSlots};

}  // namespace

bool addCellsTypes(PyObject* module) {
  bufferType = addType(module, kBufferSpec);
  cellsType = bufferType != nullptr ? addType(module, kCellsSpec) : nullptr;
  return cellsType != nullptr;
}

PyObject* newCells(std::shared_ptr<const CellTable> table) {
  return wrap(cellsType, std::move(table));
}

PyObject* arrowStream(PyObject*, PyObject* sheets) {
  return guarded(kNoName, [&]() -> PyObject* {
    std::vector<NamedTable> tables;
    const Py_ssize_t count = PyList_Size(sheets);
    for (Py_ssize_t at = 0; at < count; ++at) {
      const char* name = nullptr;
      Py_ssize_t bytes = 0;
      PyObject* cells = nullptr;
      if (PyArg_ParseTuple(PyList_GetItem(sheets, at), "s#O!", &name, &bytes, cellsType, &cells) ==
          0)
        return nullptr;
      tables.push_back({std::string(name, static_cast<std::size_t>(bytes)), valueOf<Table>(cells)});
    }
    return count < 0 ? nullptr : newStreamCapsule(std::move(tables));
  });
}

}  // namespace qps::python
