#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# check_install.sh WAY BUILD SOURCE WORK: builds both programs of SOURCE/examples in the empty folder
# WORK as a stranger would, with the shared and the static libraries, and runs them on the example
# notebook, plain and in a compound document, and on files that cannot be read. WAY is package or
# pkg-config (BUILD installed and then moved; "system" as BUILD is what the system has), fetch
# (SOURCE by FetchContent) or subdirectory (SOURCE by add_subdirectory, of which only what the
# programs link with is built). CC and CXX are the compilers.
set -euo pipefail
way=$1 build=$2 source=$3 work=$4
here=$(cd "$(dirname "$0")" && pwd)

fail() {
  printf 'FAILED: %s\n' "$*"
  exit 1
}

rm -rf "$work"
mkdir -p "$work/examples"
cp "$source"/examples/{host.c,notebook.cpp,budget.wb2,budget.wb3} "$work/examples"
cp "$here/consumer/CMakeLists.txt" "$work"
cd "$work"

libraries=
if [ "$build" = system ]; then
  libraries=$(dirname "$(find /usr/lib -name libqpsreader.so)")
elif [ "$way" = package ] || [ "$way" = pkg-config ]; then
  cmake --install "$build" --prefix "$work/first" > /dev/null
  mv first installed
  # A path ends where no further character of a name follows: /q does not occur in /qpsreader.
  for path in "$work/first" "$source" "$build"; do
    grep -rIlP "(?<![\w.-])\Q$path\E(?![\w.-])" installed && fail "paths of the build"
  done
  libraries=$(dirname "$(find "$work/installed" -name libqpsreader.so)")
  export PKG_CONFIG_PATH=$libraries/pkgconfig
fi

if [ "$way" = pkg-config ]; then
  flags() { pkg-config --cflags --libs "$@"; }
  mkdir bin
  # shellcheck disable=SC2046
  {
    $CC -std=c11 examples/host.c -o bin/host $(flags qpsreader) &&
    $CC -std=c11 -static examples/host.c -o bin/host_static $(flags --static qpsreader) &&
    $CXX -std=c++20 examples/notebook.cpp -o bin/notebook $(flags qpshost) &&
    $CXX -std=c++20 -static examples/notebook.cpp -o bin/notebook_static $(flags --static qpshost)
  } 2> warnings.txt || fail "$(cat warnings.txt)"
  # Relative, so that the dynamic linker has no absolute path for the reader either.
  [ "$build" = system ] || LD_LIBRARY_PATH=$(realpath --relative-to=. "$libraries")
  export LD_LIBRARY_PATH
else
  type=Release
  [ "$way" = package ] || type=Debug  # the whole library is compiled
  buildIn() {
    local folder=$1
    shift
    cmake -S . -B "$folder" -DCMAKE_BUILD_TYPE="$type" -DEXAMPLES="$work/examples" \
      -DCMAKE_PREFIX_PATH="$work/installed" "$@" > cmake.txt 2>&1 || fail "$(cat cmake.txt)"
    cmake --build "$folder" --parallel "$(nproc)" > build.txt 2>&1 || fail "$(cat build.txt)"
  }
  buildIn bin -DWAY="$way" -DQPSREADER_SOURCE="$source"
  if [ "$way" != package ]; then
    libraries=$(dirname "$(find bin -name libqpsreader.so)")
    cmake --install bin --prefix "$work/installed" > /dev/null
    [ "$(find installed -type f | wc -l)" = 1 ] || fail "installed: $(find installed -type f)"
  fi
fi

commands=("host $libraries" "host_static $libraries" notebook notebook_static)
if [ "$way" = package ]; then
  buildIn only-c -DWAY=package -DONLY_C=ON
  mv only-c/host bin/host_of_c
  mv only-c/host_static bin/host_of_c_static
  commands+=("host_of_c $libraries" "host_of_c_static $libraries")
fi

bin/host "$libraries" examples/budget.wb2 > host.txt
[ "$(grep -c '^== ' host.txt)" = 2 ] || fail "host printed: $(cat host.txt)"
[ "$(grep -Pc '^\d+\t\d+\t.' host.txt)" -ge 20 ] || fail "host printed: $(cat host.txt)"
for command in "${commands[@]}"; do
  for notebook in budget.wb2 budget.wb3; do
    # shellcheck disable=SC2086
    bin/$command examples/$notebook | diff host.txt - || fail "$command $notebook prints something else"
  done
done

# What cannot be read to its end ends in a message and status 1.
: > empty.wb2
head -c 1200 examples/budget.wb2 > cut.wb2
for command in "${commands[@]}"; do
  for file in missing.wb2 empty.wb2 cut.wb2 examples/host.c; do
    status=0
    # shellcheck disable=SC2086
    bin/$command $file > out.txt 2> message.txt || status=$?
    [ "$status" = 1 ] && [ -s message.txt ] || fail "$command $file: status $status, $(cat message.txt)"
  done
done
