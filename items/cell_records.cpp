// SPDX-License-Identifier: MIT
//
// Every cell record begins alike:
//
//   offset  size  field
//   0       1     column, from 0
//   2       2     row, from 0
//   4       2     style number in bits 3 to 15; 0 stands for style 1
//   6             the value, by record: 13 a signed 16-bit integer, 14 a double, 16 the cached
//   result
//                 (below), 15 and 51 a byte of no interest and, from byte 7, the text
//
// The cached result of a formula is eight bytes, a double as a rule. The word at 12 tells the
// others:
//
//   0x7FF8            a text, which the record 51 after this one carries
//   0x7FF0 or 0xFFF0  by the word at 10: 0 an error, 3 the 32-bit integer at 8, else nothing to
//   show
#include "items/cell_records.h"

#include <string_view>

#include "format/format_value.h"
#include "styles/apply_style.h"
#include "styles/style_records.h"

namespace qps {

namespace {

constexpr unsigned kStyleNumberShift = 3;

// A cell with this format code shows nothing.
constexpr std::uint8_t kHiddenFormatCode = 4;

constexpr std::size_t kValueOffset = 6;
constexpr std::size_t kTextOffset = 7;

constexpr std::uint16_t kResultIsText = 0x7FF8;
constexpr std::uint16_t kSpecialResult = 0x7FF0;
constexpr std::uint16_t kSpecialResultNegative = 0xFFF0;
constexpr std::uint16_t kSpecialError = 0;
constexpr std::uint16_t kSpecialInteger = 3;
constexpr std::string_view kErrorText = "ERR";

bool isHidden(const QPSSheet& sheet) {
  return sheet.appearance->formatCode == kHiddenFormatCode;
}

// Writes the position and the style, and leaves the style's meaning in the sheet for the value.
void placeCell(QPSSheet& sheet, SSItemCell& cell, const BodyView& body, CellKind kind) {
  sheet.lastCellKind = kind;
  cell.column = body.u8At(0) + 1U;
  cell.row = body.u16At(2) + 1U;
  sheet.currentStyle =
      styleNumberOf(static_cast<std::uint16_t>(body.u16At(4) >> kStyleNumberShift));
  qpsApplyCellStyle(sheet, cell);
}

CellStep deliverNumber(QPSSheet& sheet, SSItemCell& cell, const BodyView& body, double value) {
  placeCell(sheet, cell, body, kNumericCell);
  cell.text = nullptr;
  if (!isHidden(sheet)) {
    cell.text = qpsFormatValue(sheet, cell, value, sheet.columnWidths[cell.column - 1]);
  }
  return CellStep::kDeliver;
}

CellStep deliverText(QPSSheet& sheet, SSItemCell& cell, const BodyView& body, CellKind kind,
                     std::string_view text) {
  placeCell(sheet, cell, body, kind);
  cell.text = isHidden(sheet) ? nullptr : qpsStrDup(sheet, text);
  return CellStep::kDeliver;
}

CellStep readTextCell(QPSSheet& sheet, SSItemCell& cell) {
  if (!sheet.records.readBody()) return CellStep::kFail;
  const BodyView body = sheet.records.body();
  return deliverText(sheet, cell, body, kTextCell, body.textAt(kTextOffset));
}

}  // namespace

CellStep qpsReadBlankCell(QPSSheet& sheet, SSItemCell& cell) {
  if (!sheet.records.readBody()) return CellStep::kFail;
  placeCell(sheet, cell, sheet.records.body(), kTextCell);
  cell.text = nullptr;
  return CellStep::kDeliver;
}

CellStep qpsReadIntegerCell(QPSSheet& sheet, SSItemCell& cell) {
  if (!sheet.records.readBody()) return CellStep::kFail;
  const BodyView body = sheet.records.body();
  return deliverNumber(sheet, cell, body, static_cast<std::int16_t>(body.u16At(kValueOffset)));
}

CellStep qpsReadNumberCell(QPSSheet& sheet, SSItemCell& cell) {
  if (!sheet.records.readBody()) return CellStep::kFail;
  const BodyView body = sheet.records.body();
  return deliverNumber(sheet, cell, body, body.doubleAt(kValueOffset));
}

CellStep qpsReadLabelCell(QPSSheet& sheet, SSItemCell& cell) {
  return readTextCell(sheet, cell);
}

// Shown like a label, whether or not a formula came before it.
CellStep qpsReadStringCell(QPSSheet& sheet, SSItemCell& cell) {
  return readTextCell(sheet, cell);
}

CellStep qpsReadFormulaCell(QPSSheet& sheet, SSItemCell& cell) {
  if (!sheet.records.readBody()) return CellStep::kFail;
  const BodyView body = sheet.records.body();
  const std::uint16_t marker = body.u16At(12);
  if (marker == kResultIsText) return CellStep::kNoCell;
  if (marker != kSpecialResult && marker != kSpecialResultNegative) {
    return deliverNumber(sheet, cell, body, body.doubleAt(kValueOffset));
  }
  switch (body.u16At(10)) {
    case kSpecialError:
      return deliverText(sheet, cell, body, kNumericCell, kErrorText);
    case kSpecialInteger:
      return deliverNumber(sheet, cell, body, static_cast<std::int32_t>(body.u32At(8)));
    default:
      return CellStep::kNoCell;
  }
}

}  // namespace qps
