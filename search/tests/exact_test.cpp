// SPDX-License-Identifier: MIT
/* search/tests/exact_test.cpp: branch and bound against all partitions tried one by one. */
#include <gtest/gtest.h>

#include "search/exact.h"
#include "search_support.h"

namespace
{

struct Best {
    int64_t value, excess;
    std::vector<int> where;
};

bool is_within(const HGraph *graph, const Bounds *bounds, const std::vector<int> &where)
{
    std::vector<int64_t> weight(static_cast<size_t>(bounds->nparts));
    for (int v = 0; v < graph->ncells; v++)
        weight[static_cast<size_t>(where[static_cast<size_t>(v)])] += graph->cellwgt[v];
    for (int p = 0; p < bounds->nparts; p++)
        if (weight[static_cast<size_t>(p)] > bounds->most[p] ||
            weight[static_cast<size_t>(p)] < bounds->least[p])
            return false;
    return true;
}

/* The least objective of any partition within the bounds, INT64_MAX if there is none. */
int64_t least_of_all(const HGraph *graph, const Bounds *bounds, Objective objective)
{
    int64_t least = INT64_MAX;
    std::vector<int> where(static_cast<size_t>(graph->ncells));
    for (;;) {
        if (is_within(graph, bounds, where))
            least = std::min(least, objective_of(graph, bounds->nparts, objective, where.data()));
        size_t v = 0;
        while (v < where.size() && ++where[v] == bounds->nparts) where[v++] = 0;
        if (v == where.size()) return least;
    }
}

Best solve(const HGraph *graph, const Bounds *bounds, Objective objective, Best best)
{
    EXPECT_TRUE(solve_exactly(graph, bounds, objective, nullptr, INT64_MAX, &best.value,
                              &best.excess, best.where.data()));
    return best;
}

TEST(Exact, is_the_least_of_all_partitions)
{
    std::mt19937 random(7);
    for (int turn = 0; turn < 60; turn++) {
        const int n = 1 + turn % 6, nparts = 2 + turn % 3;
        const HGraphPtr graph = random_hypergraph(random, n, 2 * n, 3, turn % 2 == 0);
        const TestBounds bounds(graph.get(), nparts, 30);
        for (const Objective objective : {Objective::cut, Objective::km1, Objective::soed}) {
            const int64_t least = least_of_all(graph.get(), &bounds, objective);
            const std::vector<int> none(static_cast<size_t>(n) + 1);
            const Best found = solve(graph.get(), &bounds, objective, {INT64_MAX, 1, none});
            EXPECT_EQ(found.value, least) << turn;
            EXPECT_EQ(found.excess, least == INT64_MAX ? 1 : 0) << turn;
            if (least == INT64_MAX) continue;
            EXPECT_TRUE(is_within(graph.get(), &bounds, found.where));
            EXPECT_EQ(objective_of(graph.get(), nparts, objective, found.where.data()), least);
        }
    }
}

/* What costs nothing can't be improved; without a vertex everything costs nothing. */
TEST(Exact, a_partition_that_costs_nothing_stays)
{
    std::mt19937 random(1);
    const HGraphPtr graph = random_hypergraph(random, 4, 3, 1, false);
    const TestBounds bounds(graph.get(), 2, 0);
    const Best kept = solve(graph.get(), &bounds, Objective::cut, {0, 0, {1, 0, 1, 0}});
    EXPECT_EQ(kept.where, (std::vector<int>{1, 0, 1, 0}));

    const HGraphPtr empty = random_hypergraph(random, 0, 0, 1, false);
    const TestBounds of_nothing(empty.get(), 2, 0);
    const Best still = solve(empty.get(), &of_nothing, Objective::cut, {0, 0, {5}});
    EXPECT_EQ(still.where[0], 5);
    EXPECT_EQ(still.value, 0);
}

} // namespace
