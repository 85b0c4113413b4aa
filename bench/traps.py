#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Sets traps for the library, the search and the readers: inputs on which a routine might become quadratic.

    traps.py [--sizes 1e4,1e5,1e6] [--only TRAP]... [--base NAME=LIBRARY|COMMIT] [--into FILE:NAME]

Each trap is sprung at every size, the number of what it is made of. A table tells CPU seconds, and
for each step from size to size by how much seconds per item grow, and counted work per item where
the library counts it (from a call of its own): near 1 where the cost is linear, the ratio of the
sizes where it is quadratic. Larger inputs leave the caches and take more passes, which makes time
grow where it is linear in the work. A trap is named at the end, and the script ends with status 1,
if work per item grows by more than --steep in a step, or seconds by more than that beyond the work.
The readers and the search are the programs' own; other libraries have no part in them. The search's
traps are named "search: giant" and so on.
"""

import resource
import subprocess
import sys
from dataclasses import dataclass, replace
from functools import partial
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
    reconst: int = 0
    most: int = 10**9  # a larger one takes many minutes although time is linear


TRAPS = [
    Trap("giant", "pins of one hyperedge", "giant", 2),
    Trap("broad", "pins of one hyperedge", "broad", 4, 16, most=10**5),
    Trap("hub", "hyperedges of one vertex", "hub", 3),
    Trap("identical", "identical hyperedges", "identical", 4),
    Trap("equal", "pins, all keys equal", "equal", 1),
    Trap("wide", "pins, fifty a hyperedge", "wide", 1),
    Trap("islands", "pins, nine vertices in ten without", "islands", 1),
    Trap("heavy", "pins, vertices that do not fit", "heavy", 1),
    Trap("swing", "pins, gains over all buckets", "swing", 1),
    Trap("stairs", "pins, two rising sequences", "stairs", 1, reconst=1),
    Trap("sums", "pins, different ones of equal keys", "sums", 1, reconst=1),
    Trap("weights", "pins, gains in heaps", "netlist", 1, options=("--vweights", "--hweights")),
    *(Trap("%d parts" % n, "pins", "netlist", 1, n) for n in (2, 8, 64, 65, 256, 1024)),
]


# ---- the library ---------------------------------------------------------------------------


@dataclass
class Cost:
    seconds: float
    work: int = 0  # 0 where it is not counted


def cost_of_call(library, trap, size, setting, request):
    """The median cost of a call; None if one failed or took too long."""
    hypergraph = lab.generate(trap.family, trap.pins * size, *trap.options)
    runs = [
        lab.run_once(library.path, hypergraph, trap.nparts, setting, limit=request.limit)
        for _ in range(request.rounds)
    ]
    if None in runs:
        return None
    cost = Cost(median(run.cpu for run in runs))
    if library.counted is not None:
        run = lab.run_once(library.counted, hypergraph, trap.nparts, setting, "--counts")
        cost.work = sum(run.more.values())
    return cost


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


def cost_of_reading(make, size, request):
    path = lab.LAB / "inputs" / ("%s-%s.hgr" % (make.__name__, lab.short_number(size)))
    path.parent.mkdir(parents=True, exist_ok=True)
    if not path.exists():
        make(path, size)
    found = []
    for _ in range(request.rounds):
        done = subprocess.run(
            [lab.tool("zorpel-io"), path], capture_output=True, text=True, check=False
        )
        if not done.stdout:
            raise lab.Failure("%s: %s" % (path.name, done.stderr.strip()))
        found.append(float(done.stdout.split(",")[0]))
    return Cost(median(found))


# ---- the search ----------------------------------------------------------------------------


def fixed_for(hypergraph, nparts):
    """A file that fixes every vertex."""
    path = Path("%s.fixed" % hypergraph)
    with hypergraph.open(encoding="ascii") as file:
        nvertices = int(next(line for line in file if line[0] != "%").split()[1])
    path.write_text("".join("%d\n" % (v % nparts) for v in range(nvertices)), encoding="ascii")
    return path


# What is generated, its pins for each item, the items, and the words of the call.
SEARCH_TRAPS = {
    "giant": ("giant", 2, "pins of one hyperedge", ("-k", "8")),
    "hub": ("hub", 3, "hyperedges of one vertex", ("-k", "8")),
    "identical": ("identical", 4, "identical hyperedges", ("-k", "8")),
    "islands": ("islands", 1, "pins, nine vertices in ten without", ("-k", "8")),
    "heavy": ("heavy", 1, "pins, vertices that do not fit", ("-k", "8")),
    "all fixed": ("netlist", 1, "pins", ("-k", "8")),
    "km1": ("broad", 4, "pins of one hyperedge", ("-k", "8", "--objective", "km1")),
    **{"%d parts" % n: ("netlist", 1, "pins", ("-k", str(n))) for n in (8, 64, 1000)},
}


def cost_of_search(trap, size, request):
    """The cost of the fast preset; partitions that miss the bounds are results too."""
    family, pins, _, words = SEARCH_TRAPS[trap]
    path = Path(lab.generate(family, pins * size))
    if trap == "all fixed":
        words += ("--fix", str(fixed_for(path, 8)))
    call = [lab.BUILD / "zorpelx" / "cli" / "zorpelx", "partition", path, *words, "--preset", "fast", "--seed", "1"]
    call += ["-t", "1", "-j", "1", "-q", "-o", "/dev/null"]
    found = []
    for _ in range(request.rounds):
        before = resource.getrusage(resource.RUSAGE_CHILDREN)
        try:
            done = subprocess.run(call, capture_output=True, timeout=request.limit, check=False)
        except subprocess.TimeoutExpired:
            return None
        if done.returncode not in (0, 4):
            raise lab.Failure("%s: %s" % (path.name, done.stderr.decode().strip()))
        after = resource.getrusage(resource.RUSAGE_CHILDREN)
        found.append(after.ru_utime + after.ru_stime - before.ru_utime - before.ru_stime)
    return Cost(median(found))


# ---- the table -----------------------------------------------------------------------------


def steps_of(values, sizes):
    """By how much values per item grow from each size to the next; None where one is missing."""
    rates = [value / n if value else None for value, n in zip(values, sizes)]
    return [b / a if a and b else None for a, b in zip(rates, rates[1:])]


def too_steep(seconds, work, steep):
    """Complaints about the growth in any step, by the trap's name to come."""
    found = []
    for more_seconds, more_work in zip(seconds, work):
        if more_work is not None and more_work > steep:
            found.append("work per item grows by %.1f" % more_work)
        elif more_seconds is not None and more_seconds > steep * max(1, more_work or 1):
            found.append("seconds per item grow by %.1f" % more_seconds)
    return found


def spring(name, what, cost_of, request, lines, most=10**9):
    """Springs one trap at all sizes; returns the complaints."""
    sizes = [size for size in request.sizes if size <= most]
    costs = []
    for size in sizes:
        failed = costs and costs[-1] is None  # nor would a larger one end in time
        costs.append(None if failed else cost_of(size))
    complaints = ["no result within %g s" % request.limit] if None in costs else []
    costs += [None] * (len(request.sizes) - len(sizes))
    told = [cost.seconds if cost and cost.seconds >= LEAST else None for cost in costs]
    seconds = steps_of(told, request.sizes)
    work = steps_of([cost.work if cost else None for cost in costs], request.sizes)
    shown = [lab.seconds(cost.seconds) if cost else "-" for cost in costs]
    shown += ["%.2f" % step if step is not None else "-" for step in seconds + work]
    lines.append([name, what, *shown])
    print(*lines[-1], sep="  ", file=sys.stderr, flush=True)
    complaints += too_steep(seconds, work, request.steep)
    return ["%s: %s" % (name, complaint) for complaint in complaints]


def spring_library(trap, library, request, lines):
    complaints = []
    for word, setting in list(SCHEMES.items())[: None if request.schemes else 1]:
        base = "" if library.name == "new" else library.name
        name = ", ".join(part for part in (trap.name, word, base) if part)
        kept = replace(setting, reconst=trap.reconst)
        cost_of = partial(cost_of_call, library, trap, setting=kept, request=request)
        complaints += spring(name, trap.what, cost_of, request, lines, trap.most)
    return complaints


def spring_all(request):
    measured = lab.named_library("new", request.measured)
    libraries = [measured] + [lab.parse_base(b) for b in request.base]
    lines, complaints = [], []
    for trap in TRAPS:
        for library in libraries if wanted(request, trap.name) else []:
            complaints += spring_library(trap, library, request, lines)
    for name, (make, what) in READER_TRAPS.items():
        if wanted(request, name):
            cost_of = partial(cost_of_reading, make, request=request)
            complaints += spring("reading: " + name, what, cost_of, request, lines)
    for name, trap in SEARCH_TRAPS.items():
        if wanted(request, "search: " + name):
            cost_of = partial(cost_of_search, name, request=request)
            complaints += spring("search: " + name, trap[2], cost_of, request, lines)
    return lines, complaints


def wanted(request, name):
    return not request.only or name in request.only


def parse_words():
    parser = lab.parser_of_builds(__doc__.splitlines()[0])
    add = parser.add_argument
    add("--sizes", default="1e4,1e5,1e6", metavar="N,...")
    add("--only", action="append", metavar="TRAP", help="of the traps, may repeat")
    add("--schemes", action="store_true", help="with every matching and refinement")
    add("--rounds", type=int, default=1, help="calls at each size")
    add("--steep", type=float, default=2.5, help="growth in one step that passes")
    add("--limit", type=float, default=300, help="CPU seconds for one call")
    add("--into", metavar="FILE:NAME", help="put the table into a document too")
    request = parser.parse_args()
    request.sizes = [int(float(word)) for word in request.sizes.split(",")]
    request.measured = Path(request.measured)
    return request


def main():
    request = parse_words()
    try:
        lines, complaints = spring_all(request)
        sizes = [lab.short_number(size) for size in request.sizes]
        steps = ["%s to %s" % step for step in zip(sizes, sizes[1:])]
        columns = ["trap", "items", *("%s: s" % size for size in sizes)]
        columns += ["s/item, %s" % step for step in steps]
        columns += ["work/item, %s" % step for step in steps]
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
