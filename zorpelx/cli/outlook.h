/* SPDX-License-Identifier: MIT */
/* zorpelx/cli/outlook.h: what bounds balance and cut of a hypergraph before it is partitioned. */
#ifndef ZORPELX_CLI_OUTLOOK_H
#define ZORPELX_CLI_OUTLOOK_H

#include <cstdint>
#include <vector>

#include "hypergraph.h"

/* Components, as far as weight goes. Islands, vertices in no hyperedge, are left out of the list.
 *   of_vertex  [nvertices] which one */
struct Pieces {
    std::vector<int64_t> of_vertex;
    std::vector<int64_t> weight, vertices;
    int64_t islands, island_weight;
};

Pieces pieces_of(const Hypergraph &graph);

/* A hyperedge that every partition within the bounds cuts. */
struct Forced {
    int64_t net;
    int64_t parts; // it touches at least so many
    bool fixed;    // because of its fixed vertices; otherwise of its weight
};

struct Outlook {
    int64_t nparts, total, most; // heaviest that a part may be
    int64_t heaviest;            // vertex, from 0; -1 without vertices
    int64_t too_heavy;           // vertices above most
    int64_t heavy;               // vertices above half of it: one for each part at most
    std::vector<int64_t> fixed;  // [nparts] weight of the vertices fixed there
    int64_t overfull;            // part whose fixed vertices weigh more than most; -1: none
    int64_t packed;              // heaviest part of a packing without regard to hyperedges
    bool feasible, infeasible;   // proved so; neither: unknown
    int64_t least_heaviest;      // no partition has a lighter heaviest part
    Pieces pieces;
    std::vector<Forced> forced;
    int64_t split_pieces;            // heavier than most, none of their hyperedges forced
    int64_t cut, connectivity, soed; // no partition within the bounds has less
    bool can_be_uncut;               // a packing of whole components is within the bounds
    int64_t large, large_pins;       // hyperedges of more than LARGE_SIZE vertices
};

constexpr int64_t LARGE_SIZE = 1000; // beyond, hyperedges take no part in coarsening

/*   most  what a part may weigh
 *   fix   the part of each vertex or -1; empty: none is fixed */
Outlook outlook_of(const Hypergraph &graph, int64_t nparts, int64_t most,
                   const std::vector<int64_t> &fix);

#endif
