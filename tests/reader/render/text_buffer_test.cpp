// SPDX-License-Identifier: MIT
#include "reader/render/text_buffer.h"

#include <gtest/gtest.h>

#include <cfloat>
#include <climits>
#include <string>
#include <vector>

#include "tests/reader/render/printed.h"

namespace qps {
namespace {

// Every append, at every capacity from none to more than enough: what fits is kept, nothing is
// written beyond the area, and the loss is noted.
TEST(TextBuffer, KeepsWhatFits) {
  struct Row {
    void (*append)(TextBuffer&);
    std::string_view whole;
  };
  const Row rows[] = {
      {[](TextBuffer& text) { text.append('x'); }, "x"},
      {[](TextBuffer& text) { text.append(std::string_view()); }, ""},
      {[](TextBuffer& text) { text.append("some text"); }, "some text"},
      {[](TextBuffer& text) { text.appendInteger(7, 2); }, "07"},
      {[](TextBuffer& text) { text.appendInteger(-1234, 8); }, "-00001234"},
      {[](TextBuffer& text) { text.appendInteger(INT_MIN); }, "-2147483648"},
      {[](TextBuffer& text) { text.appendFixed(-1234567.891, 2); }, "-1234567.89"},
      {[](TextBuffer& text) { text.appendFixed(1e22, 1); }, "10000000000000000000000.0"},
      {[](TextBuffer& text) { text.appendFixed(1234567.891, 2, Separators::kThousands); },
       "1,234,567.89"},
      {[](TextBuffer& text) { text.appendFixed(1e22, 1, Separators::kThousands); },
       "10,000,000,000,000,000,000,000.0"},
      {[](TextBuffer& text) { text.appendScientific(-12345, 2); }, "-1.23E+04"},
  };
  for (const Row& row : rows) {
    for (std::size_t areaBytes = 1; areaBytes < 100; ++areaBytes) {
      SCOPED_TRACE(std::string(row.whole) + " in " + std::to_string(areaBytes));
      std::vector<char> area(areaBytes + 1, '#');
      TextBuffer text(std::span<char>(area).first(areaBytes));
      text.append("ab");
      row.append(text);
      const std::string whole = "ab" + std::string(row.whole);
      ASSERT_EQ(text.view(), whole.substr(0, areaBytes - 1));
      ASSERT_EQ(text.view(), text.c_str());
      ASSERT_EQ(text.truncated(), whole.size() > areaBytes - 1);
      ASSERT_EQ(area.back(), '#');
    }
  }
}

TEST(TextBuffer, CutsToASize) {
  char area[16];
  TextBuffer text(area);
  text.append("12.75");
  text.truncateTo(9);
  EXPECT_STREQ(text.c_str(), "12.75");
  text.truncateTo(3);
  text.append('!');
  EXPECT_STREQ(text.c_str(), "12.!");
  EXPECT_FALSE(text.truncated());
}

TEST(TextBuffer, PrintsNumbersAsFormattedPrintingDoes) {
  const auto textOf = [](const auto& print) {
    char area[1024];
    TextBuffer text(area);
    print(text);
    return std::string(text.view());
  };
  for (const std::int32_t value : {0, 1, -1, 9, 10, 99, 100, 123, -12345, 9999999, 99999999,
                                   100000000, -123456789, 1234567890, INT_MAX, INT_MIN}) {
    for (int minDigits = 1; minDigits <= 8; ++minDigits) {
      EXPECT_EQ(textOf([&](TextBuffer& text) { text.appendInteger(value, minDigits); }),
                printed("%.*d", minDigits, value));
    }
  }
  EXPECT_EQ(textOf([](TextBuffer& text) { text.appendInteger(0, 0); }), "0");
  for (const double value :
       {0.0, -0.0, 1.0, 0.1, -12345.0, 9.995, 1e100, 9.9999e-100, DBL_MAX, DBL_MIN, DBL_TRUE_MIN}) {
    for (const int decimals : {0, 1, 2, 15, 40, 255, 511}) {
      EXPECT_EQ(textOf([&](TextBuffer& text) { text.appendScientific(value, decimals); }),
                printed("%.*E", decimals, value));
      EXPECT_EQ(textOf([&](TextBuffer& text) { text.appendFixed(value, decimals); }),
                printed("%.*f", decimals, value));
    }
  }
}

}  // namespace
}  // namespace qps
