# SPDX-License-Identifier: MIT
"""Exit statuses: what every command has in common, and what only partition knows.

Deadlines and interrupts are in test_partition, claims that are false in test_verify, weights that
cannot be divided in test_lint.
"""

import os
import resource
import subprocess
import unittest

from calls import ZORPELX, Case, random_hypergraph

# A file of 4 MB whose header announces as many vertices as such a file may, 30 million.
VAST = "1 30000000\n1 2\n" + "% \n" * 1000000
LITTLE_MEMORY = 192 << 20  # not enough for a number for each of them


def cap_memory():
    resource.setrlimit(resource.RLIMIT_AS, (LITTLE_MEMORY, LITTLE_MEMORY))


class EveryCommand(Case):
    """The same happens to each command; g.hgr is the file that it reads first."""

    COMMANDS = {
        "partition": ("partition", "g.hgr", "-k", "2", "-b", "40", "-o", "-"),
        "verify": ("verify", "g.hgr", "g.part.2"),
        "lint": ("lint", "g.hgr"),
        "stats": ("stats", "g.hgr"),
    }

    def setUp(self):
        super().setUp()
        self.file("g.hgr", "2 4\n1 2 3\n3 4\n")
        self.file("g.part.2", "0\n0\n1\n1\n")

    def test_0_done(self):
        for words in self.COMMANDS.values():
            self.assertNotEqual(self.run_ok(*words).stdout, "")

    def test_2_a_word_too_many_and_an_option_that_is_none(self):
        for name, words in self.COMMANDS.items():
            for more in ("--nonsense", "--lines=sideways", "--from=2"):
                done = self.fails(2, more[:6], *words, more)
                self.assertIn(f"See zorpelx {name} --help.", done.stderr)
                self.assertEqual(done.stdout, "")
            self.fails(2, "fourth", *words, "g.part.2", "g.part.2", "fourth")

    def test_3_a_file_with_an_error(self):
        self.file("g.hgr", "2 4\n1 2 3\n3 5\n")
        for words in self.COMMANDS.values():
            self.fails(3, "g.hgr:3:3: error H09 vertex-above: vertex 5 of 4", *words)

    def test_3_damaged_compression(self):
        self.file("g.hgr", b"\x1f\x8b\x08\0 this is no gzip file")
        for words in self.COMMANDS.values():
            self.fails(3, "g.hgr: ", *words)

    def test_5_a_file_that_is_not_there(self):
        (self.folder / "g.hgr").unlink()
        for words in self.COMMANDS.values():
            self.fails(5, "g.hgr: No such file or directory", *words)

    def test_5_standard_output_is_full(self):
        for words in [*self.COMMANDS.values(), ("--man",), ("--completion", "zsh"), ("--help",)]:
            with open("/dev/full", "w") as full:
                done = subprocess.run(
                    [ZORPELX, *words], stdout=full, stderr=subprocess.PIPE, cwd=self.folder
                )
            self.assertEqual(done.returncode, 5, words)
            self.assertIn(b"cannot write standard output: No space left", done.stderr)

    @unittest.skipIf("ZORPEL_SANITIZED" in os.environ, "sanitizers take memory of their own")
    def test_6_memory_runs_out(self):
        self.file("g.hgr", VAST)
        for words in self.COMMANDS.values():
            done = self.call(*words, preexec_fn=cap_memory)
            self.assertEqual((done.returncode, done.stderr), (6, "zorpelx: out of memory\n"), words)


class Partition(Case):
    def setUp(self):
        super().setUp()
        self.example("fifo.hgr")

    def test_usage(self):
        for words, sentence in {
            (): "a command is needed",
            ("partition", "fifo.hgr"): "--nparts is required",
            ("partition", "-k", "2"): "HYPERGRAPH is required",
            ("partition", "fifo.hgr", "-k", "1"): "1 is not between 2 and",
            ("partition", "fifo.hgr", "-k", "2x"): "'2x' is not a whole number",
            ("partition", "fifo.hgr", "-k", "2", "-b", "50"): "50 is not between 1 and 49",
            ("partition", "fifo.hgr", "-k", "2", "--matching", "6"): "'6' is none of hfc, fc",
            ("partition", "fifo.hgr", "-k", "2", "--timeout", "soon"): "is not a number",
            ("partition", "fifo.hgr", "-k", "2", "--nonsense"): "--nonsense",
            ("partition", "fifo.hgr", "-k", "2", "-o", "-", "--json", "-"): "standard output",
            ("lint",): "lint needs",
            ("lint", "fifo.hgr", "--epsilon", "3"): "--epsilon needs -k",
            ("lint", "fifo.hgr", "--map", "m"): "--map needs --fix",
            ("verify", "fifo.hgr"): "a partition file is needed, or --record, which names one",
            ("partition", "fifo.hgr", "-k", "2", "--fix", ""): "--fix: the name is empty",
            ("stats", ""): "HYPERGRAPH: the name is empty",
            ("verify", "-", "-"): "only one file can come from standard input",
            ("lint", "-", "-"): "only one file can come from standard input",
            ("partition", "-", "-k", "2", "--fix", "-"): "only one file can come",
            ("nonsense",): "nonsense",
        }.items():
            self.fails(2, sentence, *words)
        self.assertEqual(self.names(), ["fifo.hgr"])

    def test_input_and_output_that_cannot_be(self):
        self.fails(5, "absent.hgr: No such file", "partition", "absent.hgr", "-k", 2)
        self.fails(5, "No such file", "partition", "fifo.hgr", "-k", 2, "-o", "no/where")
        self.fails(5, "Is a directory", "partition", ".", "-k", 2)

    @unittest.skipIf("ZORPEL_SANITIZED" in os.environ, "sanitizers take memory of their own")
    def test_memory_cap(self):
        self.file("big.hgr", random_hypergraph(20000, 40000))
        self.file("out", "old\n")
        done = self.call("partition", "big.hgr", "-k", 2, "--memory", 1, "-r", 1, "-o", "out")
        self.assertEqual(done.returncode, 6, done.stderr)
        self.assertEqual(self.text("out"), "old\n")

    def test_a_full_device(self):
        self.fails(5, "No space left", "partition", "fifo.hgr", "-k", 2, "-o", "/dev/full")

    def test_help_and_version(self):
        self.assertRegex(self.run_ok("--version").stdout, r"^zorpelx \d+\.\d+\.\d+\n$")
        self.assertIn("--matching", self.run_ok("partition", "--help").stdout)


if __name__ == "__main__":
    unittest.main()
