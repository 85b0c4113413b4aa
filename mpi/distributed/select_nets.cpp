// SPDX-License-Identifier: MIT
/* mpi/distributed/select_nets.cpp: hyperedges by weight for their pins, as many as fit.
 *
 * A large hyperedge is cut wherever its vertices go, and takes the place of many small ones. In the
 * mean the small and heavy ones tell the most for their pins. They are chosen as moves are: as if
 * each, as heavy as it has pins, went into one part that has room for so many.
 */
#include "distributed/select_nets.h"

#include <numeric>

#include "distributed/choose_part.h"
#include "distributed/select_moves.h"

constexpr int64_t FINENESS = 1024; // in so many parts weights are told apart for each pin

/* A number that hyperedges of other pins hardly share. */
static int64_t name_of(const Level *level, size_t e)
{
    uint64_t name = 0;
    for (int i = level->netptr[e]; i < level->netptr[e + 1]; i++) {
        const int g = level->netind[static_cast<size_t>(i)];
        assert(g >= 0 && g < nghosts_of(level));
        name = lot(name, static_cast<uint64_t>(level->ghost[static_cast<size_t>(g)]));
    }
    return static_cast<int64_t>(name >> 1);
}

static Move as_move(const Level *level, size_t e)
{
    const int size = level->netptr[e + 1] - level->netptr[e];
    const int64_t weight = level->netweight[e];
    assert(size >= 2 && weight > 0 && weight <= INT64_MAX / FINENESS);
    const uint32_t order = class_of_gain(weight * FINENESS / size);
    return {static_cast<int>(e), -1, 0, key_of(order, 0, name_of(level, e)), size};
}

std::vector<int> select_nets(Ranks *ranks, const Level *level, int64_t mostpins)
{
    std::vector<int> nets(level->netweight.size());
    std::iota(nets.begin(), nets.end(), 0);
    if (level->npins <= mostpins) return nets;
    std::vector<Move> chosen;
    chosen.reserve(nets.size());
    for (const int e : nets) chosen.push_back(as_move(level, static_cast<size_t>(e)));
    select_moves(ranks, Side::to, {mostpins}, false, &chosen);
    assert(chosen.size() <= nets.size());
    nets.resize(chosen.size());
    for (size_t i = 0; i < nets.size(); i++) nets[i] = chosen[i].vertex;
    assert(std::is_sorted(nets.begin(), nets.end()));
    return nets;
}
