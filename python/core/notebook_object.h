// SPDX-License-Identifier: MIT
//
// The Python type qpsreader._core.Notebook: a qps::Notebook that any thread may call, one at a
// time, without the GIL while it works.
#ifndef QPSREADER_PYTHON_NOTEBOOK_OBJECT_H
#define QPSREADER_PYTHON_NOTEBOOK_OBJECT_H

#include "python/core/python_api.h"

namespace qps::python {

bool addNotebookType(PyObject* module);

}  // namespace qps::python

#endif  // QPSREADER_PYTHON_NOTEBOOK_OBJECT_H
