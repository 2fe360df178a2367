#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# test-packages.sh: builds the Debian packages of what is committed twice, in different folders,
# compares the two byte by byte, lets lintian judge them, and installs them in a fresh minimal system
# where the tool then prints a notebook. Takes root for that system.
# shellcheck source=scripts/lib.sh
. "$(dirname "$0")/lib.sh"

[ "$(id -u)" = 0 ] || die "a fresh system takes root"
need "${buildPackages[@]}" debhelper debootstrap dpkg-dev lintian

out=$PWD/build/packages
first=$out/first second=$out/another-folder/second
rm -rf "$out"

projectVersion=$(sed -n 's/^project(.* VERSION \([0-9.]*\).*/\1/p' CMakeLists.txt)
packageVersion=$(dpkg-parsechangelog -S Version)
[ "${packageVersion%-*}" = "$projectVersion" ] || die "debian/changelog names $packageVersion"

# The first build runs the tests, the second has none.
for folder in "$first" "$second"; do
  echo "== build in ${folder#"$out"/}"
  mkdir -p "$folder/qpsreader"
  git archive HEAD | tar -x -C "$folder/qpsreader"
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
lintian --allow-root --fail-on error "$first"/*.changes

echo "== install in a fresh system"
root=$out/root
# shellcheck disable=SC2016
mirror=$(apt-get indextargets --format '$(REPO_URI)' 'Identifier: Packages' 'Origin: Debian' | head -n 1)
quietly debootstrap debootstrap --variant=minbase --include=libstdc++6 \
  "$(. /etc/os-release && echo "$VERSION_CODENAME")" "$root" "$mirror"
mkdir "$root/packages"
cp "$first"/*.deb "$root/packages"
rm -f "$root"/packages/*-dbgsym_*
cp examples/budget.wb2 "$root/packages"
chroot "$root" sh -c 'dpkg -i /packages/*.deb' > "$out/install.txt" 2>&1 || die "see $out/install.txt"
(cd / && chroot "$root" qps csv /packages/budget.wb2) > "$out/budget.csv"
[ -s "$out/budget.csv" ] || die "the installed tool printed nothing"
sed 's/^/  /' "$out/budget.csv" | head -n 5
rm -rf "$root"
echo "all passed"
