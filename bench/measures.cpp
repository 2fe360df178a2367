// SPDX-License-Identifier: MIT
//
// qps_bench [--cells=N] [Google Benchmark's flags]: the reader's cells against the floor that
// renders with std::to_chars, listing and opening, the growth with the number of cells and of
// worksheets, and the worst that a notebook can ask for. Each run says how many units (cells,
// records, rows) it takes, its label which other run's cost a unit is its floor, and `atMost` what
// the ratio may be; bench/table.py puts them together.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

#include "bench/floor.h"
#include "bench/subject.h"
#include "tests/support/compound_writer.h"

namespace {

using namespace qps::bench;
using qps::test::Body;
using qps::test::Bytes;
using qps::test::NotebookBuilder;
using Run = std::function<void()>;

void add(const std::string& name, std::size_t units, const std::string& floor, double atMost,
         const Run& run) {
  benchmark::RegisterBenchmark(name.c_str(), [=](benchmark::State& state) {
    for (auto _ : state)
      run();
    state.SetLabel(floor);
    state.counters["units"] = static_cast<double>(units);
    if (atMost != 0) state.counters["atMost"] = atMost;
  });
}

LazySubject deckSubject(std::string_view deck, std::size_t cells, std::size_t sheets = 1,
                        Order order = Order::kShuffled) {
  return lazySubject([=] { return buildNotebook(*findDeck(deck), cells, sheets, order).bytes(); });
}

// All items of the first `sheets` worksheets.
Run takeItems(const LazySubject& subject, std::uint32_t sheets = 1) {
  return [=] {
    subject().texts().clear();
    for (std::uint32_t i = 0; i < sheets; ++i)
      subject().items(i);
  };
}

// A run named "group/name" and its floor.
void addPair(const std::string& group, std::string_view name, std::size_t cells,
             const LazySubject& subject, double atMost = 0) {
  const std::string floor = "floor/" + std::string(name);
  add(floor, cells, "", 0, [=] {
    subject().texts().clear();
    floorItems(subject().openedStream(), subject().offset(), TextBlocks::allocate,
               &subject().texts());
  });
  add(group + "/" + std::string(name), cells, floor, atMost, takeItems(subject));
}

void addItems(std::size_t cells) {
  constexpr struct {
    std::string_view deck;
    double atMost;
  } kTargets[] = {{"mix", 0.9}, {"numbers", 0.6}, {"dates", 0.8}, {"labels", 1.1}, {"user", 1.1}};
  for (const auto& [deck, atMost] : kTargets)
    addPair("items", deck, cells, deckSubject(deck, cells), atMost);
  addPair("items", "mix, a family a column", cells, deckSubject("mix", cells, 1, Order::kColumns));
  for (const FamilyRow& row : kFamilies)
    addPair("families", row.name, cells, deckSubject(row.name, cells));
  const LazySubject compound = lazySubject([=] {
    const Bytes plain = buildNotebook(*findDeck("mix"), cells).bytes();
    return qps::test::writeCompound({}, {{"PerfectOffice_MAIN", plain}});
  });
  add("in a compound document/mix", cells, "items/mix", 0, takeItems(compound));
}

// As many records of each kind that a definition can be as large notebooks have.
Bytes manyDefinitions(unsigned perKind) {
  NotebookBuilder book;
  book.header().dimensions(20, 100).settings(true);
  for (unsigned i = 0; i < perKind; ++i) {
    book.font(10, 0, "Arial").style({.format = i % 128}).namedStyle(i, 1 + i, "Normal");
    book.userFormat(i, "N9,999.00").valueTable().record(300, Body().fill(20));
  }
  book.sheetStart().table(20, 100).number({0, 0, 1}, 1);
  return book.sheetEnd().end().bytes();
}

// A worksheet with a height of its own for every row, and record 220 that hides the first `hidden`.
Bytes manyHeights(unsigned rows, unsigned hidden) {
  NotebookBuilder book;
  book.header().sheetStart().table(20, rows);
  for (unsigned row = 0; row < rows; ++row)
    book.rowHeight(row, 300 + row % 2);
  book.hiddenRows(Body().fill(hidden / 8, 0xFF)).number({0, 0, 1}, 1);
  return book.sheetEnd().end().bytes();
}

void addRecords(std::size_t cells) {
  constexpr unsigned kPerKind = 2'000, kRows = 40'000, kSheets = 256;
  const auto addRow = [](const char* name, std::size_t units, double atMost, const Run& run) {
    add(std::string("records/") + name, units, "floor/mix", atMost, run);
  };
  const LazySubject mix = deckSubject("mix", cells), sheets = deckSubject("mix", cells, kSheets);
  const LazySubject definitions = lazySubject([] { return manyDefinitions(kPerKind); });
  const LazySubject heights = lazySubject([] { return manyHeights(kRows, 0); });
  addRow("listing", cells, 0.12, [=] { mix().list(); });
  addRow("a read and a seek, and nothing else", cells, 0,
         [=] { floorHeaders(mix().openedStream()); });
  addRow("listing and opening 256 worksheets", cells, 0.12, [=] {
    sheets().list();
    for (std::uint32_t i = 0; i < kSheets; ++i)
      sheets().openAndClose(i);
  });
  addRow("opening: definitions that are kept", std::size_t{6} * kPerKind, 0,
         [=] { definitions().openAndClose(); });
  addRow("opening: row heights", kRows, 0, [=] { heights().openAndClose(); });
}

void addGrowth(std::size_t cells) {
  std::string first;
  const auto addRow = [&](std::size_t count, std::uint32_t sheets) {
    const LazySubject subject = deckSubject("mix", count, sheets);
    const std::string name = "growth/" + std::to_string(count) + " cells, " +
                             std::to_string(sheets) + (sheets == 1 ? " sheet" : " sheets");
    add(name, count, first, first.empty() ? 0 : 1.3, [=, items = takeItems(subject, sheets)] {
      subject().list();
      items();
    });
    if (first.empty()) first = name;
  };
  for (std::size_t count = 10'000; count <= cells; count *= 10)
    addRow(count, 1);
  first.clear();
  for (std::uint32_t sheets = 1; sheets <= 256; sheets *= 4)
    addRow(cells / 4, sheets);
}

constexpr unsigned kMany = 8'000;
constexpr unsigned kManyCells = 100'000;

Bytes numbersUnder(NotebookBuilder& book, double value, unsigned styles) {
  book.sheetStart().table(kColumns, kManyCells / kColumns);
  for (unsigned i = 0; i < kManyCells; ++i)
    book.number({i % kColumns, i / kColumns, 1 + i * 7 % styles}, value);
  return book.sheetEnd().end().bytes();
}

Bytes manyStyles() {
  NotebookBuilder book;
  book.header();
  for (unsigned i = 0; i < 250; ++i)
    book.font(10, 0, "Arial").namedStyle(i, 1 + i, "Normal");
  for (unsigned i = 0; i < kMany; ++i)
    book.style({.format = 0x12,
                .colour2 = i % 16,
                .blend = i % 8,
                .font = 1 + i % 250,
                .lines = {1, 2, 3, 1},
                .namedStyle = i % 250});
  return numbersUnder(book, 1234.5, kMany);
}

Bytes manyFormats() {
  NotebookBuilder book;
  book.header();
  for (unsigned i = 0; i < kMany; ++i)
    book.userFormat(i, "N'text'9,999.00;N'none';N'('9,999.00')'");
  for (unsigned i = 0; i < 140; ++i)
    book.style({.format = 113 + i});
  return numbersUnder(book, -1234.5, 140);
}

Bytes farDates(double serial) {
  NotebookBuilder book;
  book.header().userFormat(1, "TWeekday', 'D' 'Month' 'YYYY");
  book.style({.format = 14}).style({.format = 112}).style({.format = 96}).style({.format = 113});
  return numbersUnder(book, serial, 4);
}

void addWorstCases() {
  constexpr unsigned kHidden = 40'000;
  const auto addRow = [](const char* name, std::size_t units, const char* usual, auto make) {
    add(std::string("worst cases/") + name, units, usual, 0, takeItems(lazySubject(make)));
  };
  addRow("8000 styles with borders and base styles", kMany + kManyCells, "items/mix", manyStyles);
  addRow("8000 user formats", kMany + kManyCells, "items/user", manyFormats);
  addRow("40000 hidden rows over 40000 heights", std::size_t{2} * kHidden, "items/mix",
         [] { return manyHeights(kHidden, kHidden); });
  addRow("dates of today", kManyCells, "items/dates", [] { return farDates(45'000); });
  addRow("dates of serial 2000000000", kManyCells, "items/dates", [] { return farDates(2e9); });
}

// A floor that printed something else than the reader would measure nothing: the two must give the
// same text for each cell of the family.
bool floorPrintsAsTheReader(const FamilyRow& row) {
  Subject subject(buildNotebook(*findDeck(row.name), 5'000).bytes());
  std::vector<std::string> texts, floorTexts;
  subject.items(0, [&](const SSItem& item) {
    const char* text = item.kind == SSItemKindCell ? item.cell.text : nullptr;
    if (text != nullptr) texts.emplace_back(text);
  });
  walkRecords(subject.openedStream(), subject.offset(),
              [&](unsigned type, const std::uint8_t* body, std::size_t bytes) {
                char area[kFloorTextBytes];
                if (isCellRecord(type))
                  floorTexts.emplace_back(floorText(familyOf(body), body, bytes, area));
                return type != qps::test::rec::kSheetEnd;
              });
  if (texts == floorTexts && !texts.empty()) return true;
  std::fprintf(stderr, "bench: %s: the floor does not print what the reader does\n",
               row.name.data());
  return false;
}

}  // namespace

int main(int argc, char** argv) {
  constexpr std::string_view kCells = "--cells=";
  std::size_t cells = 1'000'000;
  std::vector<char*> arguments;
  for (char* argument : std::span(argv, static_cast<std::size_t>(argc)))
    if (std::string_view(argument).starts_with(kCells))
      cells = std::stoul(argument + kCells.size());
    else
      arguments.push_back(argument);
  auto count = static_cast<int>(arguments.size());
  benchmark::Initialize(&count, arguments.data());
  if (benchmark::ReportUnrecognizedArguments(count, arguments.data())) return 2;
  if (!std::all_of(std::begin(kFamilies), std::end(kFamilies), floorPrintsAsTheReader)) return 1;
  addItems(cells);
  addRecords(cells);
  addGrowth(cells);
  addWorstCases();
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}
