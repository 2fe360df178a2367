// SPDX-License-Identifier: MIT
#include "reader/render/date_serial.h"

#include <gtest/gtest.h>

#include <cfloat>
#include <chrono>
#include <climits>
#include <cmath>
#include <random>
#include <string>

namespace qps {
namespace {

std::string textOf(const CalendarDate& date) {
  return std::to_string(date.year) + '-' + std::to_string(date.month) + '-' +
         std::to_string(date.day);
}

std::string textOf(const TimeOfDay& time) {
  return std::to_string(time.hours) + ':' + std::to_string(time.minutes) + ':' +
         std::to_string(time.seconds);
}

TEST(DateSerial, Dates) {
  struct Row {
    double serial;
    const char* date;
  };
  for (const Row& row :
       {Row{0, "1899-12-30"},        {0.5, "1899-12-30"},     {-0.5, "1899-12-30"},
        {1, "1899-12-31"},           {1.5, "1899-12-31"},     {2, "1900-1-1"},
        {2.75, "1900-1-1"},          {60, "1900-2-28"},       {61, "1900-3-1"},
        {366, "1900-12-31"},         {367, "1901-1-1"},       {36526, "2000-1-1"},
        {36585, "2000-2-29"},        {45296.999, "2024-1-5"}, {-1, "1899-12-29"},
        {-1.5, "1899-12-29"},        {-363, "1899-1-1"},      {-364, "1898-12-31"},
        {-36522, "1800-1-1"},        {-109571, "1600-1-1"},   {474816, "3199-12-31"},
        {std::nan(""), "1899-12-30"}}) {
    EXPECT_EQ(textOf(qpsSerialToDate(row.serial)), row.date) << row.serial;
  }
  const std::string last = textOf(qpsSerialToDate(INT_MAX));
  const std::string first = textOf(qpsSerialToDate(INT_MIN));
  for (const double beyond : {2147483647.5, 2147483648.0, 1e300, HUGE_VAL}) {
    EXPECT_EQ(textOf(qpsSerialToDate(beyond)), last);
    EXPECT_EQ(textOf(qpsSerialToDate(-1 - beyond)), first);
  }
}

TEST(DateSerial, EveryDayOfTenThousandYears) {
  using std::chrono::days, std::chrono::sys_days, std::chrono::year, std::chrono::year_month_day;
  using std::chrono::December, std::chrono::January;
  const sys_days zero = year(1899) / December / 30;
  const sys_days last = year(9999) / December / 31;
  for (sys_days day = year(1) / January / 1; day <= last; day += days(1)) {
    const auto serial = static_cast<int>((day - zero).count());
    const year_month_day expected(day);
    const CalendarDate date = qpsSerialToDate(serial);
    ASSERT_TRUE(date.year == static_cast<int>(expected.year()) &&
                date.month == static_cast<int>(static_cast<unsigned>(expected.month())) &&
                date.day == static_cast<int>(static_cast<unsigned>(expected.day())))
        << serial << ": " << textOf(date);
    const auto weekday = static_cast<int>((std::chrono::weekday(day).c_encoding() + 1) % 7);
    ASSERT_EQ(weekdayNameIndex(weekdayIndex(serial), serial >= 0), weekday) << serial;
  }
}

bool isLeapYear(std::int64_t year) {
  return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
}

// The definition: a year at a time from 1900 on, or from 1899 back.
CalendarDate walkToDate(std::int64_t serial) {
  constexpr int kMonthLengths[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  const bool forward = serial >= 2;
  const int step = forward ? 1 : -1;
  std::int64_t year = forward ? 1900 : 1899;
  std::int64_t left = forward ? serial - 1 : 2 - serial;
  for (std::int64_t length; left > (length = isLeapYear(year) ? 366 : 365); year += step)
    left -= length;
  int month = forward ? 1 : 12;
  const auto lengthOf = [&](int m) {
    return kMonthLengths[m - 1] + (m == 2 && isLeapYear(year) ? 1 : 0);
  };
  for (; left > lengthOf(month); month += step)
    left -= lengthOf(month);
  return {static_cast<std::int32_t>(year), month,
          static_cast<std::int32_t>(forward ? left : lengthOf(month) - left + 1)};
}

TEST(DateSerial, FarDaysAreWhereTheYearWalkEnds) {
  for (const std::int64_t serial :
       {std::int64_t{INT_MIN}, std::int64_t{INT_MIN} + 1, std::int64_t{-1234567890},
        std::int64_t{-693959}, std::int64_t{2000000000}, std::int64_t{INT_MAX}}) {
    EXPECT_EQ(textOf(qpsSerialToDate(static_cast<double>(serial))), textOf(walkToDate(serial)));
  }
}

// What holds for ten thousand years holds for all of them.
TEST(DateSerial, TheCalendarRepeatsEvery400Years) {
  constexpr std::int64_t kCycleDays = 146097;
  std::mt19937_64 random(1);
  for (int i = 0; i < 200'000; ++i) {
    const std::int64_t serial = static_cast<std::int32_t>(random());
    const std::int64_t cycles = serial / kCycleDays;
    CalendarDate near = qpsSerialToDate(static_cast<double>(serial - cycles * kCycleDays));
    near.year += static_cast<std::int32_t>(cycles * 400);
    ASSERT_EQ(textOf(qpsSerialToDate(static_cast<double>(serial))), textOf(near)) << serial;
  }
}

TEST(DateSerial, WeekdaysOfFarDays) {
  EXPECT_EQ(weekdayIndex(-1), 1);
  EXPECT_EQ(weekdayIndex(1.75), 1);
  EXPECT_EQ(weekdayIndex(1e300), INT_MAX % 7);
  EXPECT_EQ(weekdayIndex(-1e300), 2147483648 % 7);
  EXPECT_EQ(weekdayIndex(std::nan("")), 0);
}

TEST(TimeOfDay, Times) {
  struct Row {
    double serial;
    const char* time;
  };
  for (const Row& row : {Row{0, "0:0:0"},
                         {-0.0, "0:0:0"},
                         {0.25, "6:0:0"},
                         {0.5, "12:0:0"},
                         {1.25, "6:0:0"},
                         {0.99999, "23:59:59"},
                         {0.999999, "24:0:0"},
                         {-0.25, "18:0:0"},
                         {-0.75, "6:0:0"},
                         {-1.5, "12:0:0"},
                         {-0.000001, "0:0:0"},
                         {-0.999999, "0:0:0"},
                         {8388607.75, "18:0:0"},
                         {0x1p51 + 0.5, "12:0:0"},
                         {-0x1p50 - 0.25, "18:0:0"},
                         {0x1p52 + 1, "0:0:0"},
                         {1e300, "0:0:0"},
                         {DBL_TRUE_MIN, "0:0:0"},
                         {-HUGE_VAL, "0:0:0"},
                         {std::nan(""), "0:0:0"},
                         // Half a second less a unit in the last place, which arithmetic in double
                         // rounds up.
                         {5.787037037037036e-06, "0:0:0"},
                         {4.0509259259259258e-05, "0:0:3"},
                         {0.00019097222222222221, "0:0:16"}}) {
    EXPECT_EQ(textOf(qpsTimeOfDay(row.serial)), row.time) << row.serial;
  }
}

#if LDBL_MANT_DIG == 64
TEST(TimeOfDay, RoundsAsASignificandOf64Bits) {
  for (const double base : {0.0, 1.0, 45296.0, 8388607.0, 0x1p40}) {
    for (int halfSecond = 0; halfSecond <= 2 * 86400; ++halfSecond) {
      double serial = base + halfSecond / 172800.0;
      for (int i = 0; i < 3; ++i)
        serial = std::nextafter(serial, 0.0);
      for (int i = 0; i < 7; ++i, serial = std::nextafter(serial, HUGE_VAL)) {
        const double fraction = serial - std::trunc(serial);
        const auto total = static_cast<int>(static_cast<long double>(fraction) * 86400 + 0.5L);
        const int complement = total > 0 ? 86400 - total : 0;
        const TimeOfDay time = qpsTimeOfDay(serial);
        const TimeOfDay negative = qpsTimeOfDay(-serial);
        ASSERT_EQ(time.hours * 3600 + time.minutes * 60 + time.seconds, total) << serial;
        ASSERT_EQ(negative.hours * 3600 + negative.minutes * 60 + negative.seconds, complement);
        ASSERT_TRUE(time.minutes < 60 && time.seconds < 60);
      }
    }
  }
}
#endif

TEST(TimeOfDay, HoursOfTheDial) {
  constexpr int kHours[] = {12, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11};
  for (int hours = 0; hours <= 24; ++hours) {
    EXPECT_EQ(dialHour(hours).hour, kHours[hours % 12]);
    EXPECT_EQ(dialHour(hours).pm, hours >= 12 && hours <= 23) << hours;
  }
}

}  // namespace
}  // namespace qps
