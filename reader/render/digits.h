// SPDX-License-Identifier: MIT
//
// Decimal digits of unsigned integers, written forward into memory that has room for them. Cell
// values vary in length from one to the next, so the digits come eight at a time in one 64-bit
// word, without a branch on their number; see eightDigits.
#ifndef QPSREADER_RENDER_DIGITS_H
#define QPSREADER_RENDER_DIGITS_H

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "reader/render/word_text.h"

namespace qps {

// What writeDigits may touch from `out` on; the digits themselves are at most 20.
inline constexpr std::size_t kDigitsRoom = 24;
inline constexpr std::size_t kGroupedDigitsRoom = 32;

inline constexpr std::uint64_t kMillion = 1'000'000;
inline constexpr std::uint64_t kHundredMillion = 100'000'000;
inline constexpr std::uint64_t kEightZeros = 0x3030'3030'3030'3030;    // "00000000"
inline constexpr std::uint64_t kGroupedZeros = 0x3030'302C'3030'302C;  // ",000,000"

// "00" to "99".
inline constexpr std::array<std::uint16_t, 100> kDigitPairs = [] {
  std::array<std::uint16_t, 100> pairs{};
  for (unsigned i = 0; i < 100; ++i)
    pairs[i] = static_cast<std::uint16_t>('0' + i / 10 + (('0' + i % 10) << 8));
  return pairs;
}();

// `value` below 100, as two digits.
constexpr TextWord twoDigits(std::uint32_t value) {
  return {kDigitPairs[value], 2};
}

// The eight decimal digits of `value` below 10^8 as numbers 0 to 9, one a byte, the first digit in
// the lowest byte. The value is split in halves of four, two and one digits, all parts of a step in
// one multiplication: floor(x / 100) = x * 10486 >> 20 for x < 10^4, floor(x / 10) = x * 103 >> 10
// for x < 100. The parts lie 32 and 16 bits apart, further than their products reach.
constexpr std::uint64_t eightDigits(std::uint32_t value) {
  const std::uint64_t fours = value / 10'000 | std::uint64_t{value % 10'000} << 32;
  const std::uint64_t hundreds = (fours * 10'486 >> 20) & 0x0000007F'0000007F;
  const std::uint64_t twos = hundreds | (fours - hundreds * 100) << 16;
  const std::uint64_t tens = (twos * 103 >> 10) & 0x000F000F'000F000F;
  return tens | (twos - tens * 10) << 8;
}

// How many of eight characters are the "0" that ends them.
inline std::size_t endingZeros(const char* eight) {
  return static_cast<std::size_t>(std::countl_zero(loadWord(eight) ^ kEightZeros)) / 8;
}

// `value` below 10^8 with as many digits as it has, and at least `minDigits` (0 to 8; 0 is as 1).
constexpr TextWord upToEightDigits(std::uint32_t value, int minDigits = 1) {
  const std::uint64_t digits = eightDigits(value);
  // The last digit always shows: the bit set there keeps the count of leading zeros at most seven.
  const int zeros = std::countr_zero(digits | std::uint64_t{1} << 56) / 8;
  const int dropped = std::min(zeros, 8 - minDigits);
  return {(digits + kEightZeros) >> (dropped * 8), static_cast<std::uint64_t>(8 - dropped)};
}

// The last `count` (1 to 8) of the eight digits of `value` below 10^8.
constexpr TextWord lastDigits(std::uint32_t value, int count) {
  return {(eightDigits(value) + kEightZeros) >> ((8 - count) * 8),
          static_cast<std::uint64_t>(count)};
}

// A number of the calendar or the clock: 0 to 99.
constexpr TextWord twoDigitsOf(std::int32_t number) {
  return twoDigits(static_cast<std::uint32_t>(number));
}

constexpr TextWord signWord(bool negative) {
  return negative ? textWord("-") : TextWord{0, 0};
}

// As "%.*d" prints with `minDigits` of 0 to 8, but a 0 under 0 is "0".
constexpr WordText integerText(std::int32_t value, int minDigits = 1) {
  const bool negative = value < 0;
  const auto bits = static_cast<std::uint32_t>(value);
  const std::uint32_t magnitude = negative ? 0U - bits : bits;
  WordText text(signWord(negative));
  if (magnitude < kHundredMillion) [[likely]] {
    text.append(upToEightDigits(magnitude, minDigits));
  } else {
    text.append(upToEightDigits(magnitude / kHundredMillion));
    text.append(lastDigits(magnitude % kHundredMillion, 8));
  }
  return text;
}

// Writes eight bytes, of which the characters are the first; gives the end of those.
inline char* write(char* out, TextWord word) {
  storeWord(out, word.characters);
  return out + word.size;
}

// `value` with as many digits as it has. May write kDigitsRoom bytes.
inline char* writeDigits(char* out, std::uint64_t value) {
  if (value < kHundredMillion)
    return write(out, upToEightDigits(static_cast<std::uint32_t>(value)));
  const std::uint64_t head = value / kHundredMillion;
  if (head < kHundredMillion) {
    out = write(out, upToEightDigits(static_cast<std::uint32_t>(head)));
  } else {
    out = write(out, upToEightDigits(static_cast<std::uint32_t>(head / kHundredMillion)));
    out = write(out, lastDigits(static_cast<std::uint32_t>(head % kHundredMillion), 8));
  }
  return write(out, lastDigits(static_cast<std::uint32_t>(value % kHundredMillion), 8));
}

// The six digits of `value` below 10^6 as eight numbers, one a byte from the lowest: a place for a
// separator (0), three digits, and the same again. floor(x / 100) = x * 41 >> 12 for x < 1000.
constexpr std::uint64_t sixDigits(std::uint32_t value) {
  const std::uint64_t threes = value / 1'000 | std::uint64_t{value % 1'000} << 32;
  const std::uint64_t hundreds = (threes * 41 >> 12) & 0x0000000F'0000000F;
  const std::uint64_t twos = threes - hundreds * 100;
  const std::uint64_t tens = (twos * 103 >> 10) & 0x0000000F'0000000F;
  return hundreds << 8 | tens << 16 | (twos - tens * 10) << 24;
}

// `value` below 10^6 as what follows the millions: ",123,456", ",000,007".
constexpr TextWord sixGroupedDigits(std::uint32_t value) {
  return {sixDigits(value) + kGroupedZeros, 8};
}

// `value` below 10^6 from its first digit on: "123,456", "7".
constexpr TextWord upToSixGroupedDigits(std::uint32_t value) {
  const std::uint64_t digits = sixDigits(value);
  const int dropped = std::countr_zero(digits | std::uint64_t{1} << 56) / 8;
  return {(digits + kGroupedZeros) >> (dropped * 8), static_cast<std::uint64_t>(8 - dropped)};
}

// `value` with "," between each three digits. May write kGroupedDigitsRoom bytes.
inline char* writeGroupedDigits(char* out, std::uint64_t value) {
  std::uint32_t sixes[3];
  int count = 0;
  for (; value >= kMillion; value /= kMillion)
    sixes[count++] = static_cast<std::uint32_t>(value % kMillion);
  out = write(out, upToSixGroupedDigits(static_cast<std::uint32_t>(value)));
  while (count != 0)
    out = write(out, sixGroupedDigits(sixes[--count]));
  return out;
}

}  // namespace qps

#endif  // QPSREADER_RENDER_DIGITS_H
