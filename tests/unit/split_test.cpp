// SPDX-License-Identifier: MIT
/* tests/unit/split_test.cpp: the two halves of a bisected hypergraph. */
#include "partition/split.h"

#include <gtest/gtest.h>

#include "support.h"

struct Halves {
    HGraphPtr left{CreateHGraph__()}, right{CreateHGraph__()};
};

/* Splits a hypergraph of six vertices on sides 0 1 0 1 0 1 (0, 2, 4 become 0, 1, 2 of the left). */
static Halves split_six(const Nets &nets, const std::vector<int> &netwgt, int reconst)
{
    static const int bisection[] = {0, 1, 0, 1, 0, 1};
    PartCtrl ctrl = default_ctrl();
    ctrl.Reconst = reconst;
    const HGraphPtr graph = make_hgraph(6, nets, netwgt, {10, 11, 12, 13, 14, 15});
    graph->label = new_array({100, 101, 102, 103, 104, 105});
    Halves halves;
    SplitGraphPart__(&ctrl, graph.get(), bisection, halves.left.get(), halves.right.get());
    EXPECT_TRUE(hgraph_ok(halves.left.get(), HG_LISTS));
    EXPECT_TRUE(hgraph_ok(halves.right.get(), HG_LISTS));
    return halves;
}

TEST(Split, vertices_keep_their_order_labels_and_weights)
{
    const Halves halves = split_six({}, {}, 0);
    EXPECT_EQ(halves.left->ncells, 3);
    EXPECT_EQ(halves.right->ncells, 3);
    EXPECT_EQ(to_ints(halves.left->label, 3), (std::vector<int>{100, 102, 104}));
    EXPECT_EQ(to_ints(halves.right->label, 3), (std::vector<int>{101, 103, 105}));
    EXPECT_EQ(to_ints(halves.left->cellwgt, 3), (std::vector<int>{10, 12, 14}));
    EXPECT_EQ(to_ints(halves.right->cellwgt, 3), (std::vector<int>{11, 13, 15}));
    EXPECT_EQ(halves.left->keep, 0);
    EXPECT_EQ(halves.right->keep, 0);
    EXPECT_EQ(halves.left->nnets, 0);
    EXPECT_EQ(halves.left->netptr[0], 0);
}

TEST(Split, whole_hyperedges_go_to_their_side_and_cut_ones_are_dropped)
{
    const Halves halves = split_six({{4, 0}, {0, 1}, {5, 1, 3}, {2, 4}}, {1, 2, 3, 4}, 0);
    EXPECT_EQ(pins_of(halves.left.get()), (Nets{{2, 0}, {1, 2}}));
    EXPECT_EQ(to_ints(halves.left->netwgt, 2), (std::vector<int>{1, 4}));
    EXPECT_EQ(pins_of(halves.right.get()), (Nets{{2, 0, 1}}));
    EXPECT_EQ(to_ints(halves.right->netwgt, 1), (std::vector<int>{3}));
}

TEST(Split, a_hyperedge_of_one_vertex_stays_and_an_empty_one_goes_to_side_0)
{
    const Halves halves = split_six({{3}, {}, {2}}, {1, 2, 3}, 0);
    EXPECT_EQ(pins_of(halves.left.get()), (Nets{{}, {1}}));
    EXPECT_EQ(to_ints(halves.left->netwgt, 2), (std::vector<int>{2, 3}));
    EXPECT_EQ(pins_of(halves.right.get()), (Nets{{1}}));
}

TEST(Split, reconstruction_keeps_the_pieces_of_more_than_one_vertex)
{
    const Halves halves = split_six({{1, 4, 0}, {0, 1}, {2, 3, 4, 5}}, {5, 6, 7}, 1);
    EXPECT_EQ(pins_of(halves.left.get()), (Nets{{0, 2}, {1, 2}}));
    EXPECT_EQ(to_ints(halves.left->netwgt, 2), (std::vector<int>{5, 7}));
    EXPECT_EQ(pins_of(halves.right.get()), (Nets{{1, 2}}));
    EXPECT_EQ(to_ints(halves.right->netwgt, 1), (std::vector<int>{7}));
}

TEST(Split, a_cut_hyperedge_of_two_and_one_survives_only_where_it_has_two)
{
    const Halves with = split_six({{0, 1, 3}}, {4}, 1);
    EXPECT_EQ(with.left->nnets, 0);
    EXPECT_EQ(pins_of(with.right.get()), (Nets{{0, 1}}));
    const Halves without = split_six({{0, 1, 3}}, {4}, 0);
    EXPECT_EQ(without.left->nnets, 0);
    EXPECT_EQ(without.right->nnets, 0);
}

TEST(Split, pieces_that_become_identical_are_merged_with_their_weights)
{
    const Halves halves = split_six({{1, 4, 0}, {0, 4}, {4, 3, 0}}, {5, 6, 7}, 1);
    EXPECT_EQ(pins_of(halves.left.get()), (Nets{{0, 2}}));
    EXPECT_EQ(halves.left->netwgt[0], 18);
    EXPECT_EQ(halves.right->nnets, 0);
}

TEST(Split, without_reconstruction_identical_hyperedges_stay_apart)
{
    const Halves halves = split_six({{0, 4}, {0, 4}}, {5, 6}, 0);
    EXPECT_EQ(pins_of(halves.left.get()), (Nets{{0, 2}, {0, 2}}));
}

TEST(Split, all_vertices_may_be_on_one_side)
{
    const int ones[] = {1, 1, 1};
    const PartCtrl ctrl = default_ctrl();
    const HGraphPtr graph = make_hgraph(3, {{0, 2}, {}});
    graph->label = new_array({0, 1, 2});
    Halves halves;
    SplitGraphPart__(&ctrl, graph.get(), ones, halves.left.get(), halves.right.get());
    EXPECT_EQ(halves.left->ncells, 0);
    EXPECT_EQ(pins_of(halves.left.get()), (Nets{{}}));
    EXPECT_EQ(pins_of(halves.right.get()), (Nets{{0, 2}}));
}

/* Fixed vertices of the left half. */
static int fixed_on_the_left(int nfixed, int left_parts, int parts)
{
    PartCtrl ctrl = default_ctrl();
    ctrl.splitratio = static_cast<float>(static_cast<double>(left_parts) / parts);
    const HGraphPtr graph = make_hgraph(2, {});
    graph->label = new_array({0, 1});
    graph->nfixed = nfixed;
    const int bisection[] = {0, 1};
    Halves halves;
    SplitGraphPart__(&ctrl, graph.get(), bisection, halves.left.get(), halves.right.get());
    EXPECT_EQ(halves.left->nfixed + halves.right->nfixed, nfixed);
    return halves.left->nfixed;
}

TEST(Split, each_half_gets_as_many_fixed_vertices_as_it_has_parts)
{
    for (int parts = 2; parts <= 400; parts++)
        ASSERT_EQ(fixed_on_the_left(parts, parts / 2, parts), parts / 2) << parts << " parts";
    EXPECT_EQ(fixed_on_the_left(0, 1, 2), 0);
}
