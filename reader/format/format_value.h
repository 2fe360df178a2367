// SPDX-License-Identifier: MIT
//
// From a cell's value to its display text.
#ifndef QPSREADER_FORMAT_FORMAT_VALUE_H
#define QPSREADER_FORMAT_FORMAT_VALUE_H

#include <array>
#include <cstddef>
#include <cstdint>

#include <qpsreader/ss_item.h>
#include "reader/format/rendering.h"
#include "reader/frame/item_text.h"
#include "reader/frame/qps_sheet.h"

namespace qps {

inline constexpr std::size_t kNamedDateCode = 112;
inline constexpr std::size_t kFirstUserDefinedCode = 113;

extern const std::array<Form, 256> kFormByCode;

// Renders `value` by the format code, decimals and format text of the cell's appearance, for the
// width of its column: writes the cell's text, a block from the sheet's itemAlloc and the host's
// from then on, or null when there is none to show (a hidden column, an empty rendering) or no
// block. May change the cell's alignment.
inline void qpsFormatValue(const QPSSheet& sheet, const QPSAppearance& appearance, SSItemCell& cell,
                           double value) {
  cell.text = nullptr;
  const Rendering rendering{sheet, cell};
  if (rendering.columnWidth() == 0) [[unlikely]]
    return;
  const WordText text = kFormByCode[appearance.formatCode](rendering, appearance, value);
  if (text.empty()) [[unlikely]]
    return;
  cell.text = itemText(sheet, text.size());
  if (cell.text != nullptr) [[likely]]
    text.copyTo(cell.text);
}

}  // namespace qps

#endif  // QPSREADER_FORMAT_FORMAT_VALUE_H
