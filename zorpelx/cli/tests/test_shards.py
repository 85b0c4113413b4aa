# SPDX-License-Identifier: MIT
"""Journals and shards: the partition of the whole run to the bit, whatever was killed on the way."""

import json
import os
import random
import resource
import signal
import subprocess
import tempfile
import time
import unittest
from pathlib import Path

ZORPELX = os.environ["ZORPELX"]
SOURCE = Path(os.environ["ZORPEL_SOURCE"])
EXAMPLE = SOURCE / "examples" / "cpu32.hgr"


def run(*words, **more):
    return subprocess.run([ZORPELX, *map(str, words)], stdin=subprocess.DEVNULL, text=True,
                          capture_output=True, timeout=300, check=False, **more)


def write_random(path, seed):
    """A hypergraph of up to 60 vertices, often with vertices or hyperedges to spare."""
    chance = random.Random(seed)
    nvertices, nhyperedges = chance.randint(2, 60), chance.randint(0, 90)
    lines = [f"{nhyperedges} {nvertices}"]
    for _ in range(nhyperedges):
        size = chance.randint(1, min(nvertices, chance.choice([2, 5, 60])))
        lines.append(" ".join(str(v + 1) for v in chance.sample(range(nvertices), size)))
    path.write_text("\n".join(lines) + "\n", encoding="ascii")


class Shards(unittest.TestCase):

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)
        self.journal = self.folder / "run"

    def whole(self, *options):
        """The partition that one process makes, and its result."""
        done = run("partition", *options, "--journal", self.folder / "whole", "-o",
                   self.folder / "whole.part")
        self.assertEqual(done.returncode, 0, done.stderr)
        return (self.folder / "whole.part").read_bytes()

    def shard(self, index, count, *options, status=0, **more):
        done = run("partition", *options, "--journal", self.journal, "--shard",
                   f"{index}/{count}", **more)
        self.assertEqual(done.returncode, status, done.stderr)
        return done

    def merged(self, *options):
        done = run("merge", self.journal, "-o", self.folder / "merged.part", *options)
        self.assertEqual(done.returncode, 0, done.stderr)
        return (self.folder / "merged.part").read_bytes()

    def test_a_journal_changes_nothing_but_what_is_made_again(self):
        options = [EXAMPLE, "-k", "3", "--seed", "5"]
        plain = self.folder / "plain.part"
        self.assertEqual(run("partition", *options, "-o", plain).returncode, 0)
        whole = self.whole(*options)
        self.assertEqual(plain.read_bytes(), whole)
        results = self.folder / "whole" / "shard-1-of-1.jobs"
        size = results.stat().st_size
        self.assertGreater(size, 0)
        self.assertEqual(self.whole(*options), whole)
        self.assertEqual(results.stat().st_size, size)

    def test_shards_in_any_order_make_the_partition_of_one_process(self):
        options = [EXAMPLE, "-k", "4", "--starts", "7"]
        for index in (3, 1, 2):
            self.shard(index, 3, *options)
        self.assertEqual(self.merged(), self.whole(*options))

    def test_the_record_of_a_merge_is_that_of_the_whole_run(self):
        for index in (1, 2):
            self.shard(index, 2, EXAMPLE, "-k", "3", "--starts", "4")
        self.merged("--record", self.folder / "record.json")
        for words in (("replay", "record.json", EXAMPLE), ("verify", EXAMPLE, "--record", "record.json")):
            done = run(*words, cwd=self.folder)
            self.assertEqual(done.returncode, 0, done.stderr + done.stdout)

    def test_the_script_for_job_arrays_makes_the_shards(self):
        """With the variables that Slurm sets, but without Slurm."""
        options = ["-k", "3", "--starts", "4", "--preset", "fast"]
        for task in (1, 2):
            variables = dict(os.environ, ZORPELX=ZORPELX, SLURM_ARRAY_TASK_ID=str(task),
                             SLURM_ARRAY_TASK_COUNT="2", SLURM_CPUS_PER_TASK="1")
            done = subprocess.run(["sh", str(SOURCE / "examples" / "shards.slurm"), str(EXAMPLE),
                                   str(self.journal), *options], env=variables, check=False,
                                  capture_output=True, text=True, timeout=300)
            self.assertEqual(done.returncode, 0, done.stderr)
        self.assertEqual(self.merged(), self.whole(EXAMPLE, *options))

    def test_shards_that_wait_share_the_combinations(self):
        options = [EXAMPLE, "-k", "4", "--starts", "6", "--preset", "fast"]
        words = [ZORPELX, "partition", *map(str, options), "--journal", str(self.journal), "--wait"]
        waiting = [subprocess.Popen(words + ["--shard", f"{index}/2"], stdout=subprocess.PIPE,
                                    text=True) for index in (1, 2)]
        texts = [process.communicate(timeout=300)[0] for process in waiting]
        self.assertEqual([process.returncode for process in waiting], [0, 0], texts)
        merged = self.merged()
        self.assertEqual((self.journal / "merge.jobs").stat().st_size, 0)
        self.assertEqual(merged, self.whole(*options))

    def test_random_hypergraphs_in_shards(self):
        for seed in range(9):
            hypergraph = self.folder / f"{seed}.hgr"
            write_random(hypergraph, seed)
            chance = random.Random(seed)
            options = [hypergraph, "-k", chance.choice([2, 3]), "--seed", seed + 1, "--starts",
                       chance.choice([1, 4, 40]), "--preset", "fast", "--objective",
                       chance.choice(["cut", "km1", "soed"])]
            count = chance.choice([1, 2, 5])
            self.journal = self.folder / f"run{seed}"
            for index in range(1, count + 1):
                self.shard(index, count, *options)
            plain = self.folder / "one"
            done = run("partition", *options, "--journal", self.folder / f"one{seed}", "-o", plain)
            self.assertIn(done.returncode, (0, 4), done.stderr)
            part = self.folder / "several"
            again = run("merge", self.journal, "-o", part)
            self.assertEqual(again.returncode, done.returncode, again.stderr)
            self.assertEqual(part.read_bytes(), plain.read_bytes(), f"seed {seed}")

    def test_missing_shards_are_named_and_can_be_made_by_merge(self):
        options = [EXAMPLE, "-k", "2", "--starts", "5", "--preset", "fast"]
        self.shard(2, 4, *options)
        done = run("merge", self.journal, "-o", self.folder / "none.part")
        self.assertEqual(done.returncode, 1)
        self.assertIn("shards 1, 3 and 4 of 4", done.stderr)
        self.assertFalse((self.folder / "none.part").exists())
        self.assertEqual(self.merged("--finish"), self.whole(*options))

    def test_a_killed_shard_goes_on(self):
        options = [EXAMPLE, "-k", "8", "--starts", "6", "--preset", "best", "--threads", "1"]
        words = [ZORPELX, "partition", *map(str, options), "--journal", str(self.journal)]
        with subprocess.Popen(words + ["--shard", "1/1"], stdout=subprocess.DEVNULL) as process:
            results = self.journal / "shard-1-of-1.jobs"
            end = time.monotonic() + 120
            while not (results.exists() and results.stat().st_size > 0):
                self.assertLess(time.monotonic(), end)
                self.assertIsNone(process.poll())
                time.sleep(0.02)
            os.kill(process.pid, signal.SIGKILL)
        kept = results.read_bytes()
        with open(results, "ab") as file: # as if the kill had come amidst a write
            file.write(kept[:len(kept) // 2])
        done = self.shard(1, 1, *options)
        self.assertEqual(results.read_bytes()[:len(kept)], kept)
        self.assertNotIn("30 jobs made", done.stdout)
        self.assertEqual(self.merged(), self.whole(*options))

    def test_a_damaged_result_is_made_again(self):
        options = [EXAMPLE, "-k", "2", "--preset", "fast"]
        self.shard(1, 1, *options)
        results = self.journal / "shard-1-of-1.jobs"
        damaged = bytearray(results.read_bytes())
        damaged[len(damaged) // 3] ^= 1
        results.write_bytes(damaged)
        done = run("merge", self.journal, "-o", self.folder / "none.part")
        self.assertEqual(done.returncode, 1, done.stderr)
        self.shard(1, 1, *options)
        self.assertEqual(self.merged(), self.whole(*options))

    def test_another_run_is_refused(self):
        hypergraph = self.folder / "small.hgr"
        write_random(hypergraph, 3)
        self.shard(1, 2, hypergraph, "-k", "2")
        self.assertIn("another hypergraph or other options",
                      self.shard(2, 2, hypergraph, "-k", "3", status=2).stderr)
        self.assertIn("2 shards", self.shard(2, 3, hypergraph, "-k", "2", status=2).stderr)
        write_random(hypergraph, 4)
        self.assertIn("another hypergraph",
                      self.shard(2, 2, hypergraph, "-k", "2", status=2).stderr)
        done = run("merge", self.journal)
        self.assertEqual(done.returncode, 3, done.stderr)

    def test_another_version_is_refused(self):
        self.shard(1, 2, EXAMPLE, "-k", "2", "--preset", "fast")
        note = self.journal / "run.json"
        text = json.loads(note.read_text(encoding="utf-8"))
        text["version"] = "0.0.1"
        note.write_text(json.dumps(text), encoding="utf-8")
        done = self.shard(2, 2, EXAMPLE, "-k", "2", "--preset", "fast", status=3)
        self.assertIn("0.0.1", done.stderr)

    def test_two_processes_are_not_one_shard(self):
        options = [EXAMPLE, "-k", "8", "--starts", "4", "--preset", "best", "--threads", "1"]
        words = [ZORPELX, "partition", *map(str, options), "--journal", str(self.journal),
                 "--shard", "1/1"]
        with subprocess.Popen(words, stdout=subprocess.DEVNULL) as process:
            while not (self.journal / "shard-1-of-1.jobs").exists() and process.poll() is None:
                time.sleep(0.01)
            time.sleep(0.2)
            self.assertIsNone(process.poll())
            done = self.shard(1, 1, *options, status=2)
            process.kill()
        self.assertIn("another process", done.stderr)

    def test_a_full_disk_leaves_whole_results(self):
        options = [EXAMPLE, "-k", "4", "--starts", "6", "--preset", "fast"]
        self.shard(1, 1, *options)
        results = self.journal / "shard-1-of-1.jobs"
        whole = results.read_bytes()
        results.unlink()
        limit = len(whole) // 2

        def cap():
            resource.setrlimit(resource.RLIMIT_FSIZE, (limit, limit))
        done = self.shard(1, 1, *options, status=5, preexec_fn=cap)
        self.assertIn("cannot be written", done.stderr)
        self.assertLessEqual(results.stat().st_size, limit)
        self.shard(1, 1, *options)
        self.assertEqual(self.merged(), self.whole(*options))

    def test_wrong_words_are_refused(self):
        for words, text in ((["--shard", "1/2"], "--journal"),
                            (["--shard", "3/2", "--journal", "x"], "3/2"),
                            (["--wait", "--journal", "x"], "--shard"),
                            (["--journal", "x", "--shard", "1/2", "-o", "p"], "--output is for merge"),
                            (["--journal", "x", "--shard", "1/2", "--json", "j"], "--json is for merge"),
                            (["--journal", "x", "--shard", "1/2", "--record", "r"], "--record is for"),
                            (["--journal", "x", "--runs", "3"], "engine"),
                            (["--journal", "x", "--seed", "-1"], "seed"),
                            (["--journal", "x", "--shard", "1/2", "--time", "3"], "--timeout")):
            done = run("partition", EXAMPLE, "-k", "2", *words, cwd=self.folder)
            self.assertEqual(done.returncode, 2, words)
            self.assertIn(text, done.stderr)


if __name__ == "__main__":
    unittest.main()
