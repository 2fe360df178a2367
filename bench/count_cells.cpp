// SPDX-License-Identifier: MIT
//
// qps_count_cells reader|floor DECK CELLS: reads the cells of a notebook of a deck once, for a
// program that counts instructions. Everything to be counted is under measuredRun().
// qps_count_cells decks: prints the names of the decks.
#include <cstdio>
#include <cstdlib>
#include <string_view>

#include "bench/floor.h"
#include "bench/notebooks.h"
#include "bench/subject.h"

using namespace qps::bench;

extern "C" __attribute__((noinline)) std::size_t measuredRun(Subject& subject, bool floor) {
  const std::uint32_t offset = subject.reading.offset();
  if (!floor) return subject.reading.items(offset);
  subject.host.stream()->open(subject.host.stream());
  return floorItems(subject.host.stream(), offset, MemoryHost::itemAlloc, &subject.host).cells;
}

int main(int argc, char** argv) {
  if (argc == 2 && std::string_view(argv[1]) == "decks") {
    for (const std::string_view name : deckNames())
      std::printf("%.*s\n", static_cast<int>(name.size()), name.data());
    return 0;
  }
  if (argc != 4) return 2;
  const auto deck = findDeck(argv[2]);
  if (!deck) return 2;
  Subject subject(buildNotebook(*deck, std::strtoul(argv[3], nullptr, 10)).bytes());
  std::printf("%zu\n", measuredRun(subject, std::string_view(argv[1]) == "floor"));
  return 0;
}
