#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# test.sh [STEP...]: builds the project in its several ways, runs all tests under each, and checks
# the sources. Without a STEP it takes all of them; the last line says how many checks passed.
# shellcheck source=scripts/lib.sh
. "$(dirname "$0")/lib.sh"

# One row a step: its name, the function that does it with that name, the packages that it takes.
steps=(
  "release preset libgsf-bin python3-xlwt python3-html5lib python3-jsonschema chromium fish zsh"
  "clang        preset  clang-14"
  "asan         preset"
  "format       format  clang-format-14"
  "includes     includes"
  "tidy         tidy    clang-14 clang-tidy-14"
  "integrations script"
  "i686         preset  g++-i686-linux-gnu googletest qemu-user"
  "s390x        preset  g++-s390x-linux-gnu googletest qemu-user"
  "mingw        windows g++-mingw-w64-x86-64-posix googletest wine64"
)

# Only when they are named (scripts/test-long.sh does it).
namedSteps=(
  "char-unsigned preset"
  "tsan          preset"
)

passed=0 failed=0

# count STATUS: one more check that passed (0) or failed.
count() {
  if [ "$1" = 0 ]; then passed=$((passed + 1)); else failed=$((failed + 1)); fi
}

# Builds a preset and runs its tests; each counts.
preset() {
  local summary log=build/log/$1-test.txt status=0
  buildPreset "$1" || { count 1; return; }
  ctest --preset "$1" -j "$(nproc)" > "$log" 2>&1 || status=$?
  # "98% tests passed, 2 tests failed out of 100"
  summary=$(sed -n 's/.*tests passed, \([0-9]*\) tests failed out of \([0-9]*\)$/\1 \2/p' "$log")
  if [ -z "$summary" ] || { [ $status != 0 ] && [ "${summary% *}" = 0 ]; }; then
    tail -n 30 "$log"
    count 1
    return
  fi
  [ $status = 0 ] || grep -E -A 12 'Failure$|\*\*\*|ERROR: |runtime error:' "$log" | head -n 200
  failed=$((failed + ${summary% *}))
  passed=$((passed + ${summary#* } - ${summary% *}))
  echo "     ${summary#* } tests, ${summary% *} failed ($log)"
}

# The mingw preset, in a Wine prefix of its own that is set up before the first test starts a clock.
windows() {
  export WINEPREFIX=$PWD/build/wine
  quietly wine-setup env WINEDEBUG=-all /usr/lib/wine/wine64 wineboot --init || true
  preset "$1"
}

# Runs scripts/test-NAME.sh, which ends with "N passed, N failed" as this one does.
script() {
  local log=build/log/$1.txt summary
  "scripts/test-$1.sh" > "$log" 2>&1 || grep -v '^ok' "$log" || true
  summary=$(sed -n '$s/^\([0-9]*\) passed, \([0-9]*\) failed$/\1 \2/p' "$log")
  [ -n "$summary" ] || { count 1; return; }
  passed=$((passed + ${summary% *}))
  failed=$((failed + ${summary#* }))
  echo "     ${summary% *} passed, ${summary#* } failed ($log)"
}

sources() {
  git ls-files -z -- "$@"
}

format() {
  local status=0
  sources '*.c' '*.cpp' '*.h' '*.hpp' |
    xargs -0 -r -n 20 -P "$(nproc)" clang-format-14 --dry-run --Werror || status=1
  count $status
}

# Includes point down only (README, "Rooms"): a folder, and what it may include beside itself. The
# public headers include each other, as <qpsreader/...>, and are open to all.
includes() {
  local room allowed found status=0
  while read -r room allowed; do
    found=$(grep -rnE '#include "[a-z]+/' "$room" --include='*.h' --include='*.hpp' --include='*.cpp' |
      grep -vE "#include \"($room${allowed:+|$allowed})/") || continue
    echo "$found"
    status=1
  done << 'END'
include
reader/frame
reader/render     reader/frame
reader/styles     reader/frame
reader/format     reader/frame|reader/render
reader/scan       reader/frame|reader/styles
reader/items      reader/frame|reader/styles|reader/format|reader/scan
reader/sheetinfo  reader/frame
olefio
host
tool              host
END
  count $status
}

# Lints the code that ships, with the compile commands of the clang preset.
tidy() {
  local status=0
  quietly tidy-configure cmake --preset clang || status=1
  sed -n 's/.*"file": "\(.*\)".*/\1/p' build/clang/compile_commands.json |
    grep -E "^$PWD/(reader|olefio|host|tool)/" |
    xargs -r -n 1 -P "$(nproc)" clang-tidy-14 -p build/clang --quiet > build/log/tidy.txt 2>&1 ||
    status=1
  sed -n '/: \(error\|warning\): /,+3p' build/log/tidy.txt
  count $status
}

main() {
  local row name action packages chosen=() all=("${buildPackages[@]}" "${testPackages[@]}")
  # shellcheck disable=SC2046
  [ $# != 0 ] || set -- $(printf '%s\n' "${steps[@]}" | cut -d' ' -f1)
  for row in "${steps[@]}" "${namedSteps[@]}"; do
    read -r name action packages <<< "$row"
    if [[ " $* " = *" $name "* ]]; then
      chosen+=("$name $action")
      # shellcheck disable=SC2206
      all+=($packages)
    fi
  done
  [ ${#chosen[@]} -ge $# ] || die "no such step in: $*"
  need "${all[@]}"
  for row in "${chosen[@]}"; do
    read -r name action <<< "$row"
    local before=$SECONDS
    echo "== $name"
    "$action" "$name"
    echo "     $((SECONDS - before)) s"
  done
  echo "$passed passed, $failed failed"
  [ $failed = 0 ]
}

main "$@"
