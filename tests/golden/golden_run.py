#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Golden runs: the program's whole output on a case, byte for byte.

A case is a folder beside this file:
    command     the words after the program's name
    stdout, stderr, status
    *.part.N    the partition file, or none where the run must leave none
and its input files, unless they are those of inputs/ or of the examples. The clock stands still
(pinclock.c), and every partition file passes through check_partition.
"""

import shlex
import shutil
import sys
import tempfile
from concurrent.futures import ThreadPoolExecutor
from os import cpu_count
from pathlib import Path

HERE = Path(__file__).resolve().parent
sys.dont_write_bytecode = True
sys.path.insert(0, str(HERE.parent))
import harness  # noqa: E402 (found by the path above)

SOURCES = (HERE / "inputs", HERE.parent.parent / "examples")


def find_input(case, word):
    """The file that a word names, or None: most words are numbers, and some name nothing."""
    for folder in (case, *SOURCES):
        path = folder / word
        if word not in ("", ".", "..") and path.is_file():
            return path
    return None


def read_words(case):
    return shlex.split((case / "command").read_text())


def expected_outcome(case, words):
    own = {"command", "stdout", "stderr", "status", *words}
    return harness.Outcome(
        stdout=(case / "stdout").read_bytes(),
        stderr=(case / "stderr").read_bytes(),
        status=int((case / "status").read_text()),
        files={p.name: p.read_bytes() for p in case.iterdir() if p.name not in own},
    )


def run_case(tools, case, words):
    """The outcome of a case and the checker's complaints about it."""
    with tempfile.TemporaryDirectory() as name:
        folder = Path(name)
        for word in words:
            path = find_input(case, word)
            if path is not None:
                shutil.copy(path, folder / word)
        outcome = harness.run_program(tools, words, folder)
        return outcome, harness.judge_partitions(tools, words, folder, outcome)


def rewrite(case, words, outcome):
    kept = {"command", *words}
    for path in case.iterdir():
        if path.name not in kept:
            path.unlink()
    (case / "stdout").write_bytes(outcome.stdout)
    (case / "stderr").write_bytes(outcome.stderr)
    (case / "status").write_text(f"{outcome.status}\n")
    for name, contents in outcome.files.items():
        (case / name).write_bytes(contents)


def check_case(tools, case, update):
    """(complaints that no update heals, changes against what is recorded). An update records the
    outcome unless the checker refuses its partition."""
    words = read_words(case)
    outcome, complaints = run_case(tools, case, words)
    changes = ["nothing is recorded yet"]
    if (case / "status").exists():
        changes = harness.differences(expected_outcome(case, words), outcome)
    if update and changes and not complaints:
        rewrite(case, words, outcome)
    return complaints, changes


def main():
    parser = harness.parser_for(__doc__)
    parser.add_argument("case", nargs="*", help="folder names; all cases if none is given")
    asked = parser.parse_args()
    tools = harness.find_tools(asked.build)
    names = asked.case or sorted(path.parent.name for path in HERE.glob("*/command"))
    with ThreadPoolExecutor(cpu_count()) as pool:
        results = pool.map(lambda name: check_case(tools, HERE / name, asked.update), names)
    failed = 0
    for name, (complaints, changes) in zip(names, results):
        failed += bool(complaints) or (bool(changes) and not asked.update)
        for message in complaints + changes:
            print(f"{name}: {message}")
    print(f"{len(names) - failed} passed, {failed} failed")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
