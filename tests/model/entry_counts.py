#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Files with as many vertex entries as 32 bits count, and more.

usage: entry_counts.py ZORPEL

Up to 2147483647 entries a file is read, and every one of them counts; above it is refused. The
entries repeat two vertices, so the hypergraph is small, but the program holds 4 GB of text, twice
while it makes room. Skipped (status 77) where that much memory is not free.
"""
import os
import pathlib
import subprocess
import sys
import tempfile

MOST = 2147483647
LONGEST = 65535  # entries of one digit on a line
MEMORY = 14 << 30


def write_file(file, entries):
    """Writes hyperedges of LONGEST entries each, the last of fewer; returns how many."""
    full = b"1 2" + b" 1" * (LONGEST - 2) + b"\n"
    lines, rest = divmod(entries, LONGEST)
    assert rest >= 2  # each hyperedge names both vertices
    file.write(f"{lines + 1} 2\n".encode())
    for _ in range(lines):
        file.write(full)
    file.write(b"1 2" + b" 1" * (rest - 2) + b"\n")
    return lines + 1


def run(program, entries):
    """The program's streams for a file of so many entries, fed through a pipe."""
    with tempfile.TemporaryDirectory() as place:
        pipe = pathlib.Path(place, "in.hgr")
        os.mkfifo(pipe)
        words = [program, "in.hgr", *"2 5 1 1 1 0 0 0".split()]
        with subprocess.Popen(
            words, cwd=place, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True
        ) as child:
            with pipe.open("wb") as file:
                nlines = write_file(file, entries)
            output, errors = child.communicate()
            assert child.returncode == 0, child.returncode
            return output, errors, nlines


def main():
    program = pathlib.Path(sys.argv[1]).resolve()
    free = os.sysconf("SC_AVPHYS_PAGES") * os.sysconf("SC_PAGE_SIZE")
    if free < MEMORY:
        print(f"skipped: {free >> 20} MB free")
        sys.exit(77)
    for more in (-1, 0, 1, 2):
        output, errors, nlines = run(program, MOST + more)
        if more <= 0:
            print(f"{MOST + more} entries: read")
            assert errors == "", errors
            assert f"#Hedges: {nlines}" in output and "Summary" in output, output
        else:
            print(f"{MOST + more} entries: refused")
            assert errors == "Too many vertex entries for 32 bits in the input file!\n\n", errors
            assert "Summary" not in output


main()
