// SPDX-License-Identifier: MIT
#include "python/core/cell_table.h"

#include <algorithm>
#include <chrono>
#include <cstring>
#include <ctime>
#include <map>
#include <numeric>
#include <utility>

namespace qps::python {
namespace {

using std::chrono::days;
using std::chrono::microseconds;

// A worksheet has 65,536 rows. A file may give the height of each more than once: a record of ten
// bytes names them all.
constexpr std::uint32_t kMostRowHeights = 2 << 16;

std::uint32_t placeOf(std::uint32_t row, std::uint32_t column) {
  return (row - 1) << 8 | (column - 1);
}

std::chrono::nanoseconds threadTime() {
  std::timespec now{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
  return std::chrono::seconds(now.tv_sec) + std::chrono::nanoseconds(now.tv_nsec);
}

// Which kind of value a cell holds, and its time in microseconds.
std::pair<Kind, std::int64_t> kindOf(const CellValue& value, const NumberFormat& format) {
  switch (value.kind()) {
    case CellValue::Kind::kBlank:
      return {Kind::kBlank, 0};
    case CellValue::Kind::kText:
      return {Kind::kText, 0};
    case CellValue::Kind::kError:
      return {Kind::kError, 0};
    case CellValue::Kind::kNumber:
      break;
  }
  const auto moment = value.dateTime();
  if (!moment) return {Kind::kNumber, 0};
  const bool showsBoth = format.showsDate && format.showsTime;
  if (!format.showsDate) return {Kind::kTime, microseconds(moment->timeOfDay % days(1)).count()};
  const std::chrono::local_seconds time =
      showsBoth ? moment->time() : std::chrono::local_days(moment->date);
  const std::chrono::year_month_day day(std::chrono::floor<days>(time));
  // The years of Python's datetime.
  if (day.year() < std::chrono::year(1) || day.year() > std::chrono::year(9999))
    return {Kind::kNumber, 0};
  return {showsBoth ? Kind::kDateTime : Kind::kDate, microseconds(time.time_since_epoch()).count()};
}

// Everything that tells one look from another, as bytes.
struct LookKey {
  std::array<std::byte, sizeof(SSItemCell) - offsetof(SSItemCell, alignment)> item;
  std::array<const char*, 2> texts;  // the reader keeps each in one place while the sheet is open
  std::array<std::uint8_t, 4> format;
  std::uint32_t unused = 0;

  std::string_view bytes() const { return {reinterpret_cast<const char*>(this), sizeof *this}; }
};
static_assert(std::has_unique_object_representations_v<LookKey>);

// In order: a file chooses its looks, and could choose such as meet in one place of a hash table.
bool operator<(const LookKey& a, const LookKey& b) {
  return a.bytes() < b.bytes();
}

LookKey keyOf(const SSItemCell& cell, const NumberFormat& format) {
  LookKey key{};
  std::memcpy(key.item.data(), &cell.alignment, key.item.size());
  key.texts = {format.text ? format.text->data() : nullptr, format.styleName.data()};
  key.format = {format.code, format.decimals, format.showsDate, format.showsTime};
  return key;
}

}  // namespace

void Bits::append(bool bit) {
  if (count % 8 == 0) bytes.push_back(0);
  bytes.back() = static_cast<std::uint8_t>(bytes.back() | (bit ? 1 : 0) << (count % 8));
  ++count;
}

void TextColumn::append(std::optional<std::string_view> text, const Decoder& decoder) {
  if (text) decoder.append(*text, utf8);
  ends.push_back(static_cast<std::int64_t>(utf8.size()));
  present.append(text.has_value());
}

std::optional<std::string_view> TextColumn::operator[](std::size_t at) const {
  if (!present[at]) return std::nullopt;
  const auto begin = static_cast<std::size_t>(ends[at]);
  return std::string_view(utf8).substr(begin, static_cast<std::size_t>(ends[at + 1]) - begin);
}

CellTable::CellTable(std::shared_ptr<Budget> budget) : budget_(std::move(budget)) {}

CellTable::~CellTable() {
  budget_->held -= charged_;
}

std::optional<std::size_t> CellTable::find(std::uint32_t atRow, std::uint32_t atColumn) const {
  if (order_.size() != size()) sortPlaces();
  const auto after = std::upper_bound(
      order_.begin(), order_.end(), placeOf(atRow, atColumn),
      [&](std::uint32_t place, std::uint32_t at) { return place < placeOf(row[at], column[at]); });
  if (after == order_.begin()) return std::nullopt;
  const std::uint32_t at = *std::prev(after);
  if (row[at] != atRow || column[at] != atColumn) return std::nullopt;
  return at;
}

void CellTable::sortPlaces() const {
  order_.resize(size());
  std::iota(order_.begin(), order_.end(), 0u);
  std::stable_sort(order_.begin(), order_.end(), [&](std::uint32_t a, std::uint32_t b) {
    return placeOf(row[a], column[a]) < placeOf(row[b], column[b]);
  });
}

// Takes the items of a worksheet one by one.
class TableReader {
 public:
  TableReader(CellTable& table, const Notebook& notebook, const Decoder& decoder, bool isTimed)
      : table_(table), notebook_(notebook), decoder_(decoder), isTimed_(isTimed) {}

  void add(const Item& item);
  void settle();  // what was read counts towards the budget

 private:
  void settleMemory();
  void settleTime();
  void addCell(const Item& item, const CellView& cell);
  void addHeight(const Run& run);
  std::uint32_t lookOf(const SSItemCell& cell, const NumberFormat& format);
  void charge(std::size_t bytes);

  CellTable& table_;
  const Notebook& notebook_;
  const Decoder& decoder_;
  bool isTimed_;
  std::chrono::nanoseconds settledTime_ = threadTime();
  std::uint32_t items_ = 0;
  std::uint32_t rowHeights_ = 0;
  std::map<LookKey, std::uint32_t> looks_;
  LookKey lastKey_{};
  std::uint32_t lastLook_ = 0;
  std::size_t uncharged_ = 0;  // in bytes
};

void TableReader::add(const Item& item) {
  constexpr std::uint32_t kItemsBetweenLooksAtTheClock = 0x4000;
  if (++items_ % kItemsBetweenLooksAtTheClock == 0) settleTime();
  if (const auto cell = item.cell()) return addCell(item, *cell);
  if (const auto info = item.sheetInfo()) {
    table_.info = *info;
  } else if (const auto height = item.rowHeight()) {
    addHeight(*height);
  } else if (const auto width = item.columnWidths()) {
    charge(sizeof(Run));
    table_.widths.push_back(*width);
  }
}

// Those of one record come one by one, the last row first.
void TableReader::addHeight(const Run& run) {
  if (++rowHeights_ > kMostRowHeights)
    throw ReadFailure{{Reason::kMemoryLimit, "lists more row heights than a worksheet has"}};
  auto& heights = table_.heights;
  Run* const before = heights.empty() ? nullptr : &heights.back();
  if (before != nullptr && before->size == run.size && run.last + 1 == before->first) {
    before->first = run.first;
  } else if (before != nullptr && before->size == run.size && before->last + 1 == run.first) {
    before->last = run.last;
  } else {
    charge(sizeof(Run));
    heights.push_back(run);
  }
}

void TableReader::addCell(const Item& item, const CellView& cell) {
  const CellValue value = cell.value();
  const NumberFormat format = value.format();
  const auto [kind, when] = kindOf(value, format);
  const std::size_t textsBefore = table_.string.utf8.size() + table_.text.utf8.size();

  table_.row.push_back(cell.row());
  table_.column.push_back(static_cast<std::uint16_t>(cell.column()));
  table_.kind.push_back(static_cast<std::uint8_t>(kind));
  table_.number.push_back(value.number().value_or(0));
  table_.when.push_back(when);
  table_.look.push_back(lookOf(item.raw().cell, format));
  table_.isNumber.append(value.number().has_value());
  table_.isDay.append(kind == Kind::kDate || kind == Kind::kDateTime);
  table_.isTime.append(kind == Kind::kTime);
  table_.isFormula.append(value.isFormula());
  table_.string.append(value.text(), decoder_);
  table_.text.append(cell.hasText() ? std::optional(cell.text()) : std::nullopt, decoder_);
  if (kind != Kind::kBlank) {
    table_.lastRow = std::max(table_.lastRow, cell.row());
    table_.lastColumn = std::max(table_.lastColumn, cell.column());
  }
  constexpr std::size_t kCellBytes = 4 + 2 + 1 + 8 + 8 + 4 + 1 + 8 + 8 + 4;
  charge(kCellBytes + table_.string.utf8.size() + table_.text.utf8.size() - textsBefore);
}

std::uint32_t TableReader::lookOf(const SSItemCell& cell, const NumberFormat& format) {
  const LookKey key = keyOf(cell, format);
  if (!table_.looks.empty() && key.bytes() == lastKey_.bytes()) return lastLook_;
  const auto [found, isNew] =
      looks_.try_emplace(key, static_cast<std::uint32_t>(table_.looks.size()));
  if (isNew) {
    Look& look = table_.looks.emplace_back();
    look.item = cell;
    look.item.text = nullptr;
    look.format = format;
    look.format.text.reset();
    look.format.styleName = {};
    if (format.text) look.formatText = decoder_.decode(*format.text);
    look.styleName = decoder_.decode(format.styleName);
    charge(2 * sizeof(Look) + look.styleName.size() +
           (look.formatText ? look.formatText->size() : 0));
  }
  lastKey_ = key;
  lastLook_ = found->second;
  return lastLook_;
}

// Twice, because a vector that grows may hold as much again.
void TableReader::charge(std::size_t bytes) {
  constexpr std::size_t kStep = std::size_t{1} << 16;
  uncharged_ += 2 * bytes;
  if (uncharged_ >= kStep) settleMemory();
}

void TableReader::settle() {
  settleMemory();
  settleTime();
}

void TableReader::settleTime() {
  if (!isTimed_) return;
  Budget& budget = *table_.budget_;
  const auto now = threadTime();
  budget.timeSpent += now - std::exchange(settledTime_, now);
  if (budget.timeLimit.count() != 0 && budget.timeSpent > budget.timeLimit)
    throw ReadFailure{{Reason::kMemoryLimit, "the time limit was reached"}};
}

void TableReader::settleMemory() {
  Budget& budget = *table_.budget_;
  table_.charged_ += uncharged_;
  budget.held += std::exchange(uncharged_, 0);
  if (budget.limit != 0 && budget.held + notebook_.memoryInUse() > budget.limit)
    throw ReadFailure{memoryLimitError()};
}

std::shared_ptr<const CellTable> readTable(const Notebook& notebook, const Sheet& sheet,
                                           const Decoder& decoder, std::shared_ptr<Budget> budget,
                                           bool isTimed) {
  auto table = std::make_shared<CellTable>(std::move(budget));
  auto items = notebook.items(sheet);
  TableReader reader(*table, notebook, decoder, isTimed);
  for (const Item& item : items)
    reader.add(item);
  if (auto error = items.error()) {
    if (error->reason != Reason::kDamaged) throw ReadFailure{std::move(*error)};
    table->damage = std::move(error->message);
  }
  reader.settle();
  return table;
}

}  // namespace qps::python
