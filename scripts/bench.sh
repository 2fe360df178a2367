#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# bench.sh [FLAG...]: measures the reader and the tool against the floors of the same run and prints
# one table (docs/performance.md says how to read it). The flags are bench/table.py's, for example
# --cells=100000 or --benchmark_filter=items.
#
# bench.sh --counts [DECK...]: instructions per cell, counted by callgrind, of the reader and of its
# floor; for changes that are too small for a clock. A deck is a name of bench/notebooks.h.
# shellcheck source=scripts/lib.sh
. "$(dirname "$0")/lib.sh"

bin=build/bench/bin

# instructions WHO DECK CELLS: what measuredRun takes.
instructions() {
  valgrind --tool=callgrind --callgrind-out-file=/dev/null --collect-atstart=no \
    --toggle-collect=measuredRun "$bin/qps_count_cells" "$@" 2>&1 |
    sed -n 's/.*Collected : //p'
}

# perCell WHO DECK: the difference of two sizes, which leaves the opening out.
perCell() {
  echo $(( ($(instructions "$1" "$2" 20000) - $(instructions "$1" "$2" 10000)) / 10000 ))
}

counts() {
  local deck decks=("$@")
  [ ${#decks[@]} -gt 0 ] || decks=(mix numbers dates labels user)
  printf '%-28s %8s %8s\n' "instructions a cell" reader floor
  for deck in "${decks[@]}"; do
    printf '%-28s %8d %8d\n' "$deck" "$(perCell reader "$deck")" "$(perCell floor "$deck")"
  done
}

need "${buildPackages[@]}" libbenchmark-dev python3
buildPreset bench qps zbolefio qps_bench qps_floor_csv qps_count_cells
if [ "${1:-}" = --counts ]; then
  need valgrind
  shift
  counts "$@"
else
  python3 bench/table.py "$bin" "$@"
fi
