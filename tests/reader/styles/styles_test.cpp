// SPDX-License-Identifier: MIT
//
// Styles as cells show them: decoding, palette, blends, borders, fonts and base styles.
#include "tests/reader/read_book.h"

namespace qps::test {
namespace {

// The part of a number cell's line (or a label's) from `from` up to `to`.
std::string partOf(const Style& style, const char* from, const char* to, bool isLabel = false) {
  const auto cell = cellsOf(bookOf([&](auto& b) { b.style(style); },
                                   [&](auto& b) {
                                     isLabel ? b.label({0, 0}, "x") : b.integer({0, 0}, 1);
                                   }));
  const std::string line = describe(cell.at(0));
  const size_t start = line.find(from);
  return line.substr(start, line.find(to, start) - start);
}

TEST(Styles, ASheetWithoutStylesGivesTheDefaults) {
  const auto cells = cellsOf(bookOf([](auto& b) { b.font(10, 1, "Arial"); },
                                    [](auto& b) {
                                      b.label({0, 0}, "x").integer({1, 0}, 1);
                                    }));
  const std::string look =
      " align=8E fill=FFFFFFFF ink=0 bordered=0 borders=-,-,-,-,-,-,-,- present=0 font=- size=- "
      "attr=-,-,-,- extra=-,- spare=0,0,0 text=";
  EXPECT_THAT(lines(cells),
              ElementsAre("15 column=1 row=1" + look + "'x'", "15 column=2 row=1" + look + "'1'"));
}

TEST(Styles, AStyledCellHasAllItsFields) {
  const auto cells = cellsOf(bookOf(
      [](auto& b) {
        b.font(14, 0x27, "Times");
        b.style({.format = 0x21,
                 .horizontal = 2,
                 .vertical = 1,
                 .textFlag = true,
                 .colour1 = 4,
                 .colour2 = 6,
                 .blend = 2,
                 .textColour = 9,
                 .font = 1,
                 .lines = {0, 1, 2, 3},
                 .lineColours = {0, 1, 2, 3}});
      },
      [](auto& b) {
        b.number({0, 0}, 1.5);
      }));
  EXPECT_THAT(lines(cells),
              ElementsAre("15 column=1 row=1 align=25 fill=7F007F ink=FFFF bordered=1 "
                          "borders=0,FFFFFF,5,C0C0C0,8,808080,6,0 present=1 font=Times size=14 "
                          "attr=1,1,1,1 extra=1,0 spare=-,0,0 text='1.5E+00'"));
}

TEST(Styles, AlignmentHasThreePartsAndFollowsTheCellsClass) {
  const struct {
    unsigned horizontal, vertical;
    bool textFlag;
    const char *number, *label;
  } rows[] = {{0, 0, false, "8A", "8E"}, {1, 0, false, "8E", "8E"}, {2, 0, false, "86", "86"},
              {3, 0, false, "8A", "8A"}, {4, 0, false, "C2", "C2"}, {5, 0, false, "8A", "8E"},
              {6, 0, false, "C2", "C2"}, {7, 0, false, "8A", "8E"}, {3, 1, false, "89", "89"},
              {3, 2, false, "8B", "8B"}, {3, 3, false, "8A", "8A"}, {0, 0, true, "2A", "2E"},
              {4, 2, true, "63", "63"}};
  for (const auto& row : rows) {
    const Style style{
        .horizontal = row.horizontal, .vertical = row.vertical, .textFlag = row.textFlag};
    EXPECT_EQ(partOf(style, "align=", " "), std::string("align=") + row.number);
    EXPECT_EQ(partOf(style, "align=", " ", true), std::string("align=") + row.label);
  }
  // Blank and string cells align as texts, formulas as numbers; a label does not change a style.
  std::vector<unsigned> alignments;
  for (const Item& cell : cellsOf(bookOf([](auto& b) { b.style(); },
                                         [](auto& b) {
                                           b.blank({0, 0}).number({0, 1}, 1).string({0, 2}, "x");
                                           b.formula({0, 3}, 1).formulaSpecial({0, 4}, 0);
                                         }))) {
    alignments.push_back(cell.alignment());
  }
  EXPECT_THAT(alignments, ElementsAre(0x8Eu, 0x8Au, 0x8Eu, 0x8Au, 0x8Au));
}

TEST(Styles, PaletteAndBlends) {
  const char* const palette[] = {"FFFFFF", "C0C0C0", "808080", "0",     "FF",     "FF00",
                                 "FF0000", "FFFF00", "FF00FF", "FFFF",  "800080", "8000",
                                 "8080",   "800000", "80",     "808000"};
  for (unsigned i = 0; i < 16; ++i) {
    EXPECT_EQ(partOf({.colour2 = i, .textColour = i}, "fill=", " bordered"),
              std::string("fill=") + palette[i] + " ink=" + palette[i]);
  }
  const struct {
    unsigned colour1, colour2;
    const char* blends[8];
  } rows[] = {
      {3, 0, {"FFFFFF", "0", "7F7F7F", "BFBFBF", "A5A5A5", "3F3F3F", "595959", "FFFFFF"}},
      {4, 13, {"800000", "FF", "40007F", "60003F", "530059", "2000BF", "2C00A5", "800000"}},
      {11, 1, {"C0C0C0", "8000", "60A060", "90B090", "7CA87C", "309030", "439643", "C0C0C0"}}};
  for (const auto& row : rows) {
    for (unsigned code = 0; code < 8; ++code) {
      EXPECT_EQ(
          partOf({.colour1 = row.colour1, .colour2 = row.colour2, .blend = code}, "fill=", " "),
          std::string("fill=") + row.blends[code])
          << code;
    }
  }
}

TEST(Styles, OneLineMakesABorderOfFourSlots) {
  EXPECT_EQ(partOf({}, "bordered=", " present"), "bordered=0 borders=-,-,-,-,-,-,-,-");
  EXPECT_EQ(partOf({.lines = {0, 0, 0, 1}, .lineColours = {4, 5, 6, 7}}, "bordered=", " present"),
            "bordered=1 borders=0,FF,0,FF00,0,FF0000,5,FFFF00");
}

TEST(Styles, ABodyWithoutItsLastBytesIsReadAsZeros) {
  const auto cells = cellsOf(bookOf(
      [](auto& b) {
        b.record(206).record(206, Style{.format = 0x12, .vertical = 1}.body().cutTo(2));
      },
      [](auto& b) {
        b.number({0, 0, 1}, 1.5).number({0, 1, 2}, 1.5);
      }));
  const std::string rest =
      " fill=FFFFFF ink=FFFFFF bordered=0 borders=-,-,-,-,-,-,-,- present=1 font=- size=- "
      "attr=-,-,-,- extra=-,- spare=-,0,0 text=";
  EXPECT_THAT(lines(cells), ElementsAre("15 column=1 row=1 align=8A" + rest + "'1.5'",
                                        "15 column=1 row=2 align=89" + rest + "'1.50'"));
}

TEST(Styles, AStyleThatDoesNotExistGivesTheDefaultsAndGeneral) {
  const auto cells = cellsOf(bookOf([](auto& b) { b.style({.format = 0x12}); },
                                    [](auto& b) {
                                      b.number({0, 0, 1}, 1.5).number({1, 0, 2}, 1.5);
                                      b.number({2, 0, 1}, 1.5);
                                    }));
  EXPECT_EQ(describe(cells.at(1)),
            "15 column=2 row=1 align=8E fill=FFFFFFFF ink=0 bordered=0 borders=-,-,-,-,-,-,-,- "
            "present=0 font=- size=- attr=-,-,-,- extra=-,- spare=0,0,0 text='1.5'");
  EXPECT_EQ(cells.at(2).text, "1.50");
}

// A base style (number 2, named by `id` 5) under a style (number 3) of `own`.
Item basedOn(const Style& base, const Style& own, unsigned id = 5) {
  Style named = own;
  named.namedStyle = id;
  return cellsOf(bookOf(
                     [&](auto& b) {
                       b.font(14, 1, "Base").font(9, 2, "Own");
                       b.userFormat(1, "N0.000").userFormat(2, "N'own'");
                       b.style().style(base).style(named).namedStyle(5, 2, "Name");
                     },
                     [](auto& b) {
                       b.number({0, 0, 3}, 1.5);
                     }))
      .at(0);
}

TEST(Styles, ABaseStyleGivesWhatTheStyleLeavesAlone) {
  const Style base{.format = 113, .horizontal = 1, .colour2 = 4, .font = 1, .lines = {1, 1, 1, 1}};
  const std::string ownFont = describe(basedOn(base, {.font = 2}));
  EXPECT_THAT(ownFont, HasSubstr("align=8A fill=FFFFFF ink=0 bordered=0 "
                                 "borders=5,FFFFFF,5,FFFFFF,5,FFFFFF,5,FFFFFF present=1 font=Own "
                                 "size=9 attr=0,1,0,0 extra=1,0"));
  EXPECT_THAT(ownFont, EndsWith("text='1.5'")) << "the format code is the style's own";
  EXPECT_THAT(describe(basedOn(base, {.font = 77})), HasSubstr("font=Base size=14 attr=1,0,0,0"));
  EXPECT_EQ(basedOn(base, {.format = 115}).text, "1.500") << "the format text is the base's";
  EXPECT_EQ(basedOn(base, {.format = 114}).text, "own");
  EXPECT_THAT(describe(basedOn(base, {.font = 77}, 6)),
              HasSubstr("borders=-,-,-,-,-,-,-,- present=1 font=-"))
      << "no named style, no base";
}

TEST(Styles, LookUpsTakeTheNewestEntry) {
  const auto texts = textsOf(bookOf(
      [](auto& b) {
        b.userFormat(1, "N'older'").userFormat(1, "N'newer'");
        for (const unsigned beyond : {144u, 1u + 256u})  // code 256 is the first that no style has
          b.userFormat(beyond, "N'no code'");
        b.style({.format = 113, .namedStyle = 1}).style({.format = 112, .namedStyle = 1});
        b.namedStyle(1, 9, "Date").namedStyle(1, 9, "Other");
        for (const unsigned beyond : {256u, 257u})
          b.namedStyle(beyond, 9, "Date");
      },
      [](auto& b) {
        b.number({0, 0, 1}, 60).number({0, 1, 2}, 60);
      }));
  EXPECT_THAT(texts, ElementsAre("newer", "60"));
}

TEST(Styles, ANotebookMayHaveThousands) {
  const auto define = [](NotebookBuilder& b) {
    for (unsigned i = 1; i <= 8191; ++i)
      b.style({.format = 0x10 + i % 16});
  };
  const auto texts = textsOf(bookOf(define, [](auto& b) {
    for (const unsigned style : {1u, 127u, 128u, 255u, 256u, 257u, 511u, 513u, 4096u, 8190u, 8191u})
      b.number({0, style, style}, 0);
  }));
  std::vector<size_t> decimals;
  for (const std::string& text : texts)
    decimals.push_back(text.size() < 2 ? 0 : text.size() - 2);
  EXPECT_THAT(decimals, ElementsAre(1, 15, 0, 15, 0, 1, 15, 1, 0, 14, 15));
}

TEST(Styles, NothingOfACellRemainsForTheNext) {
  const auto texts = textsOf(bookOf(
      [](auto& b) {
        b.userFormat(1, "N'text'").namedStyle(1, 9, "Date");
        b.style({.format = 113}).style({.format = 114}).style({.format = 112, .namedStyle = 1});
        b.style({.format = 112}).style({.format = 114, .namedStyle = 1}).style({.format = 0x13});
      },
      [](auto& b) {
        unsigned row = 0;
        for (const unsigned style : {1u, 2u, 3u, 4u, 5u, 1u, 6u, 99u, 3u, 98u, 2u})
          b.number({0, row++, style}, 60);
      }));
  EXPECT_THAT(texts, ElementsAre("text", "60", "February 28, 1900", "60", "February 28, 1900",
                                 "text", "60.000", "60", "February 28, 1900", "60", "60"));
}

TEST(Styles, AColumnsStyleNamesNoCellsStyle) {
  const auto texts = textsOf(bookOf(
      [](auto& b) {
        b.namedStyle(1, 9, "Date").userFormat(1, "X").userFormat(0, "X");
        b.style({.namedStyle = 1}).style({.format = 112});
      },
      [](auto& b) {
        b.columnStyle(0, 1).number({0, 0, 2}, 60).number({0, 1, 77}, 60);
      }));
  EXPECT_THAT(texts, ElementsAre("60", "60"));
}

TEST(Styles, ALongStyleNameIsCutTo31Characters) {
  const auto textOf = [](const std::string& name) {
    return textsOf(bookOf(
                       [&](auto& b) {
                         b.namedStyle(1, 9, name).style({.format = 112, .namedStyle = 1});
                       },
                       [](auto& b) {
                         b.number({0, 0}, 60);
                       }))
        .at(0);
  };
  EXPECT_EQ(textOf("Date"), "February 28, 1900");
  for (const char* other :
       {"date", "Dat", "Dates", "", "Date567890123456789012345678901234567890"}) {
    EXPECT_EQ(textOf(other), "60") << other;
  }
}

}  // namespace
}  // namespace qps::test
