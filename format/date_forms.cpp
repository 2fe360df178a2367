// SPDX-License-Identifier: MIT
//
// The built-in date and time forms. The value is a date serial (render/date_serial.h).
#include <cmath>

#include "format/date_text.h"
#include "format/rendering.h"
#include "render/date_serial.h"
#include "render/name_tables.h"

namespace qps {

namespace {

// The serials that the forms with a range test show: 1600-01-01 and the last day that they reach.
constexpr double kFirstShownSerial = -109571;
constexpr double kLastShownSerial = 474816;

// In files of this version the 24-hour forms show the hours of the dial.
constexpr std::uint16_t kDialHoursVersion = 4103;

// Shows the overflow mark, or that the value is not a number; false when there is a date to show.
bool showsNoDate(Rendering& r) {
  if (r.value > kLastShownSerial || r.value < kFirstShownSerial) {
    showOverflow(r);
    return true;
  }
  if (std::isnan(r.value)) {
    r.text.append(kErrorMark);
    return true;
  }
  return false;
}

std::string_view monthAbbreviation(const CalendarDate& date) {
  return monthAbbreviations[static_cast<std::size_t>(date.month)];
}

// Every year from 1900 on is shortened, the older ones are shown whole.
std::int32_t yearFrom1900(std::int32_t year) {
  return year > 1899 ? year % 100 : year;
}

enum class Seconds : bool { kHidden, kShown };

void showMinutes(Rendering& r, const TimeOfDay& time, std::int32_t hour, Seconds seconds) {
  appendJoined(r.text, ':', hour, time.minutes);
  if (seconds == Seconds::kShown) {
    r.text.append(':');
    r.text.appendInteger(time.seconds, 2);
  }
}

void showDialTime(Rendering& r, Seconds seconds) {
  const TimeOfDay time = qpsTimeOfDay(r.value);
  const DialHour dial = dialHour(time.hours);
  showMinutes(r, time, dial.hour, seconds);
  r.text.append(dial.pm ? " PM" : " AM");
}

void showTime(Rendering& r, Seconds seconds) {
  if (r.sheet.formatVersion == kDialHoursVersion) {
    showDialTime(r, seconds);
    return;
  }
  const TimeOfDay time = qpsTimeOfDay(r.value);
  showMinutes(r, time, time.hours == 24 ? 0 : time.hours, seconds);
}

}  // namespace

void showDayMonthYear(Rendering& r) {
  if (showsNoDate(r)) return;
  const CalendarDate date = qpsSerialToDate(r.value);
  r.text.appendInteger(date.day, 2);
  r.text.append('-');
  r.text.append(monthAbbreviation(date));
  r.text.append('-');
  r.text.appendInteger(yearFrom1900(date.year), 2);
}

void showDayMonth(Rendering& r) {
  if (showsNoDate(r)) return;
  const CalendarDate date = qpsSerialToDate(r.value);
  r.text.appendInteger(date.day, 2);
  r.text.append('-');
  r.text.append(monthAbbreviation(date));
}

void showMonthYear(Rendering& r) {
  if (showsNoDate(r)) return;
  const CalendarDate date = qpsSerialToDate(r.value);
  r.text.append(monthAbbreviation(date));
  r.text.append('-');
  appendYearOfCentury(r.text, date.year);
}

void showNumericDate(Rendering& r) {
  if (showsNoDate(r)) return;
  const CalendarDate date = qpsSerialToDate(r.value);
  appendJoined(r.text, '/', date.month, date.day, yearFrom1900(date.year));
}

void showMonthDay(Rendering& r) {
  if (showsNoDate(r)) return;
  const CalendarDate date = qpsSerialToDate(r.value);
  appendJoined(r.text, '/', date.month, date.day);
}

void showTime12WithSeconds(Rendering& r) {
  showDialTime(r, Seconds::kShown);
}
void showTime12(Rendering& r) {
  showDialTime(r, Seconds::kHidden);
}
void showTime24WithSeconds(Rendering& r) {
  showTime(r, Seconds::kShown);
}
void showTime24(Rendering& r) {
  showTime(r, Seconds::kHidden);
}

void showYear(Rendering& r) {
  r.text.appendInteger(qpsSerialToDate(r.value).year, 2);
}

void showMonthAbbreviation(Rendering& r) {
  r.text.append(monthAbbreviation(qpsSerialToDate(r.value)));
}

void showShortNumericDate(Rendering& r) {
  const CalendarDate date = qpsSerialToDate(r.value);
  r.text.appendInteger(date.month);
  r.text.append('/');
  r.text.appendInteger(date.day);
  r.text.append('/');
  r.text.appendInteger(date.year % 100, 2);
}

void showNamedDate(Rendering& r) {
  if (r.appearance.isDate) {
    showLongDate(r);
  } else {
    showGeneral(r);
  }
}

void showLongDate(Rendering& r) {
  const CalendarDate date = qpsSerialToDate(r.value);
  r.text.append(monthNames[static_cast<std::size_t>(date.month)]);
  r.text.append(' ');
  r.text.appendInteger(date.day);
  r.text.append(", ");
  r.text.appendInteger(date.year, 4);
}

}  // namespace qps
