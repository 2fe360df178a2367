#!/bin/bash -eu
# SPDX-License-Identifier: MIT
# Builds every fuzz target into $OUT, with its seeds and its dictionary. OSS-Fuzz sets the variables;
# the compiler's flags come with them.
: "${SRC:?}" "${OUT:?}" "${WORK:?}" "${LIB_FUZZING_ENGINE:?}"

source=$SRC/qpsreader
mutator=OFF
[ "${FUZZING_ENGINE:-}" != libfuzzer ] || mutator=ON
cmake -S "$source" -B "$WORK/build" -G Ninja -DCMAKE_BUILD_TYPE=None \
  -DQPSREADER_BUILD_FUZZ=ON -DQPSREADER_BUILD_TESTS=OFF "-DQPSREADER_FUZZ_ENGINE=$LIB_FUZZING_ENGINE" \
  -DQPSREADER_FUZZ_MUTATOR=$mutator
targets=$(ninja -C "$WORK/build" -t targets all | sed -n 's/^\(fuzz_[a-z_]*\): phony$/\1/p')
# shellcheck disable=SC2086
ninja -C "$WORK/build" $targets
"$WORK/build/bin/fuzz_make_seeds" "$WORK/seeds"

for target in $targets; do
  name=${target#fuzz_}
  [ "$name" != make_seeds ] || continue
  cp "$WORK/build/bin/$target" "$OUT/"
  inputs=("$WORK/seeds/$name")
  [ ! -d "$source/fuzz/regressions/$name" ] || inputs+=("$source/fuzz/regressions/$name")
  rm -f "$OUT/${target}_seed_corpus.zip"
  zip -q -j -r "$OUT/${target}_seed_corpus.zip" "${inputs[@]}"
  case $name in
    compound_library) ;;
    format_text | render_functions) cp "$source/fuzz/format.dict" "$OUT/$target.dict" ;;
    *) cp "$source/fuzz/notebook.dict" "$OUT/$target.dict" ;;
  esac
done
