// SPDX-License-Identifier: MIT
#include "fuzz/session.h"

#include <algorithm>
#include <cstring>

#include <qpsreader/cell_value.h>
#include <qpsreader/worksheet_list.h>

namespace qps::fuzz {

namespace {

constexpr uint32_t kMostSheets = 3;
constexpr uint32_t kMostColumns = 256;
constexpr uint32_t kMostRows = 65536;

template <typename Value>
std::string_view bytesOf(const Value& value) {
  return {reinterpret_cast<const char*>(&value), sizeof(value)};
}

// Where the text pointer of a kind stands; 0 for kinds without.
size_t textOffsetOf(uint32_t kind) {
  if (kind == SSItemKindCell) return offsetof(SSItemCell, text);
  const bool isNotebookText = kind == SSItemKindRecord37Text || kind == SSItemKindRecord38Text;
  return isNotebookText ? offsetof(SSItemNotebookText, text) : 0;
}

void requireInRange(const SSItem& item) {
  const auto within = [](uint32_t value, uint32_t most) { return value >= 1 && value <= most; };
  switch (item.kind) {
    case SSItemKindColumnWidths:
      require(within(item.columnWidths.first, item.columnWidths.last) &&
                  within(item.columnWidths.last, kMostColumns),
              "a run of columns");
      break;
    case SSItemKindRowHeight:
      require(
          item.rowHeight.first == item.rowHeight.last && within(item.rowHeight.first, kMostRows),
          "one row a row height");
      break;
    case SSItemKindCell:
      require(within(item.cell.column, kMostColumns) && within(item.cell.row, kMostRows),
              "a cell in the worksheet");
      break;
    default:
      break;
  }
}

// There is a value after a cell only, and asking for it takes nothing of the host.
void takeValue(const LeanHost& host, QPSSheet* sheet, bool isCell, Digest& digest) {
  QPSCellValue value{};
  const Work before = host.work();
  require((QPSGetCellValue(sheet, &value) == 0) == isCell, "a value for each cell, and no other");
  require(host.work().calls == before.calls, "a value asks for nothing");
  require(value.kind <= QPSCellError && value.isFormula <= 1, "a known kind of value");
  require((value.text != nullptr) == (isCell && value.kind == QPSCellText), "a text for texts");
  require(value.formatCode <= 255 && value.decimals <= 15, "a format of one byte");
  require(value.showsDateOrTime <= (QPSShowsDate | QPSShowsTime), "a date, a time or both");
  digest.add(bytesOf(value.kind));
  digest.add(bytesOf(value.number));
  digest.add({value.text, value.textBytes});
  digest.add(value.formatText != nullptr ? value.formatText : "");
  digest.add(value.styleName != nullptr ? value.styleName : "");
}

}  // namespace

void requireWork(const LeanHost& host, const Work& before, const WorkLimit& limit) {
  const uint64_t size = host.file().size();
  require(host.work().calls - before.calls <= limit.callsPerByte * size + limit.calls,
          "host calls that the bytes of the file account for");
  require(host.work().bytesRead - before.bytesRead <= limit.bytesPerByte * size + limit.bytes,
          "bytes read that the bytes of the file account for");
  require(host.peakPoolBytes() <= limit.poolPerByte * size + limit.pool,
          "memory that the bytes of the file account for");
}

bool ItemTaker::take(Digest& digest) {
  constexpr int kUntouched = 0xA5;
  SSItem item;
  std::memset(item.bytes, kUntouched, sizeof(item.bytes));
  if (QPSProcessSheet(sheet_, &item) != 0) {
    const Work before = host_->work();
    require(QPSProcessSheet(sheet_, &item) == 1, "the end stays the end");
    require(host_->work().calls == before.calls, "the end asks for nothing");
    takeValue(*host_, sheet_, false, digest);
    return false;
  }
  require(item.kind >= SSItemKindSheetInfo && item.kind <= SSItemKindCell, "a known kind");
  require(item.kind >= lastKind_, "items in the order of their kinds");
  require((item.kind == SSItemKindSheetInfo) == (lastKind_ == 0), "sheet information first, once");
  lastKind_ = item.kind;
  requireInRange(item);
  takeValue(*host_, sheet_, item.kind == SSItemKindCell, digest);

  const size_t textOffset = textOffsetOf(item.kind);
  char* text = nullptr;
  if (textOffset != 0) {
    std::memcpy(&text, item.bytes + textOffset, sizeof(text));
    std::memset(item.bytes + textOffset, text != nullptr ? 1 : 0, sizeof(text));
  }
  digest.add(bytesOf(item));
  if (text != nullptr) {
    digest.add(text);
    if (item.kind == SSItemKindCell) {
      host_->freeItemText(text);
    } else {
      host_->freePoolText(text);
    }
  }
  return true;
}

void readSheet(LeanHost& host, QPSReader* reader, uint32_t offset, uint32_t mostItems,
               const WorkLimit& limit, Digest& digest) {
  Work before = host.work();
  QPSSheet* sheet = QPSInitSheet(reader, &host, offset, LeanHost::itemAlloc, nullptr);
  requireWork(host, before, limit);
  if (sheet == nullptr) {
    require(!host.isOpen(), "a failed opening closes the stream");
    return;
  }
  before = host.work();
  ItemTaker taker(host, sheet);
  uint32_t taken = 0;
  while (taken < mostItems && taker.take(digest))
    ++taken;
  // Each item has a text to give back, each row a node of the list.
  WorkLimit itemLimit = limit;
  itemLimit.calls += uint64_t{4} * taken;
  requireWork(host, before, itemLimit);
  require(QPSCloseSheet(sheet) == 0 && !host.isOpen(), "closing closes the stream");
  digest.add(bytesOf(taken));
}

uint64_t visitNotebook(LeanHost& host, uint32_t mostItems, const WorkLimit& limit) {
  Digest digest;
  QPSReader* reader =
      QPSAllocateReader(nullptr, nullptr, host.stream(), host.services(), nullptr, nullptr);
  if (reader == nullptr) return digest.value();
  SSWorkSheetList list{0xA5A5A5A5, nullptr};  // the count is an output
  const Work before = host.work();
  const bool listed = QPSGetWorkSheetInfo(reader, &list, 0) == 1;
  requireWork(host, before, limit);
  require(!host.isOpen(), "listing closes the stream");
  require(listed == (list.entries != nullptr), "a table or none");
  const uint32_t count = listed ? list.count : 0;
  require(listed == (count > 0), "a table has entries");
  for (uint32_t i = 0; i < count; ++i) {
    const SSWorkSheetEntry& entry = list.entries[i];
    require(std::memchr(entry.name, '\0', sizeof(entry.name)) != nullptr, "a name ends");
    if (i < kMostSheets) digest.add(bytesOf(entry));
  }
  for (uint32_t i = 0; i < std::min(count, kMostSheets); ++i) {
    readSheet(host, reader, list.entries[i].startOffset, mostItems, limit, digest);
  }
  if (!listed) readSheet(host, reader, 0, mostItems, limit, digest);
  QPSCloseReader(reader);
  return digest.value();
}

}  // namespace qps::fuzz
