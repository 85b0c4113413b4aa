# SPDX-License-Identifier: MIT
"""Runs the commands of a document and compares what they print with what the document shows.

In a block fenced by ```console a line that begins with "$ " is a command, continued by lines that
begin with "> "; the lines after it are its output, errors included. All commands of a document run
in one shell, in a folder that holds copies of the examples, and cpu32.hgr compressed too. Times are
not compared.

    run_document.py FILE          exit 1 and show the differences, if there are any
    run_document.py FILE --write  put the real output into the document
"""

import difflib
import gzip
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

SOURCE = pathlib.Path(os.environ["ZORPEL_SOURCE"])
BLOCK = re.compile(r"(^```console\n)(.*?)(^```$)", re.M | re.S)
COMMAND = re.compile(r"^\$ .*\n(?:> .*\n)*", re.M)
MARK = "\1"


def without_times(text):
    text = re.sub(r"\b\d+\.\d+ s\b", "T s", text)
    return re.sub(r"\b\d+ of 1000000 starts", "N of 1000000 starts", text)


def commands_of(document):
    return [
        command for block in BLOCK.finditer(document) for command in COMMAND.findall(block.group(2))
    ]


def words_of(command):
    """A command without its prompts."""
    return "".join(line[2:] for line in command.splitlines(keepends=True))


def run(commands):
    """The output of each command."""
    folder = pathlib.Path(tempfile.mkdtemp(prefix="zorpelx-"))
    for example in (SOURCE / "examples").iterdir():
        shutil.copy(example, folder)
    with gzip.open(folder / "cpu32.hgr.gz", "wb") as packed:
        packed.write((folder / "cpu32.hgr").read_bytes())
    paths = [str(pathlib.Path(os.environ[name]).parent) for name in ("ZORPELX", "ZORPEL")]
    environment = {
        **os.environ,
        "PATH": ":".join([*paths, os.environ["PATH"]]),
        "PYTHONPATH": str(SOURCE / "zorpelx" / "python"),
        "LC_ALL": "C.UTF-8",
    }
    script = "".join(
        f"{words_of(command)}status=$?; printf '{MARK}'; (exit $status)\n" for command in commands
    )
    done = subprocess.run(
        ["bash", "-c", "exec 2>&1\n" + script],
        cwd=folder,
        env=environment,
        stdout=subprocess.PIPE,
        text=True,
    )
    shutil.rmtree(folder)
    return done.stdout.split(MARK)[:-1]


def with_outputs(document, outputs):
    """The document with these outputs in place of those it shows."""
    left = iter(outputs)

    def fill(block):
        shown = "".join(command + next(left) for command in COMMAND.findall(block.group(2)))
        return block.group(1) + shown + block.group(3)

    return BLOCK.sub(fill, document)


def main(path, *words):
    document = pathlib.Path(path).read_text()
    commands = commands_of(document)
    outputs = run(commands)
    if len(outputs) != len(commands) or not commands:
        sys.exit(f"{len(outputs)} of {len(commands)} commands were run")
    real = with_outputs(document, outputs)
    if "--write" in words:
        pathlib.Path(path).write_text(real)
        return
    changes = list(
        difflib.unified_diff(
            without_times(document).splitlines(),
            without_times(real).splitlines(),
            "the document",
            "what the commands print",
            lineterm="",
        )
    )
    print("\n".join(changes) or f"{len(commands)} commands print what the document shows")
    sys.exit(1 if changes else 0)


main(*sys.argv[1:])
