# SPDX-License-Identifier: MIT
"""The model of scripts/scale.py finds the coefficients that its measurements were made from."""

import csv
import math
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

from cluster import SOURCE

SCRIPT = Path(SOURCE) / "scripts" / "scale.py"


def row(size, ranks):
    """What a run would have measured if the model were exact."""
    levels = math.log(size) - 5
    steps, level_pins = 1000 * levels, 1.5 * size ** 1.1 - 20000
    log2 = math.ceil(math.log2(ranks))
    sums = 5000 * levels * log2
    return {"family": "made", "k": 8, "fits": 20000, "size": size, "ranks": ranks, "pins": size,
            "levels": levels, "cut": 110, "fast_cut": 100, "waiting": 0, "steps": steps,
            "level_pins": level_pins,
            "work": 0.5 + 3e-6 * level_pins / ranks + 2e-4 * size ** 0.5,
            "memory": 2 ** 24 + 60 * size / ranks + 3000 * size ** 0.5,
            "bytes": ranks * sums + (40 * level_pins ** 0.75 * (ranks - 1) ** 0.5
                                     if ranks > 1 else 0),
            "sums": ranks * sums, "sums_of_one": sums,
            "messages": steps * (0.7 * log2 + 0.3 * (ranks - 1))}


class ScaleModel(unittest.TestCase):

    def run_script(self, rows):
        with tempfile.TemporaryDirectory() as folder:
            path = Path(folder) / "rows.csv"
            with open(path, "w", encoding="ascii", newline="") as file:
                writer = csv.DictWriter(file, list(rows[0]))
                writer.writeheader()
                writer.writerows(rows)
            return subprocess.run([sys.executable, SCRIPT, "--rows", path, "--family", "made"],
                                  capture_output=True, text=True, check=False)

    def test_it_finds_the_coefficients(self):
        done = self.run_script([row(size, ranks) for size in (10**5, 3 * 10**5, 10**6, 3 * 10**6)
                                for ranks in (1, 2, 4)])
        self.assertEqual(done.returncode, 0, done.stderr)
        for line in ("levels     -5.00 + 1.00 ln(pins)",
                     "P          -20000 + 1.50 pins^1.100",
                     "work       0.50 s + 3.00 us P / ranks + 200 us pins^0.5",
                     "memory     16 MiB + 60 bytes pins / ranks + 3e+03 bytes pins^0.5",
                     "exchanged  40 bytes P^0.75 (ranks - 1)^0.50",
                     "sums       5 kB levels log2(ranks)",
                     "steps      1000 levels (1000 to 1000 in all that was measured)",
                     "messages   steps (0.70 log2(ranks) + 0.30 (ranks - 1))"):
            self.assertIn(line, done.stdout)
        checked = [line for line in done.stdout.splitlines() if line.startswith("| 3,000,000 * ")]
        self.assertEqual(len(checked), 3)
        for line in checked:
            self.assertIn("+10 %", line)
            for cell in line.split("|"):
                if "(" in cell:
                    self.assertEqual(cell.split()[0], cell.split()[1].strip("()"))

    def test_it_refuses_what_determines_no_model(self):
        two_sizes = [row(size, ranks) for size in (10**5, 10**6) for ranks in (1, 2, 4)]
        one_number = [row(size, 2) for size in (10**5, 3 * 10**5, 10**6)]
        for rows in (two_sizes, one_number):
            done = self.run_script(rows)
            self.assertNotEqual(done.returncode, 0)
            self.assertIn("three sizes, by 2 ranks and 4", done.stderr)
            self.assertEqual(done.stdout, "")


if __name__ == "__main__":
    unittest.main()
