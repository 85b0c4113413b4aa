"""Files, and a package without its library."""

import gzip
import importlib.util
import os
import shutil
import subprocess
import sys
import tempfile
import unittest
import zipfile
from pathlib import Path

import zorpel

TEXT = "% a comment\n3 4 11\n2 1 2 3\n% another\n7 3 4\n1 1 1 4\n5\n6\n7\n8\n"


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
        path.write_bytes(gzip.compress(TEXT.encode()))
        self.assertEqual(zorpel.read(path), zorpel.read(self.store(TEXT)))

    def test_damaged_compression_is_a_fault_of_the_file(self):
        whole = gzip.compress(TEXT.encode() * 100)
        for damaged in (whole[:-9], whole[:40] + b"xxxx" + whole[44:], whole[:-8] + b"12345678"):
            path = self.folder / "sample.hgr.gz"
            path.write_bytes(damaged)
            for reader in (zorpel.read, zorpel.read_partition):
                with self.assertRaises(zorpel.InputError):
                    reader(path)

    def test_what_zstd_compressed_is_told(self):
        path = self.folder / "sample.hgr.zst"
        path.write_bytes(b"\x28\xb5\x2f\xfd and more")
        with self.assertRaisesRegex(zorpel.InputError, "sample.hgr.zst is compressed by zstd"):
            zorpel.read(path)

    def test_what_is_written_reads_back(self):
        plain = zorpel.as_hypergraph([[0, 1, 2], [2, 3]])
        for graph in (
            plain,
            zorpel.as_hypergraph(plain, vertex_weights=[1, 2, 3, 4]),
            zorpel.as_hypergraph(plain, hyperedge_weights=[5, 6]),
            zorpel.read(self.store(TEXT)),
        ):
            for name in ("a.hgr", "a.hgr.gz"):
                zorpel.write(self.folder / name, graph)
                self.assertEqual(zorpel.read(self.folder / name), graph)
        self.assertEqual((self.folder / "a.hgr.gz").read_bytes()[:2], b"\x1f\x8b")

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

    def test_faults_name_the_line(self):
        for text, sentence in [
            ("", "ends before its header"),
            ("2 x\n", "line 1: not a line of integers: '2 x'"),
            ("2\n", "line 1: the header should be"),
            ("-1 4\n", "line 1: the header should be"),
            ("1 4 7\n1 2\n", "line 1: the format is 7"),
            ("2 4\n1 2\n", "ends before hyperedge 2"),
            ("1 4\n%\n1 5\n", "line 3: vertex 5 is not between 1 and 4"),
            ("1 4\n0 1\n", "line 2: vertex 0 is not between 1 and 4"),
            ("1 4\n\n", "line 2: hyperedge 1 has no vertices"),
            ("1 2 1\n3\n", "line 2: hyperedge 1 has no vertices"),
            ("1 2 10\n1 2\n4\n", "ends before the weight of vertex 2"),
            ("1 2 10\n1 2\n4 4\n4\n", "line 3: 2 numbers instead of the weight of vertex 1"),
        ]:
            with self.assertRaisesRegex(zorpel.InputError, sentence):
                zorpel.read(self.store(text))
        with self.assertRaisesRegex(zorpel.InputError, "line 2: not a line of integers"):
            zorpel.read_partition(self.store("0\none\n"))
        with self.assertRaisesRegex(zorpel.InputError, "line 1: a number does not fit"):
            zorpel.read_partition(self.store("5000000000\n"))

    def test_a_repeated_vertex_counts_once(self):
        self.assertEqual(list(zorpel.read(self.store("1 3\n1 2 1 3 2\n"))), [[0, 1, 2]])

    def test_without_its_library_the_package_reads_and_says_why_it_cannot_partition(self):
        program = (
            "import zorpel, sys; graph = zorpel.read(sys.argv[1])\n"
            "try: zorpel.partition(graph, 2)\n"
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
