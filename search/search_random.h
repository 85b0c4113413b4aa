/* SPDX-License-Identifier: MIT */
/* search/search_random.h: the search's own random numbers.
 *
 * A small counter-based generator that hangs on the caller's record, so that every step of the
 * search is a function of its seed, whatever runs beside it.
 * Source: Steele, Lea, Flood, Fast splittable pseudorandom number generators, OOPSLA 2014.
 */
#ifndef ZORPEL_SEARCH_SEARCH_RANDOM_H
#define ZORPEL_SEARCH_SEARCH_RANDOM_H

#include <cassert>
#include <cstdint>

struct Random {
    uint64_t state;
};

inline uint64_t next_random(Random *random)
{
    uint64_t z = random->state += 0x9e3779b97f4a7c15u;
    z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9u;
    z = (z ^ (z >> 27)) * 0x94d049bb133111ebu;
    return z ^ (z >> 31);
}

/* A number in 0..range-1. */
inline int random_below(Random *random, int range)
{
    assert(range > 0);
    return static_cast<int>((next_random(random) >> 32) * static_cast<uint64_t>(range) >> 32);
}

/* A generator for job number index of the one that seed stands for. */
inline Random random_for(uint64_t seed, uint64_t index)
{
    Random random = {seed * 0xd1342543de82ef95u + index};
    next_random(&random);
    return random;
}

inline void shuffle(Random *random, int *list, int n)
{
    for (int i = n - 1; i > 0; i--) {
        const int j = random_below(random, i + 1), kept = list[i];
        list[i] = list[j];
        list[j] = kept;
    }
}

#endif
