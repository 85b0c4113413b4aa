# SPDX-License-Identifier: MIT
"""verify: figures counted by hand and by zorpel, and files that are wrong on purpose."""

import csv
import io
import itertools
import json
import random
import re
import subprocess
import unittest
from fractions import Fraction

from calls import ZORPEL, Case

# Five vertices of weights 1 to 5; the hyperedges weigh 2, 3 and 4; two of them are cut.
GRAPH = "3 5 11\n2 1 2\n3 2 3 4\n4 4 5 1\n1\n2\n3\n4\n5\n"
PART = "0\n0\n1\n1\n1\n"


class Figures(Case):
    def setUp(self):
        super().setUp()
        self.file("g.hgr", GRAPH)
        self.file("g.part.2", PART)

    def test_figures_counted_by_hand(self):
        answer = self.json_of("verify", "g.hgr", "g.part.2", "--format", "json", "--list-cut")
        self.assertEqual((answer["cut"], answer["soed"], answer["connectivity"]), (7, 14, 7))
        self.assertEqual([part["weight"] for part in answer["parts"]], [3, 12])
        self.assertEqual([part["vertices"] for part in answer["parts"]], [2, 3])
        self.assertEqual([part["external_degree"] for part in answer["parts"]], [7, 7])
        self.assertAlmostEqual(answer["absorption"], 1 + 1 / 2 + 1 / 2, places=12)
        self.assertAlmostEqual(answer["scaled_cost"], (7 / 3 + 7 / 12) / 5, places=15)
        self.assertAlmostEqual(answer["imbalance_percent"], 60)
        self.assertEqual([cut["hyperedge"] for cut in answer["cut_list"]], [2, 3])

    def test_csv_holds_the_same_figures(self):
        answer = self.json_of("verify", "g.hgr", "g.part.2", "--format", "json")
        done = self.run_ok("verify", "g.hgr", "g.part.2", "--format", "csv")
        rows = dict(csv.reader(io.StringIO(done.stdout)))
        for name in ("cut", "soed", "connectivity", "pins", "nparts", "cut_hyperedges"):
            self.assertEqual(int(rows[name]), answer[name])
        self.assertAlmostEqual(float(rows["scaled_cost"]), answer["scaled_cost"], places=15)
        self.assertEqual(rows["absorption"], "2.000000")
        self.assertEqual(rows["part_1_weight"], "12")

    def test_text_lists_the_cut_hyperedges(self):
        done = self.run_ok("verify", "g.hgr", "g.part.2", "--list-cut")
        self.assertIn("Hyperedge cut                       7   (2 of 3 hyperedges)", done.stdout)
        self.assertIn("            3          4          3      2\n", done.stdout)

    def test_quiet_prints_only_what_is_false(self):
        self.assertEqual(self.run_ok("verify", "g.hgr", "g.part.2", "--expect", 7, "-q").stdout, "")
        done = self.fails(1, "it is 7, not 6", "verify", "g.hgr", "g.part.2", "--expect", 6, "-q")
        self.assertEqual(done.stdout.count("\n"), 1)

    def test_sums_need_no_more_than_64_bits(self):
        nets = "".join("1000000000 1 2\n" for _ in range(2))
        self.file("h.hgr", "2 2 1\n" + nets)
        self.file("h.part.2", "0\n1\n")
        answer = self.json_of("verify", "h.hgr", "h.part.2", "--format", "json")
        self.assertEqual((answer["cut"], answer["soed"]), (2_000_000_000, 4_000_000_000))

    def test_absorption_stays_exact_over_a_million_hyperedges(self):
        """In single precision the sum would stop growing by thirds long before."""
        self.file("h.hgr", "1000000 4\n" + "1 2 3 4\n" * 1000000)
        self.file("h.part.3", "0\n0\n1\n2\n")
        done = self.run_ok("verify", "h.hgr", "h.part.3", "--format", "csv")
        self.assertIn("absorption,333333.333333\n", done.stdout)

    def test_random_partitions_against_exact_fractions(self):
        numbers = random.Random(3)
        for k in (2, 3, 7) * 4:
            nets = [numbers.sample(range(20), numbers.randint(1, 6)) for _ in range(30)]
            netwgt = [numbers.randint(1, 50000000) for _ in nets]
            vertexwgt = [numbers.randint(1, 90000000) for _ in range(20)]
            part = [*range(k), *(numbers.randrange(k) for _ in range(20 - k))]
            lines = [" ".join(map(str, [w, *(v + 1 for v in n)])) for w, n in zip(netwgt, nets)]
            self.file("r.hgr", "30 20 11\n" + "\n".join([*lines, *map(str, vertexwgt)]) + "\n")
            self.file("r.part", "".join(f"{p}\n" for p in part))
            touched = [{part[v] for v in net} for net in nets]
            cut = [e for e in range(30) if len(touched[e]) > 1]
            weight = [sum(w for w, p in zip(vertexwgt, part) if p == q) for q in range(k)]
            external = [sum(netwgt[e] for e in cut if q in touched[e]) for q in range(k)]
            absorption = sum(
                Fraction(len(nets[e]) - len(touched[e]), len(nets[e]) - 1) if e in cut else 1
                for e in range(30)
            )
            cost = sum(Fraction(e, w) for e, w in zip(external, weight)) / (20 * (k - 1))
            answer = self.json_of("verify", "r.hgr", "r.part", "-k", k, "--format", "json")
            self.assertEqual(answer["cut"], sum(netwgt[e] for e in cut))
            self.assertEqual(answer["soed"], sum(external))
            self.assertEqual(answer["connectivity"], answer["soed"] - answer["cut"])
            self.assertEqual([part["weight"] for part in answer["parts"]], weight)
            self.assertEqual([part["external_degree"] for part in answer["parts"]], external)
            self.assertEqual(answer["absorption"], float(absorption))
            self.assertEqual(answer["scaled_cost"], float(cost))


class Claims(Case):
    def setUp(self):
        super().setUp()
        self.file("g.hgr", GRAPH)
        self.file("g.part.2", PART)

    def test_fixed_vertices(self):
        self.file("good.fix", "0\n-1\n-1\n1\n-1\n")
        self.file("bad.fix", "0\n-1\n0\n0\n-1\n")
        self.file("one.fix", "0\n-1\n-1\n-1\n-1\n")
        text = self.run_ok("verify", "g.hgr", "g.part.2", "good.fix").stdout
        self.assertIn("2 vertices are where they are fixed", text)
        text = self.run_ok("verify", "g.hgr", "g.part.2", "one.fix").stdout
        self.assertIn("1 vertex is where it is fixed", text)
        self.fails(
            1,
            "2 of 3 fixed vertices are elsewhere; the first is vertex 3, in part 1 " "instead of 0",
            "verify",
            "g.hgr",
            "g.part.2",
            "bad.fix",
        )

    def test_fix_file_of_another_hypergraph(self):
        self.file("short.fix", "0\n-1\n")
        self.fails(3, "short.fix:3:1: error F01", "verify", "g.hgr", "g.part.2", "short.fix")

    def test_balance(self):
        words = ("verify", "g.hgr", "g.part.2", "-b", 5)
        self.fails(1, "part 0 weighs 3, not between 6 and 9", *words)
        self.run_ok("verify", "g.hgr", "g.part.2", "--ubfactor", 40)

    def test_broken_partition_files(self):
        for content, sentence in {
            "0\n": "1 part number for 5 vertices",
            "0\n1\n0\n1\n": "4 part numbers for 5 vertices",
            "0\n1\n0\n1\n0\n1\n": "wrong.part.2:6:1: more entries than the 5 vertices",
            "0\n1\nx\n1\n0\n": "wrong.part.2:3:1: 'x' is not a part number",
            "0\n1\n-1\n1\n0\n": "wrong.part.2:3:1: -1 is not between 0 and 2147483646",
            "0\n1\n9\n1\n0\n": "vertex 3 is in part 9, and there are 2 parts",
            "0\n1\n3000000000\n1\n0\n": "3000000000 is not between",
        }.items():
            self.file("wrong.part.2", content)
            self.fails(3, sentence, "verify", "g.hgr", "wrong.part.2")

    def test_part_beyond_those_asked_for(self):
        self.fails(
            3,
            "vertex 3 is in part 2, and there are 2 parts",
            "verify",
            "g.hgr",
            self.file("w.part.2", "0\n1\n2\n0\n0\n"),
            "-k",
            2,
        )

    def test_the_number_of_parts_is_told_by_the_name_or_asked_for(self):
        """Not by the numbers in the file: parts at the end may be empty."""
        for name in "p p.part p.part. p.part.x p.part.1 p.part.0 p.part.99999999".split():
            self.file(name, PART)
            self.fails(2, "-k is needed", "verify", "g.hgr", name)
            answer = self.json_of("verify", "g.hgr", name, "-k", 3, "--format", "json")
            self.assertEqual(answer["nparts"], 3)
        for name in ("p.part.4", "q.part.2.part.4", "p.part.4.gz"):
            self.file(name, PART)
            answer = self.json_of("verify", "g.hgr", name, "--format", "json")
            self.assertEqual((answer["nparts"], answer["empty_parts"]), (4, [2, 3]))

    def test_empty_parts_are_told(self):
        self.file("g.part.4", "0\n" * 5)
        done = self.run_ok("verify", "g.hgr", "g.part.4")
        self.assertEqual(done.stderr, "zorpelx: 3 of 4 parts are empty: 1, 2, 3\n")
        self.assertIn("3 of 4 parts are empty: 1, 2, 3", done.stdout)
        self.assertIn("300.000 %   above the average", done.stdout)
        done = self.run_ok("verify", "g.hgr", "g.part.4", "--format", "csv")
        self.assertIn("empty_parts,3\n", done.stdout)
        self.assertEqual(self.run_ok("verify", "g.hgr", "g.part.4", "-q").stderr, "")

    def test_a_partition_without_its_last_newline_may_have_been_cut(self):
        self.file("g.part.2", PART[:-1])
        done = self.run_ok("verify", "g.hgr", "g.part.2")
        self.assertIn("g.part.2: the last line has no newline", done.stderr)

    def test_missing_files(self):
        self.fails(5, "No such file", "verify", "absent.hgr", "g.part.2")
        self.fails(5, "No such file", "verify", "g.hgr", "absent.part")


class Reports(Case):
    def partition_by_zorpel(self, name, nparts, *fix):
        self.example(name)
        words = [ZORPEL, name, *fix, nparts, 5, 1, 1, 1, 0, 0, 0]
        done = subprocess.run(list(map(str, words)), cwd=self.folder, capture_output=True)
        self.file("report", done.stdout)
        return f"{name}.part.{nparts}"

    def test_reports_of_zorpel_are_the_same_byte_for_byte(self):
        names = ("mult16.hgr", "fifo.hgr", "cpu32_bus.hgr", "lshape.hgr", "miter6.hgr")
        for name, nparts in itertools.product(names, (2, 3, 5, 11)):
            part = self.partition_by_zorpel(name, nparts)
            if not (self.folder / part).exists():
                continue  # a part stayed empty: the file has another name
            done = self.run_ok("verify", name, part, "--report", "report")
            self.assertIn("bytes are what zorpel prints", done.stdout)

    def test_a_long_sum_is_rounded_as_zorpel_rounds_it(self):
        """In single precision 60000 thirds, fifths and sixths drift away from their true sum."""
        self.file("long.hgr", "60000 8\n" + "1 2 3 4\n5 6 7 8 1 3\n2 4 6 8 1 7 3\n" * 20000)
        words = [ZORPEL, "long.hgr", "4", "5", "1", "1", "1", "0", "0", "0"]
        done = subprocess.run(words, cwd=self.folder, capture_output=True)
        self.file("report", done.stdout)
        self.run_ok("verify", "long.hgr", "long.hgr.part.4", "--report", "report")
        told = re.search(rb"Absorption: *([0-9.]+)", done.stdout).group(1)
        answer = self.json_of("verify", "long.hgr", "long.hgr.part.4", "--format", "json")
        self.assertGreater(abs(float(told) - answer["absorption"]), 0.01)

    def test_every_changed_figure_is_found(self):
        part = self.partition_by_zorpel("cpu32_bus.hgr", 5)
        report = self.text("report")
        begin = report.index("  Summary for")
        end = report.index("\n\nTiming")
        places = [i for i in range(begin, end) if report[i].isdigit()]
        for i in places[1:]:  # the first is the number of parts
            digit = "1" if report[i] != "1" else "2"
            self.file("changed", report[:i] + digit + report[i + 1 :])
            self.fails(1, "FALSE: report", "verify", "cpu32_bus.hgr", part, "--report", "changed")

    def test_a_vertex_moved_in_the_partition_is_found(self):
        part = self.partition_by_zorpel("cpu32_bus.hgr", 5)
        parts = self.text(part).split()
        for v in range(0, len(parts), 7):
            moved = [*parts[:v], str((int(parts[v]) + 1) % 5), *parts[v + 1 :]]
            self.file("moved.part.5", "\n".join(moved) + "\n")
            words = ("verify", "cpu32_bus.hgr", "moved.part.5", "--report", "report")
            self.fails(1, "FALSE: report", *words)

    def test_a_report_of_another_hypergraph(self):
        part = self.partition_by_zorpel("cpu32_bus.hgr", 2)
        self.file("changed", self.text("report").replace("#Hedges:   173", "#Hedges:   174"))
        self.fails(
            1, "its head does not say", "verify", "cpu32_bus.hgr", part, "--report", "changed"
        )

    def test_a_report_cut_short(self):
        part = self.partition_by_zorpel("cpu32_bus.hgr", 2)
        report = self.text("report")
        self.file("changed", report[: report.index("Absorption")])
        self.fails(1, "should read", "verify", "cpu32_bus.hgr", part, "--report", "changed")
        self.file("changed", report[: report.index("\n  Summary")])
        self.fails(1, "no statistics", "verify", "cpu32_bus.hgr", part, "--report", "changed")

    def test_long_reports_take_no_longer_than_they_are(self):
        """2 MB of this took 13 s; the time is of the whole command."""
        part = self.partition_by_zorpel("cpu32_bus.hgr", 2)
        self.file("rubbish", "-nan" * 500000)
        self.fails(
            1,
            "should read",
            *("verify", "cpu32_bus.hgr", part, "--report", "rubbish"),
            timeout=5,
        )

    def test_the_parts_that_a_report_tells_of_are_bounded(self):
        part = self.partition_by_zorpel("cpu32_bus.hgr", 2)
        for number in ("1000001", "100000000000", "99999999999999999999999"):
            self.file("vast", f"\n  Summary for the {number}-way partition:")
            words = ("verify", "cpu32_bus.hgr", part, "--report", "vast")
            self.fails(3, "it names more than 1000000 parts", *words, timeout=5)
        self.file("none", "\n  Summary for the -5-way partition:")
        self.fails(1, "FALSE: report", "verify", "cpu32_bus.hgr", part, "--report", "none")

    def test_a_weightless_part_prints_what_zorpel_prints(self):
        self.file("z.hgr", "1 4 10\n1 2 3 4\n0\n0\n0\n0\n")
        words = [ZORPEL, "z.hgr", "2", "5", "1", "1", "1", "0", "0", "0"]
        done = subprocess.run(words, cwd=self.folder, capture_output=True)
        self.file("report", done.stdout)
        parts = [name for name in self.names() if ".part." in name]
        self.run_ok("verify", "z.hgr", parts[0], "-k", 2, "--report", "report")


class Tables(Case):
    """Partitions as annotate writes them, with names."""

    def setUp(self):
        super().setUp()
        self.file("n.csv", 'net,vertex\nx,a\nx,"b,""c"\ny,"b,""c"\ny,d\nz,d\nz,e\n')
        self.file("n.part.2", "0\n0\n1\n1\n")

    def cut(self, part, *more):
        words = ("verify", "n.csv", part, "-k", 2, "--format", "json", *more)
        return self.json_of(*words)["cut"]

    def test_what_annotate_writes_is_a_partition(self):
        for table in ("p.csv", "p.tsv"):
            self.run_ok("annotate", "n.csv", "n.part.2", "-o", table)
            self.assertEqual(self.cut(table), 1)

    def test_rows_may_come_in_any_order_with_dos_lines_and_a_mark(self):
        rows = 'vertex,part\r\ne,1\r\n"b,""c",1\r\n"a",0\r\nd,0'
        self.file("p.csv", b"\xef\xbb\xbf" + rows.encode())
        self.assertEqual(self.cut("p.csv"), 3)

    def test_numbers_name_vertices_without_names(self):
        self.file("g.hgr", GRAPH)
        self.file("p.csv", "vertex,part\n5,1\n4,1\n3,1\n2,0\n1,0\n")
        words = ("verify", "g.hgr", "p.csv", "-k", 2, "--format", "json")
        self.assertEqual(self.json_of(*words)["cut"], 7)

    def test_compare_and_report_read_them(self):
        self.run_ok("annotate", "n.csv", "n.part.2", "-o", "p.csv")
        self.run_ok("compare", "n.csv", "n.part.2", "p.csv", "-k", 2)
        self.run_ok("report", "n.csv", "n.part.2", "p.csv", "-k", 2, "-o", "r.html")

    def test_a_name_of_several_vertices_is_told(self):
        cells = {name: {"type": "x", "connections": {"A": [2]}} for name in ("y", "z")}
        module = {"ports": {"z": {"direction": "input", "bits": [2]}}, "cells": cells, "netnames": {}}
        self.file("m.json", json.dumps({"creator": "test", "modules": {"m": module}}))
        self.file("p.csv", "vertex,part\ny,0\nz,1\nz,0\n")  # as annotate orders them
        words = ("verify", "m.json", "p.csv", "-k", 2, "--format", "json")
        self.assertEqual(self.json_of(*words)["cut"], 1)
        self.file("p.csv", "vertex,part\nz,1\ny,0\nz,0\n")
        self.fails(3, "p.csv:2:1: several vertices are called 'z'", "verify", "m.json", "p.csv", "-k", 2)

    def test_wrong_rows_are_named_with_their_line(self):
        good = 'a,0\n"b,""c",0\nd,1\n'
        for rows, sentence in (
            (good, "p.csv: vertex 'e' has no row"),
            (good + "q,1\n", "p.csv:5:1: no vertex is called 'q'"),
            (good + "d,1\n", "p.csv:5:1: vertex 'd' has a part already"),
            (good + "e,x\n", "p.csv:5:3: 'x' is not a part number"),
            (good + "e,-1\n", "p.csv:5:3: part -1 is not between 0 and 2147483646"),
            (good + "e\n", "p.csv:5:1: a row without a part"),
            (good + "e,1,1\n", "p.csv:5:5: a row of more than a name and a part"),
            (good + 'e,"1"2\n', "p.csv:5:6: '2' behind a closing quote"),
            (good + '"e,1\n', "p.csv:5:1: a quoted field has no closing quote"),
        ):
            self.file("p.csv", "vertex,part\n" + rows)
            self.fails(3, sentence, "verify", "n.csv", "p.csv", "-k", 2)

    def test_a_mark_in_front_of_part_numbers_is_passed_over(self):
        self.file("m.part.2", b"\xef\xbb\xbf0\n0\n1\n1\n")
        self.assertEqual(self.cut("m.part.2"), 1)


if __name__ == "__main__":
    unittest.main()
