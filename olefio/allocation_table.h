// SPDX-License-Identifier: MIT
//
// The FAT or the mini FAT: for each sector the number of the one that follows it in its chain. Only
// the blocks of the table that are asked for are read, and a few of them kept.
#ifndef QPSREADER_OLEFIO_ALLOCATION_TABLE_H
#define QPSREADER_OLEFIO_ALLOCATION_TABLE_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "olefio/extents.h"
#include "olefio/host_file.h"
#include "olefio/pool.h"

namespace qps::ole {

class AllocationTable {
 public:
  AllocationTable(HostFile& file, SSMemoryPool& pool) : file_(file), bytes_(pool), cache_(pool) {}

  // `bytes` is where the table lies. It is read in blocks of 1 << blockShift bytes, the size of the
  // sectors that it chains. False when the pool has no block.
  [[nodiscard]] bool open(Extents bytes, unsigned blockShift);

  // The sector after `sector`, or a number that names no sector: at the chain's end, where the
  // table does not reach, and where it cannot be read.
  std::uint32_t next(std::uint32_t sector);

 private:
  static constexpr std::size_t kCacheBytes = 16384;
  static constexpr std::size_t kMaxSlots = 32;
  static constexpr std::uint64_t kEmptySlot = UINT64_MAX;

  std::span<std::byte> load(std::uint64_t block);

  HostFile& file_;
  Extents bytes_;
  PoolArray<std::byte> cache_;  // slots of one block; block b goes to slot b modulo their number
  std::array<std::uint64_t, kMaxSlots> blockInSlot_{};
  unsigned blockShift_ = 0;
};

}  // namespace qps::ole

#endif  // QPSREADER_OLEFIO_ALLOCATION_TABLE_H
