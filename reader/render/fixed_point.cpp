// SPDX-License-Identifier: MIT
#include "reader/render/fixed_point.h"

#include <bit>
#include <charconv>
#include <cstdint>

#include "reader/render/digits.h"
#include "reader/render/short_fixed.h"
#include "reader/render/wide_product.h"

namespace qps {
namespace {

constexpr int kSpareBits = 64 - (kMantissaBits + 1);

// q of part / 2^s for s above 64; no carry comes out of it.
std::uint64_t roundSmallFraction(std::uint64_t part, int s, int decimals) {
  const int shift = s - 64;
  if (shift >= 64) return 0;
  const Product product = multiply(part, kPowersOfTen[static_cast<std::size_t>(decimals)]);
  const std::uint64_t q = product.high >> shift;
  const std::uint64_t rest = product.high - (q << shift);
  const std::uint64_t half = std::uint64_t{1} << (shift - 1);
  const bool up = rest > half || (rest == half && (product.low != 0 || (q & 1) != 0));
  return q + (up ? 1 : 0);
}

// `q` below 10^decimals, with zeros before it.
char* writeDecimals(char* out, std::uint64_t q, int decimals) {
  if (decimals <= 8) return write(out, lastDigits(static_cast<std::uint32_t>(q), decimals));
  const std::uint64_t head = q / kHundredMillion;
  if (decimals <= 16) {
    out = write(out, lastDigits(static_cast<std::uint32_t>(head), decimals - 8));
  } else {
    out = write(out, lastDigits(static_cast<std::uint32_t>(head / kHundredMillion), decimals - 16));
    out = write(out, lastDigits(static_cast<std::uint32_t>(head % kHundredMillion), 8));
  }
  return write(out, lastDigits(static_cast<std::uint32_t>(q % kHundredMillion), 8));
}

// The magnitude of a value that is not usual.
FixedParts farParts(std::uint64_t bits, int s, int decimals) {
  const std::uint64_t fraction = bits & kFractionMask;
  const std::uint64_t m = s == kExponentBias ? fraction : fraction | kHiddenBit;
  if (s == kExponentBias) --s;
  if (s <= 0) return {m << -s, 0};
  if (s <= 64) return roundFraction(0, m << (64 - s), decimals);
  return {0, roundSmallFraction(m, s, decimals)};
}

}  // namespace

char* writeExactFixed(char* out, double value, int decimals, Separators separators) {
  const auto bits = std::bit_cast<std::uint64_t>(value);
  const int s = fractionBits(bits);
  if (decimals > kMostExactDecimals || s < -kSpareBits) return nullptr;
  const FixedParts parts = isUsual(s) ? usualParts(bits, s, decimals) : farParts(bits, s, decimals);
  *out = '-';
  out += bits >> 63;
  out = separators == Separators::kThousands ? writeGroupedDigits(out, parts.whole)
                                             : writeDigits(out, parts.whole);
  if (decimals == 0) return out;
  *out++ = '.';
  return writeDecimals(out, parts.q, decimals);
}

char* writeFixed(char* out, double value, int decimals) {
  return std::to_chars(out, out + kFixedTextRoom, value, std::chars_format::fixed, decimals).ptr;
}

}  // namespace qps
