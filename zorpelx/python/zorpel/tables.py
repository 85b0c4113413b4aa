# SPDX-License-Identifier: MIT
"""Small tables about a partition."""

from __future__ import annotations

from collections import Counter
from typing import Any, Dict, List, Tuple

from .api import evaluate
from .hypergraph import Hypergraph
from .results import Partition, Table


def parts_table(graph: Hypergraph, partition: Partition) -> Table:
    """A row for each part."""
    quality = evaluate(graph, partition)
    sizes = Counter(int(p) for p in partition.part)
    return Table(
        {"part": p, "vertices": sizes[p], "weight": weight, "external degree": external}
        for p, (weight, external) in enumerate(zip(quality.part_weights, quality.external_degrees))
    )


def spread(graph: Hypergraph, part: Any) -> List[Tuple[int, List[int]]]:
    """The cut hyperedges with their parts, in order."""
    found = []
    for e, pins in enumerate(graph):
        touched = sorted({int(part[v]) for v in pins})
        if len(touched) > 1:
            found.append((e, touched))
    return found


def weight_of(graph: Hypergraph, e: int) -> int:
    """The weight of a hyperedge."""
    return 1 if graph.hyperedge_weights is None else graph.hyperedge_weights[e]


def cut_table(graph: Hypergraph, partition: Partition) -> Table:
    """A row for each cut hyperedge."""
    rows: List[Dict[str, Any]] = []
    for e, touched in spread(graph, partition.part):
        size = graph.eptr[e + 1] - graph.eptr[e]
        row = {"hyperedge": graph.hyperedge_name(e), "weight": weight_of(graph, e)}
        rows.append({**row, "vertices": size, "parts": touched})

    def saving(row: Dict[str, Any]) -> int:
        return -int(row["weight"]) * (len(row["parts"]) - 1)

    return Table(sorted(rows, key=saving))


def cut_between(graph: Hypergraph, partition: Partition) -> List[List[int]]:
    """The weight of the hyperedges that touch both parts, for each two of them."""
    matrix = [[0] * partition.nparts for _ in range(partition.nparts)]
    for e, touched in spread(graph, partition.part):
        for p in touched:
            for q in touched:
                if p != q:
                    matrix[p][q] += weight_of(graph, e)
    return matrix
