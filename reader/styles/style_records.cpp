// SPDX-License-Identifier: MIT
#include "reader/styles/style_records.h"

#include "reader/frame/pool.h"
#include "reader/styles/palette.h"

namespace qps {

namespace {

// Record 206, 11 bytes; a missing byte is 0:
//
//   0   format: 0x10 to 0x70 is a code in the high nibble, decimals in the low; else a code
//   1   alignment: bits 0-2 horizontal selector, bits 3-4 vertical selector, bit 7 text flag
//   2   palette indexes: bits 0-3 colour 1, bits 4-7 colour 2
//   3   bits 0-2 blend code, bits 4-7 palette index of the text colour
//   4   font number
//   5   border line selectors, two bits a slot, slot 0 lowest
//   7   id of the named style that it is based on
//   8   palette indexes of the border colours of slots 0 (bits 0-3) and 1 (bits 4-7)
//   9   the same for slots 2 and 3
constexpr std::uint8_t kHorizontalCodes[8] = {0, 0x0C, 0x04, 0x08, 0x40, 0, 0x40, 0};
constexpr std::uint8_t kVerticalCodes[4] = {2, 1, 3, 2};
constexpr std::uint8_t kLineCodes[4] = {0, 5, 8, 6};

constexpr std::uint8_t lowNibble(std::uint8_t byte) {
  return byte & 0x0F;
}
constexpr std::uint8_t highNibble(std::uint8_t byte) {
  return byte >> 4;
}

void readFormat(QPSStyle& style, std::uint8_t format) {
  const bool holdsDecimals = format >= 0x10 && format <= 0x70;
  style.decimals = holdsDecimals ? lowNibble(format) : std::uint8_t{0};
  style.formatCode = static_cast<std::uint8_t>(format - style.decimals);
}

void qpsSetBorderColour(QPSStyle& style, std::uint8_t paletteIndex, std::size_t slot) {
  style.borderColour[slot] = paletteColour(paletteIndex);
}

void readBorders(QPSStyle& style, const BodyView& recordBody) {
  for (std::size_t slot = 0; slot < kBorderSlots; ++slot) {
    style.borderStyle[slot] = kLineCodes[recordBody.u8At(5) >> (2 * slot) & 3];
    const std::uint8_t pair = recordBody.u8At(8 + slot / 2);
    qpsSetBorderColour(style, slot % 2 == 0 ? lowNibble(pair) : highNibble(pair), slot);
  }
}

// Numbers the style and links it in front of the list and into the index. False when the index has
// no page for it and the pool no room.
bool pushStyle(QPSSheet& sheet, QPSStyle& style) {
  style.number =
      sheet.styleList == nullptr ? 1 : static_cast<std::uint16_t>(sheet.styleList->number + 1);
  QPSStylePage*& page = sheet.stylePageByNumber[style.number >> 8];
  if (page == nullptr) page = poolNew<QPSStylePage>(sheet.services);
  if (page == nullptr) return false;
  page->styles[style.number & 0xFF] = &style;
  pushFront(sheet.styleList, style);
  return true;
}

void qpsSetColumnColour(QPSSheet& sheet, std::uint16_t column, const QPSStyle& style) {
  if (column >= kColumns) return;
  sheet.columnColours[column] = qpsBlendColours(style.colour1, style.colour2, style.blend);
}

void qpsApplyColumnStyle(QPSSheet& sheet, std::uint16_t column, std::uint32_t styleNumber) {
  const QPSStyle* style = findStyle(sheet, styleNumber);
  if (style != nullptr) qpsSetColumnColour(sheet, column, *style);
}

}  // namespace

Step qpsReadStyle(QPSSheet& sheet) {
  if (!sheet.records.readBody()) return Step::kFail;
  auto* style = poolNew<QPSStyle>(sheet.services);
  if (style == nullptr) return Step::kFail;
  if (!pushStyle(sheet, *style)) {
    poolFree(sheet.services, style);
    return Step::kFail;
  }

  const BodyView recordBody = sheet.records.body();
  readFormat(*style, recordBody.u8At(0));
  const std::uint8_t alignment = recordBody.u8At(1);
  style->horizontal = kHorizontalCodes[alignment & 7];
  style->vertical = kVerticalCodes[alignment >> 3 & 3];
  style->textFlag = (alignment & 0x80) != 0 ? 0x20 : 0x80;
  style->colour1 = paletteColour(lowNibble(recordBody.u8At(2)));
  style->colour2 = paletteColour(highNibble(recordBody.u8At(2)));
  style->blend = recordBody.u8At(3) & 7;
  style->textColour = paletteColour(highNibble(recordBody.u8At(3)));
  style->font = recordBody.u8At(4);
  style->namedStyle = recordBody.u8At(7);
  readBorders(*style, recordBody);
  return Step::kGoOn;
}

// Record 231: 0-1 the column from 0, 2-3 the style number (0 stands for 1).
Step qpsReadColumnStyle(QPSSheet& sheet) {
  if (!sheet.records.readBody()) return Step::kFail;
  const BodyView recordBody = sheet.records.body();
  qpsApplyColumnStyle(sheet, recordBody.u16At(0), styleNumberOf(recordBody.u16At(2)));
  return Step::kGoOn;
}

}  // namespace qps
