#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# test-python.sh: the Python package under pytest, from the build tree, under mypy, and once more as
# pip installs it. Without npm's DuckDB two tests are skipped. With
# QPS_NOTEBOOKS=FOLDER the notebooks there are read too, and compared with what the tool says.
# shellcheck source=scripts/lib.sh
. "$(dirname "$0")/lib.sh"

need "${buildPackages[@]}" mypy python3-dev python3-distributed python3-pandas python3-pip \
  python3-pytest python3-venv
command -v npm > /dev/null || need npm
python=/usr/bin/python3
export PYTHONDONTWRITEBYTECODE=1

# pip takes CMake and a compiler, and nothing that is not on this machine.
pipInstalls() {
  rm -rf build/venv
  $python -m venv --system-site-packages build/venv &&
    build/venv/bin/pip install --quiet --no-index --no-build-isolation . &&
    [ "$(cd build && venv/bin/python -m qpsreader ../examples/budget.wb3)" = \
      $'Budget\t10 rows\t7 columns\t47 cells\nCar\t5 rows\t5 columns\t21 cells' ]
}

typesHold() {
  MYPYPATH=build/python/python mypy --strict --cache-dir build/mypy -p qpsreader &&
    MYPYPATH=build/python/python mypy --strict --cache-dir build/mypy tests/python/typed.py
}

buildPreset python qps qps_python_files
quietly python-npm npm ci --prefix tests/python --no-audit --no-fund --ignore-scripts || true

log=build/log/pytest.txt
$python -m pytest -q -rs -p no:cacheprovider tests/python > "$log" 2>&1 || tail -n 60 "$log"
countOf() {
  tail -n 1 "$log" | { grep -oE "[0-9]+ $1" || true; } | cut -d' ' -f1 |
    awk '{ sum += $1 } END { print sum + 0 }'
}
sed -n 's/^SKIPPED \[[0-9]*\] [^ ]*: /skipped: /p' "$log"
passed=$(countOf passed) failed=$(countOf '(failed|errors?)') skipped=$(countOf skipped)
[ $((passed + failed)) -gt 0 ] || failed=1
for check in typesHold pipInstalls; do
  if quietly "python-$check" $check; then passed=$((passed + 1)); else failed=$((failed + 1)); fi
done
echo "$passed passed, $failed failed, $skipped skipped"
[ "$failed" = 0 ]
