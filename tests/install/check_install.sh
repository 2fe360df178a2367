#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# check_install.sh WAY BUILD SOURCE WORK: builds both examples in the empty folder WORK as a stranger
# would, with the shared and the static libraries, and runs them on examples/budget.wb2. WAY is
# package or pkg-config (BUILD installed and then moved), or embedded (SOURCE as a subproject).
# CC and CXX are the compilers.
set -euo pipefail
way=$1 build=$2 source=$3 work=$4

fail() {
  printf 'FAILED: %s\n' "$*"
  exit 1
}

rm -rf "$work"
mkdir -p "$work/examples"
cp "$source"/examples/{host.c,notebook.cpp,budget.wb2} "$work/examples"
cp "$source/tests/install/consumer/CMakeLists.txt" "$work"
cd "$work"

libraries=
case $way in
  package | pkg-config)
    cmake --install "$build" --prefix "$work/first" > /dev/null
    mv first installed
    grep -rIlF -e "$work/first" -e "$source" -e "$build" installed && fail "paths of the build"
    libraries=$(dirname "$(find "$work/installed" -name libqpsreader.so)")
    ;;
esac

if [ "$way" = pkg-config ]; then
  export PKG_CONFIG_PATH=$libraries/pkgconfig
  flags() { pkg-config --cflags --libs "$@"; }
  mkdir bin
  # shellcheck disable=SC2046
  {
    $CC -std=c11 examples/host.c -o bin/host $(flags qpsreader) &&
    $CC -std=c11 -static examples/host.c -o bin/host_static $(flags --static qpsreader) &&
    $CXX -std=c++20 examples/notebook.cpp -o bin/notebook $(flags qpshost) &&
    $CXX -std=c++20 -static examples/notebook.cpp -o bin/notebook_static $(flags --static qpshost)
  } 2> warnings.txt || fail "$(cat warnings.txt)"
  export LD_LIBRARY_PATH=$libraries
else
  cmake -S . -B bin -DCMAKE_BUILD_TYPE=Release -DCMAKE_C_COMPILER="$CC" -DCMAKE_CXX_COMPILER="$CXX" \
    -DEXAMPLES="$work/examples" -DCMAKE_PREFIX_PATH="$work/installed" \
    -DQPSREADER_SOURCE="$([ "$way" = package ] || echo "$source")" > cmake.txt 2>&1 || fail "$(cat cmake.txt)"
  cmake --build bin --parallel "$(nproc)" > build.txt 2>&1 || fail "$(cat build.txt)"
  if [ -z "$libraries" ]; then
    libraries=$(dirname "$(find bin -name libqpsreader.so)")
    cmake --install bin --prefix "$work/installed" > /dev/null
    [ "$(find installed -type f | wc -l)" = 1 ] || fail "installed: $(find installed -type f)"
  fi
fi

bin/host "$libraries" examples/budget.wb2 > host.txt
[ "$(grep -c '^== ' host.txt)" = 2 ] || fail "host printed: $(cat host.txt)"
[ "$(grep -Pc '^\d+\t\d+\t.' host.txt)" -ge 20 ] || fail "host printed: $(cat host.txt)"
for command in "host_static $libraries" notebook notebook_static; do
  # shellcheck disable=SC2086
  bin/$command examples/budget.wb2 | diff host.txt - || fail "$command prints something else"
done
