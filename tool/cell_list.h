// SPDX-License-Identifier: MIT
//
// The cells of a worksheet, what they show and what they hold, in a list each: a std::vector as far
// as it is needed here, but one that grows with realloc. For the large blocks that a large sheet
// takes, the system then moves pages instead of copying cells, and no two blocks exist at a time.
#ifndef QPSREADER_TOOL_CELL_LIST_H
#define QPSREADER_TOOL_CELL_LIST_H

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <new>
#include <type_traits>
#include <utility>

#include "host/large_pages.hpp"
#include "tool/cell_value.h"

namespace qps {

// Where a cell stands, in an order that goes through a sheet row by row.
class Place {
 public:
  Place() = default;
  Place(std::uint32_t column, std::uint32_t row) : key_((row - 1) << 9 | (column - 1)) {}

  std::uint32_t column() const { return (key_ & 0x1FF) + 1; }  // 1 to 256; 257 behind marks
  std::uint32_t row() const { return (key_ >> 9) + 1; }        // 1 to 65536; 65537 below marks
  std::uint32_t key() const { return key_; }

 private:
  std::uint32_t key_ = 0;
};

struct Cell {
  Place place;
  std::uint32_t style = 0;     // a number of Document::styles
  const char* text = nullptr;  // in the notebook's bytes; null when the cell shows nothing
};
static_assert(sizeof(Cell) == 8 + sizeof(void*) && std::is_trivially_copyable_v<Cell>);

// What a cell holds, for the commands that ask for it.
class CellContents {
 public:
  CellContents(Place where, ValueType type, bool isFormula, std::uint32_t format, double number)
      : place(where),
        facts_(format << 8 | (isFormula ? kFormula : 0) | std::uint32_t(type)),
        held_{number} {}
  CellContents(Place where, bool isFormula, std::uint32_t format, const char* text)
      : CellContents(where, ValueType::kText, isFormula, format, 0) {
    held_.text = text;
  }

  Place place;

  ValueType type() const { return static_cast<ValueType>(facts_ & (kFormula - 1)); }
  bool isFormula() const { return (facts_ & kFormula) != 0; }
  std::uint32_t format() const { return facts_ >> 8; }  // a number of Document::formats
  double number() const { return held_.number; }        // of a number or date, its serial
  const char* text() const { return held_.text; }       // of a text, in the notebook's bytes

 private:
  static constexpr std::uint32_t kFormula = 0x80;

  std::uint32_t facts_;
  union {
    double number;
    const char* text;
  } held_;
};
static_assert(sizeof(CellContents) == 16 && std::is_trivially_copyable_v<CellContents>);

template <class T>
class PlacedList {
 public:
  PlacedList() = default;
  PlacedList(PlacedList&& other) noexcept { swap(other); }
  PlacedList& operator=(PlacedList&& other) noexcept {
    swap(other);
    return *this;
  }
  ~PlacedList() { std::free(cells_); }

  std::size_t size() const { return size_; }
  std::size_t capacity() const { return capacity_; }
  bool empty() const { return size_ == 0; }
  const T* begin() const { return cells_; }
  const T* end() const { return cells_ + size_; }
  const T& operator[](std::size_t index) const { return cells_[index]; }
  T* begin() { return cells_; }
  T* end() { return cells_ + size_; }
  const T& back() const { return cells_[size_ - 1]; }

  // Throws std::bad_alloc, as the functions below do not.
  void reserve(std::size_t capacity) {
    void* const grown = std::realloc(static_cast<void*>(cells_), capacity * sizeof(T));
    if (grown == nullptr) throw std::bad_alloc();
    cells_ = static_cast<T*>(grown);
    capacity_ = capacity;
    preferLargePages(grown, capacity * sizeof(T));
  }

  // There must be room: size() < capacity().
  // The name is std::vector's, so that the same code can append to either.
  // NOLINTNEXTLINE(readability-identifier-naming)
  void push_back(const T& cell) { cells_[size_++] = cell; }

  // At most size().
  void setSize(std::size_t size) { size_ = size; }

  void swap(PlacedList& other) noexcept {
    std::swap(cells_, other.cells_);
    std::swap(size_, other.size_);
    std::swap(capacity_, other.capacity_);
  }

 private:
  T* cells_ = nullptr;
  std::size_t size_ = 0;
  std::size_t capacity_ = 0;
};

using CellList = PlacedList<Cell>;
using ContentsList = PlacedList<CellContents>;

}  // namespace qps

#endif  // QPSREADER_TOOL_CELL_LIST_H
