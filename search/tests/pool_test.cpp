// SPDX-License-Identifier: MIT
/* search/tests/pool_test.cpp: which partitions a pool keeps and which it combines. */
#include <gtest/gtest.h>

#include <set>

#include "broken.h"
#include "core/memory.h"
#include "search/pool.h"
#include "search_support.h"

namespace
{

/* A pool of random partitions of one hypergraph. */
struct PoolCase {
    PoolCase(unsigned seed, int most)
        : random(seed), graph(random_hypergraph(random, 12, 20, 4, true))
    {
        pool.most = most;
    }
    ~PoolCase() { close_pool(&pool); }

    Member member_of(const std::vector<int> &part)
    {
        int *const copy = imalloc__(part.size(), "test: part");
        std::copy(part.begin(), part.end(), copy);
        return {copy, objective_of(graph.get(), 3, Objective::cut, copy),
                static_cast<int64_t>(random() % 2)};
    }
    void add(const std::vector<int> &part)
    {
        take_into_pool(&pool, graph.get(), graph->ncells, member_of(part));
    }
    bool ok() { return pool_ok(&pool, graph.get(), graph->ncells, 3, Objective::cut); }

    std::mt19937 random;
    HGraphPtr graph;
    Pool pool = {};
};

TEST(Pool, stays_in_order_and_keeps_the_best_of_all)
{
    for (unsigned seed = 1; seed <= 60; seed++) {
        PoolCase c(seed, 1 + static_cast<int>(seed % 7));
        Member best = {nullptr, INT64_MAX, INT64_MAX};
        for (int i = 0; i < 40; i++) {
            Member member = c.member_of(random_partition(c.random, 12, 3));
            if (better(&member, &best)) best = {nullptr, member.objective, member.excess};
            take_into_pool(&c.pool, c.graph.get(), 12, member);
            ASSERT_TRUE(c.ok()) << "seed " << seed;
            ASSERT_EQ(c.pool.members[0].objective, best.objective) << "seed " << seed;
            ASSERT_EQ(c.pool.members[0].excess, best.excess) << "seed " << seed;
            ASSERT_EQ(c.pool.n, std::min(c.pool.n, c.pool.most));
        }
    }
}

TEST(Pool, what_is_there_already_is_not_taken_again)
{
    PoolCase c(1, 5);
    const std::vector<int> part = random_partition(c.random, 12, 3);
    Member member = c.member_of(part);
    member.excess = 0;
    take_into_pool(&c.pool, c.graph.get(), 12, member);
    member = c.member_of(part);
    member.excess = 0;
    take_into_pool(&c.pool, c.graph.get(), 12, member);
    EXPECT_EQ(c.pool.n, 1);
}

TEST(Pool, a_twin_behind_others_of_its_objective_is_found)
{
    PoolCase c(1, 5);
    const std::vector<int> part = random_partition(c.random, 12, 3);
    std::vector<int> renamed = part; // the same objective, another array
    for (int &p : renamed) p = (p + 1) % 3;
    for (const std::vector<int> &next : {part, renamed, part, renamed}) {
        Member member = c.member_of(next);
        member.excess = 0;
        take_into_pool(&c.pool, c.graph.get(), 12, member);
    }
    EXPECT_EQ(c.pool.n, 2);
}

TEST(Pool, a_newcomer_replaces_the_most_similar_of_those_that_are_not_better)
{
    for (unsigned seed = 1; seed <= 40; seed++) {
        PoolCase d(seed, 3);
        while (d.pool.n < 3) d.add(random_partition(d.random, 12, 3));
        std::vector<std::vector<int>> before;
        for (int i = 0; i < 3; i++)
            before.emplace_back(d.pool.members[i].part, d.pool.members[i].part + 12);
        Member member = d.member_of(random_partition(d.random, 12, 3));
        int64_t least = INT64_MAX;
        size_t out = 3; // by the plain rule
        for (size_t i = 0; i < 3; i++) {
            if (better(&d.pool.members[i], &member) ||
                (d.pool.members[i].excess == member.excess &&
                 d.pool.members[i].objective == member.objective))
                continue;
            const int64_t far = difference(d.graph.get(), member.part, before[i].data());
            if (far <= least) {
                least = far;
                out = i;
            }
        }
        if (out == 3) {
            QXfree__(&member.part, LTERM);
            continue;
        }
        take_into_pool(&d.pool, d.graph.get(), 12, member);
        const auto present = [&](const std::vector<int> &part) {
            for (int i = 0; i < d.pool.n; i++)
                if (std::equal(part.begin(), part.end(), d.pool.members[i].part)) return true;
            return false;
        };
        for (size_t i = 0; i < 3; i++) EXPECT_EQ(present(before[i]), i != out) << "seed " << seed;
    }
}

TEST(Pool, parents_are_two_members_and_all_pairs_of_a_small_pool_come)
{
    PoolCase c(2, 12);
    Random random = random_for(1, 0);
    int first, second;
    while (c.pool.n < 12) {
        std::set<std::pair<int, int>> pairs;
        for (int turn = 0; turn < 200; turn++) {
            choose_parents(&c.pool, turn, &random, &first, &second);
            if (c.pool.n < 2) {
                ASSERT_TRUE(first == 0 && second == 0);
                continue;
            }
            ASSERT_TRUE(0 <= first && first < second && second < c.pool.n);
            pairs.insert({first, second});
        }
        if (c.pool.n > 1) {
            EXPECT_GE(static_cast<int>(pairs.size()) * 10, c.pool.n * (c.pool.n - 1) / 2 * 7);
        }
        c.add(random_partition(c.random, 12, 3));
    }
}

TEST(Pool, the_broken_rule_is_named)
{
    PoolCase c(3, 4);
    while (c.pool.n < 3) c.add(random_partition(c.random, 12, 3));
    const auto ok = [&] { return c.ok(); };
    ASSERT_EQ(broken_rule(ok), "");
    EXPECT_EQ(broken_by(c.pool.most, 2, ok), "L1");
    EXPECT_EQ(broken_by(c.pool.most, MOST_POOL + 1, ok), "L1");
    EXPECT_EQ(broken_by(c.pool.members[0].excess, 5, ok), "L2");
    EXPECT_EQ(broken_by(c.pool.members[2].objective, c.pool.members[2].objective + 1, ok), "L4");
    std::copy(c.pool.members[0].part, c.pool.members[0].part + 12, c.pool.members[1].part);
    c.pool.members[1].objective = c.pool.members[0].objective;
    c.pool.members[1].excess = c.pool.members[0].excess;
    EXPECT_EQ(broken_rule(ok), "L3");
}

} // namespace
