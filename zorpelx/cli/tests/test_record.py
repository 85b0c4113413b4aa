# SPDX-License-Identifier: MIT
"""Records of runs: partition --record, verify --record and replay."""

import copy
import hashlib
import json
import os
import random
import re
import subprocess
import sys
import unittest

from calls import EXAMPLES, Case, random_hypergraph

try:
    import jsonschema
except ImportError:
    jsonschema = None

DOCS = EXAMPLES.parent / "docs"
SCHEMA = json.loads((DOCS / "zorpel-record.schema.json").read_text())
DIGEST_LINE = '  "sha256": '


def sha256(text):
    return hashlib.sha256(text.encode()).hexdigest()


def sealed(record):
    """The text of a record with the digest that belongs to it, as a forger would write it."""
    record = {key: value for key, value in record.items() if key != "sha256"}
    text = json.dumps(record, indent=2, ensure_ascii=False)[:-2] + ",\n"
    return f'{text}{DIGEST_LINE}"{sha256(text)}"\n}}\n'


def leaves(node, path=()):
    """The path of every value that is neither object nor array."""
    if isinstance(node, (dict, list)) and node:
        items = node.items() if isinstance(node, dict) else enumerate(node)
        for key, child in items:
            yield from leaves(child, (*path, key))
    else:
        yield path


def changed(record, path):
    """A copy in which the value at the path is another one of its kind."""
    record = copy.deepcopy(record)
    node = record
    for key in path[:-1]:
        node = node[key]
    value = node[path[-1]]
    if isinstance(value, bool):
        node[path[-1]] = not value
    elif isinstance(value, (int, float)):
        node[path[-1]] = value + 1
    elif isinstance(value, str):
        digit = value[-1:] in "0123456789abcdef" and value != ""
        node[path[-1]] = value[:-1] + ("1" if value[-1] != "1" else "2") if digit else value + "x"
    return record


def without_place(record):
    """What is to be the same wherever and whenever a run is made."""
    return {k: v for k, v in record.items() if k not in ("machine", "time", "sha256")}


class Records(Case):
    def setUp(self):
        super().setUp()
        self.example("fifo.hgr")

    def record(self, *words, name="run.json", status=0):
        words = words or ("fifo.hgr", "-k", 4)
        done = self.call("partition", *words, "--record", name, "-q", "-o", "p")
        self.assertEqual(done.returncode, status, done.stderr)
        return json.loads(self.text(name))

    def check(self, status, *words, name="run.json", file="fifo.hgr"):
        done = self.call("verify", "--record", name, file, *words)
        self.assertEqual(done.returncode, status, done.stderr + done.stdout)
        return done.stdout

    def replay(self, status, *words, name="run.json", file="fifo.hgr"):
        done = self.call("replay", name, file, *words)
        self.assertEqual(done.returncode, status, done.stderr + done.stdout)
        return done.stdout

    def test_twenty_lines_of_python_check_the_digests(self):
        code = re.search(r"```python\n(.*?)```", (DOCS / "RECORDS.md").read_text(), re.S).group(1)
        self.example("lshape.hgr")  # has weights of both kinds
        for words in (("fifo.hgr", "-k", 3), ("lshape.hgr", "-k", 2)):
            self.record(*words)
            files = ["run.json", words[0], "p"]
            done = subprocess.run(
                [sys.executable, "-c", code, *files],
                cwd=self.folder,
                capture_output=True,
                text=True,
            )
            self.assertEqual(done.stdout, "the digests are right\n", done.stderr)

    def test_the_digest_is_of_what_the_file_says_not_of_its_form(self):
        self.file("a.hgr", "2 3\n1 2\n2 3\n")
        self.file("b.hgr", "% comment\n2  3 11\n1 1 2\n1  2 3 \n1\n1\n1\n")
        self.file("c.hgr", "2 3\n2 1\n2 3\n")
        digests = [
            self.record(f"{name}.hgr", "-k", 2)["hypergraph"]["sha256"] for name in "abc"
        ]
        self.assertEqual(digests[0], sha256("2 3 11\n1 1 2\n1 2 3\n1\n1\n1\n"))
        self.assertEqual(digests[0], digests[1])
        self.assertNotEqual(digests[0], digests[2])

    def test_a_run_is_verified_and_replayed(self):
        self.file("fix", "0\n-1\n1\n" + "-1\n" * 382)
        self.file("groups", "-1\n-1\n-1\n7\n7\n" + "-1\n" * 380)
        self.record("fifo.hgr", "-k", 2, "--epsilon", 20, name="first.json")
        os.rename(self.folder / "p", self.folder / "start")
        for words in (
            ("-k", 2),
            ("-k", 5, "--epsilon", 12.5, "--objective", "km1", "--preset", "fast", "--seed", 9),
            ("-k", 3, "--capacities", "3,2.5,1", "--least", 20, "--starts", 3),
            ("-k", 2, "--fix", "fix", "--together", "groups"),
            ("-k", 2, "--start", "start", "--keep-in-place", 1),
            ("-k", 4, "--ubfactor", 10, "--matching", "edge", "--starts", 2),
            ("-k", 70, "--runs", 2, "--ubfactor", 30, "--force"),
            ("-k", 2, "--seed", -1, "--timeout", 60, "--memory", 4000),
        ):
            record = self.record("fifo.hgr", *words)
            self.assertTrue(record["repeatable"])
            self.assertTrue(record["figures"]["valid"])
            self.assertNotIn("FALSE", self.check(0))
            self.assertIn("the same", self.replay(0))

    def test_the_schema_describes_records(self):
        if jsonschema is None:
            self.skipTest("python3-jsonschema is not installed")
        strict = copy.deepcopy(SCHEMA)

        def close(node):
            if isinstance(node, dict):
                if node.get("type") == "object" and "properties" in node:
                    node.setdefault("additionalProperties", False)
                for child in node.values():
                    close(child)

        close(strict)
        jsonschema.Draft202012Validator.check_schema(SCHEMA)
        validator = jsonschema.Draft202012Validator(strict)
        self.file("groups", "-1\n" * 380 + "3\n" * 5)
        for words in (
            ("-k", 2),
            ("-k", 2, "--ubfactor", 10, "--trace", 1),
            ("-k", 3, "--capacities", "3,2,1", "--together", "groups"),
        ):
            record = self.record("fifo.hgr", *words)
            self.assertEqual([e.message for e in validator.iter_errors(record)], [])
            for field in record:
                less = {key: record[key] for key in record if key != field}
                self.assertFalse(validator.is_valid(less), field)
            self.assertFalse(validator.is_valid({**record, "further": 1}))

    def test_every_option_is_recorded_or_cannot_matter(self):
        page = self.run_ok("partition", "--help").stdout
        options = set(re.findall(r"^  (?:-\w,)?--([\w-]+)", page, re.M))
        record = self.record()
        recorded = {name.replace("_", "-") for name in record["options"]} - {"method"}
        files = {"fix", "start", "together"}
        self.assertEqual(set(record["inputs"]), files)
        harmless = {"help", "output", "json", "record", "jobs", "threads", "progress", "quiet"}
        harmless |= {"strict", "trace"}
        harmless |= {"journal", "shard", "wait"}  # who makes the jobs of a search, which --share is about
        self.assertEqual(options - recorded - files - harmless, set())
        self.assertEqual(recorded - options, set())

    def test_a_changed_byte_of_the_record_is_found(self):
        self.record()
        text = self.text("run.json")
        numbers = random.Random(1)
        for _ in range(150):
            place = numbers.randrange(len(text))
            other = numbers.choice([c for c in ' 0129aeft",}\n' if c != text[place]])
            self.file("other.json", text[:place] + other + text[place + 1 :])
            done = self.call("verify", "--record", "other.json", "fifo.hgr", "p", "-q")
            self.assertIn(done.returncode, (1, 2, 3, 5), text[place - 20 : place + 20])

    def test_a_changed_byte_of_every_field_is_found(self):
        record = self.record()
        text = self.text("run.json")
        for path in leaves(record):
            other = changed(record, path)
            if other == record:  # null
                continue
            body = json.dumps(other, indent=2, ensure_ascii=False) + "\n"
            self.assertNotEqual(body, text)
            self.file("other.json", body)
            done = self.call("verify", "--record", "other.json", "fifo.hgr", "p", "-q")
            self.assertIn(done.returncode, (1, 2, 3), path)

    def test_a_forged_field_is_found(self):
        """The digest of the record is renewed, so that the field itself has to give it away."""
        self.file("fix", "0\n-1\n1\n" + "-1\n" * 382)
        record = self.record("fifo.hgr", "-k", 2, "--fix", "fix", "--preset", "fast")
        self.assertEqual(sealed(record), self.text("run.json"))
        trusted = ("machine", "time", "version", "file")
        counted = ("hypergraph", "inputs", "generator", "figures", "partition", "repeatable")
        # of options, those that must change this result
        fateful = ("method", "nparts", "seed", "from")
        for path in leaves(record):
            other = changed(record, path)
            hopeless = path[0] in trusted or path[-1] in trusted or other == record
            if hopeless or path == ("sha256",) or (path[0] == "options" and path[1] not in fateful):
                continue
            self.file("forged.json", sealed(other))
            for tool in ("verify", "replay"):
                words = ("verify", "--record", "forged.json", "fifo.hgr", "p")
                if tool == "replay":
                    words = ("replay", "forged.json", "fifo.hgr")
                status = self.call(*words, "-q").returncode
                if tool == "replay" or path[0] in counted:
                    self.assertIn(status, (1, 3), (tool, path))

    def test_a_changed_hypergraph_is_found(self):
        self.record()
        lines = self.text("fifo.hgr").splitlines()
        lines[5] = " ".join(reversed(lines[5].split()))
        self.file("other.hgr", "\n".join(lines) + "\n")
        text = self.check(1, "p", file="other.hgr")
        self.assertIn("FALSE: hypergraph: sha256: ", text)
        self.assertIn("true: partition", text)
        text = self.replay(1, file="other.hgr")
        self.assertIn("DIFFERS: hypergraph.sha256: ", text)
        self.assertIn("nothing was run", text)

    def test_a_changed_partition_is_found(self):
        self.record()
        parts = self.text("p").splitlines()
        for v in range(0, len(parts), 40):
            other = [*parts]
            other[v] = str((int(other[v]) + 1) % 4)
            self.file("other", "\n".join(other) + "\n")
            self.assertIn("FALSE: partition: sha256: ", self.check(1, "other"))

    def test_a_run_with_parts_fixed_by_name(self):
        rows = [f"n{e},core/u{v}\nn{e},io/u{v + 1}\n" for e, v in enumerate(range(0, 60, 2))]
        rows += [f"m{v},core/u{v}\nm{v},core/u{v + 2}\n" for v in range(0, 58, 2)]
        self.file("t.csv", "net,cell\n" + "".join(rows))
        words = ("t.csv", "-k", 2, "--fix", "io/u?=1,core/u1?=0", "--together", "core/u2?=0")
        record = self.record(*words)
        self.assertTrue(record["figures"]["valid"])
        self.assertNotIn("FALSE", self.check(0, file="t.csv"))
        self.assertIn("the same", self.replay(0, file="t.csv"))
        names = []
        for row in "".join(rows).split():
            if row.split(",")[1] not in names:
                names.append(row.split(",")[1])
        parts = self.text("p").split()
        self.assertEqual({p for n, p in zip(names, parts) if re.fullmatch("io/u.", n)}, {"1"})
        self.assertEqual({p for n, p in zip(names, parts) if re.fullmatch("core/u1.", n)}, {"0"})
        moved = ["0" if n == "io/u3" else p for n, p in zip(names, parts)]
        self.file("p", "\n".join(moved) + "\n")
        self.assertIn("FALSE", self.check(1, "p", file="t.csv"))
        self.file("t.csv", self.text("t.csv").replace("io/u3", "io/x3"))
        self.assertIn("FALSE", self.check(1, file="t.csv"))

    def test_changed_inputs_are_found(self):
        self.file("fix", "0\n-1\n1\n" + "-1\n" * 382)
        self.file("groups", "-1\n-1\n-1\n7\n7\n" + "-1\n" * 380)
        self.record("fifo.hgr", "-k", 2, "--fix", "fix", "--together", "groups")
        self.file("fix", "0\n-1\n-1\n" + "-1\n" * 382)
        self.assertIn("FALSE: fix: sha256: ", self.check(1))
        self.assertIn("DIFFERS: inputs.fix.sha256: ", self.replay(1))
        self.file("other", "0\n-1\n1\n" + "-1\n" * 382)
        self.check(0, "p", "other")
        self.replay(0, "--fix", "other")
        os.remove(self.folder / "groups")
        words = ("verify", "--record", "run.json", "fifo.hgr", "p", "other")
        self.fails(5, "groups: No such file", *words)

    def test_threads_and_jobs_change_nothing(self):
        for words in (("-k", 6, "--starts", 3), ("-k", 5, "-b", 9, "--starts", 2)):
            first = self.record("fifo.hgr", *words, "-t", 1, "-j", 1)
            for more in (("-t", 2), ("-t", 4, "-j", 2)):
                other = self.record("fifo.hgr", *words, *more)
                self.assertEqual(without_place(first), without_place(other))

    def test_the_record_is_the_same_by_every_compiler(self):
        """The table holds what this run gave when it was made; other builds must give it too."""
        golden = json.loads((EXAMPLES.parent / "zorpelx/cli/tests/record.golden.json").read_text())
        for words, expected in golden.items():
            record = without_place(self.record(*words.split()))
            del record["version"]
            for option in record["options"].keys() - expected["options"].keys():
                del record["options"][option]  # added since
            self.assertEqual(record, expected, words)

    def test_the_generators_are_what_the_page_says(self):
        def splitmix(seed, mask=2**64 - 1):
            state = seed * 0xD1342543DE82EF95 + 0x9E3779B97F4A7C15
            for _ in range(10000):
                state = z = (state + 0x9E3779B97F4A7C15) & mask
                z = ((z ^ (z >> 30)) * 0xBF58476D1CE4E5B9) & mask
                z = ((z ^ (z >> 27)) * 0x94D049BB133111EB) & mask
                z ^= z >> 31
            return z

        def additive(seed):
            words = [seed]
            for _ in range(30):
                words.append(16807 * words[-1] % 2147483647)
            words += words[:3]
            for i in range(34, 344 + 10000):
                words.append((words[-3] + words[-31]) % 2**32)
            return words[-1] >> 1

        for seed in (1, 2, 77777):
            for words, number in (((), splitmix(seed)), (("-b", 20), additive(seed))):
                record = self.record("fifo.hgr", "-k", 2, "--seed", seed, *words)
                self.assertEqual(int(record["generator"]["check"], 16), number)

    def test_a_run_that_time_cut_short(self):
        self.file("big.hgr", random_hypergraph(3000, 6000))
        words = ("big.hgr", "-k", 8, "--starts", 10000, "--timeout", 1)
        record = self.record(*words, "--preset", "fast", status=124)
        self.assertFalse(record["repeatable"])
        self.assertEqual(record["run"]["status"], 124)
        text = self.check(0, file="big.hgr")
        self.assertIn("true: repeatable: time or memory ended the run", text)
        record = self.record("fifo.hgr", "-k", 2, "--time", 0.2)
        self.assertFalse(record["repeatable"])

    def test_a_partition_that_is_not_valid(self):
        self.file("heavy.hgr", "2 4 10\n1 2 3\n3 4\n90\n3\n3\n4\n")
        record = self.record("heavy.hgr", "-k", 2, status=4)
        self.assertFalse(record["figures"]["valid"])
        self.check(0, file="heavy.hgr")
        self.replay(0, file="heavy.hgr")

    def test_files_are_looked_for_beside_the_record(self):
        self.record("fifo.hgr", "-k", 2)
        os.mkdir(self.folder / "sent")
        for name in ("run.json", "p", "fifo.hgr"):
            os.rename(self.folder / name, self.folder / "sent" / name)
        self.check(0, name="sent/run.json", file="sent/fifo.hgr")
        self.replay(0, name="sent/run.json", file="sent/fifo.hgr")

    def test_replay_makes_the_partition_again(self):
        self.record()
        self.replay(0, "-o", "again")
        self.assertEqual(self.text("again"), self.text("p"))
        done = self.run_ok("replay", "run.json", "fifo.hgr", "-o", "-")
        self.assertEqual(done.stdout, self.text("p"))
        self.assertIn("the same", done.stderr)
        words = ("replay", "run.json", "fifo.hgr", "-o", "run.json")
        self.fails(2, "is read, and would be overwritten", *words)

    def test_what_is_no_record(self):
        self.record()
        text = self.text("run.json")
        other = text.replace
        for content, sentence in {
            "": "other.json:1:1: this is no JSON",
            "{\n  1": "other.json:2:3: this is no JSON",
            "[]": "other.json: this is no record of a run: it is no JSON object",
            "{}": "other.json: this is no record of a run: the field record is missing",
            other('"record": 1', '"record": 2'): "records of format 2 are not known",
            other('"nparts": 4', '"nparts": "4"'): "the field options.nparts is of another kind",
            other('"nparts": 4', '"nparts": 1'): "options: nparts: 1 is not between 2 and",
            other('"lines": "whole"', '"lines": "half"'): "options: lines: 'half' is none of",
            other('"memory": 0', '"further": 1'): "there is no option further in this version",
        }.items():
            self.assertNotEqual(content, text)
            self.file("other.json", content)
            self.fails(3, sentence, "replay", "other.json", "fifo.hgr")
            if "in this version" not in sentence:
                self.fails(3, sentence, "verify", "--record", "other.json", "fifo.hgr", "p")
        self.fails(2, "a partition file is needed, or --record", "verify", "fifo.hgr")

    def test_the_record_appears_together_with_the_partition(self):
        self.fails(2, "", "partition", "fifo.hgr", "-k", 2, "-o", "p", "--record", "p")
        self.fails(2, "", "partition", "fifo.hgr", "-k", 2, "--record", "fifo.hgr")
        self.assertEqual(self.names(), ["fifo.hgr"])
        self.file("bad.hgr", "1 2\n1 9\n")
        self.fails(3, "", "partition", "bad.hgr", "-k", 2, "--record", "r")
        self.assertEqual(self.names(), ["bad.hgr", "fifo.hgr"])
        done = self.run_ok("partition", "fifo.hgr", "-k", 2, "-o", "p", "--record", "-")
        self.assertEqual(json.loads(done.stdout)["partition"]["file"], "p")


if __name__ == "__main__":
    unittest.main()
