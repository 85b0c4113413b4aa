# SPDX-License-Identifier: MIT
"""Distributed runs that go wrong: nothing is delivered, no rank lives on, and it is told why."""

import os
import signal
import subprocess
import tempfile
import threading
import time
import unittest
from pathlib import Path

from cluster import LOOPBACK, MPIRUN, ZORPELX_MPI, mpirun, random_hyperedges, write_hypergraph
from test_cluster_search import children, rank_of

STAGES = ("coarsen level 0", "coarsen level 1", "gather", "refine")
FAST = ["-k", "4", "-e", "10", "--preset", "fast", "-t", "1", "--fits", "3000", "--progress",
        "always"]


class DistributedFaults(unittest.TestCase):

    @classmethod
    def setUpClass(cls):
        folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(folder.cleanup)
        cls.large = Path(folder.name) / "large.hgr"
        write_hypergraph(cls.large, 40000, random_hyperedges(1, 40000, 60000))

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.output = Path(folder.name) / "part"

    def start(self, ranks):
        process = subprocess.Popen(
            [MPIRUN, *LOOPBACK, "-np", str(ranks), ZORPELX_MPI, "partition", self.large,
             "--distributed", "--gather", *FAST, "-o", self.output], stdin=subprocess.DEVNULL,
            stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, text=True)
        self.addCleanup(process.stderr.close)
        self.addCleanup(process.wait)
        self.addCleanup(process.kill)
        return process

    def reach(self, process, stage):
        """The ranks' processes once rank 0 has come to the stage."""
        seen = ""
        while stage not in seen:
            line = process.stderr.readline()
            self.assertTrue(line, seen)
            seen += line
        return {rank_of(pid): pid for pid in children(process.pid)
                if rank_of(pid) is not None}

    def expect_the_end(self, process, ranks):
        process.communicate(timeout=100)
        self.assertNotEqual(process.returncode, 0)
        end = time.monotonic() + 30
        while any(Path(f"/proc/{pid}").exists() for pid in ranks.values()):
            self.assertLess(time.monotonic(), end, "ranks live on")
            time.sleep(0.1)
        self.assertFalse(self.output.exists())

    def test_a_rank_killed_at_any_stage_ends_the_run(self):
        for stage in STAGES:
            for victim in (0, 2):
                with self.subTest(stage=stage, victim=victim):
                    process = self.start(3)
                    ranks = self.reach(process, stage)
                    os.kill(ranks[victim], signal.SIGKILL)
                    self.expect_the_end(process, ranks)

    def test_a_killed_mpirun_ends_the_ranks(self):
        process = self.start(2)
        ranks = self.reach(process, "coarsen level 0")
        process.kill()
        self.expect_the_end(process, ranks)

    def test_a_file_that_changes_while_it_is_read_is_refused(self):
        for ranks in (1, 3):
            name = self.output.with_name("changing.hgr")
            name.write_bytes(b"%00000000\n" + self.large.read_bytes())
            done = threading.Event()

            def keep_changing(name=name, done=done):
                with open(name, "r+b", buffering=0) as file:
                    count = 0
                    while not done.is_set():  # in a comment: each state by itself is right
                        count += 1
                        os.pwrite(file.fileno(), b"%08d" % count, 1)

            writer = threading.Thread(target=keep_changing)
            writer.start()
            try:
                run = mpirun(ranks, ["partition", str(name), "--distributed", "--gather", *FAST,
                                     "-o", str(self.output)])
            finally:
                done.set()
                writer.join()
            self.assertIn(run.returncode, (3, 5), run.stderr)
            self.assertRegex(run.stderr, "has changed while it was read|not the same on ranks")
            self.assertFalse(self.output.exists())

    def test_a_full_disk_is_told_once(self):
        run = mpirun(2, ["partition", str(self.large), "--distributed", "--gather", *FAST, "-o",
                         "/dev/full"])
        self.assertEqual(run.returncode, 5, run.stderr)
        self.assertEqual(run.stderr.count("No space left on device"), 1, run.stderr)

    def test_mixed_versions_are_refused(self):
        part = self.output.with_name("some.part")
        part.write_text("0\n" * 40000, encoding="ascii")
        for words in (["partition", str(self.large), "--distributed", *FAST, "-o",
                       str(self.output)],
                      ["verify", str(self.large), str(part)],
                      ["convert", str(self.large), str(self.output)]):
            run = mpirun(1, [*words, ":", "-np", "1", os.environ["ZORPELX_MPI_OTHER"], *words])
            self.assertEqual(run.returncode, 2, run.stderr)
            self.assertEqual(run.stderr.count("rank 1 has another version of zorpelx-mpi"), 1)
            self.assertFalse(self.output.exists())

    def test_ranks_with_other_words_are_refused(self):
        words = ["partition", str(self.large), "--distributed", *FAST, "-o", str(self.output)]
        run = mpirun(1, [*words, ":", "-np", "1", ZORPELX_MPI, *words, "--seed", "9"])
        self.assertEqual(run.returncode, 2, run.stderr)
        self.assertIn("rank 1 has another command line", run.stderr)


if __name__ == "__main__":
    unittest.main()
