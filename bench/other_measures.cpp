// SPDX-License-Identifier: MIT
//
// Opening, and notebooks that make the reader work as hard as the format allows.
#include <string>

#include "bench/measure.h"
#include "bench/notebooks.h"
#include "bench/subject.h"
#include "tests/support/notebook_builder.h"

namespace qps::bench {
namespace {

using test::Body;
using test::Bytes;
using test::NotebookBuilder;

constexpr unsigned kMany = 8'000;
constexpr unsigned kManyRows = 40'000;
constexpr unsigned kCells = 100'000;

void addNumbers(NotebookBuilder& book, unsigned count, double value, unsigned styles = 1) {
  for (unsigned i = 0; i < count; ++i)
    book.number({i % kColumns, i / kColumns, 1 + i * 7 % styles}, value);
}

NotebookBuilder& closed(NotebookBuilder& book) {
  return book.sheetEnd().end();
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
  return closed(book).bytes();
}

// What a worksheet with a height of its own for every row brings.
Bytes manyLayoutRecords(unsigned count) {
  NotebookBuilder book;
  book.header().sheetStart().table(20, count);
  for (unsigned row = 0; row < count; ++row)
    book.rowHeight(row, 300);
  book.number({0, 0, 1}, 1);
  return closed(book).bytes();
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
  book.sheetStart().table(kColumns, kCells / kColumns);
  addNumbers(book, kCells, 1234.5, kMany);
  return closed(book).bytes();
}

Bytes manyFormats() {
  NotebookBuilder book;
  book.header();
  for (unsigned i = 0; i < kMany; ++i)
    book.userFormat(i, "N'text'9,999.00;N'none';N'('9,999.00')'");
  for (unsigned i = 0; i < 140; ++i)
    book.style({.format = 113 + i});
  book.sheetStart().table(kColumns, kCells / kColumns);
  addNumbers(book, kCells, -1234.5, 140);
  return closed(book).bytes();
}

Bytes hiddenRowsOverHeights() {
  NotebookBuilder book;
  book.header().sheetStart().table(1, kManyRows);
  for (unsigned row = 0; row < kManyRows; ++row)
    book.rowHeight(row, 300 + row % 2);
  book.hiddenRows(Body().fill(kManyRows / 8, 0xFF));
  return closed(book).bytes();
}

Bytes farDates(double serial) {
  NotebookBuilder book;
  book.header().userFormat(1, "TWeekday', 'D' 'Month' 'YYYY");
  book.style({.format = 14}).style({.format = 112}).style({.format = 96}).style({.format = 113});
  book.sheetStart().table(kColumns, kCells / kColumns);
  addNumbers(book, kCells, serial, 4);
  return closed(book).bytes();
}

}  // namespace

void addOpeningMeasures(std::vector<Measure>& measures, std::size_t cells) {
  const std::string floor = std::string(kToCharsFloor) + "/mix";
  constexpr double kAtMost = 0.12;
  const auto add = [&](const std::string& name, std::size_t records, const SubjectPointer& subject,
                       double atMost) {
    measures.push_back({.group = "records",
                        .name = name,
                        .units = records,
                        .floor = floor,
                        .atMost = atMost,
                        .run = [=] { (*subject)->reading.open((*subject)->reading.offset()); }});
  };
  // A notebook's worksheets, listed and each opened.
  constexpr std::size_t kSheets = 256;
  const SubjectPointer mix =
      lazySubject([=] { return buildNotebook(*findDeck("mix"), cells, kSheets).bytes(); });
  measures.push_back({.group = "records",
                      .name = "listing and opening 256 worksheets",
                      .units = cells,
                      .floor = floor,
                      .atMost = kAtMost,
                      .run = [=] {
                        Reading& reading = (*mix)->reading;
                        const std::uint32_t count = reading.list();
                        for (std::uint32_t i = 0; i < count; ++i)
                          reading.open(reading.offset(i));
                      }});
  constexpr unsigned kPerKind = 2'000;
  add("opening: definitions that are kept", std::size_t{6} * kPerKind,
      lazySubject([] { return manyDefinitions(kPerKind); }), 0);
  add("opening: row heights", kManyRows, lazySubject([] { return manyLayoutRecords(kManyRows); }),
      0);
}

void addWorstCases(std::vector<Measure>& measures) {
  const auto add = [&](const std::string& name, std::size_t units, std::function<Bytes()> make,
                       const std::string& usual) {
    const SubjectPointer subject = lazySubject(std::move(make));
    measures.push_back(
        {.group = "worst cases", .name = name, .units = units, .floor = usual, .run = [=] {
           (*subject)->host.dropTexts();
           (*subject)->reading.items((*subject)->reading.offset());
         }});
  };
  add("8000 styles with borders and base styles", kMany + kCells, manyStyles, "items/mix");
  add("8000 user formats", kMany + kCells, manyFormats, "items/user");
  add("40000 hidden rows over 40000 heights", std::size_t{2} * kManyRows, hiddenRowsOverHeights,
      "items/mix");
  add(
      "dates of today", kCells, [] { return farDates(45'000); }, "items/dates");
  add(
      "dates of serial 2000000000", kCells, [] { return farDates(2e9); }, "items/dates");
}

}  // namespace qps::bench
