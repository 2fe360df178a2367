// SPDX-License-Identifier: MIT
//
// Python's limited C API (one binary for every Python from 3.11 on) and owners for what it hands
// out. Included before any other header, as Python asks.
#ifndef QPSREADER_PYTHON_PYTHON_API_H
#define QPSREADER_PYTHON_PYTHON_API_H

#define PY_SSIZE_T_CLEAN
#include <Python.h>

#include <memory>

namespace qps::python {

struct DropReference {
  void operator()(PyObject* object) const { Py_DECREF(object); }
};
using Object = std::unique_ptr<PyObject, DropReference>;  // a reference that is ours

class GilHeld {
 public:
  GilHeld() : state_(PyGILState_Ensure()) {}
  GilHeld(const GilHeld&) = delete;
  GilHeld& operator=(const GilHeld&) = delete;
  ~GilHeld() { PyGILState_Release(state_); }

 private:
  PyGILState_STATE state_;
};

class GilReleased {
 public:
  GilReleased() : state_(PyEval_SaveThread()) {}
  GilReleased(const GilReleased&) = delete;
  GilReleased& operator=(const GilReleased&) = delete;
  ~GilReleased() { PyEval_RestoreThread(state_); }

 private:
  PyThreadState* state_;
};

}  // namespace qps::python

#endif  // QPSREADER_PYTHON_PYTHON_API_H
