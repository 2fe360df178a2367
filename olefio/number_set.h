// SPDX-License-Identifier: MIT
//
// A set of numbers below a bound, one bit each. It is what ends a chain that returns to itself.
#ifndef QPSREADER_OLEFIO_NUMBER_SET_H
#define QPSREADER_OLEFIO_NUMBER_SET_H

#include <cstddef>
#include <cstdint>

#include "olefio/pool.h"

namespace qps::ole {

class NumberSet {
 public:
  explicit NumberSet(SSMemoryPool& pool) : words_(pool) {}

  // Makes room for the numbers below `bound`. False when the pool has no block.
  [[nodiscard]] bool reserve(std::uint32_t bound) {
    bound_ = bound;
    return words_.assignZeros(bound / kWordBits + (bound % kWordBits != 0 ? 1 : 0));
  }

  // False for a number that is in the set already, and for one that is not below the bound.
  bool insert(std::uint32_t number) {
    if (number >= bound_) return false;
    std::uint32_t& word = words_[number / kWordBits];
    const std::uint32_t bit = std::uint32_t{1} << (number % kWordBits);
    if ((word & bit) != 0) return false;
    word |= bit;
    return true;
  }

 private:
  static constexpr std::uint32_t kWordBits = 32;

  PoolArray<std::uint32_t> words_;
  std::uint32_t bound_ = 0;
};

}  // namespace qps::ole

#endif  // QPSREADER_OLEFIO_NUMBER_SET_H
