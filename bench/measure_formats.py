#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Measures the readers of formats with names against `wc -w`.

    measure_formats.py [--pins 1e7] [--rounds 5] [--formats csv,jsonl,...] [--into FILE:NAME]

Each file is a netlist of hyperedges with four pins, made from a seed: 70 % of the pins lie within
100 of the place of their hyperedge, 20 % within 10,000 and the rest anywhere. `wc -w` counts the
words of the same file, in the C locale, in which it is fastest; the two take turns. Figures are
medians of CPU seconds, user and system. The ratio is reading over counting.
"""

import argparse
import os
import random
import resource
import subprocess
import sys
from pathlib import Path
from statistics import median

sys.dont_write_bytecode = True
import lab  # noqa: E402 (no bytecode beside it)

NEAR, FAR = 100, 10000
EACH = 4  # pins of a hyperedge


def drawn_pin(rng, e, count):
    """One pin of hyperedge e; there are as many vertices as hyperedges."""
    kind = rng.random()
    if kind < 0.7:
        return (e + rng.randrange(-NEAR, NEAR)) % count
    if kind < 0.9:
        return (e + rng.randrange(-FAR, FAR)) % count
    return rng.randrange(count)


def csv(e, pins):
    return "".join("n%d,u%d\n" % (e, v) for v in pins)


def jsonl(e, pins):
    row = '{"hyperedge": "n%d", "vertex": "u%d"}\n'
    return "".join(row % (e, v) for v in pins)


def jsonl_lists(e, pins):
    return '{"hyperedge": "n%d", "vertices": [%s]}\n' % (e, ", ".join('"u%d"' % v for v in pins))


def edges(_, pins):
    return "".join("%d %d\n" % pair for pair in zip(pins[::2], pins[1::2]))


def blif(e, pins):
    return ".names %s n%d\n11- 1\n--1 1\n" % (" ".join("n%d" % v for v in pins[1:]), e)


FORMATS = {
    "csv": ("csv", "net,cell\n", csv, ""),
    "jsonl": ("jsonl", "", jsonl, ""),
    "jsonl-lists": ("jsonl", "", jsonl_lists, ""),
    "edges": ("edges", "", edges, ""),
    "blif": ("blif", ".model top\n.inputs a b\n.outputs z\n", blif, ".end\n"),
}


def generate(name, npins):
    ending, header, row, footer = FORMATS[name]
    path = lab.LAB / ("%s-%d.%s" % (name, npins, ending))
    if path.exists():
        return path
    path.parent.mkdir(parents=True, exist_ok=True)
    rng, count = random.Random(lab.SEED), npins // EACH
    with open(path, "w") as out:
        out.write(header)
        for e in range(count):
            out.write(row(e, [drawn_pin(rng, e, count) for _ in range(EACH)]))
        out.write(footer)
    return path


def counting_seconds(path):
    before = resource.getrusage(resource.RUSAGE_CHILDREN)
    subprocess.run(
        ["wc", "-w", path], check=True, stdout=subprocess.DEVNULL, env={**os.environ, "LC_ALL": "C"}
    )
    after = resource.getrusage(resource.RUSAGE_CHILDREN)
    return after.ru_utime + after.ru_stime - before.ru_utime - before.ru_stime


def row_of(name, path, rounds):
    counted, read, cells = [], [], []
    for _ in range(rounds):
        counted.append(counting_seconds(path))
        cells = lab.command([lab.tool("zorpel-formats"), path]).split(",")
        read.append(float(cells[0]))
    ratios = [r / c for r, c in zip(read, counted)]
    size = path.stat().st_size / 1e6
    return [
        *(name, cells[3], "%.0f" % size, "%.2f" % median(counted), "%.2f" % median(read)),
        "%.2f (%.2f-%.2f)" % (median(ratios), min(ratios), max(ratios)),
        "%.0f" % (int(cells[4]) / 1e6),
    ]


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--pins", type=float, default=1e7)
    parser.add_argument("--rounds", type=int, default=5)
    parser.add_argument("--formats", default=",".join(FORMATS))
    parser.add_argument("--into", metavar="FILE:NAME", help="put the table into a document too")
    request = parser.parse_args()
    try:
        rows = [
            row_of(name, Path(generate(name, int(request.pins))), request.rounds)
            for name in request.formats.split(",")
        ]
        columns = ["format", "pins", "MB", "wc -w s", "reading s", "ratio", "peak MB"]
        table = lab.markdown(columns, rows)
        print(table)
        if request.into:
            lab.put_into(request.into, table)
    except lab.Failure as failure:
        sys.exit("measure_formats.py: %s" % failure)


if __name__ == "__main__":
    main()
