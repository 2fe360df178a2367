// SPDX-License-Identifier: MIT
//
// WordText: a text of at most 15 characters in two words, put together and handed on in registers.
// Most cells show no more. A text that is stored in pieces and loaded again at once makes the
// processor wait until every piece has reached its cache.
#ifndef QPSREADER_RENDER_WORD_TEXT_H
#define QPSREADER_RENDER_WORD_TEXT_H

#include <bit>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "reader/frame/short_text.h"

namespace qps {

// Up to eight characters, the first in the lowest byte; the bytes after the last are 0.
struct TextWord {
  std::uint64_t characters;
  std::uint64_t size;
};

constexpr TextWord textWord(std::string_view text) {
  TextWord word{0, text.size()};
  for (std::size_t i = 0; i < text.size(); ++i)
    word.characters |= std::uint64_t{static_cast<std::uint8_t>(text[i])} << (8 * i);
  return word;
}

// Stores the first `size` (up to 15) of the bytes of `low` and then `high`. From 4 on there
// is no branch on the size, which differs from cell to cell: two pieces of four from the front and
// two from the back, which are the same ones below 8 and overlap above.
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

class WordText {
 public:
  static constexpr std::size_t kMostCharacters = 15;
  static constexpr std::size_t kWrittenBytes = 16;

  constexpr WordText() = default;
  constexpr explicit WordText(TextWord word) { append(word); }

  // The caller knows that there is room for what it appends. No branch depends on the sizes, which
  // differ from cell to cell.
  constexpr void append(TextWord word) {
    const std::uint64_t size = high_ >> kSizeShift;
    const std::uint64_t shift = 8 * size % 64;
    const std::uint64_t inLow = (size / 8 - 1) << shift;  // the bytes of the word that stay below 8
    const std::uint64_t turned = std::rotl(word.characters, static_cast<int>(shift));
    low_ |= turned & inLow;
    high_ |= turned & ~inLow;
    high_ += word.size << kSizeShift;
  }
  constexpr void append(char character) { append({static_cast<std::uint8_t>(character), 1}); }

  constexpr std::size_t size() const { return static_cast<std::size_t>(high_ >> kSizeShift); }

  // Copies the characters, and nothing after them.
  void copyTo(char* out) const { copyWords(out, low_, high_, size()); }

  // Writes kWrittenBytes, of which the characters are the first; gives the end of those.
  char* write(char* out) const {
    storeWord(out, low_);
    storeWord(out + 8, high_);
    return out + size();
  }

 private:
  static constexpr std::uint64_t kSizeShift = 56;

  std::uint64_t low_ = 0;   // the first eight characters
  std::uint64_t high_ = 0;  // the other seven; the highest byte counts all characters
};

}  // namespace qps

#endif  // QPSREADER_RENDER_WORD_TEXT_H
