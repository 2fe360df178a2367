# SPDX-License-Identifier: MIT
# Where input comes from and where output goes: several files, lists of names, standard input,
# folders of output, and the line of progress.
import os
import pathlib
import pty
import resource
import shutil
import signal
import subprocess
import time
import unittest

from notebooks import EXAMPLE, QPS, ToolTest, label, notebook, run, sheet

ONE = notebook(sheet(label(0, 0, b"one")))
TWO = notebook(sheet(label(0, 0, b"two")))
NAMES = [b"Budget", b"budget", b"../../etc/passwd", b"a/b\\c:d*e?f\"g<h>i|j", b"..", b"CON", b"",
         b"tab\there", b" ", b"caf\xe9", b"Budget~2", b"CAF\xc9"]
LONG = [b"x" * 60, b"\xe9" * 62]


def contents(folder):
    """Of every file below the folder, by its path from there."""
    return {str(path.relative_to(folder)): path.read_bytes()
            for path in pathlib.Path(folder).rglob("*") if path.is_file()}


class OutputTest(ToolTest):
    def test_several_files_say_which_is_which(self):
        one, two = self.file(ONE, "one.wb2"), self.file(TWO, "t\x1bwo.wb2")
        cases = {
            "csv": "one\n\ntwo\n",
            "text": f"==> {one} <==\n=== A ===\none\n\n==> {self.path('t␛wo.wb2')} <==\n=== A ===\ntwo\n",
        }
        for command, expected in cases.items():
            self.assertEqual(run(command, one, two).stdout.decode(), expected)
        lines = run("sheets", one, two).stdout.decode().splitlines()
        self.assertEqual([line.split("\t")[0] for line in lines],
                         ["file", one, self.path("t\u241bwo.wb2")])
        self.assertEqual(run("html", one, two).stdout.count(b"<!DOCTYPE html>"), 2)

    def test_names_from_a_list(self):
        names = b"\0".join(self.file(ONE, name).encode() for name in ("a b", "-x", "new\nline", "[1,2]"))
        expected = b"one\n\none\n\none\n\none\n"
        self.assertEqual(run("csv", "--files0-from", self.file(names + b"\0", "list")).stdout, expected)
        self.assertEqual(run("csv", "--files0-from", "-", stdin=names).stdout, expected)
        result = run("csv", "--files0-from", "-", stdin=b"\0-\0/nonexistent\0" + names)
        self.assertEqual((result.returncode, result.stdout), (1, expected))
        self.assertEqual(result.stderr.count(b"\n"), 3)
        self.assertEqual(run("csv", "--files0-from", "-").stdout, b"")

    def test_any_name_on_the_command_line(self):
        for name in ("[1,2]", "{}", "csv", "%%"):
            self.file(ONE, name)
            self.assertEqual(run("csv", name, cwd=self.folder).stdout, b"one\n", name)
        self.file(ONE, "--crlf")
        self.assertEqual(run("csv", "--", "--crlf", cwd=self.folder).stdout, b"one\n")

    def test_standard_input(self):
        self.assertEqual(run("csv", "-", stdin=ONE).stdout, b"one\n")
        example = pathlib.Path(EXAMPLE).read_bytes()
        self.assertEqual(run("csv", "-", stdin=example).stdout, run("csv", EXAMPLE).stdout)
        result = run("csv", "-", stdin=ONE[:-20])
        self.assertEqual((result.returncode, result.stdout), (5, b""))
        self.assertTrue(result.stderr.startswith(b"qps: -: "))

    def convert(self, *args, command="csv", **keywords):
        return run(command, "--output-dir", "out", *args, cwd=self.folder, **keywords)

    def test_a_folder_of_output(self):
        os.mkdir(self.path("sub"))
        self.file(ONE), self.file(TWO, "sub/book.wb2")
        for command, extension in (("csv", ".A.csv"), ("text", ".txt"), ("json", ".jsonl"),
                                   ("html", ".html"), ("info", ".info.txt")):
            result = self.convert("book.wb2", "sub/book.wb2", "-", command=command, stdin=ONE)
            self.assertEqual((result.returncode, result.stdout, result.stderr), (0, b"", b""))
            for name in ("book.wb2", "sub/book.wb2", "stdin"):
                self.assertGreater(os.path.getsize(self.path(f"out/{name}{extension}")), 0, name)
        out = contents(self.path("out"))
        self.assertEqual(out["book.wb2.A.csv"], b"one\n")
        self.assertEqual(out["sub/book.wb2.A.csv"], b"two\n")
        self.assertEqual(len(out), 15)

    def test_names_come_from_the_path_as_given(self):
        names = {"a/x.wb2": "a/x.wb2", "./a//y": "a/y", "con": "%63on", "stdin": "%73tdin", "%": "%25",
                 "n?:\\": "n%3F%3A%5C", "end. ": "end%2E%20", "tab\t": "tab%09", b"\xff": "%FF",
                 "...": "%2E%2E%2E", ".hidden/z": ".hidden/z", "caf\u00e9~1": "caf\u00e9~1"}
        for folder in ("a", ".hidden"):
            os.mkdir(self.path(folder))
        for source, name in names.items():
            (pathlib.Path(self.folder) / os.fsdecode(source)).write_bytes(ONE)
            self.assertEqual(self.convert(source, command="text").stderr, b"")
            self.assertTrue(os.path.exists(self.path(f"out/{name}.txt")), name)
        self.assertEqual(len(contents(self.path("out"))), len(names))

    def test_a_base_is_cut_off(self):
        os.mkdir(self.path("a"))
        book, a = self.file(ONE, "a/x"), self.path("a")
        up = f"../{os.path.basename(self.folder)}/a"
        for base, source, expected in ((a, book, "x"), (self.folder + "/./", book, "a/x"), (".", "a/x", "a/x"),
                                       (up, f"{up}/x", "x"), ("a", "a/x", "x"), (None, book, book[1:])):
            shutil.rmtree(self.path("out"), ignore_errors=True)
            result = self.convert(*(["--base", base] if base else []), source)
            self.assertEqual((result.stderr, list(contents(self.path("out")))), (b"", [expected + ".A.csv"]))
        for args, reason in ((["--base", "b", "a/x"], b"not below --base b"), (["--base", a, "a/x"], b"not below"),
                             (["--base", "a", "ab/x"], b"not below"), ([f"{up}/x"], b"'..' leads out"),
                             (["--base", ".", "a/../a/x"], b"'..' leads out"), (["a/x", book], b"absolute and")):
            result = self.convert(*args)
            self.assertEqual(result.returncode, 1)
            self.assertIn(reason, result.stderr)

    def test_names_of_worksheets_are_safe(self):
        before = set(os.listdir(self.folder)) | {"out", "book.wb2"}
        sheets = [sheet(label(0, 0, b"x"), name=name, number=i) for i, name in enumerate(NAMES + LONG)]
        self.file(notebook(*sheets))
        result = self.convert("book.wb2")
        self.assertEqual((result.returncode, result.stderr), (0, b""))
        self.assertEqual(set(os.listdir(self.folder)), before)
        self.assertEqual(sorted(os.listdir(self.path("out"))), sorted([
            "book.wb2.Budget.csv", "book.wb2.budget~2.csv", "book.wb2.______etc_passwd.csv",
            "book.wb2.a_b_c_d_e_f_g_h_i_j.csv", "book.wb2.__.csv", "book.wb2._CON.csv",
            "book.wb2.sheet 7.csv", "book.wb2.tab\u2409here.csv", "book.wb2._.csv",
            "book.wb2.caf\u00e9.csv", "book.wb2.CAF\u00c9~2.csv", "book.wb2.Budget~2~2.csv", f"book.wb2.{'x' * 60}.csv",
            f"book.wb2.{chr(0xe9) * 50}.csv"]))
        shutil.rmtree(self.path("out"))
        self.convert("--sheet", "budget", "book.wb2")
        self.assertEqual(os.listdir(self.path("out")), ["book.wb2.budget~2.csv"])

    def test_nothing_follows_a_link_out_of_the_folder(self):
        out = self.path("out")
        os.mkdir(out)
        victim = self.file(b"mine", "victim")
        os.symlink(victim, os.path.join(out, "book.wb2.A.csv"))
        self.file(ONE)
        for args, status, expected in (([], 1, b"mine"), (["--overwrite"], 0, b"one\n")):
            self.assertEqual(self.convert(*args, "book.wb2").returncode, status)
            self.assertEqual(contents(out), {"book.wb2.A.csv": expected})
            self.assertEqual(pathlib.Path(victim).read_bytes(), b"mine")

    def test_no_notebook_replaces_what_another_left(self):
        """Relative names have the same output in other folders, and absolute ones may have it too."""
        os.mkdir(self.path("sub"))
        self.file(ONE), self.file(TWO, "sub/book.wb2")
        out = self.path("out")
        convert = lambda folder, *args: run("csv", "--output-dir", out, "book.wb2", *args, cwd=self.path(folder))
        for folder, args, status, expected in ((".", [], 0, b"one\n"), (".", [], 0, b"one\n"),
                                               ("sub", [], 1, b"one\n"), ("sub", ["--overwrite"], 0, b"two\n"),
                                               (".", [], 1, b"two\n")):
            result = convert(folder, *args)
            self.assertEqual((result.returncode, contents(out)), (status, {"book.wb2.A.csv": expected}))
            self.assertEqual(b"is there and is not the same" in result.stderr, status == 1)

    def test_a_file_appears_whole_or_not_at_all(self):
        large = notebook(sheet(*[label(c, r, b"x" * 100) for r in range(500) for c in range(20)]))
        out = self.path("out")
        os.mkdir(out)
        self.file(b"older", "out/book.wb2.A.csv")

        def limit():
            signal.signal(signal.SIGXFSZ, signal.SIG_IGN)
            resource.setrlimit(resource.RLIMIT_FSIZE, (500000, 500000))

        self.file(large), self.file(ONE, "small")
        result = self.convert("book.wb2", "small", preexec_fn=limit)
        self.assertEqual(result.returncode, 1)
        self.assertIn(b"cannot write book.wb2.A.csv: File too large\n", result.stderr)
        self.assertEqual(contents(out), {"book.wb2.A.csv": b"older", "small.A.csv": b"one\n"})
        self.file(ONE[:-20], "damaged")
        damaged = self.convert("damaged")
        self.assertEqual((damaged.returncode, len(os.listdir(out))), (5, 2))

    def test_an_output_folder_that_is_none(self):
        result = run("csv", "--output-dir", self.file(b"", "file"), self.file(ONE))
        self.assertEqual((result.returncode, result.stdout), (2, b""))

    def test_a_terminal_gets_no_orders(self):
        path = self.file(notebook(sheet(label(0, 0, b"\x1b[31m,\x7f\r\n"))))
        master, slave = pty.openpty()
        subprocess.run([*QPS, "csv", path], stdout=slave, timeout=60, check=True)
        os.close(slave)
        self.assertEqual(os.read(master, 1000).decode(), '"\u241b[31m,\u2421\u240d\u240a"\r\n')
        os.close(master)

    def shown_on_terminal(self, args, before, after, term, patience):
        """What csv writes to a terminal when the second half of its input comes after `patience` seconds."""
        master, slave = pty.openpty()
        process = subprocess.Popen([*QPS, "csv", "--files0-from", *args], stdin=subprocess.PIPE,
                                   stdout=subprocess.PIPE, stderr=slave,
                                   env={**os.environ, "TERM": term, "NO_COLOR": "1"})
        process.stdin.write(before)
        process.stdin.flush()
        time.sleep(patience)
        out, _ = process.communicate(after, timeout=60)
        os.close(slave)
        shown = b""
        try:
            while part := os.read(master, 1000):
                shown += part
        except OSError:  # the other end of the terminal is closed and everything is read
            pass
        os.close(master)
        self.assertEqual(out, b"one\n\none\n")
        self.assertNotIn(b"\x1b", shown)
        return [part for part in shown.split(b"\r") if b"cells" in part]

    def test_progress_shows_on_a_terminal_after_a_second(self):
        path = self.file(ONE)
        names = path.encode() + b"\0"
        counted = self.file(b"-\0" + names[:-1], "list")
        for term, args, before, after, line in (
                ("xterm", ["-"], names, names, b"2 cells, 2 files done"), ("dumb", ["-"], names, names, None),
                ("xterm", ["-", "--quiet"], names, names, None),
                ("xterm", [counted], ONE[:20], ONE[20:], b"1 cells, 1 of 2 files done")):
            for patience in (1.2, 5, 25):  # on a busy machine a program starts late
                shows = self.shown_on_terminal(args, before, after, term, patience)
                if shows or line is None:
                    break
            self.assertEqual(shows[:1], [b"qps: " + line] if line else [])


if __name__ == "__main__":
    unittest.main()
