/* SPDX-License-Identifier: MIT */
/* zorpelx/report/sketch.h: what of a hypergraph is drawn: its vertices, or clusters of them. */
#ifndef ZORPELX_REPORT_SKETCH_H
#define ZORPELX_REPORT_SKETCH_H

#include <cstddef>
#include <cstdint>
#include <vector>

#include "facts.h"

constexpr int64_t MOST_DRAWN = 5000; // vertices that are drawn one by one
constexpr int64_t MOST_CLUSTERS = 1200;
constexpr size_t MOST_DRAWN_NETS = 6000;
constexpr size_t LARGEST_DRAWN = 64; // points that a drawn hyperedge may join

/* Points stand for vertices or for clusters of vertices of one part.
 *   S1  point[v] is below the number of points for every vertex; part, vertices and weight have an
 *       entry for each point
 *   S2  net i joins the distinct points pins[start[i]] .. pins[start[i + 1] - 1], at least two */
struct Sketch {
    bool clustered;
    std::vector<int32_t> point;                  // [nvertices]
    std::vector<int64_t> part, vertices, weight; // [npoints]
    std::vector<size_t> start;                   // [nnets + 1]
    std::vector<int32_t> pins;
    std::vector<int64_t> netwgt; // [nnets] hyperedges that join the same points are one
    std::vector<bool> cut;       // [nnets]
    int64_t left_out;            // hyperedges that join points and are not drawn
};

/* In O(pins log pins) at most. What is left out are hyperedges that join very many points, and the
 * lightest beyond the number above. */
Sketch sketch_of(const Hypergraph &graph, const NamedPartition &division);

#endif
