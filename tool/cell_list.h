// SPDX-License-Identifier: MIT
//
// The cells of a worksheet: a std::vector as far as it is needed here, but one that grows with
// realloc. For the large blocks that a large sheet takes, the system then moves pages instead of
// copying cells, and no two blocks exist at a time.
#ifndef QPSREADER_TOOL_CELL_LIST_H
#define QPSREADER_TOOL_CELL_LIST_H

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <new>
#include <type_traits>
#include <utility>

namespace qps {

// Where a cell stands, in an order that goes through a sheet row by row.
class Place {
 public:
  Place() = default;
  Place(std::uint32_t column, std::uint32_t row) : key_((row - 1) << 8 | (column - 1)) {}

  std::uint32_t column() const { return (key_ & 0xFF) + 1; }  // 1 to 256
  std::uint32_t row() const { return (key_ >> 8) + 1; }       // 1 to 65536
  std::uint32_t key() const { return key_; }                  // 24 bits

 private:
  std::uint32_t key_ = 0;
};

struct Cell {
  Place place;
  std::uint32_t style = 0;     // a number of Document::styles
  const char* text = nullptr;  // in the notebook's bytes; null when the cell shows nothing
};
static_assert(sizeof(Cell) == 8 + sizeof(void*) && std::is_trivially_copyable_v<Cell>);

class CellList {
 public:
  CellList() = default;
  CellList(CellList&& other) noexcept { swap(other); }
  CellList& operator=(CellList&& other) noexcept {
    swap(other);
    return *this;
  }
  ~CellList() { std::free(cells_); }

  std::size_t size() const { return size_; }
  std::size_t capacity() const { return capacity_; }
  bool empty() const { return size_ == 0; }
  const Cell* begin() const { return cells_; }
  const Cell* end() const { return cells_ + size_; }
  Cell* begin() { return cells_; }
  Cell* end() { return cells_ + size_; }
  const Cell& back() const { return cells_[size_ - 1]; }

  // Throws std::bad_alloc, as the functions below do not.
  void reserve(std::size_t capacity) {
    void* const grown = std::realloc(static_cast<void*>(cells_), capacity * sizeof(Cell));
    if (grown == nullptr) throw std::bad_alloc();
    cells_ = static_cast<Cell*>(grown);
    capacity_ = capacity;
  }

  // There must be room: size() < capacity().
  // The name is std::vector's, so that the same code can append to either.
  // NOLINTNEXTLINE(readability-identifier-naming)
  void push_back(const Cell& cell) { cells_[size_++] = cell; }

  // At most size().
  void setSize(std::size_t size) { size_ = size; }

  void swap(CellList& other) noexcept {
    std::swap(cells_, other.cells_);
    std::swap(size_, other.size_);
    std::swap(capacity_, other.capacity_);
  }

 private:
  Cell* cells_ = nullptr;
  std::size_t size_ = 0;
  std::size_t capacity_ = 0;
};

}  // namespace qps

#endif  // QPSREADER_TOOL_CELL_LIST_H
