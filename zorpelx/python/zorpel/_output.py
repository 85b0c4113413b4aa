# SPDX-License-Identifier: MIT
"""Files written by the library: whole or not at all, and never over what should stay."""

from __future__ import annotations

import ctypes
import os
from ctypes import POINTER, byref, c_char_p, c_int, c_size_t, c_void_p, create_string_buffer
from typing import Any, Sequence, Tuple, Union

from ._library import MESSAGE_SIZE, OK, loaded
from .errors import FileError, error_for

Path = Union[str, "os.PathLike[str]"]
SYSTEM = 5


def _routine(name: str, *arguments: Any) -> Any:
    routine = getattr(loaded(), name)
    routine.argtypes = arguments
    return routine


def _check(status: int, message: Any) -> None:
    if status == OK:
        return
    sentence = message.value.decode(errors="replace")
    raise FileError(sentence) if status == SYSTEM else error_for(status, sentence)


def _name(path: Path) -> bytes:
    """A file of the name "-" is one: only the program takes that for standard output."""
    name = os.fsencode(path)
    return b"./-" if name == b"-" else name


def write_files(files: Sequence[Tuple[Path, bytes]], inputs: Sequence[Path] = ()) -> None:
    """Writes files together: each is the old one or the new one, whatever happens. Two that are
    one place, or one that is an input, are refused."""
    message = create_string_buffer(MESSAGE_SIZE)
    names = (c_char_p * len(files))(*(_name(path) for path, _ in files))
    read = (c_char_p * len(inputs))(*map(_name, inputs))
    outputs = c_void_p()
    lists = POINTER(c_char_p)
    opening = _routine(
        "zorpelx_outputs_open", POINTER(c_void_p), lists, c_int, lists, c_int, c_char_p
    )
    status = opening(byref(outputs), names, len(files), read, len(inputs), message)
    _check(status, message)
    try:
        contents = (c_char_p * len(files))(*(content for _, content in files))
        sizes = (c_size_t * len(files))(*(len(content) for _, content in files))
        writing = _routine(
            "zorpelx_outputs_write", c_void_p, lists, POINTER(c_size_t), c_char_p
        )
        _check(writing(outputs, contents, sizes, message), message)
    finally:
        closing = loaded().zorpelx_outputs_close
        closing.argtypes, closing.restype = [c_void_p], None
        closing(outputs)
