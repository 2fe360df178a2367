// SPDX-License-Identifier: MIT
#include "format/format_value.h"

#include <cstddef>

namespace qps {

namespace {

struct FormRow {
  std::uint8_t code;
  FormRule rule;
};

// Every code without a row shows in the General form, from 113 up by the notebook's own format. The
// families from 16 up are chosen only by codes whose low four bits are zero.
constexpr FormRow kFormRows[] = {
    {1, {showBars, true}},
    {5, {showDatedForm, true}},
    {6, {showDatedForm, true}},
    {7, {showDatedForm, true}},
    {8, {showDatedForm, true}},
    {9, {showDatedForm, true}},
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

}  // namespace

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

}  // namespace qps
