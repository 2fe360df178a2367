// SPDX-License-Identifier: MIT
//
// Takes an input apart from its front: numbers that are 0 once it is used up, and what remains.
#ifndef QPSREADER_FUZZ_INPUT_BYTES_H
#define QPSREADER_FUZZ_INPUT_BYTES_H

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <span>

namespace qps::fuzz {

class InputBytes {
 public:
  InputBytes(const std::uint8_t* data, std::size_t size) : rest_(data, size) {}
  explicit InputBytes(std::span<const std::uint8_t> input) : rest_(input) {}

  std::uint8_t u8() { return static_cast<std::uint8_t>(number(1)); }
  std::uint16_t u16() { return static_cast<std::uint16_t>(number(2)); }
  double f64() { return std::bit_cast<double>(number(8)); }

  // The next `count` bytes, or as many as there are.
  std::span<const std::uint8_t> take(std::size_t count) {
    const auto taken = rest_.first(std::min(count, rest_.size()));
    rest_ = rest_.subspan(taken.size());
    return taken;
  }
  std::span<const std::uint8_t> rest() const { return rest_; }

 private:
  std::uint64_t number(std::size_t bytes) {
    std::uint64_t value = 0;
    unsigned shift = 0;
    for (const std::uint8_t byte : take(bytes)) {
      value |= std::uint64_t{byte} << shift;
      shift += 8;
    }
    return value;
  }

  std::span<const std::uint8_t> rest_;
};

}  // namespace qps::fuzz

#endif  // QPSREADER_FUZZ_INPUT_BYTES_H
