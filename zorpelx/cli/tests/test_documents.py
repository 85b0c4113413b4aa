# SPDX-License-Identifier: MIT
"""The documents say what the program and the sources say."""

import re
import unittest

from calls import EXAMPLES, Case, unfolded

SOURCE = EXAMPLES.parent


class Documents(Case):
    def text_of(self, name):
        return (SOURCE / "docs" / name).read_text()

    def test_programs_are_those_that_the_tests_build(self):
        for language, name in (("c", "embed.c"), ("cpp", "embed.cpp")):
            shown = re.search(rf"```{language}\n(.*?)```", self.text_of("API.md"), re.S).group(1)
            licence, built = (SOURCE / "tests/embed/consumer" / name).read_text().split("\n", 1)
            self.assertIn("SPDX", licence)
            self.assertEqual(shown, built)

    def test_presets_are_those_of_the_help(self):
        for name in ("fast", "default", "best"):
            page = unfolded(self.run_ok("partition", "--help").stdout)
            text = re.search(rf"^  {name} +(.*)$", page, re.M)
            told = re.fullmatch(
                r"(\d+) runs, matching (\w+), refinement (\w+), V-cycles (\w+), (\d+) starts?",
                text.group(1),
            )
            document = self.text_of("OPTIONS.md")
            row = re.search(rf"^\| `{name}` \|(.*)$", document, re.M).group(1).split("|")
            self.assertEqual([cell.strip() for cell in row[:5]], list(told.groups()))

    def test_statuses_are_those_of_the_help(self):
        rows = re.findall(r"^\| ([\d, ]+) \| (.*) \|$", self.text_of("TUTORIAL.md"), re.M)
        text = unfolded(self.run_ok("--help").stdout)
        lines = re.findall(r"^  (\d[\d, ]*?)  +(.*)$", text, re.M)
        self.assertEqual([(number, text.replace("`", "")) for number, text in rows], lines)

    def test_the_number_of_rules(self):
        heads = re.findall(r"^[HF]\d\d ", self.run_ok("lint", "--explain", "all").stdout, re.M)
        self.assertIn(f" {len(heads)} numbered rules", self.text_of("TUTORIAL.md"))


if __name__ == "__main__":
    unittest.main()
