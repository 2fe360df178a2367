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

// The factor that puts a piece after so many characters.
constexpr std::uint64_t after(unsigned characters) {
  return std::uint64_t{1} << (8 * characters);
}

constexpr std::uint32_t kAllYears = 10'000, kOneCentury = 100;

constexpr unsigned kFirstDateForm = 5;
constexpr DateForm kDateForms[] = {
    {after(0), 0, after(3), textWord("\0\0-\0\0\0-"sv), kAllYears, 1},  // 04-Jul-99
    {after(0), 0, after(3), textWord("\0\0-\0\0\0"sv), 0, 0},           // 04-Jul
    {0, 0, after(0), textWord("\0\0\0-"sv), kOneCentury, 1},            // Jul-99, Jul-2024
    {after(3), after(0), 0, textWord("\0\0/\0\0/"sv), kAllYears, 1},    // 07/04/99
    {after(3), after(0), 0, textWord("\0\0/\0\0"sv), 0, 0},             // 07/04
};

// A year of 0 to 9999.
TextWord yearWord(const DateForm& form, std::uint32_t year) {
  const std::uint64_t lastTwo = twoDigits(year % 100).characters;
  const bool shortened = year - 1900 < form.shortenedYears;
  const std::uint64_t characters =
      shortened ? lastTwo : twoDigits(year / 100).characters | lastTwo << 16;
  return {characters * form.year, (shortened ? 2U : 4U) * form.year};
}

char* showDialTime(Rendering r, double value, Seconds seconds) {
  return deliver(r, dialText(qpsTimeOfDay(value), seconds));
}

char* showTime(Rendering r, double value, Seconds seconds) {
  if (r.sheet.formatVersion == kDialHoursVersion) return showDialTime(r, value, seconds);
  const TimeOfDay time = qpsTimeOfDay(value);
  return deliver(r, clockText(time.hours == 24 ? 0 : time.hours, time, seconds));
}

}  // namespace

// No branch on the form, because the forms come in any order: a branch that the processor guesses
// wrong takes longer than the pieces that are worked out and not shown.
char* showDatedForm(Rendering r, const QPSAppearance& appearance, double value) {
  if (value > kLastShownSerial || value < kFirstShownSerial) return showOverflow(r);
  if (std::isnan(value)) return deliver(r, kErrorMark);
  const CalendarDate date = dateOfDay(static_cast<std::int32_t>(value));
  const DateForm& form = kDateForms[appearance.formatCode - kFirstDateForm];
  const TextWord& name = kMonthWords[static_cast<std::size_t>(date.month)];
  WordText text({twoDigitsOf(date.day).characters * form.day +
                     twoDigitsOf(date.month).characters * form.month +
                     name.characters * form.monthName + form.separators.characters,
                 form.separators.size});
  text.append(yearWord(form, static_cast<std::uint32_t>(date.year)));
  return deliver(r, text);
}

char* showTime12WithSeconds(Rendering r, const QPSAppearance& /*appearance*/, double value) {
  return showDialTime(r, value, Seconds::kShown);
}
char* showTime12(Rendering r, const QPSAppearance& /*appearance*/, double value) {
  return showDialTime(r, value, Seconds::kHidden);
}
char* showTime24WithSeconds(Rendering r, const QPSAppearance& /*appearance*/, double value) {
  return showTime(r, value, Seconds::kShown);
}
char* showTime24(Rendering r, const QPSAppearance& /*appearance*/, double value) {
  return showTime(r, value, Seconds::kHidden);
}

char* showYear(Rendering r, const QPSAppearance& /*appearance*/, double value) {
  return deliver(r, integerText(qpsSerialToDate(value).year, 2));
}

char* showMonthAbbreviation(Rendering r, const QPSAppearance& /*appearance*/, double value) {
  return deliver(r, WordText(kMonthWords[static_cast<std::size_t>(qpsSerialToDate(value).month)]));
}

char* showShortNumericDate(Rendering r, const QPSAppearance& /*appearance*/, double value) {
  const CalendarDate date = qpsSerialToDate(value);
  ResultText text;
  text.appendInteger(date.month);
  text.append('/');
  text.appendInteger(date.day);
  text.append('/');
  text.appendInteger(date.year % 100, 2);
  return deliver(r, text);
}

char* showNamedDate(Rendering r, const QPSAppearance& appearance, double value) {
  return appearance.isDate ? showLongDate(r, appearance, value) : showGeneral(r, appearance, value);
}

char* showLongDate(Rendering r, const QPSAppearance& /*appearance*/, double value) {
  const CalendarDate date = qpsSerialToDate(value);
  ResultText text;
  text.append(monthNames[static_cast<std::size_t>(date.month)]);
  text.append(' ');
  text.appendInteger(date.day);
  text.append(", ");
  text.appendInteger(date.year, 4);
  return deliver(r, text);
}

}  // namespace qps
