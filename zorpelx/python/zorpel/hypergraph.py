# SPDX-License-Identifier: MIT
"""Hypergraphs: flat arrays of 32-bit integers, made from whatever a program has at hand."""

from __future__ import annotations

import ctypes
import operator
import os
from array import array
from dataclasses import dataclass, field, replace
from typing import (
    Any, Dict, Iterable, Iterator, List, Mapping, Optional, Sequence, Tuple, Union, cast,
)  # fmt: skip

from ._library import CHypergraph, int_p
from .errors import InputError
from .results import short, table

Path = Union[str, "os.PathLike[str]"]

#: What partition(), evaluate() and write() take for a hypergraph, see as_hypergraph().
HypergraphLike = Union[
    "Hypergraph", Sequence[Iterable[int]], Mapping[Any, Iterable[Any]], Tuple[Any, Any], Path, Any
]

_LEAST, _MOST = -(2**31), 2**31 - 1


def is_path(source: Any) -> bool:
    """Whether this names a file."""
    return isinstance(source, (str, os.PathLike))


def _is_array(values: Any) -> bool:
    """Whether this is a numpy array, without a need for numpy."""
    return hasattr(values, "dtype") and hasattr(values, "tobytes")


def _too_large(name: str, place: int, value: int) -> InputError:
    return InputError(f"{name}[{place}] is {value}, which does not fit 32 bits.")


def _ints_of_array(values: Any, name: str) -> array[int]:
    if getattr(values, "mask", False) is not False and values.mask.any():
        raise InputError(f"{name} has masked entries.")
    if values.ndim != 1:
        raise InputError(f"{name} has {values.ndim} dimensions instead of 1.")
    if values.dtype.kind not in "iub":
        raise InputError(f"{name} holds {values.dtype} instead of integers.")
    if values.size and values.dtype.kind != "b":
        for place in (int(values.argmin()), int(values.argmax())):
            if not _LEAST <= int(values[place]) <= _MOST:
                raise _too_large(name, place, int(values[place]))
    return array("i", values.astype("i").tobytes())


def to_ints(values: Any, name: str) -> array[int]:
    """values as an array of C ints; name is for the sentence if that cannot be."""
    if isinstance(values, array) and values.typecode == "i":
        return values
    if _is_array(values):
        return _ints_of_array(values, name)
    try:
        values = list(values)
    except TypeError:
        raise InputError(f"{name} is {values!r} instead of a list of integers.") from None
    try:
        return array("i", values)
    except (TypeError, OverflowError):
        return array("i", [_to_int(value, name, place) for place, value in enumerate(values)])


def _to_int(value: Any, name: str, place: int) -> int:
    try:
        number = operator.index(value)
    except TypeError:
        raise InputError(f"{name}[{place}] is {value!r} instead of an integer.") from None
    if not _LEAST <= number <= _MOST:
        raise _too_large(name, place, number)
    return number


def pointer(ints: Optional[array[int]]) -> Any:
    """ints for the library; None is NULL. Good as long as ints lives."""
    if ints is None:
        return None
    if not ints:  # an empty array has no buffer
        return ctypes.cast((ctypes.c_int * 1)(), int_p)
    return ctypes.cast((ctypes.c_int * len(ints)).from_buffer(ints), int_p)


def _check_nvtxs(nvtxs: Any) -> int:
    try:
        number = operator.index(nvtxs)
    except TypeError:
        raise InputError(f"nvtxs is {nvtxs!r} instead of an integer.") from None
    if not 0 <= number <= _MOST:
        raise InputError(f"nvtxs is {number}; it should be between 0 and {_MOST}.")
    return number


@dataclass(frozen=True)
class Origin:
    """The file that a hypergraph was read from, and how: options of the program zorpelx."""

    path: str
    options: Dict[str, str]


@dataclass(frozen=True, repr=False)
class Hypergraph:
    """A hypergraph of nvtxs vertices, numbered from 0.

    The vertices of hyperedge e are eind[eptr[e]:eptr[e + 1]]; weights of None are all 1. The
    arrays are of type array('i'); numpy.asarray() shows one without a copy. Names of None are
    numbers. fixed has the part of each vertex, -1 for a free one, groups the number of each group
    that stays together, -1 for none: partition() keeps to them unless it is told otherwise.
    """

    nvtxs: int
    eptr: array[int]
    eind: array[int]
    vertex_weights: Optional[array[int]] = None
    hyperedge_weights: Optional[array[int]] = None
    vertex_names: Optional[List[str]] = None
    hyperedge_names: Optional[List[str]] = None
    fixed: Optional[array[int]] = None
    groups: Optional[array[int]] = None
    origin: Optional[Origin] = field(default=None, compare=False)

    def __post_init__(self) -> None:
        object.__setattr__(self, "nvtxs", _check_nvtxs(self.nvtxs))
        for name in ("eptr", "eind", "vertex_weights", "hyperedge_weights", "fixed", "groups"):
            values = getattr(self, name)
            if values is not None:
                object.__setattr__(self, name, to_ints(values, name))
        if not self.eptr:
            raise InputError("eptr is empty; it should hold an offset more than hyperedges.")
        if self.eptr[-1] != len(self.eind):
            raise InputError(f"eptr ends with {self.eptr[-1]}, but eind has {len(self.eind)}.")
        self._check_length("vertex_weights", self.nvtxs)
        self._check_length("hyperedge_weights", len(self))
        for name in ("vertex_names", "fixed", "groups"):
            self._check_length(name, self.nvtxs)
        self._check_length("hyperedge_names", len(self))

    def _check_length(self, name: str, wanted: int) -> None:
        weights = getattr(self, name)
        if weights is not None and len(weights) != wanted:
            raise InputError(f"{name} has {len(weights)} entries instead of {wanted}.")

    def vertex_name(self, v: int) -> str:
        """The name of a vertex, or its number from 0."""
        return str(v) if self.vertex_names is None else self.vertex_names[v]

    def hyperedge_name(self, e: int) -> str:
        """The name of a hyperedge, or its number from 0."""
        return str(e) if self.hyperedge_names is None else self.hyperedge_names[e]

    def __len__(self) -> int:
        """The number of hyperedges."""
        return len(self.eptr) - 1

    def __iter__(self) -> Iterator[List[int]]:
        """The hyperedges, each a list of vertices."""
        for e in range(len(self)):
            yield self.eind[self.eptr[e] : self.eptr[e + 1]].tolist()

    def __hash__(self) -> int:
        return hash((self.nvtxs, len(self), len(self.eind)))

    def __repr__(self) -> str:
        weights = [("vertex weights", self.vertex_weights)]
        weights += [("hyperedge weights", self.hyperedge_weights)]
        sizes = [f"{value} {name}" for name, value in self._sizes()]
        sizes += [name for name, given in weights if given is not None]
        return f"<zorpel.Hypergraph: {', '.join(sizes)}>"

    def _repr_html_(self) -> str:
        rows: List[Tuple[str, Any]] = list(self._sizes())
        rows.append(("vertex weights", "no" if self.vertex_weights is None else "yes"))
        rows.append(("hyperedge weights", "no" if self.hyperedge_weights is None else "yes"))
        if self.vertex_names:
            rows.append(("names of vertices", short(self.vertex_names, 4)))
        if self.hyperedge_names:
            rows.append(("names of hyperedges", short(self.hyperedge_names, 4)))
        return table("Hypergraph", rows)

    def _sizes(self) -> List[Tuple[str, int]]:
        return [("vertices", self.nvtxs), ("hyperedges", len(self)), ("pins", len(self.eind))]

    def record(self) -> CHypergraph:
        """The record of the library. It borrows the arrays."""
        return CHypergraph(
            self.nvtxs,
            len(self),
            pointer(self.eptr),
            pointer(self.eind),
            pointer(self.vertex_weights),
            pointer(self.hyperedge_weights),
        )


def _lists(hyperedges: Iterable[Iterable[int]]) -> Tuple[array[int], array[int]]:
    try:
        each = iter(hyperedges)
    except TypeError:
        raise InputError(f"{hyperedges!r} is no hypergraph.") from None
    eptr, eind = array("i", [0]), array("i")
    for e, vertices in enumerate(each):
        if isinstance(vertices, (str, bytes)) or not hasattr(vertices, "__iter__"):
            raise InputError(f"Hyperedge {e} is {vertices!r} instead of a list of vertices.")
        eind.extend(to_ints(vertices, f"hyperedge {e}: vertices"))
        eptr.append(len(eind))
    return eptr, eind


def _sparse(matrix: Any) -> Tuple[Any, Any, int]:
    """Rows are hyperedges, columns vertices; what is not zero belongs."""
    rows = matrix.tocsr(copy=True)
    rows.sum_duplicates()
    rows.eliminate_zeros()
    return rows.indptr, rows.indices, int(rows.shape[1])


def _named(pairs: Iterable[Tuple[Any, Any]]) -> Tuple[List[List[int]], Dict[Any, int], Dict[Any, int]]:
    """Hyperedges of numbers, and the numbers of vertices and hyperedges, from pairs of names. None
    beside a vertex is no hyperedge, beside a hyperedge no vertex."""
    vertices: Dict[Any, int] = {}
    nets: Dict[Any, int] = {}
    lists: List[Dict[int, None]] = []
    for net, vertex in pairs:
        e = len(lists) if net is None else nets.setdefault(net, len(nets))
        if net is not None and e == len(lists):
            lists.append({})
        v = 0 if vertex is None else vertices.setdefault(vertex, len(vertices))
        if net is not None and vertex is not None:
            lists[e][v] = None
    return [list(pins) for pins in lists], vertices, nets


def _column(frame: Any, name: str, place: int) -> Any:
    names = {str(column).lower(): column for column in frame.columns}
    if name in names:
        return frame[names[name]]
    if len(frame.columns) < 2:
        raise InputError("A data frame needs two columns, hyperedge and vertex.")
    return frame[frame.columns[place]]


def _entries(column: Any) -> List[Any]:
    """The entries of a column, None where one is missing."""
    return [None if missing else entry for entry, missing in zip(column, column.isna())]


def from_mapping(mapping: Mapping[Any, Iterable[Any]]) -> Hypergraph:
    """A hypergraph from names of hyperedges with the names of their vertices."""
    for net, members in mapping.items():
        if isinstance(members, (str, bytes)) or not hasattr(members, "__iter__"):
            raise InputError(f"Hyperedge {net!r} has {members!r} instead of a list of vertices.")
    pairs = [(net, vertex) for net, members in mapping.items() for vertex in (*members, None)]
    lists, vertices, nets = _named(pairs)
    names = [str(name) for name in vertices], [str(name) for name in nets]
    return Hypergraph(len(vertices), *_lists(lists), None, None, *names)


def from_frame(frame: Any) -> Hypergraph:
    """A hypergraph from a data frame of memberships, see as_hypergraph()."""
    given = {str(column).lower() for column in frame.columns}
    if len(given & {"hyperedge", "vertex"}) == 1:
        raise InputError('A data frame has both columns "hyperedge" and "vertex", or none.')
    nets_of = _entries(_column(frame, "hyperedge", 0))
    vertices_of = _entries(_column(frame, "vertex", 1))
    lists, vertices, nets = _named(zip(nets_of, vertices_of))
    weights = None
    if "weight" in given:
        weights = [1] * len(nets)
        for net, weight in zip(nets_of, _entries(_column(frame, "weight", 0))):
            if net is not None and weight is not None:
                whole = isinstance(weight, float) and weight.is_integer()  # beside a missing one
                weights[nets[net]] = int(weight) if whole else weight
    eptr, eind = _lists(lists)
    names = [str(name) for name in vertices], [str(name) for name in nets]
    heavy = None if weights is None else to_ints(weights, "weight")
    return Hypergraph(len(vertices), eptr, eind, None, heavy, *names)


def from_graph(graph: Any) -> Hypergraph:
    """A hypergraph from a graph of networkx, see as_hypergraph()."""
    sides = {node: data.get("bipartite") for node, data in graph.nodes(data=True)}
    two_sided = any(side is not None for side in sides.values())
    nodes = [node for node, side in sides.items() if not two_sided or side != 1]
    number = {node: v for v, node in enumerate(nodes)}
    data = dict(graph.nodes(data=True))
    lists: List[List[int]]
    if two_sided:
        nets = [node for node, side in sides.items() if side == 1]
        wrong = [pair for pair in graph.edges() if (sides[pair[0]] == 1) == (sides[pair[1]] == 1)]
        if wrong:
            raise InputError(f"The edge {wrong[0]!r} joins two nodes of one side.")
        joined = graph.to_undirected() if graph.is_directed() else graph
        lists = [sorted(number[node] for node in joined.neighbors(net)) for net in nets]
        names = [str(net) for net in nets]
        heavy = [data[net].get("weight", 1) for net in nets]
    else:
        edges = [edge for edge in graph.edges(data=True) if edge[0] != edge[1]]
        lists = [[number[u], number[v]] for u, v, _ in edges]
        names = [f"{u} - {v}" for u, v, _ in edges]
        heavy = [edge[2].get("weight", 1) for edge in edges]
    eptr, eind = _lists(lists)
    own = to_ints([data[node].get("weight", 1) for node in nodes], "weight")
    called = [str(node) for node in nodes]
    return Hypergraph(len(nodes), eptr, eind, own, to_ints(heavy, "weight"), called, names)


def _check_dense(array_of_rows: Any) -> None:
    """Rows of whole numbers may be lists of vertices; a matrix of anything else is taken for none."""
    if array_of_rows.ndim < 2 or array_of_rows.dtype.kind == "O":
        return
    if array_of_rows.ndim > 2:
        raise InputError(f"An array of {array_of_rows.ndim} dimensions is no hypergraph.")
    if array_of_rows.dtype.kind not in "iu" or hasattr(array_of_rows, "A1"):
        raise InputError(
            f"A dense matrix of {array_of_rows.dtype} is no list of hyperedges; "
            "scipy.sparse.csr_matrix(matrix) makes each row a hyperedge of its entries that are not 0."
        )


def with_names(source: Any) -> Any:
    """What has names, or is the path of a file, as a hypergraph; anything else as it is."""
    if is_path(source):
        from .files import read  # pylint: disable=import-outside-toplevel,cyclic-import

        return read(cast("Union[str, os.PathLike[str]]", source))
    if hasattr(source, "itertuples") and hasattr(source, "columns"):
        return from_frame(source)
    if isinstance(source, Mapping) and not hasattr(source, "tocsr"):  # a DOK matrix is a dict
        return from_mapping(source)
    if hasattr(source, "nodes") and hasattr(source, "is_directed"):
        return from_graph(source)
    return source


def as_hypergraph(
    source: HypergraphLike,
    nvtxs: Optional[int] = None,
    vertex_weights: Optional[Iterable[int]] = None,
    hyperedge_weights: Optional[Iterable[int]] = None,
) -> Hypergraph:
    """A hypergraph from any of these:

    - a Hypergraph, whose weights the arguments may replace;
    - a list of hyperedges, each a list of vertices: [[0, 1, 2], [2, 3]];
    - a dict of names of hyperedges with their vertices' names: {"clk": ["u1", "u2"]};
    - a tuple of two flat arrays (eptr, eind), of numpy or not: ([0, 3, 5], [0, 1, 2, 2, 3]);
    - a scipy sparse matrix: rows are hyperedges, columns vertices, any value but 0 belongs;
    - a pandas data frame with a row for each vertex in a hyperedge, in columns "hyperedge" and
      "vertex" (or the first two) and perhaps "weight", of the hyperedge; names come with it, and
      a vertex without a hyperedge is one by itself;
    - a networkx graph: its edges are hyperedges of two vertices, "weight" their weight; or, where
      nodes have "bipartite", those of 1 are hyperedges and those of 0 vertices;
    - the path of a hypergraph file, as read() takes it.

    Without nvtxs there are as many vertices as the largest number (or the matrix) needs.
    """
    source = with_names(source)
    if isinstance(source, Hypergraph):
        if nvtxs is None and vertex_weights is None and hyperedge_weights is None:
            return source
        eptr, eind, columns = source.eptr, source.eind, source.nvtxs
        vertex_weights = source.vertex_weights if vertex_weights is None else vertex_weights
        if hyperedge_weights is None:
            hyperedge_weights = source.hyperedge_weights
    elif hasattr(source, "tocsr"):
        eptr, eind, columns = _sparse(source)
    elif isinstance(source, tuple):
        if len(source) != 2:
            raise InputError(f"A tuple of {len(source)} is no hypergraph; (eptr, eind) would be.")
        eptr, eind, columns = source[0], source[1], None
    else:
        if _is_array(source):
            _check_dense(source)
        eptr, eind = _lists(cast("Iterable[Iterable[int]]", source))
        columns = None
    eptr, eind = to_ints(eptr, "eptr"), to_ints(eind, "eind")
    if nvtxs is None:
        nvtxs = max(eind, default=-1) + 1 if columns is None else columns
    vwgts = None if vertex_weights is None else to_ints(vertex_weights, "vertex_weights")
    hewgts = None if hyperedge_weights is None else to_ints(hyperedge_weights, "hyperedge_weights")
    made = Hypergraph(nvtxs, eptr, eind, vwgts, hewgts)
    if not isinstance(source, Hypergraph) or nvtxs != source.nvtxs:
        return made
    return replace(
        made,
        vertex_names=source.vertex_names,
        hyperedge_names=source.hyperedge_names,
        fixed=source.fixed,
        groups=source.groups,
    )


def wants_numpy(source: HypergraphLike) -> bool:
    """Whether results for this hypergraph should be numpy arrays: those given in them."""
    if isinstance(source, tuple):
        return any(_is_array(values) for values in source)
    return hasattr(source, "tocsr")
