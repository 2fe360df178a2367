// SPDX-License-Identifier: MIT
//
// What a value shows: one row is a format, a value and a column, and the text and the alignment of
// the cell that comes out of a notebook built to provoke it.
#ifndef QPSREADER_TESTS_SHOWN_VALUE_H
#define QPSREADER_TESTS_SHOWN_VALUE_H

#include <initializer_list>
#include <limits>

#include "tests/reader/read_book.h"

namespace qps::test {

inline constexpr double kInf = std::numeric_limits<double>::infinity();
inline constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
inline constexpr unsigned kNumeric = 0x8A, kLeft = 0x0C, kOverflow = 0x1C, kUser = 113;
inline constexpr const char* kNoText = "(null)";

struct Format {
  unsigned code = 0;           // the format byte of a style
  const char* text = nullptr;  // of the user format 113
  const char* styleName = nullptr;
  unsigned width = 960;  // eight characters of a font of size 10
  unsigned fontSize = 10;
  unsigned version = 4098;
};

inline Item show(const Format& format, double value) {
  NotebookBuilder book;
  book.header(format.version).font(format.fontSize, 0, "Arial");
  if (format.text != nullptr) book.userFormat(1, format.text);
  if (format.styleName != nullptr) book.namedStyle(1, 99, format.styleName);
  book.style({.format = format.code, .font = 1, .namedStyle = format.styleName != nullptr});
  book.sheetStart().columnWidth(0, format.width).number({0, 0}, value).sheetEnd();
  return cellsOf(book).at(0);
}

inline std::string textOf(const Format& format, double value) {
  return show(format, value).text.value_or(kNoText);
}

struct Row {
  Format format;
  double value;
  const char* text;
  unsigned alignment = kNumeric;
};

inline void check(std::initializer_list<Row> rows) {
  for (const Row& row : rows) {
    const Item cell = show(row.format, row.value);
    const auto trace = [&row] {
      return "code " + std::to_string(row.format.code) + " value " + std::to_string(row.value) +
             " width " + std::to_string(row.format.width) +
             (row.format.text != nullptr ? std::string(" format ") + row.format.text : "");
    };
    EXPECT_EQ(cell.text.value_or(kNoText), row.text) << trace();
    EXPECT_EQ(cell.alignment(), row.alignment) << trace();
  }
}

constexpr Format general(unsigned characters) {
  return {.width = characters * 120};
}

constexpr Format user(const char* text) {
  return {.code = kUser, .text = text};
}
constexpr Format dated(const char* text) {
  return {.code = kUser, .text = text, .styleName = "Date"};
}

}  // namespace qps::test

#endif  // QPSREADER_TESTS_SHOWN_VALUE_H
