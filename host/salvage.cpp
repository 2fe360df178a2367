// SPDX-License-Identifier: MIT
#include "host/salvage.hpp"

#include <algorithm>
#include <array>
#include <cstring>

namespace qps {
namespace {

constexpr std::size_t kHeaderBytes = 4;
constexpr std::ptrdiff_t kLabelText = 7;  // in its body, behind place, style and alignment
constexpr std::array<unsigned char, kHeaderBytes> kSheetEndRecord = {203, 0, 0, 0};
constexpr std::array<unsigned char, kHeaderBytes> kEndRecord = {1, 0, 0, 0};

enum RecordType : std::uint16_t {
  kVersion = 0,
  kEnd = 1,
  kFirstCell = 12,
  kInteger = 13,
  kNumber = 14,
  kLabel = 15,
  kLastCell = 16,
  kString = 51,
  kDimensions = 150,
  kWorksheet = 202,
  kWorksheetEnd = 203,
};

// The lengths that bodies of a type have. Those of other types have any, up to kHighestType.
constexpr std::uint16_t kHighestType = 2047;
struct Lengths {
  std::uint16_t least = 0, most = 0xFFFF;
};
struct LengthRow {
  RecordType type;
  Lengths lengths;
};
constexpr LengthRow kLengths[] = {
    {kVersion, {2, 64}},      {kEnd, {0, 0}},        {kFirstCell, {6, 16}},    {kInteger, {8, 16}},
    {kNumber, {14, 32}},      {kLabel, {6, 5120}},   {kLastCell, {14, 5120}},  {kString, {6, 5120}},
    {kDimensions, {0, 5120}}, {kWorksheet, {1, 16}}, {kWorksheetEnd, {0, 16}},
};
constexpr auto kLengthOf = [] {
  std::array<Lengths, 256> all{};
  for (const LengthRow& row : kLengths)
    all[row.type] = row.lengths;
  return all;
}();

bool isCell(std::uint16_t type) {
  return (type >= kFirstCell && type <= kLastCell) || type == kString;
}

struct Record : RecordHeader {
  std::uint64_t end() const { return offset + kHeaderBytes + bodyBytes; }
};

class Salvager {
 public:
  explicit Salvager(std::span<const std::byte> records) : records_(records) {}

  Salvage run();

 private:
  std::optional<Record> headerAt(std::uint64_t offset) const;
  std::optional<Record> recordAt(std::uint64_t offset) const;
  bool startsWorksheet(std::uint64_t offset) const;
  bool isTornLabel(const Record& record) const;
  std::optional<std::uint64_t> nextWorksheet(std::uint64_t from) const;
  std::uint64_t endOfGood(std::uint64_t resumed, bool dropsLastCell) const;
  bool mayGoOn() const;
  void keepUpTo(std::uint64_t end);
  void take(const Record& record);
  void resumeAfterDamage();

  std::span<const std::byte> records_;
  Salvage result_;
  std::uint64_t piece_ = 0;   // where the present piece begins
  std::uint64_t anchor_ = 0;  // the last worksheet's start or end, which damage lies behind
  std::uint64_t at_ = 0;      // the next record
  bool inSheet_ = false;
  std::uint64_t steps_ = 0;
};

// None where the bytes end first.
std::optional<Record> Salvager::headerAt(std::uint64_t offset) const {
  if (offset > records_.size() || records_.size() - offset < kHeaderBytes) return std::nullopt;
  const auto u16 = [this](std::size_t at) {
    return static_cast<std::uint16_t>(std::to_integer<unsigned>(records_[at]) |
                                      std::to_integer<unsigned>(records_[at + 1]) << 8);
  };
  const auto at = static_cast<std::size_t>(offset);
  return Record{{u16(at), u16(at + 2), offset}};
}

// None where the records cannot be followed.
std::optional<Record> Salvager::recordAt(std::uint64_t offset) const {
  const auto record = headerAt(offset);
  return record && isPlausible(*record) && record->end() <= records_.size() ? record : std::nullopt;
}

// A worksheet's dimensions stand a few records behind its start.
bool Salvager::startsWorksheet(std::uint64_t offset) const {
  constexpr int kMostRecordsBetween = 32;
  auto record = recordAt(offset);
  if (!record || record->type != kWorksheet) return false;
  for (int i = 0; i < kMostRecordsBetween; ++i) {
    record = recordAt(record->end());
    if (!record || record->type == kWorksheet || record->type == kWorksheetEnd) return false;
    if (record->type == kDimensions) return record->bodyBytes > 0 && record->bodyBytes % 6 == 0;
  }
  return false;
}

// A label's text ends with its record, or a few bytes before; one of two halves mostly long before.
bool Salvager::isTornLabel(const Record& record) const {
  constexpr std::ptrdiff_t kMostBehindText = 4;
  if (record.type != kLabel || record.bodyBytes < kLabelText) return false;
  const auto begin = records_.begin() + static_cast<std::ptrdiff_t>(record.offset + kHeaderBytes);
  const auto end = begin + record.bodyBytes;
  const auto textEnd = std::find(begin + kLabelText, end, std::byte{0});
  return end - textEnd > kMostBehindText + 1;
}

std::optional<std::uint64_t> Salvager::nextWorksheet(std::uint64_t from) const {
  for (auto at = static_cast<std::size_t>(std::min<std::uint64_t>(from, records_.size()));
       at < records_.size(); ++at) {
    const void* const found = std::memchr(&records_[at], kWorksheet, records_.size() - at);
    if (found == nullptr) break;
    at = static_cast<std::size_t>(static_cast<const std::byte*>(found) - records_.data());
    if (startsWorksheet(at)) return at;
  }
  return std::nullopt;
}

// Up to where the records before damage can be followed; it ends at `resumed` at the latest, which
// a misread record may have passed over. The last cell may be of two halves.
std::uint64_t Salvager::endOfGood(std::uint64_t resumed, bool dropsLastCell) const {
  std::uint64_t end = anchor_, before = anchor_;
  for (auto record = recordAt(end); end < at_ && record && record->end() <= resumed;
       record = recordAt(end)) {
    before = isCell(record->type) && dropsLastCell ? end : record->end();
    end = record->end();
  }
  return before;
}

// Hostile records may lead far from each of many worksheets: altogether no further than to the end.
bool Salvager::mayGoOn() const {
  return result_.pieces.size() + 1 < kMostPieces && steps_ < records_.size();
}

void Salvager::keepUpTo(std::uint64_t end) {
  if (end == piece_) return;
  Piece& piece = result_.pieces.emplace_back();
  piece.begin = piece_;
  piece.end = end;
  if (inSheet_) piece.cutSheet = anchor_;
}

// Goes on at the next worksheet, or else ends. Where the records only end too early, there is
// nothing wrong with the last cell.
void Salvager::resumeAfterDamage() {
  const auto stop = headerAt(at_);
  const auto found = mayGoOn() ? nextWorksheet(anchor_ + 1) : std::nullopt;
  const bool isTorn = stop && recordAt(at_) && stop->type != kEnd;
  const bool endsEarly = !found && !isTorn && (!stop || isPlausible(*stop));
  const bool isEndRecord = endsEarly && stop && stop->type == kEnd;
  const std::uint64_t resumed = found.value_or(records_.size());
  const std::uint64_t good = endOfGood(resumed, !endsEarly);
  keepUpTo(good);
  if (good < resumed && !isEndRecord) result_.lost.push_back({good, resumed});
  piece_ = anchor_ = at_ = resumed;
  inSheet_ = false;
}

void Salvager::take(const Record& record) {
  ++steps_;
  if (record.type == kWorksheet) {
    if (inSheet_) {
      keepUpTo(at_);
      piece_ = at_;
    }
    anchor_ = at_;
    inSheet_ = true;
  }
  at_ = record.end();
  if (record.type != kWorksheetEnd) return;
  anchor_ = at_;
  inSheet_ = false;
}

Salvage Salvager::run() {
  while (at_ < records_.size()) {
    const auto record = recordAt(at_);
    const bool ends = record && record->type == kEnd;
    if (ends && !inSheet_) break;
    const bool tooMany = record && record->type == kWorksheet && inSheet_ && !mayGoOn();
    const bool isStray =
        record && !inSheet_ && (isCell(record->type) || record->type == kWorksheetEnd);
    if (!record || ends || tooMany || isStray || isTornLabel(*record))
      resumeAfterDamage();
    else
      take(*record);
  }
  keepUpTo(at_);
  return std::move(result_);
}

}  // namespace

std::size_t Salvage::repairedBytes() const {
  std::size_t bytes = kEndRecord.size();
  for (const Piece& piece : pieces)
    bytes += static_cast<std::size_t>(piece.end - piece.begin) + kSheetEndRecord.size();
  return bytes;
}

void Salvage::repair(std::span<const std::byte> records, std::byte* repaired) const {
  for (const Piece& piece : pieces) {
    const auto size = static_cast<std::size_t>(piece.end - piece.begin);
    std::memcpy(repaired, &records[static_cast<std::size_t>(piece.begin)], size);
    std::memcpy(repaired + size, kSheetEndRecord.data(), kSheetEndRecord.size());
    repaired += size + kSheetEndRecord.size();
  }
  std::memcpy(repaired, kEndRecord.data(), kEndRecord.size());
}

std::uint32_t Salvage::repairedOffset(std::uint32_t offset) const {
  std::uint64_t begin = 0;
  for (const Piece& piece : pieces) {
    if (offset >= piece.begin && offset < piece.end)
      return static_cast<std::uint32_t>(begin + offset - piece.begin);
    begin += piece.end - piece.begin + kSheetEndRecord.size();
  }
  return 0;
}

std::uint32_t Salvage::originalOffset(std::uint32_t repaired) const {
  std::uint64_t begin = 0;
  for (const Piece& piece : pieces) {
    const std::uint64_t size = piece.end - piece.begin;
    if (repaired < begin + size) return static_cast<std::uint32_t>(piece.begin + repaired - begin);
    begin += size + kSheetEndRecord.size();
  }
  return 0;
}

bool Salvage::isCut(std::uint32_t sheetOffset) const {
  return std::any_of(pieces.begin(), pieces.end(),
                     [=](const Piece& piece) { return piece.cutSheet == sheetOffset; });
}

std::string Salvage::lostBytes() const {
  constexpr std::size_t kMostNamed = 10;
  if (lost.empty()) return "";
  std::string text = "bytes ";
  for (std::size_t i = 0; i < std::min(lost.size(), kMostNamed); ++i)
    text += (i == 0 ? "" : ", ") + std::to_string(lost[i].begin) + " to " +
            std::to_string(lost[i].end - 1);
  if (lost.size() > kMostNamed)
    text += " and " + std::to_string(lost.size() - kMostNamed) + " more";
  return text + " are lost";
}

bool isPlausible(const RecordHeader& record) {
  if (record.type >= kLengthOf.size()) return record.type <= kHighestType;
  if (record.type == kVersion && record.offset != 0) return false;
  const Lengths& known = kLengthOf[record.type];
  return record.bodyBytes >= known.least && record.bodyBytes <= known.most;
}

bool isWholeNotebook(SSStream& records) {
  RecordWalk walk(records, 0);
  bool inSheet = false;
  while (true) {
    const RecordWalk::Step step = walk.next();
    const RecordHeader& record = walk.record();
    if (step == RecordWalk::Step::kEnd) return isPlausible(record) && !inSheet;
    if (step != RecordWalk::Step::kRecord || !isPlausible(record)) return false;
    if (record.type != kWorksheet && record.type != kWorksheetEnd) continue;
    if ((record.type == kWorksheet) == inSheet) return false;  // the other one is missing
    inSheet = !inSheet;
  }
}

Salvage salvage(std::span<const std::byte> records) {
  return Salvager(records).run();
}

}  // namespace qps
