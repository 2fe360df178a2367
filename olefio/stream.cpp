// SPDX-License-Identifier: MIT
//
// Reading a stream: the reader of records asks for a header of four bytes and then for a body,
// again and again, and passes over records by seeking. Both stay inside the buffer as a rule, and
// the host sees one call for many records.
#include "olefio/stream.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace qps::ole {

Stream::Stream(HostFile& file, SSMemoryPool& pool)
    : SSStream{}, file_(file), pool_(pool), bytes_(pool), buffer_(pool) {
  SSStream::open = [](SSStream* self) -> std::int32_t {
    return static_cast<Stream*>(self)->rewind() ? 1 : 0;
  };
  SSStream::read = [](SSStream* self, void* buffer, std::size_t count) -> std::size_t {
    return static_cast<Stream*>(self)->readBytes({static_cast<std::byte*>(buffer), count});
  };
  SSStream::seek = [](SSStream* self, std::ptrdiff_t offset, std::int32_t origin) -> std::int32_t {
    return static_cast<Stream*>(self)->seekTo(offset, origin) ? 1 : 0;
  };
  SSStream::tell = [](SSStream* self) -> std::ptrdiff_t {
    return static_cast<std::ptrdiff_t>(static_cast<Stream*>(self)->position_);
  };
  SSStream::close = [](SSStream* self) { static_cast<Stream*>(self)->endReading(); };
}

bool Stream::attach(Extents bytes) {
  detach();
  const auto wanted = static_cast<std::size_t>(std::min<std::uint64_t>(bytes.size(), kBufferBytes));
  if (!buffer_.assignZeros(wanted)) return false;
  bytes_ = std::move(bytes);
  isAttached_ = true;
  return true;
}

void Stream::detach() {
  bytes_ = Extents(pool_);
  buffer_.clear();
  bufferBytes_ = 0;
  position_ = 0;
  isAttached_ = false;
  isReading_ = false;
}

bool Stream::rewind() {
  position_ = 0;
  isReading_ = isAttached_;
  return isReading_;
}

bool Stream::seekTo(std::ptrdiff_t offset, std::int32_t origin) {
  if (!isReading_ || (origin != SSSeekFromStart && origin != SSSeekFromCurrent)) return false;
  const auto size = static_cast<std::ptrdiff_t>(bytes_.size());
  const auto base =
      origin == SSSeekFromCurrent ? static_cast<std::ptrdiff_t>(position_) : std::ptrdiff_t{0};
  if (offset < -base || offset > size - base) return false;
  position_ = static_cast<std::uint64_t>(base + offset);
  return true;
}

std::size_t Stream::readBytes(std::span<std::byte> target) {
  std::size_t done = takeBuffered(target);
  while (isReading_ && done < target.size()) {
    const std::span<std::byte> rest = target.subspan(done);
    std::size_t bytes = 0;
    if (rest.size() >= buffer_.size()) {
      bytes = bytes_.readRun(file_, position_, rest);
      position_ += bytes;
    } else {
      fillBuffer();
      bytes = takeBuffered(rest);
    }
    if (bytes == 0) break;
    done += bytes;
  }
  return done;
}

std::size_t Stream::takeBuffered(std::span<std::byte> target) {
  const std::uint64_t from = position_ - bufferStart_;  // huge when the position lies before it
  if (!isReading_ || from >= bufferBytes_ || target.empty()) return 0;
  const auto bytes =
      static_cast<std::size_t>(std::min<std::uint64_t>(bufferBytes_ - from, target.size()));
  std::memcpy(target.data(), &buffer_[static_cast<std::size_t>(from)], bytes);
  position_ += bytes;
  return bytes;
}

void Stream::fillBuffer() {
  bufferStart_ = position_;
  bufferBytes_ = bytes_.readRun(file_, position_, buffer_.items());
}

}  // namespace qps::ole
