// SPDX-License-Identifier: MIT
//
// The notebook's own formats: eight texts that are recognised whole, the date language ("T") and
// the number language ("N", one to three sections by the value's sign). Any other text shows the
// value in the General form.
#include <algorithm>
#include <cmath>

#include "format/date_text.h"
#include "format/rendering.h"
#include "format/user_format_plan.h"
#include "reader/pool.h"
#include "render/date_serial.h"
#include "render/name_tables.h"
#include "render/user_date.h"

namespace qps {

namespace {

constexpr std::uint32_t kFirstSection = 0;
constexpr std::uint32_t kZeroSection = 1;
constexpr std::uint32_t kNegativeSection = 2;

std::size_t weekdayOf(double value) {
  return static_cast<std::size_t>(weekdayNameIndex(weekdayIndex(value), !(value < 0)));
}

void showFourDigitYear(Rendering& r) {
  r.text.appendInteger(qpsSerialToDate(r.value).year, 4);
}
void showWeekday(Rendering& r) {
  r.text.append(weekdayNames[weekdayOf(r.value)]);
}
void showWeekdayAbbreviation(Rendering& r) {
  r.text.append(weekdayAbbreviations[weekdayOf(r.value)]);
}

void showDateAndTime(Rendering& r) {
  const CalendarDate date = qpsSerialToDate(r.value);
  const TimeOfDay time = qpsTimeOfDay(r.value);
  const DialHour dial = dialHour(time.hours);
  appendJoined(r.text, ' ', date.month, date.day);
  r.text.append(' ');
  appendYearOfCentury(r.text, date.year);
  r.text.append(' ');
  appendJoined(r.text, ':', dial.hour, time.minutes, time.seconds);
  r.text.append(dial.pm ? " PM" : " AM");
}

void showSign(Rendering& r) {
  r.text.append(r.value > 0 ? "Positive" : r.value == 0 ? "Zero" : "Negative");
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

void showUserDate(Rendering& r, const UserFormatPlan& plan) {
  if (const auto text = qpsFormatUserDate(plan.date, userDateFields(r.value), r.sheet.services)) {
    r.text.append(*text);
  }
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

void showUserNumber(Rendering& r, const UserFormatPlan& plan) {
  if (plan.sections > UserFormatPlan::kMostSections) return;
  const SectionChoice choice = chooseSection(plan.sections, r.value);
  if (const auto text = qpsFormatUserNumber(plan.section[choice.index], choice.formatSection,
                                            std::fabs(r.value), !(r.value < 0))) {
    r.text.append(*text);
  }
}

void showPlan(Rendering& r, const UserFormatPlan& plan) {
  if (plan.templateForm != nullptr) {
    plan.templateForm(r);
  } else if (r.appearance.isDate) {
    showLongDate(r);
  } else if (plan.language == UserFormatPlan::Language::kDate) {
    showUserDate(r, plan);
  } else if (plan.language == UserFormatPlan::Language::kNumber) {
    showUserNumber(r, plan);
  } else {
    showGeneral(r);
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
void showUserDefined(Rendering& r) {
  QPSUserFormat* format = r.appearance.userFormat;
  if (format == nullptr || format->text == nullptr) {
    showPlan(r, planUserFormat({}));
    return;
  }
  if (format->plan == nullptr) {
    const UserFormatPlan plan = planUserFormat({format->text, format->textBytes});
    format->plan = poolNew<UserFormatPlan>(r.sheet.services);
    if (format->plan == nullptr) {
      showPlan(r, plan);
      return;
    }
    *format->plan = plan;
  }
  showPlan(r, *format->plan);
}

}  // namespace qps
