#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Draws the picture of the README: the mesh of examples/lshape.hgr in eight parts.

    scripts/picture.py [--zorpelx PROGRAM] [--check]

Partitions as the README shows it (eight parts, none more than 3 % above the average) and writes docs/lshape.svg:
a square for each node of the mesh in the colour of its part, the mesh, and a dot on every node
whose hyperedge is cut. --check compares with the picture that is there.
"""

import argparse
import subprocess
import sys
import tempfile
from pathlib import Path

PROJECT = Path(__file__).resolve().parents[1]
PICTURE = PROJECT / "docs" / "lshape.svg"
sys.dont_write_bytecode = True
sys.path.insert(0, str(PROJECT / "examples"))
from make_examples import lshape_mesh  # noqa: E402 (no bytecode beside it)

CELLS, UNIT, EDGE = 16, 12, 8  # cells a side, pixels a node, margin
COLOURS = ("#4e79a7", "#f28e2b", "#59a14f", "#e15759", "#b07aa1", "#edc948",
           "#76b7b2", "#9c755f")


def partition(program):
    """The part of each node."""
    with tempfile.TemporaryDirectory() as folder:
        out = Path(folder, "parts")
        words = ["partition", PROJECT / "examples" / "lshape.hgr", "-k", str(len(COLOURS))]
        words += ["--epsilon", "3", "-o", out]
        subprocess.run([program, *words], check=True, stdout=subprocess.DEVNULL)
        return [int(line) for line in out.read_text().split()]


def draw(parts):
    triangles, nodes = lshape_mesh(CELLS)
    part = dict(zip(nodes, parts, strict=True))
    height = 2 * CELLS
    size = height * UNIT + UNIT + 2 * EDGE

    def place(x, y):
        return EDGE + x * UNIT + UNIT / 2, EDGE + (height - y) * UNIT + UNIT / 2

    lines = [
        f'<svg xmlns="http://www.w3.org/2000/svg" width="{size}" height="{size}"'
        f' viewBox="0 0 {size} {size}">',
        "<title>A mesh of 833 nodes in eight parts</title>",
    ]
    rows = {}
    for x, y in nodes:
        rows.setdefault(y, []).append(x)
    for y, xs in sorted(rows.items()):  # neighbours of one part share a bar
        start = xs[0]
        for x, following in zip(xs, [*xs[1:], None]):
            if following is None or part[following, y] != part[x, y]:
                left, middle = place(start, y)
                lines.append(
                    f'<rect x="{left - UNIT / 2:g}" y="{middle - UNIT / 2:g}"'
                    f' width="{(x - start + 1) * UNIT}" height="{UNIT}"'
                    f' fill="{COLOURS[part[x, y]]}"/>'
                )
                start = following
    sides = {tuple(sorted(pair)) for t in triangles for pair in zip(t[:3], t[1:3] + t[:1])}
    path = "".join(
        "M{:g} {:g}L{:g} {:g}".format(*place(*p), *place(*q)) for p, q in sorted(sides)
    )
    lines.append(f'<path d="{path}" stroke="#fff" stroke-opacity=".45" fill="none"/>')
    needed = {}  # by the node whose hyperedge it is
    for t in triangles:
        for p in t:
            needed.setdefault(p, set()).update(part[q] for q in t)
    dots = "".join(
        "M{:g} {:g}h0".format(*place(*p)) for p in nodes if len(needed[p]) > 1
    )
    lines.append(f'<path d="{dots}" stroke="#222" stroke-width="4" stroke-linecap="round"/>')
    return "\n".join([*lines, "</svg>", ""])


def main():
    parser = argparse.ArgumentParser()
    built = PROJECT / "build" / "release" / "zorpelx" / "cli" / "zorpelx"
    parser.add_argument("--zorpelx", default=built)
    parser.add_argument("--check", action="store_true")
    request = parser.parse_args()
    picture = draw(partition(request.zorpelx))
    if request.check:
        sys.exit(PICTURE.read_text() != picture and f"{PICTURE.name} is not what the script draws: run scripts/picture.py")
    PICTURE.write_text(picture)


main()
