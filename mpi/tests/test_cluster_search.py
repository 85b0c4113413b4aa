# SPDX-License-Identifier: MIT
"""The shared search: the same partition for any number of ranks, whatever happens to them."""

import json
import os
import random
import signal
import subprocess
import tempfile
import time
import unittest
from pathlib import Path

from cluster import (LOOPBACK, MPIRUN, SOURCE, ZORPELX, ZORPELX_MPI, mpirun, random_hyperedges,
                     write_hypergraph)

EXAMPLE = Path(SOURCE) / "examples" / "cpu32.hgr"
LONG = ["partition", EXAMPLE, "-k", "8", "--preset", "fast", "--starts", "40", "--threads", "1"]


def children(pid):
    """Processes below one, parents first."""
    found = []
    for stat in Path("/proc").glob("[0-9]*/stat"):
        try:
            fields = stat.read_text(encoding="ascii", errors="replace").rsplit(")", 1)[1].split()
        except OSError:
            continue
        if int(fields[1]) == pid:
            found.append(int(stat.parent.name))
    return found


def rank_of(pid):
    try:
        text = Path(f"/proc/{pid}/environ").read_bytes().decode(errors="replace")
    except OSError:
        return None
    for entry in text.split("\0"):
        if entry.startswith("OMPI_COMM_WORLD_RANK="):
            return int(entry.partition("=")[2])
    return None


class ClusterSearch(unittest.TestCase):

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)

    def part(self, name):
        return (self.folder / name).read_bytes()

    def one_process(self, *options):
        done = subprocess.run([ZORPELX, "partition", *map(str, options), "--share", "-q", "-o",
                               self.folder / "one"], stdin=subprocess.DEVNULL, timeout=300,
                              capture_output=True, text=True, check=False)
        self.assertIn(done.returncode, (0, 4), done.stderr)
        return self.part("one")

    def by_ranks(self, ranks, *options, launch=(), status=(0, 4)):
        done = mpirun(ranks, ["partition", *map(str, options), "-o", str(self.folder / "several")],
                      launch)
        self.assertIn(done.returncode, status, done.stderr)
        return self.part("several")

    def start(self, ranks, *more, launch=()):
        """A long run, and the processes of its ranks once the journal has a result."""
        words = [*map(str, LONG), "-o", str(self.folder / "long"), "--journal",
                 str(self.folder / "journal"), "--patience", "3", *more]
        process = subprocess.Popen([MPIRUN, *LOOPBACK, *launch, "-np", str(ranks), ZORPELX_MPI,
                                    *words], stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                                   stderr=subprocess.PIPE, text=True)
        self.addCleanup(process.stdout.close)
        self.addCleanup(process.stderr.close)
        self.addCleanup(process.wait)
        self.addCleanup(process.kill)
        results = self.folder / "journal" / "shard-1-of-1.jobs"
        end = time.monotonic() + 100
        while not (results.exists() and results.stat().st_size > 0):
            self.assertIsNone(process.poll())
            self.assertLess(time.monotonic(), end, "no result")
            time.sleep(0.02)
        return process, {rank_of(pid): pid for pid in children(process.pid)}

    def finish_from_journal(self):
        """The run that was ended, by one rank; it makes only what is missing."""
        done = mpirun(1, [*map(str, LONG), "-o", str(self.folder / "resumed"), "--journal",
                          str(self.folder / "journal"), "--json", str(self.folder / "json")],
                      timeout=300)
        self.assertEqual(done.returncode, 0, done.stderr)
        made = json.loads((self.folder / "json").read_text(encoding="utf-8"))
        self.assertLess(made["ranks"][0]["jobs"], made["jobs"])
        return self.part("resumed")

    def test_any_number_of_ranks_finds_the_partition_of_one_process(self):
        options = [EXAMPLE, "-k", "4", "--starts", "6", "--preset", "fast"]
        one = self.one_process(*options)
        for ranks in (1, 2, 3, 4):
            self.assertEqual(self.by_ranks(ranks, *options), one, f"{ranks} ranks")

    def test_without_starts_it_is_the_search_of_zorpelx(self):
        options = [EXAMPLE, "-k", "3", "--seed", "7"]
        done = subprocess.run([ZORPELX, "partition", *map(str, options), "-q", "-o",
                               self.folder / "one"], stdin=subprocess.DEVNULL, timeout=300,
                              check=False)
        self.assertEqual(done.returncode, 0)
        self.assertEqual(self.by_ranks(2, *options), self.part("one"))

    def test_random_hypergraphs(self):
        for seed in range(1, 6):
            chance = random.Random(seed)
            nvertices = chance.randint(3, 50)
            hypergraph = self.folder / f"{seed}.hgr"
            weights = [chance.randint(1, 3) for _ in range(nvertices)]
            write_hypergraph(hypergraph, nvertices,
                             random_hyperedges(seed, nvertices, chance.randint(1, 80)), weights)
            options = [hypergraph, "-k", chance.choice([2, 3]), "--seed", seed, "--starts",
                       chance.choice([3, 35]), "--preset", "fast", "--epsilon", 20,
                       "--objective", chance.choice(["cut", "km1"])]
            one = self.one_process(*options)
            self.assertEqual(self.by_ranks(chance.choice([2, 3, 4]), *options), one, f"seed {seed}")

    def test_odd_hypergraphs(self):
        fixed = self.folder / "fixed"
        fixed.write_text("0\n1\n0\n1\n0\n1\n", encoding="ascii")
        cases = {
            "no hyperedges": (6, [], []),
            "fewer vertices than ranks": (2, [[0, 1]], []),
            "one giant hyperedge": (40, [list(range(40))], []),
            "all fixed": (6, [[0, 1, 2], [3, 4, 5], [0, 5]], ["--fix", fixed]),
        }
        for name, (nvertices, hyperedges, more) in cases.items():
            hypergraph = self.folder / "odd.hgr"
            write_hypergraph(hypergraph, nvertices, hyperedges)
            options = [hypergraph, "-k", "2", "--starts", "4", *more]
            one = self.one_process(*options)
            self.assertEqual(self.by_ranks(3, *options), one, name)

    def test_the_answer_has_a_row_for_each_rank(self):
        self.by_ranks(2, EXAMPLE, "-k", "2", "--starts", "6", "--preset", "fast", "--json",
                      self.folder / "json")
        answer = json.loads((self.folder / "json").read_text(encoding="utf-8"))
        self.assertEqual([row["rank"] for row in answer["ranks"]], [0, 1])
        self.assertEqual(sum(row["jobs"] for row in answer["ranks"]), answer["jobs"])
        self.assertFalse(any(row["lost"] for row in answer["ranks"]))

    def test_a_killed_rank_costs_its_jobs_only(self):
        process, ranks = self.start(3, launch=["--enable-recovery"])
        os.kill(ranks[1], signal.SIGKILL)
        error = process.communicate(timeout=300)[1]
        self.assertIn("rank 1 is silent", error)
        self.assertEqual(self.part("long"), self.one_process(*LONG[1:]))

    def test_a_rank_that_hangs_costs_its_jobs_only(self):
        process, ranks = self.start(3, launch=["--enable-recovery"])
        stopped = [ranks[2], *children(ranks[2])]
        for pid in stopped:
            os.kill(pid, signal.SIGSTOP)
        try:
            error = ""
            while "rank 2 is silent" not in error:
                line = process.stderr.readline()
                self.assertTrue(line, error)
                error += line
            end = time.monotonic() + 200
            while not (self.folder / "long").exists() and time.monotonic() < end:
                time.sleep(0.1)
        finally:
            for pid in stopped:
                os.kill(pid, signal.SIGKILL)
        process.communicate(timeout=100)
        self.assertEqual(self.part("long"), self.one_process(*LONG[1:]))

    def test_a_killed_head_leaves_a_journal_to_go_on_from(self):
        process, ranks = self.start(2, launch=["--enable-recovery"])
        os.kill(ranks[0], signal.SIGKILL)
        process.communicate(timeout=100)
        self.assertFalse((self.folder / "long").exists())
        self.assertEqual(self.finish_from_journal(), self.one_process(*LONG[1:]))

    def test_a_killed_mpirun_leaves_a_journal_to_go_on_from(self):
        process, ranks = self.start(2)
        process.kill()
        process.communicate(timeout=100)
        end = time.monotonic() + 60
        while any(Path(f"/proc/{pid}").exists() for pid in ranks.values()):
            self.assertLess(time.monotonic(), end, "ranks live on")
            time.sleep(0.1)
        self.assertEqual(self.finish_from_journal(), self.one_process(*LONG[1:]))

    def lose_a_rank(self, grace):
        """Kills a rank of a run that mpirun then ends; rank 0 has so many seconds. Returns whether
        it had them all and was killed."""
        process, ranks = self.start(3, launch=["--mca", "odls_base_sigkill_timeout", str(grace)])
        os.kill(ranks[1], signal.SIGKILL)
        killed = time.monotonic()
        process.communicate(timeout=500)
        self.assertNotEqual(process.returncode, 0)
        return time.monotonic() - killed >= grace

    def check_what_is_delivered(self):
        verified = subprocess.run([ZORPELX, "verify", EXAMPLE, self.folder / "long", "-k", "8",
                                   "--epsilon", "3"], capture_output=True, text=True, check=False)
        self.assertEqual(verified.returncode, 0, verified.stderr)

    def test_a_lost_rank_without_recovery_ends_with_the_best_so_far(self):
        # on a machine so busy that rank 0 is killed before it has written, the journal remains
        late = self.lose_a_rank(60)
        if not late or (self.folder / "long").exists():
            self.check_what_is_delivered()
        self.assertEqual(self.finish_from_journal(), self.one_process(*LONG[1:]))

    def test_a_lost_rank_without_recovery_leaves_all_of_a_partition_or_none(self):
        self.lose_a_rank(0)  # rank 0 is killed wherever it is
        if (self.folder / "long").exists():
            self.check_what_is_delivered()
        self.assertEqual(self.finish_from_journal(), self.one_process(*LONG[1:]))

    def test_term_delivers_the_best_so_far(self):
        process, ranks = self.start(2)
        os.kill(ranks[0], signal.SIGTERM)
        process.communicate(timeout=100)
        self.assertEqual(process.returncode, 128 + signal.SIGTERM)
        whole = self.one_process(EXAMPLE, "-k", "2", "--preset", "fast")
        self.assertEqual(len(self.part("long").split()), len(whole.split()))

    def test_time_holds_over_all_ranks(self):
        began = time.monotonic()
        self.by_ranks(2, EXAMPLE, "-k", "4", "--time", "3", "--threads", "1", status=(0,))
        self.assertLess(time.monotonic() - began, 60)

    def test_ranks_with_other_words_are_refused(self):
        other = [str(EXAMPLE), "-k", "3"]
        done = mpirun(1, ["partition", str(EXAMPLE), "-k", "2", ":", "-np", "1", ZORPELX_MPI,
                          "partition", *other], cwd=self.folder)
        self.assertEqual(done.returncode, 2, done.stderr)
        self.assertIn("rank 1 has another command line", done.stderr)

    def test_mixed_versions_are_refused(self):
        words = ["partition", str(EXAMPLE), "-k", "2", "-o", str(self.folder / "none")]
        done = mpirun(1, [*words, ":", "-np", "1", os.environ["ZORPELX_MPI_OTHER"], *words])
        self.assertEqual(done.returncode, 2, done.stderr)
        self.assertIn("rank 1 has another version", done.stderr)
        self.assertFalse((self.folder / "none").exists())

    def test_a_full_disk_ends_the_journal_not_the_run(self):
        journal = self.folder / "journal"
        journal.mkdir()
        full = journal / "shard-1-of-1.jobs"
        full.symlink_to("/dev/full")
        options = [EXAMPLE, "-k", "2", "--starts", "4", "--preset", "fast"]
        done = mpirun(2, ["partition", *map(str, options), "-o", str(self.folder / "several"),
                          "--journal", str(journal)])
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertIn("the journal ends here", done.stderr)
        self.assertEqual(self.part("several"), self.one_process(*options))


if __name__ == "__main__":
    unittest.main()
