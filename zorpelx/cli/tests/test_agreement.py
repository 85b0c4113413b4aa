# SPDX-License-Identifier: MIT
"""lint and the plain program agree on every file: random files, most of them damaged.

ZORPEL_AGREEMENT_FILES sets how many; ZORPEL_AGREEMENT_SEED the first seed. A file on which they
differ is printed whole.
"""

import json
import os
import random
import subprocess
import unittest
from concurrent.futures import ThreadPoolExecutor

from calls import ZORPEL, ZORPELX, Case

FILES = int(os.environ.get("ZORPEL_AGREEMENT_FILES", 200))
SEED = int(os.environ.get("ZORPEL_AGREEMENT_SEED", 1))
ODD = "0 -1 1.5 x +3 99999999999 2147483647 -2147483649 % 1e3 7-2".split() + [""]
CODES = ["", "", "0", "1", "10", "11", "2", "20", "-1", "99", "100", "x", "1.0"]


def number(chance, least, most, odd=0.03):
    if chance.random() < odd:
        return chance.choice(ODD)
    return str(chance.randint(least, most))


def hypergraph(chance):
    """Mostly sound; each kind of damage comes up in some files."""
    nvertices, nnets = chance.randint(1, 9), chance.randint(0, 6)
    code = chance.choice(CODES)
    damage = chance.choice([0, 0, 0.01, 0.05])
    weights = chance.choice([(1, 9), (0, 2), (-1, 5), (1, 2**31 - 1)])
    lines = [f"{nnets} {nvertices} {code}".rstrip()]
    for _ in range(max(0, nnets + chance.choice([0, 0, 0, 0, 0, 1, -1]))):
        most = nvertices + (chance.random() < 0.02)
        pins = [
            number(chance, chance.choice([1, 1, 1, 0]), most, damage)
            for _ in range(chance.randint(chance.choice([0, 1, 2, 2]), 5))
        ]
        if code in ("1", "11", "2", "99"):
            pins.insert(0, number(chance, *weights, damage))
        lines.append(chance.choice([" ", " ", "\t", "  "]).join(pins))
    if code in ("10", "11", "20", "99"):
        for _ in range(max(0, nvertices + chance.choice([0, 0, 0, 0, 1, -1]))):
            lines.append(number(chance, *weights, damage))
    for _ in range(chance.choice([0, 0, 1, 3])):
        odd_line = chance.choice(["% text", "%", " % text", "", "#"])
        lines.insert(chance.randint(0, len(lines)), odd_line)
    text = chance.choice(["\n", "\n", "\n", "\r\n"]).join(lines)
    return text + chance.choice(["\n", "\n", "", "\n\n", "\n% end"])


class Agreement(Case):
    def judge(self, seed):
        """What is wrong with the file of a seed; None if nothing is."""
        text = hypergraph(random.Random(seed))
        folder = self.folder / str(seed)
        folder.mkdir()
        (folder / "g").write_text(text, newline="")
        words = [ZORPEL, "g", "2", "5", "1", "1", "1", "0", "0", "0"]
        subprocess.run(words, cwd=folder, capture_output=True, check=False)
        accepted = any(name.startswith("g.part.") for name in os.listdir(folder))
        words = [ZORPELX, "lint", "g", "--format", "json"]
        lint = subprocess.run(words, cwd=folder, capture_output=True, check=False)
        answer = json.loads(lint.stdout)
        severe = [found for found in answer["findings"] if found["severity"] == "error"]
        if (answer["zorpel"] == "reads") != accepted:
            return f"{text!r}: zorpel's verdict is {accepted}, lint says {answer['zorpel']}"
        if not accepted and not severe:
            return f"{text!r}: refused by zorpel, and lint finds no error"
        if accepted and not all(found["forcible"] for found in severe):
            return f"{text!r}: read by zorpel, and lint finds {severe}"
        if lint.returncode != (3 if severe else 0):
            return f"{text!r}: lint ends with {lint.returncode}"
        return None

    def test_random_files(self):
        seeds = range(SEED, SEED + FILES)
        with ThreadPoolExecutor(os.cpu_count()) as pool:
            wrong = [fault for fault in pool.map(self.judge, seeds) if fault]
        self.assertEqual(wrong, [], "\n".join(wrong))

    def test_the_families_are_as_mixed_as_they_should_be(self):
        """Among 200 files, some are clean, some are refused, some lose something."""
        kinds = {"reads": 0, "refuses": 0, "loses": 0}
        for seed in range(1, 201):
            self.file("g", hypergraph(random.Random(seed)))
            answer = json.loads(self.call("lint", "g", "--format", "json").stdout)
            kinds[answer["zorpel"]] += 1
            kinds["loses"] += any(found["forcible"] for found in answer["findings"])
        self.assertGreater(min(kinds.values()), 20, kinds)


if __name__ == "__main__":
    unittest.main()
