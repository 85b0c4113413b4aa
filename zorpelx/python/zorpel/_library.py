# SPDX-License-Identifier: MIT
"""The C library: its records, as declared in zorpelx.h, and where to find it."""

from __future__ import annotations

import ctypes
import functools
import os
from ctypes import POINTER, c_char, c_char_p, c_double, c_int, c_int64, c_size_t, c_void_p
from pathlib import Path
from typing import Any

from .errors import LibraryError

NAME = "libzorpelx.so.1"
MESSAGE_SIZE = 512
OK, TIMEOUT, CANCELLED = 0, 124, 130
int_p = POINTER(c_int)
int64_p = POINTER(c_int64)
double_p = POINTER(c_double)


class CHypergraph(ctypes.Structure):
    _fields_ = [
        ("nvtxs", c_int),
        ("nhedges", c_int),
        ("eptr", int_p),
        ("eind", int_p),
        ("vwgts", int_p),
        ("hewgts", int_p),
    ]


class CProgress(ctypes.Structure):
    _fields_ = [
        ("size", c_size_t),
        ("starts", c_int),
        ("running", c_int),
        ("finished", c_int),
        ("failed", c_int),
        ("runs", c_int64),
        ("allruns", c_int64),
        ("levels", c_int64),
        ("level_vtxs", c_int),
        ("run_cut", c_int),
        ("cut", c_int64),
        ("seconds", c_double),
        ("objective", c_int64),
        ("jobs", c_int),
        ("alljobs", c_int),
        ("step", c_char_p),
    ]


ProgressFunction = ctypes.CFUNCTYPE(c_int, c_void_p, POINTER(CProgress))
TraceFunction: Any = ctypes.CFUNCTYPE(None, c_void_p, c_int, POINTER(c_char), c_size_t)
NO_TRACES = TraceFunction()  # a null pointer


class COptions(ctypes.Structure):
    _fields_ = [
        ("size", c_size_t),
        ("nparts", c_int),
        ("ubfactor", c_int),
        ("nruns", c_int),
        ("ctype", c_int),
        ("rtype", c_int),
        ("vcycle", c_int),
        ("reconst", c_int),
        ("polish", c_int),
        ("trace", c_int),
        ("seed", c_int),
        ("starts", c_int),
        ("jobs", c_int),
        ("timeout", c_double),
        ("memory", c_size_t),
        ("fixed", int_p),
        ("cancel", int_p),
        ("on_progress", ProgressFunction),
        ("on_trace", TraceFunction),
        ("user", c_void_p),
        ("threads", c_int),
        ("epsilon", c_double),
        ("least", c_double),
        ("capacities", double_p),
        ("objective", c_int),
        ("preset", c_int),
        ("time", c_double),
        ("start", int_p),
        ("keep_price", c_int),
        ("groups", int_p),
        ("shared", c_int),
        ("channel", c_void_p),
        ("channel_user", c_void_p),
    ]


#: The kinds of steps of a search, in the order of zorpelx_result.steps.
STEPS = ("packing", "start", "member", "combination", "exact")


class CStep(ctypes.Structure):
    _fields_ = [("made", c_int), ("better", c_int), ("gained", c_int64), ("seconds", c_double)]


class CResult(ctypes.Structure):
    _fields_ = [
        ("size", c_size_t),
        ("status", c_int),
        ("finished", c_int),
        ("failed", c_int),
        ("seed", c_int),
        ("valid", c_int),
        ("dropped", c_int),
        ("cut", c_int64),
        ("soed", c_int64),
        ("imbalance", c_double),
        ("seconds", c_double),
        ("message", c_char * MESSAGE_SIZE),
        ("connectivity", c_int64),
        ("moved", c_int64),
        ("jobs", c_int),
        ("alljobs", c_int),
        ("pool", c_int),
        ("generations", c_int),
        ("steps", CStep * len(STEPS)),
    ]


class CQuality(ctypes.Structure):
    _fields_ = [
        ("size", c_size_t),
        ("cut_hedges", c_int),
        ("empty_parts", c_int),
        ("cut", c_int64),
        ("soed", c_int64),
        ("connectivity", c_int64),
        ("total_weight", c_int64),
        ("lightest_part", c_int64),
        ("heaviest_part", c_int64),
        ("absorption", c_double),
        ("scaled_cost", c_double),
        ("imbalance", c_double),
    ]


class CBin(ctypes.Structure):
    _fields_ = [("least", c_int64), ("most", c_int64), ("count", c_int64)]


class CSpread(ctypes.Structure):
    _fields_ = [
        ("least", c_int64),
        ("most", c_int64),
        ("average", c_double),
        ("nbins", c_int),
        ("bins", CBin * 40),
    ]


class CStats(ctypes.Structure):
    _fields_ = [
        ("size", c_size_t),
        ("pins", c_int64),
        ("vertex_weight", c_int64),
        ("hyperedge_weight", c_int64),
        ("components", c_int64),
        ("largest_component", c_int64),
        ("islands", c_int64),
        ("parked", c_int64),
        ("large_hyperedges", c_int64),
        ("single_vertex_hyperedges", c_int64),
        ("memory", c_int64),
        ("sizes", CSpread),
        ("degrees", CSpread),
    ]


_ROUTINES = {
    "zorpelx_options_init": [POINTER(COptions), c_size_t],
    "zorpelx_result_init": [POINTER(CResult), c_size_t],
    "zorpelx_quality_init": [POINTER(CQuality), c_size_t],
    "zorpelx_stats_init": [POINTER(CStats), c_size_t],
    "zorpelx_describe": [POINTER(CHypergraph), POINTER(CStats), c_char_p],
    "zorpelx_partition": [POINTER(CHypergraph), POINTER(COptions), int_p, POINTER(CResult)],
    "zorpelx_evaluate": [
        POINTER(CHypergraph),
        c_int,
        int_p,
        POINTER(CQuality),
        int64_p,
        int64_p,
        c_char_p,
    ],
    "zorpelx_cut_hyperedges": [POINTER(CHypergraph), c_int, int_p, int_p, int_p, c_char_p],
    "zorpelx_cut_matrix": [POINTER(CHypergraph), c_int, int_p, int64_p, c_char_p],
    "zorpelx_part_limits": [c_int, c_int, c_int, c_int64, int64_p, int64_p],
    "zorpelx_part_bounds": [c_int, c_double, c_double, double_p, c_int64, int64_p, int64_p],
}


def _find() -> str:
    """Where the library is: ZORPELX_LIBRARY, beside this file, under the prefix that this file is
    installed in (PREFIX/lib/python3/dist-packages/zorpel), or where the system looks."""
    chosen = os.environ.get("ZORPELX_LIBRARY")
    if chosen:
        return chosen
    here = Path(__file__).resolve().parent
    folders = [here]
    if len(here.parents) > 2 and here.parents[2].name.startswith("lib"):
        folders += [here.parents[2], *sorted(here.parents[2].glob("*-linux-gnu*"))]
    for folder in folders:
        if (folder / NAME).exists():
            return str(folder / NAME)
    return NAME


def _load() -> ctypes.CDLL:
    path = _find()
    try:
        return ctypes.CDLL(path)
    except OSError as reason:
        raise LibraryError(
            f"Cannot load {path}: {reason}. The variable ZORPELX_LIBRARY may tell its path."
        ) from reason


@functools.lru_cache(maxsize=None)
def loaded() -> ctypes.CDLL:
    """The library, loaded on first use."""
    loaded = _load()
    for name, arguments in _ROUTINES.items():
        routine = getattr(loaded, name, None)
        if routine is None:
            raise LibraryError(f"The library {_find()} has no {name}(): it is of another version.")
        routine.argtypes = arguments
        routine.restype = c_int
    loaded.zorpelx_version.restype = c_char_p
    return loaded


def new_record(kind: type, init: str) -> Any:
    """A record of this kind, set to its defaults."""
    record = kind()
    if getattr(loaded(), init)(ctypes.byref(record), ctypes.sizeof(kind)) != OK:
        version = loaded().zorpelx_version().decode()
        raise LibraryError(f"{NAME} is of version {version}, which this package does not know.")
    return record
