/* SPDX-License-Identifier: MIT */
/* zorpelx/report/pivots.h: first places for a layout, from distances to a few nodes. */
#ifndef ZORPELX_REPORT_PIVOTS_H
#define ZORPELX_REPORT_PIVOTS_H

#include "layout.h"

/* Neighbours of node v: ends[start[v]] .. ends[start[v + 1] - 1]. */
struct Neighbours {
    std::vector<size_t> start; // [nnodes + 1]
    std::vector<int32_t> ends;
};

Neighbours neighbours_of(size_t nnodes, const std::vector<Link> &links);

/* Places whose distances follow those along the links, around 0, 0. */
std::vector<Spot> place_by_pivots(const Neighbours &neighbours);

#endif
