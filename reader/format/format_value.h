// SPDX-License-Identifier: MIT
//
// From a cell's value to its display text.
#ifndef QPSREADER_FORMAT_FORMAT_VALUE_H
#define QPSREADER_FORMAT_FORMAT_VALUE_H

#include <array>

#include <qpsreader/ss_item.h>
#include "reader/format/rendering.h"
#include "reader/frame/qps_sheet.h"

namespace qps {

inline constexpr std::size_t kNamedDateCode = 112;
inline constexpr std::size_t kFirstUserDefinedCode = 113;

extern const std::array<Form, 256> kFormByCode;

// Renders `value` by the format code, decimals and format text of the cell's appearance, for the
// width of its column. Returns a block from the sheet's itemAlloc, the host's at once, or null when
// there is nothing to show (a hidden column, an empty rendering) or no block. May change the cell's
// alignment.
[[nodiscard]] inline char* qpsFormatValue(const QPSSheet& sheet, const QPSAppearance& appearance,
                                          SSItemCell& cell, double value) {
  const Rendering rendering{sheet, cell};
  if (rendering.columnWidth() == 0) return nullptr;
  return kFormByCode[appearance.formatCode](rendering, appearance, value);
}

}  // namespace qps

#endif  // QPSREADER_FORMAT_FORMAT_VALUE_H
