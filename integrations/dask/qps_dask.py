# SPDX-License-Identifier: MIT
"""Any number of notebooks as one table of cells, with Dask.

    cells = qps_dask.notebooks(paths)                  # a dask.dataframe
    parts = qps_dask.write(paths, "cells", "parquet")  # or files of it, and what is in each

A notebook that cannot be read becomes one row whose kind is "failed" and whose `error` says why.
Copy this file beside your own, or put this folder on PYTHONPATH, where the workers see it too.
"""
import os
import warnings

import dask
import dask.dataframe as dd
import fsspec
import numpy as np
import pandas as pd
import qpsreader

#: The columns. Every notebook has a row. `row` and `column` count from 1. `kind` is one of
#: qpsreader.KINDS, or says something of a notebook as a whole, with row and column 0: "failed",
#: "damaged" (after the cells of a salvaged one), or "empty" (it has no cells). `number` is the serial
#: of a date too; `timestamp` is empty for dates beyond 1677 to 2262; `time` is a datetime.time;
#: `string` is what a text cell holds, `text` what any cell shows.
COLUMNS = {
    "source": object, "sheet": object, "row": "int32", "column": "int32", "kind": object,
    "number": "float64", "timestamp": "datetime64[ns]", "time": object, "string": object,
    "text": object, "is_formula": bool, "error": object,
}

_EMPTY = pd.DataFrame({name: pd.Series(dtype=form) for name, form in COLUMNS.items()})
_KINDS = np.array(qpsreader.KINDS, object)
_TIME = qpsreader.KINDS.index("time")
_DAYS = [qpsreader.KINDS.index(name) for name in ("date", "datetime")]
_NO_NUMBERS = [qpsreader.KINDS.index(name) for name in ("blank", "text", "error")]
_FIRST, _LAST = (day.value // 1000 for day in (pd.Timestamp.min, pd.Timestamp.max))


def notebooks(paths, batch=50, **options):
    """A dask.dataframe of COLUMNS with a partition for every `batch` paths, many because notebooks
    are small. Paths are local, or URLs that fsspec reads. `options` are qpsreader.open's:
    encoding, memory_limit (in bytes, per notebook), time_limit (in seconds) and salvage."""
    return dd.from_delayed([dask.delayed(read_batch)(chunk, **options)
                            for chunk in _chunks(paths, batch)], meta=_EMPTY, verify_meta=False)


def write(paths, folder, form="parquet", batch=50, **options):
    """Writes the table in parts, part-00000.parquet and so on, each whole or not there at all; a
    part that is written again has the same name. Returns a DataFrame with a row for each part:
    its file, and how many notebooks, rows and failures it has. `form` is "parquet" or "csv";
    `folder` is one that all workers see. Parquet takes pyarrow on the workers, else ImportError
    before anything is read; Debian 12 has none, so that form was not tried there."""
    if form not in ("parquet", "csv"):
        raise ValueError(f'form is "parquet" or "csv": {form}')
    if form == "parquet":
        dask.delayed(_arrow_schema)().compute()
    os.makedirs(folder, exist_ok=True)
    tasks = [dask.delayed(_write_part)(os.path.join(folder, f"part-{number:05}.{form}"), chunk,
                                       form, options)
             for number, chunk in enumerate(_chunks(paths, batch))]
    return pd.DataFrame(list(dask.compute(*tasks)),
                        columns=["part", "notebooks", "rows", "failures"])


def read_batch(paths, **options):
    """The cells of these notebooks, one DataFrame."""
    return _frame(piece for path in paths for piece in _pieces(path, None, options))


def read(path, content=None, **options):
    """The cells of one notebook: of the file `path`, or of these bytes that have that name. Never
    raises on account of the file."""
    return _frame(_pieces(path, content, options))


def _frame(pieces):
    """One DataFrame at the end: making one for each sheet takes longer than reading it."""
    pieces = list(pieces)
    if not pieces:
        return _EMPTY
    return pd.DataFrame({name: np.concatenate([piece[name] for piece in pieces])
                         for name in COLUMNS}, copy=False)


def _pieces(path, content, options):
    """The columns of each of its sheets, and of what is to be said about the notebook."""
    path = os.fspath(path)
    try:
        if content is None and "://" in path:
            with fsspec.open(path, "rb") as file:
                content = file.read()
        with warnings.catch_warnings():
            warnings.simplefilter("ignore", qpsreader.DamageWarning)  # it becomes a row
            with qpsreader.open(path if content is None else content, **options) as notebook:
                sheets = list(notebook.sheets)
                pieces = [_cells(path, sheet) for sheet in sheets]
                damage = notebook.damage or next((s.damage for s in sheets if s.damage), None)
        if damage:
            pieces.append(_note(path, "damaged", damage))
        elif not any(len(piece["row"]) for piece in pieces):
            pieces.append(_note(path, "empty", None))
        return pieces
    except qpsreader.NotebookError as error:
        return [_note(path, "failed", f"{error.reason}: {error}")]
    except (OSError, MemoryError, ValueError) as error:  # a name with a zero byte, a URL's failure
        return [_note(path, "failed", f"{type(error).__name__}: {error}")]


def _cells(path, sheet):
    columns = sheet.columns()
    count = len(columns)
    kinds, when = np.frombuffer(columns.kind, np.uint8), np.frombuffer(columns.when, np.int64)
    names = _KINDS[kinds]
    is_number = ~np.isin(kinds, _NO_NUMBERS)
    is_day = np.isin(kinds, _DAYS) & (when >= _FIRST) & (when <= _LAST)
    days = np.where(is_day, when, 0).astype("datetime64[us]").astype("datetime64[ns]")
    times = np.full(count, None, object)
    for at in np.flatnonzero(kinds == _TIME):
        times[at] = pd.Timestamp(int(when[at]), unit="us").time()
    return {
        "source": np.full(count, path, object), "sheet": np.full(count, sheet.name, object),
        "row": np.frombuffer(columns.row, np.uint32).astype("int32"),
        "column": np.frombuffer(columns.column, np.uint16).astype("int32"),
        "kind": names,
        "number": np.where(is_number, np.frombuffer(columns.number, np.float64), np.nan),
        "timestamp": np.where(is_day, days, np.datetime64("NaT", "ns")),
        "time": times, "string": np.array(columns.strings(), object),
        "text": np.array(columns.texts(), object),
        "is_formula": np.array([columns.is_formula(at) for at in range(count)], bool),
        "error": np.full(count, None, object),
    }


def _note(path, kind, error):
    """A row that is about a notebook as a whole."""
    said = {"source": path, "row": 0, "column": 0, "kind": kind, "number": np.nan,
            "timestamp": np.datetime64("NaT", "ns"), "is_formula": False, "error": error}
    return {name: np.array([said.get(name)], form) for name, form in COLUMNS.items()}


def _write_part(part, paths, form, options):
    frame = read_batch(paths, **options)
    # Another worker may be at the same part, when one of them was taken for dead.
    unfinished = f"{part}.{os.getpid()}.unfinished"
    if form == "csv":
        frame.to_csv(unfinished, index=False)
    else:
        frame.to_parquet(unfinished, engine="pyarrow", index=False, schema=_arrow_schema())
    os.replace(unfinished, part)
    return part, len(paths), len(frame), int((frame["kind"] == "failed").sum())


def _arrow_schema():
    """Of every part, also of one whose column has nothing in it."""
    try:
        import pyarrow
    except ImportError:
        raise ImportError('Parquet takes pyarrow, which a worker does not have; "csv" takes '
                          'nothing more') from None
    types = {"datetime64[ns]": "timestamp[us]", object: "string", bool: "bool"}
    return pyarrow.schema([(name, pyarrow.type_for_alias(
        "time64[us]" if name == "time" else types.get(form, form)))
        for name, form in COLUMNS.items()])


def _chunks(paths, batch):
    paths = list(paths)
    return [paths[at:at + batch] for at in range(0, len(paths), batch)]
