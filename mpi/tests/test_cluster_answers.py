# SPDX-License-Identifier: MIT
"""What zorpelx-mpi says of itself: JSON answers as the published schema has them, and a manual page
that names its options, all of them and no others."""

import copy
import json
import re
import tempfile
import unittest
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

import jsonschema

from cluster import SOURCE, mpirun, write_hypergraph

SCHEMA = Path(SOURCE) / "docs" / "zorpelx.schema.json"
PAGE = Path(SOURCE) / "docs" / "man" / "zorpelx-mpi.1"


def strict(node):
    """Answers of this version have no further fields."""
    if isinstance(node, dict):
        node = {key: strict(child) for key, child in node.items()}
        if node.get("type") == "object" and "properties" in node and "format" not in node.get(
                "properties", {}):
            node["additionalProperties"] = False
        return node
    return [strict(child) for child in node] if isinstance(node, list) else node


class ClusterAnswers(unittest.TestCase):

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)
        self.file = str(self.folder / "g.hgr")
        write_hypergraph(self.file, 60, [[v, (v * 7 + 3) % 60, (v + 1) % 60] for v in range(60)])

    def answer(self, name, *words, ranks=2, status=0):
        """The JSON answer of a run, which only the one named in the schema describes."""
        done = mpirun(ranks, [*map(str, words)])
        self.assertEqual(done.returncode, status, done.stderr)
        answer = json.loads((self.folder / "json").read_text(encoding="utf-8")
                            if "--json" in words else done.stdout)
        self.faults(name, answer, [])
        published = jsonschema.Draft202012Validator(json.loads(SCHEMA.read_text(encoding="utf-8")))
        self.assertEqual([error.message for error in published.iter_errors(answer)], [])
        return answer

    def faults(self, name, answer, expected):
        schema = strict(json.loads(SCHEMA.read_text(encoding="utf-8")))
        whole = {**schema["$defs"][name], "unevaluatedProperties": False, "$defs": schema["$defs"]}
        found = jsonschema.Draft202012Validator(whole).iter_errors(answer)
        self.assertEqual([list(error.absolute_path) for error in found], expected)

    def refuses(self, name, answer, path, value):
        """A wrong figure is noticed where it stands; None: it is missing."""
        wrong = copy.deepcopy(answer)
        node = wrong
        for step in path[:-1]:
            node = node[step]
        if value is None:
            del node[path[-1]]
        else:
            node[path[-1]] = value
        self.faults(name, wrong, [list(path[:-1] if value is None else path)])

    def partition(self, name, *more, **how):
        return self.answer(name, "partition", self.file, "-k", 2, "--preset", "fast", "-t", 1, "-q",
                           "-e", 10, "-o", self.folder / "part", "--json", self.folder / "json",
                           *more, **how)

    def test_a_shared_search(self):
        answer = self.partition("partition", "--starts", 5, ranks=3)
        self.assertEqual([row["rank"] for row in answer["ranks"]], [0, 1, 2])
        self.refuses("partition", answer, ["ranks", 1, "jobs"], -1)
        self.refuses("partition", answer, ["ranks", 2, "lost"], 0)
        self.refuses("partition", answer, ["ranks", 0, "busy_seconds"], None)

    def test_a_distributed_run_and_its_verification(self):
        run, check = "distributed_partition", "distributed_verify"
        answer = self.partition(run, "--distributed", "--gather", "--fits", 20, ranks=3)
        rows = answer["ranks"]
        self.assertEqual([row["rank"] for row in rows], [0, 1, 2])
        self.assertEqual(sum(row["vertices"] for row in rows), answer["nvertices"])
        self.assertEqual(sum(row["pins"] for row in rows), answer["npins"])
        self.assertEqual(len({row["steps"] for row in rows}), 1, "they took every step together")
        for row in rows:
            self.assertLess(row["bytes_of_sums"], row["bytes_sent"])
            self.assertLessEqual(row["messages_sent"], 2 * row["steps"])
            self.assertGreater(row["seconds_working"], 0)
        self.refuses(run, answer, ["ranks", 1, "bytes_sent"], -1)
        self.refuses(run, answer, ["ranks", 1, "steps"], None)
        self.refuses(run, answer, ["levels"], 0)
        verify = ["verify", self.file, self.folder / "part", "--format", "json"]
        verified = self.answer(check, *verify, "--expect", answer["cut"])
        self.assertEqual(verified["km1"], answer["km1"])
        wrong = self.answer(check, *verify, "--expect", answer["cut"] + 1, status=1)
        self.assertEqual((wrong["status"], wrong["message"]),
                         (1, f"the cut is {answer['cut']}, not {answer['cut'] + 1}"))

    def test_a_single_rank_sends_nothing(self):
        row = self.partition("distributed_partition", "--distributed", "--gather", "--fits", 20,
                             ranks=1)["ranks"][0]
        self.assertEqual((row["bytes_sent"], row["messages_sent"]), (0, 0))


class ManualPage(unittest.TestCase):

    def sections(self):
        """Options that the page documents: flags by section title; "" has those of prose."""
        found, title = {"": set()}, ""
        for line in PAGE.read_text(encoding="utf-8").splitlines():
            if line.startswith((".Ss ", ".Sh ")):
                title = line[4:].strip()
            if line.startswith(".It Fl ") and title.startswith("Of "):
                flags = re.findall(r"Fl (\S+)", line)
                found.setdefault(title, set()).update(
                    flag.removeprefix("-") if flag.startswith("-") else flag for flag in flags)
        return found

    def taken(self, command):
        """Long and short names of the options of a command, by its help."""
        text = mpirun(1, [command, "--help"]).stdout
        names = set()
        for line in text.splitlines():
            flags = re.match(r"  (-.*?)(?:  |$)", line)
            if flags:
                names.update(re.findall(r"--([a-z][a-z-]*)|(?<!-)-([a-z])\b", flags[1]))
        return {long or short for long, short in names} - {"h", "help"}

    def test_verify_takes_what_the_page_says_and_nothing_else(self):
        documented = self.sections()["Of verify"]
        taken = self.taken("verify") - {"distributed", "first"}  # of a distributed run, too
        self.assertEqual(documented, taken)

    def test_partition_takes_what_the_page_says(self):
        sections = self.sections()
        taken = self.taken("partition")
        for title in ("Of a shared search", "Of a distributed run"):
            self.assertGreaterEqual(len(sections[title]), 4)
            self.assertEqual(sections[title] - taken, set())

    def test_what_zorpelx_does_not_take_is_on_the_page(self):
        # the page refers to zorpelx(1) for all others, which prints names in bold
        ours = set().union(*self.sections().values())
        text = (Path(SOURCE) / "docs" / "man" / "zorpelx.1").read_text(encoding="utf-8")
        theirs = set(re.findall(r"(?:\\fB|, )--?([a-z][a-z-]*)", text.replace("\\-", "-")))
        for command in ("partition", "verify", "convert"):
            self.assertEqual(self.taken(command) - theirs - ours, set(), command)

    def test_a_distributed_run_takes_what_the_guide_lists_and_refuses_the_others(self):
        guide = (Path(SOURCE) / "docs" / "DISTRIBUTED.md").read_text(encoding="utf-8")
        listed = guide.split("The options are ")[1].split("others are refused")[0]
        obeyed = set(re.findall(r"`--?([a-z-]+)`", listed)) | {"distributed", "quiet"}
        help_text = mpirun(1, ["partition", "--help"]).stdout
        options = {}
        for line in help_text.splitlines():
            flags = re.match(r"  (?:-([a-z]),)?--([a-z-]+)(?: ([A-Z/]+))?(?:  |$)", line)
            if flags and not {flags[1], flags[2]} & (obeyed | {"help"}):
                options[f"--{flags[2]}"] = ["1"] if flags[3] else []
        with tempfile.TemporaryDirectory() as folder:
            graph = Path(folder) / "g.hgr"
            write_hypergraph(graph, 10, [[0, 1], [2, 3]])

            def run_with(option):
                return mpirun(1, ["partition", str(graph), "-k", "2", "--distributed", "-o",
                                  f"{folder}/part", option, *options[option]])

            with ThreadPoolExecutor(16) as pool:  # mpirun waits most of its time
                runs = dict(zip(options, pool.map(run_with, options)))
        for option, done in runs.items():
            self.assertEqual(done.returncode, 2, f"{option} {done.stderr}")
        # the others need something else on the line
        refused = ["does not go with --distributed" in done.stderr for done in runs.values()]
        self.assertGreater(sum(refused), 20)


if __name__ == "__main__":
    unittest.main()
