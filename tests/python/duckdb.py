# SPDX-License-Identifier: MIT
"""DuckDB by ctypes: SQL over an Arrow stream."""
import ctypes
from ctypes import POINTER, byref, c_char_p, c_uint64, c_void_p
from pathlib import Path

_LIBRARY = Path(__file__).with_name("node_modules") / \
    "@duckdb/node-bindings-linux-x64/libduckdb.so"
_RELEASE_OFFSET = 3 * ctypes.sizeof(c_void_p)  # of ArrowArrayStream.release


class _Result(ctypes.Structure):
    _fields_ = [("unused", c_uint64 * 3), ("unused2", c_void_p * 3)]


def available():
    return _LIBRARY.exists()


def query(sql, **streams):
    """Rows of texts: what the SQL says of the tables in `streams`, whose values are capsules."""
    duckdb = ctypes.CDLL(str(_LIBRARY))
    duckdb.duckdb_value_varchar.restype = c_void_p
    duckdb.duckdb_value_varchar.argtypes = [POINTER(_Result), c_uint64, c_uint64]
    duckdb.duckdb_result_error.restype = c_char_p
    for name in ("duckdb_column_count", "duckdb_row_count"):
        getattr(duckdb, name).restype = c_uint64
    duckdb.duckdb_arrow_scan.argtypes = [c_void_p, c_char_p, c_void_p]
    get_pointer = ctypes.pythonapi.PyCapsule_GetPointer
    get_pointer.restype, get_pointer.argtypes = c_void_p, [ctypes.py_object, c_char_p]

    database, connection, result = c_void_p(), c_void_p(), _Result()
    assert duckdb.duckdb_open(None, byref(database)) == 0
    assert duckdb.duckdb_connect(database, byref(connection)) == 0

    def run(statement):
        duckdb.duckdb_destroy_result(byref(result))
        status = duckdb.duckdb_query(connection, statement.encode(), byref(result))
        assert status == 0, duckdb.duckdb_result_error(byref(result)).decode()

    try:
        for name, capsule in streams.items():
            # All columns go into a table first: the scan takes it that a stream was told to leave
            # out those that a query does not name.
            stream = get_pointer(capsule, b"arrow_array_stream")
            assert duckdb.duckdb_arrow_scan(connection, b"stream", stream) == 0
            run(f"CREATE TABLE {name} AS SELECT * FROM stream; DROP VIEW stream")
            # DuckDB released a copy of the stream and left this one as it was.
            c_void_p.from_address(stream + _RELEASE_OFFSET).value = None
        run(sql)
        return [[_text(duckdb, result, column, row)
                 for column in range(duckdb.duckdb_column_count(byref(result)))]
                for row in range(duckdb.duckdb_row_count(byref(result)))]
    finally:
        duckdb.duckdb_destroy_result(byref(result))
        duckdb.duckdb_disconnect(byref(connection))
        duckdb.duckdb_close(byref(database))


def _text(duckdb, result, column, row):
    value = duckdb.duckdb_value_varchar(byref(result), column, row)
    if value is None:
        return None
    text = ctypes.string_at(value).decode()
    duckdb.duckdb_free(c_void_p(value))
    return text
