// SPDX-License-Identifier: MIT
/* model/torture_edges_test.cpp: sums at the edge of 32 bits.
 *
 * Totals of weights reach 2147483646: up to there every figure is exact, above the call is refused
 * with one sentence. Run under the sanitizers, no sum on the way may overflow.
 */
#include <cstdio>
#include <gtest/gtest.h>

#include "torture_check.h"

constexpr int MOST = 2147483646;

/* A ring of triples of 12 vertices, its options those of the seed. */
static Case make_ring(int turn)
{
    Case c = empty_case();
    c.family = "edges";
    c.nvtxs = 12;
    for (int v = 0; v < c.nvtxs; v++) add_hedge(&c, {v, (v + 1) % 12, (v + 5) % 12});
    c.entry = static_cast<Entry>(turn % NENTRIES);
    c.coarsento = 3;
    c.polish = turn % 2 == 0;
    c.nparts = 2 + turn % 3;
    c.options[ZORPEL_OPT_CTYPE] = 1 + turn % 5;
    c.options[ZORPEL_OPT_RTYPE] = 1 + turn % (c.entry == ENTRY_DIRECT ? 2 : 3);
    c.options[ZORPEL_OPT_VCYCLE] = turn % 4;
    c.part.assign(12, 0);
    if (c.entry == ENTRY_REFINE)
        for (size_t v = 0; v < 12; v += 2) c.part[v] = 1;
    return c;
}

// n weights of this total: all alike but the last, or all in one.
static std::vector<int> weights_of_total(size_t n, long long total, bool in_one)
{
    std::vector<int> weights(n, in_one ? 0 : static_cast<int>(total / static_cast<long long>(n)));
    long long sum = 0;
    for (const int w : weights) sum += w;
    weights[n - 1] += static_cast<int>(total - sum);
    return weights;
}

static void expect_exact(std::vector<int> Case::*weights, bool in_one)
{
    for (int turn = 0; turn < 60; turn++) {
        Case c = make_ring(turn);
        c.*weights = weights_of_total(12, MOST - turn % 2, in_one);
        EXPECT_EQ(check_case(c), "") << to_text(c);
    }
}

TEST(Edges, vertex_weights_of_2147483646_are_exact)
{
    expect_exact(&Case::vwgts, false);
}

TEST(Edges, one_vertex_of_2147483646_is_exact)
{
    expect_exact(&Case::vwgts, true);
}

TEST(Edges, hyperedge_weights_of_2147483646_are_exact)
{
    expect_exact(&Case::hewgts, false);
}

TEST(Edges, one_hyperedge_of_2147483646_is_exact)
{
    expect_exact(&Case::hewgts, true);
}

TEST(Edges, a_degree_of_2147483646_is_exact)
{
    for (int turn = 0; turn < 60; turn++) {
        Case c = make_ring(turn);
        c.eptr = {0};
        c.eind.clear();
        for (int v = 1; v < 12; v++) add_hedge(&c, {0, v}); // vertex 0 is in all of them
        c.hewgts = weights_of_total(11, MOST, false);
        EXPECT_EQ(check_case(c), "") << to_text(c);
    }
}

static void call_with(std::vector<int> Case::*weights, long long over)
{
    Case c = make_ring(0);
    c.*weights = weights_of_total(12, MOST + over, false);
    make_call(c);
    fprintf(stderr, "accepted");
    exit(1);
}

TEST(EdgesDeath, a_vertex_weight_more_is_refused)
{
    for (const long long over : {1, 2, 3, 1000000})
        EXPECT_EXIT(call_with(&Case::vwgts, over), testing::ExitedWithCode(0),
                    "The vertex weights should total at most 2147483646.");
}

TEST(EdgesDeath, a_hyperedge_weight_more_is_refused)
{
    for (const long long over : {1, 2, 3, 1000000})
        EXPECT_EXIT(call_with(&Case::hewgts, over), testing::ExitedWithCode(0),
                    "The hyperedge weights should total at most 2147483646.");
}

int main(int argc, char **argv)
{
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
