/* SPDX-License-Identifier: MIT */
/* zorpelx/files/measures.h: sizes, degrees, components and memory of a hypergraph. */
#ifndef ZORPELX_FILES_MEASURES_H
#define ZORPELX_FILES_MEASURES_H

#include <cstdint>
#include <vector>

#include "hypergraph.h"

/* Hyperedges of more vertices are left out of coarsening. The engine's number, written again on
 * purpose: what reads and counts files shares nothing with it. A test compares the two. */
constexpr int64_t PRUNED_SIZE = 50;

/* How many numbers are in least .. most. */
struct Bin {
    int64_t least, most, count;
};

struct Spread {
    int64_t least, most, sum, count;
    std::vector<Bin> bins; // up to the last that is not empty
};

struct Components {
    int64_t number;  // islands included
    int64_t largest; // vertices of the largest
};

struct Measures {
    Spread sizes, degrees;
    Components components;
    int64_t islands; // vertices in no hyperedge
    int64_t parked;  // vertices in no hyperedge of 2 to 50 vertices
    int64_t large;   // hyperedges of more
    int64_t single;  // hyperedges of one vertex
    int64_t memory;  // bytes of one start, estimated
};

/* In O(pins), nearly. */
Measures measure(const Hypergraph &graph);

double average(const Spread &spread);

#endif
