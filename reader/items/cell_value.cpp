// SPDX-License-Identifier: MIT
//
// QPSGetCellValue: the record of the last cell is still in the record buffer, and what its style
// means is kept with the sheet, so that delivering the cell took no note of either.
#include <qpsreader/cell_value.h>

#include <cstdint>
#include <string_view>

#include "reader/format/format_value.h"
#include "reader/format/shown_parts.h"
#include "reader/frame/qps_sheet.h"
#include "reader/items/cell_layout.h"
#include "reader/styles/apply_style.h"
#include "reader/styles/style_records.h"

namespace qps {

namespace {

void setNumber(QPSCellValue& value, double number) {
  value.kind = QPSCellNumber;
  value.number = number;
}

void setText(QPSCellValue& value, std::string_view text) {
  value.kind = QPSCellText;
  value.text = text.empty() ? "" : text.data();
  value.textBytes = text.size();
}

// Of a formula that delivered a cell by itself.
void setResult(QPSCellValue& value, const BodyView& body) {
  if (!isSpecialResult(body.u16At(kResultMarkerOffset))) {
    setNumber(value, body.doubleAt(kValueOffset));
  } else if (body.u16At(kSpecialKindOffset) == kSpecialInteger) {
    setNumber(value, static_cast<std::int32_t>(body.u32At(kSpecialIntegerOffset)));
  } else {
    value.kind = QPSCellError;
  }
}

void setContents(QPSCellValue& value, RecordType type, const BodyView& body) {
  value.isFormula = type == RecordType::kFormulaCell || type == RecordType::kStringCell ? 1 : 0;
  switch (type) {
    case RecordType::kIntegerCell:
      return setNumber(value, static_cast<std::int16_t>(body.u16At(kValueOffset)));
    case RecordType::kNumberCell:
      return setNumber(value, body.doubleAt(kValueOffset));
    case RecordType::kLabelCell:
    case RecordType::kStringCell:
      return setText(value, body.textAt(kTextOffset));
    case RecordType::kFormulaCell:
      return setResult(value, body);
    default:
      value.kind = QPSCellBlank;
  }
}

const char* styleNameOf(const QPSSheet& sheet, std::uint32_t styleField) {
  const QPSStyle* style = findStyle(sheet, styleNumberOf(styleField));
  const QPSNamedStyle* named = style == nullptr ? nullptr : sheet.namedStyleById[style->namedStyle];
  return named == nullptr ? nullptr : named->name;
}

void setFormat(QPSCellValue& value, const QPSSheet& sheet, std::uint32_t styleField) {
  const QPSAppearance& appearance = appliedAppearance(sheet, styleField);
  value.formatCode = appearance.formatCode;
  value.decimals = appearance.decimals;
  const bool isUserDefined = appearance.formatCode >= kFirstUserDefinedCode;
  if (isUserDefined && appearance.userFormat != nullptr)
    value.formatText = appearance.userFormat->text;
  value.styleName = styleNameOf(sheet, styleField);
  value.showsDateOrTime = shownParts(appearance);
}

}  // namespace

}  // namespace qps

// The last item was a cell in one state only: the first cell begins it and the end of the worksheet
// ends it.
uint32_t QPSGetCellValue(QPSSheet* sheet, QPSCellValue* value) {
  using namespace qps;
  if (sheet == nullptr || sheet->itemState != ItemStateCells) return 1;
  const BodyView body = sheet->records.body();
  *value = {};
  setContents(*value, sheet->records.type(), body);
  setFormat(*value, *sheet, styleFieldOf(body));
  return 0;
}
