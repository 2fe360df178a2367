// SPDX-License-Identifier: MIT
#include "tool/utf8.h"

#include <array>

namespace qps {

Decoded firstCharacter(std::string_view text) {
  constexpr Decoded kNone = {kReplacement, 1, false};
  const auto byteAt = [text](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  const unsigned lead = byteAt(0);
  if (lead < 0x80) return {lead, 1, true};

  const std::size_t size = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
  constexpr std::array<char32_t, 5> kLeast = {0, 0, 0x80, 0x800, 0x10000};
  if (lead < 0xC2 || lead > 0xF4 || text.size() < size) return kNone;
  char32_t character = lead & (0x7FU >> size);
  for (std::size_t i = 1; i < size; ++i) {
    if ((byteAt(i) & 0xC0U) != 0x80U) return kNone;
    character = character << 6 | (byteAt(i) & 0x3FU);
  }
  const bool surrogate = character >= 0xD800 && character <= 0xDFFF;
  if (character < kLeast[size] || character > 0x10FFFF || surrogate) return kNone;
  return {character, size, true};
}

void appendCharacter(char32_t character, std::string& result) {
  const auto put = [&result](char32_t byte) { result.push_back(static_cast<char>(byte)); };
  if (character < 0x80) {
    put(character);
    return;
  }
  if (character < 0x800) {
    put(0xC0 | character >> 6);
  } else {
    if (character < 0x10000) {
      put(0xE0 | character >> 12);
    } else {
      put(0xF0 | character >> 18);
      put(0x80 | (character >> 12 & 0x3F));
    }
    put(0x80 | (character >> 6 & 0x3F));
  }
  put(0x80 | (character & 0x3F));
}

}  // namespace qps
