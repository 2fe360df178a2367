#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# test-packages.sh: builds the Debian packages of what is committed twice, here and in a fresh minimal
# system that has what debian/control asks for and nothing else, compares the two byte by byte, lets
# lintian judge them, and installs them in other fresh systems: in one the tool and the Python package
# print a notebook, in the other, which has a compiler, the examples are built and run. Takes root.
# shellcheck source=scripts/lib.sh
. "$(dirname "$0")/lib.sh"

[ "$(id -u)" = 0 ] || die "a fresh system takes root"
need "${buildPackages[@]}" debhelper debootstrap dh-python dpkg-dev lintian python3-dev

out=$PWD/build/packages
first=$out/first system=$out/builder
second=$system/another-folder
commit=$(git rev-parse HEAD)
rm -rf "$out"

projectVersion=$(projectVersion)
packageVersion=$(dpkg-parsechangelog -S Version)
[ "${packageVersion%-*}" = "$projectVersion" ] || die "debian/changelog names $packageVersion"

# build FOLDER PROFILE COMMAND...: what is committed, in FOLDER, by a command that runs a shell's words.
build() {
  local folder=$1 profile=$2
  shift 2
  mkdir -p "$folder/qpsreader"
  git archive "$commit" | tar -x -C "$folder/qpsreader"
  "$@" "cd ${folder#"$system"}/qpsreader && DEB_BUILD_PROFILES=$profile DEB_BUILD_OPTIONS=$profile \
    dpkg-buildpackage -us -uc -b" > "$folder/log.txt" 2>&1 || die "dpkg-buildpackage failed: $folder/log.txt"
}

echo "== build here, with the tests"
build "$first" "" sh -c

echo "== build in a fresh system, without"
mkdir "$out/downloads"
freshSystem "$system" dpkg-dev "$out/downloads"
mkdir -p "$system/control"
git archive "$commit" debian | tar -x -C "$system/control"
inside "$system" "$out/downloads" "apt-get update && cd /control &&
  DEB_BUILD_PROFILES=nocheck apt-get -y --no-install-recommends build-dep ./" > "$out/build-dep.txt" 2>&1 ||
  die "what debian/control asks for cannot be installed: $out/build-dep.txt"
build "$second" nocheck inside "$system" "$out/downloads"

echo "== compare"
for package in "$first"/*.deb; do
  cmp "$package" "$second/${package##*/}"
  echo "${package##*/}: identical"
done

rm -rf "$system"

echo "== lintian"
lintian --allow-root --fail-on error,warning "$first"/*.changes

# install ROOT PACKAGE...: these packages of the first build.
install() {
  local root=$1 package
  shift
  for package in "$@"; do cp "$first/${package}"_*.deb "$root"; done
  chroot "$root" sh -c 'dpkg -i /*.deb' > "$out/install.txt" 2>&1 || die "see $out/install.txt"
}

echo "== the tool and the Python package in a fresh system"
root=$out/tool
freshSystem "$root" python3 "$out/downloads"
install "$root" libqpsreader1 qpsreader-tools
cp examples/budget.wb[23] "$root"
for kind in wb2 wb3; do
  (cd / && chroot "$root" qps csv /budget.$kind) > "$out/budget.$kind.csv"
done
[ -s "$out/budget.wb2.csv" ] || die "the installed tool printed nothing"
cmp "$out/budget.wb2.csv" "$out/budget.wb3.csv"
sed 's/^/  /' "$out/budget.wb2.csv" | head -n 5
rm "$root"/*.deb
chroot "$root" dpkg --purge libqpsreader1 qpsreader-tools >> "$out/install.txt"
install "$root" python3-qpsreader
for kind in wb2 wb3; do
  chroot "$root" python3 - /budget.$kind > "$out/budget.$kind.python.csv" << 'END'
import csv, sys, qpsreader
for number, sheet in enumerate(qpsreader.open(sys.argv[1]).sheets):
    if number:
        print()
    columns = range(1, sheet.column_count + 1)
    csv.writer(sys.stdout, lineterminator="\n").writerows(
        [sheet[row, column].text for column in columns] for row in range(1, sheet.row_count + 1))
END
  cmp "$out/budget.$kind.csv" "$out/budget.$kind.python.csv"
done
echo "  python3: the same cells"
rm -rf "$root"

# All that a programmer has there: a compiler, the packages, and the examples in them.
echo "== the examples in a fresh system"
root=$out/development
freshSystem "$root" g++,make,cmake,pkg-config "$out/downloads"
install "$root" libqpsreader1 libqpsreader-dev
cp -r tests/install "$root/check"
for way in package pkg-config; do
  inside "$root" "$out/downloads" "CC=gcc CXX=g++ /check/check_install.sh $way system \
    /usr/share/doc/libqpsreader-dev /work-$way" || die "the examples do not work by way of $way"
  echo "$way: both examples work, shared and static, plain and compound"
done
rm -rf "$root" "$out/downloads"
echo "all passed"
