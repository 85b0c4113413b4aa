#!/usr/bin/env python3
"""Sets traps for the library and the readers: inputs on which a routine might become quadratic.

    traps.py [--sizes 1e4,1e5,1e6] [--only TRAP,...] [--base NAME=LIBRARY|COMMIT] [--into FILE:NAME]

Each trap is sprung at every size, the number of what it is made of. A table tells CPU seconds, and
seconds per item at every size over those at the smallest: near 1 where time is linear, 10 for each
step where it is quadratic. A trap whose growth exceeds --limit in any step is named at the end and
makes the script end with status 1. Times of the readers are those of the program's own.
"""

import argparse
import subprocess
import sys
from dataclasses import dataclass
from pathlib import Path
from statistics import median

sys.dont_write_bytecode = True
import lab  # noqa: E402 (no bytecode beside it)

LEAST = 0.02  # seconds below which nothing is said about growth
LINE = 131000  # characters of a line that the readers take whole
SCHEMES = {  # every matching and refinement, each with V-cycles on the best run
    "": lab.Setting("HFC, FM", vcycle=1),
    "FC, 1WayFM": lab.Setting("FC, 1WayFM", ctype=2, rtype=2, vcycle=1),
    "GFC, EEFM": lab.Setting("GFC, EEFM", ctype=3, rtype=3, vcycle=1),
    "HEDGE, FM": lab.Setting("HEDGE, FM", ctype=4, rtype=1, vcycle=1),
    "EDGE, EEFM": lab.Setting("EDGE, EEFM", ctype=5, rtype=3, vcycle=1),
}


@dataclass(frozen=True)
class Trap:
    name: str
    what: str  # what the sizes count
    family: str
    pins: int  # of the generator, for each of them
    nparts: int = 3  # two bisections and a k-way polish
    options: tuple = ()


TRAPS = [
    Trap("giant", "pins of one hyperedge", "giant", 2),
    Trap("hub", "hyperedges of one vertex", "hub", 3),
    Trap("identical", "identical hyperedges", "identical", 4),
    Trap("equal", "pins, all keys equal", "equal", 1),
    Trap("wide", "pins, fifty a hyperedge", "wide", 1),
    Trap("islands", "pins, nine vertices in ten without", "islands", 1),
    Trap("heavy", "pins, vertices that do not fit", "heavy", 1),
    Trap("swing", "pins, gains over all buckets", "swing", 1),
    Trap("weights", "pins, gains in heaps", "netlist", 1, options=("--vweights", "--hweights")),
    *(Trap("%d parts" % n, "pins", "netlist", 1, n) for n in (2, 8, 64, 65, 256, 1024)),
]


# ---- the library ---------------------------------------------------------------------------


def time_library(library, trap, size, setting, request):
    """CPU seconds, the median; None if a call failed or took too long."""
    hypergraph = lab.generate(trap.family, trap.pins * size, *trap.options)
    found = []
    for _ in range(request.rounds):
        run = lab.run_once(library.path, hypergraph, trap.nparts, setting, timeout=request.timeout)
        if run is None:
            return None
        found.append(run.cpu)
    return median(found)


# ---- the readers ---------------------------------------------------------------------------


def write_lines(path, nvertices, lines):
    with path.open("w", encoding="ascii") as file:
        file.write("%d %d\n" % (len(lines), nvertices))
        file.writelines(lines)


def repeated_pins(path, size):
    """Hyperedges that list one vertex over and over, as long as a line may be."""
    whole, left = divmod(size, LINE // 2)
    write_lines(path, 2, ["1 " * (LINE // 2) + "2\n"] * whole + ["1 " * left + "2\n"])


def repeated_lists(path, size):
    """Hyperedges that list four hundred vertices over and over."""
    numbers = " ".join(str(v) for v in range(1, 401))
    row = " ".join([numbers] * 50) + "\n"
    write_lines(path, 400, [row] * max(1, size // 20000))


def longest_lines(path, size):
    """Hyperedges of different vertices, as long as a line may be."""
    per_line = LINE // 8
    rows = [
        " ".join(str(v + 1) for v in range(first, min(size, first + per_line))) + "\n"
        for first in range(0, size, per_line)
    ]
    write_lines(path, size, rows)


def long_comments(path, size):
    """One comment, of as many characters, before every tenth of the hyperedges."""
    rows = ["%" + "x" * (size // 10) + "\n1 2\n"] * 10
    write_lines(path, 2, rows)


def short_lines(path, size):
    """Hyperedges of two vertices."""
    write_lines(path, size, ["%d %d\n" % (v + 1, (v + 1) % size + 1) for v in range(size)])


READER_TRAPS = {
    "repeated pins": (repeated_pins, "pins"),
    "repeated lists": (repeated_lists, "pins"),
    "longest lines": (longest_lines, "pins"),
    "long comments": (long_comments, "characters"),
    "short lines": (short_lines, "lines"),
}


def time_reader(make, size, request):
    path = lab.LAB / "inputs" / ("%s-%s.hgr" % (make.__name__, lab.short_number(size)))
    path.parent.mkdir(parents=True, exist_ok=True)
    if not path.exists():
        make(path, size)
    found = []
    for _ in range(request.rounds):
        done = subprocess.run(
            [lab.tool("zorpel-io"), path], capture_output=True, text=True, timeout=request.timeout
        )
        if not done.stdout:
            raise lab.Failure("%s: %s" % (path.name, done.stderr.strip()))
        found.append(float(done.stdout.split(",")[0]))
    return median(found)


# ---- the table -----------------------------------------------------------------------------


def growth_of(times, sizes):
    """Seconds per item over those at the smallest size that took long enough to tell; None before
    it and where a call failed."""
    rates = [t / n if t is not None else None for t, n in zip(times, sizes)]
    first = next((i for i, t in enumerate(times) if t is not None and t >= LEAST), None)
    return [
        rate / rates[first] if first is not None and i >= first and rate is not None else None
        for i, rate in enumerate(rates)
    ]


def steepest_step(growth):
    """The greatest ratio of neighbours."""
    told = [g for g in growth if g is not None]
    return max((b / a for a, b in zip(told, told[1:])), default=1.0)


def spring(name, what, time_of, request, lines):
    """Springs one trap at all sizes; returns a complaint or nothing."""
    times = []
    for size in request.sizes:
        failed = times and times[-1] is None  # nor would a larger one end in time
        times.append(None if failed else time_of(size))
    growth = growth_of(times, request.sizes)
    shown = [lab.seconds(t) if t is not None else "-" for t in times]
    lines.append([name, what, *shown, *("%.2f" % g if g is not None else "-" for g in growth)])
    print(*lines[-1], sep="  ", file=sys.stderr, flush=True)
    if None in times:
        return ["%s: no result within %g s" % (name, request.timeout)]
    steep = steepest_step(growth)
    return ["%s: seconds per item grow by %.1f" % (name, steep)] if steep > request.limit else []


def spring_all(request):
    libraries = [lab.library_at("new", request.library)] + [lab.parse_base(b) for b in request.base]
    lines, complaints = [], []
    for trap in TRAPS:
        for library in libraries:
            for word, setting in list(SCHEMES.items())[: None if request.schemes else 1]:
                if wanted(request, trap.name):
                    base = "" if library.name == "new" else library.name
                    name = ", ".join(part for part in (trap.name, word, base) if part)

                    def time_of(size):
                        return time_library(library, trap, size, setting, request)

                    complaints += spring(name, trap.what, time_of, request, lines)
    for name, (make, what) in READER_TRAPS.items():
        if wanted(request, name):
            complaints += spring(
                "reader: " + name,
                what,
                lambda size, make=make: time_reader(make, size, request),
                request,
                lines,
            )
    return lines, complaints


def wanted(request, name):
    return not request.only or name in request.only.split(",")


def parse_words():
    parser = argparse.ArgumentParser(
        description=__doc__.splitlines()[0], formatter_class=argparse.ArgumentDefaultsHelpFormatter
    )
    add = parser.add_argument
    library = lab.BUILD / "src" / "libzorpel.so"
    add("--library", default=library.relative_to(lab.ROOT), help="the build to measure")
    add("--base", action="append", default=[], metavar="NAME=LIBRARY|COMMIT", help="may repeat")
    add("--sizes", default="1e4,1e5,1e6", metavar="N,...")
    add("--only", metavar="TRAP,...", help="of the traps")
    add("--schemes", action="store_true", help="with every matching and refinement")
    add("--rounds", type=int, default=1, help="calls at each size")
    add("--limit", type=float, default=2.5, help="growth of seconds per item in one step")
    add("--timeout", type=float, default=300, help="seconds for one call")
    add("--into", metavar="FILE:NAME", help="put the table into a document too")
    request = parser.parse_args()
    request.sizes = [int(float(word)) for word in request.sizes.split(",")]
    request.library = Path(request.library)
    return request


def main():
    request = parse_words()
    try:
        lines, complaints = spring_all(request)
        sizes = [lab.short_number(size) for size in request.sizes]
        columns = [
            "trap",
            "items",
            *("%s: s" % n for n in sizes),
            *("%s: growth" % n for n in sizes),
        ]
        text = lab.markdown(columns, lines, nleft=2)
        print(text)
        if request.into:
            lab.put_into(request.into, text)
    except lab.Failure as failure:
        sys.exit("traps.py: %s" % failure)
    for complaint in complaints:
        print(complaint, file=sys.stderr)
    sys.exit(1 if complaints else 0)


if __name__ == "__main__":
    main()
