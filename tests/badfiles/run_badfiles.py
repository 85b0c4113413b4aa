#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Bad-file corpus: what the program makes of every file, byte for byte.

expected.json holds, for each case, both streams, the status and the partition files. The files
are made anew for every run (make_badfiles.py), below the build folder. Partition files that come out pass
through check_partition.
"""

import json
import shutil
import sys
from concurrent.futures import ThreadPoolExecutor
from os import cpu_count
from pathlib import Path

HERE = Path(__file__).resolve().parent
sys.dont_write_bytecode = True
sys.path[:0] = [str(HERE), str(HERE.parent)]
import harness  # noqa: E402 (found by the path above)
import make_badfiles as make  # noqa: E402

EXPECTED = HERE / "expected.json"


def split_lines(data):
    """The lines of data, split at newlines only, one character a byte."""
    lines = data.decode("latin-1").split("\n")
    return [line + "\n" for line in lines[:-1]] + [line for line in lines[-1:] if line]


def as_record(outcome):
    return {
        "stdout": split_lines(outcome.stdout),
        "stderr": split_lines(outcome.stderr),
        "status": outcome.status,
        "files": {name: data.decode("latin-1") for name, data in sorted(outcome.files.items())},
    }


def as_outcome(record):
    return harness.Outcome(
        stdout="".join(record["stdout"]).encode("latin-1"),
        stderr="".join(record["stderr"]).encode("latin-1"),
        status=record["status"],
        files={name: text.encode("latin-1") for name, text in record["files"].items()},
    )


def run_case(tools, folder, case):
    """The outcome of a case, and what the checker has to say about its partition."""
    shutil.rmtree(folder, ignore_errors=True)
    folder.mkdir(parents=True)
    make.make_files(case, folder)
    outcome = harness.run_program(tools, case.words, folder, case.memory)
    make.spell_out(case, folder)
    complaints = harness.judge_partitions(tools, case.words, folder, outcome)
    shutil.rmtree(folder)
    return outcome, complaints


def read_expected():
    return json.loads(EXPECTED.read_text()) if EXPECTED.exists() else {}


def write_expected(records):
    EXPECTED.write_text(json.dumps(records, indent=1, sort_keys=True) + "\n")


def check_case(tools, folder, case, want):
    """(outcome, the checker's complaints, changes against what is recorded) of a case."""
    outcome, complaints = run_case(tools, folder, case)
    if want is None:
        return outcome, complaints, ["nothing is recorded yet"]
    return outcome, complaints, harness.differences(as_outcome(want), outcome)


def check_cases(tools, place, cases, expected, update):
    """Runs the cases, tells what is wrong, puts outcomes into expected; returns how many failed."""
    with ThreadPoolExecutor(cpu_count()) as pool:
        results = pool.map(
            lambda c: check_case(tools, place / c.name, c, expected.get(c.name)), cases
        )
    failed = 0
    for case, (outcome, complaints, changes) in zip(cases, results):
        failed += bool(complaints) or (bool(changes) and not update)
        for message in complaints + changes:
            print(f"{case.name}: {message}")
        if not complaints:
            expected[case.name] = as_record(outcome)
    return failed


def drop_unknown(expected, corpus):
    """Drops what is recorded of cases that are no more; returns how many there were."""
    unknown = sorted(expected.keys() - {case.name for case in corpus})
    for name in unknown:
        print(f"{name}: no such case")
        del expected[name]
    return len(unknown)


def main():
    parser = harness.parser_for(__doc__)
    parser.add_argument("--sanitized", action="store_true", help="leave out what bounds memory")
    parser.add_argument("case", nargs="*", help="names of cases; all if none is given")
    asked = parser.parse_args()
    tools = harness.find_tools(asked.build)
    place = Path(asked.build).resolve() / "tests/badfiles/cases"
    corpus = make.all_cases()
    cases = [c for c in corpus if not asked.case or c.name in asked.case]
    cases = [c for c in cases if not (asked.sanitized and c.memory is not None)]
    expected = read_expected()
    unknown = drop_unknown(expected, corpus)
    failed = check_cases(tools, place, cases, expected, asked.update)
    if asked.update:
        write_expected(expected)
    else:
        failed += unknown
    print(f"{len(cases)} cases, {failed} failed")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
