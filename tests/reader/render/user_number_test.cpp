// SPDX-License-Identifier: MIT
#include "reader/render/user_number.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <cstring>
#include <random>
#include <string>

#include "tests/reader/render/printed.h"

namespace qps {
namespace {

constexpr std::uint32_t kFirst = 0;
constexpr std::uint32_t kNegative = 2;

// What the renderer gives, or "null".
std::string shown(const NumberSection& section, std::uint32_t formatSection, double magnitude,
                  bool nonNegative) {
  char userNumberBuffer[512];
  TextBuffer text(userNumberBuffer);
  if (!qpsFormatUserNumber(text, section, formatSection, magnitude, nonNegative)) return "null";
  return std::string(text.view());
}

std::string shown(std::string_view section, double value, std::uint32_t formatSection = kFirst) {
  return shown(parseNumberSection(section), formatSection, std::fabs(value), value >= 0);
}

struct Row {
  const char* section;
  double value;
  const char* text;
  std::uint32_t formatSection = kFirst;
};

TEST(UserNumber, Sections) {
  for (const Row& row : {Row{"N0.00", 1234.5, "1234.50"},
                         {"N0.00", -2.5, "-2.50"},
                         {"N0.00", -2.5, "-2.50", 1},
                         {"N0.00", -2.5, "2.50", kNegative},
                         {"N9,999.00", 1234567.891, "1,234,567.89"},
                         {"N9,999", 1000000, "1,000,000"},
                         {"N9,999", 999, "999"},
                         {"N9,999", 0, ""},
                         {"N0,000", 5, "0,005"},
                         {"N9,990", 5, "5"},
                         {"N9,000", 5, "005"},
                         {"N9", 100, "100"},
                         {"N9", 0, ""},
                         {"N9.99", 0.5, ".50"},
                         {"N9.99", 0.999, "1.00"},
                         {"N00000", 42, "00042"},
                         {"N0.0", 0.05, "0.1"},
                         {"N0.0", 0.04, "0.0"},
                         {"N0,0.0", 1234567, "1,23456,7.0"},
                         {"N999,999,999", 1234567, "1,234,567"},
                         {"N9,9", 1234567, "1,23456,7"},  // separators of its own
                         {"N9,,,9,,,", 1234567, "1,23456,,,7,,,"},
                         {"N0.0,0", 1234.5, "1234.5,0"},  // after the point they do not group
                         {"N", 5, ""},
                         {"N", -5, "-"},
                         {"N;+-", 5, ""},
                         {"N0.", 5.5, "6."},
                         {"N0.0.0", 1.25, "1.2."},
                         // Percent and exponent replace all that came before them.
                         {"N0.00%", 0.1234, "12.34%"},
                         {"N0.00%", -0.1234, "-12.34%"},
                         {"N'x'0.0%0", -0.5, "-50.00%", kNegative},
                         {"N0%E.0", 0.5, "50.0%"},
                         {"N0%", 1e307, "1.00E+307"},  // a percentage that no double holds
                         {"N0.00E+00", 12345, "1.23E+04"},
                         {"N0E+00", 12345, "1.23E+04"},
                         {"N0.0#0E+00", 12345, "1.234E+04"},
                         {"N0.0E0E", 12345, "1.234E+04"},
                         {"N'x'0.0E+0", -12345, "-1.2E+04", kNegative},
                         {"NE.E", 12345, "1.23E+04"},
                         // Literals, and characters that need no quotes.
                         {"N'$'9,999.00", 1234.5, "$1,234.50"},
                         {"N'$'9,999.00", -1234.5, "-$1,234.50"},
                         {"N'$'9,999.00", 5, "$,5.00"},
                         {"N$0.00", 5, "5.00"},
                         {"N0.00' kg'", 2, "2.00 kg"},
                         {"N0.00 kg", 2, "2.00 kg"},
                         {"N'('0')'", -5, "(5)", kNegative},
                         {"N'Positive'", 3, "Positive"},
                         {"N'Positive", 3, "Positive"},
                         {"N0'", 3, "3"},
                         {"N'a'x0", 3, "ax3"},
                         {"N9x", 0, ""},
                         {"N0+0-0;0", 12, "0012"},
                         // What is quoted does not count.
                         {"N'9'9.0", 12.25, "912.2"},
                         {"N0.0'00'", 1.25, "1.200"},
                         {"N'1.5 'x0.0", 2.25, "1.5 x2.2"},
                         {"N'E%,'0", 1234, "E%,1234"},
                         {"N0.0'E'0", 12345, "12345.0E0"},
                         // A sign is no text: no separator follows it.
                         {"N9,999", -5, "-5"},
                         {"N9,999", -1005, "-1,005"},
                         {"N$9", -5, "-5"},
                         // Without a digit before the point the whole part stands there.
                         {"N.00", 12.5, "12.50"},
                         {"N.00", 0.5, ".50"},
                         {"N.00", -0.5, "-.50"},
                         {"N,.00", 1234567.5, "1,234,567.50"},
                         {"N'~'.9", 7, "~7.0"},
                         {"n0", 5, "null"},
                         {"", 5, "null"},
                         {"'N'0", 5, "null"}}) {
    EXPECT_EQ(shown(row.section, row.value, row.formatSection), row.text)
        << row.section << " of " << row.value;
  }
}

// From which magnitude on a section takes the short way; whatever it is, the text is the same.
TEST(UserNumber, MagnitudesThatFillTheSection) {
  constexpr double kNone = HUGE_VAL;
  for (const auto& [section, least] : {std::pair{"N9,999.00", 1.0},
                                       {"N0.00", 0},
                                       {"N9", 1},
                                       {"N'$'9,999.00' net'", 1000},
                                       {"N'$'9999.00", 1},
                                       {"N9,099", 100},
                                       {"N0,000,000,000,000,000", 1e15},
                                       {"N00000000000000000", kNone},
                                       {"N0.00#", 0},
                                       {"N9.", kNone},
                                       {"N0'a'0", kNone},
                                       {"N", kNone}}) {
    EXPECT_EQ(parseNumberSection(section).plainFrom, least) << section;
  }
}

// The rules of the language one by one, on plain strings.
std::string walked(const std::string& text, std::uint32_t formatSection, double magnitude,
                   bool nonNegative) {
  const std::string section = text.substr(1, 510);
  std::string unquoted = section;
  bool quoted = false;
  for (char& c : unquoted) {
    const bool quote = c == '\'';
    if (quote || quoted) c = ' ';
    quoted ^= quote;
  }
  const std::size_t point = std::min(unquoted.find('.'), unquoted.size());
  const std::string before = unquoted.substr(0, point);
  const std::string after = unquoted.substr(std::min(point + 1, unquoted.size()));
  const auto isPlaceholder = [](char c) { return c == '0' || c == '9'; };
  const auto placeholders = std::count_if(before.begin(), before.end(), isPlaceholder);
  const auto decimals = std::count_if(after.begin(), after.end(), isPlaceholder);
  const bool grouping = before.find(',') != std::string::npos;

  const double value = nonNegative ? magnitude : -magnitude;
  const std::size_t special = unquoted.find_first_of("%E");
  if (special != std::string::npos && unquoted[special] == '%') {
    return (printed("%.*f", static_cast<int>(decimals), value * 100) + '%').substr(0, 511);
  }
  if (special != std::string::npos) {
    const std::size_t precision = after.find('E') == std::string::npos ? 0 : after.rfind('E');
    return printed("%.*E", precision == 0 ? 2 : static_cast<int>(precision), value).substr(0, 511);
  }

  std::string number = printed("%.*f", static_cast<int>(decimals), magnitude).substr(0, 511);
  auto left = static_cast<std::ptrdiff_t>(std::min(number.find('.'), number.size()));
  std::ptrdiff_t excess = left - placeholders;
  if (excess < 0) number.insert(0, static_cast<std::size_t>(-excess), '0');
  std::string out = !nonNegative && formatSection < 2 ? "-" : "";
  const std::size_t sign = out.size();
  std::size_t next = 0;  // in the number
  bool digitWritten = false;
  bool pastPoint = false;
  const auto writeExcess = [&](long groupFrom) {
    for (; excess > 0; --excess) {
      out += number[next++];
      --left;
      digitWritten = true;
      if (grouping && left > groupFrom && left % 3 == 0) out += ',';
    }
  };
  for (std::size_t i = 0; i < section.size(); ++i) {
    const char c = section[i];
    if (c == '\'') {
      for (++i; i < section.size() && section[i] != '\''; ++i)
        out += section[i];
    } else if (c == '.') {
      if (placeholders == 0 &&
          number.substr(0, static_cast<std::size_t>(left)).find_first_not_of('0') ==
              std::string::npos) {
        next += static_cast<std::size_t>(excess);
        excess = 0;
      }
      writeExcess(0);
      ++next;
      pastPoint = true;
      out += '.';
    } else if (isPlaceholder(c)) {
      writeExcess(3);
      const char digit = next < number.size() ? number[next++] : '\0';
      if (digit == '\0' || (!pastPoint && c == '9' && digit == '0' && !digitWritten)) continue;
      out += digit;
      digitWritten = true;
    } else if (std::strchr("+-;", c) == nullptr && out.size() > sign) {
      out += c;
    }
  }
  return out.substr(0, 511);
}

constexpr double kMagnitudes[] = {0,     0.04,    0.5,       0.995,      1,      5,      9.995,
                                  12.5,  99.5,    999,       999.9996,   1000,   1234.5, 12345.675,
                                  99999, 1000000, 999999.95, 1234567.89, 1.5e15, 1e22,   1e300};

void expectAsWalked(const std::string& section) {
  struct Sign {
    bool nonNegative;
    std::uint32_t formatSection;
  };
  const NumberSection parsed = parseNumberSection(section);
  for (const double magnitude : kMagnitudes) {
    for (const auto& [nonNegative, formatSection] :
         {Sign{true, kFirst}, Sign{false, kFirst}, Sign{false, kNegative}}) {
      ASSERT_EQ(shown(parsed, formatSection, magnitude, nonNegative),
                walked(section, formatSection, magnitude, nonNegative))
          << section << " of " << magnitude;
    }
  }
}

TEST(UserNumber, UsualSectionsAsWalked) {
  for (const char* before : {"", "'$'", "$", "''", "'a''b'", "'EUR' ", "-", ",", "'9"}) {
    for (const char* core :
         {"", "0", "9", "990", "909", "9,999", "9,990", "0,000", "99,999", "999,999", "9,999,990",
          ",999", "9,,999999", "9999,999", "9,9999", "9,99", "00000000000000000000", "999,"}) {
      for (const char* fraction : {"", ".", ".0", ".99", ".00000", ".0,0", ".0.0"}) {
        for (const char* after : {"", "' kg'", " kg", "'a'b", " 0", "-", ",", "'", "%", "E"}) {
          expectAsWalked(std::string("N") + before + core + fraction + after);
          if (HasFatalFailure()) return;
        }
      }
    }
  }
}

TEST(UserNumber, AnySectionAsWalked) {
  std::mt19937 random(1);
  const std::string_view alphabet = "000999,,..'''%E+-;$ a";
  for (int i = 0; i < 600; ++i) {
    // The characters that end the walk are rare, so that long sections have something to cut.
    const std::size_t letters = i % 3 == 0 ? alphabet.size() : 15;
    std::string section = "N";
    for (std::size_t size = random() % (i % 2 == 0 ? 12 : 700); size != 0; --size) {
      section += alphabet[random() % letters];
    }
    expectAsWalked(section);
    if (HasFatalFailure()) return;
  }
}

TEST(UserNumber, LongTextsAreCut) {
  const std::string nines(509, '9');
  EXPECT_EQ(shown("N." + nines, DBL_MAX), printed("%.*f", 509, DBL_MAX).substr(0, 511));
  EXPECT_EQ(shown("N0." + nines.substr(2) + "%", 1e300),
            printed("%.*f", 507, 1e300 * 100).substr(0, 511));
  EXPECT_EQ(shown("N0'" + std::string(600, 'x'), 12), "12" + std::string(508, 'x'));
  EXPECT_EQ(shown("N0'" + std::string(500, 'x'), DBL_MAX).size(), 511u);
  EXPECT_EQ(shown("N9,999" + std::string(400, '-'), DBL_MAX), grouped(printed("%.*f", 0, DBL_MAX)));
}

}  // namespace
}  // namespace qps
