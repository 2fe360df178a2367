// SPDX-License-Identifier: MIT
//
// QPSProcessSheet: one item per call. Everything before the cells comes from what the opening left
// in the sheet; the cells come from reading the worksheet's records again, one cell record per
// call.
#include <algorithm>
#include <cstring>
#include <iterator>
#include <optional>
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
    {RecordType::kLabelCell, qpsReadTextCell, OnFailure::kStop},
    {RecordType::kFormulaCell, qpsReadFormulaCell, OnFailure::kStop},
    {RecordType::kStringCell, qpsReadTextCell, OnFailure::kStop},
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

std::uint32_t deliverSheetInfo(QPSSheet& sheet, SSItemSheetInfo& info) {
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
  sheet.itemState = kItemStateWidths;
  normaliseColumnWidths(sheet);
  return kItemDelivered;
}

std::uint32_t deliverColumnWidths(QPSSheet& sheet, SSItemRun& run) {
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
  return kItemDelivered;
}

std::uint32_t deliverRowHeight(SSItemRun& run, const RowHeight& rowHeight) {
  run.first = rowHeight.row;
  run.last = rowHeight.row;
  run.value = rowHeight.height;
  run.kind = SSItemKindRowHeight;
  return kItemDelivered;
}

bool hasText(const char* text) {
  return text != nullptr && text[0] != '\0';
}

// Offers a notebook text once, whether or not the pool has room for the host's copy.
std::uint32_t deliverNotebookText(QPSSheet& sheet, SSItemNotebookText& item, char* text,
                                  std::uint32_t kind) {
  item.text = poolCopyText(sheet.services, text);
  text[0] = '\0';
  item.kind = kind;
  return kItemDelivered;
}

// A record without a rule: false at the end of the worksheet. Out of line, as is all that few
// records need, which keeps what runs once per cell short.
[[gnu::noinline]] bool passOtherRecord(RecordStream& records) {
  if (records.type() == RecordType::kEndOfFile) return false;
  if (records.type() != RecordType::kSheetEnd) return records.skipBody();
  // The body belongs to the worksheet; what it holds, or that it is cut short, changes nothing.
  static_cast<void>(records.readBody());
  return false;
}

// What a record of the worksheet came to.
enum class RecordOutcome : std::uint8_t { kCell, kNoCell, kEnd };

[[gnu::always_inline]] inline RecordOutcome takeRecord(QPSSheet& sheet, SSItemCell& cell) {
  RecordStream& records = sheet.records;
  if (!records.readHeader()) [[unlikely]]
    return RecordOutcome::kEnd;
  const auto* rule = kCellTable.find(records.recordType);
  if (rule == nullptr) [[unlikely]]
    return passOtherRecord(records) ? RecordOutcome::kNoCell : RecordOutcome::kEnd;
  if (!records.readBody()) [[unlikely]]
    return rule->onFailure == OnFailure::kStop ? RecordOutcome::kEnd : RecordOutcome::kNoCell;
  if (rule->handler(sheet, cell) == CellStep::kNoCell) [[unlikely]]
    return RecordOutcome::kNoCell;
  cell.spare3 = 0;
  cell.kind = SSItemKindCell;
  return RecordOutcome::kCell;
}

// The next cell, when the records before it came to `outcome`.
[[gnu::noinline]] std::uint32_t deliverCellAfter(RecordOutcome outcome, QPSSheet& sheet,
                                                 SSItemCell& cell) {
  while (outcome == RecordOutcome::kNoCell)
    outcome = takeRecord(sheet, cell);
  return outcome == RecordOutcome::kCell ? kItemDelivered : kSheetEnded;
}

// What comes before the cells. None when nothing of that is left.
std::optional<std::uint32_t> deliverBeforeCells(QPSSheet& sheet, SSItem& item) {
  if (sheet.itemState == kItemStateEnd) return kSheetEnded;
  if (sheet.itemState == kItemStateStart) return deliverSheetInfo(sheet, item.sheetInfo);
  if (sheet.nextWidthColumn != 0) return deliverColumnWidths(sheet, item.columnWidths);
  if (sheet.itemState == kItemStateWidths) {
    sheet.itemState = kItemStateRecords;
    if (!sheet.records.seekTo(sheet.sheetStart)) return kSheetEnded;
  }
  if (sheet.rowHeightList != nullptr) {
    RowHeight rowHeight;
    if (takeRowHeight(sheet, rowHeight)) return deliverRowHeight(item.rowHeight, rowHeight);
  }
  if (hasText(sheet.record38Text)) {
    return deliverNotebookText(sheet, item.notebookText, sheet.record38Text,
                               SSItemKindRecord38Text);
  }
  if (hasText(sheet.record37Text)) {
    return deliverNotebookText(sheet, item.notebookText, sheet.record37Text,
                               SSItemKindRecord37Text);
  }
  return std::nullopt;
}

[[gnu::noinline]] std::uint32_t deliverFirstItems(QPSSheet& sheet, SSItem& item) {
  if (const auto result = deliverBeforeCells(sheet, item)) return *result;
  sheet.itemState = kItemStateCells;
  return deliverCellAfter(RecordOutcome::kNoCell, sheet, item.cell);
}

// The road of most calls has no loop, and one test of what its record came to.
std::uint32_t processSheet(QPSSheet& sheet, SSItem& item) {
  if (sheet.itemState != kItemStateCells) [[unlikely]]
    return deliverFirstItems(sheet, item);
  const RecordOutcome outcome = takeRecord(sheet, item.cell);
  if (outcome == RecordOutcome::kCell) [[likely]]
    return kItemDelivered;
  return deliverCellAfter(outcome, sheet, item.cell);
}

}  // namespace

}  // namespace qps

uint32_t QPSProcessSheet(QPSSheet* sheet, SSItem* item) {
  const uint32_t result = qps::processSheet(*sheet, *item);
  if (result == qps::kSheetEnded) sheet->itemState = qps::kItemStateEnd;
  return result;
}
