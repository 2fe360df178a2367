// SPDX-License-Identifier: MIT
//
// The Python type qpsreader._core.Cells: a CellTable with its columns as buffers.
#ifndef QPSREADER_PYTHON_CELLS_OBJECT_H
#define QPSREADER_PYTHON_CELLS_OBJECT_H

#include "python/core/python_api.h"

#include <memory>

#include "python/core/cell_table.h"

namespace qps::python {

bool addCellsTypes(PyObject* module);

// Null with Python's error set when that fails.
PyObject* newCells(std::shared_ptr<const CellTable> table);

// arrow_stream([(name, cells), ...]): a capsule with an ArrowArrayStream.
PyObject* arrowStream(PyObject* module, PyObject* sheets);

}  // namespace qps::python

#endif  // QPSREADER_PYTHON_CELLS_OBJECT_H
