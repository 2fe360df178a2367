// SPDX-License-Identifier: MIT
//
// Look-ups in the table, and the reading of its blocks.
#include "olefio/allocation_table.h"

#include <algorithm>
#include <utility>

#include "olefio/bytes.h"

namespace qps::ole {

bool AllocationTable::open(Extents bytes) {
  bytes_ = std::move(bytes);
  return entries_.assignZeros(static_cast<std::size_t>(bytes_.size())) &&
         loaded_.reserve(
             static_cast<std::uint32_t>((bytes_.size() + kBlockBytes - 1) / kBlockBytes));
}

std::uint32_t AllocationTable::next(std::uint32_t sector) {
  if (sector >= entries_.size() / kTableEntryBytes) return kEndOfChain;
  const std::uint32_t block = sector / kBlockEntries;
  if (loaded_.insert(block)) load(block);
  return element<std::uint32_t>(entries_.items(), sector);
}

// What cannot be read counts as free.
void AllocationTable::load(std::uint32_t block) {
  const auto rest = entries_.items().subspan(std::size_t{block} * kBlockBytes);
  const auto bytes = rest.first(std::min(kBlockBytes, rest.size()));
  const std::size_t arrived = bytes_.readRun(file_, std::uint64_t{block} * kBlockBytes, bytes);
  std::ranges::fill(bytes.subspan(arrived), std::byte{0xFF});
}

}  // namespace qps::ole
