#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Makes the files of the bad-file corpus, each case in a folder of its own.

    make_badfiles.py FOLDER [CASE...]

The cases are in hypergraphs.py, fixfiles.py and names.py; expected.json tells what the program
makes of each.
"""

import os
import sys
import threading
from dataclasses import dataclass, field
from pathlib import Path

sys.dont_write_bytecode = True
OPTIONS = "2 5 1 1 1 0 0 0".split()  # two parts, one run, the plainest schemes
LITTLE_MEMORY = 1 << 30  # bytes; so that counts without data behind them cannot fill a machine


@dataclass
class Directory:
    pass


@dataclass
class Link:
    target: str


@dataclass
class Fifo:
    contents: bytes


@dataclass
class Locked:
    """A file that nobody may read or write."""

    contents: bytes


@dataclass
class Case:
    name: str
    words: list
    files: dict = field(default_factory=dict)  # name: bytes or one of the records above
    memory: int = None  # bound of the address space; such a case is not for sanitized builds
    reads_as: dict = field(default_factory=dict)  # the same files spelt out for stricter readers


CHAIN = b"3 4\n1 2\n2 3\n3 4\n"  # four vertices, three hyperedges


def hypergraph_case(name, text, reads_as=None, **others):
    """A case of one hypergraph file."""
    others["reads_as"] = {} if reads_as is None else {"in.hgr": reads_as}
    return Case(name, ["in.hgr", *OPTIONS], {"in.hgr": text}, **others)


def fix_case(name, text, reads_as=None):
    """A case of one fix file, beside a sound hypergraph."""
    others = {} if reads_as is None else {"in.fix": reads_as}
    words = ["in.hgr", "in.fix", *OPTIONS]
    return Case(name, words, {"in.hgr": CHAIN, "in.fix": text}, reads_as=others)


def feed(path, contents):
    """Hands contents to whoever opens the pipe; a reader that leaves early is none of our care."""
    try:
        path.write_bytes(contents)
    except BrokenPipeError:
        pass


def make_file(path, what):
    path.parent.mkdir(parents=True, exist_ok=True)
    if isinstance(what, Directory):
        path.mkdir()
    elif isinstance(what, Link):
        path.symlink_to(what.target)
    elif isinstance(what, Fifo):
        os.mkfifo(path)
        threading.Thread(target=feed, args=(path, what.contents), daemon=True).start()
    elif isinstance(what, Locked):
        path.write_bytes(what.contents)
        path.chmod(0)
    else:
        path.write_bytes(what)


def make_files(case, folder):
    for name, what in case.files.items():
        make_file(Path(folder) / name, what)


def spell_out(case, folder):
    """Puts the files that the partition checker may read: it is strict about what a number is,
    takes lines of any length, and a pipe gives its contents only once."""
    pipes = {name: w.contents for name, w in case.files.items() if isinstance(w, Fifo)}
    for name, text in (pipes | case.reads_as).items():
        path = Path(folder) / name
        path.unlink()
        path.write_bytes(text)


def all_cases():
    import fixfiles
    import hypergraphs
    import names

    cases = [*hypergraphs.cases(), *fixfiles.cases(), *names.cases()]
    assert len({case.name for case in cases}) == len(cases), "two cases of one name"
    return cases


def main():
    if len(sys.argv) < 2:
        raise SystemExit(__doc__.split("\n\n")[1].strip())
    folder, wanted = Path(sys.argv[1]), sys.argv[2:]
    for case in all_cases():
        if not wanted or case.name in wanted:
            (folder / case.name).mkdir(parents=True)
            make_files(case, folder / case.name)


if __name__ == "__main__":
    sys.modules["make"] = sys.modules["__main__"]  # one set of records, also for the case lists
    main()
