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

// Writes all of the cell but its text, and returns what its style means. Inline: a call would cost
// each cell 20 instructions.
[[gnu::always_inline]] inline const QPSAppearance& placeCell(QPSSheet& sheet, SSItemCell& cell,
                                                             CellKind kind) {
  const BodyView recordBody = sheet.records.body();
  cell.kind = SSItemKindCell;
  cell.column = recordBody.u8At(0) + 1U;
  cell.row = recordBody.u16At(2) + 1U;
  cell.spare3 = 0;
  return qpsApplyCellStyle(sheet, cell, kind, styleFieldOf(recordBody));
}

CellStep deliverNumber(QPSSheet& sheet, SSItemCell& cell, double value) {
  const QPSAppearance& appearance = placeCell(sheet, cell, kNumericCell);
  cell.text = isHidden(appearance) ? nullptr : qpsFormatValue(sheet, appearance, cell, value);
  return CellStep::kDeliver;
}

[[gnu::noinline]] char* copyAnyLabel(const QPSSheet& sheet) {
  return qpsStrDup(sheet, sheet.records.body().textAt(kTextOffset));
}

// The record from its text on; as good as endless where a short one has none.
inline std::string_view labelBytes(const QPSSheet& sheet) {
  const std::span<const std::uint8_t> body = sheet.records.body().bytes();
  return {reinterpret_cast<const char*>(body.data()) + kTextOffset, body.size() - kTextOffset};
}

// Most labels are short and fill their record. The record is looked at again after the host's call:
// that costs less than keeping what was loaded.
inline char* copyLabel(const QPSSheet& sheet) {
  if (!isShortText(labelBytes(sheet))) return copyAnyLabel(sheet);
  char* copy = itemBlock(sheet, labelBytes(sheet).size());
  if (copy != nullptr) [[likely]]
    copyShortText(copy, labelBytes(sheet));
  return copy;
}

CellStep deliverError(QPSSheet& sheet, SSItemCell& cell) {
  const QPSAppearance& appearance = placeCell(sheet, cell, kNumericCell);
  cell.text = isHidden(appearance) ? nullptr : qpsStrDup(sheet, kErrorText);
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

CellStep qpsReadLabelCell(QPSSheet& sheet, SSItemCell& cell) {
  const QPSAppearance& appearance = placeCell(sheet, cell, kTextCell);
  cell.text = isHidden(appearance) ? nullptr : copyLabel(sheet);
  return CellStep::kDeliver;
}

// The text result of a formula shows like a label, whether or not a formula came before it.
CellStep qpsReadStringCell(QPSSheet& sheet, SSItemCell& cell) {
  return qpsReadLabelCell(sheet, cell);
}

CellStep qpsReadFormulaCell(QPSSheet& sheet, SSItemCell& cell) {
  const BodyView recordBody = sheet.records.body();
  const std::uint16_t marker = recordBody.u16At(kResultMarkerOffset);
  if (marker == kResultIsText) return CellStep::kNoCell;
  if (!isSpecialResult(marker)) {
    return deliverNumber(sheet, cell, recordBody.doubleAt(kValueOffset));
  }
  switch (recordBody.u16At(kSpecialKindOffset)) {
    case kSpecialError:
      return deliverError(sheet, cell);
    case kSpecialInteger:
      return deliverNumber(sheet, cell,
                           static_cast<std::int32_t>(recordBody.u32At(kSpecialIntegerOffset)));
    default:
      return CellStep::kNoCell;
  }
}

}  // namespace qps
