# SPDX-License-Identifier: MIT
# What each command prints: the real program, on notebooks made for the case.
import csv
import glob
import io
import itertools
import json
import os
import pathlib
import re
import shutil
import subprocess
import unittest

from notebooks import (EXAMPLE, SOURCE, ToolTest, blank, font, formula, integer, label, notebook,
                       number, record, run, sheet, style, user_format)

PLAIN = notebook(sheet(label(0, 0, b"X"), label(1, 0, b"Y"), integer(0, 1, 1), integer(1, 1, -5)))
TWO = notebook(sheet(label(0, 0, b"first"), name=b"Budget"),
               sheet(label(0, 0, b"second"), name=b"2", number=1))
GAPS = notebook(sheet(label(2, 4, b"last"), label(1, 1, b"a"), label(2, 1, b"b")))
ODD = notebook(sheet(label(0, 0, b'a"b'), label(1, 0, b"c,d"), label(2, 0, b"e\nf"),
                     label(0, 1, b"caf\xe9 \x80"), label(1, 1, b"  pad "), label(2, 1, b"")))
FORMULAS = notebook(sheet(*[label(0, i, text) for i, text in enumerate([
    b"=1+1", b"@SUM(A1)", b"+A1", b"-cmd|' /C calc'!A0", b"\tx", b"-1+cmd|'x'!A0", b"+-A1",
    b"-5", b"-1,234.50", b"-1.5E+03", b"-$5", b"-20%", b"--", b"-3 kg", b"a=b",
    b"a;=1;b;-5", b"a\n=1\n\nb", b"a,=1", b"a\t+b"])]))
WIDE_FORMULAS = notebook(sheet(*[label(0, i, text.encode()) for i, text in enumerate(
    ["\uff1d1", "\uff0b1", "\uff0d1", "\uff201", "\uff01"])]))
CONTROLS = notebook(sheet(label(0, 0, b"\x1b[31mred\x07"), label(1, 0, b"tab\there"),
                          label(0, 1, b"\x7f\x9b\xa0"), name=b"\x1b"))
BYTES = notebook(sheet(label(0, 0, bytes(range(0x7E, 0xA1)))))
HIDDEN = notebook(sheet(record(222, b"\x06"), record(220, b"\x10\x01"), blank(3, 9), label(1, 2, b"x"),
                        name=b"Budget", columns=7, rows=10))
EMPTY_SHEET = notebook(sheet(), sheet(label(0, 0, b"x"), number=1))
TEXTS = notebook(sheet(label(0, 0, b"x")),
                 definitions=record(265) + record(38, b"Header\0") + record(37, b"Footer\0") +
                 record(266) + font() + style())

# Number format (a byte, or a text), value, its text as a value, what json calls the value and format.
NAN = float("nan")
VALUES = [
    (0, 2 / 3, "0.6666666666666666", "number", {"name": "general"}),
    (0, 100000, "100000", "number", {"name": "general"}),
    (0x12, 1e16, "1e+16", "number", {"name": "fixed", "decimals": 2}),
    (0x20, -1.5e-7, "-1.5e-07", "number", {"name": "scientific", "decimals": 0}),
    (0x32, 1e15 + 0.5, "1000000000000000.5", "number", {"name": "currency", "decimals": 2}),
    (0x43, 5e-324, "5e-324", "number", {"name": "percent", "decimals": 3}),
    (0x51, -0.0, "-0", "number", {"name": "comma", "decimals": 1}),
    (1, 3, "3", "number", {"name": "bars"}),
    (4, 1.5, "1.5", "number", {"name": "nothing"}),
    (16, NAN, "ERR", "error", {"name": "fixed", "decimals": 0}),
    (5, float("inf"), "ERR", "error", {"name": "dayMonthYear"}),
    (5, 45292.75, "2024-01-01", "date", {"name": "dayMonthYear"}),
    (8, -693959, "0000-01-01", "date", {"name": "numericDate"}),
    (8, -693960, "-693960", "number", {"name": "numericDate"}),
    (9, 2958465.5, "9999-12-31", "date", {"name": "monthDay"}),
    (15, 2958466, "2958466", "number", {"name": "month"}),
    (14, 1e300, "1e+300", "number", {"name": "year"}),
    (96, 60, "1900-02-28", "date", {"name": "shortDate"}),
    (112, 60, "60", "number", {"name": "general"}),
    (10, -0.25, "18:00:00", "time", {"name": "time12Seconds"}),
    (13, 0.999999, "00:00:00", "time", {"name": "time24"}),
    (b"TDD/MM/YYYY HH:MM", 45294.3125, "2024-01-03T07:30:00", "dateTime",
     {"name": "user", "text": "TDD/MM/YYYY HH:MM"}),
    (b"TYYYY HH", 0.999999, "1899-12-31T00:00:00", "dateTime", {"name": "user", "text": "TYYYY HH"}),
    (b"TYYYY HH", 2958465.999999, "2958465.999999", "number", {"name": "user", "text": "TYYYY HH"}),
    (b"N9' \xa3'", 5, "5", "number", {"name": "user", "text": "N9' \u00a3'"}),
    (b"general", 7, "7", "number", {"name": "general", "text": "general"}),
]


def values_notebook():
    texts = [form for form, *_ in VALUES if isinstance(form, bytes)]
    definitions = font() + style()
    for index, text in enumerate(texts):
        definitions += user_format(index + 1, text)
    codes = [113 + texts.index(form) if isinstance(form, bytes) else form for form, *_ in VALUES]
    cells = [number(0, row, value, row + 2) for row, (_, value, *_) in enumerate(VALUES)]
    cells += [label(1, 0, b"7"), label(1, 1, b"caf\xe9", codes.index(4) + 2), formula(1, 2, b"text"),
              formula(1, 3, None), formula(1, 4, 0.1), blank(1, 5)]
    # The column of the numbers is hidden.
    return notebook(sheet(record(222, b"\x01"), *cells),
                    definitions=definitions + b"".join(style(code) for code in codes))


VALUES_BOOK = values_notebook()
SECOND_COLUMN = ["7", "caf\u00e9", "text", "ERR", "0.1"]
VALUES_CSV = "".join(f"{row[2]},{second}\n" for row, second in
                     itertools.zip_longest(VALUES, SECOND_COLUMN, fillvalue=""))
# Hidden are column B, row 2, and row 4 with nothing in it; two more beyond the cells.
PARTLY = notebook(sheet(
    record(222, b"\x02\x01"), record(220, b"\x0a\x01"), *[label(c, r, b"%c%d" % (65 + c, r + 1))
                                                        for c in range(3) for r in (0, 1, 4)]))

# notebook, arguments, standard output
CASES = [
    (PLAIN, ["csv"], "X,Y\n1,-5\n"),
    (PLAIN, ["csv", "--no-sandbox"], "X,Y\n1,-5\n"),
    (TWO, ["csv"], "first\n\nsecond\n"),
    (TWO, ["csv", "--separator", r"\f--\n"], "first\n\f--\nsecond\n"),
    (TWO, ["csv", "--sheet", "Budget"], "first\n"),
    (TWO, ["csv", "--sheet", "1"], "first\n"),
    (TWO, ["csv", "--sheet", "2"], "second\n"),  # by its name
    (TWO, ["csv", "--sheet", "2", "--sheet", "Budget"], "first\n\nsecond\n"),
    (GAPS, ["csv"], ",,\n,a,b\n,,\n,,\n,,last\n"),
    (GAPS, ["csv", "--skip-empty"], ",a,b\n,,last\n"),
    (GAPS, ["csv", "--delimiter", ";"], ";;\n;a;b\n;;\n;;\n;;last\n"),
    (PLAIN, ["csv", "--delimiter", "tab"], "X\tY\n1\t-5\n"),
    (PLAIN, ["csv", "--crlf", "--bom"], "\ufeffX,Y\r\n1,-5\r\n"),
    (ODD, ["csv"], '"a""b","c,d","e\nf"\ncaf\u00e9 \u20ac,  pad ,\n'),
    (ODD, ["csv", "--trim"], '"a""b","c,d","e\nf"\ncaf\u00e9 \u20ac,pad,\n'),
    (BYTES, ["csv", "--encoding", "Latin1"], "".join(map(chr, range(0x7E, 0xA1))) + "\n"),
    (FORMULAS, ["csv", "--csv-safe"],
     "'=1+1\n'@SUM(A1)\n'+A1\n'-cmd|' /C calc'!A0\n'\tx\n'-1+cmd|'x'!A0\n'+-A1\n-5\n\"-1,234.50\"\n"
     "-1.5E+03\n-$5\n-20%\n--\n-3 kg\na=b\n"
     "a;'=1;b;-5\n\"a\n'=1\n\nb\"\n\"a,=1\"\na\t'+b\n"),
    (FORMULAS, ["csv", "--csv-safe", "--delimiter", ";", "--sheet", "1"],
     "'=1+1\n'@SUM(A1)\n'+A1\n'-cmd|' /C calc'!A0\n'\tx\n'-1+cmd|'x'!A0\n'+-A1\n-5\n-1,234.50\n"
     "-1.5E+03\n-$5\n-20%\n--\n-3 kg\na=b\n"
     "\"a;=1;b;-5\"\n\"a\n'=1\n\nb\"\na,'=1\na\t'+b\n"),
    (WIDE_FORMULAS, ["csv", "--csv-safe", "--encoding", "utf-8"],
     "'\uff1d1\n'\uff0b1\n'\uff0d1\n'\uff201\n\uff01\n"),
    (EMPTY_SHEET, ["csv"], "\nx\n"),
    (GAPS, ["text"], "=== A ===\n\n\ta\tb\n\n\n\t\tlast\n"),
    (GAPS, ["text", "--skip-empty"], "=== A ===\n\ta\tb\n\t\tlast\n"),
    (CONTROLS, ["text"], "=== \u241b ===\n\u241b[31mred\u2407\ttab\u2409here\n\u2421\u203a\u00a0\n"),
    (CONTROLS, ["csv"], "\x1b[31mred\x07,tab\there\n\x7f\u203a\u00a0,\n"),
    (TEXTS, ["text"], "notebook text 38: Header\nnotebook text 37: Footer\n=== A ===\nx\n"),
    (HIDDEN, ["sheets"],
     "number\tname\trows\tcolumns\tused\tcells\tblank cells\thidden rows\thidden columns\toffset\n"
     "1\tBudget\t10\t7\tB3\t1\t1\t2\t2\t35\n"),
    (HIDDEN, ["csv"], ",\n,\n,x\n"),
    (VALUES_BOOK, ["csv", "--values"], VALUES_CSV),
    (VALUES_BOOK, ["text", "--values"], "=== A ===\n" + re.sub(",(?=\n)", "", VALUES_CSV).replace(",", "\t")),
    (PARTLY, ["csv", "--hidden", "keep"], "A1,B1,C1\nA2,B2,C2\n,,\n,,\nA5,B5,C5\n"),
    (PARTLY, ["csv", "--hidden", "skip"], "A1,C1\n,\nA5,C5\n"),
    (PARTLY, ["text", "--hidden", "mark"],
     "=== A ===\n\t\thidden\n\tA1\tB1\tC1\nhidden\tA2\tB2\tC2\n\nhidden\n\tA5\tB5\tC5\n"),
    (notebook(sheet(record(222, b"\x01"), label(0, 0, b"x"))), ["csv", "--hidden", "skip"], ""),
    (GAPS, ["csv", "--hidden", "mark"], ",,,\n,,,\n,,a,b\n,,,\n,,,\n,,,last\n"),
    (EMPTY_SHEET, ["sheets", "--sheet", "1"],
     "number\tname\trows\tcolumns\tused\tcells\tblank cells\thidden rows\thidden columns\toffset\n"
     "1\tA\t3\t3\t-\t0\t0\t0\t0\t35\n"),
]


class Commands(ToolTest):
    def output(self, data, *args):
        result = run(*args, self.file(data))
        self.assertEqual((result.returncode, result.stderr), (0, b""))
        return result.stdout.decode()

    def test_output_of_each_command(self):
        for data, args, expected in CASES:
            with self.subTest(args=args, expected=expected):
                self.assertEqual(self.output(data, *args), expected)

    def test_the_source_of_each_record(self):
        book = notebook(sheet(label(0, 1, b"x"), name=b"=1"), sheet(label(0, 0, b"y"), name=b"2", number=1))
        paths = [self.file(book, "a.wb2"), self.file(PLAIN, "b,c.wb2")]
        rows = [[paths[0], "=1", ""], [paths[0], "=1", "x"], [paths[0], "2", "y"],
                [paths[1], "A", "X", "Y"], [paths[1], "A", "1", "-5"]]
        result = run("csv", "--with-source", *paths)
        self.assertEqual(list(csv.reader(io.StringIO(result.stdout.decode()))), rows)
        result = run("csv", "--with-source", "--csv-safe", "--separator", "--\n", *paths)
        self.assertIn(",'=1,x\n--\n", result.stdout.decode())

    def test_json_tells_what_cells_hold(self):
        out = self.output(VALUES_BOOK, "json", "--no-style")
        cells = [json.loads(line) for line in out.splitlines()[2:]]
        for (_, value, text, kind, form), cell in zip(VALUES, cells):
            with self.subTest(value=value, form=form):
                told = kind not in ("number", "error") and text or None if kind == "error" else text
                told = float(text) if kind == "number" else told
                self.assertEqual((cell["type"], cell["value"], cell["format"]), (kind, told, form))
                self.assertEqual((cell["text"], cell["formula"]), (None, False))
                self.assertEqual(cell.get("serial"), value if ":" in text or kind == "date" else None)
                self.assertNotIn("font", cell)
        self.assertEqual(
            [(cell["text"], cell["type"], cell["value"], cell["formula"]) for cell in cells[len(VALUES):]],
            [("7", "text", "7", False), (None, "text", "caf\u00e9", False), ("text", "text", "text", True),
             ("ERR", "error", None, True), ("0.1", "number", 0.1, True), (None, "blank", None, False)])

    def test_a_later_cell_in_the_same_place_counts_and_is_warned_of(self):
        twice = notebook(sheet(label(0, 0, b"old"), label(1, 0, b"b"), label(0, 0, b"new")))
        result = run("csv", self.file(twice))
        self.assertEqual(result.stdout, b"new,b\n")
        self.assertIn(b"has 1 cell more than once", result.stderr)

    def test_a_large_sheet_column_by_column_comes_out_in_rows(self):
        cells = [integer(c, r, (c * 7919 + r) % 30000) for c in range(4) for r in range(1500)]
        cells.insert(2, integer(0, 60000, 9))  # out of order, far away
        rows = list(csv.reader(io.StringIO(self.output(notebook(sheet(*cells)), "csv", "--skip-empty"))))
        self.assertEqual(len(rows), 1501)
        for r in range(1500):
            self.assertEqual(rows[r], [str((c * 7919 + r) % 30000) for c in range(4)])
        self.assertEqual(rows[1500], ["9", "", "", ""])

    def test_long_and_many_texts_survive(self):
        texts = [("x" * n).encode() for n in (0, 1, 5000, 5100)] + [b"\xe9" * 5000]
        data = notebook(sheet(*[label(i, 0, text) for i, text in enumerate(texts)]))
        row = next(csv.reader(io.StringIO(self.output(data, "csv"))))
        self.assertEqual(row, [text.decode("cp1252") for text in texts])

    def test_csv_quotes_at_every_place(self):
        texts = ["x" * length for length in range(1, 34)] + ["y" * 5000, "y" * 5000 + ","]
        for special in (",", '"', "\r", "\n", ',"', "\u20ac", ";\t'"):
            for place in range(20):
                texts.append("a" * place + special + "b" * (place % 3))
        rows = [label(row % 2, row // 2, text.encode("cp1252")) for row, text in enumerate(texts)]
        output = run("csv", self.file(notebook(sheet(*rows)))).stdout.decode()
        quoted = ['"' + text.replace('"', '""') + '"' if set(text) & set(',"\r\n') else text
                  for text in texts] + [""] * (len(texts) % 2)
        self.assertEqual(output, "".join(f"{a},{b}\n" for a, b in zip(quoted[::2], quoted[1::2])))

    def test_undefined_bytes_of_the_built_in_encodings(self):
        for name, python, undefined in (("windows-1252", "cp1252", 5), ("us-ascii", "ascii", 33)):
            result = run("csv", "--encoding", name, self.file(BYTES))
            text = bytes(range(0x7E, 0xA1)).decode(python, "replace")
            self.assertEqual(result.stdout.decode(), text + "\n")
            self.assertIn(f"warning: {undefined} bytes are not defined in {name}", result.stderr.decode())

    def test_encodings_of_the_system(self):
        text = "\u8868\u683c, \u4e88\u7b97"  # the first has a backslash for its second byte
        for encoding, texts, expected, undefined in (
                ("cp850", [b"caf\xe9 \x80"], "caf\u00da \u00c7\n", 0),
                ("CP932", [text.encode("cp932"), b"\x82"], f'"{text}"\n\ufffd\n', 1),
                ("ISO-2022-CN-EXT", [b"\x0e", b"a\x0eb"], "\ufffd\na\ufffd\n", 2)):
            path = self.file(notebook(sheet(*[label(0, i, text) for i, text in enumerate(texts)])))
            result = run("csv", "--encoding", encoding, path)
            if result.returncode == 2:
                continue  # the system's converters are missing
            self.assertEqual((result.returncode, result.stdout.decode()), (0, expected), encoding)
            self.assertEqual(result.stderr.decode().count(f"warning: {undefined} byte"), min(undefined, 1))

    @unittest.skipUnless(shutil.which("iconv"), "there is no list of the system's encodings")
    def test_no_encoding_of_the_system_makes_json_invalid(self):
        """Some of its converters write beyond the last character, and one ends with its input unread."""
        listed = subprocess.run(["iconv", "-l"], capture_output=True, text=True, check=True).stdout
        modules = glob.glob("/usr/lib/*/gconv/gconv-modules") + glob.glob("/usr/lib/*/gconv/*/*.conf")
        aliases = {name for module in modules
                   for name in re.findall(r"^alias\s+(\S+)//", pathlib.Path(module).read_text(), re.MULTILINE)}
        texts = [b"\xed\xa0\x80", b"\xc1\x80", b"\xf4\x90\x80\x80", b"\xf7\x81\xa3\x96P", b"\xf8\xac\x90\xa2\x8c"]
        texts += [bytes([byte]) for byte in range(1, 256)] + [bytes(range(begin, 256)) for begin in range(1, 256, 9)]
        texts += [bytes(pair) for pair in itertools.product(range(0x81, 256, 9), range(0x21, 256, 7))]
        path = self.file(notebook(sheet(*[label(i % 256, i // 256, text) for i, text in enumerate(texts)])))
        known = 0
        for name in {word.rstrip("/") for word in listed.split()} - aliases:
            result = run("json", "--quiet", "--no-style", "--encoding", name, path)
            self.assertIn(result.returncode, (0, 2), (name, result.stderr))
            try:
                lines = result.stdout.decode().splitlines()
            except UnicodeDecodeError as error:
                self.fail(f"{name}: {error}: {error.object[error.start - 40:error.end + 40]}")
            self.assertIn(len(lines), (0, len(texts) + 1), name)
            known += len(lines) > 0
        self.assertGreater(known, 3)

    def test_json_holds_no_byte_that_a_terminal_would_obey(self):
        out = self.output(CONTROLS, "json", "--encoding", "latin1")
        self.assertEqual([c for c in out if ord(c) < 0x20 or 0x7F <= ord(c) < 0xA0], ["\n"] * 4)
        texts = [json.loads(line)["text"] for line in out.splitlines()[1:]]
        self.assertEqual(texts, ["\x1b[31mred\x07", "tab\there", "\x7f\x9b\xa0"])

    def test_corner_cells_cost_what_two_cells_cost(self):
        sheets = [sheet(label(0, 0, b"a"), label(255, 65535, b"z"), number=n) for n in range(50)]
        path = self.file(notebook(*sheets))
        for args in (["text"], ["csv", "--skip-empty"], ["json"], ["sheets"]):
            result = run(args[0], "--max-memory", "20M", *args[1:], path)
            self.assertEqual((result.returncode, result.stderr), (0, b""))

    def test_values_are_within_the_memory_limit(self):
        book = notebook(sheet(*[label(0, row, b"x" * 100, 2) for row in range(20000)]),
                        definitions=font() + style() + style(4))  # which show nothing
        path = self.file(book)
        self.assertEqual(run("csv", "--max-memory", "2M", path).returncode, 0)
        for args in (["csv", "--values"], ["json"]):
            result = run(*args, "--max-memory", "2M", path)
            self.assertEqual((result.returncode, result.stdout[:9]), (6, b""), args)
            self.assertIn(b"memory limit", result.stderr)

    def test_json_objects(self):
        data = notebook(
            sheet(record(216, b"\x01\x00\xf4\x01"), record(214, b"\x04\x00\x2c\x01"),
                  label(0, 0, b'q"\xe9', style=2), blank(1, 4), name=b"S"),
            definitions=font() + font(b"Times", 12, 0x23) + style() +
            style(font=2, align=0x0B, colours=0x45, blend=0x50, lines=0xE4, line_colours=0x4321))
        lines = [json.loads(line) for line in self.output(data, "json").splitlines()]
        self.assertEqual([line["kind"] for line in lines],
                         ["sheet", "columnWidths", "rowHeight", "cell", "cell"])
        for line in lines:
            self.assertEqual((line["sheet"], line["sheetNumber"]), ("S", 1))
        self.assertEqual((lines[1]["firstColumn"], lines[1]["width"], lines[1]["hidden"]), (2, 500, False))
        self.assertEqual((lines[2]["row"], lines[2]["height"]), (5, 300))
        cell = {key: lines[3][key] for key in lines[3] if key not in ("file", "sheet", "sheetNumber")}
        self.assertEqual(cell, {
            "kind": "cell", "address": "A1", "row": 1, "column": 1, "text": 'q"\u00e9',
            "type": "text", "value": 'q"\u00e9', "formula": False, "format": {"name": "general"},
            "alignment": {"horizontal": "right", "vertical": "centre"},
            "fillColour": "#ff0000", "textColour": "#00ff00",
            "borders": {"top": {"line": "thin", "colour": "#808080"},
                        "right": {"line": "double", "colour": "#000000"},
                        "bottom": {"line": "thick", "colour": "#ff0000"}},
            "font": {"name": "Times", "size": 12, "bold": True, "italic": True, "underline": False,
                     "strikeOut": True}})
        self.assertEqual((lines[4]["address"], lines[4]["text"]), ("B5", None))

    def test_json_follows_its_schema(self):
        try:
            import jsonschema
        except ImportError:
            self.skipTest("python3-jsonschema is not installed")
        with open(os.path.join(SOURCE, "docs/json-schema/qps-items.schema.json"), "rb") as file:
            schema = json.load(file)
        for part in schema["oneOf"]:  # in the test, a member that the schema does not know is an error
            part["properties"].update({name: {} for name in schema["properties"]
                                       if name not in part["properties"]})
            part["additionalProperties"] = False
        validator = jsonschema.Draft202012Validator(schema)
        kinds = set()
        for path in (EXAMPLE, self.file(TEXTS), self.file(ODD, "odd"), self.file(HIDDEN, "hidden"),
                     self.file(VALUES_BOOK, "values")):
            for line in (run("json", path).stdout + run("json", "--no-style", path).stdout).splitlines():
                validator.validate(json.loads(line))
                kinds.add(json.loads(line)["kind"])
        self.assertEqual(kinds, {"sheet", "columnWidths", "rowHeight", "notebookText", "cell"})

    def test_names_of_files_in_any_script(self):
        name = "Gr\u00f6\u00dfe \u0416 \u5e33.wb2"
        result = run("json", self.file(TEXTS, name), env={"LC_ALL": "C.UTF-8"})
        self.assertEqual((result.returncode, result.stderr), (0, b""))
        for line in result.stdout.splitlines():
            self.assertTrue(json.loads(line)["file"].endswith(name))

    def test_items_show_the_raw_fields(self):
        out = self.output(notebook(sheet(label(0, 0, b"x")), definitions=font() + style(lines=0xE4, line_colours=0x4321)),
                          "items")
        self.assertIn(" bordered=1 border=0 colour=0xC0C0C0 border=5 colour=0x808080 border=8 colour=0x0 "
                      "border=6 colour=0xFF ", out)
        out = self.output(TEXTS, "items")
        self.assertIn("10 sheetInfo marker=1 rowCount=3 columnCount=3", out)
        self.assertIn('13 record38Text text="Header"\n14 record37Text text="Footer"\n15 cell A1 text="x"', out)

    def test_info_of_the_example(self):
        result = run("info", EXAMPLE)
        facts = dict(line.split(": ", 1) for line in result.stdout.decode().splitlines())
        self.assertEqual(facts["format version"], "4098 (0x1002), of version 6 for Windows")
        self.assertEqual(facts["MIME type"], "application/x-quattropro")
        for path, name in ((EXAMPLE, "835"), (EXAMPLE[:-1] + "3", "836"),
                           (self.file(notebook(sheet(), version=0x1001)), "834")):
            self.assertIn(f"\nPRONOM: fmt/{name}\n", run("info", path).stdout.decode())
        self.assertTrue(facts["worksheets"].startswith("2 (Budget, "))
        self.assertIn("Times New Roman 16 bold", facts["fonts in use"])


if __name__ == "__main__":
    unittest.main()
