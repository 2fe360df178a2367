#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# test-release.sh VERSION: installs what scripts/release.sh made from its own files, where nothing else of
# this project is, and has each print the example: the Debian packages in fresh systems, also beside Debian's
# other program qps, the ZIP under wine, the npm package in Node, the page in Chromium, the source built
# from the tarball. Sums and bills of materials are checked first. Takes root, and minutes.
# shellcheck disable=SC2016
# shellcheck source=scripts/lib.sh
. "$(dirname "$0")/lib.sh"

made=$PWD/build/releases/${1:?usage: test-release.sh VERSION}
work=$PWD/build/test-release
[ "$(id -u)" = 0 ] || die "a fresh system takes root"
[ -d "$made" ] || die "there is no $made"
need autopkgtest chromium debootstrap nodejs python3 unzip wine64
command -v npm > /dev/null || need npm
rm -rf "$work"
mkdir -p "$work/downloads" "$work/log"
export LC_ALL=C.UTF-8
line='^Groceries,05-Jan-24,\$420\.00 ,\$467\.35 ,\(47\.35\) ,,over budget$'
passed=0 failed=0

# check WHAT COMMAND [LINE]: the command ends well and prints the example's line of groceries, or LINE.
check() {
  says "$1" "$work/log/$2.txt" "${3:-$line}" "$2"
}

# inSystem NAME COMMAND...: until one fails.
inSystem() {
  inside "$work/$1" "$work/downloads" "set -e; export LC_ALL=C.UTF-8; $2"
}

# system NAME [PACKAGES]: a fresh system with the release in /release and the example in /.
system() {
  freshSystem "$work/$1" "libstdc++6${2:+,$2}" "$work/downloads" || return
  echo force-unsafe-io > "$work/$1/etc/dpkg/dpkg.cfg.d/force-unsafe-io"
  mkdir "$work/$1/release"
  cp "$made"/*.deb "$made"/*.tar.gz "$work/$1/release"
  cp examples/budget.wb? "$work/$1"
}

sumsAndBills() {
  (cd "$made" && sha256sum --quiet -c SHA256SUMS) && python3 - "$made" << 'END'
import hashlib, json, pathlib, sys
folder = pathlib.Path(sys.argv[1])
others = (".spdx.json", "SHA256SUMS", "-fuzz-corpus-")  # no programs
artefacts = [one for one in folder.iterdir() if not any(part in one.name for part in others)]
assert len(artefacts) >= 8, artefacts
for one in artefacts:
    bill = json.loads((folder / (one.name + ".spdx.json")).read_text())
    known = {part["SPDXID"] for part in bill["packages"] + bill["files"]} | {"SPDXRef-DOCUMENT"}
    assert bill["packages"][0]["checksums"][0]["checksumValue"] == hashlib.sha256(one.read_bytes()).hexdigest()
    assert len(bill["files"]) >= 1 and len(known) == len(bill["packages"]) + len(bill["files"]) + 1
    for relation in bill["relationships"]:
        assert {relation["spdxElementId"], relation["relatedSpdxElement"]} <= known
print("each is whole and described")
END
}

debianTool() {
  system tool && inSystem tool '
    apt-get -qq update && apt-get -qq -y --no-install-recommends install /release/libqpsreader1_* /release/qpsreader-tools_*
    qps --version
    test "$(qps csv --sheet Budget /budget.wb2 | sha256sum)" = "$(qpsread csv --sheet Budget /budget.wb3 | sha256sum)"
    qpsread csv /budget.wb2'
}

# In the same system: whichever comes first, both are there, and removing one leaves the other.
besideOtherQps() {
  inSystem tool '
    apt-get -qq -y --no-install-recommends install qps
    dpkg -S /usr/bin/qps | grep "^qps:" && test ! -L /usr/bin/qps
    qpsread --version
    apt-get -qq -y purge qpsreader-tools && test -x /usr/bin/qps
    apt-get -qq -y --no-install-recommends install /release/qpsreader-tools_*
    dpkg -S /usr/bin/qps | grep "^qps:" && test ! -L /usr/bin/qps
    qpsread csv /budget.wb3'
}

debianPython() {
  system python && inSystem python '
    apt-get -qq update && apt-get -qq -y --no-install-recommends install /release/python3-qpsreader_*
    python3 -c "
import qpsreader
sheet = qpsreader.open(\"/budget.wb3\").sheets[0]
for row in range(1, sheet.row_count + 1):
    print(*(sheet[row, column].text or \"\" for column in range(1, 8)), sep=\",\")"'
}

debianLibrary() {
  system library g++,make,cmake,pkg-config,man-db || return
  cp -r tests/install "$work/library/check"
  inSystem library '
    dpkg -i /release/libqpsreader1_* /release/libqpsreader-dev_*
    man -w QPSInitSheet SSItem qpsreader
    for way in package pkg-config; do
      CC=gcc CXX=g++ /check/check_install.sh $way system /usr/share/doc/libqpsreader-dev /work-$way
    done
    /work-package/bin/notebook /budget.wb3'
}

# The tests of debian/tests, by the program that Debian runs them with.
debianTests() {
  system tests && mkdir "$work/tree" && tar -xf "$made"/*.tar.gz --strip-components=1 -C "$work/tree" &&
    autopkgtest --no-built-binaries "$made"/*.deb "$work/tree/" -- chroot "$work/tests"
}

sourceTree() {
  system source g++,cmake,ninja-build,libcli11-dev,rapidjson-dev && inSystem source '
    tar -xf /release/*.tar.gz && cd qpsreader-*
    cmake --preset release -DQPSREADER_BUILD_TESTS=OFF && cmake --build --preset release
    cmake --install build/release --prefix /opt/qps && /opt/qps/bin/qps csv /budget.wb3'
}

windowsArchive() {
  local place="$work/a folder of its own"
  mkdir "$place"
  unzip -q "$made"/*-windows-x64.zip -d "$place" && cd "$place"/*-windows-x64 || return
  rm -rf "$work/wine"
  for kind in wb2 wb3; do
    WINEPREFIX=$work/wine WINEDEBUG=-all /usr/lib/wine/wine64 bin/qps.exe csv examples/budget.$kind | tr -d '\r'
  done > "$work/log/wine-both.txt"
  [ "$(grep -cE "$line" "$work/log/wine-both.txt")" = 2 ] && cat "$work/log/wine-both.txt"
}

nodePackage() {
  mkdir "$work/node" && cd "$work/node" || return
  echo '{"private": true, "type": "module"}' > package.json
  npm install --offline --no-audit --no-fund "$made"/qpsreader-npm-*.tgz
  cp "${work%/build/*}"/examples/budget.wb3 .
  cat > print.js << 'END'
import {readFileSync} from 'node:fs';
import {open} from 'qpsreader';
const book = await open(readFileSync('budget.wb3'));
process.stdout.write(book.sheets[0].toCsv());
END
  node print.js
}

# The tests of the page, against this page and the tool of the release.
page() {
  local tool
  mkdir "$work/unpacked"
  for tool in "$made"/libqpsreader1_*.deb "$made"/qpsreader-tools_*.deb; do dpkg-deb -x "$tool" "$work/unpacked"; done
  npm ci --prefix tests/viewer --silent --no-audit --no-fund
  QPS=$work/unpacked/usr/bin/qpsread QPS_PAGE=$(echo "$made"/qpsreader-*.html) \
    node --test --test-reporter=tap tests/viewer/page.test.mjs
}

check "sums and bills of materials" sumsAndBills "^each is whole"
check "Debian: the tool" debianTool
check "Debian: beside the other qps" besideOtherQps
check "Debian: Python" debianPython
check "Debian: the library and its manual" debianLibrary '\$467\.35'
check "Debian: tests of what is installed" debianTests '^library +PASS'
check "the source" sourceTree
check "Windows: the ZIP" windowsArchive
check "Node: the package" nodePackage
check "Chromium: the page" page "^# fail 0"
rm -rf "$work"/{tool,python,library,tests,source,downloads}
echo "$passed passed, $failed failed, 0 skipped"
[ $failed = 0 ]
