// SPDX-License-Identifier: MIT
//
// The leanest stream that there can be, over bytes in memory: what a benchmark measures on it is
// the reader, and what the interface costs.
#ifndef QPSREADER_BENCH_LEAN_STREAM_H
#define QPSREADER_BENCH_LEAN_STREAM_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>

#include <qpsreader/host_tables.h>

namespace qps::bench {

class LeanStream : public SSStream {
 public:
  // The bytes are not copied.
  explicit LeanStream(std::span<const std::byte> file) : SSStream{}, file_(file) {
    open = [](SSStream* stream) {
      of(stream).position_ = 0;
      return std::int32_t{1};
    };
    read = [](SSStream* stream, void* buffer, std::size_t count) {
      return of(stream).take(buffer, count);
    };
    seek = [](SSStream* stream, std::ptrdiff_t offset, std::int32_t origin) {
      LeanStream& self = of(stream);
      const std::size_t base = origin == SSSeekFromStart ? 0 : self.position_;
      const std::size_t target = base + static_cast<std::size_t>(offset);
      if (target > self.file_.size()) return std::int32_t{0};
      self.position_ = target;
      return std::int32_t{1};
    };
    tell = [](SSStream* stream) { return static_cast<std::ptrdiff_t>(of(stream).position_); };
    close = [](SSStream*) {};
  }

 private:
  static LeanStream& of(SSStream* stream) { return *static_cast<LeanStream*>(stream); }

  std::size_t take(void* buffer, std::size_t count) {
    constexpr std::size_t kRecordHeaderBytes = 4;
    const std::size_t taken = std::min(count, file_.size() - position_);
    const std::byte* bytes = file_.data() + position_;
    // Half of all reads are headers, for which a call would be most of the cost.
    if (taken == kRecordHeaderBytes) {
      std::memcpy(buffer, bytes, kRecordHeaderBytes);
    } else {
      std::memcpy(buffer, bytes, taken);
    }
    position_ += taken;
    return taken;
  }

  std::span<const std::byte> file_;
  std::size_t position_ = 0;
};

}  // namespace qps::bench

#endif  // QPSREADER_BENCH_LEAN_STREAM_H
