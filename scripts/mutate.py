#!/usr/bin/env python3
"""Mutation testing: small mistakes, one at a time, that the tests should notice.

usage: scripts/mutate.py [--n N] [--seed S] [--seconds T] [--jobs J] [--out CSV]
                         [--quick] [--files GLOB ...]

Draws N places in the engine's sources where an operator or a constant can be changed, and for each
builds a copy of the project with that one change and runs the tests on it, quickest first: the
checksum of the tester's results on 600 cases, then everything labelled unit, golden and model.
A mutant is killed when a test fails, crashes or runs far beyond its time; one that does not compile
does not count. The survivors are listed at the end, each with its line.
"""
import argparse
import csv
import pathlib
import random
import re
import shutil
import subprocess
import sys
import tempfile
import time

PROJECT = pathlib.Path(__file__).resolve().parents[1]
FOLDERS = ("core", "partition", "coarsen", "refine", "kway", "io")

# What each token may become.
SWAPS = {
    "<": ("<=", ">"), "<=": ("<",), ">": (">=", "<"), ">=": (">",),
    "==": ("!=",), "!=": ("==",), "+": ("-",), "-": ("+",), "*": ("+",), "/": ("*",),
    "+=": ("-=",), "-=": ("+=",), "++": ("--",), "--": ("++",), "&&": ("||",), "||": ("&&",),
    "!": ("",), "continue": ("break",), "true": ("false",), "false": ("true",),
}  # fmt: skip
CHECKER = re.compile(r"^(?:static )?bool \w+_ok\(.*?^}", re.S | re.M)
TOKEN = re.compile(
    r"""(?P<skip>//[^\n]*|/\*.*?\*/|"(?:[^"\\\n]|\\.)*"|'(?:[^'\\]|\\.)'|^\s*\#[^\n]*
        |\btemplate\s*<[^<>]*>|_(?:cast|array|element)<[^;()]*?>(?=\()|\bassert\([^;]*;
        |\bHEAVY_ASSERT\([^;]*;|->|<<=?|>>=?|\w+<[A-Z]\w*>)
      |(?P<name>\b(?:continue|true|false)\b)
      |(?P<number>(?<![\w.])\d+(?![\w.]))
      |(?P<operator>\+\+|--|\+=|-=|<=|>=|==|!=|&&|\|\||\s[<>+\-*/]\s|!(?=[\w(]))""",
    re.X | re.S | re.M,
)


def places_in(text):
    """All (start, end, replacement) of a source."""
    for token in TOKEN.finditer(text):
        if token["skip"]:
            continue
        start, end, word = token.start(), token.end(), token.group()
        if token["number"]:
            yield start, end, str(int(word) + 1)
            continue
        start, end = start + len(word) - len(word.lstrip()), end - len(word) + len(word.rstrip())
        if word.strip() == "*" and re.search(r"(?:const|int|\w__|[A-Z]\w+) $", text[:start]):
            continue  # a pointer, not a product
        for replacement in SWAPS.get(word.strip(), ()):
            yield start, end, replacement


def find_mutants(patterns):
    mutants = []
    for folder in FOLDERS:
        for source in sorted((PROJECT / "src" / folder).glob("*.cpp")):
            name = source.relative_to(PROJECT)
            if patterns and not any(name.match(pattern) for pattern in patterns):
                continue
            text = source.read_text()
            # checkers of records serve the tests and are no part of the engine
            body = CHECKER.sub(lambda checker: re.sub(r"\S", " ", checker[0]), text)
            mutants += [(name, *place) for place in places_in(body)]
    return mutants


def run(words, place, seconds):
    """The status; None when the time is up."""
    try:
        return subprocess.run(
            words, cwd=place, timeout=seconds, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL
        )
    except subprocess.TimeoutExpired:
        return None


class Copy:
    """A copy of the project with a build of its own, changed one line at a time."""

    def __init__(self, place, jobs, quick):
        self.place, self.jobs, self.quick = place, jobs, quick
        listing = ["git", "ls-files", "--cached", "--others", "--exclude-standard"]
        listed = subprocess.run(listing, cwd=PROJECT, capture_output=True, text=True, check=True)
        for name in filter(lambda name: (PROJECT / name).is_file(), listed.stdout.splitlines()):
            (place / name).parent.mkdir(parents=True, exist_ok=True)
            shutil.copy(PROJECT / name, place / name)
        configure = "cmake -S . -B build -G Ninja -DCMAKE_BUILD_TYPE=Release -DZORPEL_TESTS=ON"
        subprocess.run(configure.split(), cwd=place, check=True, stdout=subprocess.DEVNULL)
        if not self.build("zorpel-torture" if quick else "all"):
            sys.exit("the project does not build")
        self.checksum = self.results()

    def build(self, target):
        command = ["ninja", "-C", "build", "-j", str(self.jobs), target]
        status = run(command, self.place, 1200)
        return status is not None and status.returncode == 0

    def results(self):
        words = "build/tests/model/zorpel-torture --checksum --n 600 --seed 20".split()
        ended = run(words, self.place, 120)
        return ended.stdout if ended is not None and ended.returncode == 0 else None

    def killer(self):
        """What noticed the change, or None."""
        if not self.build("zorpel-torture"):
            return "compiler"
        if self.results() != self.checksum:
            return "checksum"
        if self.quick:
            return None
        if not self.build("all"):
            return "compiler"
        for label in ("unit", "golden", "model"):
            words = f"ctest --test-dir build -L {label} --stop-on-failure --no-tests=error".split()
            ended = run(words, self.place, 900)
            if ended is None or ended.returncode != 0:
                return label
        return None


def try_mutant(copy, mutant):
    name, start, end, replacement = mutant
    target = copy.place / name
    text = target.read_text()
    target.write_text(text[:start] + replacement + text[end:])
    line = text.count("\n", 0, start) + 1
    try:
        killer = copy.killer()
    finally:
        target.write_text(text)
    change = f"{text[start:end]} -> {replacement or 'nothing'}"
    return name, line, change, killer or "survived", text.splitlines()[line - 1].strip()


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--n", type=int, default=300)
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--jobs", type=int, default=2)
    parser.add_argument("--out", type=pathlib.Path, default=pathlib.Path("mutants.csv"))
    parser.add_argument("--files", nargs="*", default=[])
    parser.add_argument("--seconds", type=float, default=float("inf"))
    parser.add_argument("--quick", action="store_true", help="only the checksum")
    options = parser.parse_args()
    mutants = find_mutants(options.files)
    random.Random(options.seed).shuffle(mutants)
    print(f"{len(mutants)} possible mutants, {min(options.n, len(mutants))} drawn", flush=True)
    results = []
    with tempfile.TemporaryDirectory() as place, options.out.open("w", newline="") as out:
        copy = Copy(pathlib.Path(place), options.jobs, options.quick)
        table = csv.writer(out)
        table.writerow(["file", "line", "change", "killed by", "source"])
        start = time.monotonic()
        for mutant in mutants[: options.n]:
            if time.monotonic() - start > options.seconds:
                break
            results.append(try_mutant(copy, mutant))
            table.writerow(results[-1])
            out.flush()
    judged = [result for result in results if result[3] != "compiler"]
    survivors = [result for result in judged if result[3] == "survived"]
    killed = len(judged) - len(survivors)
    print(f"{len(judged)} mutants compiled, {killed} killed ({100 * killed / len(judged):.1f} %)")
    for name, line, change, _, source in survivors:
        print(f"{name}:{line}: {change}: {source}")


main()
