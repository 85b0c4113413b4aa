#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Draws docs/frontier.svg and the table in docs/SEARCH.md from bench/frontier.csv: quality against
time of the presets and of another public partitioner.

    scripts/frontier.py [--check]

--check compares with what is there, and ends with status 1 if it differs.
"""

import csv
import math
import sys
from pathlib import Path

PROJECT = Path(__file__).resolve().parents[1]
FIGURES = PROJECT / "bench" / "frontier.csv"
PICTURE = PROJECT / "docs" / "frontier.svg"
PAGE = PROJECT / "docs" / "SEARCH.md"
BEGIN, END = "<!-- frontier -->\n", "<!-- end frontier -->\n"
COLOURS = {"zorpelx": "#1764ab", "other": "#b3532a"}
WIDTH, HEIGHT, MARGIN = 330, 220, 44
MOST, LEAST = 1.06, 0.92  # values shown
TIMES = (0.25, 0.5, 1, 2, 4, 8)


def settings(rows):
    """The rows of each problem, in the order of the file."""
    found = {}
    for row in rows:
        found.setdefault((row["nparts"], row["epsilon"], row["objective"]), []).append(row)
    return found


def title(problem):
    nparts, epsilon, objective = problem
    name = {"cut": "cut", "km1": "connectivity minus one"}[objective]
    return f"{nparts} parts, {epsilon} %, {name}"


def place(cpu, value):
    span = math.log2(TIMES[-1] / TIMES[0])
    x = MARGIN + (WIDTH - MARGIN - 10) * math.log2(cpu / TIMES[0]) / span
    y = 28 + (HEIGHT - 62) * (MOST - value) / (MOST - LEAST)
    return round(x, 1), round(y, 1)


def text(x, y, words, anchor="start", extra=""):
    return f'<text x="{x}" y="{y}" text-anchor="{anchor}"{extra}>{words}</text>'


def panel(problem, rows):
    parts = [text(MARGIN, 16, title(problem), extra=' font-weight="bold"')]
    for value in (0.94, 0.96, 0.98, 1.0, 1.02, 1.04):
        x, y = place(TIMES[0], value)
        parts.append(f'<path d="M{x} {y}H{WIDTH - 10}" stroke="#ddd"/>')
        parts.append(text(x - 4, y + 4, f"{value:.2f}", "end"))
    for cpu in TIMES:
        x, y = place(cpu, LEAST)
        parts.append(text(x, y + 14, f"{cpu:g}", "middle"))
    for program in COLOURS:
        points = sorted((float(r["cpu"]), float(r["value"]), r) for r in rows if r["program"] == program)
        line = " ".join("%g,%g" % place(cpu, value) for cpu, value, _ in points)
        colour = COLOURS[program]
        parts.append(f'<polyline points="{line}" fill="none" stroke="{colour}"/>')
        for cpu, value, row in points:
            x, y = place(cpu, value)
            parts.append(f'<circle cx="{x}" cy="{y}" r="3" fill="{colour}"/>')
            side = (x + 5, "start") if x < WIDTH - 50 else (x - 5, "end")  # inside the panel
            parts.append(text(side[0], y - 5, row["setting"], side[1], f' fill="{colour}"'))
    return parts


def picture(problems):
    columns = 2
    lines = -(-len(problems) // columns)
    parts = [
        f'<svg xmlns="http://www.w3.org/2000/svg" width="{columns * WIDTH}" '
        f'height="{lines * HEIGHT + 24}" font-family="sans-serif" font-size="11">',
        "<title>Value of the objective against processor time, smaller is better</title>",
        '<rect width="100%" height="100%" fill="white"/>',
    ]
    for i, (problem, rows) in enumerate(problems.items()):
        parts.append(f'<g transform="translate({i % columns * WIDTH},{i // columns * HEIGHT})">')
        parts += [*panel(problem, rows), "</g>"]
    words = "down: value, across: processor time, both over those of the other program's quality setting"
    parts.append(text(MARGIN, lines * HEIGHT + 14, words))
    return "\n".join([*parts, "</svg>"]) + "\n"


def table(problems):
    names = [("zorpelx", n) for n in ("fast", "default", "best")]
    names += [("other", n) for n in ("fast", "slowest")]
    heads = [f"`{n}`" if p == "zorpelx" else f"other, {n}" for p, n in names]
    lines = ["| parts, epsilon, objective | " + " | ".join(heads) + " |"]
    lines.append("| --- |" + " --- |" * len(names))
    for problem, rows in problems.items():
        cells = []
        for name in names:
            found = [r for r in rows if (r["program"], r["setting"]) == name]
            cells.append(f"{found[0]['value']} in {found[0]['cpu']}" if found else "")
        lines.append("| " + " | ".join([title(problem), *cells]) + " |")
    return "\n".join(lines) + "\n"


def main():
    with FIGURES.open(encoding="ascii") as file:
        problems = settings(csv.DictReader(file))
    page = PAGE.read_text(encoding="utf-8")
    head, rest = page.split(BEGIN)
    _, tail = rest.split(END)
    wanted = {PICTURE: picture(problems), PAGE: head + BEGIN + table(problems) + END + tail}
    if sys.argv[1:] == ["--check"]:
        wrong = [p for p, t in wanted.items() if not p.exists() or p.read_text(encoding="utf-8") != t]
        sys.exit(" ".join(f"{path.name} is not what the figures give" for path in wrong) or None)
    for path, content in wanted.items():
        path.write_text(content, encoding="utf-8")


if __name__ == "__main__":
    main()
