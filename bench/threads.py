#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Wall-clock seconds of zorpelx with one thread and with more, interleaved.

    threads.py ZORPELX FILE... [--parts 8,32,64] [--threads 2] [--runs 1] [--rounds 3] [--seed 1]

Each round calls the program with one thread and with several, every other round the other way
round. Shown are the medians of what the program says it took, reading aside, and of the rounds'
ratios. The partitions must be the same; a difference ends the script with status 1. On a machine
with other work the ratio says little: processors that are busy cannot run a second thread.

What one thread does alone is measured too, by one thread: the first bisection (a call for two
parts) and the polish (by how much a call without it takes less). The bound is the ratio if that took
as long with more threads, and all else were divided evenly among processors of their own.
"""

import argparse
import json
import subprocess
import sys
import tempfile
from pathlib import Path
from statistics import median


def call(options, file, nparts, nthreads, folder, more=()):
    out = Path(folder) / "part"
    words = [
        options.zorpelx, "partition", file, "-k", str(nparts), "-t", str(nthreads),
        "-r", str(options.runs), "--seed", str(options.seed), "-o", str(out), "--json", "-",
        "--progress", "never", *more,
    ]  # fmt: skip
    run = subprocess.run(words, check=True, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)
    return json.loads(run.stdout)["seconds"], out.read_bytes()


def measure(options, file, nparts, folder):
    """Of each round: seconds of one thread, of several, and of what one thread does alone."""
    counts = (1, options.threads)
    rounds = []
    for i in range(options.rounds):
        order = counts if i % 2 == 0 else counts[::-1]
        results = {n: call(options, file, nparts, n, folder) for n in order}
        if results[1][1] != results[options.threads][1]:
            sys.exit(f"{file}: {nparts} parts: another partition with {options.threads} threads")
        one, more = (results[n][0] for n in counts)
        first = call(options, file, 2, 1, folder)[0]
        unpolished = call(options, file, nparts, 1, folder, ("--polish", "no"))[0]
        rounds.append((one, more, min(one, first + max(0, one - unpolished))))
    return rounds


def columns(rounds, nthreads):
    one, more = (median(r[i] for r in rounds) for i in (0, 1))
    ratio = median(r[1] / r[0] for r in rounds)
    alone = median(r[2] / r[0] for r in rounds)
    bound = alone + (1 - alone) / nthreads
    return f"{one:.3f} | {more:.3f} | {ratio:.2f} | {100 * alone:.0f} % | {bound:.2f}"


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n", maxsplit=1)[0])
    parser.add_argument("zorpelx")
    parser.add_argument("files", nargs="+")
    parser.add_argument("--parts", default="8,32,64")
    for name, value in (("--threads", 2), ("--runs", 1), ("--rounds", 3), ("--seed", 1)):
        parser.add_argument(name, type=int, default=value)
    options = parser.parse_args()
    print(f"| instance | parts | 1 thread, s | {options.threads} threads, s | ratio | alone | bound |")
    print("| --- | ---: | ---: | ---: | ---: | ---: | ---: |")
    with tempfile.TemporaryDirectory() as folder:
        for file in options.files:
            for nparts in map(int, options.parts.split(",")):
                rounds = measure(options, file, nparts, folder)
                name = Path(file).name.split(".")[0]
                print(f"| {name} | {nparts} | {columns(rounds, options.threads)} |", flush=True)


main()
