// SPDX-License-Identifier: MIT
/* zorpelx/lib/trim.cpp: a hypergraph without the hyperedges that no partition can cut.
 *
 * The engine counts a hyperedge of a single vertex as cut in some of its sums, so such ones never
 * get there.
 */
#include "trim.h"

static int size_of(const zorpelx_hypergraph &h, int e)
{
    return h.eptr[e + 1] - h.eptr[e];
}

Trimmed::Trimmed(const zorpelx_hypergraph &hypergraph, Watch &watch) : view(hypergraph)
{
    for (int e = 0; e < hypergraph.nhedges; e++) {
        watch.step();
        if (size_of(hypergraph, e) < 2) ndropped++;
    }
    if (ndropped > 0) copy(hypergraph, watch);
}

void Trimmed::copy(const zorpelx_hypergraph &h, Watch &watch)
{
    const size_t nkept = static_cast<size_t>(h.nhedges - ndropped);
    const size_t npins = static_cast<size_t>(h.eptr[h.nhedges]);
    const size_t nweights = h.hewgts != nullptr ? nkept : 0;
    charge.emplace(watch, sizeof(int) * (nkept + 1 + npins + nweights),
                   "a copy without the hyperedges of less than two vertices");
    eptr.reserve(nkept + 1);
    eind.reserve(npins);
    if (h.hewgts != nullptr) hewgts.reserve(nkept);
    eptr.push_back(0);
    for (int e = 0; e < h.nhedges; e++) {
        watch.step();
        if (size_of(h, e) < 2) continue;
        eind.insert(eind.end(), h.eind + h.eptr[e], h.eind + h.eptr[e + 1]);
        eptr.push_back(static_cast<int>(eind.size()));
        if (h.hewgts != nullptr) hewgts.push_back(h.hewgts[e]);
    }
    view.nhedges = static_cast<int>(nkept);
    view.eptr = eptr.data();
    view.eind = eind.data();
    view.hewgts = h.hewgts != nullptr ? hewgts.data() : nullptr;
}
