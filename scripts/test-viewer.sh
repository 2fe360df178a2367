#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# test-viewer.sh: builds the page and the npm package, and compares both with the native tool: the
# page in Chromium, the package in Node. The types of the scripts are checked too.
# shellcheck source=scripts/lib.sh
. "$(dirname "$0")/lib.sh"

need "${buildPackages[@]}" chromium
command -v npm > /dev/null || need nodejs npm
scripts/build-viewer.sh
buildPreset release qps
export QPS=$PWD/build/release/bin/qps

cd tests/viewer
npm ci --silent --no-audit --no-fund > ../../build/log/viewer-npm.txt 2>&1 ||
  die "npm could not install what tests/viewer/package-lock.json names"
status=0 passed=0 failed=0
count() { if [ "$1" = 0 ]; then passed=$((passed + 1)); else failed=$((failed + 1)); fi; }

npx tsc --project . || status=1
count $status
most=400000
size=$(stat -c %s ../../build/viewer/qpsreader.html)
echo "qpsreader.html: $size bytes"
status=0
[ "$size" -lt $most ] || status=1
count $status

log=../../build/log/viewer-tests.txt
node --test --test-reporter=tap package.test.mjs page.test.mjs > "$log" 2>&1 || true
grep -v '^ *\(duration_ms\|type\):' "$log" | grep -E '^(ok|not ok)|error:|: .* ms$|read:' || true
passed=$((passed + $(sed -n 's/^# pass //p' "$log")))
failed=$((failed + $(sed -n 's/^# fail //p' "$log")))
echo "$passed passed, $failed failed, 0 skipped"
[ $failed = 0 ]
