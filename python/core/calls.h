// SPDX-License-Identifier: MIT
//
// Between C++ and Python: types, and failures as Python's exceptions.
#ifndef QPSREADER_PYTHON_CALLS_H
#define QPSREADER_PYTHON_CALLS_H

#include "python/core/python_api.h"

#include <memory>
#include <new>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "python/core/cell_table.h"

namespace qps::python {

// Sets the exception of the package that stands for the error's reason; "NAME: message".
void raise(const Error& error, const char* name) noexcept;
// The same where an allocation failed.
void raiseNoMemory(const char* name) noexcept;

// What `work` returns, or null with Python's error set where it throws. `name` is the notebook's,
// for messages.
template <class Work>
PyObject* guarded(const char* name, Work&& work) {
  try {
    return std::forward<Work>(work)();
  } catch (const PythonError&) {
  } catch (const ReadFailure& failure) {
    raise(failure.error, name);
  } catch (const std::bad_alloc&) {
    raiseNoMemory(name);
  }
  return nullptr;
}

// A C++ value inside a Python object.
template <class Value>
struct Wrapped {
  PyObject_HEAD;
  Value* value;
};

template <class Value>
Value& valueOf(PyObject* object) {
  return *reinterpret_cast<Wrapped<Value>*>(object)->value;
}

// A new object of `type`, or null with Python's error set. Throws std::bad_alloc.
template <class Value>
PyObject* wrap(PyObject* type, Value value) {
  auto held = std::make_unique<Value>(std::move(value));
  PyObject* const object = PyType_GenericAlloc(reinterpret_cast<PyTypeObject*>(type), 0);
  if (object != nullptr) reinterpret_cast<Wrapped<Value>*>(object)->value = held.release();
  return object;
}

template <class Value>
void destroy(PyObject* object) {
  PyTypeObject* const type = Py_TYPE(object);
  delete reinterpret_cast<Wrapped<Value>*>(object)->value;
  reinterpret_cast<freefunc>(PyType_GetSlot(type, Py_tp_free))(object);
  Py_DECREF(type);
}

// Adds a type to the module; null with Python's error set when that fails. Borrowed: the module
// lives as long as the process.
PyObject* addType(PyObject* module, PyType_Spec& spec);

PyObject* newText(std::optional<std::string_view> utf8);  // None without a text

// The same for a function pointer that Python takes as a void pointer or as another function's.
template <class To, class From>
To slot(From function) {
  return reinterpret_cast<To>(reinterpret_cast<void*>(function));
}

}  // namespace qps::python

#endif  // QPSREADER_PYTHON_CALLS_H
