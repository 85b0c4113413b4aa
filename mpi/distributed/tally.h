/* SPDX-License-Identifier: MIT */
/* mpi/distributed/tally.h: sums by key, of one vertex at a time.
 *
 * A table of open addresses that remembers which of its places are taken, so that emptying it costs
 * what filling it did.
 */
#ifndef ZORPEL_MPI_DISTRIBUTED_TALLY_H
#define ZORPEL_MPI_DISTRIBUTED_TALLY_H

#include <cassert>
#include <cstdint>
#include <vector>

#include "core/heavy_assert.h"

/*   V1  keys.size() is a power of two, larger than taken.size(); sums and marks are as large
 *   V2  keys[i] is not negative exactly for the places in taken
 *   V3  a key stands at its first place or behind it with no empty place between
 */
struct Tally {
    std::vector<int64_t> keys = std::vector<int64_t>(64, -1), sums = std::vector<int64_t>(64);
    std::vector<int64_t> marks = std::vector<int64_t>(64); // the last one that added, if it says so
    std::vector<int> taken;
};

/* Tests V1 to V3. */
bool tally_ok(const Tally *tally);

inline size_t tally_place(const Tally *tally, int64_t key)
{
    assert(key >= 0 && tally->taken.size() < tally->keys.size()); // some place is empty
    const size_t mask = tally->keys.size() - 1;
    size_t i = (static_cast<uint64_t>(key) * 0x9e3779b97f4a7c15u >> 32) & mask;
    while (tally->keys[i] >= 0 && tally->keys[i] != key) i = (i + 1) & mask;
    return i;
}

inline void grow_tally(Tally *tally)
{
    Tally larger;
    larger.keys.assign(tally->keys.size() * 2, -1);
    larger.sums.resize(larger.keys.size());
    larger.marks.resize(larger.keys.size());
    HEAVY_ASSERT(tally_ok(tally));
    for (const int old : tally->taken) {
        const size_t from = static_cast<size_t>(old);
        const size_t to = tally_place(&larger, tally->keys[from]);
        assert(larger.keys[to] < 0);
        larger.keys[to] = tally->keys[from];
        larger.sums[to] = tally->sums[from];
        larger.marks[to] = tally->marks[from];
        larger.taken.push_back(static_cast<int>(to));
    }
    *tally = std::move(larger);
}

/* Adds value to the sum of key, but not twice for the same mark, unless that is -1. */
inline void add_tally(Tally *tally, int64_t key, int64_t value, int64_t mark)
{
    assert(key >= 0);
    if (tally->taken.size() * 2 >= tally->keys.size()) grow_tally(tally);
    const size_t i = tally_place(tally, key);
    if (tally->keys[i] < 0) {
        tally->keys[i] = key;
        tally->sums[i] = 0;
        tally->taken.push_back(static_cast<int>(i));
    } else if (mark >= 0 && tally->marks[i] == mark) {
        return;
    }
    tally->sums[i] += value;
    tally->marks[i] = mark;
}

inline void empty_tally(Tally *tally)
{
    HEAVY_ASSERT(tally_ok(tally));
    for (const int i : tally->taken) tally->keys[static_cast<size_t>(i)] = -1;
    tally->taken.clear();
}

#endif
