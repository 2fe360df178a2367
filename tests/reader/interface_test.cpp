// SPDX-License-Identifier: MIT
//
// The table of operations, the handle, the operations that read no file, and null arguments.
#include <cstring>

#include "tests/reader/read_book.h"

namespace qps::test {
namespace {

TEST(Interface, TableHoldsTheOperationsInOrder) {
  SSReaderInterface table;
  std::memset(&table, 0xA5, sizeof(table));
  qpsGetSSReaderInterface(&table);
  EXPECT_EQ(table.allocateReader, &QPSAllocateReader);
  EXPECT_EQ(table.closeReader, &QPSCloseReader);
  EXPECT_EQ(table.getCharSet, &QPSGetCharSet);
  EXPECT_EQ(table.reserved3, nullptr);
  EXPECT_EQ(table.getWorkSheetInfo, &QPSGetWorkSheetInfo);
  EXPECT_EQ(table.reserved5, nullptr);
  EXPECT_EQ(table.initSheet, &QPSInitSheet);
  EXPECT_EQ(table.processSheet, &QPSProcessSheet);
  EXPECT_EQ(table.closeSheet, &QPSCloseSheet);
}

TEST(Interface, HandleHoldsTheArgumentsInItsWords) {
  RecordingHost host({});
  int owner, ignored, value1, value2;
  QPSReader* reader =
      QPSAllocateReader(&owner, &ignored, host.stream(), host.services(), &value1, &value2);
  ASSERT_NE(reader, nullptr);
  EXPECT_EQ(reader->owner, &owner);
  EXPECT_EQ(reader->stream, host.stream());
  EXPECT_EQ(reader->services, host.services());
  EXPECT_EQ(reader->sheetCount, 0u);
  EXPECT_EQ(reader->sheetTable, nullptr);
  EXPECT_EQ(reader->hostValue2, &value2);
  EXPECT_EQ(reader->hostValue1, &value1);
  EXPECT_EQ(host.hostCalls(), 1u);

  SSHostServices* services = reader->services;
  reader->services = nullptr;
  QPSCloseReader(reader);
  EXPECT_EQ(QPSInitSheet(reader, nullptr, 0, RecordingHost::itemAlloc, nullptr), nullptr);
  EXPECT_EQ(host.hostCalls(), 1u) << "a handle without services is left alone";
  reader->services = services;
  reader->stream = nullptr;
  EXPECT_EQ(QPSInitSheet(reader, nullptr, 0, RecordingHost::itemAlloc, nullptr), nullptr);
  QPSCloseReader(reader);
  EXPECT_EQ(host.state(), "clean");

  host.fail({.step = Step::kPoolBlock});
  EXPECT_EQ(QPSAllocateReader(nullptr, nullptr, nullptr, host.services(), nullptr, nullptr),
            nullptr);
}

TEST(Interface, NullArgumentsAreAnswered) {
  QPSCloseReader(nullptr);
  uint32_t charSet = 7;
  EXPECT_EQ(QPSGetCharSet(nullptr, &charSet), 0);
  EXPECT_EQ(charSet, 0u);
  SSWorkSheetList list{0xA5A5A5A5, nullptr};
  EXPECT_EQ(QPSGetWorkSheetInfo(nullptr, &list, 0), 0);
  EXPECT_EQ(QPSGetWorkSheetInfo(nullptr, &list, 1), 1);
  EXPECT_EQ(QPSInitSheet(nullptr, nullptr, 0, RecordingHost::itemAlloc, nullptr), nullptr);
  EXPECT_EQ(QPSCloseSheet(nullptr), -1);
}

TEST(Interface, ANonzeroSelectorListsNothing) {
  RecordingHost host(everyRecordNotebook().bytes());
  QPSReader* reader =
      QPSAllocateReader(nullptr, nullptr, host.stream(), host.services(), nullptr, nullptr);
  const size_t calls = host.hostCalls();
  SSWorkSheetList list{0xA5A5A5A5, nullptr};
  EXPECT_EQ(QPSGetWorkSheetInfo(reader, &list, 5), 1);
  EXPECT_EQ(list.entries, nullptr);
  EXPECT_EQ(host.hostCalls(), calls);
  QPSCloseReader(reader);
}

TEST(Interface, ExponentsWidenFromTwoDigitsToThree) {
  const std::string atLimit = std::string(269, '1') + "E+05";
  const std::string beyond = std::string(270, '1') + "E+05";
  const std::pair<std::string, std::string> rows[] = {{"1.23E+05", "1.23E+005"},
                                                      {"4.00E-12", "4.00E-012"},
                                                      {"1.00E+00", "1.00E+000"},
                                                      {"1.00E+100", "1.00E+100"},
                                                      {"1E+5", "1E+5"},
                                                      {"12.5", "12.5"},
                                                      {"", ""},
                                                      {"E", "E"},
                                                      {"1E+", "1E+"},
                                                      {"1.0E+05E+05", "1.0E+05E+05"},
                                                      {beyond, beyond},
                                                      {atLimit, std::string(269, '1') + "E+005"}};
  for (const auto& [text, expected] : rows) {
    std::vector<char> area(text.size() + 2, 'x');
    std::memcpy(area.data(), text.c_str(), text.size() + 1);
    qps2to3E(area.data());
    EXPECT_STREQ(area.data(), expected.c_str());
  }
}

}  // namespace
}  // namespace qps::test
