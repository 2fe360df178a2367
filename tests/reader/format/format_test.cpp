// SPDX-License-Identifier: MIT
//
// What a value shows in the built-in formats.
#include <clocale>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <map>

#include "tests/reader/format/shown_value.h"

namespace qps::test {
namespace {

// The tables have several rows a line.
// clang-format off

TEST(Format, GeneralForm) {
  const Format in8 = general(8);
  check({
      {in8, 42, "42"}, {in8, 0, "0"}, {in8, -0.0, "0"}, {in8, 0.5, "0.5"}, {in8, -7.25, "-7.25"},
      {in8, 12345678, "12345678"}, {in8, 123456789, "1.23E+008"}, {in8, -1234567, "-1234567"},
      {in8, -12345678, "-1.23E+007"}, {in8, 3.14159265, "3.14159"}, {in8, 2.000000001, "2"},
      {in8, 0.000000001, "1.00E-009"}, {in8, -0.000000001, "-1.00E-009"}, {in8, 1e10, "1.00E+010"},
      {in8, -2147483648.0, "-2.15E+009"}, {in8, 1e100, "1.00E+100"}, {in8, 1e-300, "1.00E-300"},
      {in8, 123456.78, "123456."}, {in8, 1234567.5, "1234567"}, {in8, 12345678.5, "1.23E+007"},
      {in8, -123456.5, "-123456"}, {in8, -1234567.5, "-1.23E+006"}, {in8, 0.00000001, "0.00000"},
      {general(12), 1e10, "10000000000"}, {general(10), 2147483647, "2147483647"},
      {general(9), 2147483647, "2.15E+009"}, {general(10), 2147483648.0, "2147483648"},
      {general(9), 2147483648.0, "2.15E+009"}, {general(11), -2147483648.0, "-2147483648"},
      {general(4), 12.75, "12."}, {general(5), 12.75, "12.7"}, {general(6), 12.75, "12.75"},
      {general(2), 10.5, "1.05E+001"}, {general(2), 3.25, "3"}, {general(2), 42, "42"},
      {general(2), -3.25, "-3.25E+000"}, {general(3), -3.25, "-3"}, {general(1), 7, "7"},
      {general(1), 12, "1.20E+001"}, {general(1), -7, "-7.00E+000"}, {general(1), 3.25, "3"},
      {general(1), 12.5, "1.25E+001"}, {general(1), -3.25, "-3.25E+000"},
      {general(13), 0.123456786, "0.12345679"}, {general(30), 1e20, "100000000000000000000"},
      {general(3), 9.999999999, "10"},
      {{.width = 0x7FFF}, 1e130, "1.00E+130"}, {{.width = 0x7FFF}, 0.5, "0.5"},
  });
  for (const double value : {7.0, 0.5, 0.0}) {
    const std::string expected = value == 7 ? "7.00E+000" : value == 0 ? "0.00E+000" : "5.00E-001";
    EXPECT_EQ(textOf({.width = 59}, value), expected) << "no character fits";
  }
}

TEST(Format, WidthInCharactersFollowsColumnAndFont) {
  const auto fits = [](Format format) {  // the longest run of ones that is not shortened
    std::string ones = "1";
    while (ones.size() <= 9 && textOf(format, std::stod(ones)) == ones)
      ones += '1';
    return ones.size() - 1;
  };
  EXPECT_EQ(fits({.width = 964}), 8u);
  EXPECT_EQ(fits({.width = 964, .fontSize = 12}), 7u);
  EXPECT_EQ(fits({.width = 240}), 2u);
  EXPECT_EQ(fits({.width = 60}), 1u);
  EXPECT_EQ(fits({.width = 59}), 0u);
  EXPECT_EQ(fits({.width = 899}), 7u);
  EXPECT_EQ(fits({.width = 900}), 8u);
  EXPECT_EQ(fits({.width = 964, .fontSize = 0}), 8u);
  EXPECT_EQ(fits({.width = 240, .fontSize = 255}), 0u);
}

TEST(Format, AHiddenColumnShowsNothing) {
  for (const unsigned code : {0u, 1u, 5u, 10u, 16u, 32u, 48u, 64u, 80u, 96u, 112u, kUser}) {
    EXPECT_EQ(show({.code = code, .text = "TMon", .styleName = "Date", .width = 0}, 5).text,
              std::nullopt);
  }
  EXPECT_EQ(show({.code = 1, .width = 0}, kNaN).alignment(), kNumeric);
}

TEST(Format, EveryCodeGoesToItsFamily) {
  const std::map<unsigned, const char*> families = {
      {1, "*"}, {4, kNoText}, {5, "05-Jan-24"}, {6, "05-Jan"}, {7, "Jan-2024"}, {8, "01/05/24"},
      {9, "01/05"}, {10, "12:00:00 PM"}, {11, "12:00 PM"}, {12, "12:00:00"}, {13, "12:00"},
      {14, "2024"}, {15, "Jan"}, {0x12, "45296.50"}, {0x22, "4.53E+04"}, {0x32, "$45,296.50 "},
      {0x42, "4529650.00%"}, {0x52, "45,296.50 "}, {0x62, "1/5/24"}, {112, "January 5, 2024"},
      {113, "January 5, 2024"}, {0x60, "1/5/24"}, {0x10, "45296"},
  };
  for (unsigned code = 0; code < 256; ++code) {
    const auto family = families.find(code);
    if (family == families.end() && code > 16 && code < 112) {
      continue;  // a family with other decimals
    }
    const char* expected = code < 16 ? "45296.5" : "Jan YY";
    const char* styleName = code == 112 || code == 113 ? "Date" : "Other";
    NotebookBuilder book;
    book.header().userFormat(code - 112, "TMon 'YY'").namedStyle(1, 99, styleName);
    book.style({.format = code, .namedStyle = 1}).sheetStart().number({0, 0}, 45296.5).sheetEnd();
    expected = family != families.end() ? family->second : expected;
    EXPECT_THAT(textsOf(book), ElementsAre(expected)) << code;
  }
}

TEST(Format, NumericFamilies) {
  check({
      {{.code = 0x12}, 1234.5, "1234.50"}, {{.code = 0x10}, -2.5, "-2"}, {{.code = 0x10}, 0.5, "0"},
      {{.code = 0x12}, 2.675, "2.67"}, {{.code = 0x1F}, 0.1, "0.100000000000000"},
      {{.code = 0x12}, 1e10, "10000000000.00"}, {{.code = 0x10}, 1e300, "1.00E+300"},
      {{.code = 0x22}, 123456, "1.23E+05"}, {{.code = 0x20}, 5, "5E+00"},
      {{.code = 0x22}, 1e-120, "1.00E-120"}, {{.code = 0x21}, -0.00015, "-1.5E-04"},
      {{.code = 0x22}, 0, "0.00E+00"}, {{.code = 0x32}, 1234.5, "$1,234.50 "},
      {{.code = 0x32}, -1234.5, "($1,234.50) "}, {{.code = 0x32}, -0.001, "($0.00) "},
      {{.code = 0x32}, 0, "$0.00 "}, {{.code = 0x30}, 999, "$999 "},
      {{.code = 0x32}, 100000, "$100,000.00 "}, {{.code = 0x30}, -999999.5, "($1,000,000) "},
      {{.code = 0x30}, 1e125, "1.00E+125"}, {{.code = 0x52}, -1234.5, "(1,234.50) "},
      {{.code = 0x50}, 1234567, "1,234,567 "}, {{.code = 0x51}, 12.25, "12.2 "},
      {{.code = 0x50}, -1e125, "-1.00E+125"}, {{.code = 0x41}, 0.125, "12.5%"},
      {{.code = 0x40}, -0.05, "-5%"}, {{.code = 0x40}, 1, "100%"},
      {{.code = 0x40}, 1e308, "1.00E+308"}, {{.code = 0x42}, 1e130, "1.00E+130"},
  });
}

TEST(Format, NumbersOfUpTo127CharactersAreShown) {
  for (const double value : {1e109, 1e110, 1e111, 1e112, -1e109, -1e110, -1e111}) {
    char exact[400];
    const int length = std::snprintf(exact, sizeof(exact), "%.15f", value);
    const std::string expected = length <= 127 ? exact : textOf(general(1), value);
    EXPECT_EQ(textOf({.code = 0x1F}, value), expected);
  }
  const Format wide{.width = 0x7FFF};  // General: 2^421 has 127 digits, and zeros that go
  EXPECT_EQ(textOf(wide, 0x1p421).size(), 127u);
  EXPECT_EQ(textOf(wide, 0x1p421).substr(0, 8), "54153704");
  EXPECT_EQ(textOf(wide, -0x1p421), "-5.42E+126");
  EXPECT_EQ(textOf(wide, 0x1p422), "1.08E+127");
  for (int digits = 93; digits <= 97; ++digits) {  // 127 characters with "$", separators and space
    const std::string text = textOf({.code = 0x30}, 2 * std::pow(10.0, digits));
    const int length = digits + 1 + digits / 3 + 2;
    EXPECT_EQ(text.size(), length <= 127 ? static_cast<std::size_t>(length) : 9u) << digits;
  }
}

TEST(Format, Bars) {
  const Format bars{.code = 1};
  const std::string bar127(127, '+');
  check({
      {bars, 0, ".", kLeft}, {bars, 3, "+++", kLeft}, {bars, 2.5, "+++", kLeft},
      {bars, -0.2, "-", kLeft}, {bars, -3, "---", kLeft}, {bars, 8, "++++++++", kLeft},
      {bars, -8, "--------", kLeft}, {bars, 8.5, "*", kOverflow}, {bars, 9, "*", kOverflow},
      {bars, -9, "*", kOverflow}, {bars, kInf, "*", kOverflow}, {bars, 1e300, "*", kOverflow},
      {{.code = 1, .width = 0x7FFF}, 127, bar127.c_str(), kLeft},
      {{.code = 1, .width = 0x7FFF}, 127.5, "*", kOverflow},
      {{.code = 1, .width = 0x7FFF}, -128, "*", kOverflow},
      {{.code = 1, .width = 59}, 0.5, "*", kOverflow}, {{.code = 1, .width = 59}, 0, ".", kLeft},
  });
}

TEST(Format, ValuesThatAreNoNumbersShowErr) {
  const char* const texts[] = {"N0.00", "TDD-Mon-YY", "TMon", "N9;N0;N'-'9", "X",
                               "N'Positive';N'Zero';N'Negative'", "TWeekday"};
  for (const double value : {kNaN, -kNaN, kInf, -kInf}) {
    const bool isFinite = std::isnan(value);
    for (const unsigned code :
         {0u, 2u, 10u, 11u, 12u, 13u, 14u, 15u, 0x12u, 0x22u, 0x32u, 0x42u, 0x52u, 0x60u, 112u}) {
      EXPECT_EQ(textOf({.code = code, .styleName = "Date"}, value), "ERR") << code;
    }
    for (const unsigned code : {1u, 5u, 6u, 7u, 8u, 9u})
      EXPECT_EQ(textOf({.code = code}, value), isFinite ? "ERR" : "*") << code;
    for (const char* text : texts)
      EXPECT_EQ(textOf({.code = kUser, .text = text}, value), "ERR") << text;
    EXPECT_EQ(textOf({.width = 59}, value), "ERR");
  }
}

TEST(Format, BuiltInDates) {
  const double jul1999 = 36345, mar1850 = -18193, jan1900 = 2, jan2000 = 36526;
  const Format named{.code = 112, .styleName = "Date"};
  check({
      {{.code = 5}, jul1999, "04-Jul-99"}, {{.code = 7}, jul1999, "Jul-99"},
      {{.code = 8}, jul1999, "07/04/99"}, {{.code = 5}, mar1850, "09-Mar-1850"},
      {{.code = 7}, mar1850, "Mar-1850"}, {{.code = 8}, mar1850, "03/09/1850"},
      {{.code = 96}, mar1850, "3/9/50"}, {{.code = 14}, mar1850, "1850"},
      {{.code = 5}, jan1900, "01-Jan-00"}, {{.code = 5}, 1, "31-Dec-1899"},
      {{.code = 8}, jan1900, "01/01/00"}, {{.code = 8}, 1.99, "12/31/1899"},
      {{.code = 7}, jan1900, "Jan-00"}, {{.code = 7}, 1, "Dec-1899"},
      {{.code = 7}, 36525, "Dec-99"}, {{.code = 7}, jan2000, "Jan-2000"},
      {{.code = 96}, jan2000, "1/1/00"}, {{.code = 15}, 60, "Feb"}, {{.code = 15}, 61, "Mar"},
      {{.code = 6}, -0.5, "30-Dec"}, {{.code = 14}, 474817, "3200"}, {{.code = 14}, -693593, "01"},
      {{.code = 6}, 36585, "29-Feb"}, {{.code = 5}, 474816, "31-Dec-99"},
      {{.code = 5}, -109571, "01-Jan-1600"}, {named, 45296, "January 5, 2024"},
      {named, -693593, "January 1, 0001"}, {{.code = 112, .styleName = "Dated"}, 45296, "45296"},
      {{.code = 112}, 45296, "45296"}, {{.code = 96}, 2147483647, "7/10/10"},
      {{.code = 96}, 1e15, "7/10/10"}, {{.code = 96}, -2147483648.0, "6/20/-11"},
      {{.code = 96}, -1e15, "6/20/-11"},
  });
  for (const unsigned code : {5u, 6u, 7u, 8u, 9u}) {
    for (const double value : {474816.5, 474817.0, -109571.5, -109572.0, 1e300}) {
      check({{{.code = code}, value, "*", kOverflow}});
    }
    EXPECT_EQ(show({.code = code}, 474816).alignment(), kNumeric);
    EXPECT_EQ(show({.code = code}, -109571).alignment(), kNumeric);
  }
}

TEST(Format, BuiltInTimes) {
  const struct {
    double value;
    const char *seconds12, *minutes12, *seconds24, *minutes24;
  } rows[] = {
      {0, "12:00:00 AM", "12:00 AM", "00:00:00", "00:00"},
      {0.25, "06:00:00 AM", "06:00 AM", "06:00:00", "06:00"},
      {45296.5, "12:00:00 PM", "12:00 PM", "12:00:00", "12:00"},
      {0.75, "06:00:00 PM", "06:00 PM", "18:00:00", "18:00"},
      {13.0 / 24, "01:00:00 PM", "01:00 PM", "13:00:00", "13:00"},
      {0.99999, "11:59:59 PM", "11:59 PM", "23:59:59", "23:59"},
      {0.999999, "12:00:00 AM", "12:00 AM", "00:00:00", "00:00"},
      {-0.25, "06:00:00 PM", "06:00 PM", "18:00:00", "18:00"},
      {-1.5, "12:00:00 PM", "12:00 PM", "12:00:00", "12:00"},
      {-0.000001, "12:00:00 AM", "12:00 AM", "00:00:00", "00:00"},
      {8388607.75, "06:00:00 PM", "06:00 PM", "18:00:00", "18:00"},
      {8388608.25, "06:00:00 AM", "06:00 AM", "06:00:00", "06:00"},
      {1e18, "12:00:00 AM", "12:00 AM", "00:00:00", "00:00"},
  };
  for (const auto& row : rows) {
    check({{{.code = 10}, row.value, row.seconds12}, {{.code = 11}, row.value, row.minutes12},
           {{.code = 12}, row.value, row.seconds24}, {{.code = 13}, row.value, row.minutes24},
           {{.code = 12, .version = 4103}, row.value, row.seconds12},
           {{.code = 13, .version = 4103}, row.value, row.minutes12},
           {{.code = 12, .version = 4102}, row.value, row.seconds24},
           {{.code = 13, .version = 4104}, row.value, row.minutes24},
           {{.code = 10, .version = 4103}, row.value, row.seconds12}});
  }
}

// clang-format on

#ifndef __wasm__  // whose C library has one locale
TEST(Format, DoesNotDependOnTheProcesssLocale) {
#if defined(__GLIBC__)
  ASSERT_EQ(setenv("LOCPATH", QPS_TEST_LOCALES, 1), 0);
#endif
  if (std::setlocale(LC_ALL, "de_DE.UTF-8") == nullptr)
    GTEST_SKIP() << "no locale with a decimal comma could be built";
  char text[8];
  std::snprintf(text, sizeof(text), "%.1f", 1.5);
  EXPECT_STREQ(text, "1,5");
  check({
      {{}, 1234.5, "1234.5"},
      {{.code = 0x12}, 1234.5, "1234.50"},
      {{.code = 0x22}, 1.5, "1.50E+00"},
      {{.code = 0x32}, 1234.5, "$1,234.50 "},
      {{.code = 0x42}, 0.5, "50.00%"},
      {general(1), 12.5, "1.25E+001"},
      {user("N9,999.00"), 1234.5, "1,234.50"},
      {user("N0.00E+00"), 12345, "1.23E+04"},
      {user("TMONTH"), 0, "DECEMBER"},
  });
  std::setlocale(LC_ALL, "C");
}
#endif

}  // namespace
}  // namespace qps::test
