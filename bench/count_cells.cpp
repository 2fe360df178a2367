// SPDX-License-Identifier: MIT
//
// qps_count_cells reader|floor DECK CELLS: reads the cells of a notebook of a deck once, for a
// program that counts instructions. Everything to be counted is under measuredRun().
// qps_count_cells file DECK CELLS: prints such a notebook.
#include <cstdio>
#include <cstdlib>
#include <string_view>

#include "bench/floor.h"
#include "bench/subject.h"

using namespace qps::bench;

extern "C" __attribute__((noinline)) std::size_t measuredRun(Subject& subject, bool floor) {
  if (!floor) return subject.items();
  return floorItems(subject.openedStream(), subject.offset(), TextBlocks::allocate,
                    &subject.texts());
}

int main(int argc, char** argv) {
  const auto deck = argc == 4 ? findDeck(argv[2]) : std::nullopt;
  if (!deck) return 2;
  const auto book = buildNotebook(*deck, std::strtoul(argv[3], nullptr, 10));
  if (std::string_view(argv[1]) == "file") {
    const bool written = std::fwrite(book.bytes().data(), book.bytes().size(), 1, stdout) == 1;
    return written ? 0 : 1;
  }
  Subject subject(book.bytes());
  std::printf("%zu\n", measuredRun(subject, std::string_view(argv[1]) == "floor"));
  return 0;
}
