# SPDX-License-Identifier: MIT
"""What comes out: records that compare, and that show themselves in a line or a table."""

from __future__ import annotations

import importlib
from dataclasses import dataclass, field
from html import escape
from typing import Any, Dict, Iterable, List, Tuple

from .errors import InputError, LibraryError

MOST_ROWS = 20  # of a table that are shown


def short(values: Any, most: int = 8) -> str:
    """The first values of a list, and how many there are if that is not all."""
    shown = ", ".join(map(str, values[:most]))
    return f"[{shown}]" if len(values) <= most else f"[{shown}, ... {len(values)} in all]"


def table(title: str, rows: Iterable[Tuple[str, Any]]) -> str:
    """A table of HTML, as notebooks show it."""
    lines = "".join(
        f"<tr><th style='text-align: left'>{escape(name)}</th><td>{escape(str(value))}</td></tr>"
        for name, value in rows
    )
    return f"<table><caption>{escape(title)}</caption>{lines}</table>"


class Table(List[Dict[str, Any]]):
    """A small table: a list of rows, each a dictionary with the same keys."""

    def columns(self) -> List[str]:
        """The names of the columns."""
        return list(self[0]) if self else []

    def frame(self) -> Any:
        """The table as a data frame of pandas."""
        try:
            pandas = importlib.import_module("pandas")  # which has no types of its own
        except ImportError:
            raise LibraryError(
                "frame() needs pandas, which is not installed (Debian: python3-pandas)."
            ) from None
        return pandas.DataFrame(list(self))

    def __repr__(self) -> str:
        lines = [self.columns()] + [[_shown(row[name]) for name in row] for row in self[:MOST_ROWS]]
        widths = [max(map(len, column)) for column in zip(*lines)]
        text = ["  ".join(cell.rjust(width) for cell, width in zip(line, widths)) for line in lines]
        return "\n".join(text + ([f"... {len(self)} rows in all"] if len(self) > MOST_ROWS else []))

    def _repr_html_(self) -> str:
        head = "".join(f"<th>{escape(name)}</th>" for name in self.columns())
        body = "".join(
            "<tr>" + "".join(f"<td>{escape(_shown(value))}</td>" for value in row.values()) + "</tr>"
            for row in self[:MOST_ROWS]
        )
        more = f"<p>{len(self)} rows in all</p>" if len(self) > MOST_ROWS else ""
        return f"<table><thead><tr>{head}</tr></thead><tbody>{body}</tbody></table>{more}"


def _shown(value: Any) -> str:
    return f"{value:.2f}" if isinstance(value, float) else str(value)


@dataclass(frozen=True)
class Progress:
    """How far a call is, see zorpelx_progress in zorpelx.h."""

    starts: int
    running: int
    finished: int
    failed: int
    runs: int
    allruns: int
    levels: int
    level_vtxs: int
    run_cut: int
    cut: int
    seconds: float
    objective: int  #: of the best partition that a search has, or -1
    jobs: int  #: of the searches at work: done
    alljobs: int  #: and in all; -1 without an end
    step: str  #: what found it: packing, start, member, combination, exact; or empty


@dataclass(frozen=True)
class Step:
    """What the steps of one kind did in a search, see zorpelx_step in zorpelx.h."""

    step: str  #: packing, start, member, combination or exact
    made: int  #: partitions
    better: int  #: of which were better than all before
    gained: int  #: by which these lowered the objective, once the bounds were kept
    seconds: float  #: of all threads


@dataclass(frozen=True, repr=False, eq=False)
class Partition:
    """A partition and what is known of it.

    part is a list, or a numpy array if the hypergraph came in numpy arrays or a scipy matrix. Two
    are equal if all but the seconds is, whatever holds their parts.
    """

    part: Any  #: the part of every vertex, from 0
    nparts: int
    cut: int  #: total weight of the hyperedges cut
    soed: int  #: sum of external degrees
    imbalance: float  #: heaviest part over the average part, less 1
    valid: bool  #: pre-assignments kept, every part within its limits
    seed: int  #: of the start that won
    finished: int  #: starts that gave a partition
    failed: int  #: starts that gave none
    dropped: int  #: hyperedges of less than two vertices, kept from the engine
    seconds: float
    complete: bool  #: False: a deadline or a cancellation cut starts off
    message: str  #: empty, or what is to be said
    traces: List[str] = field(default_factory=list)  #: of each start, if traces were asked for
    objective: int = 0  #: the figure that was made least: cut, connectivity or soed
    connectivity: int = 0  #: connectivity minus one
    moved: int = 0  #: weight of the vertices that are not in their part of start
    jobs: int = 0  #: pieces of work that the search has done
    pool: int = 0  #: partitions that it kept
    generations: int = 0  #: batches of combinations that it made
    steps: List[Step] = field(default_factory=list)  #: what its steps did, by kind

    source: Any = field(default=None, compare=False)  #: the hypergraph, or None

    def __len__(self) -> int:
        """The number of vertices."""
        return len(self.part)

    def _hypergraph(self, hypergraph: Any) -> Any:
        """The hypergraph that it is a partition of, or the one that is given."""
        if hypergraph is None and self.source is None:
            raise InputError("This partition does not know its hypergraph; give it.", 2)
        from .hypergraph import as_hypergraph  # pylint: disable=import-outside-toplevel

        graph = self.source if hypergraph is None else as_hypergraph(hypergraph)
        if graph.nvtxs != len(self.part):
            raise InputError(f"{graph.nvtxs} vertices; the partition has {len(self.part)}.")
        return graph

    def vertices(self, hypergraph: Any = None) -> Table:
        """A table of the vertices: name and part."""
        graph = self._hypergraph(hypergraph)
        return Table(
            {"vertex": graph.vertex_name(v), "part": int(p)} for v, p in enumerate(self.part)
        )

    def parts(self, hypergraph: Any = None) -> Table:
        """A table of the parts: vertices, weight and external degree."""
        from .tables import parts_table  # pylint: disable=import-outside-toplevel

        return parts_table(self._hypergraph(hypergraph), self)

    def cut_hyperedges(self, hypergraph: Any = None) -> Table:
        """A table of the hyperedges that are cut, the most expensive first: name, weight, vertices
        and parts."""
        from .tables import cut_table  # pylint: disable=import-outside-toplevel

        return cut_table(self._hypergraph(hypergraph), self)

    def plot(self, hypergraph: Any = None) -> Any:
        """Sizes of the parts and the cut between them, as a figure of matplotlib."""
        from .drawing import plot  # pylint: disable=import-outside-toplevel

        return plot(self._hypergraph(hypergraph), self)

    def report(self, path: Any, hypergraph: Any = None) -> None:
        """Writes the page of HTML that the program zorpelx makes of a partition."""
        from .drawing import report  # pylint: disable=import-outside-toplevel

        report(self._hypergraph(hypergraph), self, path)

    def _key(self) -> Tuple[Any, ...]:
        figures: Tuple[Any, ...] = (self.nparts, self.cut, self.soed, self.imbalance)
        figures += (self.valid, self.seed)
        figures += (self.finished, self.failed, self.dropped, self.complete, self.message)
        return figures + (self.objective, self.connectivity, self.moved, self.jobs)

    def __eq__(self, other: object) -> bool:
        if not isinstance(other, Partition):
            return NotImplemented
        if self._key() != other._key() or self.traces != other.traces:
            return False
        return list(self.part) == list(other.part)

    def __hash__(self) -> int:
        return hash(self._key())

    def _remarks(self) -> List[str]:
        remarks = [] if self.valid else ["not valid"]
        return remarks if self.complete else remarks + ["not complete"]

    def __repr__(self) -> str:
        figures = [
            f"{len(self.part)} vertices in {self.nparts} parts",
            f"cut {self.cut}",
            f"imbalance {100 * self.imbalance:.1f} %",
            f"seed {self.seed}",
        ]
        return f"<zorpel.Partition: {', '.join(figures + self._remarks())}>"

    def _repr_html_(self) -> str:
        rows: List[Tuple[str, Any]] = [
            ("vertices", len(self.part)),
            ("parts", self.nparts),
            ("cut", self.cut),
            ("connectivity minus one", self.connectivity),
            ("sum of external degrees", self.soed),
            ("imbalance", f"{100 * self.imbalance:.3f} %"),
            ("valid", "yes" if self.valid else "no"),
            ("seed", self.seed),
            ("starts finished", self.finished),
            ("seconds", f"{self.seconds:.3f}"),
        ]
        if not self.complete:
            rows.append(("complete", "no"))
        if self.message:
            rows.append(("message", self.message))
        return table("Partition", rows)


@dataclass(frozen=True, repr=False)
class Quality:
    """Figures of a partition, exact in 64 bits; see zorpelx_quality in zorpelx.h."""

    cut: int
    soed: int
    connectivity: int
    cut_hyperedges: int
    absorption: float
    scaled_cost: float
    imbalance: float
    empty_parts: int
    part_weights: List[int]
    external_degrees: List[int]

    def _rows(self) -> List[Tuple[str, Any]]:
        return [
            ("cut", self.cut),
            ("soed", self.soed),
            ("connectivity", self.connectivity),
            ("cut_hyperedges", self.cut_hyperedges),
            ("absorption", self.absorption),
            ("scaled_cost", self.scaled_cost),
            ("imbalance", self.imbalance),
            ("empty_parts", self.empty_parts),
            ("part_weights", short(self.part_weights)),
            ("external_degrees", short(self.external_degrees)),
        ]

    def __hash__(self) -> int:
        return hash((self.cut, self.soed, self.connectivity, self.cut_hyperedges, self.imbalance))

    def __repr__(self) -> str:
        return f"<zorpel.Quality: {', '.join(f'{name} {value}' for name, value in self._rows())}>"

    def _repr_html_(self) -> str:
        return table("Quality", self._rows())


@dataclass(frozen=True)
class Bin:
    """How many numbers lie in least to most."""

    least: int
    most: int
    count: int


@dataclass(frozen=True)
class Spread:
    """How numbers are spread."""

    least: int
    most: int
    average: float
    bins: List[Bin]  #: 0, 1, 2, 3, 4, 5 to 8, 9 to 16 and so on, to the last that is not empty


@dataclass(frozen=True, repr=False)
class Stats:
    """What a hypergraph is like; the names are those of zorpelx stats --format json."""

    vertices: int
    hyperedges: int
    pins: int
    total_vertex_weight: int
    total_hyperedge_weight: int
    components: int  #: that hyperedges join, vertices in none included
    largest_component: int  #: vertices of the largest
    islands: int  #: vertices in no hyperedge
    parked: int  #: vertices in no hyperedge of 2 to 50 vertices
    large_hyperedges: int  #: of more than 50 vertices
    single_vertex_hyperedges: int  #: never cut
    memory_bytes: int  #: that one start takes, estimated
    heavy_vertices: List[int]  #: heavier than a fiftieth of all, the heaviest first
    sizes: Spread  #: of the hyperedges
    degrees: Spread  #: of the vertices: hyperedges that each is in

    def _rows(self) -> List[Tuple[str, Any]]:
        rows = [(name, getattr(self, name)) for name in list(self.__dataclass_fields__)[:12]]
        rows.append(("heavy_vertices", short(self.heavy_vertices)))
        for name, spread in (("sizes", self.sizes), ("degrees", self.degrees)):
            rows.append((name, f"{spread.least} to {spread.most}, {spread.average:.2f} on average"))
        return rows

    def __repr__(self) -> str:
        return f"<zorpel.Stats: {', '.join(f'{name} {value}' for name, value in self._rows())}>"

    def _repr_html_(self) -> str:
        return table("Hypergraph", self._rows())
