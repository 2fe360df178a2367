// SPDX-License-Identifier: MIT
//
// Makes examples/budget.wb2, a household budget with two worksheets that shows what a notebook can
// hold, and examples/budget.wb3, the same in a compound document. It is the text recipe of those
// files: change this and run `make_example examples/budget.wb2 examples/budget.wb3`.
#include <cstdio>
#include <initializer_list>
#include <string_view>

#include "tests/support/compound_writer.h"
#include "tests/support/notebook_builder.h"

using namespace qps::test;

namespace {

// Palette indexes.
enum Colour : unsigned {
  kWhite = 0,
  kGrey = 1,
  kBlack = 3,
  kRed = 4,
  kYellow = 9,
  kGreen = 11,
  kNavy = 13
};

// Border lines, and the blend codes that the styles use.
enum Line : unsigned { kNoLine, kThin, kDouble };
enum Blend : unsigned { kSecondColour = 0, kFirstColour = 1, kQuarterOfFirst = 3 };

enum Horizontal : unsigned { kByContents, kLeft, kCentre, kRight };

// Format bytes: a family with its decimals, a built-in date, or 112 + the number of a user format.
enum Format : unsigned {
  kGeneral = 0,
  kDayMonthYear = 5,
  kTime24 = 13,
  kFixed3 = 0x13,
  kCurrency2 = 0x32,
  kPercent1 = 0x41,
  kComma2 = 0x52,
  kUserDate = 113,
  kUserKilometres = 114,
};

// The styles by number, in the order of their records.
enum StyleNumber : unsigned {
  kNormal = 1,
  kTitle,
  kHeading,
  kMoney,
  kDifference,
  kShare,
  kDue,
  kTotalLabel,
  kTotalMoney,
  kRemark,
  kTripDate,
  kDeparture,
  kDistance,
  kLitres,
  kConsumption,
};

void addDefinitions(NotebookBuilder& book) {
  book.header().dimensions(7, 10);
  book.settings(true);
  book.notebookText(rec::kText38, "Household budget").notebookText(rec::kText37, "Page 1");
  book.flag(rec::kFlag257, 0).flag(rec::kFlag258, 1).settings(false);

  constexpr unsigned kBold = 1, kItalic = 2;
  book.font(10, 0, "Arial").font(16, kBold, "Times New Roman").font(10, kBold, "Arial");
  book.font(9, kItalic, "Arial");
  book.userFormat(1, "TWday' 'DD-Mon-YYYY").userFormat(2, "N9,999' km'");

  constexpr unsigned kNormalId = 1, kTotalId = 2;
  book.namedStyle(kNormalId, kNormal, "Normal").namedStyle(kTotalId, kTotalLabel, "Total");
  const auto plain = [&book](unsigned format) {
    book.style({.format = format, .namedStyle = kNormalId});
  };
  const auto total = [&book](unsigned format) {
    book.style({.format = format,
                .colour1 = kGrey,
                .blend = kFirstColour,
                .font = 3,
                .lines = {kNoLine, kThin, kNoLine, kDouble},
                .namedStyle = kTotalId,
                .lineColours = {kBlack, kBlack, kBlack, kBlack}});
  };
  // In the order of StyleNumber.
  plain(kGeneral);
  book.style({.textColour = kNavy, .font = 2});
  book.style({.horizontal = kCentre,
              .colour1 = kNavy,
              .blend = kFirstColour,
              .textColour = kWhite,
              .font = 3,
              .lines = {kThin, kThin, kThin, kThin},
              .lineColours = {kNavy, kNavy, kNavy, kNavy}});
  plain(kCurrency2);
  book.style({.format = kComma2, .textColour = kRed, .namedStyle = kNormalId});
  plain(kPercent1);
  plain(kDayMonthYear);
  total(kGeneral);
  total(kCurrency2);
  book.style({.colour1 = kYellow,
              .colour2 = kWhite,
              .blend = kQuarterOfFirst,
              .textColour = kGreen,
              .font = 4,
              .namedStyle = kNormalId});
  plain(kUserDate);
  book.style({.format = kTime24, .horizontal = kRight, .namedStyle = kNormalId});
  plain(kUserKilometres);
  plain(kComma2);
  plain(kFixed3);
}

void addHeadings(NotebookBuilder& book, unsigned row,
                 std::initializer_list<std::string_view> texts) {
  unsigned column = 0;
  for (const std::string_view text : texts)
    book.label({column++, row, kHeading}, text);
}

void addBudgetSheet(NotebookBuilder& book) {
  struct BudgetLine {
    std::string_view item;
    double due, planned, spent, left, share;
  };
  constexpr BudgetLine kLines[] = {{"Rent", 45292, 1250, 1250, 0, 0.5414},
                                   {"Groceries", 45296, 420, 467.35, -47.35, 0.2024},
                                   {"Electricity", 45306, 95.5, 88.12, 7.38, 0.0382},
                                   {"Travel", 45311, 160, 203.4, -43.4, 0.0881},
                                   {"Savings", 45322, 300, 300, 0, 0.1299}};
  constexpr unsigned kHiddenRow = 8, kTotalRow = 9;
  book.sheetStart(0).sheetName("Budget").table(7, kTotalRow + 1);
  book.columnWidth(0, 2200).columnWidth(1, 1300).columnWidth(4, 1300).columnWidth(6, 2400);
  book.hiddenColumns(Body().u8(1u << 5)).rowHeight(0, 420);
  book.hiddenRows(Body().fill(kHiddenRow / 8).u8(1u << kHiddenRow % 8));

  book.label({0, 0, kTitle}, "Household budget, January 2024");
  addHeadings(book, 2, {"Item", "Due", "Planned", "Spent", "Left", "Share", "Remark"});
  unsigned row = 3;
  for (const BudgetLine& line : kLines) {
    book.label({0, row, kNormal}, line.item).number({1, row, kDue}, line.due);
    book.number({2, row, kMoney}, line.planned).number({3, row, kMoney}, line.spent);
    book.formula({4, row, kDifference}, line.left).formula({5, row, kShare}, line.share);
    if (line.left < 0)
      book.formulaWithString({6, row, kRemark}).string({6, row, kRemark}, "over budget");
    ++row;
  }
  book.label({0, kHiddenRow, kNormal}, "Lines").integer({2, kHiddenRow, kNormal}, 5);
  book.label({0, kTotalRow, kTotalLabel}, "Total").blank({1, kTotalRow, kTotalLabel});
  book.formula({2, kTotalRow, kTotalMoney}, 2225.5).formula({3, kTotalRow, kTotalMoney}, 2308.87);
  book.formula({4, kTotalRow, kTotalMoney}, -83.37).sheetEnd();
}

void addCarSheet(NotebookBuilder& book) {
  struct Trip {
    double day;
    int kilometres;
    double litres, consumption;
  };
  constexpr Trip kTrips[] = {{45294.3125, 412, 27.8, 6.7476},
                             {45303.40625, 1280, 88.65, 6.9258},
                             {45315.75, 96, 6.9, 7.1875}};
  book.sheetStart(1).sheetName("Car").table(5, 5);
  book.defaultColumnWidth(1400).columnWidth(0, 2000);
  book.label({0, 0, kTitle}, "Trips");
  addHeadings(book, 1, {"Day", "Departure", "Distance", "Litres", "Litres/100 km"});
  unsigned row = 2;
  for (const Trip& trip : kTrips) {
    book.number({0, row, kTripDate}, trip.day).number({1, row, kDeparture}, trip.day);
    book.integer({2, row, kDistance}, trip.kilometres).number({3, row, kLitres}, trip.litres);
    book.formula({4, row++, kConsumption}, trip.consumption);
  }
  book.sheetEnd();
}

bool writeFile(const char* path, const Bytes& bytes) {
  std::FILE* file = std::fopen(path, "wb");
  if (file == nullptr) {
    std::perror(path);
    return false;
  }
  const bool written = std::fwrite(bytes.data(), 1, bytes.size(), file) == bytes.size();
  if (std::fclose(file) == 0 && written) return true;
  std::perror(path);
  return false;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) {
    std::fputs("usage: make_example PLAIN_FILE COMPOUND_FILE\n", stderr);
    return 2;
  }
  NotebookBuilder book;
  addDefinitions(book);
  addBudgetSheet(book);
  addCarSheet(book);
  const Bytes& plain = book.end().bytes();
  const Bytes compound = writeCompound({}, {{"PerfectOffice_MAIN", plain}});
  return writeFile(argv[1], plain) && writeFile(argv[2], compound) ? 0 : 1;
}
