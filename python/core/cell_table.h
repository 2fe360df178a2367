// SPDX-License-Identifier: MIT
//
// A worksheet as columns: one entry a cell, in the file's order, as Python's buffers and Arrow's
// arrays want them. Nothing here knows Python.
#ifndef QPSREADER_PYTHON_CELL_TABLE_H
#define QPSREADER_PYTHON_CELL_TABLE_H

#include <array>
#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <qpsreader/host/notebook.hpp>
#include "python/core/decoder.h"

namespace qps::python {

// What a cell holds; a number that shows as a date or a time counts as one while the year is one
// of 1 to 9999.
enum class Kind : std::uint8_t { kBlank, kNumber, kText, kError, kDate, kTime, kDateTime };
constexpr std::array<const char*, 7> kKindNames = {"blank", "number", "text",    "error",
                                                   "date",  "time",   "datetime"};

// What the tables of a notebook may hold together, with what the notebook itself does, and what
// reading them may take.
struct Budget {
  std::size_t limit = 0;  // in bytes; 0 is none
  std::atomic<std::size_t> held{0};
  std::chrono::nanoseconds timeLimit{0};  // of the processor; 0 is none
  std::chrono::nanoseconds timeSpent{0};  // for one thread at a time
};

// One bit a cell, the lowest bit of a byte first.
struct Bits {
  std::vector<std::uint8_t> bytes;
  std::size_t count = 0;

  void append(bool bit);
  bool operator[](std::size_t at) const { return (bytes[at / 8] >> (at % 8) & 1) != 0; }
};

// UTF-8 texts in one block: the text of cell i ends at ends[i + 1].
struct TextColumn {
  std::vector<std::int64_t> ends{0};
  std::string utf8;
  Bits present;

  void append(std::optional<std::string_view> text, const Decoder& decoder);
  std::optional<std::string_view> operator[](std::size_t at) const;
};

// What cells of one look share.
struct Look {
  SSItemCell item{};      // alignment, colours, borders and font; CellView reads it
  NumberFormat format{};  // without its texts, which follow
  std::optional<std::string> formatText;
  std::string styleName;
};

struct CellTable {
  explicit CellTable(std::shared_ptr<Budget> budget);
  CellTable(const CellTable&) = delete;
  CellTable& operator=(const CellTable&) = delete;
  ~CellTable();

  std::size_t size() const { return row.size(); }

  // The last cell of this place, if there is one. For one thread at a time; the first call sorts.
  std::optional<std::size_t> find(std::uint32_t atRow, std::uint32_t atColumn) const;

  std::vector<std::uint32_t> row;     // from 1
  std::vector<std::uint16_t> column;  // from 1
  std::vector<std::uint8_t> kind;     // a Kind
  std::vector<double> number;         // the number or serial; 0 without one
  std::vector<std::int64_t> when;     // in microseconds: since 1970-01-01 for kDate and kDateTime,
                                      // since midnight for kTime, else 0
  std::vector<std::uint32_t> look;    // a place in `looks`
  Bits isNumber, isDay, isTime, isFormula;
  TextColumn string;  // the text of a text cell, whatever it shows
  TextColumn text;    // what the cell shows

  std::vector<Look> looks;
  std::uint32_t lastRow = 0, lastColumn = 0;  // of the cells that are not blank; 0 without any
  SheetInfo info;
  std::vector<Run> widths;   // in the file's order
  std::vector<Run> heights;  // rows of one height that follow each other are one run
  std::string damage;        // why the worksheet is not whole; "" when it is

 private:
  friend class TableReader;
  void sortPlaces() const;

  mutable std::vector<std::uint32_t> order_;  // of the cells, by place; empty before find
  std::shared_ptr<Budget> budget_;
  std::size_t charged_ = 0;
};

// Thrown with why nothing can be delivered.
struct ReadFailure {
  Error error;
};

// Reads a worksheet. What it keeps counts towards the budget together with what the notebook holds,
// and so does its time when `isTimed`; beyond it, or on an input error, a ReadFailure is thrown.
// Damage is no failure.
std::shared_ptr<const CellTable> readTable(const Notebook& notebook, const Sheet& sheet,
                                           const Decoder& decoder, std::shared_ptr<Budget> budget,
                                           bool isTimed);

}  // namespace qps::python

#endif  // QPSREADER_PYTHON_CELL_TABLE_H
