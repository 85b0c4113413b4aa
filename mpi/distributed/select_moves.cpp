// SPDX-License-Identifier: MIT
/* mpi/distributed/select_moves.cpp: a search for the last key that fits, byte by byte.
 *
 * Nobody sees all the moves. Weights are summed by the leading byte of the key over all ranks; that
 * tells in which of 256 classes the room of a part ends, and in that class the next byte decides.
 */
#include "distributed/select_moves.h"

constexpr int CLASSES = 256;

/* What is known of the last key that fits into one part.
 *   bound  keys below it fit; after round i its leading i bytes are final
 */
struct Bound {
    uint64_t bound;
    int64_t left; // of the room, once all keys below bound are in
    bool open;    // false: all fit
};

static size_t part_of(const Move &move, Side side)
{
    return static_cast<size_t>(side == Side::from ? move.from : move.to);
}

/* Sets what fits as a whole. Returns whether something is open. */
static bool open_bounds(Ranks *ranks, Side side, const std::vector<int64_t> &room,
                        const std::vector<Move> &moves, std::vector<Bound> *bounds)
{
    std::vector<int64_t> sums(room.size(), 0);
    for (const Move &move : moves) sums[part_of(move, side)] += move.weight;
    sum_all(ranks, sums.data(), sums.size());
    bool open = false;
    for (size_t p = 0; p < room.size(); p++) {
        bounds->push_back(
            {0, std::max<int64_t>(room[p], 0), sums[p] > std::max<int64_t>(room[p], 0)});
        open = open || bounds->back().open;
    }
    return open;
}

/* One more byte of the bounds: those of the keys above it agree with bound. */
static void next_byte(Ranks *ranks, Side side, int shift, const std::vector<Move> &moves,
                      std::vector<Bound> *bounds)
{
    std::vector<int64_t> sums(bounds->size() * CLASSES, 0);
    for (const Move &move : moves) {
        const size_t p = part_of(move, side);
        if (!(*bounds)[p].open) continue;
        if (uint64_t{move.key} >> (shift + 8) != (*bounds)[p].bound >> (shift + 8)) continue;
        sums[p * CLASSES + (move.key >> shift & (CLASSES - 1))] += move.weight;
    }
    sum_all(ranks, sums.data(), sums.size());
    for (size_t p = 0; p < bounds->size(); p++) {
        Bound *const bound = &(*bounds)[p];
        if (!bound->open) continue;
        uint64_t byte = 0;
        while (byte + 1 < CLASSES && sums[p * CLASSES + byte] <= bound->left)
            bound->left -= sums[p * CLASSES + byte++];
        bound->bound |= byte << shift;
    }
}

void select_moves(Ranks *ranks, Side side, const std::vector<int64_t> &room, bool reach,
                  std::vector<Move> *moves)
{
    std::vector<Bound> bounds;
    if (!open_bounds(ranks, side, room, *moves, &bounds)) return;
    for (int shift = 24; shift >= 0; shift -= 8) next_byte(ranks, side, shift, *moves, &bounds);
    std::erase_if(*moves, [&](const Move &move) {
        const Bound &bound = bounds[part_of(move, side)];
        return bound.open && (reach ? move.key > bound.bound : move.key >= bound.bound);
    });
}
