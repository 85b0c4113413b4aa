/* zorpelx/cli/agreement.h: how far two partitions of the same vertices agree. */
#ifndef ZORPELX_CLI_AGREEMENT_H
#define ZORPELX_CLI_AGREEMENT_H

#include <cstdint>
#include <vector>

/* What a part of one partition and a part of the other have in common. */
struct Overlap {
    int64_t a, b;
    int64_t vertices, weight;
};

struct Agreement {
    std::vector<Overlap> matched;         // pairs of parts that stand for each other, by a
    int64_t vertices, weight;             // in matched pairs: these stay
    int64_t moved_vertices, moved_weight; // the others
    double adjusted_rand;                 // 1 for the same division, about 0 for unrelated ones
};

/* Up to so many parts the matching is the best; beyond, the heaviest overlap first. */
constexpr int64_t MOST_MATCHED = 1000;

/* The numbers of parts mean nothing: those of b are matched with those of a one to one such that
 * the vertices in matched parts weigh as much as possible (number as many, if nothing weighs
 * anything).
 *   a, b     [n] the part of each vertex, 0 to nparts - 1
 *   weight   [n] of each vertex */
Agreement agreement_of(const std::vector<int64_t> &a, const std::vector<int64_t> &b,
                       const std::vector<int64_t> &weight, int64_t nparts);

#endif
