# SPDX-License-Identifier: MIT
"""Searches within bounds, from Python."""

import os
import tempfile
import unittest

import zorpel
from test_partitioning import local_hyperedges

SMALL = local_hyperedges(200, 300, 1)
ENGINE = {
    "ubfactor": 5,
    "runs": 1,
    "matching": "fc",
    "refine": "eefm",
    "vcycle": "no",
    "reconst": False,
    "polish": True,
    "trace": 8,
}
SEARCH = {
    "epsilon": 3,
    "least": 50,
    "capacities": [1, 1],
    "start": [0, 1] * 100,
    "together": [-1] * 200,
    "time": 0.1,
}


class BoundsTest(unittest.TestCase):
    def check(self, nparts, **options):
        partition = zorpel.partition(SMALL, nparts, nvtxs=200, preset="fast", **options)
        quality = zorpel.evaluate(SMALL, partition)
        names = ("epsilon", "least", "capacities")
        asked = {name: options[name] for name in names if name in options}
        bounds = zorpel.part_bounds(nparts, asked.pop("epsilon", 3), 200, **asked)
        for weight, (least, most) in zip(quality.part_weights, bounds):
            self.assertTrue(least <= weight <= most, (weight, least, most))
        self.assertTrue(partition.valid and partition.complete)
        self.assertEqual((partition.cut, partition.soed), (quality.cut, quality.soed))
        self.assertEqual(partition.connectivity, quality.connectivity)
        return partition, quality

    def test_three_percent_are_kept_unless_others_are_given(self):
        for nparts in (2, 7, 8):
            self.check(nparts)
        self.assertEqual(self.check(8, epsilon=0)[1].part_weights, [25] * 8)
        self.check(5, epsilon=30, least=10)
        weights = self.check(3, epsilon=0, capacities=[2, 2, 1])[1].part_weights
        self.assertEqual(weights, [80, 80, 40])

    def test_the_objective_is_the_figure_that_it_names(self):
        for name, figure in (("cut", "cut"), ("km1", "connectivity"), ("SOED", "soed")):
            partition, quality = self.check(6, objective=name)
            self.assertEqual(partition.objective, getattr(quality, figure))
        engine = zorpel.partition(SMALL, 6, runs=1, objective="km1")
        self.assertEqual(engine.objective, engine.connectivity)

    def test_starts_that_share_are_one_search(self):
        apart = zorpel.partition(SMALL, 4, preset="fast", starts=3)
        shared = zorpel.partition(SMALL, 4, preset="fast", starts=3, share=True)
        self.assertNotEqual(shared.jobs, apart.jobs)
        self.assertEqual(zorpel.partition(SMALL, 4, preset="fast", share=True).jobs, apart.jobs)
        with self.assertRaises(zorpel.InputError):
            zorpel.partition(SMALL, 4, runs=1, share=True)

    def test_presets_do_more_or_less(self):
        jobs = [zorpel.partition(SMALL, 4, preset=p).jobs for p in ("fast", "default", "best")]
        self.assertEqual(jobs, sorted(jobs))
        self.assertLess(jobs[0], jobs[2])

    def test_threads_change_nothing(self):
        results = [zorpel.partition(SMALL, 4, threads=threads).part for threads in (1, 2, 4)]
        self.assertEqual(results[0], results[1])
        self.assertEqual(results[0], results[2])


class ConstraintsTest(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.TemporaryDirectory()
        self.addCleanup(self.folder.cleanup)

    def store(self, text):
        path = os.path.join(self.folder.name, "a.txt")
        with open(path, "w") as file:
            file.write(text)
        return path

    def test_groups_of_any_numbers_stay_together(self):
        together = [-1] * 200
        for v in range(0, 200, 10):
            together[v] = 2**31 - 1 - v // 100
        for given in (together, self.store("".join(f"{g}\n" for g in together))):
            part = zorpel.partition(SMALL, 2, together=given, preset="fast").part
            self.assertEqual(len({part[v] for v in range(0, 100, 10)}), 1)
            self.assertEqual(len({part[v] for v in range(100, 200, 10)}), 1)
        fixed = [0] + [-1] * 9 + [1] + [-1] * 189
        with self.assertRaisesRegex(zorpel.InputError, "Vertices 0 and 10 are in one group"):
            zorpel.partition(SMALL, 2, together=together, fix=fixed)
        named = zorpel.as_hypergraph({"x": [*"ab"], "y": [*"bc"], "z": [*"cd"], "w": [*"da"]})
        for rows, wanted in [("a,7\nc,7\n", [0, 2]), ("b,0\nd,0\na,-1\n", [1, 3])]:
            path = self.store("vertex,part\n" + rows)
            part = zorpel.partition(named, 2, epsilon=0, together=path).part
            self.assertEqual(len({part[v] for v in wanted}), 1)
        path = self.store("vertex,part\nd,0\na,1\n")
        part = zorpel.partition(named, 2, epsilon=0, fix=path, together={"b": 0, "d": 0}).part
        self.assertEqual(part, [1, 0, 1, 0])
        with self.assertRaisesRegex(zorpel.InputError, r"together\[3\] is -2; it should be -1"):
            zorpel.partition(SMALL, 2, together=[-1, 0, 0, -2] + [-1] * 196)

    def test_a_start_is_improved_at_the_price_of_what_moves(self):
        start = [v * 4 // 200 for v in range(200)]
        before = zorpel.evaluate(SMALL, start).cut
        free = zorpel.partition(SMALL, 4, start=start)
        self.assertLessEqual(free.cut, before)
        self.assertEqual(free.moved, sum(p != q for p, q in zip(free.part, start)))
        self.assertGreater(free.moved, 0)
        kept = zorpel.partition(SMALL, 4, start=start, keep_in_place=1000)
        self.assertEqual((kept.part, kept.moved), (start, 0))
        self.assertLessEqual(zorpel.partition(SMALL, 4, start=free).cut, free.cut)
        path = os.path.join(self.folder.name, "p")
        zorpel.write_partition(path, start)
        self.assertEqual(zorpel.partition(SMALL, 4, start=path), free)

    def test_capacities_come_from_a_file_too(self):
        path = self.store("2,2\n1\n")
        self.assertEqual(
            zorpel.partition(SMALL, 3, capacities=path, preset="fast"),
            zorpel.partition(SMALL, 3, capacities=(2.0, 2, 1), preset="fast"),
        )
        fault = self.assertRaisesRegex
        with fault(zorpel.InputError, "capacities has 2 numbers; there are 3 parts"):
            zorpel.partition(SMALL, 3, capacities=[1, 2])
        with fault(zorpel.InputError, r"capacities\[1\] is 0; it should be above 0"):
            zorpel.partition(SMALL, 2, capacities=[1, 0])
        with fault(zorpel.InputError, r"capacities\[0\] is 'two'"):
            zorpel.partition(SMALL, 2, capacities=self.store("two one"))
        with fault(zorpel.InputError, "capacities is 3 instead of a list"):
            zorpel.partition(SMALL, 2, capacities=3)
        with fault(zorpel.FileError, "No such file"):
            zorpel.partition(SMALL, 2, capacities=os.path.join(self.folder.name, "nothing"))

    def test_who_is_to_blame_is_named(self):
        partition = zorpel.partition([[0, 1], [1, 2]], 2, vertex_weights=[1, 9, 1])
        self.assertFalse(partition.valid)
        self.assertIn("Vertex 1 (counted from 0) weighs 9", partition.message)


class RuleTest(unittest.TestCase):
    """Options of the engine alone select it, and cannot come with those of the search."""

    def test_options_of_both_kinds_are_refused_together(self):
        for own, value in ENGINE.items():
            for other, asked in SEARCH.items():
                sentence = f"{other} is for the search, and {own} for the engine alone"
                with self.assertRaisesRegex(zorpel.InputError, sentence):
                    zorpel.partition(SMALL, 2, **{own: value, other: asked})

    def test_any_option_of_the_engine_selects_it(self):
        self.assertGreater(zorpel.partition(SMALL, 2, preset="fast").jobs, 0)
        for own, value in ENGINE.items():
            self.assertEqual(zorpel.partition(SMALL, 2, preset="fast", **{own: value}).jobs, 0, own)
        engine = zorpel.partition(SMALL, 4, ubfactor=5)
        self.assertEqual(engine, zorpel.partition(SMALL, 4, runs=10))

    def test_what_is_gone_says_what_replaces_it(self):
        for name in ("imbalance", "keep"):
            with self.assertRaisesRegex(zorpel.InputError, f"{name} is gone: epsilon"):
                zorpel.partition(SMALL, 2, **{name: 3})
        with self.assertRaisesRegex(zorpel.InputError, "keep_in_place needs start"):
            zorpel.partition(SMALL, 2, keep_in_place=3)


    def test_the_result_tells_how_it_came_about(self):
        found = zorpel.partition(SMALL, 4)
        made = {step.step: step.made for step in found.steps}
        self.assertEqual(made["packing"], 1)
        self.assertEqual(made["member"] + made.get("combination", 0), found.jobs)
        self.assertNotIn("start", made)
        self.assertGreater(found.pool, 0)
        for step in found.steps:
            self.assertLessEqual(step.better, step.made)
            self.assertGreaterEqual(step.seconds, 0)
        self.assertEqual(zorpel.partition(SMALL, 4, ubfactor=5).steps, [])


class TimeTest(unittest.TestCase):
    def test_progress_tells_of_the_search_and_can_end_it(self):
        seen = []

        def enough(progress):
            seen.append(progress)
            return progress.objective >= 0 and progress.jobs > 1

        partition = zorpel.partition(SMALL, 4, time=100, progress=enough)
        self.assertFalse(partition.complete)
        self.assertTrue(partition.valid)
        self.assertLess(partition.seconds, 50)
        self.assertEqual(seen[-1].alljobs, -1)
        self.assertIn(seen[-1].step, {"packing", "start", "member", "combination"})
        self.assertLessEqual(partition.cut, seen[-1].objective)

    def test_a_deadline_keeps_the_best_and_time_is_a_success(self):
        late = zorpel.partition(SMALL, 4, time=100, timeout=1)
        self.assertFalse(late.complete)
        self.assertIn("The deadline came first", late.message)
        ended = zorpel.partition(SMALL, 4, time=0.5)
        self.assertTrue(ended.complete and ended.valid)
        self.assertGreaterEqual(ended.seconds, 0.4)


if __name__ == "__main__":
    unittest.main()
