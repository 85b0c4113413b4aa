/* SPDX-License-Identifier: MIT */
/* zorpelx/report/agreement.h: how far two partitions of the same vertices agree. */
#ifndef ZORPELX_REPORT_AGREEMENT_H
#define ZORPELX_REPORT_AGREEMENT_H

#include <cstdint>
#include <vector>

/* What a part of one partition and a part of the other have in common. */
struct Overlap {
    int64_t a, b;
    int64_t vertices, weight;
};

/*   A1  overlaps holds every pair of parts with a vertex in both, by a, then by b; matched those
 *       whose parts stand for each other, in the same order
 *   A2  twin[b] is the part of a that part b stands for, or -1; no two are the same */
struct Agreement {
    std::vector<Overlap> overlaps, matched;
    std::vector<int64_t> twin;
    bool exact;                           // no other matching leaves more weight in place
    int64_t vertices, weight;             // in matched pairs: these stay
    int64_t moved_vertices, moved_weight; // the others
    double adjusted_rand;                 // 1 for the same division, about 0 for unrelated ones
};

/* Up to so many parts the matching is the best; beyond, the heaviest overlap first. */
constexpr int64_t MOST_MATCHED = 1000;

/* The numbers of parts mean nothing: those of b are matched with those of a one to one such that
 * the vertices in matched parts weigh as much as possible (number as many, if nothing weighs
 * anything).
 *   a, b            [n] the part of each vertex, 0 to na - 1 and 0 to nb - 1
 *   weight          [n] of each vertex */
Agreement agreement_of(const std::vector<int64_t> &a, int64_t na, const std::vector<int64_t> &b,
                       int64_t nb, const std::vector<int64_t> &weight);

#endif
