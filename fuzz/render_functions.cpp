// SPDX-License-Identifier: MIT
//
// What no cell can tell is wrong: the functions of render/, each against a second, plainer way to
// the same result: digits against the C library's printing, dates against the calendar's
// definition, number sections in their quick form against the walk over their characters. The
// input: a value, a count of decimals, the size of the text's area, a format text.
#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <limits>
#include <string_view>

#include <qpsreader/qps_reader.h>
#include "fuzz/input_bytes.h"
#include "reader/render/date_serial.h"
#include "reader/render/number_text.h"
#include "reader/render/text_buffer.h"
#include "reader/render/user_date.h"
#include "reader/render/user_number.h"
#include "tests/support/recording_host.h"

namespace {

using namespace qps;
using test::require;

constexpr std::size_t kMostPrintedBytes = 1024;

// What `print` appends must be `expected`, whole or cut where the area ends.
template <typename Print>
void requirePrinted(std::size_t areaBytes, std::string_view expected, const Print& print) {
  char area[kMostPrintedBytes];
  TextBuffer text(std::span<char>(area, areaBytes));
  print(text);
  require(text.view() == expected.substr(0, areaBytes - 1), "digits as the C library prints them");
  require(text.truncated() == (expected.size() > areaBytes - 1), "a cut is noted");
  require(text.c_str()[text.size()] == '\0', "a text ends with a zero");
}

template <typename... Values>
std::string_view printC(std::array<char, kMostPrintedBytes>& area, const char* format,
                        Values... values) {
  return {area.data(),
          static_cast<std::size_t>(std::snprintf(area.data(), area.size(), format, values...))};
}

void checkDigits(double value, int decimals, std::size_t areaBytes) {
  std::array<char, kMostPrintedBytes> area;
  requirePrinted(areaBytes, printC(area, "%.*f", decimals, value),
                 [&](TextBuffer& text) { text.appendFixed(value, decimals); });
  requirePrinted(areaBytes, printC(area, "%.*E", decimals, value),
                 [&](TextBuffer& text) { text.appendScientific(value, decimals); });
  const auto integer = static_cast<std::int32_t>(std::fmod(value, 2147483648.0));
  const int minDigits = 1 + decimals % 8;
  requirePrinted(areaBytes, printC(area, "%.*d", minDigits, integer),
                 [&](TextBuffer& text) { text.appendInteger(integer, minDigits); });
}

// Zeros that end the decimals go, and the point with the last of them; under precision 0 those of
// the whole part too, except a first character.
void checkTrimmed(double value, int precision) {
  std::array<char, kMostPrintedBytes> area, trimmedArea;
  std::string_view expected = printC(area, "%.*f", precision, value);
  while (expected.size() > 1 && expected.ends_with('0'))
    expected.remove_suffix(1);
  if (expected.ends_with('.')) expected.remove_suffix(1);
  TextBuffer trimmed(trimmedArea);
  qpsFormatTrimmed(trimmed, value, precision);
  require(trimmed.view() == expected, "digits without the zeros that end them");
}

// Separators before each three digits, counted from the point; the digits themselves as without.
void checkGrouped(double value, int decimals) {
  char plainArea[kMostPrintedBytes], groupedArea[kMostPrintedBytes];
  TextBuffer plain(plainArea), grouped(groupedArea);
  plain.appendFixed(std::fabs(value), decimals);
  appendGrouped(grouped, std::fabs(value), decimals);
  std::size_t digitsLeft = std::min(plain.view().find('.'), plain.size());
  std::string_view rest = grouped.view();
  for (const char c : plain.view()) {
    require(!rest.empty() && rest.front() == c, "the digits of the plain text");
    rest.remove_prefix(1);
    if (digitsLeft > 0 && --digitsLeft > 0 && digitsLeft % 3 == 0) {
      require(!rest.empty() && rest.front() == ',', "a separator every three digits");
      rest.remove_prefix(1);
    }
  }
  require(rest.empty(), "nothing behind the digits");
}

// Counts the days back from a date, month by month as the calendar has them.
std::int64_t serialOf(const CalendarDate& date) {
  constexpr int kDaysBefore[] = {0, 31, 59, 90, 120, 151, 181, 212, 243, 273, 304, 334};
  constexpr std::int64_t kSerialOfYearOne = -693593;  // 0001-01-01
  const std::int64_t years = std::int64_t{date.year} - 1;
  const auto floorDivide = [](std::int64_t a, std::int64_t b) {
    return a / b - (a % b < 0 ? 1 : 0);
  };
  const std::int64_t year = date.year;
  const bool isLeap = year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
  return kSerialOfYearOne + 365 * years + floorDivide(years, 4) - floorDivide(years, 100) +
         floorDivide(years, 400) + kDaysBefore[date.month - 1] +
         (isLeap && date.month > 2 ? 1 : 0) + date.day - 1;
}

void checkDate(double serial) {
  using Limits = std::numeric_limits<std::int32_t>;
  const CalendarDate date = qpsSerialToDate(serial);
  require(date.month >= 1 && date.month <= 12 && date.day >= 1 && date.day <= 31, "a real date");
  const double whole = std::isnan(serial) ? 0 : std::trunc(serial);
  const double bounded = std::fmin(std::fmax(whole, Limits::min()), Limits::max());
  require(serialOf(date) == static_cast<std::int64_t>(bounded), "the date of the serial");
  require(weekdayIndex(serial) == std::fmod(std::fabs(bounded), 7), "the weekday of the serial");

  const TimeOfDay time = qpsTimeOfDay(serial);
  const std::int32_t total = (time.hours * 60 + time.minutes) * 60 + time.seconds;
  require(time.minutes >= 0 && time.minutes < 60 && time.seconds >= 0 && time.seconds < 60 &&
              total >= 0 && total <= 86400,
          "a time of day");
  if (!std::isfinite(serial)) return;
  // Round the clock, there is at most half a second between the two, and what this product loses.
  const double fraction = std::fmod(serial, 1.0) * 86400;
  require(std::fabs(std::remainder(fraction - total, 86400)) <= 0.5000001,
          "the fraction in seconds");
}

void checkUserFormat(std::string_view text, double value) {
  constexpr std::size_t kMostChars = 511;
  test::RecordingHost host({});
  char area[kMostChars + 1], otherArea[kMostChars + 1];
  TextBuffer date(area);
  require(qpsFormatUserDate(date, parseDateFormat(text), userDateFields(value), host.services()) ==
              text.starts_with('T'),
          "a date format begins with T");
  if (!std::isfinite(value)) return;
  const NumberSection section = parseNumberSection(text);
  NumberSection walked = section;
  walked.plainFrom = std::numeric_limits<double>::infinity();
  for (const std::uint32_t formatSection : {0U, 1U, 2U}) {
    TextBuffer quick(area), slow(otherArea);
    const auto shows = [&](TextBuffer& out, const NumberSection& by) {
      return qpsFormatUserNumber(out, by, formatSection, std::fabs(value), !(value < 0));
    };
    require(shows(quick, section) == text.starts_with('N'), "a number section begins with N");
    shows(slow, walked);
    require(quick.view() == slow.view(), "the quick form shows what the walk shows");
  }
}

// Widens "E+05" at a text's end to "E+005" and touches nothing else.
void checkExponent(std::string_view text) {
  char area[300];
  const std::size_t size = std::min(text.substr(0, text.find('\0')).size(), sizeof(area) - 2);
  std::memcpy(area, text.data(), size);
  area[size] = '\0';
  qps2to3E(area);
  const std::size_t widened = std::strlen(area);
  require(widened == size || widened == size + 1, "at most one digit more");
  if (widened == size) {
    require(text.substr(0, size) == area, "any other text stays");
  } else {
    require(area[size - 2] == '0' && area[size - 4] == 'E', "a zero before two digits");
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::InputBytes input(data, size);
  const double value = input.f64();
  const int decimals = input.u16() % 512;
  const std::size_t areaBytes = 1 + input.u16() % (kMostPrintedBytes - 1);
  const auto rest = input.rest();
  const std::string_view text(reinterpret_cast<const char*>(rest.data()), rest.size());
  if (std::isfinite(value)) {
    checkDigits(value, decimals, areaBytes);
    checkTrimmed(value, decimals);
    checkGrouped(value, decimals);
  }
  checkDate(value);
  checkUserFormat(text, value);
  checkExponent(text);
  return 0;
}
