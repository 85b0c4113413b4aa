/* SPDX-License-Identifier: MIT */
/* zorpelx/files/sizes.h: sizes of a hypergraph in words, one of a kind in the singular. */
#ifndef ZORPELX_FILES_SIZES_H
#define ZORPELX_FILES_SIZES_H

#include "hypergraph.h"
#include "told.h"

inline std::string vertices_and_nets(const Hypergraph &graph)
{
    return counted(graph.nvertices, "vertex", "vertices") + ", " +
           counted(graph.nnets, "hyperedge", "hyperedges");
}

/* "3 vertices, 1 hyperedge, 3 pins" */
inline std::string sizes_of(const Hypergraph &graph)
{
    return vertices_and_nets(graph) + ", " +
           counted(static_cast<int64_t>(graph.pins.size()), "pin", "pins");
}

/* "1 hyperedge and 0 vertices" */
inline std::string nets_and_vertices(const Hypergraph &graph)
{
    return counted(graph.nnets, "hyperedge", "hyperedges") + " and " +
           counted(graph.nvertices, "vertex", "vertices");
}

#endif
