#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
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
PAGES = sorted((ROOT / "docs" / "man").glob("*.[0-9]"))
WRITTEN = [page for page in PAGES if page.name != "zorpelx.1"]  # that one is printed
DOCUMENTS = sorted(ROOT.glob("*.md")) + sorted((ROOT / "docs").glob("*.md"))
DOCUMENTS += [ROOT / "bench" / "NOTES.md", ROOT / "examples" / "README.md"]
BUILD = ROOT / "build" / "release"


def text_of(name):
    return (ROOT / name).read_text(encoding="utf-8")


def literal_blocks(page):
    """The displays of a manual page, as the reader sees them."""
    blocks = re.findall(r"^\.Bd -literal.*?\n(.*?)^\.Ed", text_of(page), re.S | re.M)
    return [block.replace("\\e", "\\") for block in blocks]


def listed_messages(page):
    """The sentences that a manual page lists, as the reader sees them."""
    text = text_of("docs/man/" + page).replace("\\&", "").replace("\\-", "-")
    return re.findall(r'^\.(?:It )?Li "([^"]+)"', text, re.M)


def sentences_of(source):
    """Patterns of the sentences with which a source ends the process."""
    calls = re.findall(r'errexit__\(\s*((?:"[^"]*"\s*)+)', text_of(source))
    texts = ["".join(re.findall(r'"([^"]*)"', call)) for call in calls]
    plain = [text.replace("\\n", "").replace("\\t", "") for text in texts]
    return [re.sub("%[a-z]", ".+", re.escape(text)) for text in plain]


def run_program(folder, *words):
    program = BUILD / "src" / "zorpel"
    return subprocess.run([program, *words], cwd=folder, capture_output=True, text=True, timeout=60)


class Documents(unittest.TestCase):
    def test_the_program_in_the_readme_is_the_compiled_example(self):
        shown = re.search(r"```c\n(.*?)```", text_of("README.md"), re.S).group(1)
        licence, code = text_of("examples/api.c").split("\n", 1)
        self.assertIn("SPDX", licence)
        self.assertEqual(shown, code)

    def test_links_lead_to_files(self):
        for document in DOCUMENTS:
            targets = re.findall(r"\]\(([^)#:]+)\)", document.read_text(encoding="utf-8"))
            lost = [target for target in targets if not (document.parent / target).exists()]
            self.assertEqual(lost, [], document.name)

    def test_links_lead_to_headings(self):
        for document in DOCUMENTS:
            text = document.read_text(encoding="utf-8")
            for name, anchor in re.findall(r"\]\(([^)#:]*)#([^)]+)\)", text):
                target = document.parent / name if name else document
                heads = re.findall(r"^#+ (.*)$", target.read_text(encoding="utf-8"), re.M)
                known = [re.sub(r"[^\w -]", "", head.lower()).replace(" ", "-") for head in heads]
                self.assertIn(anchor, known, document.name)

    def test_commands_of_the_readme_stand_in_blocks_that_the_walk_runs(self):
        indented = re.findall(r"^    (?:\$ |\./|cmake |cc |export )", text_of("README.md"), re.M)
        self.assertEqual(indented, [])

    def test_the_map_names_folders_and_files_that_exist(self):
        text = text_of("docs/ARCHITECTURE.md")
        rows = re.findall(r"^\| `([\w/]+/)` \|.*\| (.*) \|$", text, re.M)
        self.assertGreater(len(rows), 8)
        for folder, start in rows:
            for name in re.findall(r"`([^`]+)`", start):
                self.assertTrue((ROOT / folder / name).exists(), folder + name)

    def test_the_files_to_change_are_there(self):
        text = text_of("docs/ARCHITECTURE.md").split("## Where to change what")[1]
        for name in re.findall(r"`((?:src|zorpelx|include|scripts|search|debian|tests)/[^`]*)`", text):
            self.assertTrue(list(ROOT.glob(name)), name)

    def test_every_top_folder_is_in_the_map(self):
        listing = subprocess.run(
            ["git", "ls-tree", "-d", "--name-only", "HEAD"],
            cwd=ROOT,
            capture_output=True,
            text=True,
        )
        if listing.returncode != 0:
            self.skipTest("not a git checkout")
        pages = text_of("docs/ARCHITECTURE.md")
        folders = [name for name in listing.stdout.split() if not name.startswith(".")]
        self.assertEqual([name for name in folders if "| `%s/" % name not in pages], [])

    def test_no_document_says_which_machine_it_was_written_on(self):
        for document in DOCUMENTS + PAGES:
            text = document.read_text(encoding="utf-8")
            self.assertNotRegex(text, r"/(root|home|work|tmp)/", document.name)


class ManualPages(unittest.TestCase):
    def test_pages_are_clean(self):
        if shutil.which("mandoc") is None:
            self.skipTest("mandoc is not installed")
        for page in WRITTEN:
            found = subprocess.run(
                ["mandoc", "-T", "lint", "-W", "style", page], capture_output=True, text=True
            ).stdout
            # Whether the other pages are installed depends on the machine.
            lines = [line for line in found.splitlines() if "manual not found" not in line]
            if page.name == "zorpelx.3":  # displays show the header as it is
                lines = [line for line in lines if "longer than 80 bytes" not in line]
            self.assertEqual(lines, [])

    def test_what_scripts_make_is_up_to_date(self):
        names = ("zorpelx_3.py", "reliability.py", "frontier.py")
        scripts = [[f"scripts/{name}", "--check"] for name in names]
        zorpelx = BUILD / "zorpelx" / "cli" / "zorpelx"
        if zorpelx.exists():
            scripts.append(["scripts/picture.py", "--check", "--zorpelx", str(zorpelx)])
        for script, *words in scripts:
            done = subprocess.run(
                [sys.executable, "-B", ROOT / script, *words], capture_output=True, text=True
            )
            self.assertEqual((done.returncode, done.stderr), (0, ""), script)

    def test_the_library_page_and_the_header_tell_the_same_names(self):
        pattern = r"\bZORPEL_[A-Z0-9]\w*(?<!_)\b"
        described = set(re.findall(pattern, text_of("docs/man/zorpel.3")))
        declared = set(re.findall(pattern, text_of("include/zorpel.h")))
        self.assertEqual(described, declared - {"ZORPEL_API", "ZORPEL_H"})

    def test_messages_of_the_pages_are_in_the_sources(self):
        sources = [p.relative_to(ROOT) for p in (ROOT / "src").glob("*/*.cpp")]
        patterns = [pattern for source in sources for pattern in sentences_of(source)]
        for page, least in (("zorpel.3", 25), ("zorpel_hgr.5", 10)):
            listed = listed_messages(page)
            self.assertGreater(len(listed), least)
            unknown = [m for m in listed if not any(re.fullmatch(p, m) for p in patterns)]
            self.assertEqual(unknown, [], page)

    def test_messages_of_the_sources_are_in_the_pages(self):
        places = (
            ("zorpel.3", ("partition/entry", "core/bucket_queue", "core/memory")),
            ("zorpel_hgr.5", ("io/read_hgraph",)),
            ("zorpel.1", ("driver/zorpel_main", "io/outfile", "io/textfile", "core/memory")),
        )
        for page, sources in places:
            listed = listed_messages(page) + ["Buffer for fgets not big enough!"]  # never met
            listed += listed_messages("zorpel_hgr.5") if page == "zorpel.1" else []  # it says so
            wanted = [s for source in sources for s in sentences_of("src/%s.cpp" % source)]
            self.assertGreater(len(wanted), len(sources))
            missing = [s for s in wanted if not any(re.fullmatch(s, m) for m in listed)]
            self.assertEqual(missing, [], page)

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
