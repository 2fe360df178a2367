// SPDX-License-Identifier: MIT
#include "tool/number_format.h"

#include <algorithm>

namespace qps {
namespace {

struct FormRow {
  std::uint8_t code;
  NumberForm form;
};

constexpr std::uint8_t kNamedDateCode = 112;  // above it are the notebook's own formats

// Every other code up to 112 is the general form.
constexpr FormRow kFormRows[] = {
    {1, NumberForm::kBars},         {4, NumberForm::kNothing},
    {5, NumberForm::kDayMonthYear}, {6, NumberForm::kDayMonth},
    {7, NumberForm::kMonthYear},    {8, NumberForm::kNumericDate},
    {9, NumberForm::kMonthDay},     {10, NumberForm::kTime12Seconds},
    {11, NumberForm::kTime12},      {12, NumberForm::kTime24Seconds},
    {13, NumberForm::kTime24},      {14, NumberForm::kYear},
    {15, NumberForm::kMonth},       {16, NumberForm::kFixed},
    {32, NumberForm::kScientific},  {48, NumberForm::kCurrency},
    {64, NumberForm::kPercent},     {80, NumberForm::kComma},
    {96, NumberForm::kShortDate},
};

// Texts that the reader knows as a whole; they count before a style named "Date".
constexpr std::string_view kTemplates[] = {
    "TMon",
    "TYYYY",
    "N9;N0;N'-'9",
    "TWeekday",
    "TWday",
    "TMM' 'DD' 'YY' 'HH':'MM':'SS' 'AMPM",
    "N'Positive';N'Zero';N'Negative'",
    "TMonth' 'D', 'YYYY'",
};

NumberForm ownForm(std::string_view text, std::string_view styleName) {
  if (std::ranges::find(kTemplates, text) != std::end(kTemplates)) return NumberForm::kUser;
  if (styleName == "Date") return NumberForm::kLongDate;
  const bool known = text.starts_with('N') || text.starts_with('T');
  return known ? NumberForm::kUser : NumberForm::kGeneral;
}

}  // namespace

const char* nameOf(NumberForm form) {
  constexpr const char* kNames[] = {
      "general",     "bars",      "nothing",       "dayMonthYear", "dayMonth",      "monthYear",
      "numericDate", "monthDay",  "time12Seconds", "time12",       "time24Seconds", "time24",
      "year",        "month",     "fixed",         "scientific",   "currency",      "percent",
      "comma",       "shortDate", "longDate",      "user"};
  static_assert(std::size(kNames) == static_cast<std::size_t>(NumberForm::kUser) + 1);
  return kNames[static_cast<std::size_t>(form)];
}

bool showsDecimals(NumberForm form) {
  switch (form) {
    case NumberForm::kFixed:
    case NumberForm::kScientific:
    case NumberForm::kCurrency:
    case NumberForm::kPercent:
    case NumberForm::kComma:
      return true;
    default:
      return false;
  }
}

FormatFacts factsOf(const NumberFormat& format) {
  if (format.code > kNamedDateCode)
    return {ownForm(format.text.value_or(""), format.styleName), 0,
            std::string(format.text.value_or(""))};
  if (format.code == kNamedDateCode)
    return {format.styleName == "Date" ? NumberForm::kLongDate : NumberForm::kGeneral, 0, ""};
  for (const FormRow& row : kFormRows)
    if (row.code == format.code)
      return {row.form, showsDecimals(row.form) ? format.decimals : std::uint8_t{0}, ""};
  return {};
}

std::uint32_t FormatTable::numberOf(const NumberFormat& format) {
  const std::string_view text = format.text.value_or("");
  const bool same = !formats_.empty() && format.code == last_.code &&
                    format.decimals == last_.decimals && text == lastText_ &&
                    format.styleName == lastStyle_;
  if (same) return lastNumber_;

  last_ = format;
  lastText_ = text;
  lastStyle_ = format.styleName;
  const auto [place, isNew] =
      numbers_.try_emplace(factsOf(format), static_cast<std::uint32_t>(formats_.size()));
  if (isNew) {
    formats_.push_back(&place->first);
    longestText_ = std::max(longestText_, text.size());
  }
  return lastNumber_ = place->second;
}

}  // namespace qps
