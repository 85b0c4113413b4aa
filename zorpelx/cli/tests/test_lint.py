# SPDX-License-Identifier: MIT
"""lint: a corpus of bad files, each with the rule, line and column that must be found."""

import json
import random
import subprocess
import unittest

from calls import ZORPEL, Case

LONG = "1 2 " + "3 " * 70000  # more characters than zorpel reads at once

# rule: (file, line, column, severity)
CORPUS = {
    "H01": ("% nothing\n", 0, 0, "error"),
    "H02": ("7\n1 2\n", 1, 2, "error"),
    "H03": ("1 2 0 5\n1 2\n", 1, 7, "warning"),
    "H04": ("1 2 100\n1 2\n", 1, 5, "error"),
    "H05": ("1 2 20\n1 2\n3\n4\n", 1, 5, "warning"),
    "H06": ("1 1\n1\n", 1, 1, "error"),
    "H07": ("1 2\n1 99999999999999999999\n", 2, 3, "error"),
    "H08": ("2 3\n1 2 3\n", 3, 1, "error"),
    "H09": ("2 3\n1 2\n2 4\n", 3, 3, "error"),
    "H10": ("2 3\n\n1 2 3\n", 2, 1, "error"),
    "H11": ("1 3\n1 2 3 2\n", 2, 7, "warning"),
    "H12": ("1 3\n1 2 3 0 1\n", 2, 7, "error"),
    "H13": ("2 3\n1 0\n2 1 0\n", 2, 3, "error"),
    "H14": ("1 3\n1 2 3, 2\n", 2, 6, "error"),
    "H15": ("2 3\n1 2 3\n2\n", 3, 1, "warning"),
    "H16": ("2 3 1\n5 1 2 3\nx 1 2\n", 3, 1, "error"),
    "H17": ("2 3 1\n5 1 2 3 1 2 3\n0 1 2\n", 3, 1, "warning"),
    "H18": ("1 2 11\n1 1 2\n4\n-4\n", 4, 1, "error"),
    "H19": ("1 3 10\n1 2 3\n1\n1\n", 5, 1, "error"),
    "H20": ("1 3 10\n1 2 3\n1\n\n1\n", 4, 1, "error"),
    "H21": ("1 3 10\n1 2 3\n1\n0\n1\n", 4, 1, "note"),
    "H22": ("1 3 10\n1 2 3\n1 5\n1\n1\n", 3, 3, "error"),
    "H23": ("1 2 10\n1 2\n2147483646\n1\n", 4, 1, "error"),
    "H24": ("1 2 10\n1 2\n0\n0\n", 3, 1, "warning"),
    "H25": ("1 3\n1 2 3\n2 3\n", 3, 1, "error"),
    "H26": (f"1 3\n{LONG}\n", 2, 131072, "warning"),
    "H27": ("1 3\n1 2 3 % all\n", 2, 7, "warning"),
    "H28": ("1 3\r\n1 2 3\r\n", 1, 1, "note"),
    "H29": ("\ufeff1 3\n1 2 3\n", 1, 1, "error"),
    "H30": ("1 3 1\n0 1 2 3\n", 2, 1, "error"),
    "H31": ("% c\n1 3\n1 2\n", 2, 1, "note"),
    "H32": ("2 3\n1 2 3\n3 1 2\n", 3, 1, "note"),
    "H33": ("1 2000000000\n1 2\n", 1, 1, "error"),
    "H34": ("%PDF-1.4\n2 3 0\n1 2\n2 3\n", 1, 1, "error"),
    "H35": ("1 3\n1 2 3", 2, 6, "warning"),
    "H36": ("p cnf 3 2\n1 -2 3 0\n0\n", 0, 0, "note"),
    "H37": ("p cnf 3 3\n1 -2 3 0\n-1 2 0\n", 4, 1, "warning"),
}
# Traps that share a rule with one above.
MORE = [
    ("H12", "1 3\n1 -2 3\n", 2, 3, "error"),
    ("H18", "2 3 1\n5 1 2 3\n-1 1 2\n", 3, 1, "error"),
    ("H19", "1 3 10\n1 2 3\n", 3, 1, "error"),
    ("H20", "1 3 10\n1 2 3\n1\nx\n1\n", 4, 1, "error"),
    ("H23", "2 2 1\n2147483646 1 2\n1 1 2\n", 3, 1, "error"),
    ("H25", "1 3\n1 2 3\n\n\nthe end\n", 5, 1, "warning"),
    ("H26", f"1 3\n% {LONG}\n1 2 3\n", 2, 131072, "warning"),
    ("H03", "1 3 x\n1 2 3\n", 1, 5, "error"),  # no format code, and all weights with it
    ("H03", "1 3 1.5\n1 2 3\n", 1, 6, "error"),
    ("H14", "1 3 1\n1.5 2 3\n", 2, 2, "error"),
    ("H14", "1 3\n1 2.0 3\n", 2, 4, "error"),
    ("H22", "1 3 10\n1 2 3\n1.5\n1\n1\n", 3, 2, "error"),
    ("H27", "1 3 % sizes\n1 2 3\n", 1, 5, "warning"),
    ("H27", "1 3 10\n1 2 3\n1 % area\n1\n1\n", 3, 3, "warning"),
    ("H10", "2 3\n1 2\n\n", 3, 1, "error"),  # zorpel takes the blank line for the last hyperedge
    ("H30", "1 7 1\n0 7 4\n", 2, 1, "error"),
    ("H34", "/* made by hand */\n<graphml>\n", 1, 1, "error"),
]
# Errors of files that lose vertices, weights or entries; --force goes on without them.
LOSSES = "H12 H13 H14 H16 H20 H22 H25 H30 H34 F01 F02 F05".split()
UNMENDABLE = "H01 H02 H04 H06 H07 H08 H09 H18 H19 H23 H33".split()

FIX_CORPUS = {
    "F01": ("0\n-1\n", 3, 1, "error"),
    "F02": ("0\nx\n1\n", 2, 1, "error"),
    "F03": ("0\n-2\n1\n", 2, 1, "error"),
    "F04": ("0\n-1\n2\n", 3, 1, "error"),
    "F05": ("0\n-1\n1\n0\n", 4, 1, "error"),
    "F06": ("0 -1\n1\n", 1, 3, "note"),
    "F07": ("0\n3000000000\n1\n", 2, 1, "error"),
    "F08": ("-1\n-1\n-1\n", 0, 0, "note"),
    "F09": ("0\n-1\n1", 3, 2, "warning"),
}


class Corpus(Case):
    def find(self, answer, rule):
        found = [finding for finding in answer["findings"] if finding["rule"] == rule]
        self.assertTrue(found, f"{rule} is not among {answer['counts']}")
        return found[0]

    def check(self, answer, rule, line, column, severity):
        finding = self.find(answer, rule)
        self.assertEqual(
            (finding["line"], finding["column"], finding["severity"]),
            (line, column, severity),
            rule,
        )

    def test_every_rule_of_hypergraph_files(self):
        for rule, (content, line, column, severity) in CORPUS.items():
            self.file("g.hgr", content)
            done = self.call("lint", "g.hgr", "--format", "json")
            answer = json.loads(done.stdout)
            self.check(answer, rule, line, column, severity)
            self.assertEqual(done.returncode, 3 if answer["errors"] else 0, rule)
            if severity != "error":
                self.assertEqual(answer["errors"], 0, rule)

    def test_other_traps_of_the_same_rules(self):
        for rule, content, line, column, severity in MORE:
            self.file("g.hgr", content)
            status = 3 if severity == "error" else 0
            answer = self.json_of("lint", "g.hgr", "--format", "json", status=status)
            self.check(answer, rule, line, column, severity)

    def test_every_rule_of_fix_files(self):
        self.file("g.hgr", "1 3\n1 2 3\n")
        for rule, (content, line, column, severity) in FIX_CORPUS.items():
            self.file("g.fix", content)
            status = 3 if severity == "error" else 0
            answer = self.json_of(
                "lint", "g.hgr", "g.fix", "-k", 2, "-b", 30, "--format", "json", status=status
            )
            self.check(answer, rule, line, column, severity)

    def test_tables_that_fix_vertices_are_read_too(self):
        self.file("g.hgr", "1 3\n1 2 3\n")
        self.file("pads.csv", "vertex,part\n3,1\n")
        answer = self.json_of("lint", "g.hgr", "pads.csv", "-k", 2, "-b", 30, "--format", "json")
        (finding,) = [one for one in answer["findings"] if one["file"] == "pads.csv"]
        self.assertIn("zorpelx reads and zorpel does not", finding["text"])
        self.assertEqual((finding["severity"], finding["line"]), ("note", 1))
        self.file("pads.csv", "vertex,part\n3,2\n")
        self.fails(3, "pads.csv:2:3: part 2 is not between -1 and 1", "lint", "g.hgr", "pads.csv", "-k", 2)

    def test_partition_refuses_what_lint_calls_an_error(self):
        for rule, (content, _, _, severity) in CORPUS.items():
            self.file("g.hgr", content)
            words = ("partition", "g.hgr", "-k", 2, "-b", 49, "-o", "out")
            if severity == "error":
                self.fails(3, f"error {rule}", *words)
                self.assertNotIn("out", self.names(), rule)
            words += ("--force",)
            if severity == "error" and rule not in LOSSES:
                self.fails(3, f"error {rule}", *words)
                self.assertNotIn("out", self.names(), rule)
            else:
                self.assertIn(self.call(*words).returncode, (0, 4), rule)
                (self.folder / "out").unlink()
            if severity == "warning":
                self.fails(3, "warning", *words, "--strict")

    def test_partition_refuses_bad_fix_files(self):
        self.file("g.hgr", "1 3\n1 2 3\n")
        for rule, (content, _, _, severity) in FIX_CORPUS.items():
            self.file("g.fix", content)
            words = ("partition", "g.hgr", "-k", 2, "--fix", "g.fix", "-b", 40, "-o", "out")
            if severity == "error":
                self.fails(3, f"error {rule}", *words)
            if severity != "error" or rule in LOSSES:
                self.run_ok(*words, "--force")

    def test_other_commands_tell_of_warnings(self):
        self.file("g.hgr", CORPUS["H11"][0])
        self.file("g.part.2", "0\n1\n0\n")
        for words in (
            ("stats", "g.hgr"),
            ("verify", "g.hgr", "g.part.2"),
            ("partition", "g.hgr", "-k", 2, "-b", 40),
        ):
            told = "zorpelx: g.hgr: 1 warning; zorpelx lint says more\n"
            self.assertEqual(self.run_ok(*words).stderr.splitlines(True)[0], told)
            if words[0] != "stats":
                self.assertEqual(self.run_ok(*words, "--quiet").stderr, "")

    def test_strict_takes_warnings_for_errors(self):
        self.file("g.hgr", CORPUS["H11"][0])
        self.run_ok("lint", "g.hgr")
        self.fails(3, "H11", "lint", "g.hgr", "--strict")

    def test_notes_are_summed_up_in_one_line(self):
        self.file("g.hgr", "3 9\r\n1 2\r\n1 3\r\n2 1\r\n")
        done = self.run_ok("lint", "g.hgr")
        notes = "1 x H28 line-ends, 6 x H31 isolated, 1 x H32 twin-hyperedges"
        self.assertEqual(
            done.stdout,
            f"g.hgr: notes: {notes} (--notes shows them)\n"
            "0 errors, 0 warnings, 8 notes; zorpel reads the hypergraph\n",
        )
        self.assertEqual(self.run_ok("lint", "g.hgr", "--notes").stdout.count(": note "), 8)
        answer = self.json_of("lint", "g.hgr", "--format", "json")
        self.assertEqual((answer["notes"], len(answer["findings"])), (8, 8))

    def test_limit_counts_what_it_does_not_show(self):
        self.file("g.hgr", "30 3\n" + "1 2 3 1\n" * 30)
        done = self.run_ok("lint", "g.hgr", "--limit", 2)
        self.assertEqual(done.stdout.count("repeated-pin: vertex"), 2)
        self.assertIn("H11 repeated-pin: 28 more", done.stdout)
        done = self.run_ok("lint", "g.hgr", "--limit", 0)
        self.assertEqual(done.stdout.count("repeated-pin: vertex"), 30)

    def test_examples_are_without_warnings(self):
        for name in ("mult16", "fifo", "cpu32", "cpu32_bus", "lshape", "miter6"):
            self.run_ok("lint", self.example(name + ".hgr"), "--strict")


class Clean(Case):
    def test_every_mendable_file_is_mended(self):
        for rule, (content, _, _, _) in CORPUS.items():
            self.file("g.hgr", content)
            if rule in UNMENDABLE:
                self.fails(3, "no clean file is written", "lint", "g.hgr", "--fix", "c.hgr")
                self.assertNotIn("c.hgr", self.names(), rule)
                continue
            if rule == "H24":
                continue  # nothing in the file is wrong
            words = ["lint", "g.hgr", "--fix", "c.hgr", *["--from", 0] * (rule == "H13")]
            if rule in LOSSES and rule not in ("H13", "H30"):
                self.fails(3, "--force writes what zorpel reads", *words)
                self.assertNotIn("c.hgr", self.names(), rule)
                words.append("--force")
            self.run_ok(*words)
            answer = self.json_of("lint", "c.hgr", "--format", "json")
            self.assertEqual(answer["warnings"] + answer["errors"], 0, (rule, answer))
            (self.folder / "c.hgr").unlink()

    def test_zorpel_reads_the_clean_file_as_zorpelx_reads_the_old_one(self):
        numbers = random.Random(5)
        lines = ["% made for this test", "", "12"]
        for e in range(12):
            pins = [numbers.randint(1, 9) for _ in range(numbers.randint(1, 6))]
            lines.append(" ".join(map(str, [numbers.randint(0, 3), *pins])) + "\r")
        lines[1:3] = ["12 9 11"]
        lines += [str(numbers.randint(0, 5)) for _ in range(9)]
        self.file("g.hgr", "\n".join(lines) + "\n")
        self.run_ok("lint", "g.hgr", "--fix", "c.hgr")
        words = [ZORPEL, "c.hgr", "2", "20", "1", "1", "1", "0", "0", "0"]
        subprocess.run(words, cwd=self.folder, capture_output=True, check=True)
        part = "c.hgr.part.2"
        old = self.json_of("verify", "g.hgr", part, "--force", "--format", "json", "--list-cut")
        new = self.json_of("verify", "c.hgr", part, "--format", "json", "--list-cut")
        self.assertEqual((old["cut"], old["soed"]), (new["cut"], new["soed"]))
        back = [int(number) for number in self.text("c.hgr.map").split()]
        mapped = [back[cut["hyperedge"] - 1] for cut in new["cut_list"]]
        weighty = [cut["hyperedge"] for cut in old["cut_list"] if cut["weight"] > 0]
        self.assertEqual(mapped, weighty)

    def test_clean_file_to_standard_output(self):
        self.file("g.hgr", "3 3 1\n% c\n2 1 2 1\n1 3\n1 2 3\n")
        done = self.run_ok("lint", "g.hgr", "--fix", "-")
        self.assertEqual(done.stdout, "2 3 1\n2 1 2\n1 2 3\n")
        self.assertEqual(self.names(), ["g.hgr"])

    def test_a_line_that_stays_too_long_is_told(self):
        pins = " ".join(str(v) for v in range(1, 30001))
        self.file("g.hgr", f"1 30000\n{pins}\n")
        done = self.run_ok("lint", "g.hgr", "--fix", "c.hgr")
        self.assertIn("line 2 of the clean file has more than 131071 characters", done.stderr)
        self.assertIn("H26", self.run_ok("lint", "c.hgr").stdout)

    def test_lines_whole_and_in_pieces(self):
        self.file("g.hgr", f"2 3\n{LONG}\n1 2\n")
        self.fails(3, "error H26", "stats", "g.hgr", "--lines", "refuse")
        whole = self.json_of("stats", "g.hgr", "--format", "json")
        self.fails(3, "error H25", "stats", "g.hgr", "--lines", "pieces")
        words = ("stats", "g.hgr", "--lines", "pieces", "--force", "--format", "json")
        pieces = self.json_of(*words)
        self.assertEqual((whole["pins"], pieces["pins"]), (5, 4))

    def test_a_whole_line_of_many_vertices_is_partitioned(self):
        pins = " ".join(str(v) for v in range(1, 40001))
        self.file("g.hgr", f"2 40000\n{pins}\n1 2\n")
        self.run_ok("partition", "g.hgr", "-k", 2, "-r", 1)
        answer = self.json_of("verify", "g.hgr", "g.hgr.part.2", "--format", "json")
        self.assertEqual((answer["pins"], answer["cut_hyperedges"]), (40002, 1))


class Advice(Case):
    def test_shares_compound(self):
        answer = self.json_of("lint", self.example("cpu32.hgr"), "-k", 4, "--format", "json")
        advice = answer["advice"]
        self.assertEqual(advice["verdict"], "feasible")
        self.assertAlmostEqual(advice["most"][0], 49345 * 0.55 * 0.55, delta=2)
        self.assertAlmostEqual(advice["least"][0], 49345 * 0.45 * 0.45, delta=2)

    def test_the_reverse_question(self):
        self.example("cpu32.hgr")
        answer = self.json_of("lint", "cpu32.hgr", "-k", 16, "--epsilon", 3, "--format", "json")
        self.assertEqual(answer["advice"]["epsilon_ubfactor"], 0)
        answer = self.json_of("lint", "cpu32.hgr", "-k", 16, "--epsilon", 50, "--format", "json")
        self.assertEqual(answer["advice"]["epsilon_ubfactor"], 5)
        done = self.run_ok("lint", "cpu32.hgr", "-k", 16, "--epsilon", 3)
        self.assertIn("no --ubfactor keeps 16 parts within 3 %", done.stdout)

    def test_heavy_vertices_make_it_infeasible(self):
        weights = "90\n" + "1\n" * 10
        self.file("g.hgr", "1 11 10\n1 2 3 4 5 6 7 8 9 10 11\n" + weights)
        self.fails(
            4, "a vertex weighs 90, and no part may weigh more than 56", "lint", "g.hgr", "-k", 2
        )
        words = ("partition", "g.hgr", "-k", 2, "-b", 5, "-o", "out")
        self.fails(4, "--force goes on", *words)
        self.assertNotIn("out", self.names())
        self.fails(4, "vertex 1 weighs 90", "lint", "g.hgr", "-k", 2)
        answer = self.json_of("lint", "g.hgr", "-k", 2, "--format", "json", status=4)
        self.assertEqual(answer["advice"]["heavy_vertices"], [1])

    def test_forced_partition_is_delivered_and_told_from_a_good_one(self):
        weights = "90\n" + "1\n" * 10
        self.file("g.hgr", "1 11 10\n1 2 3 4 5 6 7 8 9 10 11\n" + weights)
        done = self.call("partition", "g.hgr", "-k", 2, "--force", "--json", "j")
        self.assertEqual(done.returncode, 4)
        self.assertEqual(len(self.text("g.hgr.part.2").split()), 11)
        self.assertFalse(json.loads(self.text("j"))["valid"])

    def test_too_many_heavy_vertices(self):
        self.file("g.hgr", "1 4 10\n1 2 3 4\n30\n30\n30\n10\n")
        words = ("lint", "g.hgr", "-k", 2, "-b", 2)
        self.fails(4, "3 vertices weigh 30 or more each, no part may hold two of them", *words)

    def test_weights_that_no_bisection_can_divide(self):
        self.file("g.hgr", "1 5 10\n1 2 3 4 5\n20\n20\n20\n20\n20\n")
        words = ("lint", "g.hgr", "-k", 2, "-b", 2)
        self.fails(4, "no set of vertices weighs between 48 and 52", *words)


class Explain(Case):
    def test_by_number_and_by_name(self):
        by_number = self.run_ok("lint", "--explain", "h13").stdout
        self.assertEqual(by_number, self.run_ok("lint", "--explain", "zero-based").stdout)
        self.assertIn("--from 0", by_number)

    def test_all_rules_of_the_corpus_are_explained(self):
        done = self.run_ok("lint", "--explain", "all")
        heads = [line for line in done.stdout.splitlines() if not line.startswith(" ")]
        self.assertEqual([head.split()[0] for head in heads], [*CORPUS, *FIX_CORPUS])
        for head in heads:
            rule = head.split()[0]
            severity = (CORPUS.get(rule) or FIX_CORPUS[rule])[3]
            self.assertIn(f"({severity}):", head)

    def test_no_such_rule(self):
        self.fails(2, "there is no rule 'H99'", "lint", "--explain", "H99")


if __name__ == "__main__":
    unittest.main()
