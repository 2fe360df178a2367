// SPDX-License-Identifier: MIT
//
// A stream of the document as an SSStream: what the reader of records works on. It reads small
// pieces from a buffer and large ones straight into the caller's memory.
#ifndef QPSREADER_OLEFIO_STREAM_H
#define QPSREADER_OLEFIO_STREAM_H

#include <cstddef>
#include <cstdint>
#include <span>

#include <qpsreader/host_tables.h>
#include "olefio/extents.h"
#include "olefio/host_file.h"
#include "olefio/pool.h"

namespace qps::ole {

// The table's operations, beyond what its header says:
//   open   goes back to the first byte; 0 when there is no stream
//   read   ends where the stream ends, or where its chain or the file ends before that
//   seek   to beyond the end fails and leaves the position
//   close  ends the reading: no bytes come and no seek succeeds until the stream is opened again
class Stream : public SSStream {
 public:
  Stream(HostFile& file, SSMemoryPool& pool);
  Stream(const Stream&) = delete;
  Stream& operator=(const Stream&) = delete;

  // Makes these bytes of the file the stream, closed. False when the pool has no block.
  [[nodiscard]] bool attach(Extents bytes);
  void detach();

  bool rewind();
  void endReading();

 private:
  // Small reads ask the host for this much at once, or for the rest of a shorter run.
  static constexpr std::size_t kBufferBytes = 8192;

  static std::size_t readBytes(SSStream* stream, void* target, std::size_t count);
  std::size_t readBeyondBuffer(std::span<std::byte> target);
  std::size_t takeBuffered(std::span<std::byte> target);
  void fillBuffer();
  void emptyBufferAt(std::uint64_t position);
  bool seekTo(std::ptrdiff_t offset, std::int32_t origin);

  std::size_t buffered() const { return static_cast<std::size_t>(end_ - cursor_); }
  std::uint64_t position() const { return endPosition_ - buffered(); }

  HostFile& file_;
  SSMemoryPool& pool_;
  Extents bytes_;
  PoolArray<std::byte> buffer_;
  std::byte* cursor_ = nullptr;    // the next byte, in buffer_ or at its end
  std::byte* end_ = nullptr;       // the end of the bytes that buffer_ holds
  std::uint64_t endPosition_ = 0;  // the stream's position there
  bool isAttached_ = false;
  bool isReading_ = false;  // when not, the buffer is empty
};

}  // namespace qps::ole

#endif  // QPSREADER_OLEFIO_STREAM_H
