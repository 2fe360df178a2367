// SPDX-License-Identifier: MIT
//
// Every call into the host fails in turn, once and for good, and every file is cut at every byte:
// in a plain notebook, in compound documents through the real library, and through a fake one whose
// own steps fail too. Whatever happens, nothing is left open or allocated, nothing is released
// twice, and the items before the damage are those of the sound file.
#include <fstream>
#include <iterator>

#include "olefio/get_ole_interface.h"
#include "tests/reader/read_book.h"
#include "tests/support/compound_writer.h"

namespace qps::test {
namespace {

struct Source {
  std::string name;
  Bytes file;
  Bytes notebook;  // in the fake container, when the library is not the real one
  bool isFake = false;
  bool isPlain = false;

  void prepare(RecordingHost& host) const {
    host.oleEntryPoint = GetOLEInterface;
    if (isFake) host.useFakeContainer({{"NOVELL_MAIN", notebook}});
  }
};

Bytes exampleNotebook() {
  std::ifstream file(QPS_EXAMPLE_NOTEBOOK, std::ios::binary);
  const std::string text{std::istreambuf_iterator<char>(file), {}};
  return bytesOf(text);
}

// The notebook with everything, the example, and their twins in containers.
const std::vector<Source>& sources() {
  static const std::vector<Source> all = [] {
    std::vector<Source> made;
    for (const auto& [name, bytes] : {std::pair{"every record", everyRecordNotebook().bytes()},
                                      {"example", exampleNotebook()}}) {
      const auto add = [&, &name = name, &notebook = bytes](const char* shape,
                                                            const Bytes& file) -> Source& {
        return made.emplace_back(Source{std::string(name) + shape, file, notebook});
      };
      const Bytes& book = bytes;
      const std::vector<NamedStream> streams = {{"Other", Bytes(9)}, {"NOVELL_MAIN", book}};
      add("", book).isPlain = true;
      add(", fake container", bytesOf("\xD0\xCF\x11\xE0 and so on")).isFake = true;
      add(", mini stream", writeCompound({}, streams));
      add(", version 4",
          writeCompound({.version = 4, .sectors = SectorOrder::kBackward, .miniStreamCutoff = 0},
                        streams));
    }
    return made;
  }();
  return all;
}

// The offset of the source's last worksheet; all worksheets must be listed.
std::uint32_t lastSheet(const Source& source) {
  RecordingHost host(source.file);
  source.prepare(host);
  const auto sheets = listSheets(host);
  EXPECT_EQ(sheets.value().size(), 2u) << source.name;
  return sheets->back().startOffset;
}

// Runs `run` with the nth call of `fault.step` failing, for n from 1 until no call is left to fail.
template <typename Run>
std::size_t sweep(Fault fault, const Source& source, const Run& run) {
  for (fault.nth = 1;; ++fault.nth) {
    SCOPED_TRACE(source.name + ": " + nameOf(fault.step) + " " + std::to_string(fault.nth) +
                 (fault.forGood ? " for good" : ""));
    RecordingHost host(source.file);
    source.prepare(host);
    host.fail(fault);
    run(host);
    EXPECT_EQ(host.state(), "clean");
    if (!host.faultMet()) {
      return fault.nth - 1;
    }
  }
}

std::vector<Fault> faultsOf(Step step) {
  return {Fault{step}, Fault{.step = step, .forGood = true}, Fault{.step = step, .shortBy = 1}};
}

bool isBeginningOf(const std::vector<Item>& items, const std::vector<Item>& whole) {
  return items.size() <= whole.size() && std::equal(items.begin(), items.end(), whole.begin());
}

// Without it no worksheet opens. (A stream has a second name that is tried.)
bool isNeededToOpen(Step step) {
  return step == Step::kOpen || step == Step::kLoadLibrary || step == Step::kGetSymbol ||
         step == Step::kOpenContainer || step == Step::kStreamObject;
}

void expectSoundItems(const SheetRun& run, const SheetRun& whole, const RecordingHost& host,
                      Step step) {
  EXPECT_TRUE(!isNeededToOpen(step) || run.opened != host.faultMet());
  const auto sound = run.items.begin() + static_cast<std::ptrdiff_t>(run.soundItems);
  EXPECT_TRUE(isBeginningOf({run.items.begin(), sound}, whole.items));
  if (run.opened && step == Step::kPoolBlock) {
    ASSERT_EQ(run.values.size(), whole.values.size());
    for (size_t i = 0; i < run.values.size(); ++i)
      EXPECT_EQ(run.values[i].contents, whole.values[i].contents);
  }
  if (run.opened && step == Step::kItemText) {
    ASSERT_EQ(run.items.size(), whole.items.size());
    for (std::size_t i = 0; i < run.items.size(); ++i) {
      Item expected = whole.items[i];
      if (!run.items[i].text) expected.text.reset();
      EXPECT_EQ(run.items[i], expected);
    }
  }
}

TEST(Faults, EveryCallFailingInTurnLosesOnlyWhatComesAfter) {
  for (const Source& source : sources()) {
    const std::uint32_t sheet = lastSheet(source);
    RecordingHost sound(source.file);
    source.prepare(sound);
    const SheetRun whole = readSheet(sound, sheet);
    for (const Step step : kAllSteps) {
      std::size_t listed = 0, read = 0;
      for (const Fault& fault : faultsOf(step)) {
        listed = sweep(fault, source, [&](RecordingHost& host) {
          const bool failed = !listSheets(host).has_value();
          EXPECT_TRUE(!isNeededToOpen(step) || failed == host.faultMet());
        });
        read = sweep(fault, source, [&](RecordingHost& host) {
          expectSoundItems(readSheet(host, sheet), whole, host, step);
        });
      }
      const bool isUsed = step < Step::kLoadLibrary ||
                          (!source.isPlain && (source.isFake || step <= Step::kGetSymbol));
      EXPECT_EQ(read > 0, isUsed) << source.name << ": " << nameOf(step);
      EXPECT_EQ(listed > 0, isUsed && step != Step::kItemText)
          << source.name << ": " << nameOf(step);
    }
  }
}

// How many failures of a step, one at a time, keep the worksheet from opening.
std::size_t refusals(const Add& define, const Add& fill, Step step = Step::kPoolBlock) {
  const NotebookBuilder book = bookOf(define, fill);
  std::size_t count = 0;
  sweep({.step = step}, {"book", book.bytes(), {}}, [&](RecordingHost& host) {
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
  const std::size_t base = refusals(nothing, nothing);
  EXPECT_GE(base, 1u);
  EXPECT_GT(refusals([](auto& b) { b.font(10, 0, "Arial"); }, nothing), base);
  EXPECT_EQ(refusals([](auto& b) { b.style(); }, nothing), base + 2);
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
  EXPECT_EQ(refusals([](auto& b) { b.record(rec::kSettingsOff); }, nothing, Step::kSeek),
            refusals([](auto& b) { b.record(rec::kSettingsOn); }, nothing, Step::kSeek) + 1);
}

TEST(Faults, ATextThatCannotBeCopiedIsDeliveredAsNull) {
  const NotebookBuilder book =
      bookOf([](auto& b) { b.settings(true).notebookText(37, "early").notebookText(38, "late"); },
             nothing);
  std::size_t nulls = 0;
  sweep({.step = Step::kPoolBlock}, {"book", book.bytes(), {}}, [&](RecordingHost& host) {
    for (const Item& item : readSheet(host, book.sheetOffset()).items) {
      nulls += item.kind() != SSItemKindSheetInfo && !item.text.has_value() ? 1 : 0;
    }
  });
  EXPECT_EQ(nulls, 2u);
}

TEST(Faults, AFileCutAnywhereGivesThePartBeforeTheCut) {
  for (const Source& source : sources()) {
    if (source.isFake) continue;
    const std::uint32_t sheet = lastSheet(source);
    RecordingHost sound(source.file);
    source.prepare(sound);
    const SheetRun whole = readSheet(sound, sheet);
    bool wasOpened = false;
    for (std::size_t size = 0; size < source.file.size(); size += source.isPlain ? 1 : 5) {
      SCOPED_TRACE(source.name + " cut to " + std::to_string(size));
      const auto end = source.file.begin() + static_cast<std::ptrdiff_t>(size);
      RecordingHost host(Bytes(source.file.begin(), end));
      source.prepare(host);
      host.seekBeyondEnd = size % 2 == 0;
      const SheetRun run = readSheet(host, sheet);
      EXPECT_TRUE(isBeginningOf(run.items, whole.items));
      const auto sheets = listSheets(host);
      EXPECT_EQ(host.state(), "clean");
      EXPECT_TRUE(!source.isPlain || !run.opened || sheets.has_value());
      EXPECT_GE(run.opened, source.isPlain && wasOpened) << "a longer part opens if a shorter did";
      wasOpened = run.opened;
    }
    EXPECT_TRUE(wasOpened || !source.isPlain);
  }
}

}  // namespace
}  // namespace qps::test
