#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# test-fresh.sh [tool] [python]: runs the README's two commands, and its lines for Python in a system
# of their own, as a newcomer does: in Debian systems with git and nothing else, so that no program
# that this machine happens to have hides that nothing installs it. The tree is what git tracks here,
# at a path short enough to occur in other words. Takes root; downloaded packages stay in
# build/fresh/packages.
# shellcheck source=scripts/lib.sh
. "$(dirname "$0")/lib.sh"

out=$PWD/build/fresh
root=$out/system

skip() {
  echo "skipped: $1"
  echo "0 passed, 0 failed, 1 skipped"
  exit
}

[ "$(id -u)" = 0 ] || skip "a fresh system takes root"
[ -n "$(debianMirror)" ] || skip "this is not a Debian system"
unshare --mount true 2> /dev/null || skip "no file systems can be mounted here"
need debootstrap

# newcomer: a system and a clone, both new.
newcomer() {
  rm -rf "$root"
  mkdir -p "$out/packages"
  freshSystem "$root" git "$out/packages"
  echo force-unsafe-io > "$root/etc/dpkg/dpkg.cfg.d/force-unsafe-io"
  echo 'APT::Get::Assume-Yes "true";' > "$root/etc/apt/apt.conf.d/yes"
  git ls-files -z | tar -c --null -T - | tar -x --one-top-level="$root/q"
  git -C "$root/q" init -q
  git -C "$root/q" add .
}

passed=0 failed=0

# check NAME COMMAND LINE: the command ends well, and says this line.
check() {
  says "$1" "$out/$1.txt" "$3" inside "$root" "$out/packages" "cd /q && $2"
}

tool() {
  newcomer
  check run.sh scripts/run.sh '^Groceries	05-Jan-24'
  check test.sh scripts/test.sh '^[0-9]+ passed, 0 failed, 0 skipped$'
}

# The README's words: the packages to install, the line after "$ ", and the block of Python.
# shellcheck disable=SC2016
python() {
  local packages install
  packages=$(grep -oE '`apt-get install [^`]*python3-dev[^`]*`' README.md | tr -d '`')
  install=$(sed -n 's/^\$ \(.*pip install .*\)/\1/p' README.md)
  newcomer
  sed -n '/^```python$/,/^```$/{/^```/!p}' README.md > "$root/q/readme.py"
  check python "apt-get update && $packages && $install && venv/bin/python readme.py" \
    '^8 +Savings 2024-01-31 +300\.0 +300\.00 '
}

[ $# != 0 ] || set -- tool python
for part in "$@"; do "$part"; done
rm -rf "$root"
echo "$passed passed, $failed failed, 0 skipped"
[ $failed = 0 ]
