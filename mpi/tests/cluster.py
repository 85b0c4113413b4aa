# SPDX-License-Identifier: MIT
"""What the tests of zorpelx-mpi share: runs under mpirun over loopback, small hypergraphs."""

import os
import random
import subprocess

ZORPELX = os.environ["ZORPELX"]
ZORPELX_MPI = os.environ["ZORPELX_MPI"]
MPIRUN = os.environ.get("MPIRUN", "mpirun")
SOURCE = os.environ["ZORPEL_SOURCE"]
LOOPBACK = ["--oversubscribe", "--bind-to", "none", "--mca", "pml", "ob1",
            "--mca", "btl", "self,vader,tcp", "--mca", "btl_tcp_if_include", "lo",
            "--mca", "oob_tcp_if_include", "lo", "--mca", "mpi_yield_when_idle", "1"]


def mpirun(ranks, words, options=(), timeout=300, wrapper=(), **more):
    """A finished run of zorpelx-mpi by so many ranks."""
    return subprocess.run([MPIRUN, *LOOPBACK, *options, "-np", str(ranks), *wrapper,
                           ZORPELX_MPI, *words],
                          stdin=subprocess.DEVNULL, capture_output=True, text=True,
                          timeout=timeout, check=False, **more)


def write_hypergraph(path, nvertices, hyperedges, weights=None):
    """Weights of the vertices, if there are any, one a line behind the hyperedges."""
    with open(path, "w", encoding="ascii") as file:
        file.write(f"{len(hyperedges)} {nvertices}{' 10' if weights else ''}\n")
        for pins in hyperedges:
            file.write(" ".join(str(pin + 1) for pin in pins) + "\n")
        for weight in weights or []:
            file.write(f"{weight}\n")


def random_hyperedges(seed, nvertices, nhyperedges, largest=6):
    chance = random.Random(seed)
    most = min(largest, nvertices)
    return [chance.sample(range(nvertices), chance.randint(min(2, most), most))
            for _ in range(nhyperedges)]
