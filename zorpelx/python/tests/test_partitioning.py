# SPDX-License-Identifier: MIT
"""Partitioning from Python."""

import doctest
import inspect
import os
import random
import signal
import subprocess
import sys
import tempfile
import threading
import unittest
from array import array
from pathlib import Path

import zorpel
import zorpel._library
import zorpel.api
import zorpel.options


def random_hyperedges(nvtxs, nhedges, seed):
    chance = random.Random(seed)
    return [
        sorted({(chance.randrange(nvtxs) + i * i) % nvtxs for i in range(chance.randint(2, 5))})
        for _ in range(nhedges)
    ]


def local_hyperedges(nvtxs, nhedges, seed):
    chance = random.Random(seed)
    starts = [chance.randrange(nvtxs) for _ in range(nhedges)]
    return [sorted({(v + d) % nvtxs for d in (0, 1, chance.randint(2, 9))}) for v in starts]


SMALL = local_hyperedges(200, 300, 1)
SANITIZED = "ZORPEL_SANITIZED" in os.environ


class PartitionTest(unittest.TestCase):
    def test_every_vertex_gets_a_part_and_the_figures_agree(self):
        partition = zorpel.partition(SMALL, 5, nvtxs=200, runs=2)
        quality = zorpel.evaluate(SMALL, partition)
        self.assertEqual(len(partition), 200)
        self.assertEqual(set(partition.part), {0, 1, 2, 3, 4})
        self.assertEqual((partition.cut, partition.soed), (quality.cut, quality.soed))
        self.assertEqual(partition.imbalance, quality.imbalance)
        self.assertTrue(partition.valid and partition.complete)
        self.assertEqual(partition.message, "")

    def test_threads_change_nothing_but_the_time(self):
        chain = [[v, v + 1, (v + 1500) % 3000] for v in range(2999)]
        results = [zorpel.partition(chain, 8, runs=1, seed=9, threads=t) for t in (1, 0, 2, 4)]
        for result in results:
            self.assertEqual(results[0].part, result.part)
        with self.assertRaises(ValueError):
            zorpel.partition(SMALL, 2, threads=-1)

    def test_equal_arguments_give_equal_partitions_whatever_the_jobs(self):
        results = [
            zorpel.partition(SMALL, 4, runs=1, seed=9, starts=4, jobs=jobs) for jobs in (1, 2, 4)
        ]
        self.assertEqual(results[0].part, results[1].part)
        self.assertEqual(results[0].part, results[2].part)
        self.assertEqual(results[0].seed, results[2].seed)
        again = zorpel.partition(SMALL, 4, runs=1, seed=results[0].seed)
        self.assertEqual(again.part, results[0].part)

    def test_a_seed_of_none_is_drawn_and_told(self):
        drawn = zorpel.partition(SMALL, 3, runs=1, seed=None)
        again = zorpel.partition(SMALL, 3, runs=1, seed=drawn.seed)
        self.assertEqual(drawn.part, again.part)

    def test_schemes_are_taken_by_name_and_by_number(self):
        for matching, number in zorpel.options.MATCHINGS.items():
            by_name = zorpel.partition(SMALL, 2, runs=1, matching=matching.upper())
            by_number = zorpel.partition(SMALL, 2, runs=1, matching=number)
            self.assertEqual(by_name.part, by_number.part)
        zorpel.partition(SMALL, 2, runs=1, refine="eefm", vcycle="all", reconst=True, polish=False)

    def test_weights_and_pre_assignments_are_kept(self):
        weights = [1 + v % 3 for v in range(200)]
        fixed = [-1] * 200
        fixed[3], fixed[150] = 1, 0
        partition = zorpel.partition(
            SMALL, 2, runs=1, vertex_weights=weights, fix=fixed, nvtxs=200
        )
        self.assertEqual((partition.part[3], partition.part[150]), (1, 0))
        quality = zorpel.evaluate(SMALL, partition, vertex_weights=weights)
        self.assertEqual(sum(quality.part_weights), sum(weights))

    def test_hyperedges_that_cannot_be_cut_are_dropped(self):
        partition = zorpel.partition(SMALL + [[5], []], 2, runs=1)
        self.assertEqual(partition.dropped, 2)
        self.assertEqual(partition.part, zorpel.partition(SMALL, 2, runs=1).part)

    def test_traces_are_kept_for_each_start(self):
        traces = zorpel.partition(SMALL, 2, runs=1, starts=3, trace=8).traces
        self.assertEqual(len(traces), 3)
        for text in traces:
            self.assertIn("Bisecting a hgraph of size [vertices=200, hedges=300", text)

    # The child would wait for a lock that another thread held when it was forked.
    @unittest.skipIf(SANITIZED, "the sanitizer's heap does not survive a fork beside other threads")
    def test_parallel_calls_equal_sequential_ones(self):
        def call(seed):
            return zorpel.partition(SMALL, 3, runs=1, seed=seed).part

        sequential = [call(1 + seed) for seed in range(8)]
        parallel = [None] * 8

        def store(seed):
            parallel[seed] = call(1 + seed)

        threads = [threading.Thread(target=store, args=(seed,)) for seed in range(8)]
        for thread in threads:
            thread.start()
        for thread in threads:
            thread.join()
        self.assertEqual(sequential, parallel)

    def test_python_prints_nothing_twice(self):
        reader, writer = os.pipe()
        child = os.fork()
        if child == 0:
            os.dup2(writer, 1)
            sys.stdout = os.fdopen(1, "w", buffering=4096)
            print("once")
            zorpel.partition(SMALL, 2, runs=1, trace=511 & ~64)
            sys.stdout.flush()
            os._exit(0)
        os.close(writer)
        with os.fdopen(reader) as file:
            self.assertEqual(file.read(), "once\n")
        self.assertEqual(os.waitpid(child, 0)[1], 0)


class FaultTest(unittest.TestCase):
    def check(self, kind, sentence, *arguments, **options):
        with self.assertRaises(kind) as caught:
            zorpel.partition(*arguments, **options)
        self.assertIn(sentence, str(caught.exception))

    def test_faults_are_exceptions_with_a_sentence(self):
        fault = self.check
        fault(zorpel.InputError, "nparts is 1; it should be at least 2.", SMALL, 1)
        fault(zorpel.InputError, "nparts is 2.5; it should be an integer", SMALL, 2.5)
        fault(zorpel.InputError, "ubfactor is 77; it should be between 1 and 49", SMALL, 2, ubfactor=77)
        fault(zorpel.InputError, "epsilon is -1; it should be a number of percent", SMALL, 2, -1)
        fault(
            zorpel.InputError,
            "matching is 'best'; it should be one of hfc",
            SMALL,
            2,
            matching="best",
        )
        fault(zorpel.InputError, "matching is 9; it should be between 1 and 5", SMALL, 2, matching=9)
        fault(zorpel.InputError, "seed is 4294967296; it should be between -1 and 2147483647", SMALL, 2, seed=2**32)
        fault(zorpel.InputError, "memory is -1; it should be", SMALL, 2, memory=-1)
        fault(zorpel.InputError, "should be between 0 and 16777216", SMALL, 2, memory=1 << 30)
        fault(zorpel.InputError, "seed is -2; it should be at least -1", SMALL, 2, seed=-2)
        fault(zorpel.InputError, "seed is 0, which gives the same random", SMALL, 2, seed=0)
        fault(zorpel.InputError, "timeout is 'soon'; it should be a number", SMALL, 2, timeout="soon")
        fault(zorpel.InputError, "timeout is nan; it should be", SMALL, 2, timeout=float("nan"))
        fault(zorpel.InputError, "progress is 3; it should be a function", SMALL, 2, progress=3)
        fault(zorpel.InputError, "preset is 'slow'; it should be one of fast", SMALL, 2, preset="slow")
        fault(zorpel.InputError, "nvtxs is 2.5 instead of an integer", SMALL, 2, nvtxs=2.5)
        fault(zorpel.InputError, "keep is gone: epsilon takes the same", SMALL, 2, keep=3)
        fault(zorpel.InputError, "imbalance is gone: epsilon bounds the parts", SMALL, 2, imbalance=5)
        fault(zorpel.InputError, "nparts is 100000000; with 2 vertices it should", [[0, 1]], 10**8)
        fault(zorpel.InputError, "fix is 3 instead of a list", SMALL, 2, fix=3)
        fault(zorpel.InputError, "7 is no hypergraph", 7, 2)
        fault(zorpel.InputError, "hyperedge_weights[0] is -1", [[0, 1]], 2, hyperedge_weights=[-1])
        fault(zorpel.InputError, "timeout is -3; it should be", SMALL, 2, timeout=-3)
        fault(zorpel.InputError, "starts is 0; it should be", SMALL, 2, starts=0)
        fault(zorpel.InputError, "fix has 2 entries instead of 200", SMALL, 2, fix=[0, 1])
        fault(zorpel.InputError, "fix[1] is 2; it should be", [[0, 1]], 2, fix=[0, 2])
        fault(zorpel.InputError, "eind[1] is -1, in hyperedge 0", [[0, -1]], 2)
        fault(zorpel.InputError, "eind[2] is 7, in hyperedge 1", [[0], [1, 7]], 2, nvtxs=3)
        fault(zorpel.InputError, "Hyperedge 1 lists vertex 4 twice", [[0, 1], [4, 2, 4]], 2)
        fault(zorpel.InputError, "vertex_weights[1] is -5", [[0, 1]], 2, vertex_weights=[1, -5])

    def test_faults_are_value_errors_with_a_status(self):
        with self.assertRaises(ValueError) as caught:
            zorpel.partition([[0, 0]], 2)
        self.assertEqual(caught.exception.status, 3)

    def test_a_memory_cap_is_a_memory_error(self):
        if SANITIZED:
            self.skipTest("the sanitizer's allocator ends the process by itself")
        size = 1000000
        large = (array("i", range(0, 2 * size + 1, 2)), array("i", range(2 * size)))
        with self.assertRaises(MemoryError) as caught:
            zorpel.partition(large, 2, ubfactor=5, memory=32)
        self.assertIn("Memory ran out in the start with seed 1", str(caught.exception))

    def test_a_deadline_without_a_result_is_a_timeout_error(self):
        with self.assertRaises(TimeoutError):
            zorpel.partition(SMALL, 2, timeout=1e-9)


class CancelTest(unittest.TestCase):
    def test_progress_can_cancel_and_the_best_start_is_kept(self):
        seen = []

        def enough(progress):
            seen.append(progress)
            return progress.finished >= 2

        partition = zorpel.partition(SMALL, 2, runs=1, starts=10000, progress=enough)
        self.assertFalse(partition.complete)
        self.assertGreaterEqual(partition.finished, 2)
        self.assertEqual(seen[-1].cut, partition.cut)
        self.assertIn("Cancelled after", partition.message)

    def test_what_progress_throws_comes_out(self):
        def fail(_progress):
            raise KeyError("from the callback")

        with self.assertRaisesRegex(KeyError, "from the callback"):
            zorpel.partition(SMALL, 2, runs=1, starts=100, progress=fail)

    def test_an_interrupt_of_the_keyboard_comes_out(self):
        before = signal.getsignal(signal.SIGINT)
        timer = threading.Timer(0.3, os.kill, (os.getpid(), signal.SIGINT))
        timer.start()
        self.addCleanup(timer.cancel)
        with self.assertRaises(KeyboardInterrupt):
            zorpel.partition(SMALL, 2, runs=1, starts=10**6)
        timer.join()
        self.assertIs(signal.getsignal(signal.SIGINT), before)

    def test_interrupts_at_any_moment(self):
        """ZORPEL_INTERRUPTS tells how many; a handler of another signal is there too."""
        before = signal.getsignal(signal.SIGINT)
        other = signal.signal(signal.SIGUSR1, lambda *_: None)
        mine = signal.getsignal(signal.SIGUSR1)
        chance = random.Random(1)
        caught = 0
        for _ in range(int(os.environ.get("ZORPEL_INTERRUPTS", "20"))):
            timer = threading.Timer(chance.random() * 0.05, os.kill, (os.getpid(), signal.SIGINT))
            try:
                timer.start()
                zorpel.partition(SMALL, 2, runs=1, starts=chance.choice([1, 10]))
                timer.join()
            except KeyboardInterrupt:
                caught += 1
            timer.join()
            self.assertIs(signal.getsignal(signal.SIGINT), before)
            self.assertIs(signal.getsignal(signal.SIGUSR1), mine)
            self.test_no_child_is_left()
        self.assertGreater(caught, 0)
        signal.signal(signal.SIGUSR1, other)

    def test_no_child_is_left(self):
        with self.assertRaises(ChildProcessError):
            os.waitpid(-1, os.WNOHANG)


class EvaluateTest(unittest.TestCase):
    def test_figures_agree_with_a_naive_count(self):
        for seed in range(20):
            hyperedges = random_hyperedges(40, 60, seed)
            chance = random.Random(seed)
            part = [chance.randrange(4) for _ in range(40)]
            weights = [chance.randint(0, 9) for _ in hyperedges]
            spans = [len({part[v] for v in vertices}) for vertices in hyperedges]
            cut = [e for e, span in enumerate(spans) if span > 1]
            quality = zorpel.evaluate(hyperedges, part, 4, hyperedge_weights=weights)
            self.assertEqual(quality.cut, sum(weights[e] for e in cut))
            self.assertEqual(quality.soed, sum(weights[e] * spans[e] for e in cut))
            self.assertEqual(quality.connectivity, quality.soed - quality.cut)
            self.assertEqual(quality.cut_hyperedges, len(cut))
            self.assertEqual(quality.part_weights, [part.count(p) for p in range(4)])
            self.assertEqual(zorpel.cut_hyperedges(hyperedges, part), cut)
            matrix = zorpel.cut_matrix(hyperedges, part, 4, hyperedge_weights=weights)
            inside = sum(w for w, span in zip(weights, spans) if span == 1)
            self.assertEqual(sum(matrix[p][p] for p in range(4)), inside)
            self.assertEqual(matrix[1][2], matrix[2][1])

    def test_vertices_without_hyperedges_count(self):
        quality = zorpel.evaluate([[0, 1]], [0, 1, 1, 1])
        self.assertEqual(quality.part_weights, [1, 3])
        self.assertEqual(quality.imbalance, 0.5)

    def test_faults_have_a_sentence(self):
        graph = zorpel.as_hypergraph([[0, 1]])
        with self.assertRaisesRegex(ValueError, "part has 3 entries instead of 2"):
            zorpel.evaluate(graph, [0, 1, 1])
        with self.assertRaisesRegex(ValueError, r"part\[1\] is 2; it should be between 0 and 1"):
            zorpel.evaluate(graph, [0, 2], 2)
        with self.assertRaisesRegex(ValueError, r"part\[0\] is -1"):
            zorpel.evaluate(graph, [-1, -1])
        with self.assertRaisesRegex(ValueError, "ubfactor is 50; it should be between 1 and 49"):
            zorpel.part_limits(2, 50, 100)


class LimitsTest(unittest.TestCase):
    def test_totals_of_64_bits_are_taken_and_others_refused(self):
        (least, most), _ = zorpel.part_limits(2, 5, 2**62)
        self.assertAlmostEqual(least / 2**62, 0.45, 5)
        self.assertAlmostEqual(most / 2**62, 0.55, 5)
        self.assertEqual(zorpel.part_limits(1, 5, 2**63 - 1), [(2**63 - 1, 2**63 - 1)])
        for total in (2**63, 2**64 + 100, -1):
            with self.assertRaisesRegex(zorpel.InputError, f"total is {total}; it should be"):
                zorpel.part_limits(2, 5, total)
        with self.assertRaisesRegex(zorpel.InputError, "total is 1.5; it should be an integer"):
            zorpel.part_limits(2, 5, 1.5)

    def test_absurd_numbers_of_parts_are_refused(self):
        for call in (zorpel.evaluate, zorpel.cut_hyperedges, zorpel.cut_matrix):
            with self.assertRaisesRegex(zorpel.InputError, "nparts is 2147483647; with 2 vertices"):
                call([[0, 1]], [0, 1], 2**31 - 1)
            with self.assertRaisesRegex(zorpel.InputError, "nparts is 2000000001; with 2 vertices"):
                call([[0, 1]], [0, 2 * 10**9])
        with self.assertRaisesRegex(zorpel.InputError, "a matrix is for at most 10000"):
            zorpel.cut_matrix([[0, 1]], [0, 1], 10001)
        with self.assertRaisesRegex(zorpel.InputError, "nparts is 2147483647; it should be"):
            zorpel.part_limits(2**31 - 1, 5, 100)


class PackageTest(unittest.TestCase):
    def test_every_public_name_has_a_docstring(self):
        for name in zorpel.__all__:
            thing = getattr(zorpel, name)
            if name == "HypergraphLike":
                continue  # a type, described where it is defined
            self.assertTrue((thing.__doc__ or "").strip(), name)
            for method, value in vars(thing).items() if isinstance(thing, type) else ():
                if inspect.isfunction(value) and not method.startswith("_"):
                    self.assertTrue((value.__doc__ or "").strip(), f"{name}.{method}")

    def test_the_version_is_the_librarys(self):
        library = zorpel._library.loaded()  # pylint: disable=protected-access
        self.assertEqual(library.zorpelx_version().decode(), zorpel.__version__)

    def test_numpy_and_scipy_are_not_needed(self):
        program = (
            "import sys\n"
            "sys.modules.update(dict.fromkeys(('numpy', 'scipy', 'scipy.sparse')))\n"
            "import zorpel\n"
            "part = zorpel.partition([[0, 1], [1, 2], [2, 3]], 2, starts=2, trace=8)\n"
            "graph = zorpel.as_hypergraph(([0, 2, 4], [0, 1, 2, 3]))\n"
            "zorpel.write(sys.argv[1], graph)\n"
            "assert zorpel.read(sys.argv[1]) == graph\n"
            "print(type(part.part), zorpel.evaluate(graph, part).cut_hyperedges)\n"
        )
        with tempfile.TemporaryDirectory() as folder:
            done = subprocess.run(
                [sys.executable, "-W", "error", "-c", program, os.path.join(folder, "a.hgr.gz")],
                stdout=subprocess.PIPE,
                check=True,
                text=True,
            )
        self.assertEqual(done.stdout, "<class 'list'> 0\n")


def load_tests(_loader, tests, _pattern):
    tests.addTests(doctest.DocTestSuite(zorpel))
    tests.addTests(doctest.DocTestSuite(zorpel.api))
    document = Path(__file__).resolve().parents[3] / "docs" / "API.md"
    tests.addTests(doctest.DocFileSuite(str(document), module_relative=False))
    return tests


if __name__ == "__main__":
    unittest.main()
