// SPDX-License-Identifier: MIT
#include "reader/render/number_text.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include <qpsreader/qps_reader.h>

namespace qps {
namespace {

TEST(NumberText, ThreeDigitExponents) {
  struct Row {
    std::string text;
    std::string result;
  };
  const std::string long269(269, '1');
  const Row rows[] = {
      {"1.23E+05", "1.23E+005"},
      {"4.00E-12", "4.00E-012"},
      {"1.00E+00", "1.00E+000"},
      {"1.00E+100", "1.00E+100"},
      {"1E+5", "1E+5"},
      {"1E+", "1E+"},
      {"1E", "1E"},
      {"E", "E"},
      {"1.5e+05", "1.5e+05"},
      {"E+05E+05", "E+05E+05"},  // the first E counts
      {"12.5", "12.5"},
      {"", ""},
      {long269 + "E+05", long269 + "E+005"},
      {"1" + long269 + "E+05", "1" + long269 + "E+05"},  // more than 273 characters
  };
  for (const Row& row : rows) {
    char text[300];
    std::strcpy(text, row.text.c_str());
    qps2to3E(text);
    EXPECT_EQ(text, row.result);
  }
}

std::string thousands(std::string_view number, std::size_t capacity = 511) {
  char area[512];
  TextBuffer text(std::span<char>(area).first(capacity + 1));
  qpsInsertThousands(text, number);
  return text.c_str();
}

TEST(NumberText, Thousands) {
  for (const auto& [number, result] : {std::pair{"", ""},
                                       {"5", "5"},
                                       {"999", "999"},
                                       {"12.5", "12.5"},
                                       {".123456", ".123456"},
                                       {"100", "100"},
                                       {"1000", "1,000"},
                                       {"1234", "1,234"},
                                       {"123456", "123,456"},
                                       {"1000000", "1,000,000"},
                                       {"100000.00", "100,000.00"},
                                       {"1234567.8901", "1,234,567.8901"}}) {
    EXPECT_EQ(thousands(number), result);
  }
  EXPECT_EQ(thousands("1234567.89", 6), "1,234,");
  EXPECT_EQ(thousands(std::string(600, '1')).size(), 511u);
}

TEST(NumberText, TrimmedDecimals) {
  struct Row {
    double value;
    int precision;
    const char* result;
  };
  for (const Row& row : {Row{2.5, 8, "2.5"},
                         {3, 8, "3"},
                         {10, 8, "10"},
                         {0, 8, "0"},
                         {0.1, 8, "0.1"},
                         {0.00000001, 8, "0.00000001"},
                         {1e-9, 8, "0"},
                         {-1e-9, 8, "-0"},
                         {2.000000001, 8, "2"},
                         {-1234.5678, 8, "-1234.5678"},
                         {100000000, 8, "100000000"},
                         {1e20, 8, "100000000000000000000"},
                         {0.5, 20, "0.5"},
                         {0.5, 1, "0.5"},
                         {100, 0, "1"},
                         {0, 0, "0"},
                         {20000000000, 0, "2"}}) {
    char area[128];
    TextBuffer text(area);
    text.append("00");  // what was there before stays
    qpsFormatTrimmed(text, row.value, row.precision);
    EXPECT_EQ(text.view(), std::string("00") + row.result);
  }
}

TEST(NumberText, ScientificFallback) {
  for (const auto& [value, result] : {std::pair{123456789.0, "1.23E+008"},
                                      {1e-9, "1.00E-009"},
                                      {-2147483648.0, "-2.15E+009"},
                                      {12.5, "1.25E+001"},
                                      {0.0, "0.00E+000"},
                                      {-9.999e-300, "-1.00E-299"}}) {
    char area[16];
    TextBuffer text(area);
    appendScientificFallback(text, value);
    EXPECT_EQ(text.view(), result);
  }
}

}  // namespace
}  // namespace qps
