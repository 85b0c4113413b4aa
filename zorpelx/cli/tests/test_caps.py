# SPDX-License-Identifier: MIT
"""Caps on reading: compressed files, pipes and headers, against --memory and --timeout."""

import bz2
import gzip
import lzma
import os
import resource
import shutil
import subprocess
import time
import unittest

from calls import ZORPELX, Case, random_hypergraph

COMMANDS = {
    "partition": ("partition", "g", "-k", "2", "-r", "1", "-o", "out"),
    "verify": ("verify", "g", "g.part.2"),
    "lint": ("lint", "g"),
    "stats": ("stats", "g"),
}


def by_zstd(data):
    return subprocess.run(["zstd", "-q"], input=data, stdout=subprocess.PIPE, check=True).stdout


PACKERS = {"gzip": gzip.compress, "xz": lzma.compress, "bzip2": bz2.compress}
if shutil.which("zstd"):
    PACKERS["zstd"] = by_zstd
ENDINGS = {"gzip": ".gz", "xz": ".xz", "bzip2": ".bz2", "zstd": ".zst"}


class Compressed(Case):
    def test_every_kind_is_read_by_its_content(self):
        text = random_hypergraph(3000, 5000)
        self.file("g", text)
        plain = self.json_of("stats", "g", "--format", "json")
        for kind, pack in PACKERS.items():
            half = text.encode().find(b"\n", 20000) + 1
            members = pack(text.encode()[:half]) + pack(text.encode()[half:])
            for data in (pack(text.encode()), members):
                self.file("g", data)
                self.assertEqual(self.json_of("stats", "g", "--format", "json"), plain, kind)

    def test_damage_is_told_and_never_read(self):
        text = random_hypergraph(300, 500).encode()
        for kind, pack in PACKERS.items():
            whole = pack(text)
            middle = len(whole) // 2
            flipped = whole[:middle] + bytes([whole[middle] ^ 0xFF]) + whole[middle + 1 :]
            cut = [whole[:n] for n in (len(whole) - 1, len(whole) - 4, middle, 12)]
            for data in (*cut, flipped, whole + b"more"):
                self.file("g", data)
                for words in COMMANDS.values():
                    self.fails(3, f"g: {kind} data: ", *words)

    def test_output_names_lose_the_ending(self):
        for kind, pack in PACKERS.items():
            name = "g.hgr" + ENDINGS[kind]
            self.file(name, pack(random_hypergraph(30, 50).encode()))
            self.run_ok("partition", name, "-k", 2, "-r", 1)
            (self.folder / "g.hgr.part.2").unlink()

    def test_a_packed_partition_tells_its_parts_by_its_name(self):
        self.file("g", "1 3\n1 2 3\n")
        for kind, pack in PACKERS.items():
            name = "g.part.2" + ENDINGS[kind]
            self.file(name, pack(b"0\n0\n1\n"))
            self.run_ok("verify", "g", name)


@unittest.skipIf("ZORPEL_SANITIZED" in os.environ, "sanitizers take memory of their own")
class Memory(Case):
    """A few bytes that expand to 48 MB, and headers that promise more than the file holds."""

    HEAD = b"1 2\n1 2\n"
    BLOCK = (b"%" + b"c" * 65534 + b"\n") * 16
    BLOCKS = 48

    def setUp(self):
        super().setUp()
        self.file("g.part.2", "0\n1\n")

    def limited(self, *words, most=160):
        """Runs zorpelx where the system gives no more than so many MiB: its status and message."""

        def cap():
            resource.setrlimit(resource.RLIMIT_AS, (most << 20, most << 20))

        done = self.call(*words, preexec_fn=cap)
        return done.returncode, done.stderr

    def check_capped(self, what):
        for words in COMMANDS.values():
            status, message = self.limited(*words, "--memory", "32")
            self.assertEqual(status, 6, (what, words, message))
            self.assertIn("takes more", message, (what, words))

    def test_expansion(self):
        for kind, pack in PACKERS.items():
            self.file("g", pack(self.HEAD) + pack(self.BLOCK) * self.BLOCKS)
            self.assertLess((self.folder / "g").stat().st_size, 100000)
            self.check_capped(kind)

    def test_plain_bytes(self):
        self.file("g", self.HEAD + self.BLOCK * self.BLOCKS)
        self.check_capped("plain")

    def test_arrays(self):
        """10 MB of text become 160 MB of arrays."""
        self.file("g", "5000000 2\n" + "1\n" * 5000000)
        self.check_capped("hyperedges")
        self.file("g", "1 30000000\n1 2\n" + "% \n" * 1000000)
        self.check_capped("vertices")
        self.file("g", "1 3000000\n" + "1 " * 9000000)
        self.check_capped("pins")

    def test_findings(self):
        self.file("g", "3000000 3\n" + "x\n" * 3000000)
        words = ("lint", "g", "--limit", "0", "--memory", "128")
        status, message = self.limited(*words, most=400)
        self.assertEqual(status, 6)
        self.assertIn("takes more than the cap", message)

    def test_other_files_of_a_command(self):
        self.file("g", "1 3\n1 2 3\n")
        bomb = gzip.compress(b"0\n0\n1\n") + gzip.compress(b" " * (1 << 20)) * 48
        self.file("b.part.2", bomb)
        self.file("p.part.2", "0\n0\n1\n")
        for words in (
            ("verify", "g", "b.part.2"),
            ("verify", "g", "p.part.2", "b.part.2"),
            ("verify", "g", "p.part.2", "--report", "b.part.2"),
            ("lint", "g", "b.part.2"),
            ("partition", "g", "-k", "2", "--fix", "b.part.2"),
        ):
            status, message = self.limited(*words, "--memory", "32")
            self.assertEqual(status, 6, (words, message))
            self.assertIn("b.part.2: reading it takes more than the cap", message, words)

    def test_a_header_is_believed_as_far_as_the_file_bears_it_out(self):
        for header in ("2000000000 5", "5 2000000000", "2147483647 2147483647 11"):
            self.file("g", f"{header}\n1 2\n")
            for words in COMMANDS.values():
                status, message = self.limited(*words)
                self.assertEqual(status, 3, (header, words, message))

    def test_what_has_no_end_meets_the_memory_of_the_machine(self):
        for words in (("stats", "/dev/zero"), ("verify", "/dev/zero", "g.part.2")):
            self.assertEqual(self.limited(*words)[0], 6)
            self.assertEqual(self.limited(*words, "--memory", "16")[0], 6)


class Time(Case):
    def waits(self, *words, seconds=0.4, **more):
        """The command ends with status 124 about when it is told to."""
        begin = time.monotonic()
        run = subprocess.run(
            [ZORPELX, *words, "--timeout", str(seconds)],
            cwd=self.folder,
            capture_output=True,
            text=True,
            timeout=30,
            **more,
        )
        self.assertEqual(run.returncode, 124, (words, run.stderr))
        self.assertIn("the deadline came while it was being read", run.stderr)
        self.assertLess(time.monotonic() - begin, seconds + 5)

    def test_a_pipe_that_nobody_writes(self):
        os.mkfifo(self.folder / "g")
        self.file("g.part.2", "0\n1\n")
        for words in COMMANDS.values():
            self.waits(*words)

    def test_a_pipe_whose_writer_stops(self):
        os.mkfifo(self.folder / "g")
        writer = os.open(self.folder / "g", os.O_RDWR)
        self.addCleanup(os.close, writer)
        os.write(writer, b"2 3\n1 2\n")
        self.waits("stats", "g")
        packed = gzip.compress(random_hypergraph(3000, 5000).encode())
        os.write(writer, packed[:5000])
        self.waits("lint", "g")

    def test_standard_input_that_stays_open(self):
        end, writer = os.pipe()
        self.addCleanup(os.close, writer)
        self.addCleanup(os.close, end)
        self.waits("stats", "-", stdin=end)

    def test_fix_and_partition_files(self):
        self.file("g", "1 3\n1 2 3\n")
        self.file("p.part.2", "0\n0\n1\n")
        os.mkfifo(self.folder / "slow.part.2")
        self.waits("verify", "g", "slow.part.2")
        self.waits("verify", "g", "p.part.2", "slow.part.2")
        self.waits("verify", "g", "p.part.2", "--report", "slow.part.2")
        self.waits("lint", "g", "slow.part.2")
        self.waits("partition", "g", "-k", "2", "--fix", "slow.part.2")

    def test_expansion_without_end(self):
        """A gigabyte of comments takes longer than a tenth of a second."""
        block = gzip.compress(b"% " + b"c" * (1 << 20) + b"\n")
        self.file("g", block * 3000)
        self.waits("stats", "g", seconds=0.1)

    def test_a_pipe_is_read_once_its_writer_comes(self):
        os.mkfifo(self.folder / "g")
        with subprocess.Popen(
            [ZORPELX, "stats", "g"], cwd=self.folder, stdout=subprocess.PIPE, text=True
        ) as run:
            time.sleep(0.3)
            with open(self.folder / "g", "w") as pipe:
                pipe.write("1 3\n")
                pipe.flush()
                time.sleep(0.3)
                pipe.write("1 2 3\n")
            self.assertIn("3 vertices, 1 hyperedge, 3 pins", run.communicate()[0])


if __name__ == "__main__":
    unittest.main()
