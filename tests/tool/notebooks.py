# SPDX-License-Identifier: MIT
# Notebooks for the tests of the tool, made record by record, and a way to run the tool on them.
import os
import struct
import subprocess
import tempfile
import unittest

QPS = os.environ["QPS"].split(";")  # the program, after an emulator's command if there is one
SOURCE = os.environ["QPS_SOURCE"]  # the top of the source tree
EXAMPLE = os.path.join(SOURCE, "examples/budget.wb2")


def record(kind, body=b""):
    return struct.pack("<HH", kind, len(body)) + body


def label(column, row, text, style=1):
    return record(15, struct.pack("<BBHHB", column, 0, row, style << 3, 0x27) + text + b"\0")


def integer(column, row, value, style=1):
    return record(13, struct.pack("<BBHHh", column, 0, row, style << 3, value))


def number(column, row, value, style=1):
    return record(14, struct.pack("<BBHHd", column, 0, row, style << 3, value))


def formula(column, row, value, style=1):
    """A formula with a number for its result, a text, or with None an error."""
    place = struct.pack("<BBHH", column, 0, row, style << 3)
    if isinstance(value, bytes):
        string = record(51, place + b"'" + value + b"\0")
        return record(16, place + bytes(6) + b"\xf8\x7f" + bytes(4)) + string
    result = bytes(6) + b"\xf0\x7f" if value is None else struct.pack("<d", value)
    return record(16, place + result + bytes(4))


def user_format(index, text):
    """The format code of it is `index` + 112."""
    return record(230, struct.pack("<H", index) + text + b"\0")


def blank(column, row, style=1):
    return record(12, struct.pack("<BBHH", column, 0, row, style << 3))


def style(form=0, font=1, align=0, colours=0, blend=0x30, lines=0, line_colours=0x3333):
    return record(206, struct.pack("<BBBBBBBBHB", form, align, colours, blend, font, lines, 0, 0,
                                   line_colours, 0))


def font(name=b"Arial", size=10, bits=0):
    return record(207, struct.pack("<HBB", size, bits, 0) + name + b"\0")


def sheet(*records, name=None, number=0, columns=3, rows=3):
    """A worksheet of layout and cell records."""
    title = record(204, name + b"\0") if name is not None else b""
    table = record(150, struct.pack("<HHH", columns - 1, 0, rows - 1))
    return record(202, bytes([number, 0])) + title + table + b"".join(records) + record(203)


def notebook(*sheets, definitions=None, version=0x1002):
    if definitions is None:
        definitions = font() + style()
    return record(0, struct.pack("<H", version)) + definitions + b"".join(sheets) + record(1)


def run(*args, stdin=None, env=None, **keywords):
    """Runs the tool; the result has returncode, stdout and stderr, all in bytes."""
    return subprocess.run([*QPS, *args], input=stdin if stdin is not None else b"",
                          stdout=keywords.pop("stdout", subprocess.PIPE), stderr=subprocess.PIPE,
                          env={**os.environ, **(env or {})}, timeout=120, check=False, **keywords)


class ToolTest(unittest.TestCase):
    """A case with a folder of its own."""

    maxDiff = None

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = folder.name

    def path(self, name):
        return os.path.join(self.folder, name)

    def file(self, data, name="book.wb2"):
        with open(self.path(name), "wb") as file:
            file.write(data)
        return self.path(name)
