// SPDX-License-Identifier: MIT
//
// The worksheet's layout records: sizes, column widths and the order of the row heights.
#include <list>
#include <random>

#include "tests/reader/read_book.h"

namespace qps::test {
namespace {

TEST(Layout, SizesAndDimensionsReachTheSheetInformation) {
  const struct {
    const char* name;
    Add fill;
    const char* expected;
  } rows[] = {
      {"table", [](auto& b) { b.table(3, 20); }, "rows=20 columns=3 "},
      {"the last entry of a table",
       [](auto& b) { b.record(150, Body().u16(1).u16(2).u16(3).u16(10).u16(20).u16(30)); },
       "rows=31 columns=11 "},
      {"a cut entry", [](auto& b) { b.record(150, Body().u16(1).u16(2).u16(3).u16(10)); },
       "rows=1 columns=11 "},
      {"an empty table", [](auto& b) { b.record(150); }, "rows=0 columns=0 "},
      {"a full table", [](auto& b) { b.table(65536, 65535); }, "rows=65535 columns=0 "},
      {"a table that is longer than what is kept",
       [](auto& b) { b.record(150, Body().fill(5118, 7).u16(0x0102).u16(9).u16(9)); },
       "rows=1 columns=259 "},
      {"width", [](auto& b) { b.defaultColumnWidth(0x0123); }, "width=291 "},
      {"width with bit 15", [](auto& b) { b.defaultColumnWidth(0xF123); }, "width=291 "},
      {"a large width", [](auto& b) { b.defaultColumnWidth(0x7FFF); }, "width=32767 "},
      {"a cut width", [](auto& b) { b.record(212, Body().u8(50)); }, "width=50 "},
      {"height", [](auto& b) { b.defaultRowHeight(0x9234); }, "height=564 "},
      {"no height", [](auto& b) { b.record(210); }, "height=0 "},
      {"unkept and unknown records", [](auto& b) { b.unkept224().record(999).dimensions(1, 1); },
       "rows=254 columns=254 "}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    EXPECT_THAT(sheetInfoOf(bookOf(nothing, row.fill)), HasSubstr(row.expected));
  }
}

std::vector<std::string> itemsOf(const Add& fill, uint32_t kind) {
  return lines(readBook(bookOf(nothing, fill)).only(kind));
}

TEST(Layout, ColumnWidthsComeInRuns) {
  const auto run = [](unsigned first, unsigned last, unsigned width) {
    return "11 first=" + std::to_string(first) + " last=" + std::to_string(last) +
           " value=" + std::to_string(width);
  };
  const struct {
    const char* name;
    Add fill;
    std::vector<std::string> expected;
  } rows[] = {
      {"none", nothing, {}},
      {"two runs",
       [](auto& b) {
         b.columnWidth(1, 500).columnWidth(2, 500).columnWidth(3, 500).columnWidth(4, 300);
       },
       {run(2, 4, 500), run(5, 5, 300)}},
      {"a gap",
       [](auto& b) { b.columnWidth(0, 500).columnWidth(7, 500); },
       {run(1, 1, 500), run(8, 8, 500)}},
      {"the last column", [](auto& b) { b.columnWidth(255, 100); }, {run(256, 256, 100)}},
      {"the column before it", [](auto& b) { b.columnWidth(254, 100); }, {run(255, 255, 100)}},
      {"all columns",
       [](auto& b) {
         for (unsigned i = 0; i < 256; ++i)
           b.columnWidth(i, 100);
       },
       {run(1, 256, 100)}},
      {"the default spelled out",
       [](auto& b) { b.columnWidth(3, 964).columnWidth(5, 0x83C4); },
       {}},
      {"the size rule",
       [](auto& b) { b.columnWidth(3, 0x8123).columnWidth(4, 0x7FFF); },
       {run(4, 4, 0x123), run(5, 5, 0x7FFF)}},
      {"the last width", [](auto& b) { b.columnWidth(3, 1).columnWidth(3, 2); }, {run(4, 4, 2)}},
      {"a later default",
       [](auto& b) { b.columnWidth(3, 500).columnWidth(4, 964).defaultColumnWidth(500); },
       {run(5, 5, 964)}},
      {"beyond the table", [](auto& b) { b.columnWidth(256, 1).columnWidth(65535, 1); }, {}},
      {"a cut record",
       [](auto& b) { b.record(216, Body().u16(2)).record(216); },
       {run(1, 1, 0), run(3, 3, 0)}},
      {"hidden", [](auto& b) { b.hiddenColumns(Body().u8(0x41)); }, {run(1, 1, 0), run(7, 7, 0)}},
      {"hidden in each byte",
       [](auto& b) { b.hiddenColumns(Body().u8(0x80).u8(0x01)); },
       {run(8, 9, 0)}},
      {"hidden up to the last column and beyond",
       [](auto& b) { b.hiddenColumns(Body().fill(31).u8(0x80).fill(5089, 0xFF)); },
       {run(256, 256, 0)}},
      {"hidden and shown again",
       [](auto& b) { b.hiddenColumns(Body().u8(1)).columnWidth(0, 964); },
       {}}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    EXPECT_EQ(itemsOf(row.fill, SSItemKindColumnWidths), row.expected);
  }
}

struct Row {
  unsigned number, height;
  bool operator==(const Row&) const = default;
};

std::ostream& operator<<(std::ostream& out, const Row& row) {
  return out << row.number << ":" << row.height;
}

std::vector<Row> rowsOf(const SheetRun& run) {
  std::vector<Row> rows;
  for (const Item& item : run.only(SSItemKindRowHeight)) {
    EXPECT_EQ(+item.raw.rowHeight.first, +item.raw.rowHeight.last);
    rows.push_back({item.raw.rowHeight.first, item.raw.rowHeight.value});
  }
  return rows;
}

std::vector<Row> rowsOf(const NotebookBuilder& book) {
  return rowsOf(readBook(book));
}

TEST(Layout, RowsComeNewestFirst) {
  const struct {
    const char* name;
    Add fill;
    std::vector<Row> expected;
  } rows[] = {
      {"two rows", [](auto& b) { b.rowHeight(4, 300).rowHeight(8, 0x8140); }, {{9, 320}, {5, 300}}},
      {"the default height", [](auto& b) { b.rowHeight(4, 244).rowHeights(0, 3, 244); }, {}},
      {"the default at that moment",
       [](auto& b) {
         b.rowHeight(4, 300).defaultRowHeight(300).rowHeight(5, 300).rowHeight(6, 244);
       },
       {{7, 244}, {5, 300}}},
      {"a row twice", [](auto& b) { b.rowHeight(1, 300).rowHeight(1, 400); }, {{2, 400}, {2, 300}}},
      {"a range", [](auto& b) { b.rowHeights(2, 4, 300); }, {{5, 300}, {4, 300}, {3, 300}}},
      {"a range backwards", [](auto& b) { b.rowHeights(4, 2, 300); }, {}},
      {"a range to the last row",
       [](auto& b) { b.rowHeights(65533, 65535, 300); },
       {{65536, 300}, {65535, 300}, {65534, 300}}},
      {"cut records",
       [](auto& b) { b.record(214).record(261, Body().u16(3).u16(3)); },
       {{4, 0}, {1, 0}}},
      {"hidden",
       [](auto& b) { b.hiddenRows(Body().u8(0x05).u8(0x80)); },
       {{16, 0}, {3, 0}, {1, 0}}},
      {"hidden in its place",
       [](auto& b) { b.rowHeight(1, 300).rowHeight(0, 400).hiddenRows(Body().u8(2)); },
       {{1, 400}, {2, 0}}},
      {"the newest of a row is hidden",
       [](auto& b) { b.rowHeight(1, 300).rowHeight(1, 400).hiddenRows(Body().u8(2)); },
       {{2, 0}, {2, 300}}},
      {"within a range",
       [](auto& b) { b.rowHeights(0, 2, 300).hiddenRows(Body().u8(0x0A)); },
       {{4, 0}, {3, 300}, {2, 0}, {1, 300}}},
      {"hidden twice",
       [](auto& b) { b.hiddenRows(Body().u8(2)).hiddenRows(Body().u8(3)); },
       {{1, 0}, {2, 0}}},
      {"a height after hiding",
       [](auto& b) { b.hiddenRows(Body().u8(2)).rowHeight(1, 300); },
       {{2, 300}, {2, 0}}},
      {"a height after hiding in its place",
       [](auto& b) { b.rowHeight(8, 300).hiddenRows(Body().u8(0).u8(1)).rowHeight(8, 400); },
       {{9, 400}, {9, 0}}},
      {"the last bits that are kept",
       [](auto& b) { b.hiddenRows(Body().fill(5119).u8(0x80).fill(9, 0xFF)); },
       {{40960, 0}}}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    EXPECT_EQ(rowsOf(bookOf(nothing, row.fill)), row.expected);
  }
}

TEST(Layout, AnyMixOfRowRecordsComesAsFromOneListOfNodes) {
  std::minstd_rand random(20);
  const auto below = [&random](unsigned limit) { return static_cast<unsigned>(random() % limit); };
  for (int round = 0; round < 300; ++round) {
    NotebookBuilder book;
    book.header().sheetStart();
    std::list<Row> model;  // what a list of one node a row would hold, front first
    unsigned standard = 244;
    const unsigned records = 1 + below(9);
    for (unsigned i = 0; i < records; ++i) {
      const unsigned first = below(40), last = below(40), height = 244 + below(3);
      switch (below(5)) {
        case 0:
          book.defaultRowHeight(standard = height);
          break;
        case 1:
          book.rowHeight(first, height);
          if (height != standard) model.push_front({first + 1, height});
          break;
        case 2:
          book.rowHeights(first, last, height);
          for (unsigned row = first; row <= last && height != standard; ++row)
            model.push_front({row + 1, height});
          break;
        default: {
          Body bitmap;
          for (unsigned row = 1; row <= 40; row += 8) {
            const unsigned bits = below(256) & below(256) & below(256);
            bitmap.u8(bits);
            for (unsigned bit = 0; bit < 8; ++bit) {
              const auto found = std::find_if(model.begin(), model.end(), [&](const Row& node) {
                return node.number == row + bit;
              });
              if ((bits >> bit & 1) == 0) continue;
              if (found != model.end()) {
                found->height = 0;
              } else {
                model.push_front({row + bit, 0});
              }
            }
          }
          book.hiddenRows(bitmap);
        }
      }
    }
    ASSERT_EQ(rowsOf(book.sheetEnd()), std::vector<Row>(model.begin(), model.end())) << round;
  }
}

TEST(Layout, AFailedAllocationInARangeKeepsTheRowsBefore) {
  // Whatever is allocated: what remains is a part of the rows, in their order, and the sheet opens.
  const NotebookBuilder book = bookOf(
      nothing, [](auto& b) { b.rowHeight(9, 300).rowHeights(2, 4, 300).hiddenRows(Body().u8(1)); });
  const std::vector<Row> whole = rowsOf(book);
  ASSERT_EQ(whole.size(), 5u);
  for (size_t nth = 2;; ++nth) {
    RecordingHost host(book.bytes());
    host.fail({.step = Step::kPoolBlock, .nth = nth, .forGood = true});
    const SheetRun run = readClean(host, book.sheetOffset());
    if (!host.faultMet()) break;
    auto at = whole.begin();
    for (const Row& row : rowsOf(run)) {
      at = std::find(at, whole.end(), row);
      ASSERT_NE(at, whole.end());
    }
  }
}

TEST(Layout, RowsHideFromAnExhaustedPool) {
  const struct {
    const char* name;
    size_t blocks;  // that the pool has for rows
    Add fill;
    std::vector<Row> expected;
  } rows[] = {{"rows of their own",
               2,
               [](auto& b) { b.rowHeight(1, 300).rowHeight(4, 300).hiddenRows(Body().u8(0x12)); },
               {{5, 0}, {2, 0}}},
              {"rows of a range",
               1,
               [](auto& b) { b.rowHeights(1, 3, 300).hiddenRows(Body().u8(0x0C)); },
               {{4, 0}, {3, 0}, {2, 300}}},
              {"no block for a row that is not listed",
               1,
               [](auto& b) { b.rowHeight(1, 300).hiddenRows(Body().u8(0x0F)); },
               {{2, 0}}},
              {"a block for the first of two",
               2,
               [](auto& b) { b.rowHeight(1, 300).hiddenRows(Body().u8(0x0F)); },
               {{1, 0}, {2, 0}}},
              {"no block for what follows",
               1,
               [](auto& b) { b.rowHeight(1, 300).hiddenRows(Body().u8(2)).rowHeight(1, 400); },
               {{2, 0}}}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    const NotebookBuilder book = bookOf(nothing, row.fill);
    RecordingHost host(book.bytes());
    // The handle and the sheet come first.
    host.fail({.step = Step::kPoolBlock, .nth = row.blocks + 3, .forGood = true});
    EXPECT_EQ(rowsOf(readClean(host, book.sheetOffset())), row.expected);
  }
}

TEST(Layout, ColumnColoursAreReportedWhenAllColumnsShareOne) {
  const auto colourOf = [](const Add& fill) {
    const std::string info = sheetInfoOf(bookOf(
        [](auto& b) {
          b.style({.colour1 = 4, .blend = 1}).style({.colour2 = 5}).style({.colour2 = 5});
        },
        fill));
    return info.substr(info.find("colour="));
  };
  const auto all = [](unsigned first, unsigned style) {
    return [first, style](NotebookBuilder& b) {
      for (unsigned i = first; i < 256; ++i)
        b.columnStyle(i, style);
    };
  };
  EXPECT_EQ(colourOf(all(0, 1)), "colour=FF");
  EXPECT_EQ(colourOf(all(0, 0)), "colour=FF") << "style 0 counts as style 1";
  EXPECT_EQ(colourOf(all(0, 2)), "colour=FF00");
  EXPECT_EQ(colourOf(all(1, 1)), "colour=FFFFFFFF");
  EXPECT_EQ(colourOf([](auto& b) { b.columnStyle(0, 1); }), "colour=FFFFFFFF");
  EXPECT_EQ(colourOf([&](auto& b) { all(0, 1)(b), b.columnStyle(255, 2); }), "colour=FFFFFFFF");
  EXPECT_EQ(colourOf([&](auto& b) { all(0, 2)(b), b.columnStyle(7, 3).columnStyle(256, 1); }),
            "colour=FF00");
  EXPECT_EQ(colourOf([&](auto& b) { all(0, 2)(b), b.columnStyle(0, 99); }), "colour=FF00");
  EXPECT_EQ(colourOf([&](auto& b) { all(1, 1)(b), b.record(231); }), "colour=FF")
      << "a body without bytes is column 0 with style 0";
}

}  // namespace
}  // namespace qps::test
