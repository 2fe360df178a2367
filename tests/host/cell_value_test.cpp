// SPDX-License-Identifier: MIT
//
// CellView::value: the values that were written come back, from a file, memory and a document, and
// dates are those that the reader shows.
#include <gtest/gtest.h>

#include <bit>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include <qpsreader/host/notebook.hpp>
#include "tests/support/compound_writer.h"
#include "tests/support/notebook_builder.h"

namespace qps::test {
namespace {

using namespace std::chrono_literals;

struct Written {
  CellValue::Kind kind = CellValue::Kind::kBlank;
  bool isFormula = false;
  double number = 0;
  std::string text;
};

// A number of any bits, but for those that mean something else in a formula.
double anyDouble(std::mt19937_64& random) {
  const uint64_t bits = random();
  const bool isSpecial = (bits >> 48 & 0x7FF0) == 0x7FF0;
  return std::bit_cast<double>(isSpecial && random() % 8 != 0 ? bits & ~(uint64_t{1} << 62) : bits);
}

std::string anyText(std::mt19937_64& random) {
  std::string text(static_cast<std::size_t>(random() % 60), ' ');
  for (char& c : text)
    c = static_cast<char>(1 + random() % 255);
  return text;
}

Written addCell(NotebookBuilder& book, At at, std::mt19937_64& random) {
  using Kind = CellValue::Kind;
  switch (random() % 8) {
    case 0:
      book.blank(at);
      return {};
    case 1: {
      const auto number = static_cast<int16_t>(random());
      book.integer(at, number);
      return {Kind::kNumber, false, static_cast<double>(number), ""};
    }
    case 2: {
      const double number = anyDouble(random);
      book.number(at, number);
      return {Kind::kNumber, false, number, ""};
    }
    case 3: {
      const std::string text = anyText(random);
      book.label(at, text);
      return {Kind::kText, false, 0, text};
    }
    case 4: {
      const double number = static_cast<double>(random()) / 1e15;
      book.formula(at, number);
      return {Kind::kNumber, true, number, ""};
    }
    case 5: {
      const auto low = static_cast<unsigned>(random() & 0xFFFF);
      book.formulaSpecial(at, 3, low);
      return {Kind::kNumber, true, static_cast<double>(0x30000 + low), ""};
    }
    case 6:
      book.formulaSpecial(at, 0);
      return {Kind::kError, true, 0, ""};
    default: {
      const std::string text = anyText(random);
      book.formulaWithString(at).string(at, text);
      return {Kind::kText, true, 0, text};
    }
  }
}

// Not every machine hands on each bit of what is no number.
bool isSame(double a, double b) {
  return std::isnan(a) ? std::isnan(b) : std::bit_cast<uint64_t>(a) == std::bit_cast<uint64_t>(b);
}

TEST(HostCellValue, RandomCellsComeBackAsTheyWereWritten) {
  std::mt19937_64 random(20240105);
  NotebookBuilder book;
  book.header().userFormat(1, "TDD-Mon-YYYY").userFormat(2, "N9,999.00");
  for (const unsigned format : {0u, 4u, 0x12u, 0x32u, 5u, 12u, 113u, 114u})
    book.style({.format = format});
  book.sheetStart().table(1, 1).columnWidth(1, 100).hiddenColumns(
      Body().u8(4));  // a narrow one, a hidden one
  std::vector<Written> cells;
  for (unsigned row = 0; row < 3000; ++row)
    cells.push_back(addCell(book, {row % 4, row, static_cast<unsigned>(1 + random() % 9)}, random));
  const Bytes plain = book.sheetEnd().end().bytes();
  const Bytes compound = writeCompound({}, {{"PerfectOffice_MAIN", plain}});

  for (const Bytes* bytes : {&plain, &compound}) {
    SCOPED_TRACE(bytes == &plain ? "plain" : "compound");
    const auto notebook = Notebook::open(std::span(*bytes));
    ASSERT_TRUE(notebook) << notebook.error().message;
    auto expected = cells.begin();
    for (const Item& item : notebook->items(notebook->sheets()[0])) {
      const auto cell = item.cell();
      if (!cell) continue;
      ASSERT_NE(expected, cells.end());
      SCOPED_TRACE(cell->row());
      const CellValue value = cell->value();
      EXPECT_EQ(value.kind(), expected->kind);
      EXPECT_EQ(value.isFormula(), expected->isFormula);
      EXPECT_EQ(value.number().has_value(), expected->kind == CellValue::Kind::kNumber);
      EXPECT_TRUE(isSame(value.number().value_or(0), expected->number)) << expected->number;
      EXPECT_EQ(value.text().has_value(), expected->kind == CellValue::Kind::kText);
      EXPECT_EQ(value.text().value_or(""), expected->text);
      ++expected;
    }
    EXPECT_EQ(expected, cells.end());
  }
}

TEST(HostCellValue, SaysTheFormatAndWhatItShows) {
  NotebookBuilder book;
  book.header().userFormat(1, "TDD HH").style({.format = 0x52}).namedStyle(1, 1, "Total");
  book.style({.format = 113, .namedStyle = 1}).sheetStart().table(1, 1);
  book.number({.style = 1}, 1.5).number({.style = 2}, 1.5).label({.style = 2}, "a");
  const Bytes bytes = book.sheetEnd().end().bytes();
  const auto notebook = Notebook::open(std::span(bytes));
  ASSERT_TRUE(notebook);
  ItemRange items = notebook->items(notebook->sheets()[0]);
  auto item = items.begin();
  ++item;
  const CellValue comma = item->cell()->value();
  EXPECT_EQ(comma.format().code, 80u);
  EXPECT_EQ(comma.format().decimals, 2u);
  EXPECT_FALSE(comma.format().showsDate || comma.format().showsTime || comma.format().text);
  EXPECT_EQ(comma.format().styleName, "");
  EXPECT_FALSE(comma.isDate() || comma.dateTime());
  ++item;
  const CellValue date = item->cell()->value();
  EXPECT_EQ(date.format().code, 113u);
  EXPECT_EQ(date.format().text, "TDD HH");
  EXPECT_EQ(date.format().styleName, "Total");
  EXPECT_TRUE(date.format().showsDate && date.format().showsTime && date.isDate());
  EXPECT_EQ(date.dateTime(), dateTimeOf(1.5));
  ++item;
  EXPECT_FALSE(item->cell()->value().isDate() || item->cell()->value().dateTime());
  EXPECT_EQ(++item, items.end());
  SSItemCell bare{};
  EXPECT_EQ(CellView(bare).value().kind(), CellValue::Kind::kBlank);
}

TEST(HostDateTime, HasTheReadersCalendarAndRange) {
  using std::chrono::year;
  const struct {
    double serial;
    std::chrono::year_month_day date;
    std::chrono::seconds time;
  } rows[] = {
      {0, year(1899) / 12 / 30, 0s},           {-0.25, year(1899) / 12 / 30, 18h},
      {60.5, year(1900) / 2 / 28, 12h},        {61, year(1900) / 3 / 1, 0s},
      {-364, year(1898) / 12 / 31, 0s},        {36585, year(2000) / 2 / 29, 0s},
      {45296.999999, year(2024) / 1 / 5, 24h}, {-693593, year(1) / 1 / 1, 0s},
      {11274306, year(32767) / 12 / 31, 0s},   {-12661859, year(-32767) / 1 / 1, 0s},
  };
  for (const auto& row : rows)
    EXPECT_EQ(dateTimeOf(row.serial), (DateTime{row.date, row.time})) << row.serial;
  EXPECT_EQ(dateTimeOf(45296.999999)->time(), dateTimeOf(45297)->time());
  for (const double serial : {11274307.0, -12661860.0, 1e300, HUGE_VAL, -HUGE_VAL, std::nan("")})
    EXPECT_FALSE(dateTimeOf(serial)) << serial;
}

TEST(HostDateTime, IsWhatTheReaderShows) {
  std::mt19937_64 random(7);
  std::vector<double> serials;
  for (int i = 0; i < 2000; ++i) {
    const auto day = static_cast<double>(static_cast<int64_t>(random() % 6000000) - 3000000);
    const double half = (static_cast<double>(random() % 86400) + 0.5) / 86400;
    const double fractions[] = {static_cast<double>(random() >> 11) * 0x1p-53, half,
                                std::nextafter(half, 0), std::nextafter(half, 1), 0x1p-60};
    for (const double fraction : fractions)
      for (const double whole : {0.0, day})
        serials.push_back(std::copysign(std::fabs(whole) + fraction, day));
  }
  NotebookBuilder book;
  book.header()
      .userFormat(1, "TYYYY MM DD HH MM SS")
      .style({.format = 113})
      .sheetStart()
      .table(1, 1);
  for (const double serial : serials)
    book.number({}, serial);
  const Bytes bytes = book.sheetEnd().end().bytes();
  const auto notebook = Notebook::open(std::span(bytes));
  ASSERT_TRUE(notebook);
  auto serial = serials.begin();
  for (const Item& item : notebook->items(notebook->sheets()[0])) {
    const auto cell = item.cell();
    if (!cell) continue;
    const auto shown = cell->value().dateTime();
    ASSERT_TRUE(shown) << *serial;
    const std::chrono::hh_mm_ss time(shown->timeOfDay % 24h);
    char text[64];
    std::snprintf(text, sizeof text, "%.4d %.2u %.2u %.2d %.2d %.2d", int(shown->date.year()),
                  unsigned(shown->date.month()), unsigned(shown->date.day()),
                  static_cast<int>(time.hours().count()), static_cast<int>(time.minutes().count()),
                  static_cast<int>(time.seconds().count()));
    EXPECT_EQ(cell->text(), text) << std::hexfloat << *serial;
    ++serial;
  }
  EXPECT_EQ(serial, serials.end());
}

}  // namespace
}  // namespace qps::test
