// SPDX-License-Identifier: MIT
//
// Date serials: a double whose whole part counts days from 1899-12-30 (serial 0, a Saturday) in the
// Gregorian calendar, extended to all years, and whose fraction is the time of day. A negative
// serial counts the days backward, and the day is its whole part cut toward zero: 0.5 and -0.5 are
// both times on 1899-12-30.
//
// Every double has a date and a time. A whole part outside the signed 32-bit range counts as the
// nearest bound of that range, and a value that is not a number as 0.
//
// All of it is inline: the three numbers of a date, returned by a call, would travel through memory
// in pieces, which takes as long as working them out.
#ifndef QPSREADER_RENDER_DATE_SERIAL_H
#define QPSREADER_RENDER_DATE_SERIAL_H

#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>

namespace qps {

struct CalendarDate {
  std::int32_t year;   // 0 is the year before 1
  std::int32_t month;  // 1 to 12
  std::int32_t day;    // 1 to 31
};

struct TimeOfDay {
  std::int32_t hours;  // 0 to 24; 24 only as 24:00:00, for a time that rounds up to midnight
  std::int32_t minutes;
  std::int32_t seconds;
};

// The whole part as a 32-bit number.
inline std::int32_t wholePart(double serial) {
  using Limits = std::numeric_limits<std::int32_t>;
  if (std::isnan(serial)) return 0;
  if (serial >= Limits::max()) return Limits::max();
  if (serial <= Limits::min()) return Limits::min();
  return static_cast<std::int32_t>(serial);
}

// The calendar repeats every 400 years. Before the year 0 stand as many whole cycles as it takes to
// have every 32-bit day number after their beginning: from there the days are counted without a
// sign. Years are counted from 1 March, which puts the leap day at a year's end.
inline constexpr std::int64_t kCycles = 14'704;
inline constexpr std::int64_t kYearZero = 400 * kCycles;
inline constexpr std::int64_t kSerialZero =
    146'097 * kCycles + 693'899;  // to 0000-03-01, then to 1899-12-30
static_assert(std::numeric_limits<std::int32_t>::min() + kSerialZero >= 0);

// The date of a day, counted as a serial's whole part does; the same time for every day.
//
// Centuries, years and months are straight lines rounded to whole days, each solved for the step
// and for what is left of it:
//
//   - a century has 146097 / 4 days, a year 1461 / 4;
//   - dividing by 1461 is multiplying by 2939745 / 2^32, which is exact enough for the quotient and
//     the remainder of every day of a century;
//   - the month (3 is March, 14 is February) is (2141 day + 197913) / 2^16 for every day of a year,
//     and its day is what is left, in units of 2141.
inline CalendarDate dateOfDay(std::int32_t day) {
  constexpr std::uint64_t kDaysInFourCenturies = 146'097;
  constexpr std::uint64_t kYearsPerQuarterDay = 2'939'745;  // x 2^-32
  constexpr std::uint32_t kMonthsPerDay = 2'141;            // x 2^-16
  constexpr std::uint32_t kFirstOfMarch = 197'913;          // x 2^-16
  constexpr std::uint32_t kFirstOfJanuary = 306;            // day of the year

  const auto days = static_cast<std::uint64_t>(day + kSerialZero);
  const std::uint64_t century = (4 * days + 3) / kDaysInFourCenturies;
  const std::uint64_t dayOfCentury = (4 * days + 3) % kDaysInFourCenturies / 4;

  const std::uint64_t years = kYearsPerQuarterDay * (4 * dayOfCentury + 3);
  const std::uint64_t yearOfCentury = years >> 32;
  const std::uint32_t dayOfYear =
      static_cast<std::uint32_t>(years) / static_cast<std::uint32_t>(kYearsPerQuarterDay) / 4;

  const std::uint32_t months = kMonthsPerDay * dayOfYear + kFirstOfMarch;
  const std::int32_t nextYear = dayOfYear >= kFirstOfJanuary ? 1 : 0;
  const auto year = static_cast<std::int64_t>(100 * century + yearOfCentury) - kYearZero;
  return {static_cast<std::int32_t>(year) + nextYear,
          static_cast<std::int32_t>(months >> 16) - 12 * nextYear,
          static_cast<std::int32_t>((months & 0xFFFF) / kMonthsPerDay) + 1};
}

inline CalendarDate qpsSerialToDate(double serial) {
  return dateOfDay(wholePart(serial));
}

// The fraction of the magnitude, rounded to the second, halves up; for a negative serial the rest
// of the day (-0.25 is 18:00:00), unless it rounds to 0. The date does not move with it. An
// infinite value is 00:00:00.
//
// The rule is: fraction x 86400 + 0.5 in arithmetic with a significand of 64 bits, then cut to
// whole seconds. That gives the exact result, which integers give on every machine:
//
//   - The product is exact. 86400 is 675 x 2^7, so a fraction of 53 bits becomes one of at most 63.
//   - A product of 1/4 and more moves up by at most one bit when 0.5 is added: the sum is exact.
//   - Below, the sum is rounded, but stays between 1/2 and 3/4, and is cut to 0 either way.
//
// With the fraction as part / 2^s, seconds = floor((part x 675 + 2^(s-8)) / 2^(s-7)).
inline TimeOfDay qpsTimeOfDay(double serial) {
  constexpr int kStoredBits = 52;
  constexpr int kScaleBias = 1023 + kStoredBits;
  const auto bits = std::bit_cast<std::uint64_t>(serial);
  const int exponent = static_cast<int>(bits >> kStoredBits) & 0x7FF;
  const std::uint64_t fractionBits = bits & ((std::uint64_t{1} << kStoredBits) - 1);

  // The magnitude is m / 2^s. From 2^52 on (s <= 0; an infinite value too) it is a whole number; at
  // s > 70, subnormal numbers among them, it is less than half a second.
  int s = kScaleBias - exponent;
  if (s <= 0 || s > 70) return {0, 0, 0};
  std::uint64_t part = fractionBits | std::uint64_t{1} << kStoredBits;
  if (s <= kStoredBits) {
    part = (part & ((std::uint64_t{1} << s) - 1)) << (kStoredBits - s);
    s = kStoredBits;
  }
  // part < 2^53, so part x 675 < 2^63; with the half, at most 2^62, it stays below 2^64.
  auto total = static_cast<std::int32_t>((part * 675 + (std::uint64_t{1} << (s - 8))) >> (s - 7));

  constexpr std::int32_t kSecondsPerDay = 86'400;
  if (std::signbit(serial) && total > 0) total = kSecondsPerDay - total;
  return {total / 3'600, total / 60 % 60, total % 60};
}

// The whole part of the serial's magnitude modulo 7.
inline std::int32_t weekdayIndex(double serial) {
  const std::int64_t days = wholePart(serial);
  return static_cast<std::int32_t>((days < 0 ? -days : days) % 7);
}

// Where the name of the weekday stands in weekdayNames: the week of a negative serial runs
// backward.
constexpr std::int32_t weekdayNameIndex(std::int32_t index, bool nonNegative) {
  return nonNegative || index == 0 ? index : 7 - index;
}

// An hour of 0 to 24 on the dial: 0 and 24 are 12 AM, 12 is 12 PM.
struct DialHour {
  std::int32_t hour;  // 1 to 12
  bool pm;
};

constexpr DialHour dialHour(std::int32_t hours) {
  const std::int32_t onDial = hours % 12;
  return {onDial == 0 ? 12 : onDial, hours >= 12 && hours < 24};
}

}  // namespace qps

#endif  // QPSREADER_RENDER_DATE_SERIAL_H
