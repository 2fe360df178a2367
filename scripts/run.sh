#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# run.sh [FILE]: builds the tool if need be and prints a notebook with it (examples/budget.wb2 when
# none is named). Everything but the notebook goes to standard error.
# shellcheck source=scripts/lib.sh
. "$(dirname "$0")/lib.sh"

need "${buildPackages[@]}"
buildPreset release qps zbolefio
qps=$PWD/build/release/bin/qps

if [ $# = 0 ]; then set -- examples/budget.wb2; else cd "$calledFrom"; fi
"$qps" sheets "$1"
echo
exec "$qps" text "$1"
