# SPDX-License-Identifier: MIT
"""Pictures of a partition: by matplotlib, and as the page of the program zorpelx."""

from __future__ import annotations

import importlib
import json
import os
import shutil
import subprocess
import tempfile
from pathlib import Path
from typing import Any, Dict, List

from ._output import write_files
from .errors import InputError, LibraryError
from .hypergraph import Hypergraph
from .results import Partition
from .tables import cut_between, parts_table

MOST_NUMBERED = 16  # parts whose numbers have room in the squares


def _bars(axes: Any, graph: Hypergraph, partition: Partition) -> None:
    rows = parts_table(graph, partition)
    weights = [row["weight"] for row in rows]
    axes.barh([str(row["part"]) for row in rows], weights, color="#0072b2")
    axes.axvline(sum(weights) / len(weights), color="black", linestyle="--", linewidth=1)
    axes.invert_yaxis()
    axes.set_xlabel("weight; dashed: average")
    axes.set_ylabel("part")


def _squares(axes: Any, graph: Hypergraph, partition: Partition) -> None:
    matrix = cut_between(graph, partition)
    axes.imshow(matrix, cmap="cividis")
    axes.set_xlabel("part")
    axes.set_title("weight of the hyperedges that touch both", fontsize="medium")
    most = max(max(row) for row in matrix)
    for p, row in enumerate(matrix if len(matrix) <= MOST_NUMBERED else []):
        for q, weight in enumerate(row):
            if weight:
                colour = "black" if 2 * weight > most else "white"
                axes.text(q, p, str(weight), ha="center", va="center", color=colour)


def plot(graph: Hypergraph, partition: Partition) -> Any:
    """Sizes of the parts beside the cut between them."""
    try:
        drawing = importlib.import_module("matplotlib.figure")  # which has no types of its own
    except ImportError:
        raise LibraryError(
            "plot() needs matplotlib, which is not installed (Debian: python3-matplotlib)."
        ) from None
    figure = drawing.Figure(figsize=(10, 4), layout="constrained")
    left, right = figure.subplots(1, 2)
    _bars(left, graph, partition)
    _squares(right, graph, partition)
    figure.suptitle(f"{partition.nparts} parts, cut {partition.cut}")
    return figure


def _program() -> str:
    found = os.environ.get("ZORPELX") or shutil.which("zorpelx")
    if not found:
        raise LibraryError(
            "report() needs the program zorpelx, which is not found on PATH (ZORPELX may name it)."
        )
    return found


def _lines(graph: Hypergraph) -> str:
    """The hypergraph as JSON lines, with all that is known of it."""
    lines: List[Dict[str, Any]] = []
    for v in range(graph.nvtxs):
        lines.append({"vertex": graph.vertex_name(v)})
        if graph.vertex_weights is not None:
            lines[-1]["vertex_weight"] = graph.vertex_weights[v]
    for e, pins in enumerate(graph):
        line: Dict[str, Any] = {"hyperedge": graph.hyperedge_name(e)}
        if graph.hyperedge_weights is not None:
            line["weight"] = graph.hyperedge_weights[e]
        lines.append({**line, "vertices": [graph.vertex_name(v) for v in pins]})
    return "".join(json.dumps(line) + "\n" for line in lines)


def report(graph: Hypergraph, partition: Partition, path: Any) -> None:
    """The page of the program's command report, of the file that the hypergraph came from."""
    program = _program()
    with tempfile.TemporaryDirectory(prefix="zorpel-") as folder:
        here = Path(folder)
        part = here / f"partition.part.{partition.nparts}"
        part.write_text("".join(f"{p}\n" for p in partition.part))
        if graph.origin is not None:
            source = os.path.abspath(graph.origin.path)
            words = [f"--{name}={word}" for name, word in graph.origin.options.items()]
        else:
            source, words = str(here / "hypergraph.jsonl"), ["--from=jsonl"]
            Path(source).write_text(_lines(graph))
        page = here / "page.html"
        call = [program, "report", source, str(part), "-q", "-o", str(page), *words]
        done = subprocess.run(call, capture_output=True, text=True, errors="replace", check=False)
        if done.returncode != 0:
            raise InputError(done.stderr.strip().removeprefix("zorpelx: "))
        write_files([(path, page.read_bytes())])
