// SPDX-License-Identifier: MIT
//
// Notebook: what its items say, how long things live, and what its limits do.
#include <gtest/gtest.h>

#include <iterator>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <type_traits>
#include <vector>

#include <qpsreader/host/notebook.hpp>
#include "tests/host/notebooks.h"
#include "tests/support/compound_writer.h"

namespace qps::test {
namespace {

static_assert(std::input_iterator<ItemRange::Iterator>);
static_assert(!std::is_copy_constructible_v<Notebook> && !std::is_copy_constructible_v<ItemRange>);
static_assert(std::is_nothrow_move_constructible_v<Notebook>);
static_assert(std::is_nothrow_move_assignable_v<ItemRange>);

// What would outlive its range or its notebook does not compile.
static_assert(!std::is_copy_constructible_v<qps::Item> && !std::is_copy_constructible_v<CellView>);
template <class N>
concept GivesSheets = requires(N&& notebook) {
  std::forward<N>(notebook).sheets();
};
template <class E>
concept HasArrow = requires(E&& result) {
  std::forward<E>(result)->sheets();
};
static_assert(GivesSheets<const Notebook&> && !GivesSheets<Notebook>);
static_assert(HasArrow<Expected<Notebook>&> && !HasArrow<Expected<Notebook>>);
template <class T>
concept OpensAsBytes = requires(T&& bytes) {
  Notebook::openBytes(std::forward<T>(bytes));
};
static_assert(OpensAsBytes<std::string&> && !OpensAsBytes<std::string>);

Notebook openBytes(const Bytes& bytes, const OpenOptions& options = {}) {
  auto notebook = Notebook::open(std::span(bytes), options);
  if (!notebook) throw std::runtime_error(notebook.error().message);
  return *std::move(notebook);
}

TEST(Notebook, NamesTheFieldsOfItems) {
  NotebookBuilder builder;
  builder.header()
      .settings(true)
      .notebookText(rec::kText38, "top")
      .notebookText(rec::kText37, "low");
  builder.flag(rec::kFlag257, 0).settings(false).font(12, 0x27, "Times");
  builder.style({.horizontal = 3, .vertical = 1, .lines = {1, 0, 0, 2}});
  builder.style({.font = 99});
  builder.sheetStart().sheetName("Plan").table(3, 20).defaultColumnWidth(900).defaultRowHeight(250);
  builder.columnWidth(1, 1200).rowHeight(4, 600);
  builder.label({.column = 0, .row = 0, .style = 1}, "bordered").blank({.column = 1, .style = 2});
  const Bytes bytes = builder.label({.column = 2, .style = 2}, "").sheetEnd().end().bytes();
  const Notebook notebook = openBytes(bytes);
  ASSERT_EQ(notebook.sheets().size(), 1u);
  const Sheet& sheet = notebook.sheets()[0];
  EXPECT_EQ(sheet.name, "Plan");
  EXPECT_EQ(notebook.findSheet("Plan"), &sheet);
  EXPECT_EQ(notebook.findSheet("plan"), nullptr);

  ItemRange items = notebook.items(sheet);
  auto item = items.begin();
  const auto info = item->sheetInfo();
  ASSERT_TRUE(info);
  EXPECT_EQ(info->rowCount, 20u);
  EXPECT_EQ(info->columnCount, 3u);
  EXPECT_EQ(info->defaultColumnWidth, 900u);
  EXPECT_EQ(info->defaultRowHeight, 250u);
  EXPECT_TRUE(info->record257Flag);
  EXPECT_FALSE(info->record258Flag);
  EXPECT_FALSE(item->cell() || item->columnWidths() || item->rowHeight() || item->notebookText());

  const auto width = (++item)->columnWidths();
  ASSERT_TRUE(width);
  EXPECT_EQ(std::tuple(width->first, width->last, width->size), std::tuple(2u, 2u, 1200u));
  const auto height = (++item)->rowHeight();
  ASSERT_TRUE(height);
  EXPECT_EQ(std::tuple(height->first, height->last, height->size), std::tuple(5u, 5u, 600u));
  EXPECT_EQ((++item)->notebookText(), "top");
  EXPECT_EQ((++item)->notebookText(), "low");

  const auto bordered = (++item)->cell();
  ASSERT_TRUE(bordered);
  EXPECT_EQ(bordered->text(), "bordered");
  const CellStyle style = bordered->style();
  EXPECT_EQ(style.alignment, item->raw().cell.alignment);
  EXPECT_NE(style.borders[0].line, BorderLine::kNone);
  EXPECT_EQ(style.borders[1].line, BorderLine::kNone);
  ASSERT_TRUE(style.font);
  EXPECT_EQ(style.font->name, "Times");
  EXPECT_EQ(style.font->size, 12u);
  EXPECT_TRUE(style.font->bold && style.font->italic && style.font->underline);
  EXPECT_TRUE(style.font->strikeOut);

  const auto blank = (++item)->cell();
  ASSERT_TRUE(blank);
  EXPECT_FALSE(blank->hasText());
  EXPECT_EQ(blank->text(), "");
  EXPECT_EQ(blank->style().borders[0].line, BorderLine::kNone) << "nothing of the cell before";
  EXPECT_FALSE(blank->style().font) << "nor its font";

  const auto empty = (++item)->cell();
  ASSERT_TRUE(empty);
  EXPECT_TRUE(empty->hasText()) << "an empty text is not the same as none";
  EXPECT_EQ(++item, items.end());
  EXPECT_EQ(items.begin(), items.end());
  EXPECT_FALSE(items.error());
}

TEST(CellView, DecodesTheAlignmentByte) {
  const struct {
    unsigned alignment;
    HorizontalAlign horizontal;
    VerticalAlign vertical;
  } rows[] = {
      {0x00, HorizontalAlign::kGeneral, VerticalAlign::kDefault},
      {0x8E, HorizontalAlign::kLeft, VerticalAlign::kBottom},
      {0x29, HorizontalAlign::kRight, VerticalAlign::kCentre},
      {0x87, HorizontalAlign::kCentre, VerticalAlign::kTop},
      {0x42, HorizontalAlign::kCentreAcross, VerticalAlign::kBottom},
      {0x1C, HorizontalAlign::kLeft, VerticalAlign::kDefault},
  };
  for (const auto& row : rows) {
    SSItemCell cell{};
    cell.alignment = static_cast<std::uint8_t>(row.alignment);
    const CellStyle style = CellView(cell).style();
    EXPECT_EQ(style.horizontal, row.horizontal) << row.alignment;
    EXPECT_EQ(style.vertical, row.vertical) << row.alignment;
  }
}

// The same items as through the exported operations.
TEST(Notebook, DeliversWhatTheReaderDelivers) {
  const NotebookBuilder builder = everyRecordNotebook();
  const Bytes& plain = builder.bytes();
  const Bytes wrapped = writeCompound({}, {{"PerfectOffice_MAIN", plain}});
  const auto expected = itemsBySheet(plain);
  ASSERT_FALSE(expected.empty());
  expectItems("plain", expected, Notebook::open(std::span(plain)));
  expectItems("compound", expected, Notebook::open(std::span(wrapped)));
  for (Bytes bytes : {plain, wrapped}) {
    bytes.resize(bytes.size() + 100000);  // neither ends where the bytes end
    expectItems("longer", expected, Notebook::open(std::span(bytes)));
  }
}

TEST(Notebook, OpensBytesOfEveryType) {
  const Bytes bytes = twoSheets(1).bytes();
  const auto* const from = reinterpret_cast<const char*>(bytes.data());
  const std::vector<std::uint8_t> octets(from, from + bytes.size());
  const std::vector<char> chars(from, from + bytes.size());
  const std::string text(from, bytes.size());
  EXPECT_TRUE(Notebook::open(bytes).has_value());
  EXPECT_TRUE(Notebook::open(octets).has_value());
  EXPECT_TRUE(Notebook::open(std::span(chars), {.memoryLimit = 100000}).has_value());
  EXPECT_TRUE(Notebook::openBytes(text).has_value());
  EXPECT_TRUE(Notebook::openBytes(std::string_view(text)).has_value());
  EXPECT_EQ(Notebook::open(text).error().reason, Reason::kUnreadable) << "a path";
  const Notebook notebook = Notebook::openBytes(text).value();
  EXPECT_EQ(notebook.facts().kind, FileKind::kPlainNotebook);
}

TEST(Notebook, RangesOutliveItAndAdvanceInTurn) {
  const Bytes bytes = twoSheets(50).bytes();
  auto notebook = std::make_unique<Notebook>(openBytes(bytes));
  TextArena arena = notebook->textArena();
  std::vector<ItemRange> ranges;
  for (const Sheet& sheet : notebook->sheets())
    ranges.push_back(notebook->items(sheet, arena));
  ItemRange left = notebook->items(notebook->sheets()[0]);
  EXPECT_NE(left.begin(), left.end());
  EXPECT_TRUE(left.begin()->sheetInfo()) << "begin() goes on where it was left";
  notebook.reset();

  std::vector<std::string_view> texts[2];
  ItemRange::Iterator iterators[] = {ranges[0].begin(), ranges[1].begin()};
  ItemRange kept = std::move(ranges[0]);
  EXPECT_EQ(ranges[0].begin(), ranges[0].end());
  while (iterators[0] != kept.end() || iterators[1] != kept.end()) {
    for (int i = 0; i < 2; ++i) {
      if (iterators[i] == kept.end()) continue;
      if (const auto cell = iterators[i]->cell()) texts[i].push_back(cell->text());
      ++iterators[i];
    }
  }
  for (int i = 0; i < 2; ++i) {
    ASSERT_EQ(texts[i].size(), 50u);
    for (std::size_t row = 0; row < 50; ++row)
      EXPECT_EQ(texts[i][row], "label " + std::to_string(row)) << "all texts live in the arena";
  }
}

TEST(Notebook, IsEmptyOnceMovedFrom) {
  const Bytes bytes = twoSheets(1).bytes();
  Notebook notebook = openBytes(bytes);
  const Notebook other = std::move(notebook);
  const Sheet sheet = other.sheets()[0];
  // NOLINTBEGIN(bugprone-use-after-move,clang-analyzer-cplusplus.Move): what it is about
  EXPECT_TRUE(notebook.sheets().empty());
  ItemRange items = notebook.items(sheet);
  EXPECT_EQ(items.begin(), items.end());
  EXPECT_FALSE(items.error() || notebook.damage());
  EXPECT_EQ(notebook.memoryInUse(), 0u);
  EXPECT_EQ(notebook.textArena().allocate(1), nullptr);
  EXPECT_EQ(notebook.facts().kind, FileKind::kUnknown);
  // NOLINTEND(bugprone-use-after-move,clang-analyzer-cplusplus.Move)
}

// Everything that a range delivers: each item's bytes (the text's address aside) and its text.
std::vector<std::string> itemsOf(ItemRange& range) {
  std::vector<std::string> items;
  for (const qps::Item& item : range) {
    SSItem record = item.raw();
    std::string text;
    if (const auto cell = item.cell()) {
      text = cell->hasText() ? "text " + std::string(cell->text()) : "none";
      record.cell.text = nullptr;
    } else if (const auto words = item.notebookText()) {
      text = *words;
      record.notebookText.text = nullptr;
    }
    items.push_back(std::string(reinterpret_cast<const char*>(record.bytes), SSItemBytes) + text);
  }
  return items;
}

Bytes manyRangesOfRows() {
  NotebookBuilder builder;
  builder.header().sheetStart().table(2, 300);
  for (unsigned row = 0; row < 200; ++row)
    builder.rowHeights(row, row + 50, 400 + row);
  return builder.label({}, "below").sheetEnd().end().bytes();
}

// Each cell the first of its style, for which the reader asks for blocks that it can do without.
Bytes manyStyles() {
  NotebookBuilder builder;
  builder.header().userFormat(1, "TDD-Mon-YYYY");
  for (unsigned i = 0; i < 250; ++i)
    builder.style({.format = 112, .horizontal = 3});
  builder.sheetStart().table(1, 250);
  for (unsigned i = 0; i < 250; ++i)
    builder.number({.row = i, .style = i}, 40000 + i);
  return builder.sheetEnd().end().bytes();
}

// With any limit: an error that says so, or everything; and where nothing is kept but what shows in
// the items, no error with everything.
TEST(Notebook, MeetsTheMemoryLimitWithAnErrorWhenSomethingIsLostAndOnlyThen) {
  const struct {
    Bytes bytes;
    bool allShows;
  } rows[] = {
      {everyRecordNotebook().bytes(), false}, {manyRangesOfRows(), true}, {manyStyles(), true}};
  for (const auto& [bytes, allShows] : rows) {
    const Notebook unlimited = openBytes(bytes);
    std::vector<std::vector<std::string>> expected;
    for (const Sheet& sheet : unlimited.sheets()) {
      ItemRange items = unlimited.items(sheet);
      expected.push_back(itemsOf(items));
    }
    std::map<std::string, int> outcomes;
    for (std::size_t limit = 1; limit < 200000; limit += limit / 64 + 64) {
      SCOPED_TRACE("limit " + std::to_string(limit));
      auto notebook = Notebook::open(std::span(bytes), {.memoryLimit = limit});
      if (!notebook) {
        EXPECT_EQ(notebook.error().reason, Reason::kMemoryLimit) << notebook.error().message;
        ++outcomes["not opened"];
        continue;
      }
      bool limited = false;
      for (const Sheet& sheet : notebook->sheets()) {
        ItemRange items = notebook->items(sheet);
        const auto delivered = itemsOf(items);
        const auto error = items.error();
        EXPECT_TRUE(!error || error->reason == Reason::kMemoryLimit) << error->message;
        const bool whole = delivered == expected[sheet.index];
        EXPECT_TRUE(error || whole) << "worksheet " << sheet.index;
        EXPECT_FALSE(allShows && whole && error) << "nothing is lost";
        limited = limited || error;
        EXPECT_LE(notebook->memoryInUse(), limit);
      }
      ++outcomes[limited ? "limited" : "whole"];
    }
    EXPECT_EQ(outcomes.size(), 3u) << "the limits went through all outcomes";
  }
}

// What one range lost is no error of another that had ended.
TEST(Notebook, ArenasCountTowardsTheLimit) {
  const Bytes bytes = twoSheets(5000).bytes();
  const Notebook notebook = openBytes(bytes, {.memoryLimit = 60000});
  TextArena arena = notebook.textArena();
  ItemRange other = notebook.items(notebook.sheets()[1]);
  for (const qps::Item& item : other)
    EXPECT_NE(item.raw().kind, 0u);
  ItemRange items = notebook.items(notebook.sheets()[0], arena);
  std::size_t withText = 0;
  for (const qps::Item& item : items)
    if (const auto cell = item.cell()) withText += cell->hasText() ? 1 : 0;
  EXPECT_LT(withText, 5000u);
  ASSERT_TRUE(items.error());
  EXPECT_EQ(items.error()->reason, Reason::kMemoryLimit);
  EXPECT_TRUE(arena.failed());
  EXPECT_FALSE(other.error());
}

TEST(Notebook, GivesEverythingBack) {
  const Bytes bytes = everyRecordNotebook().bytes();
  const Notebook notebook = openBytes(bytes);
  const std::size_t before = notebook.memoryInUse();
  for (int round = 0; round < 2; ++round) {
    for (const Sheet& sheet : notebook.sheets()) {
      ItemRange whole = notebook.items(sheet);
      for (const qps::Item& item : whole)
        EXPECT_NE(item.raw().kind, 0u);
      ItemRange abandoned = notebook.items(sheet);
      EXPECT_NE(abandoned.begin(), abandoned.end());
    }
    EXPECT_EQ(notebook.memoryInUse(), before);
  }
}

TEST(Notebook, LeavesOutWorksheetsThatTheFileDoesNotDescribe) {
  NotebookBuilder builder;
  builder.header().sheetStart(0).record(rec::kTable).sheetEnd();
  const Bytes bytes = builder.sheetStart(1).table(1, 1).label({}, "x").sheetEnd().end().bytes();
  const Notebook notebook = openBytes(bytes);
  ASSERT_EQ(notebook.sheets().size(), 1u);
  EXPECT_EQ(notebook.sheets()[0].name, "B");
  EXPECT_EQ(notebook.sheets()[0].index, 0u);
}

}  // namespace
}  // namespace qps::test
