# SPDX-License-Identifier: MIT
"""Netlists through convert, partition and annotate, with Yosys and Python as judges.

What is read is looked at as HIF, which Python's own json reads. Inputs are made by Yosys from the
examples, or written here.
"""

import collections
import gzip
import json
import os
import random
import re
import subprocess

import jsonschema
from calls import Case, EXAMPLES

CONSTANTS = {"$false", "$true", "$undef"}

# As the format's paper has it.
ID = {"type": ["string", "integer"]}
PARTS = {"weight": {"type": "number"}, "attrs": {"type": "object"}}


def record(required, **more):
    return {
        "type": "array",
        "items": {
            "type": "object",
            "properties": {**{name: ID for name in required}, **PARTS, **more},
            "required": required,
            "additionalProperties": False,
        },
    }


HIF = {
    "type": "object",
    "properties": {
        "network-type": {"enum": ["undirected", "directed", "asc"]},
        "metadata": {"type": "object"},
        "nodes": record(["node"]),
        "edges": record(["edge"]),
        "incidences": record(["edge", "node"], direction={"enum": ["head", "tail"]}),
    },
    "required": ["incidences"],
    "additionalProperties": False,
}

NODES = """UCLA nodes 1.0
# made by hand
NumNodes : 4
NumTerminals : 1
  a 2 3
  b 4 3
  c 1 3.5
  pad 0 0 terminal
"""
NETS = """UCLA nets 1.0
NumNets : 2
NumPins : 5
NetDegree : 3 first
  a I : 0.5 0.5
  b O : 0 0
  pad I : 0 0
NetDegree : 2
  c B
  b O : 1 1
"""


class Netlists(Case):
    def yosys(self, script):
        done = subprocess.run(
            ["yosys", "-q", "-p", script], cwd=self.folder, capture_output=True, text=True
        )
        self.assertEqual(done.returncode, 0, done.stderr)

    def synthesised(self, *scripts):
        self.example("bridge.v")
        self.yosys("; ".join(["read_verilog bridge.v", "synth -top bridge", *scripts]))

    def hif(self, name, *words, **more):
        done = self.run_ok("convert", name, "-", "--to", "hif", "--force", "-q", *words, **more)
        return json.loads(done.stdout)

    def edges_of(self, hif):
        """The nodes of each edge, by its name."""
        edges = collections.defaultdict(set)
        for incidence in hif["incidences"]:
            edges[incidence["edge"]].add(incidence["node"])
        return edges

    def weights_of(self, hif):
        return {node["node"]: node.get("weight", 1) for node in hif["nodes"]}

    def assert_same_edges(self, ours, theirs):
        self.assertEqual(
            collections.Counter(map(frozenset, ours)), collections.Counter(map(frozenset, theirs))
        )

    def flat_edges(self, name, top):
        """Names and vertices of each net of a flat Yosys netlist, by Python's own json."""
        module = json.loads(self.text(name))["modules"][top]
        pins, names = collections.defaultdict(set), collections.defaultdict(set)
        for cell, its in module["cells"].items():
            for bit in sum(its["connections"].values(), []):
                pins[bit].add(cell)
        for kind, bundles in (("ports", module["ports"]), ("names", module["netnames"])):
            for bundle, its in bundles.items():
                for i, bit in enumerate(its["bits"]):
                    wide = len(its["bits"]) > 1
                    call = f"{bundle}[{i + its.get('offset', 0)}]" if wide else bundle
                    (pins if kind == "ports" else names)[bit].add(call)
        return {bit: (names[bit], pins[bit]) for bit in pins if isinstance(bit, int)}

    # ---- Yosys JSON

    def test_bits_have_the_numbers_of_their_declaration(self):
        """wire [5:2] down and wire [2:5] up: the first of its bits is number 2 of the one, 5 of the
        other."""
        ports = {
            "down": {"direction": "input", "bits": [2, 3, 4, 5], "offset": 2},
            "up": {"direction": "output", "bits": [6, 7, 8, 9], "offset": 2, "upto": 1},
            "one": {"direction": "input", "bits": [10], "offset": 7},
        }
        cells = {
            f"c{bit}": {"type": "$_BUF_", "connections": {"A": [bit], "Y": [bit + 4]}}
            for bit in (2, 3, 4, 5)
        }
        cells["last"] = {"type": "$_NOT_", "connections": {"A": [10]}}
        module = {"ports": ports, "cells": cells, "netnames": {}}
        self.file("bits.json", json.dumps({"creator": "test", "modules": {"m": module}}))
        joined = {}
        for nodes in self.edges_of(self.hif("bits.json")).values():
            port = next(node for node in nodes if node[0] in "duo")
            joined[port] = next(node for node in nodes if node != port)
        expected = {f"down[{i + 2}]": f"c{i + 2}" for i in range(4)}
        expected.update({f"up[{5 - i}]": f"c{i + 2}" for i in range(4)})
        self.assertEqual(joined, {**expected, "one[7]": "last"})

    def test_a_flat_netlist_is_read_as_python_reads_it(self):
        self.synthesised("flatten", "opt_clean", "write_json flat.json")
        ours = self.edges_of(self.hif("flat.json"))
        theirs = self.flat_edges("flat.json", "bridge")
        self.assertGreater(len(theirs), 500)
        self.assert_same_edges(ours.values(), (vertices for _, vertices in theirs.values()))
        for name, vertices in ours.items():
            self.assertIn(name, set().union(*(n for n, v in theirs.values() if v == vertices)))

    def test_a_hierarchical_netlist_is_read_as_its_flat_form(self):
        self.synthesised("write_json deep.json", "flatten", "write_json flat.json")
        deep, flat = (self.edges_of(self.hif(name)) for name in ("deep.json", "flat.json"))
        plain = [{re.sub(r"^\$flatten\\", "", v) for v in vertices} for vertices in flat.values()]
        self.assert_same_edges(deep.values(), plain)
        self.assertTrue(any(name.startswith("u_back.store") for name in deep))

    def test_the_top_module_is_chosen(self):
        self.synthesised("write_json deep.json", "hierarchy -top checksum", "write_json one.json")
        chosen, alone = self.hif("deep.json", "--top-module", "checksum"), self.hif("one.json")
        self.assertEqual(self.edges_of(chosen), self.edges_of(alone))
        self.fails(3, "no module is called 'cheksum'", "stats", "deep.json", "--top-module", "cheksum")

    def test_constants_clocks_and_resets_are_told(self):
        self.file(
            "c.v",
            "module c(input clk, rst, input [3:0] d, output reg [3:0] q, output one);\n"
            "assign one = 1'b1;\n"
            "always @(posedge clk or posedge rst) if (rst) q <= 0; else q <= d;\nendmodule\n",
        )
        self.yosys("read_verilog c.v; synth; write_json c.json")
        told = self.run_ok("stats", "c.json").stderr
        self.assertIn("1 pin is joined to a constant and left out", told)
        self.assertIn("looks like a clock: clk (5 vertices)", told)
        self.assertIn("looks like a reset: rst (5 vertices)", told)
        edges = self.edges_of(self.hif("c.json"))
        kept = self.edges_of(self.hif("c.json", "--skip-nets", "clk,r?t"))
        self.assertEqual(set(edges) - set(kept), {"clk", "rst"})
        self.assertEqual({name: edges[name] for name in kept}, kept)
        self.assertIn("no hyperedge fits", self.run_ok("stats", "c.json", "--skip-nets", "x").stderr)

    def test_areas_come_from_a_table_or_a_liberty_file(self):
        self.synthesised("flatten", "write_json flat.json")
        cells = json.loads(self.text("flat.json"))["modules"]["bridge"]["cells"]
        types = sorted({cell["type"] for cell in cells.values()})
        area = {name: i + 0.5 for i, name in enumerate(types)}
        self.file("a.csv", "type,area\r\n" + "".join(f"{t},{a}\r\n" for t, a in area.items()))
        groups = "".join(
            f'cell ("{t}") {{ /* area : 9 */ pin (A) {{ area : 99; }} area : {a}; }}\n'
            for t, a in area.items()
        )
        self.file("a.lib", f'library (own) {{\n  date : "{{";\n{groups}}}\n')
        for name in ("a.csv", "a.lib"):
            weights = self.weights_of(self.hif("flat.json", "--areas", name))
            for cell, its in cells.items():
                self.assertEqual(weights[cell], 10 * area[its["type"]])
            self.assertEqual(weights["clk"], 0)
        self.file("all.csv", "".join(f"{t},2\n" for t in types[1:]))
        told = self.run_ok("stats", "flat.json", "--areas", "all.csv").stderr
        self.assertIn("1 type has no area in all.csv and counts as 1", told)
        self.file("few.csv", f"{types[0]},2\n")
        told = self.run_ok("stats", "flat.json", "--areas", "few.csv").stderr
        self.assertIn(f"{len(types) - 1} types have no area in few.csv and count as 1", told)
        self.file("bad.csv", "a,1\nb,x\n")
        self.fails(3, "bad.csv:2:3: an area is a number", "stats", "flat.json", "--areas", "bad.csv")

    def test_parts_go_into_the_netlist_and_through_yosys(self):
        self.synthesised("write_json deep.json", "flatten", "write_json flat.json")
        for name, top in (("flat.json", "bridge"), ("deep.json", "bridge")):
            self.run_ok("partition", name, "-k", 3, "-o", "p", "-q")
            parts = list(map(int, self.text("p").split()))
            nodes = [node["node"] for node in self.hif(name)["nodes"]]
            part = dict(zip(nodes, parts))
            self.run_ok("annotate", name, "p", "-o", "parts.json", "-q")
            self.yosys("read_json parts.json; write_json again.json")
            module = json.loads(self.text("again.json"))["modules"][top]
            for cell, its in module["cells"].items():
                if cell in part:
                    self.assertEqual(int(its["attributes"]["zorpel_part"], 2), part[cell])
            self.assertEqual(int(module["netnames"]["clk"]["attributes"]["zorpel_part"], 2), part["clk"])
            own = {"zorpel_part", "zorpel_parts"}
            theirs, ours = json.loads(self.text(name)), json.loads(self.text("parts.json"))
            marked = 0
            for its in ours["modules"].values():
                for thing in [*its["cells"].values(), *its["netnames"].values()]:
                    marked += len(own & set(thing["attributes"]))
                    thing["attributes"] = {
                        k: v for k, v in thing["attributes"].items() if k not in own
                    }
            self.assertEqual(ours, theirs)
            self.assertGreater(marked, 50)
            self.run_ok("annotate", "parts.json", "p", "-o", "twice.json", "-q")
            self.assertEqual(self.text("twice.json"), self.text("parts.json"))

    def test_a_cell_of_several_instances_has_the_parts_of_all(self):
        self.file(
            "two.v",
            "module leaf(input a, output z); assign z = ~a; endmodule\n"
            "module top(input a, b, output y, z); leaf u(a, y); leaf v(b, z); endmodule\n",
        )
        self.yosys("read_verilog two.v; hierarchy -top top; proc; write_json two.json")
        nodes = [node["node"] for node in self.hif("two.json")["nodes"]]
        inner = [i for i, name in enumerate(nodes) if name[:2] in ("u.", "v.")]
        self.assertEqual(len(inner), 2)
        for parts, wanted in (((0, 1), "parts 0 1"), ((1, 0), "parts 1 0"), ((1, 1), f"{1:032b}")):
            part = [0] * len(nodes)
            for i, p in zip(inner, parts):
                part[i] = p
            self.file("p", "".join(f"{p}\n" for p in part))
            self.run_ok("annotate", "two.json", "p", "-o", "parts.json", "-q")
            cells = json.loads(self.text("parts.json"))["modules"]["leaf"]["cells"]
            found = [cell["attributes"] for cell in cells.values()]
            key = "zorpel_part" if parts[0] == parts[1] else "zorpel_parts"
            self.assertEqual([one.get(key) for one in found], [wanted])
            self.yosys("read_json parts.json; write_json again.json")

    # ---- BLIF

    def blif_edges(self, text):
        """Vertices of each net of a flat BLIF netlist, cells by their output."""
        lines = re.sub(r"\\\s*\n", " ", re.sub(r"#.*", "", text)).split("\n")
        nets, constants = collections.defaultdict(set), set()
        for words in map(str.split, lines):
            if words[:1] == [".inputs"]:
                for net in words[1:]:
                    nets[net].add(net)
            elif words[:1] == [".outputs"]:
                for net in words[1:]:
                    nets[net].add("out:" + net)
            elif words[:1] == [".names"] and len(words) == 2:
                constants.add(words[1])
            elif words[:1] == [".names"]:
                for net in words[1:]:
                    nets[net].add(words[-1])
            elif words[:1] == [".latch"]:
                for net in [*words[1:3], *([words[4]] if len(words) > 4 else [])]:
                    nets[net].add(words[2])
        return {net: vertices for net, vertices in nets.items() if net not in constants}

    def test_blif_of_yosys_is_read_as_python_reads_it(self):
        self.synthesised("flatten", "dffunmap", "abc -lut 4", "opt_clean", "write_blif lut.blif")
        theirs = self.blif_edges(self.text("lut.blif"))
        self.assertGreater(len(theirs), 200)
        self.assertEqual(self.edges_of(self.hif("lut.blif")), theirs)

    def test_blif_with_subcircuits_is_opened(self):
        self.synthesised("write_blif -cname -conn deep.blif", "write_json deep.json")
        blif, deep = self.hif("deep.blif"), self.hif("deep.json")
        theirs = [node["node"] for node in deep["nodes"] if node.get("weight", 1) > 0]
        ours = [node["node"] for node in blif["nodes"] if node.get("weight", 1) > 0]
        self.assertEqual(len(ours), len(theirs))
        below = {name.split(".")[0] for name in ours if name.startswith("u_")}
        self.assertEqual(below, {"u_there", "u_back", "u_sum_a", "u_sum_b"})

    def test_blif_by_hand(self):
        self.file(
            "hand.blif",
            ".model top # comment\n.inputs a \\\n  b\n.outputs z\n"
            ".names a b t\n11 1\n.gate nand2 A=t B=a O=y\n.latch y q re clk 0\n"
            ".names one\n1\n.mlatch dff D=q Q=r clk 2\n.subckt ram in=r out=w free=unconn\n"
            ".cname memory\n.conn w v\n.names v one z\n11 1\n.default_input_arrival 0 0\n.end\n",
        )
        edges = self.edges_of(self.hif("hand.blif"))
        self.assertEqual(edges["t"], {"t", "y"})
        self.assertEqual(edges["a"], {"a", "t", "y"})
        self.assertEqual(edges["clk"], {"q", "r"})
        self.assertEqual(edges["r"], {"r", "memory"})
        self.assertEqual(edges["w"], {"memory", "z"})
        self.assertEqual(edges["z"], {"z", "out:z"})
        self.assertNotIn("one", edges)
        self.assertNotIn("unconn", edges)

    def test_blif_comments_and_continuations_end_a_word(self):
        self.file(
            "tight.blif",
            ".model top\n.inputs a\\\n b#two of them\n.outputs z#one\n"
            ".names a b\\\n z# both\n11 1\n.end#of it\n",
        )
        edges = self.edges_of(self.hif("tight.blif"))
        self.assertEqual(edges, {"a": {"a", "z"}, "b": {"b", "z"}, "z": {"z", "out:z"}})

    def test_blif_constants_of_a_flat_model_are_no_hyperedges(self):
        self.file(
            "flat.blif",
            ".model top\n.inputs a\n.outputs y z\n.names one\n1\n"
            ".names a one y\n11 1\n.names one a z\n1- 1\n.end\n",
        )
        edges = self.edges_of(self.hif("flat.blif"))
        self.assertEqual(
            edges, {"a": {"a", "y", "z"}, "y": {"y", "out:y"}, "z": {"z", "out:z"}}
        )

    def test_blif_hyperedges_come_in_the_order_of_cells_then_ports(self):
        flat = ".model top\n.inputs q b a\n.outputs z\n.names a b z\n11 1\n"
        deep = ".subckt sub i=z\n.end\n.model sub\n.inputs i\n.names i o\n1 1\n"
        for more in ("", ".names one\n1\n", deep):
            self.file("flat.blif", flat + more + ".end\n")
            edges = [edge["edge"] for edge in self.hif("flat.blif")["edges"]]
            self.assertEqual([name for name in edges if "." not in name], ["a", "b", "z", "q"])
        self.file("flat.blif", flat + ".conn z w\n.names w t\n1 1\n.end\n")
        edges = self.edges_of(self.hif("flat.blif"))
        self.assertEqual(list(edges), ["a", "b", "z", "t", "q"])
        self.assertEqual(edges["z"], {"z", "t", "out:z"})

    def test_blif_that_was_cut_off_is_told(self):
        text = ".model m\n.inputs a b\n.outputs z\n.names a b z\n11 1\n"
        told = self.run_ok("stats", self.file("cut.blif", text)).stderr
        self.assertIn("cut.blif:6:1: the model has no .end: the file may have been cut off", told)
        for whole in (text + ".end\n", text.removeprefix(".model m\n")):
            self.assertEqual(self.run_ok("stats", self.file("whole.blif", whole)).stderr, "")
        two = text + ".end\n" + text.replace("model m", "model n")
        self.assertIn("the last model has no .end", self.run_ok("stats", self.file("t", two)).stderr)

    # ---- Bookshelf

    def test_other_files_of_a_benchmark_lead_to_its_aux(self):
        self.bookshelf()
        sentence = "it begins as Bookshelf files do; an .aux file that names .nodes and .nets is read"
        for name in ("a.nodes", "a.nets", self.file("none.aux", "RowBasedPlacement :\n")):
            self.fails(3, sentence, "stats", name)
        self.fails(3, "of these, HIF and netlists of Yosys", "stats", self.file("j", "{}"))

    def bookshelf(self, nodes=NODES, nets=NETS, aux="a.nodes a.nets a.wts a.pl a.scl"):
        self.file("a.nodes", nodes)
        self.file("a.nets", nets)
        return self.file("a.aux", f"RowBasedPlacement : {aux}\n")

    def test_bookshelf_with_missing_files(self):
        told = self.run_ok("stats", self.bookshelf()).stderr
        for ending in ("wts", "pl", "scl"):
            self.assertIn(f"a.{ending} is not there", told)
        hif = self.hif("a.aux")
        self.assertEqual(
            self.edges_of(hif), {"first": {"a", "b", "pad"}, "net1": {"c", "b"}}
        )
        self.assertEqual(self.weights_of(hif), {"a": 60, "b": 120, "c": 35, "pad": 0})
        kinds = {node["node"]: node["attrs"]["zorpel_kind"] for node in hif["nodes"]}
        self.assertEqual(kinds["pad"], "terminal")

    def test_bookshelf_with_all_files(self):
        self.bookshelf()
        self.file("a.wts", "UCLA wts 1.0\nfirst 3\n")
        self.file("a.pl", "UCLA pl 1.0\na 0 0 : N\nc 5 5 : N /FIXED\npad 9 9 : N\n")
        self.file("a.scl", "UCLA scl 1.0\nNumRows : 1\nCoreRow Horizontal\n  Height : 1\nEnd\n")
        done = self.run_ok("stats", "a.aux")
        self.assertNotIn("not there", done.stderr)
        self.assertIn("1 node has a fixed place", done.stderr)
        hif = self.hif("a.aux")
        self.assertEqual({e["edge"]: e["weight"] for e in hif["edges"]}, {"first": 3, "net1": 1})
        self.assertEqual(hif["nodes"][2]["attrs"]["zorpel_kind"], "fixed")

    def test_bookshelf_counts_that_are_off_are_told(self):
        nodes, nets = NODES.replace(": 4", ": 5"), NETS.replace(": 5", ": 6")
        nets = nets.replace("NetDegree : 2", "NetDegree : 3")
        told = self.run_ok("stats", self.bookshelf(nodes, nets)).stderr
        self.assertIn("a.nodes says 5 nodes and has 4", told)
        self.assertIn("a.nets says 6 pins and has 5", told)
        self.assertIn("a.nets:8: the net says 3 pins and has 2", told)

    def test_bookshelf_parts_are_written(self):
        self.bookshelf()
        self.file("p", "1\n0\n1\n1\n")
        self.run_ok("annotate", "a.aux", "p", "-o", "a.parts", "-q")
        rows = [line.split() for line in self.text("a.parts").splitlines() if line[0] != "#"]
        self.assertEqual(rows, [["a", "1"], ["b", "0"], ["c", "1"], ["pad", "1"]])

    # ---- Verilog

    def test_verilog_is_what_yosys_makes_of_it(self):
        self.example("bridge.v")
        self.yosys("read_verilog -sv bridge.v; hierarchy -auto-top; proc; write_json b.json")
        self.assertEqual(
            self.edges_of(self.hif("bridge.v")).keys(), self.edges_of(self.hif("b.json")).keys()
        )
        name = "a b; touch $(touch no) 'x.v"
        os.rename(self.folder / "bridge.v", self.folder / name)
        edges = self.edges_of(self.hif(name))
        self.assertEqual(len(edges), len(self.edges_of(self.hif("b.json"))))
        self.assertEqual(self.names(), sorted([name, "b.json"]))

    def test_verilog_that_yosys_refuses(self):
        self.file("bad.v", "module x(input a);\n  wire b\n  wire c;\nendmodule\n")
        self.fails(3, "bad.v:3: Yosys says: syntax error", "stats", "bad.v")

    def test_verilog_without_yosys(self):
        self.example("bridge.v")
        done = self.call("stats", "bridge.v", env={**os.environ, "PATH": str(self.folder)})
        self.assertEqual(done.returncode, 3)
        self.assertIn("Yosys, which is not installed", done.stderr)

    # ---- HIF

    def random_hif(self, seed):
        numbers = random.Random(seed)
        names = ["1", 1, 2, "two", '"quoted"', "-7", -7, "é", "a\\b", "", "012"]
        def weighted(entry):
            return {**entry, "weight": numbers.choice([1, 2, 2.5])} if numbers.random() < 0.5 else entry
        edges = ["e", 5, "5", "x y"]
        pairs = {(numbers.randrange(4), numbers.randrange(11)) for _ in range(20)}
        return {
            "network-type": "undirected",
            "nodes": [weighted({"node": name}) for name in names],
            "edges": [weighted({"edge": name}) for name in edges],
            "incidences": [{"edge": edges[e], "node": names[v]} for e, v in sorted(pairs)],
        }

    def test_hif_comes_back_as_it_was(self):
        for seed in range(5):
            hif = self.random_hif(seed)
            jsonschema.validate(hif, HIF)
            self.file("a.hif", json.dumps(hif))
            again = self.hif("a.hif")
            jsonschema.validate(again, HIF)
            def key(entry):
                return json.dumps([entry["edge"], entry["node"]])
            self.assertEqual(
                sorted(map(key, again["incidences"])), sorted(map(key, hif["incidences"]))
            )
            for kind, name in (("nodes", "node"), ("edges", "edge")):
                self.assertEqual([e[name] for e in again[kind]], [e[name] for e in hif[kind]])
                real = [e.get("weight", 1) for e in hif[kind]]
                scale = 10 if 2.5 in real else 1
                self.assertEqual([e.get("weight", 1) for e in again[kind]], [scale * w for w in real])

    def test_parts_go_into_hif_and_all_else_stays(self):
        hif = {
            "network-type": "directed", "metadata": {"by": ["others"]},
            "nodes": [
                {"node": "a", "weight": 2.5, "attrs": {"colour": "red", "zorpel_part": 7}},
                {"node": 2}, {"node": "b", "attrs": {}}, {"attrs": {"x": None}, "node": 2},
            ],
            "edges": [{"edge": "e", "attrs": {"k": [1, {"z": 2}]}}],
            "incidences": [
                {"edge": "e", "node": "a", "weight": 0.5, "direction": "head"},
                {"edge": "e", "node": 2}, {"edge": "f", "node": "2"}, {"edge": "f", "node": "b"},
            ],
        }  # fmt: skip
        self.file("p", "3\n0\n1\n2\n")
        for text in (json.dumps(hif), json.dumps(hif, indent=1)):
            self.file("a.hif", text)
            again = json.loads(self.run_ok("annotate", "a.hif", "p", "-q").stdout)
            jsonschema.validate(again, HIF)
            told = {json.dumps(n["node"]): n["attrs"].pop("zorpel_part") for n in again["nodes"]}
            self.assertEqual(told, {'"a"': 3, "2": 0, '"b"': 1, '"2"': 2})
            hif["nodes"][0]["attrs"].pop("zorpel_part", None)
            self.assertEqual(again.pop("nodes")[-1], {"node": "2", "attrs": {}})
            self.assertEqual(again, {key: hif[key] for key in again})
            hif["nodes"][0]["attrs"]["zorpel_part"] = 7
        del hif["nodes"]
        self.file("b.hif", json.dumps(hif))
        self.file("q", "0\n1\n2\n3\n")
        again = json.loads(self.run_ok("annotate", "b.hif", "q", "-q").stdout)
        self.assertEqual([n["node"] for n in again["nodes"]], ["a", 2, "2", "b"])
        self.assertEqual({key: again[key] for key in hif}, hif)

    def test_hif_is_refused_where_its_schema_refuses(self):
        good = {"nodes": [{"node": 1}, {"node": 2}], "incidences": [{"edge": 0, "node": 1}]}
        cases = [
            {}, {"metadata": {}}, {"metadata": []}, {"network-type": "asc"}, {"network-type": "x"},
            {"more": 1}, {"nodes": [{}]}, {"nodes": [{"node": 1.5}]}, {"nodes": [{"node": 1.0}]},
            {"nodes": [{"node": None}]}, {"nodes": [{"node": "a", "x": 1}]}, {"nodes": {}},
            {"edges": [{"edge": "e", "attrs": {"any": [1, {}]}}]}, {"edges": [{"edge": True}]},
            {"edges": [{"edge": "e", "attrs": []}]}, {"edges": [{"node": 1}]},
            {"nodes": [{"node": 1, "weight": "2"}]}, {"nodes": [{"node": 1, "weight": 2}]},
            {"incidences": [{"edge": 1}]}, {"incidences": [{"node": 1}]}, {"incidences": None},
            {"incidences": [{"edge": 1, "node": 2, "direction": "head", "weight": -1.5}]},
            {"incidences": [{"edge": 1, "node": 2, "direction": "up"}]},
        ]  # fmt: skip
        verdicts = set()
        for case in cases:
            hif = {**good, **case}
            if "nodes" in case and isinstance(case["nodes"], list):
                hif["nodes"] = case["nodes"] + good["nodes"]
            self.file("a.hif", json.dumps(hif))
            valid = jsonschema.Draft7Validator(HIF).is_valid(hif)
            done = self.call("stats", "a.hif", "--from", "hif")
            self.assertEqual(done.returncode, 0 if valid else 3, (case, done.stderr))
            if not valid:
                self.assertRegex(done.stderr, r"^zorpelx: a\.hif:1:\d+: ")
            verdicts.add(valid)
        self.assertEqual(verdicts, {True, False})

    # ---- all of them

    def test_the_same_in_any_dress(self):
        self.synthesised("write_json deep.json", "write_blif deep.blif")
        self.file("a.hif", json.dumps(self.random_hif(1), indent=1))
        self.bookshelf()
        for name in ("deep.json", "deep.blif", "a.hif", "bridge.v"):
            plain = self.hif(name)
            text = (self.folder / name).read_bytes()
            self.file("dos", text.replace(b"\n", b"\r\n"))
            self.file("packed.gz", gzip.compress(text))
            self.file("mark", b"\xef\xbb\xbf" + text)
            for other in ("dos", "packed.gz", "mark"):
                self.assertEqual(len(self.hif(other)["incidences"]), len(plain["incidences"]))
            piped = self.hif("-", input=text.decode())
            self.assertEqual(len(piped["incidences"]), len(plain["incidences"]))
        plain = self.hif("a.aux")
        self.bookshelf(NODES.replace("\n", "\r\n"), NETS.replace("\n", "\r\n"))
        self.assertEqual(self.hif("a.aux"), plain)
        for name in ("a.aux", "a.nodes", "a.nets"):
            text = (self.folder / name).read_bytes().rstrip()  # no newline at the end, either
            self.file(name, b"\xef\xbb\xbf" + text)
        self.assertEqual(self.hif("a.aux"), plain)

    def test_bad_files_get_a_sentence_with_their_place(self):
        module = '{"modules": {"m": {"ports": {}, "cells": {\n"c": %s}, "netnames": {}}}}'
        bus = '{"type": "t", "connections": {"A": [%s]}}'
        loop = '{"modules": {"m": {"attributes": {"top": 1}, "cells": {"c": {"type": "m"}}}}}'
        cases = [
            ("a.json", module % "{}", "a.json:2:6: a cell without a type"),
            ("a.json", module % (bus % "-1"), "a.json:2:42: a bit is a number"),
            ("a.json", module % (bus % '"q"'), "a.json:2:42: a bit is a number or"),
            ("a.json", module % "5", "a.json:2:6: there should be an object"),
            ("a.json", module % (bus % "1 2"), "a.json:2:44: there should be a comma or ]"),
            ("a.json", (module % (bus % "2"))[:60], "a.json:2:18: the file ends before a comma or }"),
            ("a.json", loop, "module 'm' is a part of itself"),
            ("a.json", '{"modules": {}}', "no module that could be the top one"),
            ("a.json", '{"modules": {"a": {}, "b": {}}}', "2 modules could be the top one (a, b)"),
            ("a.blif", ".model m\n.latch a\n", "a.blif:2:1: .latch has an input"),
            ("a.blif", ".model m\n.gate g A=x B\n", "a.blif:2:13: there should be PORT=NET"),
            ("a.blif", ".model m\nhello\n", "a.blif:2:1: there should be a word with a dot"),
            ("a.blif", ".model m\n.exdc\n.names a\n", "a.blif:2:1: no .end follows"),
            ("a.hif", '{"incidences": [\n{"edge": 1}]}', 'a.hif:2:1: an incidence without a "node"'),
            ("a.hif", '{"incidences": [}', "a.hif:1:17: there should be an object"),
            ("a.hif", '{"incidences": []} x', "a.hif:1:20: more text behind the end"),
            ("a.hif", '{"incidences": ["\\x"]}', "a.hif:1:17: there should be an object"),
        ]
        for name, text, sentence in cases:
            self.file(name, text)
            done = self.fails(3, sentence, "partition", name, "-k", 2)
            self.assertEqual(done.stderr.count("\n"), 1, done.stderr)
            self.assertEqual(self.names(), [name])
            os.remove(self.folder / name)
        self.bookshelf(nets=NETS.replace("c B", "d B"))
        self.fails(3, "a.nets:9:3: node 'd' is not in the .nodes file", "stats", "a.aux")
        self.bookshelf(nodes=NODES.replace("4 3", "4 x"))
        self.fails(3, "a.nodes:6:7: 'x' is not a number", "stats", "a.aux")
        self.bookshelf(aux="a.nodes")
        self.fails(3, "names a .nodes and a .nets file", "stats", "--from", "bookshelf", "a.aux")
        os.remove(self.folder / "a.nets")
        self.bookshelf(aux="a.nodes b.nets")
        self.fails(5, "b.nets: No such file", "stats", "a.aux")
