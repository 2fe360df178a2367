// SPDX-License-Identifier: MIT
//
// QPSInitSheet: opens one worksheet. Two passes over the records: the notebook's definitions from
// the beginning of the file, then the worksheet's layout from its start to its first cell.
#include <algorithm>
#include <iterator>

#include "reader/frame/pool.h"
#include "reader/frame/qps_sheet.h"
#include "reader/frame/record_table.h"
#include "reader/scan/definition_records.h"
#include "reader/scan/layout_records.h"
#include "reader/styles/apply_style.h"
#include "reader/styles/style_records.h"

namespace qps {

namespace {

using ScanHandler = Step (*)(QPSSheet&);
using ScanRule = RecordRule<ScanHandler>;

constexpr ScanRule kDefinitionRules[] = {
    {RecordType::kFileHeader, readFileHeader},   {RecordType::kDimensions, readDimensions},
    {RecordType::kText37, readText37},           {RecordType::kText38, readText38},
    {RecordType::kRefusal, readRefusal},         {RecordType::kSheetStart, endOfPass},
    {RecordType::kStyle, qpsReadStyle},          {RecordType::kFont, readFont},
    {RecordType::kNamedStyle, readNamedStyle},   {RecordType::kUserFormat, readUserFormat},
    {RecordType::kValueTable, readUnusedBody},   {RecordType::kFlag257, readFlag257},
    {RecordType::kFlag258, readFlag258},         {RecordType::kSettingsOn, readSettingsOn},
    {RecordType::kSettingsOff, passSettingsOff}, {RecordType::kDefinitionsEnd, endOfPass},
};

// A row height that cannot be kept loses only that row; everything else that fails, the worksheet.
constexpr ScanRule kLayoutRules[] = {
    {RecordType::kBlankCell, endOfPass},
    {RecordType::kIntegerCell, endOfPass},
    {RecordType::kNumberCell, endOfPass},
    {RecordType::kLabelCell, endOfPass},
    {RecordType::kFormulaCell, endOfPass},
    {RecordType::kStringCell, endOfPass},
    {RecordType::kDimensionTable, readDimensionTable},
    {RecordType::kSheetEnd, endOfPass},
    {RecordType::kDefaultRowHeight, readDefaultRowHeight},
    {RecordType::kDefaultColumnWidth, readDefaultColumnWidth},
    {RecordType::kRowHeight, readRowHeight, OnFailure::kIgnore},
    {RecordType::kColumnWidth, readColumnWidth},
    {RecordType::kHiddenRows, readHiddenRows, OnFailure::kIgnore},
    {RecordType::kHiddenColumns, readHiddenColumns},
    {RecordType::kLayout224, readUnusedBody},
    {RecordType::kColumnStyle, qpsReadColumnStyle},
    {RecordType::kRowHeightRange, readRowHeightRange, OnFailure::kIgnore},
};

constexpr RecordTable<kDefinitionRules> kDefinitionTable;
constexpr RecordTable<kLayoutRules> kLayoutTable;

// The bytes that are looked at to tell a compound document; fewer is no notebook.
constexpr std::size_t kLookAheadBytes = 8;

constexpr std::uint16_t kDefaultCount = 254;
constexpr std::uint16_t kDefaultColumnWidth = 964;
constexpr std::uint16_t kDefaultRowHeight = 244;
constexpr std::uint16_t kDefaultFormatVersion = 0x1002;

// Owns a sheet while it is being opened: an early return closes and releases everything.
class OpeningSheet {
 public:
  explicit OpeningSheet(QPSSheet* sheet) : sheet_(sheet) {}
  OpeningSheet(const OpeningSheet&) = delete;
  OpeningSheet& operator=(const OpeningSheet&) = delete;
  ~OpeningSheet() {
    if (sheet_ != nullptr) closeSheet(sheet_);
  }

  QPSSheet& operator*() const { return *sheet_; }

  QPSSheet* release() {
    QPSSheet* sheet = sheet_;
    sheet_ = nullptr;
    return sheet;
  }

 private:
  QPSSheet* sheet_;
};

void setDefaults(QPSSheet& sheet) {
  sheet.rowCount = kDefaultCount;
  sheet.columnCount = kDefaultCount;
  sheet.defaultColumnWidth = kDefaultColumnWidth;
  sheet.defaultRowHeight = kDefaultRowHeight;
  sheet.formatVersion = kDefaultFormatVersion;
  std::fill(std::begin(sheet.columnWidths), std::end(sheet.columnWidths), kNotSet);
  std::fill(std::begin(sheet.columnColours), std::end(sheet.columnColours), kNoColour);
  sheet.unstyled = kUnstyled;
}

// Looks at the beginning of the open host stream and, when it is a compound document, goes over to
// the notebook's stream in it.
[[nodiscard]] bool selectStream(QPSSheet& sheet) {
  RecordStream& records = sheet.records;
  SSStream* file = records.stream;
  if (file->read(file, records.recordBuffer, kLookAheadBytes) != kLookAheadBytes) return false;
  file->seek(file, -static_cast<std::ptrdiff_t>(kLookAheadBytes), SSSeekFromCurrent);
  if (!isCompoundDocument(records.recordBuffer)) return true;

  records.stream = openContainer(sheet.container, sheet.services, file);
  return records.stream != nullptr;
}

// One pass over the records, until a handler ends it. False when the stream ends first, or a record
// fails that the pass cannot do without.
template <typename Table>
[[nodiscard]] bool runPass(QPSSheet& sheet, const Table& table) {
  RecordStream& records = sheet.records;
  for (;;) {
    if (!records.readHeader() || records.type() == RecordType::kEndOfFile) return false;
    const ScanRule* rule = table.find(records.recordType);
    if (rule == nullptr) {
      if (!records.skipBody()) return false;
      continue;
    }
    switch (rule->handler(sheet)) {
      case Step::kGoOn:
        break;
      case Step::kEnd:
        return true;
      case Step::kFail:
        if (rule->onFailure == OnFailure::kStop) return false;
        break;
    }
  }
}

}  // namespace

}  // namespace qps

QPSSheet* QPSInitSheet(QPSReader* reader, void* itemAllocContext, uint32_t sheetStart,
                       SSItemAlloc itemAlloc, void* hostData) {
  using namespace qps;
  if (reader == nullptr || reader->services == nullptr || reader->stream == nullptr) {
    return nullptr;
  }
  auto* block = poolNew<QPSSheet>(reader->services);
  if (block == nullptr) return nullptr;
  block->services = reader->services;
  OpeningSheet opening(block);

  QPSSheet& sheet = *opening;
  sheet.hostData = hostData;
  sheet.reader = reader;
  sheet.itemAllocContext = itemAllocContext;
  sheet.itemAlloc = itemAlloc;
  sheet.sheetStart = sheetStart;
  sheet.records.stream = reader->stream;
  if (reader->stream->open(reader->stream) == 0) return nullptr;
  if (!probeByteOrder(sheet.records.swapBytes)) return nullptr;
  setDefaults(sheet);
  if (!selectStream(sheet)) return nullptr;
  if (!runPass(sheet, kDefinitionTable)) return nullptr;
  if (!sheet.records.seekTo(sheetStart)) return nullptr;
  if (!runPass(sheet, kLayoutTable)) return nullptr;
  return opening.release();
}
