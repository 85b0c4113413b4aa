#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Measures a build of the library against others, interleaved.

    compare_builds.py --folder DIR --base NAME=LIBRARY --base NAME=COMMIT [--csv FILE]
    compare_builds.py --generate netlist,mesh,powerlaw --pins 1e5,1e6,1e7 --settings '1 run'
    compare_builds.py --read FILE.csv... [--into docs/PERFORMANCE.md:speed]

For every hypergraph, number of parts and setting, the builds are called in turn, A B A B ..., each
time by a process of its own and starting with another one. Figures are medians over the rounds. A
ratio is the base's CPU seconds over the build's, taken within each round, and its median is shown
with the least and the greatest: times as fast as the base. All builds must give the same
partition; a difference is reported and ends the script with status 1, and so does a failed call.

A base is a shared library or a commit of this repository, which is built first. --stages tells
where the seconds go, from runs of their own, and --counts how much work was done, exactly. The
CSV has a line for each call; --read makes the tables again from such files.
"""

import csv
import os
import sys
from collections import defaultdict
from pathlib import Path
from statistics import median

sys.dont_write_bytecode = True
import lab  # noqa: E402 (no bytecode beside it)

NEW = "new"
FIELDS = (
    "instance",
    "vertices",
    "hyperedges",
    "pins",
    "nparts",
    "setting",
    "build",
    "kind",
    "round",
) + ("cpu", "wall", "kilobytes", "cut", "checksum", "details")
KINDS = ("seconds", "stages", "counts")  # what a call was made for
REFINEMENT = ("fill", "moves", "rollback", "refinement_rest", "kway")  # printed timers: in one


# ---- measuring -----------------------------------------------------------------------------


def calls_of_round(request, libraries, number):
    """The calls of a round as (library, kind, path, option of zorpel-time)."""
    turn = number % len(libraries)
    for library in libraries[turn:] + libraries[:turn]:
        yield library, "seconds", library.path, "--sizes"
    if request.stages:
        for library in libraries[turn:] + libraries[:turn]:
            yield library, "stages", library.staged, "--stages"
    if request.counts and number == 0:
        for library in libraries:
            if library.counted is not None:
                yield library, "counts", library.counted, "--counts"


def measure_one(request, libraries, hypergraph, nparts, setting, write):
    """All rounds on one hypergraph with one setting; returns the complaints."""
    place = "%s, %d parts, %s" % (lab.instance_name(hypergraph), nparts, setting.name)
    complaints, sizes, checksums = [], {}, {}
    for number in range(request.rounds):
        for library, kind, path, option in calls_of_round(request, libraries, number):
            run = lab.run_once(path, hypergraph, nparts, setting, option, limit=request.limit)
            if run is None:
                complaints.append("%s: %s gave no result" % (place, library.name))
                continue
            if kind == "seconds":
                sizes = run.more
            checksums.setdefault((run.checksum, run.cut), "%s, %s" % (library.name, kind))
            details = "" if kind == "seconds" else join_details(run.more)
            write(
                {
                    **{name: sizes.get(name, 0) for name in ("vertices", "hyperedges", "pins")},
                    **{"instance": lab.instance_name(hypergraph), "nparts": nparts},
                    **{"setting": setting.name, "build": library.name, "kind": kind},
                    **{"round": number, "cpu": run.cpu, "wall": run.wall, "cut": run.cut},
                    **{"kilobytes": run.kilobytes, "checksum": run.checksum, "details": details},
                }
            )
    if len(checksums) > 1:
        complaints.append("%s: partitions differ: %s" % (place, "; ".join(checksums.values())))
    return complaints


def join_details(more):
    return " ".join("%s=%s" % item for item in more.items())


def find_inputs(request):
    inputs = lab.inputs_of_folder(request.folder) if request.folder else []
    sizes = [int(float(word)) for word in request.pins.split(",")]
    families = request.generate.split(",") if request.generate else []
    inputs += [lab.generate(family, pins) for family in families for pins in sizes]
    if request.only:
        inputs = [path for path in inputs if lab.instance_name(path) in request.only.split(",")]
    if not inputs:
        raise lab.Failure("no inputs: --folder, --generate or both are needed")
    return inputs


def find_settings(request):
    known = dict(lab.SETTINGS)
    for word in request.setting:
        name, _, numbers = word.partition("=")
        scheme = [int(number) for number in numbers.split(",")]
        known[name] = lab.Setting(name, *scheme)
    names = request.settings.split(",") + [word.partition("=")[0] for word in request.setting]
    missing = [name for name in names if name and name not in known]
    if missing:
        raise lab.Failure("no setting %s; there are %s" % (missing[0], ", ".join(known)))
    return [known[name] for name in dict.fromkeys(names) if name]


def measure(request):
    """Makes all calls; returns (rows as the CSV has them, complaints)."""
    measured = lab.named_library(NEW, request.measured)
    libraries = [measured] + [lab.parse_base(b) for b in request.base]
    inputs, settings = find_inputs(request), find_settings(request)
    rows, complaints = [], []
    with open(request.csv or os.devnull, "w", newline="", encoding="utf-8") as file:
        writer = csv.DictWriter(file, FIELDS, lineterminator="\n")
        writer.writeheader()

        def write(row):
            writer.writerow(row)
            file.flush()
            rows.append({name: str(value) for name, value in row.items()})

        for hypergraph in inputs:
            for setting in settings:
                for nparts in [int(word) for word in request.nparts.split(",")]:
                    found = measure_one(request, libraries, hypergraph, nparts, setting, write)
                    complaints += found
                    progress = (lab.instance_name(hypergraph), nparts, setting.name)
                    print("%s, %d parts, %s: done" % progress, file=sys.stderr)
                    print(*found, sep="\n", end="\n" if found else "", file=sys.stderr)
    return rows, complaints


def read_rows(names):
    rows = []
    for name in names:
        with open(name, newline="", encoding="utf-8") as file:
            rows += csv.DictReader(file)
    return rows


# ---- tables --------------------------------------------------------------------------------


def group_rows(rows, kind):
    """{place: {build: {round: row}}} of the calls of a kind, in the order of the rows; a place is
    an instance, a number of parts and a setting."""
    places = defaultdict(lambda: defaultdict(dict))
    for row in rows:
        if row["kind"] == kind:
            place = (row["instance"], int(row["nparts"]), row["setting"])
            places[place][row["build"]][row["round"]] = row
    return places


def cpu_ratios(base, new):
    """The base's seconds over the build's, of the rounds that both have."""
    shared = [number for number in new if number in base]
    return [float(base[number]["cpu"]) / max(1e-4, float(new[number]["cpu"])) for number in shared]


def shown_ratio(ratios):
    return "%.2f (%.2f-%.2f)" % (median(ratios), min(ratios), max(ratios)) if ratios else "-"


def figures_of(rounds):
    """CPU seconds, per pin in us, memory per pin in bytes: medians; pins."""
    pins = max(int(row["pins"]) for row in rounds.values())
    cpu = median(float(row["cpu"]) for row in rounds.values())
    kilobytes = median(float(row["kilobytes"]) for row in rounds.values())
    return cpu, 1e6 * cpu / max(1, pins), 1024 * kilobytes / max(1, pins), pins


def table_of_seconds(rows):
    """Seconds, memory and ratios, instance by instance, and the ratios' geometric means."""
    places = group_rows(rows, "seconds")
    bases = list(dict.fromkeys(b for builds in places.values() for b in builds if b != NEW))
    columns = ["hypergraph", "setting", "parts", "pins", "cut", "CPU s", "us/pin", "bytes/pin"]
    for base in bases:
        columns += ["%s s" % base, "%s bytes/pin" % base, "times as fast as %s" % base]
    lines, means = [], defaultdict(lambda: defaultdict(list))
    for (instance, nparts, setting), builds in places.items():
        if NEW not in builds:
            continue
        cpu, per_pin, memory, pins = figures_of(builds[NEW])
        cut = next(iter(builds[NEW].values()))["cut"]
        line = [instance, setting, nparts, pins, cut, lab.seconds(cpu)]
        line += ["%.2f" % per_pin, "%.0f" % memory]
        for base in bases:
            if base not in builds:
                line += ["-", "-", "-"]
                continue
            ratios = cpu_ratios(builds[base], builds[NEW])
            base_cpu, _, base_memory, _ = figures_of(builds[base])
            line += [lab.seconds(base_cpu), "%.0f" % base_memory, shown_ratio(ratios)]
            if ratios:
                means[setting, nparts][base].append(median(ratios))
        lines.append(line)
    lines += mean_lines(means, bases)
    return lab.markdown(columns, lines, nleft=2)


def mean_lines(means, bases):
    """Geometric means of the medians: for each setting and number of parts, and of all."""
    every = defaultdict(list)
    for places in means.values():
        for base, ratios in places.items():
            every[base] += ratios
    lines = []
    groups = list(means.items()) + ([(("all", ""), every)] if len(means) > 1 else [])
    for (setting, nparts), ratios in groups:
        line = ["geometric mean", setting, nparts, "", "", "", "", ""]
        for base in bases:
            line += ["", "", "%.2f" % lab.geometric_mean(ratios[base]) if ratios[base] else "-"]
        lines.append(line)
    return lines


def details_of(rounds):
    """Medians of the details of the rounds, in their order."""
    parsed = [dict(w.split("=") for w in row["details"].split()) for row in rounds.values()]
    return {name: median(lab.number(p[name]) for p in parsed) for name in parsed[0]}


def table_of_details(rows, kind, shown):
    """A line for each build of each place; shown(details) gives the cells by their columns."""
    found = [
        (instance, setting, nparts, build, shown(details_of(rounds)))
        for (instance, nparts, setting), builds in group_rows(rows, kind).items()
        for build, rounds in builds.items()
    ]
    names = list(dict.fromkeys(name for *_, cells in found for name in cells))
    columns = ["hypergraph", "setting", "parts", "build", *names]
    lines = [[*place, *(cells.get(name, "") for name in names)] for *place, cells in found]
    return lab.markdown(columns, lines, nleft=2)


def shown_stages(stages):
    """Seconds of each stage. A library that prints its timers tells refinement in one figure."""
    stages.setdefault("refinement", sum(stages.get(name, 0) for name in REFINEMENT))
    names = ["matching", "contraction", "initial", "refinement", *REFINEMENT, "other"]
    return {name: "%.3f" % stages[name] if name in stages else "" for name in names}


def table_of_stages(rows):
    return table_of_details(rows, "stages", shown_stages)


def table_of_counts(rows):
    return table_of_details(rows, "counts", lambda counts: counts)


TABLES = {"seconds": table_of_seconds, "stages": table_of_stages, "counts": table_of_counts}


def show_tables(request, rows):
    made = {row["kind"] for row in rows} & set(request.tables.split(","))
    texts = [TABLES[kind](rows) for kind in KINDS if kind in made]
    print("\n\n".join(texts))
    if request.into:
        lab.put_into(request.into, "\n\n".join(texts))


def parse_words():
    parser = lab.parser_of_builds(__doc__.splitlines()[0])
    add = parser.add_argument
    add("--folder", help="hypergraphs to measure on, .hgr or .hgr.gz")
    add("--generate", metavar="FAMILY,...", help="families of zorpel-generate to measure on")
    add("--pins", default="1e5", metavar="N,...", help="sizes of the generated ones")
    add("--only", metavar="INSTANCE,...", help="of these inputs")
    add("--nparts", default="2,8", metavar="N,...")
    add("--settings", default="1 run,10 runs", metavar="NAME,...", help="'' for none of them")
    add(
        "--setting",
        action="append",
        default=[],
        metavar="NAME=NRUNS,CTYPE,RTYPE,VCYCLE,RECONST",
        help="another one, may repeat",
    )
    add("--rounds", type=int, default=5, help="calls of each build")
    add("--limit", type=float, metavar="SECONDS", help="CPU seconds for one call")
    add("--stages", action="store_true", help="a table of seconds by stage")
    add("--counts", action="store_true", help="a table of work counts")
    add("--csv", metavar="FILE", help="write a line for each call")
    add("--read", nargs="+", metavar="CSV", help="measure nothing, show the tables of these")
    add("--tables", default=",".join(KINDS), metavar="KIND,...", help="of those measured")
    add("--into", metavar="FILE:NAME", help="put the tables into a document too")
    return parser.parse_args()


def main():
    request = parse_words()
    try:
        rows, complaints = (read_rows(request.read), []) if request.read else measure(request)
        show_tables(request, rows)
    except lab.Failure as failure:
        sys.exit("compare_builds.py: %s" % failure)
    print(*complaints, sep="\n", end="\n" if complaints else "", file=sys.stderr)
    sys.exit(1 if complaints else 0)


if __name__ == "__main__":
    main()
