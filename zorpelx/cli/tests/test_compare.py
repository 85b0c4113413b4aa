# SPDX-License-Identifier: MIT
"""Two partitions compared: figures, agreement, what each gains."""

import itertools
import math
import random
import unittest

from calls import Case, random_hypergraph

def figures(nets, part):
    """Cut, connectivity minus one and sum of external degrees, counted plainly."""
    cut = km1 = soed = 0
    for weight, pins in nets:
        touched = len({part[v - 1] for v in pins})
        if touched > 1:
            cut += weight
            km1 += weight * (touched - 1)
            soed += weight * touched
    return cut, km1, soed


def best_match(a, b, k, weights):
    """The most weight in matched parts: of the first parts of a with every set of parts of b."""
    overlap = [[0] * k for _ in range(k)]
    for x, y, weight in zip(a, b, weights):
        overlap[x][y] += weight
    best = {0: 0}
    for row in overlap:
        longer = {}
        for taken, sum_ in best.items():
            for y in range(k):
                if not taken >> y & 1:
                    key = taken | 1 << y
                    longer[key] = max(longer.get(key, 0), sum_ + row[y])
        best = longer
    return best[2**k - 1]


def adjusted_rand(a, b):
    """By counting pairs of vertices."""
    both = in_a = in_b = 0
    for u, v in itertools.combinations(range(len(a)), 2):
        both += a[u] == a[v] and b[u] == b[v]
        in_a += a[u] == a[v]
        in_b += b[u] == b[v]
    chance = in_a * in_b / math.comb(len(a), 2)
    most = (in_a + in_b) / 2
    return 1 if most == chance else (both - chance) / (most - chance)


class Compare(Case):
    def partition(self, name, part):
        return self.file(name, "".join(f"{p}\n" for p in part))

    def compare(self, *words):
        return self.json_of("compare", *words, "--format", "json")

    def random_case(self, seed, k, n=60):
        numbers = random.Random(seed)
        nets = [
            (numbers.randint(1, 5), numbers.sample(range(1, n + 1), numbers.randint(2, 6)))
            for _ in range(2 * n)
        ]
        weights = [numbers.randint(0, 4) for _ in range(n)]
        lines = [f"{len(nets)} {n} 11"]
        lines += [" ".join(map(str, [w, *pins])) for w, pins in nets] + [str(w) for w in weights]
        self.file("g.hgr", "\n".join(lines) + "\n")
        a = [numbers.randrange(k) for _ in range(n)]
        b = [p if numbers.random() < 0.6 else numbers.randrange(k) for p in a]
        order = numbers.sample(range(k), k)
        b = [order[p] for p in b]
        self.partition("a", a)
        self.partition("b", b)
        return nets, weights, a, b

    def test_figures_agreement_and_gains_are_those_of_plain_counts(self):
        for seed in range(12):
            k = 2 + seed % 4
            nets, weights, a, b = self.random_case(seed, k)
            objective = ("cut", "km1", "soed")[seed % 3]
            words = ("-k", k, "--objective", objective, "--top", 200)
            answer = self.compare("g.hgr", "a", "b", *words)
            for side, part in (("a", a), ("b", b)):
                told = answer[side]
                self.assertEqual(
                    (told["cut"], told["connectivity"], told["soed"]), figures(nets, part)
                )
            agreement = answer["agreement"]
            self.assertEqual(agreement["weight"], best_match(a, b, k, weights))
            self.assertEqual(agreement["moved_weight"], sum(weights) - agreement["weight"])
            self.assertEqual(agreement["moved_vertices"], len(a) - agreement["vertices"])
            self.assertAlmostEqual(agreement["adjusted_rand"], adjusted_rand(a, b), 9)
            which = ("cut", "km1", "soed").index(objective)
            gains = {"a": {}, "b": {}}
            for e, net in enumerate(nets, 1):
                change = figures([net], b)[which] - figures([net], a)[which]
                if change:
                    gains["a" if change > 0 else "b"][e] = abs(change)
            for side in "ab":
                told = answer[f"cheaper_in_{side}"]
                self.assertEqual({g["hyperedge"]: g["gain"] for g in told["first"]}, gains[side])
                listed = [g["gain"] for g in told["first"]]
                self.assertEqual(listed, sorted(listed, reverse=True))
                self.assertEqual((told["count"], told["gain"]), (len(listed), sum(listed)))

    def test_the_matching_of_more_parts_is_the_best(self):
        for seed in range(15):
            k = 8 + seed % 6
            _, weights, a, b = self.random_case(seed, k, n=200)
            weight = self.compare("g.hgr", "a", "b", "-k", k)["agreement"]["weight"]
            self.assertEqual(weight, best_match(a, b, k, weights))

    def test_numbers_of_parts_mean_nothing(self):
        self.file("g.hgr", random_hypergraph(100, 200))
        part = [v % 5 for v in range(100)]
        self.partition("a", part)
        self.partition("b", [(p + 2) % 5 for p in part])
        answer = self.compare("g.hgr", "a", "b")
        self.assertEqual(answer["nparts"], 5)
        self.assertEqual(answer["agreement"]["moved_vertices"], 0)
        self.assertEqual(answer["agreement"]["adjusted_rand"], 1)
        self.assertIsNone(answer["better"])
        self.assertIn("with other numbers for the parts", answer["verdict"])
        text = self.run_ok("compare", "g.hgr", "a", "a").stdout
        self.assertIn("They are the same partition.", text)

    def test_the_better_one_is_named_with_its_reason(self):
        # a path 1-2-3-4-5-6 with a heavy end
        self.file("g.hgr", "5 6 1\n1 1 2\n5 2 3\n1 3 4\n5 4 5\n2 5 6\n")
        self.partition("even", [0, 0, 0, 1, 1, 1])
        self.partition("dear", [0, 0, 1, 1, 1, 0])
        self.partition("uneven", [0, 1, 1, 1, 1, 1])
        answer = self.compare("g.hgr", "dear", "even")
        self.assertEqual(answer["better"], "b")
        self.assertIn("cut 1 instead of 7, 85.7 % less", answer["verdict"])
        answer = self.compare("g.hgr", "even", "uneven")
        self.assertEqual(answer["better"], "a")
        self.assertIn("within --epsilon 3, the other has 2 of weight too much", answer["verdict"])
        answer = self.compare("g.hgr", "even", "uneven", "--epsilon", 80)
        self.assertEqual(answer["better"], "a")
        self.assertIn("its heaviest part is lighter", answer["verdict"])
        self.partition("one", [0, 0, 0, 0, 0, 0])  # cut 0, but no bound is kept
        answer = self.compare("g.hgr", "one", "even", "-k", 2)
        self.assertEqual((answer["a"]["cut"], answer["better"]), (0, "b"))
        text = self.run_ok("compare", "g.hgr", "dear", "even").stdout
        self.assertIn("Cheaper in B: 2 hyperedges, by 7 in all", text)
        self.assertIn("B is better: cut 1 instead of 7", text)

    def test_the_table_has_the_figures_of_the_answer(self):
        self.random_case(3, 4)
        words = ("g.hgr", "a", "b", "-k", 4, "--epsilon", 200)
        answer, text = self.compare(*words), self.run_ok("compare", *words).stdout
        for name, field in (
            ("Hyperedge cut", "cut"),
            ("Cut hyperedges", "cut_hyperedges"),
            ("Connectivity minus one", "connectivity"),
            ("Sum of external degrees", "soed"),
        ):
            a, b = answer["a"][field], answer["b"][field]
            self.assertRegex(text, rf"\n +{name} +{a} +{b} +[+]?{b - a}\n")
        a, b = (answer[side]["imbalance_percent"] for side in "ab")
        self.assertRegex(text, rf"Heaviest part above +{a:.3f} % +{b:.3f} % +[+-]")
        for pair in answer["agreement"]["matched"]:
            row = " +".join(str(pair[key]) for key in ("a", "b", "vertices", "weight"))
            self.assertRegex(text, rf"\n +{row}\n")
        for side in "ab":
            told = answer[f"cheaper_in_{side}"]
            line = rf"Cheaper in {side.upper()}: {told['count']} hyperedges?, by {told['gain']} in all"
            self.assertRegex(text, line)

    def test_better_is_what_partition_prefers(self):
        self.example("fifo.hgr")
        for preset in ("fast", "best"):
            self.run_ok("partition", "fifo.hgr", "-k", 4, "--preset", preset, "-o", preset)
        answer = self.compare("fifo.hgr", "fast", "best")
        self.assertEqual(answer["better"], "b" if answer["a"]["cut"] > answer["b"]["cut"] else None)

    def test_more_parts_than_are_matched_exactly(self):
        n = 2500
        self.file("g.hgr", f"1 {n}\n1 2\n")
        part = [v % 1200 for v in range(n)]
        self.partition("a", part)
        self.partition("b", [1199 - p for p in part])
        agreement = self.compare("g.hgr", "a", "b")["agreement"]
        self.assertEqual(agreement["moved_vertices"], 0)

    def test_files_that_do_not_fit(self):
        self.file("g.hgr", "1 3\n1 2\n")
        self.partition("a", [0, 1, 1])
        self.partition("b", [0, 1])
        self.fails(3, "b", "compare", "g.hgr", "a", "b")
        self.partition("c", [0, 1, 4])
        sentence = "c: vertex 3 is in part 4, and there are 2 parts"
        self.fails(3, sentence, "compare", "g.hgr", "a", "c", "-k", 2)
        self.fails(5, "absent", "compare", "g.hgr", "a", "absent")


if __name__ == "__main__":
    unittest.main()
