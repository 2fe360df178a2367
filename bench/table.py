#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""table.py BIN [--cells=N] [Google Benchmark's flags]: one table of qps_bench's runs and of whole
processes: nanoseconds a unit, and the ratio to the floor of the same run. Runs are repeated in random
order, so that a disturbance of the machine does not meet one of them alone; of several the fastest
counts. The status is 1 when a ratio is above what it may be."""
import json
import os
import re
import subprocess
import sys
import tempfile
from pathlib import Path

BIN = Path(sys.argv[1])
FLAGS = sys.argv[2:]
ONCE_MORE = 15  # how often whole processes are run
MOST_OF_FLOOR = 1.0  # that `qps csv` may take


def flag(name, otherwise):
    return next((f.split("=", 1)[1] for f in FLAGS if f.startswith(name + "=")), otherwise)


def reader_rows():
    """(name, nanoseconds a unit, name of the floor, what the ratio may be, remark) of each run."""
    command = [BIN / "qps_bench", "--benchmark_repetitions=7", "--benchmark_min_time=0.1",
               "--benchmark_enable_random_interleaving=true", "--benchmark_format=json", *FLAGS]
    result = subprocess.run(command, stdout=subprocess.PIPE, check=True)
    runs = json.loads(result.stdout)["benchmarks"] if result.stdout else []
    rows = {}
    for run in sorted(runs, key=lambda run: run["family_index"]):
        if run["run_type"] != "iteration":
            continue
        name, each = run["run_name"], run["cpu_time"] / run["units"]
        if name not in rows or each < rows[name][1]:
            rows[name] = (name, each, run.get("label"), run.get("atMost"), "")
    return rows


def usage(command, output):
    """Seconds of the processor and the peak of memory, in bytes, of a process."""
    actions = [(os.POSIX_SPAWN_OPEN, 1, output, os.O_WRONLY | os.O_CREAT | os.O_TRUNC, 0o666)]
    child = os.posix_spawn(command[0], command, os.environ, file_actions=actions)
    _, status, used = os.wait4(child, 0)
    if status != 0:
        sys.exit(f"table.py: {command[0]} failed")
    return used.ru_utime + used.ru_stime, used.ru_maxrss * 1024


def process_rows(folder, cells):
    """`qps csv` against the floor that reads the same file and writes the same CSV. Until the peaks are
    known nothing large is held here: it would count as the peak of every process that this one starts."""
    book, name, floor = folder / "mix.wb2", "whole process/qps csv", "whole process/floor"
    with book.open("wb") as file:
        subprocess.run([BIN / "qps_count_cells", "file", "mix", cells], stdout=file, check=True)
    commands = {floor: [BIN / "qps_floor_csv", book], name: [BIN / "qps", "csv", book]}
    outputs = {key: folder / (key.replace("/", " ") + ".csv") for key in commands}
    peaks = {key: usage(commands[key], outputs[key])[1] for key in commands}
    if outputs[name].read_bytes() != outputs[floor].read_bytes():
        sys.exit("table.py: the tool and the floor do not write the same CSV")
    runs = [{key: usage(commands[key], "/dev/null")[0] for key in commands} for _ in range(ONCE_MORE)]
    return {key: (key, min(run[key] for run in runs) * 1e9 / int(cells), floor if key == name else None,
                  MOST_OF_FLOOR if key == name else None, f"  peak {peaks[key] / 1e6:.1f} MB")
            for key in commands}


def show(rows):
    """Whether all ratios are as they may be."""
    good, group = True, None
    for name, each, floor, most, remark in rows.values():
        if name.startswith("floor/"):
            continue  # stands in the rows that are compared with it
        if name.split("/")[0] != group:
            group = name.split("/")[0]
            print(f"\n{group:<44} {'ns a unit':>9} {'floor':>9} {'ratio':>7} {'at most':>8}")
        line = f"  {name.split('/', 1)[1]:<42} {each:9.2f}"
        if floor in rows:
            ratio = each / rows[floor][1]
            above = most is not None and ratio > most
            good = good and not above
            line += f" {rows[floor][1]:9.2f} {ratio:7.3f}" + (f" {most:8.2f}" if most else "")
            line += "  above" if above else ""
        print(line + remark)
    return good


def main():
    rows = reader_rows()
    if re.search(flag("--benchmark_filter", ""), "whole process/qps csv"):
        with tempfile.TemporaryDirectory() as folder:
            rows |= process_rows(Path(folder), flag("--cells", "1000000"))
    sys.exit(0 if show(rows) else 1)


main()
