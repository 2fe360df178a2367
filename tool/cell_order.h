// SPDX-License-Identifier: MIT
//
// Puts cells into rows. Notebooks hold them column by column, so a large sheet usually needs it.
#ifndef QPSREADER_TOOL_CELL_ORDER_H
#define QPSREADER_TOOL_CELL_ORDER_H

#include <cstddef>

#include "tool/cell_list.h"

namespace qps {

// Sorts by place, row by row, with a spare copy of at most all cells. Of several cells in one place
// the last one stays; returns how many others there were.
std::size_t putInRows(CellList& cells);
std::size_t putInRows(ContentsList& contents);

}  // namespace qps

#endif  // QPSREADER_TOOL_CELL_ORDER_H
