/* SPDX-License-Identifier: MIT */
/* zorpelx/cli/advice.h: what a balance factor means for the parts, and whether it can be kept. */
#ifndef ZORPELX_CLI_ADVICE_H
#define ZORPELX_CLI_ADVICE_H

#include <cstdint>
#include <string>
#include <vector>

#include "hypergraph.h"

constexpr int MOST_UBFACTOR = 49;
/* Parts that the final refinement takes, from 3. The engine's number, written again on purpose:
 * what verifies a partition shares nothing with it. A test compares the two. */
constexpr int MOST_POLISHED = 64;

/* Weights that a part may get, [nparts] each.
 *   least, most       by the bisections that lead to the part: the factor compounds
 *   lightest, heaviest  of all parts; the final refinement may take any part as far */
struct PartRanges {
    std::vector<int64_t> least, most;
    int64_t lightest, heaviest;
};

enum Verdict {
    FEASIBLE,   // an assignment within all limits was found
    INFEASIBLE, // there is none
    UNDECIDED
};

struct Advice {
    PartRanges limits;
    Verdict verdict;
    std::string reason; // of the verdict, a sentence
};

/* The limits for parts of a total weight; ubfactor in percent. Rounded as the bisections round. */
PartRanges part_ranges(int64_t nparts, int ubfactor, int64_t total);

/* The heaviest limit over the average part, less one, in percent; 0 without weight. */
double worst_excess(const PartRanges &limits, int64_t total);

/* The largest factor whose heaviest limit is at most percent above the average; 0 if there is
 * none. */
int largest_factor(int64_t nparts, int64_t total, double percent);

/* A sentence on why there is none. */
std::string no_factor_text(int64_t nparts, int64_t total, double percent);

/* Can the vertices be assigned within the limits? fix: empty, or a part or -1 per vertex. */
Advice advise(const std::vector<int64_t> &weights, const std::vector<int64_t> &fix, int64_t nparts,
              int ubfactor);

/* Vertices that weigh more than a fiftieth of the total, heaviest first: too heavy to be merged
 * with others, so they are moved one by one only. */
std::vector<int64_t> heavy_vertices(const std::vector<int64_t> &weights);

#endif
