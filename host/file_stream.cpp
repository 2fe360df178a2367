// SPDX-License-Identifier: MIT
//
// The file stream: one block of the file in memory, and a cursor in it.
#include "host/file_stream.hpp"

#include <algorithm>
#include <cstring>
#include <new>

namespace qps {
namespace {

// A block is small where reading starts anew and doubles while it goes on from there: the scattered
// sectors of a compound document then cost one page each, and a run of records few calls.
constexpr std::size_t kFirstBlockBytes = std::size_t{4} << 10;
constexpr std::size_t kLargestBlockBytes = std::size_t{256} << 10;

}  // namespace

FileStream::FileStream(const File& file) : SSStream{}, file_(file) {
  open = openStream;
  read = readBytes;
  seek = seekTo;
  tell = [](SSStream* stream) {
    return static_cast<std::ptrdiff_t>(static_cast<FileStream*>(stream)->position());
  };
  close = closeStream;
}

std::int32_t FileStream::openStream(SSStream* stream) {
  auto& self = *static_cast<FileStream*>(stream);
  if (self.file_.size() > static_cast<std::uint64_t>(PTRDIFF_MAX))
    return 0;  // tell() could not say
  if (!self.block_) self.block_.reset(new (std::nothrow) std::byte[kLargestBlockBytes]);
  if (!self.block_) return 0;
  self.cursor_ = self.end_ = self.block_.get();
  self.blockOffset_ = self.nextOffset_ = 0;
  self.blockBytes_ = 0;
  return 1;
}

void FileStream::closeStream(SSStream* stream) {
  auto& self = *static_cast<FileStream*>(stream);
  self.block_.reset();
  self.cursor_ = self.end_ = nullptr;
  self.blockOffset_ = self.nextOffset_ = 0;
}

std::size_t FileStream::readBytes(SSStream* stream, void* buffer, std::size_t count) {
  auto& self = *static_cast<FileStream*>(stream);
  const auto left = static_cast<std::size_t>(self.end_ - self.cursor_);
  // As in the memory stream: a record's header is one move.
  if (count == 4 && left >= 4) {
    std::memcpy(buffer, self.cursor_, 4);
    self.cursor_ += 4;
    return 4;
  }
  if (count > left || count == 0)
    return self.readAcrossBlocks(static_cast<std::byte*>(buffer), count);
  std::memcpy(buffer, self.cursor_, count);
  self.cursor_ += count;
  return count;
}

std::size_t FileStream::readAcrossBlocks(std::byte* buffer, std::size_t count) {
  std::size_t done = 0;
  while (done < count) {
    if (cursor_ == end_ && !fillBlock()) break;
    const std::size_t part = std::min(count - done, static_cast<std::size_t>(end_ - cursor_));
    std::memcpy(buffer + done, cursor_, part);
    cursor_ += part;
    done += part;
  }
  return done;
}

// Reads the block that begins at the cursor; false at the end of the file.
bool FileStream::fillBlock() {
  const std::uint64_t from = position();
  if (!block_ || from >= file_.size()) return false;
  blockBytes_ = from == nextOffset_ && blockBytes_ != 0
                    ? std::min(blockBytes_ * 2, kLargestBlockBytes)
                    : kFirstBlockBytes;
  const std::uint64_t wanted = std::min<std::uint64_t>(blockBytes_, file_.size() - from);
  const std::size_t got = file_.readAt(from, block_.get(), static_cast<std::size_t>(wanted));
  cursor_ = block_.get();
  end_ = cursor_ + got;
  blockOffset_ = from;
  nextOffset_ = from + got;
  return got != 0;
}

std::int32_t FileStream::seekTo(SSStream* stream, std::ptrdiff_t offset, std::int32_t origin) {
  auto& self = *static_cast<FileStream*>(stream);
  // Inside the block only the cursor moves; the differences cannot overflow.
  if (origin == SSSeekFromCurrent && offset <= self.end_ - self.cursor_ &&
      offset >= self.block_.get() - self.cursor_) {
    self.cursor_ += offset;
    return 1;
  }
  const auto size = static_cast<std::ptrdiff_t>(self.file_.size());
  const auto from = origin == SSSeekFromCurrent ? static_cast<std::ptrdiff_t>(self.position())
                                                : std::ptrdiff_t{0};
  if (!self.block_ || offset < -from || offset > size - from) return 0;

  const std::ptrdiff_t inBlock = from + offset - static_cast<std::ptrdiff_t>(self.blockOffset_);
  if (inBlock >= 0 && inBlock <= self.end_ - self.block_.get()) {
    self.cursor_ = self.block_.get() + inBlock;
    return 1;
  }
  self.cursor_ = self.end_ = self.block_.get();
  self.blockOffset_ = static_cast<std::uint64_t>(from + offset);
  return 1;
}

}  // namespace qps
