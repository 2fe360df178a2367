// SPDX-License-Identifier: MIT
//
// Texts by words of eight bytes, as short as cells have them.
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

// Among the top bits of a word's bytes, those of every zero byte, and perhaps of some after the
// first of them.
constexpr std::uint64_t zeroBytes(std::uint64_t word) {
  return (word - 0x0101'0101'0101'0101) & ~word;
}

// Whether the bytes are 8 to 15 characters and the zero byte that ends them.
inline bool isShortText(std::string_view bytes) {
  if (bytes.size() < 9 || bytes.size() > 16 || bytes.back() != '\0') return false;
  const std::uint64_t first = loadWord(bytes.data());
  const std::uint64_t last = loadWord(bytes.data() + bytes.size() - 9);
  return ((zeroBytes(first) | zeroBytes(last)) & 0x8080'8080'8080'8080) == 0;
}

// Copies such bytes, in two words that overlap.
inline void copyShortText(char* to, std::string_view bytes) {
  const std::size_t second = bytes.size() - 8;
  const std::uint64_t last = loadWord(bytes.data() + second);
  storeWord(to, loadWord(bytes.data()));
  storeWord(to + second, last);
}

}  // namespace qps

#endif  // QPSREADER_READER_SHORT_TEXT_H
