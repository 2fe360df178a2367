# SPDX-License-Identifier: MIT
"""python -m qpsreader FILE...: a line for each worksheet: its name, rows, columns and cells."""
import argparse
import os
import sys
import warnings
from typing import Any

import qpsreader


def _list(path: str, options: argparse.Namespace) -> None:
    with qpsreader.open(path, encoding=options.encoding, salvage=options.salvage) as notebook:
        for sheet in notebook.sheets:
            name = sheet.name if sheet.name.isprintable() else ascii(sheet.name)
            print(f"{name}\t{sheet.row_count} rows\t{sheet.column_count} columns\t"
                  f"{len(sheet.columns())} cells")


def _warn(message: Warning | str, *_: Any) -> None:
    print(f"qpsreader: {message}", file=sys.stderr)


def main() -> int:
    parser = argparse.ArgumentParser(prog="python -m qpsreader",
                                     description="List the worksheets of notebooks.")
    parser.add_argument("files", nargs="+", metavar="FILE")
    parser.add_argument("--encoding", default="cp1252", help="of the texts (default: %(default)s)")
    parser.add_argument("--salvage", action="store_true",
                        help="list what is left of a damaged notebook")
    options = parser.parse_args()
    warnings.showwarning = _warn  # type: ignore[assignment]
    status = 0
    for path in options.files:
        try:
            _list(path, options)
        except (qpsreader.NotebookError, LookupError, ValueError) as error:
            print(f"qpsreader: {error}", file=sys.stderr)
            status = 1
    print(end="", flush=True)
    return status


if __name__ == "__main__":
    try:
        sys.exit(main())
    except OSError as failure:  # of the output: the files' own have become messages
        if not isinstance(failure, BrokenPipeError):
            print(f"qpsreader: standard output: {failure.strerror}", file=sys.stderr)
        os.dup2(os.open(os.devnull, os.O_WRONLY), sys.stdout.fileno())  # Python flushes once more
        sys.exit(1)
