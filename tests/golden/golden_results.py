#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Table of results: what the library gives on the shipped examples, for every scheme.

A line of results.csv is one call of an entry point with a fixed seed: the cut it returned, then
the cut, the sum of external degrees and the part weights as counted from the partition, and the
partition's checksum. There are no seconds. A change of output is a change of this file.
"""

import csv
import subprocess
import sys
import tempfile
from concurrent.futures import ThreadPoolExecutor
from os import cpu_count
from pathlib import Path

HERE = Path(__file__).resolve().parent
sys.dont_write_bytecode = True
sys.path.insert(0, str(HERE.parent))
import harness  # noqa: E402 (found by the path above)

TABLE = HERE / "results.csv"
EXAMPLES = HERE.parent.parent / "examples"
JOB = ("entry", "nparts", "ubfactor", "nruns", "ctype", "rtype", "vcycle", "reconst", "seed", "fix")
ANSWER = ("edgecut", "cut", "soed", "lightest", "heaviest", "checksum")
COLUMNS = ("instance", *JOB, *ANSWER)
INSTANCES = ("cpu32", "cpu32_bus", "fifo", "lshape", "miter6", "mult16")
SEED = 4711
DEFAULT = "1 1 1 0"  # ctype, rtype, vcycle, reconst


def jobs_of(instance):
    """The job lines of an instance, in the order of the table."""
    nruns = 1 if instance in ("cpu32", "lshape") else 2
    schemes = [
        f"{ctype} {rtype} {vcycle} {reconst}"
        for ctype in range(1, 6)
        for rtype in range(1, 4)
        for vcycle in range(4)
        for reconst in range(2)
    ]
    jobs = [f"recursive 4 5 {nruns} {scheme} {SEED} -" for scheme in schemes]
    jobs += [f"recursive {k} 5 {nruns} {DEFAULT} {SEED} -" for k in (2, 3, 7, 64, 65)]
    jobs += [f"recursive 2 {ub} {nruns} {DEFAULT} {SEED} -" for ub in (1, 20, 49)]
    jobs += [f"internal 5 5 {nruns} {DEFAULT} {SEED} -", f"refine 2 5 1 {DEFAULT} {SEED} -"]
    if instance == "mult16":
        jobs += [
            f"recursive 4 5 {nruns} {s} {SEED} mult16.fix4" for s in (DEFAULT, "2 3 3 1", "5 2 2 0")
        ]
    return jobs


def check_partition(tools, instance, job, answer, path):
    """The checker's complaint about a partition, or None. It must find the cut that was counted."""
    fields = dict(zip(JOB, job.split()))
    cut = answer.split(",")[ANSWER.index("cut")]
    words = [tools.checker, EXAMPLES / f"{instance}.hgr", path, fields["nparts"], "--cut", cut]
    if fields["fix"] != "-":
        words += ["--fix", EXAMPLES / fields["fix"]]
    done = subprocess.run(
        words, capture_output=True, text=True, timeout=harness.TIMEOUT, check=False
    )
    return f"{instance}, {job}: {done.stderr.strip()}" if done.returncode != 0 else None


def run_instance(tools, driver, instance):
    """(table rows, the checker's complaints) of an instance."""
    jobs = jobs_of(instance)
    with tempfile.TemporaryDirectory() as folder:
        done = subprocess.run(
            [driver, EXAMPLES / f"{instance}.hgr", folder],
            cwd=EXAMPLES,
            input="\n".join(jobs) + "\n",
            capture_output=True,
            text=True,
            timeout=10 * harness.TIMEOUT,
            check=False,
        )
        answers = done.stdout.splitlines()
        if done.returncode != 0 or done.stderr or len(answers) != len(jobs):
            job = jobs[min(len(answers), len(jobs) - 1)]
            return [], [f"{instance}, {job}: status {done.returncode}, {done.stderr.strip()}"]
        complaints = [
            check_partition(tools, instance, job, answer, f"{folder}/{i}")
            for i, (job, answer) in enumerate(zip(jobs, answers), 1)
        ]
    rows = [(instance, *job.split(), *answer.split(",")) for job, answer in zip(jobs, answers)]
    return rows, [c for c in complaints if c is not None]


def read_table():
    with TABLE.open(newline="") as file:
        return [tuple(row) for row in csv.reader(file)][1:]


def write_table(rows):
    with TABLE.open("w", newline="") as file:
        writer = csv.writer(file, lineterminator="\n")
        writer.writerow(COLUMNS)
        writer.writerows(rows)


def show_changes(want, got):
    """Prints the lines that differ; returns how many."""
    key = len(JOB) + 1
    old = {row[:key]: row[key:] for row in want}
    new = {row[:key]: row[key:] for row in got}
    changed = [k for k in {**old, **new} if old.get(k) != new.get(k)]
    for k in changed:
        print(" ".join(k))
        print(f"    {','.join(old.get(k, ('no such line',)))} expected")
        print(f"    {','.join(new.get(k, ('no such line',)))} found")
    return len(changed)


def main():
    asked = harness.parser_for(__doc__).parse_args()
    tools = harness.find_tools(asked.build)
    driver = Path(asked.build).resolve() / "tests/golden/partition_driver"
    with ThreadPoolExecutor(cpu_count()) as pool:
        results = list(pool.map(lambda name: run_instance(tools, driver, name), INSTANCES))
    rows = [row for part, _ in results for row in part]
    complaints = [message for _, part in results for message in part]
    for message in complaints:
        print(message)
    changed = show_changes(read_table() if TABLE.exists() else [], rows)
    if asked.update and not complaints:
        write_table(rows)
        changed = 0
    failed = len(complaints) + changed
    print(f"{len(rows) - changed} passed, {failed} failed")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
