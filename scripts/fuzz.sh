#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# fuzz.sh [SECONDS [TARGET...]]: builds the fuzz targets and runs each for SECONDS (60) on one core.
# The corpus stays in build/fuzz/corpus, what is found goes to build/fuzz/found, and every run adds a
# line "TARGET EXECUTIONS SECONDS" to build/fuzz/executions.txt. Fails when something was found.
# shellcheck source=scripts/lib.sh
. "$(dirname "$0")/lib.sh"

# One row a target: its name, the longest input, its dictionary or "-".
targets=(
  "plain_notebook    1024 notebook"
  "compound_notebook 4096 notebook"
  "compound_library  4096 -"
  "host_calls        1024 notebook"
  "embedded_host     1024 notebook"
  "tool_writers      1024 notebook"
  "format_text       256  format"
  "render_functions  192  format"
)

# What address sanitizer keeps for its reports costs more time than the targets themselves.
export ASAN_OPTIONS=quarantine_size_mb=1:malloc_context_size=0${ASAN_OPTIONS:+:$ASAN_OPTIONS}

# fuzz SECONDS TARGET LONGEST DICTIONARY
fuzz() {
  local seconds=$1 target=$2 longest=$3 dictionary=$4 status=0 before=$SECONDS executions
  local folder=build/fuzz log=build/fuzz/log/$2.txt
  local options=("-max_total_time=$seconds" "-max_len=$longest" "-timeout=10" "-entropic=0" "-detect_leaks=0"
    "-print_final_stats=1" "-artifact_prefix=$folder/found/$target-")
  [ "$dictionary" = - ] || options+=("-dict=fuzz/$dictionary.dict")
  mkdir -p "$folder"/{log,found} "$folder/corpus/$target"
  "$folder/bin/fuzz_$target" "${options[@]}" "$folder/corpus/$target" "$folder/seeds/$target" \
    > "$log" 2>&1 || status=$?
  executions=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log")
  echo "$target ${executions:-0} $((SECONDS - before))" | tee -a "$folder/executions.txt"
  [ $status = 0 ] && return
  grep -E 'broken promise|ERROR|runtime error|SUMMARY|Test unit written' "$log" || tail -n 20 "$log"
  return 1
}

main() {
  local seconds=${1:-60} status=0 row name longest dictionary
  shift || true
  need "${buildPackages[@]}" clang-14
  buildPreset fuzz
  build/fuzz/bin/fuzz_make_seeds build/fuzz/seeds
  for row in "${targets[@]}"; do
    read -r name longest dictionary <<< "$row"
    if [ $# = 0 ] || [[ " $* " = *" $name "* ]]; then
      fuzz "$seconds" "$name" "$longest" "$dictionary" || status=1
    fi
  done
  return $status
}

main "$@"
