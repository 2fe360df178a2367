#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# check_headers.sh INCLUDE: compiles each public header alone, with all warnings, in every language
# that it is for. CC and CXX are the compilers.
set -euo pipefail
cd "$1/qpsreader"
warnings=(-Wall -Wextra -Wpedantic -Wconversion -Wshadow -Wcast-align -Wundef -Werror)

# compile HEADER COMPILER LANGUAGE [OPTION...]
compile() {
  local header=$1 compiler=$2 language=$3
  shift 3
  if ! printf "#include <qpsreader/%s>\nint notEmpty;\n" "$header" |
    $compiler -std="$language" "$@" "${warnings[@]}" -I.. -fsyntax-only -; then
    echo "FAILED: $header as $language"
    status=1
  fi
}

status=0
for header in *.h; do
  for language in c99 c11 c17; do
    compile "$header" "$CC" $language -xc -Wstrict-prototypes -Wc++-compat
  done
  for language in c++11 c++17 c++20; do
    compile "$header" "$CXX" $language -xc++
  done
done
for header in host/*.hpp; do
  compile "$header" "$CXX" c++20 -xc++
done
exit $status
