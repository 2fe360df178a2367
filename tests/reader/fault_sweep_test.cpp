// SPDX-License-Identifier: MIT
//
// Every call into the host fails in turn, and every file is cut at every byte: whatever happens,
// nothing is left open or allocated, and nothing is released twice.
#include "tests/reader/read_book.h"

namespace qps::test {
namespace {

// The example's bytes where the host is told to find a compound document.
RecordingHost& inContainer(RecordingHost& host, const Bytes& notebook) {
  host.file().bytes() = bytesOf("\xD0\xCF\x11\xE0 and whatever follows");
  host.useFakeContainer({{"NOVELL_MAIN", notebook}});
  return host;
}

// Runs `run` with the nth call of `fault.step` failing, for n from 1 until no call is left to fail.
template <typename Run>
size_t sweep(Fault fault, const Bytes& file, bool isContainer, const Run& run) {
  for (fault.nth = 1;; ++fault.nth) {
    SCOPED_TRACE(std::string(nameOf(fault.step)) + " " + std::to_string(fault.nth) +
                 (fault.forGood ? " for good" : "") + (isContainer ? " in a container" : ""));
    RecordingHost host(file);
    if (isContainer) {
      inContainer(host, file);
    }
    host.fail(fault);
    run(host);
    EXPECT_EQ(host.state(), "clean");
    if (!host.faultMet()) {
      return fault.nth - 1;
    }
  }
}

TEST(Faults, EveryCallFailingInTurnLeavesNothingBehind) {
  const NotebookBuilder book = everyRecordNotebook();
  for (const bool isContainer : {false, true}) {
    for (const Step step : kAllSteps) {
      size_t listed = 0, read = 0;
      for (const Fault fault :
           {Fault{step}, Fault{.step = step, .forGood = true}, Fault{.step = step, .shortBy = 1}}) {
        listed =
            sweep(fault, book.bytes(), isContainer, [](RecordingHost& host) { listSheets(host); });
        read = sweep(fault, book.bytes(), isContainer,
                     [&book](RecordingHost& host) { readSheet(host, book.sheetOffset(1)); });
      }
      const bool isUsed = isContainer || step < Step::kLoadLibrary;
      EXPECT_EQ(read > 0, isUsed) << nameOf(step);
      EXPECT_EQ(listed > 0, isUsed && step != Step::kItemText) << nameOf(step);
    }
  }
}

TEST(Faults, ALostItemTextLosesOnlyThatText) {
  const NotebookBuilder book = everyRecordNotebook();
  const SheetRun whole = readBook(book);
  const size_t texts =
      sweep({.step = Step::kItemText}, book.bytes(), false, [&](RecordingHost& host) {
        const SheetRun run = readSheet(host, book.sheetOffset());
        ASSERT_EQ(run.items.size(), whole.items.size());
        size_t lost = 0;
        for (size_t i = 0; i < run.items.size(); ++i) {
          Item expected = whole.items[i];
          if (run.items[i].text != expected.text) {
            ++lost;
            expected.text.reset();
          }
          EXPECT_EQ(run.items[i], expected);
        }
        EXPECT_EQ(lost, host.faultMet() ? 1u : 0u);
      });
  EXPECT_GT(texts, 20u);
}

// How many of the pool's refusals, one at a time, keep the worksheet from opening.
size_t refusals(const Add& define, const Add& fill) {
  const NotebookBuilder book = bookOf(define, fill);
  size_t count = 0;
  sweep({.step = Step::kPoolBlock}, book.bytes(), false, [&](RecordingHost& host) {
    QPSReader reader{};
    reader.stream = host.stream();
    reader.services = host.services();
    QPSSheet* sheet =
        QPSInitSheet(&reader, &host, book.sheetOffset(), RecordingHost::itemAlloc, nullptr);
    count += sheet == nullptr ? 1 : 0;
    QPSCloseSheet(sheet);
  });
  return count;
}

TEST(Faults, APoolThatIsExhaustedFailsNodesAndLosesTextsAndRows) {
  const size_t base = refusals(nothing, nothing);
  EXPECT_GE(base, 1u);
  EXPECT_GT(refusals([](auto& b) { b.font(10, 0, "Arial"); }, nothing), base);
  EXPECT_GT(refusals([](auto& b) { b.style(); }, nothing), base);
  EXPECT_EQ(refusals([](auto& b) { b.namedStyle(1, 1, "Name"); }, nothing), base + 1);
  EXPECT_EQ(refusals([](auto& b) { b.userFormat(1, "N0"); }, nothing), base + 1);
  EXPECT_EQ(refusals([](auto& b) { b.settings(true).notebookText(37, "a").notebookText(38, "b"); },
                     nothing),
            base);
  EXPECT_EQ(refusals(nothing,
                     [](auto& b) {
                       b.rowHeight(1, 300).rowHeights(5, 9, 400).hiddenRows(Body().u8(0xFF));
                     }),
            base);
}

TEST(Faults, ATextThatCannotBeCopiedIsDeliveredAsNull) {
  const NotebookBuilder book =
      bookOf([](auto& b) { b.settings(true).notebookText(37, "early").notebookText(38, "late"); },
             nothing);
  size_t nulls = 0;
  sweep({.step = Step::kPoolBlock}, book.bytes(), false, [&](RecordingHost& host) {
    for (const Item& item : readSheet(host, book.sheetOffset()).items) {
      nulls += item.kind() != SSItemKindSheetInfo && !item.text.has_value() ? 1 : 0;
    }
  });
  EXPECT_EQ(nulls, 2u);
}

TEST(Faults, AFileCutAnywhereGivesThePartBeforeTheCut) {
  const NotebookBuilder book = everyRecordNotebook();
  const SheetRun whole = readBook(book);
  for (size_t size = 0; size < book.bytes().size(); ++size) {
    SCOPED_TRACE(size);
    RecordingHost host(Bytes(book.bytes().begin(), book.bytes().begin() + static_cast<long>(size)));
    host.seekBeyondEnd = size % 2 == 0;
    const SheetRun run = readClean(host, book.sheetOffset());
    ASSERT_LE(run.items.size(), whole.items.size());
    EXPECT_TRUE(std::equal(run.items.begin(), run.items.end(), whole.items.begin()));
    const auto sheets = listSheets(host);
    EXPECT_EQ(host.state(), "clean");
    EXPECT_EQ(sheets.has_value(), size >= book.sheetOffset() + 20) << "the first table's header";
  }
}

}  // namespace
}  // namespace qps::test
