// SPDX-License-Identifier: MIT
//
// Takes an input apart from its front: numbers that are 0 once it is used up, and what remains.
#ifndef QPSREADER_FUZZ_INPUT_BYTES_H
#define QPSREADER_FUZZ_INPUT_BYTES_H

#include <bit>
#include <cstddef>
#include <cstdint>
#include <span>

namespace qps::fuzz {

class InputBytes {
 public:
  InputBytes(const uint8_t* data, size_t size) : rest_(data, size) {}

  uint8_t u8() {
    if (rest_.empty()) return 0;
    const uint8_t value = rest_.front();
    rest_ = rest_.subspan(1);
    return value;
  }
  uint16_t u16() {
    const uint8_t low = u8();
    return static_cast<uint16_t>(low | u8() << 8);
  }
  uint32_t u32() {
    const uint32_t low = u16();
    return low | static_cast<uint32_t>(u16()) << 16;
  }
  double f64() {
    const uint64_t low = u32();
    return std::bit_cast<double>(low | static_cast<uint64_t>(u32()) << 32);
  }

  // The next `count` bytes, or as many as there are.
  std::span<const uint8_t> take(size_t count) {
    const auto taken = rest_.first(count < rest_.size() ? count : rest_.size());
    rest_ = rest_.subspan(taken.size());
    return taken;
  }
  std::span<const uint8_t> rest() const { return rest_; }

 private:
  std::span<const uint8_t> rest_;
};

}  // namespace qps::fuzz

#endif  // QPSREADER_FUZZ_INPUT_BYTES_H
