#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Measures what each option of the partitioner costs and gains.

    schemes.py measure LIBRARY HYPERGRAPH... [--values OPTION=LIST]... [--one] > runs.csv
    schemes.py tables runs.csv...
    schemes.py instances runs.csv... > docs/options.csv

`measure` calls the shared library on every hypergraph for every combination of the listed values
(with --one: the defaults, and each listed value as the only change), for every number of parts
and every seed, and writes a line for each run: options, cut, sum of external degrees, heaviest
part over average, CPU seconds. Each run is a process of its own, since the library ends its
process on errors. All but the seconds is counted here, from the parts.

`tables` prints what docs/OPTIONS.md quotes. A figure is averaged over the seeds first, then divided
by that of the option's default with everything else equal, hypergraph, parts and other options; of
these quotients the geometric mean is shown.

Cuts are the same on every machine with the same C library; seconds are CPU seconds and differ.
"""

import argparse
import csv
import ctypes
import itertools
import math
import os
import struct
import sys
import time

OPTIONS = ("ubfactor", "nruns", "ctype", "rtype", "vcycle", "reconst")
DEFAULTS = {"ubfactor": 5, "nruns": 10, "ctype": 1, "rtype": 1, "vcycle": 1, "reconst": 0}
LISTS = {"nparts": [2, 8], "seed": [1, 2, 3]}  # crossed with everything
SCHEMES = {
    "ctype": {1: "HFC", 2: "FC", 3: "GFC", 4: "HEDGE", 5: "EDGE"},
    "rtype": {1: "FM", 2: "1WayFM", 3: "EEFM"},
    "vcycle": {0: "No", 1: "@End", 2: "ForMin", 3: "All"},
}
FIGURES = ("cut", "soed", "heaviest", "seconds")
FIELDS = ("instance", "nparts") + OPTIONS + ("seed",) + FIGURES
COMPARED = ("cut", "lower/higher", "SOED", "heaviest", "CPU")  # columns of a comparison
RESULT = struct.Struct("=qqdd")  # the figures of one run
CUT, SOED, HEAVIEST, SECONDS = range(4)


# ---- hypergraphs ---------------------------------------------------------------------------


def read_hypergraph(name):
    """Returns (number of vertices, nets, net weights, vertex weights); vertices from 0."""
    with open(name, encoding="ascii") as file:
        lines = (line.split() for line in file if not line.startswith("%"))
        header = [int(word) for word in next(lines)] + [0]
        nnets, nvertices, code = header[:3]
        nets, netwgts = [], []
        for line in itertools.islice(lines, nnets):
            numbers = [int(word) for word in line]
            netwgts.append(numbers.pop(0) if code % 10 else 1)
            nets.append(list(dict.fromkeys(v - 1 for v in numbers)))
        weighted = code // 10 > 0
        vertexwgts = [int(next(lines)[0]) if weighted else 1 for _ in range(nvertices)]
    return nvertices, nets, netwgts, vertexwgts


def int_array(values):
    return (ctypes.c_int * max(1, len(values)))(*values)


def flat_arrays(hypergraph):
    """The hypergraph as the library wants it: counts, then vwgts, eptr, eind, hewgts."""
    nvertices, nets, netwgts, vertexwgts = hypergraph
    starts = [0, *itertools.accumulate(len(net) for net in nets)]
    pins = list(itertools.chain.from_iterable(nets))
    arrays = (vertexwgts, starts, pins, netwgts)
    return (nvertices, len(nets), *(int_array(values) for values in arrays))


def count_cut(hypergraph, part):
    """The weight of the cut hyperedges, and the same times the parts that each touches."""
    _, nets, netwgts, _ = hypergraph
    touched = [(len({part[v] for v in net}), weight) for net, weight in zip(nets, netwgts)]
    cut = sum(weight for parts, weight in touched if parts > 1)
    return cut, sum(parts * weight for parts, weight in touched if parts > 1)


def heaviest_part(hypergraph, part, nparts):
    weights = [0] * nparts
    for p, weight in zip(part, hypergraph[3]):
        weights[p] += weight
    return max(weights) * nparts / sum(weights)


# ---- one run -------------------------------------------------------------------------------


def partition(library, hypergraph, arrays, run):
    """Partitions in this process; returns the packed result."""
    words = [1, run["nruns"], run["ctype"], run["rtype"], run["vcycle"], run["reconst"]]
    options = int_array([*words, 0, run["seed"], 0])
    part, cut = int_array([0] * arrays[0]), ctypes.c_int()
    start = time.process_time()
    library.ZORPEL_PartRecursive(
        *arrays, run["nparts"], run["ubfactor"], options, part, ctypes.byref(cut)
    )
    seconds = time.process_time() - start
    part = list(part)
    heaviest = heaviest_part(hypergraph, part, run["nparts"])
    return RESULT.pack(*count_cut(hypergraph, part), heaviest, seconds)


def partition_apart(library, hypergraph, arrays, run):
    """The same in a process of its own; returns the result's figures, None when it failed."""
    reader, writer = os.pipe()
    child = os.fork()
    if child == 0:
        os.close(reader)
        os.write(writer, partition(library, hypergraph, arrays, run))
        os._exit(0)
    os.close(writer)
    with os.fdopen(reader, "rb") as pipe:
        packed = pipe.read()
    os.waitpid(child, 0)
    return RESULT.unpack(packed) if len(packed) == RESULT.size else None


# ---- plan ----------------------------------------------------------------------------------


def combinations(values, one_at_a_time):
    """The option settings to run, the defaults first when --one asks for single changes."""
    if not one_at_a_time:
        lists = [values.get(option, [DEFAULTS[option]]) for option in OPTIONS]
        return [dict(zip(OPTIONS, choice)) for choice in itertools.product(*lists)]
    changes = [(o, v) for o in OPTIONS for v in values.get(o, []) if v != DEFAULTS[o]]
    return [dict(DEFAULTS)] + [{**DEFAULTS, option: value} for option, value in changes]


def plan_runs(values, one_at_a_time):
    lists = {**LISTS, **values}
    for setting in combinations(values, one_at_a_time):
        for nparts, seed in itertools.product(lists["nparts"], lists["seed"]):
            if nparts > 2 or not setting["reconst"]:  # without a split it changes nothing
                yield {**setting, "nparts": nparts, "seed": seed}


def parse_values(words):
    values = {}
    for word in words:
        option, _, numbers = word.partition("=")
        if option not in OPTIONS and option not in LISTS:
            sys.exit("schemes.py: no option %s" % option)
        values[option] = [int(number) for number in numbers.split(",")]
    return values


def measure(request):
    library = ctypes.CDLL(os.path.abspath(request.engine))
    writer = csv.writer(sys.stdout, lineterminator="\n")
    writer.writerow(FIELDS)
    runs = list(plan_runs(parse_values(request.values), request.one))
    for name in request.hypergraphs:
        instance = os.path.basename(name).split(".")[0]
        hypergraph = read_hypergraph(name)
        arrays = flat_arrays(hypergraph)
        for run in runs:
            result = partition_apart(library, hypergraph, arrays, run)
            if result is None:
                sys.exit("schemes.py: the library gave up on %s with %s" % (name, run))
            setting = [run[field] for field in FIELDS[1 : -len(FIGURES)]]
            writer.writerow([instance, *setting, *("%.10g" % figure for figure in result)])
            sys.stdout.flush()


# ---- tables --------------------------------------------------------------------------------


def read_runs(names):
    """{setting: {(instance, nparts): the means of the figures over the seeds}}"""
    groups = {}
    for name in names:
        with open(name, encoding="ascii", newline="") as file:
            for row in csv.DictReader(file):
                setting = tuple(int(row[option]) for option in OPTIONS)
                place = (row["instance"], int(row["nparts"]))
                figures = tuple(float(row[name]) for name in FIGURES)
                groups.setdefault(setting, {}).setdefault(place, {})[row["seed"]] = figures
    return {
        setting: {place: mean_of(list(seeds.values())) for place, seeds in places.items()}
        for setting, places in groups.items()
    }


def mean_of(rows):
    return tuple(sum(column) / len(rows) for column in zip(*rows))


def geometric_mean(values):
    return math.exp(sum(map(math.log, values)) / len(values))


def matched(runs, option, value, nparts):
    """Pairs (figures with the value, with the option's default) where all else is equal."""
    i = OPTIONS.index(option)
    pairs = []
    for setting, places in runs.items():
        plain = runs.get(setting[:i] + (DEFAULTS[option],) + setting[i + 1 :], {})
        if setting[i] == value:
            shared = [p for p in places if p in plain and p[1] == nparts]
            pairs += [(places[p], plain[p]) for p in shared]
    return pairs


def mean_ratio(pairs, column):
    return geometric_mean([(a[column] + 1e-9) / (b[column] + 1e-9) for a, b in pairs])


def compared(pairs):
    """The cells of one row: cut, pairs where it is lower and higher, SOED, heaviest, CPU."""
    lower = sum(a[CUT] < b[CUT] for a, b in pairs)
    higher = sum(a[CUT] > b[CUT] for a, b in pairs)
    heaviest = geometric_mean([a[HEAVIEST] for a, _ in pairs])
    cut, soed, seconds = (mean_ratio(pairs, column) for column in (CUT, SOED, SECONDS))
    row = "%.3f|%d/%d|%.3f|%.2f|%.1f" % (cut, lower, higher, soed, heaviest, seconds)
    return row.split("|")


def value_name(option, value):
    scheme = SCHEMES.get(option, {}).get(value)
    return "%s %d" % (option, value) + (" (%s)" % scheme if scheme else "")


def change_name(setting):
    """What a setting changes: 'ctype 5 (EDGE), vcycle 0 (No)', or '(defaults)'."""
    changes = [(o, v) for o, v in zip(OPTIONS, setting) if v != DEFAULTS[o]]
    return ", ".join(value_name(*change) for change in changes) or "(defaults)"


def print_row(cells):
    print("| " + " | ".join(cells) + " |")


def print_header(title, columns, nleft=1):
    print("\n%s\n" % title)
    print_row(columns)
    print_row(["---"] * nleft + ["---:"] * (len(columns) - nleft))


def print_changes(runs, nparts):
    """Each value of each option against the option's default."""
    print_header("Against the default, %d parts" % nparts, ["value", *COMPARED, "pairs"])
    for i, option in enumerate(OPTIONS):
        for value in sorted({setting[i] for setting in runs}):
            pairs = matched(runs, option, value, nparts)
            if value != DEFAULTS[option] and pairs:
                print_row([value_name(option, value), *compared(pairs), "%d" % len(pairs)])


def print_best_trades(runs, reference, nparts):
    """Settings that no other one beats in cut and CPU time together, cheapest first."""
    common = set.intersection(*({p for p in places if p[1] == nparts} for places in runs.values()))
    if not common:
        return
    points = []
    for setting, places in runs.items():
        pairs = [(places[p], reference[p]) for p in common]
        points.append((mean_ratio(pairs, SECONDS), mean_ratio(pairs, CUT), setting))
    title = "Best trades among %d settings, %d hypergraphs in %d parts"
    print_header(title % (len(points), len(common), nparts), ["change", "cut", "CPU"])
    least = math.inf
    for seconds, cut, setting in sorted(points):
        if cut < least:
            print_row([change_name(setting), "%.3f" % cut, "%.1f" % seconds])
            least = cut


def cuts_by_value(runs, option):
    """For each value of one option, the others at their defaults, the figures of each place."""
    i = OPTIONS.index(option)
    by_value = {}
    for setting in runs:
        if all(o == option or v == DEFAULTS[o] for o, v in zip(OPTIONS, setting)):
            by_value[setting[i]] = runs[setting]
    return by_value


def instances(request):
    """Mean cuts as they are, hypergraph by hypergraph, for each value of each scheme, as CSV."""
    runs = read_runs(request.runs)
    out = csv.writer(sys.stdout, lineterminator="\n")
    out.writerow(("option", "value", "name", "hypergraph", "parts", "mean cut"))
    for option in ("ctype", "rtype", "vcycle", "reconst"):
        by_value = cuts_by_value(runs, option)
        places = set.intersection(*map(set, by_value.values())) if len(by_value) > 1 else ()
        for place in sorted(places):
            if option == "reconst" and place[1] == 2:
                continue  # nothing changes
            for value in sorted(by_value):
                name = SCHEMES.get(option, {}).get(value, str(value))
                cut = "%.1f" % by_value[value][place][CUT]
                out.writerow((option, value, name, *place, cut))


def tables(request):
    runs = read_runs(request.runs)
    reference = runs.get(tuple(DEFAULTS.values()))
    if reference is None:
        sys.exit("schemes.py: no runs with the defaults to compare with")
    sizes = sorted({place[1] for place in reference})
    for nparts in sizes:
        print_changes(runs, nparts)
    print_best_trades(runs, reference, sizes[-1])


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    commands = parser.add_subparsers(required=True)
    command = commands.add_parser("measure", help="run and write CSV")
    command.add_argument("engine", metavar="library",
                         help="the shared library, e.g. build/release/src/libzorpel.so")
    command.add_argument("hypergraphs", nargs="+")
    text = "e.g. ctype=1,2,5; the options are %s, nparts and seed" % ", ".join(OPTIONS)
    command.add_argument("--values", action="append", default=[], metavar="OPTION=LIST", help=text)
    command.add_argument("--one", action="store_true", help="change one option at a time")
    command.set_defaults(run=measure)
    command = commands.add_parser("tables", help="summarise CSV files of runs")
    command.add_argument("runs", nargs="+")
    command.set_defaults(run=tables)
    command = commands.add_parser("instances", help="mean cuts on each hypergraph, as CSV")
    command.add_argument("runs", nargs="+")
    command.set_defaults(run=instances)
    request = parser.parse_args()
    request.run(request)


if __name__ == "__main__":
    main()
