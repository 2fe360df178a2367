# SPDX-License-Identifier: MIT
"""Read Quattro Pro for Windows notebooks (.wb1, .wb2, .wb3).

    import qpsreader

    with qpsreader.open("budget.wb2") as notebook:
        table = notebook.sheets["Budget"].to_pandas(header=3)

What stands in a file is delivered as it stands: stored results of formulas are shown, never
computed again. Rows and columns count from 1, sizes are in points, colours are 0xRRGGBB.
"""
from ._core import version as __version__
from ._errors import (Damaged, DamageWarning, Empty, LibraryMissing, LimitExceeded, Missing,
                      NotANotebook, NotebookError, Protected, Unreadable)
from ._notebook import Info, Notebook, Sheets, open
from ._sheet import KINDS, Cell, Sheet
from ._sizes import Hidden, Sizes
from ._style import Border, Font, Format, Style

__all__ = [
    "KINDS", "Border", "Cell", "Damaged", "DamageWarning", "Empty", "Font", "Format", "Hidden",
    "Info", "LibraryMissing", "LimitExceeded", "Missing", "NotANotebook", "Notebook",
    "NotebookError", "Protected", "Sheet", "Sheets", "Sizes", "Style", "Unreadable", "open",
]
