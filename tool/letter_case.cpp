// SPDX-License-Identifier: MIT
#include "tool/letter_case.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <span>

#include "tool/utf8.h"

namespace qps {
namespace {

struct CaseRow {
  std::uint16_t first, last;  // capitals
  std::uint16_t step;         // from one to the next
  std::uint16_t lower;        // what stands for `first`
};

// Each capital with the only small letter of it.
constexpr CaseRow kPairs[] = {
    {0x0041, 0x005A, 1, 0x0061},  // A to Z
    {0x00C0, 0x00D6, 1, 0x00E0},
    {0x00D8, 0x00DE, 1, 0x00F8},
    {0x0100, 0x012E, 2, 0x0101},
    {0x0132, 0x0136, 2, 0x0133},
    {0x0139, 0x0147, 2, 0x013A},
    {0x014A, 0x0176, 2, 0x014B},
    {0x0178, 0x0178, 1, 0x00FF},  // Y with two dots
    {0x0179, 0x017D, 2, 0x017A},
    {0x01A0, 0x01A4, 2, 0x01A1},
    {0x01AF, 0x01AF, 1, 0x01B0},  // Vietnamese
    {0x01CD, 0x01DB, 2, 0x01CE},
    {0x01F8, 0x021E, 2, 0x01F9},
    // Greek
    {0x0386, 0x0386, 1, 0x03AC},
    {0x0388, 0x038A, 1, 0x03AD},
    {0x038C, 0x038C, 1, 0x03CC},
    {0x038E, 0x038F, 1, 0x03CD},
    {0x0391, 0x03A1, 1, 0x03B1},
    {0x03A3, 0x03AB, 1, 0x03C3},
    // Cyrillic
    {0x0400, 0x040F, 1, 0x0450},
    {0x0410, 0x042F, 1, 0x0430},
    {0x0460, 0x0480, 2, 0x0461},
    {0x048A, 0x04BE, 2, 0x048B},
    {0x04C1, 0x04CD, 2, 0x04C2},
    {0x04D0, 0x052E, 2, 0x04D1},
    {0x0531, 0x0556, 1, 0x0561},  // Armenian
    {0x1E00, 0x1E94, 2, 0x1E01},
    {0x1EA0, 0x1EFE, 2, 0x1EA1},
    {0xFF21, 0xFF3A, 1, 0xFF41},  // full width
};

// Those whose small letter another capital has too, or which are small letters themselves.
constexpr CaseRow kOthers[] = {
    {0x00B5, 0x00B5, 1, 0x03BC},  // the micro sign
    {0x0130, 0x0130, 1, 0x0069},  // I with a dot
    {0x017F, 0x017F, 1, 0x0073},  // the long s
    {0x03C2, 0x03C2, 1, 0x03C3},  // the final sigma
};

struct Range {
  char32_t first, last;
};

// Letters of scripts without capitals.
constexpr Range kWithoutCase[] = {
    {0x05D0, 0x05EA},  // Hebrew
    {0x0621, 0x064A},  // Arabic
    {0x3041, 0x3096},  // Hiragana
    {0x30A1, 0x30FA},  // Katakana
    {0x4E00, 0x9FFF},  // Han
    {0xAC00, 0xD7A3},  // Hangul
};

bool isIn(char32_t character, const CaseRow& row, char32_t first) {
  const char32_t distance = character - first;  // large where it stands before
  return distance <= char32_t{row.last} - row.first && distance % row.step == 0;
}

char32_t lowerCaseOf(char32_t character) {
  for (const std::span<const CaseRow> rows : {std::span<const CaseRow>(kPairs), {kOthers}})
    for (const CaseRow& row : rows)
      if (isIn(character, row, row.first)) return row.lower + (character - row.first);
  return character;
}

}  // namespace

bool hasKnownCase(char32_t character) {
  return character < 0x80 ||
         std::any_of(std::begin(kPairs), std::end(kPairs),
                     [character](const CaseRow& row) {
                       return isIn(character, row, row.first) || isIn(character, row, row.lower);
                     }) ||
         std::any_of(std::begin(kWithoutCase), std::end(kWithoutCase),
                     [character](const Range& range) {
                       return character >= range.first && character <= range.last;
                     });
}

std::string lowerCase(std::string_view utf8) {
  std::string result;
  while (!utf8.empty()) {
    const Decoded first = firstCharacter(utf8);
    appendCharacter(lowerCaseOf(first.character), result);
    utf8.remove_prefix(first.size);
  }
  return result;
}

}  // namespace qps
