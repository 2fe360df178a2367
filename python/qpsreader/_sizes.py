# SPDX-License-Identifier: MIT
"""Sizes of columns and rows, kept as the runs in which the file gives them: a few bytes of a file
may speak of 65,536 rows."""
from collections.abc import Mapping, Set
from functools import cached_property
from typing import Any, Iterable, Iterator

_UNITS_A_POINT = 20


class Sizes(Mapping[int, float]):
    """Sizes in points by number of column or row (from 1), of those that are not the default's.
    A size of 0.0 is hidden. `runs` has the same as (range, points)."""

    def __init__(self, runs: Iterable[tuple[int, int, int]]):
        self.runs = tuple((range(first, last + 1), size / _UNITS_A_POINT)
                          for first, last, size in runs)

    @cached_property
    def _sizes(self) -> dict[int, float]:
        return {number: points for run, points in self.runs for number in run}

    def __getitem__(self, number: int) -> float:
        return self._sizes[number]

    def __iter__(self) -> Iterator[int]:
        return iter(self._sizes)

    def __len__(self) -> int:
        return len(self._sizes)

    def __repr__(self) -> str:
        shown = ", ".join(f"{run.start}-{run[-1]}: {points}" for run, points in self.runs)
        return f"Sizes({shown})"


class Hidden(Set[int]):
    """The numbers of the hidden columns or rows."""

    def __init__(self, sizes: Sizes):
        self._sizes = sizes

    def __contains__(self, number: Any) -> bool:
        return self._sizes.get(number) == 0

    def __iter__(self) -> Iterator[int]:
        return (number for number in self._sizes if number in self)

    def __len__(self) -> int:
        return sum(1 for _ in self)

    def __repr__(self) -> str:
        return f"Hidden({list(self)})"

    @classmethod
    def _from_iterable(cls, numbers: Iterable[Any]) -> set[Any]:  # the result of `&`, `|` and the like
        return set(numbers)
