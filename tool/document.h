// SPDX-License-Identifier: MIT
//
// A notebook, read completely: what the writers print. Nothing is printed before this exists, so a
// file that cannot be read leaves no half of itself in the output.
//
// Memory is in proportion to the cells: 16 bytes each, and their texts; 16 more for a command that
// asks what they hold. Rows and columns cost nothing by themselves.
#ifndef QPSREADER_TOOL_DOCUMENT_H
#define QPSREADER_TOOL_DOCUMENT_H

#include <algorithm>
#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <qpsreader/host/notebook.hpp>
#include "tool/cell_list.h"
#include "tool/commands.h"
#include "tool/encoding.h"
#include "tool/number_format.h"
#include "tool/status.h"
#include "tool/style_table.h"

namespace qps {

class Progress;
class TimeLimit;
struct OpenedFile;

// The smallest rectangle around some cells; empty as long as lastRow is 0.
struct Area {
  std::uint32_t firstColumn = 256, firstRow = 65536, lastColumn = 0, lastRow = 0;

  bool empty() const { return lastRow == 0; }
  void include(std::uint32_t column, std::uint32_t row) {
    firstColumn = std::min(firstColumn, column);
    lastColumn = std::max(lastColumn, column);
    firstRow = std::min(firstRow, row);
    lastRow = std::max(lastRow, row);
  }
  std::string name() const;  // "A1:C11", "B7" or ""
};

struct SheetData {
  std::uint32_t number = 0;  // its place in the notebook, from 1
  std::string name;          // UTF-8
  std::uint32_t startOffset = 0;
  SheetInfo info;
  SSItemSheetInfo infoRecord{};  // the same as the reader wrote it
  std::vector<Run> columnWidths;
  std::vector<Run> rowHeights;  // Need::kItems: as delivered; otherwise by row, each row once
  CellList cells;               // as the Need of the command asks
  ContentsList contents;        // Command::contents: what each of these cells holds
  Area shown;                   // around the cells with a text
  std::uint64_t shownCells = 0;
  std::uint64_t blankCells = 0;     // cells that have no text
  std::uint64_t repeatedCells = 0;  // cells that a later one in the same place replaced

  // The width that each column has, by its number from 1; 0 is hidden.
  std::array<std::uint32_t, 257> widths() const;

  std::uint32_t hiddenRows() const;
  std::uint32_t hiddenColumns() const;
};

struct NotebookText {
  std::uint32_t record = 0;  // 37 or 38
  std::string text;          // UTF-8
};

struct Document {
  Document(Notebook opened, const Decoder& textDecoder)
      : notebook(std::move(opened)), texts(notebook.textArena()), decoder(&textDecoder) {}

  std::string name;      // the file's, as the user gave it
  bool many = false;     // one of several: what is printed says of which file it is
  bool follows = false;  // another one stands before it in the same output
  Notebook notebook;
  TextArena texts;
  const Decoder* decoder;
  StyleTable styles;
  FormatTable formats;  // of SheetData::contents
  std::vector<NotebookText> notebookTexts;
  std::vector<SheetData> sheets;  // those that were asked for
  std::optional<Failure> damage;  // with --salvage: what is missing from all this
};

// Reads what `command` needs of the notebook. Throws Failure.
Document readDocument(const std::string& file, OpenedFile& opened, const Command& command,
                      const Settings& settings, const Decoder& decoder, const TimeLimit& time,
                      Progress& progress);

// What --strict takes for a failure, and what is a warning otherwise; "" when there is none.
std::string undefinedBytesMessage(const Document& document, std::uint64_t undefinedBytes);
std::string repeatedCellsMessage(const SheetData& sheet);
std::string suspicionMessage(const Document& document);

// The same, with the reason in this program's terms.
Failure failureOf(const Error& error);

}  // namespace qps

#endif  // QPSREADER_TOOL_DOCUMENT_H
