#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""mutation.py [--count N] [--seed S] [--plain] [--file PATH]...: breaks the code and sees whether a
test notices.

Each mutant changes one place of a source file: an operator, a constant, a result, or a statement that
is dropped. Only that file is compiled again, into a copy, or, for a header, the sources that include
it; the test programs are linked with these and run, with the address and undefined-behaviour
sanitizers. The tool is linked so too, and its Python tests run it; these start so many processes that
--plain, without the sanitizers, is several times as fast. A mutant is caught when a program fails,
crashes or does not end. PATH may be a folder; without one it is the reader and olefio/.

Each place has its lot by the seed and its text, so that the draw in one file does not depend on the
others, and the results are kept in build/mutation*/results.jsonl by file contents: a run goes on
where the last one stopped. Survivors are tried again, for the tests may have become better; but not those
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
import signal
import subprocess
import sys
import time

ROOT = pathlib.Path(__file__).resolve().parent.parent
PLAIN = "--plain" in sys.argv
BUILD = ROOT / ("build/mutation-plain" if PLAIN else "build/mutation")
RESULTS = BUILD / "results.jsonl"
SHADOW = BUILD / "shadow"
FLAGS = "-O0 -g0" if PLAIN else "-O1 -g0 -fsanitize=address,undefined -fno-sanitize-recover=all"
EQUIVALENTS = ROOT / "scripts/mutation_equivalents.txt"
LEAST_CAUGHT = 90.0
TIMEOUT_SECONDS = 60  # at least; and five times what the unbroken program takes

# The programs that notice, by room, the one first that costs the least for what it notices.
PROGRAMS = {
    "olefio": ["olefio_tests", "fault_tests"],
    "reader/render": ["reader_tests", "render_tests"],
    "host": ["host_tests"],
    "tool": ["qps", "tool_test"],
    "default": ["reader_tests", "fault_tests"],
}
# What runs the tool, the one first that costs the least. "Formats" skips without its formatter:
# npm --prefix tests/tool/numfmt ci
PYTHON = shutil.which("python3", path="/usr/bin") or sys.executable  # Debian's, which has html5lib
TOOL_TESTS = [["test_html.py", "Html", "Browser"], ["test_consistency.py", "Consistency"], ["test_commands.py"],
              ["test_output.py"], ["test_xlsx.py", "Xlsx", "Formats"], ["test_failures.py"], ["test_batch.py"]]
# Those that look at some sources only, by how their names begin: the first for these, and none for
# the others.
SIDES = {
    "test_xlsx.py": ("xlsx", "number_format", "cell_value", "cell_order", "document"),
    "test_batch.py": ("manifest", "output", "run", "main", "inputs", "progress", "command_line"),
    "test_html.py": ("html", "hidden", "style", "text_forms", "utf8", "document", "cell_order"),
}
# Headers with code that runs for each cell; most of the others hold declarations.
HEADERS = ["reader/" + header for header in (
    "format/date_text.h", "format/format_value.h", "format/rendering.h", "frame/item_text.h",
    "frame/short_text.h", "render/date_serial.h", "render/digits.h", "render/short_fixed.h",
    "render/text_buffer.h", "render/word_text.h", "styles/apply_style.h")]
ROOMS = ["reader/frame", "reader/scan", "reader/items", "reader/styles", "reader/format", "reader/render",
         "reader/sheetinfo", "olefio", "host", "tool"]

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
    in_text = elsewhere = False
    for index, line in enumerate(lines):
        code = code_of(line)
        if line.startswith("#if"):  # this system's, with all libraries, is what is compiled
            elsewhere = ("_WIN32" in line or "__wasm__" in line) != ("!" in line)
        elif line.startswith("#else"):
            elsewhere = not elsewhere
        elif line.startswith("#endif"):
            elsewhere = False
        if elsewhere:
            continue
        was_in_text, in_text = in_text, ')"' not in line and (in_text or 'R"(' in line)
        if was_in_text or in_text or SKIPPED.search(line) or not code.strip():
            continue

        def mutant(start, end, new):
            return Mutant(path, index + 1, line.strip(), line[:start] + new + line[end:])

        for old, new in SWAPS:
            start = code.find(old)
            while start >= 0:
                yield mutant(start, start + len(old), new)
                start = code.find(old, start + len(old))
        for number in NUMBER.finditer(code):
            digits = number.group()
            value = int(digits, 8 if digits[0] == "0" and digits.isdigit() else 0)
            yield mutant(*number.span(), str(0 if value == 1 else value + 1))
        if STATEMENT.match(code.rstrip()) and "\1" not in code.strip()[:1]:
            balanced = code.count("(") == code.count(")") and code.count("{") == code.count("}")
            starts = index == 0 or lines[index - 1].rstrip().endswith((";", "{", "}", ":", ")"))
            if balanced and starts:
                yield mutant(len(line) - len(line.lstrip()), len(line), ";")


def run(command, **options):
    return subprocess.run(command, cwd=BUILD, capture_output=True, text=True,
                          errors="replace", **options)


def succeeds(command, environment, timeout=None):
    """Whether it ends well in time; what it has started ends with it."""
    process = subprocess.Popen(command, cwd=BUILD, env=environment, start_new_session=True,
                               stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    try:
        return process.wait(timeout) == 0
    except subprocess.TimeoutExpired:
        os.killpg(process.pid, signal.SIGKILL)
        process.wait()
        return False


def programs_for(file):
    return PROGRAMS.get(os.path.dirname(file), PROGRAMS["default"])


def configure(programs):
    subprocess.run(
        ["cmake", "-S", str(ROOT), "-B", str(BUILD), "-G", "Ninja", "-DCMAKE_BUILD_TYPE=None",
         f"-DCMAKE_C_FLAGS={FLAGS}", f"-DCMAKE_CXX_FLAGS={FLAGS}"],
        check=True, stdout=subprocess.DEVNULL)
    subprocess.run(["cmake", "--build", str(BUILD), "--target", *programs], check=True,
                   stdout=subprocess.DEVNULL)


def commands_of(program, path, file=""):
    """Tries what this program, which lies there, promises; with the environment for it. Of what looks
    at some sources only, that which looks at this one."""
    # One test loads a library a second time, from another folder.
    options = "hard_rss_limit_mb=2000:detect_leaks=0:detect_odr_violation=0"
    environment = dict(os.environ, ASAN_OPTIONS=options)
    if program != "qps":
        yield [path, "--gtest_brief=1", "--gtest_fail_fast", "--gtest_filter=-Amplification*"], environment
        return
    environment.update(QPS=path, QPS_SOURCE=str(ROOT))
    looks = {script for script, begins in SIDES.items() if os.path.basename(file).startswith(begins)}
    for script, *cases in sorted(TOOL_TESTS, key=lambda test: test[0] not in looks):
        if file and script in SIDES and script not in looks:
            continue
        yield [PYTHON, "-B", str(ROOT / "tests/tool" / script), "-f", *cases], environment


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
        self.timeout = {program: self.passes(program) for program in programs}

    def passes(self, program):
        """How long a mutant may take, by what the unbroken program takes."""
        start = time.monotonic()
        for command, environment in commands_of(program, str(BUILD / "bin" / program)):
            if not succeeds(command, environment):
                sys.exit(f"{program} fails without a mutant: {shlex.join(command)}")
        return max(TIMEOUT_SECONDS, 5 * (time.monotonic() - start))

    def outcome(self, mutant):
        lines = (ROOT / mutant.file).read_text().splitlines()
        lines[mutant.line - 1] = mutant.mutated
        mutated = SHADOW / mutant.file
        shutil.rmtree(SHADOW, ignore_errors=True)
        mutated.parent.mkdir(parents=True)
        mutated.write_text("\n".join(lines) + "\n")
        objects = {}  # the mutants, by the objects that they stand for
        for source in sources_with(mutant.file):
            if source not in self.compile:
                continue  # another system's
            command = self.compile[source]
            original = command[command.index("-o") + 1]
            objects[original] = f"mutant_{len(objects)}.o"
            if not self.compiles(source, objects[original]):
                return "stillborn", ""
        for program in programs_for(mutant.file):
            if self.notices(program, objects, mutant.file):
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

    def notices(self, program, objects, file):
        # In place of the original; or in front of all, where neither a library's own objects are
        # taken, nor what the tests have of a header's functions.
        mutant = f"bin/mutant_{program}"
        link, front = self.link[program].replace(f"-o bin/{program} ", f"-o {mutant} "), []
        for original, copied in objects.items():
            if f" {original} " in link:
                link = link.replace(f" {original} ", f" {copied} ")
            else:
                front.append(copied)
        link = re.sub(r" (\S+\.o) ", rf" {' '.join(front)} \1 ", link, count=1)
        linked = run(link, shell=True)
        if linked.returncode != 0:
            sys.exit(f"cannot link {program}:\n{linked.stderr}")
        return not all(succeeds(command, environment, self.timeout[program])
                       for command, environment in commands_of(program, str(BUILD / mutant), file))


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
    parser.add_argument("--plain", action="store_true", help="without the sanitizers")
    parser.add_argument("--file", action="append", metavar="PATH",
                        help="only this source file, or those of this folder")
    arguments = parser.parse_args()

    wanted = arguments.file or [room for room in ROOMS if room not in ("host", "tool")] + HEADERS
    files = [file for file in [*sources_in(ROOMS), *HEADERS]
             if file in wanted or os.path.dirname(file) in wanted]
    programs = sorted({program for file in files for program in programs_for(file)})
    configure(programs)
    bench = Bench(programs)
    files = [file for file in files if file in bench.compile or file.endswith(".h")]
    places = [mutant for file in files for mutant in places_in(file)]
    places.sort(key=lambda mutant: lot_of(mutant, arguments.seed))
    print(f"{len(places)} places in {len(files)} files")

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
