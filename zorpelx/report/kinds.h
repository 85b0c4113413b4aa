/* SPDX-License-Identifier: MIT */
/* zorpelx/report/kinds.h: what a hypergraph is made from, and what the cut means there. */
#ifndef ZORPELX_REPORT_KINDS_H
#define ZORPELX_REPORT_KINDS_H

#include "facts.h"

enum Origin { FROM_ANY, FROM_NETLIST, FROM_MATRIX, FROM_FORMULA, FROM_MEMBERSHIPS };

Origin origin_of(const Hypergraph &graph);

/* Words that parts send each other in a product of the matrix and a vector, one word for each
 * number. Entry j of the vectors belongs to the part of row or column j in a square matrix. Where
 * that does not say it, it belongs to the part with most nonzeros in its hyperedge, of equals to
 * the one of the lowest number.
 * Source  Catalyurek and Aykanat, Hypergraph-partitioning-based decomposition for parallel
 *         sparse-matrix vector multiplication, IEEE TPDS 10(7), 1999. */
struct Words {
    std::vector<int64_t> sent, received; // [nparts]
    int64_t total;
};

Words words_of(const Hypergraph &graph, const NamedPartition &division);

/* Variables that several parts have in common.
 *   shared  [nparts] of them, those in the part */
struct SharedVariables {
    int64_t number;
    std::vector<int64_t> shared;
};

SharedVariables shared_variables(const Hypergraph &graph, const NamedPartition &division);

#endif
