# SPDX-License-Identifier: MIT
"""Sweeps: what is run, what is kept after a kill, what is written in the end."""

import csv
import hashlib
import json
import os
import re
import signal
import subprocess
import time
import unittest
import xml.etree.ElementTree

from calls import ZORPELX, Case, are_gone, children_of, random_hypergraph, wait_for

SWEEP = ("-k", "2,3", "--epsilon", "2,10", "--preset", "fast,default", "--seeds", 2)


def without_time(rows):
    return [{key: value for key, value in row.items() if key != "seconds"} for row in rows]


class Sweeps(Case):
    def setUp(self):
        super().setUp()
        self.example("fifo.hgr")

    def rows(self, folder="fifo.hgr.sweep"):
        with open(self.folder / folder / "sweep.csv", newline="") as file:
            return list(csv.DictReader(file))

    def journal(self, folder="fifo.hgr.sweep"):
        return (self.folder / folder / "journal.jsonl").read_text()

    def test_every_run_is_the_one_that_partition_makes(self):
        self.run_ok("sweep", "fifo.hgr", *SWEEP)
        rows = self.rows()
        self.assertEqual(len(rows), 16)
        for row in rows:
            words = ("-k", row["nparts"], "--epsilon", row["epsilon"], "--preset", row["preset"])
            words += ("--seed", row["seed"], "-o", "p", "--json", "j", "-q")
            self.run_ok("partition", "fifo.hgr", *words)
            digest = hashlib.sha256((self.folder / "p").read_bytes()).hexdigest()
            self.assertEqual(row["sha256"], digest)
            answer = json.loads(self.text("j"))
            for field in ("cut", "cut_hyperedges", "connectivity", "soed"):
                self.assertEqual(int(row[field]), answer[field])
            self.assertEqual(float(row["imbalance_percent"]), answer["imbalance_percent"])

    def test_the_best_of_each_group_is_told_and_kept(self):
        for objective, column in (("cut", "cut"), ("km1", "connectivity")):
            folder = f"by-{objective}"
            words = ("sweep", "fifo.hgr", *SWEEP, "-o", folder, "--objective", objective)
            answer = json.loads(self.run_ok(*words, "--format", "json").stdout)
            rows = self.rows(folder)
            for k in "23":
                for epsilon in "2", "10":
                    group = [r for r in rows if (r["nparts"], r["epsilon"]) == (k, epsilon)]
                    best = [row for row in group if row["best"] == "true"]
                    self.assertEqual(len(best), 1)
                    self.assertEqual(int(best[0][column]), min(int(r[column]) for r in group))
                    text = self.text(f"{folder}/best.e{epsilon}.part.{k}")
                    self.assertEqual(hashlib.sha256(text.encode()).hexdigest(), best[0]["sha256"])
                    self.run_ok(
                        "verify", "fifo.hgr", f"{folder}/best.e{epsilon}.part.{k}", "-e", epsilon
                    )
            best = [row for row in rows if row["best"] == "true"]
            kept = {(row["nparts"], row["epsilon"], row["seed"]) for row in best}
            told = {(str(r["nparts"]), f"{r['epsilon']:g}", str(r["seed"])) for r in answer["best"]}
            self.assertEqual(told, kept)
            self.assertEqual((answer["planned"], answer["done"]), (16, 16))

    def test_the_table_is_that_of_the_rows(self):
        lines = self.run_ok("sweep", "fifo.hgr", *SWEEP).stdout.splitlines()
        rows = self.rows()
        stars = 0
        for line in lines[1:-1]:
            star, (k, epsilon, _, preset, runs, best, median, *more) = line[0], line[1:].split()
            same = [r for r in rows if (r["nparts"], r["epsilon"]) == (k, epsilon)]
            mine = [r for r in same if r["preset"] == preset]
            cuts = sorted(int(r["cut"]) for r in mine)
            self.assertEqual(int(runs), len(mine))
            self.assertEqual((int(best), int(median)), (cuts[0], cuts[(len(cuts) - 1) // 2]))
            self.assertEqual(star == "*", any(r["best"] == "true" for r in mine), line)
            stars += star == "*"
        self.assertEqual((len(lines), stars), (10, 4))
        self.assertEqual(lines[-1], "fifo.hgr.sweep: 16 of 16 runs; * is the best of its parts and epsilon")

    def test_one_is_told_in_the_singular(self):
        words = ("sweep", "fifo.hgr", "-k", 2, "--seeds", 1, "--preset", "fast")
        self.assertIn(": 1 of 1 run; ", self.run_ok(*words).stdout)

    def test_jobs_change_nothing_but_the_times(self):
        self.run_ok("sweep", "fifo.hgr", *SWEEP, "-o", "one", "-j", 1)
        self.run_ok("sweep", "fifo.hgr", *SWEEP, "-o", "four", "-j", 4)
        self.assertEqual(without_time(self.rows("one")), without_time(self.rows("four")))

    def test_a_second_call_runs_nothing_and_a_wider_one_only_what_is_new(self):
        self.run_ok("sweep", "fifo.hgr", "-k", 2, "--seeds", 2)
        before = self.journal()
        self.run_ok("sweep", "fifo.hgr", "-k", 2, "--seeds", 2)
        self.assertEqual(self.journal(), before)
        self.run_ok("sweep", "fifo.hgr", "-k", 2, "--seeds", 3)
        after = self.journal()
        self.assertTrue(after.startswith(before))
        self.assertEqual(after.count("\n"), before.count("\n") + 1)

    def test_a_killed_sweep_goes_on_where_it_was(self):
        self.file("g.hgr", random_hypergraph(2000, 4000))
        words = ("sweep", "g.hgr", "-k", "2,4", "--preset", "fast", "--seeds", 8)
        self.run_ok(*words, "-o", "whole")
        run = subprocess.Popen(
            [ZORPELX, *map(str, words), "-o", "killed"],
            cwd=self.folder,
            stdout=subprocess.DEVNULL,
        )
        path = self.folder / "killed" / "journal.jsonl"
        wait_for(lambda: path.exists() and path.read_text().count("\n") >= 3)
        children = children_of(run)
        run.kill()
        run.wait()
        wait_for(lambda: are_gone(children))
        done = path.read_text()
        self.assertLess(done.count("\n"), 17)
        self.assertFalse((self.folder / "killed" / "sweep.csv").exists())
        self.run_ok(*words, "-o", "killed")
        self.assertTrue(self.journal("killed").startswith(done[: done.rfind("\n") + 1]))
        self.assertEqual(without_time(self.rows("killed")), without_time(self.rows("whole")))
        for name in ("best.e3.part.2", "best.e3.part.4"):
            self.assertEqual(self.text(f"killed/{name}"), self.text(f"whole/{name}"))

    def test_a_torn_last_line_is_dropped_at_every_byte(self):
        self.run_ok("sweep", "fifo.hgr", "-k", 2, "--seeds", 2, "--preset", "fast")
        whole = self.journal()
        last = whole.rstrip("\n").rfind("\n") + 1
        expected = without_time(self.rows())
        for end in [*range(last, len(whole), 40), len(whole) - 1]:
            self.file("fifo.hgr.sweep/journal.jsonl", whole[:end])
            self.run_ok("sweep", "fifo.hgr", "-k", 2, "--seeds", 2, "--preset", "fast")
            self.assertEqual(without_time(self.rows()), expected)
            self.assertEqual(self.journal()[:last], whole[:last])
            self.assertEqual(self.journal().count("\n"), whole.count("\n"))
            lines = [json.loads(line) for line in self.journal().splitlines()]
            self.assertEqual(without_time(lines), without_time(map(json.loads, whole.splitlines())))
        self.file("fifo.hgr.sweep/journal.jsonl", whole[:last] + "\0" * 50 + "\n")
        self.run_ok("sweep", "fifo.hgr", "-k", 2, "--seeds", 2, "--preset", "fast")
        self.assertEqual(without_time(self.rows()), expected)

    def test_a_journal_that_is_none(self):
        words = ("sweep", "fifo.hgr", "-k", 2, "--seeds", 2, "--preset", "fast")
        self.run_ok(*words)
        lines = self.journal().splitlines(keepends=True)
        name = "fifo.hgr.sweep/journal.jsonl"
        self.file(name, lines[0] + "rubbish\n" + lines[1])
        self.fails(3, "journal.jsonl:2: this is no line of a journal", *words)
        self.file(name, lines[0] + lines[1] + '{"nparts": 2}\n' + lines[2])
        self.fails(3, "journal.jsonl:3: this is no line of a journal", *words)
        self.file(name, "".join(lines))
        self.fails(2, "its objective differs", *words, "--objective", "km1")
        self.file("fifo.hgr", self.text("fifo.hgr").replace("\n221 ", "\n220 "))
        self.fails(2, "its hypergraph differs", *words, "--force")

    def test_a_journal_whose_partition_does_not_come_again(self):
        words = ("sweep", "fifo.hgr", "-k", 2, "--seeds", 1, "--preset", "fast")
        self.run_ok(*words)
        name = "fifo.hgr.sweep/journal.jsonl"
        line = self.journal()
        digest = self.rows()[0]["sha256"]
        self.file(name, line.replace(digest, "0" * 64))
        self.fails(1, "gives another partition now", *words)

    def test_two_sweeps_do_not_share_a_folder(self):
        self.file("g.hgr", random_hypergraph(3000, 6000))
        words = ("sweep", "g.hgr", "-k", 8, "--preset", "best", "--seeds", 50)
        run = subprocess.Popen(
            [ZORPELX, *map(str, words)], cwd=self.folder, stderr=subprocess.DEVNULL
        )
        wait_for(lambda: children_of(run))
        self.fails(2, "another sweep is at work there", *words)
        run.send_signal(signal.SIGINT)
        self.assertEqual(run.wait(), 130)
        self.assertTrue((self.folder / "g.hgr.sweep" / "sweep.csv").exists())

    def test_a_deadline_ends_a_sweep_that_can_go_on(self):
        self.file("g.hgr", random_hypergraph(3000, 6000))
        words = ("sweep", "g.hgr", "-k", "2,8", "--preset", "fast,best", "--seeds", 200)
        began = time.monotonic()
        done = self.fails(124, "the same command goes on from there", *words, "--timeout", 3)
        self.assertLess(time.monotonic() - began, 60)
        told = int(done.stderr.split("zorpelx: ")[-1].split(" of ")[0])
        self.assertEqual(len(self.rows("g.hgr.sweep")), told)

    def test_pictures_are_plain_svg_with_a_point_for_each_run(self):
        os.rename(self.folder / "fifo.hgr", self.folder / "a<b&c.hgr")
        self.run_ok("sweep", "a<b&c.hgr", *SWEEP, "-o", "s")
        for name, panels in (("cut-time.svg", 4), ("cut-balance.svg", 2)):
            text = self.text(f"s/{name}")
            root = xml.etree.ElementTree.fromstring(text)
            space = "{http://www.w3.org/2000/svg}"
            groups = root.findall(f"{space}g")
            self.assertEqual(len(groups), panels)
            titles = [e for g in groups for e in g.iter(f"{space}title")]
            self.assertEqual(len(titles), 16)
            self.assertEqual(text.count('<circle class="pen open"'), 4)
            self.assertEqual(root.get("role"), "img")
            self.assertIn("a<b&c.hgr", root.find(f"{space}title").text)
            self.assertIn("prefers-color-scheme:dark", text)
            self.assertNotIn("<script", text)
            self.assertEqual(text.count("http"), 1)  # its own name space
            width, height = (float(root.get(side)) for side in ("width", "height"))
            for group in groups:
                for shape in group:
                    for x, y in (("x", "y"), ("cx", "cy"), ("x1", "y1")):
                        if shape.get(x) is not None:
                            self.assertTrue(0 <= float(shape.get(x)) <= width, shape.attrib)
                            self.assertTrue(0 <= float(shape.get(y)) <= height, shape.attrib)

    def scale(self, group, style, place, shift):
        """From values to places, by the numbers at two ends of an axis."""
        ticks = [
            (float(text.text), float(text.get(place)) + shift)
            for text in group.iter("{http://www.w3.org/2000/svg}text")
            if text.get("class") == style and re.fullmatch(r"[0-9.]+", text.text or "")
        ]
        (low, at_low), (high, at_high) = ticks[0], ticks[-1]
        return lambda value: at_low + (value - low) * (at_high - at_low) / (high - low)

    def test_points_stand_where_their_figures_are(self):
        self.run_ok("sweep", "fifo.hgr", *SWEEP, "-o", "s")
        for name in ("cut-time.svg", "cut-balance.svg"):
            root = xml.etree.ElementTree.fromstring(self.text(f"s/{name}"))
            space, seen = "{http://www.w3.org/2000/svg}", set()
            for group in root.findall(f"{space}g"):
                down = self.scale(group, "dim end", "y", -4)
                across = self.scale(group, "dim mid", "x", 0)
                for shape in group:
                    title = shape.find(f"{space}title")
                    if title is None:
                        continue
                    cut, percent = re.search(r": (\d+), heaviest part ([0-9.]+) %", title.text).groups()
                    half = float(shape.get("width", 0)) / 2
                    x, y = (float(shape.get(c) or shape.get("c" + c)) + half for c in "xy")
                    self.assertAlmostEqual(y, down(int(cut)), delta=1)
                    if "balance" in name:
                        self.assertAlmostEqual(x, across(float(percent)), delta=1)
                    seen.add((x, y))
            self.assertGreater(len(seen), 5)

    def test_the_page_has_the_figures_of_the_answer_and_leads_to_the_reports(self):
        words = ("sweep", "fifo.hgr", *SWEEP, "-o", "s")
        answer = json.loads(self.run_ok(*words, "--format", "json").stdout)
        page = self.text("s/sweep.html")
        shown = re.findall(r'data-figure="([^"]*)">(?:<strong>)?([^<]*)<', page)
        self.assertGreater(len(shown), 16 * 5)
        for pointer, text in shown:
            value = answer
            for key in pointer.split("/")[1:]:
                value = value[int(key)] if isinstance(value, list) else value[key]
            number = text.replace(",", "").removesuffix(" %")
            decimals = len(number.partition(".")[2])
            self.assertEqual(number, f"{value:.{decimals}f}", pointer)
        links = re.findall(r'href="([^"#]*\.html)"', page)
        self.assertEqual(len(links), 4)
        for link in links:
            self.assertIn(link, {f"best.e{e}.part.{q}.html" for e in (2, 10) for q in (2, 3)})
            self.assertIn("within its bounds", self.text(f"s/{link}"))
            name, made = link.removesuffix(".html"), self.text(f"s/{link}")
            self.run_ok("report", "fifo.hgr", f"s/{name}", "--epsilon", name.split(".")[1][1:])
            self.assertEqual(self.text(f"s/{link}"), made)
        self.assertEqual(page.count("<svg"), 2)
        self.assertNotIn("<script", page)

    def test_the_page_of_a_sweep_that_was_ended_says_so(self):
        self.file("g.hgr", random_hypergraph(3000, 6000))
        words = ("sweep", "g.hgr", "-k", "2,8", "--preset", "fast,best", "--seeds", 200)
        self.fails(124, "the same command goes on from there", *words, "--timeout", 2)
        page = self.text("g.hgr.sweep/sweep.html")
        self.assertIn('of <span data-figure="/planned">800</span> runs', page)

    def test_command_lines_that_cannot_be(self):
        for words, sentence in {
            ("-k", "2,x"): "--nparts: 'x' is not a whole number",
            ("-k", "2,1"): "--nparts: 1 is not between 2 and",
            ("-k", "2,"): "--nparts: '' is not a whole number",
            ("-k", "2", "--epsilon", "3,-1"): "--epsilon: -1 is not between 0 and",
            ("-k", "2", "--preset", "fast,bets"): "did you mean 'best'?",
            ("-k", "2,3", "--seeds", 1000000): "more than 1000000 runs",
            ("-k", "2", "--seed", -1): "--seed: the seeds should be between 0 and",
        }.items():
            self.fails(2, sentence, "sweep", "fifo.hgr", *words)
        self.assertEqual(self.names(), ["fifo.hgr"])
        self.fails(5, "No such file", "sweep", "absent.hgr", "-k", 2)
        self.fails(5, "No such file", "sweep", "fifo.hgr", "-k", 2, "-o", "no/such")
        done = self.call("sweep", "-", "-k", 2, input=self.text("fifo.hgr"))
        self.assertEqual(done.returncode, 2)
        self.assertIn("-o is needed", done.stderr)

    def test_repeated_values_are_run_once(self):
        self.run_ok("sweep", "fifo.hgr", "-k", "2,2,2", "--seeds", 1, "--preset", "fast,FAST")
        self.assertEqual(len(self.rows()), 1)

    def test_partitions_outside_their_bounds_are_told(self):
        self.file("heavy.hgr", "2 4 10\n1 2 3\n3 4\n90\n3\n3\n4\n")
        self.fails(4, "some partitions are not within their limits", "sweep", "heavy.hgr", "-k", 2)
        self.assertEqual({row["valid"] for row in self.rows("heavy.hgr.sweep")}, {"false"})


if __name__ == "__main__":
    unittest.main()
