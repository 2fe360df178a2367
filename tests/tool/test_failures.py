# SPDX-License-Identifier: MIT
# What happens when something is wrong: the exit status, one line on standard error that says which
# file and why, and nothing on standard output that could be taken for a result.
import os
import re
import resource
import signal
import subprocess
import tempfile
import unittest

from notebooks import EXAMPLE, QPS, ToolTest, blank, font, integer, label, notebook, record, run, sheet, style, user_format

GOOD = notebook(sheet(label(0, 0, b"x")))
TWO = notebook(sheet(label(0, 0, b"first")), sheet(label(0, 0, b"second"), number=1))
CUT = TWO[:-30]
UNDEFINED = notebook(sheet(label(0, 0, b"x")), sheet(label(0, 0, b"\x81\x8d"), number=1))
TWICE = notebook(sheet(label(0, 0, b"x"), label(0, 0, b"y")))
NO_END = notebook(sheet(label(0, 0, b"x")), sheet(label(0, 0, b"y"), number=1)[:-4])
ALL_ROWS = [record(261, b"\0\0\xff\xff" + bytes([n + 1, 0])) for n in range(40)]  # their heights
ROWS = notebook(sheet(*ALL_ROWS, label(0, 0, b"x")))
ROWS_OF_MANY = notebook(*[sheet(ALL_ROWS[0], label(0, 0, b"x"), number=n) for n in range(50)])
NESTED = notebook(*[sheet(number=n)[:-4] for n in range(256)], *ALL_ROWS, label(0, 0, b"x"), record(203))
CORNERS = notebook(*[sheet(label(255, 65535, b"z"), number=n) for n in range(20)])
DEFINED = notebook(*[sheet(label(0, 0, b"x"), number=n) for n in range(256)],
                   definitions=font() + style() + user_format(1, b"0") * 30000)
DEFINED_MORE = DEFINED.replace(style(), style() * 5000, 1)
LARGE = notebook(sheet(*[label(c, r, b"x" * 100) for r in range(2000) for c in range(20)]))

CROWD = notebook(*[sheet(label(0, 0, b"x"), number=n % 256) for n in range(300)])

# file contents (None: no such file), arguments, exit status, what standard error says of it
CASES = [
    (None, [], 1, "No such file or directory"),
    (b"", [], 3, "empty"),
    (b"hello, world", [], 3, "not a Quattro Pro for Windows notebook"),
    (b"\x00\x00\x02\x00\x20\x51" + record(1), [], 3, "DOS"),
    (b"%PDF-1.4 and so on", [], 3, "PDF"),
    (b"PK\x03\x04 and so on", [], 3, "ZIP"),
    (b"\xd0\xcf\x11\xe0\xa1\xb1\x1a\xe1" + bytes(600), [], 5, "compound document"),
    (notebook(sheet(), definitions=record(76, b"\1\0") + style()), [], 4, "protected"),
    (CUT, [], 5, "cut short"),
    (GOOD[:40], [], 5, "cut short"),
    (GOOD[:-4], [], 5, "cut short"),
    (NO_END, [], 5, "end record"),
    (LARGE, ["--max-memory", "1M"], 6, "memory limit"),
    (LARGE, ["--max-output", "3M"], 6, "limit of output"),
    (ROWS, [], 6, "more row heights"),
    (ROWS_OF_MANY, [], 6, "more row heights"),
    (NESTED, ["--salvage"], 6, "more row heights"),
    (CORNERS, [], 6, "limit of output"),
    (DEFINED, ["--max-time", "0.1"], 6, "time limit was reached: 100 ms"),
    (notebook(sheet(label(0, 0, b"x")), definitions=font() + style() + user_format(1, b"0") * 400000),
     ["--max-time", "0.005"], 6, "time limit was reached: 5 ms"),
    (DEFINED_MORE, [], 6, "has 35002 definitions for each of 256 worksheets"),
    (CROWD, [], 6, "lists 300 worksheets"),
    (GOOD, ["--sheet", "Budget"], 1, "no worksheet is named 'Budget'"),
    (GOOD, ["--sheet", "2"], 1, "there is no worksheet 2"),
    (GOOD, ["--sheet", "0"], 1, "there is no worksheet 0"),
    (UNDEFINED, ["--strict"], 1, "2 bytes are not defined in windows-1252"),
    (TWICE, ["--strict"], 1, "1 cell more than once"),
]

USAGE = [
    [], ["frobnicate"], ["csv"], ["csv", "--nosuch", "x"], ["csv", "--delimiter", "ab", "x"],
    ["csv", "--delimiter", '"', "x"], ["csv", "--delimiter", "", "x"], ["csv", "--encoding", "klingon", "x"],
    ["csv", "--encoding", "UTF-16LE", "x"], ["csv", "--encoding", "cp1252//IGNORE", "x"],
    ["csv", "--max-memory", "lots", "x"], ["csv", "--max-memory", "99999999999T", "x"],
    ["csv", "--max-output", "", "x"], ["csv", "--max-time", "1m", "x"], ["csv", "--max-time", "-1", "x"],
    ["csv", "--files0-from", "-", "x"], ["csv", "--files0-from", "/nonexistent/list"],
    ["csv", "--output-dir", "", "x"], ["text", "--crlf", "x"], ["csv", "--sheet"],
]

ALL_COMMANDS = ["sheets", "info", "text", "csv", "json", "html", "items"]


class Failures(ToolTest):
    def assert_fails(self, result, path, status, reason):
        line = result.stderr.decode()
        self.assertEqual((result.returncode, result.stdout), (status, b""), line)
        self.assertTrue(line.startswith(f"qps: {path}: ") and reason in line, line)
        self.assertEqual(line.count("\n"), 1, line)

    def test_status_and_reason(self):
        for data, args, status, reason in CASES:
            with self.subTest(status=status, reason=reason):
                path = self.path("missing") if data is None else self.file(data)
                self.assert_fails(run("csv", *args, path), path, status, reason)

    def test_every_command_prints_nothing_of_a_damaged_file(self):
        path = self.file(CUT)
        for command in ALL_COMMANDS:
            with self.subTest(command=command):
                self.assert_fails(run(command, path), path, 5, "cut short")

    def test_every_prefix_of_a_notebook_fails(self):
        for size in range(0, len(TWO), 3):
            path = self.file(TWO[:size])
            result = run("csv", path)
            self.assertEqual((result.stdout, result.stderr.count(b"\n")), (b"", 1), size)
            self.assertIn(result.returncode, (3, 5), size)

    def test_salvage_prints_what_is_there(self):
        path = self.file(CUT)
        result = run("csv", "--salvage", path)
        self.assertEqual((result.returncode, result.stdout), (5, b"first\n"))  # the second has no dimensions left
        self.assertIn(b"cut short", result.stderr)
        result = run("csv", "--salvage", self.file(NO_END))
        self.assertEqual((result.returncode, result.stdout), (5, b"x\n\ny\n"))

    def test_salvage_goes_on_at_the_next_worksheet(self):
        """Wherever 512 bytes are missing or wrong, the second worksheet is whole, and no cell shows what none has."""
        cells = [b for n in range(200) for b in (label(0, n, b"a longer label %04d" % n), integer(1, n, n))]
        first = sheet(*cells, columns=2, rows=200)
        whole = notebook(first, sheet(label(0, 0, b"second"), number=1, name=b"Next"))
        end = whole.index(first) + len(first)
        known = {text.encode() for n in range(200) for text in (f"{n}", f"a longer label {n:04}")} | {b""}
        for start in range(end - len(first) + 150, end - 520, 331):
            for gap in (b"", b"\0" * 512, b"\xa5" * 512):
                path = self.file(whole[:start] + gap + whole[start + 512:])
                result = run("csv", "--salvage", path)
                message = result.stderr.decode()
                kept, _, second = result.stdout.rpartition(b"\n\n")
                self.assertEqual((result.returncode, second), (5, b"second\n"), (start, message))
                self.assertLessEqual(set(re.split(rb"[\n,]", kept)), known, start)
                plain = run("csv", path)
                self.assertTrue(plain.returncode == 5 or b"warning: it may be damaged: " in plain.stderr, start)
                self.assertIn(run("csv", "--strict", path).returncode, (1, 5))
                lost = re.search(r"; bytes (\d+) to (\d+) are lost\n", message)
                self.assertTrue(start - 40 <= int(lost[1]) <= start + 300, (start, message))
                self.assertEqual(int(lost[2]) + 1, end - 512 + len(gap), message)
        listed = [line.split(b"\t") for line in run("sheets", "--salvage", path).stdout.splitlines()[1:]]
        self.assertEqual([(fields[1], fields[-1]) for fields in listed],
                         [(b"A", b"%d" % (end - len(first))), (b"Next", b"%d" % end)])
        self.assertIn(f"; bytes {lost[1]} to {lost[2]} are lost.", run("html", "--salvage", path).stdout.decode())

    def test_small_files_cannot_make_much(self):
        for data in (ROWS, ROWS_OF_MANY, NESTED, CORNERS):
            for command in ALL_COMMANDS:
                result = run(command, "--salvage", "--max-memory", "60M", self.file(data))
                self.assertIn(result.returncode, (0, 6), command)
                self.assertLess(len(result.stdout), 30_000_000, command)
                self.assertNotIn(b"memory", result.stderr)

    def test_a_limit_of_output_counts_exactly_and_leaves_nothing(self):
        path, out = self.file(LARGE), self.path("out")
        for command in ALL_COMMANDS:
            size = len(run(command, path).stdout)
            self.assertEqual(len(run(command, "--max-output", str(size), path).stdout), size)
            self.assert_fails(run(command, "--max-output", str(size - 1), path), path, 6, "limit of output")
        self.assertIn(b"warning: 2 bytes", run("csv", "--max-output", "1000", self.file(UNDEFINED)).stderr)
        path = self.file(notebook(sheet(*[integer(0, n, n) for n in range(1000)])))
        name = os.path.join(os.path.dirname(path), "./" * 1900, os.path.basename(path))  # in every line of json
        size = len(run("json", name).stdout)
        self.assert_fails(run("json", "--max-output", str(size - 1), name), name, 6, "limit of output")
        result = run("csv", "--output-dir", out, "--max-output", "10", self.file(TWO))
        self.assertEqual((result.returncode, os.listdir(out)), (6, []))

    def test_what_a_notebook_becomes_counts_towards_the_memory_limit(self):
        blanks = notebook(sheet(*[blank(n % 256, n // 256) for n in range(300000)], columns=256, rows=1200))
        for limit, status in (("5M", 6), ("30M", 0)):  # the file has 3 MB, the list of cells no less
            result = run("json", "--no-style", "--max-memory", limit, self.file(blanks))
            self.assertEqual((result.returncode, len(result.stdout) > 0), (status, status == 0), limit)

    def test_standard_input_counts_towards_the_memory_limit(self):
        for limit, status in (("1M", 6), (str(len(LARGE)), 6), ("5M", 6), ("20M", 0)):
            result = run("csv", "--max-memory", limit, "-", stdin=LARGE)
            self.assertEqual((result.returncode, len(result.stdout) > 0), (status, status == 0), limit)

    def test_what_is_no_notebook_is_refused_after_its_first_bytes(self):
        huge = self.file(b"")
        os.truncate(huge, 100 << 30)
        for data in (b"%PDF-1.4", b"\0\0", b"hello"):
            with open(huge, "r+b") as file:
                file.write(data.ljust(10, b"\0"))
            self.assert_fails(run("csv", "--max-time", "1", huge), huge, 3, "not a Quattro Pro")
        with open(huge, "r+b") as file:
            file.write(TWO[:20])
        self.assert_fails(run("csv", huge), huge, 6, "longer than 4 GiB")
        program = " ".join(QPS) + " csv "
        for command in (program + "- < /dev/zero", "yes | " + program + "-", program + "/dev/zero",
                        "yes | " + program + "/dev/stdin"):  # without end
            result = subprocess.run(command, shell=True, capture_output=True, timeout=60, check=False)
            self.assertEqual(result.returncode, 3)
            self.assertRegex(result.stderr, rb"^qps: [-\w/]+: not a Quattro Pro for Windows notebook\n$")

    @unittest.skipUnless(os.path.exists("/proc/version"), "there is no /proc")
    def test_files_without_a_size_are_read(self):
        self.assert_fails(run("csv", "/proc/version"), "/proc/version", 3, "not a Quattro Pro")

    def test_lists_that_cannot_be_read(self):
        for source, reason in ((self.folder, "Is a directory"),
                               (self.file(b"x" * 70000, "list"), "not a list of names")):
            result = run("csv", "--files0-from", source)
            self.assertEqual((result.returncode, result.stdout), (1, b""))
            self.assertEqual(result.stderr.decode().split(": ")[:3], ["qps", "--files0-from", source])
            self.assertIn(reason, result.stderr.decode())
        for args in (["--files0-from", "-"], ["-"]):
            closed = subprocess.run(["sh", "-c", 'exec "$@" <&-', "sh", *QPS, "csv", *args],
                                    stdout=subprocess.PIPE, stderr=subprocess.PIPE, timeout=60, check=False)
            self.assertEqual((closed.returncode, closed.stdout), (1, b""))
            self.assertIn(b"Bad file descriptor", closed.stderr)

    def test_a_named_pipe_is_not_waited_for(self):
        for folder in [self.folder, *filter(os.path.isdir, ["/dev/shm"])]:
            with tempfile.TemporaryDirectory(dir=folder) as inner:
                pipe = os.path.join(inner, "pipe")
                os.mkfifo(pipe)
                self.assert_fails(run("csv", pipe), pipe, 1, "named pipe")

    def test_too_little_memory_ends_in_words(self):
        path = self.file(LARGE)
        for megabytes in range(8, 64, 2):
            result = run("csv", path, self.path("missing"), preexec_fn=lambda: resource.setrlimit(
                resource.RLIMIT_AS, (megabytes << 20, megabytes << 20)))
            if result.stderr.startswith(b"qps: "):  # otherwise the program was not even loaded
                self.assertIn(result.returncode, (1, 6), (megabytes, result.stderr))

    def test_of_too_many_worksheets_some_can_be_chosen(self):
        result = run("csv", "--sheet", "299", self.file(CROWD))
        self.assertEqual((result.returncode, result.stdout), (0, b"x\n"))

    def test_wrong_usage(self):
        for args in USAGE:
            with self.subTest(args=args):
                result = run(*args)
                self.assertEqual((result.returncode, result.stdout), (2, b""))
                self.assertRegex(result.stderr.decode(), r"\Aqps: [^\n]+\n\Z")

    def test_an_unknown_command_is_called_that(self):
        for word, hint in (("shets", "did you mean 'sheets'?"), ("cvs", "did you mean 'csv'?"),
                           ("budget.wb2", "see 'qps help'")):
            result = run(word, "x")
            self.assertEqual((result.returncode, result.stderr.decode()),
                             (2, f"qps: '{word}' is not a command ({hint})\n"))

    def test_a_folder_is_no_file(self):
        self.assert_fails(run("csv", self.folder), self.folder, 1, "directory")

    def test_goes_on_after_a_failure_and_returns_the_first(self):
        good, cut = self.file(GOOD, "good.wb2"), self.file(CUT, "cut.wb2")
        other = self.file(b"hello", "other.txt")
        result = run("csv", good, other, cut, good)
        self.assertEqual((result.returncode, result.stdout), (3, b"x\n\nx\n"))
        self.assertEqual(result.stderr.count(b"\n"), 2)

    def test_warnings_can_be_silenced_but_failures_cannot(self):
        path = self.file(UNDEFINED)
        loud, quiet = run("csv", path), run("csv", "--quiet", path)
        self.assertEqual((loud.stdout, loud.returncode), (quiet.stdout, quiet.returncode))
        self.assertEqual(loud.stdout.decode(), "x\n\n\ufffd\ufffd\n")
        self.assertRegex(loud.stderr.decode(), "warning: 2 bytes are not defined in windows-1252")
        self.assertEqual(quiet.stderr, b"")
        self.assert_fails(run("csv", "--quiet", self.path("missing")), self.path("missing"), 1, "No such")

    def test_names_cannot_give_orders_to_the_terminal(self):
        result = run("csv", self.path("\x1b[31mno\n"))
        self.assertNotIn(b"\x1b", result.stderr)
        self.assertEqual(result.stderr.count(b"\n"), 1)

    def test_a_full_disk_is_noticed(self):
        with open("/dev/full", "wb") as full:
            for args in (["csv", EXAMPLE], ["--help"], ["csv", "--help"]):
                result = run(*args, stdout=full)
                self.assertEqual(result.returncode, 1)
                self.assertEqual(result.stderr, b"qps: standard output: No space left on device\n")

    def test_a_closed_pipe_ends_quietly(self):
        path = self.file(LARGE)
        for ignored in (True, False):  # the signal; then the write fails instead
            reader, writer = os.pipe()
            os.close(reader)
            process = subprocess.run([*QPS, "csv", path], stdout=writer, stderr=subprocess.PIPE,
                                     restore_signals=not ignored, timeout=60, check=False)
            os.close(writer)
            self.assertEqual(process.stderr, b"")
            self.assertEqual(process.returncode, 1 if ignored else -signal.SIGPIPE)


if __name__ == "__main__":
    unittest.main()
