# SPDX-License-Identifier: MIT
"""Vertices chosen by patterns of their names, and by numbers."""

import random
import unittest

import zorpel
from zorpel import _patterns

CHAIN = {"e%d" % i: ["u_core/g%d" % i, "u_core/g%d" % (i + 1)] for i in range(5)}
CHAIN["io"] = ["u_core/g0", "u_io/p[0]", "u_io/p[1]"]


def in_set(pattern, at, c):
    """Whether c is in the set behind pattern[at], and where the set ends; None without an end."""
    negated = pattern[at + 1 : at + 2] in (b"!", b"^")
    begin = i = at + 1 + negated
    found = False
    while i < len(pattern):
        if pattern[i] == ord("]") and i > begin:
            return found != negated, i + 1
        least = most = pattern[i]
        if i + 2 < len(pattern) and pattern[i + 1] == ord("-") and pattern[i + 2] != ord("]"):
            i += 2
            most = pattern[i]
        found = found or least <= c <= most
        i += 1
    return None


def fits(name, pattern):
    """The plain rule, one character at a time."""
    if not pattern:
        return not name
    if pattern[:1] == b"*":
        return any(fits(name[i:], pattern[1:]) for i in range(len(name) + 1))
    if not name:
        return False
    behind, same = 1, pattern[:1] == name[:1]
    if pattern[:1] == b"?":
        same = True
    elif pattern[:1] == b"[" and in_set(pattern, 0, name[0]) is not None:
        same, behind = in_set(pattern, 0, name[0])
    elif pattern[:1] == b"\\" and len(pattern) > 1:
        behind, same = 2, pattern[1:2] == name[:1]
    return same and fits(name[1:], pattern[behind:])


class PatternTest(unittest.TestCase):
    def test_patterns_fit_as_the_plain_rule_says(self):
        draw = random.Random(1)
        fitted = 0
        for _ in range(20000):
            pattern = bytes(draw.choice(b"ab*?[]!^-\\.") for _ in range(draw.randrange(8)))
            name = bytes(draw.choice(b"ab-]\\.") for _ in range(draw.randrange(6)))
            expected = fits(name, pattern)
            found = _patterns.expression(pattern).fullmatch(name) is not None
            self.assertEqual(found, expected, (name, pattern))
            fitted += expected
        self.assertGreater(fitted, 500)


class FixTest(unittest.TestCase):
    def test_vertices_are_fixed_by_name(self):
        graph = zorpel.as_hypergraph(CHAIN)
        made = zorpel.partition(graph, 2, 50, fix={"u_core/*": 0, "u_io/p\\[?]": 1})
        names = graph.vertex_names
        self.assertEqual({names[v] for v in range(graph.nvtxs) if made.part[v] == 1}, {"u_io/p[0]", "u_io/p[1]"})

    def test_the_last_pattern_that_fits_counts(self):
        graph = zorpel.as_hypergraph(CHAIN)
        part = zorpel.partition(graph, 2, 100, fix={"*": 1, "u_core/g3": 0}).part
        self.assertEqual([graph.vertex_names[v] for v in range(graph.nvtxs) if part[v] == 0], ["u_core/g3"])

    def test_vertices_without_names_go_by_their_numbers(self):
        made = zorpel.partition([[0, 1], [1, 2], [2, 3]], 2, 100, fix={0: 1, "[1-3]": 0})
        self.assertEqual(list(made.part), [1, 0, 0, 0])

    def test_groups_stay_together_by_name(self):
        graph = zorpel.as_hypergraph(CHAIN)
        made = zorpel.partition(graph, 2, 60, together={"*g[05]": 7, "u_io/*": 7})
        names = graph.vertex_names
        kept = {made.part[v] for v in range(graph.nvtxs) if names[v][-2:] in ("g0", "g5", "0]", "1]")}
        self.assertEqual(len(kept), 1)

    def test_what_cannot_be_meant_is_told(self):
        for fix, sentence in [
            ({"nobody*": 1}, "fix: no vertex has a name like 'nobody\\*'"),
            ({"u_io/*": "1"}, "is '1' instead of an integer"),
            ({"u_io/*": 2**31}, "does not fit 32 bits"),
            ({"u_io/*": 2}, r"fix\[.*\] is 2"),
            ({99: 1}, "there is no vertex 99, but 8 from 0"),
            ({1.5: 1}, "is 1.5 instead of an integer"),
        ]:
            with self.assertRaisesRegex(zorpel.InputError, sentence):
                zorpel.partition(CHAIN, 2, fix=fix)


if __name__ == "__main__":
    unittest.main()
