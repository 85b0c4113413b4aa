#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Makes every hypergraph and fix file of this folder: make_examples.py [OUTPUT_FOLDER]

The circuits are synthesised by yosys from the Verilog files beside this script and turned from
its JSON into hypergraphs; the mesh and the formula are built here. Nothing is random and nothing
depends on the place of the folder, so two runs with one version of yosys write the same bytes.
The sizes of what was written are printed as the rows of the table in README.md.
"""

import json
import os
import subprocess
import sys
import tempfile

HERE = os.path.dirname(os.path.abspath(__file__))

GATES = "AND,NAND,OR,NOR,XOR,XNOR,MUX,AOI3,OAI3,AOI4,OAI4"

# Usual transistor counts of static CMOS cells; a flip-flop with enable or reset is counted as
# the plain one plus the gate before its input. A port bit counts 1.
TRANSISTORS = {
    "$_NOT_": 2, "$_NAND_": 4, "$_NOR_": 4, "$_AND_": 6, "$_OR_": 6, "$_XOR_": 10, "$_XNOR_": 10,
    "$_MUX_": 12, "$_AOI3_": 6, "$_OAI3_": 6, "$_AOI4_": 8, "$_OAI4_": 8, "$_DFF_P_": 24,
    "$_DFFE_PP_": 36, "$_SDFF_PP0_": 28,
}


def write_hypergraph(folder, name, title, nvertices, nets, netwgts=None, vertexwgts=None):
    """Writes one file; nets are lists of distinct vertices from 0, each of at least two."""
    assert all(len(set(net)) == len(net) >= 2 for net in nets)
    assert set(v for net in nets for v in net) == set(range(nvertices))
    code = (10 if vertexwgts else 0) + (1 if netwgts else 0)
    lines = ["%% %s" % title, "%d %d" % (len(nets), nvertices) + (" %d" % code if code else "")]
    for e, net in enumerate(nets):
        numbers = [v + 1 for v in net]
        lines.append(" ".join(str(x) for x in ([netwgts[e]] if netwgts else []) + numbers))
    if vertexwgts:
        lines += [str(w) for w in vertexwgts]
    write_text(folder, name, lines)
    print("| `%s` | %d | %d | %d | %d | %d | %d |"
          % (name, nvertices, len(nets), sum(map(len, nets)), max(map(len, nets)), code,
             sum(len(line) + 1 for line in lines)))


def write_text(folder, name, lines):
    with open(os.path.join(folder, name), "w", encoding="ascii", newline="\n") as out:
        out.write("\n".join(lines) + "\n")


# ---- circuits ------------------------------------------------------------------------------

def synthesise(top, script):
    """Runs yosys on TOP.v with the given commands and returns the top module of its JSON."""
    with tempfile.TemporaryDirectory() as folder:
        result = os.path.join(folder, "netlist.json")
        commands = "read_verilog %s.v; hierarchy -check -top %s; %s; write_json %s" % (
            top, top, script, result)
        subprocess.run(["yosys", "-q", "-p", commands], cwd=HERE, check=True)
        with open(result, encoding="utf-8") as netlist:
            return json.load(netlist)["modules"][top]


def gate_level(top):
    return synthesise(top, "synth -flatten -top %s; abc -g %s; opt_clean -purge" % (top, GATES))


def netlist(module, words):
    """Returns (kinds, nets, netwgts): a vertex for each cell and each port, a net for each wire.

    A port is one vertex a bit, or with words one vertex altogether. With words the wires that
    join the same vertices are one net, and its weight is their number. Wires that join fewer
    than two vertices are dropped, and so are the vertices that no wire reaches. kinds[v] is
    the type of a cell or (port, bit).
    """
    kinds, pins = [], {}

    def add(kind, bits):
        kinds.append(kind)
        for bit in bits:
            if isinstance(bit, int):                        # a string is a constant
                pins.setdefault(bit, {})[len(kinds) - 1] = True

    for cell in module["cells"].values():
        add(cell["type"], [bit for bits in cell["connections"].values() for bit in bits])
    for name, port in module["ports"].items():
        if words:
            add((name, 0), port["bits"])
        else:
            for i, bit in enumerate(port["bits"]):
                add((name, i), [bit])

    groups = {}
    for bit in sorted(pins):
        net = tuple(sorted(pins[bit]))
        if len(net) >= 2:
            groups.setdefault(net if words else bit, []).append(net)
    nets = [group[0] for group in groups.values()]
    netwgts = [len(group) for group in groups.values()]

    used = sorted(set(v for net in nets for v in net))
    number = {v: i for i, v in enumerate(used)}
    return [kinds[v] for v in used], [[number[v] for v in net] for net in nets], netwgts


def make_mult16(folder):
    """The multiplier, and a fix file that spreads its ports over four parts."""
    kinds, nets, _ = netlist(gate_level("mult16"), False)
    write_hypergraph(folder, "mult16.hgr",
                     "16 x 16 bit array multiplier, gates and port bits", len(kinds), nets)
    fixed = []
    for kind in kinds:
        if isinstance(kind, str):
            fixed.append(-1)
        else:
            port, bit = kind
            fixed.append({"a": 0, "b": 1, "p": 2 if bit < 16 else 3}[port])
    write_text(folder, "mult16.fix4", [str(part) for part in fixed])


def make_gates(folder, top, title):
    """A circuit at gate level, weighted by transistor counts."""
    kinds, nets, _ = netlist(gate_level(top), False)
    weights = [TRANSISTORS[kind] if isinstance(kind, str) else 1 for kind in kinds]
    write_hypergraph(folder, top + ".hgr", title, len(kinds), nets, vertexwgts=weights)


def make_cpu32_bus(folder):
    """The processor before its operators are broken into gates."""
    module = synthesise("cpu32", "proc; flatten; opt; memory; opt -full; opt_clean -purge")
    kinds, nets, netwgts = netlist(module, True)
    write_hypergraph(folder, "cpu32_bus.hgr",
                     "small 32-bit processor, word operators and buses; hyperedge weight: wires",
                     len(kinds), nets, netwgts=netwgts)


# ---- mesh ----------------------------------------------------------------------------------

def lshape_mesh(n):
    """Six-node triangles of an n x n square of cells less its upper right quarter, and their nodes
    in the order of their numbers. A cell is two units wide and cut into two triangles."""
    triangles = []
    for y in range(n):
        for x in range(n):
            if 2 * x >= n and 2 * y >= n:
                continue
            a, b, c, d = (2*x, 2*y), (2*x + 2, 2*y), (2*x + 2, 2*y + 2), (2*x, 2*y + 2)
            for corners in ((a, b, c), (a, c, d)):
                sides = [((p[0] + q[0]) // 2, (p[1] + q[1]) // 2)
                         for p, q in zip(corners, corners[1:] + corners[:1])]
                triangles.append(list(corners) + sides)
    nodes = sorted(set(p for t in triangles for p in t), key=lambda p: (p[1], p[0]))
    return triangles, nodes


def make_lshape(folder, n):
    """Matrix of a flow problem on an L-shaped domain, six-node triangles, column-net model.

    Nodes are the corners (three unknowns: two velocities and a pressure) and the mid-sides (two
    velocities). Row i of the matrix is a vertex, weighted by the unknowns of node i; column j is a
    hyperedge over the rows that need the values of node j, weighted by how many values that is.
    """
    triangles, nodes = lshape_mesh(n)
    number = {p: i for i, p in enumerate(nodes)}
    rows = [set() for _ in nodes]
    for t in triangles:
        for p in t:
            rows[number[p]].update(number[q] for q in t)
    unknowns = [3 if p[0] % 2 == 0 and p[1] % 2 == 0 else 2 for p in nodes]
    write_hypergraph(folder, "lshape.hgr",
                     "flow matrix on an L-shaped mesh of six-node triangles; weights: unknowns",
                     len(nodes), [sorted(r) for r in rows], unknowns, unknowns)


# ---- formula -------------------------------------------------------------------------------

def new_variable(formula):
    formula["variables"] += 1
    return formula["variables"]


def encode_and(formula, x, y):
    out = new_variable(formula)
    formula["clauses"] += [[-out, x], [-out, y], [out, -x, -y]]
    return out


def encode_or(formula, x, y):
    return -encode_and(formula, -x, -y)


def encode_xor(formula, x, y):
    out = new_variable(formula)
    formula["clauses"] += [[-out, x, y], [-out, -x, -y], [out, -x, y], [out, x, -y]]
    return out


def encode_sum(formula, bits):
    """Adds two or three bits: (sum, carry)."""
    if len(bits) == 2:
        return encode_xor(formula, *bits), encode_and(formula, *bits)
    x, y, z = bits
    half = encode_xor(formula, x, y)
    carry = encode_or(formula, encode_and(formula, x, y), encode_and(formula, half, z))
    return encode_xor(formula, half, z), carry


def encode_product(formula, a, b, take):
    """Product of two words: each column is summed down to one bit, carries going left.

    take picks the bits to add next from a column: the first ones for a chain of adders, the
    last ones for another order of the same additions.
    """
    columns = [[] for _ in range(len(a) + len(b) + 1)]
    for j, y in enumerate(b):
        for i, x in enumerate(a):
            columns[i + j].append(encode_and(formula, x, y))
    for k in range(len(a) + len(b)):
        while len(columns[k]) > 1:
            count = min(3, len(columns[k]))
            bits = take(columns[k], count)
            total, carry = encode_sum(formula, bits)
            columns[k].append(total)
            columns[k + 1].append(carry)
    return [columns[k][0] for k in range(len(a) + len(b))]


def take_first(column, count):
    bits = column[:count]
    del column[:count]
    return bits


def take_last(column, count):
    bits = column[-count:]
    del column[-count:]
    return bits


def make_miter(folder, n):
    """Formula that asks whether two n x n multipliers can differ, as its dual hypergraph.

    A clause is a vertex, a variable is a hyperedge over the clauses it stands in.
    """
    formula = {"variables": 0, "clauses": []}
    a = [new_variable(formula) for _ in range(n)]
    b = [new_variable(formula) for _ in range(n)]
    first = encode_product(formula, a, b, take_first)
    second = encode_product(formula, b, a, take_last)
    formula["clauses"].append([encode_xor(formula, x, y) for x, y in zip(first, second)])
    nets = [[] for _ in range(formula["variables"])]
    for i, clause in enumerate(formula["clauses"]):
        for variable in sorted(set(abs(x) for x in clause)):
            nets[variable - 1].append(i)
    write_hypergraph(folder, "miter%d.hgr" % n,
                     "formula comparing two %d x %d bit multipliers, clauses joined by variables"
                     % (n, n), len(formula["clauses"]), nets)


def main():
    if len(sys.argv) > 2 or sys.argv[1:2] in (["-h"], ["--help"]):
        sys.exit("usage: make_examples.py [OUTPUT_FOLDER]")
    folder = sys.argv[1] if len(sys.argv) > 1 else HERE
    os.makedirs(folder, exist_ok=True)
    print("| file | vertices | hyperedges | pins | largest | code | bytes |")
    print("| --- | ---: | ---: | ---: | ---: | ---: | ---: |")
    make_mult16(folder)
    make_gates(folder, "fifo", "FIFO of 16 words of 8 bits, gates and port bits; vertex weight: "
               "transistors")
    make_gates(folder, "cpu32", "small 32-bit processor, gates and port bits; vertex weight: "
               "transistors")
    make_cpu32_bus(folder)
    make_lshape(folder, 16)
    make_miter(folder, 6)


if __name__ == "__main__":
    main()
