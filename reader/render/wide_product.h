// SPDX-License-Identifier: MIT
//
// The product of two 64-bit numbers, in 128 bits, also where the compiler has no such type.
#ifndef QPSREADER_RENDER_WIDE_PRODUCT_H
#define QPSREADER_RENDER_WIDE_PRODUCT_H

#include <cstdint>

namespace qps {

struct Product {
  std::uint64_t high;
  std::uint64_t low;
};

// In halves of 32 bits, as on paper.
constexpr Product multiplyInHalves(std::uint64_t a, std::uint64_t b) {
  constexpr std::uint64_t kLow = 0xFFFF'FFFF;
  const std::uint64_t lowLow = (a & kLow) * (b & kLow);
  const std::uint64_t lowHigh = (a & kLow) * (b >> 32);
  const std::uint64_t highLow = (a >> 32) * (b & kLow);
  const std::uint64_t middle = (lowLow >> 32) + (lowHigh & kLow) + highLow;  // below 2^64
  return {(a >> 32) * (b >> 32) + (lowHigh >> 32) + (middle >> 32), middle << 32 | (lowLow & kLow)};
}

inline Product multiply(std::uint64_t a, std::uint64_t b) {
#ifdef __SIZEOF_INT128__
  __extension__ using Wide = unsigned __int128;
  const Wide product = static_cast<Wide>(a) * b;
  return {static_cast<std::uint64_t>(product >> 64), static_cast<std::uint64_t>(product)};
#else
  return multiplyInHalves(a, b);
#endif
}

}  // namespace qps

#endif  // QPSREADER_RENDER_WIDE_PRODUCT_H
