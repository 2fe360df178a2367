#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""How much processor time a DataFrame of 400,000 cells takes, beside `qps csv` and pandas.read_csv.
Needs the python preset: cmake --preset python && cmake --build --preset python --target qps
qps_python_files"""
import io
import random
import resource
import struct
import subprocess
import sys
import tempfile
from pathlib import Path

TOP = Path(__file__).resolve().parent.parent
sys.path[:0] = [str(TOP / "build/python/python"), str(TOP / "tests/python")]
import conftest  # noqa: E402, F401 (the way to the builder of notebooks)
import notebooks as make  # noqa: E402
import pandas  # noqa: E402
import qpsreader  # noqa: E402

COLUMNS, ROWS, RUNS = 50, 8000, 9


def cell(chance, column, row):
    if column == 0:
        return make.label(column, row, b"Item %d" % (row % 500))
    if column % 5 == 1:
        return make.integer(column, row, chance.randrange(-30000, 30000))
    value, style = chance.uniform(-1e5, 1e5), 1
    if column == 2:
        value, style = chance.randrange(20000, 50000), 2
    return make.record(14, struct.pack("<BBHHd", column, 0, row, style << 3, value))


def spent():
    """By this process and those that it has waited for."""
    return sum(usage.ru_utime + usage.ru_stime for usage in map(
        resource.getrusage, (resource.RUSAGE_SELF, resource.RUSAGE_CHILDREN)))


def best(work):
    times = []
    for _ in range(RUNS):
        start = spent()
        work()
        times.append(spent() - start)
    return min(times)


def main():
    chance = random.Random(1)
    sheet = make.sheet(*(cell(chance, column, row) for column in range(COLUMNS)
                         for row in range(ROWS)), name=b"A", columns=COLUMNS, rows=ROWS)
    with tempfile.NamedTemporaryFile(suffix=".wb2") as file:
        file.write(make.notebook(sheet, definitions=make.font() + make.style(0x02) + make.style(5)))
        file.flush()

        def direct():
            return qpsreader.open(file.name).sheets[0].to_pandas()

        def by_csv():
            run = subprocess.run([make.QPS[0], "csv", file.name], stdout=subprocess.PIPE, check=True)
            return pandas.read_csv(io.BytesIO(run.stdout), header=None, parse_dates=[2])

        assert direct().shape == by_csv().shape == (ROWS, COLUMNS)
        cells = best(lambda: qpsreader.open(file.name).sheets[0].columns())
        ours, theirs = best(direct), best(by_csv)
    print(f"{COLUMNS * ROWS:,} cells, the best of {RUNS} runs")
    print(f"open and read              {cells * 1e3:6.0f} ms")
    print(f"open, read and to_pandas   {ours * 1e3:6.0f} ms")
    print(f"qps csv and read_csv       {theirs * 1e3:6.0f} ms")
    print(f"ratio                      {ours / theirs:6.2f}")


if __name__ == "__main__":
    main()
