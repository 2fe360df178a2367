#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""redact.py NOTEBOOK OUTPUT [--keep [SHEET!]CELL[:CELL]]...

Copies a notebook for a bug report: places, styles, fonts, widths, formats and the length of every
text stay, and nothing that a cell holds does, but for the cells that --keep names (B5, 2!B5:D9; SHEET is
the worksheet's number as `qps sheets` prints it). Letters of the other cells, of the names of worksheets
and of headers become x, digits and numbers 0, and what the reader does not look at becomes zeros. The
names of fonts and styles and the texts of number formats stay: look at them before you send the file.

The copy is a plain notebook, also of one in a compound document (which takes the module olefile).
Needs Python 3.9 and nothing else.
"""
import argparse
import re
import struct
import sys

# Records, and how many bytes of their bodies are what the reader looks at and no contents.
FIELDS = {0: 2, 1: 0, 6: 8, 76: 2, 202: 1, 203: 0, 206: 11, 210: 2, 212: 2, 214: 4, 216: 4,
          224: 64, 231: 64, 257: 1, 258: 1, 261: 6, 265: 0, 266: 0, 310: 0}
WHOLE = {150, 220, 222}  # bodies that are all fields, however long
NAMED = {207: 4, 208: 4, 230: 2}  # of fonts, styles and formats: where their name begins
TEXTS = {37: 0, 38: 0, 204: 0, 15: 7, 51: 7}  # to be hidden: where the text begins
CELLS = {12: 6, 13: 6, 14: 6, 15: 7, 16: 6, 51: 7}  # where what a cell holds begins
FORMULA = 16
SHEET_START = 202
END = 1
RESULT_BYTES = 8
STREAMS = ["PerfectOffice_MAIN", "NOVELL_MAIN"]


def record_stream(path):
    with open(path, "rb") as file:
        data = file.read()
    if not data.startswith(b"\xd0\xcf\x11\xe0"):
        return data
    try:
        import olefile
    except ImportError:
        sys.exit("redact.py: a notebook in a compound document takes the module olefile "
                 "(apt-get install python3-olefile, or pip install olefile)")
    with olefile.OleFileIO(data) as document:
        for name in STREAMS:
            if document.exists(name):
                return document.openstream(name).read()
    sys.exit(f"redact.py: {path}: no notebook in this compound document")


def records(data):
    """The type and the body of each; a last one that is cut short comes as it is."""
    offset = 0
    while offset + 4 <= len(data):
        kind, size = struct.unpack_from("<HH", data, offset)
        yield kind, size, data[offset + 4:offset + 4 + size]
        offset += 4 + size
        if kind == END:
            return


def hide_text(text):
    return re.sub(rb"[a-z\x80-\xff]", b"x", re.sub(rb"[A-Z]", b"X", re.sub(rb"[0-9]", b"0", text)))


def cut(body, keep):
    """The first bytes, then zeros."""
    return body[:keep] + bytes(len(body) - len(body[:keep]))


def without_tail(body, begin):
    """Zeros behind the zero byte that ends a text."""
    end = body.find(b"\0", begin)
    return body if end < 0 else cut(body, end)


def hide_result(body):
    """A formula's result keeps its kind (text, error, 32-bit integer, number)."""
    special = body[12:14] in (b"\xf8\x7f", b"\xf0\x7f", b"\xf0\xff")
    result = bytes(4) + body[10:14] if special else bytes(RESULT_BYTES)
    return cut(body[:6] + result[:max(0, len(body) - 6)] + body[14:], 6 + RESULT_BYTES)


def hide(kind, body, kept):
    if kind == FORMULA:
        return cut(body, 6 + RESULT_BYTES) if kept else hide_result(body)
    if kind in TEXTS:
        body = without_tail(body, TEXTS[kind])
        return body if kept else body[:TEXTS[kind]] + hide_text(body[TEXTS[kind]:])
    if kind in CELLS:
        return body if kept else cut(body, CELLS[kind])
    if kind in NAMED:
        return without_tail(body, NAMED[kind])
    return body if kind in WHOLE else cut(body, FIELDS.get(kind, 0))


def column_number(letters):
    number = 0
    for letter in letters.upper():
        number = 26 * number + ord(letter) - ord("A") + 1
    return number


def area(text):
    """A test for (worksheet, column, row), all from 1."""
    found = re.fullmatch(r"(?:(\d+)!)?([A-Za-z]{1,2})(\d+)(?::([A-Za-z]{1,2})(\d+))?", text)
    if not found:
        raise argparse.ArgumentTypeError(f"'{text}' is no cell such as B5, 2!B5 or B5:D9")
    sheet, left, top, right, bottom = found.groups()
    columns = range(column_number(left), column_number(right or left) + 1)
    rows = range(int(top), int(bottom or top) + 1)
    return lambda s, c, r: (sheet is None or s == int(sheet)) and c in columns and r in rows


def redact(data, areas):
    sheet = hidden = kept = 0
    out = b""
    names = []
    for kind, size, body in records(data):
        sheet += kind == SHEET_START
        keep = False
        if kind in CELLS and len(body) >= 4:
            place = (sheet, body[0] + 1, struct.unpack_from("<H", body, 2)[0] + 1)
            keep = any(inside(*place) for inside in areas)
            kept += keep
            hidden += not keep
        if kind in NAMED:
            names.append(body[NAMED[kind]:].split(b"\0")[0].decode("cp1252", "replace"))
        out += struct.pack("<HH", kind, size) + hide(kind, body, keep)
    return out, hidden, kept, names


def main():
    parser = argparse.ArgumentParser(description=__doc__, usage=__doc__.split("\n", 1)[0],
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("notebook")
    parser.add_argument("output")
    parser.add_argument("--keep", type=area, action="append", default=[], metavar="CELL")
    options = parser.parse_args()
    out, hidden, kept, names = redact(record_stream(options.notebook), options.keep)
    with open(options.output, "xb") as file:
        file.write(out)
    print(f"{hidden} cell records hidden, {kept} kept")
    print("not hidden, names of fonts, styles and formats:", ", ".join(filter(None, names)))


if __name__ == "__main__":
    main()
