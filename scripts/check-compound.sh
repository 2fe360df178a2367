#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# check-compound.sh [BUILD_FOLDER]: compares every stream that the compound-document library reads
# with what gsf extracts, byte for byte. The documents come from two other programs: workbooks of
# python3-xlwt, the large ones with a chain of DIFAT sectors, and gsf's own, with mini streams and
# many entries. The build is build/release unless another is named; ctest names one, and then nothing
# is installed: without the two programs the script ends with status 77.
# shellcheck source=scripts/lib.sh
. "$(dirname "$0")/lib.sh"

build=${1:-build/release}
[[ $build = /* ]] || build=$([ $# = 0 ] && echo "$PWD" || echo "$calledFrom")/$build
# Packages have their libraries in a folder of lib/.
findProducts() {
  extract=$build/bin/extract_stream
  library=$(find "$build/lib" -name zbolefio.dll -print -quit 2> /dev/null) || true
  [ -x "$extract" ] && [ -n "$library" ]
}

if [ $# = 0 ]; then
  need "${buildPackages[@]}" libgsf-bin python3-xlwt
elif ! command -v gsf > /dev/null || ! /usr/bin/python3 -c 'import xlwt' 2> /dev/null; then
  echo "skipped: libgsf-bin and python3-xlwt are not installed"
  exit 77
fi
if ! findProducts; then
  [ $# = 0 ] || die "no extract_stream and zbolefio.dll in $build"
  buildPreset release extract_stream zbolefio
  findProducts || die "no extract_stream and zbolefio.dll in $build"
fi

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# Debian's Python, whatever else is in the path. Long texts that differ make a large stream quickly.
makeWorkbooks() {
  /usr/bin/python3 - "$1" << 'PYTHON'
import sys, xlwt

def workbook(name, sheets, rows, textLength=0):
    book = xlwt.Workbook()
    for number in range(sheets):
        sheet = book.add_sheet(f"Sheet {number + 1}")
        for row in range(rows):
            sheet.write(row, 0, row * 1.25)
            sheet.write(row, 1, f"{number} {row} ".ljust(textLength, chr(97 + row % 26)))
    book.save(f"{sys.argv[1]}/{name}.xls")

workbook("one-cell", 1, 1)
workbook("small", 1, 30)
workbook("many-sheets", 200, 100)
workbook("just-below-difat", 1, 215, 32000)
workbook("difat", 1, 300, 32000)
workbook("two-difat-sectors", 1, 600, 32000)
PYTHON
}

# Streams around the sizes where something changes, many small ones, and a storage.
makeArchives() {
  local folder=$1/contents size
  mkdir -p "$folder/sizes/Storage" "$folder/many" "$folder/large"
  for size in 0 1 63 64 65 511 512 513 4095 4096 4097 8191 8192 8193 100000; do
    head -c $size /dev/urandom > "$folder/sizes/$size"
  done
  head -c 300 /dev/urandom > "$folder/sizes/Storage/inner"
  for size in {1..150}; do
    head -c $((size * 20)) /dev/urandom > "$folder/many/Stream number $size"
  done
  head -c 20000000 /dev/urandom > "$folder/large/PerfectOffice_MAIN"
  head -c 5000 /dev/urandom > "$folder/large/NOVELL_MAIN"
  local name
  for name in sizes many large; do
    gsf createole "$1/$name.ole" "$folder/$name"/* > /dev/null 2>&1
  done
}

# The streams in the root storage, one name a line.
streamsOf() {
  gsf list "$1" | sed -n 's/^f  *\([-0-9]* [:0-9]* \)\{0,1\} *[0-9]* //p' | grep -v /
}

makeWorkbooks "$work"
makeArchives "$work"

compared=0 different=0
for document in "$work"/*.xls "$work"/*.ole; do
  while IFS= read -r stream; do
    gsf cat "$document" "$stream" > "$work/expected"
    if "$extract" "$library" "$document" "$stream" > "$work/found" && cmp "$work/expected" "$work/found"; then
      verdict=same
    else
      verdict=DIFFERENT
      different=$((different + 1))
    fi
    compared=$((compared + 1))
    echo "$verdict  ${document##*/}: $stream, $(stat -c %s "$work/expected") bytes"
  done < <(streamsOf "$document")
done

[ $compared -ge 150 ] || die "only $compared streams were found to compare"
echo "$compared streams compared, $different different"
[ $different = 0 ]
