// SPDX-License-Identifier: MIT
//
// QPSGetCellValue: what each record holds, and what each format is. At which times there is a value
// is tested for every sheet that readSheet reads.
#include "tests/reader/read_book.h"

namespace qps::test {
namespace {

std::vector<std::string> contentsOf(const NotebookBuilder& book) {
  std::vector<std::string> result;
  for (const CellValue& value : readBook(book).values)
    result.push_back(value.contents);
  return result;
}

TEST(CellValue, IsWhatTheRecordHolds) {
  const struct {
    const char* name;
    Add fill;
    std::vector<std::string> expected;
  } rows[] = {
      {"blank", [](auto& b) { b.blank({}); }, {"blank"}},
      {"integer",
       [](auto& b) { b.integer({}, 42).integer({}, -32768); },
       {"number 42", "number -32768"}},
      {"number",
       [](auto& b) { b.number({}, 0.1).number({}, -1e300).number({}, -0.0); },
       {"number 0.10000000000000001", "number -1.0000000000000001e+300", "number -0"}},
      {"no number", [](auto& b) { b.number({}, -HUGE_VAL); }, {"number -inf"}},
      {"label", [](auto& b) { b.label({}, "7").label({}, ""); }, {"text '7'", "text ''"}},
      {"formula", [](auto& b) { b.formula({}, 2.5); }, {"formula number 2.5"}},
      {"formula with a string",
       [](auto& b) { b.formulaWithString({}).string({}, "abc").integer({}, 1); },
       {"formula text 'abc'", "number 1"}},
      {"formula special results",
       [](auto& b) {
         b.formulaSpecial({}, 0).formulaSpecial({}, 0, 7, 0xFFF0).formulaSpecial({}, 1);
         b.formulaSpecial({}, 3, 42).formulaSpecial({}, 3, 0xFFFF, 0xFFF0);
       },
       {"formula error", "formula error", "formula number 196650", "formula number 262143"}},
      {"records among the cells",
       [](auto& b) { b.label({}, "a").record(999, Body().fill(40)).columnWidth(1, 5).blank({}); },
       {"text 'a'", "blank"}},
      {"a text up to a zero byte, or to the end of its record",
       [](auto& b) {
         b.record(rec::kLabel, cellBody({}).u8('\'').zeroText("abc").text("def"));
         b.record(rec::kLabel, cellBody({}).u8('\'').text("abc")).record(rec::kLabel, cellBody({}));
       },
       {"text 'abc'", "text 'abc'", "text ''"}},
      {"bodies cut short",
       [](auto& b) {
         b.record(rec::kNumber, cellBody({}).fill(6).u8(0xF0)).record(rec::kInteger);
         b.record(rec::kFormula, cellBody({}));
       },
       {"number 3.6455610097781987e-304", "number 0", "formula number 0"}},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(contentsOf(bookOf(nothing, row.fill)), row.expected) << row.name;
    const auto hide = [](auto& b) { b.style({.format = 4}); };
    EXPECT_EQ(contentsOf(bookOf(hide, row.fill)), row.expected) << row.name << ", hidden format";
    const auto inHiddenColumn = [&](auto& b) { row.fill(b.hiddenColumns(Body().u8(1))); };
    EXPECT_EQ(contentsOf(bookOf(nothing, inHiddenColumn)), row.expected) << row.name << ", width 0";
  }
}

constexpr char kDateAndTime[] = "TMM' 'DD' 'YY' 'HH':'MM':'SS' 'AMPM";

TEST(CellValue, SaysWhichFormatIsInForce) {
  const struct {
    unsigned format;
    const char* userFormat;  // of code 113
    const char* styleName;
    const char* expected;
  } rows[] = {
      {0, "", "Normal", "0.0 style=Normal"},
      {1, "", "", "1.0 style="},
      {4, "", "Date", "4.0 style=Date"},
      {5, "", "S", "5.0 date style=S"},
      {9, "", "S", "9.0 date style=S"},
      {10, "", "S", "10.0 time style=S"},
      {13, "", "S", "13.0 time style=S"},
      {14, "", "S", "14.0 date style=S"},
      {15, "", "S", "15.0 date style=S"},
      {0x12, "", "S", "16.2 style=S"},
      {0x2F, "", "S", "32.15 style=S"},
      {0x32, "", "S", "48.2 style=S"},
      {0x41, "", "S", "64.1 style=S"},
      {0x52, "", "S", "80.2 style=S"},
      {0x60, "", "S", "96.0 date style=S"},
      {0x70, "", "S", "112.0 style=S"},
      {0x70, "", "Date", "112.0 date style=Date"},
      {0x70, "", "DATE", "112.0 style=DATE"},
      {113, "TDD-Mon-YY", "S", "113.0 'TDD-Mon-YY' date style=S"},
      {113, "Twday", "S", "113.0 'Twday' date style=S"},
      {113, "THH:MM:SS", "S", "113.0 'THH:MM:SS' time style=S"},
      {113, "THH:MM:SS MM", "S", "113.0 'THH:MM:SS MM' date time style=S"},
      {113, "TAMPM", "S", "113.0 'TAMPM' time style=S"},
      {113, "T'HH'", "S", "113.0 'T'HH'' style=S"},
      {113, "TD D D D D D D D D D D HH", "S",
       "113.0 'TD D D D D D D D D D D HH' date time style=S"},
      {113, "TWeekday", "S", "113.0 'TWeekday' date style=S"},
      {113, kDateAndTime, "S", "113.0 'TMM' 'DD' 'YY' 'HH':'MM':'SS' 'AMPM' date time style=S"},
      {113, "N0.00' D'", "S", "113.0 'N0.00' D'' style=S"},
      {113, "DD-MM-YY", "S", "113.0 'DD-MM-YY' style=S"},
      // A style named "Date" shows the long date, but for the texts that are recognised whole.
      {113, "N0.00", "Date", "113.0 'N0.00' date style=Date"},
      {113, "THH:MM", "Date", "113.0 'THH:MM' date style=Date"},
      {113, "N9;N0;N'-'9", "Date", "113.0 'N9;N0;N'-'9' style=Date"},
      {113, kDateAndTime, "Date",
       "113.0 'TMM' 'DD' 'YY' 'HH':'MM':'SS' 'AMPM' date time style=Date"},
      {114, "TDD", "S", "114.0 style=S"},  // no text of its own
      {114, "TDD", "Date", "114.0 date style=Date"},
  };
  for (const auto& row : rows) {
    const NotebookBuilder book = bookOf(
        [&](NotebookBuilder& b) {
          b.userFormat(1, row.userFormat).style().namedStyle(7, 1, row.styleName);
          b.style({.format = row.format, .namedStyle = 7});
        },
        [](NotebookBuilder& b) { b.number({.style = 2}, 45296.5).label({.style = 2}, "a"); });
    for (const CellValue& value : readBook(book).values)
      EXPECT_EQ(value.format, row.expected) << row.format << row.userFormat << row.styleName;
  }
}

TEST(CellValue, FindsTheFormatAsTheCellDid) {
  const auto formatsOf = [](const Add& define) {
    std::vector<std::string> result;
    const auto fill = [](auto& b) { b.number({.style = 0}, 1).number({.style = 2}, 1); };
    for (const CellValue& value : readBook(bookOf(define, fill)).values)
      result.push_back(value.format);
    return result;
  };
  EXPECT_THAT(formatsOf(nothing), ElementsAre("0.0", "0.0"));
  EXPECT_THAT(formatsOf([](auto& b) { b.userFormat(5, "TDD"); }),
              ElementsAre("5.0 date", "5.0 date"));
  EXPECT_THAT(formatsOf([](auto& b) { b.style({.format = 0x12}); }), ElementsAre("16.2", "0.0"));
  EXPECT_THAT(formatsOf([](auto& b) {
                b.userFormat(1, "TDD").style({.format = 113}).namedStyle(1, 1, "Base");
                b.style({.format = 115, .namedStyle = 1});
              }),
              ElementsAre("113.0 'TDD' date", "115.0 'TDD' date style=Base"))
      << "the base style's text stands in";
}

// What a cell's style means is then worked out anew for each cell, and kept nowhere.
TEST(CellValue, IsTheSameWhenThePoolHasNoRoomLeft) {
  const NotebookBuilder book = everyRecordNotebook();
  RecordingHost host(book.bytes());
  const std::vector<CellValue> expected = readClean(host, book.sheetOffset()).values;
  QPSReader* reader =
      QPSAllocateReader(nullptr, nullptr, host.stream(), host.services(), nullptr, nullptr);
  QPSSheet* sheet = QPSInitSheet(reader, host.itemContext(), book.sheetOffset(),
                                 RecordingHost::itemAlloc, nullptr);
  host.fail({.step = Step::kPoolBlock, .forGood = true});
  std::vector<CellValue> values;
  SSItem item;
  QPSCellValue value;
  while (QPSProcessSheet(sheet, &item) == 0) {
    if (QPSGetCellValue(sheet, &value) != 0) continue;
    values.push_back(describe(value));
    if (item.cell.text != nullptr) host.freeItemText(item.cell.text);
  }
  EXPECT_EQ(values.size(), expected.size());
  EXPECT_TRUE(values == expected);
  QPSCloseSheet(sheet);
  QPSCloseReader(reader);
  EXPECT_EQ(QPSGetCellValue(nullptr, &value), 1u);
}

}  // namespace
}  // namespace qps::test
