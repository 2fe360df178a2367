// SPDX-License-Identifier: MIT
//
// From a cell record to a cell item; the bytes are described in cell_layout.h.
#include "reader/items/cell_records.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

#include "reader/format/format_value.h"
#include "reader/frame/item_text.h"
#include "reader/items/cell_layout.h"
#include "reader/styles/apply_style.h"

namespace qps {

namespace {

// A cell with this format code shows nothing.
constexpr std::uint8_t kHiddenFormatCode = 4;

constexpr std::string_view kErrorText = "ERR";

bool isHidden(const QPSAppearance& appearance) {
  return appearance.formatCode == kHiddenFormatCode;
}

// Writes the position and the style, and returns what the style means.
[[gnu::always_inline]] inline const QPSAppearance& placeCell(QPSSheet& sheet, SSItemCell& cell,
                                                             CellKind kind) {
  const BodyView body = sheet.records.body();
  cell.column = body.u8At(0) + 1U;
  cell.row = body.u16At(2) + 1U;
  return qpsApplyCellStyle(sheet, cell, kind, styleFieldOf(body));
}

CellStep deliverNumber(QPSSheet& sheet, SSItemCell& cell, double value) {
  const QPSAppearance& appearance = placeCell(sheet, cell, kNumericCell);
  if (isHidden(appearance)) {
    cell.text = nullptr;
  } else {
    qpsFormatValue(sheet, appearance, cell, value);
  }
  return CellStep::kDeliver;
}

[[gnu::always_inline]] inline CellStep deliverText(QPSSheet& sheet, SSItemCell& cell, CellKind kind,
                                                   std::string_view text) {
  const QPSAppearance& appearance = placeCell(sheet, cell, kind);
  cell.text = isHidden(appearance) ? nullptr : qpsStrDup(sheet, text);
  return CellStep::kDeliver;
}

}  // namespace

CellStep qpsReadBlankCell(QPSSheet& sheet, SSItemCell& cell) {
  placeCell(sheet, cell, kTextCell);
  cell.text = nullptr;
  return CellStep::kDeliver;
}

CellStep qpsReadIntegerCell(QPSSheet& sheet, SSItemCell& cell) {
  const auto value = static_cast<std::int16_t>(sheet.records.body().u16At(kValueOffset));
  return deliverNumber(sheet, cell, value);
}

CellStep qpsReadNumberCell(QPSSheet& sheet, SSItemCell& cell) {
  return deliverNumber(sheet, cell, sheet.records.body().doubleAt(kValueOffset));
}

// A label, or the text result of a formula, which shows like one whether or not the formula came
// before it.
CellStep qpsReadTextCell(QPSSheet& sheet, SSItemCell& cell) {
  const QPSAppearance& appearance = placeCell(sheet, cell, kTextCell);
  cell.text = isHidden(appearance) ? nullptr : qpsStrDup(sheet, sheet.records.body().textAt(kTextOffset));
  return CellStep::kDeliver;
}

CellStep qpsReadFormulaCell(QPSSheet& sheet, SSItemCell& cell) {
  const BodyView body = sheet.records.body();
  const std::uint16_t marker = body.u16At(kResultMarkerOffset);
  if (marker == kResultIsText) return CellStep::kNoCell;
  if (!isSpecialResult(marker)) {
    return deliverNumber(sheet, cell, body.doubleAt(kValueOffset));
  }
  switch (body.u16At(kSpecialKindOffset)) {
    case kSpecialError:
      return deliverText(sheet, cell, kNumericCell, kErrorText);
    case kSpecialInteger:
      return deliverNumber(sheet, cell,
                           static_cast<std::int32_t>(body.u32At(kSpecialIntegerOffset)));
    default:
      return CellStep::kNoCell;
  }
}

}  // namespace qps
