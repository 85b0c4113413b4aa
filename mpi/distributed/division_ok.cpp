// SPDX-License-Identifier: MIT
/* mpi/distributed/division_ok.cpp: the predicate of a division. */
#include "core/holds.h"
#include "distributed/division.h"

static bool parts_in_range(const Level *level, const Goal *goal, const Division *division)
{
    HOLDS(X1, division->part.size() == level->weight.size());
    for (size_t v = 0; v < division->part.size(); v++) {
        HOLDS(X1, division->part[v] >= 0 && division->part[v] < goal->nparts);
        HOLDS(X1,
              level->fixed.empty() || level->fixed[v] < 0 || level->fixed[v] == division->part[v]);
    }
    return true;
}

static bool same_everywhere(Ranks *ranks, const Level *level, const Division *division)
{
    std::vector<int> seen;
    mirror_values(ranks, level, division->part, &seen);
    std::vector<int64_t> weight(division->weight.size(), 0);
    for (size_t v = 0; v < division->part.size(); v++)
        weight[static_cast<size_t>(division->part[v])] += level->weight[v];
    sum_all(ranks, weight.data(), weight.size());
    HOLDS(X2, seen == division->seen);
    HOLDS(X3, weight == division->weight);
    return true;
}

bool division_ok(Ranks *ranks, const Level *level, const Goal *goal, const Division *division)
{
    Ranks uncounted = *ranks;
    if (least_of_all(&uncounted, parts_in_range(level, goal, division)) == 0) return false;
    return least_of_all(&uncounted, same_everywhere(&uncounted, level, division)) == 1;
}
