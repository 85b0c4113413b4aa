# SPDX-License-Identifier: MIT
"""Hypergraphs from lists, flat arrays and sparse matrices."""

import unittest
from array import array

import zorpel

try:
    import numpy
except ImportError:
    numpy = None
try:
    import scipy.sparse
except ImportError:
    scipy = None

EPTR, EIND = [0, 3, 5, 7], [0, 1, 2, 2, 3, 0, 3]


class ListTest(unittest.TestCase):
    def test_lists_tuples_and_hypergraphs_are_the_same(self):
        lists = zorpel.as_hypergraph([[0, 1, 2], (2, 3), {0, 3}])
        flat = zorpel.as_hypergraph((EPTR, EIND))
        self.assertEqual(lists, flat)
        self.assertEqual(flat, zorpel.as_hypergraph(flat))
        self.assertEqual(list(flat), [[0, 1, 2], [2, 3], [0, 3]])
        self.assertEqual((len(flat), flat.nvtxs), (3, 4))
        self.assertEqual(flat, zorpel.as_hypergraph((array("i", EPTR), array("l", EIND))))

    def test_vertices_may_be_more_than_the_hyperedges_name(self):
        self.assertEqual(zorpel.as_hypergraph([[0, 1]], nvtxs=9).nvtxs, 9)
        self.assertEqual(zorpel.as_hypergraph([]).nvtxs, 0)

    def test_weights_replace_those_of_a_hypergraph(self):
        plain = zorpel.as_hypergraph([[0, 1]], vertex_weights=[3, 4])
        other = zorpel.as_hypergraph(plain, hyperedge_weights=[7])
        self.assertEqual(other.vertex_weights.tolist(), [3, 4])
        self.assertEqual(other.hyperedge_weights.tolist(), [7])

    def test_a_dict_of_names_is_a_hypergraph(self):
        graph = zorpel.as_hypergraph({"clk": ["u1", "u2"], "none": [], 7: {"u2"}})
        self.assertEqual(list(graph), [[0, 1], [], [1]])
        self.assertEqual(list(graph.vertex_names), ["u1", "u2"])
        self.assertEqual(list(graph.hyperedge_names), ["clk", "none", "7"])
        made = zorpel.partition({"e": ["a", "b"], "f": ["b", "c"], "g": ["c", "d"]}, 2)
        self.assertEqual(made.cut, 1)
        for wrong in ({"e": "ab"}, {"e": 5}):
            with self.assertRaisesRegex(zorpel.InputError, "Hyperedge 'e' has .* instead of a list"):
                zorpel.as_hypergraph(wrong)

    def test_what_is_no_hypergraph_is_told(self):
        for source, sentence in [
            (([0], [1], [2]), "A tuple of 3 is no hypergraph"),
            ([3, 4], "Hyperedge 0 is 3 instead of a list"),
            (["ab"], "Hyperedge 0 is 'ab' instead of a list"),
            ([[0, 1.5]], r"hyperedge 0: vertices\[1\] is 1.5 instead of an integer"),
            ([[0, 2**40]], r"\[1\] is 1099511627776, which does not fit 32 bits"),
            (([0, 3], [0, 1]), "eptr ends with 3, but eind has 2"),
            (([], []), "eptr is empty"),
        ]:
            with self.assertRaisesRegex(zorpel.InputError, sentence):
                zorpel.as_hypergraph(source)
        with self.assertRaisesRegex(zorpel.InputError, "vertex_weights has 1 entries instead of 2"):
            zorpel.as_hypergraph([[0, 1]], vertex_weights=[1])


@unittest.skipIf(numpy is None, "numpy is not installed")
class NumpyTest(unittest.TestCase):
    def test_dense_matrices_are_no_lists_of_hyperedges(self):
        matrix = numpy.array([[1, 1, 0], [0, 1, 1]])
        for wrong in (matrix.astype(float), matrix > 0, numpy.asmatrix(matrix)):
            with self.assertRaisesRegex(zorpel.InputError, "scipy.sparse.csr_matrix"):
                zorpel.as_hypergraph(wrong)
        with self.assertRaisesRegex(zorpel.InputError, "3 dimensions is no hypergraph"):
            zorpel.as_hypergraph(numpy.zeros((2, 2, 2), int))
        neighbours = numpy.array([[0, 1], [1, 2]])  # vertices of each hyperedge
        self.assertEqual(list(zorpel.as_hypergraph(neighbours)), [[0, 1], [1, 2]])

    def test_masked_entries_are_refused(self):
        weights = numpy.ma.array([1, 2, 3], mask=[0, 1, 0])
        with self.assertRaisesRegex(zorpel.InputError, "vertex_weights has masked entries"):
            zorpel.partition([[0, 1], [1, 2]], 2, vertex_weights=weights)
        whole = numpy.ma.array([1, 2, 3], mask=[0, 0, 0])
        self.assertEqual(len(zorpel.partition([[0, 1], [1, 2]], 2, vertex_weights=whole).part), 3)

    def test_flat_arrays_of_any_integer_type_are_taken(self):
        expected = zorpel.partition((EPTR, EIND), 2).part
        for kind in (numpy.int32, numpy.int64, numpy.uint8, numpy.intc):
            result = zorpel.partition((numpy.array(EPTR, kind), numpy.array(EIND, kind)), 2)
            self.assertIsInstance(result.part, numpy.ndarray)
            self.assertEqual(result.part.tolist(), expected)
            self.assertEqual(zorpel.evaluate((EPTR, EIND), result.part).cut, result.cut)

    def test_strides_do_not_matter(self):
        spread = numpy.array([[v, -1] for v in EIND])[:, 0]
        self.assertEqual(zorpel.as_hypergraph((EPTR, spread)), zorpel.as_hypergraph((EPTR, EIND)))

    def test_partitions_of_arrays_compare(self):
        arrays = (numpy.array(EPTR), numpy.array(EIND))
        first, second = zorpel.partition(arrays, 2), zorpel.partition(arrays, 2)
        self.assertTrue(first == second)
        self.assertEqual(first, zorpel.partition((EPTR, EIND), 2))
        self.assertNotEqual(first, zorpel.partition(arrays, 3))
        self.assertEqual(len({first, second}), 1)

    def test_numbers_may_be_numpys(self):
        two = numpy.int64(2)
        self.assertEqual(
            zorpel.partition((EPTR, EIND), two, nvtxs=numpy.int32(4), timeout=numpy.float64(9)),
            zorpel.partition((EPTR, EIND), 2),
        )

    def test_lists_give_lists(self):
        self.assertIsInstance(zorpel.partition([[0, 1], [2, 3]], 2).part, list)

    def test_what_does_not_fit_is_told(self):
        for eind, sentence in [
            (numpy.array(EIND, float), "eind holds float64 instead of integers"),
            (numpy.array([EIND]), "eind has 2 dimensions instead of 1"),
            (numpy.array([0, 1, 2**40]), r"eind\[2\] is 1099511627776, which does not fit"),
        ]:
            with self.assertRaisesRegex(zorpel.InputError, sentence):
                zorpel.as_hypergraph((numpy.array(EPTR), eind))

    def test_anything_with_tocsr_is_a_matrix(self):
        class Matrix:
            shape, indptr, indices = (3, 6), numpy.array(EPTR), numpy.array(EIND)

            def tocsr(self, copy):
                self.copied = copy
                return self

            def sum_duplicates(self):
                pass

            eliminate_zeros = sum_duplicates

        matrix = Matrix()
        graph = zorpel.as_hypergraph(matrix)
        self.assertEqual((graph.nvtxs, graph.eind.tolist()), (6, EIND))
        self.assertTrue(matrix.copied)
        self.assertIsInstance(zorpel.partition(matrix, 2).part, numpy.ndarray)


@unittest.skipIf(scipy is None, "scipy is not installed")
class ScipyTest(unittest.TestCase):
    def test_rows_are_hyperedges(self):
        rows = [e for e in range(3) for _ in range(EPTR[e], EPTR[e + 1])]
        for kind in (scipy.sparse.coo_matrix, scipy.sparse.csr_matrix, scipy.sparse.csc_matrix):
            matrix = kind((numpy.ones(7), (rows, EIND)), shape=(3, 5))
            graph = zorpel.as_hypergraph(matrix)
            self.assertEqual(list(graph), [[0, 1, 2], [2, 3], [0, 3]])
            self.assertEqual(graph.nvtxs, 5)

    def test_matrices_of_every_kind_are_the_same(self):
        matrix = scipy.sparse.random(9, 7, 0.4, format="csr", random_state=2)
        wanted = [sorted(matrix[i].indices.tolist()) for i in range(9)]
        for kind in ("bsr", "coo", "csc", "csr", "dia", "dok", "lil"):
            found = zorpel.as_hypergraph(matrix.asformat(kind))
            self.assertEqual([sorted(pins) for pins in found], wanted, kind)

    def test_zeros_and_repeats_do_not_count(self):
        matrix = scipy.sparse.coo_matrix(([1, 1, 0, 2], ([0, 0, 0, 0], [1, 1, 2, 3])), shape=(1, 4))
        self.assertEqual(list(zorpel.as_hypergraph(matrix)), [[1, 3]])


if __name__ == "__main__":
    unittest.main()
