#!/usr/bin/env python3
"""Makes the small hypergraphs and fix files of the golden runs, here or in the folder named.

Most are clusters: a hyperedge draws its vertices from a window that slides over the numbering,
and now and then one from afar. The generator is of our own, so every Python makes the same.
"""

import sys
from pathlib import Path


def draws(state):
    """Numbers below 2^31, by a linear congruence (Park and Miller's modulus and multiplier)."""
    while True:
        state = state * 48271 % 2147483647
        yield state


def cluster_nets(rng, vertices, nets, window=12, largest=5):
    lists = []
    for e in range(nets):
        start = e * vertices // nets
        size = 2 + next(rng) % (largest - 1)
        pins = [(start + next(rng) % window) % vertices for _ in range(size)]
        if next(rng) % 8 == 0:
            pins.append(next(rng) % vertices)
        lists.append(list(dict.fromkeys(pins)))
    return [pins for pins in lists if len(pins) > 1]


def hypergraph(comment, vertices, nets, netweights=None, cellweights=None):
    code = (1 if netweights else 0) + (10 if cellweights else 0)
    lines = [f"% {comment}", f"{len(nets)} {vertices}" + (f" {code}" if code else "")]
    for e, pins in enumerate(nets):
        numbers = [v + 1 for v in pins]
        lines.append(" ".join(map(str, [netweights[e]] + numbers if netweights else numbers)))
    return lines + [str(w) for w in cellweights or []]


def make_clusters():
    return hypergraph("clusters", 130, cluster_nets(draws(1), 130, 140))


def make_weighted():
    rng = draws(2)
    nets = cluster_nets(rng, 140, 150)
    netweights = [1 + next(rng) % 9 for _ in nets]
    cellweights = [next(rng) % 7 for _ in range(140)]  # some weigh nothing
    return hypergraph("clusters, both kinds of weights", 140, nets, netweights, cellweights)


def make_netweights():
    rng = draws(3)
    nets = cluster_nets(rng, 120, 130)
    return hypergraph("clusters, hyperedge weights", 120, nets, [1 + next(rng) % 4 for _ in nets])


def make_cellweights():
    rng = draws(4)
    nets = cluster_nets(rng, 125, 130)
    weights = [1 + next(rng) % 20 for _ in range(125)]
    weights[60] = 400  # heavier than a side's slack
    return hypergraph("clusters, vertex weights, one heavy", 125, nets, None, weights)


def make_islands():
    nets = [[v + 20 for v in pins] for pins in cluster_nets(draws(5), 110, 115)]
    return hypergraph("vertices 1-20 and 131-150 lie in no hyperedge", 150, nets)


def make_wide():
    nets = cluster_nets(draws(6), 160, 160)
    nets += [list(range(60)), list(range(50, 160)), list(range(0, 102, 2)), list(range(50))]
    return hypergraph("clusters and hyperedges of 60, 110, 51 and 50 vertices", 160, nets)


def make_twins():
    nets = cluster_nets(draws(7), 120, 60)
    return hypergraph(
        "every hyperedge twice, the second reversed", 120, nets + [n[::-1] for n in nets]
    )


def make_pads():
    """Single-vertex hyperedges and an empty last one, which readers accept."""
    nets = cluster_nets(draws(8), 115, 110) + [[v] for v in range(0, 115, 9)]
    return hypergraph("clusters, hyperedges of one vertex, an empty last one", 115, nets + [[]])


def make_tiny():
    return hypergraph(
        "ten vertices", 10, [[0, 1, 2], [2, 3], [3, 4, 5], [5, 6], [6, 7, 8, 9], [9, 0]]
    )


def fix_lines(vertices, part_of):
    return [str(part_of.get(v, -1)) for v in range(vertices)]


FILES = {
    "clusters.hgr": make_clusters(),
    "weighted.hgr": make_weighted(),
    "netweights.hgr": make_netweights(),
    "cellweights.hgr": make_cellweights(),
    "islands.hgr": make_islands(),
    "wide.hgr": make_wide(),
    "twins.hgr": make_twins(),
    "pads.hgr": make_pads(),
    "tiny.hgr": make_tiny(),
    "three.hgr": hypergraph("three vertices", 3, [[0, 1], [1, 2]]),
    "nonets.hgr": hypergraph("no hyperedges", 6, []),
    "clusters.fix2": fix_lines(130, {0: 0, 1: 0, 2: 1, 64: 1, 65: 0, 129: 1}),
    "clusters.fix4": fix_lines(130, {v: v // 7 % 4 for v in range(0, 130, 7)}),
    "clusters.free": fix_lines(130, {}),
    "clusters.all4": fix_lines(130, {v: v * 4 // 130 for v in range(130)}),
    "clusters.one3": fix_lines(130, {v: 2 for v in range(10, 20)}),
    "islands.fix3": fix_lines(150, {0: 2, 1: 2, 25: 0, 26: 1, 149: 0}),
    "weighted.fix5": fix_lines(140, {v: v % 5 for v in range(0, 140, 10)}),
    "tiny.fix": fix_lines(10, {0: 1, 9: 0}),
}


def main():
    folder = Path(sys.argv[1]) if len(sys.argv) > 1 else Path(__file__).parent
    for name, lines in FILES.items():
        (folder / name).write_text("\n".join(lines) + "\n")


if __name__ == "__main__":
    main()
