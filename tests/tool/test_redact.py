# SPDX-License-Identifier: MIT
# scripts/redact.py: what leaves a house in a bug report shows the fault and nothing else.
import importlib.util
import json
import os
import struct
import subprocess
import sys
import unittest

from notebooks import EXAMPLE, SOURCE, ToolTest, font, formula, label, notebook, number, record, run, sheet, \
    style, user_format

SECRET = b"Secret42"
PLACE = struct.pack("<BBHH", 9, 0, 9, 8)
NUMBER = 8.5e60
# Everything here that holds SECRET or NUMBER must lose it.
BOOK = notebook(
    sheet(label(0, 0, SECRET), label(0, 1, b"x\0" + SECRET), formula(1, 0, SECRET), number(0, 2, NUMBER),
          formula(0, 3, NUMBER), record(16, PLACE + bytes(8) + b"\x20\0" + SECRET), record(12, PLACE + SECRET),
          record(14, PLACE + bytes(8) + SECRET), record(15, PLACE[:4]), name=SECRET),
    sheet(label(0, 0, b"shown\0" + SECRET), formula(1, 0, None), number(0, 1, 42.25), name=b"Two", number=1),
    record(700, SECRET),
    definitions=font() + style() + style(form=0x22) + user_format(1, b"0.0\0" + SECRET) + record(265)
    + record(37, SECRET + b"\0") + record(232, SECRET) + record(266)) + SECRET


class Redact(ToolTest):
    def redact(self, path, *options, status=0):
        out = self.path("out.wb2")
        done = subprocess.run([sys.executable, os.path.join(SOURCE, "scripts/redact.py"), path, out, *options],
                              capture_output=True, timeout=60, check=False)
        self.assertEqual(done.returncode, status, done.stderr)
        with open(out, "rb") as file:
            return out, file.read()

    def items(self, path):
        """Of all items, what does not come from what cells and names hold."""
        lines = [json.loads(line) for line in run("json", path).stdout.splitlines()]
        held = {"file", "sheet", "name", "text", "type", "value", "serial"}
        return [{key: value for key, value in line.items() if key not in held} for line in lines]

    def test_nothing_secret_is_left_and_what_is_kept_is_the_same(self):
        out, data = self.redact(self.file(BOOK), "--keep", "2!A1:B2")
        for secret in (SECRET[:6], SECRET[-2:], struct.pack("<d", NUMBER)[2:]):
            self.assertNotIn(secret, data)
        self.assertEqual(run("csv", out, "--sheet", "2").stdout, b"shown,ERR\n42.25,\n")
        self.assertTrue(run("csv", out, "--sheet", "1").stdout.startswith(b"Xxxxxx00,Xxxxxx00,"))
        self.assertEqual(self.items(out), self.items(self.path("book.wb2")))

    def test_the_twin_in_a_compound_document(self):
        plain = self.redact(EXAMPLE)[1]
        os.remove(self.path("out.wb2"))
        if not importlib.util.find_spec("olefile"):
            self.skipTest("no olefile here")
        out, data = self.redact(EXAMPLE.replace(".wb2", ".wb3"))
        self.assertEqual(data, plain)
        self.assertEqual(self.items(out), self.items(EXAMPLE))

    def test_a_damage_stays(self):
        for cut in range(0, len(BOOK) - len(SECRET), 23):
            out, data = self.redact(self.file(BOOK[:cut]), "--keep", "2!A1")
            self.assertNotIn(SECRET[:6], data)
            self.assertEqual(run("csv", out).returncode, run("csv", self.path("book.wb2")).returncode, cut)
            os.remove(out)


if __name__ == "__main__":
    unittest.main()
