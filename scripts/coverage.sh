#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# coverage.sh: which lines and branches of the reader and of olefio the tests reach. Only programs
# that assert results count: the fuzz targets' replays and the damage sweep are left out.
# shellcheck source=scripts/lib.sh
. "$(dirname "$0")/lib.sh"

need "${buildPackages[@]}" python3
buildPreset coverage
find build/coverage -name '*.gcda' -delete
quietly coverage-test ctest --preset coverage -j "$(nproc)" -E '^(fuzz|faults)\.' || status=$?
[ "${status:-0}" = 0 ] || echo "coverage.sh: some tests failed; the figures are of those that ran"
exec python3 scripts/coverage_report.py build/coverage \
  reader render styles format scan items sheetinfo olefio
