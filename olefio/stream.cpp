// SPDX-License-Identifier: MIT
//
// Reading a stream: the reader of records asks for a header of four bytes and then for a body,
// again and again, and passes over records by seeking. Both mostly stay inside the buffer, and
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
  SSStream::read = readBytes;
  SSStream::seek = [](SSStream* self, std::ptrdiff_t offset, std::int32_t origin) -> std::int32_t {
    return static_cast<Stream*>(self)->seekTo(offset, origin) ? 1 : 0;
  };
  SSStream::tell = [](SSStream* self) -> std::ptrdiff_t {
    return static_cast<std::ptrdiff_t>(static_cast<Stream*>(self)->position());
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
  emptyBufferAt(0);
  isAttached_ = false;
  isReading_ = false;
}

bool Stream::rewind() {
  isReading_ = isAttached_;
  return isAttached_ && seekTo(0, SSSeekFromStart);
}

void Stream::endReading() {
  emptyBufferAt(position());
  isReading_ = false;
}

bool Stream::seekTo(std::ptrdiff_t offset, std::int32_t origin) {
  if (!isReading_ || (origin != SSSeekFromStart && origin != SSSeekFromCurrent)) return false;
  const auto size = static_cast<std::ptrdiff_t>(bytes_.size());
  const auto base =
      origin == SSSeekFromCurrent ? static_cast<std::ptrdiff_t>(position()) : std::ptrdiff_t{0};
  if (offset < -base || offset > size - base) return false;

  const auto target = static_cast<std::uint64_t>(base + offset);
  const auto held = static_cast<std::size_t>(end_ - buffer_.items().data());
  if (target <= endPosition_ && endPosition_ - target <= held) {
    cursor_ = end_ - static_cast<std::size_t>(endPosition_ - target);
  } else {
    emptyBufferAt(target);
  }
  return true;
}

std::size_t Stream::readBytes(SSStream* stream, void* target, std::size_t count) {
  auto& self = *static_cast<Stream*>(stream);
  // A record's header is one move.
  if (count == 4 && self.buffered() >= 4) {
    std::memcpy(target, self.cursor_, 4);
    self.cursor_ += 4;
    return 4;
  }
  const std::span<std::byte> bytes(static_cast<std::byte*>(target), count);
  return count <= self.buffered() ? self.takeBuffered(bytes) : self.readBeyondBuffer(bytes);
}

std::size_t Stream::readBeyondBuffer(std::span<std::byte> target) {
  std::size_t done = takeBuffered(target);
  while (isReading_ && done < target.size()) {
    const std::span<std::byte> rest = target.subspan(done);
    std::size_t bytes = 0;
    if (rest.size() >= buffer_.size()) {
      bytes = bytes_.readRun(file_, position(), rest);
      emptyBufferAt(position() + bytes);
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
  const std::size_t bytes = std::min(target.size(), buffered());
  if (bytes == 0) return 0;
  std::memcpy(target.data(), cursor_, bytes);
  cursor_ += bytes;
  return bytes;
}

// Called with an empty buffer: what is read begins at the position.
void Stream::fillBuffer() {
  const std::size_t bytes = bytes_.readRun(file_, position(), buffer_.items());
  emptyBufferAt(position() + bytes);
  cursor_ = buffer_.items().data();
  end_ = cursor_ + bytes;
}

void Stream::emptyBufferAt(std::uint64_t position) {
  cursor_ = end_ = buffer_.items().data();
  endPosition_ = position;
}

}  // namespace qps::ole
