/* SPDX-License-Identifier: MIT */
/* search/pool.h: the best partitions that a search has, and which of them are combined. */
#ifndef ZORPEL_SEARCH_POOL_H
#define ZORPEL_SEARCH_POOL_H

#include "search/parts.h"
#include "search/search_random.h"

constexpr int MOST_POOL = 32;

/* A partition of the clusters. */
struct Member {
    int *part; // [nclusters]
    int64_t objective, excess;
};

/*   L1  0 <= n <= most <= MOST_POOL
 *   L2  members[0..n-1] stand in order, the best first
 *   L3  no two of them with the same objective are the same partition side by side
 *   L4  objective is that of the part
 */
struct Pool {
    int n, most;
    Member members[MOST_POOL + 1];
};

/* Whether a comes before b: less outside the bounds, then a smaller objective. */
inline bool better(const Member *a, const Member *b)
{
    return a->excess != b->excess ? a->excess < b->excess : a->objective < b->objective;
}

/* Takes member, whose part it owns from now on, into the pool if it is good enough. In a full pool
 * it takes the place of the one that it resembles most of those that are not better: so a pool
 * keeps partitions that differ.
 *   graph  in  of the clusters that have hyperedges
 * Source  Andre, Schlag, Schulz, Memetic multilevel hypergraph partitioning, GECCO 2018. */
void take_into_pool(Pool *pool, const HGraph *graph, int nclusters, Member member);

/* The weight of the hyperedges that one of two partitions cuts and the other does not. */
int64_t difference(const HGraph *graph, const int *a, const int *b);

/* Which two members are combined: of small pools by turn 0 and 1, 0 and 2, 1 and 2, 0 and 3, ...;
 * of others the better of two drawn, twice. first is the better one; both are 0 if there is just
 * one member. */
void choose_parents(const Pool *pool, int turn, Random *random, int *first, int *second);

void close_pool(Pool *pool);

/* Tests L1 to L4. */
bool pool_ok(const Pool *pool, const HGraph *graph, int nclusters, int nparts, Objective objective);

#endif
