#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# test-long.sh [STEP...]: the half of the testing that takes hours. docs/testing.md says what each
# step is for and what it measured last. Without a STEP it takes all of them; set FUZZ_SECONDS for
# the time of each fuzz target (600) and MUTANTS for the number of mutants in the reader (300).
# shellcheck source=scripts/lib.sh
. "$(dirname "$0")/lib.sh"

# The whole suite in every world.
worlds() {
  scripts/test.sh clang asan char-unsigned tsan i686 s390x mingw
}

fuzz() {
  scripts/fuzz.sh "${FUZZ_SECONDS:-600}"
}

# A second engine finds what the first one does not: the same targets, from what that has reached.
afl() {
  scripts/fuzz.sh --afl "${FUZZ_SECONDS:-600}"
}

# Every byte of the examples set to each of 256 values; with the sanitizers, because a wrong read
# need not break a promise.
damage() {
  buildPreset asan damage_sweep && build/asan/bin/damage_sweep 1 examples/*.wb?
}

# What was never written is not read, in the optimised build. The sweeps, which valgrind makes too
# slow, run under the other sanitizers; to valgrind a long double, which one test reckons with, is a
# double; and it needs the memory and the system calls itself that two tests take away.
memory() {
  local program programs=(reader_tests render_tests olefio_tests fault_tests host_tests tool_test)
  need valgrind
  buildPreset release "${programs[@]}" || return
  for program in "${programs[@]}"; do
    valgrind -q --error-exitcode=9 --leak-check=full "build/release/bin/$program" --gtest_brief=1 \
      --gtest_filter='-Amplification*:Faults.*Anywhere*:Faults.Every*:*Sweep*:TimeOfDay.RoundsAs*:ToolMemory*:SandboxTest*' || return
  done
}

# The Python package with the sanitizers, which have to be there before Python is, and Python's own
# blocks from malloc, where they see them. Python itself gives back little at its end.
python() {
  local build=$PWD/build/asan-python
  need "${buildPackages[@]}" python3-dev python3-pandas python3-pytest
  quietly asan-python-configure cmake --preset asan -B "$build" -DQPSREADER_BUILD_PYTHON=ON \
    -DQPSREADER_BUILD_TESTS=OFF -DPython3_EXECUTABLE=/usr/bin/python3 &&
    quietly asan-python-build cmake --build "$build" --target qps qps_python_files &&
    LD_PRELOAD="$(gcc -print-file-name=libasan.so) $(gcc -print-file-name=libstdc++.so)" \
      ASAN_OPTIONS=detect_leaks=0 PYTHONMALLOC=malloc PYTHONDONTWRITEBYTECODE=1 QPS_BUILD=$build \
      /usr/bin/python3 -m pytest -q -p no:cacheprovider tests/python --ignore tests/python/test_dask.py
}

coverage() {
  scripts/coverage.sh
}

mutation() {
  local status=0
  scripts/mutation.py --count "${MUTANTS:-300}" || status=1
  scripts/mutation.py --count 60 --file host || status=1
  scripts/mutation.py --count 140 --file tool --plain || status=1
  return $status
}

main() {
  local step status=0
  [ $# != 0 ] || set -- worlds fuzz afl damage memory python coverage mutation
  for step in "$@"; do
    [ "$(type -t "$step")" = function ] || die "no such step: $step"
  done
  for step in "$@"; do
    local before=$SECONDS result=passed
    echo "== $step"
    "$step" || { result=FAILED; status=1; }
    echo "   $step $result, $((SECONDS - before)) s"
  done
  return $status
}

main "$@"
