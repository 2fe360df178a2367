// SPDX-License-Identifier: MIT
#include "reader/render/word_text.h"

#include <gtest/gtest.h>

#include <string>

#include "reader/render/short_fixed.h"

namespace qps {
namespace {

std::string written(const WordText& text) {
  char out[WordText::kWrittenBytes];
  return {out, text.write(out)};
}

// Pieces of every size at every place that has room for them.
TEST(WordText, PutsPiecesTogether) {
  const std::string letters = "abcdefghijklmno";
  for (std::size_t before = 0; before <= WordText::kMostCharacters; ++before) {
    for (std::size_t size = 0; size <= 8 && before + size <= WordText::kMostCharacters; ++size) {
      WordText text(textWord(letters.substr(0, std::min<std::size_t>(before, 8))));
      if (before > 8) text.append(textWord(letters.substr(8, before - 8)));
      const std::string piece = std::string(size, 'Z');
      text.append(textWord(piece));
      const std::string expected = letters.substr(0, before) + piece;
      ASSERT_EQ(written(text), expected);
      ASSERT_EQ(text.size(), expected.size());
      std::string copy(expected.size() + 1, '#');  // nothing after the text is touched
      text.copyTo(copy.data());
      ASSERT_EQ(copy, expected + '#');
    }
  }
}

// What fits into 15 characters with the marks around it, and what does not.
TEST(ShortFixed, TakesWhatHasRoom) {
  struct Row {
    const char* before;
    double value;
    int decimals;
    Separators separators;
    const char* after;
    const char* expected;  // null: refused
  };
  const Row rows[] = {
      {"", 0, 0, Separators::kNone, "", "0"},
      {"", -0.0, 2, Separators::kNone, "", "-0.00"},
      {"", -99999999, 5, Separators::kNone, "", "-99999999.00000"},
      {"", -99999999, 5, Separators::kNone, "%", nullptr},
      {"", 99999999.5, 0, Separators::kNone, "", nullptr},
      {"", 1.5, 6, Separators::kNone, "", nullptr},
      {"", 0x1p-11, 5, Separators::kNone, "", "0.00049"},
      {"", 0x1p-12, 5, Separators::kNone, "", nullptr},
      {"", 12.5, 1, Separators::kNone, "%", "12.5%"},
      {"($", 999999.994, 2, Separators::kThousands, ") ", "($999,999.99) "},
      {"($", 999999.995, 1, Separators::kThousands, ") ", "($1,000,000.0) "},
      {"($", 1234567.25, 2, Separators::kThousands, ") ", nullptr},
      {"$", 1000007.25, 2, Separators::kThousands, " ", "$1,000,007.25 "},
      {"", 12345678.25, 2, Separators::kThousands, " ", "12,345,678.25 "},
      {"", 1e300, 0, Separators::kNone, "", nullptr},
  };
  for (const Row& row : rows) {
    WordText text(textWord(row.before));
    const bool taken =
        appendShortFixed(text, row.value, row.decimals, row.separators, textWord(row.after));
    EXPECT_EQ(taken, row.expected != nullptr) << row.value;
    EXPECT_EQ(written(text), row.expected != nullptr ? row.expected : row.before);
  }
}

}  // namespace
}  // namespace qps
