// SPDX-License-Identifier: MIT
//
// From a cell's style number to what the cell looks like.
#ifndef QPSREADER_STYLES_APPLY_STYLE_H
#define QPSREADER_STYLES_APPLY_STYLE_H

#include <cstddef>
#include <cstring>

#include "items/ss_item.h"
#include "reader/qps_sheet.h"

namespace qps {

// What a cell shows that no style applies to.
inline constexpr QPSAppearance kUnstyled{
    .formatCode = 0,
    .decimals = 0,
    .textAlignment = SSAlignVerticalBottom | SSAlignLeft | SSAlignTextFlagClear,
    .numericAlignment = SSAlignVerticalBottom | SSAlignLeft | SSAlignTextFlagClear,
    .present = 0,
    .fillColour = SS_NO_COLOUR,
    .textColour = 0,
    .bordered = 0,
    .borders = nullptr,
    .font = nullptr,
    .userFormat = nullptr,
    .isDate = false,
};

// Works out what `currentStyle` means, for its first cell and for every cell without a style.
const QPSAppearance& resolveCurrentStyle(QPSSheet& sheet);

// What `currentStyle` means.
inline const QPSAppearance& currentAppearance(QPSSheet& sheet) {
  const QPSStylePage* page = sheet.stylePageByNumber[sheet.currentStyle >> 8];
  if (page != nullptr) [[likely]] {
    const QPSAppearance* appearance = page->appearances[sheet.currentStyle & 0xFF];
    if (appearance != nullptr) [[likely]]
      return *appearance;
  }
  return resolveCurrentStyle(sheet);
}

inline void writeBorders(SSItemCell& cell, const QPSStyle& style) {
  for (std::size_t slot = 0; slot < kBorderSlots; ++slot) {
    cell.borders[slot].style = style.borderStyle[slot];
    cell.borders[slot].colour = style.borderColour[slot];
  }
}

inline void writeFont(SSItemFont& item, const QPSFont& font) {
  static_assert(sizeof(item.name) == sizeof(font.name));
  std::memcpy(item.name, font.name, sizeof(item.name));
  item.size = font.size;
  item.attrBit0 = font.attrBit0;
  item.attrBit1 = font.attrBit1;
  item.attrBit2 = font.attrBit2;
  item.attrBit5 = font.attrBit5;
  item.extra0 = 1;
  item.extra1 = 0;
}

// Applies the style whose number is `currentStyle` to a cell of the kind `lastCellKind`: writes the
// item's style fields, and returns what the rendering of its value needs, which stays as it is
// until the next cell.
inline const QPSAppearance& qpsApplyCellStyle(QPSSheet& sheet, SSItemCell& cell) {
  const QPSAppearance& appearance = currentAppearance(sheet);
  cell.spare2 = 0;
  cell.alignment =
      sheet.lastCellKind == kNumericCell ? appearance.numericAlignment : appearance.textAlignment;
  cell.fillColour = appearance.fillColour;
  cell.textColour = appearance.textColour;
  cell.bordered = appearance.bordered;
  cell.font.present = appearance.present;
  if (appearance.present == 0) cell.spare1 = 0;
  if (appearance.borders != nullptr) writeBorders(cell, *appearance.borders);
  if (appearance.font != nullptr) writeFont(cell.font, *appearance.font);
  return appearance;
}

}  // namespace qps

#endif  // QPSREADER_STYLES_APPLY_STYLE_H
