# SPDX-License-Identifier: MIT
"""report: the words that parts send each other for a product of a matrix and a vector are those that
SciPy counts. Ends with 77 if python3-scipy is not installed."""

import json
import sys
import unittest

from calls import Case

try:
    import numpy
    import scipy.io
    import scipy.sparse
except ImportError:
    scipy = None


def words_by_scipy(matrix, model, part, nparts):
    """Which part needs which entry, as a product of the matrix's pattern and the parts."""
    pattern = (matrix != 0).astype(int)
    nets = pattern if model == "row-net" else pattern.T.tocsr()
    parts = scipy.sparse.csr_matrix(
        (numpy.ones(len(part), int), (numpy.arange(len(part)), part)), (len(part), nparts)
    )
    count = (nets @ parts).toarray()
    sent, received = numpy.zeros(nparts, int), numpy.zeros(nparts, int)
    for e, row in enumerate(count):
        if not row.any():
            continue
        owner = part[e] if nets.shape[0] == nets.shape[1] else row.argmax()
        others = [p for p in range(nparts) if row[p] > 0 and p != owner]
        if model == "row-net":  # partial sums go to the owner
            sent[others] += 1
            received[owner] += len(others)
        else:
            sent[owner] += len(others)
            received[others] += 1
    return sent, received


class Words(Case):
    def test_words_are_those_that_scipy_counts(self):
        numbers = numpy.random.default_rng(3)
        for nrows, ncolumns in ((60, 60), (40, 70)):
            matrix = scipy.sparse.random(nrows, ncolumns, 0.08, random_state=4, format="coo")
            scipy.io.mmwrite(self.folder / "m.mtx", matrix)
            matrix = scipy.sparse.csr_matrix(scipy.io.mmread(self.folder / "m.mtx"))
            for model in ("row-net", "column-net"):
                nvertices = ncolumns if model == "row-net" else nrows
                part = numbers.integers(0, 4, nvertices)
                self.file("m.part.4", "".join(f"{p}\n" for p in part))
                words = ("m.mtx", "m.part.4", "--model", model, "-o", "m.html", "--json", "m.json")
                self.run_ok("report", *words)
                told = json.loads(self.text("m.json"))["words"]
                sent, received = words_by_scipy(matrix, model, part, 4)
                self.assertEqual([p["sent"] for p in told["parts"]], sent.tolist())
                self.assertEqual([p["received"] for p in told["parts"]], received.tolist())
                self.assertEqual(told["total"], sent.sum())
                self.assertEqual(told["most_sent"], sent.max())
                self.assertEqual(told["most_received"], received.max())


if __name__ == "__main__":
    if scipy is None:
        print("python3-numpy and python3-scipy are needed", file=sys.stderr)
        sys.exit(77)
    unittest.main(verbosity=2)
