/* SPDX-License-Identifier: MIT */
/* zorpelx/report/likeness.h: how far two partitions of one hypergraph agree. */
#ifndef ZORPELX_REPORT_LIKENESS_H
#define ZORPELX_REPORT_LIKENESS_H

#include <cstddef>
#include <cstdint>
#include <vector>

#include "agreement.h"
#include "facts.h"

/* A hyperedge that is cut in one partition and not in the other. */
struct ChangedNet {
    int64_t net, weight, parts; // in how many it is where it is cut
};

/* The second partition seen from the first.
 *   parts  which part is which, and what has moved
 *   flows  the overlaps of the parts, by falling weight, then by number of vertices, then by part
 */
struct Likeness {
    Agreement parts;
    std::vector<Overlap> flows;
    int64_t ncut, nmend; // hyperedges cut in the second alone, in the first alone
    int64_t cutwgt, mendwgt;
    std::vector<ChangedNet> cut, mended; // the heaviest of them
};

Likeness likeness_of(const Hypergraph &graph, const NamedPartition &first,
                     const NamedPartition &second, size_t nchanged);

#endif
