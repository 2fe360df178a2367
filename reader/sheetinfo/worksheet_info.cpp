// SPDX-License-Identifier: MIT
//
// qpsWorkSheetInfo: lists a notebook's worksheets in one pass over the file's record headers. The
// bodies that it reads are those of
//
//   202  a worksheet begins: 0 its number, which gives its default name (A to Z, AA to IV)
//   204  its name: a zero-terminated text
//
// and a worksheet is listed when its record 150 comes.
#include <qpsreader/worksheet_list.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <string_view>
#include <utility>

#include <qpsreader/qps_reader.h>
#include "reader/frame/container.h"
#include "reader/frame/pool.h"
#include "reader/frame/record_stream.h"

namespace qps {

namespace {

constexpr std::uint32_t kTypeFlags = 0x4000;
constexpr std::uint32_t kSpareWord = 0xFFFFFFFF;
constexpr unsigned kLetters = 26;

// A name in a body of this length or more shows as a mark and its last bytes.
constexpr std::size_t kLongNameBytes = SSWorkSheetNameBytes;
constexpr std::size_t kLongNameTailBytes = 58;
constexpr std::string_view kLongNameMark = " ... ";

class DisplayName {
 public:
  std::string_view view() const { return {characters_.data(), size_}; }

  void append(std::string_view text) {
    const std::size_t count = std::min(text.size(), characters_.size() - size_);
    std::copy_n(text.begin(), count, characters_.begin() + static_cast<std::ptrdiff_t>(size_));
    size_ += count;
  }

 private:
  std::array<char, SSWorkSheetNameBytes - 1> characters_{};
  std::size_t size_ = 0;
};

// 0 is A, 25 is Z, 26 is AA, 255 is IV.
DisplayName defaultName(unsigned number) {
  DisplayName name;
  const auto appendLetter = [&](unsigned letter) {
    const char character = static_cast<char>('A' + letter);
    name.append({&character, 1});
  };
  if (number >= kLetters) appendLetter(number / kLetters - 1);
  appendLetter(number % kLetters);
  return name;
}

DisplayName nameFromBody(const BodyView& body) {
  DisplayName name;
  if (body.size() < kLongNameBytes) {
    name.append(body.textAt(0));
  } else {
    name.append(kLongNameMark);
    name.append(body.textAt(body.size() - kLongNameTailBytes));
  }
  return name;
}

// The host's stream while it is open, or the notebook's stream in a compound document: closed and
// given back when the scan is over, however it ends.
class OpenFile {
 public:
  OpenFile(SSStream* stream, SSHostServices* services) : services_(services) {
    records_.stream = stream;
  }
  OpenFile(const OpenFile&) = delete;
  OpenFile& operator=(const OpenFile&) = delete;
  ~OpenFile() {
    if (SSStream* stream = records_.stream; stream != nullptr && container_.containerKind == 0) {
      stream->close(stream);
    }
    closeContainer(container_, services_);
  }

  RecordStream& records() { return records_; }

  // Reads the header of the first record, which must be a file header.
  [[nodiscard]] bool readFirstHeader() {
    SSStream* file = records_.stream;
    if (file->open(file) == 0) return false;
    if (file->read(file, records_.recordBuffer, kRecordHeaderBytes) != kRecordHeaderBytes) {
      return false;
    }
    if (isCompoundDocument(records_.recordBuffer)) {
      records_.stream = openContainer(container_, services_, file);
      if (records_.stream == nullptr) return false;
      std::memset(records_.recordBuffer, 0, kRecordHeaderBytes);
      records_.stream->read(records_.stream, records_.recordBuffer, kRecordHeaderBytes);
    }
    records_.decodeHeader();
    return records_.type() == RecordType::kFileHeader;
  }

 private:
  SSHostServices* services_;
  Container container_{};
  RecordStream records_{};
};

// The growing table of entries. Entry by entry its block is exactly as long as the table while the
// table has no more entries than a notebook can number; from there on it grows by doubling, so that
// a file of millions of worksheets is listed in linear time.
class EntryTable {
 public:
  explicit EntryTable(SSHostServices* services) : services_(services) {}
  EntryTable(const EntryTable&) = delete;
  EntryTable& operator=(const EntryTable&) = delete;
  ~EntryTable() { poolFree(services_, entries_); }

  // A worksheet that is counted without an entry leaves one of zero bytes when another follows it.
  void count() { ++counted_; }

  // Counts a worksheet and describes it. False when the pool has no room.
  [[nodiscard]] bool add(const DisplayName& name, std::uint32_t startOffset) {
    count();
    if (!reserve()) {
      isExhausted_ = true;
      return false;
    }
    const auto counted = static_cast<std::uint32_t>(counted_);
    std::memset(entries_ + described_, 0, (counted - described_) * sizeof(SSWorkSheetEntry));
    SSWorkSheetEntry& entry = entries_[counted - 1];
    const std::string_view text = name.view();
    std::copy(text.begin(), text.end(), entry.name);
    entry.typeFlags = kTypeFlags;
    entry.startOffset = startOffset;
    entry.spareWord = kSpareWord;
    described_ = counted;
    return true;
  }

  bool empty() const { return described_ == 0; }
  bool isExhausted() const { return isExhausted_; }  // the pool had no room for an entry

  // The table, which is the caller's from here on.
  SSWorkSheetList release() { return {described_, std::exchange(entries_, nullptr)}; }

 private:
  static constexpr std::uint64_t kNumberedSheets = 256;
  static constexpr std::uint64_t kMostEntries =
      std::min<std::uint64_t>(UINT32_MAX, SIZE_MAX / sizeof(SSWorkSheetEntry));

  [[nodiscard]] bool reserve() {
    if (counted_ <= capacity_) return true;
    if (counted_ > kMostEntries) return false;
    const std::uint64_t doubled = std::min(2 * capacity_, kMostEntries);
    const std::uint64_t capacity =
        counted_ <= kNumberedSheets ? counted_ : std::max(counted_, doubled);
    const auto entries = static_cast<std::size_t>(capacity);
    void* table = entries_ == nullptr
                      ? poolCalloc(services_, entries, sizeof(SSWorkSheetEntry))
                      : poolRealloc(services_, entries_, entries * sizeof(SSWorkSheetEntry));
    if (table == nullptr) return false;
    entries_ = static_cast<SSWorkSheetEntry*>(table);
    capacity_ = capacity;
    return true;
  }

  SSHostServices* services_;
  SSWorkSheetEntry* entries_ = nullptr;
  std::uint64_t counted_ = 0;    // worksheets, without an entry or with one
  std::uint32_t described_ = 0;  // entries, those of zero bytes among them
  std::uint64_t capacity_ = 0;
  bool isExhausted_ = false;
};

// Passes over the current record and reads the next header. False at the end of the file, or where
// the file ends early.
[[nodiscard]] bool nextRecord(RecordStream& records) {
  return records.skipBody() && records.readHeader() && records.type() != RecordType::kEndOfFile;
}

// Reads the body; the current record then has nothing left to pass over.
[[nodiscard]] bool takeBody(RecordStream& records) {
  if (!records.readBody()) return false;
  records.recordLength = 0;
  return true;
}

enum class SheetScan { kNext, kStop };

// One worksheet, whose record 202 is current: up to the record that lists it or ends it.
SheetScan scanWorksheet(RecordStream& records, EntryTable& table) {
  SSStream* stream = records.stream;
  const auto startOffset =
      static_cast<std::uint32_t>(stream->tell(stream) - std::ptrdiff_t{kRecordHeaderBytes});
  if (!takeBody(records)) return SheetScan::kStop;
  DisplayName name = defaultName(records.body().u8At(0));

  while (nextRecord(records)) {
    switch (records.type()) {
      case RecordType::kSheetStart:
        // Another worksheet begins: back to its header, which the search then meets.
        if (stream->seek(stream, -std::ptrdiff_t{kRecordHeaderBytes}, SSSeekFromCurrent) == 0) {
          return SheetScan::kStop;
        }
        records.recordLength = 0;
        return SheetScan::kNext;
      case RecordType::kSheetEnd:
        return SheetScan::kNext;
      case RecordType::kSheetName:
        if (!takeBody(records)) return SheetScan::kStop;
        name = nameFromBody(records.body());
        break;
      case RecordType::kDimensionTable:
        if (records.recordLength == 0) {
          table.count();
          return SheetScan::kNext;
        }
        return table.add(name, startOffset) ? SheetScan::kNext : SheetScan::kStop;
      default:
        break;
    }
  }
  return SheetScan::kStop;
}

void scanFile(RecordStream& records, EntryTable& table) {
  while (nextRecord(records)) {
    if (records.type() != RecordType::kSheetStart) continue;
    if (scanWorksheet(records, table) == SheetScan::kStop) return;
  }
}

}  // namespace

}  // namespace qps

int32_t qpsWorkSheetInfo(QPSReader* reader, SSWorkSheetList* result) {
  using namespace qps;
  if (reader->stream == nullptr) return 0;
  OpenFile file(reader->stream, reader->services);
  if (!file.readFirstHeader()) return 0;
  EntryTable table(reader->services);
  scanFile(file.records(), table);
  if (table.isExhausted()) *result = {0, nullptr};
  if (table.isExhausted() || table.empty()) return 0;

  poolFree(reader->services, reader->sheetTable);
  *result = table.release();
  reader->sheetCount = result->count;
  reader->sheetTable = result->entries;
  return 1;
}
