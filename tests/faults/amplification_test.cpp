// SPDX-License-Identifier: MIT
//
// Files that ask for much with little: four times as many records take four times as many host
// calls and as much memory, however the records lean on each other. Counts are compared, not times.
#include <gtest/gtest.h>

#include <functional>

#include "fuzz/session.h"
#include "tests/support/notebook_builder.h"

namespace qps::test {
namespace {

struct Cost {
  std::uint64_t calls;
  std::uint64_t poolBytes;
};

// Lists the worksheets and takes the items of the first three up to a bound.
Cost costOf(const Bytes& file) {
  constexpr std::size_t kMostItems = 1000;
  RecordingHost host(file);
  fuzz::visitNotebook(host, kMostItems, fuzz::kPlainWork);
  return {host.hostCalls(), host.peakPoolBytes()};
}

struct Growth {
  const char* name;
  std::size_t count;
  std::function<void(NotebookBuilder&, std::size_t)> define;  // before the worksheet, once a count
  std::function<void(NotebookBuilder&, std::size_t)> fill;    // in it, or behind it
};

Bytes fileOf(const Growth& growth, std::size_t count) {
  NotebookBuilder book;
  book.header();
  for (std::size_t i = 0; growth.define && i < count; ++i)
    growth.define(book, i);
  book.sheetStart().table(1, 1);
  for (std::size_t i = 0; growth.fill && i < count; ++i)
    growth.fill(book, i);
  book.label({}, "last").sheetEnd().end();
  return book.bytes();
}

// Row k alone, in a bitmap that ends with it.
Body oneRow(std::size_t row) {
  return Body().fill(row / 8).u8(1U << row % 8);
}

const Growth kGrowths[] = {
    {"unknown records", 100'000, [](auto& b, std::size_t) { b.record(999); }, {}},
    {"fonts", 50'000, [](auto& b, std::size_t) { b.record(rec::kFont); }, {}},
    {"styles", 15'000, [](auto& b, std::size_t) { b.record(rec::kStyle); }, {}},
    {"named styles", 50'000, [](auto& b, std::size_t) { b.record(rec::kNamedStyle); }, {}},
    {"user formats", 50'000, [](auto& b, std::size_t) { b.record(rec::kUserFormat); }, {}},
    {"replaced texts",
     50'000,
     [](auto& b, std::size_t) { b.settings(true).notebookText(rec::kText37, "text"); },
     {}},
    {"row heights", 250'000, {}, [](auto& b, std::size_t i) { b.rowHeight(i % 65536, 300); }},
    {"ranges of all rows", 250'000, {}, [](auto& b, std::size_t) { b.rowHeights(0, 65535, 300); }},
    {"rows hidden one by one", 2'000, {}, [](auto& b, std::size_t i) { b.hiddenRows(oneRow(i)); }},
    {"rows hidden one by one in a range",
     2'000,
     {},
     [](auto& b, std::size_t i) { b.rowHeights(0, 65535, 300).hiddenRows(oneRow(i)); }},
    {"column styles", 50'000, {}, [](auto& b, std::size_t i) { b.columnStyle(i % 256, 1); }},
    {"formulas without a cell", 50'000, {}, [](auto& b, std::size_t) { b.formulaSpecial({}, 1); }},
    {"empty worksheets",
     50'000,
     {},
     [](auto& b, std::size_t) { b.sheetEnd().sheetStart().table(1, 1); }},
    {"worksheets without an entry",
     50'000,
     {},
     [](auto& b, std::size_t) { b.sheetEnd().sheetStart().record(rec::kTable).sheetStart(); }},
};

TEST(Amplification, FourTimesTheRecordsCostFourTimes) {
  for (const Growth& growth : kGrowths) {
    SCOPED_TRACE(growth.name);
    const Bytes quarter = fileOf(growth, growth.count);
    const Bytes whole = fileOf(growth, 4 * growth.count);
    const Cost one = costOf(quarter);
    const Cost four = costOf(whole);
    const double ratio = static_cast<double>(whole.size()) / static_cast<double>(quarter.size());
    constexpr double kSlack = 1.05;
    EXPECT_LE(static_cast<double>(four.calls), kSlack * ratio * static_cast<double>(one.calls));
    EXPECT_LE(four.poolBytes, 128 * whole.size() + 65536);
  }
}

}  // namespace
}  // namespace qps::test
