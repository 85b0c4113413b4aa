# SPDX-License-Identifier: MIT
"""Vertices chosen by patterns of their names, as the program's --fix and --together do."""

from __future__ import annotations

import operator
import re
from array import array
from typing import Any, List, Mapping, Pattern, Set, Tuple

from .errors import InputError
from .hypergraph import Hypergraph

_LEAST, _MOST = -(2**31), 2**31 - 1


def _set(pattern: bytes, place: int) -> Tuple[bytes, int]:
    """The set that begins at place, as an expression, and where it ends; -1 if it does not."""
    at = place + 1
    negated = pattern[at : at + 1] in (b"!", b"^")
    begin = at = at + negated
    codes: Set[int] = set()
    while at < len(pattern):
        if pattern[at : at + 1] == b"]" and at > begin:
            members = b"".join(b"\\x%02x" % code for code in sorted(codes))
            if not members:
                return (b"." if negated else b"(?!)"), at + 1
            return b"[" + b"^" * negated + members + b"]", at + 1
        first = last = pattern[at]
        if pattern[at + 1 : at + 2] == b"-" and pattern[at + 2 : at + 3] not in (b"", b"]"):
            at += 2
            last = pattern[at]
        codes.update(range(first, last + 1))
        at += 1
    return b"", -1


def expression(pattern: bytes) -> Pattern[bytes]:
    """A pattern as a regular expression: * stands for any characters, also none, ? for one, [...]
    for one of a set; a backslash takes the next one as it is. A set without an end is none."""
    text, at = b"", 0
    while at < len(pattern):
        piece, behind = re.escape(pattern[at : at + 1]), at + 1
        if pattern[at : at + 1] == b"*":
            piece = b".*"
        elif pattern[at : at + 1] == b"?":
            piece = b"."
        elif pattern[at : at + 1] == b"[":
            found, end = _set(pattern, at)
            if end > 0:
                piece, behind = found, end
        elif pattern[at : at + 1] == b"\\" and behind < len(pattern):
            piece, behind = re.escape(pattern[behind : behind + 1]), behind + 1
        text += piece
        at = behind
    return re.compile(text, re.DOTALL)


def _number(value: Any, name: str, pattern: Any) -> int:
    try:
        number = operator.index(value)
    except TypeError:
        raise InputError(f"{name}[{pattern!r}] is {value!r} instead of an integer.") from None
    if not _LEAST <= number <= _MOST:
        raise InputError(f"{name}[{pattern!r}] is {number}, which does not fit 32 bits.")
    return number


def _labels(graph: Hypergraph) -> List[bytes]:
    """The names of the vertices; where there are none, their numbers from 0."""
    if graph.vertex_names is None:
        return [b"%d" % vertex for vertex in range(graph.nvtxs)]
    return [str(name).encode(errors="surrogateescape") for name in graph.vertex_names]


def by_name(choice: Mapping[Any, Any], name: str, graph: Hypergraph) -> "array[int]":
    """A number for each vertex, -1 where no pattern fits; of several that fit, the last counts. A
    key that is an integer is the vertex of that number."""
    numbers = array("i", [-1]) * graph.nvtxs
    labels: List[bytes] = []
    for pattern, value in choice.items():
        number = _number(value, name, pattern)
        if isinstance(pattern, str):
            labels = labels or _labels(graph)
            fits = expression(pattern.encode(errors="surrogateescape")).fullmatch
            fitting = [vertex for vertex, label in enumerate(labels) if fits(label)]
            if not fitting:
                raise InputError(f"{name}: no vertex has a name like {pattern!r}.")
        else:
            fitting = [_number(pattern, name, pattern)]
            if not 0 <= fitting[0] < graph.nvtxs:
                raise InputError(f"{name}: there is no vertex {fitting[0]}, but {graph.nvtxs} from 0.")
        for vertex in fitting:
            numbers[vertex] = number
    return numbers
