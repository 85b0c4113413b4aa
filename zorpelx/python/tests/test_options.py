# SPDX-License-Identifier: MIT
"""Names and units of the options, paths, and how records show themselves."""

import dataclasses
import inspect
import json
import os
import re
import subprocess
import tempfile
import unittest
import xml.etree.ElementTree
from pathlib import Path

import zorpel
from test_partitioning import local_hyperedges

SMALL = local_hyperedges(200, 300, 1)
LATER = set()  # options of the program that this package has not got yet


class NamesTest(unittest.TestCase):
    """The names, choices and presets are the program's."""

    def test_every_option_of_the_program_that_is_about_the_work_is_here(self):
        source = Path(__file__).resolve().parents[3] / "docs" / "man" / "zorpelx.1"
        section = source.read_text().split(".SH PARTITION")[1].split(".SH ")[0]
        names = {name.replace("\\-", "_") for name in re.findall(r"\\-\\-([a-z\\-]+)\\fR", section)}
        # those that are about files and about what is printed
        names -= {"output", "json", "force", "progress", "lines", "from", "strict", "quiet"}
        names -= {"record", "first", "model", "areas", "skip_nets", "top_module"}
        names -= {"journal", "shard", "wait"}
        taken = set(inspect.signature(zorpel.partition).parameters)
        self.assertGreater(len(names), 10)
        missing = names - taken
        self.assertLessEqual(missing, LATER, f"{missing} are options of the program only")

    def test_presets_set_what_is_not_given(self):
        best = zorpel.partition(SMALL, 3, preset="best", runs=1)
        self.assertEqual(best.finished, 8)
        plain = zorpel.partition(
            SMALL, 3, runs=1, matching="hfc", refine="1wayfm", vcycle="all", starts=8
        )
        self.assertEqual(best, plain)
        self.assertEqual(zorpel.partition(SMALL, 3, preset="Best", runs=1, starts=2).finished, 2)

    def test_yes_and_no_are_taken_as_by_the_program(self):
        yes = zorpel.partition(SMALL, 3, runs=1, reconst="yes", polish="NO")
        self.assertEqual(yes, zorpel.partition(SMALL, 3, runs=1, reconst=True, polish=False))

    def test_older_names_are_taken_with_a_warning(self):
        fixed = [0] + [-1] * 199
        with self.assertWarnsRegex(DeprecationWarning, "fixed is now called fix"):
            old = zorpel.partition(SMALL, 2, fixed=fixed, runs=1)
        self.assertEqual(old, zorpel.partition(SMALL, 2, fix=fixed, runs=1))
        with self.assertRaisesRegex(TypeError, "unexpected keyword argument 'imbalnce'"):
            zorpel.partition(SMALL, 2, imbalnce=3)

    def test_seeds_of_none_and_minus_one_are_drawn(self):
        seeds = {zorpel.partition(SMALL, 2, runs=1, seed=s).seed for s in (None, -1, None, -1)}
        self.assertEqual(len(seeds), 4)


class PathTest(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.TemporaryDirectory()
        self.addCleanup(self.folder.cleanup)
        self.graph = os.path.join(self.folder.name, "a.hgr")
        zorpel.write(self.graph, zorpel.as_hypergraph(SMALL, 200))

    def test_paths_are_taken_wherever_a_hypergraph_is(self):
        from_file = zorpel.partition(self.graph, 3, runs=1)
        self.assertEqual(from_file, zorpel.partition(SMALL, 3, runs=1, nvtxs=200))
        self.assertEqual(zorpel.as_hypergraph(Path(self.graph)), zorpel.as_hypergraph(SMALL, 200))
        quality = zorpel.evaluate(Path(self.graph), from_file)
        self.assertEqual(quality.cut, from_file.cut)
        self.assertEqual(
            zorpel.cut_hyperedges(self.graph, from_file), zorpel.cut_hyperedges(SMALL, from_file)
        )
        self.assertEqual(len(zorpel.cut_matrix(self.graph, from_file)), 3)
        copy = os.path.join(self.folder.name, "b.hgr")
        zorpel.write(copy, self.graph)
        self.assertEqual(zorpel.read(copy), zorpel.read(self.graph))

    def test_paths_of_partitions_and_fix_files_are_taken(self):
        parts, fix = os.path.join(self.folder.name, "p"), os.path.join(self.folder.name, "f")
        result = zorpel.partition(SMALL, 3, runs=1, nvtxs=200)
        zorpel.write_partition(parts, result)
        self.assertEqual(zorpel.evaluate(SMALL, parts).cut, result.cut)
        zorpel.write_partition(fix, [2, 1] + [-1] * 198)
        fixed = zorpel.partition(SMALL, 3, runs=1, fix=fix)
        self.assertEqual(fixed.part[:2], [2, 1])

    def test_weights_may_replace_those_of_a_file(self):
        graph = zorpel.as_hypergraph(self.graph, vertex_weights=[2] * 200)
        self.assertEqual(graph.vertex_weights.tolist(), [2] * 200)


class ShownTest(unittest.TestCase):
    def test_records_show_themselves_in_a_line(self):
        graph = zorpel.as_hypergraph([[0, 1], [1, 2]], vertex_weights=[1, 2, 3])
        self.assertEqual(
            repr(graph), "<zorpel.Hypergraph: 3 vertices, 2 hyperedges, 4 pins, vertex weights>"
        )
        partition = zorpel.partition([[0, 1], [2, 3]], 2)
        self.assertEqual(
            repr(partition),
            "<zorpel.Partition: 4 vertices in 2 parts, cut 0, imbalance 0.0 %, seed 1>",
        )
        large = zorpel.partition(SMALL, 60, runs=1)
        self.assertLess(len(repr(large)), 120)
        quality = zorpel.evaluate(SMALL, large)
        self.assertIn("... 60 in all]", repr(quality))
        self.assertLess(len(repr(quality)), 400)

    def test_notebooks_get_a_table(self):
        partition = zorpel.partition(SMALL, 3, runs=1)
        things = (partition, zorpel.as_hypergraph(SMALL), zorpel.evaluate(SMALL, partition))
        for thing in things:
            html = thing._repr_html_()  # pylint: disable=protected-access
            tree = xml.etree.ElementTree.fromstring(html)
            self.assertEqual(tree.tag, "table")
            self.assertLess(len(html), 3000)
        shouting = dataclasses.replace(partition, message="<b>&", complete=False)
        self.assertIn("&lt;b&gt;&amp;", shouting._repr_html_())  # pylint: disable=protected-access

    def test_equal_results_are_equal_and_can_be_keys(self):
        first, second = (zorpel.partition(SMALL, 2, runs=1) for _ in range(2))
        other = zorpel.partition(SMALL, 3, runs=1)
        self.assertEqual(first, second)
        self.assertNotEqual(first, other)
        self.assertNotEqual(first, 7)
        self.assertEqual(len({first, second, other}), 2)
        graphs = {zorpel.as_hypergraph(SMALL), zorpel.as_hypergraph(SMALL)}
        self.assertEqual(len(graphs), 1)
        changed = dataclasses.replace(first, part=[1 - p for p in first.part])
        self.assertNotEqual(first, changed)


class StatsTest(unittest.TestCase):
    def test_counts_are_those_of_a_naive_count(self):
        lists = [[0, 1, 2], [2, 3], [5], list(range(10, 70)), []]
        found = zorpel.stats(zorpel.as_hypergraph(lists, 80, [1] * 79 + [50]))
        self.assertEqual((found.vertices, found.hyperedges, found.pins), (80, 5, 66))
        self.assertEqual((found.total_vertex_weight, found.total_hyperedge_weight), (129, 5))
        self.assertEqual((found.components, found.largest_component), (18, 60))
        self.assertEqual((found.islands, found.parked), (15, 76))
        self.assertEqual((found.large_hyperedges, found.single_vertex_hyperedges), (1, 1))
        self.assertEqual(found.heavy_vertices, [79])
        self.assertEqual((found.sizes.least, found.sizes.most), (0, 60))
        self.assertAlmostEqual(found.sizes.average, 66 / 5)
        self.assertEqual(found.sizes.bins[-1], zorpel.Bin(33, 64, 1))
        self.assertEqual([one.count for one in found.degrees.bins], [15, 64, 1])
        self.assertIn("components 18", repr(found))
        self.assertEqual(xml.etree.ElementTree.fromstring(found._repr_html_()).tag, "table")

    def test_faults_and_nothing_at_all(self):
        self.assertEqual(zorpel.stats([]).components, 0)
        with self.assertRaisesRegex(zorpel.InputError, "lists vertex 1 twice"):
            zorpel.stats([[1, 1]])

    @unittest.skipUnless(os.environ.get("ZORPELX"), "the program is not built")
    def test_the_program_says_the_same(self):
        sources = Path(__file__).resolve().parents[3] / "examples"
        for path in sorted(sources.glob("*.hgr"))[:3]:
            command = [os.environ["ZORPELX"], "stats", str(path), "--format", "json"]
            told = json.loads(subprocess.run(command, stdout=subprocess.PIPE, check=True).stdout)
            found = dataclasses.asdict(zorpel.stats(path))
            told["heavy_vertices"] = [one["vertex"] - 1 for one in told["heavy_vertices"]]
            for name, value in found.items():
                if isinstance(value, dict):
                    self.assertAlmostEqual(value.pop("average"), told[name].pop("average"))
                self.assertEqual(value, told[name], name)


if __name__ == "__main__":
    unittest.main()
