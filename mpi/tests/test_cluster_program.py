# SPDX-License-Identifier: MIT
"""zorpelx-mpi as a program: help, version, statuses."""

import unittest

from cluster import mpirun


class ClusterProgram(unittest.TestCase):

    def test_help_and_version_are_printed_once(self):
        for word, text in (("--help", "Usage: mpirun"), ("--version", "zorpelx-mpi ")):
            done = mpirun(2, [word])
            self.assertEqual(done.returncode, 0, done.stderr)
            self.assertEqual(done.stdout.count(text), 1, done.stdout)

    def test_a_wrong_option_is_told_once_with_status_2(self):
        done = mpirun(2, ["partition", "none.hgr", "-k", "2", "--epsilom", "3"])
        self.assertEqual(done.returncode, 2, done.stderr)
        self.assertEqual(done.stderr.count("--epsilon"), 1, done.stderr)


if __name__ == "__main__":
    unittest.main()
