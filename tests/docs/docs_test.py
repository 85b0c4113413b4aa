#!/usr/bin/env python3
"""Holds the documents to what they describe: docs_test.py --build BUILD

A program shown in the README is the one that the tests compile, a file shown in a manual page is
one that the program reads, names and links lead somewhere, and the manual pages are clean.
"""

import argparse
import re
import shutil
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
PAGES = [ROOT / "docs" / "man" / name for name in ("zorpel.1", "zorpel.3", "zorpel_hgr.5")]
DOCUMENTS = [ROOT / "README.md", ROOT / "CONTRIBUTING.md", ROOT / "CHANGELOG.md"]
DOCUMENTS += sorted((ROOT / "docs").glob("*.md"))
BUILD = ROOT / "build" / "release"


def text_of(name):
    return (ROOT / name).read_text(encoding="utf-8")


def literal_blocks(page):
    """The displays of a manual page, as the reader sees them."""
    blocks = re.findall(r"^\.Bd -literal.*?\n(.*?)^\.Ed", text_of(page), re.S | re.M)
    return [block.replace("\\e", "\\") for block in blocks]


def run_program(folder, *words):
    program = BUILD / "src" / "zorpel"
    return subprocess.run([program, *words], cwd=folder, capture_output=True, text=True, timeout=60)


class Documents(unittest.TestCase):
    def test_the_program_in_the_readme_is_the_compiled_example(self):
        shown = re.search(r"```c\n(.*?)```", text_of("README.md"), re.S).group(1)
        self.assertEqual(shown, text_of("examples/api.c"))

    def test_links_lead_to_files(self):
        for document in DOCUMENTS:
            targets = re.findall(r"\]\(([^)#:]+)\)", document.read_text(encoding="utf-8"))
            lost = [target for target in targets if not (document.parent / target).exists()]
            self.assertEqual(lost, [], document.name)

    def test_the_map_of_the_readme_names_folders_and_files_that_exist(self):
        rows = re.findall(r"^\| `([\w/]+/)` \|.*\| (.*) \|$", text_of("README.md"), re.M)
        self.assertGreater(len(rows), 8)
        for folder, start in rows:
            for name in re.findall(r"`([^`]+)`", start):
                self.assertTrue((ROOT / folder / name).exists(), folder + name)

    def test_every_top_folder_is_in_the_map(self):
        listing = subprocess.run(
            ["git", "ls-tree", "-d", "--name-only", "HEAD"],
            cwd=ROOT,
            capture_output=True,
            text=True,
        )
        if listing.returncode != 0:
            self.skipTest("not a git checkout")
        readme = text_of("README.md")
        folders = [name for name in listing.stdout.split() if not name.startswith(".")]
        self.assertEqual([name for name in folders if "| `%s/" % name not in readme], [])

    def test_no_document_says_which_machine_it_was_written_on(self):
        for document in DOCUMENTS + PAGES:
            text = document.read_text(encoding="utf-8")
            self.assertNotRegex(text, r"/(root|home|work|tmp)/", document.name)


class ManualPages(unittest.TestCase):
    def test_pages_are_clean(self):
        if shutil.which("mandoc") is None:
            self.skipTest("mandoc is not installed")
        for page in PAGES:
            found = subprocess.run(
                ["mandoc", "-T", "lint", "-W", "style", page], capture_output=True, text=True
            ).stdout
            # Whether the other pages are installed depends on the machine.
            lines = [line for line in found.splitlines() if "manual not found" not in line]
            self.assertEqual(lines, [])

    def test_the_library_page_and_the_header_tell_the_same_names(self):
        pattern = r"\bZORPEL_[A-Z0-9]\w*(?<!_)\b"
        described = set(re.findall(pattern, text_of("docs/man/zorpel.3")))
        declared = set(re.findall(pattern, text_of("include/zorpel.h")))
        self.assertEqual(described, declared - {"ZORPEL_API", "ZORPEL_H"})

    def test_messages_of_the_library_page_are_in_the_sources(self):
        sources = "".join(path.read_text() for path in (ROOT / "src").glob("*/*.cpp"))
        pages = text_of("docs/man/zorpel.3") + text_of("docs/man/zorpel_hgr.5")
        messages = re.findall(r'^\.(?:It )?Li "([^"]+?)(?:\\&)?"$', pages, re.M)
        self.assertGreater(len(messages), 18)
        self.assertEqual([message for message in messages if message not in sources], [])

    def test_the_program_page_lists_the_words_of_the_usage_text_in_order(self):
        usage = run_program(ROOT).stdout
        self.assertEqual(usage.count("<"), 19)
        wanted = re.findall(r"<(\w+)>", usage.split(" or\n")[1].splitlines()[0])
        synopsis = text_of("docs/man/zorpel.1").split(".Sh SYNOPSIS")[1].split(".Sh")[0]
        given = re.findall(r"^\.(?:Ar|Op Ar) (\w+)$", synopsis, re.M)
        self.assertEqual([w.lower() for w in given], [w.lower() for w in wanted])

    def test_the_files_of_the_page_on_files_are_read_as_it_says(self):
        graph, fix = literal_blocks("docs/man/zorpel_hgr.5")
        with tempfile.TemporaryDirectory() as folder:
            Path(folder, "g").write_text(graph, encoding="ascii")
            Path(folder, "f").write_text(fix, encoding="ascii")
            report = run_program(folder, "g", "f", *"2 5 10 1 1 1 0 0".split())
            parts = Path(folder, "g.part.2").read_text(encoding="ascii").split()
        self.assertIn("#Vtxs:     4, #Hedges:     3, #Parts: 2", report.stdout)
        self.assertEqual(report.stderr, "")
        self.assertEqual((parts[0], parts[3]), ("0", "1"))

    def test_the_readme_and_the_page_show_the_same_hypergraph(self):
        numbers = literal_blocks("docs/man/zorpel_hgr.5")[0].splitlines()[1:]
        shown = "".join("    %s\n" % line for line in numbers)
        self.assertEqual(text_of("README.md").count(shown), 1)


if __name__ == "__main__":
    parser = argparse.ArgumentParser()
    parser.add_argument("--build", type=Path, default=BUILD)
    request, rest = parser.parse_known_args()
    BUILD = request.build.resolve()
    unittest.main(argv=[sys.argv[0], *rest])
