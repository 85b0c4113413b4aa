#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Golden grid: every scheme of coarsening, refinement, V-cycle and reconstruction, as checksums.

A line of grid.csv is a run of the program with all traces but the timers on: its words, the
reported cut and the checksums of its standard output and its partition file. The folders beside
this file show such output in full; to see what a line stands for, run its words.
"""

import csv
import hashlib
import re
import shutil
import sys
import tempfile
from concurrent.futures import ThreadPoolExecutor
from os import cpu_count
from pathlib import Path

HERE = Path(__file__).resolve().parent
sys.dont_write_bytecode = True
sys.path.insert(0, str(HERE.parent))
import harness  # noqa: E402 (found by the path above)

TABLE = HERE / "grid.csv"
COLUMNS = ("words", "cut", "output", "partition")
TRACES = 1 + 2 + 4 + 8 + 16 + 128 + 256


def grid_words():
    """The option points: 5 x 3 x 4 x 2 schemes, over inputs that take turns."""
    inputs = ("clusters.hgr 3", "weighted.hgr 2", "wide.hgr 4", "islands.hgr 2", "twins.hgr 5")
    points = [
        f"{ctype} {rtype} {vcycle} {reconst}"
        for ctype in range(1, 6)
        for rtype in range(1, 4)
        for vcycle in range(4)
        for reconst in range(2)
    ]
    # 120 points and 5 inputs: without the second term each CType would keep to few inputs
    turns = [(i + i // len(inputs)) % len(inputs) for i in range(len(points))]
    runs = [f"{inputs[t]} 5 2 {point} {TRACES}" for t, point in zip(turns, points)]
    fixed = [f"clusters.hgr clusters.fix4 4 10 2 {point} {TRACES}" for point in points[::7]]
    return runs + fixed


def checksum(data):
    return hashlib.sha256(data.replace(b"-nan", b" nan")).hexdigest()[:16]


def run_point(tools, words):
    with tempfile.TemporaryDirectory() as name:
        folder = Path(name)
        for path in (HERE / "inputs").iterdir():
            shutil.copy(path, folder)
        outcome = harness.run_program(tools, words.split(), folder)
        messages = harness.judge_partitions(tools, words.split(), folder, outcome)
    cut = re.search(rb"Hyperedge Cut: *(\d+)", outcome.stdout)
    if outcome.status != 0 or outcome.stderr or cut is None or len(outcome.files) != 1:
        messages.append(f"status {outcome.status}, {outcome.stderr.decode(errors='replace')}")
        return None, messages
    (partition,) = outcome.files.values()
    row = (words, cut.group(1).decode(), checksum(outcome.stdout), checksum(partition))
    return row, messages


def read_table():
    with TABLE.open(newline="") as file:
        return {row["words"]: tuple(row[c] for c in COLUMNS) for row in csv.DictReader(file)}


def write_table(rows):
    with TABLE.open("w", newline="") as file:
        writer = csv.writer(file, lineterminator="\n")
        writer.writerow(COLUMNS)
        writer.writerows(rows)


def check_point(want, row):
    """Messages about a line of the table: what was expected, what came."""
    if row == want:
        return []
    told = "no such line" if want is None else ",".join(want)
    return [f"{told}, expected", f"{','.join(row)}, found"]


def main():
    asked = harness.parser_for(__doc__).parse_args()
    tools = harness.find_tools(asked.build)
    want = read_table() if TABLE.exists() else {}
    points = grid_words()
    with ThreadPoolExecutor(cpu_count()) as pool:
        results = list(pool.map(lambda words: run_point(tools, words), points))
    broken = changed = 0
    for words, (row, messages) in zip(points, results):
        changes = check_point(want.get(words), row) if row is not None else []
        broken += bool(messages)
        changed += bool(changes) and not messages
        for message in messages + changes:
            print(f"zorpel {words}: {message}")
    if asked.update and not broken:
        write_table([row for row, _ in results])
        changed = 0
    failed = broken + changed
    print(f"{len(points) - failed} passed, {failed} failed")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
