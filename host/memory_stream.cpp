// SPDX-License-Identifier: MIT
//
// The memory stream: a cursor between two bounds.
#include "host/memory_stream.hpp"

#include <cstring>

namespace qps {

MemoryStream::MemoryStream(std::span<const std::byte> bytes)
    : SSStream{}, begin_(bytes.data()), end_(bytes.data() + bytes.size()), cursor_(begin_) {
  open = [](SSStream* stream) -> std::int32_t {
    auto& self = *static_cast<MemoryStream*>(stream);
    self.cursor_ = self.begin_;
    return 1;
  };
  read = readBytes;
  seek = seekTo;
  tell = [](SSStream* stream) {
    const auto& self = *static_cast<MemoryStream*>(stream);
    return self.cursor_ - self.begin_;
  };
  close = [](SSStream*) {};
}

std::size_t MemoryStream::readBytes(SSStream* stream, void* buffer, std::size_t count) {
  auto& self = *static_cast<MemoryStream*>(stream);
  const auto left = static_cast<std::size_t>(self.end_ - self.cursor_);
  // Every second read is a record's header: a fixed-size copy is one move instead of a call.
  if (count == 4 && left >= 4) {
    std::memcpy(buffer, self.cursor_, 4);
    self.cursor_ += 4;
    return 4;
  }
  if (count > left) count = left;
  if (count != 0) std::memcpy(buffer, self.cursor_, count);
  self.cursor_ += count;
  return count;
}

std::int32_t MemoryStream::seekTo(SSStream* stream, std::ptrdiff_t offset, std::int32_t origin) {
  auto& self = *static_cast<MemoryStream*>(stream);
  const std::byte* const from = origin == SSSeekFromCurrent ? self.cursor_ : self.begin_;
  if (offset < self.begin_ - from || offset > self.end_ - from) return 0;
  self.cursor_ = from + offset;
  return 1;
}

}  // namespace qps
