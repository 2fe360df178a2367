// SPDX-License-Identifier: MIT
//
// The table of one worksheet in an HTML page, with its heading.
//
// Its size is in proportion to the cells. Empty cells side by side are one wide cell, and empty
// rows are one marked row when there are many more of them than cells.
#ifndef QPSREADER_TOOL_HTML_SHEET_H
#define QPSREADER_TOOL_HTML_SHEET_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

#include "tool/document.h"

namespace qps {

class Output;

// The <section> of one worksheet. What it refers to must outlive it; the document has the contents
// of its cells (Command::contents).
class SheetTable {
 public:
  SheetTable(Output& out, const Document& document, const SheetData& sheet);

  void write();
  bool isLarge() const { return large_; }
  void writeHead();
  void writeRows(std::uint32_t first, std::uint32_t last);
  void writeEnd();

 private:
  using Cells = std::span<const Cell>;

  bool isHidden(std::uint32_t column) const { return widths_[column] == 0; }
  void widenFor(std::uint32_t column, std::size_t characters);
  std::uint64_t width(std::uint32_t first, std::uint32_t last) const;
  std::uint32_t shownWidth(std::uint32_t column) const;
  bool surelyFits(const CellStyle& style, std::uint32_t column) const;
  std::uint32_t height(std::uint32_t row) const;
  std::string hiddenNames() const;

  void writeNote(const std::string& hidden);
  void writeColumns();
  bool anyHiddenColumn() const;
  std::string gridLines(bool hiddenToo) const;
  void writeEmptyRows(std::uint32_t first, std::uint32_t last);
  void writeRow(std::uint32_t row, Cells cells);
  void writeEmptyCells(std::uint32_t first, std::uint32_t last);
  void writeCell(Cells row, std::size_t index);
  void writeNumber();
  void writeLabel(const CellStyle& style, std::uint64_t left, std::uint64_t right);
  bool mayWrite(std::uint64_t emptyCells);

  Output& out_;
  const Document& document_;
  const SheetData& sheet_;
  std::array<std::uint32_t, 257> widths_{};  // by column from 1; 0 is hidden
  std::uint32_t lastColumn_ = 0;
  std::uint64_t emptyCellsLeft_;
  bool large_;
  std::uint32_t rowsWritten_ = 0;
  std::string text_;
};

}  // namespace qps

#endif  // QPSREADER_TOOL_HTML_SHEET_H
