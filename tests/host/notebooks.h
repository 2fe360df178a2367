// SPDX-License-Identifier: MIT
//
// Notebooks that several tests of the host open, and what their items must be.
#ifndef QPSREADER_TESTS_HOST_NOTEBOOKS_H
#define QPSREADER_TESTS_HOST_NOTEBOOKS_H

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include <qpsreader/host/notebook.hpp>
#include "tests/support/notebook_builder.h"
#include "tests/support/sheet_driver.h"

namespace qps::test {

// Two worksheets with `rows` labels each.
inline NotebookBuilder twoSheets(unsigned rows) {
  NotebookBuilder builder;
  builder.header();
  for (unsigned sheet = 0; sheet < 2; ++sheet) {
    builder.sheetStart(sheet).table(1, rows);
    for (unsigned row = 0; row < rows; ++row)
      builder.label({.row = row}, "label " + std::to_string(row));
    builder.sheetEnd();
  }
  return builder.end();
}

using ItemsBySheet = std::vector<std::vector<test::Item>>;

// As the exported operations deliver them.
inline ItemsBySheet itemsBySheet(const Bytes& plain) {
  ItemsBySheet result;
  RecordingHost host(plain);
  for (const auto& entry : listSheets(host).value_or(std::vector<SSWorkSheetEntry>{}))
    result.push_back(readSheet(host, entry.startOffset).items);
  return result;
}

inline void expectItems(const char* from, const ItemsBySheet& expected,
                        const Expected<Notebook>& notebook) {
  SCOPED_TRACE(from);
  ASSERT_TRUE(notebook) << notebook.error().message;
  ASSERT_EQ(notebook->sheets().size(), expected.size());
  for (const Sheet& sheet : notebook->sheets()) {
    auto reference = expected[sheet.index].begin();
    ItemRange items = notebook->items(sheet);
    for (const qps::Item& item : items) {
      ASSERT_NE(reference, expected[sheet.index].end());
      ASSERT_EQ(item.raw().kind, reference->kind());
      if (const auto cell = item.cell()) {
        EXPECT_EQ(cell->row(), reference->row());
        EXPECT_EQ(cell->column(), reference->column());
        EXPECT_EQ(cell->hasText() ? std::optional<std::string>(cell->text()) : std::nullopt,
                  reference->text);
        EXPECT_EQ(cell->style().alignment, reference->alignment());
      }
      if (const auto text = item.notebookText()) {
        EXPECT_EQ(*text, reference->text);
      }
      ++reference;
    }
    EXPECT_EQ(reference, expected[sheet.index].end());
    EXPECT_FALSE(items.error());
  }
}

}  // namespace qps::test

#endif  // QPSREADER_TESTS_HOST_NOTEBOOKS_H
