# SPDX-License-Identifier: MIT
"""Hypergraph partitioning by multilevel recursive bisection.

>>> import zorpel
>>> two_triangles = [[0, 1], [1, 2], [0, 2], [3, 4], [4, 5], [3, 5], [2, 3]]
>>> partition = zorpel.partition(two_triangles, 2)
>>> partition.cut
1
>>> zorpel.evaluate(two_triangles, partition).part_weights
[3, 3]

The work is done by the library libzorpelx, in child processes; numpy arrays and scipy sparse
matrices are taken where they are used, and needed nowhere.
"""

from .api import (
    cut_hyperedges,
    cut_matrix,
    evaluate,
    part_bounds,
    part_limits,
    partition,
    stats,
)
from .errors import (
    CancelledError,
    DeadlineError,
    Error,
    FileError,
    InputError,
    LibraryError,
    OutOfMemoryError,
)
from .files import (
    FileWarning,
    Finding,
    Lint,
    lint,
    read,
    read_partition,
    write,
    write_partition,
)
from .hypergraph import Hypergraph, HypergraphLike, Origin, as_hypergraph
from .results import Bin, Partition, Progress, Quality, Spread, Stats, Step, Table

__version__ = "1.0.0"

__all__ = [
    "Bin",
    "CancelledError",
    "DeadlineError",
    "Error",
    "FileError",
    "FileWarning",
    "Finding",
    "Hypergraph",
    "HypergraphLike",
    "InputError",
    "LibraryError",
    "Lint",
    "Origin",
    "OutOfMemoryError",
    "Partition",
    "Progress",
    "Quality",
    "Spread",
    "Stats",
    "Step",
    "Table",
    "as_hypergraph",
    "cut_hyperedges",
    "cut_matrix",
    "evaluate",
    "lint",
    "part_bounds",
    "part_limits",
    "partition",
    "read",
    "read_partition",
    "stats",
    "write",
    "write_partition",
]
