# SPDX-License-Identifier: MIT
"""partition: options, input, progress, what is left behind when a run is cut short."""

import fcntl
import gzip
import json
import os
import pty
import random
import re
import select
import signal
import struct
import subprocess
import termios
import time
import unittest

from calls import ZORPELX, Case, are_gone, children_of, random_hypergraph, wait_for


def zstd(content):
    return subprocess.run(["zstd", "-c"], input=content, capture_output=True, check=True).stdout


class Options(Case):
    def setUp(self):
        super().setUp()
        self.example("mult16.hgr")

    def cut_of(self, *words):
        self.run_ok("partition", "mult16.hgr", "--json", "j", "-o", "out", *words)
        return json.loads(self.text("j"))

    def test_names_and_numbers_mean_the_same(self):
        for name, number in {
            "--matching": ("gfc", 3),
            "--refine": ("eefm", 3),
            "--vcycle": ("ForMin", 2),
            "--reconst": ("yes", 1),
            "--polish": ("no", 0),
        }.items():
            by_name = self.cut_of("-k", 5, name, number[0], "-r", 2)
            part = self.text("out")
            by_number = self.cut_of("-k", 5, name, number[1], "-r", 2)
            self.assertEqual(part, self.text("out"), name)
            self.assertEqual(by_name["options"], by_number["options"])
            plain = self.cut_of("-k", 5, "-r", 2)
            self.assertNotEqual(plain["options"], by_name["options"])

    def test_schemes_reach_the_engine(self):
        """Each value of each scheme gives a partition of its own on this hypergraph."""
        for name, values in {
            "--matching": ("hfc", "fc", "gfc", "hedge", "edge"),
            "--refine": ("fm", "1wayfm", "eefm"),
            "--runs": (1, 9),
        }.items():
            found = set()
            for value in values:
                self.cut_of("-k", 7, "-r", 1, name, value) if name != "--runs" else self.cut_of(
                    "-k", 7, name, value
                )
                found.add(self.text("out"))
            self.assertEqual(len(found), len(values), name)

    def test_presets_and_what_overrides_them(self):
        fast = self.cut_of("-k", 2, "--preset", "fast", "--ubfactor", 5)["options"]
        self.assertEqual((fast["runs"], fast["refine"], fast["vcycle"]), (3, "1wayfm", "end"))
        best = self.cut_of("-k", 2, "--preset", "best", "--runs", 3, "--starts", 2)["options"]
        self.assertEqual((best["runs"], best["starts"], best["vcycle"]), (3, 2, "all"))

    def test_the_last_of_an_option_counts(self):
        answer = self.cut_of("-k", 2, "--runs", 5, "--nparts", 3, "-r", 1)["options"]
        self.assertEqual((answer["nparts"], answer["runs"]), (3, 1))

    def test_epsilon_is_a_promise_about_the_parts(self):
        for epsilon in (0, 1.5, 12):
            answer = self.cut_of("-k", 4, "--epsilon", epsilon)
            heaviest = max(part["weight"] for part in answer["parts"])
            total = sum(part["weight"] for part in answer["parts"])
            self.assertLessEqual(heaviest, (1 + epsilon / 100) * -(-total // 4) + 1e-6)
            self.assertTrue(answer["valid"])
            self.run_ok("verify", "mult16.hgr", "out", "-k", 4, "--epsilon", epsilon)
        words = ("verify", "mult16.hgr", "out", "-k", 4, "--epsilon", 0.01)
        excess = answer["imbalance_percent"]
        if excess > 1:
            self.fails(1, "above the average, not", *words)
        tight = self.cut_of("-k", 4, "--epsilon", 0)
        self.assertLessEqual(self.cut_of("-k", 4, "--epsilon", 30)["cut"], tight["cut"])

    def test_what_is_gone_says_what_replaces_it(self):
        words = ("partition", "mult16.hgr", "-k", 4)
        self.fails(2, "--epsilon bounds the parts in the end", *words, "--keep", 30)
        self.fails(2, "--ubfactor each bisection", *words, "--imbalance", 3)

    def test_the_search_and_the_engine_are_not_mixed(self):
        words = ("partition", "mult16.hgr", "-k", 4)
        self.fails(2, "leave one or the other out", *words, "--epsilon", 3, "--ubfactor", 5)
        self.fails(2, "leave one or the other out", *words, "--time", 1, "--runs", 5)
        self.fails(2, "--keep-in-place needs --start", *words, "--keep-in-place", 5)

    def test_objectives_are_what_is_minimised(self):
        found = {name: self.cut_of("-k", 8, "--objective", name) for name in ("cut", "km1", "soed")}
        self.assertLessEqual(found["cut"]["cut"], found["km1"]["cut"])
        self.assertLessEqual(found["km1"]["connectivity"], found["cut"]["connectivity"])
        self.assertLessEqual(found["soed"]["soed"], found["cut"]["soed"])

    def test_capacities_and_least(self):
        answer = self.cut_of("-k", 3, "--capacities", "3,3,2", "--least", 10)
        total = sum(part["weight"] for part in answer["parts"])
        for part, size in zip(answer["parts"], (3, 3, 2)):
            self.assertLessEqual(part["weight"], 1.03 * -(-total * size // 8) + 1e-6)
            self.assertGreaterEqual(part["weight"], 0.9 * total * size / 8 - 1e-6)
        self.file("sizes", "3 3\n2\n")
        words = ("-k", 3, "--capacities", "sizes", "--least", 10)
        self.assertEqual(self.cut_of(*words)["cut"], answer["cut"])
        words = ("partition", "mult16.hgr", "-k", 3, "--capacities")
        said = self.run_ok(*words, "3,3,2", "-o", "out").stdout
        fullest = max(part["weight"] * 8 / (total * size) - 1
                      for part, size in zip(answer["parts"], (3, 3, 2)))
        self.assertIn("% above its share", said)
        self.assertLess(float(re.search(r"fullest part is ([-\d.]+) %", said)[1]), 3.1)
        self.assertLess(fullest, 0.031)
        self.fails(2, "has 2 numbers; there are 3 parts", *words, "3,3")
        self.fails(2, "number 2 is not above 0", *words, "3,0,1")

    def test_a_start_is_improved_and_moves_have_their_price(self):
        self.cut_of("-k", 4, "--ubfactor", 5, "--runs", 1)
        self.file("old", self.text("out"))
        better = self.cut_of("-k", 4, "--start", "old", "--epsilon", 30)
        old = self.json_of("verify", "mult16.hgr", "old", "-k", 4, "--format", "json")
        self.assertLessEqual(better["cut"], old["cut"])
        parts = zip(self.text("old").split(), self.text("out").split())
        moved = sum(a != b for a, b in parts)
        self.assertEqual(better["moved_weight"], moved)
        self.assertAlmostEqual(better["moved_percent"], 100 * moved / 1315)
        dear = self.cut_of("-k", 4, "--start", "old", "--epsilon", 30, "--keep-in-place", 1000)
        self.assertEqual(dear["moved_weight"], 0)
        self.file("short", "0\n1\n")
        self.fails(3, "2 numbers; there are 1315", "partition", "mult16.hgr", "-k", 4, "--start", "short")
        self.file("wrong", "0\n" * 1314 + "4\n")
        words = ("partition", "mult16.hgr", "-k", 4, "--start", "wrong")
        self.fails(3, "vertex 1315 has 4; it should be between 0 and 3", *words)

    def test_a_start_and_groups_are_tables_of_names_too(self):
        self.file("n.csv", "net,vertex\nx,a\nx,b\ny,b\ny,c\nz,c\nz,d\nx,d\n")
        self.file("old.csv", "vertex,part\nd,1\nb,0\na,0\nc,1\n")
        words = ("partition", "n.csv", "-k", 2, "--epsilon", 100, "-o", "out", "--quiet")
        self.run_ok(*words, "--start", "old.csv", "--keep-in-place", 1000)
        self.assertEqual(self.text("out"), "0\n0\n1\n1\n")
        self.file("across.csv", "vertex,part\nd,1\nb,1\na,0\nc,0\n")  # as no search would do it
        self.run_ok(*words, "--together", "across.csv")
        parts = self.text("out").split()
        self.assertEqual((parts[0], parts[1]), (parts[2], parts[3]))
        self.file("old.csv", "vertex,part\nd,2\nb,0\na,0\nc,1\n")
        self.fails(3, "old.csv:2:3: part 2 is not between 0 and 1", *words, "--start", "old.csv")
        self.file("old.csv", "vertex,part\nd,1\nb,0\na,0\n")
        self.fails(3, "old.csv: vertex 'c' has no row", *words, "--start", "old.csv")

    def test_tables_fix_and_group_the_vertices_that_they_list(self):
        self.file("n.csv", "net,vertex\nx,a\nx,b\ny,b\ny,c\nz,c\nz,d\nx,d\n")
        words = ("partition", "n.csv", "-k", 2, "--epsilon", 100, "-o", "out", "--quiet")
        self.file("pads.csv", "vertex,part\nd,1\na,0\n")  # all in one part would cut nothing
        self.run_ok(*words, "--fix", "pads.csv", "--record", "out.record")
        parts = self.text("out").split()
        self.assertEqual((parts[0], parts[3]), ("0", "1"))
        check = ("verify", "n.csv", "out", "--record", "out.record")
        self.run_ok(*check)
        self.file("pads.csv", "vertex\tpart\na\t1\nd\t0\nb\t-1\n")
        self.fails(1, "FALSE: fix: sha256", *check)
        self.run_ok(*words, "--fix", "pads.csv")
        parts = self.text("out").split()
        self.assertEqual((parts[0], parts[3]), ("1", "0"))
        self.file("groups.csv", "vertex,part\nc,3\na,3\n")
        self.run_ok(*words, "--together", "groups.csv", "--fix", "a=0,b=1")
        parts = self.text("out").split()
        self.assertEqual(parts[:3], ["0", "1", "0"])
        for row, told in [("a,2", ":2:3: part 2 is not between -1 and 1"),
                          ("e,0", ":2:1: no vertex is called 'e'"),
                          ("a,-1\na,0", ":3:1: vertex 'a' has a part already")]:
            self.file("pads.csv", "vertex,part\n" + row + "\n")
            self.fails(3, "pads.csv" + told, *words, "--fix", "pads.csv")

    def test_groups_stay_together(self):
        self.file("groups", "".join(f"{v % 40 if v % 3 == 0 else -1}\n" for v in range(1315)))
        self.cut_of("-k", 4, "--together", "groups")
        part = self.text("out").split()
        for v in range(0, 1315, 3):
            self.assertEqual(part[v], part[next(u for u in range(0, 1315, 3) if u % 40 == v % 40)])

    def test_how_the_result_came_about(self):
        answer = self.cut_of("-k", 4, "--epsilon", 3)
        steps = {step["step"]: step for step in answer["search"]["steps"]}
        self.assertEqual(set(steps), {"packing", "member", "combination"})
        self.assertEqual(steps["packing"]["made"], 1)
        made = steps["member"]["made"] + steps["combination"]["made"]
        self.assertEqual(made, answer["jobs"])
        self.assertGreater(steps["member"]["gained"], 0)
        self.assertGreater(steps["member"]["seconds"], 0)
        self.assertGreater(answer["search"]["generations"], 0)
        self.assertGreater(answer["search"]["pool"], 1)
        self.assertIsNone(self.cut_of("-k", 4, "--ubfactor", 5, "--runs", 1)["search"])

    def test_a_search_with_a_time_of_its_own_ends_then(self):
        begin = time.monotonic()
        answer = self.cut_of("-k", 4, "--time", 1.5, "--epsilon", 3)
        spent = time.monotonic() - begin
        self.assertGreater(spent, 1.4)
        self.assertLess(spent, 60)
        self.assertTrue(answer["valid"])
        self.assertEqual(answer["status"], 0)

    def test_threads_do_not_change_a_search(self):
        parts = set()
        for threads in (1, 2, 4):
            self.cut_of("-k", 4, "--preset", "fast", "--threads", threads)
            parts.add(self.text("out"))
        self.assertEqual(len(parts), 1)

    def test_who_makes_the_bounds_impossible(self):
        self.file("heavy.hgr", "2 3 10\n1 2\n2 3\n50\n1\n1\n")
        said = "Vertex 1 weighs 50, and no part may weigh more than 26"
        self.fails(4, said, "partition", "heavy.hgr", "-k", 2)
        self.assertEqual(len(self.text("heavy.hgr.part.2").split()), 3)

    def test_the_result_is_what_verify_counts(self):
        answer = self.cut_of("-k", 6, "--starts", 3, "--runs", 2)
        again = self.json_of(
            "verify",
            "mult16.hgr",
            "out",
            "--format",
            "json",
            "-k",
            6,
            "--ubfactor",
            5,
            "--expect",
            answer["cut"],
        )
        for figure in ("cut", "soed", "connectivity", "cut_hyperedges", "parts"):
            self.assertEqual(answer[figure], again[figure])

    def test_jobs_do_not_change_the_result(self):
        parts = set()
        for jobs in (1, 2, 4):
            self.cut_of("-k", 4, "--starts", 4, "--runs", 1, "--jobs", jobs)
            parts.add(self.text("out"))
        self.assertEqual(len(parts), 1)

    def test_more_starts_are_never_worse(self):
        one = self.cut_of("-k", 4, "--runs", 1)
        many = self.cut_of("-k", 4, "--runs", 1, "--starts", 8)
        self.assertLessEqual(many["cut"], one["cut"])
        again = self.cut_of("-k", 4, "--runs", 1, "--seed", many["seed"])
        self.assertEqual(again["cut"], many["cut"])

    def test_fixed_vertices(self):
        self.example("mult16.fix4")
        self.cut_of("-k", 4, "--fix", "mult16.fix4", "--runs", 2)
        self.run_ok("verify", "mult16.hgr", "out", "mult16.fix4", "-k", 4)

    def test_trace_goes_to_standard_error(self):
        done = self.run_ok("partition", "mult16.hgr", "-k", 2, "-r", 2, "--trace", 16)
        self.assertEqual(done.stderr.count("Cut of trial"), 2)
        self.assertNotIn("Cut of trial", done.stdout)


class Input(Case):
    def test_compressed_input_gives_the_same_partition(self):
        plain = self.text(self.example("fifo.hgr")).encode()
        self.file("a.hgr.gz", gzip.compress(plain))
        self.file("b.hgr.gz", gzip.compress(plain[:1000]) + gzip.compress(plain[1000:]))
        self.file("c.hgr.zst", zstd(plain))
        self.file("d.hgr.zst", zstd(plain[:1000]) + zstd(plain[1000:]))
        self.run_ok("partition", "fifo.hgr", "-k", 3)
        wanted = self.text("fifo.hgr.part.3")
        for name in ("a.hgr.gz", "b.hgr.gz", "c.hgr.zst", "d.hgr.zst"):
            self.run_ok("partition", name, "-k", 3)
            self.assertEqual(self.text(name[:5] + ".part.3"), wanted)

    def test_standard_input_and_output(self):
        self.example("fifo.hgr")
        self.run_ok("partition", "fifo.hgr", "-k", 3)
        done = self.run_ok("partition", "-", "-k", 3, input=self.text("fifo.hgr"))
        self.assertEqual(done.stdout, self.text("fifo.hgr.part.3"))
        self.assertEqual(self.names(), ["fifo.hgr", "fifo.hgr.part.3"])

    def test_damaged_compression(self):
        for name, content in {
            "a.gz": gzip.compress(b"1 2\n1 2\n")[:-6],
            "b.gz": gzip.compress(b"1 2\n1 2\n") + b"rest",
            "c.gz": gzip.compress(random.Random(1).randbytes(99))[:30] + b"xx",
            "d.zst": zstd(b"1 2\n1 2\n" * 50)[:-3],
        }.items():
            self.fails(3, f"{name}: ", "partition", self.file(name, content), "-k", 2)
        self.assertEqual(self.names(), ["a.gz", "b.gz", "c.gz", "d.zst"])


class CutShort(Case):
    def setUp(self):
        super().setUp()
        self.example("fifo.hgr")
        self.file("big.hgr", random_hypergraph(3000, 6000))

    def test_a_deadline_delivers_the_best_finished_start(self):
        words = "partition fifo.hgr -k 2 --starts 1000000 -r 1 --json j --timeout".split()
        for seconds in (1, 10, 100):  # a busy machine may need longer for the first start
            done = self.call(*words, seconds)
            self.assertEqual(done.returncode, 124, done.stderr)
            if "j" in self.names():
                break
        answer = json.loads(self.text("j"))
        self.assertGreater(answer["finished"], 0)
        self.assertEqual(answer["status"], 124)
        self.run_ok("verify", "fifo.hgr", "fifo.hgr.part.2", "--expect", answer["cut"])

    def test_a_deadline_before_any_start_delivers_nothing(self):
        done = self.call("partition", "big.hgr", "-k", 64, "--runs", 100000, "--timeout", 0.2)
        self.assertEqual(done.returncode, 124, done.stderr)
        self.assertEqual(self.names(), ["big.hgr", "fifo.hgr"])

    ENDLESS = "partition fifo.hgr -k 2 --starts 1000000 -r 1 --progress always".split()

    def interrupt(self, number, status):
        words = [ZORPELX, *self.ENDLESS]
        run = subprocess.Popen(
            words, cwd=self.folder, stdout=subprocess.PIPE, stderr=subprocess.PIPE
        )
        seen = b""
        while b", cut " not in seen:  # a start is finished
            seen += os.read(run.stderr.fileno(), 4096)
        run.send_signal(number)
        output = run.communicate()[0].decode()
        self.assertEqual(run.returncode, status)
        self.assertIn("fifo.hgr.part.2: 2 parts, cut", output)
        self.run_ok("verify", "fifo.hgr", "fifo.hgr.part.2", "--ubfactor", 5)

    def test_reading_the_files_counts_for_the_deadline(self):
        os.mkfifo(self.folder / "slow.hgr")
        words = [ZORPELX, *"partition slow.hgr -k 2 --timeout 0.3 -r 1 -o out".split()]
        run = subprocess.Popen(words, cwd=self.folder, stderr=subprocess.PIPE, text=True)
        self.assertIn("slow.hgr: the deadline came while it was being read", run.communicate()[1])
        self.assertEqual(run.returncode, 124)

    def test_a_killed_engine_is_a_failed_run(self):
        words = [ZORPELX, *"partition big.hgr -k 64 --runs 100000 -o out".split()]
        run = subprocess.Popen(words, cwd=self.folder, stderr=subprocess.PIPE, text=True)
        os.kill(wait_for(lambda: children_of(run))[0], signal.SIGKILL)
        self.assertIn("The start with seed 1 was ended by signal 9", run.communicate()[1])
        self.assertEqual(run.returncode, 1)
        self.assertEqual(self.names(), ["big.hgr", "fifo.hgr"])

    def test_a_killed_start_of_several_leaves_the_others(self):
        words = [ZORPELX, *"partition big.hgr -k 4 -r 1 --starts 6 -j 2 -o out".split()]
        run = subprocess.Popen(words, cwd=self.folder, stderr=subprocess.PIPE, text=True)
        os.kill(wait_for(lambda: children_of(run))[0], signal.SIGKILL)
        self.assertIn("was ended by signal 9", run.communicate()[1])
        self.assertEqual(run.returncode, 0)
        self.run_ok("verify", "big.hgr", "out", "-k", 4, "--ubfactor", 5)

    def test_control_c_on_a_terminal(self):
        """It reaches the engine's processes too, which have to go on until they are stopped."""
        main, side = pty.openpty()

        def take_terminal():
            fcntl.ioctl(side, termios.TIOCSCTTY, 0)

        run = subprocess.Popen(
            [ZORPELX, *self.ENDLESS],
            cwd=self.folder,
            stdin=side,
            stdout=subprocess.PIPE,
            stderr=side,
            start_new_session=True,
            preexec_fn=take_terminal,
        )
        os.close(side)
        seen = b""
        while b", cut " not in seen:
            seen += os.read(main, 4096)
        os.write(main, b"\3")
        output = run.communicate()[0].decode()
        os.close(main)
        self.assertEqual(run.returncode, 130)
        self.assertIn("fifo.hgr.part.2: 2 parts, cut", output)
        self.run_ok("verify", "fifo.hgr", "fifo.hgr.part.2", "--ubfactor", 5)

    def test_an_interrupt_before_any_start_delivers_nothing(self):
        words = [ZORPELX, *"partition big.hgr -k 64 --runs 100000 -o out".split()]
        for number, status in ((signal.SIGINT, 130), (signal.SIGTERM, 143)):
            run = subprocess.Popen(words, cwd=self.folder, stderr=subprocess.PIPE, text=True)
            workers = wait_for(lambda: children_of(run))
            run.send_signal(number)
            told = "zorpelx: Cancelled after 0 of 1 starts; none has finished.\n"
            self.assertEqual(run.communicate()[1], told)
            self.assertEqual(run.returncode, status)
            self.assertTrue(are_gone(workers))
            self.assertEqual(self.names(), ["big.hgr", "fifo.hgr"])

    def test_an_interrupt_delivers_the_best_finished_start(self):
        self.interrupt(signal.SIGINT, 130)

    def test_termination_delivers_the_best_finished_start(self):
        self.interrupt(signal.SIGTERM, 143)

    def test_termination_of_all_processes_delivers_the_best_so_far(self):
        words = [ZORPELX, *"partition big.hgr -k 4 --time 60 -t 1 -o out".split()]
        run = subprocess.Popen(words, cwd=self.folder, stderr=subprocess.PIPE, text=True)
        workers = wait_for(lambda: children_of(run))
        time.sleep(1)
        for pid in [*workers, run.pid]:  # as a batch system ends a job, in any order
            os.kill(pid, signal.SIGTERM)
            time.sleep(0.1)
        self.assertIn("the best partition found by then is kept", run.communicate()[1])
        self.assertEqual(run.returncode, 143)
        self.run_ok("verify", "big.hgr", "out", "-k", 4)


class Progress(Case):
    def on_terminal(self, *words, width=0, **variables):
        """What zorpelx writes on standard error when that is a terminal."""
        main, side = pty.openpty()
        fcntl.ioctl(side, termios.TIOCSWINSZ, struct.pack("4H", 24 if width else 0, width, 0, 0))
        run = subprocess.Popen(
            [ZORPELX, *words],
            cwd=self.folder,
            stdout=subprocess.PIPE,
            stderr=side,
            env={**os.environ, "TERM": "xterm", **variables},
        )
        os.close(side)
        seen = b""
        while select.select([main], [], [], 60)[0]:
            try:
                got = os.read(main, 4096)
            except OSError:  # the other side is closed
                break
            if not got:
                break
            seen += got
        output = run.communicate()[0].decode()
        self.assertEqual(run.returncode, 0)
        os.close(main)
        return seen.decode(), output

    WORDS = ("partition", "mult16.hgr", "-k", "4", "--starts", "3", "--runs", "10")

    def lines(self, seen):
        """What stood in the line, one after another."""
        shown = re.sub(r" *\x08+", "", seen).split("\r")
        self.assertEqual((shown[0], shown[-2:]), ("", ["", ""]))
        return shown[1:-2]

    def test_a_line_on_a_terminal_only(self):
        self.example("mult16.hgr")
        seen, output = self.on_terminal(*self.WORDS)
        figures = (
            r"(\d+) %(?:, [\dhdays :]+ left)?, (\d) of 3 starts(?:, (cut|bisection) (\d+))?, "
            r"(\d+) of 90 runs, (\d+\.\d) s"
        )
        shown = []
        for line in self.lines(seen):
            self.assertRegex(line, f"^{figures}$")
            shown.append(re.fullmatch(figures, line).groups())
        for place, kind in ((0, int), (1, int), (4, int), (5, float)):  # none goes backwards
            numbers = [kind(line[place]) for line in shown]
            self.assertEqual(numbers, sorted(numbers))
        self.assertEqual((shown[-1][0], shown[-1][1], shown[-1][4]), ("99", "3", "90"))
        for percent, _, _, _, runs, _ in shown:
            self.assertGreaterEqual(int(percent), min(99, int(runs) * 100 // 90))
        cuts = [int(line[3]) for line in shown if line[2] == "cut"]
        self.assertEqual(cuts, sorted(cuts, reverse=True))
        self.assertIn(f"4 parts, cut {cuts[-1]} of", output)
        self.assertEqual(output.count("\n"), 1)
        self.assertEqual(self.run_ok(*self.WORDS).stderr, "")
        self.assertEqual(self.on_terminal(*self.WORDS, "--quiet"), ("", ""))
        self.assertEqual(self.on_terminal(*self.WORDS, "--progress", "never")[0], "")

    def test_the_line_of_a_search(self):
        self.example("mult16.hgr")
        words = ("partition", "mult16.hgr", "-k", "4", "--time", "1.5")
        lines = self.lines(self.on_terminal(*words)[0])
        figures = (
            r"(\d+) %(?:, [\dhdays :]+ left)?(?:, best (\d+) by (\w+)|, cut \d+)?, (\d+) jobs, "
            r"(\d+\.\d) s"
        )
        shown = [re.fullmatch(figures, line).groups() for line in lines]
        best = [int(line[1]) for line in shown if line[1]]
        self.assertEqual(best, sorted(best, reverse=True))
        self.assertLessEqual({line[2] for line in shown if line[2]}, {"packing", "member", "combination", "exact"})
        self.assertGreater(int(shown[-2][3]), 0)

    def test_the_line_fits_the_terminal(self):
        self.example("mult16.hgr")
        longest = {}
        for width in (20, 40, 60, 200):
            lines = self.lines(self.on_terminal(*self.WORDS, width=width)[0])
            self.assertLess(max(map(len, lines)), width)
            self.assertTrue(all(re.match(r"\d+ %", line) for line in lines))
            longest[width] = max(map(len, lines))
        self.assertGreater(longest[200], longest[20])
        lines = self.lines(self.on_terminal(*self.WORDS, COLUMNS="20")[0])  # width not known
        self.assertLess(max(map(len, lines)), 20)

    def test_the_time_left(self):
        self.file("big.hgr", random_hypergraph(3000, 6000))
        words = "partition big.hgr -k 2 --starts 1000000 -r 1 --timeout 1.2 -o out".split()
        main, side = pty.openpty()
        run = subprocess.Popen([ZORPELX, *words], cwd=self.folder, stdout=side, stderr=side)
        os.close(side)
        self.assertEqual(run.wait(), 124)
        seen = os.read(main, 1 << 16).decode()
        os.close(main)
        left = list(map(int, re.findall(r", (\d) s left", seen)))  # the deadline comes first
        self.assertTrue(left and max(left) <= 1 and left == sorted(left, reverse=True), left)

    def test_a_dumb_terminal_gets_none(self):
        self.example("mult16.hgr")
        for term in ("dumb", ""):
            self.assertEqual(self.on_terminal(*self.WORDS, TERM=term)[0], "")
        seen, _ = self.on_terminal(*self.WORDS, "--progress", "always", TERM="dumb")
        self.assertIn("of 3 starts", seen)
        self.assertNotIn("\x1b", seen)

    def test_a_line_each_where_it_is_no_terminal(self):
        self.example("mult16.hgr")
        lines = self.run_ok(*self.WORDS, "--progress", "always").stderr.splitlines()
        self.assertTrue(all(re.match(r"\d+ %, ", line) for line in lines))
        self.assertIn(", 3 of 3 starts, cut ", lines[-1])
        self.assertLess(len(lines), 104)


class Said(Case):
    """What is not as the command line let hope for is said on standard error."""

    def test_more_parts_than_vertices(self):
        self.file("g.hgr", "1 3\n1 2 3\n")
        done = self.run_ok("partition", "g.hgr", "-k", 5, "-o", "out")
        self.assertIn("zorpelx: 5 parts for 3 vertices: at least 2 will be empty\n", done.stderr)
        empty = 5 - len(set(self.text("out").split()))
        self.assertIn(f"zorpelx: {empty} of 5 parts are empty\n", done.stderr)
        self.assertEqual(self.run_ok("partition", "g.hgr", "-k", 5, "-q").stderr, "")

    def test_one_empty_part(self):
        self.file("g.hgr", "1 2\n1 2\n")
        self.file("g.fix", "0\n0\n")
        done = self.run_ok("partition", "g.hgr", "-k", 2, "--fix", "g.fix", "--force", "-b", 49)
        self.assertIn("zorpelx: 1 of 2 parts is empty\n", done.stderr)

    def test_a_part_above_what_was_asked(self):
        self.example("fifo.hgr")
        words = ("partition", "fifo.hgr", "-k", 8, "-o", "out")
        done = self.run_ok(*words, "-b", 20, "--json", "j")
        answer = json.loads(self.text("j"))
        heaviest = max(answer["parts"], key=lambda part: part["weight"])
        self.assertGreater(answer["imbalance_percent"], 20)
        told = (
            f"zorpelx: part {heaviest['part']} is {answer['imbalance_percent']:.2f} % above the "
            "average: --ubfactor 20 bounds each bisection, --epsilon 20 bounds the parts\n"
        )
        self.assertEqual(done.stderr, told)
        self.assertEqual(self.run_ok(*words, "-b", 20, "-q").stderr, "")
        self.assertEqual(self.run_ok(*words, "--epsilon", 20).stderr, "")
        self.assertEqual(self.run_ok(*words).stderr, "")  # nothing was asked for


if __name__ == "__main__":
    unittest.main()
