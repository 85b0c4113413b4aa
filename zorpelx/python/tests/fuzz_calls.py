# SPDX-License-Identifier: MIT
"""Calls with random arguments, sound and absurd: whatever they are, a result or a zorpel.Error.

Usage: fuzz_calls.py COUNT [SEED]; prints the call at fault and ends with 1 if one is met.
"""

import os
import random
import sys
import tempfile
import warnings
from array import array
from fractions import Fraction
from pathlib import Path

import zorpel

try:
    import numpy
except ImportError:
    numpy = None
try:
    import scipy.sparse
except ImportError:
    scipy = None

NUMBERS = [-(2**64), -(2**31) - 1, -2, -1, 0, 1, 2, 3, 4, 5, 7, 49, 50, 1000, 10**6 + 1]
NUMBERS += [2**31 - 1, 2**31, 2**32, 2**63 - 1, 2**63, 2**64 + 100, True, False]
ODDITIES = [None, 1.5, float("nan"), float("inf"), -1e300, "", "2", "hfc", "yes", b"x", [], (), {}]
ODDITIES += [[1], {1}, object(), int, len, Ellipsis, 1j, Fraction(3, 2), range(3), array("d", [1.0])]
ODDITIES += ["/nowhere/at/all", Path("/"), "a\0b", "\udcff", "ü" * 300, lambda *_: 0, Exception]
if numpy is not None:
    ODDITIES += [numpy.int64(3), numpy.float32(2.5), numpy.zeros((2, 2)), numpy.array([]), numpy.nan]
    ODDITIES += [numpy.array([1, 2], dtype=object), numpy.array(["a"]), numpy.array([True])]
    ODDITIES += [numpy.uint64(2**64 - 1), numpy.ma.masked, numpy.datetime64("2020-01-01")]

SEARCH = "epsilon least capacities start keep_in_place together time".split()
ENGINE = "ubfactor runs matching refine vcycle reconst polish trace".split()
OPTIONS = (
    "objective preset fix seed jobs timeout memory progress nvtxs vertex_weights hyperedge_weights "
    "threads"
).split()
SOUND = {
    "preset": ["fast", "default"],
    "matching": ["hfc", "fc", "gfc", "hedge", "edge", 3],
    "refine": ["fm", "1wayfm", "eefm"],
    "vcycle": ["no", "end", "formin", "all"],
    "reconst": [True, False, "yes", "no"],
    "polish": [True, False, "yes", "no"],
    "ubfactor": [1, 5, 20, 49],
    "epsilon": [0, 3, 10, 200.5],
    "least": [0, 10, 100],
    "objective": ["cut", "km1", "soed", 2],
    "keep_in_place": [0, 1, 7],
    "time": [None, 0.05],
    "capacities": [[1, 2], [3, 3, 2], [0.5, 1.5]],
    "start": [[0, 1, 0, 1], [1] * 6],
    "together": [[-1, 0, 0, 2**31 - 1], [3] * 6],
    "seed": [1, 2, None, -1],
    "trace": [0, 8, 64, 511],
    "memory": [None, 1, 64],
    "timeout": [None, 20, 1e-9],
    "jobs": [0, 1, 1000],
    "threads": [0, 1, 2],
    "progress": [None, 3, lambda _: False, lambda progress: progress.finished],
}


def weird(chance):
    """Anything."""
    return chance.choice(ODDITIES if chance.random() < 0.5 else NUMBERS)


def ints(chance, count, most):
    """A list of integers that fits, or nearly."""
    count += chance.choice([0] * 9 + [1, -1])
    values = [chance.randint(0, max(0, most)) for _ in range(max(0, count))]
    if values and chance.random() < 0.2:
        values[chance.randrange(len(values))] = weird(chance)
    kind = chance.random()
    if kind < 0.1:
        return tuple(values)
    if kind < 0.2:
        return iter(values)
    if kind < 0.3 and numpy is not None and all(isinstance(v, int) for v in values):
        kind = chance.choice(["i4", "i8", "u2", "f8"])
        return numpy.array([value % 2**31 for value in values]).astype(kind)
    return values


def hypergraph(chance, folder):
    """A hypergraph of some kind, or nearly one."""
    nvtxs = chance.randint(1, 12)
    lists = [
        chance.sample(range(nvtxs), chance.randint(0, min(4, nvtxs)))
        for _ in range(chance.randint(0, 8))
    ]
    if lists and chance.random() < 0.1:
        lists[0] = weird(chance)
    kind = chance.random()
    if kind < 0.1:
        return weird(chance)
    if kind < 0.3:
        eptr = [0]
        eind = []
        for pins in lists:
            eind += pins if isinstance(pins, list) else [pins]
            eptr.append(len(eind))
        if chance.random() < 0.2:
            eptr[chance.randrange(len(eptr))] = weird(chance)
        return (eptr, eind)
    if kind < 0.4:
        path = os.path.join(folder, "a.hgr")
        lines = [" ".join(map(str, pins if isinstance(pins, list) else [pins])) for pins in lists]
        text = "\n".join([f"{len(lists)} {nvtxs}", *lines, ""])
        Path(path).write_bytes(text.encode(errors="replace"))
        return path
    if kind < 0.5 and scipy is not None:
        return scipy.sparse.random(4, nvtxs, 0.4, random_state=chance.randrange(1000))
    if kind < 0.6:
        return zorpel.as_hypergraph(lists)
    return lists


def options(chance):
    """Some options, most of them sound."""
    own = SEARCH if chance.random() < 0.5 else ENGINE
    given = {"starts": chance.choice([1, 2])}
    given.update({"preset": "fast"} if own is SEARCH else {"runs": 1})
    names = OPTIONS + own + (SEARCH if chance.random() < 0.05 else [])
    for name in chance.sample(names, chance.randint(0, 4)):
        sound = name == "progress" or chance.random() < 0.7 and name in SOUND
        given[name] = chance.choice(SOUND[name]) if sound else weird(chance)
    if chance.random() < 0.1:
        given[chance.choice(["runs", "starts"])] = chance.choice(ODDITIES + [-1, 0, 2**40])
    many = any(isinstance(given.get(name), int) and given[name] > 2 for name in ("runs", "starts"))
    if given.get("timeout") is None or many:
        given["timeout"] = 20
    return given


def one_call(chance, folder):
    """Makes a call; returns its name."""
    kind = chance.choice(["partition"] * 3 + ["evaluate", "hyperedges", "matrix", "limits", "write"])
    nparts = chance.choice([2, 2, 3, 4]) if chance.random() < 0.8 else weird(chance)
    if kind == "limits":
        chance.choice([zorpel.part_limits, zorpel.part_bounds])(nparts, weird(chance), weird(chance))
        return kind
    graph = hypergraph(chance, folder)
    if kind == "partition":
        result = zorpel.partition(graph, nparts, **options(chance))
        assert repr(result) and result._repr_html_() and result == result
        return kind
    if kind == "write":
        zorpel.write(os.path.join(folder, chance.choice(["b.hgr", "b.hgr.gz", "no/b.hgr"])), graph)
        return kind
    part = ints(chance, chance.randint(1, 12), 3) if chance.random() < 0.9 else weird(chance)
    routine = {
        "evaluate": zorpel.evaluate,
        "hyperedges": zorpel.cut_hyperedges,
        "matrix": zorpel.cut_matrix,
    }[kind]
    repr(routine(graph, part, nparts if chance.random() < 0.7 else None))
    return kind


def main(count, seed):
    """Makes so many calls."""
    warnings.simplefilter("ignore")
    tally = {}
    with tempfile.TemporaryDirectory() as folder:
        for number in range(count):
            chance = random.Random(seed * 1000003 + number)
            try:
                outcome = one_call(chance, folder)
            except zorpel.Error as error:
                assert str(error), number
                outcome = type(error).__name__
            except BaseException:
                print(f"call {number} of seed {seed}", file=sys.stderr, flush=True)
                raise
            tally[outcome] = tally.get(outcome, 0) + 1
    print(f"{count} calls: {tally}")
    if count >= 200:
        assert tally.get("partition", 0) > count // 20 and tally.get("InputError", 0) > count // 20


if __name__ == "__main__":
    main(int(sys.argv[1]), int(sys.argv[2]) if len(sys.argv) > 2 else 1)
