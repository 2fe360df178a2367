#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# test-packages.sh: builds the Debian packages of what is committed twice, in different folders,
# compares the two byte by byte, lets lintian judge them, and installs them in fresh minimal systems:
# in one the tool prints a notebook, in the other, which has a compiler, the examples are built and
# run. Takes root for these systems.
# shellcheck source=scripts/lib.sh
. "$(dirname "$0")/lib.sh"

[ "$(id -u)" = 0 ] || die "a fresh system takes root"
need "${buildPackages[@]}" debhelper debootstrap dpkg-dev lintian

out=$PWD/build/packages
first=$out/first second=$out/another-folder/second
commit=$(git rev-parse HEAD)
rm -rf "$out"

projectVersion=$(sed -n 's/^#define QPSREADER_VERSION_[A-Z]* \([0-9]*\)$/\1/p' include/qpsreader/version.h | paste -sd .)
packageVersion=$(dpkg-parsechangelog -S Version)
[ "${packageVersion%-*}" = "$projectVersion" ] || die "debian/changelog names $packageVersion"

# The first build runs the tests, the second has none.
for folder in "$first" "$second"; do
  echo "== build in ${folder#"$out"/}"
  mkdir -p "$folder/qpsreader"
  git archive "$commit" | tar -x -C "$folder/qpsreader"
  options=
  [ "$folder" = "$first" ] || options=nocheck
  (cd "$folder/qpsreader" && DEB_BUILD_OPTIONS=$options dpkg-buildpackage -us -uc -b) > "$folder/log.txt" 2>&1 ||
    die "dpkg-buildpackage failed: $folder/log.txt"
done

echo "== compare"
for package in "$first"/*.deb; do
  cmp "$package" "$second/${package##*/}"
  echo "${package##*/}: identical"
done

echo "== lintian"
lintian --allow-root --fail-on error,warning "$first"/*.changes

# install ROOT PACKAGE...: these packages of the first build.
install() {
  local root=$1 package
  shift
  for package in "$@"; do cp "$first/${package}"_*.deb "$root"; done
  chroot "$root" sh -c 'dpkg -i /*.deb' > "$out/install.txt" 2>&1 || die "see $out/install.txt"
}

echo "== the tool in a fresh system"
root=$out/tool
mkdir "$out/downloads"
freshSystem "$root" libstdc++6 "$out/downloads"
install "$root" libqpsreader1 qpsreader-tools
cp examples/budget.wb[23] "$root"
for kind in wb2 wb3; do
  (cd / && chroot "$root" qps csv /budget.$kind) > "$out/budget.$kind.csv"
done
[ -s "$out/budget.wb2.csv" ] || die "the installed tool printed nothing"
cmp "$out/budget.wb2.csv" "$out/budget.wb3.csv"
sed 's/^/  /' "$out/budget.wb2.csv" | head -n 5
rm -rf "$root"

# All that a programmer has there: a compiler, the packages, and the examples in them.
echo "== the examples in a fresh system"
root=$out/development
freshSystem "$root" g++,make,cmake,pkg-config "$out/downloads"
install "$root" libqpsreader1 libqpsreader-dev
cp -r tests/install "$root/check"
for way in package pkg-config; do
  chroot "$root" env CC=gcc CXX=g++ /check/check_install.sh "$way" system \
    /usr/share/doc/libqpsreader-dev "/work-$way" || die "the examples do not work by way of $way"
  echo "$way: both examples work, shared and static, plain and compound"
done
rm -rf "$root" "$out/downloads"
echo "all passed"
