// SPDX-License-Identifier: MIT
//
// The built-in date and time forms. The value is a date serial (reader/render/date_serial.h).
#include <cmath>

#include "reader/format/date_text.h"
#include "reader/format/rendering.h"
#include "reader/render/date_serial.h"
#include "reader/render/name_tables.h"

namespace qps {

namespace {

using namespace std::string_view_literals;

// The serials that the forms with a range test show: 1600-01-01 and the last day that they reach.
constexpr double kFirstShownSerial = -109571;
constexpr double kLastShownSerial = 474816;

// In files of this version the 24-hour forms show the hours of the dial.
constexpr std::uint16_t kDialHoursVersion = 4103;

// A dated form: each piece of the text before the year is put in its place by a factor, with 0 for
// what the form leaves out; then the year.
struct DateForm {
  std::uint64_t day, month, monthName;
  TextWord separators;           // and the size of all before the year
  std::uint32_t shortenedYears;  // so many years from 1900 on show their last two digits
  std::uint64_t year;            // a factor too: 0 for no year
};

// The factor that puts a piece behind so many characters.
constexpr std::uint64_t behind(unsigned characters) {
  return std::uint64_t{1} << (8 * characters);
}

constexpr std::uint32_t kAllYears = 10'000, kOneCentury = 100;

constexpr unsigned kFirstDateForm = 5;
constexpr DateForm kDateForms[] = {
    {behind(0), 0, behind(3), textWord("\0\0-\0\0\0-"sv), kAllYears, 1},  // 04-Jul-99
    {behind(0), 0, behind(3), textWord("\0\0-\0\0\0"sv), 0, 0},           // 04-Jul
    {0, 0, behind(0), textWord("\0\0\0-"sv), kOneCentury, 1},             // Jul-99, Jul-2024
    {behind(3), behind(0), 0, textWord("\0\0/\0\0/"sv), kAllYears, 1},    // 07/04/99
    {behind(3), behind(0), 0, textWord("\0\0/\0\0"sv), 0, 0},             // 07/04
};

// A year of 0 to 9999.
TextWord yearWord(const DateForm& form, std::uint32_t year) {
  const std::uint64_t lastTwo = twoDigits(year % 100).characters;
  const bool shortened = year - 1900 < form.shortenedYears;
  const std::uint64_t characters =
      shortened ? lastTwo : twoDigits(year / 100).characters | lastTwo << 16;
  return {characters * form.year, (shortened ? 2U : 4U) * form.year};
}

WordText showDialTime(double value, Seconds seconds) {
  return dialText(qpsTimeOfDay(value), seconds);
}

WordText showTime(Rendering r, double value, Seconds seconds) {
  if (r.sheet.formatVersion == kDialHoursVersion) return showDialTime(value, seconds);
  const TimeOfDay time = qpsTimeOfDay(value);
  return clockText(time.hours == 24 ? 0 : time.hours, time, seconds);
}

}  // namespace

// One road for all dated forms, because they come in any order: a processor that guesses the form
// wrong loses more time than the few pieces take that are worked out in vain.
WordText showDatedForm(Rendering r, const QPSAppearance& appearance, double value) {
  if (value > kLastShownSerial || value < kFirstShownSerial) return showOverflow(r);
  if (std::isnan(value)) return kErrorMark;
  const CalendarDate date = dateOfDay(static_cast<std::int32_t>(value));
  const DateForm& form = kDateForms[appearance.formatCode - kFirstDateForm];
  const TextWord& name = kMonthWords[static_cast<std::size_t>(date.month)];
  WordText text({twoDigitsOf(date.day).characters * form.day +
                     twoDigitsOf(date.month).characters * form.month +
                     name.characters * form.monthName + form.separators.characters,
                 form.separators.size});
  text.append(yearWord(form, static_cast<std::uint32_t>(date.year)));
  return text;
}

WordText showTime12WithSeconds(Rendering /*r*/, const QPSAppearance& /*appearance*/, double value) {
  return showDialTime(value, Seconds::kShown);
}
WordText showTime12(Rendering /*r*/, const QPSAppearance& /*appearance*/, double value) {
  return showDialTime(value, Seconds::kHidden);
}
WordText showTime24WithSeconds(Rendering r, const QPSAppearance& /*appearance*/, double value) {
  return showTime(r, value, Seconds::kShown);
}
WordText showTime24(Rendering r, const QPSAppearance& /*appearance*/, double value) {
  return showTime(r, value, Seconds::kHidden);
}

WordText showYear(Rendering /*r*/, const QPSAppearance& /*appearance*/, double value) {
  return integerText(qpsSerialToDate(value).year, 2);
}

WordText showMonthAbbreviation(Rendering /*r*/, const QPSAppearance& /*appearance*/, double value) {
  return WordText(kMonthWords[static_cast<std::size_t>(qpsSerialToDate(value).month)]);
}

WordText showShortNumericDate(Rendering r, const QPSAppearance& /*appearance*/, double value) {
  const CalendarDate date = qpsSerialToDate(value);
  ResultText text;
  text.appendInteger(date.month);
  text.append('/');
  text.appendInteger(date.day);
  text.append('/');
  text.appendInteger(date.year % 100, 2);
  return r.deliver(text.view());
}

WordText showNamedDate(Rendering r, const QPSAppearance& appearance, double value) {
  return appearance.isDate ? showLongDate(r, appearance, value) : showGeneral(r, appearance, value);
}

WordText showLongDate(Rendering r, const QPSAppearance& /*appearance*/, double value) {
  const CalendarDate date = qpsSerialToDate(value);
  ResultText text;
  text.append(monthNames[static_cast<std::size_t>(date.month)]);
  text.append(' ');
  text.appendInteger(date.day);
  text.append(", ");
  text.appendInteger(date.year, 4);
  return r.deliver(text.view());
}

}  // namespace qps
