# SPDX-License-Identifier: MIT
# Workbooks of qps xlsx, read back by programs that are not ours.
import json
import os
import random
import re
import resource
import shutil
import signal
import subprocess
import unittest
import zipfile
from xml.etree import ElementTree

from notebooks import (EXAMPLE, QPS, SOURCE, ToolTest, blank, font, formula, integer, label, notebook,
                       number, record, run, sheet, style, user_format)

HAS_XLSX = b"\n  xlsx " in run("--help").stdout
RENDER = os.path.join(SOURCE, "tests/tool/numfmt/render.mjs")
MAIN = "{http://schemas.openxmlformats.org/spreadsheetml/2006/main}"
WIDE = record(216, b"\x00\x00\xff\x7f")  # of column A: General is not cut


def styled(forms):
    """Definitions with a style for each form (a byte, or a text): the first has number 2."""
    texts = sorted({form for form in forms if isinstance(form, bytes)})
    codes = [113 + texts.index(form) if isinstance(form, bytes) else form for form in forms]
    return (font() + style() + b"".join(user_format(i + 1, text) for i, text in enumerate(texts)) +
            b"".join(style(code) for code in codes))


def raw_cells(path):
    """Of the first worksheet: by address the number format, and a float or a text."""
    with zipfile.ZipFile(path) as archive:
        styles = ElementTree.fromstring(archive.read("xl/styles.xml"))
        cells = ElementTree.fromstring(archive.read("xl/worksheets/sheet1.xml")).iter(MAIN + "c")
        formats = {f.get("numFmtId"): f.get("formatCode") for f in styles.iter(MAIN + "numFmt")}
        looks = [formats.get(xf.get("numFmtId"), "General") for xf in styles.find(MAIN + "cellXfs")]
        result = {}
        for cell in cells:
            value = cell.find(MAIN + "v")
            text = unescaped("".join(t.text or "" for t in cell.iter(MAIN + "t")))
            result[cell.get("r")] = (looks[int(cell.get("s", 0))],
                                     text if value is None else float(value.text))
        return result


def unescaped(text):
    """Spreadsheet programs read _x0041_ as a character by its number."""
    return text and re.sub("_x([0-9A-Fa-f]{4})_", lambda match: chr(int(match[1], 16)), text)


def contents(path):
    with open(path, "rb") as file:
        return file.read()


def rendered(pairs):
    lines = "".join(json.dumps(pair) + "\n" for pair in pairs)
    out = subprocess.run(["node", RENDER], input=lines.encode(), stdout=subprocess.PIPE, check=True,
                         timeout=120).stdout
    return [json.loads(line) for line in out.splitlines()]


def a_number():
    return random.choice([lambda: random.uniform(-2, 2), lambda: random.uniform(-1e4, 1e4),
                          lambda: float(random.randrange(-10**6, 10**6)),
                          lambda: random.uniform(-1e6, 1e6), lambda: 0.0])()


def a_date():
    return random.choice([lambda: float(random.randrange(61, 400000)),
                          lambda: random.randrange(61 * 86400, 60000 * 86400) / 86400])()


# Number formats with an equivalent, those that have one for some numbers, and those without.
NUMBERS = [0x10, 0x12, 0x17, 0x20, 0x22, 0x26, 0x30, 0x32, 0x40, 0x43, 0x50, 0x52, 4,
           b"N0.00", b"N9,999.00", b"N9,999", b"N0,000", b"N9", b"N9.99", b"N00000", b"N0.00%", b"N0.00E+00",
           b"N0E+00", b"N'$'0,000.00", b"N$0.00", b"N0.00' kg'", b"N9,999.00;N'none';N'('0.0')'",
           b"N'Positive';N'Zero';N'Negative'", b"N0.0;N'minus '0.0", b"N0;", b"N.00", b"N000'-'0000",
           b"N0.0%;N'z';N0.00%", b"N9,999,999.9", b"N0' '9", b"N99", b"N0.0 kg", b"N'x'", b"N0;N0;N0;N0",
           b"N0.00E+00;N0%", b'N0\'"\xe9\\"\'']
SOME_NUMBERS = [b"N'$'9,999.00", b"N'a'9,999,999"]
DATES = [5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 96, b"TMon", b"TYYYY", b"TWeekday", b"TWday",
         b"TMM' 'DD' 'YY' 'HH':'MM':'SS' 'AMPM", b"TMonth' 'D', 'YYYY'", b"TDD-Mon-YY",
         b"TD' 'Month' 'YYYY", b"THH:MM:SS", b"THH:MM' 'AMPM", b"TH:M", b"TMM/DD/YYYY", b"TAMPM HH",
         b"THH:MM:SS MM", b"TYY YYYY", b"TH' h 'M' min 'S' s'", b"T'at 'HH", b"T'a''b''D"]
NO_NUMBERS = [1, b"N9kg", b"N99,99", b"N9999,999", b"N0.0.0", b"N0,", b"N", b"N0'\x01'", b"N0." + b"0" * 31, b"N0'" + b"x" * 125 + b"'"]
NO_DATES = [b"TWEEKDAY", b"Twday mon", b"TMM SS", b"T'AMPM'HH", b"T", b"T'x'", b"THH AMPM MM"]
# Format, numbers that are outside of what the workbook's calendar or form shows.
OUTSIDE = [(5, 60), (5, -1), (5, 474817), (8, 474900.5), (14, 2958466), (12, -0.25), (13, -1.0),
           (b"TYYYY HH", 45292.999999), (b"TMon", 0.0), (b"N'$'9,999.00", 999.0), (0x12, 1e300)]
FAMILIES = {"general": 0, "fixed": 0x10, "percent": 0x40}


class WorkbookTest(ToolTest):
    def convert(self, data, *args, lost=None):
        """The workbook of a notebook; `lost` is a part of the warning, or there is none."""
        result = run("xlsx", self.file(data), "-o", self.path("book.xlsx"), *args)
        self.assertEqual((result.returncode, result.stdout), (0, b""))
        self.assertEqual(result.stderr.count(b"\n"), 0 if lost is None else 1, result.stderr)
        self.assertIn((lost or "").encode(), result.stderr)
        return self.path("book.xlsx")

    def shown(self, data):
        """By address what the notebook shows."""
        lines = map(json.loads, run("json", self.file(data)).stdout.splitlines())
        return {line["address"]: line["text"] or "" for line in lines if line["kind"] == "cell"}

    def load(self, path):
        try:
            import openpyxl
        except ImportError:
            self.skipTest("python3-openpyxl is not installed")
        return openpyxl.load_workbook(path)

    def compare(self, rows, lost=None):
        """Rows of (form, number): the cells as numbers or texts, shown and rendered."""
        forms = list(dict.fromkeys(form for form, _ in rows))
        data = notebook(sheet(WIDE, *[number(0, i, value, forms.index(form) + 2)
                                      for i, (form, value) in enumerate(rows)]), definitions=styled(forms))
        cells = raw_cells(self.convert(data, lost=lost))
        self.assertEqual(len(cells), len(rows))
        shown = self.shown(data)
        names = [f"A{i + 1}" for i in range(len(rows))]
        numbers = [name for name in names if isinstance(cells[name][1], float)]
        texts = dict(zip(numbers, rendered([cells[name] for name in numbers])))
        return [(cells[name][1], shown[name], texts.get(name)) for name in names]


@unittest.skipUnless(HAS_XLSX, "built without the command xlsx")
@unittest.skipUnless(os.path.isdir(os.path.join(os.path.dirname(RENDER), "node_modules")),
                     "npm ci was not run in tests/tool/numfmt")
class Formats(WorkbookTest):
    def test_number_formats_show_what_the_notebook_shows(self):
        random.seed(16)
        rows = [(form, a_number()) for form in NUMBERS for _ in range(40)]
        rows += [(form, value) for form in SOME_NUMBERS for value in (1e6, -1234567.5, 1e9 + 0.25)]
        rows += [(form, a_date()) for form in DATES for _ in range(40)]
        rows += [(12, 0.999999), (11, 0.25), (b"THH:MM", 0.0), (5, 61.0)]
        for (form, value), (held, shown, text) in zip(rows, self.compare(rows)):
            with self.subTest(form=form, value=value):
                self.assertIsInstance(held, float)
                self.assertLessEqual(abs(held - value), abs(value) * 1e-15)
                if text.strip() != shown.strip():  # a negative zero
                    self.assertEqual((text.strip(), re.search("[1-9]", shown)),
                                     (shown.replace("-", "", 1).strip(), None))

    def test_the_differences_are_those_of_the_documentation(self):
        with open(os.path.join(SOURCE, "docs/xlsx.md"), encoding="utf-8") as file:
            table = re.findall(r"^\| `(.*?)` \| (-?[0-9.]+) \| `(.*?)` \| `(.*?)` \|", file.read(), re.M)
        self.assertGreater(len(table), 5)
        rows = []
        for form, value, *_ in table:
            family, _, decimals = form.partition(" ")
            code = FAMILIES[family] + int(decimals or 0) if family in FAMILIES else form.encode()
            rows.append((code, float(value)))
        for (form, value, notebooks, workbooks), (_, shown, text) in zip(table, self.compare(rows)):
            self.assertEqual((shown.strip(), text.strip()), (notebooks, workbooks), (form, value))

    def test_what_has_no_equivalent_is_its_display_text(self):
        rows = [(form, 3.0) for form in NO_NUMBERS] + [(form, 45000.25) for form in NO_DATES] + OUTSIDE
        rows[-1] = (1, 2.0)
        # These show nothing, and keep their numbers.
        silent = [i for i, (form, _) in enumerate(rows) if form in (b"N", b"T")]
        count = len(rows) - len(silent)
        for i, (held, shown, text) in enumerate(self.compare(rows, lost=f"{count} numbers without an equivalent")):
            self.assertEqual((held, text), (rows[i][1], "") if i in silent else (shown, None), rows[i])
        strict = run("xlsx", "--strict", self.path("book.wb2"), "-o", self.path("strict.xlsx"))
        self.assertEqual((strict.returncode, os.path.exists(self.path("strict.xlsx"))), (1, False))

    def test_at_most_200_formats_of_its_own(self):
        forms = [family + decimals for family in (0x10, 0x20, 0x30, 0x40, 0x50) for decimals in range(16)]
        forms += [b"N0'%d'" % i for i in range(140)]
        data = notebook(sheet(number(1, 0, 1.0, 1), *[number(0, i, 1.0, i + 2) for i in range(220)]),
                        definitions=styled(forms))
        cells = raw_cells(self.convert(data, lost="20 numbers without an equivalent"))
        self.assertEqual(len({form for form, _ in cells.values()} - {"General"}), 200)
        self.assertEqual([cells[f"A{i}"][1] for i in (1, 200, 201, 220)], [1.0, 1.0, "1120", "1139"])


@unittest.skipUnless(HAS_XLSX, "built without the command xlsx")
class Xlsx(WorkbookTest):
    def test_texts_come_back(self):
        texts = [b"=1+1", b"http://example.org", b"_x0041_ _x00F9_x0041_x_", b"a\rb\nc\td", b"\x01\x1f\x7f", b"  pad ",
                 b"<&>\"'", b"x" * 5000, b"7", b"bad \xff utf-8", "\ufffe\uffff\U0001f600\x9b".encode(), b""]
        data = notebook(sheet(*[label(0, i, text) for i, text in enumerate(texts)], formula(1, 0, b"result"),
                              formula(1, 1, None), formula(1, 2, 0.5), number(1, 3, float("nan")),
                              number(1, 4, float("-inf")), integer(1, 5, -7), number(1, 6, 0.1 + 0.2), blank(1, 7)))
        path = self.convert(data, "--encoding", "utf-8", "--quiet")
        got = [row for row in self.load(path).active.iter_rows(values_only=True)]
        expected = [re.sub("[\ufffe\uffff]", "\ufffd", text.decode("utf-8", "replace")) for text in texts]
        self.assertEqual([unescaped(row[0]) or "" for row in got], expected)
        self.assertEqual([row[1] for row in got[:8]],
                         ["result", "ERR", 0.5, "ERR", "ERR", -7, 0.3, None])
        with zipfile.ZipFile(path) as archive:
            self.assertNotIn(b"<f>", archive.read("xl/worksheets/sheet1.xml"))
            self.assertFalse([name for name in archive.namelist() if "rels" in name and "sheet" in name])

    def test_looks(self):
        definitions = font() + font(b"Times", 12, 0x27) + font(b"<\x01&\"\xe9", 9, 0x20) + style()
        colours = range(16)
        for i in colours:
            definitions += style(font=1 + i % 3, align=i % 8 | i // 4 << 3, colours=i << 4 | i, blend=i << 4,
                                 lines=0xE4, line_colours=i * 0x1111)
        data = notebook(sheet(*[label(i, i % 3, b"x", i + 2) for i in colours], columns=16), definitions=definitions)
        book = self.load(self.convert(data)).active
        cells = [json.loads(line) for line in run("json", self.file(data)).stdout.splitlines()]
        cells = [cell for cell in cells if cell["kind"] == "cell"]
        self.assertEqual(len({cell["textColour"] for cell in cells}), 16)
        colour = lambda value, unset: "#" + value.rgb[2:].lower() if value and value.type == "rgb" else unset
        for cell in cells:
            with self.subTest(cell=cell):
                got = book[cell["address"]]
                self.assertEqual(colour(got.font.color, "#000000"), cell["textColour"])
                fill = colour(got.fill.fgColor, None) if got.fill.fill_type else "#ffffff"
                self.assertEqual(fill, cell["fillColour"] or "#ffffff")
                named = cell["font"]
                self.assertEqual((got.font.name, got.font.sz), (named["name"].replace("\x01", "\ufffd"), named["size"]))
                self.assertEqual((got.font.b, got.font.i, got.font.u == "single", got.font.strike or False),
                                 tuple(named[key] for key in ("bold", "italic", "underline", "strikeOut")))
                for side in ("left", "top", "right", "bottom"):
                    line = getattr(got.border, side)
                    wanted = cell["borders"].get(side)
                    self.assertEqual(line.style, wanted and wanted["line"])
                    if wanted:
                        self.assertEqual(colour(line.color, None), wanted["colour"])
                names = {"centre": "center", "centreAcross": "centerContinuous", "default": None, "bottom": None}
                for ours, theirs in (("horizontal", got.alignment.horizontal), ("vertical", got.alignment.vertical)):
                    wanted = cell["alignment"][ours]
                    self.assertEqual(theirs or "general", names.get(wanted, wanted) or "general")

    def test_rows_and_columns(self):
        data = notebook(sheet(
            record(216, b"\x00\x00\xdc\x05"), record(216, b"\x02\x00\xff\x7f"), record(222, b"\x02"),
            record(210, b"\xf0\x00"), record(214, b"\x00\x00\x90\x01"), record(214, b"\x06\x00\xff\x7f"), record(220, b"\x14\x01"),
            label(0, 4, b"x"), number(1, 4, 2.5), label(3, 0, b"z"), columns=4, rows=8))
        sheet1 = self.load(self.convert(data)).active
        columns, rows = sheet1.column_dimensions, sheet1.row_dimensions
        self.assertEqual([round(columns[c].width * 7) for c in "AC"], [100, 1790])  # pixels
        self.assertEqual([columns[c].hidden for c in "ABC"], [False, True, False])
        self.assertEqual([rows[r].height for r in (1, 7)], [20.0, 409.5])
        self.assertEqual(sheet1.sheet_format.defaultRowHeight, 12.0)
        self.assertEqual([r for r in range(1, 12) if rows[r].hidden], [3, 5, 9])
        self.assertEqual((sheet1["A5"].value, sheet1["B5"].value, sheet1["D1"].value), ("x", 2.5, "z"))

    def test_worksheet_names(self):
        names = [b"[]:*?/\\b", b"Same", b"SAME", b"'q'", b"History", b"x" * 40, b"x" * 60, b"\x07<", b"\xe9" * 31]
        data = notebook(*[sheet(label(0, 0, b"x"), name=name, number=i) for i, name in enumerate(names)])
        self.assertEqual(self.load(self.convert(data)).sheetnames, [
            "_______b", "Same", "SAME~2", "_q_", "History~2", "x" * 31, "x" * 29 + "~2", "\ufffd<", "\xe9" * 31])

    def test_the_example(self):
        path = self.convert(contents(EXAMPLE))
        budget = self.load(path)["Budget"]
        self.assertEqual(round(sum(budget[f"D{row}"].value for row in range(4, 9)), 2), 2308.87)
        self.assertEqual((budget["F4"].value, budget.column_dimensions["F"].hidden), (0.5414, True))
        if shutil.which("xlsx2csv"):
            out = subprocess.run(["xlsx2csv", "-s", "2", path], stdout=subprocess.PIPE, check=True).stdout
            self.assertIn("Departure,Distance,Litres", out.decode())

    def test_the_same_bytes_always(self):
        self.convert(contents(EXAMPLE))
        os.mkdir(self.path("out"))
        result = run("xlsx", EXAMPLE, EXAMPLE[:-1] + "3", "--output-dir", self.path("out"),
                     "--base", os.path.dirname(EXAMPLE),
                     env={"TZ": "Asia/Tokyo", "LC_ALL": "C"})
        self.assertEqual((result.returncode, result.stderr), (0, b""))
        whole = contents(self.path("book.xlsx"))
        for name in ("budget.wb2.xlsx", "budget.wb3.xlsx"):
            self.assertEqual(contents(self.path("out/" + name)), whole)

    @unittest.skipIf(len(QPS) > 1, "limits belong to this machine's programs")
    def test_a_full_disk_leaves_nothing(self):
        cells = [number(c, r, c + r / 7) if c else label(c, r, b"row %d" % r) for r in range(300) for c in range(4)]
        data = notebook(sheet(*cells))
        whole = contents(self.convert(data))
        outcomes = set()
        for size in [0, 1, 100, len(whole) - 1, len(whole), 10**6] + list(range(3000, 50000, 4999)):
            os.makedirs(self.path("out"), exist_ok=True)

            def limit(most=size):
                signal.signal(signal.SIGXFSZ, signal.SIG_IGN)
                resource.setrlimit(resource.RLIMIT_FSIZE, (most, most))
            result = run("xlsx", self.path("book.wb2"), "-o", self.path("out/o.xlsx"), preexec_fn=limit)
            outcomes.add(result.returncode)
            if result.returncode == 0:
                self.assertEqual(contents(self.path("out/o.xlsx")), whole)
                os.remove(self.path("out/o.xlsx"))
            else:
                self.assertEqual((result.returncode, result.stderr.count(b"\n")), (1, 1), size)
                self.assertIn(b"cannot write o.xlsx: File too large", result.stderr)
            self.assertEqual(os.listdir(self.path("out")), [], size)
        self.assertEqual(outcomes, {0, 1})

    def test_what_is_refused(self):
        path = self.file(notebook(sheet(label(0, 0, b"x"))))
        for args in ([], ["-o", "a.xlsx", "--output-dir", "b"], ["-o", "a.xlsx", path], ["-o", ""], ["-o", "a/"]):
            result = run("xlsx", path, *args, cwd=self.folder)
            self.assertEqual((result.returncode, result.stderr.count(b"\n")), (2, 1), args)
        self.assertEqual(os.listdir(self.folder), ["book.wb2"])
        many = self.file(notebook(sheet(*[integer(0, row, row) for row in range(3000)])))
        for args in (["--max-output", "50K"], ["--max-memory", "40K"]):
            result = run("xlsx", many, "-o", self.path("o.xlsx"), *args)
            self.assertEqual((result.returncode, result.stderr.count(b"\n")), (6, 1), args)
        self.assertEqual(os.listdir(self.folder), ["book.wb2"])


if __name__ == "__main__":
    unittest.main()
