# SPDX-License-Identifier: MIT
"""Reading and writing by the library: its records and routines, as declared in zorpelx_files.h."""

from __future__ import annotations

import ctypes
import functools
import os
import threading
from array import array
from ctypes import POINTER, c_char_p, c_double, c_int, c_int64, c_size_t, c_void_p
from itertools import accumulate
from typing import Any, Callable, List, Optional, Tuple, Union

from . import _library as lib
from .errors import Error, FileError, InputError, LibraryError, error_for

SYSTEM = 5
LINES = {"refuse": 0, "whole": 1, "pieces": 2}


class CReadOptions(ctypes.Structure):
    _fields_ = [
        ("size", c_size_t),
        ("from_", c_int),
        ("lines", c_int),
        ("force", c_int),
        ("strict", c_int),
        ("notes", c_int),
        ("listed", c_int),
        ("timeout", c_double),
        ("memory", c_size_t),
        ("cancel", lib.int_p),
        ("format", c_char_p),
        ("model", c_char_p),
        ("areas", c_char_p),
        ("skip_nets", c_char_p),
        ("top_module", c_char_p),
    ]


class CFinding(ctypes.Structure):
    _fields_ = [
        ("rule", c_char_p),
        ("name", c_char_p),
        ("text", c_char_p),
        ("severity", c_int),
        ("line", c_int64),
        ("column", c_int64),
    ]


_options_p, _file_p = POINTER(CReadOptions), POINTER(c_void_p)
_text_p = POINTER(c_void_p)
_starts_p = POINTER(c_int64)
_ROUTINES = {
    "zorpelx_read_options_init": (c_int, [_options_p, c_size_t]),
    "zorpelx_read_hypergraph": (c_int, [c_char_p, _options_p, _file_p, c_char_p]),
    "zorpelx_lint_hypergraph": (c_int, [c_char_p, _options_p, _file_p, c_char_p]),
    "zorpelx_read_partition": (c_int, [c_char_p, c_int, _options_p, _file_p, c_char_p]),
    "zorpelx_read_named_partition": (
        c_int,
        [c_char_p, c_int, c_char_p, _starts_p, _options_p, _file_p, c_char_p],
    ),
    "zorpelx_read_named_numbers": (
        c_int,
        [c_char_p, c_int, c_char_p, _starts_p, _options_p, _file_p, c_char_p],
    ),
    "zorpelx_read_numbers": (c_int, [c_char_p, _options_p, _file_p, c_char_p]),
    "zorpelx_file_hypergraph": (POINTER(lib.CHypergraph), [c_void_p]),
    "zorpelx_file_format": (c_char_p, [c_void_p]),
    "zorpelx_file_names": (c_void_p, [c_void_p, c_int, POINTER(POINTER(c_int64))]),
    "zorpelx_file_fixed": (lib.int_p, [c_void_p]),
    "zorpelx_file_groups": (lib.int_p, [c_void_p]),
    "zorpelx_file_numbers": (lib.int_p, [c_void_p, POINTER(c_size_t)]),
    "zorpelx_file_count": (c_int64, [c_void_p, c_int]),
    "zorpelx_file_findings": (POINTER(CFinding), [c_void_p, POINTER(c_size_t)]),
    "zorpelx_file_suits_zorpel": (c_int, [c_void_p]),
    "zorpelx_file_free": (None, [c_void_p]),
    "zorpelx_hypergraph_text": (
        c_int,
        [POINTER(lib.CHypergraph), _text_p, POINTER(c_size_t), c_char_p],
    ),
    "zorpelx_numbers_text": (c_int, [lib.int_p, c_size_t, _text_p, POINTER(c_size_t), c_char_p]),
    "zorpelx_text_free": (None, [c_void_p]),
}


@functools.lru_cache(maxsize=None)
def loaded() -> ctypes.CDLL:
    """The library, with its routines for files declared."""
    library = lib.loaded()
    for name, (result, arguments) in _ROUTINES.items():
        routine = getattr(library, name, None)
        if routine is None:
            raise LibraryError(f"{lib.NAME} has no {name}(): it is of another version.")
        routine.argtypes = arguments
        routine.restype = result
    return library


def fault_of(status: int, message: bytes) -> Error:
    """The exception for a status and a sentence about a file."""
    sentence = message.decode(errors="replace")
    return FileError(sentence) if status == SYSTEM else error_for(status, sentence)


def name_of(path: Union[str, "os.PathLike[str]"]) -> bytes:
    """The path as the system has it. "-" is a file here, not standard input."""
    name = os.fsencode(path)
    if b"\0" in name:
        raise InputError(f"The path {os.fspath(path)!r} holds a zero byte.", 2)
    return b"./-" if name == b"-" else name


class OpenFile:
    """What the library read; to be used in a with statement, which frees it."""

    def __init__(self, handle: Any) -> None:
        self.handle = handle

    def __enter__(self) -> OpenFile:
        return self

    def __exit__(self, *_exception: Any) -> None:
        loaded().zorpelx_file_free(self.handle)

    def hypergraph(self) -> Optional[Any]:
        """The record of the library, as long as the file is open."""
        found = loaded().zorpelx_file_hypergraph(self.handle)
        return found[0] if found else None

    def format(self) -> str:
        """The name of the format that the file was read by."""
        return str((loaded().zorpelx_file_format(self.handle) or b"").decode())

    def names(self, of: int, count: int) -> Optional[List[str]]:
        """The names of vertices (0) or hyperedges (1); None if they have but numbers."""
        start = POINTER(c_int64)()
        text = loaded().zorpelx_file_names(self.handle, of, ctypes.byref(start))
        if text is None:
            return None
        ends = start[: count + 1]
        whole = ctypes.string_at(text, ends[count])
        return [whole[a:b].decode(errors="replace") for a, b in zip(ends, ends[1:])]

    def entries(self, kind: str, count: int) -> Optional[array[int]]:
        """What the file says of each vertex: fixed or groups; None if nothing."""
        found = getattr(loaded(), f"zorpelx_file_{kind}")(self.handle)
        return copy_of(found, count) if found else None

    def numbers(self) -> array[int]:
        count = c_size_t()
        found = loaded().zorpelx_file_numbers(self.handle, ctypes.byref(count))
        return copy_of(found, count.value)

    def count(self, severity: int) -> int:
        """How many findings of this severity or more there are."""
        return int(loaded().zorpelx_file_count(self.handle, severity))

    def findings(self) -> List[CFinding]:
        count = c_size_t()
        found = loaded().zorpelx_file_findings(self.handle, ctypes.byref(count))
        return [found[i] for i in range(count.value)]

    def suits_zorpel(self) -> Optional[bool]:
        suits = loaded().zorpelx_file_suits_zorpel(self.handle)
        return None if suits < 0 else bool(suits)


def copy_of(ints: Any, count: int) -> array[int]:
    """A copy of `count` C ints."""
    values = array("i")
    if count > 0:
        values.frombytes(ctypes.string_at(ints, count * ctypes.sizeof(c_int)))
    return values


def read_options(
    from_: int,
    lines: str,
    force: bool,
    strict: bool,
    timeout: Optional[float],
    memory: Optional[int],
) -> CReadOptions:
    options = CReadOptions()
    loaded().zorpelx_read_options_init(ctypes.byref(options), ctypes.sizeof(options))
    if lines not in LINES:
        raise InputError(f"lines is {lines!r}; it should be one of {', '.join(LINES)}.", 2)
    try:
        options.from_, options.lines = from_, LINES[lines]
        options.force, options.strict = bool(force), bool(strict)
        options.timeout, options.memory = timeout or 0, (memory or 0) << 20
    except TypeError as reason:
        raise InputError(f"from_, timeout or memory is no number: {reason}.", 2) from None
    return options


def set_format(options: CReadOptions, **words: Optional[str]) -> None:
    """Sets the options that are texts: format, model, areas, skip_nets, top_module."""
    for name, value in words.items():
        if value is None:
            continue
        if not isinstance(value, (str, os.PathLike)):
            raise InputError(f"{name} is {value!r}; it should be a text.", 2)
        setattr(options, name, os.fsencode(value))


def packed_names(names: Optional[List[str]]) -> Tuple[Optional[bytes], Any]:
    """Names one behind another, and where each begins; for the library."""
    if names is None:
        return None, None
    whole = [str(name).encode(errors="surrogatepass") for name in names]
    starts = accumulate(map(len, whole), initial=0)
    return b"".join(whole), (c_int64 * (len(whole) + 1))(*starts)


def read_by(
    routine: str, path: Union[str, "os.PathLike[str]"], options: CReadOptions, *more: Any
) -> OpenFile:
    """Reads a file in a thread of its own, so that Ctrl-C ends it, on a pipe too."""
    cancel = c_int(0)
    options.cancel = ctypes.pointer(cancel)
    handle, message = c_void_p(), ctypes.create_string_buffer(lib.MESSAGE_SIZE)
    status: List[int] = []
    call: Callable[..., int] = getattr(loaded(), routine)
    name = name_of(path)

    def work() -> None:
        file, record = ctypes.byref(handle), ctypes.byref(options)
        status.append(call(name, *more, record, file, message))

    thread = threading.Thread(target=work)
    thread.start()
    try:
        thread.join()
    except BaseException:
        cancel.value = 1
        thread.join()
        if handle:
            loaded().zorpelx_file_free(handle)
        raise
    if status[0] != lib.OK:
        raise fault_of(status[0], message.value)
    return OpenFile(handle)


def text_by(routine: str, *arguments: Any) -> bytes:
    """The text of a file, by a routine of the library."""
    text, size = c_void_p(), c_size_t()
    message = ctypes.create_string_buffer(lib.MESSAGE_SIZE)
    call: Callable[..., int] = getattr(loaded(), routine)
    status = call(*arguments, ctypes.byref(text), ctypes.byref(size), message)
    if status != lib.OK:
        raise error_for(status, message.value.decode())
    made = ctypes.string_at(text, size.value)
    loaded().zorpelx_text_free(text)
    return made
