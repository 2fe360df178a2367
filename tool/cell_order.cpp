// SPDX-License-Identifier: MIT
#include "tool/cell_order.h"

#include <algorithm>
#include <array>

namespace qps {
namespace {

// Below this the tables of the counting passes cost more than they save.
constexpr std::size_t kFewCells = 1024;

bool isBefore(const Cell& a, const Cell& b) {
  return a.place.key() < b.place.key();
}

// One stable pass: `to` gets the cells in the order of 8 bits of their places.
void sortByBits(const std::vector<Cell>& from, std::vector<Cell>& to, unsigned shift) {
  const auto digit = [shift](const Cell& cell) { return cell.place.key() >> shift & 0xFF; };
  std::array<std::size_t, 257> next{};  // where the next cell with this digit goes
  for (const Cell& cell : from)
    ++next[digit(cell) + 1];
  for (std::size_t i = 1; i < next.size(); ++i)
    next[i] += next[i - 1];
  for (const Cell& cell : from)
    to[next[digit(cell)]++] = cell;
}

void sortByPlace(std::vector<Cell>& cells) {
  if (cells.size() < kFewCells) {
    std::stable_sort(cells.begin(), cells.end(), isBefore);
    return;
  }
  std::vector<Cell> spare(cells.size());
  for (const unsigned shift : {0U, 8U, 16U}) {
    sortByBits(cells, spare, shift);
    cells.swap(spare);
  }
}

}  // namespace

std::size_t putInRows(std::vector<Cell>& cells) {
  if (!std::is_sorted(cells.begin(), cells.end(), isBefore)) sortByPlace(cells);

  const std::size_t before = cells.size();
  std::size_t kept = 0;
  for (std::size_t i = 0; i < before; ++i) {
    const bool replaced = i + 1 < before && cells[i].place.key() == cells[i + 1].place.key();
    if (!replaced) cells[kept++] = cells[i];
  }
  cells.resize(kept);
  return before - kept;
}

}  // namespace qps
