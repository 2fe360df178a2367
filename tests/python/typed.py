# SPDX-License-Identifier: MIT
"""What mypy knows of the package; it says so where an error that is awaited here is none."""
from datetime import date, datetime, time
from pathlib import Path
from typing import Optional, Union

import qpsreader


def uses(path: Path) -> float:
    with qpsreader.open(path, encoding="cp850", salvage=True, time_limit=5) as notebook:
        sheet: qpsreader.Sheet = notebook.sheets["Budget"]
        several: list[qpsreader.Sheet] = notebook.sheets[1:]
        rows: list[list[Union[float, str, date, time, datetime, None]]] = sheet.to_rows()
        style: Optional[qpsreader.Style] = sheet["B4"].style
        hidden: set[int] = set(sheet.hidden_rows)
        numbers: memoryview = sheet.columns().number
        width: Optional[float] = sheet.widths.get(1)
        texts: tuple[str, ...] = notebook.texts
        print(several, rows, style and style.name, hidden, numbers, width, texts)
        try:
            return sum(cell.value for cell in sheet.cells() if isinstance(cell.value, float))
        except qpsreader.LimitExceeded as error:
            print(error.reason)
            return 0


def misuses(sheet: qpsreader.Sheet) -> None:
    qpsreader.open(5)  # type: ignore[arg-type]
    number: int = sheet.name  # type: ignore[assignment]
    text: str = sheet[1, 1].text  # type: ignore[assignment]
    sheet["A1"].value + 1  # type: ignore[operator]
    sheet.cell(1, 1)  # type: ignore[attr-defined]
    print(number, text)
