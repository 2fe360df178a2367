# SPDX-License-Identifier: MIT
"""Why a notebook cannot be read: one class for each reason."""
import errno


class NotebookError(Exception):
    """The base of all errors about a notebook; its text is "NAME: why"."""

    reason = ""  #: the reason's name in logs and counters, such as "not-a-notebook"


class Unreadable(NotebookError, OSError):
    """The file cannot be opened or read: no permission, a folder, an I/O error; Missing is one."""

    reason = "unreadable"


class Missing(Unreadable, FileNotFoundError):
    """There is no such file."""

    errno = errno.ENOENT


class Empty(NotebookError):
    """The file has no bytes."""

    reason = "empty"


class NotANotebook(NotebookError):
    """Some other kind of file; the text names the kind where it can be told."""

    reason = "not-a-notebook"


class Protected(NotebookError):
    """A notebook that is marked as protected by a password."""

    reason = "protected"


class Damaged(NotebookError):
    """A notebook that is cut short or whose records cannot be followed. What is left of it can often
    be read with open(..., salvage=True)."""

    reason = "damaged"


class LimitExceeded(NotebookError, MemoryError):
    """memory_limit, time_limit or the machine's memory is not enough for what was asked, or a
    worksheet lists more than one can have."""

    reason = "memory-limit"


class LibraryMissing(NotebookError):
    """The compound-document library was not found (it is part of the package as built here)."""

    reason = "library-missing"


class DamageWarning(UserWarning):
    """A damaged notebook was opened with salvage=True, or any that is likely to be damaged; the text
    says what is wrong."""


BY_REASON = {error.reason: error for error in NotebookError.__subclasses__()}
