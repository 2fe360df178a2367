// SPDX-License-Identifier: MIT
//
// What a value shows in the notebook's own formats.
#include <cmath>
#include <random>

#include "tests/reader/format/shown_value.h"

namespace qps::test {
namespace {

// The tables have several rows a line.
// clang-format off

TEST(Format, Templates) {
  const char* const stamp = "TMM' 'DD' 'YY' 'HH':'MM':'SS' 'AMPM";
  const char* const signs = "N'Positive';N'Zero';N'Negative'";
  check({
      {user("TMon"), 45296, "Jan"}, {user("TYYYY"), 45296, "2024"},
      {user("TYYYY"), -693593, "0001"},
      {user("TWeekday"), 45296, "Friday"}, {user("TWeekday"), -1, "Friday"},
      {user("TWeekday"), -7, "Saturday"}, {user("TWeekday"), 0, "Saturday"},
      {user("TWeekday"), 1.75, "Sunday"}, {user("TWeekday"), -2.9, "Thursday"},
      {user("TWday"), 45296, "Fri"}, {user("TWday"), -6, "Sun"},
      {user("TMonth' 'D', 'YYYY'"), 45296, "January 5, 2024"},
      {user(stamp), 36345 + 66605.0 / 86400, "07 04 99 06:30:05 PM"},
      {user(stamp), 45296 + 900.0 / 86400, "01 05 2024 12:15:00 AM"},
      {user(stamp), 45296.5, "01 05 2024 12:00:00 PM"},
      {user(stamp), 36345.999999, "07 04 99 12:00:00 AM"},
      {user(stamp), 1, "12 31 1899 12:00:00 AM"},
      {user(signs), 3, "Positive"}, {user(signs), 0, "Zero"}, {user(signs), -2, "Negative"},
      {user(signs), 0.001, "Positive"},
      {user("N9;N0;N'-'9"), 42, "42"}, {user("N9;N0;N'-'9"), -42.5, "-42.5"},
      {user("N9;N0;N'-'9"), 0.5, "0.5"},
      // Near misses go the general way.
      {user("tMon"), 45296, "45296"}, {user("TMon "), 45296, "Jan "}, {user("TMON"), 45296, "JAN"},
      {user("TYYYY "), 45296, "2024 "}, {user("TWeekday "), 45296, "Friday "},
      {user("TWday'"), 45296, "Fri"}, {user("N9;N0;N'-'9 "), -42, "-42 "},
      {user("N9;N0;N'-'9 "), 0.25, kNoText}, {user("TMonth' 'D', 'YYYY"), 45296, "January 5, 2024"},
      {user("N'positive';N'Zero';N'Negative'"), 3, "positive"}, {user("X"), -5, "-5"},
      {user(""), 1.5, "1.5"}, {user("'T'MM"), 2, "2"},
      // The style named "Date" has the word where no template has.
      {dated("TMon"), 45296, "Jan"}, {dated("TMon "), 45296, "January 5, 2024"},
      {dated("N0.00"), 45296, "January 5, 2024"}, {dated(""), 45296, "January 5, 2024"},
      {dated("X"), 45296, "January 5, 2024"}, {dated(signs), 45296, "Positive"},
  });
}

TEST(Format, SectionsAreChosenBySign) {
  check({
      {user("N0.00;N'('0.00')'"), -2.5, "(2.50)"}, {user("N0.00;N'('0.00')'"), 0, "0.00"},
      {user("N0.00;N'('0.00')'"), 2.5, "2.50"}, {user("N0;N'nil';N'neg '0"), 5, "5"},
      {user("N0;N'nil';N'neg '0"), 0, "nil"}, {user("N0;N'nil';N'neg '0"), -5, "neg 5"},
      {user("N0;N0;N0;N0"), 5, kNoText}, {user("N0;"), -1, kNoText}, {user("N0;"), 1, "1"},
      {user("N0;;N0"), 0, kNoText}, {user("N0;0"), -1, kNoText}, {user("N'a;b'0"), 1, "a"},
      {user("N'a;b'0"), -1, kNoText}, {user("N0.00"), -2.5, "-2.50"},
      {user("N0%;N0.0%"), -0.125, "-12.5%"},
  });
}

TEST(Format, UserNumbers) {
  const std::string long511 = "N'" + std::string(600, 'x') + "'";
  check({
      {user("N0.00"), 1234.5, "1234.50"}, {user("N9,999.00"), 1234567.891, "1,234,567.89"},
      {user("N9,999"), 1000000, "1,000,000"}, {user("N9,999"), 999, "999"},
      {user("N9,999"), -5, "-5"}, {user("N0,000"), 5, "0,005"}, {user("N9"), 100, "100"},
      {user("N9"), 0, kNoText}, {user("N9.99"), 0.5, ".50"}, {user("N00000"), 42, "00042"},
      {user("N0.00%"), 0.1234, "12.34%"}, {user("N0.00%"), -0.1234, "-12.34%"},
      {user("N0.00E+00"), 12345, "1.23E+04"}, {user("N0E+00"), 12345, "1.23E+04"},
      {user("N0E+00"), -12345, "-1.23E+04"}, {user("N0.0#0E+00"), 12346, "1.235E+04"},
      {user("N'$'9,999.00"), 1234.5, "$1,234.50"}, {user("N$0.00"), 5, "5.00"},
      {user("N$0.00"), -5, "-5.00"}, {user("N0.00' kg'"), 2, "2.00 kg"},
      {user("N'Positive'"), 3, "Positive"}, {user("N'a'"), -3, "-a"}, {user("N"), 5, kNoText},
      {user("N"), -5, "-"}, {user("N0.0"), 0.05, "0.1"}, {user("N0.0"), 0.04, "0.0"},
      {user("N0.0,0"), 1234.56, "1234.5,6"}, {user("N000,000"), 1234567, "1,234,567"},
      {user("N9+9-9"), 12, "12"}, {user("N.00"), 1234.5, "1234.50"}, {user("N.00"), 0.5, ".50"},
      {user("N0.'5'0"), 2.375, "2.54"}, {user("N'1,'0000"), 1234567, "1,1234567"},
      {user("N'0.E%'0.0"), 1.25, "0.E%1.2"}, {user("N0' a"), 7, "7 a"}, {user("N0 m2"), 7, "7 m2"},
      {user(long511.c_str()), 1, std::string(127, 'x').c_str()}, {user("N'keep'0%"), 0.5, "50%"},
  });
}

TEST(Format, UserDates) {
  const double when = 36226 + (15 * 3600 + 4 * 60 + 9) / 86400.0;  // Sunday 1999-03-07 15:04:09
  check({
      {user("TDD-Mon-YY"), when, "07-Mar-99"}, {user("TD' 'Month' 'YYYY"), when, "7 March 1999"},
      {user("TWEEKDAY"), when, "SUNDAY"}, {user("Twday mon"), when, "sun mar"},
      {user("THH:MM:SS"), when, "15:04:09"}, {user("THH:MM' 'AMPM"), when, "03:04 PM"},
      {user("TH:M"), when, "15:4"}, {user("TMM/DD/YYYY"), when, "03/07/1999"},
      {user("TMONTH month Month"), when, "MARCH march March"}, {user("TMON mon"), when, "MAR mar"},
      {user("TWDAY Wday weekday"), when, "SUN Sun sunday"}, {user("TH:M:S"), when, "15:4:9"},
      {user("T'AMPM'HH"), when, "AMPM03"}, {user("TAMPM HH"), when, "PM 03"},
      {user("THH AMPM"), 45296, "12 AM"}, {user("THH AMPM"), 0.5, "12 PM"},
      {user("TH AMPM"), 13.0 / 24, "1 PM"}, {user("TYY YYYY"), when, "99 1999"},
      {user("TYY YYYY"), 45296, "2024 2024"}, {user("THH:MM:SS MM"), when, "15:04:09 03"},
      {user("THH'MM'MM"), when, "15MM04"}, {user("TWeekday DD"), -1, "Friday 29"},
      {user("TWeekday DD"), -7, "Saturday 23"}, {user("T"), when, kNoText},
      {user("TH:M"), 0, "0:0"}, {user("T'a''b'"), when, "a'b"}, {user("TPM"), when, "P3"},
      {user("TMonday"), when, "Marday"}, {user("THH:MM"), 0.999999, "00:00"},
      {user("TH"), 0.999999, "0"}, {user("THH:MM AMPM"), 0.999999, "12:00 AM"},
      {user("T'open"), when, "open"},
  });
}

// clang-format on

TEST(Format, RandomFormatTextsStayWithinTheResult) {
  std::minstd_rand random(7);
  const std::string_view alphabet = "TTNN0099,.;'%E+- MDHSYAPonthWeekdayMONAMPM";
  for (int round = 0; round < 400; ++round) {
    std::string text(random() % 2 == 0 ? "N" : "T");
    for (std::size_t i = random() % (round % 4 == 0 ? 3000 : 60); i > 0; --i)
      text += alphabet[random() % alphabet.size()];
    const double value =
        std::ldexp(static_cast<double>(random()), static_cast<int>(random() % 600) - 40);
    for (const double signedValue : {value, -value})
      EXPECT_LE(textOf({.code = kUser, .text = text.c_str()}, signedValue).size(), 127u) << text;
  }
}

}  // namespace
}  // namespace qps::test
