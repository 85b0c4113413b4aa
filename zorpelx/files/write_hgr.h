/* SPDX-License-Identifier: MIT */
/* zorpelx/files/write_hgr.h: the text of hypergraph files, and of files of numbers. */
#ifndef ZORPELX_FILES_WRITE_HGR_H
#define ZORPELX_FILES_WRITE_HGR_H

#include <cstddef>
#include <string>

#include "hypergraph.h"

/* The file that every reader takes for this hypergraph: vertices from 1, single blanks, weights
 * where the record says that the file has them. A hyperedge without vertices is a blank line. */
std::string hgr_text(const Hypergraph &graph);

/* The hyperedges for which keep holds, in their order; all vertices. */
template <class Keep> Hypergraph with_nets(const Hypergraph &graph, const Keep &keep)
{
    Hypergraph kept = {graph.nvertices, 0, graph.netweights, graph.vertexweights, {0}, {}, {},
                       graph.vertexwgt};
    // names stay behind: what is kept goes to files without them
    for (int64_t e = 0; e < graph.nnets; e++) {
        if (!keep(e)) continue;
        const size_t i = static_cast<size_t>(e);
        kept.pins.insert(kept.pins.end(), graph.pins.begin() + graph.start[i],
                         graph.pins.begin() + graph.start[i + 1]);
        kept.start.push_back(static_cast<int64_t>(kept.pins.size()));
        kept.netwgt.push_back(graph.netwgt[i]);
        kept.nnets++;
    }
    return kept;
}

/* A number a line. */
std::string numbers_text(const int *numbers, size_t count);

#endif
