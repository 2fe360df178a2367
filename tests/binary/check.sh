#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Proves a built library or program by what stands in the file. The tools come as NM, READELF and
# OBJDUMP, so that other machines' files can be read too.
#
#   check.sh exports FILE LIST       exports exactly the names in LIST ("NAME" or "NAME VERSION")
#   check.sh imports FILE PATTERNS   imports nothing but what a line of PATTERNS matches
#   check.sh read-only FILE          has no writable data but what the start files bring
#   check.sh hardened FILE           is hardened, as a library or a program
#   check.sh rpath FILE WANTED       has WANTED as its DT_RPATH, and no DT_RUNPATH
#   check.sh decoy PROGRAM DECOY NOTEBOOK   prints the notebook, whatever DECOY calls itself
#   check.sh flags COMMANDS FILES    every file of FILES/NAME.cpp was compiled with the hardening flags
set -euo pipefail
export LC_ALL=C

fail() {
  printf 'FAILED: %s\n' "$*"
  exit 1
}

# The lines of a list without its comments.
rows() {
  grep -v '^\(#.*\)\?$' "$1"
}

# A Windows library: its names have no versions.
isDll() {
  [[ $($OBJDUMP -f "$1") = *file\ format\ pei-* ]]
}

wantedOf() {
  if isDll "$1"; then rows "$2" | sed 's/ .*//'; else rows "$2"; fi
}

exportsOf() {
  if isDll "$1"; then
    $OBJDUMP -p "$1" | sed -n '/^\[Ordinal\/Name Pointer\] Table/,/^$/s/^\t\[ *[0-9]*\] //p'
  else
    # "A" is a version itself.
    $NM -D --defined-only "$1" | sed '/ A /d; s/^[0-9a-f ]* [A-Za-z] //; s/@@/ /'
  fi
}

case $1 in
  exports)
    diff <(wantedOf "$2" "$3" | sort) <(exportsOf "$2" | sort) || fail "wanted (<) and exported (>) differ"
    ;;
  imports)
    imports=$($NM -D --undefined-only "$2" | sed 's/^ *[A-Za-z] //; s/@.*//')
    [ -n "$imports" ] || fail "nm shows no import at all"
    if bad=$(grep -Exv -f <(rows "$3") <<< "$imports"); then fail "forbidden imports:" "$bad"; fi
    ;;
  read-only)
    # Tables with addresses stand in .data.rel.ro, which is read-only once the file is loaded.
    sections=$($READELF -SW "$2" | sed -n 's/^ *\[ *[0-9]*\] \(\.t\?data\|\.t\?bss\) /\1 /p')
    [ -n "$sections" ] || fail "readelf shows neither .data nor .bss"
    while read -r name _ _ _ size _; do
      ((16#$size <= 16)) || fail "$((16#$size)) bytes in $name"
    done <<< "$sections"
    ;;
  hardened)
    headers=$($READELF -hlW "$2") dynamic=$($READELF -dW "$2") symbols=$($NM -D "$2")
    [[ $headers =~ Type:\ +DYN ]] || fail "the code is not position-independent"
    [[ $headers =~ GNU_RELRO ]] || fail "no RELRO"
    grep -q "GNU_STACK.* RW  *0x" <<< "$headers" || fail "the stack is executable"
    [[ $dynamic =~ BIND_NOW|Flags:.*NOW ]] || fail "no BIND_NOW"
    [[ ! $dynamic =~ TEXTREL ]] || fail "text relocations"
    [[ $symbols = *" U __stack_chk_fail"* ]] || fail "no stack protector"
    ;;
  rpath)
    paths=$($READELF -dW "$2" | sed -n 's/.*(\(R[UN]*PATH\)).*\[\(.*\)\]/\1 \2/p')
    [ "$paths" = "RPATH $3" ] || fail "wanted RPATH $3, found ${paths:-none}"
    ;;
  decoy)
    folder=$(mktemp -d)
    trap 'rm -rf "$folder"' EXIT
    LD_PRELOAD=$3 /bin/true && fail "the decoy does not bite"
    for name in libqpsreader.so libqpsreader.so.1 zbolefio.dll; do cp "$3" "$folder/$name"; done
    cd "$folder"
    printed=$(LD_LIBRARY_PATH=$folder:. "$2" text "$4") || fail "exit status $?"
    [ "$printed" = "$(cd / && "$2" text "$4")" ] || fail "printed something else"
    ;;
  flags)
    commands=$(grep '"command":' "$2" | grep -E " -c $3/[a-z_0-9/]+\.cpp\"") || fail "no file of $3"
    for flag in -O[23s] -fstack-protector-strong -D_FORTIFY_SOURCE=[23]; do
      if grep -ve " $flag " <<< "$commands"; then fail "compiled without $flag"; fi
    done
    ;;
  *) fail "no such check: $1" ;;
esac
