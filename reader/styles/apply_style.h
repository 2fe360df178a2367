// SPDX-License-Identifier: MIT
//
// From a cell's style number to what the cell looks like.
#ifndef QPSREADER_STYLES_APPLY_STYLE_H
#define QPSREADER_STYLES_APPLY_STYLE_H

#include <cstddef>
#include <cstring>

#include <qpsreader/ss_item.h>
#include "reader/frame/qps_sheet.h"

namespace qps {

// What a cell shows that no style applies to.
inline constexpr QPSAppearance kUnstyled{
    .formatCode = 0,
    .decimals = 0,
    .alignment = {SSAlignVerticalBottom | SSAlignLeft | SSAlignTextFlagClear,
                  SSAlignVerticalBottom | SSAlignLeft | SSAlignTextFlagClear},
    .present = 0,
    .colours = {.fill = SS_NO_COLOUR, .text = 0, .bordered = 0},
    .borders = nullptr,
    .font = nullptr,
    .userFormat = nullptr,
    .isDate = false,
};

// Works out what a cell's style field (styleNumberOf) means, for its first cell and for every cell
// without a style.
const QPSAppearance& resolveAppearance(QPSSheet& sheet, std::uint32_t styleField);

// What a cell's style field means. Stays as it is until the next cell.
inline const QPSAppearance& appearanceOf(QPSSheet& sheet, std::uint32_t styleField) {
  const QPSStylePage* page = sheet.stylePageByNumber[styleField >> 8];
  if (page != nullptr) [[likely]] {
    const QPSAppearance* appearance = page->appearances[styleField & 0xFF];
    if (appearance != nullptr) [[likely]]
      return *appearance;
  }
  return resolveAppearance(sheet, styleField);
}

// What the last cell's style field meant when its style was applied. Changes nothing.
const QPSAppearance& appliedAppearance(const QPSSheet& sheet, std::uint32_t styleField);

inline void writeBorders(SSItemCell& cell, const QPSStyle& style) {
  for (std::size_t slot = 0; slot < kBorderSlots; ++slot) {
    cell.borders[slot].style = style.borderStyle[slot];
    cell.borders[slot].colour = style.borderColour[slot];
  }
}

// The item's fields from the name to the last have the layout of QPSFont::Shown.
inline void writeFont(SSItemFont& item, const QPSFont::Shown& font) {
  constexpr std::size_t kFirst = offsetof(SSItemFont, name);
  static_assert(offsetof(SSItemFont, size) - kFirst == offsetof(QPSFont::Shown, size));
  static_assert(offsetof(SSItemFont, attrBit0) - kFirst == offsetof(QPSFont::Shown, attrBit0));
  static_assert(offsetof(SSItemFont, attrBit5) - kFirst == offsetof(QPSFont::Shown, attrBit5));
  static_assert(offsetof(SSItemFont, extra0) - kFirst == offsetof(QPSFont::Shown, extra0));
  static_assert(offsetof(SSItemFont, extra1) - kFirst == offsetof(QPSFont::Shown, extra1));
  std::memcpy(reinterpret_cast<char*>(&item) + kFirst, &font, sizeof(SSItemFont) - kFirst);
}

// Applies a style to the cell that refers to it by this field: writes the item's style fields.
// Returns what the style means for the cell's value.
inline const QPSAppearance& qpsApplyCellStyle(QPSSheet& sheet, SSItemCell& cell, CellKind kind,
                                              std::uint32_t styleField) {
  const QPSAppearance& appearance = appearanceOf(sheet, styleField);
  const QPSAppearance::Colours colours = appearance.colours;
  const std::uint32_t present = appearance.present;
  cell.spare2 = 0;
  cell.alignment = appearance.alignment[kind];
  cell.fillColour = colours.fill;
  cell.textColour = colours.text;
  cell.bordered = colours.bordered;
  cell.font.present = present;
  if (appearance.borders != nullptr) writeBorders(cell, *appearance.borders);
  if (appearance.font != nullptr) {
    writeFont(cell.font, appearance.font->shown);
  } else if (present == 0) {
    cell.spare1 = 0;
  }
  return appearance;
}

}  // namespace qps

#endif  // QPSREADER_STYLES_APPLY_STYLE_H
