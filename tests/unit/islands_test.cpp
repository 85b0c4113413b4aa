// SPDX-License-Identifier: MIT
/* tests/unit/islands_test.cpp: parking vertices without hyperedges, and bringing them back. */
#include "core/islands.h"

#include <gtest/gtest.h>

#include "coarsen/coarsen.h"
#include "partition/bisection.h"
#include "partition/prune.h"
#include "support.h"

/* Vertices 1, 4 and 6 of eight lie in no hyperedge; weights tell who is who. */
static HGraphPtr with_islands()
{
    HGraphPtr graph =
        make_incident(8, {{7, 0}, {2, 3, 5}, {5, 7}}, {2, 3, 4}, {10, 11, 12, 13, 14, 15, 16, 17});
    graph->where = new_array({0, 1, 1, 0, 0, 1, 0, 1});
    return graph;
}

TEST(Islands, the_others_keep_their_order_and_islands_stand_behind_last_found_first)
{
    const HGraphPtr graph = with_islands();
    SeparateIslands__(graph.get());
    EXPECT_EQ(graph->ncells, 5);
    EXPECT_EQ(graph->nislands, 3);
    EXPECT_EQ(to_ints(graph->islandmap, 8), (std::vector<int>{0, 7, 1, 2, 6, 3, 5, 4}));
    EXPECT_EQ(to_ints(graph->cellwgt, 8), (std::vector<int>{10, 12, 13, 15, 17, 16, 14, 11}));
    EXPECT_EQ(to_ints(graph->where, 8), (std::vector<int>{0, 1, 0, 1, 1, 0, 0, 1}));
    EXPECT_EQ(to_ints(graph->adjwgt, 8), (std::vector<int>{2, 3, 3, 7, 6, 0, 0, 0}));
    EXPECT_EQ(pins_of(graph.get()), (Nets{{4, 0}, {1, 2, 3}, {3, 4}}));
    EXPECT_EQ(to_ints(graph->incptr, 6), (std::vector<int>{0, 1, 2, 3, 5, 7}));
    EXPECT_TRUE(hgraph_ok(graph.get(), HG_LISTS | HG_INCIDENCE | HG_WHERE));
}

TEST(Islands, combining_restores_everything_as_if_nothing_had_been_parked)
{
    const HGraphPtr graph = with_islands(), before = with_islands();
    SeparateIslands__(graph.get());
    CombineIslands__(graph.get());
    EXPECT_EQ(graph->ncells, 8);
    EXPECT_EQ(graph->nislands, 0);
    EXPECT_EQ(pins_of(graph.get()), pins_of(before.get()));
    EXPECT_EQ(to_ints(graph->cellwgt, 8), to_ints(before->cellwgt, 8));
    EXPECT_EQ(to_ints(graph->adjwgt, 8), to_ints(before->adjwgt, 8));
    EXPECT_EQ(to_ints(graph->where, 8), to_ints(before->where, 8));
    EXPECT_EQ(to_ints(graph->incptr, 9), to_ints(before->incptr, 9));
    EXPECT_EQ(to_ints(graph->incind, 7), to_ints(before->incind, 7));
    EXPECT_NE(graph->islandmap, nullptr); // freed with the record
}

TEST(Islands, combining_random_hypergraphs_restores_them)
{
    for (unsigned seed = 1; seed <= 50; seed++) {
        const int n = 5 + static_cast<int>(seed), nfixed = static_cast<int>(seed % 4);
        const Nets nets = random_nets(seed, n, n / 4, 4);
        const std::vector<int> cellwgt = random_ints(seed, n, 0, 99);
        const HGraphPtr graph = make_incident(n, nets, {}, cellwgt);
        const HGraphPtr before = make_incident(n, nets, {}, cellwgt);
        const std::vector<int> where = random_ints(seed + 1, n, 0, 1);
        graph->nfixed = nfixed;
        graph->where = new_array(where);
        SeparateIslands__(graph.get());
        EXPECT_TRUE(hgraph_ok(graph.get(), HG_LISTS | HG_INCIDENCE | HG_WHERE));
        CombineIslands__(graph.get());
        EXPECT_EQ(pins_of(graph.get()), nets);
        EXPECT_EQ(to_ints(graph->cellwgt, n), cellwgt);
        EXPECT_EQ(to_ints(graph->where, n), where);
        EXPECT_EQ(to_ints(graph->adjwgt, n), to_ints(before->adjwgt, n));
        EXPECT_EQ(to_ints(graph->incptr, n + 1), to_ints(before->incptr, n + 1));
    }
}

TEST(Islands, a_level_without_islands_is_untouched_and_gets_no_map)
{
    const HGraphPtr graph = make_incident(3, {{2, 0}, {1, 2}});
    SeparateIslands__(graph.get());
    EXPECT_EQ(graph->ncells, 3);
    EXPECT_EQ(graph->nislands, 0);
    EXPECT_EQ(graph->islandmap, nullptr);
    EXPECT_EQ(pins_of(graph.get()), (Nets{{2, 0}, {1, 2}}));
    CombineIslands__(graph.get());
    EXPECT_EQ(graph->ncells, 3);
}

TEST(Islands, fixed_vertices_are_never_parked)
{
    const HGraphPtr graph = make_incident(6, {{2, 4}}, {}, {10, 11, 12, 13, 14, 15});
    graph->nfixed = 2; // both without hyperedges
    SeparateIslands__(graph.get());
    EXPECT_EQ(graph->ncells, 4);
    EXPECT_EQ(graph->nislands, 2);
    EXPECT_EQ(to_ints(graph->cellwgt, 6), (std::vector<int>{10, 11, 12, 14, 15, 13}));
    EXPECT_EQ(to_ints(graph->incptr, 5), (std::vector<int>{0, 0, 0, 1, 2}));
    EXPECT_EQ(pins_of(graph.get()), (Nets{{2, 3}}));
}

TEST(Islands, an_unset_number_of_fixed_vertices_counts_as_none)
{
    const HGraphPtr graph = make_incident(3, {{1, 2}});
    graph->nfixed = -1;
    SeparateIslands__(graph.get());
    EXPECT_EQ(graph->ncells, 2);
    EXPECT_EQ(graph->nislands, 1);
}

TEST(Islands, on_a_coarser_level_the_finer_one_is_renumbered_and_no_map_made)
{
    const HGraphPtr finer = make_incident(4, {{0, 3}}), graph = make_incident(3, {{0, 2}});
    finer->cellmap = new_array({0, 1, 1, 2});
    graph->finer = finer.get();
    SeparateIslands__(graph.get());
    EXPECT_EQ(to_ints(finer->cellmap, 4), (std::vector<int>{0, 2, 2, 1}));
    EXPECT_EQ(graph->islandmap, nullptr);
    EXPECT_EQ(graph->where, nullptr);
}

TEST(Islands, a_hypergraph_may_be_islands_only)
{
    const HGraphPtr graph = make_incident(3, {}, {}, {1, 2, 3});
    graph->where = new_array({0, 0, 0});
    SeparateIslands__(graph.get());
    EXPECT_EQ(graph->ncells, 0);
    EXPECT_EQ(graph->nislands, 3);
    EXPECT_EQ(to_ints(graph->cellwgt, 3), (std::vector<int>{3, 2, 1}));
    CombineIslands__(graph.get());
    EXPECT_EQ(to_ints(graph->cellwgt, 3), (std::vector<int>{1, 2, 3}));
    EXPECT_EQ(to_ints(graph->incptr, 4), (std::vector<int>{0, 0, 0, 0}));
}

/* Sides that islands of these weights take, from these side weights. */
static std::vector<int> sides_of_islands(int w0, int w1, const std::vector<int> &weights)
{
    const int n = static_cast<int>(weights.size());
    const HGraphPtr graph = make_hgraph(n, {}, {}, weights);
    graph->ncells = 0;
    graph->nislands = n;
    graph->where = ismalloc__(weights.size(), 9, "test");
    graph->pwgts[0] = w0;
    graph->pwgts[1] = w1;
    PartitionIslands__(graph.get());
    int sums[2] = {w0, w1};
    for (int v = 0; v < n; v++) sums[graph->where[v]] += weights[static_cast<size_t>(v)];
    EXPECT_EQ(graph->pwgts[0], sums[0]);
    EXPECT_EQ(graph->pwgts[1], sums[1]);
    return to_ints(graph->where, n);
}

TEST(Islands, equal_sides_give_the_island_to_side_1_and_then_they_alternate)
{
    EXPECT_EQ(sides_of_islands(5, 5, {1, 1, 1}), (std::vector<int>{1, 0, 1}));
}

TEST(Islands, each_island_takes_the_lighter_side)
{
    EXPECT_EQ(sides_of_islands(0, 3, {2, 2, 2, 0, 9}), (std::vector<int>{0, 0, 1, 0, 0}));
    EXPECT_EQ(sides_of_islands(9, 0, {4, 4, 4}), (std::vector<int>{1, 1, 1}));
}

TEST(Islands, sides_below_the_islands_are_left_alone)
{
    const HGraphPtr graph = make_incident(4, {{0, 1}}, {}, {5, 5, 1, 1});
    SeparateIslands__(graph.get());
    graph->where = new_array({1, 0, 7, 7});
    graph->pwgts[0] = graph->pwgts[1] = 5;
    PartitionIslands__(graph.get());
    EXPECT_EQ(to_ints(graph->where, 4), (std::vector<int>{1, 0, 1, 0}));
}

/* 120 vertices in one hyperedge of 60 and one of the others. */
static HGraphPtr only_large_hyperedges()
{
    Nets nets(2);
    for (int v = 0; v < 120; v++) nets[v < 60 ? 0 : 1].push_back(v);
    return make_hgraph(120, nets);
}

TEST(Islands, a_vertex_whose_hyperedges_are_all_pruned_is_an_island)
{
    const PartCtrl ctrl = default_ctrl();
    const HGraphPtr graph = only_large_hyperedges();
    CreateIncidentHGraph__(graph.get());
    const HGraphPtr pruned(PruneHGraph__(&ctrl, graph.get()));
    SeparateIslands__(pruned.get());
    EXPECT_EQ(pruned->nislands, 120);
    EXPECT_EQ(pruned->ncells, 0);
}

TEST(Islands, with_large_hyperedges_only_the_island_rule_decides_the_bisection)
{
    PartCtrl ctrl = default_ctrl();
    ctrl.MaxCellWgt = 2;
    const HGraphPtr graph = only_large_hyperedges();
    CreateIncidentHGraph__(graph.get());
    const HGraphPtr pruned(PruneHGraph__(&ctrl, graph.get()));
    EXPECT_EQ(pruned->nnets, 0);
    HGraph *const coarsest = Coarsen__(&ctrl, pruned.get());
    EXPECT_EQ(pruned->nislands, 120);
    EXPECT_EQ(pruned->ncells, 0);
    if (coarsest != pruned.get()) {
        EXPECT_EQ(coarsest->ncells, 0);
        FreeHGraph__(coarsest);
    }
    std::vector<int> part(120);
    const HGraphPtr whole = only_large_hyperedges();
    Hypergraph_Bisection__(&ctrl, whole.get(), part.data());
    EXPECT_EQ(ComputeBalance__(whole.get(), part.data()), 0.5f);
}

TEST(Islands, fixed_vertices_stay_when_all_others_are_islands)
{
    PartCtrl ctrl = default_ctrl();
    const HGraphPtr graph = make_incident(200, {});
    graph->nfixed = 3;
    HGraph *const coarsest = Coarsen__(&ctrl, graph.get());
    EXPECT_EQ(graph->ncells, 3);
    EXPECT_EQ(graph->nislands, 197);
    if (coarsest != graph.get()) FreeHGraph__(coarsest);
}
