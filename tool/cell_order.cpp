// SPDX-License-Identifier: MIT
#include "tool/cell_order.h"

#include <algorithm>
#include <array>
#include <cstdint>

namespace qps {
namespace {

// Below this the tables of the counting passes cost more than they save.
constexpr std::size_t kFewCells = 1024;

bool isBefore(const Cell& a, const Cell& b) {
  return a.place.key() < b.place.key();
}

// One stable pass: puts the cells in the order of 8 bits of their places, unless they are already.
void sortByBits(CellList& cells, CellList& spare, unsigned shift) {
  const auto digit = [shift](const Cell& cell) { return cell.place.key() >> shift & 0xFF; };
  std::array<std::size_t, 257> next{};  // where the next cell with this digit goes
  bool sorted = true;
  std::uint32_t last = 0;
  for (const Cell& cell : cells) {
    sorted = sorted && digit(cell) >= last;
    last = digit(cell);
    ++next[last + 1];
  }
  if (sorted) return;
  for (std::size_t i = 1; i < next.size(); ++i)
    next[i] += next[i - 1];
  Cell* const to = spare.begin();
  for (const Cell& cell : cells)
    to[next[digit(cell)]++] = cell;
  spare.setSize(cells.size());
  cells.swap(spare);
}

void sortByPlace(CellList& cells) {
  if (cells.size() < kFewCells) {
    std::stable_sort(cells.begin(), cells.end(), isBefore);
    return;
  }
  CellList spare;
  spare.reserve(cells.size());
  for (const unsigned shift : {0U, 8U, 16U})
    sortByBits(cells, spare, shift);
}

}  // namespace

std::size_t putInRows(CellList& cells) {
  sortByPlace(cells);
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
