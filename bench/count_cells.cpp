// SPDX-License-Identifier: MIT
//
// qps_count_cells reader|floor DECK CELLS: reads the cells of a notebook of a deck once, for a
// program that counts instructions. Everything to be counted is under measuredRun().
// qps_count_cells decks: prints the names of the decks.
#include <cstdio>
#include <cstdlib>
#include <string_view>

#include "bench/floor.h"
#include "bench/subject.h"

using namespace qps::bench;

extern "C" __attribute__((noinline)) std::size_t measuredRun(Subject& subject, bool floor) {
  if (!floor) return subject.items();
  return floorItems(subject.openedStream(), subject.offset(), TextBlocks::allocate,
                    &subject.texts())
      .cells;
}

int main(int argc, char** argv) {
  if (argc == 2 && std::string_view(argv[1]) == "decks") {
    for (const std::string_view name : deckNames())
      std::printf("%.*s\n", static_cast<int>(name.size()), name.data());
    return 0;
  }
  const auto deck = argc == 4 ? findDeck(argv[2]) : std::nullopt;
  if (!deck) return 2;
  Subject subject(buildNotebook(*deck, std::strtoul(argv[3], nullptr, 10)).bytes());
  std::printf("%zu\n", measuredRun(subject, std::string_view(argv[1]) == "floor"));
  return 0;
}
