// SPDX-License-Identifier: MIT
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
// compares the result with std::to_chars.
#include "render/fixed_point.h"

#include <array>
#include <bit>
#include <charconv>
#include <cstdint>

#include "render/digits.h"
#include "render/wide_product.h"

namespace qps {
namespace {

constexpr int kMantissaBits = 52;
constexpr int kExponentMask = 0x7FF;
constexpr int kExponentBias = 1023 + kMantissaBits;
constexpr int kSpareBits = 64 - (kMantissaBits + 1);

constexpr int kMostExactDecimals = 19;
constexpr uint64_t kHalf = uint64_t{1} << 63;

constexpr std::array<uint64_t, 20> kPowersOfTen = [] {
  std::array<uint64_t, 20> powers{};
  uint64_t power = 1;
  for (uint64_t& entry : powers) {
    entry = power;
    power *= 10;
  }
  return powers;
}();

// part x 10^d / 2^s for s > 0, rounded; `before` is what stands before the last digit's place when
// there is no digit after the point, and otherwise 0.
uint64_t scaledPart(uint64_t part, uint64_t powerOfTen, int s, uint64_t before) {
  if (s <= 64) {
    const Product product = multiply(part << (64 - s), powerOfTen);
    const uint64_t odd = (product.high ^ before) & 1;
    return product.high + (product.low > kHalf - odd ? 1 : 0);
  }
  const int shift = s - 64;
  if (shift >= 64) return 0;
  const Product product = multiply(part, powerOfTen);
  const uint64_t q = product.high >> shift;
  const uint64_t rest = product.high - (q << shift);
  const uint64_t half = uint64_t{1} << (shift - 1);
  const bool up = rest > half || (rest == half && (product.low != 0 || (q & 1) != 0));
  return q + (up ? 1 : 0);
}

// `q` below 10^decimals, with zeros before it.
char* writeDecimals(char* out, uint64_t q, int decimals) {
  if (decimals == 2) return writeTwoDigits(out, static_cast<uint32_t>(q));
  if (decimals <= 8) return writeLastDigits(out, static_cast<uint32_t>(q), decimals);
  const uint64_t head = q / kHundredMillion;
  if (decimals <= 16) {
    out = writeLastDigits(out, static_cast<uint32_t>(head), decimals - 8);
  } else {
    out = writeLastDigits(out, static_cast<uint32_t>(head / kHundredMillion), decimals - 16);
    out = writeLastDigits(out, static_cast<uint32_t>(head % kHundredMillion), 8);
  }
  return writeLastDigits(out, static_cast<uint32_t>(q % kHundredMillion), 8);
}

}  // namespace

char* writeExactFixed(char* out, double value, int decimals, Separators separators) {
  const auto bits = std::bit_cast<uint64_t>(value);
  const int exponent = static_cast<int>(bits >> kMantissaBits) & kExponentMask;
  const uint64_t fraction = bits & ((uint64_t{1} << kMantissaBits) - 1);
  const uint64_t m = exponent == 0 ? fraction : fraction | uint64_t{1} << kMantissaBits;
  const int s = kExponentBias - (exponent == 0 ? 1 : exponent);
  if (decimals > kMostExactDecimals || s < -kSpareBits) return nullptr;

  uint64_t whole = 0;
  uint64_t q = 0;
  if (s <= 0) {
    whole = m << -s;
  } else {
    uint64_t part = m;
    if (s <= kMantissaBits) {
      whole = m >> s;
      part = m & ((uint64_t{1} << s) - 1);
    }
    const uint64_t powerOfTen = kPowersOfTen[static_cast<size_t>(decimals)];
    q = scaledPart(part, powerOfTen, s, decimals == 0 ? whole : 0);
    const uint64_t carry = q == powerOfTen ? 1 : 0;
    whole += carry;
    q &= carry - 1;
  }

  *out = '-';
  out += bits >> 63;
  out = separators == Separators::kThousands ? writeGroupedDigits(out, whole)
                                             : writeDigits(out, whole);
  if (decimals == 0) return out;
  *out++ = '.';
  return writeDecimals(out, q, decimals);
}

char* writeFixed(char* out, double value, int decimals) {
  return std::to_chars(out, out + kFixedTextRoom, value, std::chars_format::fixed, decimals).ptr;
}

}  // namespace qps
