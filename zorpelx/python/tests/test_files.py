# SPDX-License-Identifier: MIT
"""Files, and a package without its library."""

import bz2
import gzip
import importlib.util
import lzma
import os
import shutil
import signal
import subprocess
import sys
import tempfile
import threading
import time
import unittest
import zipfile
from dataclasses import replace
from pathlib import Path

import zorpel

TEXT = "% a comment\n3 4 11\n2 1 2 3\n% another\n7 3 4\n1 1 4\n5\n6\n7\n8\n"


class FileTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)

    def store(self, text, name="sample.hgr"):
        path = self.folder / name
        path.write_text(text)
        return path

    def test_a_file_with_all_weights_is_read(self):
        graph = zorpel.read(self.store(TEXT))
        self.assertEqual(list(graph), [[0, 1, 2], [2, 3], [0, 3]])
        self.assertEqual(graph.hyperedge_weights.tolist(), [2, 7, 1])
        self.assertEqual(graph.vertex_weights.tolist(), [5, 6, 7, 8])

    def test_compressed_files_are_known_by_their_content(self):
        path = self.folder / "sample"
        for pack in (gzip.compress, bz2.compress, lzma.compress):
            path.write_bytes(pack(TEXT.encode()))
            self.assertEqual(zorpel.read(path), zorpel.read(self.store(TEXT)))
        if shutil.which("zstd"):
            subprocess.run(["zstd", "-q", "-f", self.store(TEXT), "-o", path], check=True)
            self.assertEqual(zorpel.read(path), zorpel.read(self.store(TEXT)))

    def test_damaged_compression_is_a_fault_of_the_file(self):
        whole = gzip.compress(TEXT.encode() * 100)
        for damaged in (whole[:-9], whole[:40] + b"xxxx" + whole[44:], whole[:-8] + b"12345678"):
            path = self.folder / "sample.hgr.gz"
            path.write_bytes(damaged)
            for reader in (zorpel.read, zorpel.read_partition, zorpel.lint):
                with self.assertRaisesRegex(zorpel.InputError, "sample.hgr.gz: gzip data: "):
                    reader(path)

    def test_it_reads_as_the_program_does(self):
        """Where a reader of Python's own differed: 1_1, a carriage return within a line, the byte
        0x1c, lines too many."""
        for text, sentence in [
            ("1 20\n1 1_1\n", ":2:4: error H14 rubbish: '1_1' is not a whole number"),
            ("1 20\n1\x1c2\n", ":2:2: error H14 rubbish"),
            ("1 4\n1 2\n3 4\n", ":3:1: error H25 trailing: 1 line too many"),
            ("1 4 1\n1.5 1 2\n", ":2:2: error H14 rubbish: '1.5' is not"),
            ("4 5\n1 0\n2 0\n3 4 0\n4 1\n", ":2:3: error H13 zero-based"),
            ("%PDF-1.4\n2 3 0\n1 2\n2 3\n", ":1:1: error H34 .* PDF"),
            ("%%MatrixMarket matrix\n2 3 0\n1 2\n2 3\n", ":1:22: the layout of the matrix is missing"),
        ]:
            with self.assertRaisesRegex(zorpel.InputError, sentence):
                zorpel.read(self.store(text))
        self.assertEqual(list(zorpel.read(self.store("1 4\n1\r2\n"))), [[0, 1]])
        graph = zorpel.read(self.store("4 5\n1 0\n2 0\n3 4 0\n4 1\n"), from_=0)
        self.assertEqual(list(graph), [[1, 0], [2, 0], [3, 4, 0], [4, 1]])
        with self.assertWarnsRegex(zorpel.FileWarning, "sample.hgr: 1 error; zorpel.lint"):
            forced = zorpel.read(self.store("1 4\n1 2.5\n"), force=True)
        self.assertEqual(list(forced), [[0, 1]])

    def test_warnings_are_told(self):
        path = self.store("1 4\n1 2 1")
        with self.assertWarnsRegex(zorpel.FileWarning, "sample.hgr: 2 warnings; zorpel.lint"):
            zorpel.read(path)
        with self.assertRaisesRegex(zorpel.InputError, "warning H11"):
            zorpel.read(path, strict=True)
        with self.assertWarnsRegex(zorpel.FileWarning, "it may have been cut off"):
            zorpel.read_partition(self.store("0\n1"))

    def test_lint_finds_what_the_program_finds(self):
        found = zorpel.lint(self.store("2 4\n1 2 0 3\n1 1 4\n"))
        self.assertEqual((found.errors, found.warnings, found.notes), (1, 1, 1))
        self.assertEqual([one.rule for one in found.findings], ["H31", "H12", "H11"])
        first = found.findings[1]
        self.assertEqual((first.line, first.column, first.forcible), (2, 5, True))
        self.assertTrue(found.read_by_zorpel)
        self.assertTrue(found)
        refused = zorpel.lint(self.store("1 7 1\n0 7 4\n"))
        self.assertEqual((refused.read_by_zorpel, refused.errors), (False, 1))
        self.assertFalse(zorpel.lint(self.store(TEXT)))

    def test_caps_hold_while_reading(self):
        bomb = gzip.compress(b"1 2\n1 2\n" + b"%" * (48 << 20) + b"\n")
        path = self.folder / "bomb"
        path.write_bytes(bomb)
        with self.assertRaisesRegex(zorpel.OutOfMemoryError, "takes more than the cap"):
            zorpel.read(path, memory=16)
        os.mkfifo(self.folder / "pipe")
        for reader in (zorpel.read, zorpel.lint, zorpel.read_partition):
            with self.assertRaisesRegex(zorpel.DeadlineError, "the deadline came"):
                reader(self.folder / "pipe", timeout=0.2)

    def test_control_c_ends_reading(self):
        os.mkfifo(self.folder / "pipe")
        timer = threading.Timer(0.3, lambda: os.kill(os.getpid(), signal.SIGINT))
        timer.start()
        begin = time.monotonic()
        with self.assertRaises(KeyboardInterrupt):
            zorpel.read(self.folder / "pipe")
        self.assertLess(time.monotonic() - begin, 10)
        timer.join()

    def test_files_that_cannot_be_opened(self):
        for path in (self.folder / "absent", self.folder):
            for reader in (zorpel.read, zorpel.read_partition, zorpel.lint):
                with self.assertRaises(zorpel.FileError):
                    reader(path)
        with self.assertRaises(zorpel.FileError):
            zorpel.write(self.folder / "no" / "file", [[0, 1]])
        with self.assertRaises(zorpel.InputError):
            zorpel.read("a\0b")

    def test_bad_options(self):
        path = self.store(TEXT)
        for options in ({"from_": 2}, {"lines": "some"}, {"timeout": -1}, {"timeout": "x"}):
            with self.assertRaises(zorpel.InputError):
                zorpel.read(path, **options)
        with self.assertRaises(zorpel.InputError):
            zorpel.lint(path, limit=-1)

    def test_what_is_written_reads_back(self):
        plain = zorpel.as_hypergraph([[0, 1, 2], [2, 3]])
        for graph in (
            plain,
            zorpel.as_hypergraph(plain, vertex_weights=[1, 2, 3, 4]),
            zorpel.as_hypergraph(plain, hyperedge_weights=[5, 6]),
            zorpel.read(self.store(TEXT)),
        ):
            for name in ("a.hgr", "a.hgr.gz", "a.hgr.xz", "a.hgr.bz2"):
                zorpel.write(self.folder / name, graph)
                self.assertEqual(zorpel.read(self.folder / name), graph)
        self.assertEqual((self.folder / "a.hgr.gz").read_bytes()[:2], b"\x1f\x8b")
        with self.assertRaisesRegex(zorpel.InputError, "zstd is read only"):
            zorpel.write(self.folder / "a.hgr.zst", plain)

    def test_a_file_that_cannot_be_written_leaves_the_old_one(self):
        path = self.store("old")
        with self.assertRaisesRegex(zorpel.InputError, "Hyperedge 1 is empty"):
            zorpel.write(path, [[0, 1], []])
        self.assertEqual(path.read_text(), "old")
        self.assertEqual(os.listdir(self.folder), ["sample.hgr"])

    def test_partitions_are_written_and_read(self):
        partition = zorpel.partition([[0, 1], [2, 3]], 2)
        for name in ("a.part", "a.part.gz"):
            zorpel.write_partition(self.folder / name, partition)
            self.assertEqual(zorpel.read_partition(self.folder / name), partition.part)

    def test_partitions_are_tables_of_names_too(self):
        graph = zorpel.as_hypergraph({"clk": ["u1", "u,2"], "d": ["u,2", "u3"]})
        path = self.store('vertex,part\nu3,1\n"u,2",0\nu1,0\n', "named.csv")
        self.assertEqual(zorpel.read_partition(path, graph), [0, 0, 1])
        for same in (graph, {"clk": ["u1", "u,2"], "d": ["u,2", "u3"]}):
            self.assertEqual(zorpel.evaluate(same, path).cut, 1)
        odd = replace(graph, vertex_names=["u1", "\ud800", "u3"])
        with self.assertRaisesRegex(zorpel.InputError, "no vertex is called 'u,2'"):
            zorpel.read_partition(path, odd)
        self.assertEqual(zorpel.partition(graph, 2, start=path, starts=1).cut, 1)
        with self.assertRaisesRegex(zorpel.InputError, ":1:1: 'vertex,part' is not a whole number"):
            zorpel.read_partition(path)
        with self.assertRaisesRegex(zorpel.InputError, ":2:1: no vertex is called 'u3'"):
            zorpel.read_partition(path, zorpel.read(self.store("1 3\n1 2 3\n", "b.hgr")))
        numbers = self.store("vertex\tpart\n3\t0\n1\t1\n2\t0\n", "numbers.tsv")
        plain = zorpel.read(self.folder / "b.hgr")
        self.assertEqual(zorpel.read_partition(numbers, plain), [1, 0, 0])
        with self.assertRaisesRegex(zorpel.InputError, "2 part numbers for 3 vertices"):
            zorpel.read_partition(self.store("0\n1\n", "short.part"), plain)

    def test_faults_name_the_place(self):
        for text, sentence in [
            ("", ": error H01"),
            ("2 x\n", ":1:3: error H02"),
            ("2\n", ":1:2: error H02"),
            ("-1 4\n", ":1:1: error H06"),
            ("2 4\n1 2\n", ":3:1: error H08"),
            ("1 4\n%\n1 5\n", ":3:3: error H09 vertex-above: vertex 5 of 4"),
            ("1 4\n0 1\n", ":2:1: error H1[23]"),
            ("2 4\n\n1 2\n", ":2:1: error H10"),
            ("1 2 10\n1 2\n4\n", ":4:1: error H19"),
            ("1 2 10\n1 2\n4 4\n4\n", ":3:3: error H22"),
        ]:
            with self.assertRaisesRegex(zorpel.InputError, sentence):
                zorpel.read(self.store(text))
        with self.assertRaisesRegex(zorpel.InputError, ":2:1: 'one' is not a whole number"):
            zorpel.read_partition(self.store("0\none\n"))
        with self.assertRaisesRegex(zorpel.InputError, ":1:1: 5000000000 is not between"):
            zorpel.read_partition(self.store("5000000000\n"))

    def test_a_repeated_vertex_counts_once(self):
        path = self.store("1 3\n1 2 1 3 2\n")
        with self.assertWarnsRegex(zorpel.FileWarning, "2 warnings"):
            self.assertEqual(list(zorpel.read(path)), [[0, 1, 2]])

    def test_without_its_library_the_package_says_what_is_missing(self):
        program = (
            "import zorpel, sys\n"
            "try: zorpel.read(sys.argv[1])\n"
            "except zorpel.LibraryError as error: print(error)"
        )
        path = self.store(TEXT)
        environment = dict(os.environ, ZORPELX_LIBRARY="/nowhere/libzorpelx.so")
        shown = subprocess.run(
            [sys.executable, "-c", program, str(path)],
            env=environment,
            stdout=subprocess.PIPE,
            check=True,
            text=True,
        ).stdout
        self.assertIn("Cannot load /nowhere/libzorpelx.so", shown)
        self.assertIn("ZORPELX_LIBRARY", shown)


@unittest.skipUnless(
    all(importlib.util.find_spec(name) for name in ("pip", "setuptools", "wheel")),
    "pip, setuptools or wheel is not installed",
)
class WheelTest(unittest.TestCase):
    """What pyproject.toml makes of the package, without a network."""

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)

    def test_a_wheel_is_built_for_any_machine_and_works(self):
        root = Path(zorpel.__file__).parents[1]
        (self.folder / "source").mkdir()
        shutil.copy(root / "pyproject.toml", self.folder / "source")
        shutil.copytree(root / "zorpel", self.folder / "source" / "zorpel")
        pip = [sys.executable, "-m", "pip", "--disable-pip-version-check", "wheel", "--no-deps"]
        pip += ["--no-index", "--no-build-isolation", "-w", str(self.folder), "./source"]
        subprocess.run(pip, cwd=self.folder, check=True, stdout=subprocess.DEVNULL)
        wheel = self.folder / f"zorpel-{zorpel.__version__}-py3-none-any.whl"
        with zipfile.ZipFile(wheel) as archive:
            archive.extractall(self.folder / "installed")
        self.assertTrue((self.folder / "installed" / "zorpel" / "py.typed").exists())
        program = (
            "import zorpel\n"
            "path = [[0, 1], [1, 2], [2, 3], [3, 4], [4, 5]]\n"
            "print(zorpel.__file__, zorpel.partition(path, 2).cut)\n"
        )
        shown = subprocess.run(
            [sys.executable, "-c", program],
            env=dict(os.environ, PYTHONPATH=str(self.folder / "installed")),
            stdout=subprocess.PIPE,
            check=True,
            text=True,
        ).stdout
        place = self.folder / "installed" / "zorpel" / "__init__.py"
        self.assertEqual(shown, f"{place} 1\n")


if __name__ == "__main__":
    unittest.main()
