// SPDX-License-Identifier: MIT
//
// Opening a worksheet: the order of calls on the stream, every way an opening fails, and what a
// failed read or seek, or a body longer than the reader keeps, does to the records around it.
#include <algorithm>

#include "tests/reader/read_book.h"

namespace qps::test {
namespace {

TEST(Opening, AsksTheStreamRecordByRecord) {
  NotebookBuilder book;
  book.header().record(232, Body().fill(7)).record(999).sheetStart().record(224, Body().fill(3));
  book.record(rec::kSheetEnd, Body().u16(0)).integer({0, 0}, 5);
  RecordingHost host(book.bytes());
  host.logging = true;
  EXPECT_THAT(readClean(host, book.sheetOffset()).kinds(), ElementsAre(10u));
  std::erase_if(host.log, [](const std::string& call) {
    return call == "alloc" || call == "calloc" || call == "free";
  });
  EXPECT_THAT(host.log, ElementsAre("open", "read 8", "seek -8 1", "read 4", "read 2", "read 4",
                                    "read 7", "read 4", "seek 0 1", "read 4", "seek 21 0", "read 4",
                                    "seek 2 1", "read 4", "read 3", "read 4", "seek 21 0", "read 4",
                                    "seek 2 1", "read 4", "seek 3 1", "read 4", "read 2", "close"));
}

TEST(Opening, SucceedsOnlyAtACellOrTheSheetsEnd) {
  const struct {
    const char* name;
    Add add;
    bool opens = false;
  } rows[] = {
      {"an empty file", nothing},
      {"seven bytes", [](auto& b) { b.raw(Body().fill(7).bytes()); }},
      {"no worksheet", [](auto& b) { b.header().dimensions(3, 3); }},
      {"the end record", [](auto& b) { b.header().end().sheetStart().sheetEnd(); }},
      {"a second header", [](auto& b) { b.header().header().sheetStart().sheetEnd(); }},
      {"a refusal", [](auto& b) { b.header().refusal(0x0100).sheetStart().sheetEnd(); }},
      {"no refusal", [](auto& b) { b.header().refusal(0).sheetStart().sheetEnd(); }, true},
      {"an empty refusal", [](auto& b) { b.record(76).sheetStart().sheetEnd(); }, true},
      {"no header", [](auto& b) { b.sheetStart().sheetEnd(); }, true},
      {"the other end", [](auto& b) { b.record(310).header().header().sheetStart().sheetEnd(); },
       true},
      {"a skip beyond the end", [](auto& b) { b.header().rawHeader(999, 9).sheetStart(); }},
      {"a sheet without an end", [](auto& b) { b.header().sheetStart().table(1, 1); }},
      {"a sheet and the end record", [](auto& b) { b.header().sheetStart().end().sheetEnd(); }},
      {"a sheet and a cut header",
       [](auto& b) { b.header().sheetStart().raw(Body().u16(203).u8(0).bytes()); }},
      {"a sheet and a skip beyond", [](auto& b) { b.header().sheetStart().rawHeader(999, 9); }},
      {"headers in a sheet", [](auto& b) { b.sheetStart().header().header().sheetEnd(); }, true},
      {"another sheet", [](auto& b) { b.sheetStart().sheetStart(1).sheetEnd(); }, true},
      {"a refusal in a sheet", [](auto& b) { b.sheetStart().refusal(1).sheetEnd(); }, true}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    NotebookBuilder book;
    row.add(book);
    RecordingHost host(book.bytes());
    EXPECT_EQ(readClean(host, book.sheets() == 0 ? 0 : book.sheetOffset()).opened, row.opens);
  }
  for (const unsigned cell : {12u, 13u, 14u, 15u, 16u, 51u, 203u}) {
    EXPECT_TRUE(readBook(NotebookBuilder().header().sheetStart().rawHeader(cell, 99)).opened)
        << cell;
  }
}

TEST(Opening, RefusedStreamsAndOffsetsOpenNothing) {
  NotebookBuilder book = everyRecordNotebook();
  RecordingHost host(book.bytes());
  host.fail({.step = Step::kOpen, .forGood = true});
  EXPECT_FALSE(readClean(host, book.sheetOffset()).opened);
  host.logging = true;
  EXPECT_FALSE(listSheets(host).has_value());
  EXPECT_THAT(host.log, ElementsAre("calloc", "open", "close", "free"));
  host.logging = false;
  host.clearFault();
  EXPECT_FALSE(readClean(host, 1u << 30).opened);
  EXPECT_TRUE(readClean(host, 0).opened) << "from the file's first record to its first cell";
}

// A worksheet with one record whose body read comes one byte short. That byte and the three behind
// the body then are the header of an empty record: the file goes on soundly for whoever reads on.
SheetRun readShortBody(unsigned type, bool inSheet, size_t bodyRead) {
  NotebookBuilder book;
  const Body body = Body().fill(17).u8(0xE7);
  if (type != rec::kHeader) book.header();
  if (inSheet) book.sheetStart();
  book.record(type, body).raw(Body().u8(3).u16(0).bytes());
  if (!inSheet) book.sheetStart();
  // Read without the fault, the three bytes and the next one are a header whose body ends at mark.
  const size_t mark = book.bytes().size() + 1 + 256 * rec::kLabel;
  book.label({0, 9}, "after").sheetEnd();
  book.raw(Body().fill(mark - book.bytes().size()).bytes()).label({0, 9}, "after").sheetEnd();
  RecordingHost host(book.bytes());
  host.fail({.step = Step::kRead, .nth = bodyRead, .shortBy = 1});
  const SheetRun run = readClean(host, book.sheetOffset());
  EXPECT_TRUE(host.faultMet());
  return run;
}

TEST(Opening, AFailedBodyReadFailsAllButTheRecordsThatMayBeLost) {
  for (const unsigned type : {6u, 37u, 38u, 76u, 206u, 207u, 208u, 230u, 232u, 257u, 258u, 265u})
    EXPECT_FALSE(readShortBody(type, false, 5).opened) << type;
  EXPECT_TRUE(readShortBody(rec::kHeader, false, 3).opened);
  for (const unsigned type : {150u, 210u, 212u, 216u, 222u, 224u, 231u})
    EXPECT_FALSE(readShortBody(type, true, 7).opened) << type;
  for (const unsigned type : {214u, 220u, 261u})
    EXPECT_THAT(readShortBody(type, true, 7).kinds(), ElementsAre(10u, 15u)) << type;
}

TEST(Cells, AFailedBodyReadEndsTheSheetExceptForABlankCell) {
  for (const unsigned type : {13u, 14u, 15u, 16u, 51u, 203u})
    EXPECT_THAT(readShortBody(type, true, 9).kinds(), ElementsAre(10u)) << type;
  EXPECT_THAT(readShortBody(12, true, 9).kinds(), ElementsAre(10u, 15u));
}

TEST(Opening, EveryFailedSeekEndsWhatAskedForIt) {
  // Sound also for a reader that goes on where it stands: the first worksheet record is empty, and
  // the first cell's body is the header of an empty record.
  NotebookBuilder book;
  book.header().record(999, Body().fill(7)).record(rec::kSheetStart).record(888, Body().fill(3));
  book.record(rec::kBlank, Body().u16(999).u16(0)).label({0, 0}, "cell").sheetEnd();
  // 1 undoes the look-ahead, 2 to 5 belong to the opening, 6 to 8 to the way to the first cell.
  for (size_t nth = 2; nth <= 8; ++nth) {
    RecordingHost host(book.bytes());
    host.fail({.step = Step::kSeek, .nth = nth});
    const SheetRun run = readClean(host, book.sheetOffset());
    EXPECT_EQ(run.opened, nth >= 6) << nth;
    EXPECT_EQ(run.items.size(), nth >= 6 ? 1u : 0u) << nth;
    EXPECT_TRUE(host.faultMet());
  }
  EXPECT_EQ(readBook(book).items.size(), 3u);
}

TEST(Closing, GivesTheListsBackInOrderNewestNodeFirst) {
  NotebookBuilder book;
  book.header().font(8, 0, "A").font(9, 0, "B").namedStyle(1, 1, "A").namedStyle(2, 1, "B");
  book.style().style().userFormat(1, "N0").userFormat(2, "N1").settings(true);
  book.notebookText(rec::kText37, "a").notebookText(rec::kText38, "b").sheetStart();
  book.rowHeight(1, 300).rowHeight(2, 300).sheetEnd();
  const char* const names[] = {"sheet",    "font 1",  "font 2",  "named 1", "name 1",   "named 2",
                               "name 2",   "style 1", "page",    "style 2", "format 1", "text 1",
                               "format 2", "text 2",  "text 37", "text 38", "row 1",    "row 2"};
  static SSMemoryPool pool;
  static std::vector<void*> taken, given;
  RecordingHost host(book.bytes());
  pool = host.services()->pool;
  host.services()->pool.alloc = [](SSMemoryPool* self, size_t size) {
    return taken.emplace_back(pool.alloc(self, size));
  };
  host.services()->pool.free = [](SSMemoryPool* self, void* block) {
    given.push_back(block);
    pool.free(self, block);
  };
  QPSReader* reader =
      QPSAllocateReader(nullptr, nullptr, host.stream(), host.services(), nullptr, nullptr);
  QPSSheet* sheet = QPSInitSheet(reader, host.itemContext(), book.sheetOffset(),
                                 RecordingHost::itemAlloc, nullptr);
  ASSERT_EQ(taken.size(), std::size(names));
  EXPECT_EQ(QPSCloseSheet(sheet), 0);
  std::vector<std::string> order;
  for (void* block : given)
    order.emplace_back(names[std::find(taken.begin(), taken.end(), block) - taken.begin()]);
  EXPECT_THAT(order, ElementsAre("font 2", "font 1", "name 2", "named 2", "name 1", "named 1",
                                 "style 2", "style 1", "page", "row 2", "row 1", "text 2",
                                 "format 2", "text 1", "format 1", "text 38", "text 37", "sheet"));
  QPSCloseReader(reader);
}

TEST(RecordStream, KeepsTheFirst5120BytesOfABody) {
  for (const size_t size : {5119u, 5120u, 5121u, 65535u}) {
    SCOPED_TRACE(size);
    NotebookBuilder book;
    book.header().sheetStart();
    book.record(rec::kLabel, cellBody({0, 0}).u8(0).fill(size - 7, 'x')).label({0, 1}, "next");
    const auto texts = textsOf(book.sheetEnd());
    ASSERT_EQ(texts.size(), 2u);
    EXPECT_EQ(texts[0], std::string(std::min<size_t>(size, 5120) - 7, 'x'));
    EXPECT_EQ(texts[1], "next");
  }
  // The body comes short, or the seek past the rest fails and the rest then reads as empty
  // records.
  for (const unsigned type : {216u, 261u}) {
    for (const Fault& fault : {Fault{.step = Step::kSeek, .nth = 4},
                               Fault{.step = Step::kRead, .nth = 7, .shortBy = 4}}) {
      NotebookBuilder book;
      book.header().sheetStart().record(type, Body().fill(5120 + 880)).sheetEnd();
      RecordingHost host(book.bytes());
      host.fail(fault);
      const SheetRun run = readClean(host, book.sheetOffset());
      EXPECT_EQ(run.opened, type == 261);
      EXPECT_EQ(run.items.size(), type == 261 ? 1u : 0u) << "no row from a body that failed";
    }
  }
}

}  // namespace
}  // namespace qps::test
