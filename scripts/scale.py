#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Measures zorpelx-mpi partition --distributed and models what larger hypergraphs would take.

usage: scale.py --rows FILE [--mpi ZORPELX_MPI --zorpelx ZORPELX --generate ZORPEL_GENERATE]
                [--family NAME] [--pins A,B,C,D] [--ranks 1,2,4] [--fits PINS] [-k K]

Runs that FILE (CSV) has are not made again; without --mpi none is made. Prints, in the form of
docs/SCALE.md, what was measured and the model, fitted to the first three sizes:

    levels     l0 + l1 ln(pins)                       the hypergraph itself is one
    P          p0 + p1 pins^p2, at most levels pins   pins of all levels of the first cycle
    work       w0 + w1 P / ranks + w2 pins^w3         processor seconds of the busiest rank
    memory     m0 + m1 pins / ranks + m2 pins^m3      the most of one rank, bytes
    exchanged  x P^a (ranks - 1)^b, a at most 1       sent by all ranks, bytes, but for sums
    sums       s levels log2(ranks)                   sent by one rank, bytes
    steps      t levels                               in which all ranks take part, if several
    messages   steps (g log2(ranks) + h (ranks - 1))  sent by one rank

where log2 is rounded up, and the terms of w2 and m2 are for what does not divide among the ranks.
How many steps a level takes depends on how long refinement finds something: t is the mean, and the
least and the most are printed beside it. Counts repeat exactly. Work is the processor time
outside the operations of MPI: there a rank mostly waits for the others, which is told apart.
"""
import argparse
import csv
import json
import math
import os
import pathlib
import subprocess
import tempfile

LOOPBACK = ["--oversubscribe", "--bind-to", "none", "--mca", "pml", "ob1", "--mca", "btl",
            "self,vader,tcp", "--mca", "btl_tcp_if_include", "lo", "--mca", "oob_tcp_if_include",
            "lo", "--mca", "mpi_yield_when_idle", "1"]
COLUMNS = ["family", "k", "fits", "size", "ranks", "pins", "levels", "cut", "fast_cut", "work",
           "waiting", "memory", "bytes", "sums", "sums_of_one", "messages", "steps", "level_pins"]
FITTED = 3  # sizes; those above them check the model
POWERS = (0.25, 0.5, 0.75)  # that what does not divide may grow by: rank 0 takes what fits
LEVEL_POWERS = [1 + i / 40 for i in range(21)]  # and pins of all levels
BANDWIDTH, LATENCY = 1e9, 2e-6  # of the model's cluster: bytes a second of one rank, a message
LIMIT = 600  # seconds of one run


def generated(options, folder, size):
    path = pathlib.Path(folder) / f"{options.family}.{size}.hgr"
    if not path.exists():
        with open(path, "wb") as file:
            subprocess.run([options.generate, options.family, str(size), "1"], stdout=file,
                           check=True)
    return path


def words(options, path, folder):
    return ["partition", str(path), "-k", str(options.k), "--epsilon", "3", "--preset", "fast",
            "--seed", "1", "-t", "1", "-q", "-o", f"{folder}/part", "--json", f"{folder}/json"]


def answer(folder):
    return json.loads((pathlib.Path(folder) / "json").read_text(encoding="utf-8"))


def fast_cut(options, folder, size):
    """What one process finds that holds all of it."""
    path = generated(options, folder, size)
    subprocess.run([options.zorpelx, *words(options, path, folder)], check=True, timeout=LIMIT)
    return answer(folder)["cut"]


def run(options, folder, size, ranks):
    path = generated(options, folder, size)
    environment = dict(os.environ, OMPI_ALLOW_RUN_AS_ROOT="1", OMPI_ALLOW_RUN_AS_ROOT_CONFIRM="1")
    subprocess.run(["mpirun", *LOOPBACK, "-np", str(ranks), options.mpi,
                    *words(options, path, folder), "--distributed", "--fits", str(options.fits)],
                   check=True, env=environment, timeout=LIMIT)
    found = answer(folder)
    each = found["ranks"]
    return {"family": options.family, "k": options.k, "fits": options.fits, "size": size,
            "ranks": ranks, "pins": found["npins"], "levels": found["levels"],
            "cut": found["cut"], "work": max(rank["seconds_working"] for rank in each),
            "waiting": max(rank["seconds_waiting"] for rank in each),
            "memory": max(rank["peak_memory_bytes"] for rank in each),
            "bytes": sum(rank["bytes_sent"] for rank in each),
            "sums": sum(rank["bytes_of_sums"] for rank in each),
            "sums_of_one": max(rank["bytes_of_sums"] for rank in each),
            "messages": max(rank["messages_sent"] for rank in each),
            "steps": max(rank["steps"] for rank in each),
            "level_pins": sum(found["level_pins"])}


def number(text):
    try:
        return int(text)
    except ValueError:
        try:
            return float(text)
        except ValueError:
            return text


def known_rows(options):
    """The rows of this family, number of parts and of pins that fit."""
    if not os.path.exists(options.rows):
        return []
    with open(options.rows, encoding="ascii", newline="") as file:
        rows = [{name: number(text) for name, text in row.items()} for row in csv.DictReader(file)]
    return [row for row in rows if (row["family"], row["k"], row["fits"]) ==
            (options.family, options.k, options.fits)]


def keep(options, row):
    new = not os.path.exists(options.rows)
    with open(options.rows, "a", encoding="ascii", newline="") as file:
        writer = csv.DictWriter(file, COLUMNS)
        if new:
            writer.writeheader()
        writer.writerow(row)


def measure(options, sizes, numbers):
    with tempfile.TemporaryDirectory() as folder:
        for size in sizes:
            known = [row for row in known_rows(options) if row["size"] == size]
            missing = [ranks for ranks in numbers if ranks not in [row["ranks"] for row in known]]
            if not missing:
                continue
            cut = known[0]["fast_cut"] if known else fast_cut(options, folder, size)
            for ranks in missing:
                keep(options, {**run(options, folder, size, ranks), "fast_cut": cut})


def log2(ranks):
    return math.ceil(math.log2(ranks)) if ranks > 1 else 0


def solve(matrix, right):
    """x of matrix x = right, for as many equations as unknowns; by elimination."""
    rows = [list(row) + [value] for row, value in zip(matrix, right)]
    n = len(rows)
    for i in range(n):
        pivot = max(range(i, n), key=lambda r: abs(rows[r][i]))
        rows[i], rows[pivot] = rows[pivot], rows[i]
        if abs(rows[i][i]) < 1e-12:
            raise SystemExit("scale.py: more sizes or numbers of ranks are needed for a model")
        for r in range(n):
            if r != i:
                factor = rows[r][i] / rows[i][i]
                rows[r] = [a - factor * b for a, b in zip(rows[r], rows[i])]
    return [rows[i][n] / rows[i][i] for i in range(n)]


def least_squares(points, relative=True):
    """The coefficients of the sum of a point's terms that come closest to its value, none of which
    is below 0 if errors are relative: one that would be is left out."""
    if relative:
        points = [([x / y for x in terms], 1) for terms, y in points]
    scale = [max(abs(terms[i]) for terms, _ in points) for i in range(len(points[0][0]))]
    points = [([x / s for x, s in zip(terms, scale)], y) for terms, y in points]
    used = list(range(len(scale)))
    while True:
        normal = [[sum(x[i] * x[j] for x, _ in points) for j in used] for i in used]
        found = solve(normal, [sum(x[i] * y for x, y in points) for i in used])
        if not relative or min(found) >= 0:
            break
        used.pop(found.index(min(found)))
    return [found[used.index(i)] / scale[i] if i in used else 0.0 for i in range(len(scale))]


def fit_level_pins(rows):
    """Two coefficients and a power: where each level has the same share of the one before, that is
    1, and what the last levels lack is the same for all sizes."""
    best = None
    for power in LEVEL_POWERS:
        points = [((1 / r["level_pins"], r["pins"] ** power / r["level_pins"]), 1) for r in rows]
        found = least_squares(points, relative=False)
        error = sum((sum(f * t for f, t in zip(found, terms)) - 1) ** 2 for terms, _ in points)
        if best is None or error < best[0]:
            best = (error, [*found, power])
    return best[1]


def shares(divided, pins, ranks, power):
    return (1, divided / ranks, pins ** power)


def fit_shared(rows, value, divided):
    """Three coefficients, and the power of pins that goes with them best."""
    best = None
    for power in POWERS:
        points = [(shares(r[divided], r["pins"], r["ranks"], power), max(r[value], 1e-3))
                  for r in rows]
        found = least_squares(points)
        error = sum((sum(f * t for f, t in zip(found, terms)) / y - 1) ** 2 for terms, y in points)
        if best is None or error < best[0]:
            best = (error, [*found, power])
    return best[1]


def fit_exchanged(rows):
    """Logarithms are linear. Traffic grows no faster than the pins."""
    points = [((1, math.log(r["ranks"] - 1), math.log(r["level_pins"])),
               math.log(max(r["bytes"] - r["sums"], 1))) for r in rows]
    x, b, a = least_squares(points, relative=False)
    if a > 1:
        a = 1
        x, b = least_squares([(terms[:2], y - terms[2]) for terms, y in points], relative=False)
    return [math.exp(x), a, b]


def fit(rows):
    several = [row for row in rows if row["ranks"] > 1]
    return {"levels": least_squares([((1, math.log(r["pins"])), r["levels"]) for r in rows],
                                    relative=False),
            "level_pins": fit_level_pins(rows),
            "work": fit_shared(rows, "work", "level_pins"),
            "memory": fit_shared(rows, "memory", "pins"),
            "exchanged": fit_exchanged(several),
            "sums": least_squares([((r["levels"] * log2(r["ranks"]),), r["sums_of_one"])
                                   for r in several]),
            "steps": sum(r["steps"] / r["levels"] for r in several) / len(several),
            "messages": least_squares([((log2(r["ranks"]), r["ranks"] - 1),
                                        r["messages"] / r["steps"]) for r in several])}


def predicted(model, pins, ranks):
    """Of the busiest rank, but for exchanged, which is of all."""
    x, a, b = model["exchanged"]
    levels = max(model["levels"][0] + model["levels"][1] * math.log(pins), 1)
    p = model["level_pins"]
    level_pins = min(max(p[0] + p[1] * pins ** p[2], pins), levels * pins)
    a_step = model["messages"][0] * log2(ranks) + model["messages"][1] * (ranks - 1)

    def shared(found, divided):
        return sum(f * t for f, t in zip(found, shares(divided, pins, ranks, found[3])))

    return {"levels": levels,
            "work": shared(model["work"], level_pins),
            "memory": shared(model["memory"], pins),
            "exchanged": x * level_pins ** a * (ranks - 1) ** b if ranks > 1 else 0,
            "sums": model["sums"][0] * levels * log2(ranks),
            "a_step": a_step,
            "messages": a_step * model["steps"] * levels}


def print_rows(rows, model, fitted):
    """Each figure with the model's behind it."""
    print("| pins | ranks | levels | cut | `fast` | work, s | MiB | bytes a pin | steps a level | "
          "messages a step |\n|" + " ---: |" * 10)
    for row in sorted(rows, key=lambda r: (r["size"], r["ranks"])):
        guess = predicted(model, row["pins"], row["ranks"])
        sent = guess["exchanged"] + row["ranks"] * guess["sums"]
        against = f"{100 * (row['cut'] / row['fast_cut'] - 1):+.0f} %" if row["fast_cut"] else ""
        check = "" if row in fitted else " *"
        print(f"| {row['pins']:,}{check} | {row['ranks']} | {row['levels']} | {row['cut']} | "
              f"{against} | {row['work']:.1f} ({guess['work']:.1f}) | "
              f"{row['memory'] / 2**20:.0f} ({guess['memory'] / 2**20:.0f}) | "
              f"{row['bytes'] / row['pins']:.0f} ({sent / row['pins']:.0f}) | "
              f"{row['steps'] / row['levels']:.0f} | "
              f"{row['messages'] / row['steps']:.1f} ({guess['a_step']:.1f}) |")


def print_model(model, rows):
    levels, work, memory, x = model["levels"], model["work"], model["memory"], model["exchanged"]
    pins, messages = model["level_pins"], model["messages"]
    steps = [row["steps"] / row["levels"] for row in rows if row["ranks"] > 1]
    print(f"""
    levels     {levels[0]:.2f} + {levels[1]:.2f} ln(pins)
    P          {pins[0]:.0f} + {pins[1]:.2f} pins^{pins[2]:.3f}, at most levels pins
    work       {work[0]:.2f} s + {1e6 * work[1]:.2f} us P / ranks + {1e6 * work[2]:.3g} us pins^{work[3]}
    memory     {memory[0] / 2**20:.0f} MiB + {memory[1]:.0f} bytes pins / ranks + {memory[2]:.3g} bytes pins^{memory[3]}
    exchanged  {x[0]:.3g} bytes P^{x[1]:.2f} (ranks - 1)^{x[2]:.2f}
    sums       {model['sums'][0] / 1000:.0f} kB levels log2(ranks)
    steps      {model['steps']:.0f} levels ({min(steps):.0f} to {max(steps):.0f} in all that was measured)
    messages   steps ({messages[0]:.2f} log2(ranks) + {messages[1]:.2f} (ranks - 1))
""")
    print("| pins | ranks | work, s | exchange, s | memory, GiB | sent, GB | messages |\n|"
          + " ---: |" * 7)
    for power in (9, 10, 11):
        for ranks in (16, 64, 256, 1024):
            guess = predicted(model, 10**power, ranks)
            sent = guess["exchanged"] / ranks + guess["sums"]
            print(f"| 10^{power} | {ranks:,} | {guess['work']:,.0f} | "
                  f"{sent / BANDWIDTH + guess['messages'] * LATENCY:,.0f} | "
                  f"{guess['memory'] / 2**30:,.1f} | {sent / 1e9:,.1f} | "
                  f"{guess['messages'] / 1e6:,.1f} million |")


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--rows", required=True)
    parser.add_argument("--mpi")
    parser.add_argument("--zorpelx")
    parser.add_argument("--generate")
    parser.add_argument("--family", default="mesh")
    parser.add_argument("--pins", default="100000,300000,1000000,3000000")
    parser.add_argument("--ranks", default="1,2,4")
    parser.add_argument("--fits", type=int, default=20000)
    parser.add_argument("-k", type=int, default=8)
    options = parser.parse_args()
    sizes = [int(size) for size in options.pins.split(",")]
    if options.mpi:
        if not options.zorpelx or not options.generate:
            parser.error("--mpi needs --zorpelx and --generate")
        measure(options, sizes, [int(ranks) for ranks in options.ranks.split(",")])
    rows = known_rows(options)
    first = sorted({row["size"] for row in rows})[:FITTED]
    fitted = [row for row in rows if row["size"] in first]
    if len(first) < FITTED or len({row["ranks"] for row in fitted if row["ranks"] > 1}) < 2:
        raise SystemExit("scale.py: a model needs three sizes, by 2 ranks and 4")
    model = fit(fitted)
    print_rows(rows, model, fitted)
    print_model(model, rows)


if __name__ == "__main__":
    main()
