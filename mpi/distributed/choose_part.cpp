// SPDX-License-Identifier: MIT
/* mpi/distributed/choose_part.cpp: the part of the largest gain, among equals the one with most
 * room.
 *
 * Parts that none of a vertex's hyperedges touches all gain the same: of these the roomiest stands
 * for all.
 */
#include "distributed/choose_part.h"

#include <bit>

/* Half-octaves: 0, 1, 2, 3, then two to each doubling. */
uint32_t half_octave(uint64_t value)
{
    if (value < 2) return static_cast<uint32_t>(value);
    const int top = static_cast<int>(std::bit_width(value)) - 1;
    return static_cast<uint32_t>(2 * top + static_cast<int>(value >> (top - 1) & 1));
}

/* A key: the class first, then a lot. */
uint32_t key_of(uint32_t order, uint64_t seed, int64_t vertex)
{
    assert(order <= WORST_CLASS);
    return order << 24 | static_cast<uint32_t>(lot(seed, static_cast<uint64_t>(vertex), 1) >> 40);
}

Chooser open_chooser(const Level *level, const Goal *goal, const Division *division)
{
    Chooser chooser = {level, goal, division, {}, -1, -1};
    for (int p = 0; p < goal->nparts; p++) {
        const size_t place = static_cast<size_t>(p);
        chooser.room.push_back(goal->most[place] - division->weight[place]);
        const auto roomier = [&](int q) {
            return q < 0 || chooser.room[place] > chooser.room[static_cast<size_t>(q)];
        };
        if (roomier(chooser.roomiest)) {
            chooser.second = chooser.roomiest;
            chooser.roomiest = p;
        } else if (roomier(chooser.second)) {
            chooser.second = p;
        }
    }
    assert(chooser.roomiest >= 0 && chooser.roomiest != chooser.second);
    return chooser;
}

/* The best part for own vertex v that has room for it; tally holds the shares by part + 1. */
Choice choose_part(const Chooser *chooser, size_t v, const Tally *tally)
{
    assert(v < chooser->division->part.size());
    const int from = chooser->division->part[v];
    int64_t any = -cost_of(chooser->goal->objective, 2) * chooser->level->incident[v];
    for (const int place : tally->taken)
        if (tally->keys[static_cast<size_t>(place)] == 0)
            any += tally->sums[static_cast<size_t>(place)];
    Choice best = {from == chooser->roomiest ? chooser->second : chooser->roomiest, any};
    const int64_t weight = chooser->level->weight[v];
    bool fits = best.part >= 0 && chooser->room[static_cast<size_t>(best.part)] >= weight;
    for (const int i : tally->taken) {
        const size_t place = static_cast<size_t>(i);
        const int p = static_cast<int>(tally->keys[place]) - 1;
        assert(p >= -1 && p < chooser->goal->nparts);
        if (p < 0 || p == from || chooser->room[static_cast<size_t>(p)] < weight) continue;
        const int64_t gain = any + tally->sums[place];
        if (fits && gain < best.gain) continue;
        if (fits && gain == best.gain) {
            const int64_t more = chooser->room[static_cast<size_t>(p)] -
                                 chooser->room[static_cast<size_t>(best.part)];
            if (more < 0 || (more == 0 && p >= best.part)) continue;
        }
        best = {p, gain};
        fits = true;
    }
    assert(!fits || (best.part >= 0 && best.part != from));
    return fits ? best : Choice{-1, 0};
}
