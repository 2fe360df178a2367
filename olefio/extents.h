// SPDX-License-Identifier: MIT
//
// Where the bytes of a chain lie in the file: runs of neighbouring sectors, in the order of the
// chain. Everything that is stored in chains is read through one of these: the FAT, the directory,
// the mini FAT, the mini stream and the streams. Memory is proportional to the number of runs,
// which is one for a chain that is not fragmented.
#ifndef QPSREADER_OLEFIO_EXTENTS_H
#define QPSREADER_OLEFIO_EXTENTS_H

#include <cstddef>
#include <cstdint>
#include <span>

#include "olefio/host_file.h"
#include "olefio/pool.h"

namespace qps::ole {

// Bytes that lie in one piece in the file.
struct Run {
  std::uint64_t fileOffset = 0;
  std::uint64_t bytes = 0;
};

class Extents {
 public:
  explicit Extents(SSMemoryPool& pool) : runs_(pool) {}

  // Adds a piece at the end, or lengthens the last run by it. False when the pool has no block.
  [[nodiscard]] bool append(Run piece);

  // Cuts off what lies beyond the first `bytes` bytes; no more than the last piece that was added.
  void cutTo(std::uint64_t bytes);

  std::uint64_t size() const { return size_; }

  // From `position` to the end of its run; no bytes beyond the end. Asking again for the same run
  // or the one after it is fast, any other is found by bisection.
  Run at(std::uint64_t position) const;

  // Reads from one run only, so perhaps less than target.size() bytes, and none where the file
  // cannot be read.
  std::size_t readRun(HostFile& file, std::uint64_t position, std::span<std::byte> target) const;

 private:
  struct Start {
    std::uint64_t position;  // in the chain
    std::uint64_t fileOffset;
  };

  std::uint64_t endOfRun(std::size_t run) const;
  std::size_t findRun(std::uint64_t position) const;

  PoolArray<Start> runs_;
  std::uint64_t size_ = 0;
  mutable std::size_t lastFound_ = 0;
};

}  // namespace qps::ole

#endif  // QPSREADER_OLEFIO_EXTENTS_H
