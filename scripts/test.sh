#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# test.sh [STEP...]: tests the optimised build and checks the sources, in a few minutes. With the
# names of steps it does those, and with "all" every one: all builds, all programs that tests use.
# What is skipped is named, and the last line says "N passed, N failed, N skipped".
# shellcheck source=scripts/lib.sh
. "$(dirname "$0")/lib.sh"

shortSteps=(short format includes)

# What "all" takes; one row a step: its name, the function that does it with that name, the Debian
# packages that it takes beyond those of the short form. The tests labelled "full" belong to "release".
steps=(
  "xlsx         xlsx    xlsx2csv"
  "release      release chromium fish libgsf-bin python3-xlwt zsh"
  "clang        preset  clang-14"
  "abi          script"
  "docs         script"
  "asan         preset"
  "threads      threads"
  "format       format"
  "includes     includes"
  "tidy         tidy    clang-14 clang-tidy-14 python3-dev"
  "integrations script"
  "python       script"
  "i686         preset  g++-i686-linux-gnu googletest qemu-user"
  "s390x        preset  g++-s390x-linux-gnu googletest qemu-user"
  "wasm         wasm"
  "viewer       script"
  "mingw        windows g++-mingw-w64-x86-64-posix googletest wine64"
  "fresh        script"
)

# Only when they are named: the short form's step, and those of scripts/test-long.sh.
namedSteps=(
  "short         short"
  "char-unsigned preset"
  "tsan          preset"
)

passed=0 failed=0 skipped=()

# count STATUS: one more check that passed (0) or failed.
count() {
  if [ "$1" = 0 ]; then passed=$((passed + 1)); else failed=$((failed + 1)); fi
}

# Builds a preset and runs its tests but for those labelled "full"; each counts.
preset() {
  if buildPreset "$1"; then runTests "$1" -LE full; else count 1; fi
}

short() {
  preset release
}

release() {
  if buildPreset release; then runTests release; else count 1; fi
}

# Workbooks, whose number formats a program of the npm registry renders; later steps find it too.
xlsx() {
  command -v npm > /dev/null || need nodejs npm
  quietly npm-ci npm --prefix tests/tool/numfmt ci --no-audit --no-fund || { count 1; return; }
  if buildPreset release qps; then runTests release -R '^tool\.xlsx'; else count 1; fi
}

# The tests with threads under the thread sanitizer, which has little to say about the others.
threads() {
  if buildPreset tsan fault_tests; then runTests tsan -R '^Threads\.'; else count 1; fi
}

# runTests PRESET [OPTION...]: of ctest.
runTests() {
  local preset=$1 log=build/log/$1-test.txt status=0 bad total unrun reason before=${#skipped[@]}
  shift
  ctest --preset "$preset" -j "$(nproc)" --no-tests=error "$@" > "$log" 2>&1 || status=$?
  # "98% tests passed, 2 tests failed out of 100"
  read -r bad total <<< "$(sed -n 's/.*tests passed, \([0-9]*\) tests failed out of \([0-9]*\)$/\1 \2/p' "$log")" || true
  if [ -z "$total" ] || { [ $status != 0 ] && [ "$bad" = 0 ]; }; then
    tail -n 30 "$log"
    count 1
    return
  fi
  [ $status = 0 ] || grep -E -A 12 'Failure$|\*\*\*|ERROR: |runtime error:' "$log" | head -n 200
  while IFS= read -r reason; do
    skipped+=("$preset: $reason")
  done < <(skippedTests < "build/$preset/Testing/Temporary/LastTest.log")
  # ctest takes a test that was skipped as a whole for one that passed.
  unrun=$(grep -c '(Skipped)$' "$log") || true
  failed=$((failed + bad))
  passed=$((passed + total - bad - unrun))
  echo "     $((total - bad - unrun)) passed, $bad failed, $((${#skipped[@]} - before)) skipped ($log)"
}

# What skipped itself, and why, from ctest's log of all output: cases of GoogleTest and of Python's
# unittest, and scripts that say "skipped: REASON".
skippedTests() {
  awk '
    /^[0-9]+\/[0-9]+ Testing: / { test = $3 }
    /^skipped: / { sub(/^skipped: /, ""); print test ": " $0 }
    / \.\.\. skipped / { name = $1; sub(/.* \.\.\. skipped ./, ""); sub(/.$/, ""); print name ": " $0 }
    /^\[  SKIPPED \] .* ms\)$/ { print $4 ": " reason }
    NF { reason = $0 }'
}

# The mingw preset, in a Wine prefix of its own. Its server is started first and outlives the programs:
# else each of them would start Windows anew.
windows() {
  export WINEPREFIX=$PWD/build/wine WINEDEBUG=-all
  local server=/usr/lib/wine/wineserver64
  mkdir -p "$WINEPREFIX"
  "$server" -p
  quietly wine-setup /usr/lib/wine/wine64 wineboot --init || true
  preset "$1"
  "$server" -k || true
}

# The tests that need no process, with the objects of the viewer's module, in Node.
wasm() {
  needWasm
  command -v node > /dev/null || need nodejs
  preset "$1"
}

# Runs scripts/test-NAME.sh, which names what it skips and ends with its counts as this one does.
script() {
  local log=build/log/$1.txt summary reason
  "scripts/test-$1.sh" > "$log" 2>&1 || grep -v '^ok' "$log" || true
  summary=$(sed -n '$s/^\([0-9]*\) passed, \([0-9]*\) failed, [0-9]* skipped$/\1 \2/p' "$log")
  [ -n "$summary" ] || { count 1; return; }
  passed=$((passed + ${summary% *}))
  failed=$((failed + ${summary#* }))
  while IFS= read -r reason; do
    skipped+=("$1: $reason")
  done < <(sed -n 's/^skipped: //p' "$log")
  echo "     $(tail -n 1 "$log") ($log)"
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

# Includes point down only (docs/architecture.md): a folder, and what it may include beside itself. The
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
python            host
viewer            host|tool
END
  count $status
}

# Lints the code that ships, with compile commands of the clang preset.
tidy() {
  local status=0
  quietly tidy-configure cmake --preset clang -B build/tidy -DQPSREADER_BUILD_PYTHON=ON \
    -DPython3_EXECUTABLE=/usr/bin/python3 || status=1
  sed -n 's/.*"file": "\(.*\)".*/\1/p' build/tidy/compile_commands.json |
    grep -E "^$PWD/(reader|olefio|host|tool|python)/" |
    xargs -r -n 1 -P "$(nproc)" clang-tidy-14 -p build/tidy --quiet > build/log/tidy.txt 2>&1 ||
    status=1
  sed -n '/: \(error\|warning\): /,+3p' build/log/tidy.txt
  count $status
}

main() {
  local name action packages row chosen=() all=("${buildPackages[@]}" "${testPackages[@]}")
  local every=("${steps[@]%% *}")
  case "$*" in
    '') set -- "${shortSteps[@]}" ;;
    all) set -- "${every[@]}" ;;
  esac
  for row in "${namedSteps[@]}" "${steps[@]}"; do
    read -r name action packages <<< "$row"
    if [[ " $* " = *" $name "* ]]; then
      chosen+=("$name $action")
      # shellcheck disable=SC2206
      all+=($packages)
    fi
  done
  [ ${#chosen[@]} -ge $# ] || die "no such step in: $*"
  need "${all[@]}"
  mkdir -p build/log
  for row in "${chosen[@]}"; do
    read -r name action <<< "$row"
    local before=$SECONDS
    echo "== $name"
    "$action" "$name"
    echo "     $((SECONDS - before)) s"
  done
  [ "$*" != "${shortSteps[*]}" ] || echo "The rest, in other builds and with other programs: scripts/test.sh all"
  [ ${#skipped[@]} = 0 ] || printf 'skipped: %s\n' "${skipped[@]}"
  echo "$passed passed, $failed failed, ${#skipped[@]} skipped"
  [ $failed = 0 ]
}

main "$@"
