// SPDX-License-Identifier: MIT
//
// Readers on different threads at the same time, each with a host of its own: every text is what
// one thread alone gets. The thread sanitizer runs this too.
#include <gtest/gtest.h>

#include <barrier>
#include <thread>

#include "olefio/get_ole_interface.h"
#include "tests/support/compound_writer.h"
#include "tests/support/sheet_driver.h"

namespace qps::test {
namespace {

constexpr unsigned kThreads = 8;
constexpr unsigned kRounds = 16;

// Numbers of its own in every format, among them two of the author's; every other one in a
// document.
Bytes notebook(unsigned number) {
  constexpr const char* kUserFormats[] = {"N9,999.00;N'none';N'('0.0')'", "TWeekday' 'DD-Mon-YYYY",
                                          "N0.0000E+00", "THH:MM:SS' 'AMPM"};
  constexpr unsigned kFormats[] = {0,  4,  5,  6,  7,    8,    9,    10,  11,
                                   12, 13, 14, 15, 0x23, 0x42, 0x52, 113, 114};
  NotebookBuilder book;
  book.header().font(10, 0, "Arial").userFormat(1, kUserFormats[number % 4]);
  book.userFormat(2, kUserFormats[(number + 1) % 4]);
  for (const unsigned format : kFormats)
    book.style({.format = format});
  book.sheetStart().sheetName("Sheet").table(2, 200).columnWidth(0, 4000).label({1, 0, 1}, "label");
  for (unsigned row = 0; row < 200; ++row)
    book.number({0, row, 1 + row % unsigned(std::size(kFormats))},
                300.25 * (number + 1) * (row + 1));
  book.sheetEnd().end();
  if (number % 2 == 0) return book.bytes();
  return writeCompound({.version = number % 4 == 1 ? 3U : 4U},
                       {{"PerfectOffice_MAIN", book.bytes()}});
}

std::vector<std::string> textsOf(const Bytes& file) {
  RecordingHost host(file);
  host.oleEntryPoint = GetOLEInterface;
  const auto sheets = listSheets(host);
  std::vector<std::string> texts;
  if (!sheets || sheets->empty()) return texts;
  for (const Item& cell : readSheet(host, sheets->front().startOffset).only(SSItemKindCell))
    texts.push_back(cell.text.value_or("none"));
  require(host.state() == "clean", "nothing is left open, loaded or allocated");
  return texts;
}

TEST(Threads, ReadersAtTheSameTimeDoNotDisturbEachOther) {
  std::vector<Bytes> files;
  std::vector<std::vector<std::string>> expected;
  for (unsigned number = 0; number < kThreads; ++number) {
    files.push_back(notebook(number));
    expected.push_back(textsOf(files.back()));
    ASSERT_EQ(expected.back().size(), 201U) << "notebook " << number;
    ASSERT_TRUE(number == 0 || expected[number] != expected[number - 1]);
  }

  std::vector<unsigned> differences(kThreads);
  std::barrier start(kThreads);
  std::vector<std::jthread> threads;
  for (unsigned self = 0; self < kThreads; ++self)
    threads.emplace_back([&, self] {
      for (unsigned round = 0; round < kRounds; ++round) {
        const unsigned number = (self + round) % kThreads;
        start.arrive_and_wait();
        if (textsOf(files[number]) != expected[number]) ++differences[self];
      }
    });
  threads.clear();
  EXPECT_EQ(differences, std::vector<unsigned>(kThreads));
}

}  // namespace
}  // namespace qps::test
