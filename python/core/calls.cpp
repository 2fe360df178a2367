// SPDX-License-Identifier: MIT
#include "python/core/calls.h"

namespace qps::python {

void raise(const Error& error, const char* name) noexcept try {
  const Object errors(PyImport_ImportModule("qpsreader._errors"));
  if (!errors) return;
  const Object classes(PyObject_GetAttrString(errors.get(), "BY_REASON"));
  if (!classes) return;
  PyObject* const type = PyDict_GetItemString(classes.get(), reasonName(error.reason));
  // A file name may hold any bytes.
  const std::string message = std::string(name) + ": " + error.message;
  const Object text(PyUnicode_DecodeUTF8(message.data(), static_cast<Py_ssize_t>(message.size()),
                                         "surrogateescape"));
  if (type != nullptr && text) PyErr_SetObject(type, text.get());
} catch (const std::bad_alloc&) {
  PyErr_NoMemory();
}

void raiseNoMemory(const char* name) noexcept try {
  raise(memoryLimitError(), name);
} catch (const std::bad_alloc&) {
  PyErr_NoMemory();
}

PyObject* addType(PyObject* module, PyType_Spec& spec) {
  Object type(PyType_FromSpec(&spec));
  const std::string_view name(spec.name);
  if (!type ||
      PyModule_AddObjectRef(module, name.substr(name.rfind('.') + 1).data(), type.get()) < 0)
    return nullptr;
  return type.release();
}

PyObject* newText(std::optional<std::string_view> utf8) {
  if (!utf8) Py_RETURN_NONE;
  return PyUnicode_DecodeUTF8(utf8->data(), static_cast<Py_ssize_t>(utf8->size()), "replace");
}

}  // namespace qps::python
