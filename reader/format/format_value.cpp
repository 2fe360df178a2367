// SPDX-License-Identifier: MIT
#include "reader/format/format_value.h"

#include <cmath>
#include <cstddef>
#include <cstdint>

#include "reader/frame/item_text.h"

namespace qps {

namespace {

// A form for finite values, made one for all values.
template <Form kForm>
char* finite(Rendering r, const QPSAppearance& appearance, double value) {
  return std::isfinite(value) ? kForm(r, appearance, value) : deliver(r, kErrorMark);
}

struct FormRow {
  std::uint8_t code;
  Form form;
};

// Every code without a row shows in the General form, from 113 up by the notebook's own format. The
// families from 16 up are chosen only by codes whose low four bits are zero.
constexpr FormRow kFormRows[] = {
    {1, showBars},
    {5, showDatedForm},
    {6, showDatedForm},
    {7, showDatedForm},
    {8, showDatedForm},
    {9, showDatedForm},
    {10, finite<showTime12WithSeconds>},
    {11, finite<showTime12>},
    {12, finite<showTime24WithSeconds>},
    {13, finite<showTime24>},
    {14, finite<showYear>},
    {15, finite<showMonthAbbreviation>},
    {16, showFixed},
    {32, finite<showScientific>},
    {48, showCurrency},
    {64, showPercent},
    {80, showComma},
    {96, finite<showShortNumericDate>},
    {kNamedDateCode, finite<showNamedDate>},
};

}  // namespace

char* deliver(Rendering r, WordText text) {
  char* copy = itemText(r.sheet, text.size());
  if (copy != nullptr) [[likely]]
    text.copyTo(copy);
  return copy;
}

char* deliver(Rendering r, const TextBuffer& text) {
  return text.empty() ? nullptr : qpsStrDup(r.sheet, text.view());
}

constexpr std::array<Form, 256> kFormByCode = [] {
  std::array<Form, 256> forms{};
  forms.fill(showGeneral);
  for (std::size_t code = kFirstUserDefinedCode; code < forms.size(); ++code)
    forms[code] = finite<showUserDefined>;
  for (const FormRow& row : kFormRows)
    forms[row.code] = row.form;
  return forms;
}();

}  // namespace qps
