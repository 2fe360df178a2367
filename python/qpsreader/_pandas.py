# SPDX-License-Identifier: MIT
"""From the columns of cells to the columns of a table."""
from typing import Any, Callable, Optional

import numpy as np
import pandas as pd  # type: ignore[import]

from . import _core

_NUMBER, _TEXT, _DATE, _DATETIME = 1, 2, 4, 6
_NUMBERS = np.array([True, True, False, True, False, False, False])  # blank, number and error
_DAYS = np.array([True, False, False, True, True, False, True])  # blank, error, date and datetime
_FIRST_DAY, _LAST_DAY = (day.value // 1000 for day in (pd.Timestamp.min, pd.Timestamp.max))


def frame(cells: _core.Cells, names: list[str], header: int,
          moment: Callable[[int, int], Any]) -> pd.DataFrame:
    """`header` rows are left out at the top; `moment` makes a date or time of a kind and its
    microseconds."""
    rows = np.frombuffer(cells.row, np.uint32)
    columns = np.frombuffer(cells.column, np.uint16)
    last_row = max(cells.size[0], header)
    order = _by_column(columns)
    bounds = np.searchsorted(columns[order], np.arange(1, len(names) + 2))
    maker = _Maker(cells, last_row - header, moment)
    table = {}
    for number, name in enumerate(names):
        chosen = order[bounds[number]:bounds[number + 1]]
        places = rows[chosen].astype(np.intp) - header - 1
        keep = (places >= 0) & (places < maker.height)
        table[name] = maker.column(chosen[keep], places[keep])
    index = pd.RangeIndex(header + 1, last_row + 1)
    return pd.DataFrame(table, index=index, columns=names, copy=False)


def _by_column(columns: Any) -> Any:
    if np.all(columns[1:] >= columns[:-1]):
        return np.arange(len(columns))
    return np.argsort(columns, kind="stable")


class _Maker:
    def __init__(self, cells: _core.Cells, height: int, moment: Callable[[int, int], Any]):
        self.height = height
        self._cells = cells
        self._moment = moment
        self._kinds = np.frombuffer(cells.kind, np.uint8)
        self._numbers = np.frombuffer(cells.number, np.float64)
        self._when = np.frombuffer(cells.when, np.int64)
        self._strings: Optional[Any] = None

    def column(self, chosen: Any, places: Any) -> Any:
        """Of several cells in one place the last one stays: numpy assigns in order."""
        kinds = self._kinds[chosen]
        seen = np.bincount(kinds, minlength=7) > 0
        if not (seen & ~_NUMBERS).any():
            values = np.full(self.height, np.nan)
            values[places] = np.where(kinds == _NUMBER, self._numbers[chosen], np.nan)
            return values
        if not (seen & ~_DAYS).any():
            days = self._days(chosen, places, (kinds == _DATE) | (kinds == _DATETIME))
            if days is not None:
                return days
        return self._objects(chosen, places, kinds)

    def _days(self, chosen: Any, places: Any, present: Any) -> Any:
        """None where a date lies beyond what pandas holds (1677 to 2262)."""
        when = self._when[chosen]
        if ((when < _FIRST_DAY) | (when > _LAST_DAY)).any():
            return None
        values = np.full(self.height, np.datetime64("NaT"), "datetime64[ns]")
        values[places] = np.where(present, when.view("datetime64[us]").astype("datetime64[ns]"),
                                  np.datetime64("NaT"))
        return values

    def _objects(self, chosen: Any, places: Any, kinds: Any) -> Any:
        values = np.full(self.height, None, object)
        found = np.full(len(chosen), None, object)
        is_number, is_text = kinds == _NUMBER, kinds == _TEXT
        found[is_number] = self._numbers[chosen[is_number]]
        if is_text.any():
            if self._strings is None:
                self._strings = np.array(self._cells.strings(), object)
            found[is_text] = self._strings[chosen[is_text]]
        for at in np.flatnonzero(kinds >= _DATE):
            found[at] = self._moment(int(kinds[at]), int(self._when[chosen[at]]))
        values[places] = found
        return values
