// SPDX-License-Identifier: MIT
//
// What a value shows: one row is a format, a value and a column, and the text and the alignment of
// the cell that comes out of a notebook built to provoke it.
#include <clocale>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <map>
#include <random>

#include "tests/reader/read_book.h"

namespace qps::test {
namespace {

constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr unsigned kNumeric = 0x8A, kLeft = 0x0C, kOverflow = 0x1C, kUser = 113;
constexpr const char* kNoText = "(null)";

struct Format {
  unsigned code = 0;           // the format byte of a style
  const char* text = nullptr;  // of the user format 113
  const char* styleName = nullptr;
  unsigned width = 960;  // eight characters of a font of size 10
  unsigned fontSize = 10;
  unsigned version = 4098;
};

Item show(const Format& format, double value) {
  NotebookBuilder book;
  book.header(format.version).font(format.fontSize, 0, "Arial");
  if (format.text != nullptr) book.userFormat(1, format.text);
  if (format.styleName != nullptr) book.namedStyle(1, 99, format.styleName);
  book.style({.format = format.code, .font = 1, .namedStyle = format.styleName != nullptr});
  book.sheetStart().columnWidth(0, format.width).number({0, 0}, value).sheetEnd();
  return cellsOf(book).at(0);
}

std::string textOf(const Format& format, double value) {
  return show(format, value).text.value_or(kNoText);
}

struct Row {
  Format format;
  double value;
  const char* text;
  unsigned alignment = kNumeric;
};

void check(std::initializer_list<Row> rows) {
  for (const Row& row : rows) {
    const Item cell = show(row.format, row.value);
    const auto trace = [&row] {
      return "code " + std::to_string(row.format.code) + " value " + std::to_string(row.value) +
             " width " + std::to_string(row.format.width) +
             (row.format.text != nullptr ? std::string(" format ") + row.format.text : "");
    };
    EXPECT_EQ(cell.text.value_or(kNoText), row.text) << trace();
    EXPECT_EQ(cell.alignment(), row.alignment) << trace();
  }
}

constexpr Format general(unsigned characters) {
  return {.width = characters * 120};
}

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

constexpr Format user(const char* text) { return {.code = kUser, .text = text}; }
constexpr Format dated(const char* text) {
  return {.code = kUser, .text = text, .styleName = "Date"};
}

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
