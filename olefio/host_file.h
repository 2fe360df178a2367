// SPDX-License-Identifier: MIT
//
// The host's stream over the whole file, open for as long as this object lives: reads at a
// position, and the number of sectors that the file really has, which bounds everything that its
// contents claim.
#ifndef QPSREADER_OLEFIO_HOST_FILE_H
#define QPSREADER_OLEFIO_HOST_FILE_H

#include <cstddef>
#include <cstdint>
#include <span>
#include <utility>

#include <qpsreader/host_tables.h>

namespace qps::ole {

class HostFile {
 public:
  // Opens `stream`. When the host refuses, isOpen() is false and the stream is not closed either.
  explicit HostFile(SSStream& stream);
  HostFile(HostFile&& other) noexcept
      : stream_(std::exchange(other.stream_, nullptr)), position_(other.position_) {}
  HostFile& operator=(HostFile&&) = delete;
  ~HostFile();

  bool isOpen() const { return stream_ != nullptr; }

  // Reads up to target.size() bytes at `offset` and returns how many arrived: fewer, down to none,
  // at the end of the file or when the host fails.
  std::size_t readAt(std::uint64_t offset, std::span<std::byte> target);

  // How many sectors of 1 << shift bytes follow the header's own, the last one perhaps cut short.
  // The host's table has no size, and a seek beyond the end may succeed, so this asks for single
  // bytes: twice the logarithm of the result in host reads.
  std::uint32_t countSectors(unsigned shift);

 private:
  bool hasSector(std::uint64_t sector, unsigned shift);

  static constexpr std::uint64_t kUnknown = UINT64_MAX;

  SSStream* stream_;
  std::uint64_t position_ = 0;  // of the host's stream, which saves the seeks that go nowhere
};

}  // namespace qps::ole

#endif  // QPSREADER_OLEFIO_HOST_FILE_H
