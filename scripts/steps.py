#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Measures what each kind of step of the search gains and costs, on the larger examples, and writes
the table of docs/SEARCH.md.

    scripts/steps.py ZORPELX [--seeds N]

One thread, one run after the other. A gain counts when it lowers the best objective of the search.
"""

import argparse
import json
import subprocess
import tempfile
from pathlib import Path

PROJECT = Path(__file__).resolve().parents[1]
PAGE = PROJECT / "docs" / "SEARCH.md"
BEGIN, END = "<!-- steps -->\n", "<!-- end steps -->\n"
EXAMPLES = ("cpu32.hgr", "lshape.hgr")
PARTS = (2, 8)
PRESETS = ("fast", "default", "best")
STEPS = ("member", "combination")


def steps_of(zorpelx, example, nparts, preset, seed, folder):
    """The objective reached, and what each kind of step did."""
    answer = Path(folder) / "answer.json"
    words = [zorpelx, "partition", PROJECT / "examples" / example, "-k", nparts, "--preset", preset]
    words += ["--seed", seed, "-t", 1, "-j", 1, "-q", "-o", Path(folder) / "part", "--json", answer]
    subprocess.run([str(word) for word in words], check=True)
    found = json.loads(answer.read_text(encoding="utf-8"))
    return found["cut"], {step["step"]: step for step in found["search"]["steps"]}


def row(zorpelx, nparts, preset, nseeds, folder):
    """What members and combinations did on average. Shares of time bear other work on the machine."""
    runs = nseeds * len(EXAMPLES)
    made = dict.fromkeys(STEPS, 0)
    better = share = gained = 0.0
    for example in EXAMPLES:
        for seed in range(1, nseeds + 1):
            cut, steps = steps_of(zorpelx, example, nparts, preset, seed, folder)
            for step in STEPS:
                made[step] += steps[step]["made"] / runs
            last = steps["combination"]
            better += last["better"] / runs
            share += 100 * last["seconds"] / sum(steps[step]["seconds"] for step in STEPS) / runs
            gained += 100 * last["gained"] / cut / runs
    cells = [str(nparts), f"`{preset}`", *(f"{made[step]:.0f}" for step in STEPS)]
    cells += [f"{better:.1f}", f"{gained:.2f} %", f"{share:.0f} %", f"{10 * gained / share:.2f} %"]
    return "| " + " | ".join(cells) + " |\n"


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("zorpelx")
    parser.add_argument("--seeds", type=int, default=5)
    request = parser.parse_args()
    lines = "| parts | preset | members | combinations | better | gain | time | gain for a tenth of the time |\n"
    lines += "| ---: | --- | ---: | ---: | ---: | ---: | ---: | ---: |\n"
    with tempfile.TemporaryDirectory() as folder:
        for nparts in PARTS:
            for preset in PRESETS:
                lines += row(request.zorpelx, nparts, preset, request.seeds, folder)
    head, rest = PAGE.read_text(encoding="utf-8").split(BEGIN)
    PAGE.write_text(head + BEGIN + lines + END + rest.split(END)[1], encoding="utf-8")


if __name__ == "__main__":
    main()
