// SPDX-License-Identifier: MIT
//
// Look-ups go through a direct-mapped cache: a chain that runs through the file in order, or in a
// few interleaved parts, reads each block of the table once. The worst chain costs one block for
// each of its steps, and a step stands for a sector of the same size, so that reading the table
// never costs more than reading the file.
#include "olefio/allocation_table.h"

#include <algorithm>
#include <utility>

#include "olefio/bytes.h"
#include "olefio/compound_format.h"

namespace qps::ole {

bool AllocationTable::open(Extents bytes, unsigned blockShift) {
  const std::uint64_t blocks = bytes.size() >> blockShift;
  const std::size_t most = std::min(kMaxSlots, kCacheBytes >> blockShift);
  const auto slots = static_cast<std::size_t>(std::min<std::uint64_t>(blocks, most));
  bytes_ = std::move(bytes);
  blockShift_ = blockShift;
  blockInSlot_.fill(kEmptySlot);
  return cache_.assignZeros(slots << blockShift);
}

std::span<std::byte> AllocationTable::load(std::uint64_t block) {
  const auto slot = static_cast<std::size_t>(block % (cache_.size() >> blockShift_));
  const auto bytes = cache_.items().subspan(slot << blockShift_, std::size_t{1} << blockShift_);
  if (blockInSlot_[slot] == block) return bytes;
  const std::size_t arrived = bytes_.readRun(file_, block << blockShift_, bytes);
  blockInSlot_[slot] = arrived == bytes.size() ? block : kEmptySlot;
  return bytes.first(arrived);
}

std::uint32_t AllocationTable::next(std::uint32_t sector) {
  const std::uint64_t position = std::uint64_t{sector} * kTableEntryBytes;
  if (position >= bytes_.size()) return kEndOfChain;
  const std::span<std::byte> block = load(position >> blockShift_);
  const auto index =
      static_cast<std::size_t>(sector) & ((std::size_t{1} << blockShift_) / kTableEntryBytes - 1);
  if (index >= block.size() / kTableEntryBytes) return kEndOfChain;
  return element<std::uint32_t>(block, index);
}

}  // namespace qps::ole
