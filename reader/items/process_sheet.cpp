// SPDX-License-Identifier: MIT
//
// QPSProcessSheet: one item per call. What comes before the cells is what the opening left in the
// sheet; the cells come from reading the worksheet's records again, one cell record per call.
#include <algorithm>
#include <cstring>
#include <iterator>
#include <string_view>

#include <qpsreader/ss_item.h>
#include "reader/frame/pool.h"
#include "reader/frame/qps_sheet.h"
#include "reader/frame/record_table.h"
#include "reader/items/cell_records.h"
#include "reader/scan/row_heights.h"

namespace qps {

namespace {

constexpr uint32_t kItemDelivered = 0;
constexpr uint32_t kSheetEnded = 1;

using CellHandler = CellStep (*)(QPSSheet&, SSItemCell&);

// A blank cell that cannot be read is passed over; any other ends the sheet.
constexpr RecordRule<CellHandler> kCellRules[] = {
    {RecordType::kBlankCell, qpsReadBlankCell, OnFailure::kIgnore},
    {RecordType::kIntegerCell, qpsReadIntegerCell, OnFailure::kStop},
    {RecordType::kNumberCell, qpsReadNumberCell, OnFailure::kStop},
    {RecordType::kLabelCell, qpsReadLabelCell, OnFailure::kStop},
    {RecordType::kFormulaCell, qpsReadFormulaCell, OnFailure::kStop},
    {RecordType::kStringCell, qpsReadStringCell, OnFailure::kStop},
};

constexpr RecordTable<kCellRules> kCellTable;

constexpr std::string_view kDefaultFontName = "Arial";
constexpr std::uint32_t kDefaultFontSize = 10;
constexpr std::uint8_t kDefaultFontExtra1 = 18;

// The colour that all columns share, or none.
std::uint32_t sharedColumnColour(const QPSSheet& sheet) {
  const auto* colours = std::begin(sheet.columnColours);
  const bool shared = std::all_of(colours + 1, std::end(sheet.columnColours),
                                  [&](std::uint32_t colour) { return colour == colours[0]; });
  return shared ? colours[0] : kNoColour;
}

// From here on every column has a width. The first run begins at the lowest column whose width is
// not the default.
void normaliseColumnWidths(QPSSheet& sheet) {
  sheet.nextWidthColumn = 0;
  for (std::size_t i = kColumns; i-- > 0;) {
    if (sheet.columnWidths[i] == kNotSet) sheet.columnWidths[i] = sheet.defaultColumnWidth;
    if (sheet.columnWidths[i] != sheet.defaultColumnWidth) {
      sheet.nextWidthColumn = static_cast<std::uint32_t>(i + 1);
    }
  }
}

void deliverSheetInfo(QPSSheet& sheet, SSItemSheetInfo& info) {
  info.marker = 1;
  info.rowCount = sheet.rowCount;
  info.columnCount = sheet.columnCount;
  info.record257Flag = sheet.record257Flag;
  info.record258Flag = sheet.record258Flag;
  info.defaultColumnWidth = sheet.defaultColumnWidth;
  info.defaultRowHeight = sheet.defaultRowHeight;
  std::memcpy(info.fixedInfo, kFixedInfo, sizeof(kFixedInfo));
  info.font = {};
  info.font.present = 1;
  std::memcpy(info.font.name, kDefaultFontName.data(), kDefaultFontName.size());
  info.font.size = kDefaultFontSize;
  info.font.extra1 = kDefaultFontExtra1;
  info.columnColour = sharedColumnColour(sheet);
  info.kind = SSItemKindSheetInfo;
  sheet.itemState = ItemStateWidths;
  normaliseColumnWidths(sheet);
}

void deliverColumnWidths(QPSSheet& sheet, SSItemRun& run) {
  const auto* widths = std::begin(sheet.columnWidths);
  const auto* end = std::end(sheet.columnWidths);
  const auto* first = widths + sheet.nextWidthColumn - 1;
  const auto* afterRun =
      std::find_if(first, end, [&](std::uint32_t width) { return width != *first; });
  run.first = sheet.nextWidthColumn;
  run.last = static_cast<std::uint32_t>(afterRun - widths);
  run.value = *first;
  run.kind = SSItemKindColumnWidths;
  const auto* next = std::find_if(
      afterRun, end, [&](std::uint32_t width) { return width != sheet.defaultColumnWidth; });
  sheet.nextWidthColumn = next == end ? 0 : static_cast<std::uint32_t>(next - widths + 1);
}

void deliverRowHeight(SSItemRun& run, const RowHeight& rowHeight) {
  run.first = rowHeight.row;
  run.last = rowHeight.row;
  run.value = rowHeight.height;
  run.kind = SSItemKindRowHeight;
}

bool hasText(const char* text) {
  return text != nullptr && text[0] != '\0';
}

// Offers a notebook text once, whether or not the pool has room for the host's copy.
void deliverNotebookText(QPSSheet& sheet, SSItemNotebookText& item, char* text,
                         std::uint32_t kind) {
  item.text = poolCopyText(sheet.services, text);
  text[0] = '\0';
  item.kind = kind;
}

// Delivers the next item that comes before the cells. False when none is left: the state is then
// ItemStateCells, or ItemStateEnd when the worksheet's records cannot be read. Out of line,
// which keeps what runs once a cell short.
[[gnu::noinline]] bool deliverBeforeCells(QPSSheet& sheet, SSItem& item) {
  if (sheet.itemState == ItemStateStart) {
    deliverSheetInfo(sheet, item.sheetInfo);
    return true;
  }
  if (sheet.nextWidthColumn != 0) {
    deliverColumnWidths(sheet, item.columnWidths);
    return true;
  }
  if (sheet.itemState == ItemStateWidths) {
    sheet.itemState = sheet.records.seekTo(sheet.sheetStart) ? ItemStateRecords : ItemStateEnd;
  }
  if (sheet.itemState == ItemStateEnd) return false;
  if (RowHeight rowHeight; takeRowHeight(sheet, rowHeight)) {
    deliverRowHeight(item.rowHeight, rowHeight);
    return true;
  }
  if (hasText(sheet.record38Text)) {
    deliverNotebookText(sheet, item.notebookText, sheet.record38Text, SSItemKindRecord38Text);
    return true;
  }
  if (hasText(sheet.record37Text)) {
    deliverNotebookText(sheet, item.notebookText, sheet.record37Text, SSItemKindRecord37Text);
    return true;
  }
  sheet.itemState = ItemStateCells;
  return false;
}

// Passes over a record that is no cell. False at the end of the worksheet.
bool passOtherRecord(RecordStream& records) {
  if (records.type() == RecordType::kEndOfFile) return false;
  if (records.type() != RecordType::kSheetEnd) return records.skipBody();
  // The body belongs to the worksheet; what it holds, or that it is cut short, changes nothing.
  static_cast<void>(records.readBody());
  return false;
}

// Delivers the next cell. False at the end of the worksheet.
bool deliverCell(QPSSheet& sheet, SSItemCell& cell) {
  RecordStream& records = sheet.records;
  while (records.readHeader()) {
    const auto* rule = kCellTable.find(records.recordType);
    if (rule == nullptr) {
      if (!passOtherRecord(records)) return false;
    } else if (!records.readBody()) {
      if (rule->onFailure == OnFailure::kStop) return false;
    } else if (rule->handler(sheet, cell) == CellStep::kDeliver) [[likely]] {
      return true;
    }
  }
  return false;
}

}  // namespace

}  // namespace qps

uint32_t QPSProcessSheet(QPSSheet* sheet, SSItem* item) {
  if (sheet->itemState != qps::ItemStateCells) {
    if (qps::deliverBeforeCells(*sheet, *item)) return qps::kItemDelivered;
    if (sheet->itemState == qps::ItemStateEnd) return qps::kSheetEnded;
  }
  if (qps::deliverCell(*sheet, item->cell)) return qps::kItemDelivered;
  sheet->itemState = qps::ItemStateEnd;
  return qps::kSheetEnded;
}
