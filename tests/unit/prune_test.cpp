// SPDX-License-Identifier: MIT
/* tests/unit/prune_test.cpp: leaving out large hyperedges. */
#include "partition/prune.h"

#include <gtest/gtest.h>

#include <numeric>

#include "support.h"

static std::vector<int> net_of_size(int size)
{
    std::vector<int> net(static_cast<size_t>(size));
    std::iota(net.begin(), net.end(), 0);
    return net;
}

TEST(Prune, a_hyperedge_of_50_vertices_is_kept_and_one_of_51_dropped)
{
    const PartCtrl ctrl = default_ctrl();
    const HGraphPtr graph =
        make_incident(51, {net_of_size(51), net_of_size(50), net_of_size(1)}, {7, 8, 9});
    const HGraphPtr pruned(PruneHGraph__(&ctrl, graph.get()));
    EXPECT_EQ(pruned->nnets, 2);
    EXPECT_EQ(pins_of(pruned.get()), (Nets{net_of_size(50), net_of_size(1)}));
    EXPECT_EQ(to_ints(pruned->netwgt, 2), (std::vector<int>{8, 9}));
}

TEST(Prune, the_rest_keeps_order_pins_weights_and_vertex_numbers)
{
    PartCtrl ctrl = default_ctrl();
    ctrl.maxnetsize = 2;
    const HGraphPtr graph = make_incident(4, {{3, 0}, {2, 1, 0}, {}, {1, 0}, {3, 2, 1, 0}, {2}},
                                          {1, 2, 3, 4, 5, 6}, {9, 8, 7, 6});
    graph->nfixed = 1;
    const HGraphPtr pruned(PruneHGraph__(&ctrl, graph.get()));
    EXPECT_EQ(pruned->ncells, 4);
    EXPECT_EQ(pruned->nfixed, 1);
    EXPECT_EQ(pins_of(pruned.get()), (Nets{{3, 0}, {}, {1, 0}, {2}}));
    EXPECT_EQ(to_ints(pruned->netwgt, 4), (std::vector<int>{1, 3, 4, 6}));
    EXPECT_EQ(to_ints(pruned->cellwgt, 4), (std::vector<int>{9, 8, 7, 6}));
    EXPECT_EQ(to_ints(pruned->adjwgt, 4), (std::vector<int>{5, 4, 6, 1}));
    EXPECT_TRUE(hgraph_ok(pruned.get(), HG_LISTS | HG_INCIDENCE));
}

TEST(Prune, the_hypergraph_itself_is_not_modified_and_nothing_else_carried_over)
{
    PartCtrl ctrl = default_ctrl();
    ctrl.maxnetsize = 2;
    const Nets nets = {{0, 1, 2}, {1, 2}};
    const HGraphPtr graph = make_incident(3, nets);
    graph->where = new_array({0, 1, 0});
    graph->mincut = 5;
    const HGraphPtr pruned(PruneHGraph__(&ctrl, graph.get()));
    EXPECT_EQ(pins_of(graph.get()), nets);
    EXPECT_EQ(to_ints(graph->where, 3), (std::vector<int>{0, 1, 0}));
    EXPECT_EQ(pruned->where, nullptr);
    EXPECT_EQ(pruned->label, nullptr);
    EXPECT_EQ(pruned->mincut, 0);
    EXPECT_EQ(pruned->nislands, 0);
    EXPECT_EQ(pruned->level, -1);
}

TEST(Prune, dropping_every_hyperedge_leaves_empty_lists)
{
    PartCtrl ctrl = default_ctrl();
    ctrl.maxnetsize = 2;
    const HGraphPtr pruned(PruneHGraph__(&ctrl, make_incident(3, {{0, 1, 2}}).get()));
    EXPECT_EQ(pruned->nnets, 0);
    EXPECT_EQ(pruned->netptr[0], 0);
    EXPECT_EQ(to_ints(pruned->incptr, 4), (std::vector<int>{0, 0, 0, 0}));
}

TEST(Prune, without_large_hyperedges_the_copy_borrows_and_frees_nothing_of_the_lender)
{
    const PartCtrl ctrl = default_ctrl();
    const Nets nets = {{0, 1, 2}, {1, 2}};
    const HGraphPtr graph = make_incident(4, nets, {3, 4}, {1, 2, 3, 4}); // vertex 3 is an island
    graph->nfixed = 1;
    HGraph *const copy = PruneHGraph__(&ctrl, graph.get());
    EXPECT_TRUE(copy->borrows);
    EXPECT_EQ(copy->ncells, 4);
    EXPECT_EQ(copy->nfixed, 1);
    EXPECT_EQ(copy->nnets, 2);
    EXPECT_EQ(copy->incind, graph->incind);
    EXPECT_TRUE(hgraph_ok(copy, HG_LISTS | HG_INCIDENCE));
    copy->nearby = new_array({0, 1, 2, 3});
    FreeHGraph__(copy);
    EXPECT_FALSE(graph->borrows);
    EXPECT_EQ(pins_of(graph.get()), nets);
    EXPECT_EQ(to_ints(graph->cellwgt, 4), (std::vector<int>{1, 2, 3, 4}));
    EXPECT_TRUE(hgraph_ok(graph.get(), HG_LISTS | HG_INCIDENCE));
}

TEST(Prune, one_hyperedge_left_out_makes_a_copy_of_its_own)
{
    PartCtrl ctrl = default_ctrl();
    ctrl.maxnetsize = 2;
    const HGraphPtr graph = make_incident(3, {{0, 1, 2}, {1, 2}});
    const HGraphPtr pruned(PruneHGraph__(&ctrl, graph.get()));
    EXPECT_FALSE(pruned->borrows);
    EXPECT_NE(pruned->cellwgt, graph->cellwgt);
    EXPECT_NE(pruned->netind, graph->netind);
}
