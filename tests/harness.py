# SPDX-License-Identifier: MIT
"""Runs the program under a clock that stands still and compares what it leaves behind.

Shared by the golden runs and the bad-file corpus. A run happens in a scratch folder that holds
its input files; its outcome is everything the program leaves: both streams, the status and every
file that was not there before.
"""

import argparse
import ctypes
import difflib
import os
import re
import resource
import stat
import subprocess
from dataclasses import dataclass, field
from pathlib import Path

TIMEOUT = 300  # seconds, for the slowest build; a run that gets here hangs
LIBC = ctypes.CDLL(None)
PR_CAPBSET_DROP, CAP_DAC_OVERRIDE, CAP_DAC_READ_SEARCH = 24, 1, 2
REPORTED_CUT = re.compile(rb"Hyperedge Cut: *(\d+)")


@dataclass
class Tools:
    """The programs of one build."""

    program: Path
    checker: Path
    clock: Path  # shim to preload


@dataclass
class Outcome:
    stdout: bytes
    stderr: bytes
    status: int  # negative: the signal that ended the program
    files: dict = field(default_factory=dict)  # name: contents of each file it made


def add_build_option(parser):
    parser.add_argument("--build", default="build/release", help="build folder of the program")


def find_tools(build):
    build = Path(build).resolve()
    tools = Tools(
        program=build / "src/zorpel",
        checker=build / "tests/check_partition",
        clock=build / "tests/golden/pinclock.so",
    )
    for path in (tools.program, tools.checker, tools.clock):
        if not path.exists():
            raise SystemExit(f"{path} is missing: build with tests first, or name a --build folder")
    return tools


def regular_files(folder):
    """Names below folder; what is no regular file counts as it stands, not by what it names."""
    paths = (p for p in folder.rglob("*") if stat.S_ISREG(p.lstat().st_mode))
    return {str(p.relative_to(folder)) for p in paths}


def pinned_environment(tools):
    env = {"PATH": os.environ.get("PATH", ""), "LC_ALL": "C", "LD_PRELOAD": str(tools.clock)}
    # A sanitized program is content to be loaded behind the shim, and says so when it finds a
    # fault by a status that no run of ours has.
    env["ASAN_OPTIONS"] = "verify_asan_link_order=0:allocator_may_return_null=1:exitcode=99"
    env["UBSAN_OPTIONS"] = "print_stacktrace=1:exitcode=99"
    return env


def obey_permissions():
    """For a child before it starts its program: root minds the permissions of files, too."""
    for capability in (CAP_DAC_OVERRIDE, CAP_DAC_READ_SEARCH):
        LIBC.prctl(PR_CAPBSET_DROP, capability, 0, 0, 0)


def run_program(tools, words, folder, memory=None):
    """Runs `zorpel words` in folder; memory bounds its address space in bytes."""
    before = regular_files(folder)

    def limit():
        obey_permissions()
        if memory is not None:
            resource.setrlimit(resource.RLIMIT_AS, (memory, memory))

    done = subprocess.run(
        ["zorpel", *words],
        executable=tools.program,
        cwd=folder,
        env=pinned_environment(tools),
        stdin=subprocess.DEVNULL,
        capture_output=True,
        timeout=TIMEOUT,
        preexec_fn=limit,
        check=False,
    )
    made = {name: (folder / name).read_bytes() for name in regular_files(folder) - before}
    return Outcome(done.stdout, done.stderr, done.returncode, made)


def word_roles(words):
    """(hypergraph, fix file or None, nparts) of the words after the program's name."""
    fixed = len(words) == 10
    nparts = re.match(r"\d+", words[2 if fixed else 1])
    return words[0], words[1] if fixed else None, nparts.group() if nparts else "0"


def judge_partitions(tools, words, folder, outcome):
    """Messages of the independent checker about the partition files of a run."""
    if not outcome.files:
        return []
    hypergraph, fix, nparts = word_roles(words)
    options = ["--fix", fix] if fix is not None else []
    cut = REPORTED_CUT.search(outcome.stdout)
    if cut is not None:
        options += ["--cut", cut.group(1).decode()]
    messages = []
    for name in outcome.files:
        judged = subprocess.run(
            [tools.checker, hypergraph, name, nparts, *options],
            cwd=folder,
            stdin=subprocess.DEVNULL,
            capture_output=True,
            timeout=TIMEOUT,
            check=False,
        )
        if judged.returncode != 0:
            messages.append(judged.stderr.decode(errors="replace").strip())
    return messages


def alike(want, got):
    """Equal bytes, whatever the sign that this machine gives to 0/0."""
    return want.replace(b"-nan", b" nan") == got.replace(b"-nan", b" nan")


def show_difference(name, want, got):
    """A readable difference of two contents, bytes that are no text escaped."""

    def lines(text):
        return text.decode(errors="backslashreplace").splitlines()

    shown = list(
        difflib.unified_diff(lines(want), lines(got), f"{name} expected", name, lineterm="")
    )
    if len(shown) > 60:
        shown = shown[:60] + [f"... and {len(shown) - 60} more lines"]
    if not shown:
        shown = [f"{name}: {want!r} expected, {got!r} found"]
    return "\n".join(shown)


def differences(want, got):
    """Messages for everything in which an outcome is not the one expected."""
    messages = []
    for name in ("stdout", "stderr"):
        if not alike(getattr(want, name), getattr(got, name)):
            messages.append(show_difference(name, getattr(want, name), getattr(got, name)))
    if want.status != got.status:
        messages.append(f"status {want.status} expected, {got.status} found")
    for name in sorted(want.files.keys() - got.files.keys()):
        messages.append(f"the file {name} was not made")
    for name in sorted(got.files.keys() - want.files.keys()):
        messages.append(f"the file {name} was made but not expected")
    for name in sorted(got.files.keys() & want.files.keys()):
        if want.files[name] != got.files[name]:
            messages.append(show_difference(name, want.files[name], got.files[name]))
    return messages


def parser_for(doc):
    parser = argparse.ArgumentParser(description=doc.splitlines()[0])
    add_build_option(parser)
    parser.add_argument("--update", action="store_true", help="rewrite what is expected")
    return parser
