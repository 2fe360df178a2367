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

namespace qps {

// What writeDigits may touch from `out` on; the digits themselves are at most 20.
inline constexpr size_t kDigitsRoom = 24;
inline constexpr size_t kGroupedDigitsRoom = 32;

inline constexpr uint64_t kHundredMillion = 100'000'000;
inline constexpr uint64_t kEightZeros = 0x3030'3030'3030'3030;    // "00000000"
inline constexpr uint64_t kGroupedZeros = 0x3030'302C'3030'302C;  // ",000,000"

// "00" to "99".
inline constexpr std::array<char, 200> kDigitPairs = [] {
  std::array<char, 200> pairs{};
  for (size_t i = 0; i < 100; ++i) {
    pairs[2 * i] = static_cast<char>('0' + i / 10);
    pairs[2 * i + 1] = static_cast<char>('0' + i % 10);
  }
  return pairs;
}();

// `value` below 100, as two digits.
inline char* writeTwoDigits(char* out, uint32_t value) {
  std::memcpy(out, &kDigitPairs[size_t{value} * 2], 2);
  return out + 2;
}

// The eight decimal digits of `value` below 10^8 as numbers 0 to 9, one a byte, the first digit in
// the lowest byte. The value is split in halves of four, two and one digits, all parts of a step in
// one multiplication: floor(x / 100) = x * 10486 >> 20 for x < 10^4, floor(x / 10) = x * 103 >> 10
// for x < 100. The parts lie 32 and 16 bits apart, further than their products reach.
constexpr uint64_t eightDigits(uint32_t value) {
  const uint64_t fours = value / 10'000 | uint64_t{value % 10'000} << 32;
  const uint64_t hundreds = (fours * 10'486 >> 20) & 0x0000007F'0000007F;
  const uint64_t twos = hundreds | (fours - hundreds * 100) << 16;
  const uint64_t tens = (twos * 103 >> 10) & 0x000F000F'000F000F;
  return tens | (twos - tens * 10) << 8;
}

// Stores eight characters, the first in the lowest byte of `text`; `out` has room for all of them.
inline void storeText(char* out, uint64_t text) {
  if constexpr (std::endian::native == std::endian::big) {
    for (size_t i = 0; i < 8; ++i, text >>= 8)
      out[i] = static_cast<char>(text & 0xFF);
  } else {
    std::memcpy(out, &text, 8);
  }
}

// How many of eight characters are the "0" that ends them.
inline size_t endingZeros(const char* eight) {
  uint64_t text;
  std::memcpy(&text, eight, 8);
  text ^= kEightZeros;
  const bool lastIsLow = std::endian::native == std::endian::big;
  return static_cast<size_t>(lastIsLow ? std::countr_zero(text) : std::countl_zero(text)) / 8;
}

// `value` below 10^8 with as many digits as it has, and at least `minDigits` (0 to 8; 0 is as 1).
// Writes eight bytes.
inline char* writeUpToEightDigits(char* out, uint32_t value, int minDigits = 1) {
  const uint64_t digits = eightDigits(value);
  // The last digit always shows: the bit set there keeps the count of leading zeros at most seven.
  const int zeros = std::countr_zero(digits | uint64_t{1} << 56) / 8;
  const int dropped = std::min(zeros, 8 - minDigits);
  storeText(out, (digits + kEightZeros) >> (dropped * 8));
  return out + (8 - dropped);
}

// The last `count` (1 to 8) of the eight digits of `value` below 10^8. Writes eight bytes.
inline char* writeLastDigits(char* out, uint32_t value, int count) {
  storeText(out, (eightDigits(value) + kEightZeros) >> ((8 - count) * 8));
  return out + count;
}

// `value` with as many digits as it has. May write kDigitsRoom bytes.
inline char* writeDigits(char* out, uint64_t value) {
  if (value < kHundredMillion) return writeUpToEightDigits(out, static_cast<uint32_t>(value));
  const uint64_t head = value / kHundredMillion;
  if (head < kHundredMillion) {
    out = writeUpToEightDigits(out, static_cast<uint32_t>(head));
  } else {
    out = writeUpToEightDigits(out, static_cast<uint32_t>(head / kHundredMillion));
    out = writeLastDigits(out, static_cast<uint32_t>(head % kHundredMillion), 8);
  }
  return writeLastDigits(out, static_cast<uint32_t>(value % kHundredMillion), 8);
}

// The six digits of `value` below 10^6 as eight numbers, one a byte from the lowest: a place for a
// separator (0), three digits, and the same again. floor(x / 100) = x * 41 >> 12 for x < 1000.
constexpr uint64_t sixDigits(uint32_t value) {
  const uint64_t threes = value / 1'000 | uint64_t{value % 1'000} << 32;
  const uint64_t hundreds = (threes * 41 >> 12) & 0x0000000F'0000000F;
  const uint64_t twos = threes - hundreds * 100;
  const uint64_t tens = (twos * 103 >> 10) & 0x0000000F'0000000F;
  return hundreds << 8 | tens << 16 | (twos - tens * 10) << 24;
}

// ",123,456": all of what sixDigits gives.
inline char* writeSixGroupedDigits(char* out, uint32_t value) {
  storeText(out, sixDigits(value) + kGroupedZeros);
  return out + 8;
}

// `value` below 10^6 from its first digit on: "123,456", "7".
inline char* writeUpToSixGroupedDigits(char* out, uint32_t value) {
  const uint64_t digits = sixDigits(value);
  const int dropped = std::countr_zero(digits | uint64_t{1} << 56) / 8;
  storeText(out, (digits + kGroupedZeros) >> (dropped * 8));
  return out + (8 - dropped);
}

// `value` with "," between each three digits. May write kGroupedDigitsRoom bytes.
inline char* writeGroupedDigits(char* out, uint64_t value) {
  constexpr uint64_t kMillion = 1'000'000;
  uint32_t sixes[3];
  int count = 0;
  for (; value >= kMillion; value /= kMillion)
    sixes[count++] = static_cast<uint32_t>(value % kMillion);
  out = writeUpToSixGroupedDigits(out, static_cast<uint32_t>(value));
  while (count != 0)
    out = writeSixGroupedDigits(out, sixes[--count]);
  return out;
}

}  // namespace qps

#endif  // QPSREADER_RENDER_DIGITS_H
