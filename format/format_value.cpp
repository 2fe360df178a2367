// SPDX-License-Identifier: MIT
#include "format/format_value.h"

#include <array>
#include <cmath>

#include "format/rendering.h"
#include "reader/item_text.h"

namespace qps {

namespace {

constexpr std::size_t kResultBytes = 128;

struct FormRule {
  Form form;
  bool takesAnyValue;  // its own test decides on values that are infinite or not numbers
};

struct FormRow {
  std::uint8_t code;
  FormRule rule;
};

// Every code without a row shows in the General form, from 113 up by the notebook's own format. The
// families from 16 up are chosen only by codes whose low four bits are zero.
constexpr FormRow kFormRows[] = {
    {1, {showBars, true}},
    {5, {showDayMonthYear, true}},
    {6, {showDayMonth, true}},
    {7, {showMonthYear, true}},
    {8, {showNumericDate, true}},
    {9, {showMonthDay, true}},
    {10, {showTime12WithSeconds, false}},
    {11, {showTime12, false}},
    {12, {showTime24WithSeconds, false}},
    {13, {showTime24, false}},
    {14, {showYear, false}},
    {15, {showMonthAbbreviation, false}},
    {16, {showFixed, false}},
    {32, {showScientific, false}},
    {48, {showCurrency, false}},
    {64, {showPercent, false}},
    {80, {showComma, false}},
    {96, {showShortNumericDate, false}},
    {112, {showNamedDate, false}},
};
constexpr std::size_t kFirstUserDefinedCode = 113;

constexpr std::array<FormRule, 256> kFormByCode = [] {
  std::array<FormRule, 256> forms{};
  forms.fill({showGeneral, false});
  for (std::size_t code = kFirstUserDefinedCode; code < forms.size(); ++code) {
    forms[code].form = showUserDefined;
  }
  for (const FormRow& row : kFormRows)
    forms[row.code] = row.rule;
  return forms;
}();

}  // namespace

char* qpsFormatValue(const QPSSheet& sheet, const QPSAppearance& appearance, SSItemCell& cell,
                     double value) {
  const std::uint32_t columnWidth = sheet.columnWidths[cell.column - 1];
  if (columnWidth == 0) return nullptr;
  char area[kResultBytes];
  TextBuffer text(area);
  Rendering rendering{sheet, appearance, cell, text, value, columnWidth};
  const FormRule& rule = kFormByCode[appearance.formatCode];
  if (rule.takesAnyValue || std::isfinite(value)) {
    rule.form(rendering);
  } else {
    text.append(kErrorMark);
  }
  return text.empty() ? nullptr : qpsStrDup(sheet, text.view());
}

}  // namespace qps
