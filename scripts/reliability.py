#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Measures the figures of docs/RELIABILITY.md and writes them into its table.

    scripts/reliability.py --list            the rows, and about how long each takes on two cores
    scripts/reliability.py NAME...           measures these rows
    scripts/reliability.py --output FILE NAME  reads what the row's command printed in runs of before,
                                             several in turn when fuzzing; lines "cpu USER SYSTEM"
                                             with their seconds add up too
    scripts/reliability.py --all             measures every row: days
    scripts/reliability.py --check           whether every row of the page is one of the script's

A row is measured by the command that the page shows beside it, from the top folder, on builds made
before (the page says how). Its result and the day go into the page; the other rows stay. A command
that fails, or prints no figure, ends the script and changes nothing.
"""

import argparse
import datetime
import re
import subprocess
import sys
from dataclasses import dataclass
from pathlib import Path

PROJECT = Path(__file__).resolve().parents[1]
PAGE = PROJECT / "docs" / "RELIABILITY.md"
BEGIN, END = "<!-- figures -->", "<!-- end figures -->"
TORTURE = "tests/model/zorpel-torture"


@dataclass
class Row:
    name: str
    what: str
    command: str
    figure: str  # what to look for in the output
    result: str  # how to show it; {0} is the first group
    takes: str = "seconds"
    rounds: bool = False  # an output of several runs in turn counts as one long run


CPU = re.compile(r"^cpu ([0-9.]+) ([0-9.]+)$", re.MULTILINE)
FUZZ = r"stat::number_of_executed_units: (\d+)"
FUZZED = {
    "reader": "hypergraph reader",
    "fixfile": "fix file",
    "words": "command line",
    "entry": "entry points",
    "files": "readers of zorpelx",
    "netlists": "readers and writers of all other formats",
    "readers": "readers against each other",
    "numbers": "readers of fix and partition files",
    "report": "a report that is checked",
    "interface": "calls of libzorpelx",
}
SHORT = {"interface": 800}  # bytes, where no call takes more
ROWS = [
    Row("random-check", "random cases under address and undefined-behaviour sanitizers with heavy"
        " asserts", f"build/check/{TORTURE} --n 25000 --seed 1000000 --jobs 2",
        r"(\d+) cases, (\d+) failures", "{0} cases, {1} failures", "10 minutes"),
    Row("random", "random cases, optimised build", f"build/release/{TORTURE} --n 104600 --seed 500"
        " --jobs 2", r"(\d+) cases, (\d+) failures", "{0} cases, {1} failures", "10 minutes"),
    Row("exhaustive", "every hypergraph of 1 to 5 vertices and up to 4 hyperedges, up to 3 vertices"
        " on a grid of 1080 options", "build/release/tests/model/torture_exhaustive 5 3",
        r"in all: (\d+) hypergraphs, (\d+) cases", "{0} hypergraphs, {1} cases, 0 failures",
        "30 minutes"),
    Row("edges", "sums at 2^31 - 2, - 1, 0, + 1 of vertex weights, hyperedge weights, degrees",
        "build/release/tests/model/torture_edges", r"PASSED  \] (\d+) tests",
        "exact up to 2^31 - 2 and refused above: {0} tests passed"),
    Row("allocations", "failing allocations, alone and with all later ones, over 7 matchings x 3"
        " refinements and every other routine", "cd build/release/tests/faults && ./fault_memory names",
        r"(\d+) failed allocations, (\d+) names, (\d+) complaints",
        "{0} failures injected, {1} names of arrays seen, {2} complaints", "a minute"),
    Row("allocations-check", "the same under sanitizers and heavy asserts",
        "cd build/check/tests/faults && ./fault_memory names",
        r"(\d+) failed allocations, (\d+) names, (\d+) complaints",
        "{0} failures injected, {1} names of arrays seen, {2} complaints", "10 minutes"),
    Row("entries", "files of 2^31 - 2 to 2^31 + 1 vertex entries",
        "ctest --preset release -R entries_beyond", r"100% (tests) passed", "read up to 2^31 - 1, refused above", "10 minutes, 14 GB"),
    Row("files", "failing openings, reads, writes, closings (EIO, ENOSPC, EDQUOT)",
        "cd build/release/tests/faults && ./fault_files",
        r"openings (\d+), reads (\d+), writes (\d+), closings (\d+) failed; (\d+) complaints",
        "{0}, {1}, {2}, {3} injected, {4} complaints"),
    Row("full-disk", "full disk, quota, directories in place of files",
        "ctest --preset release -R full_disk", r"100% (tests) passed", "each told, none left short"),
    Row("bad-files", "bad files by name, every byte of every output, among them files and partition"
        " files without permission", "python3 -B tests/badfiles/run_badfiles.py --build build/release",
        r"(\d+) cases, 0 failed", "{0} files, all as recorded", "a minute"),
    *(Row(f"fuzz-{target}", f"fuzzing with libFuzzer under sanitizers: {what}",
          f"build/fuzz/fuzz/fuzz_{target} -max_total_time=3600 -max_len={SHORT.get(target, 4096)}"
          f" -print_final_stats=1 fuzz/seeds/{target}", FUZZ, "{0} inputs without a finding",
          "an hour", True)
      for target, what in FUZZED.items()),
    Row("kills", "children of a host killed at random moments of its calls",
        "build/release/tests/embed/embed_ordeal kills 1000 2",
        r"(\d+) children killed in (\d+) calls, (\d+) starts failed",
        "{0} killed in {1} calls, {2} replacements could not start: no child, no file, no descriptor"
        " left, each result whole or absent", "2 minutes"),
    Row("hosts", "hosts killed at random moments of their calls",
        "build/release/tests/embed/embed_ordeal hosts 1000 2",
        r"(\d+) hosts killed, (\d+) children went with them",
        "{0} hosts killed, {1} children ended with them, none left", "a minute"),
    Row("interrupts", "interrupts that cancel a call at random moments",
        "build/release/tests/embed/embed_ordeal interrupts 500 2",
        r"(\d+) calls interrupted: (\d+) delivered a partition, (\d+) had none",
        "{0} calls interrupted: {1} returned a partition, {2} had none yet", "a minute"),
    Row("calls", "failing system calls in a host and its children",
        "build/release/tests/embed/embed_ordeal failures 1500 2",
        r"(\d+) system calls failed in (\d+) calls, (\d+) of which had to tell",
        "{0} failed in {1} calls, {2} of which returned an error; the others did their work",
        "a minute"),
    Row("python-calls", "random arguments of the Python package",
        "PYTHONPATH=zorpelx/python ZORPELX_LIBRARY=build/release/zorpelx/lib/libzorpelx.so.1 python3 -B"
        " zorpelx/python/tests/fuzz_calls.py 1000000 101", r"(\d+) calls", "{0} calls, each error one"
        " of the package's own", "an hour", True),
    Row("threads", "embedding under the thread sanitizer: calls at once, forks while other threads"
        " draw and allocate", "build/tsan/tests/embed/embed_tests"
        " --gtest_filter='-*memory*:*standard_output*:*cap*'", r"PASSED  \] (\d+) tests",
        "{0} tests, 0 races", "10 minutes"),
    Row("same-threads", "random cases with 1, 2 and 4 threads, a tenth of them with threads that cannot be"
        " had: partitions, cuts and traces against those of one thread",
        "build/release/tests/model/threads_check --n 10000 --seed 6 --jobs 2",
        r"(10000) cases of seed 6: all the same", "{0} cases, all the same", "a minute"),
    Row("races", "the same under the thread sanitizer",
        "build/tsan/tests/model/threads_check --n 1500 --seed 21",
        r"(\d+) threads\n(1500) cases of seed 21: all the same", "{1} cases, {0} threads, 0 races",
        "10 minutes"),
    Row("searches", "random searches: by threads, cut off, with an allocation that fails",
        "build/release/search/tests/zorpel-search-torture 500 100000",
        r"(\d+) searches, (\d+) by threads, (\d+) cut off, (\d+) starved: all as promised",
        "{0} searches, {1} also by threads, {2} cut off, {3} starved: all as promised", "a minute"),
    Row("searches-check", "random searches under address and undefined-behaviour sanitizers",
        "build/sanitized/search/tests/zorpel-search-torture 102000 2002000",
        r"(\d+) searches, \d+ by threads, \d+ cut off, \d+ starved: all as promised",
        "{0} searches, a quarter of them each by threads, cut off and starved: all as promised",
        "2 hours", rounds=True),
    Row("searches-races", "random searches under the thread sanitizer",
        "build/tsan/search/tests/zorpel-search-torture 1000 3000000",
        r"(\d+) searches, (\d+) by threads", "{0} searches, {1} of them by threads, 0 races",
        "10 minutes"),
    Row("optima", "hypergraphs of 4 to 12 vertices in 2 to 4 parts, 0 to 20 percent, all objectives:"
        " optima found by `best`", "build/release/search/tests/zorpel-search-optima 500",
        r"best (\d+) of (\d+)", "{0} of {1}", "a minute"),
    Row("builds", "one checksum of 1000 cases over g++ and clang, -O0, -O2, -O3, each as it is,"
        " without address randomisation, and with jemalloc",
        "tests/model/same_results.py build/same --cases 1000", r"([0-9a-f]{16}).*\n(identical)", "`{0}` 18 times", "an hour"),
]  # fmt: skip


def table_of(page):
    return page[page.index(BEGIN) + len(BEGIN) : page.index(END)].strip().splitlines()


def line_of(row, result, day):
    command = row.command.replace("|", "\\|")
    return f"| {row.what} | {result} | {day} | `{command}` |"


def output_of(row):
    print(f"{row.name}: {row.command}", flush=True)
    done = subprocess.run(
        ["bash", "-c", row.command], cwd=PROJECT, stdin=subprocess.DEVNULL,
        stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True,
    )  # fmt: skip
    if done.returncode != 0:
        print("\n".join(done.stdout.splitlines()[-20:]))
        sys.exit(f"{row.name} ended with {done.returncode}")
    return done.stdout


def figures(row, output):
    if row.rounds and ("SUMMARY: " in output or "FAILED" in output):
        sys.exit(f"{row.name} has a finding")
    found = re.search(row.figure, output, re.S)
    if row.rounds and found is not None:
        total = sum(int(count) for count in re.findall(row.figure, output))
        seconds = [float(user) + float(system) for user, system in CPU.findall(output)]
        cpu = f", in {sum(seconds) / 60:.0f} CPU minutes" if seconds else ""
        return row.result.format(f"{total:,}") + cpu
    if found is None:
        print("\n".join(output.splitlines()[-20:]))
        sys.exit(f"{row.name} printed no figure")
    groups = [f"{int(text):,}" if text and text.isdigit() else text for text in found.groups()]
    return row.result.format(*groups)


def put(row, result, day):
    page = PAGE.read_text()
    lines = table_of(page)
    kept = {line.split(" | ")[0].removeprefix("| "): line for line in lines[2:]}
    kept[row.what] = line_of(row, result, day)
    ordered = [kept[known.what] for known in ROWS if known.what in kept]
    table = "\n".join([*lines[:2], *ordered])
    page = page[: page.index(BEGIN)] + f"{BEGIN}\n{table}\n" + page[page.index(END) :]
    PAGE.write_text(page)


def check():
    lines = table_of(PAGE.read_text())[2:]
    rows = {row.what: row for row in ROWS}
    for line in lines:
        what, result, day, _ = re.split(r" (?<!\\)\| ", line.strip("| ") + " ", maxsplit=3)
        row = rows.pop(what, None)
        if row is None or line != line_of(row, result, day):
            sys.exit(f"not a row of the script: {line}")
    if rows:
        sys.exit(f"not on the page: {', '.join(row.name for row in rows.values())}")


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("names", nargs="*")
    parser.add_argument("--all", action="store_true")
    parser.add_argument("--list", action="store_true")
    parser.add_argument("--check", action="store_true")
    parser.add_argument("--output", type=Path, metavar="FILE")
    request = parser.parse_args()
    if request.list:
        for row in ROWS:
            print(f"{row.name:18} {row.takes:18} {row.what}")
        return
    if request.check:
        check()
        return
    known = {row.name: row for row in ROWS}
    names = list(known) if request.all else request.names
    unknown = [name for name in names if name not in known]
    if unknown or not names:
        sys.exit(f"name rows of --list, not {unknown}")
    if request.output and len(names) != 1:
        sys.exit("--output belongs to one row")
    for name in names:
        output = request.output.read_text() if request.output else output_of(known[name])
        day = datetime.date.today().strftime("%d %b %Y").lstrip("0")
        put(known[name], figures(known[name], output), day)


main()
