#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Measures zorpelx-mpi partition --distributed and models what larger hypergraphs would take.

usage: scale.py --mpi ZORPELX_MPI --generate ZORPEL_GENERATE [--family NAME] [--pins A,B,C,D]
                [--ranks 1,2,4] [--fits PINS] [-k K]

The model is fitted to the first three sizes, on all numbers of ranks, and checked on the fourth:

    seconds        s0 + s1 pins / ranks      of the slowest rank
    memory         m0 + m1 pins / ranks      the most of one rank, bytes
    traffic        t1 pins (1 - 1 / ranks)   sent by all ranks together, bytes
    messages       c0 + c1 (ranks - 1)       sent by one rank in one level

It prints both tables in the form of docs/SCALE.md. Ranks that share a processor take its time from
one another; seconds are those of this machine as it was, and need as many processors as ranks.
"""
import argparse
import json
import os
import pathlib
import subprocess
import tempfile

LOOPBACK = ["--oversubscribe", "--bind-to", "none", "--mca", "pml", "ob1", "--mca", "btl",
            "self,vader,tcp", "--mca", "btl_tcp_if_include", "lo", "--mca", "oob_tcp_if_include",
            "lo"]


def run(options, folder, pins, ranks):
    """The figures of one run; the hypergraph is generated if it is not there yet."""
    path = pathlib.Path(folder) / f"{options.family}.{pins}.hgr"
    if not path.exists():
        with open(path, "wb") as file:
            subprocess.run([options.generate, options.family, str(pins), "1"], stdout=file,
                           check=True)
    report = pathlib.Path(folder) / "report.json"
    environment = dict(os.environ, OMPI_ALLOW_RUN_AS_ROOT="1", OMPI_ALLOW_RUN_AS_ROOT_CONFIRM="1")
    subprocess.run(["mpirun", *LOOPBACK, "-np", str(ranks), options.mpi, "partition", str(path),
                    "--distributed", "-k", str(options.k), "--fits", str(options.fits), "--preset",
                    "fast", "-t", "1", "-q", "--gather", "-o", str(path) + ".part", "--json",
                    str(report)], check=True, env=environment)
    found = json.loads(report.read_text())
    each = found["ranks"]
    return {"pins": found["npins"], "ranks": ranks, "seconds": sum(found["seconds"].values()),
            "memory": max(rank["peak_memory_bytes"] for rank in each),
            "traffic": sum(rank["bytes_sent"] for rank in each),
            "messages": max(rank["messages_sent"] for rank in each) / found["levels"],
            "levels": found["levels"], "cut": found["cut"]}


def fit_line(points):
    """a and b of y = a + b x by least squares of relative errors; a not below 0."""
    w = [1 / max(y, 1e-9) ** 2 for _, y in points]
    s = sum(w)
    mx = sum(wi * x for wi, (x, _) in zip(w, points)) / s
    my = sum(wi * y for wi, (_, y) in zip(w, points)) / s
    spread = sum(wi * (x - mx) ** 2 for wi, (x, _) in zip(w, points))
    b = sum(wi * (x - mx) * (y - my) for wi, (x, y) in zip(w, points)) / spread if spread else 0
    if my - b * mx < 0:
        return 0, (sum(wi * x * y for wi, (x, y) in zip(w, points)) /
                   sum(wi * x * x for wi, (x, _) in zip(w, points)))
    return my - b * mx, b


def fit(rows):
    many = [row for row in rows if row["ranks"] > 1]
    return {"seconds": fit_line([(r["pins"] / r["ranks"], r["seconds"]) for r in rows]),
            "memory": fit_line([(r["pins"] / r["ranks"], r["memory"]) for r in rows]),
            "traffic": (0, sum(r["traffic"] / (r["pins"] * (1 - 1 / r["ranks"])) for r in many) /
                        max(len(many), 1)),
            "messages": fit_line([(r["ranks"] - 1, r["messages"]) for r in many])}


def predicted(model, pins, ranks):
    share = {"seconds": pins / ranks, "memory": pins / ranks, "traffic": pins * (1 - 1 / ranks),
             "messages": ranks - 1}
    return {what: a + b * share[what] for what, (a, b) in model.items()}


def print_rows(rows, model):
    print("| pins | ranks | levels | cut | seconds | peak of a rank, MiB | traffic, bytes a pin | "
          "messages of a rank, a level | model: s, MiB, bytes a pin |\n|" + " ---: |" * 9)
    for row in rows:
        guess = predicted(model, row["pins"], row["ranks"])
        print(f"| {row['pins']} | {row['ranks']} | {row['levels']} | {row['cut']} | "
              f"{row['seconds']:.1f} | {row['memory'] / 2**20:.0f} | "
              f"{row['traffic'] / row['pins']:.0f} | {row['messages']:.0f} | "
              f"{guess['seconds']:.1f}, {guess['memory'] / 2**20:.0f}, "
              f"{guess['traffic'] / row['pins']:.0f} |")


def print_model(model):
    print()
    for what, (a, b) in model.items():
        print(f"{what}: {a:.4g} + {b:.4g} x")
    print("\n| pins | ranks | seconds | memory of a rank, GiB | traffic of a rank, GB |\n|"
          + " ---: |" * 5)
    for power in (9, 10, 11):
        for ranks in (16, 64, 256, 1024):
            guess = predicted(model, 10**power, ranks)
            print(f"| 10^{power} | {ranks} | {guess['seconds']:.0f} | "
                  f"{guess['memory'] / 2**30:.1f} | {guess['traffic'] / ranks / 1e9:.1f} |")


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--mpi", required=True)
    parser.add_argument("--generate", required=True)
    parser.add_argument("--family", default="mesh")
    parser.add_argument("--pins", default="250000,500000,1000000,2000000")
    parser.add_argument("--ranks", default="1,2,4")
    parser.add_argument("--fits", type=int, default=100000)
    parser.add_argument("-k", type=int, default=2)
    options = parser.parse_args()
    sizes = [int(size) for size in options.pins.split(",")]
    rows = []
    with tempfile.TemporaryDirectory() as folder:
        for pins in sizes:
            for ranks in map(int, options.ranks.split(",")):
                rows.append(run(options, folder, pins, ranks))
    known = [row for i, row in enumerate(rows) if i < len(rows) * (len(sizes) - 1) // len(sizes)]
    model = fit(known)
    print_rows(rows, model)
    print_model(model)


main()
