// SPDX-License-Identifier: MIT
//
// Following a chain: at most as many steps as there are sectors, whatever the table and the
// directory say.
#include "olefio/sector_space.h"

#include <algorithm>
#include <utility>

#include "olefio/compound_format.h"
#include "olefio/number_set.h"

namespace qps::ole {

bool SectorSpace::open(Extents sectors, Extents table, unsigned shift) {
  sectors_ = std::move(sectors);
  shift_ = shift;
  return table_.open(std::move(table));
}

bool SectorSpace::follow(std::uint32_t first, std::uint64_t bytes, Extents& chain) {
  const std::uint64_t sectorBytes = std::uint64_t{1} << shift_;
  const std::uint64_t count =
      std::min<std::uint64_t>(sectorsFor(sectors_.size(), shift_), kFirstSpecialSector);
  NumberSet visited(pool_);
  if (!visited.reserve(static_cast<std::uint32_t>(count))) return false;
  for (std::uint32_t sector = first; chain.size() < bytes && visited.insert(sector);
       sector = table_.next(sector)) {
    Run piece = sectors_.at(std::uint64_t{sector} << shift_);
    piece.bytes = std::min(piece.bytes, sectorBytes);
    if (!chain.append(piece)) return false;
  }
  chain.cutTo(bytes);
  return true;
}

}  // namespace qps::ole
