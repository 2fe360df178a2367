#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""mutation.py [--count N] [--seed S] [--file PATH]...: breaks the code and sees whether a test notices.

Each mutant changes one place of a source file of the reader or of olefio: an operator, a constant, a
result, or a statement that is dropped. Only that file is compiled again, into a copy, or, for a header,
the sources that include it; the test programs are linked with these in front and run, with the address
and undefined-behaviour sanitizers. A mutant is caught when a program fails, crashes or does not end.

Each place has its lot by the seed and its text, so that the draw in one file does not depend on the
others, and the results are kept in build/mutation/results.jsonl by file contents: a run goes on where
the last one stopped. Survivors are tried again, for the tests may have become better; but not those
that cannot be told from the original, which are listed with their reason in
scripts/mutation_equivalents.txt. Fails when less than 90 % of the mutants are caught, these included.
"""

import argparse
import collections
import functools
import hashlib
import json
import os
import pathlib
import re
import shlex
import shutil
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
BUILD = ROOT / "build/mutation"
RESULTS = BUILD / "results.jsonl"
SHADOW = BUILD / "shadow"
EQUIVALENTS = ROOT / "scripts/mutation_equivalents.txt"
LEAST_CAUGHT = 90.0
TIMEOUT_SECONDS = 60

# The programs that notice, by room, the one first that costs the least for what it notices.
PROGRAMS = {
    "olefio": ["olefio_tests", "fault_tests"],
    "reader/render": ["reader_tests", "render_tests"],
    "default": ["reader_tests", "fault_tests"],
}
# Headers with code that runs for each cell; most of the others hold declarations.
HEADERS = ["reader/" + header for header in (
    "format/date_text.h", "format/format_value.h", "format/rendering.h", "frame/item_text.h",
    "frame/short_text.h", "render/date_serial.h", "render/digits.h", "render/short_fixed.h",
    "render/text_buffer.h", "render/word_text.h", "styles/apply_style.h")]
ROOMS = ["reader/frame", "reader/scan", "reader/items", "reader/styles", "reader/format", "reader/render",
         "reader/sheetinfo", "olefio"]

SWAPS = [
    (" < ", " <= "), (" <= ", " < "), (" > ", " >= "), (" >= ", " > "),
    (" == ", " != "), (" != ", " == "), (" && ", " || "), (" || ", " && "),
    (" + ", " - "), (" - ", " + "), (" * ", " / "), (" / ", " * "), (" % ", " / "),
    (" & ", " | "), (" | ", " & "), (" << ", " >> "), (" >> ", " << "),
    (" += ", " -= "), (" -= ", " += "), (" |= ", " &= "), (" &= ", " |= "),
    ("++", "--"), ("(!", "("), ("return true;", "return false;"), ("return false;", "return true;"),
    ("std::min", "std::max"), ("std::max(", "std::min("),
    ("Step::kGoOn", "Step::kFail"), ("Step::kFail", "Step::kGoOn"),
    ("OnFailure::kStop", "OnFailure::kIgnore"), ("OnFailure::kIgnore", "OnFailure::kStop"),
]
NUMBER = re.compile(r"(?<![\w.'x\"])(0x[0-9A-Fa-f]+|\d+)(?![\w.'\"])")
STATEMENT = re.compile(r"^\s*(?!return|using|break|continue|case|static|constexpr|const |auto|"
                       r"struct|class|enum|else|if|for|while|do|template|friend|extern|default)"
                       r"[\w:*&>\[\]().+-]+(\(.*\)| [-+|&]?= .*|\+\+|--)?;$")
SKIPPED = re.compile(r"^\s*(//|#|static_assert|template|using|namespace|struct|class|enum|friend)|"
                     r"operator|\[\[nodiscard\]\]")

INCLUDE = re.compile(r'^#include "(.*)"', re.MULTILINE)

Mutant = collections.namedtuple("Mutant", "file line text mutated")


def code_of(line):
    """The line without its trailing comment and with string literals blanked, same length."""
    line = re.sub(r'"(\\.|[^"\\])*"', lambda m: '"' + "\1" * (len(m.group()) - 2) + '"', line)
    line = re.sub(r"'(\\.|[^'\\])'", lambda m: "'" + "\1" * (len(m.group()) - 2) + "'", line)
    return line.split("//")[0]


def places_in(path):
    """All mutants of one file."""
    lines = (ROOT / path).read_text().splitlines()
    for index, line in enumerate(lines):
        code = code_of(line)
        if SKIPPED.search(line) or not code.strip():
            continue

        def mutant(start, end, new):
            return Mutant(path, index + 1, line.strip(), line[:start] + new + line[end:])

        for old, new in SWAPS:
            start = code.find(old)
            while start >= 0:
                yield mutant(start, start + len(old), new)
                start = code.find(old, start + len(old))
        for number in NUMBER.finditer(code):
            value = int(number.group(), 0)
            yield mutant(*number.span(), str(0 if value == 1 else value + 1))
        if STATEMENT.match(code.rstrip()) and "\1" not in code.strip()[:1]:
            balanced = code.count("(") == code.count(")") and code.count("{") == code.count("}")
            starts = index == 0 or lines[index - 1].rstrip().endswith((";", "{", "}", ":", ")"))
            if balanced and starts:
                yield mutant(len(line) - len(line.lstrip()), len(line), ";")


def run(command, **options):
    return subprocess.run(command, cwd=BUILD, capture_output=True, text=True,
                          errors="replace", **options)


def configure():
    flags = "-fsanitize=address,undefined -fno-sanitize-recover=all -O1 -g0"
    subprocess.run(
        ["cmake", "-S", str(ROOT), "-B", str(BUILD), "-G", "Ninja", "-DCMAKE_BUILD_TYPE=None",
         f"-DCMAKE_C_FLAGS={flags}", f"-DCMAKE_CXX_FLAGS={flags}", "-DQPSREADER_BUILD_TOOL=OFF"],
        check=True, stdout=subprocess.DEVNULL)
    programs = sorted({name for names in PROGRAMS.values() for name in names})
    subprocess.run(["cmake", "--build", str(BUILD), "--target", *programs], check=True,
                   stdout=subprocess.DEVNULL)
    return programs


class Bench:
    """Compiles, links and runs mutants in the build tree."""

    def __init__(self, programs):
        self.compile = {}
        for entry in json.loads((BUILD / "compile_commands.json").read_text()):
            file = pathlib.Path(entry["file"]).resolve()
            if file.is_relative_to(ROOT):
                self.compile[file.relative_to(ROOT).as_posix()] = shlex.split(entry["command"])
        self.link = {}
        for program in programs:
            commands = run(["ninja", "-t", "commands", program], check=True).stdout.splitlines()
            self.link[program] = commands[-1]

    def outcome(self, mutant):
        lines = (ROOT / mutant.file).read_text().splitlines()
        lines[mutant.line - 1] = mutant.mutated
        mutated = SHADOW / mutant.file
        shutil.rmtree(SHADOW, ignore_errors=True)
        mutated.parent.mkdir(parents=True)
        mutated.write_text("\n".join(lines) + "\n")
        objects = []
        for source in sources_with(mutant.file):
            objects.append(f"mutant_{len(objects)}.o")
            if not self.compiles(source, objects[-1]):
                return "stillborn", ""
        room = os.path.dirname(mutant.file)
        for program in PROGRAMS.get(room, PROGRAMS["default"]):
            if self.notices(program, " ".join(objects)):
                return "caught", program
        return "survived", ""

    def compiles(self, source, copied):
        command = list(self.compile[source])
        command[command.index("-o") + 1] = copied
        # A header beside the source would be found before that in the shadow: the source moves there.
        place = SHADOW / source
        place.parent.mkdir(parents=True, exist_ok=True)
        if not place.exists():
            shutil.copy(ROOT / source, place)
        command[command.index("-c") + 1] = str(place)
        # A mutant may leave something unused; that is not what a warning is for here.
        command = [word for word in command if not word.startswith("-W")] + ["-w"]
        return run([*command[:1], f"-I{SHADOW}", *command[1:]]).returncode == 0

    def notices(self, program, objects):
        # In front of all: neither the library's own objects are taken, nor what the tests have of a
        # header's functions.
        link = self.link[program].replace(f"-o bin/{program}", f"-o mutant_{program}")
        link = re.sub(r" (\S+\.o) ", rf" {objects} \1 ", link, count=1)
        linked = run(link, shell=True)
        if linked.returncode != 0:
            sys.exit(f"cannot link {program}:\n{linked.stderr}")
        environment = dict(os.environ, ASAN_OPTIONS="hard_rss_limit_mb=2000:detect_leaks=0")
        try:
            return run([f"./mutant_{program}", "--gtest_brief=1", "--gtest_fail_fast",
                        "--gtest_filter=-Amplification*"],
                       env=environment, timeout=TIMEOUT_SECONDS).returncode != 0
        except subprocess.TimeoutExpired:
            return True


@functools.cache
def included_by(path):
    """All files of ours that a source includes, and itself."""
    found = {path}
    for header in INCLUDE.findall((ROOT / path).read_text()):
        if (ROOT / header).exists():
            found |= included_by(header)
    return frozenset(found)


def sources_in(rooms):
    return sorted(path.relative_to(ROOT).as_posix()
                  for room in rooms for path in (ROOT / room).glob("*.cpp"))


def sources_with(file):
    """The sources that make the difference when this file changes."""
    return [source for source in sources_in(ROOMS) if file in included_by(source)]


def lot_of(mutant, seed):
    text = f"{seed}:{mutant.file}:{mutant.text}:{mutant.mutated.strip()}"
    return hashlib.sha256(text.encode()).digest()


def key_of(mutant):
    contents = hashlib.sha256((ROOT / mutant.file).read_bytes()).hexdigest()[:12]
    return f"{mutant.file}:{mutant.line}:{mutant.mutated.strip()}:{contents}"


def done_before():
    if not RESULTS.exists():
        return {}
    return {row["key"]: row for row in map(json.loads, RESULTS.read_text().splitlines())}


def shown(file, text, mutated):
    """What stands for a mutant in the list of equivalents; of a dropped statement, its text too."""
    mutated = mutated.strip()
    return file, f"; // {text}" if mutated == ";" else mutated


def equivalents():
    """Rows "FILE | MUTATED LINE | REASON"; the line may hold a | of its own."""
    rows = [row for row in EQUIVALENTS.read_text().splitlines() if row and not row.startswith("#")]
    return {tuple(row.rsplit(" | ", 1)[0].split(" | ", 1)) for row in rows}


def report(rows):
    outcomes = collections.Counter(row["outcome"] for row in rows)
    live = outcomes["caught"] + outcomes["survived"]
    rooms = collections.defaultdict(collections.Counter)
    for row in rows:
        rooms[os.path.dirname(row["file"])][row["outcome"]] += 1
    for room, counts in sorted(rooms.items()):
        print(f"{room:<10} {counts['caught']:>4} of {counts['caught'] + counts['survived']}")
    known = equivalents()
    for row in rows:
        if row["outcome"] == "survived":
            known_as = shown(row["file"], row["text"], row["mutated"])
            mark = "equivalent" if known_as in known else "SURVIVED"
            print(f"{mark} {row['file']}:{row['line']}: {row['text']}  =>  {row['mutated'].strip()}")
    score = 100.0 * outcomes["caught"] / live if live else 0.0
    print(f"{live} mutants, {outcomes['caught']} caught, {score:.1f} %"
          f" ({outcomes['stillborn']} did not compile)")
    return score


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--count", type=int, default=300)
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--file", action="append", help="only this source file")
    arguments = parser.parse_args()

    files = arguments.file or [*sources_in(ROOMS), *HEADERS]
    places = [mutant for file in files for mutant in places_in(file)]
    places.sort(key=lambda mutant: lot_of(mutant, arguments.seed))
    print(f"{len(places)} places in {len(files)} files")

    bench = Bench(configure())
    for program in bench.link:  # the unbroken programs must pass
        if run([f"./bin/{program}", "--gtest_brief=1"]).returncode != 0:
            sys.exit(f"{program} fails without a mutant")
    before, known, rows, live = done_before(), equivalents(), [], 0
    with RESULTS.open("a") as results:
        for mutant in places:
            if live == arguments.count:
                break
            key = key_of(mutant)
            row = before.get(key)
            is_known = shown(mutant.file, mutant.text, mutant.mutated) in known
            if row is None or (row["outcome"] == "survived" and not is_known):
                outcome, program = bench.outcome(mutant)
                row = dict(mutant._asdict(), key=key, outcome=outcome, by=program)
                results.write(json.dumps(row) + "\n")
                results.flush()
            rows.append(row)
            live += row["outcome"] != "stillborn"
    return 0 if report(rows) >= LEAST_CAUGHT else 1


if __name__ == "__main__":
    sys.exit(main())
