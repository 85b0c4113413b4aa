# SPDX-License-Identifier: MIT
"""JSON answers: all of them are as the published schema says, those of failures too."""

import copy
import json
import os
import signal
import subprocess
import unittest

from calls import EXAMPLES, ZORPELX, Case, children_of, random_hypergraph, wait_for

try:
    import jsonschema
except ImportError:
    jsonschema = None

SCHEMA = json.loads((EXAMPLES.parent / "docs" / "zorpelx.schema.json").read_text())


def strict(schema):
    """The schema for this version alone, in which no field may be added."""
    schema = copy.deepcopy(schema)
    for command in schema["$defs"]["head"]["properties"]["command"]["enum"]:
        schema["$defs"][command]["unevaluatedProperties"] = False

    def close(node, name):
        if isinstance(node, dict):
            if node.get("type") == "object" and "properties" in node and name != "head":
                node["additionalProperties"] = False
            for key, child in node.items():
                close(child, key)
        elif isinstance(node, list):
            for child in node:
                close(child, "")

    close(schema["$defs"], "")
    return schema


@unittest.skipIf(jsonschema is None, "python3-jsonschema is not installed")
class Answers(Case):
    def setUp(self):
        super().setUp()
        self.validator = jsonschema.Draft202012Validator(strict(SCHEMA))
        self.file("g.hgr", "3 5 11\n2 1 2 3\n1 3 4 5\n7 1 5\n1\n2\n3\n2\n1\n")
        self.file("g.part.2", "0\n0\n0\n1\n1\n")
        self.file("fix", "0\n-1\n-1\n-1\n1\n")
        self.file("bad.hgr", "1 2\n1 9\n")
        self.run_ok("partition", "g.hgr", "-k", 2, "-b", 40, "-o", "p", "--record", "record", "-q")
        self.file("damaged.hgr", b"\x1f\x8b\x08\0 this is no gzip file")

    def answer(self, status, *words, **more):
        """The answer of a command that ends with this status."""
        done = self.call(*words, **more)
        self.assertEqual(done.returncode, status, done.stderr)
        return self.checked(status, words[0], done.stdout)

    def checked(self, status, command, text):
        answer = json.loads(text)
        faults = [error.message for error in self.validator.iter_errors(answer)]
        self.assertEqual(faults, [], text)
        self.assertEqual((answer["status"], answer["command"]), (status, command))
        version = self.run_ok("--version").stdout.split()[1]
        self.assertEqual((answer["format"], answer["version"]), (1, version))
        return answer

    def test_the_schema_is_one_and_refuses_what_is_none(self):
        jsonschema.Draft202012Validator.check_schema(SCHEMA)
        answer = self.answer(0, "stats", "g.hgr", "--format", "json")
        for field in answer:
            self.assertFalse(self.validator.is_valid({k: answer[k] for k in answer if k != field}))
        self.assertFalse(self.validator.is_valid({**answer, "further": 1}))
        self.assertFalse(self.validator.is_valid({**answer, "format": 2}))
        self.assertFalse(self.validator.is_valid({**answer, "islands": -1}))
        published = jsonschema.Draft202012Validator(SCHEMA)
        self.assertTrue(published.is_valid({**answer, "further": 1}))  # a later version

    def test_answers(self):
        partition = ("partition", "g.hgr", "-k", 2, "-o", "out", "--json", "-", "-b", 40)
        verify = ("verify", "g.hgr", "g.part.2", "--format", "json")
        lint = ("lint", "g.hgr", "--format", "json")
        for words in (
            partition,
            (*partition, "--fix", "fix"),
            (*partition, "--preset", "best", "--timeout", 60, "--memory", 1000),
            verify,
            (*verify, "fix", "--list-cut", "--expect", 8, "-b", 40, "--epsilon", 100),
            (*verify, "-k", 4),
            lint,
            (*lint, "fix", "-k", 2, "--epsilon", 30, "-b", 40),
            ("stats", "g.hgr", "--format", "json"),
            ("stats", EXAMPLES / "cpu32.hgr", "--format", "json"),
            ("lint", EXAMPLES / "mult16.hgr", "--format", "json", "-k", 4),
            ("convert", "g.hgr", "g.csv", "--format", "json"),
            ("annotate", "g.hgr", "g.part.2", "-o", "parts.csv", "--format", "json"),
            ("stats", "g.csv", "--format", "json"),
            ("verify", "g.csv", "g.part.2", "--list-cut", "--format", "json"),
            ("sweep", "g.hgr", "-k", "2,3", "--epsilon", 100, "--format", "json", "--seeds", 2),
            ("compare", "g.hgr", "g.part.2", "out", "--format", "json", "--epsilon", 100),
            ("explain", "g.hgr", "-k", 2, "--format", "json", "-e", 50, "--fix", "fix"),
            ("explain", EXAMPLES / "cpu32.hgr", "-k", 9, "--format", "json"),
        ):
            self.assertEqual(self.answer(0, *words)["message"], "")

    def test_answers_about_records(self):
        answer = self.answer(0, "replay", "record", "g.hgr", "--format", "json")
        self.assertTrue(answer["same"])
        verify = ("verify", "g.hgr", "--record", "record", "--format", "json")
        self.assertEqual(len(self.answer(0, *verify)["claims"]), 6)
        self.file("record", self.text("record").replace('"seed": 1', '"seed": 2'))
        self.assertFalse(self.answer(1, "replay", "record", "g.hgr", "--format", "json")["same"])
        self.answer(1, *verify)
        self.answer(3, "replay", "g.hgr", "g.hgr", "--format", "json")

    def test_answers_that_are_no_success(self):
        verify = ("verify", "g.hgr", "g.part.2", "--format", "json")
        self.answer(1, *verify, "--expect", 77)
        self.file("infinite.hgr", "1 2 10\n1 2\n0\n1\n")
        self.file("infinite.part.2", "0\n1\n")
        words = ("verify", "infinite.hgr", "infinite.part.2", "--format", "json")
        self.assertIsNone(self.answer(0, *words)["scaled_cost"])
        found = self.answer(3, "lint", "bad.hgr", "--format", "json")
        self.assertEqual(found["errors"], 1)
        self.file("heavy.hgr", "1 2 10\n1 2\n1\n100\n")
        self.answer(4, "lint", "heavy.hgr", "--format", "json", "-k", 2)
        words = ("partition", "heavy.hgr", "-k", 2, "--force", "-o", "out", "--json", "-")
        delivered = self.answer(4, *words)
        self.assertFalse(delivered["valid"])

    def test_failures(self):
        for status, file, sentence in (
            (3, "bad.hgr", "bad.hgr:2:3: error H09"),
            (3, "damaged.hgr", "damaged.hgr: gzip data"),
            (5, "absent.hgr", "absent.hgr: No such file"),
            (5, ".", "Is a directory"),
        ):
            for words in (
                ("partition", file, "-k", 2, "-o", "out", "--json", "-"),
                ("verify", file, "g.part.2", "--format", "json"),
                ("lint", file, "--format", "json"),
                ("stats", file, "--format", "json"),
                ("sweep", file, "-k", 2, "-o", "s", "--format", "json"),
                ("compare", file, "g.part.2", "fix", "--format", "json"),
                ("explain", file, "-k", 2, "--format", "json"),
            ):
                answer = self.answer(status, *words)
                if (words[0], file) != ("lint", "bad.hgr"):  # which is what lint is for
                    self.assertIn(sentence, answer["message"])
                    self.assertEqual(len(answer), 6)
        answer = self.answer(3, "verify", "g.hgr", "fix", "-k", 2, "--format", "json")
        self.assertIn("fix:2:1", answer["message"])
        self.assertFalse((self.folder / "out").exists())

    def test_a_clean_file_that_cannot_be_written(self):
        words = ("lint", "g.hgr", "--fix", "/dev/full", "--map", "map", "--format", "json")
        answer = self.answer(5, *words)
        self.assertIn("cannot write /dev/full", answer["message"])
        self.assertEqual(answer["errors"], 0)
        self.assertFalse((self.folder / "map").exists())

    def test_a_partition_that_cannot_be_written(self):
        self.file("answer", "old\n")
        words = ("partition", "g.hgr", "-k", 2, "-b", 40, "-o", "/dev/full", "--json", "answer")
        self.assertEqual(self.call(*words).returncode, 5)
        answer = self.checked(5, "partition", self.text("answer"))
        self.assertIn("cannot write /dev/full", answer["message"])

    def test_partition_without_a_result(self):
        self.file("heavy.hgr", "1 2 10\n1 2\n1\n100\n")
        words = ("partition", "heavy.hgr", "-k", 2, "-b", 5, "--json", "-", "-o", "out")
        answer = self.answer(4, *words)
        self.assertIn("2 parts are not possible", answer["message"])
        self.file("big.hgr", random_hypergraph(3000, 6000))
        words = ("partition", "big.hgr", "-k", 8, "-r", 10000, "--json", "-", "-o", "out")
        self.assertIn("eadline", self.answer(124, *words, "--timeout", 0.3)["message"])
        self.assertEqual(self.names().count("out"), 0)
        if "ZORPEL_SANITIZED" not in os.environ:
            self.answer(6, *words, "--memory", 1)

    def test_interrupted(self):
        self.file("big.hgr", random_hypergraph(3000, 6000))
        words = "partition big.hgr -k 8 -r 10000 -o out --json answer".split()
        for number in (signal.SIGINT, signal.SIGTERM):
            run = subprocess.Popen([ZORPELX, *words], cwd=self.folder, stderr=subprocess.DEVNULL)
            wait_for(lambda run=run: children_of(run))
            run.send_signal(number)
            self.assertEqual(run.wait(), 128 + number)
            self.checked(128 + number, "partition", self.text("answer"))

    def test_names_that_are_no_text(self):
        name = os.fsdecode(b"g\xff\x1b.hgr")
        os.rename(self.folder / "g.hgr", self.folder / name)
        answer = self.answer(0, "stats", name, "--format", "json", encoding="utf-8", text=None)
        self.assertEqual(answer["hypergraph"], "g\ufffd\x1b.hgr")


if __name__ == "__main__":
    unittest.main()

    def test_reports(self):
        numbers = random_hypergraph(40, 60)
        self.file("r.hgr", numbers)
        self.run_ok("partition", "r.hgr", "-k", 3, "--json", "run", "-o", "a", "-q")
        self.file("b", "".join(f"{v % 3}\n" for v in range(40)))
        self.file("m.mtx", "%%MatrixMarket matrix coordinate pattern general\n2 2 2\n1 1\n2 1\n")
        self.file("f.cnf", "p cnf 2 2\n1 -2 0\n2 0\n")
        self.file("t.csv", "hyperedge,vertex\ne,u\ne,v\n")
        self.file("two", "0\n1\n")
        for words in (
            ("r.hgr", "a"),
            ("r.hgr", "a", "b", "--history", "run", "-k", 4),
            ("r.hgr", "a", "--epsilon", 5, "--limit", 0),
            ("m.mtx", "two"),
            ("f.cnf", "two"),
            ("t.csv", "two"),
        ):
            self.run_ok("report", *words, "-o", "page", "--json", "answer")
            self.checked(0, "report", self.text("answer"))
        self.assertEqual(self.call("report", "r.hgr", "two", "-o", "page", "--json", "answer").returncode, 3)
        self.assertEqual(len(self.checked(3, "report", self.text("answer"))), 6)
