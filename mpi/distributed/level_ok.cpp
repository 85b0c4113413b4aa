// SPDX-License-Identifier: MIT
/* mpi/distributed/level_ok.cpp: the predicate of a level. */
#include "core/holds.h"
#include "distributed/level.h"

static bool nets_ok(const Level *level)
{
    HOLDS(D2, !level->netptr.empty() && level->netptr[0] == 0);
    HOLDS(D2, level->netptr.back() == static_cast<int>(level->netind.size()));
    std::vector<int> seen(level->ghost.size(), -1);
    for (int e = 0; e < nnets_of(level); e++) {
        const size_t place = static_cast<size_t>(e);
        HOLDS(D2, level->netptr[place] + 2 <= level->netptr[place + 1]);
        HOLDS(D7, level->netweight[place] > 0);
        for (int i = level->netptr[place]; i < level->netptr[place + 1]; i++) {
            const int g = level->netind[static_cast<size_t>(i)];
            HOLDS(D3, g >= 0 && g < nghosts_of(level));
            HOLDS(D3, seen[static_cast<size_t>(g)] != e);
            seen[static_cast<size_t>(g)] = e;
        }
    }
    return true;
}

static bool ghosts_ok(const Ranks *ranks, const Level *level)
{
    HOLDS(D4, static_cast<int>(level->ghostfirst.size()) == ranks->nranks + 1);
    HOLDS(D4, level->ghostfirst[0] == 0 && level->ghostfirst.back() == nghosts_of(level));
    for (int g = 0; g < nghosts_of(level); g++) {
        HOLDS(D4, g == 0 || level->ghost[static_cast<size_t>(g) - 1] <
                                level->ghost[static_cast<size_t>(g)]);
        HOLDS(D4, level->ghost[static_cast<size_t>(g)] >= 0 &&
                      level->ghost[static_cast<size_t>(g)] < level->nvertices);
        const size_t owner = static_cast<size_t>(ghost_owner(ranks, level, g));
        HOLDS(D4, g >= level->ghostfirst[owner] && g < level->ghostfirst[owner + 1]);
    }
    return true;
}

/* Mirrored, the own vertices' numbers must come out as the ghosts. */
static bool mirrors_ok(Ranks *ranks, const Level *level)
{
    std::vector<int64_t> own(static_cast<size_t>(nown_of(level))), ghost;
    for (size_t v = 0; v < own.size(); v++) own[v] = level->begin + static_cast<int64_t>(v);
    mirror_values(ranks, level, own, &ghost);
    HOLDS(D5, ghost == level->ghost);
    return true;
}

static bool weights_ok(const Ranks *ranks, const Level *level)
{
    const size_t nown = static_cast<size_t>(level->end - level->begin);
    HOLDS(D1, level->begin == share_begin(ranks, level->nvertices, ranks->rank));
    HOLDS(D1, level->end == share_begin(ranks, level->nvertices, ranks->rank + 1));
    HOLDS(D1, level->weight.size() == nown && level->incident.size() == nown);
    for (const int64_t weight : level->weight) HOLDS(D7, weight >= 0);
    return true;
}

static bool sums_ok(Ranks *ranks, const Level *level)
{
    int64_t sums[5] = {nnets_of(level), static_cast<int64_t>(level->netind.size()), 0, 0, 0};
    for (const int64_t weight : level->weight) sums[2] += weight;
    for (const int64_t weight : level->incident) sums[3] += weight;
    for (int e = 0; e < nnets_of(level); e++)
        sums[4] +=
            level->netweight[static_cast<size_t>(e)] *
            (level->netptr[static_cast<size_t>(e) + 1] - level->netptr[static_cast<size_t>(e)]);
    sum_all(ranks, sums, 5);
    HOLDS(D6, sums[3] == sums[4]);
    HOLDS(D8, level->nnets == sums[0] && level->npins == sums[1]);
    HOLDS(D8, level->totalweight == sums[2]);
    return true;
}

/* The ranks go on to the next exchange together, or not at all. */
static bool all_ok(Ranks *ranks, bool here)
{
    return least_of_all(ranks, here) == 1;
}

bool level_ok(Ranks *ranks, const Level *level)
{
    Ranks uncounted = *ranks;
    if (!all_ok(&uncounted, nets_ok(level))) return false;
    if (!all_ok(&uncounted, ghosts_ok(ranks, level))) return false;
    if (!all_ok(&uncounted, weights_ok(ranks, level))) return false;
    if (!all_ok(&uncounted, mirrors_ok(&uncounted, level))) return false;
    return all_ok(&uncounted, sums_ok(&uncounted, level));
}
