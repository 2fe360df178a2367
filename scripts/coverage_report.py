#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""coverage_report.py BUILD FOLDER...: what the runs of a --coverage build reached in these folders.

Prints a row a folder with its lines and branches, and then every line that was not reached and every
branch that was not taken. A line or branch counts as reached when it was in any of the programs that
it was compiled into. Fails when less than 98 % of the lines or 95 % of the branches were.
"""

import collections
import json
import pathlib
import subprocess
import sys

LEAST_LINES, LEAST_BRANCHES = 98.0, 95.0


def measured(build, root):
    """Yields (file, line) records of gcov for all sources below root."""
    for notes in sorted(build.rglob("*.gcda")):
        text = subprocess.run(
            ["gcov", "--json-format", "--stdout", "--branch-probabilities", str(notes)],
            check=True, capture_output=True, text=True).stdout
        for document in text.splitlines():
            data = json.loads(document)
            for file in data["files"]:
                path = pathlib.Path(data["current_working_directory"], file["file"]).resolve()
                if path.is_relative_to(root):
                    for line in file["lines"]:
                        yield path.relative_to(root).as_posix(), line


class Counts:
    """The execution counts of one folder's lines and branches, over all programs."""

    def __init__(self):
        self.lines = collections.Counter()
        self.branches = collections.Counter()

    def add(self, file, line):
        place = (file, line["line_number"])
        self.lines[place] += line["count"]
        # A function that is compiled twice, as a template is, has its branches on a line once more.
        function = line.get("function_name", "")
        for number, branch in enumerate(line["branches"]):
            if not branch["throw"]:
                self.branches[(*place, function, number)] += branch["count"]

    @staticmethod
    def reached(counter):
        return sum(1 for count in counter.values() if count > 0), len(counter)


def percent(part, whole):
    return 100.0 * part / whole if whole else 100.0


def main():
    build, root = pathlib.Path(sys.argv[1]).resolve(), pathlib.Path.cwd().resolve()
    folders = sys.argv[2:]
    counts = {folder: Counts() for folder in folders}
    for file, line in measured(build, root):
        folder = file.rpartition("/")[0]
        if folder in counts:
            counts[folder].add(file, line)

    total = [0, 0, 0, 0]
    print(f"{'folder':<18}{'lines':>18}{'branches':>22}")
    for folder, found in counts.items():
        row = [*Counts.reached(found.lines), *Counts.reached(found.branches)]
        total = [a + b for a, b in zip(total, row)]
        print(f"{folder:<18}{row[0]:>6} of {row[1]:<5}{row[2]:>12} of {row[3]}")
    lines, branches = percent(*total[:2]), percent(*total[2:])
    print(f"{'all':<18}{total[0]:>6} of {total[1]:<5}{total[2]:>12} of {total[3]}")
    print(f"lines {lines:.2f} %, branches {branches:.2f} %")

    missed = collections.defaultdict(list)
    for found in counts.values():
        for place, count in found.lines.items():
            if count == 0:
                missed[place].append("line")
        for (file, number, _, branch), count in found.branches.items():
            if count == 0 and found.lines[(file, number)] > 0:
                missed[(file, number)].append(f"branch {branch}")
    for (file, number), what in sorted(missed.items()):
        source = (root / file).read_text().splitlines()[number - 1].strip()
        print(f"{file}:{number}: {', '.join(what)}: {source}")
    return 0 if lines >= LEAST_LINES and branches >= LEAST_BRANCHES else 1


if __name__ == "__main__":
    sys.exit(main())
