// SPDX-License-Identifier: MIT
//
// An SSStream over bytes in memory.
#ifndef QPSREADER_HOST_MEMORY_STREAM_HPP
#define QPSREADER_HOST_MEMORY_STREAM_HPP

#include <cstddef>
#include <cstdint>
#include <span>

#include <qpsreader/host_tables.h>

namespace qps {

// The bytes are borrowed and must outlive the stream. Moving to a position beyond the end fails and
// leaves the stream where it was, as in FileStream.
class MemoryStream : public SSStream {
 public:
  explicit MemoryStream(std::span<const std::byte> bytes);

 private:
  static std::size_t readBytes(SSStream* stream, void* buffer, std::size_t count);
  static std::int32_t seekTo(SSStream* stream, std::ptrdiff_t offset, std::int32_t origin);

  const std::byte* begin_;
  const std::byte* end_;
  const std::byte* cursor_;
};

}  // namespace qps

#endif  // QPSREADER_HOST_MEMORY_STREAM_HPP
