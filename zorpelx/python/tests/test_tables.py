# SPDX-License-Identifier: MIT
"""Files of all formats with their names, tables, pictures, and what other packages hold."""

import importlib.util
import json
import os
import random
import shutil
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

import zorpel

SANITIZED = "ZORPEL_SANITIZED" in os.environ  # not for large packages that are not built for it


def has(name):
    """Whether a test may use this package."""
    return not SANITIZED and importlib.util.find_spec(name) is not None


CSV = "hyperedge,vertex,weight,fixed,group\nclk,u1,3,0,\nclk,u2,3,,1\nd,u2,1,,1\nd,u3,1,,1\ne,u4,1,1,\ne,u3,1,,1\n"
MTX = "%%MatrixMarket matrix coordinate pattern general\n3 4 6\n1 1\n1 2\n2 2\n2 3\n3 3\n3 4\n"


class Folder(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)

    def store(self, name, text):
        path = self.folder / name
        path.write_text(text)
        return path


class FormatsTest(Folder):
    def test_names_fixed_vertices_and_groups_come_with_a_table(self):
        graph = zorpel.read(self.store("a.csv", CSV))
        self.assertEqual(graph.vertex_names, ["u1", "u2", "u3", "u4"])
        self.assertEqual(graph.hyperedge_names, ["clk", "d", "e"])
        self.assertEqual(graph.hyperedge_weights.tolist(), [3, 1, 1])
        self.assertEqual(graph.fixed.tolist(), [0, -1, -1, 1])
        self.assertEqual(graph.groups.tolist(), [-1, 1, 1, -1])
        self.assertEqual(graph.origin.options["from"], "csv")
        part = zorpel.partition(graph, 2, epsilon=50).part
        self.assertEqual((part[0], part[3]), (0, 1))
        self.assertEqual(part[1], part[2])
        other = zorpel.partition(graph, 2, epsilon=50, fix=[1, -1, -1, 0]).part
        self.assertEqual((other[0], other[3]), (1, 0))

    def test_format_and_model_are_those_of_the_program(self):
        path = self.store("a.mtx", MTX)
        rows, columns = zorpel.read(path), zorpel.read(path, model="column-net")
        self.assertEqual((len(rows), rows.nvtxs), (3, 4))
        self.assertEqual((len(columns), columns.nvtxs), (4, 3))
        self.assertEqual(zorpel.read(path, model="fine-grain").nvtxs, 6)
        self.assertEqual(zorpel.read(path, model="fine-grain").vertex_names[2], "2,2")
        odd = self.store("odd", "a,b\na,c\n")
        self.assertEqual(zorpel.read(odd, format="csv").vertex_names, ["b", "c"])
        self.assertIsNone(zorpel.read(self.store("a.hgr", "1 2\n1 2\n")).vertex_names)
        for words, sentence in (
            ({"format": "dot"}, "none that is read"),
            ({"format": 3}, "should be a text"),
            ({"model": "dual"}, "models of a Matrix Market file are"),
        ):
            with self.assertRaisesRegex(zorpel.InputError, sentence):
                zorpel.read(path, **words)

    def test_areas_of_a_netlist(self):
        blif = ".model top\n.inputs a b\n.outputs y\n.gate AND2 A=a B=b Y=n\n.gate INV A=n Y=y\n.end\n"
        path = self.store("n.blif", blif)
        areas = self.store("areas.csv", "type,area\nAND2,4\nINV,1\n")
        graph = zorpel.read(path, areas=areas)
        weights = dict(zip(graph.vertex_names, graph.vertex_weights))
        self.assertEqual(sorted(w for w in weights.values() if w), [1, 4])
        self.assertNotIn("n", zorpel.read(path, skip_nets="n").hyperedge_names)


def counted(graph, part):
    """The cut hyperedges, plainly."""
    return {e: {part[v] for v in pins} for e, pins in enumerate(graph) if len({part[v] for v in pins}) > 1}


class TablesTest(Folder):
    def setUp(self):
        super().setUp()
        chance = random.Random(3)
        lines = [f"n{e},v{chance.randrange(40)},{1 + e % 3}" for e in range(60) for _ in range(4)]
        path = self.store("g.csv", "hyperedge,vertex,weight\n" + "\n".join(lines) + "\n")
        self.graph = zorpel.read(path)
        self.partition = zorpel.partition(self.graph, 3, preset="fast")

    def test_tables_say_what_plain_counts_say(self):
        graph, part = self.graph, self.partition.part
        cut = counted(graph, part)
        rows = self.partition.cut_hyperedges()
        self.assertEqual({row["hyperedge"] for row in rows}, {graph.hyperedge_names[e] for e in cut})
        self.assertEqual(sum(row["weight"] for row in rows), self.partition.cut)
        prices = [row["weight"] * (len(row["parts"]) - 1) for row in rows]
        self.assertEqual(prices, sorted(prices, reverse=True))
        self.assertEqual(sum(prices), self.partition.connectivity)
        sizes = [row["vertices"] for row in self.partition.parts()]
        self.assertEqual(sizes, [part.count(p) for p in range(3)])
        external = sum(row["external degree"] for row in self.partition.parts())
        self.assertEqual(external, self.partition.soed)
        names = {row["vertex"]: row["part"] for row in self.partition.vertices()}
        self.assertEqual(names, dict(zip(graph.vertex_names, part)))

    def test_tables_show_themselves(self):
        table = self.partition.vertices()
        self.assertIn(f"... {self.graph.nvtxs} rows in all", repr(table))
        self.assertEqual(repr(self.partition.parts()).count("\n"), 3)
        self.assertIn("<th>external degree</th>", self.partition.parts()._repr_html_())

    def test_a_partition_without_its_hypergraph_asks_for_it(self):
        bare = zorpel.Partition(**{**self.partition.__dict__, "source": None})
        self.assertEqual(bare, self.partition)
        with self.assertRaisesRegex(zorpel.InputError, "give it"):
            bare.parts()
        self.assertEqual(bare.parts(self.graph), self.partition.parts())
        with self.assertRaisesRegex(zorpel.InputError, "the partition has"):
            bare.parts([[0, 1]])


@unittest.skipUnless(has("pandas"), "pandas is not installed, or the library is sanitized")
class PandasTest(TablesTest):
    def test_a_frame_is_a_hypergraph_and_a_table_becomes_a_frame(self):
        import pandas

        frame = pandas.read_csv(self.folder / "g.csv")
        graph = zorpel.as_hypergraph(frame)
        for field in ("vertex_names", "hyperedge_names", "hyperedge_weights"):
            self.assertEqual(getattr(graph, field), getattr(self.graph, field), field)
        self.assertEqual(
            [sorted(pins) for pins in graph], [sorted(pins) for pins in self.graph]
        )
        plain = zorpel.as_hypergraph(frame.set_axis(["a", "b", "c"], axis=1)[["a", "b"]])
        self.assertEqual(plain.vertex_names, graph.vertex_names)
        made = self.partition.vertices().frame()
        made.iloc[::-1].to_csv(self.folder / "parts.csv", index=False)
        cut = zorpel.evaluate(graph, self.partition).cut
        self.assertEqual(zorpel.evaluate(frame, self.folder / "parts.csv").cut, cut)
        self.assertEqual(made.columns.tolist(), ["vertex", "part"])
        self.assertEqual(made["part"].tolist(), self.partition.part)
        for wrong in (frame[["vertex", "weight"]], frame[["vertex"]]):
            with self.assertRaises(zorpel.InputError):
                zorpel.as_hypergraph(wrong)

    def test_what_is_missing_in_a_frame_joins_nothing(self):
        import pandas

        rows = [("a", "x", 2), ("a", "y", None), (None, "z", 7), (None, "w", 7), ("b", None, 3)]
        for gone in (None, float("nan"), pandas.NA):
            columns = list(zip(*[[gone if entry is None else entry for entry in row] for row in rows]))
            frame = pandas.DataFrame(dict(zip(("hyperedge", "vertex", "weight"), columns)))
            graph = zorpel.as_hypergraph(frame)
            self.assertEqual(list(graph), [[0, 1], []])
            self.assertEqual(list(graph.vertex_names), ["x", "y", "z", "w"])
            self.assertEqual(list(graph.hyperedge_names), ["a", "b"])
            self.assertEqual(list(graph.hyperedge_weights), [2, 3])


@unittest.skipUnless(has("networkx"), "networkx is not installed, or the library is sanitized")
class NetworkxTest(unittest.TestCase):
    def test_a_graph_is_a_hypergraph_of_its_edges(self):
        import networkx

        graph = networkx.Graph()
        graph.add_nodes_from("abc", weight=2)
        graph.add_weighted_edges_from([("a", "b", 5), ("b", "c", 1), ("c", "c", 9)])
        made = zorpel.as_hypergraph(graph)
        self.assertEqual([made.nvtxs, list(made)], [3, [[0, 1], [1, 2]]])
        self.assertEqual(made.hyperedge_weights.tolist(), [5, 1])
        self.assertEqual(made.vertex_weights.tolist(), [2, 2, 2])
        self.assertEqual(made.vertex_names, ["a", "b", "c"])
        karate = networkx.karate_club_graph()
        partition = zorpel.partition(karate, 2)
        cut = {v for v, p in enumerate(partition.part) if p == 0}
        self.assertEqual(partition.cut, networkx.cut_size(karate, cut, weight="weight"))

    def test_a_bipartite_graph_is_a_hypergraph(self):
        import networkx

        graph = networkx.Graph()
        graph.add_nodes_from("abc", bipartite=0)
        graph.add_nodes_from(["x", "y"], bipartite=1)
        graph.add_edges_from([("x", "a"), ("c", "x"), ("y", "b"), ("y", "c"), ("y", "a")])
        made = zorpel.as_hypergraph(graph)
        self.assertEqual(list(made), [[0, 2], [0, 1, 2]])
        self.assertEqual(made.hyperedge_names, ["x", "y"])
        graph.add_edge("a", "b")
        with self.assertRaisesRegex(zorpel.InputError, "one side"):
            zorpel.as_hypergraph(graph)


class PicturesTest(TablesTest):
    @unittest.skipUnless(has("matplotlib"), "matplotlib is not installed, or the library is sanitized")
    def test_the_plot_has_the_figures_of_the_tables(self):
        figure = self.partition.plot()
        bars, squares = figure.axes
        widths = [bar.get_width() for bar in bars.patches]
        self.assertEqual(widths, [row["weight"] for row in self.partition.parts()])
        shown = [[int(value) for value in row] for row in squares.images[0].get_array()]
        for e, parts in counted(self.graph, self.partition.part).items():
            for p in parts:
                for q in parts - {p}:
                    shown[p][q] -= self.graph.hyperedge_weights[e]
        self.assertEqual(shown, [[0] * 3] * 3)
        figure.savefig(self.folder / "figure.png")

    def test_what_is_missing_is_named(self):
        program = (
            "import sys; sys.modules.update(dict.fromkeys(['matplotlib.figure', 'pandas']))\n"
            "import zorpel\np = zorpel.partition([[0, 1], [1, 2]], 2, preset='fast')\n"
            "for call in (p.plot, p.parts().frame, lambda: p.report('x.html')):\n"
            "    try: call()\n    except zorpel.LibraryError as error: print(error)\n"
        )
        environment = {**os.environ, "ZORPELX": "", "PATH": ""}
        done = subprocess.run(
            [sys.executable, "-c", program], env=environment, capture_output=True, text=True,
            check=True, cwd=self.folder,
        )  # fmt: skip
        told = done.stdout.splitlines()
        self.assertEqual(len(told), 3)
        for sentence, word in zip(told, ("python3-matplotlib", "python3-pandas", "program zorpelx")):
            self.assertIn(word, sentence)

    @unittest.skipUnless(os.environ.get("ZORPELX"), "the program is not built")
    def test_the_report_is_the_page_of_the_program(self):
        path = self.folder / "page.html"
        self.partition.report(path)
        page = path.read_text()
        self.assertIn(f'data-figure="/cut">{self.partition.cut}<', page)
        self.assertIn("g.csv in 3 parts", page)
        self.assertIn(self.partition.cut_hyperedges()[0]["hyperedge"], page)
        made = zorpel.partition([[0, 1], [1, 2], [2, 3]], 2)
        made.report(path)
        self.assertIn("hypergraph.jsonl in 2 parts", path.read_text())
        self.graph.origin.options["from"] = "cnf"
        with self.assertRaises(zorpel.InputError):
            self.partition.report(path)
        self.assertIn("hypergraph.jsonl in 2 parts", path.read_text())


NOTEBOOK = Path(__file__).resolve().parents[3] / "docs" / "notebook.ipynb"
RUNNERS = ("nbclient", "nbformat", "ipykernel", "matplotlib", "pandas", "networkx")


class NotebookTest(Folder):
    def test_it_runs_and_prints_what_is_shown(self):
        missing = [name for name in RUNNERS if not has(name)]
        if missing:
            self.skipTest(f"not installed: {', '.join(missing)}")
        import nbformat
        from nbclient import NotebookClient

        shutil.copy(NOTEBOOK.parents[1] / "examples" / "bridge.v", self.folder)
        book = nbformat.read(NOTEBOOK, as_version=4)
        shown = [texts_of(cell) for cell in book.cells if cell.cell_type == "code"]
        where = {"metadata": {"path": str(self.folder)}}
        NotebookClient(book, timeout=120, kernel_name="python3", resources=where,
                       record_timing=False).execute()
        made = [texts_of(cell) for cell in book.cells if cell.cell_type == "code"]
        if os.environ.get("ZORPEL_UPDATE_NOTEBOOK"):
            nbformat.write(book, NOTEBOOK)
            shown = made
        self.assertEqual(made, shown)
        self.assertGreater(sum(map(len, shown)), 4)
        self.assertTrue((self.folder / "bridge.html").exists())


def texts_of(cell):
    """What a cell prints, as one text, and what it shows; pictures differ between machines."""
    printed = "".join(out["text"] for out in cell.outputs if "text" in out)  # in pieces if slow
    shown = [out.get("data", {}).get("text/plain", "") for out in cell.outputs if "text" not in out]
    return [text for text in [printed, *shown] if text and "Figure" not in text]


if __name__ == "__main__":
    unittest.main()
