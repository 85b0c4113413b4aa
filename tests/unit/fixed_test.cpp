// SPDX-License-Identifier: MIT
/* tests/unit/fixed_test.cpp: pre-assigned vertices. */
#include "partition/fixed.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "partition/recursive.h"
#include "support.h"

/* Compresses the hypergraph under fix into 3 parts; the result hangs from coarser. */
static HGraphPtr compress(const Nets &nets, const std::vector<int> &fix,
                          const std::vector<int> &cellwgt)
{
    PartCtrl ctrl = default_ctrl();
    ctrl.nparts = 3;
    HGraphPtr graph = make_hgraph(static_cast<int>(fix.size()), nets, {}, cellwgt);
    CompressFixedCells__(&ctrl, graph.get(), fix.data());
    EXPECT_TRUE(hgraph_ok(graph->coarser, HG_LISTS));
    return graph;
}

TEST(Fixed, merged_vertices_come_first_and_free_ones_follow_in_order)
{
    const HGraphPtr graph = compress({{0, 1, 4}, {2, 3}}, {-1, 2, 0, -1, 2}, {1, 2, 4, 8, 16});
    const HGraphPtr compressed(graph->coarser);
    EXPECT_EQ(compressed->ncells, 5);
    EXPECT_EQ(to_ints(compressed->cellwgt, 5), (std::vector<int>{4, 0, 18, 1, 8}));
    EXPECT_EQ(to_ints(graph->cellmap, 5), (std::vector<int>{3, 2, 0, 4, 2}));
    EXPECT_EQ(to_ints(graph->mptr, 6), (std::vector<int>{0, 1, 1, 3, 4, 5}));
    EXPECT_EQ(to_ints(graph->mind, 5), (std::vector<int>{2, 1, 4, 0, 3}));
    Nets pins = pins_of(compressed.get());
    std::sort(pins.begin(), pins.end());
    EXPECT_EQ(pins, (Nets{{0, 4}, {2, 3}}));
}

TEST(Fixed, a_hyperedge_within_one_part_disappears)
{
    const HGraphPtr graph = compress({{0, 1}, {1, 2}}, {1, 1, -1}, {1, 1, 1});
    const HGraphPtr compressed(graph->coarser);
    EXPECT_EQ(pins_of(compressed.get()), (Nets{{1, 3}}));
    EXPECT_EQ(compressed->removedwgt, 1);
}

TEST(Fixed, no_fixed_vertex_still_gives_every_part_an_empty_leading_one)
{
    const HGraphPtr graph = compress({{0, 1}}, {-1, -1}, {5, 6});
    const HGraphPtr compressed(graph->coarser);
    EXPECT_EQ(compressed->ncells, 5);
    EXPECT_EQ(to_ints(compressed->cellwgt, 5), (std::vector<int>{0, 0, 0, 5, 6}));
    EXPECT_EQ(pins_of(compressed.get()), (Nets{{3, 4}}));
}

TEST(Fixed, all_vertices_fixed_leave_exactly_a_vertex_a_part)
{
    const HGraphPtr graph = compress({{0, 1, 2, 3}}, {2, 0, 1, 0}, {1, 2, 4, 8});
    const HGraphPtr compressed(graph->coarser);
    EXPECT_EQ(compressed->ncells, 3);
    EXPECT_EQ(to_ints(compressed->cellwgt, 3), (std::vector<int>{10, 4, 1}));
    EXPECT_EQ(pins_of(compressed.get()), (Nets{{0, 1, 2}}));
}

TEST(Fixed, neither_level_keeps_its_incidence)
{
    const HGraphPtr graph = compress({{0, 1}}, {0, -1}, {1, 1});
    const HGraphPtr compressed(graph->coarser);
    for (const HGraph *level : {graph.get(), compressed.get()}) {
        EXPECT_EQ(level->incptr, nullptr);
        EXPECT_EQ(level->incind, nullptr);
        EXPECT_EQ(level->adjwgt, nullptr);
        EXPECT_EQ(level->edgewgt, nullptr);
    }
}

TEST(Fixed, projection_renumbers_the_parts_so_that_merged_vertex_p_is_in_p)
{
    PartCtrl ctrl = default_ctrl();
    ctrl.nparts = 3;
    const HGraphPtr graph = make_hgraph(5, {});
    graph->cellmap = new_array({3, 2, 0, 4, 2});
    const int fpart[] = {1, 2, 0, 2, 1}; // part 1 becomes 0, part 2 becomes 1, part 0 becomes 2
    int part[5];
    ProjectFixedCells__(&ctrl, graph.get(), part, fpart);
    EXPECT_EQ(to_ints(part, 5), (std::vector<int>{1, 2, 0, 0, 2}));
}

/* Partitions with pre-assignments; nothing may be printed, so nothing failed to stay fixed. */
static std::vector<int> partition_fixed(const HGraphPtr &graph, int nparts, std::vector<int> part)
{
    PartCtrl ctrl = default_ctrl();
    ctrl.nparts = nparts;
    ctrl.fixed = 1;
    ctrl.kwayrefine = nparts < KWAY_POLISH_PARTS;
    const std::string trace =
        capture_stdout([&] { MultilevelPartition__(&ctrl, graph.get(), part.data()); });
    EXPECT_EQ(trace, "");
    return part;
}

TEST(Fixed, with_every_vertex_fixed_the_result_is_what_was_given)
{
    for (int nparts : {2, 3, 7, 70}) {
        const std::vector<int> fix = random_ints(1, 90, 0, nparts - 1);
        EXPECT_EQ(partition_fixed(make_hgraph(90, random_nets(2, 90, 100, 5)), nparts, fix), fix);
    }
}

TEST(Fixed, fixed_vertices_keep_their_part_for_any_number_of_parts)
{
    for (int nparts = 2; nparts <= 40; nparts += 3) {
        const unsigned seed = static_cast<unsigned>(nparts);
        std::vector<int> fix = random_ints(seed, 150, -1, nparts - 1);
        for (size_t v = 0; v < fix.size(); v += 2) fix[v] = -1;
        const std::vector<int> part =
            partition_fixed(make_hgraph(150, random_nets(seed, 150, 200, 4)), nparts, fix);
        for (size_t v = 0; v < fix.size(); v++) {
            EXPECT_TRUE(fix[v] == -1 || part[v] == fix[v]) << nparts << " parts, vertex " << v;
            EXPECT_GE(part[v], 0);
            EXPECT_LT(part[v], nparts);
        }
    }
}

TEST(Fixed, two_vertices_of_one_part_fixed_apart_from_a_third_stay_so)
{
    const HGraphPtr graph = make_hgraph(4, {{0, 1}, {1, 2}, {2, 3}});
    EXPECT_EQ(partition_fixed(graph, 2, {1, -1, 1, 0})[0], 1);
    const std::vector<int> swapped =
        partition_fixed(make_hgraph(4, {{0, 1}, {1, 2}, {2, 3}}), 2, {0, -1, 0, 1});
    EXPECT_EQ(swapped[0], 0);
    EXPECT_EQ(swapped[2], 0);
    EXPECT_EQ(swapped[3], 1);
}
