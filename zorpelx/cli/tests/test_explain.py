# SPDX-License-Identifier: MIT
"""What explain says holds for every partition within the bounds, and is tight where it can be."""

import itertools
import random
import unittest

from calls import EXAMPLES, Case


class Explain(Case):
    def explain(self, *words, status=0):
        return self.json_of("explain", *words, "--format", "json", status=status)

    def random_graph(self, seed):
        """A small hypergraph, often in several components, with heavy vertices now and then."""
        numbers = random.Random(seed)
        n = numbers.randint(4, 8)
        half = n // 2
        nets = []
        for _ in range(numbers.randint(2, 8)):
            pool = range(1, n + 1) if numbers.random() < 0.5 else range(1, half + 1)
            size = numbers.randint(1, min(4, len(pool)))
            nets.append((numbers.randint(1, 5), numbers.sample(pool, size)))
        weights = [numbers.choice((1, 1, 2, 3, 7)) for _ in range(n)]
        lines = [f"{len(nets)} {n} 11"]
        lines += [" ".join(map(str, [w, *pins])) for w, pins in nets] + [str(w) for w in weights]
        self.file("g.hgr", "\n".join(lines) + "\n")
        return nets, weights

    def test_bounds_hold_for_every_partition(self):
        met = {"feasible": 0, "infeasible": 0, "undecided": 0}
        tight = uncut = forced = 0
        for seed in range(120):
            nets, weights = self.random_graph(seed)
            k, epsilon = random.Random(seed).choice(((2, 10), (3, 30), (2, 60), (3, 5)))
            fix = [-1] * len(weights)
            if seed % 3 == 0:
                fix[0], fix[1] = 0, 1
            self.file("fix", "".join(f"{p}\n" for p in fix))
            words = ("g.hgr", "-k", k, "--epsilon", epsilon, "--fix", "fix")
            status = self.call("explain", *words).returncode
            answer = self.explain(*words, status=status)
            most = answer["balance"]["most"]
            self.assertEqual(most, int((100 + epsilon) * -(-sum(weights) // k) / 100 + 1e-9))
            best, lightest = None, None
            for part in itertools.product(range(k), repeat=len(weights)):
                if any(f not in (-1, p) for f, p in zip(fix, part)):
                    continue
                loads = [sum(w for w, p in zip(weights, part) if p == q) for q in range(k)]
                lightest = min(lightest or max(loads), max(loads))
                if max(loads) > most:
                    continue
                touched = [(w, len({part[v - 1] for v in pins})) for w, pins in nets]
                found = (
                    sum(w for w, t in touched if t > 1),
                    sum(w * (t - 1) for w, t in touched),
                    sum(w * t for w, t in touched if t > 1),
                )
                best = found if best is None else tuple(map(min, best, found))
            verdict = answer["balance"]["verdict"]
            met[verdict] += 1
            self.assertLessEqual(answer["balance"]["least_heaviest"], lightest)
            self.assertGreaterEqual(answer["balance"]["packed_heaviest"], lightest)
            if verdict != "undecided":
                self.assertEqual(verdict == "feasible", best is not None, seed)
            self.assertEqual(status, 4 if verdict == "infeasible" else 0)
            cut = answer["cut"]
            if best is None:
                continue
            told = (cut["least_cut"], cut["least_connectivity"], cut["least_soed"])
            for bound, value in zip(told, best):
                self.assertLessEqual(bound, value, (seed, told, best))
            tight += told == best
            forced += cut["forced_hyperedges"] > 0
            if cut["can_be_uncut"]:
                self.assertEqual(best[0], 0)
                uncut += 1
        self.assertGreater(min(met["feasible"], met["infeasible"], tight, uncut, forced), 5)

    def test_what_is_in_the_way_is_named(self):
        self.file("heavy.hgr", "1 4 10\n1 2\n3\n90\n3\n4\n")
        text = self.call("explain", "heavy.hgr", "-k", 2).stdout
        self.assertIn("1 vertex is heavier than a part may be; the heaviest, 2, weighs 90.", text)
        self.assertIn("At least --epsilon 80 would be needed.", text)
        self.assertIn("No partition is within these bounds.", text)
        fits = self.run_ok("explain", "heavy.hgr", "-k", 2, "-e", 80).stdout  # just so: 90 of 90
        self.assertNotIn("heavier than a part may be", fits)
        self.assertEqual(self.call("explain", "heavy.hgr", "-k", 2, "-e", 75).returncode, 4)
        self.file("two.hgr", "2 6\n1 2 3\n4 5 6\n")
        text = self.run_ok("explain", "two.hgr", "-k", 2).stdout
        self.assertIn("There are 2 components, the heaviest with 50.0 % of the weight.", text)
        self.assertIn("a partition with cut 0 exists", text)
        self.file("fix", "0\n1\n-1\n-1\n-1\n-1\n")
        text = self.run_ok("explain", "two.hgr", "-k", 2, "--fix", "fix").stdout
        self.assertIn("1 hyperedge has vertices fixed in several parts and must be cut.", text)
        self.assertIn("a cut below 1, connectivity minus one below 1, a sum of external", text)
        self.file("fix", "0\n0\n0\n0\n-1\n-1\n")
        text = self.call("explain", "two.hgr", "-k", 2, "--fix", "fix").stdout
        self.assertIn("4 vertices are fixed; most of their weight is in part 0, 4 of 3", text)
        self.file("star.hgr", "1 9\n1 2 3 4 5 6 7 8\n")
        text = self.run_ok("explain", "star.hgr", "-k", 3).stdout
        self.assertIn("1 hyperedge is heavier than a part and cut in every partition.", text)
        self.assertIn("Of these, hyperedge 1 touches at least 3 parts.", text)
        self.assertIn("and 1 vertex in no hyperedge", text)

    def test_times_grow_with_presets_and_sizes(self):
        small = self.explain(EXAMPLES / "fifo.hgr", "-k", 2)
        large = self.explain(EXAMPLES / "cpu32.hgr", "-k", 2)
        parts = self.explain(EXAMPLES / "cpu32.hgr", "-k", 32)
        for less, more in ((small, large), (large, parts)):
            for preset in ("fast", "default", "best"):
                self.assertLess(less["expected_seconds"][preset], more["expected_seconds"][preset])
        seconds = large["expected_seconds"]
        self.assertLess(seconds["fast"], seconds["default"])
        self.assertLess(seconds["default"], seconds["best"])
        self.assertEqual(small["preset"], "best")

    def test_the_preset_gets_faster_with_size(self):
        n = 100000
        line = " ".join(str(1 + i) for i in range(1000))
        for copies, preset in ((20, "best"), (2500, "default")):
            self.file("g.hgr", f"{copies} {n}\n" + f"{line}\n" * copies)
            self.assertEqual(self.explain("g.hgr", "-k", 64)["preset"], preset)

    def test_odd_hypergraphs(self):
        self.file("empty.hgr", "0 3\n")
        text = self.run_ok("explain", "empty.hgr", "-k", 2, "-e", 50).stdout
        self.assertIn("There are 0 components", text)
        self.file("weightless.hgr", "1 2 10\n1 2\n0\n0\n")
        self.run_ok("explain", "weightless.hgr", "-k", 2)
        self.fails(3, "error H09", "explain", self.file("bad.hgr", "1 2\n1 9\n"), "-k", 2)


if __name__ == "__main__":
    unittest.main()
