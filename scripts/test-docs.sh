#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# test-docs.sh: makes the reference and the manual pages without a warning; each exported name has both.
# shellcheck source=scripts/lib.sh
. "$(dirname "$0")/lib.sh"

need doxygen man-db groff-base python3
passed=0 failed=0
check() {
  if "$@"; then passed=$((passed + 1)); else failed=$((failed + 1)) && echo "failed: $*"; fi
}

inReference() {
  grep -q "class=\"memtitle\">.*</a></span>$1\b" build/docs/html/qps__reader_8h.html build/docs/html/cell__value_8h.html
}

# As `man` finds and formats it: it has a line of NAME, and nothing that groff complains of.
hasManual() {
  local text
  text=$(MANPATH=$PWD/build/docs MANWIDTH=100 LC_ALL=C.UTF-8 man --warnings 3 "$1" 2> build/log/man.txt) &&
    grep -q "$1.* - [a-z].*[a-z]" <<< "$text" && [ ! -s build/log/man.txt ]
}

check scripts/build-docs.sh
while read -r name _; do
  check inReference "$name"
  check hasManual "$name"
done < <(grep '^[A-Za-z]' reader/exports.txt)
for name in SSStream SSHostServices SSItemCell SSWorkSheetList OLEInterface qpsreader; do
  check hasManual "$name"
done
echo "$passed passed, $failed failed, 0 skipped"
[ $failed = 0 ]
