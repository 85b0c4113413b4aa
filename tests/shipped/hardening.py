#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Looks at the programs and libraries of a build for what protects them: hardening.py BUILD

Position-independent, relocations read-only and resolved at the start, no executable stack, no path
of the build, stack protector, the C library's checked functions, and landing pads (x86-64) where a
routine can be called from outside.
"""

import re
import subprocess
import sys
import unittest
from pathlib import Path

BUILD = Path("build/release")


def told(*words):
    return subprocess.run(words, capture_output=True, text=True, check=True).stdout


def shipped():
    """What is installed of the build, as far as it is there."""
    found = {path.name: path for path in BUILD.glob("src/libzorpel.so.*.*.*")}
    found |= {path.name: path for path in BUILD.glob("zorpelx/lib/libzorpelx.so.*.*.*")}
    programs = (BUILD / "src/zorpel", BUILD / "zorpelx/cli/zorpelx")
    return found | {path.name: path for path in programs if path.exists()}


class Binaries(unittest.TestCase):
    def each(self):
        binaries = shipped()
        self.assertIn("zorpel", binaries)
        for name, path in binaries.items():
            with self.subTest(name):
                yield path

    def test_relocations_are_read_only_and_resolved_at_the_start(self):
        for path in self.each():
            segments = told("readelf", "-lW", path)
            self.assertIn("GNU_RELRO", segments)
            self.assertRegex(told("readelf", "-dW", path), r"BIND_NOW|Flags: .*\bNOW\b")
            self.assertRegex(segments, r"GNU_STACK .* RW +0x")

    def test_programs_may_stand_anywhere(self):
        for path in self.each():
            self.assertRegex(told("readelf", "-hW", path), r"Type: +DYN ")
            if ".so" not in path.name:
                self.assertRegex(told("readelf", "-dW", path), r"Flags: .*\bPIE\b")

    def test_stack_and_buffers_are_checked(self):
        for path in self.each():
            symbols = told("nm", "-D", path)
            self.assertIn("__stack_chk_fail", symbols)
            self.assertRegex(symbols, r"__\w*printf_chk")

    def test_every_engine_file_has_the_stack_protector(self):
        """Of a file in which no routine has an array, the command that made it."""
        commands = told("ninja", "-C", BUILD, "-t", "commands", "src/zorpel")
        compiled = [line for line in commands.splitlines() if " -c " in line]
        self.assertGreater(len(compiled), 30)
        for line in compiled:
            self.assertIn(" -fstack-protector-strong ", line)
            self.assertIn(" -D_FORTIFY_SOURCE=2 ", line)

    def test_exported_routines_are_landing_pads(self):
        machine = told("readelf", "-hW", next(iter(shipped().values())))
        if "X86-64" not in machine:
            self.skipTest("of another processor")
        for path in self.each():
            if ".so" not in path.name:
                continue
            code = told("objdump", "-d", "--no-show-raw-insn", path)
            exported = re.findall(r" T (\w+)@?", told("nm", "-D", "--defined-only", path))
            self.assertGreater(len(exported), 2)
            for name in exported:
                first = re.search(rf"<{name}(?:@@\w+)?>:\n +\w+:\t(\w+)", code)
                self.assertEqual(first and first[1], "endbr64", name)

    def test_no_path_of_the_build_is_in_them(self):
        for path in self.each():
            self.assertNotIn(str(BUILD).encode(), path.read_bytes())


if __name__ == "__main__":
    BUILD = Path(sys.argv.pop(1)).resolve()
    unittest.main()
