// SPDX-License-Identifier: MIT
//
// Drives the exported operations over a RecordingHost: lists worksheets, reads one to its end, and
// turns the items into values that compare and print. What the operations promise is required of
// every call: tests and fuzz targets need not ask for it.
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

  std::uint32_t kind() const { return raw.kind; }
  std::uint32_t row() const { return raw.cell.row; }
  std::uint32_t column() const { return raw.cell.column; }
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
  std::size_t soundItems = 0;     // those that came before a fault was met
  std::int32_t closeResult = -2;  // of QPSCloseSheet

  std::vector<std::uint32_t> kinds() const;
  std::vector<Item> only(std::uint32_t kind) const;
};

// Takes a worksheet's items one by one, as long as the caller likes: a row height record of ten
// bytes stands for up to 65536. Each SSItem is filled with kUntouched before the call, so that an
// item also shows which bytes the reader left alone.
class ItemTaker {
 public:
  ItemTaker(RecordingHost& host, QPSSheet* sheet, const SSReaderInterface& reader)
      : host_(&host), sheet_(sheet), process_(reader.processSheet) {}

  // Nothing at the end. Requires items in the order of their kinds and in the worksheet's range, no
  // byte written that is not the kind's, that the end stays the end without a call to the host, and
  // that there is a value after a cell only.
  std::optional<Item> take();

  // What the last item held, when that was a cell.
  const QPSCellValue& value() const { return value_; }

 private:
  void takeValue(bool isCell);

  RecordingHost* host_;
  QPSSheet* sheet_;
  decltype(SSReaderInterface::processSheet) process_;
  std::uint32_t lastKind_ = 0;
  QPSCellValue value_{};
};

// Allocates a reader, opens the worksheet at `offset`, takes every item and closes all.
SheetRun readSheet(RecordingHost& host, std::uint32_t offset, const SSReaderInterface& reader);

// The worksheets that `handle` lists: none when the listing fails.
std::vector<SSWorkSheetEntry> listSheets(RecordingHost& host, QPSReader* handle,
                                         const SSReaderInterface& reader);

// The same with a handle of its own, and nothing in place of none.
std::optional<std::vector<SSWorkSheetEntry>> listSheets(RecordingHost& host,
                                                        const SSReaderInterface& reader);

// The same with the reader that the program is linked with.
inline SSReaderInterface linkedReader() {
  SSReaderInterface table;
  qpsGetSSReaderInterface(&table);
  return table;
}
inline SheetRun readSheet(RecordingHost& host, std::uint32_t offset) {
  return readSheet(host, offset, linkedReader());
}
inline std::optional<std::vector<SSWorkSheetEntry>> listSheets(RecordingHost& host) {
  return listSheets(host, linkedReader());
}

}  // namespace qps::test

#endif  // QPSREADER_TESTS_SHEET_DRIVER_H
