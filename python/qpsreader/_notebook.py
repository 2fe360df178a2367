# SPDX-License-Identifier: MIT
"""open and Notebook."""
import codecs
import os
import sys
import warnings
from collections.abc import Sequence
from functools import cached_property, lru_cache
from typing import Any, NamedTuple, Optional, Union, overload
from weakref import WeakValueDictionary

from . import _core
from ._errors import Damaged, DamageWarning, Missing, Unreadable
from ._sheet import Sheet

# Tighter than the tool's: whoever opens a million files cannot look at each. A cell takes some 100
# bytes.
_MEMORY_LIMIT = 512 << 20
_TIME_LIMIT = 20.0
_MOST_SECONDS = 1e9

PathOrBytes = Union[str, "os.PathLike[str]", bytes, bytearray, memoryview]


def open(source: PathOrBytes, encoding: str = "cp1252", memory_limit: int = _MEMORY_LIMIT,
         salvage: bool = False, time_limit: float = _TIME_LIMIT) -> "Notebook":
    """Opens a notebook and lists its worksheets.

    source: a path (a str or an os.PathLike), or the notebook itself (bytes, a bytearray, a
        memoryview and the like).
    encoding: a codec of Python's for the texts; the file does not say which it has. Bytes that the
        codec does not know become U+FFFD. LookupError for an unknown codec, ValueError for one in
        which ASCII does not stand for itself.
    memory_limit: the most bytes that the notebook and the sheets read from it may hold at a time,
        and that a grid of values may take; 0 is no limit. LimitExceeded beyond it.
    salvage: a damaged notebook raises Damaged; with True it gives what is left of it, also behind
        the damage, with a DamageWarning. One that may be damaged gives the warning in any case.
    time_limit: the most seconds of the processor that reading all of its sheets may take, each for
        the first time; 0 is no limit. LimitExceeded beyond it.

    Raises Unreadable, Empty, NotANotebook, Protected, Damaged, LimitExceeded or LibraryMissing, all
    of them NotebookError. Threads may share a notebook, one call at a time; different notebooks are
    read at the same time, without the GIL.
    """
    return Notebook(source, encoding, memory_limit, salvage, time_limit)


class Info(NamedTuple):
    """What the records before the first worksheet say. `kind` in words, `mime_type`, the name of the
    stream in a compound document or "", the first value of the first record (0x1001, 0x1002, ...),
    and how many there are of each."""

    kind: str
    mime_type: str
    container_stream: str
    format_version: int
    font_count: int
    style_count: int
    named_style_count: int
    user_format_count: int


class Source:
    """What a notebook and its sheets share, so that they need not hold each other."""

    name: str
    encoding: str
    memory_limit: int
    salvage: bool
    core: _core.Notebook
    damage: Optional[str]

    def __init__(self, source: PathOrBytes, encoding: str, memory_limit: int, salvage: bool,
                 time_limit: float):
        if not 0 <= memory_limit <= sys.maxsize:
            raise ValueError("memory_limit is a number of bytes, or 0 for none")
        if not 0 <= time_limit <= _MOST_SECONDS:
            raise ValueError("time_limit is a number of seconds, or 0 for none")
        name, content = _name_and_content(source)
        characters, multibyte = _characters(encoding)
        self.name = os.fsdecode(name)
        self.encoding = encoding
        self.memory_limit = memory_limit
        self.salvage = salvage
        try:
            self.core = _core.Notebook(name, content, encoding, multibyte, characters, memory_limit,
                                       time_limit, salvage)
        except Unreadable as error:
            if content is None and not os.path.exists(name):
                raise Missing(*error.args) from None
            raise
        self.damage = self.core.damage()

    def __reduce__(self) -> str:
        raise TypeError("a notebook and its sheets cannot be pickled: open the file where they are "
                        "needed, or send to_rows(), to_dict() or to_pandas()")

    def decode(self, raw: bytes) -> str:
        return raw.decode(self.encoding, "replace")


class Notebook:
    """An open notebook, from open(). A context manager; closing it gives back its memory, and the
    sheets that were read and are held stay."""

    def __init__(self, opened: PathOrBytes, encoding: str, memory_limit: int, salvage: bool,
                 time_limit: float):
        self._source = source = Source(opened, encoding, memory_limit, salvage, time_limit)
        self.name = source.name  #: the file's name, or "<bytes>"
        self.damage = source.damage  #: why the notebook is not whole, or None
        if self.damage:
            message = f"{self.name}: {self.damage}"
            if not salvage:
                raise Damaged(message)
            warnings.warn(message, DamageWarning, stacklevel=3)
        #: what makes a notebook without such damage likely to be damaged all the same, or None
        self.suspicion = source.core.suspicion()
        if self.suspicion:
            warnings.warn(f"{self.name}: it may be damaged: {self.suspicion}", DamageWarning,
                          stacklevel=3)
        self.info = Info(*source.core.facts())
        self.sheets = Sheets(source, source.core.names())

    @cached_property
    def texts(self) -> tuple[str, ...]:
        """The notebook's own texts beside its cells, such as headers and footers: a tuple of str."""
        return tuple(self._source.core.texts())

    @property
    def memory_in_use(self) -> int:
        """What the notebook and its worksheets hold at the moment, in bytes."""
        return self._source.core.memory_in_use()

    def close(self) -> None:
        """Gives back the memory and the file. What needs them afterwards raises ValueError."""
        self._source.core.close()
        self.sheets._forget()

    def __enter__(self) -> "Notebook":
        return self

    def __exit__(self, *_: Any) -> None:
        self.close()

    def __arrow_c_stream__(self, requested_schema: Any = None) -> Any:
        """The cells of all worksheets as an Arrow stream, a batch for each sheet that has any
        (columns as in Sheet.__arrow_c_stream__). All sheets are read at this call. Raises as Sheet
        does."""
        return _core.arrow_stream([(sheet.name, sheet.columns()) for sheet in self.sheets])

    def __repr__(self) -> str:
        return f"<Notebook {self.name!r}>"


class Sheets(Sequence[Sheet]):
    """The worksheets in the file's order, by number (from 0) or by name. Of several with one name
    the first is found. A sheet that nobody holds is read again when it is asked for, but the one
    that was asked for last is kept."""

    def __init__(self, source: Source, names: list[str]):
        self._source = source
        self._names = names
        self._alive: WeakValueDictionary[int, Sheet] = WeakValueDictionary()
        self._last: Optional[Sheet] = None

    @property
    def names(self) -> list[str]:
        """The names, in the file's order."""
        return list(self._names)

    def __len__(self) -> int:
        return len(self._names)

    @overload
    def __getitem__(self, key: Union[int, str]) -> Sheet: ...

    @overload
    def __getitem__(self, key: slice) -> list[Sheet]: ...

    def __getitem__(self, key: Union[int, str, slice]) -> Union[Sheet, list[Sheet]]:
        if isinstance(key, slice):
            return [self[at] for at in range(*key.indices(len(self)))]
        if isinstance(key, str):
            if key not in self._names:
                raise KeyError(key)
            key = self._names.index(key)
        index = range(len(self))[key]
        sheet = self._alive.get(index)
        if sheet is None:
            sheet = self._alive[index] = Sheet(self._source, index, self._names[index])
        self._last = sheet
        return sheet

    def __contains__(self, name: Any) -> bool:
        return name in self._names

    def _forget(self) -> None:
        self._last = None

    def __repr__(self) -> str:
        return f"<Sheets {self._names}>"


def _name_and_content(source: PathOrBytes) -> tuple[bytes, Optional[bytes]]:
    if isinstance(source, (str, os.PathLike)):
        return os.fsencode(source), None
    if isinstance(source, bytes):
        return b"<bytes>", source
    try:  # a copy: what others may change must not change while the reader reads
        return b"<bytes>", bytes(memoryview(source))
    except TypeError:
        raise TypeError(f"open() takes a path or the bytes of a notebook, not {source!r}") from None


@lru_cache(maxsize=16)
def _characters(encoding: str) -> tuple[list[str], bool]:
    """What each byte means by itself, and whether some begin a longer sequence."""
    b"A".decode(encoding)  # LookupError for what is no text encoding
    make = codecs.getincrementaldecoder(encoding)
    characters = [make("replace").decode(bytes([byte])) for byte in range(256)]
    if any(characters[byte] != chr(byte) for byte in range(128)):
        raise ValueError(f"the encoding {encoding} does not contain ASCII")
    return characters, "" in characters
