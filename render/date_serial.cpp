// SPDX-License-Identifier: MIT
#include "render/date_serial.h"

#include <bit>
#include <cmath>
#include <limits>

namespace qps {
namespace {

int32_t wholePart(double serial) {
  using Limits = std::numeric_limits<int32_t>;
  if (std::isnan(serial)) return 0;
  if (serial >= Limits::max()) return Limits::max();
  if (serial <= Limits::min()) return Limits::min();
  return static_cast<int32_t>(serial);
}

// The calendar repeats every 400 years. Before the year 0 stand as many whole cycles as it takes to
// have every 32-bit day number behind their beginning: from there the days are counted without a
// sign. Years are counted from 1 March, which puts the leap day at a year's end.
constexpr int64_t kCycles = 14'704;
constexpr int64_t kYearZero = 400 * kCycles;
constexpr int64_t kSerialZero = 146'097 * kCycles + 693'899;  // to 0000-03-01, then to 1899-12-30
static_assert(std::numeric_limits<int32_t>::min() + kSerialZero >= 0);

}  // namespace

// Centuries, years and months are straight lines rounded to whole days, each solved for the step
// and for what is left of it:
//
//   - a century has 146097 / 4 days, a year 1461 / 4;
//   - dividing by 1461 is multiplying by 2939745 / 2^32, which is exact enough for the quotient and
//     the remainder of every day of a century;
//   - the month (3 is March, 14 is February) is (2141 day + 197913) / 2^16 for every day of a year,
//     and its day is what is left, in units of 2141.
CalendarDate qpsSerialToDate(double serial) {
  constexpr uint64_t kDaysInFourCenturies = 146'097;
  constexpr uint64_t kYearsPerQuarterDay = 2'939'745;  // x 2^-32
  constexpr uint32_t kMonthsPerDay = 2'141;            // x 2^-16
  constexpr uint32_t kFirstOfMarch = 197'913;          // x 2^-16
  constexpr uint32_t kFirstOfJanuary = 306;            // day of the year

  const auto days = static_cast<uint64_t>(wholePart(serial) + kSerialZero);
  const uint64_t century = (4 * days + 3) / kDaysInFourCenturies;
  const uint64_t dayOfCentury = (4 * days + 3) % kDaysInFourCenturies / 4;

  const uint64_t years = kYearsPerQuarterDay * (4 * dayOfCentury + 3);
  const uint64_t yearOfCentury = years >> 32;
  const uint32_t dayOfYear =
      static_cast<uint32_t>(years) / static_cast<uint32_t>(kYearsPerQuarterDay) / 4;

  const uint32_t months = kMonthsPerDay * dayOfYear + kFirstOfMarch;
  const uint32_t day = (months & 0xFFFF) / kMonthsPerDay + 1;

  const bool nextYear = dayOfYear >= kFirstOfJanuary;
  const auto year = static_cast<int64_t>(100 * century + yearOfCentury) - kYearZero;
  return {static_cast<int32_t>(year + (nextYear ? 1 : 0)),
          static_cast<int32_t>((months >> 16) - (nextYear ? 12 : 0)), static_cast<int32_t>(day)};
}

// The rule is: fraction x 86400 + 0.5 in arithmetic with a significand of 64 bits, then cut to
// whole seconds. That gives the exact result, which integers give on every machine:
//
//   - The product is exact. 86400 is 675 x 2^7, so a fraction of 53 bits becomes one of at most 63.
//   - A product of 1/4 and more moves up by at most one bit when 0.5 is added: the sum is exact.
//   - Below, the sum is rounded, but stays between 1/2 and 3/4, and is cut to 0 either way.
//
// With the fraction as part / 2^s, seconds = floor((part x 675 + 2^(s-8)) / 2^(s-7)).
TimeOfDay qpsTimeOfDay(double serial) {
  constexpr int kMantissaBits = 52;
  constexpr int kExponentBias = 1023 + kMantissaBits;
  const auto bits = std::bit_cast<uint64_t>(serial);
  const int exponent = static_cast<int>(bits >> kMantissaBits) & 0x7FF;
  const uint64_t fractionBits = bits & ((uint64_t{1} << kMantissaBits) - 1);

  // The magnitude is m / 2^s. From 2^52 on (s <= 0; an infinite value too) it is a whole number; at
  // s > 70, subnormal numbers among them, it is less than half a second.
  int s = kExponentBias - exponent;
  if (s <= 0 || s > 70) return {0, 0, 0};
  uint64_t part = fractionBits | uint64_t{1} << kMantissaBits;
  if (s <= kMantissaBits) {
    part = (part & ((uint64_t{1} << s) - 1)) << (kMantissaBits - s);
    s = kMantissaBits;
  }
  // part < 2^53, so part x 675 < 2^63; with the half, at most 2^62, it stays below 2^64.
  auto total = static_cast<int32_t>((part * 675 + (uint64_t{1} << (s - 8))) >> (s - 7));

  constexpr int32_t kSecondsPerDay = 86'400;
  if (std::signbit(serial) && total > 0) total = kSecondsPerDay - total;
  return {total / 3'600, total / 60 % 60, total % 60};
}

int32_t weekdayIndex(double serial) {
  const int64_t days = wholePart(serial);
  return static_cast<int32_t>((days < 0 ? -days : days) % 7);
}

}  // namespace qps
