# SPDX-License-Identifier: MIT
"""How a cell looks."""
from typing import Any, Callable, NamedTuple, Optional

_HORIZONTAL = ("general", "left", "centre", "right", "centreAcross")
_VERTICAL = ("default", "centre", "bottom", "top")
_LINES = {6: "thick", 8: "double"}  # 0 is none, 5 and all others are thin


class Format(NamedTuple):
    """A number format. Codes 16, 32, 48, 64, 80, 96 and 112 are families with 0 to 15 `decimals`;
    from 113 on they are the notebook's own, whose `text` this is."""

    code: int
    decimals: int
    text: Optional[str]
    shows_date: bool
    shows_time: bool


class Font(NamedTuple):
    """A font; `size` is in points."""

    name: str
    size: int
    bold: bool
    italic: bool
    underline: bool
    strike_out: bool


class Border(NamedTuple):
    """A line at one side of a cell: "thin", "thick" or "double", and its colour (0xRRGGBB)."""

    line: str
    colour: Optional[int]


class Style(NamedTuple):
    """A cell's look. `name` is the named style's that it is based on, or "". Colours are
    0xRRGGBB, or None for none. `borders` are those at the left, top, right and bottom; None where
    there is none."""

    name: str
    horizontal: str
    vertical: str
    fill_colour: Optional[int]
    text_colour: Optional[int]
    borders: tuple[Optional[Border], Optional[Border], Optional[Border], Optional[Border]]
    font: Optional[Font]


def _colour(red_lowest: Optional[int]) -> Optional[int]:
    if red_lowest is None:
        return None
    return int.from_bytes((red_lowest & 0xFFFFFF).to_bytes(3, "little"), "big")


def _border(line: int, colour: Optional[int]) -> Optional[Border]:
    return Border(_LINES.get(line, "thin"), _colour(colour)) if line else None


def look_of(raw: Any, decode: Callable[[bytes], str]) -> tuple[Format, Style]:
    """(Format, Style) of what the core says of a look."""
    form, (name, horizontal, vertical, fill, text, borders, font) = raw
    left, top, right, bottom = (_border(*border) for border in borders)
    return Format(*form), Style(
        name, _HORIZONTAL[horizontal], _VERTICAL[vertical], _colour(fill), _colour(text),
        (left, top, right, bottom), Font(decode(font[0]), *font[1:]) if font else None)
