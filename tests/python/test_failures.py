# SPDX-License-Identifier: MIT
"""What cannot be read, what does not fit, and what is damaged."""
import gc
import os
import pickle
import re
import subprocess
import sys
from pathlib import Path

import notebooks as make
import pytest
import qpsreader

BOOK = make.notebook(make.sheet(make.integer(0, 0, 7), make.label(1, 0, b"x"), name=b"A"))
PROTECTED = make.record(0, b"\x02\x10") + make.record(76, b"\1\0") + BOOK[6:]


@pytest.mark.parametrize("error, content, options", [
    (qpsreader.Missing, None, {}),
    (qpsreader.Empty, b"", {}),
    (qpsreader.NotANotebook, b"%PDF-1.4\n" + b" " * 600, {}),
    (qpsreader.Protected, PROTECTED, {}),
    (qpsreader.Damaged, BOOK[:-9], {}),
    (qpsreader.LimitExceeded, BOOK, {"memory_limit": 100}),
])
def test_every_reason_has_its_class(tmp_path, error, content, options):
    path = tmp_path / "book.wb2"
    sources = [path]
    if content is not None:
        path.write_bytes(content)
        sources.append(content)
    for source in sources:
        with pytest.raises(qpsreader.NotebookError) as caught:
            qpsreader.open(source, **options)
        assert type(caught.value) is error
        assert str(caught.value).startswith(f"{source}: " if source is path else "<bytes>: ")
        copy = pickle.loads(pickle.dumps(caught.value))  # as it comes from a worker process
        assert type(copy) is error and str(copy) == str(caught.value)


def test_no_reason_is_without_a_class():
    header = Path(make.SOURCE, "include/qpsreader/host/expected.hpp").read_text("utf-8")
    names = re.search(r"logs and counters: (.*?)\.\n", header, re.DOTALL)[1]
    assert set(re.findall(r'"([a-z-]+)"', names)) == \
        {error.reason for error in qpsreader.NotebookError.__subclasses__()}


def test_a_missing_file_is_what_python_calls_so(tmp_path):
    with pytest.raises(FileNotFoundError) as caught:
        qpsreader.open(tmp_path / "none" / "book.wb2")
    assert isinstance(caught.value, qpsreader.Unreadable) and caught.value.errno == 2
    with pytest.raises(qpsreader.Unreadable) as caught:
        qpsreader.open(tmp_path)
    assert not isinstance(caught.value, FileNotFoundError)


def test_what_may_be_damaged_warns():
    stray = make.notebook(make.record(9999, b"x"), make.sheet(make.integer(0, 0, 7)))
    with pytest.warns(qpsreader.DamageWarning, match="may be damaged: the record at byte"):
        notebook = qpsreader.open(stray)
    assert notebook.sheets[0].to_rows() == [[7]] and notebook.suspicion and not notebook.damage
    assert qpsreader.open(BOOK).suspicion is None


def test_salvage_warns():
    with pytest.warns(qpsreader.DamageWarning, match="<bytes>: cut short"):
        notebook = qpsreader.open(BOOK[:-9], salvage=True)
    assert notebook.sheets["A"].to_rows() == [[7]] and notebook.damage


@pytest.mark.parametrize("arguments", [
    {"encoding": "klingon"}, {"encoding": "hex"}, {"encoding": "utf-16"}, {"encoding": "cp037"},
    {"encoding": "hz"}, {"encoding": "unicode_escape"}, {"memory_limit": -1},
    {"memory_limit": 1 << 70}, {"time_limit": -1}, {"time_limit": float("nan")}])
def test_wrong_arguments(arguments):
    with pytest.raises((LookupError, ValueError)):
        qpsreader.open(BOOK, **arguments)


def test_what_cannot_be_opened_or_sent_elsewhere():
    with pytest.raises(TypeError, match="takes a path or the bytes"):
        qpsreader.open(5)
    notebook = qpsreader.open(BOOK)
    for thing in (notebook, notebook.sheets, notebook.sheets[0], notebook.sheets[0]["A1"]):
        with pytest.raises(TypeError, match="cannot be pickled: open the file where"):
            pickle.dumps(thing)
    assert pickle.loads(pickle.dumps(notebook.info)) == notebook.info


def test_a_changing_buffer_is_copied():
    content = bytearray(BOOK)
    notebook = qpsreader.open(content)
    content[:] = b"\xff" * len(content)
    assert notebook.sheets[0].to_rows() == [[7, "x"]]


# A sheet of few bytes that speaks of many: a height for every row, a cell in the last place.
HEIGHTS = make.record(261, b"\0\0\xff\xff\x64\0")
CORNER = make.integer(255, 65535, 1)


def test_little_input_takes_little_memory():
    book = make.notebook(*(make.sheet(HEIGHTS, CORNER, name=b"S%d" % at, number=at)
                           for at in range(50)))
    notebook = qpsreader.open(book, memory_limit=8 << 20)
    sheets = list(notebook.sheets)
    for sheet in sheets:
        assert sheet.heights.runs == ((range(1, 65537), 5.0),)
        for grid in (sheet.to_rows, sheet.to_pandas):
            with pytest.raises(qpsreader.LimitExceeded, match="do not fit"):
                grid()
    assert notebook.memory_in_use < 1 << 20
    assert len(sheets[0].heights) == 65536 and not sheets[0].hidden_rows


def test_time_is_limited():
    """Of few bytes that take long, and of many."""
    heights = make.notebook(make.sheet(HEIGHTS * 3, CORNER, name=b"A"))
    with pytest.raises(qpsreader.LimitExceeded, match="more row heights"):
        qpsreader.open(heights).sheets[0].columns()
    many = make.sheet(*(make.integer(0, row, 1) for row in range(20_000)), name=b"A")
    notebook = qpsreader.open(make.notebook(*[many] * 200), time_limit=0.02)
    with pytest.raises(qpsreader.LimitExceeded, match="time limit"):
        for sheet in notebook.sheets:
            assert sheet.row_count == 20_000
    assert sheet.index > 0 and notebook.sheets[0].row_count == 20_000  # read again


def test_the_limit_counts_what_is_held():
    sheet = make.sheet(*(make.label(column, row, b"some text") for column in range(40)
                         for row in range(500)), name=b"A")
    notebook = qpsreader.open(make.notebook(sheet, sheet), memory_limit=5 << 20)
    first = notebook.sheets[0]
    assert first.row_count == 500
    with pytest.raises(qpsreader.LimitExceeded):
        notebook.sheets[1].columns()
    del first
    gc.collect()
    assert notebook.sheets[1].row_count == 500  # once the first is gone


def test_listing(tmp_path):
    (tmp_path / "bad.wb2").write_bytes(b"nothing")
    run = subprocess.run([sys.executable, "-m", "qpsreader", make.EXAMPLE, tmp_path / "bad.wb2"],
                         capture_output=True, text=True, check=False,
                         env={**os.environ, "PYTHONPATH": os.pathsep.join(sys.path)})
    assert run.stdout == ("Budget\t10 rows\t7 columns\t47 cells\n"
                          "Car\t5 rows\t5 columns\t21 cells\n")
    assert run.returncode == 1
    assert run.stderr == f"qpsreader: {tmp_path}/bad.wb2: not a Quattro Pro for Windows notebook\n"
