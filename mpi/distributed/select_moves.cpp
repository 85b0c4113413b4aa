// SPDX-License-Identifier: MIT
/* mpi/distributed/select_moves.cpp: a search for the last key that fits, four bits at a time.
 *
 * Nobody sees all the moves. Weights are summed by the leading bits of the key over all ranks; that
 * tells in which of 16 classes the room of a part ends, and in that class the next bits decide.
 * These sums are most of what is sent on coarse levels, so they are short: a byte at a time would
 * halve their number and make each sixteen times as long.
 */
#include "distributed/select_moves.h"

constexpr int BITS = 4, CLASSES = 1 << BITS, KEY_BITS = 32;

/* What is known of the last key that fits into one part.
 *   bound  keys below it fit; after step i its leading BITS x i bits are final
 */
struct Bound {
    uint64_t bound;
    int64_t left; // of the room, once all keys below bound are in
    int row;      // of the sums; -1: all fit
};

static size_t part_of(const Move &move, Side side)
{
    return static_cast<size_t>(side == Side::from ? move.from : move.to);
}

/* Sets what fits as a whole. Returns how many parts are open. */
static size_t open_bounds(Ranks *ranks, Side side, const std::vector<int64_t> &room,
                          const std::vector<Move> &moves, std::vector<Bound> *bounds)
{
    std::vector<int64_t> sums(room.size(), 0);
    for (const Move &move : moves) {
        assert(part_of(move, side) < room.size() && move.weight >= 0);
        sums[part_of(move, side)] += move.weight;
    }
    sum_all(ranks, sums.data(), sums.size());
    int open = 0;
    for (size_t p = 0; p < room.size(); p++) {
        const int64_t left = std::max<int64_t>(room[p], 0);
        bounds->push_back({0, left, sums[p] > left ? open++ : -1});
    }
    return static_cast<size_t>(open);
}

/* A few more bits of the bounds: those of the keys above them agree with bound. */
static void next_bits(Ranks *ranks, Side side, int shift, size_t nopen,
                      const std::vector<Move> &moves, std::vector<Bound> *bounds)
{
    std::vector<int64_t> sums(nopen * CLASSES, 0);
    for (const Move &move : moves) {
        const Bound &bound = (*bounds)[part_of(move, side)];
        if (bound.row < 0) continue;
        if (uint64_t{move.key} >> (shift + BITS) != bound.bound >> (shift + BITS)) continue;
        sums[static_cast<size_t>(bound.row) * CLASSES + (move.key >> shift & (CLASSES - 1))] +=
            move.weight;
    }
    sum_all(ranks, sums.data(), sums.size());
    for (Bound &bound : *bounds) {
        if (bound.row < 0) continue;
        const int64_t *const sum = &sums[static_cast<size_t>(bound.row) * CLASSES];
        assert(bound.left >= 0 && static_cast<size_t>(bound.row) < nopen);
        uint64_t bits = 0;
        while (bits + 1 < CLASSES && sum[bits] <= bound.left) bound.left -= sum[bits++];
        assert(bits < CLASSES && (bound.bound & ((uint64_t{1} << (shift + BITS)) - 1)) == 0);
        bound.bound |= bits << shift;
    }
}

void select_moves(Ranks *ranks, Side side, const std::vector<int64_t> &room, bool reach,
                  std::vector<Move> *moves)
{
    std::vector<Bound> bounds;
    const size_t nopen = open_bounds(ranks, side, room, *moves, &bounds);
    if (nopen == 0) return;
    for (int shift = KEY_BITS - BITS; shift >= 0; shift -= BITS)
        next_bits(ranks, side, shift, nopen, *moves, &bounds);
    std::erase_if(*moves, [&](const Move &move) {
        const Bound &bound = bounds[part_of(move, side)];
        return bound.row >= 0 && (reach ? move.key > bound.bound : move.key >= bound.bound);
    });
}
