// SPDX-License-Identifier: MIT
//
// What a file is and why it cannot be read, from its bytes: through Notebook::open, as users meet
// it.
#include <gtest/gtest.h>

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include <qpsreader/host/notebook.hpp>
#include "host/heap_pool.hpp"
#include "host/host_services.hpp"
#include "host/record_source.hpp"
#include "tests/support/compound_writer.h"
#include "tests/support/notebook_builder.h"
#include "tests/support/recording_host.h"

namespace qps::test {
namespace {

using namespace std::string_view_literals;

Bytes compound(const std::vector<NamedStream>& streams) {
  return writeCompound({}, streams);
}

Bytes cut(Bytes bytes, std::size_t size) {
  bytes.resize(size);
  return bytes;
}

NotebookBuilder oneCell() {
  NotebookBuilder builder;
  return builder.header().font(10, 0, "Arial").sheetStart().table(2, 2).label({}, "x").sheetEnd();
}

TEST(Diagnosis, SaysWhyAFileIsNoNotebookToRead) {
  const Bytes whole = oneCell().end().bytes();
  const std::vector<std::byte> bytes4(4);
  const struct {
    const char* what;
    Bytes bytes;
    Reason reason;
    const char* message;  // a part of it
  } rows[] = {
      {"nothing", {}, Reason::kEmpty, "empty"},
      {"one byte", bytesOf("x"), Reason::kNotANotebook, "notebook"},
      {"text", bytesOf("Dear reader, this is a letter."), Reason::kNotANotebook, "notebook"},
      {"zeros", Bytes(600), Reason::kNotANotebook, "notebook"},
      {"wq1", bytesOf("\x00\x00\x02\x00\x20\x51\x06\x00\x00\x00"sv), Reason::kNotANotebook, "DOS"},
      {"wq2", bytesOf("\x00\x00\x02\x00\x21\x51\x06\x00\x00\x00"sv), Reason::kNotANotebook, "DOS"},
      {"wk1", bytesOf("\x00\x00\x02\x00\x06\x04\x06\x00\x00\x00"sv), Reason::kNotANotebook,
       "1-2-3"},
      {"wk3", bytesOf("\x00\x00\x1A\x00\x00\x10\x04\x00"sv), Reason::kNotANotebook, "1-2-3"},
      {"another version", bytesOf("\x00\x00\x02\x00\x02\x11"sv), Reason::kNotANotebook, "notebook"},
      {"xls before containers", bytesOf("\x09\x04\x06\x00\x00\x00"sv), Reason::kNotANotebook,
       "Excel"},
      {"xlsx", bytesOf("PK\x03\x04 and so on"sv), Reason::kNotANotebook, "ZIP"},
      {"pdf", bytesOf("%PDF-1.4"), Reason::kNotANotebook, "PDF"},
      {"html", bytesOf("\xEF\xBB\xBF \n<!DocType HTML><p>"), Reason::kNotANotebook, "HTML"},
      {"html right behind a mark of UTF-8", bytesOf("\xEF\xBB\xBF<html>"), Reason::kNotANotebook,
       "HTML"},
      {"html without doctype", bytesOf("<HTML>"), Reason::kNotANotebook, "HTML"},
      {"no html", bytesOf("<htm"), Reason::kNotANotebook, "notebook"},
      {"qpw", compound({{"NativeContent_MAIN", Bytes(9)}}), Reason::kNotANotebook, "9 or later"},
      {"xls", compound({{"Workbook", Bytes(9)}}), Reason::kNotANotebook, "Excel"},
      {"old xls", compound({{"Book", Bytes(9)}}), Reason::kNotANotebook, "Excel"},
      {"doc", compound({{"WordDocument", Bytes(9)}}), Reason::kNotANotebook, "compound document"},
      {"broken container", cut(compound({{"NOVELL_MAIN", whole}}), 600), Reason::kDamaged,
       "compound"},
      {"not quite a container", bytesOf("\xD0\xCF\x11\xE0"), Reason::kDamaged, "compound"},
      {"no worksheets", NotebookBuilder().header().end().bytes(), Reason::kDamaged,
       "no worksheets"},
      {"cut in record 0", cut(whole, 5), Reason::kDamaged, "byte 0 runs past the end"},
      {"cut after record 0", cut(whole, 6), Reason::kDamaged, "end at byte 6"},
      {"cut in a font", cut(whole, 12), Reason::kDamaged, "byte 6 runs past the end"},
      {"cut container", compound({{"NOVELL_MAIN", cut(whole, 6)}}), Reason::kDamaged,
       "end at byte 6"},
      {"protected",
       NotebookBuilder().header().refusal(7).sheetStart().table(1, 1).sheetEnd().end().bytes(),
       Reason::kProtected, "protected"},
      {"protected, nothing listed", NotebookBuilder().header().refusal(1).raw(bytes4).bytes(),
       Reason::kProtected, "protected"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.what);
    const auto notebook = Notebook::open(std::span(row.bytes));
    ASSERT_FALSE(notebook);
    EXPECT_EQ(notebook.error().reason, row.reason) << notebook.error().message;
    EXPECT_NE(notebook.error().message.find(row.message), std::string::npos)
        << notebook.error().message;
  }
}

// The library opens the file, which the recorded one allows nobody twice.
TEST(Diagnosis, LeavesTheFileToTheLibrary) {
  RecordingHost host(compound({{"NOVELL_MAIN", oneCell().end().bytes()}}));
  HeapPool heap;
  HostServices services(heap);
  {
    const RecordSource source(*host.stream(), services);
    EXPECT_EQ(source.status(), RecordSource::Status::kOpen);
  }
  EXPECT_EQ(host.state(), "clean");
}

TEST(Diagnosis, ReadsTheFactsOfANotebook) {
  NotebookBuilder builder;
  builder.header(0x1001)
      .record(rec::kRefusal)
      .refusal(0)
      .font(10, 0, "Arial")
      .font(12, 1, "Arial")
      .style()
      .style();
  builder.style().namedStyle(1, 1, "Normal").userFormat(1, "N0").header(0x1234);
  builder.sheetStart().font(9, 0, "late").table(1, 1).sheetEnd().end();
  const Bytes plain = builder.bytes();
  const Bytes wrapped = compound({{"PerfectOffice_MAIN", plain}});
  for (const Bytes* bytes : {&plain, &wrapped}) {
    const auto notebook = Notebook::open(std::span(*bytes));
    ASSERT_TRUE(notebook);
    const NotebookFacts& facts = notebook->facts();
    const bool isPlain = bytes == &plain;
    EXPECT_EQ(facts.kind, isPlain ? FileKind::kPlainNotebook : FileKind::kCompoundNotebook);
    EXPECT_STREQ(facts.containerStream, isPlain ? "" : "PerfectOffice_MAIN");
    EXPECT_STREQ(fileKindMimeType(facts.kind), "application/x-quattropro");
    EXPECT_EQ(facts.formatVersion, 0x1001);
    EXPECT_EQ(facts.fontCount, 2u);
    EXPECT_EQ(facts.styleCount, 3u);
    EXPECT_EQ(facts.namedStyleCount, 1u);
    EXPECT_EQ(facts.userFormatCount, 1u);
    EXPECT_EQ(facts.definitionRecords, 11u);
  }
}

// Every length that a file may be cut to: either nothing can be opened, or the damage shows. Bytes
// after the end record are none.
TEST(Diagnosis, FindsEveryCut) {
  const Bytes plain = everyRecordNotebook().bytes();
  for (std::size_t size = 0; size < plain.size(); ++size) {
    const Bytes bytes = cut(plain, size);
    const auto notebook = Notebook::open(std::span(bytes));
    if (!notebook) continue;
    ASSERT_TRUE(notebook->damage()) << size;
    EXPECT_EQ(notebook->damage()->reason, Reason::kDamaged);
  }
  for (const Bytes& bytes :
       {plain, cut(plain, plain.size() + 3), compound({{"NOVELL_MAIN", plain}})}) {
    const auto notebook = Notebook::open(std::span(bytes));
    ASSERT_TRUE(notebook);
    EXPECT_FALSE(notebook->damage());
  }
}

// Which worksheets came out whole is said for each: the first here, and not the second.
TEST(Diagnosis, TellsWhichWorksheetIsDamaged) {
  const auto second = [] { return oneCell().sheetStart(1).table(1, 1).label({}, "y"); };
  const struct {
    const char* what;
    Bytes bytes;
    std::vector<bool> whole;
  } rows[] = {
      {"cut after the second's cell", second().bytes(), {true, false}},
      {"end record before the second's", second().end().bytes(), {true, false}},
      {"a third begins in the second",
       second().sheetStart(2).table(1, 1).label({}, "z").sheetEnd().end().bytes(),
       {true, false, true}},
      {"cut after the second's end", second().sheetEnd().bytes(), {true, true}},
      {"a body runs past the end", second().rawHeader(rec::kLabel, 60000).bytes(), {true, false}},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.what);
    const auto notebook = Notebook::open(std::span(row.bytes));
    ASSERT_TRUE(notebook);
    EXPECT_TRUE(notebook->damage());
    std::vector<bool> whole;
    for (const Sheet& sheet : notebook->sheets()) {
      ItemRange items = notebook->items(sheet);
      std::size_t cells = 0;
      for (const Item& item : items)
        cells += item.cell() ? 1 : 0;
      EXPECT_GE(cells, 1u) << "cells before the damage come";
      const auto error = items.error();
      EXPECT_TRUE(!error || error->reason == Reason::kDamaged);
      whole.push_back(!error);
    }
    EXPECT_EQ(whole, row.whole);
  }
}

// A plain notebook and one in a compound document, with bytes missing from the first of three
// worksheets; the third is cut.
TEST(Diagnosis, SalvagesWorksheetsBehindDamage) {
  NotebookBuilder builder;
  constexpr unsigned kRows = 4000;  // more than is read at once
  builder.header().font(10, 0, "Arial").sheetStart().table(1, kRows);
  for (unsigned row = 0; row < kRows; ++row)
    builder.label({.row = row}, "some label or other");
  builder.sheetEnd();
  const std::size_t second = builder.bytes().size();
  builder.sheetStart(1).table(1, 1).label({}, "whole").sheetEnd();
  builder.sheetStart(2).table(1, 2).label({}, "before the cut").rawHeader(rec::kLabel, 9);
  Bytes bytes = builder.bytes();
  bytes.erase(bytes.begin() + 700, bytes.begin() + 1212);
  for (const Bytes& file : {bytes, compound({{"NOVELL_MAIN", bytes}})}) {
    const bool isPlain = file.size() == bytes.size();
    const auto notebook = Notebook::open(std::span(file), {.salvage = true});
    ASSERT_TRUE(notebook) << notebook.error().message;
    EXPECT_EQ(notebook->facts().kind,
              isPlain ? FileKind::kPlainNotebook : FileKind::kCompoundNotebook);
    ASSERT_EQ(notebook->sheets().size(), 3u);
    EXPECT_EQ(notebook->sheets()[1].startOffset, second - 512);
    ASSERT_TRUE(notebook->damage());
    const std::string message = notebook->damage()->message;
    EXPECT_NE(message.find(" to " + std::to_string(second - 513) + ", "), std::string::npos)
        << message;
    for (const Sheet& sheet : notebook->sheets()) {
      ItemRange items = notebook->items(sheet);
      std::string last;
      for (const Item& item : items)
        if (const auto cell = item.cell()) last = cell->text();
      EXPECT_EQ(items.error().has_value(), sheet.index != 1) << sheet.index;
      EXPECT_EQ(last, sheet.index == 0   ? "some label or other"
                      : sheet.index == 1 ? "whole"
                                         : "before the cut");
    }
  }
}

TEST(Diagnosis, SalvageNamesWhatIsLost) {
  constexpr unsigned kHighestType = 2047;
  // A worksheet whose second record is not as long as one of its type.
  const auto withBroken = [](unsigned sheets) {
    NotebookBuilder builder;
    builder.header().font(10, 0, "Arial").record(kHighestType);
    for (unsigned sheet = 0; sheet < sheets; ++sheet)
      builder.sheetStart(sheet).table(1, 1).record(rec::kInteger, Body().u8(7)).sheetEnd();
    return builder.sheetStart(sheets).table(1, 1).label({}, "x").sheetEnd().end().bytes();
  };
  const struct {
    Bytes bytes;
    const char* ending;  // of the message; "" for no damage
  } rows[] = {{everyRecordNotebook().bytes(), ""},
              {withBroken(0), ""},
              {withBroken(1), "; bytes 40 to 48 are lost"},
              {withBroken(10), " are lost"},
              {withBroken(11), " and 1 more are lost"}};
  for (const auto& row : rows) {
    const auto notebook = Notebook::open(std::span(row.bytes), {.salvage = true});
    ASSERT_TRUE(notebook);
    const std::string message = notebook->damage() ? notebook->damage()->message : "";
    EXPECT_TRUE(message.ends_with(row.ending)) << message;
    EXPECT_EQ(message.empty(), *row.ending == '\0') << message;
    EXPECT_EQ(message.find(" 0 more"), std::string::npos) << message;
  }
}

// A record of bytes that miss before it may hide whole worksheets, and end where another begins.
TEST(Diagnosis, SuspectsRecordsThatNoNotebookHas) {
  const auto start = [] {
    NotebookBuilder builder;
    builder.header().font(10, 0, "Arial").sheetStart().table(1, 1).label({}, "x");
    return builder;
  };
  const std::size_t place = start().bytes().size();
  const struct {
    Bytes bytes;
    std::optional<std::size_t> suspected;
  } rows[] = {
      {start().sheetEnd().end().bytes(), {}},
      {everyRecordNotebook().bytes(), {}},
      {start().rawHeader(0xF000, 0).sheetEnd().end().bytes(), place},
      {start().rawHeader(rec::kLabel, 2).raw(Bytes(2)).sheetEnd().end().bytes(), place},
      {start().sheetEnd().sheetEnd().end().bytes(), place + 4},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(&row - rows);
    const auto notebook = Notebook::open(std::span(row.bytes));
    ASSERT_TRUE(notebook);
    EXPECT_FALSE(notebook->damage());
    const auto suspicion = notebook->suspicion();
    ASSERT_EQ(suspicion.has_value(), row.suspected.has_value());
    if (suspicion) {
      EXPECT_NE(suspicion->message.find("byte " + std::to_string(*row.suspected) + " "),
                std::string::npos)
          << suspicion->message;
    }
    const auto salvaged = Notebook::open(std::span(row.bytes), {.salvage = true});
    ASSERT_TRUE(salvaged);
    EXPECT_EQ(salvaged->damage().has_value(), row.suspected.has_value());
    EXPECT_FALSE(salvaged->suspicion());
  }
}

// Hostile bytes cost no more than others: many worksheets whose records all lead far.
TEST(Diagnosis, SalvageIsBounded) {
  NotebookBuilder builder;
  builder.header();
  for (unsigned sheet = 0; sheet < 2000; ++sheet)
    builder.sheetStart(sheet % 256).table(1, 1).label({}, "x");
  const Bytes bytes = builder.bytes();
  const auto notebook = Notebook::open(std::span(bytes), {.salvage = true});
  ASSERT_TRUE(notebook);
  EXPECT_LE(notebook->sheets().size(), 256u);
  EXPECT_TRUE(notebook->damage());
}

}  // namespace
}  // namespace qps::test
