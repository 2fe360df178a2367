// SPDX-License-Identifier: MIT
#include "reader/render/fixed_point.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <random>
#include <string>

#include "reader/render/digits.h"
#include "reader/render/text_buffer.h"
#include "reader/render/wide_product.h"
#include "tests/reader/render/printed.h"

namespace qps {
namespace {

void expectDigits(double value, int decimals) {
  char area[1024];
  TextBuffer text(area);
  text.appendFixed(value, decimals);
  const std::string expected = printed("%.*f", decimals, value);
  ASSERT_EQ(text.view(), expected) << std::hexfloat << value << " with " << decimals;
  TextBuffer withSeparators(area);
  withSeparators.appendFixed(std::fabs(value), decimals, Separators::kThousands);
  ASSERT_EQ(withSeparators.view(), grouped(expected.substr(std::signbit(value) ? 1 : 0)));
}

double moved(double value, std::int64_t units) {
  return std::bit_cast<double>(std::bit_cast<std::int64_t>(value) + units);
}

// All binades, the largest and the smallest values of each, with every number of decimals that the
// integers take and the first that they leave.
TEST(FixedPoint, EveryBinade) {
  std::mt19937_64 random(1);
  for (std::uint64_t exponent = 0; exponent < 2047; ++exponent) {
    const bool far = exponent < 1023 - 140 || exponent > 1023 + 70;
    for (int decimals = 0; decimals <= 20; decimals += far ? 5 : 1) {
      for (const std::uint64_t fraction :
           {std::uint64_t{0}, ~std::uint64_t{0}, random(), random(), random()}) {
        expectDigits(std::bit_cast<double>(exponent << 52 | fraction >> 12), decimals);
      }
    }
  }
}

// Ties at d decimals are the odd multiples of 2^-(d+1); near ties are what doubles make of the
// others.
TEST(FixedPoint, MiddlesAndTheirNeighbours) {
  std::mt19937_64 random(2);
  for (int decimals = 0; decimals <= 15; ++decimals) {
    const double unit = std::pow(10.0, decimals);
    for (int i = 0; i < 10'000; ++i) {
      const auto number = static_cast<double>(random() >> (24 + random() % 40));
      for (const std::int64_t units : {-1, 0, 1}) {
        expectDigits(moved(std::ldexp(number * 2 + 1, -decimals - 1), units), decimals);
        expectDigits(moved((number + 0.5) / unit, units), decimals);
        expectDigits(-moved(std::floor(number) + 1 - 0.5 / unit, units), decimals);
      }
    }
  }
}

TEST(FixedPoint, Amounts) {
  std::mt19937_64 random(3);
  for (int i = 0; i < 1'000'000; ++i) {
    expectDigits(static_cast<double>(random() >> (16 + random() % 48)) / 100, 2);
  }
}

TEST(FixedPoint, LeavesToOthersWhatItCannotHold) {
  char out[kExactFixedRoom];
  for (const double value : {0x1p64, 1e300, HUGE_VAL, -HUGE_VAL, std::nan("")}) {
    EXPECT_EQ(writeExactFixed(out, value, 2, Separators::kNone), nullptr) << value;
  }
  EXPECT_EQ(writeExactFixed(out, 1.0, 20, Separators::kNone), nullptr);
  EXPECT_NE(writeExactFixed(out, 0x1.fffffffffffffp63, 19, Separators::kThousands), nullptr);
}

TEST(Digits, EveryLength) {
  for (std::uint64_t power = 1; power != 0; power = power > UINT64_MAX / 10 ? 0 : power * 10) {
    for (const std::uint64_t value :
         {power - 1, power, power + 1, power / 3 * 7, UINT64_MAX - power}) {
      char text[kGroupedDigitsRoom];
      const std::string expected = std::to_string(value);
      EXPECT_EQ(std::string(text, writeDigits(text, value)), expected);
      EXPECT_EQ(std::string(text, writeGroupedDigits(text, value)), grouped(expected));
    }
  }
}

TEST(WideProduct, InHalves) {
  std::mt19937_64 random(4);
  for (int i = 0; i < 100'000; ++i) {
    const std::uint64_t a = random() >> random() % 64;
    const std::uint64_t b = random() >> random() % 64;
    const Product product = multiply(a, b);
    const Product inHalves = multiplyInHalves(a, b);
    ASSERT_TRUE(product.high == inHalves.high && product.low == inHalves.low) << a << " x " << b;
  }
  const Product largest = multiplyInHalves(UINT64_MAX, UINT64_MAX);
  EXPECT_EQ(largest.high, UINT64_MAX - 1);
  EXPECT_EQ(largest.low, 1u);
}

}  // namespace
}  // namespace qps
