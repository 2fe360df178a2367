#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# coverage.sh: which lines and branches of the reader and of olefio their own tests reach. Only
# programs that assert results count: no fuzz target, no sweep over damaged files, no tool.
# shellcheck source=scripts/lib.sh
. "$(dirname "$0")/lib.sh"

programs=(reader_tests render_tests olefio_tests fault_tests)

need "${buildPackages[@]}" python3
buildPreset coverage "${programs[@]}"
find build/coverage -name '*.gcda' -delete
for program in "${programs[@]}"; do
  quietly "coverage-$program" "build/coverage/bin/$program"
done
exec python3 scripts/coverage_report.py build/coverage \
  reader/{frame,render,styles,format,scan,items,sheetinfo} olefio
