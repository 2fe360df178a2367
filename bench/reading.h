// SPDX-License-Identifier: MIT
//
// A host's way through the exported operations, with nothing done to what comes out.
#ifndef QPSREADER_BENCH_READING_H
#define QPSREADER_BENCH_READING_H

#include <cstddef>
#include <cstdint>

#include <qpsreader/qps_reader.h>
#include <qpsreader/ss_item.h>
#include <qpsreader/worksheet_list.h>
#include "bench/memory_host.h"

namespace qps::bench {

// A reader over a host, for any number of listings and sheets.
class Reading {
 public:
  explicit Reading(MemoryHost& host) : host_(host) {
    qpsGetSSReaderInterface(&operations_);
    reader_ = operations_.allocateReader(nullptr, nullptr, host.stream(), host.services(), nullptr,
                                         nullptr);
  }
  ~Reading() { operations_.closeReader(reader_); }
  Reading(const Reading&) = delete;
  Reading& operator=(const Reading&) = delete;

  // Lists the worksheets; how many there are.
  std::uint32_t list() {
    sheets_ = {};
    return operations_.getWorkSheetInfo(reader_, &sheets_, 0) != 0 ? sheets_.count : 0;
  }

  // Where the worksheet with this index of the last listing begins.
  std::uint32_t offset(std::uint32_t sheet = 0) const { return sheets_.entries[sheet].startOffset; }

  // Opens the worksheet and closes it again. False when it does not open.
  bool open(std::uint32_t offset) { return operations_.closeSheet(openSheet(offset)) == 0; }

  // Opens the worksheet, takes all of its items, and calls `onItem` with each; how many there were.
  template <typename OnItem>
  std::size_t items(std::uint32_t offset, OnItem onItem) {
    QPSSheet* sheet = openSheet(offset);
    if (sheet == nullptr) return 0;
    SSItem item;
    std::size_t count = 0;
    for (; operations_.processSheet(sheet, &item) == 0; ++count)
      onItem(item);
    operations_.closeSheet(sheet);
    return count;
  }
  std::size_t items(std::uint32_t offset) {
    return items(offset, [](const SSItem&) {});
  }

 private:
  QPSSheet* openSheet(std::uint32_t offset) {
    return operations_.initSheet(reader_, &host_, offset, MemoryHost::itemAlloc, nullptr);
  }

  MemoryHost& host_;
  SSReaderInterface operations_;
  QPSReader* reader_;
  SSWorkSheetList sheets_{};
};

}  // namespace qps::bench

#endif  // QPSREADER_BENCH_READING_H
