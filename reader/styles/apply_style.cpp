// SPDX-License-Identifier: MIT
//
// What a style means does not change once the worksheet is open, so it is worked out once, when the
// first cell uses the style, and copied to every cell.
#include "reader/styles/apply_style.h"

#include <algorithm>
#include <iterator>
#include <string_view>

#include "reader/frame/pool.h"
#include "reader/styles/palette.h"
#include "reader/styles/style_records.h"

namespace qps {

namespace {

constexpr std::string_view kDateStyleName = "Date";

std::uint8_t alignmentOf(const QPSStyle& style, std::uint8_t defaultHorizontal) {
  const std::uint8_t horizontal = style.horizontal != 0 ? style.horizontal : defaultHorizontal;
  return style.vertical | horizontal | style.textFlag;
}

// Lays a style over what its base style left. The fields that a style always has replace the base
// style's; a font or format that is not found, and borders that the style does not have, let the
// base style's stand.
void qpsApplyStyleEntry(const QPSSheet& sheet, QPSAppearance& appearance, const QPSStyle& style) {
  appearance.formatCode = style.formatCode;
  appearance.decimals = style.decimals;
  if (QPSUserFormat* format = sheet.formatByCode[style.formatCode]) appearance.userFormat = format;
  appearance.alignment[kTextCell] = alignmentOf(style, SSAlignLeft);
  appearance.alignment[kNumericCell] = alignmentOf(style, SSAlignRight);
  const bool bordered = std::any_of(std::begin(style.borderStyle), std::end(style.borderStyle),
                                    [](std::uint8_t line) { return line != 0; });
  appearance.colours = {.fill = qpsBlendColours(style.colour1, style.colour2, style.blend),
                        .text = style.textColour,
                        .bordered = bordered ? 1U : 0U};
  if (bordered) appearance.borders = &style;
  appearance.present = 1;
  if (const QPSFont* font = sheet.fontByNumber[style.font]) appearance.font = font;
}

void applyWithBase(const QPSSheet& sheet, QPSAppearance& appearance, const QPSStyle& style) {
  appearance = {};
  if (const QPSNamedStyle* named = sheet.namedStyleById[style.namedStyle]) {
    appearance.isDate = named->name != nullptr && named->name == kDateStyleName;
    if (const QPSStyle* base = findStyle(sheet, named->styleNumber)) {
      qpsApplyStyleEntry(sheet, appearance, *base);
    }
  }
  qpsApplyStyleEntry(sheet, appearance, style);
}

}  // namespace

const QPSAppearance& resolveAppearance(QPSSheet& sheet, std::uint32_t styleField) {
  if (sheet.styleList == nullptr) return sheet.unstyled;
  const QPSStyle* style = findStyle(sheet, styleNumberOf(styleField));
  if (style == nullptr) return kUnstyled;
  auto* appearance = poolNew<QPSAppearance>(sheet.services);
  sheet.stylePageByNumber[styleField >> 8]->appearances[styleField & 0xFF] = appearance;
  if (appearance == nullptr) appearance = &sheet.scratchAppearance;
  applyWithBase(sheet, *appearance, *style);
  return *appearance;
}

const QPSAppearance& appliedAppearance(const QPSSheet& sheet, std::uint32_t styleField) {
  if (sheet.styleList == nullptr) return sheet.unstyled;
  if (findStyle(sheet, styleNumberOf(styleField)) == nullptr) return kUnstyled;
  const QPSAppearance* kept =
      sheet.stylePageByNumber[styleField >> 8]->appearances[styleField & 0xFF];
  return kept != nullptr ? *kept : sheet.scratchAppearance;
}

}  // namespace qps
