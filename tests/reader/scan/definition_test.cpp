// SPDX-License-Identifier: MIT
//
// The notebook's definition records, seen through the items that they shape.
#include "tests/reader/read_book.h"

namespace qps::test {
namespace {

TEST(Definitions, TheSheetInformationHasItsDefaults) {
  const SheetRun run = readBook(bookOf(nothing, nothing));
  ASSERT_EQ(run.items.size(), 1u);
  EXPECT_EQ(describe(run.items[0]),
            "10 marker=1 rows=254 columns=254 flag257=0 flag258=0 width=964 height=244 "
            "fixed=576,576,480,480,0 present=1 font=Arial size=10 attr=0,0,0,0 extra=0,18 "
            "colour=FFFFFFFF");
  const char* name = run.items[0].raw.sheetInfo.font.name;
  EXPECT_EQ(std::string(name, 32), "Arial" + std::string(27, '\0'));
}

TEST(Definitions, ReachTheSheetInformation) {
  const struct {
    const char* name;
    Add define;
    const char* expected;
  } rows[] = {
      {"dimensions", [](auto& b) { b.dimensions(7, 300); }, "rows=300 columns=7 "},
      {"256 columns", [](auto& b) { b.dimensions(256, 8192); }, "rows=8192 columns=256 "},
      {"only the low byte of the columns counts", [](auto& b) { b.dimensions(0x0305, 2); },
       "rows=2 columns=5 "},
      {"65536 rows wrap", [](auto& b) { b.dimensions(1, 65536); }, "rows=0 columns=1 "},
      {"the last dimensions", [](auto& b) { b.dimensions(2, 2).dimensions(3, 4); },
       "rows=4 columns=3 "},
      {"no body", [](auto& b) { b.record(6); }, "rows=1 columns=1 "},
      {"flags before the switch", [](auto& b) { b.flag(257, 0).flag(258, 0).settings(true); },
       "flag257=0 flag258=0"},
      {"flag 257", [](auto& b) { b.settings(true).flag(257, 0).flag(258, 2); },
       "flag257=1 flag258=0"},
      {"flag 258", [](auto& b) { b.settings(true).flag(257, 1).flag(258, 0); },
       "flag257=0 flag258=1"},
      {"the last flag", [](auto& b) { b.settings(true).flag(257, 0).flag(257, 9); }, "flag257=0"},
      {"flags without bodies", [](auto& b) { b.settings(true).record(257).record(258); },
       "flag257=1 flag258=1"},
      {"flags after the switch went off",
       [](auto& b) { b.settings(true).settings(false).flag(257, 0).flag(258, 0); },
       "flag257=0 flag258=0"},
      {"the other definitions", [](auto& b) { b.valueTable().refusal(0).record(999); },
       "rows=254 columns=254 flag257=0"}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    EXPECT_THAT(sheetInfoOf(bookOf(row.define, nothing)), HasSubstr(row.expected));
  }
}

TEST(Definitions, TextsAreKeptWhileTheSwitchIsOn) {
  const std::string text(5000, 't');
  const struct {
    const char* name;
    Add define;
    std::vector<std::string> expected;
  } rows[] = {
      {"before the switch", [](auto& b) { b.notebookText(37, "a").notebookText(38, "b"); }, {}},
      {"after it went off",
       [](auto& b) {
         b.settings(true).settings(false).notebookText(37, "a").notebookText(38, "b");
       },
       {}},
      {"38 comes first",
       [](auto& b) { b.settings(true).notebookText(37, "a").notebookText(38, "b"); },
       {"13 text='b'", "14 text='a'"}},
      {"the last of each",
       [](auto& b) { b.settings(true).notebookText(37, "a").notebookText(37, "aa"); },
       {"14 text='aa'"}},
      {"an empty one", [](auto& b) { b.settings(true).notebookText(38, "").record(37); }, {}},
      {"an empty one after a full one",
       [](auto& b) { b.settings(true).notebookText(38, "b").notebookText(38, ""); },
       {}},
      {"no zero byte",
       [&](auto& b) { b.settings(true).record(38, Body().text(text)); },
       {"13 text='" + text + "'"}}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    SheetRun run = readBook(bookOf(row.define, nothing));
    run.items.erase(run.items.begin());
    EXPECT_EQ(lines(run.items), row.expected);
  }
}

// The font block of a label whose style names font `number`.
std::string fontOf(const Add& define, unsigned number) {
  const auto cells = cellsOf(bookOf(
      [&](auto& b) {
        define(b);
        b.style({.font = number});
      },
      [](auto& b) {
        b.label({0, 0}, "x");
      }));
  const std::string line = describe(cells.at(0));
  const size_t from = line.find("font=");
  return line.substr(from, line.find(" spare") - from);
}

TEST(Definitions, FontsAreNumberedInFileOrder) {
  const Add three = [](auto& b) {
    b.font(8, 1, "One").font(300, 2, "Two").font(12, 0xDC, "Three");
  };
  EXPECT_EQ(fontOf(three, 1), "font=One size=8 attr=1,0,0,0 extra=1,0");
  EXPECT_EQ(fontOf(three, 2), "font=Two size=44 attr=0,1,0,0 extra=1,0");
  EXPECT_EQ(fontOf(three, 3), "font=Three size=12 attr=0,0,1,0 extra=1,0");
  EXPECT_EQ(fontOf(three, 4), "font=- size=- attr=-,-,-,- extra=-,-");
  EXPECT_EQ(fontOf(three, 0), "font=- size=- attr=-,-,-,- extra=-,-");
  EXPECT_EQ(fontOf([](auto& b) { b.font(9, 0x20, "Struck"); }, 1),
            "font=Struck size=9 attr=0,0,0,1 extra=1,0");
  const std::string name40 = "0123456789012345678901234567890123456789";
  EXPECT_EQ(fontOf([&](auto& b) { b.font(9, 0, name40); }, 1),
            "font=" + name40.substr(0, 31) + " size=9 attr=0,0,0,0 extra=1,0");
  EXPECT_EQ(fontOf([](auto& b) { b.record(207); }, 1), "font= size=0 attr=0,0,0,0 extra=1,0");
  EXPECT_EQ(fontOf([](auto& b) { b.record(207, Body().u16(7).u8(1).u8(0).text("Open")); }, 1),
            "font=Open size=7 attr=1,0,0,0 extra=1,0");

  const Add many = [](auto& b) {
    for (unsigned i = 1; i <= 257; ++i)
      b.font(i, 0, std::string("F").append(std::to_string(i)));
  };
  EXPECT_THAT(fontOf(many, 255), HasSubstr("F255 "));
  EXPECT_THAT(fontOf(many, 0), HasSubstr("F256 "));
  EXPECT_THAT(fontOf(many, 1), HasSubstr("F257 ")) << "the newest font of a number is the font";
}

TEST(Definitions, ARecord230AloneLeavesItsCodeInForce) {
  const auto textWith = [](unsigned index) {
    return textsOf(bookOf([index](auto& b) { b.userFormat(index, "N0.000"); },
                          [](auto& b) {
                            b.number({0, 0}, 2.25).label({0, 1}, "x");
                          }));
  };
  EXPECT_THAT(textWith(16), ElementsAre("2", "x"));
  EXPECT_THAT(textWith(0x0140), ElementsAre("225%", "x"));
  EXPECT_THAT(textWith(4), ElementsAre("(null)", "(null)"));
  EXPECT_THAT(textWith(200), ElementsAre("2.25", "x")) << "no style has selected its text";
}

TEST(Definitions, AFileWithoutAVersionShowsTheHoursOfADay) {
  for (const Add& version : {Add(nothing), Add([](auto& b) { b.record(0); })}) {
    NotebookBuilder book;
    version(book);
    book.style({.format = 13}).sheetStart().number({0, 0}, 0.75).sheetEnd();
    EXPECT_THAT(textsOf(book), ElementsAre("18:00"));
  }
}

}  // namespace
}  // namespace qps::test
