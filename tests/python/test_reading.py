# SPDX-License-Identifier: MIT
"""What stands in a notebook is what comes out: values against those that were written, texts and
looks against the tool's."""
import json
import math
import os
import random
import struct
from datetime import date, datetime, time
from pathlib import Path

import notebooks as make
import pandas as pd
import pytest
import qpsreader

EXAMPLES = [Path(make.SOURCE, "examples", name) for name in ("budget.wb2", "budget.wb3")]
REAL = sorted(Path(os.environ.get("QPS_NOTEBOOKS", "")).glob("*.wb?")) \
    if "QPS_NOTEBOOKS" in os.environ else []
FORMATS = {"general": 0x71, "date": 5, "day": 6, "time": 0x0A}  # of the styles 1 to 4


def number(column, row, value, style=1):
    return make.record(14, struct.pack("<BBHHd", column, 0, row, style << 3, value))


def formula(column, row, value, style=1):
    return make.record(16, struct.pack("<BBHHdI", column, 0, row, style << 3, value, 0))


def told_by_tool(path):
    out = make.run("json", str(path), "--salvage")
    items = [json.loads(line) for line in out.stdout.splitlines()]
    return [item for item in items if item["kind"] == "cell"]


def same_as_tool(path, **options):
    """Every cell's place, text and look."""
    notebook = qpsreader.open(path, **options)
    cells = [(sheet.name, cell) for sheet in notebook.sheets for cell in sheet.cells()]
    told = told_by_tool(path)
    assert len(cells) == len(told)
    for (sheet, cell), item in zip(cells, told):
        assert (sheet, cell.row, cell.column, cell.address, cell.text) == tuple(
            item[key] for key in ("sheet", "row", "column", "address", "text"))
        style, font = cell.style, item["font"]
        assert {"horizontal": style.horizontal, "vertical": style.vertical} == item["alignment"]
        assert [None if colour is None else f"#{colour:06x}"
                for colour in (style.fill_colour, style.text_colour)] == \
            [item["fillColour"], item["textColour"]]
        lines = {side: {"line": border.line, "colour": f"#{border.colour:06x}"}
                 for side, border in zip(("left", "top", "right", "bottom"), style.borders) if border}
        assert lines == item["borders"]
        assert (style.font and list(style.font)) == (font and list(font.values()))
        value = cell.value
        if not isinstance(value, (float, str, type(None))):
            value = value.isoformat()
        if value not in (math.inf, -math.inf):
            assert (cell.kind, value, cell.is_formula) == (item["type"], item["value"],
                                                           item["formula"])


@pytest.mark.parametrize("path", EXAMPLES + REAL, ids=lambda path: path.name)
def test_the_tool_says_the_same(path):
    same_as_tool(path)


@pytest.mark.parametrize("path", EXAMPLES, ids=lambda path: path.name)
def test_example(path):
    with qpsreader.open(path) as notebook:
        assert notebook.sheets.names == ["Budget", "Car"] and "Car" in notebook.sheets
        assert notebook.texts == ("Household budget", "Page 1") and notebook.damage is None
        assert (notebook.info.format_version, notebook.info.font_count) == (0x1002, 4)
        budget, car = notebook.sheets
        table = budget.to_pandas(header=3)
        assert table["Spent"].dtype == "float64" and table["Due"].dtype == "datetime64[ns]"
        assert table.loc[4:8, "Spent"].sum() == pytest.approx(2308.87)
        assert table.sort_values("Due", ascending=False).iloc[0]["Item"] == "Savings"
        assert budget["B4"].value == date(2024, 1, 1) == budget[4, 2].value
        assert (budget["E5"].text, budget["E5"].is_formula) == ("(47.35) ", True)
        assert budget["F4"].value == 0.5414 and budget["F4"].text is None  # hidden
        assert budget["Z99"].value is None and budget["Z99"].style is None
        assert (set(budget.hidden_rows), set(budget.hidden_columns)) == ({9}, {6})
        assert (budget.widths[1], budget.heights[1], budget.default_height) == (110, 21, 12.2)
        assert car.to_dict(header=2)["Departure"] == [time(7, 30), time(9, 45), time(18)]
        assert car.to_rows()[2][:3] == [date(2024, 1, 3), time(7, 30), 412]
        for wrong in ("A0", "A65537", "IW1", "ABC1", "4", (0, 1), (1, 257), (-1, 1)):
            with pytest.raises(KeyError, match="A1 to IV65536"):
                budget[wrong]
        for wrong in (4, (4,), (4.0, 2), None):
            with pytest.raises(TypeError, match="row and column"):
                budget[wrong]
    with pytest.raises(ValueError, match="closed"):
        notebook.memory_in_use
    assert car.row_count == 5  # read before


def test_random_notebooks(tmp_path):
    """Values of every kind at random places come out as they were written; the columns of pandas
    hold the same."""
    chance = random.Random(20240229)
    definitions = make.font() + b"".join(make.style(form=form) for form in FORMATS.values())
    for run in range(20):
        written, records = {}, []
        for _ in range(chance.randrange(1, 400)):
            column, row = chance.randrange(12), chance.randrange(60)
            kind = chance.choice(["label", "integer", "number", "formula", "date", "blank"])
            value = chance.uniform(-1e6, 1e6)
            if kind == "label":
                value = "".join(chance.choices("abc é€ß7", k=chance.randrange(1, 9)))
                records.append(make.label(column, row, value.encode("cp1252")))
            elif kind == "integer":
                value = chance.randrange(-32768, 32768)
                records.append(make.integer(column, row, value))
            elif kind == "blank":
                value = None
                records.append(make.blank(column, row))
            elif kind == "date":
                days = chance.randrange(1, 60000)
                value = date.fromordinal(date(1899, 12, 30).toordinal() + days)
                records.append(number(column, row, days, style=2))
            else:
                records.append((number if kind == "number" else formula)(column, row, value))
            written[row + 1, column + 1] = value  # the last one in a place stays
        path = tmp_path / f"{run}.wb2"
        path.write_bytes(make.notebook(make.sheet(*records, name=b"A", columns=12, rows=60),
                                       definitions=definitions))
        sheet = qpsreader.open(path).sheets["A"]
        rows, table = sheet.to_rows(), sheet.to_pandas()
        for row in range(sheet.row_count):
            for column in range(sheet.column_count):
                value = written.get((row + 1, column + 1))
                assert sheet[row + 1, column + 1].value == value == rows[row][column]
                shown = table.iat[row, column]
                if value is None:
                    assert pd.isna(shown)
                else:
                    assert shown == (pd.Timestamp(value) if isinstance(shown, pd.Timestamp)
                                     else value)
        same_as_tool(path)


@pytest.mark.filterwarnings("ignore::qpsreader.DamageWarning")
def test_salvage_gives_what_the_tool_gives(tmp_path):
    """Also what stands behind the damage."""
    chance, whole, salvaged = random.Random(1995), EXAMPLES[0].read_bytes(), 0
    for run in range(40):
        book, at = bytearray(whole), chance.randrange(400, len(whole))
        book[at:at + chance.randrange(1, 80)] = chance.randbytes(40)
        path = tmp_path / f"{run}.wb2"
        path.write_bytes(book)
        try:
            same_as_tool(path, salvage=True)
            salvaged += qpsreader.open(path, salvage=True).damage is not None
        except qpsreader.NotebookError:
            assert make.run("json", str(path), "--salvage").returncode not in (0, 5)
    assert salvaged > 10


def test_days_and_times():
    """A serial by what its format shows; beyond the years of Python's datetime it is a number."""
    both, last = 0x72, 2958465  # 9999-12-31
    rows = [
        (2, 45292.75, date(2024, 1, 1)), (2, -1, date(1899, 12, 29)), (2, last, date(9999, 12, 31)),
        (2, last + 1, last + 1.0), (2, 1e300, 1e300),
        (3, 45292.75, time(18)), (3, 0.999999, time(0)),
        (4, 45292.75, datetime(2024, 1, 1, 18)), (4, 45292.999999, datetime(2024, 1, 2)),
        (4, last + 0.999999, last + 0.999999), (1, math.inf, math.inf),
    ]
    styles = b"".join(make.style(form=form) for form in (0x71, 5, 0x0A, both))
    moment = make.record(230, struct.pack("<H", 2) + b"TYYYY-MM-DD HH:MM\0")
    sheet = make.sheet(*(number(0, at, serial, style) for at, (style, serial, _) in
                         enumerate(rows)), name=b"A")
    book = make.notebook(sheet, definitions=make.font() + moment + styles)
    sheet = qpsreader.open(book).sheets[0]
    values = [cell.value for cell in sheet.cells()]
    assert values == [value for _, _, value in rows]
    assert [type(value) for value in values] == [type(value) for _, _, value in rows]
    assert sheet.columns().when.tolist()[5:7] == [18 * 3600 * 10**6, 0]  # not 24 hours


@pytest.mark.parametrize("encoding, raw, text", [
    ("cp1252", b"\x80 \x81", "€ �"), ("cp850", b"\x81", "ü"), ("cp932", b"\x93\xfa\x96{", "日本"),
    ("utf-8", b"\xc3\xa4\xff", "ä�")])
def test_encodings(encoding, raw, text):
    book = make.notebook(make.sheet(make.label(0, 0, raw), name=raw[:1] + b"n"))
    sheet = qpsreader.open(book, encoding=encoding).sheets[0]
    assert (sheet["A1"].value, sheet["A1"].text) == (text, text)


def test_columns_are_buffers():
    columns = qpsreader.open(EXAMPLES[0]).sheets["Car"].columns()
    for name in ("row", "column", "kind", "number", "when", "look"):
        view = getattr(columns, name)
        assert view.readonly and len(view) == len(columns) == len(view.tolist())
    del columns
    assert view[0] == 0 or view[0] > 0  # a view keeps its memory
