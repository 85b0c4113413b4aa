# SPDX-License-Identifier: MIT
"""report: its figures counted again in Python, its names escaped, what goes wrong told."""

import html.parser
import json
import math
import os
import random
import re
import shutil
import xml.etree.ElementTree as ElementTree

from calls import EXAMPLES, Case, random_hypergraph


class Page(html.parser.HTMLParser):
    """The figures of a page, by their place in the JSON answer, and its tags."""

    VOID = {"meta", "link", "br", "path", "rect", "circle"}

    def __init__(self, text):
        super().__init__()
        self.figures, self.tags, self.ids, self.open = [], [], set(), []
        self.pointer = None
        self.feed(text)

    def handle_starttag(self, tag, attributes):
        values = dict(attributes)
        self.tags.append((tag, values))
        if "id" in values:
            assert values["id"] not in self.ids, values["id"]
            self.ids.add(values["id"])
        if tag not in self.VOID:
            self.open.append(tag)
        if "data-figure" in values:
            self.pointer = values["data-figure"]
            self.figures.append([self.pointer, ""])

    def handle_endtag(self, tag):
        if tag in self.VOID:
            return
        assert self.open.pop() == tag, tag
        if tag in ("td", "th", "dd", "b", "span"):
            self.pointer = None

    def handle_startendtag(self, tag, attributes):
        self.tags.append((tag, dict(attributes)))

    def handle_data(self, data):
        if self.pointer is not None:
            self.figures[-1][1] += data


def at(answer, pointer):
    for key in pointer.split("/")[1:]:
        answer = answer[int(key)] if isinstance(answer, list) else answer[key]
    return answer


def read_hgr(text):
    """Hyperedges with their weights, weights of vertices; read here for a second time."""
    lines = [line.split() for line in text.splitlines() if not line.startswith("%")]
    nnets, nvertices, code = int(lines[0][0]), int(lines[0][1]), "".join(lines[0][2:])
    nets = [[int(word) for word in line] for line in lines[1 : nnets + 1]]
    weighted = code in ("1", "11")
    weights = [net.pop(0) if weighted else 1 for net in nets]
    own = [int(line[0]) for line in lines[nnets + 1 :]] if code in ("10", "11") else None
    return nets, weights, own or [1] * nvertices


class Counted(Case):
    """A random hypergraph with weights and two partitions of it."""

    NPARTS = 5

    def setUp(self):
        super().setUp()
        numbers = random.Random(11)
        plain = random_hypergraph(120, 150, 7).splitlines()
        nets = [f"{numbers.randint(1, 9)} {line}" for line in plain[1:]]
        weights = [str(numbers.randint(0, 7)) for _ in range(120)]
        self.file("g.hgr", "\n".join([plain[0] + " 11", *nets, *weights]) + "\n")
        self.parts = [[numbers.randrange(self.NPARTS) for _ in range(120)] for _ in range(2)]
        for i in range(60):  # the second is like the first, with other numbers
            self.parts[1][i] = (self.parts[0][i] + 2) % self.NPARTS
        for name, part in zip("ab", self.parts):
            self.file(f"{name}.part.5", "".join(f"{p}\n" for p in part))
        self.nets, self.weights, self.own = read_hgr(self.text("g.hgr"))

    def report(self, *words):
        self.run_ok("report", "g.hgr", "a.part.5", "-o", "g.html", "--json", "g.json", *words)
        return json.loads(self.text("g.json")), Page(self.text("g.html"))

    def parts_of(self, net, part):
        return {part[v - 1] for v in net}


class Figures(Counted):
    def test_parts_are_counted_again(self):
        answer, _ = self.report()
        part = self.parts[0]
        for p, told in enumerate(answer["parts"]):
            touching = [n for n in self.nets if p in self.parts_of(n, part)]
            cut = [n for n in touching if len(self.parts_of(n, part)) > 1]
            at_cut = {v for n in cut for v in n if part[v - 1] == p}
            self.assertEqual(told["part"], p)
            self.assertEqual(told["vertices"], part.count(p))
            self.assertEqual(told["weight"], sum(w for w, q in zip(self.own, part) if q == p))
            self.assertEqual(told["cut_hyperedges"], len(cut))
            self.assertEqual(told["cut_pins"], sum(part[v - 1] == p for n in cut for v in n))
            self.assertEqual(told["boundary_vertices"], len(at_cut))
            self.assertEqual(told["inner_hyperedges"], len(touching) - len(cut))

    def test_pairs_and_parts_touched_are_counted_again(self):
        answer, _ = self.report()
        pairs, touched = {}, {}
        for net, weight in zip(self.nets, self.weights):
            parts = sorted(self.parts_of(net, self.parts[0]))
            count = touched.setdefault(len(parts), [0, 0])
            count[0] += 1
            count[1] += weight
            for i, p in enumerate(parts):
                for q in parts[i + 1 :]:
                    pair = pairs.setdefault((p, q), [0, 0])
                    pair[0] += 1
                    pair[1] += weight
        told = {tuple(p["parts"]): [p["hyperedges"], p["weight"]] for p in answer["pairs"]}
        self.assertEqual(told, pairs)
        weights = [pair["weight"] for pair in answer["pairs"]]
        self.assertEqual(weights, sorted(weights, reverse=True))
        told = {t["parts"]: [t["hyperedges"], t["weight"]] for t in answer["touched"]}
        self.assertEqual(told, touched)

    def test_the_most_expensive_come_first(self):
        cost = [
            (-w * (len(self.parts_of(n, self.parts[0])) - 1), -w, i + 1)
            for i, (n, w) in enumerate(zip(self.nets, self.weights))
            if len(self.parts_of(n, self.parts[0])) > 1
        ]
        for limit in (0, 1, 20, 10000):
            answer, page = self.report("--limit", limit)
            told = [net["hyperedge"] for net in answer["costly"]]
            self.assertEqual(told, [number for *_, number in sorted(cost)][:limit])
        for net in answer["costly"]:
            pins = self.nets[net["hyperedge"] - 1]
            shares = {s["part"]: s["vertices"] for s in net["shares"]}
            part = self.parts[0]
            self.assertEqual(shares, {p: sum(part[v - 1] == p for v in pins) for p in shares})
            self.assertEqual(sum(shares.values()), len(pins))

    def test_partitions_compared(self):
        answer, _ = self.report("b.part.5")
        told = answer["comparisons"][0]
        a, b = self.parts
        cut = [[len(self.parts_of(n, part)) > 1 for n in self.nets] for part in (a, b)]
        newly = [w for w, x, y in zip(self.weights, *cut) if y and not x]
        mended = [w for w, x, y in zip(self.weights, *cut) if x and not y]
        self.assertEqual(told["newly_cut"]["hyperedges"], len(newly))
        self.assertEqual(told["newly_cut"]["weight"], sum(newly))
        self.assertEqual(told["no_longer_cut"]["weight"], sum(mended))
        twin = {row["part"]: row["twin"] for row in told["parts"]}
        self.assertEqual(sorted(twin.values()), list(range(self.NPARTS)))
        self.assertEqual(told["moved_vertices"], sum(twin[q] != p for p, q in zip(a, b)))
        wrong = [w for w, p, q in zip(self.own, a, b) if twin[q] != p]
        self.assertEqual(told["moved_weight"], sum(wrong))
        best = min(self.moved_under(order) for order in permutations(range(self.NPARTS)))
        self.assertEqual(told["moved_weight"], best)
        stay = 120 - told["moved_vertices"]
        self.assertAlmostEqual(told["agreement_percent"], 100 * stay / 120)
        self.assertAlmostEqual(told["adjusted_rand"], adjusted_rand(a, b), places=12)

    def moved_under(self, order):
        return sum(w for w, p, q in zip(self.own, *self.parts) if order[q] != p)

    def test_a_partition_agrees_with_itself_under_other_names(self):
        self.file("c.part.5", "".join(f"{(p + 3) % 5}\n" for p in self.parts[0]))
        answer, _ = self.report("c.part.5", "a.part.5")
        for told in answer["comparisons"]:
            self.assertEqual((told["moved_vertices"], told["adjusted_rand"]), (0, 1))
            self.assertEqual(told["agreement_percent"], 100)
            self.assertEqual(told["newly_cut"]["hyperedges"], 0)

    def test_partitions_of_different_numbers_of_parts(self):
        self.file("d.part.2", "".join(f"{p % 2}\n" for p in self.parts[0]))
        self.file("e.part.9", "".join(f"{p}\n" for p in self.parts[0]))
        answer, _ = self.report("d.part.2", "e.part.9")
        two, nine = answer["comparisons"]
        sizes = [sum(w for w, q in zip(self.own, self.parts[0]) if q == p) for p in range(5)]
        even, odd = max(sizes[0::2]), max(sizes[1::2])
        self.assertEqual(two["moved_weight"], sum(self.own) - even - odd)
        self.assertEqual(nine["moved_vertices"], 0)
        self.assertEqual([row["twin"] for row in nine["parts"]][:5], [0, 1, 2, 3, 4])


def permutations(items):
    items = list(items)
    if not items:
        yield []
    for i, first in enumerate(items):
        for rest in permutations(items[:i] + items[i + 1 :]):
            yield [first, *rest]


def adjusted_rand(a, b):
    both = sum(a[i] == a[j] and b[i] == b[j] for i in range(len(a)) for j in range(i))
    left = sum(a[i] == a[j] for i in range(len(a)) for j in range(i))
    right = sum(b[i] == b[j] for i in range(len(b)) for j in range(i))
    expected = left * right / math.comb(len(a), 2)
    return (both - expected) / ((left + right) / 2 - expected)


class Markup(Counted):
    def test_every_figure_of_the_page_is_in_the_answer(self):
        answer, page = self.report("b.part.5", "--epsilon", 40)
        self.assertGreater(len(page.figures), 120)
        for pointer, text in page.figures:
            value = at(answer, pointer)
            shown = text.replace(",", "").removesuffix(" %")
            if isinstance(value, int):
                self.assertEqual(shown, str(value), pointer)
            else:
                decimals = len(shown.partition(".")[2])
                self.assertEqual(shown, f"{value:.{decimals}f}", pointer)
        for field in ("cut", "connectivity", "soed", "vertices", "hyperedges", "pins", "nparts"):
            self.assertIn("/" + field, {pointer for pointer, _ in page.figures})

    def test_the_page_needs_nothing_and_is_well_formed(self):
        _, page = self.report("b.part.5")
        self.assertEqual(page.open, [])
        for tag, values in page.tags:
            self.assertNotIn(tag, ("script", "iframe", "img", "object", "embed", "base", "form"))
            for name, value in values.items():
                self.assertFalse(name.startswith("on"), name)
                if name in ("href", "src"):
                    self.assertTrue(value == "data:," or value[1:] in page.ids, value)
                if name in ("aria-labelledby", "aria-describedby"):
                    self.assertLessEqual(set(value.split()), page.ids)
        self.assertNotIn("url(", self.text("g.html"))
        self.assertNotIn("@import", self.text("g.html"))

    def test_every_picture_has_a_name_and_a_table_in_its_section(self):
        self.report("b.part.5")
        text = self.text("g.html")
        sections = re.findall(r"<section id=\"(\w+)\".*?</section>", text, re.S)
        self.assertIn("comparison", sections)
        for section in re.findall(r"<section .*?</section>", text, re.S):
            pictures = re.findall(r"<svg .*?</svg>", section, re.S)
            for picture in pictures:
                self.assertRegex(picture, r'role="img" aria-labelledby="\w+-title \w+-text"')
                self.assertRegex(picture, r"<title id=\"\w+-title\">[^<]+</title>")
                self.assertRegex(picture, r"<desc id=\"\w+-text\">[^<]+</desc>")
            if pictures and 'id="drawing"' not in section and 'id="graph"' not in section:
                self.assertIn("<table>", section)

    def test_the_same_bytes_whatever_the_machine_does(self):
        self.report("b.part.5")
        first = self.text("g.html")
        self.report("b.part.5")
        self.assertEqual(self.text("g.html"), first)

    def test_names_cannot_become_markup(self):
        nasty = ["<script>alert(1)</script>", '"><img src=x onerror=alert(1)>', "a&b'c", "]]>--><b>"]
        lines = ["hyperedge,vertex"]
        for e, name in enumerate(nasty):
            for v in range(4):
                quoted = nasty[(e + v) % 4].replace('"', '""')
                lines.append('"%s","v%s"' % (name.replace('"', '""'), quoted))
        self.file("names.csv", "\n".join(lines) + "\n")
        self.file("<i>&.part.2", "0\n1\n0\n1\n")
        words = ("names.csv", "<i>&.part.2", "<i>&.part.2", "-o", "n.html", "--json", "n.json")
        self.run_ok("report", *words, "--pictures", "p")
        page = Page(self.text("n.html"))
        for tag, values in page.tags:
            self.assertNotIn(tag, ("script", "img", "i"))
            self.assertNotIn("onerror", values)
        self.assertIn("&lt;script&gt;", self.text("n.html"))
        answer = json.loads(self.text("n.json"))
        self.assertEqual({net["name"] for net in answer["costly"]}, set(nasty))
        for name in (self.folder / "p").glob("*.svg"):
            ElementTree.parse(name)  # one that is broken is refused

    def test_control_characters_and_broken_text_are_shown_escaped(self):
        name = b"v\x1b[31m\xff\xe2\x80\xae"
        self.file("odd.csv", b"hyperedge,vertex\na," + name + b"\na,w\n")
        self.file("odd.part.2", "0\n1\n")
        done = self.call("report", "odd.csv", "odd.part.2", "-o", "o.html")
        if done.returncode == 0:  # a reader may refuse it, too
            data = (self.folder / "o.html").read_bytes()
            for bad in (b"\x1b", b"\xff", b"\xe2\x80\xae"):
                self.assertNotIn(bad, data)


class Kinds(Case):
    def test_words_of_single_nonzeros(self):
        self.file("d.mtx", "%%MatrixMarket matrix coordinate pattern general\n2 2 3\n1 1\n1 2\n2 2\n")
        self.file("d.part.2", "0\n1\n1\n")  # entries (1,1), (1,2), (2,2)
        words = ("d.mtx", "d.part.2", "--model", "fine-grain", "-o", "-", "--json", "d.json")
        self.run_ok("report", *words)
        told = json.loads(self.text("d.json"))["words"]
        # y1 is collected by part 0, where entry (1,1) is; column 2 is in part 1 alone.
        self.assertEqual(told["parts"][0], {"part": 0, "sent": 0, "received": 1})
        self.assertEqual(told["parts"][1], {"part": 1, "sent": 1, "received": 0})

    def test_shared_variables(self):
        self.file("f.cnf", "p cnf 4 3\n1 -2 0\n2 3 0\n-3 4 0\n")
        self.file("c.part.2", "0\n0\n1\n")
        words = ("-o", "-", "--json", "f.json")
        self.run_ok("report", "f.cnf", "c.part.2", "--model", "dual", *words)
        told = json.loads(self.text("f.json"))["shared_variables"]
        self.assertEqual(told, {"number": 1, "parts": [1, 1]})
        self.file("v.part.2", "0\n0\n0\n1\n")
        self.run_ok("report", "f.cnf", "v.part.2", "--model", "primal", *words)
        told = json.loads(self.text("f.json"))["shared_variables"]
        self.assertEqual(told, {"number": 2, "parts": [1, 1]})

    def test_transactions_of_one_part(self):
        rows = "t1,a\nt1,b\nt2,b\nt2,c\nt3,c\nt3,d\n"
        self.file("t.csv", "transaction,item\n" + rows)
        self.file("t.part.2", "0\n0\n1\n1\n")
        self.run_ok("report", "t.csv", "t.part.2", "-o", "t.html", "--json", "t.json")
        told = json.loads(self.text("t.json"))["transactions"]
        self.assertEqual(told["single_part"], 2)
        self.assertAlmostEqual(told["single_part_percent"], 200 / 3)
        self.assertIn("66.67 %", self.text("t.html"))

    def test_wires_and_contents_of_a_netlist(self):
        names = (".names a b x\n11 1\n.names x c y\n11 1\n.names y d z\n11 1\n")
        self.file("n.blif", ".model m\n.inputs a b c d\n.outputs z\n" + names + ".end\n")
        stats = self.json_of("stats", "n.blif", "--format", "json")
        part = "".join(f"{v % 2}\n" for v in range(stats["vertices"]))
        self.file("n.part.2", part)
        self.run_ok("report", "n.blif", "n.part.2", "-o", "n.html", "--json", "n.json")
        answer = json.loads(self.text("n.json"))
        self.assertIn("Wires and pins that leave each part", self.text("n.html"))
        listed = answer.get("contents_by_kind") or answer["contents_by_name"]
        for row, told in zip(listed, answer["parts"]):
            held = sum(group["vertices"] for group in row["groups"]) + row["other_vertices"]
            self.assertEqual(held, told["vertices"])


class Singular(Case):
    def page(self, name, text, part, *words):
        self.file(name, text)
        self.file("p", part)
        self.run_ok("report", name, "p", *words, "-o", "o.html")
        return re.sub(r"<[^>]*>", "", self.text("o.html"))

    def test_one_of_a_kind(self):
        formula = "p cnf 3 2\n1 2 0\n2 3 0\n"
        page = self.page("f.cnf", formula, "0\n1\n", "--model", "dual")
        self.assertIn("1 variable is shared by several parts.", page)
        page = self.page("t.csv", "transaction,item\nt1,a\nt1,b\nt2,c\nt2,d\n", "0\n1\n1\n1\n")
        self.assertIn("1 of 2 transactions, 50.00 %, needs one part only; 1 needs several.", page)
        self.assertIn("1 more touches one part or none", page)
        matrix = "%%MatrixMarket matrix coordinate pattern general\n2 2 3\n1 1\n1 2\n2 2\n"
        self.assertIn("In all 1 word. No part", self.page("m.mtx", matrix, "0\n1\n"))
        self.file("q", "0\n1\n1\n1\n")
        page = self.page("g.hgr", "2 4\n1 2\n3 4\n", "0\n0\n1\n1\n", "q")
        self.assertIn("1 has moved, of weight 1.", page)

    def test_no_page_speaks_of_one_in_the_plural(self):
        one = r"\b1 (vertices|hyperedges|parts|pins|words|variables|transactions|runs|clusters|pictures)\b"
        self.example("fifo.hgr")
        self.run_ok("sweep", "fifo.hgr", "-k", 2, "--seeds", 1, "--preset", "fast", "-o", "s")
        pages = [self.text("s/sweep.html"), self.text("s/best.e3.part.2.html")]
        pages.append(self.page("g.hgr", "1 2\n1 2\n", "0\n1\n", "p"))
        for page in pages:
            self.assertNotRegex(re.sub(r"<[^>]*>", "", page), one)
        for words in (("compare", "g.hgr", "p", "p"), ("explain", "g.hgr", "-k", 2),
                      ("verify", "g.hgr", "p", "-k", 2), ("stats", "g.hgr")):
            self.assertNotRegex(self.run_ok(*words).stdout, one)


class Outputs(Counted):
    def test_names_of_the_page(self):
        self.run_ok("report", "g.hgr", "a.part.5")
        self.assertIn("a.part.5.html", self.names())
        done = self.run_ok("report", "g.hgr", "a.part.5", "-o", "-")
        self.assertTrue(done.stdout.startswith("<!DOCTYPE html>"))
        self.assertIn("standard output: 5 pictures", done.stderr)
        self.assertEqual(self.run_ok("report", "g.hgr", "a.part.5", "-q").stdout, "")

    def test_pictures(self):
        self.report("b.part.5", "--pictures", "p")
        names = {"sizes", "matrix", "touched", "parts", "hypergraph", "moves2"}
        found = {path.stem for path in (self.folder / "p").glob("*.svg")}
        self.assertEqual(found, names)
        for path in (self.folder / "p").glob("*.svg"):
            self.assertTrue(ElementTree.parse(path).getroot().tag.endswith("svg"))
        if shutil.which("rsvg-convert"):
            for name in names:
                png = (self.folder / "p" / f"{name}.png").read_bytes()
                self.assertEqual(png[:8], b"\x89PNG\r\n\x1a\n")

    def bars(self, name, style):
        """Widths of bars, from above to below."""
        text = self.text(f"p/{name}.svg")
        found = re.findall(rf'<rect class="{style}" x="64" y="([0-9.]+)" width="([0-9.]+)"', text)
        return [float(width) for _, width in sorted(found, key=lambda bar: float(bar[0]))]

    def test_bars_are_as_long_as_their_figures_are_large(self):
        answer, _ = self.report("--pictures", "p")
        for bars, values in (
            (self.bars("sizes", r"p\d"), [part["weight"] for part in answer["parts"]]),
            (
                self.bars("touched", "heat"),
                [row["hyperedges"] for row in answer["touched"] if row["parts"] > 1],
            ),
        ):
            self.assertEqual(len(bars), len(values))
            self.assertGreater(len(set(values)), 2)
            for bar, value in zip(bars, values):
                self.assertAlmostEqual(bar / max(bars), value / max(values), delta=0.01)

    def test_points_have_the_colours_of_their_parts(self):
        answer, _ = self.report("--pictures", "p")
        points = re.findall(
            r'<circle class="p(\d)"[^>]*><title>[^<]*, part (\d+)</title>',
            self.text("p/hypergraph.svg"),
        )
        sizes = [part["vertices"] for part in answer["parts"]]
        self.assertEqual([points.count((str(p), str(p))) for p in range(len(sizes))], sizes)

    def test_squares_of_the_matrix_are_those_of_the_pairs(self):
        answer, _ = self.report("--pictures", "p")
        weight = {tuple(pair["parts"]): pair["weight"] for pair in answer["pairs"]}
        cells = re.findall(
            r'<rect class="heat" x="([0-9.]+)" y="([0-9.]+)" [^>]*fill-opacity="([0-9.]+)"/>\n'
            r"<text[^>]*>([0-9,]+)<", self.text("p/matrix.svg")
        )
        self.assertEqual(len(cells), 2 * len(weight))
        columns, rows = (sorted({float(cell[i]) for cell in cells}) for i in (0, 1))
        shades = {}
        for x, y, shade, number in cells:
            pair = tuple(sorted((columns.index(float(x)), rows.index(float(y)))))
            self.assertEqual(int(number.replace(",", "")), weight[pair])
            shades[weight[pair]] = float(shade)
        ordered = [shades[key] for key in sorted(shades)]
        self.assertEqual(ordered, sorted(ordered))

    def test_without_a_converter_there_is_svg_alone_and_that_is_said(self):
        empty = {**os.environ, "PATH": str(self.folder)}
        done = self.run_ok("report", "g.hgr", "a.part.5", "--pictures", "p", env=empty)
        self.assertIn("rsvg-convert is not installed", done.stderr)
        self.assertEqual({path.suffix for path in (self.folder / "p").iterdir()}, {".svg"})

    def test_a_converter_that_fails(self):
        self.file("rsvg-convert", "#!/bin/sh\nexit 3\n")
        (self.folder / "rsvg-convert").chmod(0o755)
        more = {"env": {**os.environ, "PATH": str(self.folder)}}
        words = ("report", "g.hgr", "a.part.5", "-o", "g.html", "--pictures", "p")
        self.fails(1, "rsvg-convert made no PNG", *words, **more)
        self.assertNotIn("g.html", self.names())

    def test_the_history_of_a_run(self):
        self.run_ok("partition", "g.hgr", "-k", 5, "--json", "run.json", "-o", "r.part.5")
        run = json.loads(self.text("run.json"))
        self.assertEqual(run["history"][-1]["objective"], run["cut"])
        falling = [step["objective"] for step in run["history"]]
        self.assertEqual(falling, sorted(set(falling), reverse=True))
        words = ("g.hgr", "r.part.5", "--history", "run.json", "-o", "r.html", "--json", "r.json")
        self.run_ok("report", *words)
        answer = json.loads(self.text("r.json"))
        self.assertEqual(answer["history"], run["history"])
        page = Page(self.text("r.html"))
        self.assertIn("search", page.ids)
        total = sum(self.own)
        most = math.floor(-(-total // 5) * 1.03 + 1e-9)
        self.assertEqual({part["most"] for part in answer["parts"]}, {most})
        self.assertIn("every part is within its bounds", self.text("r.html"))

    def test_the_picture_of_a_history_passes_through_its_steps(self):
        steps = ((0.25, 120, "member"), (1.5, 90, "member"), (4.75, 60, "combination"))
        history = [dict(zip(("seconds", "objective", "step"), step)) for step in steps]
        self.file("run.json", json.dumps({"history": history}))
        self.run_ok("report", "g.hgr", "a.part.5", "--history", "run.json", "-o", "r.html")
        path = r'<path class="trend open"[^>]* d="([^"]*)".*?</svg>'
        picture = re.search(path, self.text("r.html"), re.S)
        dots = re.findall(r'cx="([0-9.]+)" cy="([0-9.]+)"[^>]*><title>([^<]*)</title>', picture[0])
        told = [f"{objective} after {seconds:.2f} s by {step}" for seconds, objective, step in steps]
        self.assertEqual([title for _, _, title in dots], told)
        corners = re.findall(r"[ML]([0-9.]+) ([0-9.]+)", picture[1])
        self.assertLessEqual({(x, y) for x, y, _ in dots}, set(corners))
        (x0, y0), (x1, y1), (x2, y2) = ((float(x), float(y)) for x, y, _ in dots)
        self.assertAlmostEqual((x2 - x1) / (x1 - x0), 3.25 / 1.25, delta=0.01)
        self.assertAlmostEqual((y2 - y1) / (y1 - y0), 1, delta=0.01)
        self.assertGreater(y1, y0)  # downwards, as the objective falls

    def test_a_history_that_is_none(self):
        for text, sentence in (
            ("{", "h.json: it is no JSON: parse error at line 1, column"),
            ("[]", "h.json: it is no answer of partition --json that has a history"),
            ('{"history": []}', "that has a history"),
            ('{"history": [{"seconds": 1}]}', "entry 1 of its history lacks"),
            ('{"history": [{"seconds": -1, "objective": 1, "step": ""}]}', "entry 1"),
            (
                '{"history": [{"seconds": 2, "objective": 1, "step": ""},'
                ' {"seconds": 1, "objective": 0, "step": ""}]}',
                "entry 2 of its history is earlier",
            ),
        ):
            self.file("h.json", text)
            words = ("g.hgr", "a.part.5", "--history", "h.json", "-o", "g.html")
            self.fails(3, sentence, "report", *words)
        self.assertNotIn("g.html", self.names())

    def test_what_is_wrong(self):
        self.file("short.part.5", "0\n1\n")
        self.file("high.part.3", "".join(f"{p}\n" for p in self.parts[0]))
        for status, sentence, words in (
            (2, "PARTITION is required", ("g.hgr",)),
            (3, "short.part.5", ("g.hgr", "short.part.5")),
            (3, "high.part.3: a vertex is in part 4, and there are 3 parts", ("g.hgr", "high.part.3")),
            (3, "and there are 2 parts", ("g.hgr", "a.part.5", "-k", 2)),
            (5, "absent: No such file", ("g.hgr", "absent")),
            (5, "absent.part.5", ("g.hgr", "a.part.5", "absent.part.5")),
            (2, "cannot both go to standard output", ("g.hgr", "a.part.5", "-o", "-", "--json", "-")),
            (2, "only one file can come from standard input", ("-", "-")),
            (2, "g.hgr", ("g.hgr", "a.part.5", "-o", "g.hgr")),
            (5, "cannot make the folder", ("g.hgr", "a.part.5", "--pictures", "a.part.5")),
        ):
            self.fails(status, sentence, "report", *words)
        self.assertEqual([name for name in self.names() if name.endswith(".html")], [])

    def test_a_failure_is_told_in_the_json_file(self):
        self.file("short.part.5", "0\n1\n")
        words = ("g.hgr", "short.part.5", "-o", "g.html", "--json", "g.json")
        self.fails(3, "short.part.5", "report", *words)
        answer = json.loads(self.text("g.json"))
        self.assertEqual((answer["command"], answer["status"]), ("report", 3))
        self.assertIn("short.part.5", answer["message"])
        self.assertNotIn("g.html", self.names())

    def test_odd_hypergraphs(self):
        for name, text, part in (
            ("islands", "1 5\n2 4\n", "0\n1\n0\n1\n2\n"),
            ("weightless", "1 2 10\n1 2\n0\n0\n", "0\n1\n"),
            ("one", "1 3\n1 2 3\n", "0\n0\n0\n"),
            ("gap", "1 3\n1 2 3\n", "0\n7\n7\n"),
        ):
            self.file(f"{name}.hgr", text)
            self.file(name, part)
            words = (f"{name}.hgr", name, "--force", "-o", "o.html", "--json", "o.json")
            self.run_ok("report", *words)
            page = Page(self.text("o.html"))
            self.assertNotRegex(self.text("o.html"), r"\b(nan|inf)\b")
            for pointer, shown in page.figures:
                at(json.loads(self.text("o.json")), pointer)

    def test_many_parts(self):
        nvertices = 3000
        nets = [f"{v} {v % nvertices + 1}" for v in range(1, nvertices + 1)]
        nets.append(" ".join(map(str, range(1, nvertices + 1))))
        self.file("ring.hgr", f"{len(nets)} {nvertices}\n" + "\n".join(nets) + "\n")
        self.file("ring.part.1000", "".join(f"{v // 3}\n" for v in range(nvertices)))
        self.run_ok("report", "ring.hgr", "ring.part.1000", "-o", "r.html", "--json", "r.json")
        answer = json.loads(self.text("r.json"))
        self.assertEqual(answer["unpaired_hyperedges"], 1)
        self.assertEqual(len(answer["pairs"]), 1000)
        self.assertLess((self.folder / "r.html").stat().st_size, 3_000_000)

    def test_a_large_one_is_drawn_in_clusters(self):
        self.file("big.hgr", random_hypergraph(20000, 24000, 5))
        self.file("big.part.8", "".join(f"{v * 8 // 20000}\n" for v in range(20000)))
        self.run_ok("report", "big.hgr", "big.part.8", "-o", "b.html", "--json", "b.json")
        drawn = json.loads(self.text("b.json"))["drawn"]
        self.assertTrue(drawn["clusters"])
        self.assertLessEqual(drawn["points"], 1200)
        self.assertGreater(drawn["points"], 300)
        paths = re.findall(r'<path class="q(\d) open"[^>]* d="([^"]*)"', self.text("b.html"))
        self.assertEqual(sum(path.count("M") for _, path in paths), drawn["points"])
        points = [sum(path.count("M") for q, path in paths if q == str(p)) for p in range(8)]
        self.assertGreater(min(points), 10)
        self.assertLess((self.folder / "b.html").stat().st_size, 3_000_000)

    def test_the_examples(self):
        for name in ("lshape", "miter6"):
            self.example(f"{name}.hgr")
            self.run_ok("partition", f"{name}.hgr", "-k", 4, "--preset", "fast")
            self.run_ok("report", f"{name}.hgr", f"{name}.hgr.part.4")
            Page(self.text(f"{name}.hgr.part.4.html"))
        self.assertTrue((EXAMPLES / "lshape.hgr").exists())
