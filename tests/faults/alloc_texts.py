#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Runs the allocation loop and compares the arrays that it saw fail with those in the sources.

usage: alloc_texts.py FAULT_MEMORY SOURCES

Every array of the engine is allocated under a name; the loop must have seen each name fail.
"""
import pathlib
import re
import subprocess
import sys
import tempfile

# From the allocating call to the end of its statement, which holds the name.
ALLOCATION = re.compile(
    r"\b(?:QXmalloc__|alloc_records|i?s?malloc__|fs?malloc__|alloc_array<[^>]+>|copy_weights)"
    r"\([^;]*;"
)
TABLE_NAME = re.compile(r"[A-Z]\w+: [\w>\[\].-]+")
# of the same form, but given to the opening of a file
OPENED = {"WriteHGraphPart: partfile", "ReadPartition: partfile"}
TEXT = re.compile(r'"((?:[^"\\]|\\.)*)"')


def names_in_sources(folder):
    names = set()
    for source in [*folder.rglob("*.cpp"), *folder.rglob("*.h")]:
        text = source.read_text()
        for statement in ALLOCATION.findall(text):
            names.update(TEXT.findall(statement))
        # tables of names, such as one for each side
        if "alloc" in text:
            names.update(name for name in TEXT.findall(text) if TABLE_NAME.fullmatch(name))
    return names - OPENED


def main():
    program, folder = map(pathlib.Path, sys.argv[1:])
    with tempfile.TemporaryDirectory() as place:
        seen_file = pathlib.Path(place, "names")
        status = subprocess.run([program.resolve(), seen_file], cwd=place).returncode
        if status != 0:
            sys.exit(f"the allocation loop ended with status {status}")
        seen = set(seen_file.read_text().splitlines())
    wanted = names_in_sources(folder)
    unseen = sorted(wanted - seen)
    print(f"{len(wanted)} names in the sources, {len(wanted & seen)} of them seen to fail")
    for name in unseen:
        print(f"never seen to fail: {name}")
    for name in sorted(seen - wanted):
        print(f"seen, but not found in the sources: {name}")
    sys.exit(bool(unseen) or len(wanted) < 80 or bool(seen - wanted))


main()
