# SPDX-License-Identifier: MIT
"""Exceptions. Each carries a sentence that names the place at fault."""

from __future__ import annotations


class Error(Exception):
    """A call failed: the engine stopped, was killed, or the system refused a resource."""

    def __init__(self, sentence: str, status: int = 1) -> None:
        super().__init__(sentence)
        self.status = status


class InputError(Error, ValueError):
    """An option, a hypergraph, a partition or a file is not what it should be."""

    def __init__(self, sentence: str, status: int = 3) -> None:
        super().__init__(sentence, status)


class OutOfMemoryError(Error, MemoryError):
    """Memory ran out, or the cap was reached."""


class DeadlineError(Error, TimeoutError):
    """The deadline came before any start had finished."""


class CancelledError(Error):
    """The call was cancelled before any start had finished."""


class FileError(Error, OSError):
    """A file cannot be opened, read or written."""

    def __init__(self, sentence: str) -> None:
        Error.__init__(self, sentence, 5)


class LibraryError(Error, OSError):
    """The library libzorpelx is missing or of another version."""

    def __init__(self, sentence: str) -> None:
        Error.__init__(self, sentence, 5)


_BY_STATUS = {
    2: InputError,
    3: InputError,
    6: OutOfMemoryError,
    124: DeadlineError,
    130: CancelledError,
}


def error_for(status: int, sentence: str) -> Error:
    """The exception for a status of the library."""
    return _BY_STATUS.get(status, Error)(sentence, status)
