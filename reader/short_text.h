// SPDX-License-Identifier: MIT
//
// Finding the end of a text, and copying one, for texts as short as cells have them. Both go by
// words of eight bytes: calls cost as much as the work, and what the host has just stored in two
// pieces is best loaded in pieces that do not lie across both, or the processor waits.
#ifndef QPSREADER_READER_SHORT_TEXT_H
#define QPSREADER_READER_SHORT_TEXT_H

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace qps {

// The place of the first zero byte among those eight, or 8.
inline std::size_t firstZeroOfEight(const char* bytes) {
  std::uint64_t word;
  std::memcpy(&word, bytes, sizeof(word));
  if constexpr (std::endian::native == std::endian::big) word = __builtin_bswap64(word);
  // The top bit of every zero byte, and perhaps of some above the first of them.
  const std::uint64_t zeros = (word - 0x0101'0101'0101'0101) & ~word & 0x8080'8080'8080'8080;
  return static_cast<std::size_t>(std::countr_zero(zeros)) / 8;
}

// The length of the text, at most `most`; a zero byte stands at text[most] or before.
inline std::size_t textLength(const char* text, std::size_t most) {
  constexpr std::size_t kStep = 8;
  constexpr std::size_t kShort = 4 * kStep;
  if (most < kStep || most > kShort) return std::strlen(text);
  std::size_t at = 0;
  for (; at < most - kStep; at += kStep) {
    const std::size_t zero = firstZeroOfEight(text + at);
    if (zero != kStep) return at + zero;
  }
  at = most - kStep;
  return at + firstZeroOfEight(text + at);
}

// Copies `size` bytes by their first and their last word, which may overlap.
template <typename Word>
inline void copyByTwoWords(char* to, const char* from, std::size_t size) {
  Word first;
  Word last;
  std::memcpy(&first, from, sizeof(Word));
  std::memcpy(&last, from + size - sizeof(Word), sizeof(Word));
  std::memcpy(to, &first, sizeof(Word));
  std::memcpy(to + size - sizeof(Word), &last, sizeof(Word));
}

// Copies `size` bytes, at least one, to where no part of them stands.
inline void copyText(char* to, const char* from, std::size_t size) {
  if (size > 16) {
    std::memcpy(to, from, size);
  } else if (size >= 8) {
    copyByTwoWords<std::uint64_t>(to, from, size);
  } else if (size >= 4) {
    copyByTwoWords<std::uint32_t>(to, from, size);
  } else {
    to[0] = from[0];
    to[size / 2] = from[size / 2];
    to[size - 1] = from[size - 1];
  }
}

}  // namespace qps

#endif  // QPSREADER_READER_SHORT_TEXT_H
