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
  if ! echo "#include <qpsreader/$header>" |
    $compiler -std="$language" "$@" "${warnings[@]}" -I.. -fsyntax-only -; then
    echo "FAILED: $header as $language"
    status=1
  fi
}

status=0
for header in *.h; do
  compile "$header" "$CC" c11 -xc -Wstrict-prototypes -Wc++-compat
  compile "$header" "$CC" c17 -xc -Wstrict-prototypes -Wc++-compat
  compile "$header" "$CXX" c++17 -xc++
  compile "$header" "$CXX" c++20 -xc++
done
for header in host/*.hpp; do
  compile "$header" "$CXX" c++20 -xc++
done
exit $status
