// SPDX-License-Identifier: MIT
//
// The reader: its cells against the floor that renders with std::to_chars, listing and opening, the
// growth with the number of cells and of worksheets, and the worst that a notebook can ask for.
#include "bench/floor.h"
#include "bench/measure.h"
#include "bench/notebooks.h"
#include "bench/subject.h"
#include "tests/support/compound_writer.h"

namespace qps::bench {
namespace {

using test::Body;
using test::Bytes;
using test::NotebookBuilder;

// The group of the floor that walks, renders with std::to_chars and copies.
constexpr const char* kFloor = "floor";
constexpr const char* kFloorOfMix = "floor/mix";
constexpr const char* kItemsOfMix = "items/mix";

LazySubject deckSubject(std::string_view deck, std::size_t cells, std::size_t sheets = 1,
                        Order order = Order::kShuffled) {
  return lazySubject([=] { return buildNotebook(*findDeck(deck), cells, sheets, order).bytes(); });
}

std::function<void()> takeItems(const LazySubject& subject) {
  return [=] {
    subject().texts().clear();
    subject().items();
  };
}

std::function<void()> runFloor(const LazySubject& subject) {
  return [=] {
    subject().texts().clear();
    floorItems(subject().openedStream(), subject().offset(), TextBlocks::allocate,
               &subject().texts());
  };
}

void addPair(std::vector<Measure>& measures, const std::string& group, std::string_view name,
             std::size_t cells, const LazySubject& subject, double atMost = 0) {
  measures.push_back({.group = kFloor,
                      .name = std::string(name),
                      .units = cells,
                      .isShown = false,
                      .run = runFloor(subject)});
  measures.push_back({.group = group,
                      .name = std::string(name),
                      .units = cells,
                      .floor = keyOf(measures.back()),
                      .atMost = atMost,
                      .run = takeItems(subject)});
}

void addItems(std::vector<Measure>& measures, std::size_t cells) {
  constexpr struct {
    std::string_view deck;
    double atMost;
  } kTargets[] = {{"mix", 0.9}, {"numbers", 0.6}, {"dates", 0.8}, {"labels", 1.1}, {"user", 1.1}};
  for (const auto& [deck, atMost] : kTargets)
    addPair(measures, "items", deck, cells, deckSubject(deck, cells), atMost);
  addPair(measures, "items", "mix, a family a column", cells,
          deckSubject("mix", cells, 1, Order::kColumns));
  for (const FamilyRow& row : kFamilies)
    addPair(measures, "families", row.name, cells, deckSubject(row.name, cells));
  const LazySubject compound = lazySubject([=] {
    const Bytes plain = buildNotebook(*findDeck("mix"), cells).bytes();
    return test::writeCompound({}, {{"PerfectOffice_MAIN", plain}});
  });
  measures.push_back({.group = "in a compound document",
                      .name = "mix",
                      .units = cells,
                      .floor = kItemsOfMix,
                      .run = takeItems(compound)});
}

void listAndOpen(Subject& subject) {
  const std::uint32_t sheets = subject.list();
  for (std::uint32_t i = 0; i < sheets; ++i)
    subject.openAndClose(i);
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

// A worksheet with a height of its own for every row, `fill` behind them.
Bytes manyHeights(unsigned rows, const std::function<void(NotebookBuilder&)>& fill) {
  NotebookBuilder book;
  book.header().sheetStart().table(20, rows);
  for (unsigned row = 0; row < rows; ++row)
    book.rowHeight(row, 300 + row % 2);
  fill(book);
  return book.sheetEnd().end().bytes();
}

void addRecords(std::vector<Measure>& measures, std::size_t cells) {
  constexpr unsigned kPerKind = 2'000;
  constexpr unsigned kRows = 40'000;
  const LazySubject mix = deckSubject("mix", cells);
  const LazySubject sheets = deckSubject("mix", cells, 256);
  const LazySubject definitions = lazySubject([] { return manyDefinitions(kPerKind); });
  const LazySubject heights = lazySubject([] {
    return manyHeights(kRows, [](NotebookBuilder& book) { book.number({0, 0, 1}, 1); });
  });
  const auto add = [&](const char* name, std::size_t units, double atMost,
                       std::function<void()> run) {
    measures.push_back({.group = "records",
                        .name = name,
                        .units = units,
                        .floor = kFloorOfMix,
                        .atMost = atMost,
                        .run = std::move(run)});
  };
  add("listing", cells, 0.12, [=] { mix().list(); });
  add("a read and a seek, and nothing else", cells, 0, [=] { floorHeaders(mix().openedStream()); });
  add("the walk of the floor", cells, 0, [=] { floorWalk(mix().openedStream(), mix().offset()); });
  add("listing and opening 256 worksheets", cells, 0.12, [=] { listAndOpen(sheets()); });
  add("opening: definitions that are kept", std::size_t{6} * kPerKind, 0,
      [=] { definitions().openAndClose(); });
  add("opening: row heights", kRows, 0, [=] { heights().openAndClose(); });
}

void addGrowth(std::vector<Measure>& measures, std::size_t cells) {
  std::string first;
  const auto add = [&](std::size_t count, std::size_t sheets) {
    const LazySubject subject = deckSubject("mix", count, sheets);
    measures.push_back({.group = "growth",
                        .name = std::to_string(count) + " cells, " + std::to_string(sheets) +
                                (sheets == 1 ? " sheet" : " sheets"),
                        .units = count,
                        .floor = first,
                        .atMost = first.empty() ? 0 : 1.3,
                        .run = [=] {
                          subject().texts().clear();
                          const std::uint32_t listed = subject().list();
                          for (std::uint32_t i = 0; i < listed; ++i)
                            subject().items(i);
                        }});
    if (first.empty()) first = keyOf(measures.back());
  };
  for (std::size_t count = 10'000; count <= cells; count *= 10)
    add(count, 1);
  first.clear();
  for (std::size_t sheets = 1; sheets <= 256; sheets *= 4)
    add(cells / 4, sheets);
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

void addWorstCases(std::vector<Measure>& measures) {
  constexpr unsigned kHidden = 40'000;
  const auto add = [&](const char* name, std::size_t units, const char* usual, auto make) {
    measures.push_back({.group = "worst cases",
                        .name = name,
                        .units = units,
                        .floor = usual,
                        .run = takeItems(lazySubject(make))});
  };
  add("8000 styles with borders and base styles", kMany + kManyCells, kItemsOfMix, manyStyles);
  add("8000 user formats", kMany + kManyCells, "items/user", manyFormats);
  add("40000 hidden rows over 40000 heights", std::size_t{2} * kHidden, kItemsOfMix, [] {
    return manyHeights(
        kHidden, [](NotebookBuilder& book) { book.hiddenRows(Body().fill(kHidden / 8, 0xFF)); });
  });
  add("dates of today", kManyCells, "items/dates", [] { return farDates(45'000); });
  add("dates of serial 2000000000", kManyCells, "items/dates", [] { return farDates(2e9); });
}

}  // namespace

void addReaderMeasures(std::vector<Measure>& measures, std::size_t cells) {
  addItems(measures, cells);
  addRecords(measures, cells);
  addGrowth(measures, cells);
  addWorstCases(measures);
}

}  // namespace qps::bench
