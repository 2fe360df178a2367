// SPDX-License-Identifier: MIT
//
// The extension module qpsreader._core: what the Python code of the package cannot do itself. It
// opens notebooks and turns worksheets into columns; the package's face is in qpsreader/*.py.
#include "python/core/python_api.h"

#include <qpsreader/version.h>
#include "python/core/cells_object.h"
#include "python/core/notebook_object.h"

namespace {

PyMethodDef kFunctions[] = {
    {"arrow_stream", qps::python::arrowStream, METH_O, nullptr},
    {},
};

PyModuleDef coreModule = {
    PyModuleDef_HEAD_INIT,
    "qpsreader._core",
    nullptr,
    -1,
    kFunctions,
    nullptr,
    nullptr,
    nullptr,
    nullptr,
};

}  // namespace

// NOLINTNEXTLINE(readability-identifier-naming): Python looks for this name
PyMODINIT_FUNC PyInit__core() {
  using namespace qps::python;
  Object module(PyModule_Create(&coreModule));
  if (!module || !addCellsTypes(module.get()) || !addNotebookType(module.get()) ||
      PyModule_AddStringConstant(module.get(), "version", QPSREADER_VERSION_STRING) < 0)
    return nullptr;
  return module.release();
}
