// SPDX-License-Identifier: MIT
//
// The notebook's own formats: eight texts that are recognised whole, the date language ("T") and
// the number language ("N", one to three sections by the value's sign). Any other text shows the
// value in the General form.
#include <algorithm>
#include <cmath>

#include "reader/format/date_text.h"
#include "reader/format/rendering.h"
#include "reader/format/user_format_plan.h"
#include "reader/frame/item_text.h"
#include "reader/frame/pool.h"
#include "reader/render/date_serial.h"
#include "reader/render/name_tables.h"
#include "reader/render/user_date.h"

namespace qps {

namespace {

constexpr std::uint32_t kFirstSection = 0;
constexpr std::uint32_t kZeroSection = 1;
constexpr std::uint32_t kNegativeSection = 2;

std::size_t weekdayOf(double value) {
  return static_cast<std::size_t>(weekdayNameIndex(weekdayIndex(value), !(value < 0)));
}

char* showFourDigitYear(Rendering r, const QPSAppearance& /*appearance*/, double value) {
  return deliver(r, integerText(qpsSerialToDate(value).year, 4));
}
char* showWeekday(Rendering r, const QPSAppearance& /*appearance*/, double value) {
  return qpsStrDup(r.sheet, weekdayNames[weekdayOf(value)]);
}
char* showWeekdayAbbreviation(Rendering r, const QPSAppearance& /*appearance*/, double value) {
  return qpsStrDup(r.sheet, weekdayAbbreviations[weekdayOf(value)]);
}

// The years 1900 to 1999 are shown in two digits, all others whole.
char* showDateAndTime(Rendering r, const QPSAppearance& /*appearance*/, double value) {
  const CalendarDate date = qpsSerialToDate(value);
  const bool shortened = isInThe1900s(date.year);
  WordText monthAndDay;
  monthAndDay.append(twoDigitsOf(date.month));
  monthAndDay.append(' ');
  monthAndDay.append(twoDigitsOf(date.day));
  monthAndDay.append(' ');
  ResultText text;
  text.append(monthAndDay);
  text.appendInteger(date.year - (shortened ? 1900 : 0), shortened ? 2 : 4);
  text.append(' ');
  text.append(dialText(qpsTimeOfDay(value), Seconds::kShown));
  return deliver(r, text);
}

char* showSign(Rendering r, const QPSAppearance& /*appearance*/, double value) {
  return qpsStrDup(r.sheet, value > 0 ? "Positive" : value == 0 ? "Zero" : "Negative");
}

struct Template {
  std::string_view text;
  Form form;
};

constexpr Template kTemplates[] = {
    {"TMon", showMonthAbbreviation},
    {"TYYYY", showFourDigitYear},
    {"N9;N0;N'-'9", showGeneral},
    {"TWeekday", showWeekday},
    {"TWday", showWeekdayAbbreviation},
    {"TMM' 'DD' 'YY' 'HH':'MM':'SS' 'AMPM", showDateAndTime},
    {"N'Positive';N'Zero';N'Negative'", showSign},
    {"TMonth' 'D', 'YYYY'", showLongDate},
};

UserFormatPlan::Language languageOf(std::string_view text) {
  if (text.starts_with('T')) return UserFormatPlan::Language::kDate;
  if (text.starts_with('N')) return UserFormatPlan::Language::kNumber;
  return UserFormatPlan::Language::kNone;
}

// Splits the text at every ";", one in quotes too.
void planSections(UserFormatPlan& plan) {
  std::string_view rest = plan.text;
  for (;;) {
    const std::size_t end = rest.find(';');
    plan.section[plan.sections] = parseNumberSection(rest.substr(0, end));
    ++plan.sections;
    if (end == std::string_view::npos) return;
    if (plan.sections == UserFormatPlan::kMostSections) break;
    rest.remove_prefix(end + 1);
  }
  ++plan.sections;  // one more, or many: they are not told apart
}

char* showUserDate(Rendering r, double value, const UserFormatPlan& plan) {
  ResultText text;
  qpsFormatUserDate(text, plan.date, userDateFields(value), r.sheet.services);
  return deliver(r, text);
}

struct SectionChoice {
  std::size_t index;
  std::uint32_t formatSection;
};

// Two sections are for values that are not negative and negative ones; three for positive values,
// zero and negative ones.
SectionChoice chooseSection(std::size_t sections, double value) {
  if (sections == 1 || value > 0) return {0, kFirstSection};
  if (value < 0) return {sections - 1, kNegativeSection};
  return sections == 2 ? SectionChoice{0, kFirstSection} : SectionChoice{1, kZeroSection};
}

char* showUserNumber(Rendering r, double value, const UserFormatPlan& plan) {
  if (plan.sections > UserFormatPlan::kMostSections) return nullptr;
  const SectionChoice choice = chooseSection(plan.sections, value);
  ResultText text;
  qpsFormatUserNumber(text, plan.section[choice.index], choice.formatSection, std::fabs(value),
                      !(value < 0));
  return deliver(r, text);
}

char* showPlan(Rendering r, const QPSAppearance& appearance, double value,
               const UserFormatPlan& plan) {
  if (plan.templateForm != nullptr) return plan.templateForm(r, appearance, value);
  if (appearance.isDate) return showLongDate(r, appearance, value);
  switch (plan.language) {
    case UserFormatPlan::Language::kDate:
      return showUserDate(r, value, plan);
    case UserFormatPlan::Language::kNumber:
      return showUserNumber(r, value, plan);
    default:
      return showGeneral(r, appearance, value);
  }
}

}  // namespace

UserFormatPlan planUserFormat(std::string_view text) {
  UserFormatPlan plan{};
  plan.text = text;
  plan.language = languageOf(text);
  const auto* known = std::find_if(std::begin(kTemplates), std::end(kTemplates),
                                   [&](const Template& row) { return row.text == text; });
  if (known != std::end(kTemplates)) plan.templateForm = known->form;
  if (plan.language == UserFormatPlan::Language::kDate) plan.date = parseDateFormat(text);
  if (plan.language == UserFormatPlan::Language::kNumber) planSections(plan);
  return plan;
}

// The plan is made for the first cell and kept beside the text, unless the pool has no room. A cell
// that no format was found for counts as one with an empty text.
char* showUserDefined(Rendering r, const QPSAppearance& appearance, double value) {
  QPSUserFormat* format = appearance.userFormat;
  if (format == nullptr || format->text == nullptr)
    return showPlan(r, appearance, value, planUserFormat({}));
  if (format->plan == nullptr) {
    const UserFormatPlan plan = planUserFormat({format->text, format->textBytes});
    format->plan = poolNew<UserFormatPlan>(r.sheet.services);
    if (format->plan == nullptr) return showPlan(r, appearance, value, plan);
    *format->plan = plan;
  }
  return showPlan(r, appearance, value, *format->plan);
}

}  // namespace qps
