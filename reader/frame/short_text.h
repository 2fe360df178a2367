// SPDX-License-Identifier: MIT
//
// Finding the end of a text, and copying one, for texts as short as cells have them. They go by
// words: calls cost as much as the work, and what has just been stored in pieces is best loaded in
// pieces that do not lie across two of them, or the processor waits.
#ifndef QPSREADER_READER_SHORT_TEXT_H
#define QPSREADER_READER_SHORT_TEXT_H

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

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

inline constexpr std::uint64_t kTopBits = 0x8080'8080'8080'8080;

// Among its kTopBits, those of every zero byte of a word, and perhaps of some above the first of
// them.
constexpr std::uint64_t zeroBytes(std::uint64_t word) {
  return (word - 0x0101'0101'0101'0101) & ~word;
}

// The place of the first zero byte among those eight, or 8.
inline std::size_t firstZeroOfEight(const char* bytes) {
  return static_cast<std::size_t>(std::countr_zero(zeroBytes(loadWord(bytes)) & kTopBits)) / 8;
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

// Whether the bytes are from 8 to 15 characters and the zero byte that ends them.
inline bool isFilled(std::string_view bytes) {
  constexpr std::uint64_t kLastByte = std::uint64_t{0x80} << 56;
  if (bytes.size() < 9 || bytes.size() > 16) return false;
  const std::uint64_t first = loadWord(bytes.data());
  const std::uint64_t last = loadWord(bytes.data() + bytes.size() - sizeof(first));
  return ((zeroBytes(first) | (zeroBytes(last) ^ kLastByte)) & kTopBits) == 0;
}

// Copies such bytes, in two words that overlap.
inline void copyFilled(char* to, std::string_view bytes) {
  const std::uint64_t first = loadWord(bytes.data());
  const std::size_t second = bytes.size() - sizeof(first);
  const std::uint64_t last = loadWord(bytes.data() + second);
  storeWord(to, first);
  storeWord(to + second, last);
}

inline void copyFour(char* to, const char* from) {
  std::uint32_t word;
  std::memcpy(&word, from, sizeof(word));
  std::memcpy(to, &word, sizeof(word));
}

// Copies `size` bytes to where no part of them stands. From 4 to 15 bytes there is no branch on
// their number, which differs from cell to cell: two words from the front and two from the back,
// which are the same ones below 8 and overlap above.
inline void copyText(char* to, const char* from, std::size_t size) {
  if (size >= 4 && size < 16) [[likely]] {
    const std::size_t second = (size & 8) / 2;
    const std::size_t last = size - 4;
    copyFour(to, from);
    copyFour(to + second, from + second);
    copyFour(to + last - second, from + last - second);
    copyFour(to + last, from + last);
  } else if (size >= 16) {
    std::memcpy(to, from, size);
  } else if (size > 0) {
    to[0] = from[0];
    to[size / 2] = from[size / 2];
    to[size - 1] = from[size - 1];
  }
}

// Stores the first `size` (up to 15) of the bytes of `low` and then `high`. Four pieces, as in
// copyText, cut from the words.
inline void copyWords(char* to, std::uint64_t low, std::uint64_t high, std::size_t size) {
  const auto storeFour = [to](std::size_t at, std::uint64_t word) {
    storeWord(to + at, static_cast<std::uint32_t>(word));
  };
  if (size < 4) {
    for (std::size_t i = 0; i < size; ++i)
      to[i] = static_cast<char>(low >> (8 * i) & 0xFF);
    return;
  }
  const std::size_t second = (size & 8) / 2;
  const std::size_t last = size - 4;
  const std::size_t shift = 8 * (last - second);  // at most 56
  const std::uint64_t end = low >> shift | high << 1 << (63 - shift);
  storeFour(0, low);
  storeFour(second, low >> 8 * second);
  storeFour(last - second, end);
  storeFour(last, end >> 8 * second);
}

}  // namespace qps

#endif  // QPSREADER_READER_SHORT_TEXT_H
