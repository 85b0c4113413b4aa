// SPDX-License-Identifier: MIT
/* search/pool.cpp: which partitions stay in the pool, and which are combined.
 *
 * A pool that keeps the best alone soon holds one partition with small changes, and combinations of
 * these find nothing new. So a newcomer replaces what it resembles.
 */
#include "search/pool.h"

#include <algorithm>

#include "core/memory.h"

constexpr int SMALL_POOL = 4; // members of which all pairs are combined in turn

static bool is_cut(const HGraph *graph, const int *part, int e)
{
    const int begin = graph->netptr[e], end = graph->netptr[e + 1];
    for (int j = begin + 1; j < end; j++)
        if (part[graph->netind[j]] != part[graph->netind[begin]]) return true;
    return false;
}

int64_t difference(const HGraph *graph, const int *a, const int *b)
{
    int64_t sum = 0;
    for (int e = 0; e < graph->nnets; e++)
        if (is_cut(graph, a, e) != is_cut(graph, b, e)) sum += graph->netwgt[e];
    assert(sum >= 0);
    return sum;
}

/* Whether a member of the pool is the same partition; place is where member would stand, after all
 * of its objective. */
static bool has_twin(const Pool *pool, int place, int nclusters, const Member *member)
{
    for (int i = place - 1; i >= 0 && pool->members[i].objective == member->objective; i--)
        if (std::equal(member->part, member->part + nclusters, pool->members[i].part)) return true;
    return false;
}

/* Which member makes room in a full pool: of those from place on the one most like member, of
 * equals the last. */
static int most_similar(const Pool *pool, const HGraph *graph, int place, const Member *member)
{
    int best = pool->n - 1;
    if (place == best) return best;
    int64_t least = INT64_MAX;
    for (int i = place; i < pool->n; i++) {
        const int64_t d = difference(graph, member->part, pool->members[i].part);
        if (d > least) continue;
        least = d;
        best = i;
    }
    assert(best >= place);
    return best;
}

void take_into_pool(Pool *pool, const HGraph *graph, int nclusters, Member member)
{
    assert(pool->n <= pool->most && pool->most <= MOST_POOL); // L1
    int place = pool->n;
    while (place > 0 && better(&member, &pool->members[place - 1])) place--;
    if (place == pool->most || has_twin(pool, place, nclusters, &member)) {
        QXfree__(&member.part, LTERM);
        return;
    }
    int last = pool->n;
    if (pool->n == pool->most) {
        last = most_similar(pool, graph, place, &member);
        QXfree__(&pool->members[last].part, LTERM);
    } else
        pool->n++;
    for (int i = last; i > place; i--) pool->members[i] = pool->members[i - 1];
    pool->members[place] = member;
    assert(place == 0 || !better(&member, &pool->members[place - 1]));           // L2
    assert(place + 1 == pool->n || !better(&pool->members[place + 1], &member)); // L2
}

/* The better of two ranks drawn. */
static int draw_rank(Random *random, int n)
{
    const int a = random_below(random, n), b = random_below(random, n);
    return std::min(a, b);
}

void choose_parents(const Pool *pool, int turn, Random *random, int *first, int *second)
{
    const int n = pool->n, npairs = n * (n - 1) / 2;
    assert(turn >= 0);
    *first = *second = 0;
    if (npairs == 0) return;
    if (n <= SMALL_POOL) {
        int left = turn % npairs;
        for (*second = 1; left >= *second; ++*second) left -= *second;
        *first = left;
    } else {
        const int a = draw_rank(random, n);
        int b = draw_rank(random, n);
        while (b == a) b = random_below(random, n);
        *first = std::min(a, b);
        *second = std::max(a, b);
    }
    assert(0 <= *first && *first < *second && *second < n);
}

void close_pool(Pool *pool)
{
    for (int i = 0; i < pool->n; i++) QXfree__(&pool->members[i].part, LTERM);
    pool->n = 0;
}
