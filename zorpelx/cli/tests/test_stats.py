# SPDX-License-Identifier: MIT
"""stats: counts of small hypergraphs by hand, and the picture in the terminal."""

import json
import os
import unittest

from calls import Case


class Stats(Case):
    def test_counts_by_hand(self):
        big = " ".join(str(v) for v in range(1, 52))
        self.file("g.hgr", f"4 60 10\n{big}\n52 53\n53 54\n55\n" + "1\n" * 59 + "40\n")
        answer = self.json_of("stats", "g.hgr", "--format", "json")
        self.assertEqual(answer["pins"], 51 + 2 + 2 + 1)
        self.assertEqual(answer["islands"], 5)  # 56 to 60
        self.assertEqual(answer["components"], 1 + 1 + 1 + 5)
        self.assertEqual(answer["largest_component"], 51)
        self.assertEqual(answer["large_hyperedges"], 1)
        self.assertEqual(answer["single_vertex_hyperedges"], 1)
        self.assertEqual(answer["parked"], 60 - 3)
        self.assertEqual(answer["total_vertex_weight"], 99)
        self.assertEqual(answer["heavy_vertices"], [{"vertex": 60, "weight": 40}])
        bins = {(b["least"], b["most"]): b["count"] for b in answer["sizes"]["bins"]}
        self.assertEqual(bins[(1, 1)], 1)
        self.assertEqual(bins[(2, 2)], 2)
        self.assertEqual(bins[(33, 64)], 1)
        self.assertEqual(sum(bins.values()), 4)

    def test_longest_bar_is_forty(self):
        self.file("g.hgr", "81 3\n" + "1 2\n" * 80 + "1 2 3\n")
        lines = self.run_ok("stats", "g.hgr").stdout.splitlines()
        self.assertIn("                2        80 " + "#" * 40, lines)
        self.assertIn("                3         1 #", lines)

    def test_one_of_a_kind_is_told_in_the_singular(self):
        self.file("g.hgr", "1 2\n1\n")
        self.assertIn("g.hgr: 2 vertices, 1 hyperedge, 1 pin\n", self.run_ok("stats", "g.hgr").stdout)
        self.file("h.hgr", "1 1\n1\n")
        self.assertIn("1 hyperedge and 1 vertex", self.call("lint", "h.hgr").stdout)

    def test_nodes_02_and_2_are_two(self):
        pairs = ["02", 2], [3, 2]
        rows = [{"edge": e, "node": v} for e, pair in enumerate(pairs) for v in pair]
        self.file("g.json", json.dumps({"incidences": rows}))
        self.assertIn("3 vertices, 2 hyperedges, 4 pins", self.run_ok("stats", "g.json").stdout)

    def test_no_hyperedges(self):
        self.file("g.hgr", "0 3\n")
        answer = self.json_of("stats", "g.hgr", "--format", "json")
        self.assertEqual((answer["components"], answer["islands"]), (3, 3))
        self.assertIn("Hyperedge sizes: 0 to 0", self.run_ok("stats", "g.hgr").stdout)

    @unittest.skipIf("ZORPEL_SANITIZED" in os.environ, "sanitizers take memory of their own")
    def test_a_start_fits_in_the_estimate(self):
        grid = [f"{v} {v + 1} {v + 200}" for v in range(1, 39801)]
        self.file("grid.hgr", f"{len(grid)} 40000\n" + "\n".join(grid) + "\n")
        for name, fraction in ((self.example("cpu32.hgr"), None), ("grid.hgr", 4)):
            estimate = self.json_of("stats", name, "--format", "json")["memory_bytes"]
            words = ("partition", name, "-k", 4, "-r", 1, "-q", "-o", "out", "--memory")
            self.run_ok(*words, estimate // 2**20 + 1)
            if fraction:  # and not in a small part of it
                self.fails(6, "Memory", *words, estimate // 2**20 // fraction)

    def test_bad_file(self):
        self.fails(3, "g.hgr:2:3: error H09", "stats", self.file("g.hgr", "1 2\n1 3\n"))


if __name__ == "__main__":
    unittest.main()
