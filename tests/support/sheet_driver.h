// SPDX-License-Identifier: MIT
//
// Drives the exported operations over a RecordingHost: lists worksheets, reads one to its end, and
// turns the items into values that compare and print. Each SSItem is filled with 0xA5 before the
// call, so an item also shows which bytes the reader left alone.
#ifndef QPSREADER_TESTS_SHEET_DRIVER_H
#define QPSREADER_TESTS_SHEET_DRIVER_H

#include <cstdint>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include <qpsreader/cell_value.h>
#include <qpsreader/qps_reader.h>
#include <qpsreader/ss_item.h>
#include <qpsreader/worksheet_list.h>
#include "tests/support/recording_host.h"

namespace qps::test {

inline constexpr unsigned char kUntouched = 0xA5;

// An item as it was delivered, its text copied out (and the pointer's bytes then zeroed).
struct Item {
  SSItem raw;
  std::optional<std::string> text;

  uint32_t kind() const { return raw.kind; }
  uint32_t row() const { return raw.cell.row; }
  uint32_t column() const { return raw.cell.column; }
  unsigned alignment() const { return raw.cell.alignment; }
  bool operator==(const Item& other) const;
};

// One line with every field of the item's kind; "-" stands for a field that was left alone.
std::string describe(const Item& item);
std::ostream& operator<<(std::ostream& out, const Item& item);

// What QPSGetCellValue said of a cell, in words: "formula number 1.5", "text 'a'", "blank"; and
// "113.0 'TDD' date time style=Date".
struct CellValue {
  std::string contents;
  std::string format;
  bool operator==(const CellValue&) const = default;
};
CellValue describe(const QPSCellValue& value);

struct SheetRun {
  bool opened = false;
  std::vector<Item> items;
  std::vector<CellValue> values;  // of the cells among them
  size_t soundItems = 0;          // those that came before a fault was met
  int32_t closeResult = -2;       // of QPSCloseSheet

  std::vector<uint32_t> kinds() const;
  std::vector<Item> only(uint32_t kind) const;
};

// Allocates a reader, opens the worksheet at `offset`, takes every item and closes all. Bytes of an
// item that its kind does not list must be left alone, and a call after the end must say 1 again
// without a call to the host: the host records a violation otherwise. So it does when a value is
// there at any other time than after a cell, or asking for it takes a call to the host.
SheetRun readSheet(RecordingHost& host, uint32_t offset, const SSReaderInterface& reader);

// The worksheets, or nothing when the listing fails.
std::optional<std::vector<SSWorkSheetEntry>> listSheets(RecordingHost& host,
                                                        const SSReaderInterface& reader);

// The same with the reader that the program is linked with.
inline SSReaderInterface linkedReader() {
  SSReaderInterface table;
  qpsGetSSReaderInterface(&table);
  return table;
}
inline SheetRun readSheet(RecordingHost& host, uint32_t offset) {
  return readSheet(host, offset, linkedReader());
}
inline std::optional<std::vector<SSWorkSheetEntry>> listSheets(RecordingHost& host) {
  return listSheets(host, linkedReader());
}

}  // namespace qps::test

#endif  // QPSREADER_TESTS_SHEET_DRIVER_H
