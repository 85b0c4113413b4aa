# SPDX-License-Identifier: MIT
"""The bad-file corpus through lint, partition and verify, against what zorpel makes of it.

What zorpel accepts, zorpelx reads in the same way: its own count of zorpel's partition has to give
zorpel's report to the last byte. What zorpel refuses, lint calls an error. What lint calls an error
is refused by partition, with status 3 and the file's old partition in place.
"""

import json
import os
import resource
import sys
import unittest
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

from calls import Case

CORPUS = Path(os.environ["ZORPEL_SOURCE"]) / "tests" / "badfiles"
sys.path[:0] = [str(CORPUS), str(CORPUS.parent)]
import harness  # noqa: E402 (found by the path above)
import make_badfiles as make  # noqa: E402

SANITIZED = "ZORPEL_SANITIZED" in os.environ
# Of what zorpel accepts, lint calls an error what loses vertices, weights or entries, and a header
# that is far too large for its file.
LOSSES = {"H10", "H12", "H13", "H14", "H16", "H20", "H22", "H25", "H34", "F01", "F02", "F05"}
HOLLOW = "H33"


def cap_memory():
    resource.setrlimit(resource.RLIMIT_AS, (make.LITTLE_MEMORY, make.LITTLE_MEMORY))


class BadFile(Case):
    """One case of the corpus; made and run by the test below."""

    def runTest(self):
        pass

    def command(self, case, name, *words):
        """Runs a command on the files of a case, made anew; returns the finished process."""
        folder = self.folder / name
        folder.mkdir()
        make.make_files(case, folder)
        hgr, fix = case.words[0], case.words[1:-8]
        fix = ["--fix", fix[0]] if fix and name == "partition" else fix
        files = [*fix, "--", hgr] if name == "partition" else ["--", hgr, *fix]
        cap = cap_memory if case.memory else harness.obey_permissions
        words = [name, "-k", 2, "--lines", "pieces", "-q", *words, *files]
        return folder, self.call(*words, cwd=folder, preexec_fn=cap, errors="replace")

    def check(self, case, expected):
        accepted = bool(expected["files"])
        if "" in case.words:
            self.assertEqual(self.command(case, "partition")[1].returncode, 2)
            return
        _, lint = self.command(case, "lint", "--format", "json")
        folder, run = self.command(case, "partition", "-r", 1, "--force")
        self.assertIn(lint.returncode, (0, 3, 4, 5))
        if lint.returncode == 5:
            self.assertFalse(accepted)
            self.assertEqual(run.returncode, 5)
            return
        answer = json.loads(lint.stdout)
        if "counts" not in answer:  # not even text: damaged compression
            self.assertEqual((lint.returncode, run.returncode, accepted), (3, 3, False))
            return
        rules = set(answer["counts"])
        severe = [found for found in answer["findings"] if found["severity"] == "error"]
        fatal = {found["rule"] for found in severe if not found["forcible"]}
        self.assertEqual(lint.returncode == 3, bool(severe))
        self.check_judgement(case, answer, accepted)
        if fatal:
            self.assertEqual(run.returncode, 3)
            self.assertIn(" error ", run.stderr)
            self.assertTrue(not accepted or HOLLOW in fatal, rules)
            return
        self.assertIn(run.returncode, (0, 4, 5) if case.name.startswith("out-") else (0, 4))
        if accepted:
            self.assertLessEqual({found["rule"] for found in severe}, LOSSES | {"H03"})
            self.check_zorpels_partition(case, expected)

    def check_judgement(self, case, answer, accepted):
        """What lint says of zorpel and the hypergraph file is so; and nothing that zorpel refuses
        is without an error."""
        if case.name.startswith("out-") or answer["zorpel"] == "unknown":
            return
        fix_refused = {"F03", "F04", "F07"} & set(answer["counts"])
        self.assertEqual(answer["zorpel"] == "reads" and not fix_refused, accepted)
        if not accepted:
            self.assertGreater(answer["errors"], 0)

    def check_zorpels_partition(self, case, expected):
        (name, text), *_ = expected["files"].items()
        report = "".join(expected["stdout"])
        self.file("zorpels.part", text.encode("latin-1"))
        self.file("report", report.encode("latin-1"))
        folder = self.folder / "verify"
        folder.mkdir()
        make.make_files(case, folder)
        words = ["verify", "-k", 2, "-q", "--force", "--report", "../report", "--"]
        words += [case.words[0], "../zorpels.part", *case.words[1:-8]]
        done = self.call(*words, cwd=folder, errors="replace")
        self.assertEqual(done.returncode, 0, done.stdout + done.stderr)


class Corpus(unittest.TestCase):
    def one(self, case, expected):
        """What is wrong with one case; None if nothing is."""
        test = BadFile()
        test.setUp()
        try:
            test.check(case, expected)
        except Exception as error:  # pylint: disable=broad-except
            return f"{case.name}: {error!r}"
        finally:
            test.doCleanups()
        return None

    def test_every_file(self):
        expected = json.loads((CORPUS / "expected.json").read_text())
        cases = [case for case in make.all_cases() if not (SANITIZED and case.memory)]
        with ThreadPoolExecutor(os.cpu_count()) as pool:
            found = pool.map(lambda case: self.one(case, expected[case.name]), cases)
        self.assertEqual([fault for fault in found if fault], [])
        self.assertGreater(len(cases), 400)


def load_tests(loader, _tests, _pattern):
    return loader.loadTestsFromTestCase(Corpus)


if __name__ == "__main__":
    unittest.main()
