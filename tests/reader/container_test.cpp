// SPDX-License-Identifier: MIT
//
// Notebooks in compound documents, through a fake library: which calls are made, in which order and
// with which names, on success and when each step fails.
#include "tests/reader/read_book.h"

namespace qps::test {
namespace {

using Streams = std::map<std::string, Bytes, std::less<>>;

const NotebookBuilder& sample() {
  static const NotebookBuilder book = everyRecordNotebook();
  return book;
}

struct Document {
  explicit Document(Streams streams) : host(bytesOf("\xD0\xCF\x11\xE0....plus")) {
    host.useFakeContainer(std::move(streams));
    host.logging = true;
  }

  // The calls other than memory and the reading of records.
  std::vector<std::string> steps() const {
    std::vector<std::string> result;
    for (const std::string& call : host.log) {
      const bool isRecord = call.starts_with("inner ") && call != "inner close";
      const bool isMemory = call.find("lloc") != std::string::npos || call == "free";
      if (!isRecord && !isMemory && !call.starts_with("to")) result.push_back(call);
    }
    return result;
  }

  RecordingHost host;
};

std::vector<std::string> operator+(std::vector<std::string> first,
                                   const std::vector<std::string>& second) {
  first.insert(first.end(), second.begin(), second.end());
  return first;
}

using Calls = std::vector<std::string>;
const Calls kPeek = {"open", "read 8", "seek -8 1", "close"};
const Calls kListPeek = {"open", "read 4", "close"};
const Calls kLoad = {"loadLibrary zbolefio.dll"};
const Calls kSymbol = {"getSymbol GetOLEInterface"};
const Calls kContainer = {"ole openContainer", "open"};
const Calls kMain = {"ole openStream PerfectOffice_MAIN"};
const Calls kOlder = {"ole openStream NOVELL_MAIN"};
const Calls kObject = {"ole streamObject"};
const Calls kRelease = {"ole releaseStreamObject"};
const Calls kCloseMain = {"ole closeStream PerfectOffice_MAIN"};
const Calls kCloseOlder = {"ole closeStream NOVELL_MAIN"};
const Calls kCloseContainer = {"ole closeContainer", "close"};
const Calls kFree = {"freeLibrary"};

TEST(Container, IsReadLikeThePlainFileAndClosedInOrder) {
  const struct {
    Streams streams;
    Calls opening, closing;
  } rows[] = {{{{"PerfectOffice_MAIN", sample().bytes()}, {"NOVELL_MAIN", {}}}, kMain, kCloseMain},
              {{{"NOVELL_MAIN", sample().bytes()}}, kMain + kOlder, kCloseOlder}};
  for (const auto& row : rows) {
    Document document(row.streams);
    for (size_t sheet = 0; sheet < 2; ++sheet) {
      document.host.log.clear();
      EXPECT_EQ(readClean(document.host, sample().sheetOffset(sheet)).items,
                readBook(sample(), sheet).items);
      EXPECT_EQ(document.steps(), kPeek + kLoad + kSymbol + kContainer + row.opening + kObject +
                                      Calls{"inner close"} + kRelease + row.closing +
                                      kCloseContainer + kFree);
    }
    document.host.log.clear();
    const auto sheets = listSheets(document.host);
    ASSERT_TRUE(sheets.has_value());
    EXPECT_EQ(sheets->size(), 2u);
    EXPECT_EQ(sheets->at(1).startOffset, sample().sheetOffset(1));
    EXPECT_EQ(document.steps(), kListPeek + kLoad + kSymbol + kContainer + row.opening + kObject +
                                    kRelease + row.closing + kCloseContainer + kFree);
    EXPECT_EQ(document.host.state(), "clean");
  }
}

TEST(Container, EachFailedStepReleasesWhatTheOnesBeforeAcquired) {
  const struct {
    Fault fault;
    Calls after;  // what follows the look at the file's first bytes
  } rows[] = {{{Step::kLoadLibrary}, kLoad},
              {{Step::kGetSymbol}, kLoad + kSymbol + kFree},
              {{Step::kOpen, 2}, kLoad + kSymbol + kContainer + kFree},
              {{Step::kOpenContainer}, kLoad + kSymbol + kContainer + Calls{"close"} + kFree},
              {{.step = Step::kOpenStream, .forGood = true},
               kLoad + kSymbol + kContainer + kMain + kOlder + kCloseContainer + kFree}};
  for (const auto& row : rows) {
    SCOPED_TRACE(nameOf(row.fault.step));
    Document document({{"PerfectOffice_MAIN", sample().bytes()}});
    document.host.fail(row.fault);
    EXPECT_FALSE(readClean(document.host, sample().sheetOffset()).opened);
    EXPECT_EQ(document.steps(), kPeek + row.after);
    document.host.log.clear();
    document.host.fail(row.fault);
    EXPECT_FALSE(listSheets(document.host).has_value());
    EXPECT_EQ(document.steps(), kListPeek + row.after);
    EXPECT_EQ(document.host.state(), "clean");
  }
}

TEST(Container, ADocumentWithoutANotebookIsRefusedAndClosed) {
  for (const Streams& streams :
       {Streams{}, Streams{{"Workbook", sample().bytes()}}, Streams{{"PerfectOffice_MAIN", {}}},
        Streams{{"NOVELL_MAIN", bytesOf("no notebook")}}}) {
    Document document(streams);
    EXPECT_FALSE(readClean(document.host, 0).opened);
    EXPECT_FALSE(listSheets(document.host).has_value());
    EXPECT_EQ(document.host.state(), "clean");
  }
}

TEST(Container, OnlyTheSignatureMakesADocument) {
  // A notebook whose first bytes are nearly the signature: a record that is passed over.
  NotebookBuilder book;
  book.record(0xCFD0, Body().fill(0xE011 + 1)).header().sheetStart().label({0, 0}, "plain");
  book.sheetEnd();
  RecordingHost host(book.bytes());
  EXPECT_EQ(readClean(host, book.sheetOffset()).items.size(), 2u);
  EXPECT_EQ(host.calls(Step::kLoadLibrary), 0u);
  // The whole signature: no way back to the plain file without the library.
  host.file().bytes()[2] = std::byte{0x11};
  EXPECT_FALSE(readClean(host, book.sheetOffset()).opened);
  EXPECT_EQ(host.calls(Step::kLoadLibrary), 1u);
}

}  // namespace
}  // namespace qps::test
