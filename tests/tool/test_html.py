# SPDX-License-Identifier: MIT
# The HTML page: its structure as an HTML parser sees it, and how it looks as a browser computes it.
import json
import re
import shutil
import struct
import subprocess
import unittest

from notebooks import (EXAMPLE, ToolTest, blank, font, formula, integer, label, notebook, number, record, run, sheet,
                       style, user_format)

try:
    import html5lib
except ImportError:
    html5lib = None

BROWSER = shutil.which("chromium") or shutil.which("chromium-browser") or shutil.which("google-chrome")
FLAGS = ("--headless --no-sandbox --disable-gpu --disable-quic --no-first-run --disable-sync "
         "--disable-background-networking --disable-component-update --virtual-time-budget=5000").split()

EVIL = b'</style></title><script>alert(1)</script><img src=x onerror="a">&amp;'
HOSTILE = notebook(sheet(label(0, 0, EVIL), label(1, 0, b"a\x00"), label(2, 0, b"\x01\x7f\r\nb\tc"),
                         name=b'"><script>' + EVIL[:40]),
                   definitions=font(b'x"}</style><script>\n\\') + style() + record(265) +
                   record(38, b"<b>\0") + record(266))

# Styles 2 to 8: each horizontal and vertical alignment, each font bit, each line.
LOOKS = notebook(
    sheet(record(216, struct.pack("<HH", 0, 2000)), record(214, struct.pack("<HH", 1, 600)),
          label(0, 0, b"plain"), label(1, 0, b"bits", 2), label(2, 0, b"lines", 3),
          label(0, 1, b"top", 4), label(1, 1, b"across", 5), blank(2, 1, 5), blank(3, 1, 5),
          label(0, 2, b"a text that runs over its neighbours", 1), label(3, 2, b"next"), columns=4),
    definitions=font() + font(b"Courier", 12, 0x26) + style() + style(font=2) +
    style(lines=0xE4, line_colours=0x4321) + style(align=0x13) + style(align=0x04))

SCRIPT = """<script>
const result = [];
for (const [sheet, row, column] of %s) {
  const table = document.querySelectorAll("table")[sheet];
  const letters = [...table.querySelectorAll("thead tr > *")].map(th => th.dataset.n);
  const line = table.querySelector(`tbody th[data-n="${row}"]`).parentNode;
  let place = letters.indexOf(column), at = 0;
  while ((place -= line.children[at].colSpan) >= 0) at++;
  const cell = line.children[at], css = getComputedStyle(cell);
  const box = cell.getBoundingClientRect(), range = document.createRange();
  let inner = cell;
  while (inner.firstElementChild) inner = inner.firstElementChild;
  range.selectNodeContents(inner);
  const text = range.getBoundingClientRect();
  const found = {text: cell.textContent, marks: text.top >= (cell.firstElementChild || inner).getBoundingClientRect().bottom - 1,
                 width: box.width, height: line.getBoundingClientRect().height,
                 left: box.left, textLeft: text.left, textRight: text.right,
                 clip: (cell.firstElementChild || cell).getBoundingClientRect().right};
  for (const name of ["color", "background-color", "font-family", "font-size", "font-weight",
                      "font-style", "text-decoration-line", "text-align", "vertical-align",
                      "border-left", "border-top", "border-right", "border-bottom"])
    found[name] = css.getPropertyValue(name);
  result.push(found);
}
document.body.textContent = JSON.stringify(result);
</script>"""


class Page(ToolTest):
    def page(self, source):
        result = run("html", source)
        self.assertEqual((result.returncode, result.stderr), (0, b""))
        return result.stdout


class Html(Page):
    def parse(self, source):
        parser = html5lib.HTMLParser(namespaceHTMLElements=False)
        root = parser.parse(self.page(source))
        self.assertEqual(parser.errors, [])
        return root

    @unittest.skipUnless(html5lib, "python3-html5lib is not installed")
    def test_structure_of_the_example(self):
        root = self.parse(EXAMPLE)
        metas = {m.get("http-equiv") or m.get("name"): m.get("content") for m in root.iter("meta")}
        self.assertIn("default-src 'none'", metas["Content-Security-Policy"])
        self.assertEqual(metas["description"], "Notebook with the worksheets: Budget, Car")
        self.assertEqual(root.find(".//meta").get("charset"), "utf-8")
        self.assertEqual(root.find(".//title").text, "budget.wb2")
        self.assertEqual(["".join(p.itertext()) for p in root.iter("p")],
                         ["Household budget", "Page 1", " show hidden: column F (where numbers have no text), row 9"])
        self.assertEqual([(a.text, a.get("href")) for a in root.iter("a")],
                         [("Budget", "#sheet1"), ("Car", "#sheet2")])
        self.assertEqual([h.text for h in root.iter("h2")], ["Budget", "Car"])
        widths = [re.findall(r"--(?:w|all):([\d.]+)pt", section.get("style")) for section in root.iter("section")]
        self.assertLess(float(widths[0][0]), float(widths[0][1]))  # without and with column F
        self.assertEqual(widths[1][0], widths[1][1])
        table = root.find(".//table")
        letters = [(th.get("data-n"), th.get("class")) for th in table.find("thead").iter("th")]
        self.assertEqual(letters, [(c, "x" if c == "F" else None) for c in "ABCDEFG"])
        rows = list(table.find("tbody"))
        self.assertEqual([(row[0].get("data-n"), row.get("class")) for row in rows],
                         [(str(n), "x" if n == 9 else None) for n in range(1, 11)])
        for row in rows:
            self.assertEqual(sum(int(cell.get("colspan", 1)) for cell in row), 8)
        self.assertEqual(["".join(cell.itertext()) for cell in rows[4]],
                         ["", "Groceries", "05-Jan-24", "$420.00 ", "$467.35 ", "(47.35) ", "", "over budget"])

    @unittest.skipUnless(html5lib, "python3-html5lib is not installed")
    def test_nothing_in_a_notebook_becomes_markup(self):
        root = self.parse(self.file(HOSTILE, "<i>&.wb2"))
        tags = {element.tag for element in root.iter()}
        self.assertLessEqual(tags, {"html", "head", "meta", "title", "style", "body", "header", "h1", "p",
                                    "section", "h2", "table", "colgroup", "col", "thead", "tbody", "tr",
                                    "th", "td", "main", "div"})
        names = {name for element in root.iter() for name in element.attrib}
        self.assertLessEqual(names, {"charset", "http-equiv", "content", "name", "id", "style", "scope",
                                     "data-n", "class", "lang", "aria-labelledby"})
        cells = ["".join(td.itertext()) for td in root.find(".//tbody").iter("td")]
        self.assertEqual(cells, [EVIL.decode(), "a", "\u2401\u2421\nb\tc"])
        self.assertEqual((root.find(".//h1").text, root.find(".//p").text), ("<i>&.wb2", "<b>"))
        self.assertNotIn("<", root.find(".//style").text)
        self.assertIn('"x\\22 }\\3c /style\\3e \\3c script\\3e \u240a\\5c "', root.find(".//style").text)
        upper = run("html", "--encoding", "ISO-8859-1", self.file(notebook(sheet(label(0, 0, b"\x80\x9b1m"))))).stdout
        self.assertIn(b">&lt;U+0080&gt;&lt;U+009B&gt;1m<", upper)

    def test_corner_cells_make_a_small_page(self):
        far = [sheet(label(0, 0, b"a"), label(255, 65535, b"z"), number=n) for n in range(50)]
        result = run("html", "--max-memory", "20M", self.file(notebook(*far)))
        self.assertEqual(result.returncode, 0)
        self.assertLess(len(result.stdout), 50 * 40000)
        self.assertIn('data-n="2\u201365535"'.encode(), result.stdout)

    def test_sizes_have_hundredths_of_a_point(self):
        widths = [record(216, struct.pack("<HH", column, 2000 + column)) for column in range(4)]
        page = self.page(self.file(notebook(sheet(*widths, label(3, 0, b"x"), columns=4)))).decode()
        self.assertEqual(re.findall(r"<col style=\"width:(100[\d.]*)pt", page), ["100", "100.05", "100.1", "100.15"])

    def test_gaps_make_few_rows(self):
        page = self.page(self.file(notebook(sheet(*[label(0, 90 * n, b"x") for n in range(300)]))))
        self.assertLess(page.count(b"<tr"), 3500)

    def test_hidden_places_are_named(self):
        for columns, rows, named in ((b"\x1a", b"\x14\x01", "columns B, D\u2013E (where numbers have no text), rows 3, 5, 9"),
                                     (b"\x06", b"\x06", "columns B\u2013C (where numbers have no text), rows 2\u20133"),
                                     (b"\x80", b"\x01", "column H (where numbers have no text), row 1")):
            page = self.page(self.file(notebook(sheet(record(222, columns), record(220, rows), label(0, 9, b"x")))))
            self.assertIn(f"show hidden: {named}</label>", page.decode())

    def test_damage_stands_on_top(self):
        with open(EXAMPLE, "rb") as file:
            source = self.file(file.read()[:1400])
        page = run("html", "--salvage", source).stdout.decode()
        self.assertRegex(page, r"</h1>\n<p class=\"damage\".*cut short: the records end at byte 13\d\d")


class Browser(Page):
    def looks(self, source, *places):
        """The computed styles of cells, each named by sheet, row and column."""
        page = self.page(source).decode()
        page = re.sub("<meta http-equiv=[^>]*>", "", page)  # it forbids the script, as it should
        page = page.replace("</body>", SCRIPT % json.dumps(places) + "</body>")
        path = self.file(page.encode(), "page.html")
        dump = subprocess.run([BROWSER, *FLAGS, "--user-data-dir=" + self.path("browser"), "--dump-dom",
                               "file://" + path], stdout=subprocess.PIPE, stderr=subprocess.DEVNULL,
                              timeout=300, check=True).stdout.decode()
        return json.loads(re.search(r"<body[^>]*>(.*?)</body>", dump, re.S)[1])

    def check(self, found, **expected):
        for name, value in expected.items():
            self.assertEqual(found[name.replace("_", "-")], value, (name, found))

    @unittest.skipUnless(BROWSER, "no Chromium is installed")
    def test_looks_of_the_example(self):
        title, heading, due, total, remark = self.looks(
            EXAMPLE, (0, "1", "A"), (0, "3", "A"), (0, "4", "B"), (0, "10", "C"), (0, "5", "G"))
        self.check(title, color="rgb(0, 0, 128)", font_weight="700", text_align="left",
                   font_family='"Times New Roman", serif')
        self.assertAlmostEqual(float(title["font-size"][:-2]), 16 * 96 / 72, 1)
        self.assertAlmostEqual(title["width"], 110 * 96 / 72, 0)
        self.assertAlmostEqual(title["height"], 21 * 96 / 72, 0)
        self.check(heading, color="rgb(255, 255, 255)", background_color="rgb(0, 0, 128)",
                   text_align="center", border_left="1px solid rgb(0, 0, 128)", font_weight="700")
        self.check(due, text="01-Jan-24", text_align="right", vertical_align="bottom", font_weight="400",
                   font_family="Arial, sans-serif")
        self.assertAlmostEqual(due["width"], 65 * 96 / 72, 0)
        self.check(total, background_color="rgb(192, 192, 192)", border_top="1px solid rgb(0, 0, 0)",
                   border_bottom="3px double rgb(0, 0, 0)")
        self.check(remark, text="over budget", color="rgb(0, 128, 0)", font_style="italic")

    @unittest.skipUnless(BROWSER, "no Chromium is installed")
    def test_each_look(self):
        plain, bits, lines, top, across, runs, following = self.looks(
            self.file(LOOKS), (0, "1", "A"), (0, "1", "B"), (0, "1", "C"), (0, "2", "A"), (0, "2", "B"),
            (0, "3", "A"), (0, "3", "D"))
        self.check(plain, font_style="normal", text_decoration_line="none", text_align="left",
                   border_top="1px dotted rgb(192, 192, 192)")
        self.assertAlmostEqual(plain["width"], 100 * 96 / 72, 0)
        self.check(bits, font_style="italic", font_weight="400", font_family="Courier, monospace",
                   text_decoration_line="underline line-through", font_size="16px")
        self.check(lines, border_top="1px solid rgb(128, 128, 128)", border_right="3px double rgb(0, 0, 0)",
                   border_bottom="2px solid rgb(255, 0, 0)")
        self.check(top, text_align="right", vertical_align="top")
        self.assertAlmostEqual(top["height"], 30 * 96 / 72, 0)
        # Centred over columns B to D, which have the default width.
        middle = across["left"] + 1.5 * across["width"]
        self.assertAlmostEqual((across["textLeft"] + across["textRight"]) / 2, middle, delta=4)
        # Runs over B and C, and not into D.
        self.assertGreater(min(runs["textRight"], runs["clip"]), plain["left"] + plain["width"] + 10)
        self.assertLessEqual(runs["clip"], following["left"] + 3)

    def test_what_a_cell_holds_tells_a_number_from_a_label(self):
        """Not what it shows: labels look like numbers, and numbers have words in their formats."""
        cells = [integer(0, 0, 7, 2), label(0, 1, b"2024 01 15 12 30 55"), label(0, 2, b"room 12 of the house", 3),
                 label(0, 3, b"ERR"), formula(0, 4, None, 3), formula(0, 5, b"1234567890"), number(0, 6, 123456.5)]
        cells = [record(216, struct.pack("<HH", 0, 800)), *cells, *[label(1, n, b"x") for n in range(7)]]
        definitions = (font() + style(form=0x10) + style(form=0x71) + style(form=0x10, align=2) +
                       user_format(1, b"N9' pieces in store'"))
        page = self.page(self.file(notebook(sheet(*cells, columns=2), definitions=definitions))).decode()
        marked = [n for n in range(1, 8) if re.search(rf'data-n="{n}"></th><td class="s\d+ n n\d"', page)]
        self.assertEqual(marked, [1, 5, 7], page[-2500:])
        for marks, text in re.findall(r' n n(\d+)" title="([^"]*)"', page):
            self.assertEqual(int(marks), max(1, len(text) // 3), text)

    @unittest.skipUnless(BROWSER, "no Chromium is installed")
    def test_numbers_show_whole_or_as_marks_and_labels_run_over(self):
        """In a small sheet, which is a table, and in a large one, which is laid out as it is seen."""
        long = b"a label far too long for it"
        cells = [integer(c, 0, 30000, c + 1) for c in (0, 1)] + [label(0, 1, b"x"), label(4, 1, b"y")]
        cells += [label(2, 2 + n, long, 2 + n) for n in range(3)]
        cells += [label(c, 5, long, 3) for c in (1, 2, 3)] + [blank(3, 2), number(3, 0, -30000, 5)]
        definitions = font() + style(form=0x32) + b"".join(style(form=0x10, align=n) for n in (1, 2, 3))
        definitions += style(form=0x42, lines=0x55)
        for more in ([], [label(0, 50 + n % 1300 + n // 1300 * 1300, b"more") for n in range(5200)]):
            with self.subTest(large=bool(more)):
                source = self.file(notebook(sheet(*cells, *more, columns=5), definitions=definitions))
                wide, whole, negative, left, centre, right, clipped = self.looks(
                    source, (0, "1", "A"), (0, "1", "B"), (0, "1", "D"), (0, "3", "C"), (0, "4", "C"),
                    (0, "5", "C"), (0, "6", "C"))
                self.check(wide, text="$30,000.00 ", marks=True)
                self.check(whole, marks=False)
                self.check(negative, text="-3000000.00%", marks=True, border_left="1px solid rgb(0, 0, 0)",
                           border_top="1px solid rgb(0, 0, 0)")
                if more:  # its line lies over the neighbour's
                    self.assertAlmostEqual(negative["left"], whole["left"] + 2 * whole["width"] - 1, delta=0.4)
                edge = left["left"] + left["width"]
                self.assertGreater(left["textRight"], edge + 20)
                self.assertAlmostEqual(centre["textLeft"] + centre["textRight"], edge + left["left"], delta=4)
                self.assertLess(right["textLeft"], left["left"] - 20)
                self.assertLessEqual(clipped["clip"], edge + 1)


if __name__ == "__main__":
    unittest.main()
