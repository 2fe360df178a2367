// SPDX-License-Identifier: MIT
//
// What the tests of the reader say: a notebook of the builder goes in, items come out, and nothing
// is left behind.
#ifndef QPSREADER_TESTS_READ_BOOK_H
#define QPSREADER_TESTS_READ_BOOK_H

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "tests/support/sheet_driver.h"

namespace qps::test {

using Add = std::function<void(NotebookBuilder&)>;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;

inline SheetRun readClean(RecordingHost& host, uint32_t offset) {
  const SheetRun run = readSheet(host, offset);
  EXPECT_EQ(host.state(), "clean");
  EXPECT_EQ(run.closeResult, run.opened ? 0 : -2);
  EXPECT_LE(host.largestRead(), 5120u);
  return run;
}

inline SheetRun readBook(const NotebookBuilder& book, size_t sheet = 0) {
  RecordingHost host(book.bytes());
  return readClean(host, book.sheetOffset(sheet));
}

// A notebook of one worksheet: `define` stands before it, `fill` in it.
inline NotebookBuilder bookOf(const Add& define, const Add& fill) {
  NotebookBuilder book;
  define(book.header());
  fill(book.sheetStart());
  book.sheetEnd().end();
  return book;
}

inline void nothing(NotebookBuilder&) {}

inline std::vector<std::string> lines(const std::vector<Item>& items) {
  std::vector<std::string> result;
  for (const Item& item : items)
    result.push_back(describe(item));
  return result;
}

inline std::vector<Item> cellsOf(const NotebookBuilder& book) {
  return readBook(book).only(SSItemKindCell);
}

inline std::string sheetInfoOf(const NotebookBuilder& book) {
  const SheetRun run = readBook(book);
  return run.items.empty() ? "not opened" : describe(run.items.front());
}

// "text" of every cell, "(null)" where there is none.
inline std::vector<std::string> textsOf(const NotebookBuilder& book) {
  std::vector<std::string> result;
  for (const Item& cell : cellsOf(book))
    result.push_back(cell.text.value_or("(null)"));
  return result;
}

}  // namespace qps::test

#endif  // QPSREADER_TESTS_READ_BOOK_H
