/* zorpelx/report/likeness.h: how far two partitions of one hypergraph agree. */
#ifndef ZORPELX_REPORT_LIKENESS_H
#define ZORPELX_REPORT_LIKENESS_H

#include <cstddef>
#include <cstdint>
#include <vector>

#include "facts.h"

constexpr int64_t MOST_MATCHED = 256; // parts that are matched in the best way; beyond: greedily

/* Vertices that are in one part first and in another part then. */
struct VertexFlow {
    int64_t from, to, vertices, weight;
};

/* A hyperedge that is cut in one partition and not in the other. */
struct ChangedNet {
    int64_t net, weight, parts; // in how many it is where it is cut
};

/* The second partition seen from the first.
 *   A1  twin[q] is the part of the first that part q of the second is taken for, or -1; no two are
 *       the same
 *   A2  flows holds every pair of parts with a vertex in both, by falling weight, then by number
 *   A3  a vertex has moved unless its part in the second is taken for its part in the first */
struct Likeness {
    std::vector<int64_t> twin;
    std::vector<VertexFlow> flows;
    int64_t moved, movedwgt;
    bool exact;          // the parts are matched such that the fewest vertices moved
    double rand;         // adjusted Rand index: 1 if equal, about 0 if unrelated
    int64_t ncut, nmend; // hyperedges cut in the second alone, in the first alone
    int64_t cutwgt, mendwgt;
    std::vector<ChangedNet> cut, mended; // the heaviest of them
};

/* Names of parts do not matter: they are matched so that as few vertices as possible have moved.
 * Source  Hubert and Arabie, Comparing partitions, Journal of Classification 2, 1985, for the
 *         index. */
Likeness likeness_of(const Hypergraph &graph, const Division &first, const Division &second,
                     size_t nchanged);

#endif
