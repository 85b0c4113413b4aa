#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Walks through a document as a newcomer does: walk.py DOCUMENT WORK

Every command of the document runs in the order in which it stands, in one shell, in a fresh copy of
what is committed or about to be; a home of its own belongs to it. Commands are the lines of blocks
fenced by ```sh, and in those fenced by ```console the lines that begin with "$ ", continued by
lines that begin with "> ". The first that fails ends the walk.
"""

import os
import re
import shutil
import subprocess
import sys
from pathlib import Path

SOURCE = Path(__file__).resolve().parents[2]
BLOCK = re.compile(r"^```(sh|console)\n(.*?)^```$", re.M | re.S)
MARK = "walk-past"


def commands_of(document):
    for kind, text in BLOCK.findall(document):
        if kind == "sh":
            yield from re.findall(r"^(?!#).(?:.*\\\n)*.*\n", text, re.M)
            continue
        for command in re.findall(r"^\$ .*\n(?:> .*\n)*", text, re.M):
            yield "".join(line[2:] for line in command.splitlines(keepends=True))


def main(document, work):
    if not (SOURCE / ".git").exists():
        print("not a git checkout: no walk")
        return
    work = Path(work).resolve()
    shutil.rmtree(work, ignore_errors=True)
    clone, home = work / "clone", work / "home"
    home.mkdir(parents=True)
    listing = subprocess.run(
        ["git", "ls-files", "--cached", "--others", "--exclude-standard"],
        cwd=SOURCE, check=True, capture_output=True, text=True,
    ).stdout  # fmt: skip
    for name in listing.splitlines():
        if (SOURCE / name).is_file():
            (clone / name).parent.mkdir(parents=True, exist_ok=True)
            shutil.copy(SOURCE / name, clone / name)

    commands = list(commands_of((clone / document).read_text()))
    if len(commands) < 5:
        sys.exit(f"{document} has {len(commands)} commands")
    script = "set -e\n" + "".join(
        f"{command}echo {MARK} {number}\n" for number, command in enumerate(commands)
    )
    hidden = ("PYTHONPATH", "LD_LIBRARY_PATH", "ZORPELX_LIBRARY", "MAKEFLAGS")
    environment = {key: value for key, value in os.environ.items() if key not in hidden}
    done = subprocess.run(
        ["bash", "-c", script], cwd=clone, env={**environment, "HOME": str(home)},
        stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True,
    )  # fmt: skip
    passed = len(re.findall(rf"^{MARK} \d+$", done.stdout, re.M))
    if passed != len(commands):
        print("\n".join(done.stdout.splitlines()[-60:]))
        sys.exit(f"Command {passed + 1} of {len(commands)} failed:\n{commands[passed]}")
    print(f"{passed} commands of {document} work in their order")
    shutil.rmtree(work)


main(*sys.argv[1:])
