#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# fuzz.sh [--afl|--light] [SECONDS [TARGET...]]: builds the fuzz targets and runs each for SECONDS (60)
# on one core, with libFuzzer or with AFL++; --light is libFuzzer without the address sanitizer, twice
# as fast: what it reaches, the next run without --light tries again with it. The corpus stays in
# build/fuzz/corpus, what is found goes to
# build/fuzz/found (of AFL++: build/afl/out/TARGET/default/crashes), and every run adds a line
# "TARGET EXECUTIONS SECONDS" to build/fuzz/executions.txt. Fails when something was found.
# fuzz.sh --pack FILE.tar.xz [TARGET...]: leaves out of each corpus what reaches nothing more, and
# packs what stays, for a release. Unpack it in build/fuzz to go on from there.
# shellcheck source=scripts/lib.sh
. "$(dirname "$0")/lib.sh"

# One row a target: its name, the longest input, its dictionary or "-".
targets=(
  "plain_notebook    1024 notebook"
  "compound_notebook 4096 notebook"
  "compound_library  4096 -"
  "host_calls        1024 notebook"
  "embedded_host     1024 notebook"
  "tool_writers      512  notebook"
  "format_text       256  format"
  "render_functions  192  format"
)

# What address sanitizer keeps for its reports costs more time than the targets themselves.
asanOptions=quarantine_size_mb=1:malloc_context_size=0:detect_leaks=0${ASAN_OPTIONS:+:$ASAN_OPTIONS}
folder=build/fuzz
preset=fuzz

# count TARGET EXECUTIONS SECONDS
count() {
  echo "$1 ${2:-0} $3" | tee -a "$folder/executions.txt"
}

# fuzz SECONDS TARGET LONGEST DICTIONARY
fuzz() {
  local seconds=$1 target=$2 longest=$3 dictionary=$4 status=0 before=$SECONDS log=$folder/log/$2.txt
  local options=("-max_total_time=$seconds" "-max_len=$longest" "-timeout=25" "-entropic=0" "-reload=0"
    "-print_final_stats=1" "-artifact_prefix=$folder/found/$target-")
  [ "$dictionary" = - ] || options+=("-dict=fuzz/$dictionary.dict")
  ASAN_OPTIONS=$asanOptions "build/$preset/bin/fuzz_$target" "${options[@]}" "$folder/corpus/$target" \
    "$folder/seeds/$target" > "$log" 2>&1 || status=$?
  count "$target" "$(sed -n 's/^stat::number_of_executed_units: *//p' "$log")" $((SECONDS - before))
  [ $status = 0 ] && return
  grep -E 'broken promise|ERROR|runtime error|SUMMARY|Test unit written' "$log" || tail -n 20 "$log"
  return 1
}

# The same with AFL++, from the corpus of libFuzzer too when there is one.
fuzzByAfl() {
  local seconds=$1 target=$2 longest=$3 dictionary=$4 before=$SECONDS out=build/afl/out/$2 found
  local log=$folder/log/afl-$2.txt input=build/afl/in/$2
  local options=(-V "$seconds" -G "$longest" -m none -t 2000+)
  [ "$dictionary" = - ] || options+=(-x "fuzz/$dictionary.dict")
  rm -rf "$out" "$input" && mkdir -p build/afl/out "$input"
  find "$folder/seeds/$target" "$folder/corpus/$target" -type f -size -"$((longest + 1))"c \
    -exec cp -t "$input" {} +
  AFL_NO_UI=1 AFL_SKIP_CPUFREQ=1 AFL_NO_AFFINITY=1 AFL_I_DONT_CARE_ABOUT_MISSING_CRASHES=1 \
    ASAN_OPTIONS=abort_on_error=1:symbolize=0:$asanOptions UBSAN_OPTIONS=abort_on_error=1 \
    afl-fuzz -i "$input" -o "$out" "${options[@]}" -- "build/afl/bin/fuzz_$target" > "$log" 2>&1 ||
    { tail -n 20 "$log"; return 1; }
  count "$target" "$(sed -n 's/^execs_done *: *//p' "$out/default/fuzzer_stats")" $((SECONDS - before))
  found=$(find "$out/default/crashes" "$out/default/hangs" -type f -name 'id*')
  [ -z "$found" ] || { echo "$found"; return 1; }
}

# minimise IGNORED TARGET: what is needed of its corpus and its seeds goes to corpus-small.
minimise() {
  local small=$folder/corpus-small/corpus/$2
  rm -rf "$small" && mkdir -p "$small"
  ASAN_OPTIONS=$asanOptions "$folder/bin/fuzz_$2" -merge=1 "$small" "$folder/corpus/$2" \
    "$folder/seeds/$2" > "$folder/log/minimise-$2.txt" 2>&1
}

# pack ARCHIVE: the same bytes for the same files.
pack() {
  (cd "$calledFrom" && tar -C "$OLDPWD/$folder/corpus-small" --sort=name --mtime=@0 --owner=0 --group=0 \
    --numeric-owner --mode=u=rwX,go=rX -cJf "$1" corpus && ls -l "$1")
}

main() {
  local run=fuzz archive='' seconds status=0 row name longest dictionary wanted=() programs=()
  case ${1:-} in
    --afl) run=fuzzByAfl preset=afl; shift ;;
    --light) preset=fuzz-light; shift ;;
    --pack) run=minimise archive=${2:?"the archive's name is missing"}; shift 2; set -- 0 "$@" ;;
  esac
  seconds=${1:-60}
  shift || true
  need "${buildPackages[@]}" clang-14
  [ $preset != afl ] || need afl++
  for row in "${targets[@]}"; do
    read -r name longest dictionary <<< "$row"
    if [ $# = 0 ] || [[ " $* " = *" $name "* ]]; then
      wanted+=("$row") programs+=("fuzz_$name")
    fi
  done
  buildPreset $preset fuzz_make_seeds "${programs[@]}"
  mkdir -p $folder/{log,found}
  build/$preset/bin/fuzz_make_seeds $folder/seeds
  for row in "${wanted[@]}"; do
    read -r name longest dictionary <<< "$row"
    mkdir -p "$folder/corpus/$name"
    "$run" "$seconds" "$name" "$longest" "$dictionary" || status=1
  done
  [ -z "$archive" ] || [ $status != 0 ] || pack "$archive"
  return $status
}

main "$@"
