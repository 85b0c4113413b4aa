#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Measures reading, writing and the whole program on files.

    measure_files.py [--folder DIR] [--generate netlist] [--pins 1e5,1e6,1e7] [--program 2,8]
             [--into FILE:NAME]

The program's reader is held against `wc -w`, which does no more than count the file's words, in the
C locale, in which it is fastest; the two take turns. Figures are medians of CPU seconds. --program
runs the program whole, one run without V-cycles for each number of parts, and tells its peak
memory, which includes the file's text, and what it reports of its own time.
"""

import argparse
import os
import re
import subprocess
import sys
import tempfile
import time
from pathlib import Path
from statistics import median

sys.dont_write_bytecode = True
import lab  # noqa: E402 (no bytecode beside it)

PROGRAM = lab.BUILD / "src" / "zorpel"
SCHEME = ("5", "1", "1", "1", "0", "0", "0")  # UBfactor and what follows: one run, no V-cycles
POLL = 0.003  # seconds
PARTITIONING = re.compile(r"Partitioning Time:\s+([\d.]+)sec")


def peak_so_far(pid):
    """Peak memory of a process in bytes, 0 once it has ended."""
    told = re.search(r"VmHWM:\s+(\d+) kB", Path("/proc/%d/status" % pid).read_text())
    return 1024 * int(told.group(1)) if told else 0


def run_apart(words, **options):
    """(output, CPU seconds, peak memory in bytes) of a process.

    The peak is asked for every few milliseconds: what the system tells at the end is no less than
    this interpreter had when it started the process.
    """
    with tempfile.TemporaryFile("w+") as output:
        process = subprocess.Popen(words, stdout=output, **options)
        ended, peak = 0, 0
        while ended == 0:
            peak = max(peak, peak_so_far(process.pid))
            time.sleep(POLL)
            ended, status, usage = os.wait4(process.pid, os.WNOHANG)
        process.returncode = os.waitstatus_to_exitcode(status)
        if process.returncode != 0:
            raise lab.Failure("%s ended with status %d" % (words[0], process.returncode))
        output.seek(0)
        return output.read(), usage.ru_utime + usage.ru_stime, peak


def row_of_file(path, rounds):
    """A line of the table of reading and writing."""
    counted, read, written, pins = [], [], [], 0
    for _ in range(rounds):
        counted.append(run_apart(["wc", "-w", path], env={**os.environ, "LC_ALL": "C"})[1])
        cells = run_apart([lab.tool("zorpel-io"), path])[0].split(",")
        if len(cells) != 5:
            raise lab.Failure("zorpel-io cannot read %s" % path)
        read.append(float(cells[0]))
        written.append(float(cells[1]))
        pins = int(cells[4])
    speeds = [c / max(r, 1e-6) for c, r in zip(counted, read)]
    shown = "%.2f (%.2f-%.2f)" % (median(speeds), min(speeds), max(speeds))
    size = "%.1f" % (path.stat().st_size / 1e6)
    times = [lab.seconds(median(column)) for column in (counted, read)]
    per_pin = "%.0f" % (1e9 * median(read) / max(1, pins))
    return [lab.instance_name(path), pins, size, *times, per_pin, shown, "%.4f" % median(written)]


def row_of_program(path, nparts, pins):
    """A line of the table of the program."""
    output, seconds, peak = run_apart([PROGRAM, path, str(nparts), *SCHEME])
    told = PARTITIONING.search(output)
    if told is None:
        raise lab.Failure("zorpel gave up on %s: %s" % (path, output.strip()))
    partitioning = float(told.group(1))
    return [
        *(lab.instance_name(path), pins, nparts),
        *(lab.seconds(seconds), lab.seconds(partitioning)),
        *("%.2f" % (1e6 * partitioning / pins), "%.0f" % (peak / 1e6), "%.0f" % (peak / pins)),
    ]


def parse_words():
    parser = argparse.ArgumentParser(
        description=__doc__.splitlines()[0], formatter_class=argparse.ArgumentDefaultsHelpFormatter
    )
    add = parser.add_argument
    add("--folder", help="hypergraphs to measure on, .hgr or .hgr.gz")
    add("--generate", default="netlist", metavar="FAMILY,...", help="'' for none")
    add("--pins", default="1e5,1e6,1e7", metavar="N,...")
    add("--rounds", type=int, default=5, help="readings of each file")
    add("--program", default="", metavar="NPARTS,...", help="the whole program too")
    add("--into", metavar="FILE:NAME", help="put the tables into a document too")
    return parser.parse_args()


def main():
    request = parse_words()
    try:
        inputs = lab.inputs_of_folder(request.folder) if request.folder else []
        sizes = [int(float(word)) for word in request.pins.split(",")]
        families = [family for family in request.generate.split(",") if family]
        inputs += [lab.generate(family, pins) for family in families for pins in sizes]
        rows = [row_of_file(Path(path), request.rounds) for path in inputs]
        columns = ["file", "pins", "MB", "wc -w s", "reading s", "ns/pin"]
        columns += ["speed, wc -w = 1", "writing s"]
        texts = [lab.markdown(columns, rows)]
        if request.program:
            runs = [
                row_of_program(path, int(nparts), row[1])
                for path, row in zip(inputs, rows)
                for nparts in request.program.split(",")
            ]
            columns = ["file", "pins", "parts", "CPU s", "partitioning s", "us/pin"]
            texts.append(lab.markdown([*columns, "peak MB", "bytes/pin"], runs))
        print("\n\n".join(texts))
        if request.into:
            lab.put_into(request.into, "\n\n".join(texts))
    except lab.Failure as failure:
        sys.exit("measure_files.py: %s" % failure)


if __name__ == "__main__":
    main()
