// SPDX-License-Identifier: MIT
#include "tool/cell_order.h"

#include <algorithm>

namespace qps {
namespace {

template <class T>
std::size_t sortAndKeepLast(PlacedList<T>& cells) {
  std::stable_sort(cells.begin(), cells.end(),
                   [](const T& a, const T& b) { return a.place.key() < b.place.key(); });
  T* kept = cells.begin();
  for (const T& cell : cells) {
    const bool repeats = kept != cells.begin() && kept[-1].place.key() == cell.place.key();
    if (repeats) --kept;
    *kept++ = cell;
  }
  const auto count = static_cast<std::size_t>(kept - cells.begin());
  const std::size_t replaced = cells.size() - count;
  cells.setSize(count);
  return replaced;
}

}  // namespace

std::size_t putInRows(CellList& cells) {
  return sortAndKeepLast(cells);
}

std::size_t putInRows(ContentsList& contents) {
  return sortAndKeepLast(contents);
}

}  // namespace qps
