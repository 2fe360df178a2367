// SPDX-License-Identifier: MIT
//
// From a cell's value to its display text.
#ifndef QPSREADER_FORMAT_FORMAT_VALUE_H
#define QPSREADER_FORMAT_FORMAT_VALUE_H

#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>

#include "format/rendering.h"
#include "items/ss_item.h"
#include "reader/item_text.h"
#include "reader/qps_sheet.h"

namespace qps {

struct FormRule {
  Form form;
  bool takesAnyValue;  // its own test decides on values that are infinite or not numbers
};

extern const std::array<FormRule, 256> kFormByCode;

// Renders `value` by the format code, decimals and format text of the cell's appearance, for the
// width of its column. May change the cell's alignment.
//
// Returns the text in a block from the sheet's itemAlloc, the host's from then on; or null when
// there is none to show (a hidden column, an empty rendering) or no block.
[[nodiscard]] inline char* qpsFormatValue(const QPSSheet& sheet, const QPSAppearance& appearance,
                                          SSItemCell& cell, double value) {
  Rendering rendering{sheet, appearance, cell};
  if (rendering.columnWidth() == 0) [[unlikely]]
    return nullptr;
  const FormRule& rule = kFormByCode[appearance.formatCode];
  const bool shown = rule.takesAnyValue || std::isfinite(value);
  const WordText text = shown ? rule.form(rendering, value) : kErrorMark;
  if (text.empty()) [[unlikely]]
    return rendering.delivered;
  char* copy = itemText(sheet, text.size());
  if (copy != nullptr) [[likely]]
    text.copyTo(copy);
  return copy;
}

}  // namespace qps

#endif  // QPSREADER_FORMAT_FORMAT_VALUE_H
