# SPDX-License-Identifier: MIT
"""Threads, and Arrow streams in the hands of a consumer that is not ours."""
import sys
import threading

import duckdb
import notebooks as make
import pytest
import qpsreader

needs_duckdb = pytest.mark.skipif(not duckdb.available(), reason="npm ci was not run in tests/python")


def large(word, rows=8000, columns=40):
    return make.notebook(make.sheet(
        *(make.label(column, row, b"%s %d" % (word, row)) if column % 2 else
          make.integer(column, row, row) for column in range(columns) for row in range(rows)),
        name=word, columns=columns, rows=rows))


def test_reading_lets_other_threads_run():
    """With a switch interval that never ends, they run only when the GIL is let go."""
    sheet = qpsreader.open(large(b"word")).sheets[0]
    done, seen = threading.Event(), []

    def read():
        seen.append(sheet.columns())
        done.set()

    before = sys.getswitchinterval()
    sys.setswitchinterval(1000)
    try:
        thread = threading.Thread(target=read)
        thread.start()
        while_reading = not done.is_set()
        thread.join()
    finally:
        sys.setswitchinterval(before)
    assert while_reading and len(seen[0]) == 320_000


def test_notebooks_on_many_threads():
    """Each thread reads its own notebook, and all of them one that they share."""
    words = [b"one", b"two", b"three", b"four"]
    shared = qpsreader.open(make.EXAMPLE)
    found = {}

    def read(word):
        own = qpsreader.open(large(word, rows=500), encoding="cp932").sheets[0]
        rows = own.to_rows()
        found[word] = (own["B500"].text, rows[499][39], len(own.columns()),
                       [qpsreader.open(make.EXAMPLE).sheets[0].to_rows() ==
                        shared.sheets[0].to_rows() for _ in range(20)])

    threads = [threading.Thread(target=read, args=(word,)) for word in words]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    for word in words:
        text = f"{word.decode()} 499"
        assert found[word] == (text, text, 20_000, [True] * 20)


@needs_duckdb
def test_sql_over_a_notebook():
    notebook = qpsreader.open(make.EXAMPLE)
    told = duckdb.query(
        "SELECT sheet, kind, count(*), count(number), sum(number)::decimal(18, 4), max(timestamp),"
        " max(time), min(string), min(text), sum(is_formula::int), max(row), max(\"column\")"
        " FROM cells GROUP BY sheet, kind ORDER BY sheet, kind",
        cells=notebook.__arrow_c_stream__())
    expected = []
    for sheet in notebook.sheets:
        for kind in sorted({cell.kind for cell in sheet.cells()}):
            cells = [cell for cell in sheet.cells() if cell.kind == kind]
            numbers = [sheet.columns().number[cell._at] for cell in cells
                       if kind in ("number", "date", "time", "datetime")]
            values = [cell.value for cell in cells]
            texts = [cell.text for cell in cells if cell.text is not None]
            expected.append([
                sheet.name, kind, str(len(cells)), str(len(numbers)),
                f"{sum(numbers):.4f}" if numbers else None,
                f"{max(values)} 00:00:00" if kind == "date" else None,
                str(max(values)) if kind == "time" else None,
                min(values) if kind == "text" else None, min(texts) if texts else None,
                str(sum(cell.is_formula for cell in cells)),
                str(max(cell.row for cell in cells)), str(max(cell.column for cell in cells))])
    assert told == expected


@needs_duckdb
def test_parquet_by_the_stream(tmp_path):
    """Any engine that takes the stream writes files of it; nothing else here makes Parquet."""
    sheet, path = qpsreader.open(make.EXAMPLE).sheets["Car"], tmp_path / "cells.parquet"
    duckdb.query(f"COPY cells TO '{path}' (FORMAT parquet)", cells=sheet.__arrow_c_stream__())
    told = duckdb.query(f"SELECT kind, text FROM '{path}'")
    assert told == [[cell.kind, cell.text] for cell in sheet.cells()]


@needs_duckdb
def test_a_stream_outlives_its_notebook_on_another_thread():
    with qpsreader.open(large(b"word", rows=3000)) as notebook:
        stream = notebook.sheets[0].__arrow_c_stream__()
        unread = notebook.__arrow_c_stream__()
    del notebook
    told = []
    thread = threading.Thread(target=lambda: told.extend(duckdb.query(
        "SELECT count(*), sum(number)::bigint, max(text), max(row) FROM cells", cells=stream)))
    thread.start()
    thread.join()
    assert told == [["120000", str(20 * sum(range(3000))), "word 999", "3000"]]
    del unread  # released without having been read
