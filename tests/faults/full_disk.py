#!/usr/bin/env python3
"""The program itself on a full disk, beyond a quota, and with files that cannot be read.

usage: full_disk.py ZORPEL

The partition file is never short in silence: what cannot be written whole is reported on standard
error. The status is 0, for errors as for success.
"""
import os
import pathlib
import resource
import signal
import subprocess
import sys
import tempfile
import unittest

PROGRAM = pathlib.Path(sys.argv.pop(1)).resolve()
NVERTICES = 3000


def beyond_quota():
    signal.signal(signal.SIGXFSZ, signal.SIG_IGN)
    resource.setrlimit(resource.RLIMIT_FSIZE, (1000, 1000))


class FullDisk(unittest.TestCase):
    def setUp(self):
        place = tempfile.TemporaryDirectory()
        self.addCleanup(place.cleanup)
        self.graph = pathlib.Path(place.name, "chain.hgr")
        lines = [f"{NVERTICES - 1} {NVERTICES}"]
        lines += [f"{v} {v + 1}" for v in range(1, NVERTICES)]
        self.graph.write_text("\n".join(lines) + "\n")
        self.partition = pathlib.Path(place.name, "chain.hgr.part.2")

    def run_program(self, graph=None, fix=None, **how):
        words = [PROGRAM, graph or self.graph] + ([fix] if fix else [])
        words += "2 5 1 5 1 0 0 0".split()
        return subprocess.run(words, capture_output=True, text=True, **how)

    def check_refused(self, run, *texts):
        self.assertEqual(run.returncode, 0)
        for text in texts:
            self.assertIn(text, run.stderr)
        self.assertNotIn("Summary", run.stdout)

    def test_a_good_disk_takes_every_line(self):
        run = self.run_program()
        self.assertEqual((run.returncode, run.stderr), (0, ""))
        self.assertEqual(len(self.partition.read_text().splitlines()), NVERTICES)

    def test_a_full_disk_is_reported(self):
        os.symlink("/dev/full", self.partition)
        self.check_refused(self.run_program(), "cannot write", "No space left on device")

    def test_a_quota_is_reported(self):
        run = self.run_program(preexec_fn=beyond_quota)
        self.check_refused(run, "cannot write", "File too large")

    def test_a_file_that_cannot_be_created_is_reported(self):
        self.partition.mkdir()
        self.check_refused(self.run_program(), "Is a directory")

    def test_a_directory_is_no_hypergraph(self):
        self.check_refused(self.run_program(graph=self.graph.parent), "Is a directory")

    def test_a_directory_is_no_fix_file(self):
        self.check_refused(self.run_program(fix=self.graph.parent), "Is a directory")


if __name__ == "__main__":
    unittest.main()
