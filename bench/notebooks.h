// SPDX-License-Identifier: MIT
//
// The notebooks that are measured: cells of families in fixed proportions, the same bytes in every
// run. A family is one way to show a cell, with a style of its own.
#ifndef QPSREADER_BENCH_NOTEBOOKS_H
#define QPSREADER_BENCH_NOTEBOOKS_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "tests/support/notebook_builder.h"

namespace qps::bench {

enum class Family : std::uint8_t {
  kFixed,
  kComma,
  kCurrency,
  kPercent,
  kScientific,
  kInteger,  // record 13 in the General form
  kGeneral,  // a double in the General form
  kLabel,
  kDayMonthYear,
  kMonthYear,
  kNumericDate,
  kTime,
  kUserPlain,
  kUserCurrency,
  kUserSections,
  kUserDate,
};

struct FamilyRow {
  Family family;
  std::string_view name;
  unsigned record;
  unsigned format;  // of its style
};

inline constexpr unsigned kUserCode = 112;
inline constexpr std::string_view kUserFormats[] = {
    "N9,990.00",
    "N9,990.00' EUR'",
    "N0.00;N'none';N'('0.00')'",
    "TDD-Mon-YYYY",
};

// In the order of Family; the style of row i is number i + 1.
inline constexpr FamilyRow kFamilies[] = {
    {Family::kFixed, "fixed, 2 decimals", test::rec::kNumber, 0x12},
    {Family::kComma, "comma, 2 decimals", test::rec::kNumber, 0x52},
    {Family::kCurrency, "currency, 2 decimals", test::rec::kNumber, 0x32},
    {Family::kPercent, "percent, 2 decimals", test::rec::kNumber, 0x42},
    {Family::kScientific, "scientific, 2 decimals", test::rec::kNumber, 0x22},
    {Family::kInteger, "integer", test::rec::kInteger, 0},
    {Family::kGeneral, "general", test::rec::kNumber, 0},
    {Family::kLabel, "label, 12 characters", test::rec::kLabel, 0},
    {Family::kDayMonthYear, "DD-Mon-YY", test::rec::kNumber, 5},
    {Family::kMonthYear, "Mon-YY", test::rec::kNumber, 7},
    {Family::kNumericDate, "MM/DD/YY", test::rec::kNumber, 8},
    {Family::kTime, "HH:MM:SS AM", test::rec::kNumber, 10},
    {Family::kUserPlain, "user N9,990.00", test::rec::kNumber, kUserCode + 1},
    {Family::kUserCurrency, "user N9,990.00' EUR'", test::rec::kNumber, kUserCode + 2},
    {Family::kUserSections, "user, three sections", test::rec::kNumber, kUserCode + 3},
    {Family::kUserDate, "user TDD-Mon-YYYY", test::rec::kNumber, kUserCode + 4},
};

// Twenty families, by which the cells of a notebook are proportioned. `name` is that of a row of
// kFamilies, or one of "mix" (35 % fixed, 20 % comma and currency, 20 % integers, 15 % labels, 5 %
// dates, 5 % user formats), "numbers" (the numbers of that mix), "dates", "labels", "user".
using Deck = std::vector<Family>;
std::optional<Deck> findDeck(std::string_view name);

// How the families follow one another: by chance, or each column has one, as sheets mostly are.
enum class Order : std::uint8_t { kShuffled, kColumns };

inline constexpr unsigned kColumns = 20;

test::NotebookBuilder buildNotebook(const Deck& deck, std::size_t cells, std::size_t sheets = 1,
                                    Order order = Order::kShuffled);

}  // namespace qps::bench

#endif  // QPSREADER_BENCH_NOTEBOOKS_H
