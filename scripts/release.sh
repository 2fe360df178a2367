#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# release.sh VERSION [--maintainer 'ROLE <ADDRESS>'] [--corpus FILE] [--sign KEY]: makes what is handed out of the
# committed tree, twice, in two folders, and keeps it in build/releases/VERSION when both are the same,
# byte for byte: source, Debian packages, a ZIP for Windows, the page, the npm package, a bill of
# materials of each, and SHA256SUMS. MAINTAINER in the environment does for --maintainer. --corpus adds the
# fuzz targets' inputs as scripts/fuzz.sh --pack has made them. With --sign, GnuPG signs the sums with that
# key. docs/releasing.md has the steps around it.
# shellcheck source=scripts/lib.sh
. "$(dirname "$0")/lib.sh"

version=${1:-} maintainer=${MAINTAINER:-} corpus='' key=
[[ $version =~ ^[0-9]+\.[0-9]+\.[0-9]+$ ]] || die "usage: release.sh VERSION [--maintainer 'ROLE <ADDRESS>'] [--corpus FILE] [--sign KEY]"
shift
while [ $# -gt 0 ]; do
  case $1 in
    --maintainer) maintainer=${2:?} && shift 2 ;;
    --corpus) corpus=$(cd "$calledFrom" && realpath "${2:?}") && shift 2 ;;
    --sign) key=${2:?} && shift 2 ;;
    *) die "no such option: $1" ;;
  esac
done

# knows FILE PATTERN: this file names the version.
knows() {
  grep -qE -- "$2" "$1" || die "$1 does not name version $version"
}

refuse() {
  [[ $maintainer =~ ^[^\<\>\|/\\]+\ \<[^@\ ]+@[^@\ ]+\>$ ]] ||
    die "who answers for the packages? --maintainer 'ROLE <ADDRESS>', a role's address and no person's"
  [ -z "$corpus" ] || xz --test "$corpus" || die "no packed corpus: $corpus"
  [ -z "$(git status --porcelain)" ] || die "the tree has changes that are not committed"
  [ "$(projectVersion)" = "$version" ] || die "include/qpsreader/version.h says $(projectVersion)"
  local quoted=${version//./\\.}
  knows CHANGELOG.md "^## \[$quoted\] - 20[0-9]{2}-[0-9]{2}-[0-9]{2}$"
  knows CITATION.cff "^version: $quoted$"
  knows codemeta.json "\"version\": \"$quoted\""
  [[ $(head -n 1 debian/changelog) =~ ^qpsreader\ \($quoted- ]] || die "debian/changelog does not begin with $version"
}

# sources FOLDER: the tarball, and the tree that everything else is built of. No program but git and
# gzip has a say in its bytes.
sources() {
  local name=qpsreader-$version
  git archive --format=tar --prefix="$name/" "$commit" | gzip -n9 > "$1/out/$name.tar.gz"
  tar -xf "$1/out/$name.tar.gz" -C "$1"
  mv "$1/$name" "$1/tree"
}

# debianPackages FOLDER: without their tests, which scripts/test-packages.sh runs. Nobody is named in the
# tree but a placeholder.
debianPackages() {
  mkdir "$1/debian"
  cp -r "$1/tree" "$1/debian/tree"
  (
    cd "$1/debian/tree"
    sed -i "s|^Maintainer: .*|Maintainer: $maintainer|" debian/control
    sed -i "0,/^ -- /s|^ -- .*>  | -- $maintainer  |" debian/changelog
    DEB_BUILD_PROFILES=nocheck DEB_BUILD_OPTIONS="nocheck parallel=$(nproc)" dpkg-buildpackage -us -uc -b
  ) > "$1/log/debian.txt" 2>&1 || die "dpkg-buildpackage failed: $1/log/debian.txt"
  find "$1/debian" -maxdepth 1 -name '*.deb' ! -name '*-dbgsym_*' -exec cp -t "$1/out" {} +
}

webPackages() {
  mkdir "$1/tree/build"
  cp -r build/sources "$1/tree/build"
  (cd "$1/tree" && scripts/build-viewer.sh) > "$1/log/web.txt" 2>&1 || die "the page failed: $1/log/web.txt"
  cp "$1/tree/build/viewer/qpsreader.html" "$1/out/qpsreader-$version.html"
  (cd "$1/out" && npm pack --silent "$1/tree/build/viewer/npm") >> "$1/log/web.txt"
  mv "$1/out/qpsreader-$version.tgz" "$1/out/qpsreader-npm-$version.tgz"
}

# windowsArchive FOLDER: after the page, which is in it. The texts of licences are those that the
# libraries which are compiled in ask for.
windowsArchive() {
  local name=qpsreader-$version-windows-x64 stage=$1/windows/qpsreader-$version-windows-x64 package
  (
    cd "$1/tree"
    cmake --preset mingw -DQPSREADER_BUILD_TESTS=OFF && cmake --build --preset mingw &&
      cmake --install build/mingw --strip --prefix "$stage"
  ) > "$1/log/windows.txt" 2>&1 || die "the build for Windows failed: $1/log/windows.txt"
  rm -r "$stage"/share/{bash-completion,fish,man,zsh,doc}
  mkdir "$stage/licences" "$stage/examples"
  cp "$1/tree/LICENSE" "$1/tree/CHANGELOG.md" "$stage"
  cp "$1/out/qpsreader-$version.html" "$stage/qpsreader.html"
  cp "$1"/tree/examples/{host.c,notebook.cpp,budget.wb2,budget.wb3} "$stage/examples"
  for package in libcli11-dev rapidjson-dev gcc-mingw-w64-x86-64-posix mingw-w64-x86-64-dev; do
    cp "/usr/share/doc/$package/copyright" "$stage/licences/$package.txt"
  done
  find "$stage" -exec touch -h -d "@$SOURCE_DATE_EPOCH" {} +
  (cd "$1/windows" && find "$name" -type f | LC_ALL=C sort | TZ=UTC zip -q -X "$1/out/$name.zip" -@)
}

# make FOLDER: all of it, in FOLDER/out.
make() {
  echo "== ${1#"$releases"/}"
  mkdir -p "$1/out" "$1/log"
  sources "$1"
  debianPackages "$1"
  webPackages "$1"
  windowsArchive "$1"
  (
    cd "$1/out"
    "$1/tree/scripts/sbom.py" "$version" "$maintainer" ./*
    [ -z "$corpus" ] || cp "$corpus" "qpsreader-fuzz-corpus-$version.tar.xz"
    sha256sum -- * > SHA256SUMS
  )
}

refuse
need "${buildPackages[@]}" debhelper dh-python dpkg-dev g++-mingw-w64-x86-64-posix python3 python3-dev zip
needWasm
command -v npm > /dev/null || need nodejs npm
commit=$(git rev-parse HEAD)
SOURCE_DATE_EPOCH=$(git show -s --format=%ct "$commit")
# A cache would hand what was compiled in the first folder over to the second.
export SOURCE_DATE_EPOCH LC_ALL=C.UTF-8 CCACHE_DISABLE=1
releases=$PWD/build/releases
rm -rf "${releases:?}/$version" "$releases/first" "$releases/elsewhere"
make "$releases/first"
make "$releases/elsewhere/second"
diff -r "$releases/first/out" "$releases/elsewhere/second/out" || die "the two are not the same"
mv "$releases/first/out" "$releases/$version"
if [ -n "$key" ]; then
  gpg --local-user "$key" --armor --detach-sign --output "$releases/$version/SHA256SUMS.asc" "$releases/$version/SHA256SUMS"
fi
rm -r "$releases/first" "$releases/elsewhere"
(cd "$releases/$version" && ls -l)
echo "build/releases/$version: made twice, the same both times"
