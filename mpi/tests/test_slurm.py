# SPDX-License-Identifier: MIT
"""The job array of examples/shards.slurm, and mpirun in a job, by a Slurm of one node."""

import os
import subprocess
import tempfile
import unittest
from pathlib import Path

from cluster import LOOPBACK, MPIRUN, SOURCE, ZORPELX, ZORPELX_MPI
from slurm_here import Slurm, why_not

EXAMPLE = Path(SOURCE) / "examples" / "cpu32.hgr"
SCRIPT = Path(SOURCE) / "examples" / "shards.slurm"
OPTIONS = ["-k", "4", "--starts", "12", "--preset", "fast"]
REASON = why_not()


@unittest.skipIf(REASON, REASON)
class SlurmOfOneNode(unittest.TestCase):

    def setUp(self):
        folder = tempfile.TemporaryDirectory(ignore_cleanup_errors=True)
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)
        self.slurm = Slurm(folder.name)
        self.addCleanup(self.slurm.stop)
        self.slurm.start()

    def one_process(self, *options):
        done = subprocess.run([ZORPELX, "partition", EXAMPLE, *options, "--share", "-q", "-o",
                               self.folder / "one"], capture_output=True, text=True, check=False)
        self.assertEqual(done.returncode, 0, done.stderr)
        return (self.folder / "one").read_bytes()

    def submit_shards(self, tasks, *options, launch=(), **more):
        return self.slurm.submit(f"--array={tasks}", "--cpus-per-task=1", *launch, SCRIPT, EXAMPLE,
                                 "night", *options, ZORPELX=ZORPELX, **more)

    def output_of(self, job):
        return "".join(path.read_text(errors="replace")
                       for path in sorted(self.folder.glob(f"slurm-{job}*.out")))

    def test_an_array_and_a_merge_that_waits_for_it(self):
        array = self.submit_shards("1-3", *OPTIONS)
        merge = self.slurm.submit(f"--dependency=afterok:{array}", "--wrap",
                                  f"{ZORPELX} merge night -o chip.part")
        self.slurm.wait_for(lambda: self.slurm.is_over(merge), "the merge")
        made = self.folder / "chip.part"
        self.assertTrue(made.exists(), self.output_of(array) + self.output_of(merge))
        self.assertEqual(made.read_bytes(), self.one_process(*OPTIONS))

    def test_a_task_that_was_cancelled_is_queued_again_alone(self):
        options = ["-k", "8", "--starts", "200", "--preset", "fast"]
        array = self.submit_shards("1-2", *options)
        cut_short = self.folder / "night" / "shard-2-of-2.jobs"
        self.slurm.wait_for(lambda: cut_short.exists() and cut_short.stat().st_size > 0,
                            "the first result of a task")
        self.slurm.run("scancel", f"{array}_2")
        self.slurm.wait_for(lambda: self.slurm.is_over(array), "the array")
        early = self.slurm.run(ZORPELX, "merge", "night", "-o", "early.part")
        self.assertEqual(early.returncode, 1, early.stderr)
        self.assertIn("shard 2 of 2 are missing", early.stderr)
        again = self.submit_shards("2", *options, SHARDS="2")
        self.slurm.wait_for(lambda: self.slurm.is_over(again), "the task")
        done = self.slurm.run(ZORPELX, "merge", "night", "-o", "chip.part")
        self.assertEqual(done.returncode, 0, done.stderr + self.output_of(again))
        self.assertEqual((self.folder / "chip.part").read_bytes(), self.one_process(*options))

    def test_mpirun_in_a_job(self):
        words = " ".join([MPIRUN, *LOOPBACK, "-np", "2", ZORPELX_MPI, "partition", str(EXAMPLE),
                          *OPTIONS, "-o", "ranks.part"])
        job = self.slurm.submit(f"--ntasks={min(2, os.cpu_count() or 1)}", "--wrap", words)
        self.slurm.wait_for(lambda: self.slurm.is_over(job), "the job")
        made = self.folder / "ranks.part"
        self.assertTrue(made.exists(), self.output_of(job))
        self.assertEqual(made.read_bytes(), self.one_process(*OPTIONS))


class Script(unittest.TestCase):

    def test_shellcheck_has_nothing_to_say(self):
        try:
            done = subprocess.run(["shellcheck", SCRIPT], capture_output=True, text=True,
                                  check=False)
        except FileNotFoundError:
            self.skipTest("apt-get install shellcheck: there is no shellcheck")
        self.assertEqual(done.returncode, 0, done.stdout)


if __name__ == "__main__":
    unittest.main()
