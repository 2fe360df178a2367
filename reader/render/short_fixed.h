// SPDX-License-Identifier: MIT
//
// The digits of "%.*f" for the numbers that most cells have, in registers; fixed_point.h has the
// others.
//
// Why the integers give the digits of "%.*f", which rounds the exact binary value to the nearest
// decimal, and a value in the middle of two to the even one:
//
// A finite value is m / 2^s with m < 2^53. For s <= 0 it is a whole number, and every decimal is 0.
// Otherwise it is split at the point, without error, into whole = floor(m / 2^s) and part / 2^s
// with part = m mod 2^s. With d decimals the digits after the point are q = part x 10^d / 2^s,
// rounded.
//
//   - For s <= 64, part / 2^s is a 64-bit fraction, exactly. Its product with 10^d, which is below
//     2^64 for d <= 19, is exact in 128 bits: the high half is q, not yet rounded, and the low half
//     is what is left, to be compared with 2^63.
//   - For greater s, part x 10^d < 2^53 x 2^64 is exact in 128 bits. From s = 128 on it is less
//     than half of 2^s, and q is 0; before, q is the high half without its last s - 64 bits.
//   - In the middle the even decimal is the one whose last digit is even. For d > 0 that digit is
//     the last of q (10^d is even, so whole does not matter); for d = 0 it is the last of whole.
//   - q rounded may be 10^d: then the digits after the point are zeros and whole is one more.
//
// whole is m x 2^-s for s <= 0, and fits as long as -s is at most 11. bench/prove_fixed_point.cpp
// compares the digits with std::to_chars.
#ifndef QPSREADER_RENDER_SHORT_FIXED_H
#define QPSREADER_RENDER_SHORT_FIXED_H

#include <array>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>

#include "reader/render/digits.h"
#include "reader/render/wide_product.h"
#include "reader/render/word_text.h"

namespace qps {

enum class Separators : bool { kNone, kThousands };

// The decimals that most cells have, and the whole parts: up to eight digits.
inline constexpr int kShortDecimals = 5;

inline constexpr int kMantissaBits = 52;
inline constexpr int kExponentMask = 0x7FF;
inline constexpr int kExponentBias = 1023 + kMantissaBits;
inline constexpr std::uint64_t kHiddenBit = std::uint64_t{1} << kMantissaBits;
inline constexpr std::uint64_t kFractionMask = kHiddenBit - 1;

inline constexpr int kMostExactDecimals = 19;
inline constexpr std::uint64_t kHalf = std::uint64_t{1} << 63;

inline constexpr std::array<std::uint64_t, 20> kPowersOfTen = [] {
  std::array<std::uint64_t, 20> powers{};
  std::uint64_t power = 1;
  for (std::uint64_t& entry : powers) {
    entry = power;
    power *= 10;
  }
  return powers;
}();

// A value as it is printed: the digits before the point, and those after it as one number.
struct FixedParts {
  std::uint64_t whole;
  std::uint64_t q;
};

// The parts from whole and part / 2^s, which is given as a 64-bit fraction.
inline FixedParts roundFraction(std::uint64_t whole, std::uint64_t fraction, int decimals) {
  const std::uint64_t powerOfTen = kPowersOfTen[static_cast<std::size_t>(decimals)];
  const Product product = multiply(fraction, powerOfTen);
  const std::uint64_t odd = (decimals == 0 ? whole : product.high) & 1;
  const std::uint64_t q = product.high + (product.low > kHalf - odd ? 1 : 0);
  const std::uint64_t carry = q == powerOfTen ? 1 : 0;
  return {whole + carry, q & (carry - 1)};
}

// s of m / 2^s; for a subnormal value kExponentBias, one more than it is.
inline int fractionBits(std::uint64_t bits) {
  return kExponentBias - (static_cast<int>(bits >> kMantissaBits) & kExponentMask);
}

inline bool isUsual(int s) {
  return s >= 1 && s <= 63;
}

// ".05": the point and `q`, as decimals up to kShortDecimals.
constexpr TextWord shortDecimals(std::uint64_t q, int decimals) {
  const auto digits = static_cast<std::uint32_t>(q);
  const TextWord word = decimals == 2 ? twoDigits(digits) : lastDigits(digits, decimals);
  return {word.characters << 8 | '.', word.size + 1};
}

// The magnitude of a value between 2^-11 and 2^52, with at most kMostExactDecimals.
inline FixedParts usualParts(std::uint64_t bits, int s, int decimals) {
  const std::uint64_t m = (bits & kFractionMask) | kHiddenBit;
  return roundFraction(m >> s, m << (64 - s), decimals);
}

// Appends the value as "%.*f" prints it and then `after`, at most two characters. False, and the
// text is as before, when the value or the decimals are other than most cells have, or there is no
// room.
[[nodiscard]] inline bool appendShortFixed(WordText& text, double value, int decimals,
                                           Separators separators, TextWord after = {}) {
  const auto bits = std::bit_cast<std::uint64_t>(value);
  const int s = fractionBits(bits);
  if (decimals > kShortDecimals || !(isUsual(s) || value == 0)) [[unlikely]]
    return false;
  const FixedParts parts = isUsual(s) ? usualParts(bits, s, decimals) : FixedParts{0, 0};
  if (parts.whole >= kHundredMillion) [[unlikely]]
    return false;
  const auto whole = static_cast<std::uint32_t>(parts.whole);

  WordText longer = text;
  longer.append(signWord(std::signbit(value)));
  TextWord digits;
  if (separators == Separators::kNone) {
    digits = upToEightDigits(whole);
  } else if (whole < kMillion) {
    digits = upToSixGroupedDigits(whole);
  } else {
    longer.append(upToEightDigits(whole / kMillion));
    digits = sixGroupedDigits(whole % kMillion);
  }
  TextWord end = after;
  if (decimals != 0) {
    end = shortDecimals(parts.q, decimals);
    end.characters |= after.characters << (8 * end.size);
    end.size += after.size;
  }
  if (longer.size() + digits.size + end.size > WordText::kMostCharacters) [[unlikely]]
    return false;
  longer.append(digits);
  longer.append(end);
  text = longer;
  return true;
}

}  // namespace qps

#endif  // QPSREADER_RENDER_SHORT_FIXED_H
