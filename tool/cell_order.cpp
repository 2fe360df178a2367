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
void sortByBits(std::vector<Cell>& cells, std::vector<Cell>& spare, unsigned shift) {
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
  for (const Cell& cell : cells)
    spare[next[digit(cell)]++] = cell;
  cells.swap(spare);
}

void sortByPlace(std::vector<Cell>& cells) {
  if (cells.size() < kFewCells) {
    std::stable_sort(cells.begin(), cells.end(), isBefore);
    return;
  }
  std::vector<Cell> spare(cells.size());
  for (const unsigned shift : {0U, 8U, 16U})
    sortByBits(cells, spare, shift);
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
