// SPDX-License-Identifier: MIT
//
// Decimal digits of unsigned integers, written forward into memory that has room for them. Cell
// values vary in length from one to the next, so the digits come eight at a time in one 64-bit
// word, without a branch on their number; see eightDigits.
#ifndef QPSREADER_RENDER_DIGITS_H
#define QPSREADER_RENDER_DIGITS_H

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace qps {

// What writeDigits may touch from `out` on; the digits themselves are at most 20.
inline constexpr size_t kDigitsRoom = 24;

inline constexpr uint64_t kHundredMillion = 100'000'000;

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

// Stores eight digits as eightDigits gives them; `out` has room for eight bytes.
inline void storeDigits(char* out, uint64_t digits) {
  uint64_t text = digits + 0x3030'3030'3030'3030;
  if constexpr (std::endian::native == std::endian::big) {
    for (size_t i = 0; i < 8; ++i, text >>= 8)
      out[i] = static_cast<char>(text & 0xFF);
  } else {
    std::memcpy(out, &text, 8);
  }
}

// `value` below 10^8 with as many digits as it has ("0" for 0). Writes eight bytes.
inline char* writeUpToEightDigits(char* out, uint32_t value) {
  const uint64_t digits = eightDigits(value);
  // The last digit always shows: the bit set there keeps the count of leading zeros at most seven.
  const int leadingZeros = std::countr_zero(digits | uint64_t{1} << 56) / 8;
  storeDigits(out, digits >> (leadingZeros * 8));
  return out + (8 - leadingZeros);
}

// The last `count` (1 to 8) of the eight digits of `value` below 10^8. Writes eight bytes.
inline char* writeLastDigits(char* out, uint32_t value, int count) {
  storeDigits(out, eightDigits(value) >> ((8 - count) * 8));
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

// Copies `count` (1 or more) digits with "," before each group of three that has digits before it.
inline char* copyGrouped(char* out, const char* digits, size_t count) {
  const char* const end = digits + count;
  for (size_t group = (count - 1) % 3 + 1; group != 0; --group)
    *out++ = *digits++;
  for (; digits != end; digits += 3, out += 4) {
    *out = ',';
    std::memcpy(out + 1, digits, 3);
  }
  return out;
}

}  // namespace qps

#endif  // QPSREADER_RENDER_DIGITS_H
