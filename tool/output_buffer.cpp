// SPDX-License-Identifier: MIT
//
// Output's block of bytes, wherever it goes: to a file (output.cpp) or to a page.
#include <algorithm>

#include "tool/output.h"

namespace qps {

void Output::makeRoom(std::size_t size) {
  flush();
  if (size <= capacity_) return;
  block_.reset(new char[size]);
  capacity_ = size;
  cursor_ = block_.get();
  end_ = cursor_ + size;
}

void Output::fill(std::size_t count, char byte) {
  while (count > 0) {
    const std::size_t part = std::min(count, capacity_);
    std::memset(reserve(part), byte, part);
    cursor_ += part;
    count -= part;
  }
}

}  // namespace qps
