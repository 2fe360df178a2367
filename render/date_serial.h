// SPDX-License-Identifier: MIT
//
// Date serials: a double whose whole part counts days from 1899-12-30 (serial 0, a Saturday) in the
// Gregorian calendar, extended to all years, and whose fraction is the time of day. A negative
// serial counts the days backward, and the day is its whole part cut toward zero: 0.5 and -0.5 are
// both times on 1899-12-30.
//
// Every double has a date and a time. A whole part outside the signed 32-bit range counts as the
// nearest bound of that range, and a value that is not a number as 0.
#ifndef QPSREADER_RENDER_DATE_SERIAL_H
#define QPSREADER_RENDER_DATE_SERIAL_H

#include <cstdint>

namespace qps {

struct CalendarDate {
  int32_t year;   // 0 is the year before 1
  int32_t month;  // 1 to 12
  int32_t day;    // 1 to 31
};

// Takes the same time for every serial.
CalendarDate qpsSerialToDate(double serial);

struct TimeOfDay {
  int32_t hours;  // 0 to 24; 24 only as 24:00:00, for a time that rounds up to midnight
  int32_t minutes;
  int32_t seconds;
};

// The fraction of the magnitude, rounded to the second, halves up; for a negative serial the rest
// of the day (-0.25 is 18:00:00), unless it rounds to 0. The date does not move with it. An
// infinite value is 00:00:00.
TimeOfDay qpsTimeOfDay(double serial);

// The whole part of the serial's magnitude modulo 7.
int32_t weekdayIndex(double serial);

// Where the name of the weekday stands in weekdayNames: the week of a negative serial runs
// backward.
constexpr int32_t weekdayNameIndex(int32_t index, bool nonNegative) {
  return nonNegative || index == 0 ? index : 7 - index;
}

// An hour of 0 to 24 on the dial: 0 and 24 are 12 AM, 12 is 12 PM.
struct DialHour {
  int32_t hour;  // 1 to 12
  bool pm;
};

constexpr DialHour dialHour(int32_t hours) {
  const int32_t onDial = hours % 12;
  return {onDial == 0 ? 12 : onDial, hours >= 12 && hours < 24};
}

}  // namespace qps

#endif  // QPSREADER_RENDER_DATE_SERIAL_H
