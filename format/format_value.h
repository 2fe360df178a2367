// SPDX-License-Identifier: MIT
//
// From a cell's value to its display text.
#ifndef QPSREADER_FORMAT_FORMAT_VALUE_H
#define QPSREADER_FORMAT_FORMAT_VALUE_H

#include <cstdint>

#include "items/ss_item.h"
#include "reader/qps_sheet.h"

namespace qps {

// Renders `value` by the format code, decimals and format text of the cell's appearance, for the
// width of its column. May change the cell's alignment.
//
// Returns the text in a block from the sheet's itemAlloc, the host's from then on; or null when
// there is none to show (a hidden column, an empty rendering) or no block.
[[nodiscard]] char* qpsFormatValue(const QPSSheet& sheet, const QPSAppearance& appearance,
                                   SSItemCell& cell, double value);

}  // namespace qps

#endif  // QPSREADER_FORMAT_FORMAT_VALUE_H
