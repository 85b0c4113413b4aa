#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Mutation testing: small mistakes, one at a time, that the tests should notice.

usage: scripts/mutate.py [--n N] [--seed S] [--seconds T] [--jobs J] [--out CSV] [--work FOLDER]
                         [--quick] [--again] [--files GLOB ...]

Draws N places in the engine's sources where an operator or a constant can be changed. Each mutant
is a copy of the project with that one change, and the tests run on it, quickest first:

  1. the checksum of the tester's results on 600 cases (their unit tests for io/, driver/, spare/),
  2. the programs of unit and model tests, the mutated folder's own first,
  3. 300 cases of the tester under sanitizers and heavy asserts,
  4. everything labelled golden or model, and the counts of work.

A mutant is killed when a test fails, crashes or needs far more than its time or memory. One that
does not compile, or gives the same machine code, does not count. All mutants take step 1 before the
first of those left takes step 2. The table CSV has a line for each and is written as it grows: what
it already judges is not tried again, so a run that was cut short goes on where it stopped. Steps 2
to 4 go by the order of the draw: as far as a run gets, it has judged a draw of its own, and that is
what it reports. --quick stops after step 1, --again tries the survivors of the table once more, and
--work keeps the builds.
"""
import argparse
import csv
import os
import pathlib
import random
import re
import resource
import shutil
import signal
import subprocess
import sys
import tempfile
import time

PROJECT = pathlib.Path(__file__).resolve().parents[1]
FOLDERS = ("core", "partition", "coarsen", "refine", "kway", "io", "driver", "spare")

UNIT = ("core", "file", "entry", "partition", "program", "coarsen", "refine", "kway")
MODELS = ("fm_twin", "kway_twin", "coarsen_twin", "properties", "kway_properties")
MODELS += ("coarsen_properties",)
NEAREST = {"io": "file", "driver": "file", "spare": "kway"}  # where the name is not the folder's
PROGRAMS = [f"tests/unit/{name}_tests" for name in UNIT] + ["tests/model/model_tests"]
PROGRAMS += [f"tests/model/{name}_test" for name in MODELS] + ["tests/model/torture_edges"]
TESTER = "zorpel-torture --checksum --seed 20 --n".split()
CASES = {"plain": (60, 600), "check": (300,)}
CPU_SECONDS = {"plain": 15, "check": 60}  # most that a test program may use: five times its need
MEMORY, FILE_SIZE = 3 << 30, 1 << 28

# What each token may become.
SWAPS = {
    "<": ("<=", ">"), "<=": ("<",), ">": (">=", "<"), ">=": (">",),
    "==": ("!=",), "!=": ("==",), "+": ("-",), "-": ("+",), "*": ("+",), "/": ("*",),
    "+=": ("-=",), "-=": ("+=",), "++": ("--",), "--": ("++",), "&&": ("||",), "||": ("&&",),
    "!": ("",), "continue": ("break",), "true": ("false",), "false": ("true",),
}  # fmt: skip
CHECKER = re.compile(r"^(?:static )?bool \w+_ok\([^;{]*\{.*?^}", re.S | re.M)
TOKEN = re.compile(
    r"""(?P<skip>//[^\n]*|/\*.*?\*/|"(?:[^"\\\n]|\\.)*"|'(?:[^'\\]|\\.)'|^\s*\#[^\n]*
        |\btemplate\s*<[^<>]*>|_(?:cast|array|element)<[^;()]*?>(?=\()|\bassert\([^;]*;
        |\bHEAVY_ASSERT\([^;]*;|\b__builtin_prefetch\([^;]*;|->|<<=?|>>=?|\w+<[A-Z]\w*>)
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
        for source in sorted((PROJECT / "src" / folder).glob("*.[ch]*")):
            name = source.relative_to(PROJECT)
            if patterns and not any(name.match(pattern) for pattern in patterns):
                continue
            text = source.read_text()
            # checkers of records serve the tests and are no part of the engine
            body = CHECKER.sub(lambda checker: re.sub(r"\S", " ", checker[0]), text)
            mutants += [describe(name, text, *place) for place in places_in(body)]
    return mutants


def describe(name, text, start, end, replacement):
    """The mutant as a line of the table, with what makes it."""
    line_start = text.rfind("\n", 0, start) + 1
    return {
        "file": str(name),
        "line": str(text.count("\n", 0, start) + 1),
        "column": str(start - line_start + 1),
        "change": f"{text[start:end]} -> {replacement or 'nothing'}",
        "killed by": "",
        "source": text[line_start : text.find("\n", start)].strip(),
        "mutated": text[:start] + replacement + text[end:],
    }


COLUMNS = ("file", "line", "column", "change", "killed by", "source")


def key_of(row):
    return tuple(row[column] for column in COLUMNS if column != "killed by")


def place_of(row):
    return row["file"], int(row["line"]), int(row["column"])


def set_limits(kind):
    seconds = CPU_SECONDS[kind]
    resource.setrlimit(resource.RLIMIT_CPU, (seconds, seconds + 5))
    resource.setrlimit(resource.RLIMIT_FSIZE, (FILE_SIZE, FILE_SIZE))
    if kind == "plain":  # sanitizers reserve terabytes
        resource.setrlimit(resource.RLIMIT_AS, (MEMORY, MEMORY))


def run(words, place, seconds, limits=None):
    """What a command printed and its status; None when the time is up. No child outlives it."""
    pipe = subprocess.PIPE
    with subprocess.Popen(
        words, cwd=place, stdin=subprocess.DEVNULL, stdout=pipe, stderr=subprocess.DEVNULL,
        preexec_fn=limits, process_group=0, env=os.environ | {"MALLOC_PERTURB_": "90"},
    ) as child:  # fmt: skip
        try:
            output, _ = child.communicate(timeout=seconds)
            return output, child.returncode
        except subprocess.TimeoutExpired:
            os.killpg(child.pid, signal.SIGKILL)
            return None


def copy_project(place):
    """Brings the copy in place up to date; what is the same keeps its time."""
    listing = ["git", "ls-files", "--cached", "--others", "--exclude-standard"]
    listed = subprocess.run(listing, cwd=PROJECT, capture_output=True, text=True, check=True)
    for name in filter(lambda name: (PROJECT / name).is_file(), listed.stdout.splitlines()):
        target = place / name
        if target.is_file() and target.read_bytes() == (PROJECT / name).read_bytes():
            continue
        target.parent.mkdir(parents=True, exist_ok=True)
        shutil.copy(PROJECT / name, target)


class Build:
    """A build of the copy, and the results that it gives unchanged."""

    OPTIONS = {
        "plain": ("-DCMAKE_BUILD_TYPE=Release", "-DCMAKE_CXX_FLAGS_RELEASE=-O1 -DNDEBUG"),
        "check": (
            "-DCMAKE_BUILD_TYPE=Debug",
            "-DCMAKE_CXX_FLAGS_DEBUG=-O1",
            "-DZORPEL_SANITIZE=ON",
            "-DZORPEL_HEAVY_ASSERTS=ON",
        ),
    }

    def __init__(self, copy, kind, jobs):
        self.place, self.jobs = copy / "build" / kind, jobs
        self.kind = kind
        configure = ["cmake", "-S", copy, "-B", self.place, "-G", "Ninja"]
        configure += ["-DZORPEL_TESTS=ON", "-DZORPEL_X=OFF", *self.OPTIONS[kind]]
        subprocess.run(configure, check=True, stdout=subprocess.DEVNULL)
        if not self.make("zorpel-torture", "zorpel"):
            sys.exit("the project does not build")
        self.code = self.machine_code()
        self.checksums = {ncases: self.checksum(ncases) for ncases in CASES[kind]}
        if None in self.checksums.values():
            sys.exit("the tester fails on the unchanged project")

    def make(self, *targets):
        ended = run(["ninja", "-j", str(self.jobs), *targets], self.place, 3600)
        return ended is not None and ended[1] == 0

    def machine_code(self):
        programs = ("src/libzorpel_internal.a", "src/zorpel")
        return [(self.place / program).read_bytes() for program in programs]

    def limits(self):
        set_limits(self.kind)

    def checksum(self, ncases):
        """What the tester printed, or None."""
        words = [self.place / "tests" / "model" / TESTER[0], *TESTER[1:], str(ncases)]
        ended = run(words, self.place, 900, self.limits)
        return ended[0] if ended is not None and ended[1] == 0 else None

    def same_results(self):
        return all(self.checksum(ncases) == same for ncases, same in self.checksums.items())

    def passes(self, program):
        ended = run([self.place / program, "--gtest_brief=1"], self.place, 900, self.limits)
        return ended is not None and ended[1] == 0

    def failing_test(self, words):
        """The first test that ctest sees fail, or None."""
        command = ["ctest", "--stop-on-failure", "--no-tests=error", *words]
        ended = run(command, self.place, 1800)
        if ended is None or ended[1] != 0:
            failed = re.search(rb"^\s*\d+ - (\S+)", ended[0] if ended else b"", re.M)
            return failed[1].decode() if failed else "ctest"
        return None


def folder_of(mutant):
    return pathlib.PurePath(mutant["file"]).parent.name


def nearest(mutant):
    folder = folder_of(mutant)
    return f"tests/unit/{NEAREST.get(folder, folder)}_tests"


def judge_by(build, program):
    """What kills a mutant when this program of tests is built and run, or nothing."""
    name = pathlib.Path(program).name
    if not build.make(name):
        return "compiler"
    return "" if build.passes(program) else name


class Judge:
    """The steps, on builds that are made when first needed."""

    def __init__(self, copy, jobs):
        self.copy, self.jobs, self.builds = copy, jobs, {}

    def build(self, kind):
        if kind not in self.builds:
            self.builds[kind] = Build(self.copy, kind, self.jobs)
        return self.builds[kind]

    def quickly(self, mutant):
        """Step 1."""
        build = self.build("plain")
        if not build.make("zorpel-torture", "zorpel"):
            return "compiler"
        if build.machine_code() == build.code:
            return "same code"
        if folder_of(mutant) not in NEAREST:
            return "" if build.same_results() else "checksum"
        return judge_by(build, nearest(mutant))

    def thoroughly(self, mutant):
        """Steps 2 to 4."""
        build, check = self.build("plain"), self.build("check")
        for program in sorted(PROGRAMS, key=lambda program: program != nearest(mutant)):
            if killer := judge_by(build, program):
                return killer
        if not check.make("zorpel-torture") or not check.same_results():
            return "sanitizers and heavy asserts"
        if not build.make("all"):
            return "compiler"
        others = "badfiles|full_disk|in_silence|golden|torture|regress|fuzz|every_alloc|work_counts"
        return build.failing_test(["-LE", "slow", "-R", others]) or "nothing"


def judge_all(mutants, steps, copy, write, deadline):
    for mutant in mutants:
        if time.monotonic() > deadline:
            return
        target = copy / mutant["file"]
        text = target.read_text()
        target.write_text(mutant["mutated"])
        try:
            mutant["killed by"] = steps(mutant)
        finally:
            target.write_text(text)
        write()


def write_table(path, mutants):
    new = path.with_suffix(".new")
    with new.open("w", newline="") as out:
        table = csv.DictWriter(out, COLUMNS, extrasaction="ignore", lineterminator="\n")
        table.writeheader()
        judged = [mutant for mutant in mutants if mutant["killed by"] is not None]
        table.writerows(sorted(judged, key=place_of))
    new.replace(path)


def report(mutants, quick):
    no_mutants = (None, "compiler", "same code")
    if not quick:
        ends = [i for i, mutant in enumerate(mutants) if mutant["killed by"] in (None, "")]
        mutants = mutants[: min(ends, default=len(mutants))]
        print(f"the first {len(mutants)} of the draw are judged")
    judged = [mutant for mutant in mutants if mutant["killed by"] not in no_mutants]
    survivors = [mutant for mutant in judged if mutant["killed by"] in ("", "nothing")]
    killed = len(judged) - len(survivors)
    print(f"{len(judged)} mutants, {killed} killed ({100 * killed / max(1, len(judged)):.1f} %)")
    for row in survivors:
        place = ":".join((row["file"], row["line"], row["column"]))
        left = "" if row["killed by"] else " (step 1 only)"
        print(f"{place}: {row['change']}: {row['source']}{left}")


def judge(mutants, options, copy):
    def write():
        write_table(options.out, mutants)

    copy_project(copy)
    judge, deadline = Judge(copy, options.jobs), time.monotonic() + options.seconds
    judge.build("plain")
    fresh = [mutant for mutant in mutants if mutant["killed by"] is None]
    # Neighbours share a file, which is thus compiled once a mutant, not also to undo the last one.
    judge_all(sorted(fresh, key=place_of), judge.quickly, copy, write, deadline)
    if options.quick:
        return
    wanted = ("", "nothing") if options.again else ("",)
    left = [mutant for mutant in mutants if mutant["killed by"] in wanted]
    if left:
        judge.build("check")  # of the unchanged project, before the first mutant is in place
    judge_all(left, judge.thoroughly, copy, write, deadline)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--n", type=int, default=300)
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--jobs", type=int, default=2)
    parser.add_argument("--out", type=pathlib.Path, default=pathlib.Path("mutants.csv"))
    parser.add_argument("--work", type=pathlib.Path)
    parser.add_argument("--files", nargs="*", default=[])
    parser.add_argument("--seconds", type=float, default=float("inf"))
    parser.add_argument("--quick", action="store_true", help="only the checksum")
    parser.add_argument("--again", action="store_true", help="survivors of the table once more")
    options = parser.parse_args()
    mutants = find_mutants(options.files)
    possible = len(mutants)
    random.Random(options.seed).shuffle(mutants)
    mutants = mutants[: options.n]
    print(f"{possible} possible mutants, {len(mutants)} drawn", flush=True)
    known = {}
    if options.out.is_file():
        with options.out.open(newline="") as table:
            known = {key_of(row): row["killed by"] for row in csv.DictReader(table)}
    for mutant in mutants:
        mutant["killed by"] = known.get(key_of(mutant))
    with tempfile.TemporaryDirectory() as place:
        judge(mutants, options, options.work or pathlib.Path(place))
    report(mutants, options.quick)


main()
