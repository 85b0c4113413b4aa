# SPDX-License-Identifier: MIT
"""What the measuring scripts share: the programs, the inputs, the builds, one run, tables.

Everything that is made on the way goes to build/bench/lab: unpacked and generated inputs, and the
builds of other commits. Nothing in it is needed afterwards.
"""

import argparse
import gzip
import math
import re
import shutil
import subprocess
import sys
from dataclasses import dataclass, field
from pathlib import Path

ROOT = Path(__file__).resolve().parents[1]
BUILD = ROOT / "build" / "bench"
LAB = BUILD / "lab"
SEED = 1  # of generated inputs
RELEASE = ("-DCMAKE_BUILD_TYPE=Release", "-DZORPEL_BENCH=ON", "-DZORPEL_X=OFF", "-G", "Ninja")


class Failure(Exception):
    """Something that a measurement cannot go on without; its text tells what."""


# ---- programs and libraries ----------------------------------------------------------------


def tool(name):
    """A program of the bench build."""
    path = BUILD / "bench" / name
    if not path.exists():
        raise Failure("%s is missing: cmake --preset bench && cmake --build --preset bench" % path)
    return path


@dataclass
class Library:
    """A build to measure, and its relatives with a clock for the stages and with counts."""

    name: str
    path: Path
    staged: Path = None  # or the library itself, for the timers that it prints
    counted: Path = None


def named_library(name, path):
    """The library in a file, with the relatives that stand where our builds put them."""
    path = Path(path).resolve()
    if not path.is_file():
        raise Failure("%s: no such library" % path)
    staged = path.parents[1] / "bench" / "libzorpel_staged.so"
    counted = path.parent / "libzorpel_counted.so"
    return Library(
        name,
        path,
        staged if staged.exists() else path,
        counted if counted.exists() else None,
    )


def command(words, **options):
    done = subprocess.run(words, capture_output=True, text=True, check=False, **options)
    if done.returncode != 0:
        raise Failure("%s\n%s" % (" ".join(map(str, words)), done.stdout + done.stderr))
    return done.stdout


def library_of_commit(name, commit):
    """Builds a commit's library, as it ships, in a copy of its tree; once for each commit."""
    commit = command(["git", "rev-parse", "--verify", commit + "^{commit}"], cwd=ROOT).strip()
    tree = LAB / "commits" / commit
    build = tree / "build"
    library = build / "src" / "libzorpel.so"
    if not library.exists():
        print("building %s as %s" % (commit[:12], name), file=sys.stderr)
        tree.mkdir(parents=True, exist_ok=True)
        archive = subprocess.run(["git", "archive", commit], cwd=ROOT, stdout=subprocess.PIPE)
        subprocess.run(["tar", "-x", "-C", tree], input=archive.stdout, check=True)
        stages = "-DCMAKE_PROJECT_zorpel_INCLUDE=%s" % (ROOT / "bench" / "staged.cmake")
        command(["cmake", "-S", tree, "-B", build, *RELEASE, stages])
        command(["cmake", "--build", build, "-j", "1", "-t", "zorpel_shared", "zorpel_staged"])
        if "zorpel_counted" in command(["cmake", "--build", build, "-t", "help"]):
            command(["cmake", "--build", build, "-j", "1", "-t", "zorpel_counted"])
    return named_library(name, library)


def parse_base(word):
    """NAME=LIBRARY or NAME=COMMIT."""
    name, equals, what = word.partition("=")
    if not equals or not re.fullmatch(r"[\w.-]+", name):
        raise Failure("%s is not NAME=LIBRARY or NAME=COMMIT" % word)
    return named_library(name, what) if Path(what).is_file() else library_of_commit(name, what)


def parser_of_builds(what):
    """A parser with the options that say which builds are measured."""
    parser = argparse.ArgumentParser(
        description=what, formatter_class=argparse.ArgumentDefaultsHelpFormatter
    )
    add = parser.add_argument
    library = BUILD / "src" / "libzorpel.so"
    add("--library", dest="measured", default=library, help="the build to measure")
    add("--base", action="append", default=[], metavar="NAME=LIBRARY|COMMIT", help="may repeat")
    return parser


# ---- inputs --------------------------------------------------------------------------------


def instance_name(path):
    return path.name.removesuffix(".gz").removesuffix(".hgr")


def inputs_of_folder(folder):
    """The hypergraphs of a folder, unpacked where they are packed, the smallest first."""
    found = sorted(Path(folder).glob("*.hgr")) + sorted(Path(folder).glob("*.hgr.gz"))
    if not found:
        raise Failure("%s holds no .hgr and no .hgr.gz" % folder)
    plain = [unpack(path) if path.suffix == ".gz" else path for path in found]
    return sorted(plain, key=lambda path: path.stat().st_size)


def unpack(path):
    target = LAB / "inputs" / path.name.removesuffix(".gz")
    if not target.exists() or target.stat().st_mtime < path.stat().st_mtime:
        target.parent.mkdir(parents=True, exist_ok=True)
        with gzip.open(path) as packed, target.open("wb") as file:
            shutil.copyfileobj(packed, file)
    return target


def short_number(n):
    """1000000 as 1e6, 250000 as 250000."""
    power = round(math.log10(n))
    return "1e%d" % power if 10**power == n and power > 3 else "%d" % n


def generate(family, pins, *options):
    """A hypergraph by zorpel-generate, made once."""
    words = [option.lstrip("-") for option in options]
    name = "-".join([family, short_number(pins), *words])
    target = LAB / "inputs" / (name + ".hgr")
    if not target.exists():
        target.parent.mkdir(parents=True, exist_ok=True)
        part = target.with_suffix(".part")
        with part.open("wb") as file:
            words = [tool("zorpel-generate"), family, str(pins), str(SEED), *options]
            if subprocess.run(words, stdout=file, check=False).returncode != 0:
                raise Failure("zorpel-generate %s %d failed" % (family, pins))
        part.rename(target)
    return target


# ---- one run -------------------------------------------------------------------------------


@dataclass(frozen=True)
class Setting:
    """Options of one call, in the order in which zorpel-time takes them."""

    name: str
    nruns: int = 1
    ctype: int = 1
    rtype: int = 1
    vcycle: int = 0
    reconst: int = 0
    ubfactor: int = 5
    seed: int = 1
    entry: str = "recursive"

    def words(self, nparts):
        scheme = (self.nruns, self.ctype, self.rtype, self.vcycle, self.reconst)
        return [str(n) for n in (nparts, self.ubfactor, *scheme, self.seed)]


SETTINGS = {"1 run": Setting("1 run"), "10 runs": Setting("10 runs", nruns=10, vcycle=1)}


@dataclass
class Run:
    """What zorpel-time told of one call."""

    cpu: float
    wall: float
    kilobytes: int
    cut: int
    checksum: str
    more: dict = field(default_factory=dict)  # sizes, stages or counts, in their order


def number(text):
    return int(text) if text.lstrip("-").isdigit() else float(text)


def run_once(path, hypergraph, nparts, setting, *options, limit=None):
    """One call in a process of its own; None if the library ended it or took more than limit CPU
    seconds."""
    words = [tool("zorpel-time"), "--entry", setting.entry, *options, path, hypergraph]
    words += setting.words(nparts)
    if limit is not None:
        words = ["prlimit", "--cpu=%d" % math.ceil(limit), *words]
    done = subprocess.run(words, capture_output=True, text=True, check=False)
    cells = done.stdout.strip().split(",")
    if done.returncode != 0 or len(cells) < 5:
        print(done.stderr.strip(), file=sys.stderr)
        return None
    more = dict(cell.split("=") for cell in cells[5:])
    cpu, wall, kilobytes, cut, checksum = cells[:5]
    figures = {name: number(value) for name, value in more.items()}
    return Run(float(cpu), float(wall), int(kilobytes), int(cut), checksum, figures)


# ---- tables --------------------------------------------------------------------------------


def geometric_mean(values):
    return math.exp(sum(math.log(value) for value in values) / len(values))


def seconds(value):
    """Three digits that count, and no more decimals than the clock is good for."""
    return "%.*f" % (3 if value < 1 else 2 if value < 10 else 1 if value < 100 else 0, value)


def markdown(columns, rows, nleft=1):
    """A table in Markdown, padded so that it reads as plain text; the first nleft columns are
    words."""
    cells = [[str(cell) for cell in row] for row in [columns, *rows]]
    widths = [max(3, *(len(row[i]) for row in cells)) for i in range(len(columns))]

    def line(row):
        padded = [
            cell.ljust(width) if i < nleft else cell.rjust(width)
            for i, (cell, width) in enumerate(zip(row, widths))
        ]
        return "| " + " | ".join(padded) + " |"

    rule = ["-" * w if i < nleft else "-" * (w - 1) + ":" for i, w in enumerate(widths)]
    return "\n".join([line(cells[0]), line(rule), *map(line, cells[1:])])


def put_into(document, text):
    """Replaces what stands between <!-- NAME --> and <!-- end NAME --> of DOCUMENT:NAME."""
    document, _, name = document.partition(":")
    begin, end = "<!-- %s -->" % name, "<!-- end %s -->" % name
    old = Path(document).read_text(encoding="utf-8")
    if old.count(begin) != 1 or old.count(end) != 1:
        raise Failure("%s has no place named %s" % (document, name))
    head, rest = old.split(begin)
    tail = rest.split(end)[1]
    Path(document).write_text("\n".join([head + begin, text, end + tail]), encoding="utf-8")
