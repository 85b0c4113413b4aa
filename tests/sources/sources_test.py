#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Checks the order of the sources of the engine and of the search.

usage: sources_test.py --compiler CXX --nm NM --library LIBZORPEL_A [--heavy]

Folders of src/ include only folders below them, whose sources open with what they do and how; in
src/ and in search/ every header compiles alone, invariants have numbers that are documented, tested
for and named by a test, and asserts are as dense as the style asks for; the release library contains
none of the predicates. In the whole tree names of files and of types are unique and sources name their licence.
"""
import argparse
import concurrent.futures
import pathlib
import re
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parents[2]
SRC = ROOT / "src"
SEARCH = ROOT / "search"
TESTS = {SRC: ROOT / "tests", SEARCH: SEARCH / "tests"}  # of each library
# From the bottom to the top; docs/ARCHITECTURE.md has the same list.
ORDER = ["core", "coarsen", "refine", "kway", "partition", "io", "driver", "spare"]
LEAST_ASSERTS = 40  # a thousand lines
LICENSED = {".c", ".cpp", ".h", ".in", ".py", ".sh", ".cmake", ".slurm"}
INCLUDE = re.compile(r'#include "(\w+)/')
RULE = re.compile(r"HOLDS\(([A-Z][0-9]),")
DOCUMENTED = re.compile(r"^(?: |/)\*\s+([A-Z][0-9])  ", re.MULTILINE)
TESTED = re.compile(r'"([A-Z][0-9])"')
TYPE = re.compile(r"^(?:struct|union|class|enum class|enum) (\w+)[^;{()]*\{", re.MULTILINE)
PREDICATE = re.compile(r"\b\w+_ok\b")


def sources(library=SRC):
    files = [*library.rglob("*.cpp"), *library.rglob("*.h")]
    return sorted(path for path in files if path.parent != TESTS[library])


def wrong_includes():
    for path in sources():
        folder = path.parent.name
        for other in INCLUDE.findall(path.read_text()):
            if other in ORDER and ORDER.index(other) > ORDER.index(folder):
                yield f"{path.relative_to(ROOT)} includes {other}/, which is above {folder}/"
    for folder in {path.parent.name for path in sources()} - set(ORDER):
        yield f"src/{folder}/ has no place in the order of the folders"
    table = (ROOT / "docs/ARCHITECTURE.md").read_text()
    places = [table.find(f"| `src/{folder}/`") for folder in ORDER]
    if -1 in places or places != sorted(places, reverse=True):
        yield "docs/ARCHITECTURE.md lists the folders of src/ in another order"


def tree():
    """The files of the project; data of tests is named for its case or its format."""
    data = {ROOT / "build", ROOT / "fuzz/seeds", *(ROOT / "tests/golden").glob("*/")}
    folders = [ROOT]
    while folders:
        for path in sorted(folders.pop().iterdir()):
            if path.is_dir():
                if path not in data and (path.name == ".ci" or path.name[0] not in "._"):
                    folders.append(path)
            elif path.is_file():
                yield path


def repeated_names():
    """Files that share a name; every folder may have the two that tools look for."""
    seen = {}
    for path in tree():
        if path.name in ("CMakeLists.txt", "README.md"):
            continue
        if path.name in seen:
            yield f"{path.relative_to(ROOT)} has the name of {seen[path.name]}"
        seen[path.name] = path.relative_to(ROOT)


def repeated_types():
    """Types that share a name. Two of a program would also share the routines that the compiler makes
    for them, and the linker keeps one of each: the other type's values are then torn apart by it."""
    seen = {}
    for path in tree():
        folders = path.relative_to(ROOT).parts[:-1]
        if path.suffix not in (".h", ".cpp") or {"tests", "bench", "fuzz"} & set(folders):
            continue
        for name in TYPE.findall(path.read_text()):
            if name in seen:
                yield f"{path.relative_to(ROOT)} has a type {name}, and so has {seen[name]}"
            seen[name] = path.relative_to(ROOT)


def wrong_headers(compiler):
    """Headers that do not compile alone. driver/ includes a generated header, in sources only."""
    headers = [path for path in [*sources(), *sources(SEARCH)] if path.suffix == ".h"]

    def compile_alone(header):
        command = [compiler, "-std=c++20", "-fsyntax-only", "-x", "c++", "-Wall", "-Wextra"]
        command += [f"-I{SRC}", f"-I{ROOT}", f"-I{ROOT / 'include'}", "-Wno-pragma-once-outside-header"]
        if "clang" not in pathlib.Path(compiler).name:
            command.pop()
        ended = subprocess.run([*command, str(header)], capture_output=True, text=True)
        return ended.stderr if ended.returncode != 0 else ""

    with concurrent.futures.ThreadPoolExecutor(2) as pool:
        for header, errors in zip(headers, pool.map(compile_alone, headers)):
            if errors:
                yield f"{header.relative_to(ROOT)} does not compile alone:\n{errors}"


def wrong_rules(library):
    text = "".join(path.read_text() for path in sources(library))
    tests = "".join(path.read_text() for path in TESTS[library].rglob("*.cpp"))
    held, documented = set(RULE.findall(text)), DOCUMENTED.findall(text)
    for rule in sorted({rule for rule in documented if documented.count(rule) > 1}):
        yield f"{rule} names two invariants"
    for rule in sorted(set(documented) - held):
        yield f"{rule} is documented, but no predicate tests it"
    for rule in sorted(held - set(documented)):
        yield f"{rule} is tested for, but no record's comment says what it is"
    for rule in sorted(held - set(TESTED.findall(tests))):
        yield f"{rule} is broken by no test"


def short_openings():
    """Sources whose first comment is no more than a title."""
    for path in sources():
        opening = re.search(r"^/\* (?!SPDX).*?\*/", path.read_text(), re.S | re.M)
        if path.suffix == ".cpp" and (opening is None or opening.group().count("\n") < 3):
            yield f"{path.relative_to(ROOT)} does not open with what it does and how"


def unlicensed():
    """Sources that leave their licence to be guessed once they are copied out of here."""
    for path in tree():
        if path.suffix in LICENSED or path.name in ("CMakeLists.txt", "run", "test", "demo"):
            first = path.read_text().splitlines()[:2]
            if not any("SPDX-License-Identifier: MIT" in line for line in first):
                yield f"{path.relative_to(ROOT)} does not name its licence on top"


def thin_asserts(library):
    text = "".join(path.read_text() for path in sources(library))
    nlines = text.count("\n")
    nasserts = len(re.findall(r"\b(?:static_)?assert\(|\bHEAVY_ASSERT\(|\bHOLDS\(", text))
    print(f"{library.name}: {nasserts} asserts in {nlines} lines")
    if nasserts * 1000 < LEAST_ASSERTS * nlines:
        yield f"{library.name}: fewer than {LEAST_ASSERTS} asserts a thousand lines"


def shipped_predicates(nm, library):
    listed = subprocess.run(
        [nm, "--demangle", "--defined-only", library], capture_output=True, text=True, check=True
    )
    for name in sorted(set(PREDICATE.findall(listed.stdout))):
        yield f"{name} is in the release library"


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--compiler", required=True)
    parser.add_argument("--nm", required=True)
    parser.add_argument("--library", dest="archive", required=True)
    parser.add_argument("--heavy", action="store_true", help="the library has heavy asserts")
    options = parser.parse_args()
    wrong = [*wrong_includes(), *repeated_names(), *repeated_types(), *short_openings(), *unlicensed()]
    for library in TESTS:
        wrong += [*wrong_rules(library), *thin_asserts(library)]
    wrong += wrong_headers(options.compiler)
    if not options.heavy:
        wrong += shipped_predicates(options.nm, options.archive)
    print("\n".join(wrong))
    sys.exit(bool(wrong))


main()
