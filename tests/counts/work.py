#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Guards speed: the work that the engine does, counted exactly, against a table.

A line of counts.csv is one call of the counted library with a fixed seed. Seconds vary with the
machine; these counts do not, so that a change of more than 2 % in any of them, upwards or
downwards, is a change of the program and fails. One that is wanted goes into the table by

    tests/counts/work.py --build BUILD --update
"""

import csv
import subprocess
import sys
import tempfile
from pathlib import Path

HERE = Path(__file__).resolve().parent
sys.dont_write_bytecode = True
sys.path.insert(0, str(HERE.parent))
import harness  # noqa: E402 (found by the path above)

TABLE = HERE / "counts.csv"
EXAMPLES = HERE.parent.parent / "examples"
TOLERANCE = 0.02
SEED = 4711
JOB = ("entry", "nparts", "ubfactor", "nruns", "ctype", "rtype", "vcycle", "reconst", "seed", "fix")
SHIPPED = ("cpu32", "cpu32_bus", "fifo", "lshape", "miter6", "mult16")
GENERATED = {
    "netlist": ("netlist", "10000"),
    "netlist-weighted": ("netlist", "10000", "--vweights", "--hweights"),
    "mesh": ("mesh", "10000"),
    "powerlaw": ("powerlaw", "10000"),
    "giant": ("giant", "6000"),
    "equal": ("equal", "6000"),
}


def jobs_of(instance):
    """The job lines of an instance: every matching with every refinement, V-cycles and numbers of
    parts in turn; then more runs with every kind of V-cycle, and parts around the polish's limit.
    """
    jobs = []
    for ctype in range(1, 6):
        for rtype in range(1, 4):
            nparts, vcycle, reconst = (2, 3, 8)[(ctype + rtype) % 3], (ctype + rtype) % 4, ctype % 2
            jobs.append(f"recursive {nparts} 5 1 {ctype} {rtype} {vcycle} {reconst} {SEED} -")
    jobs += [f"recursive 2 5 2 1 1 {vcycle} 0 {SEED} -" for vcycle in range(1, 4)]
    jobs += [f"recursive {nparts} 5 1 1 1 0 0 {SEED} -" for nparts in (64, 65)]
    jobs += [f"internal 5 10 1 2 1 1 0 {SEED} -", f"refine 2 5 1 1 1 1 0 {SEED} -"]
    if instance == "mult16":
        jobs += [f"recursive 4 5 1 {s} {SEED} mult16.fix4" for s in ("1 1 1 0", "5 2 2 0")]
    return jobs


def find_program(build, name):
    path = Path(build).resolve() / "tests/counts" / name
    if not path.exists():
        raise SystemExit(f"{path} is missing: build with tests first, or name a --build folder")
    return path


def hypergraph_of(build, instance, folder):
    """The file of an instance; generated ones are made in the folder."""
    if instance in SHIPPED:
        return EXAMPLES / f"{instance}.hgr"
    family, pins, *options = GENERATED[instance]
    path = Path(folder) / f"{instance}.hgr"
    with path.open("wb") as file:
        words = [find_program(build, "work_generate"), family, pins, str(SEED), *options]
        subprocess.run(words, stdout=file, timeout=harness.TIMEOUT, check=True)
    return path


def count_instance(build, instance):
    """(names of the counts, {(instance, *job): counts}) of all calls on an instance."""
    jobs = jobs_of(instance)
    with tempfile.TemporaryDirectory() as folder:
        done = subprocess.run(
            [find_program(build, "count_work"), hypergraph_of(build, instance, folder)],
            cwd=EXAMPLES,
            input="\n".join(jobs) + "\n",
            capture_output=True,
            text=True,
            timeout=10 * harness.TIMEOUT,
            check=False,
        )
    names, *answers = [line.split(",") for line in done.stdout.splitlines()] or [[]]
    if done.returncode != 0 or done.stderr or len(answers) != len(jobs):
        job = jobs[min(len(answers), len(jobs) - 1)]
        raise SystemExit(f"{instance}, {job}: status {done.returncode}, {done.stderr.strip()}")
    keys = [(instance, *job.split()) for job in jobs]
    return names, {key: [int(word) for word in answer] for key, answer in zip(keys, answers)}


def read_table():
    """(names of the counts, {(instance, *job): counts}) as they were written."""
    if not TABLE.exists():
        return [], {}
    with TABLE.open(newline="") as file:
        head, *rows = csv.reader(file)
    key = len(JOB) + 1
    return head[key:], {tuple(row[:key]): [int(word) for word in row[key:]] for row in rows}


def write_table(names, counts):
    with TABLE.open("w", newline="") as file:
        writer = csv.writer(file, lineterminator="\n")
        writer.writerow(("instance", *JOB, *names))
        writer.writerows((*key, *row) for key, row in counts.items())


def change_of(old, new):
    """By which part of the old count the new one differs."""
    if old == new:
        return 0.0
    return (new - old) / old if old else float("inf")


def compare(names, old, new):
    """Lines about every count that changed by more than the tolerance."""
    lines = []
    for key in [*old, *(key for key in new if key not in old)]:
        if key not in old or key not in new:
            lines.append(" ".join(key) + (": not in the table" if key in new else ": not called"))
            continue
        for name, before, after in zip(names, old[key], new[key]):
            change = change_of(before, after)
            if abs(change) > TOLERANCE:
                lines.append(f"{' '.join(key)}: {name} {before} -> {after} ({change:+.1%})")
    return lines


def total_lines(names, old, new):
    """The sums over all calls in both, to tell a change in one sentence."""
    shared = [key for key in old if key in new]
    lines = []
    for i, name in enumerate(names):
        before, after = sum(old[key][i] for key in shared), sum(new[key][i] for key in shared)
        if before != after:
            lines.append(f"all: {name} {before} -> {after} ({change_of(before, after):+.2%})")
    return lines


def main():
    asked = harness.parser_for(__doc__).parse_args()
    names, counts = [], {}
    for instance in (*SHIPPED, *GENERATED):
        names, found = count_instance(asked.build, instance)
        counts.update(found)
    old_names, old = read_table()
    failures = compare(names, old, counts)
    if names != old_names:
        failures.insert(0, f"the counts were {', '.join(old_names)}, now {', '.join(names)}")
    for line in total_lines(names, old, counts) + failures:
        print(line)
    if asked.update:
        write_table(names, counts)
        return 0
    print(f"{len(counts)} calls, {len(failures)} counts off by more than {TOLERANCE:.0%}")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
