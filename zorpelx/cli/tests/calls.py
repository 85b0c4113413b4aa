# SPDX-License-Identifier: MIT
"""Calls of the programs under test, in a folder of their own."""

import json
import os
import pathlib
import random
import re
import shutil
import subprocess
import tempfile
import time
import unittest

ZORPELX = os.environ["ZORPELX"]
ZORPEL = os.environ["ZORPEL"]
EXAMPLES = pathlib.Path(os.environ["ZORPEL_SOURCE"]) / "examples"


def unfolded(text):
    """Help with every option and every row of a table on a line of its own."""
    return re.sub(r"\n {26}", " ", text)


def random_hypergraph(nvertices, nnets, seed=1):
    numbers = random.Random(seed)
    lines = [f"{nnets} {nvertices}"]
    for _ in range(nnets):
        pins = numbers.sample(range(1, nvertices + 1), numbers.randint(2, 5))
        lines.append(" ".join(map(str, pins)))
    return "\n".join(lines) + "\n"


def processes():
    """(id, state, parent) of every process."""
    for stat in pathlib.Path("/proc").glob("[0-9]*/stat"):
        try:
            state, parent = stat.read_text().rpartition(")")[2].split()[:2]
        except OSError:  # it ended meanwhile
            continue
        yield int(stat.parent.name), state, int(parent)


def children_of(process):
    """The ids of the children that a process has now."""
    return [pid for pid, state, parent in processes() if parent == process.pid and state != "Z"]


def are_gone(pids):
    return not any(pid in pids and state != "Z" for pid, state, _ in processes())


def wait_for(condition):
    """Waits until the condition gives something true, and returns that; not forever."""
    deadline = time.monotonic() + 240
    while not (found := condition()):
        assert time.monotonic() < deadline, "what was waited for did not come"
        time.sleep(0.01)
    return found


class Case(unittest.TestCase):
    """A test case with a folder that holds nothing but what it makes."""

    def setUp(self):
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="zorpelx-"))
        self.addCleanup(shutil.rmtree, self.folder)

    def file(self, name, content):
        path = self.folder / name
        if isinstance(content, str):
            content = content.encode()
        path.write_bytes(content)
        return name

    def example(self, name):
        shutil.copy(EXAMPLES / name, self.folder / name)
        return name

    def text(self, name):
        return (self.folder / name).read_text()

    def call(self, *words, **more):
        """Runs zorpelx; returns the finished process, its output as text."""
        more = {"cwd": self.folder, "text": True, **more}
        return subprocess.run([ZORPELX, *map(str, words)], capture_output=True, **more)

    def run_ok(self, *words, **more):
        done = self.call(*words, **more)
        self.assertEqual(done.returncode, 0, done.stderr + done.stdout)
        return done

    def fails(self, status, sentence, *words, **more):
        """Runs zorpelx and expects the status, with the sentence in what it prints."""
        done = self.call(*words, **more)
        self.assertEqual(done.returncode, status, done.stderr + done.stdout)
        self.assertIn(sentence, done.stderr + done.stdout)
        return done

    def json_of(self, *words, status=0):
        done = self.call(*words)
        self.assertEqual(done.returncode, status, done.stderr)
        return json.loads(done.stdout)

    def names(self):
        return sorted(path.name for path in self.folder.iterdir())
