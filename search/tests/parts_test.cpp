/* search/tests/parts_test.cpp: pin counts, moves and gains against fresh counts. */
#include <gtest/gtest.h>

#include "search_support.h"

namespace
{

constexpr Objective OBJECTIVES[] = {Objective::cut, Objective::km1, Objective::soed};

TEST(Parts, moves_keep_every_count_and_their_gains_are_the_falls_of_the_objective)
{
    for (unsigned seed = 1; seed <= 60; seed++) {
        std::mt19937 random(seed);
        const int n = 2 + static_cast<int>(random() % 30), nparts = 2 + static_cast<int>(seed % 6);
        const HGraphPtr graph = random_hypergraph(random, n, 2 * n, 6, seed % 2 == 0);
        const TestBounds bounds(graph.get(), nparts, 10);
        const Objective objective = OBJECTIVES[seed % 3];
        Parts parts;
        open_parts(&parts, graph.get(), &bounds, objective, nullptr);
        load_parts(&parts, random_partition(random, n, nparts).data());
        for (int move = 0; move < 50; move++) {
            const int v = static_cast<int>(random() % static_cast<unsigned>(n));
            const int to = static_cast<int>(random() % static_cast<unsigned>(nparts));
            if (to == parts.part[v]) continue;
            const int64_t before = parts.value, gain = gain_of_move(&parts, v, to);
            move_vertex(&parts, v, to);
            ASSERT_EQ(parts.value, before - gain) << "seed " << seed;
            ASSERT_EQ(parts.value, objective_of(graph.get(), nparts, objective, parts.part));
        }
        EXPECT_TRUE(parts_ok(&parts)) << "seed " << seed;
        close_parts(&parts);
    }
}

TEST(Parts, a_wrong_count_is_found)
{
    std::mt19937 random(1);
    const HGraphPtr graph = random_hypergraph(random, 20, 40, 5, true);
    const TestBounds bounds(graph.get(), 3, 10);
    Parts parts;
    open_parts(&parts, graph.get(), &bounds, Objective::km1, nullptr);
    load_parts(&parts, random_partition(random, 20, 3).data());
    ASSERT_TRUE(parts_ok(&parts));
    parts.value++;
    EXPECT_FALSE(parts_ok(&parts));
    parts.value--;
    parts.weight[1]++;
    EXPECT_FALSE(parts_ok(&parts));
    parts.weight[1]--;
    parts.counts[0].npins++;
    EXPECT_FALSE(parts_ok(&parts));
    parts.counts[0].npins--;
    std::vector<int> fixed(20, -1);
    fixed[4] = (parts.part[4] + 1) % 3;
    parts.fixed = fixed.data();
    EXPECT_FALSE(parts_ok(&parts));
    close_parts(&parts);
}

} // namespace
