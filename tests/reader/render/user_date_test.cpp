// SPDX-License-Identifier: MIT
#include "reader/render/user_date.h"

#include <gtest/gtest.h>

#include <cctype>
#include <cstring>
#include <random>
#include <string>

#include <qpsreader/qps_reader.h>

namespace qps {
namespace {

char* toUpper(SSHostServices*, char* text) {
  for (char* at = text; *at != '\0'; ++at)
    *at = static_cast<char>(std::toupper(*at));
  return text;
}

char* toLower(SSHostServices*, char* text) {
  for (char* at = text; *at != '\0'; ++at)
    *at = static_cast<char>(std::tolower(*at));
  return text;
}

// What the renderer gives, or "null".
std::string shown(std::string_view format, const UserDateFields& fields,
                  char* (*upper)(SSHostServices*, char*) = toUpper) {
  SSHostServices services{};
  services.toUpperText = upper;
  services.toLowerText = toLower;
  char userDateBuffer[512];
  TextBuffer text(userDateBuffer);
  if (!qpsFormatUserDate(text, parseDateFormat(format), fields, &services)) return "null";
  return std::string(text.view());
}

std::string shown(std::string_view format, double serial) {
  return shown(format, userDateFields(serial));
}

constexpr UserDateFields kSunday = {{1999, 3, 7}, {15, 4, 9}, 1, true};

TEST(UserDate, Formats) {
  struct Row {
    const char* format;
    const char* text;
  };
  for (const Row& row : {Row{"TDD-Mon-YY", "07-Mar-99"},
                         {"TD' 'Month' 'YYYY", "7 March 1999"},
                         {"TWEEKDAY", "SUNDAY"},
                         {"TWeekday weekday", "Sunday sunday"},
                         {"TWDAY Wday wday", "SUN Sun sun"},
                         {"TMONTH Month month", "MARCH March march"},
                         {"TMON Mon mon", "MAR Mar mar"},
                         {"Twday mon", "sun mar"},
                         {"THH:MM:SS", "15:04:09"},
                         {"THH:MM' 'AMPM", "03:04 PM"},
                         {"TH:M", "15:4"},
                         {"TH:M:S", "15:4:9"},
                         {"TMM/DD/YYYY", "03/07/1999"},
                         // The minute only right after an hour, whatever literals stand between.
                         {"THH':'MM", "15:04"},
                         {"THH:MM:SS MM", "15:04:09 03"},
                         {"THH MM MM", "15 04 03"},
                         {"TM H' o''clock, 'M", "3 15 o'clock, M"},
                         // AMPM anywhere, in quotes too.
                         {"T'AMPM'HH", "AMPM03"},
                         {"TAMPM HH", "PM 03"},
                         {"TAM", "A3"},
                         // Literals.
                         {"T'a''b'", "a'b"},
                         {"T''''", "'"},
                         {"T''DD", "07"},
                         {"T'DD", "DD"},
                         {"TDD'", "07"},
                         {"T'x''", "x'"},
                         {"TPM", "P3"},
                         {"TMonday", "Marday"},
                         {"Tnoon, \xE9t\xE9", "noon, \xE9t\xE9"},
                         {"TYYYYYY", "199999"},
                         {"TYYY", "99Y"},
                         {"TDDD", "077"},
                         {"TYY YYYY", "99 1999"},
                         {"T", ""},
                         {"", "null"},
                         {"tDD", "null"},
                         {"NDD", "null"}}) {
    EXPECT_EQ(shown(row.format, kSunday), row.text) << row.format;
  }
}

TEST(UserDate, Values) {
  struct Row {
    double serial;
    const char* format;
    const char* text;
  };
  for (const Row& row : {Row{45296, "TWeekday, Month D, YYYY", "Friday, January 5, 2024"},
                         {45296, "TYY YYYY", "2024 2024"},
                         {45296, "TD/M/YY", "5/1/2024"},
                         {-1, "TWeekday DD", "Friday 29"},
                         {-7, "TWeekday DD", "Saturday 23"},
                         {0, "TWeekday DD", "Saturday 30"},
                         {45296, "TDD-Mon-YYYY", "05-Jan-2024"},
                         {45296.75, "TD wday HAMPM", "5 fri 6PM"},
                         {45296.75, "TWday' 'H' 'AMPM", "Fri 6 PM"},
                         {45296, "T'12345678'DD", "1234567805"},
                         {45296, "T'123456789'DD", "12345678905"},
                         {45296, "TDD'abcdefghijk'DD", "05abcdefghijk05"},
                         {45296, "TDD'abcdefgh'-YYYY-D", "05abcdefgh-2024-5"},
                         {-1, "TYY", "1899"},
                         {2, "TYY", "00"},
                         {-693959.0, "TYYYY", "0000"},
                         {-693960.0, "TYYYY", "-0001"},
                         {2e9, "TYYYY", "5477714"},
                         {0.0, "TH:MM AMPM", "12:00 AM"},
                         {0.5, "TH:MM AMPM", "12:00 PM"},
                         {0.55, "TH:MM AMPM", "1:12 PM"},
                         // Rounded up to midnight.
                         {0.999999, "THH:MM' 'AMPM", "12:00 AM"},
                         {0.999999, "THH:MM", "00:00"},
                         {0.999999, "TH", "0"}}) {
    EXPECT_EQ(shown(row.format, row.serial), row.text) << row.format;
  }
}

// A format keeps its first 16 pieces parsed; what the others mean depends on what stood before
// them.
TEST(UserDate, FormatsOfManyPieces) {
  std::string hours = "TD";
  std::string hoursText = "7";
  for (int i = 0; i < 12; ++i)
    hours += "HHMM", hoursText += "1504";
  EXPECT_EQ(shown(hours, kSunday), hoursText);
  EXPECT_EQ(shown("T-" + hours.substr(1), kSunday), "-" + hoursText);
  EXPECT_EQ(shown("T:D:D:D:D:D:D:D:'a''b'", kSunday), ":7:7:7:7:7:7:7:a'b");
}

// The host may answer with any text.
TEST(UserDate, CaseIsTheHosts) {
  const auto elsewhere = [](SSHostServices*, char* text) {
    static char answer[32];
    std::strcpy(answer, text);
    std::strcat(answer, "[\xC9]");
    std::memset(text, '#', 16);
    return answer;
  };
  EXPECT_EQ(shown("TWEEKDAY MON", kSunday, elsewhere), "Sunday[\xC9] Mar[\xC9]");
}

// The exported table, which hosts read.
TEST(UserDate, TableRows) {
  constexpr QPSUserDefine kRows[] = {
      {"WEEKDAY", 7, "%s", 0}, {"Weekday", 7, "%s", 1}, {"weekday", 7, "%s", 2},
      {"MONTH", 5, "%s", 3},   {"Month", 5, "%s", 4},   {"month", 5, "%s", 5},
      {"AMPM", 4, "%s", 6},    {"WDAY", 4, "%s", 7},    {"Wday", 4, "%s", 8},
      {"wday", 4, "%s", 9},    {"YYYY", 4, "%.4d", 17}, {"MON", 3, "%s", 10},
      {"Mon", 3, "%s", 11},    {"mon", 3, "%s", 12},    {"DD", 2, "%.2d", 13},
      {"HH", 2, "%.2d", 14},   {"MM", 2, "%.2d", 15},   {"SS", 2, "%.2d", 16},
      {"YY", 2, "%.2d", 18},   {"D", 1, "%.d", 13},     {"H", 1, "%.d", 14},
      {"M", 1, "%.d", 15},     {"S", 1, "%.d", 16}};
  ASSERT_EQ(std::size(kRows), std::size(qpsUSERDEFINE));
  for (std::size_t row = 0; row < std::size(kRows); ++row) {
    EXPECT_STREQ(qpsUSERDEFINE[row].token, kRows[row].token);
    EXPECT_EQ(qpsUSERDEFINE[row].length, kRows[row].length) << row;
    EXPECT_STREQ(qpsUSERDEFINE[row].format, kRows[row].format) << row;
    EXPECT_EQ(qpsUSERDEFINE[row].field, kRows[row].field) << row;
  }
}

TEST(UserDate, LongTextsAreCut) {
  EXPECT_EQ(shown("T'" + std::string(600, 'a'), kSunday), std::string(511, 'a'));
  EXPECT_EQ(shown("T" + std::string(600, '-'), kSunday), std::string(511, '-'));
  std::string months = "T", names;
  for (int i = 0; i < 200; ++i)
    months += "Month", names += "March";
  EXPECT_EQ(shown(months, kSunday), names.substr(0, 511));

  std::mt19937 random(1);
  const std::string_view pieces[] = {"DD", "D", "M",  "Month", "WEEKDAY", "AMPM", "YY", "YYYY",
                                     "H",  "S", "'",  "''",    "mon",     "-",    "A",  "\xFF",
                                     "W",  "m", "wd", "x y z", "'MM'",    "YYY"};
  for (int i = 0; i < 500; ++i) {
    std::string format = "T";
    for (std::size_t count = random() % (i % 2 == 0 ? 300 : 8); count != 0; --count) {
      format += pieces[random() % std::size(pieces)];
    }
    const double serial = std::ldexp(static_cast<double>(random()) - 0x1p31, -16);
    EXPECT_LE(shown(format, serial).size(), 511u);
  }
}

}  // namespace
}  // namespace qps
