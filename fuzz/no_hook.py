#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Checks with nm that what ships carries nothing of the fuzzers' fatal exit.

usage: no_hook.py FUZZ_PROGRAM SHIPPED...

The fuzz program itself must carry it, or the check would see nothing anywhere.
"""
import subprocess
import sys

MARKS = ("fuzz", "longjmp", "setjmp")


def marks_of(name):
    listing = subprocess.run(["nm", "-C", name], capture_output=True, text=True, check=True).stdout
    if not listing.strip():  # a stripped shared library keeps its dynamic names
        listing = subprocess.run(["nm", "-DC", name], capture_output=True, text=True).stdout
    return [line for line in listing.splitlines() if any(mark in line for mark in MARKS)]


program, *shipped = sys.argv[1:]
if not marks_of(program):
    sys.exit(f"{program} does not carry the hook: the check is blind")
for name in shipped:
    for line in marks_of(name):
        sys.exit(f"{name} carries {line}")
print(f"{len(shipped)} files without the hook")
