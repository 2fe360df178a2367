// SPDX-License-Identifier: MIT
//
// Reads a notebook into a Document: each worksheet that was asked for, item by item.
#include "tool/document.h"

#include <algorithm>
#include <charconv>
#include <cstring>

#include "tool/cell_order.h"
#include "tool/cell_value.h"
#include "tool/hidden_places.h"
#include "tool/inputs.h"
#include "tool/limits.h"
#include "tool/progress.h"
#include "tool/settings.h"
#include "tool/text_forms.h"
#include "tool/time_limit.h"

namespace qps {
namespace {

// What --max-memory is spent on besides the notebook's own pool, which counts for itself.
class Budget {
 public:
  Budget(const Notebook& notebook, std::uint64_t limit) : notebook_(notebook), limit_(limit) {}

  void charge(std::uint64_t bytes) {
    used_ += bytes;
    if (limit_ != 0 && used_ + notebook_.memoryInUse() > limit_)
      throw Failure{Status::kLimit, "the memory limit was reached"};
  }
  void refund(std::uint64_t bytes) { used_ -= bytes; }

 private:
  const Notebook& notebook_;
  std::uint64_t limit_;
  std::uint64_t used_ = 0;
};

// Makes room in a std::vector or a CellList, and pays for it before. Out of line, which keeps what
// runs for every cell short.
template <class List>
[[gnu::noinline]] void grow(List& values, Budget& budget) {
  // Two less than a power of two: with malloc's own bytes a large block is then whole large pages.
  const std::size_t grown = std::max<std::size_t>(62, values.capacity() * 2 + 2);
  budget.charge((grown - values.capacity()) * sizeof *values.begin());
  values.reserve(grown);
}

template <class List, class T>
void append(List& values, const T& value, Budget& budget) {
  if (values.size() == values.capacity()) grow(values, budget);
  values.push_back(value);
}

// The rows in order and each once: the reader delivers the height that holds first.
void keepEachRowOnce(std::vector<Run>& heights) {
  std::stable_sort(heights.begin(), heights.end(),
                   [](const Run& a, const Run& b) { return a.first < b.first; });
  const auto same = [](const Run& a, const Run& b) { return a.first == b.first; };
  heights.erase(std::unique(heights.begin(), heights.end(), same), heights.end());
}

class Loader {
 public:
  Loader(Document& document, const OpenedFile& opened, const Command& command,
         const Settings& settings, const TimeLimit& time, Progress& progress)
      : document_(document),
        need_(command.need),
        contents_(command.contents),
        values_(settings.values),
        hidden_(settings.hidden),
        salvage_(settings.salvage),
        trims_(settings.trim),
        time_(time),
        progress_(progress),
        budget_(document.notebook, opened.maxMemory),
        rowHeightsLeft_(mostRowHeights(opened.size)) {}

  void readSheet(const Sheet& sheet, std::string name);
  void meetDamage(const Error& error);

 private:
  template <bool kAsksValue>
  void takeAll(ItemRange& items, SheetData& sheet);
  template <bool kAsksValue>
  void take(const Item& item, SheetData& sheet);
  template <bool kAsksValue>
  void takeCell(const Item& item, SheetData& sheet);
  void takeContents(const CellValue& value, SheetData& sheet);
  const char* valueText(const CellValue& value);
  const char* keptText(std::string_view text);
  void takeRowHeight(const Run& height, SheetData& sheet);
  void takeNotebookText(std::uint32_t record, std::string_view text);
  std::uint32_t styleOf(const SSItemCell& item);
  void finish(SheetData& sheet);

  Document& document_;
  Need need_;
  bool contents_;
  bool values_;
  Hidden hidden_;
  bool salvage_;
  bool inRows_ = true;  // the cells of this worksheet came row by row, each place once
  bool trims_;
  const TimeLimit& time_;
  Progress& progress_;
  Budget budget_;
  std::uint64_t rowHeightsLeft_;         // of the notebook
  std::uint64_t rowHeightsOfSheet_ = 0;  // so far
  std::uint32_t items_ = 0;
  std::string value_;
};

void Loader::readSheet(const Sheet& sheet, std::string name) {
  budget_.charge(sizeof(SheetData));
  SheetData& data = document_.sheets.emplace_back();
  data.number = sheet.index + 1;
  data.name = std::move(name);
  data.startOffset = sheet.startOffset;
  inRows_ = true;
  rowHeightsOfSheet_ = 0;

  const Notebook& notebook = document_.notebook;
  const bool keepsShown = need_ != Need::kCounts && !values_;
  ItemRange items = keepsShown ? notebook.items(sheet, document_.texts) : notebook.items(sheet);
  if (values_ || contents_)
    takeAll<true>(items, data);
  else
    takeAll<false>(items, data);
  if (const auto error = items.error()) meetDamage(*error);
  finish(data);
  time_.check();
}

void Loader::meetDamage(const Error& error) {
  Failure failure = failureOf(error);
  if (!salvage_ || failure.status != Status::kDamaged) throw failure;
  if (!document_.damage) document_.damage = std::move(failure);
}

// Twice, so that values cost those nothing who do not ask for them.
template <bool kAsksValue>
void Loader::takeAll(ItemRange& items, SheetData& sheet) {
  for (const Item& item : items)
    take<kAsksValue>(item, sheet);
}

template <bool kAsksValue>
void Loader::take(const Item& item, SheetData& sheet) {
  constexpr std::uint32_t kItemsBetweenChecks = 0x4000;
  if (++items_ % kItemsBetweenChecks == 0) time_.check();
  switch (item.kind()) {
    case Item::Kind::kCell:
      takeCell<kAsksValue>(item, sheet);
      break;
    case Item::Kind::kSheetInfo:
      sheet.info = *item.sheetInfo();
      sheet.infoRecord = item.raw().sheetInfo;
      break;
    case Item::Kind::kColumnWidths:
      append(sheet.columnWidths, *item.columnWidths(), budget_);
      break;
    case Item::Kind::kRowHeight:
      takeRowHeight(*item.rowHeight(), sheet);
      break;
    case Item::Kind::kRecord38Text:
      takeNotebookText(38, item.notebookText().value_or(""));
      break;
    case Item::Kind::kRecord37Text:
      takeNotebookText(37, item.notebookText().value_or(""));
      break;
  }
}

void Loader::takeRowHeight(const Run& height, SheetData& sheet) {
  if (++rowHeightsOfSheet_ > kMostRowHeightsOfSheet || rowHeightsLeft_ == 0)
    throw Failure{Status::kLimit, "lists more row heights than a notebook has"};
  --rowHeightsLeft_;
  if (need_ != Need::kTexts || hidden_ != Hidden::kKeep) append(sheet.rowHeights, height, budget_);
}

template <bool kAsksValue>
void Loader::takeCell(const Item& whole, SheetData& sheet) {
  progress_.cellRead();
  const SSItemCell& item = whole.raw().cell;
  const char* text = item.text;
  if constexpr (kAsksValue)
    if (values_) text = valueText(whole.cell()->value());
  const bool shows = text != nullptr && *text != '\0' && !(trims_ && trimmed(text).empty());
  if (shows) {
    sheet.shown.include(item.column, item.row);
    ++sheet.shownCells;
  } else {
    ++sheet.blankCells;
  }
  if (need_ == Need::kTexts && !shows) return;

  const std::uint32_t style = need_ == Need::kTexts ? 0 : styleOf(item);
  if (need_ == Need::kCounts) return;
  const Place place(item.column, item.row);
  inRows_ = inRows_ && (sheet.cells.empty() || sheet.cells.back().place.key() < place.key());
  append(sheet.cells, Cell{place, style, text}, budget_);
  if constexpr (kAsksValue)
    if (contents_) takeContents(whole.cell()->value(), sheet);
}

// Of the last cell in the list.
void Loader::takeContents(const CellValue& value, SheetData& sheet) {
  const Cell& cell = sheet.cells.back();
  const std::size_t known = document_.formats.size();
  const std::uint32_t format = document_.formats.numberOf(value.format());
  if (document_.formats.size() != known) budget_.charge(FormatTable::kBytesPerFormat);

  if (const auto text = value.text()) {
    const bool isShown = cell.text != nullptr && *text == cell.text;
    const char* const kept = isShown ? cell.text : keptText(*text);
    append(sheet.contents, CellContents(cell.place, value.isFormula(), format, kept), budget_);
  } else {
    append(sheet.contents,
           CellContents(cell.place, typeOf(value), value.isFormula(), format,
                        value.number().value_or(0)),
           budget_);
  }
}

const char* Loader::valueText(const CellValue& value) {
  value_.clear();
  appendValue(value, value_);
  return keptText(value_);
}

// A copy that lives as long as the document.
const char* Loader::keptText(std::string_view text) {
  void* const copy = document_.texts.allocate(text.size() + 1);
  if (copy == nullptr) throw failureOf(memoryLimitError());
  std::memcpy(copy, text.data(), text.size());
  static_cast<char*>(copy)[text.size()] = '\0';
  return static_cast<char*>(copy);
}

std::uint32_t Loader::styleOf(const SSItemCell& item) {
  const std::size_t known = document_.styles.size();
  const std::uint32_t number = document_.styles.numberOf(item);
  if (document_.styles.size() != known) budget_.charge(StyleTable::kBytesPerStyle);
  return number;
}

// Every worksheet delivers the notebook's texts again.
void Loader::takeNotebookText(std::uint32_t record, std::string_view text) {
  for (const NotebookText& known : document_.notebookTexts)
    if (known.record == record) return;
  document_.notebookTexts.push_back({record, document_.decoder->decode(text)});
}

void Loader::finish(SheetData& sheet) {
  if (need_ == Need::kItems) return;
  const auto withSpareCopyOf = [this](const auto& list, const auto& sort) {
    const std::size_t bytes = list.size() * sizeof *list.begin();
    budget_.charge(bytes);
    sort();
    budget_.refund(bytes);
  };
  withSpareCopyOf(sheet.rowHeights, [&] { keepEachRowOnce(sheet.rowHeights); });
  if (!inRows_) {
    withSpareCopyOf(sheet.cells, [&] { sheet.repeatedCells = putInRows(sheet.cells); });
    withSpareCopyOf(sheet.contents, [&] { putInRows(sheet.contents); });
  }
  if (need_ != Need::kTexts || sheet.cells.empty()) return;
  if (hidden_ == Hidden::kSkip) skipHidden(sheet);
  if (hidden_ != Hidden::kMark) return;
  for (const Place place : makeRoomForMarks(sheet))
    append(sheet.cells, Cell{place, 0, kHiddenMark}, budget_);
  withSpareCopyOf(sheet.cells, [&] { putInRows(sheet.cells); });
}

std::optional<std::uint32_t> numberIn(std::string_view text) {
  std::uint32_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return number;
}

// Marks the worksheets that `wanted` means: all of that name, or else the one of that number.
void chooseSheets(const std::string& wanted, const std::vector<std::string>& names,
                  std::vector<bool>& chosen) {
  bool found = false;
  for (std::size_t i = 0; i < names.size(); ++i)
    if (names[i] == wanted) chosen[i] = found = true;
  if (found) return;

  const auto number = numberIn(wanted);
  if (!number) throw Failure{Status::kFailed, "no worksheet is named '" + visible(wanted) + "'"};
  if (*number == 0 || *number > names.size())
    throw Failure{Status::kFailed, "there is no worksheet " + wanted + ": the notebook has " +
                                       std::to_string(names.size())};
  chosen[*number - 1] = true;
}

void failOn(const std::string& message) {
  if (!message.empty()) throw Failure{Status::kFailed, message};
}

// With --strict, what would only have been a warning.
void checkStrictly(const Document& document, std::uint64_t undefinedBefore) {
  failOn(suspicionMessage(document));
  std::string scratch;
  for (const SheetData& sheet : document.sheets) {
    failOn(repeatedCellsMessage(sheet));
    for (const Cell& cell : sheet.cells) {
      scratch.clear();
      if (cell.text != nullptr) document.decoder->append(cell.text, scratch);
    }
    for (std::size_t i = 0; i < sheet.contents.size(); ++i) {
      scratch.clear();
      if (sheet.cells[i].text == nullptr && sheet.contents[i].type() == ValueType::kText)
        document.decoder->append(sheet.contents[i].text(), scratch);
    }
  }
  failOn(undefinedBytesMessage(document, document.decoder->undefinedBytes() - undefinedBefore));
}

}  // namespace

Document readDocument(const std::string& file, OpenedFile& opened, const Command& command,
                      const Settings& settings, const Decoder& decoder, const TimeLimit& time,
                      Progress& progress) {
  Document document(std::move(opened.notebook), decoder);
  document.name = file;
  document.many = settings.manyFiles();
  const std::uint64_t undefinedBefore = decoder.undefinedBytes();

  const std::span<const Sheet> sheets = document.notebook.sheets();
  std::vector<std::string> names;
  for (const Sheet& sheet : sheets)
    names.push_back(decoder.decode(sheet.name));
  std::vector<bool> chosen(sheets.size(), settings.sheets.empty());
  for (const std::string& wanted : settings.sheets)
    chooseSheets(wanted, names, chosen);
  const auto count = std::count(chosen.begin(), chosen.end(), true);
  checkOpening(document.notebook, static_cast<std::uint64_t>(count), opened.size);

  Loader loader(document, opened, command, settings, time, progress);
  if (const auto damage = document.notebook.damage()) loader.meetDamage(*damage);
  for (const Sheet& sheet : sheets)
    if (chosen[sheet.index]) loader.readSheet(sheet, std::move(names[sheet.index]));
  if (settings.strict) checkStrictly(document, undefinedBefore);
  return document;
}

std::string suspicionMessage(const Document& document) {
  const auto suspicion = document.notebook.suspicion();
  return suspicion ? "it may be damaged: " + suspicion->message : "";
}

std::string undefinedBytesMessage(const Document& document, std::uint64_t undefinedBytes) {
  if (undefinedBytes == 0) return "";
  return counted(undefinedBytes, "byte") + (undefinedBytes == 1 ? " is" : " are") +
         " not defined in " + document.decoder->name();
}

std::string repeatedCellsMessage(const SheetData& sheet) {
  if (sheet.repeatedCells == 0) return "";
  return "worksheet '" + sheet.name + "' has " + counted(sheet.repeatedCells, "cell") +
         " more than once";
}

Failure failureOf(const Error& error) {
  const auto status = [](Reason reason) {
    switch (reason) {
      case Reason::kEmpty:
      case Reason::kNotANotebook:
        return Status::kNotANotebook;
      case Reason::kProtected:
        return Status::kRefused;
      case Reason::kDamaged:
        return Status::kDamaged;
      case Reason::kMemoryLimit:
        return Status::kLimit;
      case Reason::kUnreadable:
      case Reason::kLibraryMissing:
        break;
    }
    return Status::kFailed;
  };
  return Failure{status(error.reason), error.message};
}

}  // namespace qps
