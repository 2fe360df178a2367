// SPDX-License-Identifier: MIT
//
// The order of items, and each cell record's position, style number and text.
#include "tests/reader/read_book.h"

namespace qps::test {
namespace {

TEST(Items, ComeInTheirOrderFromTheWorksheetStart) {
  const NotebookBuilder book =
      bookOf([](auto& b) { b.settings(true).notebookText(37, "37").notebookText(38, "38"); },
             [](auto& b) {
               // Records among the cells are passed over, definitions and layout included.
               b.columnWidth(2, 500).rowHeight(6, 300).label({0, 0}, "a").rowHeight(7, 300);
               b.columnWidth(3, 1).sheetStart(1).header().record(999).blank({1, 0});
               b.sheetEnd().label({9, 9}, "after the end");
             });
  EXPECT_THAT(readBook(book).kinds(), ElementsAre(10u, 11u, 12u, 13u, 14u, 15u, 15u));
  EXPECT_THAT(textsOf(book), ElementsAre("a", "(null)"));
}

TEST(Items, EndAtTheFileEndTheEndRecordOrTheSheetsEnd) {
  const auto kindsOf = [](const Add& fill) {
    NotebookBuilder book;
    fill(book.header().sheetStart().label({0, 0}, "a"));
    return readBook(book).kinds();
  };
  EXPECT_THAT(kindsOf(nothing), ElementsAre(10u, 15u));
  EXPECT_THAT(kindsOf([](auto& b) { b.raw(Body().fill(3).bytes()); }), ElementsAre(10u, 15u));
  EXPECT_THAT(kindsOf([](auto& b) { b.end().label({0, 1}, "b"); }), ElementsAre(10u, 15u));
  EXPECT_THAT(kindsOf([](auto& b) { b.sheetEnd().label({0, 1}, "b"); }), ElementsAre(10u, 15u));
  EXPECT_THAT(kindsOf([](auto& b) { b.rawHeader(203, 9); }), ElementsAre(10u, 15u));
  EXPECT_THAT(kindsOf([](auto& b) { b.rawHeader(999, 9); }), ElementsAre(10u, 15u));
}

TEST(Items, ASheetStartMayLieAnywhere) {
  const NotebookBuilder book = everyRecordNotebook();
  RecordingHost host(book.bytes());
  const SheetRun fromTop = readClean(host, 0);
  ASSERT_TRUE(fromTop.opened);
  EXPECT_EQ(fromTop.items, readBook(book).items);
  EXPECT_NE(readBook(book, 0).items, std::vector<Item>());
}

TEST(Items, OfARangeOfRowsAskTheStreamForNothing) {
  const auto seeksFor = [](unsigned rows) {
    const NotebookBuilder book = bookOf(nothing, [=](auto& b) { b.rowHeights(1, rows, 300); });
    RecordingHost host(book.bytes());
    EXPECT_EQ(readClean(host, book.sheetOffset()).items.size(), 1 + rows);
    return host.calls(Step::kSeek);
  };
  EXPECT_EQ(seeksFor(1000), seeksFor(1));
}

// "column,row text" of every cell, "(null)" for no text; `style` 2 is the hidden format.
std::vector<std::string> cells(const NotebookBuilder& records) {
  std::vector<std::string> result;
  const auto define = [](NotebookBuilder& b) {
    b.style().style({.format = 4}).style({.format = 0x12}).style({.format = 1});
  };
  const auto fill = [&](NotebookBuilder& b) { b.raw(records.bytes()); };
  for (const Item& cell : cellsOf(bookOf(define, fill))) {
    result.push_back(std::to_string(cell.column()) + "," + std::to_string(cell.row()) + " " +
                     cell.text.value_or("(null)"));
  }
  return result;
}

// clang-format off

TEST(Cells, EachRecordGivesItsPositionAndText) {
  using Book = NotebookBuilder;
  const unsigned kHidden = 2, kFixed2 = 3, kBars = 4;
  const Body integerBody = cellBody({1, 1}).u8(42).u8(1);
  const struct {
    const char* name;
    NotebookBuilder records;
    std::vector<std::string> expected;
  } rows[] = {
      {"blank", Book().blank({2, 3, kFixed2}), {"3,4 (null)"}},
      {"the last position", Book().blank({255, 65535}), {"256,65536 (null)"}},
      {"integer", Book().integer({0, 0}, 1).integer({1, 0}, -1).integer({2, 0}, -32768),
       {"1,1 1", "2,1 -1", "3,1 -32768"}},
      {"number", Book().number({0, 0}, 1.5).number({2, 4, kFixed2}, -1234.5),
       {"1,1 1.5", "3,5 -1234.50"}},
      {"number by its bytes",
       Book().record(14, Body().u8(2).u8(9).u16(4).u16(8).fill(6).u8(0xF8).u8(0x3F)), {"3,5 1.5"}},
      {"label", Book().label({0, 0, 0}, "abc").label({0, 1}, "").label({0, 2}, " a 'b' "),
       {"1,1 abc", "1,2 ", "1,3  a 'b' "}},
      {"string", Book().string({5, 6}, "result"), {"6,7 result"}},
      {"the byte before a text does not matter",
       Book().record(15, cellBody({0, 0}).u8(0).zeroText("abc")), {"1,1 abc"}},
      {"a text without a zero byte",
       Book().record(15, cellBody({0, 0}).u8('x').text("abc")).label({0, 1}, "d"),
       {"1,1 abc", "1,2 d"}},
      {"text after a zero byte",
       Book().record(51, cellBody({0, 0}).u8('x').zeroText("abc").text("def, and then more")),
       {"1,1 abc"}},
      {"formula", Book().formula({0, 2, kFixed2}, 2.345), {"1,3 2.35"}},
      {"formula with a string", Book().formulaWithString({0, 0}).string({7, 8}, "text"),
       {"8,9 text"}},
      {"formula with a string that is missing",
       Book().formulaWithString({0, 0}).integer({1, 1}, 5), {"2,2 5"}},
      {"formula errors",
       Book().formulaSpecial({0, 0}, 0).formulaSpecial({1, 0, kFixed2}, 0, 7, 0xFFF0),
       {"1,1 ERR", "2,1 ERR"}},
      {"formula integers",
       Book().formulaSpecial({0, 0}, 3, 42).formulaSpecial({0, 1, kFixed2}, 3, 0xFFFF, 0xFFF0),
       {"1,1 196650", "1,2 262143.00"}},
      {"formulas without a value",
       Book().formulaSpecial({0, 0}, 1).formulaSpecial({0, 1}, 2, 0, 0xFFF0)
           .formulaSpecial({0, 2}, 0xFFFF).blank({0, 3}),
       {"1,4 (null)"}},
      {"a special word with another sign is a number",
       Book().formulaSpecial({0, 0}, 0, 0, 0xFFF8).formulaSpecial({0, 1}, 0, 0, 0x7FF1),
       {"1,1 ERR", "1,2 ERR"}},
      {"the format without text",
       Book().integer({0, 0, kHidden}, 1).number({1, 0, kHidden}, 1).label({2, 0, kHidden}, "x")
           .formula({3, 0, kHidden}, 1).formulaSpecial({4, 0, kHidden}, 0)
           .formulaSpecial({5, 0, kHidden}, 3).string({6, 0, kHidden}, "x").blank({7, 0, kHidden}),
       {"1,1 (null)", "2,1 (null)", "3,1 (null)", "4,1 (null)", "5,1 (null)", "6,1 (null)",
        "7,1 (null)", "8,1 (null)"}},
      {"each value has its own column's width",
       Book().columnWidth(0, 240).columnWidth(1, 360).columnWidth(2, 0).columnWidth(3, 480)
           .integer({0, 0, kBars}, 3).number({1, 0, kBars}, 3).integer({2, 0}, 3)
           .formula({3, 0, kBars}, 4).formula({0, 1, kBars}, 4).formulaSpecial({2, 1}, 0)
           .formulaSpecial({2, 2}, 3).label({2, 3}, "shown"),
       {"1,1 *", "2,1 +++", "3,1 (null)", "4,1 ++++", "1,2 *", "3,2 ERR", "3,3 (null)",
        "3,4 shown"}},
      {"bodies without their last bytes",
       Book().record(12, Body().u8(4)).record(13, integerBody).record(13, cellBody({0, 0}))
           .record(14, cellBody({0, 1})).record(15, cellBody({0, 2})).record(51, Body())
           .record(16, cellBody({0, 3})).record(14, cellBody({0, 4}).u8(1)),
       {"5,1 (null)", "2,2 298", "1,1 0", "1,2 0", "1,3 ", "1,1 ", "1,4 0", "1,5 4.94E-324"}},
      // The attribute word's upper 13 bits are the style.
      {"style 0 is style 1", Book().record(14, Body().u32(0).u16(0x0000).f64(2.5)), {"1,1 2.5"}},
      {"style 0, lower bits", Book().record(14, Body().u32(0).u16(0x0007).f64(2.5)), {"1,1 2.5"}},
      {"style 2", Book().record(14, Body().u32(0).u16(0x0015).f64(2.5)), {"1,1 (null)"}},
      {"style 3", Book().record(14, Body().u32(0).u16(0x0018).f64(2.5)), {"1,1 2.50"}},
      {"no such style", Book().record(14, Body().u32(0).u16(0xFFF8).f64(2.5)), {"1,1 2.5"}},
  };
  for (const auto& row : rows) EXPECT_EQ(cells(row.records), row.expected) << row.name;
}

// clang-format on

// Of every size up to 40 bytes, with a zero byte at every place and perhaps one at the end. Bytes
// beyond ASCII and those beside zero are where a search by words goes wrong.
TEST(Cells, ATextEndsAtItsFirstZeroByte) {
  constexpr std::string_view kBytes = "a\x01\x80\xFF\x81z\x7F";
  std::vector<std::string> expected;
  const auto fill = [&](NotebookBuilder& b) {
    for (std::size_t size = 0; size <= 40; ++size) {
      for (std::size_t zero = 0; zero <= size; ++zero) {
        for (const bool zeroAtEnd : {false, true}) {
          std::string text;
          for (std::size_t i = 0; i < size; ++i)
            text += i == zero || (zeroAtEnd && i == size - 1) ? '\0' : kBytes[i % kBytes.size()];
          b.record(rec::kLabel, cellBody({0, 0}).u8('x').text(text));
          expected.emplace_back(text.c_str());
        }
      }
    }
  };
  const NotebookBuilder book = bookOf(nothing, fill);
  EXPECT_EQ(textsOf(book), expected);
}

TEST(Cells, APoolThatIsExhaustedAfterTheOpeningLosesNone) {
  const NotebookBuilder book = everyRecordNotebook();
  RecordingHost host(book.bytes());
  QPSReader reader{};
  reader.stream = host.stream();
  reader.services = host.services();
  QPSCloseSheet(
      QPSInitSheet(&reader, &host, book.sheetOffset(), RecordingHost::itemAlloc, nullptr));
  const std::size_t opening = host.calls(Step::kPoolBlock) + 1;  // and the handle of readSheet
  host.fail({.step = Step::kPoolBlock, .nth = opening + 1, .forGood = true});
  EXPECT_EQ(readClean(host, book.sheetOffset()).only(SSItemKindCell), cellsOf(book));
  EXPECT_TRUE(host.faultMet());
}

}  // namespace
}  // namespace qps::test
