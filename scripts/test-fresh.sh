#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# test-fresh.sh: runs the README's two commands as a newcomer does, in a Debian system with git and
# nothing else, so that no program that this machine happens to have hides that nothing installs it.
# The tree is what git tracks here, at a path short enough to occur in other words. Takes root;
# downloaded packages stay in build/fresh/packages.
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

rm -rf "$root"
mkdir -p "$out/packages"
freshSystem "$root" git "$out/packages"
echo force-unsafe-io > "$root/etc/dpkg/dpkg.cfg.d/force-unsafe-io"
git ls-files -z | tar -c --null -T - | tar -x --one-top-level="$root/q"
git -C "$root/q" init -q
git -C "$root/q" add .

# inside COMMAND: in the fresh system, with an environment of its own. The mounts end with it.
inside() {
  # shellcheck disable=SC2016
  unshare --mount sh -c '
    mount --bind "$1" "$2/var/cache/apt/archives" &&
    mount -t proc proc "$2/proc" && mount -t devpts -o newinstance,ptmxmode=666 devpts "$2/dev/pts" &&
    exec chroot "$2" env -i HOME=/root PATH=/usr/sbin:/usr/bin:/sbin:/bin ${http_proxy:+http_proxy="$http_proxy"} \
      sh -c "cd /q && $3"' sh "$out/packages" "$root" "$1"
}

passed=0 failed=0

# check COMMAND LINE: the command ends well, and this line is the last but for its numbers.
check() {
  local log=$out/${1##*/}.txt before=$SECONDS
  if inside "$1" > "$log" 2>&1 && grep -qE "$2" "$log"; then
    passed=$((passed + 1))
    echo "ok      $1, $((SECONDS - before)) s"
  else
    failed=$((failed + 1))
    echo "failed  $1"
    tail -n 40 "$log" | sed 's/^/        /'
  fi
}

check scripts/run.sh '^Groceries	05-Jan-24'
check scripts/test.sh '^[0-9]+ passed, 0 failed, 0 skipped$'
rm -rf "$root"
echo "$passed passed, $failed failed, 0 skipped"
[ $failed = 0 ]
