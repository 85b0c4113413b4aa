/* SPDX-License-Identifier: MIT */
/* zorpelx/cli/bounds.h: what each part may weigh, counted by the program itself.
 *
 * The search has code of its own for its bounds, on purpose: these here check its results.
 */
#ifndef ZORPELX_CLI_BOUNDS_H
#define ZORPELX_CLI_BOUNDS_H

#include <cstdint>
#include <vector>

struct PartBounds {
    std::vector<int64_t> least, most; // [nparts]
};

/* Of a search: no part weighs more than (1 + epsilon / 100) times its average, rounded up to a
 * whole unit.
 *   least       percent below the average; negative: 0 is allowed
 *   capacities  sizes of the parts, [nparts]; empty: all are equal */
PartBounds search_bounds(int64_t nparts, double epsilon, double least,
                         const std::vector<double> &capacities, int64_t total);

/* Of the engine alone. Fixed vertices may exchange the numbers of parts, and the final refinement
 * their weights; then the limits of all parts hold for each. */
PartBounds engine_bounds(int64_t nparts, int ubfactor, int64_t total, bool fixed);

/* The first part that is not within; -1 if all are. */
int64_t part_outside(const PartBounds &bounds, const std::vector<int64_t> &weight);

#endif
