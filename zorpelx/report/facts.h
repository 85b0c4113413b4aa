/* SPDX-License-Identifier: MIT */
/* zorpelx/report/facts.h: what a report tells of a partition beyond its figures, counted in 64
 * bits.
 */
#ifndef ZORPELX_REPORT_FACTS_H
#define ZORPELX_REPORT_FACTS_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "figures.h"
#include "hypergraph.h"

/* Hyperedges that touch more parts than that are counted, but not pair by pair: their pairs are
 * too many to count and too faint to see. */
constexpr int64_t MOST_PAIRED = 64;

/* A partition as it was given.
 *   part  [nvertices] from 0 and below nparts */
struct NamedPartition {
    std::string name;
    int64_t nparts;
    std::vector<int64_t> part;
};

/* Of one part. A pin is a vertex in a hyperedge. */
struct PartFacts {
    int64_t boundary = 0; // vertices in a cut hyperedge
    int64_t cutnets = 0;  // cut hyperedges with a vertex in the part
    int64_t cutpins = 0;  // pins that these have in the part
    int64_t inner = 0;    // hyperedges wholly inside
    int64_t innerwgt = 0; // their weight
};

/* The hyperedges that touch both parts, first < second. */
struct PairFacts {
    int64_t first, second, number, weight;
};

/* The hyperedges that touch so many parts. */
struct TouchedFacts {
    int64_t parts, number, weight;
};

/* How many vertices of a hyperedge are in a part. */
struct PartShare {
    int64_t part, vertices;
};

/* A cut hyperedge, its parts by falling number of vertices. */
struct CostlyNet {
    int64_t net, weight, size;
    std::vector<PartShare> shares;
};

/*   F1  parts has an entry for each part, touched one for each number of parts that occurs, rising
 *   F2  pairs is sorted by falling weight, then by number, then by the parts
 *   F3  costly is sorted by falling weight x (parts - 1), then by weight, then by number */
struct Facts {
    std::vector<PartFacts> parts;
    std::vector<PairFacts> pairs;
    int64_t unpaired; // hyperedges in more than MOST_PAIRED parts
    std::vector<TouchedFacts> touched;
    std::vector<CostlyNet> costly;
};

/* Counts all of it, with at most so many costly hyperedges, in O(pins) and what the pairs take. */
Facts facts_of(const Hypergraph &graph, const NamedPartition &division, size_t ncostly);

/* The parts of e with their numbers of vertices, by falling number, then by part.
 *   count  [nparts] all 0 before and after */
std::vector<PartShare> shares_of(const Hypergraph &graph, const NamedPartition &division, int64_t e,
                                 std::vector<int64_t> *count);

#endif
