// SPDX-License-Identifier: MIT
/* search/tests/parts_test.cpp: pin counts, moves and gains against fresh counts. */
#include <gtest/gtest.h>

#include "broken.h"
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

TEST(Parts, the_broken_rule_is_named)
{
    std::mt19937 random(1);
    const HGraphPtr graph = random_hypergraph(random, 20, 40, 5, true);
    const TestBounds bounds(graph.get(), 3, 10);
    Parts parts;
    open_parts(&parts, graph.get(), &bounds, Objective::km1, nullptr);
    load_parts(&parts, random_partition(random, 20, 3).data());
    const auto ok = [&] { return parts_ok(&parts); };
    ASSERT_EQ(broken_rule(ok), "");
    EXPECT_EQ(broken_by(parts.part[7], 3, ok), "P1");
    EXPECT_EQ(broken_by(parts.part[7], -1, ok), "P1");
    EXPECT_EQ(broken_by(parts.weight[1], parts.weight[1] + 1, ok), "P2");
    EXPECT_EQ(broken_by(parts.counts[0].npins, parts.counts[0].npins + 1, ok), "P3");
    EXPECT_EQ(broken_by(parts.touched[5], parts.touched[5] + 1, ok), "P3");
    EXPECT_EQ(broken_by(parts.value, parts.value + 1, ok), "P4");
    std::vector<int> fixed(20, -1);
    fixed[4] = (parts.part[4] + 1) % 3;
    EXPECT_EQ(broken_by(parts.fixed, fixed.data(), ok), "P5");
    close_parts(&parts);
}

} // namespace
