// SPDX-License-Identifier: MIT
//
// Numbered sectors of one size with the table that chains them. A document has two such spaces: the
// sectors of the file with the FAT, and the mini sectors of the mini stream with the mini FAT. The
// file's one is enough to find the mini stream, which is a chain in it.
#ifndef QPSREADER_OLEFIO_SECTOR_SPACE_H
#define QPSREADER_OLEFIO_SECTOR_SPACE_H

#include <cstdint>

#include "olefio/allocation_table.h"
#include "olefio/extents.h"
#include "olefio/host_file.h"
#include "olefio/pool.h"

namespace qps::ole {

// How many sectors of 1 << shift bytes hold so many bytes.
constexpr std::uint64_t sectorsFor(std::uint64_t bytes, unsigned shift) {
  return (bytes >> shift) + (bytes % (std::uint64_t{1} << shift) != 0 ? 1 : 0);
}

class SectorSpace {
 public:
  SectorSpace(HostFile& file, SSMemoryPool& pool)
      : pool_(pool), sectors_(pool), table_(file, pool) {}

  // `sectors` is where the sectors of 1 << shift bytes lie, one after the other, and `table` where
  // their table lies. False when the pool has no block.
  [[nodiscard]] bool open(Extents sectors, Extents table, unsigned shift);

  // Appends to `chain` where the chain's first `bytes` bytes lie, beginning with sector `first`. A
  // chain that ends before, leaves the file, or comes to a sector a second time gives less. False
  // when the pool has no block, never because of the document.
  [[nodiscard]] bool follow(std::uint32_t first, std::uint64_t bytes, Extents& chain);

 private:
  SSMemoryPool& pool_;
  Extents sectors_;
  AllocationTable table_;
  unsigned shift_ = 0;
};

}  // namespace qps::ole

#endif  // QPSREADER_OLEFIO_SECTOR_SPACE_H
