// SPDX-License-Identifier: MIT
#include "bench/notebooks.h"

#include <array>
#include <random>
#include <string>

namespace qps::bench {
namespace {

using test::At;
using test::NotebookBuilder;

struct Share {
  Family family;
  unsigned twentieths;
};

struct Mix {
  std::string_view name;
  std::vector<Share> shares;
};

const Mix kMixes[] = {
    {"mix",
     {{Family::kFixed, 7},
      {Family::kComma, 2},
      {Family::kCurrency, 2},
      {Family::kInteger, 4},
      {Family::kLabel, 3},
      {Family::kDayMonthYear, 1},
      {Family::kUserCurrency, 1}}},
    {"numbers",
     {{Family::kFixed, 9}, {Family::kComma, 3}, {Family::kCurrency, 3}, {Family::kInteger, 5}}},
    {"dates", {{Family::kDayMonthYear, 10}, {Family::kMonthYear, 5}, {Family::kNumericDate, 5}}},
    {"labels", {{Family::kLabel, 20}}},
    {"user", {{Family::kUserPlain, 8}, {Family::kUserCurrency, 8}, {Family::kUserSections, 4}}},
};

// Numbers that do not depend on the standard library's distributions.
class Chance {
 public:
  std::uint64_t below(std::uint64_t bound) { return engine_() % bound; }
  bool oneIn(std::uint64_t count) { return below(count) == 0; }

  // An amount of one to seven digits with `decimals`, one in ten below 0.
  double amount(unsigned decimals) {
    constexpr std::array<std::uint64_t, 8> kPowers = {1,      10,      100,       1'000,
                                                      10'000, 100'000, 1'000'000, 10'000'000};
    const std::uint64_t bound = kPowers[1 + below(7)] * kPowers[decimals];
    const double value = static_cast<double>(below(bound)) / static_cast<double>(kPowers[decimals]);
    return oneIn(10) ? -value : value;
  }

  double day() { return static_cast<double>(1 + below(60'000)); }

  std::string word() {
    std::string text(12, ' ');
    for (char& character : text)
      character = static_cast<char>('a' + below(26));
    return text;
  }

 private:
  std::mt19937_64 engine_{20};
};

void addDefinitions(NotebookBuilder& book) {
  book.header().dimensions(kColumns, 65'536);
  book.font(10, 0, "Arial").font(12, 1, "Times New Roman");
  for (unsigned i = 0; i < std::size(kUserFormats); ++i)
    book.userFormat(i + 1, kUserFormats[i]);
  for (const FamilyRow& row : kFamilies)
    book.style({.format = row.format, .colour2 = 0, .font = 1});
  book.namedStyle(0, 1, "Normal");
}

void addCell(NotebookBuilder& book, Family family, unsigned row, unsigned column, Chance& chance) {
  const At at{column, row, static_cast<unsigned>(family) + 1};
  switch (family) {
    case Family::kInteger:
      book.integer(at, static_cast<int>(chance.below(65'536)) - 32'768);
      break;
    case Family::kLabel:
      book.label(at, chance.word());
      break;
    case Family::kGeneral:
      book.number(at, chance.amount(static_cast<unsigned>(1 + chance.below(4))));
      break;
    case Family::kPercent:
      book.number(at, chance.amount(4) / 1'000);
      break;
    case Family::kDayMonthYear:
    case Family::kMonthYear:
    case Family::kNumericDate:
    case Family::kUserDate:
      book.number(at, chance.day());
      break;
    case Family::kTime:
      book.number(at, chance.day() + static_cast<double>(chance.below(86'400)) / 86'400.0);
      break;
    default:
      book.number(at, chance.amount(2));
  }
}

}  // namespace

std::optional<Deck> findDeck(std::string_view name) {
  for (const FamilyRow& row : kFamilies)
    if (row.name == name) return Deck(20, row.family);
  for (const Mix& mix : kMixes) {
    if (mix.name != name) continue;
    Deck deck;
    for (const Share& share : mix.shares)
      deck.insert(deck.end(), share.twentieths, share.family);
    return deck;
  }
  return std::nullopt;
}

NotebookBuilder buildNotebook(const Deck& deck, std::size_t cells, std::size_t sheets,
                              Order order) {
  Chance chance;
  NotebookBuilder book;
  addDefinitions(book);
  for (std::size_t sheet = 0; sheet < sheets; ++sheet) {
    const std::size_t first = cells * sheet / sheets;
    const auto count = static_cast<unsigned>(cells * (sheet + 1) / sheets - first);
    book.sheetStart(static_cast<unsigned>(sheet)).table(kColumns, count / kColumns + 1);
    book.defaultColumnWidth(2'400);
    for (unsigned i = 0; i < count; ++i) {
      const std::size_t pick = order == Order::kColumns ? i : chance.below(deck.size());
      addCell(book, deck[pick % deck.size()], i / kColumns, i % kColumns, chance);
    }
    book.sheetEnd();
  }
  return book.end();
}

}  // namespace qps::bench
