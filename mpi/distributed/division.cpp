// SPDX-License-Identifier: MIT
/* mpi/distributed/division.cpp: parts of own vertices and of ghosts, and weights of parts. */
#include "distributed/division.h"

#include "core/heavy_assert.h"

void load_division(Ranks *ranks, const Level *level, const Goal *goal, Division *division)
{
    division->weight.assign(static_cast<size_t>(goal->nparts), 0);
    assert(division->part.size() == level->weight.size());
    for (size_t v = 0; v < division->part.size(); v++) {
        assert(division->part[v] >= 0 && division->part[v] < goal->nparts);
        division->weight[static_cast<size_t>(division->part[v])] += level->weight[v];
    }
    sum_all(ranks, division->weight.data(), division->weight.size());
    mirror_values(ranks, level, division->part, &division->seen);
    assert(division->seen.size() == level->ghost.size());
    HEAVY_ASSERT(division_ok(ranks, level, goal, division));
}

void make_moves(Ranks *ranks, const Level *level, const std::vector<Move> &moves, bool back,
                Division *division)
{
    std::vector<char> changed(division->part.size(), 0);
    std::vector<int64_t> change(division->weight.size(), 0);
    for (const Move &move : moves) {
        const size_t v = static_cast<size_t>(move.vertex);
        assert(move.vertex >= 0 && v < division->part.size() && move.weight == level->weight[v]);
        const int from = back ? move.to : move.from, to = back ? move.from : move.to;
        assert(division->part[v] == from && from != to && !changed[v]);
        assert(to >= 0 && static_cast<size_t>(to) < division->weight.size() && is_free(level, v));
        division->part[v] = to;
        changed[v] = 1;
        change[static_cast<size_t>(from)] -= move.weight;
        change[static_cast<size_t>(to)] += move.weight;
    }
    sum_all(ranks, change.data(), change.size());
    for (size_t p = 0; p < change.size(); p++) {
        division->weight[p] += change[p];
        assert(division->weight[p] >= 0 && division->weight[p] <= level->totalweight);
    }
    mirror_changes(ranks, level, changed, division->part, &division->seen);
}

int64_t excess_of(const Goal *goal, const Division *division)
{
    int64_t excess = 0;
    assert(goal->most.size() == division->weight.size() && goal->least.size() == goal->most.size());
    for (size_t p = 0; p < division->weight.size(); p++) {
        excess += std::max<int64_t>(division->weight[p] - goal->most[p], 0);
        excess += std::max<int64_t>(goal->least[p] - division->weight[p], 0);
    }
    return excess;
}
