#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""One checksum of results for every compiler, optimisation level, address layout and allocator.

usage: same_results.py BUILD [--cases N]

Builds zorpel-torture under the folder BUILD by g++ and clang at -O0, -O2 and -O3 and runs the same
cases with each: as it is, without randomised addresses, and with another allocator (jemalloc, from
Debian's libjemalloc2). Prints a table; the status is 1 when a checksum differs. Takes minutes.
"""
import argparse
import os
import pathlib
import platform
import re
import subprocess
import sys

PROJECT = pathlib.Path(__file__).resolve().parents[2]
COMPILERS = {"g++": "gcc", "clang++": "clang"}
LEVELS = ("-O0", "-O2", "-O3")
JEMALLOC = f"/usr/lib/{platform.machine()}-linux-gnu/libjemalloc.so.2"


def build(folder, compiler, level):
    place = folder / f"{COMPILERS[compiler]}{level}"
    configure = [
        "cmake", "-S", PROJECT, "-B", place, "-G", "Ninja",
        "-DCMAKE_BUILD_TYPE=Debug", f"-DCMAKE_CXX_FLAGS_DEBUG={level}",
        f"-DCMAKE_C_COMPILER={COMPILERS[compiler]}", f"-DCMAKE_CXX_COMPILER={compiler}",
        "-DZORPEL_TESTS=ON",
    ]  # fmt: skip
    subprocess.run(configure, check=True, stdout=subprocess.DEVNULL)
    command = ["ninja", "-C", place, "zorpel-torture"]
    subprocess.run(command, check=True, stdout=subprocess.DEVNULL)
    return place / "tests/model/zorpel-torture"


def checksum(words, **variables):
    run = subprocess.run(
        words, env={**os.environ, **variables}, capture_output=True, text=True, check=True
    )
    return re.search(r": ([0-9a-f]{16})$", run.stdout.strip())[1]


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("build", type=pathlib.Path)
    parser.add_argument("--cases", type=int, default=2000)
    options = parser.parse_args()
    if not os.path.exists(JEMALLOC):
        sys.exit(f"{JEMALLOC} is missing: install libjemalloc2")
    sums = set()
    print(f"{'build':12} {'as it is':18} {'fixed addresses':18} {'jemalloc':18}")
    for compiler in COMPILERS:
        for level in LEVELS:
            program = build(options.build, compiler, level)
            words = [program, "--checksum", "--n", str(options.cases), "--seed", "20"]
            row = [
                checksum(words),
                checksum(["setarch", "-R", *words]),
                checksum(words, LD_PRELOAD=JEMALLOC),
            ]
            sums.update(row)
            print(f"{compiler + ' ' + level:12} {row[0]:18} {row[1]:18} {row[2]:18}", flush=True)
    print("identical" if len(sums) == 1 else f"{len(sums)} different checksums")
    sys.exit(len(sums) != 1)


main()
