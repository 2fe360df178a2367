// SPDX-License-Identifier: MIT
//
// The FAT or the mini FAT: for each sector the number of the one that follows it in its chain. Its
// blocks are read when they are first asked for, and kept: a chain may jump between them as it
// likes, and looking it up never costs more than reading the table once.
#ifndef QPSREADER_OLEFIO_ALLOCATION_TABLE_H
#define QPSREADER_OLEFIO_ALLOCATION_TABLE_H

#include <cstddef>
#include <cstdint>

#include "olefio/compound_format.h"
#include "olefio/extents.h"
#include "olefio/host_file.h"
#include "olefio/number_set.h"
#include "olefio/pool.h"

namespace qps::ole {

class AllocationTable {
 public:
  AllocationTable(HostFile& file, SSMemoryPool& pool)
      : file_(file), bytes_(pool), entries_(pool), loaded_(pool) {}

  // `bytes` is where the table lies; memory is taken for all of it. False when the pool has no
  // block.
  [[nodiscard]] bool open(Extents bytes);

  // The sector after `sector`, or a number that names no sector: at the chain's end, where the
  // table does not reach, and where it cannot be read.
  std::uint32_t next(std::uint32_t sector);

 private:
  static constexpr std::uint32_t kBlockEntries = 128;
  static constexpr std::size_t kBlockBytes = kBlockEntries * kTableEntryBytes;

  void load(std::uint32_t block);

  HostFile& file_;
  Extents bytes_;
  PoolArray<std::byte> entries_;
  NumberSet loaded_;  // blocks
};

}  // namespace qps::ole

#endif  // QPSREADER_OLEFIO_ALLOCATION_TABLE_H
