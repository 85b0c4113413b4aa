# SPDX-License-Identifier: MIT
"""Files are written whole or not at all, where they belong, and nothing else is lost."""

import errno
import os
import resource
import signal
import stat
import subprocess
import sys
import tempfile
import threading
import unittest
from pathlib import Path

import zorpel
from zorpel._output import write_files

GRAPH = zorpel.Hypergraph(4, [0, 3, 5], [0, 1, 2, 2, 3])
TEXT = "2 4\n1 2 3\n3 4\n"
WRITERS = {
    "write": (lambda path: zorpel.write(path, GRAPH), TEXT),
    "write_partition": (lambda path: zorpel.write_partition(path, [0, 1, 1, 0]), "0\n1\n1\n0\n"),
}


class OutputTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)

    def names(self):
        return sorted(path.name for path in self.folder.iterdir())

    def writers(self):
        for name, (write, text) in WRITERS.items():
            with self.subTest(name):
                yield write, text
            for path in self.folder.iterdir():
                path.unlink()

    def test_new_files_obey_the_umask(self):
        for write, text in self.writers():
            mask = os.umask(0o027)
            try:
                write(self.folder / "new")
            finally:
                os.umask(mask)
            self.assertEqual((self.folder / "new").read_text(), text)
            self.assertEqual((self.folder / "new").stat().st_mode & 0o7777, 0o640)

    def test_old_files_keep_their_rights_but_not_those_to_run_as_their_owner(self):
        for write, text in self.writers():
            (self.folder / "old").write_text("old\n")
            (self.folder / "old").chmod(0o4751)
            write(self.folder / "old")
            self.assertEqual((self.folder / "old").read_text(), text)
            self.assertEqual((self.folder / "old").stat().st_mode & 0o7777, 0o751)
            self.assertEqual(self.names(), ["old"])

    def test_links_are_followed_and_stay(self):
        for write, text in self.writers():
            (self.folder / "link").symlink_to("end")
            for _ in ("new", "old"):
                write(self.folder / "link")
                self.assertTrue((self.folder / "link").is_symlink())
                self.assertEqual((self.folder / "end").read_text(), text)

    def test_names_of_255_bytes(self):
        for write, text in self.writers():
            for _ in ("new", "old"):
                write(self.folder / ("n" * 255))
                self.assertEqual((self.folder / ("n" * 255)).read_text(), text)

    def test_a_file_named_like_standard_output(self):
        before = os.getcwd()
        for write, text in self.writers():
            os.chdir(self.folder)
            try:
                write("-")
            finally:
                os.chdir(before)
            self.assertEqual((self.folder / "-").read_text(), text)

    def test_a_fifo_is_written_where_it_stands(self):
        for write, text in self.writers():
            os.mkfifo(self.folder / "pipe")
            got = []
            reader = threading.Thread(
                target=lambda got=got: got.append((self.folder / "pipe").read_text())
            )
            reader.start()
            write(self.folder / "pipe")
            reader.join()
            self.assertEqual(got, [text])
            self.assertTrue(stat.S_ISFIFO((self.folder / "pipe").stat().st_mode))

    def test_an_open_descriptor_is_written_where_it_stands(self):
        for write, text in self.writers():
            with open(self.folder / "log", "w") as log:
                log.write("a line that is longer than what is written\n")
                log.flush()
                write(f"/dev/fd/{log.fileno()}")
            written = "a line that is longer than what is written\n" + text
            self.assertEqual((self.folder / "log").read_text(), written)

    def test_faults_are_exceptions_of_ours_and_of_the_system(self):
        for write, _ in self.writers():
            for name, error in (("no/where", errno.ENOENT), (".", errno.EISDIR)):
                with self.assertRaisesRegex(zorpel.FileError, os.strerror(error)) as caught:
                    write(self.folder / name)
                self.assertIsInstance(caught.exception, OSError)
                self.assertEqual(caught.exception.status, 5)
            with self.assertRaisesRegex(zorpel.FileError, os.strerror(errno.ENOSPC)):
                write("/dev/full")

    def test_a_pipe_without_a_reader_is_a_fault(self):
        for write, _ in self.writers():
            reading, writing = os.pipe()
            os.close(reading)
            action = signal.signal(signal.SIGPIPE, signal.SIG_DFL)
            try:
                with self.assertRaisesRegex(zorpel.FileError, os.strerror(errno.EPIPE)):
                    write(f"/dev/fd/{writing}")
            finally:
                signal.signal(signal.SIGPIPE, action)
                os.close(writing)

    def test_past_a_file_size_limit_the_old_file_stays(self):
        program = (
            "import sys, signal, zorpel\n"
            "signal.signal(signal.SIGXFSZ, signal.SIG_DFL)\n"
            "try: zorpel.write_partition(sys.argv[1], [0, 1] * 1000)\n"
            "except zorpel.FileError as error: print(error.status)\n"
        )
        (self.folder / "out").write_text("old\n")
        done = subprocess.run(
            [sys.executable, "-c", program, str(self.folder / "out")],
            preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (100, 100)),
            stdout=subprocess.PIPE,
            text=True,
            check=True,
        )
        self.assertEqual(done.stdout, "5\n")
        self.assertEqual((self.folder / "out").read_text(), "old\n")
        self.assertEqual(self.names(), ["out"])

    def test_several_files_appear_together(self):
        a, b = self.folder / "a", self.folder / "b"
        a.write_text("old\n")
        with self.assertRaises(zorpel.FileError):
            write_files([(a, b"new\n"), ("/dev/full", b"new\n"), (b, b"new\n")])
        self.assertEqual((a.read_text(), b.exists()), ("old\n", False))
        write_files([(a, b"new a\n"), (b, b"\0\n")])
        self.assertEqual((a.read_text(), b.read_bytes()), ("new a\n", b"\0\n"))

    def test_two_that_are_one_place_are_refused(self):
        a = self.folder / "a"
        (self.folder / "link").symlink_to("a")
        for other in (a, self.folder / "link", f"{self.folder}/./a"):
            with self.assertRaisesRegex(zorpel.InputError, "would be written twice"):
                write_files([(a, b""), (other, b"")])
        a.write_text("old\n")
        with self.assertRaisesRegex(zorpel.InputError, "is read, and would be overwritten"):
            write_files([(self.folder / "link", b"")], inputs=[a])
        self.assertEqual(a.read_text(), "old\n")
        self.assertEqual(self.names(), ["a", "link"])


if __name__ == "__main__":
    unittest.main()
