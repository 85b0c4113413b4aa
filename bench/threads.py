#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Wall-clock seconds of zorpelx with one thread and with more, interleaved.

    threads.py ZORPELX FILE... [--parts 8,32,64] [--threads 2] [--runs 2] [--rounds 3] [--seed 1]

Each round calls the program with one thread and with several, every other round the other way
round. Shown are the medians of what the program says it took, reading aside, and of the rounds'
ratios. The partitions must be the same; a difference ends the script with status 1. On a machine
with other work the ratio says little: processors that are busy cannot run a second thread.
"""

import argparse
import json
import subprocess
import sys
import tempfile
from pathlib import Path
from statistics import median


def call(options, file, nparts, nthreads, folder):
    out = Path(folder) / "part"
    words = [
        options.zorpelx, "partition", file, "-k", str(nparts), "-t", str(nthreads),
        "-r", str(options.runs), "--seed", str(options.seed), "-o", str(out), "--json", "-",
        "--progress", "never",
    ]  # fmt: skip
    run = subprocess.run(words, check=True, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)
    return json.loads(run.stdout)["seconds"], out.read_bytes()


def measure(options, file, nparts, folder):
    counts = (1, options.threads)
    rounds = []
    for i in range(options.rounds):
        order = counts if i % 2 == 0 else counts[::-1]
        results = {n: call(options, file, nparts, n, folder) for n in order}
        if results[1][1] != results[options.threads][1]:
            sys.exit(f"{file}: {nparts} parts: another partition with {options.threads} threads")
        rounds.append(tuple(results[n][0] for n in counts))
    return rounds


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n", maxsplit=1)[0])
    parser.add_argument("zorpelx")
    parser.add_argument("files", nargs="+")
    parser.add_argument("--parts", default="8,32,64")
    for name, value in (("--threads", 2), ("--runs", 2), ("--rounds", 3), ("--seed", 1)):
        parser.add_argument(name, type=int, default=value)
    options = parser.parse_args()
    print(f"| instance | parts | 1 thread, s | {options.threads} threads, s | ratio |")
    print("| --- | ---: | ---: | ---: | ---: |")
    with tempfile.TemporaryDirectory() as folder:
        for file in options.files:
            for nparts in map(int, options.parts.split(",")):
                rounds = measure(options, file, nparts, folder)
                one, more = (median(r[i] for r in rounds) for i in (0, 1))
                ratio = median(r[1] / r[0] for r in rounds)
                name = Path(file).name.split(".")[0]
                print(f"| {name} | {nparts} | {one:.3f} | {more:.3f} | {ratio:.2f} |", flush=True)


main()
