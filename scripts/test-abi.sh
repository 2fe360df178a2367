#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# test-abi.sh [--write]: compares the reader and the compound-document library with those of the last
# release: exported names, and size, offset and type of everything that the public headers declare.
# What was added passes; what changed or is gone fails. The last release is described by reader/abi.xml
# and olefio/abi.xml. With --write they become those of the tree: part of a release (docs/releasing.md).
# shellcheck source=scripts/lib.sh
. "$(dirname "$0")/lib.sh"

need cmake ninja-build g++ abigail-tools

# describe LIBRARY: its ABI, without a path of this machine. Types beyond the public headers are left
# out.
describe() {
  abidw --headers-dir include --drop-private-types --exported-interfaces-only --drop-undefined-syms \
    --no-corpus-path --no-comp-dir-path --no-show-locs --no-elf-needed "build/debug/lib/$1"
}

# The same file with SSStream a word shorter: a description that a library of this tree must fail.
shortened() {
  sed "s/\(class-decl name='SSStream' size-in-bits='\)896/\1832/" "$1"
}

# same RELEASED TREE: the libraries of the tree serve programs that were built with the released ones.
same() {
  abidiff --no-added-syms --no-corpus-path "$1" "$2"
}

quietly debug-configure cmake --preset debug
quietly abi-build cmake --build --preset debug --target qpsreader zbolefio
version=$(projectVersion)
mkdir -p build/abi
passed=0 failed=0
count() { if [ "$1" = 0 ]; then passed=$((passed + 1)); else failed=$((failed + 1)); fi; }

for row in reader:libqpsreader.so olefio:zbolefio.dll; do
  room=${row%:*} tree=build/abi/${row%:*}.xml
  describe "${row#*:}" > "$tree"
  if [ "${1:-}" = --write ]; then
    { sed 1q "$tree" && echo "  <!-- version $version -->" && sed 1d "$tree"; } > "$room/abi.xml"
    echo "$room/abi.xml: version $version"
    continue
  fi
  release=$(sed -n 's/.*<!-- version \(.*\) -->$/\1/p' "$room/abi.xml")
  [ "${release%%.*}" = "${version%%.*}" ] || die "$room/abi.xml describes $release, this is $version"
  status=0
  same "$room/abi.xml" "$tree" || status=$?
  count $status
  # That the comparison looks into structures at all, which takes debug information.
  shortened "$room/abi.xml" > build/abi/shortened.xml
  status=0
  ! same build/abi/shortened.xml "$tree" > build/log/abi-shortened.txt || status=1
  count $status
  echo "${row#*:} $version: compared with $release"
done
echo "$passed passed, $failed failed, 0 skipped"
[ $failed = 0 ]
