# SPDX-License-Identifier: MIT
"""Formats other than hypergraph files: what is read from files that other programs wrote, held
against what those programs say of them."""

import collections
import csv
import gzip
import io
import json
import random
import re
import subprocess
import unittest

from calls import Case

PYTHON = "/usr/bin/python3"  # which has SciPy

MAKE_MATRICES = """
import random, sys
import numpy, scipy.io, scipy.sparse
numpy.random.seed(5)
def store(name, matrix, **more):
    scipy.io.mmwrite(name, matrix, **more)
plain = scipy.sparse.random(30, 20, 0.2, format="coo", random_state=5)
store("real.mtx", plain)
whole = (plain.data * 100 - 50).astype(int)
store("integer.mtx", scipy.sparse.coo_matrix((whole, (plain.row, plain.col)), shape=plain.shape))
store("pattern.mtx", plain, field="pattern")
store("complex.mtx", plain + 1j * plain)
square = scipy.sparse.random(25, 25, 0.2, format="coo", random_state=6)
store("symmetric.mtx", square + square.T, symmetry="symmetric")
store("skew.mtx", square - square.T, symmetry="skew-symmetric")
hermitian = square + 1j * square
store("hermitian.mtx", hermitian + hermitian.conj().T, symmetry="hermitian")
"""

# Entries as SciPy reads them: one line each, row, column and value.
SHOW_MATRIX = """
import json, sys
import scipy.io
matrix = scipy.io.mmread(sys.argv[1]).tocoo()
print(json.dumps([list(map(int, matrix.shape)), [[int(i), int(j), repr(complex(v))]
      for i, j, v in zip(matrix.row, matrix.col, matrix.data)]]))
"""

MATRICES = ["real", "integer", "pattern", "complex", "symmetric", "skew", "hermitian"]


class Formats(Case):
    def python(self, program, *words):
        """What SciPy's interpreter prints."""
        return subprocess.run(
            [PYTHON, "-c", program, *words], cwd=self.folder, check=True, stdout=subprocess.PIPE
        ).stdout.decode()

    def matrix(self, name):
        """Shape and {(row, column): value} of a file, by SciPy."""
        shape, entries = json.loads(self.python(SHOW_MATRIX, name))
        return shape, {(i, j): complex(v) for i, j, v in entries}

    def nets(self, name, *words):
        """{hyperedge: set of vertices} of a file, all by name, from its table."""
        text = self.run_ok("convert", name, "-", "--to", "csv", "-q", "--force", *words).stdout
        found = collections.defaultdict(set)
        for row in csv.DictReader(io.StringIO(text)):
            pins = found[row["hyperedge"]]
            if row["vertex"]:
                pins.add(row["vertex"])
        return {net: pins for net, pins in found.items() if net}

    def stats(self, name, *words):
        return self.json_of("stats", name, "--format", "json", *words)


class Matrices(Formats):
    def setUp(self):
        super().setUp()
        self.python(MAKE_MATRICES)

    def test_every_model_of_every_kind_of_matrix(self):
        for kind in MATRICES:
            name = kind + ".mtx"
            (nrows, ncolumns), entries = self.matrix(name)
            by_row, by_column = collections.defaultdict(set), collections.defaultdict(set)
            for i, j in entries:
                by_row[str(i + 1)].add(str(j + 1))
                by_column[str(j + 1)].add(str(i + 1))
            filled = {net: pins for net, pins in self.nets(name).items() if pins}
            self.assertEqual(filled, by_row, kind)
            filled = self.nets(name, "--model", "column-net")
            self.assertEqual({n: p for n, p in filled.items() if p}, by_column, kind)
            answer = self.stats(name)
            self.assertEqual((answer["hyperedges"], answer["vertices"]), (nrows, ncolumns))
            self.assertEqual(answer["total_vertex_weight"], len(entries), kind)
            fine = self.nets(name, "--model", "fine-grain")
            cells = {f"{i + 1},{j + 1}" for i, j in entries}
            self.assertEqual(set().union(*fine.values()), cells, kind)
            for i in by_row:
                self.assertEqual(fine["row " + i], {c for c in cells if c.split(",")[0] == i})
            self.assertEqual(len(fine), nrows + ncolumns)

    def test_blocks_and_distribution_agree_with_scipy(self):
        for kind in MATRICES:
            for model in ("row-net", "column-net", "fine-grain"):
                self.check_blocks(kind + ".mtx", model)

    def check_blocks(self, name, model):
        words = ("--model", model, "-q")
        self.run_ok("partition", name, "-k", 3, "-o", "parts", "-e", 20, *words)
        self.run_ok("annotate", name, "parts", "-o", "blocks.mtx", *words)
        part = [int(line) for line in self.text("parts").split()]
        _, entries = self.matrix(name)
        _, owner = self.matrix("blocks.mtx.distribution.mtx")
        shape, blocks = self.matrix("blocks.mtx")
        rows = [int(line) - 1 for line in self.text("blocks.mtx.rows").split()]
        columns = [int(line) - 1 for line in self.text("blocks.mtx.columns").split()]
        self.assertEqual((sorted(rows), sorted(columns)), tuple(list(range(n)) for n in shape))
        back = {(rows[i], columns[j]): value for (i, j), value in blocks.items()}
        self.assertEqual(back, entries, (name, model))
        self.assertEqual(set(owner), set(entries))
        parts_of_row, parts_of_column = collections.defaultdict(set), collections.defaultdict(set)
        for (i, j), value in owner.items():
            parts_of_row[i].add(value.real)
            parts_of_column[j].add(value.real)
        if model == "row-net":
            self.assertTrue(all(owner[i, j] == 1 + part[j] for i, j in owner))
        if model == "column-net":
            self.assertTrue(all(owner[i, j] == 1 + part[i] for i, j in owner))
        self.check_ranges(shape, len(set(part)), (rows, columns), (parts_of_row, parts_of_column))
        # rows of one part stand together, those of several come last, where the model has rows cut
        for order, parts, cut in (
            (rows, parts_of_row, model != "column-net"),
            (columns, parts_of_column, model != "row-net"),
        ):
            if cut:
                keys = [
                    4 if len(parts[old]) > 1 else min(parts[old]) for old in order if parts[old]
                ]
                self.assertEqual(keys, sorted(keys), (name, model))

    def check_ranges(self, shape, nparts, orders, parts_of):
        """The comments that say which new rows and columns are of which part."""
        lines = [line for line in self.text("blocks.mtx").splitlines() if line[:1] == "%"][1:]
        self.assertEqual(len(lines), nparts + 1)
        for side, word in enumerate(("rows", "columns")):
            following = 1
            for p, line in enumerate(lines):
                self.assertTrue(line.startswith(f"% part {p}:" if p < nparts else "% border:"), line)
                found = re.search(rf" {word} (\d+) to (\d+)", line)
                if found is None:
                    self.assertIn(f" no {word}", line)
                    continue
                first, last = map(int, found.groups())
                self.assertEqual(first, following)
                following = last + 1
                for old in orders[side][first - 1 : last]:
                    met = parts_of[side][old]
                    self.assertTrue(len(met) > 1 if p == nparts else met <= {1 + p}, (line, old))
            self.assertEqual(following, shape[side] + 1)

    def test_the_volume_is_the_connectivity(self):
        """Words sent where each entry of a vector is at one of the parts that need it."""
        self.run_ok("partition", "real.mtx", "-k", 4, "-o", "p", "-q", "-e", 30, "--objective", "km1")
        answer = self.json_of("verify", "real.mtx", "p", "-k", 4, "--format", "json")
        part = [int(line) for line in self.text("p").split()]
        needs = collections.defaultdict(set)
        for i, j in self.matrix("real.mtx")[1]:
            needs[i].add(part[j])
        self.assertEqual(answer["connectivity"], sum(len(p) - 1 for p in needs.values()))

    def test_counts_that_are_off_are_told(self):
        text = self.text("real.mtx").splitlines(keepends=True)
        self.file("short.mtx", "".join(text[:-1]).replace("\n", "\r\n"))
        done = self.run_ok("stats", "short.mtx")
        self.assertRegex(done.stderr, r"short.mtx:\d+:1: 119 entries, 1 less than announced")
        self.fails(3, "H37 contradiction: 119 entries", "partition", "short.mtx", "-k", 2, "--strict")

    def test_odd_matrices(self):
        head = "%%MatrixMarket matrix coordinate "
        for place, sentence, text in [
            ("1:23", "an array lists every entry", "%%MatrixMarket matrix array real general\n1 1\n5\n"),
            ("1:34", "'quaternion' is not known as the field", head + "quaternion general\n1 1 0\n"),
            ("1:42", "'lower' is not known as the symmetry", head + "pattern lower\n1 1 0\n"),
            ("2:1", "a symmetric matrix of 2 rows and 3", head + "real symmetric\n2 3 0\n"),
            ("2:5", "'x' where the number of entries should be", head + "real general\n2 3 x\n"),
            ("4:3", "the column is 4; it should be from 1 to 3", head + "real general\n2 3 1\n\n2 4 1\n"),
            ("3:1", "the row is 0", head + "pattern general\n2 3 1\n0 1\n"),
            ("3:4", "the line ends where a value should be", head + "real general\n2 3 1\n1 1\n"),
            ("3:5", "'1.x' where a value should be", head + "real general\n2 3 1\n1 1 1.x\n"),
            ("3:5", "'7' where the end of the line should be", head + "pattern general\n2 3 1\n1 1 7\n"),
            ("2:1", "2000000000 rows", head + "pattern general\n2000000000 3 1\n1 1\n"),
        ]:
            self.file("m.mtx", text)
            self.fails(3, f"m.mtx:{place}: {sentence}", "stats", "m.mtx")
        self.file("m.mtx", head + "real symmetric\n2 2 3\n1 2 nan\n2 1 -1.5D+3\n2 2 .5\n")
        done = self.run_ok("stats", "m.mtx")
        self.assertIn("both sides of the diagonal of a symmetric matrix, counted once: 2", done.stderr)
        self.assertIn("2 vertices, 2 hyperedges, 3 pins", done.stdout)


class Formulas(Formats):
    def weights(self, name, *words):
        """Weights of the hyperedges of a file, in order."""
        self.run_ok("convert", name, "w.hgr", "--force", *words)
        rows = (self.folder / "w.hgr").read_text().splitlines()
        code = rows[0].split()[2:]
        return [int(row.split()[0]) for row in rows[1:]] if code in (["1"], ["11"]) else None

    def test_weighted_formulas_in_both_forms(self):
        clauses = [(7, "1 -2 0"), ("h", "2 3 0"), (12, "-1 3 4 0"), ("h", "4 1 0"), (1, "2 4 0")]
        nets = {"1": {"1", "2"}, "2": {"2", "3"}, "3": {"1", "3", "4"}, "4": {"1", "4"}, "5": {"2", "4"}}
        old = "c x\np wcnf 4 5 21\n"
        old += "".join("%s %s\n" % (21 if w == "h" else w, c) for w, c in clauses)
        soft_first = "c x\n" + "".join("%s %s\n" % row for row in clauses)
        hard_first = "c x\nh 2 3 0\n7 1 -2 0\n"
        self.file("old.txt", old)
        self.file("soft.wcnf", soft_first)
        for name in ("old.txt", "soft.wcnf"):
            self.assertEqual(self.nets(name), nets)
            self.assertEqual(self.weights(name), [7, 12, 12, 12, 1])
            self.assertIsNone(self.weights(name, "--model", "dual"))
            self.assertIn("2 hard clauses count 12", self.run_ok("stats", name).stderr)
        self.assertEqual(self.weights(self.file("hard", hard_first)), [7, 7])
        self.assertEqual(self.weights(self.file("dos", hard_first.replace("\n", "\r\n"))), [7, 7])
        self.assertEqual(self.weights(self.file("no-top", "p wcnf 3 2\n5 1 2 0 9 2 3 0\n")), [5, 9])
        self.assertEqual(self.weights(self.file("all-hard", "h 1 2 0\nh 2 3 0\n")), [1, 1])

    def optimum(self, name):
        """The least weight of clauses that are not satisfied, by a solver of weighted formulas."""
        done = subprocess.run(["clasp", name], cwd=self.folder, capture_output=True, text=True)
        self.assertIn("s OPTIMUM FOUND", done.stdout, done.stderr)
        return int(re.search(r"Optimization +: (\d+)", done.stdout)[1])

    def test_a_solver_finds_the_weighted_formula_that_was_read(self):
        found = set()
        for seed in range(5):
            clauses, _ = self.formula(9, 60, seed)
            numbers = random.Random(seed)
            hard = [i % 8 == 0 for i in range(60)]
            weights = [numbers.randint(1, 30) for _ in clauses]
            heaviest = max(w for w, h in zip(weights, hard) if not h)
            lines = [" ".join(map(str, c)) + " 0\n" for c in clauses]
            old = "p wcnf 9 60 4000\n" + "".join(
                f"{4000 if h else w} {line}" for h, w, line in zip(hard, weights, lines)
            )
            new = "".join(f"{'h' if h else w} {line}" for h, w, line in zip(hard, weights, lines))
            self.file("old.wcnf", old)
            wanted = self.optimum("old.wcnf")
            for name in ("old.wcnf", self.file("new.wcnf", new)):
                nets = self.nets(name, "--model", "literal")
                told = self.weights(name, "--model", "literal")
                self.assertEqual({w for w, h in zip(told, hard) if h}, {heaviest})
                again = "".join(
                    f"{4000 if h else w} {' '.join(sorted(nets[str(i + 1)]))} 0\n"
                    for i, (w, h) in enumerate(zip(told, hard))
                )
                self.file("again.wcnf", "p wcnf 9 60 4000\n" + again)
                self.assertEqual(self.optimum("again.wcnf"), wanted)
            found.add(wanted)
        self.assertGreater(len(found), 3)
        self.assertGreater(min(found), 0)

    def test_weighted_formulas_that_are_wrong(self):
        for place, sentence, text in (
            ("2:1", "'-3' where the weight of a clause", "p wcnf 3 1 9\n-3 1 2 0\n"),
            ("2:1", "'1.5' where the weight of a clause", "p wcnf 3 1 9\n1.5 1 2 0\n"),
            ("2:1", "'h' where the weight of a clause", "p wcnf 3 1 9\nh 1 2 0\n"),
            ("1:12", "'x' where the weight of hard clauses", "p wcnf 3 1 x\n3 1 2 0\n"),
            ("2:3", "'x' where a literal", "h 1 2 0\n3 x 0\n"),
        ):
            self.fails(3, f"f.wcnf:{place}: {sentence}", "stats", self.file("f.wcnf", text))
        self.file("f.wcnf", "p wcnf 3 2 9999999999\n2000000000 1 2 0\n2000000000 2 3 0\n")
        self.assertIn("total more than 2147483646", self.call("lint", "f.wcnf").stdout)
        self.assertIn("does not end with 0", self.run_ok("stats", self.file("f.wcnf", "h 1 2 0\n3 1 3")).stderr)
        self.assertIn("1 clause is empty", self.run_ok("stats", self.file("f.wcnf", "h 1 2 0\n3 0\n")).stderr)

    def formula(self, nvariables, nclauses, seed):
        numbers = random.Random(seed)
        clauses = [
            [v * numbers.choice((1, -1)) for v in numbers.sample(range(1, nvariables + 1), 3)]
            for _ in range(nclauses)
        ]
        lines = ["c made at random", f"p cnf {nvariables} {nclauses}"]
        return clauses, "\n".join(lines + [" ".join(map(str, c)) + " 0" for c in clauses]) + "\n"

    def test_every_model(self):
        clauses, text = self.formula(20, 60, 1)
        self.file("f.cnf", text)
        by_clause = {str(i + 1): {str(abs(x)) for x in c} for i, c in enumerate(clauses)}
        self.assertEqual(self.nets("f.cnf"), by_clause)
        literals = {str(i + 1): {str(x) for x in c} for i, c in enumerate(clauses)}
        self.assertEqual(self.nets("f.cnf", "--model", "literal"), literals)
        self.assertEqual(self.stats("f.cnf", "--model", "literal")["vertices"], 40)
        by_variable = collections.defaultdict(set)
        for i, clause in enumerate(clauses):
            for x in clause:
                by_variable[str(abs(x))].add(str(i + 1))
        self.assertEqual(self.nets("f.cnf", "--model", "dual"), by_variable)

    def solve(self, name):
        """The verdict of a solver and its model."""
        done = subprocess.run(
            ["cadical", "-q", name], cwd=self.folder, capture_output=True, text=True
        )
        model = [int(w) for line in done.stdout.splitlines() if line[:2] == "v " for w in line.split()[1:]]
        return done.returncode, {x for x in model if x != 0}

    def test_a_solver_finds_the_formula_that_was_read(self):
        """The clauses that are read, written anew, are satisfied as the file's are."""
        verdicts = set()
        for seed in range(6):
            clauses, text = self.formula(12, 45 + 6 * seed, seed)
            self.file("f.cnf", text)
            nets = self.nets("f.cnf", "--model", "literal")
            again = f"p cnf 12 {len(nets)}\n" + "".join(" ".join(pins) + " 0\n" for pins in nets.values())
            self.file("again.cnf", again)
            verdict, model = self.solve("f.cnf")
            self.assertEqual(self.solve("again.cnf")[0], verdict)
            self.assertIn(verdict, (10, 20))
            verdicts.add(verdict)
            if verdict == 10:
                self.assertTrue(all({int(x) for x in pins} & model for pins in nets.values()))
        self.assertEqual(verdicts, {10, 20})

    def test_headers_that_are_off_are_told(self):
        for text, told in [
            ("p cnf 3 4\n1 2 0\n-3 1 0\n", "2 clauses less than the header says"),
            ("p cnf 3 1\n1 2 0\n-3 1 0\n", "1 clause more than the header says"),
            ("p cnf 2 1\n1 3 0\n", "variable 3 is used, and the header says 2"),
            ("p cnf 3 1\n1 2 3", "the last clause does not end with 0"),
            ("p cnf 3 2\n1 2\n3 0 c\n0\n", "1 clause is empty"),
            ("p cnf 3 1\n1 2 -1 3 0\n", "twice, with any sign, counted once: 1"),
        ]:
            self.file("f.cnf", text)
            self.assertIn(told, self.run_ok("stats", "f.cnf").stderr)

    def test_files_as_they_occur(self):
        self.file("f.cnf", "c x\r\ncommented\r\np  cnf 3 2\r\n1 -2\r\nc in between\r\n 3 0 2 3\r\n0\r\n%\r\n0\r\n")
        self.assertEqual(self.nets("f.cnf"), {"1": {"1", "2", "3"}, "2": {"2", "3"}})
        self.file("f.gz", gzip.compress((self.folder / "f.cnf").read_bytes()))
        self.assertEqual(self.stats("f.gz")["pins"], 5)
        for place, sentence, text in [
            ("2:3", "'x' where a literal", "p cnf 2 1\n1 x 0\n"),
            ("1:8", "the line ends where the number of clauses", "p cnf 2\n"),
            ("2:3", "'--2' where a literal", "p cnf 2 1\n1 --2 0\n"),
            ("2:11", "2000000000 variables", "p cnf 2 1\n2000000000 0\n"),
        ]:
            self.file("f.cnf", text)
            self.fails(3, f"f.cnf:{place}: {sentence}", "stats", "f.cnf")


class Tables(Formats):
    NAMES = ["plain", "two words", 'a "quoted" one', "comma, inside", "line\nbreak", "é", "semi;colon", "tab\there"]

    def rows(self):
        numbers = random.Random(3)
        names = self.NAMES + [f"v{i}" for i in range(20)]
        return [(f"net {i // 4}", names[numbers.randrange(len(names))]) for i in range(80)]

    def as_nets(self, rows):
        nets = collections.defaultdict(set)
        for net, vertex in rows:
            nets[net].add(vertex)
        return nets

    def test_what_the_csv_module_writes(self):
        rows = self.rows()
        for name, dialect, header in [
            ("a.csv", "excel", ["hyperedge", "vertex"]),
            ("b.csv", "unix", ["Transaction", "Item"]),
            ("c.csv", "excel", None),
            ("d.tsv", "excel-tab", ["edge", "node"]),
        ]:
            with open(self.folder / name, "w", newline="", encoding="utf-8") as file:
                writer = csv.writer(file, dialect=dialect)
                writer.writerows(([header] if header else []) + rows)
            self.assertEqual(self.nets(name), self.as_nets(rows), name)

    def test_rows_in_any_order(self):
        rows = self.rows()
        random.Random(8).shuffle(rows)
        self.file("a.csv", "".join(f'"{n}","{v.replace(chr(34), 2 * chr(34))}"\n' for n, v in rows))
        self.assertEqual(self.nets("a.csv"), self.as_nets(rows))

    def test_what_the_json_module_writes(self):
        rows = self.rows()
        for ascii_only in (True, False):
            lines = [json.dumps({"hyperedge": n, "x": [1, {"y": "}"}], "vertex": v}, ensure_ascii=ascii_only) for n, v in rows]
            self.file("a.jsonl", "\n".join(lines) + "\n")
            self.assertEqual(self.nets("a.jsonl"), self.as_nets(rows))
        nets = self.as_nets(rows)
        self.file("b.jsonl", "".join(json.dumps([n, sorted(p)]) + "\r\n" for n, p in nets.items()))
        self.assertEqual(self.nets("b.jsonl"), nets)
        self.file("c.jsonl", "".join(json.dumps({"items": sorted(p)}) + "\n" for p in nets.values()))
        self.assertEqual(sorted(map(sorted, self.nets("c.jsonl").values())), sorted(map(sorted, nets.values())))

    def test_headers(self):
        self.file("a.csv", "note,item,basket,weight,area\nx,bread,b1,3,10\n,milk,b1,3,\ny,milk,b2,,7\n")
        done = self.run_ok("convert", "a.csv", "-", "--to", "csv")
        self.assertIn("hyperedges are in column 'basket', vertices in column 'item'; left out: 'note'", done.stderr)
        self.assertEqual(
            done.stdout,
            "hyperedge,vertex,weight,vertex_weight\nb1,bread,3,10\nb1,milk,3,7\nb2,milk,1,7\n",
        )
        self.file("b.csv", "who,what,size\n1,2,0.5\n1,3,x\n")  # words above numbers
        self.assertEqual(self.nets("b.csv"), {"1": {"2", "3"}})
        self.file("c.csv", "e;v\nf;v\nf;w\n")
        self.assertEqual(self.nets("c.csv"), {"e": {"v"}, "f": {"v", "w"}})

    def test_empty_fields_at_the_end_of_the_text(self):
        for ending in ("", "\t", "\t\t", "\t\n", "\n\t\n", "\n\t\t"):
            self.file("a.tsv", "e\tv\nf\tw\nf\tv" + ending)
            self.assertEqual(self.nets("a.tsv", "--timeout", 60), {"e": {"v"}, "f": {"v", "w"}})

    def test_faults_of_tables(self):
        for name, place, sentence, text in [
            ("a.csv", "2:3", "a quoted field has no closing quote", 'a,b\nc,"d\ne,f\n'),
            ("a.csv", "1:6", "'x' behind a closing quote", 'a,"b"x\n'),
            ("a.csv", "2:5", "'-1', the weight, is not a whole number from 0", "a,b,1\nc,d,-1\n"),
            ("a.csv", "3:1", "the row has one field", "a,b\nc,d\ne\n"),
            ("a.jsonl", "2:2", "a string has no closing quote", '["a", "b"]\n["a\n'),
            ("a.jsonl", "1:2", "where a value should be", '[[],2]\n'),
            ("a.jsonl", "1:8", "'x' where the end of the line", '["a",1]x\n{"a":2}\n'),
            ("a.edges", "2:2", "the line ends where a second vertex", "a b\nc\n"),
            ("a.edges", "1:5", "'1.5' where a weight", "a b 1.5\n"),
        ]:
            self.file(name, text)
            self.fails(3, f"{name}:{place}: ", "stats", name, "--from", name[2:])
            self.assertIn(sentence, self.call("stats", name, "--from", name[2:]).stderr)

    def test_contradictions_are_told(self):
        self.file("a.csv", "a,b,1\na,c,2\na,d,3\n")
        done = self.run_ok("stats", "a.csv")
        self.assertIn("a.csv:2:5: '2' here is another weight than before; the first counts, 2 times in all", done.stderr)

    def test_edges_under_comments_need_no_name(self):
        text = "# Nodes: 3 Edges: 2\n#\n0\t1\n1\t2\n"
        self.file("web.txt", text)
        for done in (self.run_ok("stats", "web.txt"), self.run_ok("stats", "-", input=text)):
            self.assertIn("3 vertices, 2 hyperedges, 4 pins", done.stdout)
        self.file("words.txt", "# Nodes: 3\nnone at all\n")
        self.assertIn("header-numbers", self.call("stats", "words.txt").stderr)

    def test_edges(self):
        self.file("g.edges", "# graph\n% too\na b\r\nb,c 4\n\nc\td\nd d\n")
        self.assertEqual(self.nets("g.edges"), {"1": {"a", "b"}, "2": {"b", "c"}, "3": {"c", "d"}})
        self.assertIn("left out: 1", self.run_ok("stats", "g.edges").stderr)


class Conversions(Formats):
    FULL = (
        "hyperedge,vertex,weight,vertex_weight,kind,fixed,group\n"
        "clk,u1,3,2,AND2,0,\nclk,u2,3,1,,,1\n"
        'data,u2,1,1,,,1\ndata,"u,3",1,5,DFF,,1\nempty,,2,,,,\n,alone,,1,,2,\n'
    )

    def test_tables_keep_everything(self):
        self.file("a.csv", self.FULL)
        for words in (("b.csv",), ("b.tsv",), ("b.jsonl",)):
            self.run_ok("convert", "a.csv", *words)
            self.run_ok("convert", words[0], "c.csv")
            self.assertEqual(sorted(self.text("c.csv").split()), sorted(self.FULL.split()))

    def test_json_lines_keep_the_order_too(self):
        self.file("a.csv", self.FULL)
        self.run_ok("convert", "a.csv", "a.jsonl")
        lines = [json.loads(line) for line in self.text("a.jsonl").splitlines()]
        self.assertEqual([one["vertex"] for one in lines[:4]], ["u1", "u2", "u,3", "alone"])
        self.assertEqual(lines[0], {"vertex": "u1", "vertex_weight": 2, "kind": "AND2", "fixed": 0})
        self.assertEqual(lines[4], {"hyperedge": "clk", "weight": 3, "vertices": ["u1", "u2"]})
        self.assertEqual(lines[6], {"hyperedge": "empty", "weight": 2, "vertices": []})
        self.run_ok("convert", "a.jsonl", "b.jsonl")
        self.assertEqual(self.text("b.jsonl"), self.text("a.jsonl"))

    def test_names_of_any_kind_come_through_json_lines(self):
        names = ['a"b', "c\\d", "tab\there", "line\nend", "\u00e9\u4e2d\U0001f600", "1", " ", "{}"]
        rows = [{"hyperedge": "e", "vertices": names}]
        self.file("a.jsonl", "".join(json.dumps(row) + "\n" for row in rows))
        self.run_ok("convert", "a.jsonl", "b.jsonl")
        lines = [json.loads(line) for line in self.text("b.jsonl").splitlines()]
        self.assertEqual([one["vertex"] for one in lines[:-1]], names)
        self.assertEqual(lines[-1]["vertices"], names)

    def test_fewer_than_two_vertices_are_converted_and_not_partitioned(self):
        self.file("one.csv", "hyperedge,vertex\na,u\n")
        self.assertEqual(self.stats("one.csv")["vertices"], 1)
        self.run_ok("convert", "one.csv", "one.jsonl")
        self.run_ok("convert", "one.jsonl", "again.csv")
        self.assertEqual(self.text("again.csv"), self.text("one.csv"))
        self.file("p", "0\n")
        self.assertEqual(self.run_ok("annotate", "one.csv", "p").stdout, "vertex,part\nu,0\n")
        self.run_ok("convert", self.file("one.hgr", "1 1\n1\n"), "h.csv")
        self.fails(3, "H06 counts", "partition", "one.csv", "-k", 2)
        self.assertEqual(self.stats(self.file("none.hgr", "0 0\n"))["vertices"], 0)
        self.fails(3, "H06 counts", "stats", self.file("less.hgr", "-1 1\n"))

    def test_what_is_lost_is_told_or_refused(self):
        self.file("a.csv", self.FULL)
        self.fails(3, "does not keep fixed vertices, groups of vertices (--force goes on without)", "convert", "a.csv", "a.hgr")
        self.assertFalse((self.folder / "a.hgr").exists())
        done = self.run_ok("convert", "a.csv", "a.hgr", "--force")
        self.assertIn("names of vertices, names of hyperedges, kinds of vertices", done.stderr)
        self.assertEqual(self.text("a.hgr"), "2 4 11\n3 1 2\n1 2 3\n2\n1\n5\n1\n")
        answer = self.json_of("convert", "a.csv", "b.hgr", "--force", "--format", "json")
        self.assertEqual((answer["from"], answer["to"], len(answer["lost"])), ("csv", "hgr", 6))

    def test_a_partition_by_name(self):
        self.file("a.csv", "clk,u1\nclk,u2\nd,u3\nd,u2\n")
        self.file("p", "0\n0\n1\n")
        done = self.run_ok("annotate", "a.csv", "p")
        self.assertEqual(done.stdout, "vertex,part\nu1,0\nu2,0\nu3,1\n")
        self.fails(3, "3 vertices", "annotate", "a.csv", self.file("q", "0\n1\n"))
        done = self.run_ok("annotate", "a.csv", "p", "-o", "p.jsonl")
        self.assertEqual(json.loads(self.text("p.jsonl").splitlines()[2]), {"vertex": "u3", "part": 1})
        self.fails(2, "if the hypergraph comes from one", "annotate", "a.csv", "p", "--to", "mtx", "-o", "x")

    def test_usage(self):
        self.file("a.csv", "a,b\na,c\n")
        self.fails(2, "no format has this ending", "convert", "a.csv", "b.txt")
        self.fails(2, "is read and not written; --to takes hgr", "convert", "a.csv", "b.cnf")
        self.fails(2, "files are written plain", "convert", "a.csv", "b.hgr.gz")
        self.fails(2, "a.csv", "convert", "a.csv", "a.csv")
        self.fails(3, "has no models", "stats", "a.csv", "--model", "primal")
        self.fails(3, "models of a DIMACS CNF file are primal dual literal", "stats", self.file("f", "p cnf 2 1\n1 2 0\n"), "--model", "row-net")

    def test_content_tells_the_format_and_from_overrides_it(self):
        self.file("x", "p cnf 2 1\n1 2 0\n")
        self.assertEqual(self.stats("x")["pins"], 2)
        self.fails(3, "H34 other-format: it begins as DIMACS CNF files do", "stats", "x", "--from", "hgr")
        self.file("y.hgr", "2,4\n1,2\n3,4\n")  # of one ending, like another format
        self.fails(3, "H34 other-format: it begins as CSV files do", "stats", "y.hgr")
        self.assertEqual(self.stats("y.hgr", "--from", "csv")["pins"], 3)
        done = self.call("stats", "-", input="a,b\na,c\n")
        self.assertIn("2 pins", done.stdout)


NASTY = ['a "quoted" one', "back\\\\slash", "<&>", "new\nline", "\u00e9", "plain"]

# What a library for graphs reads: nodes with their data, and edges.
READ_GRAPHML = """
import json, sys
import networkx
graph = networkx.read_graphml(sys.argv[1])
print(json.dumps([dict(graph.nodes(data=True)), sorted(map(sorted, graph.edges()))]))
"""


class Drawings(Formats):
    def setUp(self):
        super().setUp()
        nets = [NASTY[:2], NASTY[1:5], NASTY[3:], [NASTY[0], NASTY[5]], [NASTY[2]]]
        lines = [{"vertex": n, "vertex_weight": i, "kind": "k<"} for i, n in enumerate(NASTY)]
        lines += [
            {"hyperedge": f'e"{i}', "vertices": pins, "weight": i + 3} for i, pins in enumerate(nets)
        ]
        self.file("g.jsonl", "".join(json.dumps(line) + "\n" for line in lines))
        self.nets, self.part = nets, [0, 0, 1, 1, 2, 0]
        self.file("p", "".join(f"{p}\n" for p in self.part))

    def test_graphviz_reads_the_drawing(self):
        self.run_ok("annotate", "g.jsonl", "p", "-o", "g.dot")
        made = subprocess.run(
            ["dot", "-Tjson", "g.dot"], cwd=self.folder, check=True, capture_output=True
        )
        self.assertEqual(made.stderr, b"")
        graph = json.loads(made.stdout)
        labels = {o["_gvid"]: o.get("label") for o in graph["objects"] if "nodes" not in o}
        clusters = {o["label"]: o["nodes"] for o in graph["objects"] if "nodes" in o}
        for p in range(3):
            inside = sorted(labels[i] for i in clusters[f"part {p}"])
            wanted = [n.replace("\\", "\\\\").replace("\n", " ") for n, q in zip(NASTY, self.part) if q == p]
            self.assertEqual([x.replace("\\\\", "\\") for x in inside], sorted(x.replace("\\\\", "\\") for x in wanted))
        drawn = [(o.get("name"), o.get("tooltip")) for o in graph["objects"]]
        lines = [
            ({drawn[edge["tail"]][0], drawn[edge["head"]][0]}, edge["tooltip"], edge.get("penwidth"))
            for edge in graph["edges"]
        ]
        for e, net in enumerate(self.nets):
            ends = [f"v{NASTY.index(name)}" for name in net]
            wanted = [set(ends)] if len(net) == 2 else [{f"e{e}", v} for v in ends]
            wide = "2" if len({self.part[NASTY.index(n)] for n in net}) > 1 else None
            for pair in wanted:
                lines.remove((pair, f'e"{e}', wide))
        self.assertEqual(lines, [])

    def test_a_library_for_graphs_reads_graphml(self):
        self.run_ok("annotate", "g.jsonl", "p", "--to", "graphml", "-o", "g.xml")
        nodes, edges = json.loads(self.python(READ_GRAPHML, "g.xml"))
        for v, name in enumerate(NASTY):
            found = nodes[f"v{v}"]
            self.assertEqual(found["name"], name.replace("\n", " "))
            self.assertEqual((found["part"], found["weight"]), (self.part[v], v))
            self.assertEqual((found["kind"], found["type"]), ("k<", "vertex"))
        pins = [[f"e{e}", f"v{NASTY.index(n)}"] for e, net in enumerate(self.nets) for n in net]
        self.assertEqual(edges, sorted(pins))
        for e, net in enumerate(self.nets):
            parts = {self.part[NASTY.index(n)] for n in net}
            found = nodes[f"e{e}"]
            self.assertEqual((found["cut"], found["type"]), (len(parts) > 1, "hyperedge"))
            self.assertEqual((found["name"], found["weight"]), (f'e"{e}', e + 3))

    def test_too_many_to_draw(self):
        self.file("g.hgr", "1 5001\n1 2\n")
        self.file("q", "0\n" * 5001)
        for to in ("dot", "graphml"):
            self.fails(3, "too many to draw", "annotate", "g.hgr", "q", "--to", to, "-o", "x")
        self.fails(2, "'dot' is none of", "stats", "g.hgr", "--from", "dot")


class ByName(Formats):
    TABLE = (
        "hyperedge,vertex\nclk,u_core/1\nclk,u_core/2\nd,u_io\nd,u_core/2\ne,u_io\ne,x=y\n"
        'f,"a,b"\nf,x=y\n'
    )

    def parts(self, *words):
        """{vertex: part} of a partition made with such options."""
        self.run_ok("partition", "a.csv", "-k", 2, "-o", "p", "-e", 99, "-q", *words)
        table = csv.DictReader(io.StringIO(self.run_ok("annotate", "a.csv", "p").stdout))
        return {row["vertex"]: int(row["part"]) for row in table}

    def test_vertices_are_fixed_by_patterns(self):
        self.file("a.csv", self.TABLE)
        for core, other in ((0, 1), (1, 0)):
            parts = self.parts("--fix", f"u_core/*={core},u_io={other},a\\,?={core},x=*={other}")
            self.assertEqual({parts["u_core/1"], parts["u_core/2"], parts["a,b"]}, {core})
            self.assertEqual({parts["u_io"], parts["x=y"]}, {other})
            done = self.call("verify", "a.csv", "p", f"u_[!c]*={core}", "-k", 2)
            self.assertIn("the first is vertex u_io, in part", done.stdout)
        for sentence, word in [
            ("no vertex has a name like 'zz*'", "zz*=1"),
            ("'x=y' is not PATTERN=NUMBER", "x=y"),
            ("the number should be between -1 and 1", "u*=2"),
        ]:
            self.fails(2, sentence, "partition", "a.csv", "-k", 2, "--fix", word)

    def test_groups_by_patterns(self):
        self.file("a.csv", self.TABLE)
        parts = self.parts("--together", "u_core/1=0,a*=0,u_core/2=1,x*=1")
        self.assertEqual(parts["u_core/1"], parts["a,b"])
        self.assertEqual(parts["u_core/2"], parts["x=y"])

    def test_what_the_file_fixes_is_fixed(self):
        rows = ["hyperedge,vertex,fixed,group"]
        rows += [f"n{i},v{j},{(i + j) % 2 if j < 3 else ''},{5 if j > 5 else ''}"
                 for i in range(0, 9, 2) for j in range(9)]
        self.file("a.csv", "\n".join(rows) + "\n")
        parts = self.parts()
        self.assertEqual([parts[f"v{j}"] for j in range(3)], [0, 1, 0])
        self.assertEqual(len({parts[f"v{j}"] for j in (6, 7, 8)}), 1)
        self.file("b.csv", "hyperedge,vertex,fixed\na,b,7\na,c,\n")
        self.fails(3, "vertex b is fixed to part 7 of 2", "partition", "b.csv", "-k", 2)

    def test_lists_speak_in_names(self):
        self.file("a.csv", self.TABLE)
        self.file("p", "0\n1\n1\n1\n1\n")
        done = self.run_ok("verify", "a.csv", "p", "-k", 2, "--list-cut")
        self.assertRegex(done.stdout, r"\n +1 +1 +2 +2  clk\n")
        answer = self.json_of("verify", "a.csv", "p", "-k", 2, "--list-cut", "--format", "json")
        self.assertEqual([net["name"] for net in answer["cut_list"]], ["clk"])
        self.file("b.csv", "hyperedge,vertex,area\nn,big,90\nn,small,1\n")
        self.assertIn("vertex big weighs 90", self.run_ok("stats", "b.csv").stdout)
        self.assertEqual(self.stats("b.csv")["heavy_vertices"][0]["name"], "big")
        self.assertIn("vertex big weighs 90", self.call("lint", "b.csv", "-k", 2).stdout)


class Caps(Formats):
    def test_numbers_in_a_file_take_no_memory_by_themselves(self):
        head = "%%MatrixMarket matrix coordinate pattern general\n"
        for name, text in [
            ("a.mtx", head + "999999 999999 5\n1 1\n"),
            ("a.csv", "".join(f"n{i},v{i}\n" for i in range(200000))),
        ]:
            self.file(name, text)
            self.fails(6, "takes more than the cap", "stats", name, "--memory", 2)

    def test_deadline(self):
        self.file("a.csv", "".join(f"n{i % 99},v{i}\n" for i in range(600000)))
        self.fails(124, "the deadline came", "stats", "a.csv", "--timeout", 0.01)


if __name__ == "__main__":
    unittest.main()
