# SPDX-License-Identifier: MIT
"""Sheet and its cells."""
import operator
import re
import warnings
from datetime import date, datetime, time, timedelta
from functools import cached_property
from typing import TYPE_CHECKING, Any, Iterator, Optional, Union

from . import _core
from ._errors import DamageWarning, LimitExceeded
from ._sizes import Hidden, Sizes
from ._style import Format, Style, look_of

if TYPE_CHECKING:
    import pandas  # type: ignore[import]

    from ._notebook import Source

Value = Union[float, str, date, time, datetime, None]

#: What the numbers in `Sheet.columns().kind` mean.
KINDS = ("blank", "number", "text", "error", "date", "time", "datetime")
_BLANK, _NUMBER, _TEXT, _ERROR, _DATE, _TIME, _DATETIME = range(len(KINDS))

_EPOCH = datetime(1970, 1, 1)
_EPOCH_DAY = _EPOCH.toordinal()
_DAY = 86_400_000_000  # in microseconds


def _moment(kind: int, when: int) -> Union[date, time, datetime]:
    if kind == _DATE:
        return date.fromordinal(when // _DAY + _EPOCH_DAY)
    moment = _EPOCH + timedelta(microseconds=when)
    return moment.time() if kind == _TIME else moment


def column_letters(column: int) -> str:
    """1 is "A", 27 is "AA"."""
    letters = ""
    while column > 0:
        column, rest = divmod(column - 1, 26)
        letters = chr(ord("A") + rest) + letters
    return letters


def _place(key: Union[str, tuple[int, int]]) -> tuple[int, int]:
    """(row, column) of "B4" or (4, 2)."""
    row = column = 0
    if isinstance(key, str):
        match = re.fullmatch(r"([A-Za-z]{1,2})([0-9]{1,5})", key)
        if match:
            row = int(match[2])
            for letter in match[1].upper():
                column = column * 26 + ord(letter) - ord("A") + 1
    else:
        try:
            row, column = (int(operator.index(part)) for part in key)
        except (TypeError, ValueError):
            raise TypeError(f'a cell is asked for as "B4" or as row and column: {key!r}') from None
    if not (1 <= row <= 65536 and 1 <= column <= 256):
        raise KeyError(f"{key!r} is no cell of a worksheet (A1 to IV65536)")
    return row, column


class Cell:
    """One cell of a worksheet, a view of the sheet's columns. A place without a cell is blank."""

    __slots__ = ("_sheet", "_at", "row", "column")

    def __init__(self, sheet: "Sheet", at: Optional[int], row: int, column: int):
        self._sheet = sheet
        self._at = at  # in the sheet's columns, or None
        self.row = row  #: from 1
        self.column = column  #: from 1

    @property
    def address(self) -> str:
        """Such as "B4"."""
        return f"{column_letters(self.column)}{self.row}"

    @property
    def kind(self) -> str:
        """One of KINDS: what `value` is."""
        return KINDS[self._sheet.columns().kind[self._at]] if self._at is not None else "blank"

    @property
    def value(self) -> Value:
        """What the cell holds: a float, a str, a date, a time, a datetime, or None for a blank cell
        and for an error. A formula's is the stored result. A number that shows as a date or time
        beyond the years 1 to 9999 stays a float."""
        if self._at is None:
            return None
        columns = self._sheet.columns()
        kind = columns.kind[self._at]
        if kind == _NUMBER:
            return float(columns.number[self._at])
        if kind == _TEXT:
            return columns.string(self._at)
        return None if kind in (_BLANK, _ERROR) else _moment(kind, columns.when[self._at])

    @property
    def text(self) -> Optional[str]:
        """What the cell shows, in the notebook's own format; None where it shows nothing."""
        return self._sheet.columns().text(self._at) if self._at is not None else None

    @property
    def is_formula(self) -> bool:
        """Whether a formula computed it."""
        return self._at is not None and self._sheet.columns().is_formula(self._at)

    @property
    def format(self) -> Optional[Format]:
        """The number format, a Format; None without a cell."""
        return self._sheet._look(self._at)[0]

    @property
    def style(self) -> Optional[Style]:
        """Alignment, colours, borders and font, a Style; None without a cell."""
        return self._sheet._look(self._at)[1]

    def __repr__(self) -> str:
        return f"<Cell {self.address} {self.value!r}>"


class Sheet:
    """A worksheet. It is read when it is first asked for what stands in it, and kept as long as the
    Sheet lives, also after its notebook was closed. Reading raises Damaged for a worksheet that is
    not whole (with salvage=True it warns instead), LimitExceeded and Unreadable."""

    def __init__(self, source: "Source", index: int, name: str):
        self._source = source
        self._read: Optional[_core.Cells] = None
        self.index = index  #: its place in Notebook.sheets, from 0
        self.name = name

    @property
    def _cells(self) -> _core.Cells:
        if self._read is None:  # two threads at once read twice, and get the same
            cells = self._source.core.read(self.index, self._source.salvage)
            if cells.damage and not self._source.damage:
                warnings.warn(f"{self._source.name}: {self.name}: {cells.damage}", DamageWarning,
                              stacklevel=3)
            self._read = cells
        return self._read

    def columns(self) -> _core.Cells:
        """All cells as columns, in the file's order. `row`, `column` (both from 1), `kind` (see
        KINDS), `number` (the number or the serial of a date, else 0), `when` (microseconds: since
        1970-01-01 for dates and datetimes, since midnight for times, else 0) are read-only
        memoryviews, which numpy takes without a copy; `strings()` and `texts()` make lists of what
        text cells hold and of what all cells show, with None where there is nothing."""
        return self._cells

    @property
    def row_count(self) -> int:
        """The last row that holds something; 0 for a sheet without contents."""
        return self._cells.size[0]

    @property
    def column_count(self) -> int:
        """The last column that holds something; 0 for a sheet without contents."""
        return self._cells.size[1]

    @property
    def damage(self) -> Optional[str]:
        """Why the worksheet is not whole, or None."""
        return self._cells.damage

    def cells(self) -> Iterator[Cell]:
        """The cells in the file's order, blank ones with a style included. In a damaged file
        several may stand in one place: then the last one counts."""
        columns = self._cells
        for at, (row, column) in enumerate(zip(columns.row, columns.column)):
            yield Cell(self, at, row, column)

    def __getitem__(self, key: Union[str, tuple[int, int]]) -> Cell:
        """The cell of an address ("B4") or of a row and a column (4, 2), both from 1. KeyError for
        what is no place of a worksheet (A1 to IV65536)."""
        row, column = _place(key)
        return Cell(self, self._cells.find(row, column), row, column)

    def _values(self) -> list[Value]:
        """Every cell's value, in the order of columns()."""
        columns = self._cells
        kinds = columns.kind.tobytes()
        values: list[Value] = list(columns.number.tolist())
        if kinds.count(_NUMBER) == len(kinds):
            return values
        strings = columns.strings() if _TEXT in kinds else []
        when = columns.when
        for at, kind in enumerate(kinds):
            if kind == _NUMBER:
                continue
            if kind == _TEXT:
                values[at] = strings[at]
            else:
                values[at] = None if kind <= _ERROR else _moment(kind, when[at])
        return values

    def _check_grid(self) -> tuple[int, int]:
        """A single cell may stand in the last row and column: the whole grid has to fit too."""
        rows, columns = self._cells.size
        limit = self._source.memory_limit
        if limit and rows * columns * 8 > limit:
            raise LimitExceeded(f"{self._source.name}: {self.name}: {rows} rows of {columns} "
                                "columns do not fit the memory limit")
        return rows, columns

    def to_rows(self) -> list[list[Value]]:
        """A list of `row_count` lists of `column_count` values (see Cell.value)."""
        rows, columns = self._check_grid()
        grid: list[list[Value]] = [[None] * columns for _ in range(rows)]
        cells = self._cells
        for row, column, value in zip(cells.row, cells.column, self._values()):
            if row <= rows and column <= columns:
                grid[row - 1][column - 1] = value
        return grid

    def to_dict(self, header: Optional[int] = None) -> dict[str, list[Value]]:
        """Columns by name: lists of values from the row after `header` to the last one. `header` is
        the number of the row (from 1) whose texts name the columns; without one, and where it has
        none, the names are "A", "B" and so on. ValueError for what is no row."""
        names = self._column_names(header)
        grid = self.to_rows()
        return {name: [row[at] for row in grid[header or 0:]] for at, name in enumerate(names)}

    def _column_names(self, header: Optional[int]) -> list[str]:
        if header is not None and not 1 <= header <= 65536:
            raise ValueError(f"header is the number of a row, from 1: {header}")
        names: dict[str, int] = {}  # in their order
        for column in range(1, self.column_count + 1):
            base = (header and (self[header, column].text or "").strip()) or column_letters(column)
            name, number = base, 0
            while name in names:
                number += 1
                name = f"{base}.{number}"
            names[name] = column
        return list(names)

    def to_pandas(self, header: Optional[int] = None) -> "pandas.DataFrame":
        """A pandas.DataFrame with the sheet's row numbers as its index; `header` as in to_dict.
        Columns of numbers are float64 with NaN for blank cells and errors, columns of dates are
        datetime64, all others are objects (see Cell.value). ImportError without pandas."""
        from ._pandas import frame
        names = self._column_names(header)
        self._check_grid()
        return frame(self._cells, names, header or 0, _moment)

    @property
    def default_width(self) -> float:
        """The width in points of columns that `widths` does not name."""
        return self._cells.defaults[0] / 20

    @property
    def default_height(self) -> float:
        """The height in points of rows that `heights` does not name."""
        return self._cells.defaults[1] / 20

    @cached_property
    def widths(self) -> Sizes:
        """Widths in points by number of column, a Sizes."""
        return Sizes(self._cells.widths())

    @cached_property
    def heights(self) -> Sizes:
        """Heights in points by number of row, a Sizes."""
        return Sizes(self._cells.heights())

    @property
    def hidden_rows(self) -> Hidden:
        """The numbers of the hidden rows, a set."""
        return Hidden(self.heights)

    @property
    def hidden_columns(self) -> Hidden:
        """The numbers of the hidden columns, a set."""
        return Hidden(self.widths)

    @cached_property
    def _looks(self) -> list[tuple[Format, Style]]:
        return [look_of(raw, self._source.decode) for raw in self._cells.looks()]

    def _look(self, at: Optional[int]) -> tuple[Optional[Format], Optional[Style]]:
        return self._looks[self._cells.look[at]] if at is not None else (None, None)

    def __arrow_c_stream__(self, requested_schema: Any = None) -> Any:
        """The cells as an Arrow stream of one batch, for pandas, polars, pyarrow, DuckDB and others:
        sheet, row, column, kind, number, timestamp, time, string, text, is_formula. Any thread may
        read it, without Python. `requested_schema` is not followed."""
        return _core.arrow_stream([(self.name, self._cells)])

    def __repr__(self) -> str:
        return f"<Sheet {self.name!r}>"
