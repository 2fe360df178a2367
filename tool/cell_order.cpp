// SPDX-License-Identifier: MIT
#include "tool/cell_order.h"

#include <algorithm>

namespace qps {

std::size_t putInRows(CellList& cells) {
  std::stable_sort(cells.begin(), cells.end(),
                   [](const Cell& a, const Cell& b) { return a.place.key() < b.place.key(); });
  Cell* kept = cells.begin();
  for (const Cell& cell : cells) {
    const bool repeats = kept != cells.begin() && kept[-1].place.key() == cell.place.key();
    if (repeats) --kept;
    *kept++ = cell;
  }
  const auto count = static_cast<std::size_t>(kept - cells.begin());
  const std::size_t replaced = cells.size() - count;
  cells.setSize(count);
  return replaced;
}

}  // namespace qps
