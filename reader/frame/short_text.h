// SPDX-License-Identifier: MIT
//
// Texts by words of eight bytes, as short as cells have them.
#ifndef QPSREADER_READER_SHORT_TEXT_H
#define QPSREADER_READER_SHORT_TEXT_H

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace qps {

// Eight bytes as a number, the first in its lowest byte.
inline std::uint64_t loadWord(const char* from) {
  std::uint64_t word;
  std::memcpy(&word, from, sizeof(word));
  if constexpr (std::endian::native == std::endian::big) word = __builtin_bswap64(word);
  return word;
}

// Stores a word whose lowest byte is the first.
template <typename Word>
void storeWord(char* to, Word word) {
  if constexpr (std::endian::native == std::endian::big) {
    word = sizeof(Word) == 8 ? __builtin_bswap64(word) : __builtin_bswap32(word);
  }
  std::memcpy(to, &word, sizeof(word));
}

// The place of the first zero byte among eight, or 8.
inline std::size_t firstZeroOfEight(const char* bytes) {
  const std::uint64_t word = loadWord(bytes);
  // The top bit of every zero byte, and perhaps of some after the first of them.
  const std::uint64_t zeros = (word - 0x0101'0101'0101'0101) & ~word & 0x8080'8080'8080'8080;
  return static_cast<std::size_t>(std::countr_zero(zeros)) / 8;
}

// The length of a text whose zero byte stands at text[most] or before. Up to 16 bytes go by two
// words that overlap: strlen would wait for the bytes, which have just been stored, to reach the
// cache.
inline std::size_t textLength(const char* text, std::size_t most) {
  if (most < 8 || most > 16) return std::strlen(text);
  const std::size_t length = firstZeroOfEight(text);
  return length < 8 ? length : most - 8 + firstZeroOfEight(text + most - 8);
}

}  // namespace qps

#endif  // QPSREADER_READER_SHORT_TEXT_H
