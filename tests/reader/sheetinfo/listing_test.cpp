// SPDX-License-Identifier: MIT
//
// The listing of worksheets: names, offsets, which worksheets count, and failures on the way.
#include <algorithm>
#include <cstring>

#include "tests/reader/read_book.h"

namespace qps::test {
namespace {

using Names = std::vector<std::string>;

// The names of a listing; "?" when there is none, "" for an entry of zero bytes.
Names namesOf(const NotebookBuilder& book) {
  RecordingHost host(book.bytes());
  const auto entries = listSheets(host);
  EXPECT_EQ(host.state(), "clean");
  Names names;
  for (const SSWorkSheetEntry& entry : entries.value_or(std::vector<SSWorkSheetEntry>()))
    names.emplace_back(entry.name);
  return entries.has_value() ? names : Names{"?"};
}

TEST(Listing, NamesTheWorksheetsThatHaveADimensionTable) {
  const std::string name63(63, 'n');
  const std::string name100 = std::string(42, 'a') + std::string(58, 'b');
  const struct {
    const char* name;
    Add add;
    Names expected;
  } rows[] = {
      {"three by number",
       [](auto& b) {
         b.header().sheetStart(0).table(1, 1).sheetEnd().sheetStart(1).table(1, 1).sheetEnd();
         b.sheetStart(2).table(1, 1).sheetEnd();
       },
       {"A", "B", "C"}},
      {"numbers",
       [](auto& b) {
         b.header();
         for (const unsigned number : {25u, 26u, 51u, 52u, 255u})
           b.sheetStart(number).table(1, 1).sheetEnd();
       },
       {"Z", "AA", "AZ", "BA", "IV"}},
      {"names",
       [&](auto& b) {
         b.header().sheetStart().sheetName("Budget").table(1, 1).sheetEnd();
         b.sheetStart(1).sheetName("first").sheetName("last").record(999).table(1, 1).sheetEnd();
         b.sheetStart(2).record(204, Body().text(name63)).table(1, 1).sheetEnd();
         b.sheetStart(3).record(204, Body().text("un").u8(0).text("seen")).table(1, 1).sheetEnd();
         b.sheetStart(4).record(204).table(1, 1).sheetEnd();
       },
       {"Budget", "last", name63, "un", ""}},
      {"long names",
       [&](auto& b) {
         b.header().sheetStart().record(204, Body().text(name100)).table(1, 1).sheetEnd();
         b.sheetStart(1).record(204, Body().text(name63).u8(0)).table(1, 1).sheetEnd();
         b.sheetStart(2).record(204, Body().fill(50, 'x').u8(0).fill(60, 'y')).table(1, 1);
         b.sheetStart(3).record(204, Body().fill(70, 'x').u8(0).fill(20, 'y')).table(1, 1);
         b.sheetStart(4).record(204, Body().fill(5119, 'x').u8('y').fill(80, 'z')).table(1, 1);
       },
       {" ... " + std::string(58, 'b'), " ... " + std::string(57, 'n'),
        " ... " + std::string(58, 'y'), " ... " + std::string(37, 'x'),
        " ... " + std::string(57, 'x') + "y"}},
      {"a sheet that ends first, and one that another follows",
       [](auto& b) {
         b.header().sheetStart(0).sheetEnd().table(1, 1).sheetStart(1).sheetName("lost");
         b.sheetStart(2).table(1, 1).sheetEnd();
       },
       {"C"}},
      {"an empty table", [](auto& b) { b.header().sheetStart().record(150); }, {"?"}},
      {"an empty table before a full one",
       [](auto& b) { b.header().sheetStart().record(150).sheetStart(1).table(1, 1); },
       {"", "B"}},
      {"an empty table between full ones",
       [](auto& b) {
         b.header().sheetStart().table(1, 1).sheetStart(1).record(150).sheetStart(2).table(1, 1);
       },
       {"A", "", "C"}},
      {"two tables in one sheet",
       [](auto& b) { b.header().sheetStart().table(1, 1).table(2, 2).sheetEnd(); },
       {"A"}},
      {"no worksheet", [](auto& b) { b.header().dimensions(1, 1).end(); }, {"?"}},
      {"the end record between", [](auto& b) { b.header().sheetStart().end().table(1, 1); }, {"?"}},
      {"the end record after one",
       [](auto& b) { b.header().sheetStart().table(1, 1).end().sheetStart(1).table(1, 1); },
       {"A"}},
      {"a skip beyond the end",
       [](auto& b) { b.header().sheetStart().table(1, 1).rawHeader(999, 9); },
       {"A"}},
      {"a first record of another kind", [](auto& b) { b.dimensions(1, 1).sheetStart(); }, {"?"}},
      {"three bytes", [](auto& b) { b.raw(Body().fill(3).bytes()); }, {"?"}},
      {"an empty worksheet record", [](auto& b) { b.header().record(202).table(1, 1); }, {"A"}}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    NotebookBuilder book;
    row.add(book);
    EXPECT_EQ(namesOf(book), row.expected);
  }
}

TEST(Listing, FillsWholeEntries) {
  const NotebookBuilder book = everyRecordNotebook();
  RecordingHost host(book.bytes());
  const auto entries = listSheets(host);
  ASSERT_TRUE(entries.has_value());
  ASSERT_EQ(entries->size(), 2u);
  for (size_t i = 0; i < 2; ++i) {
    SSWorkSheetEntry expected{};
    std::string_view(i == 0 ? "First" : "Second").copy(expected.name, sizeof(expected.name));
    expected.typeFlags = 0x4000;
    expected.startOffset = book.sheetOffset(i);
    expected.spareWord = 0xFFFFFFFF;
    EXPECT_EQ(std::memcmp(&entries->at(i), &expected, sizeof(expected)), 0);
  }
}

TEST(Listing, ALongerNameLeavesNoTraceInTheNext) {
  NotebookBuilder book;
  book.header().sheetStart().sheetName("a long name").table(1, 1).sheetEnd();
  book.sheetStart(1).table(1, 1).sheetEnd();
  RecordingHost host(book.bytes());
  const auto entries = listSheets(host);
  ASSERT_TRUE(entries.has_value() && entries->size() == 2);
  EXPECT_TRUE(std::all_of(entries->at(1).name + 1, entries->at(1).name + 64,
                          [](char c) { return c == 0; }));
}

TEST(Listing, TheReaderOwnsTheTableAndReplacesIt) {
  RecordingHost host(everyRecordNotebook().bytes());
  QPSReader* reader =
      QPSAllocateReader(nullptr, nullptr, host.stream(), host.services(), nullptr, nullptr);
  SSWorkSheetList list{7, nullptr};
  EXPECT_EQ(qpsWorkSheetInfo(reader, &list), 1);
  EXPECT_EQ(qpsWorkSheetInfo(reader, &list), 1) << "what the record holds is not read";
  list = {7, nullptr};
  EXPECT_EQ(qpsWorkSheetInfo(reader, &list), 1);
  EXPECT_EQ(host.poolBlocks(), 2u) << "the handle and the table of the last listing";
  EXPECT_EQ(reader->sheetTable, list.entries);
  EXPECT_EQ(list.count, 2u);

  host.fail({.step = Step::kPoolBlock});
  EXPECT_EQ(qpsWorkSheetInfo(reader, &list), 0);
  EXPECT_EQ(list.entries, nullptr);
  EXPECT_EQ(list.count, 0u);
  EXPECT_EQ(reader->sheetCount, 2u) << "the reader keeps what it had";
  host.file().bytes().clear();
  list = {7, nullptr};
  EXPECT_EQ(qpsWorkSheetInfo(reader, &list), 0);
  EXPECT_EQ(list.count, 7u) << "nothing was found";
  QPSCloseReader(reader);
  EXPECT_EQ(host.state(), "clean");

  QPSReader noStream{};
  noStream.services = host.services();
  EXPECT_EQ(qpsWorkSheetInfo(&noStream, &list), 0);
}

TEST(Listing, TheTableIsAsLongAsItsEntriesUpTo256AndThenDoubles) {
  const struct {
    unsigned sheets;
    size_t resizes;
    size_t peakEntries;  // of the last two tables, both there while one is resized
  } rows[] = {{1, 0, 1},
              {2, 1, 1 + 2},
              {3, 2, 2 + 3},
              {256, 255, 511},
              {257, 256, 256 + 512},
              {512, 256, 256 + 512},
              {513, 257, 512 + 1024}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.sheets);
    NotebookBuilder book;
    book.header();
    for (unsigned number = 0; number < row.sheets; ++number)
      book.sheetStart(number).table(1, 1).sheetEnd();
    RecordingHost host(book.bytes());
    host.logging = true;
    ASSERT_EQ(listSheets(host)->size(), row.sheets);
    EXPECT_EQ(host.peakPoolBytes(), sizeof(QPSReader) + row.peakEntries * sizeof(SSWorkSheetEntry));
    EXPECT_EQ(std::count(host.log.begin(), host.log.end(), "realloc"), row.resizes);
    EXPECT_EQ(std::count(host.log.begin(), host.log.end(), "calloc"), 2) << "the handle too";
  }
}

// A worksheet that another begins in: the search steps back over its header, with the third seek.
TEST(Listing, AFailedStepBackEndsTheListing) {
  NotebookBuilder book;
  book.header().sheetStart(0).sheetStart(1).table(1, 1);
  RecordingHost host(book.bytes());
  EXPECT_TRUE(listSheets(host).has_value());
  host.fail({.step = Step::kSeek, .nth = 3});
  EXPECT_FALSE(listSheets(host).has_value());
  EXPECT_EQ(host.state(), "clean");
}

TEST(Listing, ATableThatCannotGrowIsGivenBack) {
  NotebookBuilder book;
  book.header();
  for (unsigned number = 0; number < 40; ++number)
    book.sheetStart(number).table(1, 1).sheetEnd();
  size_t nth = 2;  // the first block is the handle
  for (;; ++nth) {
    RecordingHost host(book.bytes());
    host.fail({.step = Step::kPoolBlock, .nth = nth});
    const auto entries = listSheets(host);
    EXPECT_EQ(host.state(), "clean");
    EXPECT_EQ(entries.has_value(), !host.faultMet());
    if (!host.faultMet()) break;
  }
  EXPECT_GT(nth, 3u) << "the table grew";
}

}  // namespace
}  // namespace qps::test
