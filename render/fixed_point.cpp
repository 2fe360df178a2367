// SPDX-License-Identifier: MIT
//
// Why the integers give the digits of "%.*f", which rounds the exact binary value to the nearest
// decimal, and a tie to the even one:
//
// A finite value is m x 2^-s with m < 2^53. For s <= 0 it is a whole number, and every decimal is
// 0. Otherwise it is split at the point, without error, into whole = floor(m / 2^s) and part / 2^s
// with part = m mod 2^s. With d decimals the digits after the point are q = part x 10^d / 2^s,
// rounded.
//
//   - part x 10^d is exact: part < 2^53, and 10^d < 2^10 (d <= 3) keeps the product below 2^63, as
//     10^d < 2^64 (d <= 19) keeps it below 2^117.
//   - q is the product without its last s bits; those bits, compared with 2^(s-1), say on which
//   side
//     of the middle the exact value lies, or that it lies on it. In the middle the even decimal is
//     the one whose last digit is even: for d > 0 the last digit is q's (10^d is even, so whole
//     does not matter); for d = 0 part x 1 < 2^s makes q 0 and the last digit is whole's.
//   - q rounded may be 10^d: then the digits after the point are zeros and whole is one more.
//   - When s reaches the width of the product's type (64 or 128), the product, below half of 2^s,
//   is
//     nearer to 0 than to 1: q is 0.
//
// whole is m x 2^-s for s <= 0 and is kept when it is below 2^64. bench/prove_fixed_point.cpp
// compares the result with std::to_chars.
#include "render/fixed_point.h"

#include <array>
#include <bit>
#include <charconv>
#include <cstdint>

#include "render/digits.h"

namespace qps {
namespace {

constexpr int kMantissaBits = 52;
constexpr int kExponentMask = 0x7FF;
constexpr int kExponentBias = 1023 + kMantissaBits;
constexpr int kSpareBits = 64 - (kMantissaBits + 1);

#ifdef __SIZEOF_INT128__
__extension__ using Wide = unsigned __int128;
constexpr int kMostExactDecimals = 19;
#else
using Wide = uint64_t;
constexpr int kMostExactDecimals = 3;
#endif
constexpr int kMostNarrowDecimals = 3;

constexpr std::array<uint64_t, 20> kPowersOfTen = [] {
  std::array<uint64_t, 20> powers{};
  uint64_t power = 1;
  for (uint64_t& entry : powers) {
    entry = power;
    power *= 10;
  }
  return powers;
}();

// part x 10^d / 2^s for s > 0, rounded to nearest, ties to even; `odd` says whether 0 counts as
// odd.
template <typename Product>
uint64_t scaledPart(uint64_t part, uint64_t powerOfTen, int s, bool odd) {
  if (s >= static_cast<int>(sizeof(Product) * 8)) return 0;
  const Product product = static_cast<Product>(part) * powerOfTen;
  const auto q = static_cast<uint64_t>(product >> s);
  const Product rest = product - (static_cast<Product>(q) << s);
  const Product half = Product{1} << (s - 1);
  const bool up = rest > half || (rest == half && (((q & 1) != 0) != odd));
  return q + (up ? 1 : 0);
}

char* writeGroupedDigits(char* out, uint64_t value) {
  if (value < 1000) return writeDigits(out, value);
  char digits[kDigitsRoom];
  return copyGrouped(out, digits, static_cast<size_t>(writeDigits(digits, value) - digits));
}

char* writeDecimals(char* out, uint64_t q, int decimals) {
  if (decimals == 2) return writeTwoDigits(out, static_cast<uint32_t>(q));
  if (decimals > 8) {
    if (decimals > 16) {
      out = writeLastDigits(out, static_cast<uint32_t>(q / (kHundredMillion * kHundredMillion)),
                            decimals - 16);
      decimals = 16;
    }
    out = writeLastDigits(out, static_cast<uint32_t>(q / kHundredMillion % kHundredMillion),
                          decimals - 8);
    decimals = 8;
  }
  return writeLastDigits(out, static_cast<uint32_t>(q % kHundredMillion), decimals);
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
    const bool wholeDecides = decimals == 0 && (whole & 1) != 0;
    q = decimals <= kMostNarrowDecimals ? scaledPart<uint64_t>(part, powerOfTen, s, wholeDecides)
                                        : scaledPart<Wide>(part, powerOfTen, s, false);
    if (q == powerOfTen) {
      q = 0;
      ++whole;
    }
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
