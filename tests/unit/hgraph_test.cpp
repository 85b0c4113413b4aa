// SPDX-License-Identifier: MIT
/* tests/unit/hgraph_test.cpp: the hypergraph record, its derived arrays and its checker. */
#include "core/hgraph.h"

#include <gtest/gtest.h>

#include <cmath>

#include "broken.h"
#include "spare/hooks.h"
#include "support.h"

static std::vector<int> hyperedges_of(const HGraph *graph, int v)
{
    return std::vector<int>(graph->incind + graph->incptr[v], graph->incind + graph->incptr[v + 1]);
}

/* Gives the record every array that it can own. */
static void allocate_all(HGraph *graph)
{
    for (int **array :
         {&graph->incptr, &graph->incind, &graph->netptr, &graph->netind, &graph->islandmap,
          &graph->cellwgt, &graph->netwgt, &graph->adjwgt, &graph->cellmap, &graph->netmap,
          &graph->mptr, &graph->mind, &graph->where, &graph->gain, &graph->ndeg[0], &graph->ndeg[1],
          &graph->kpwgts, &graph->kplace})
        *array = imalloc__(1, "test");
    graph->edgewgt = fmalloc__(1, "test");
    graph->nrinfo = alloc_array<NetKwayInfo>(1, "test");
    graph->crinfo = alloc_array<CellKwayInfo>(1, "test");
    graph->nrdata = alloc_array<KwayPartDeg>(1, "test");
    graph->crdata = alloc_array<KwayPartDeg>(1, "test");
}

TEST(HGraph, a_new_record_has_unknown_counts_no_arrays_and_cut_0)
{
    const HGraphPtr graph(CreateHGraph__());
    EXPECT_EQ(graph->ncells, -1);
    EXPECT_EQ(graph->nnets, -1);
    EXPECT_EQ(graph->nfixed, -1);
    EXPECT_EQ(graph->level, -1);
    EXPECT_EQ(graph->pwgts[0], -1);
    EXPECT_EQ(graph->pwgts[1], -1);
    for (int zero : {graph->nislands, graph->removedwgt, graph->keep, graph->mincut, graph->objval,
                     graph->minsoed})
        EXPECT_EQ(zero, 0);
    for (const void *array :
         {static_cast<void *>(graph->incptr),    static_cast<void *>(graph->incind),
          static_cast<void *>(graph->netptr),    static_cast<void *>(graph->netind),
          static_cast<void *>(graph->islandmap), static_cast<void *>(graph->cellwgt),
          static_cast<void *>(graph->netwgt),    static_cast<void *>(graph->adjwgt),
          static_cast<void *>(graph->edgewgt),   static_cast<void *>(graph->label),
          static_cast<void *>(graph->cellmap),   static_cast<void *>(graph->netmap),
          static_cast<void *>(graph->mptr),      static_cast<void *>(graph->mind),
          static_cast<void *>(graph->coarser),   static_cast<void *>(graph->finer),
          static_cast<void *>(graph->where),     static_cast<void *>(graph->gain),
          static_cast<void *>(graph->ndeg[0]),   static_cast<void *>(graph->ndeg[1]),
          static_cast<void *>(graph->nrinfo),    static_cast<void *>(graph->crinfo),
          static_cast<void *>(graph->nrdata),    static_cast<void *>(graph->crdata),
          static_cast<void *>(graph->kpwgts),    static_cast<void *>(graph->kplace)})
        EXPECT_EQ(array, nullptr);
    EXPECT_EQ(graph->cutnets, nullptr);
}

TEST(HGraph, initialising_again_clears_a_used_record)
{
    HGraph graph;
    graph.nislands = graph.mincut = graph.removedwgt = 5;
    graph.where = &graph.mincut;
    InitHGraph__(&graph);
    EXPECT_EQ(graph.nislands, 0);
    EXPECT_EQ(graph.mincut, 0);
    EXPECT_EQ(graph.removedwgt, 0);
    EXPECT_EQ(graph.where, nullptr);
    EXPECT_EQ(graph.ncells, -1);
}

TEST(HGraph, freeing_a_record_takes_every_array_but_label_and_does_not_follow_coarser)
{
    HGraph *const graph = CreateHGraph__(), *const coarser = CreateHGraph__();
    allocate_all(graph); // a leak checker sees what is left over
    int *const label = imalloc__(1, "test");
    graph->label = label;
    graph->coarser = coarser;
    FreeHGraph__(graph);
    *label = 4;
    EXPECT_EQ(coarser->ncells, -1);
    free(label);
    FreeHGraph__(coarser);
}

TEST(HGraph, cleaning_the_root_keeps_lists_incidence_and_weights)
{
    const HGraphPtr graph(CreateHGraph__());
    allocate_all(graph.get());
    FreeRootHGraph__(graph.get());
    for (const int *kept : {graph->incptr, graph->incind, graph->netptr, graph->netind,
                            graph->cellwgt, graph->netwgt, graph->adjwgt})
        EXPECT_NE(kept, nullptr);
    EXPECT_NE(graph->edgewgt, nullptr);
    for (const int *gone :
         {graph->cellmap, graph->netmap, graph->mptr, graph->mind, graph->gain, graph->ndeg[0],
          graph->ndeg[1], graph->islandmap, graph->where, graph->kpwgts, graph->kplace})
        EXPECT_EQ(gone, nullptr);
    EXPECT_EQ(graph->nrinfo, nullptr);
    EXPECT_EQ(graph->crinfo, nullptr);
    EXPECT_EQ(graph->nrdata, nullptr);
    EXPECT_EQ(graph->crdata, nullptr);
}

TEST(HGraph, a_cycle_leaves_where_and_the_kway_arrays)
{
    const HGraphPtr graph(CreateHGraph__());
    allocate_all(graph.get());
    free_cycle_arrays(graph.get());
    for (const int *gone : {graph->cellmap, graph->netmap, graph->mptr, graph->mind, graph->gain,
                            graph->ndeg[0], graph->ndeg[1], graph->islandmap})
        EXPECT_EQ(gone, nullptr);
    EXPECT_NE(graph->where, nullptr);
    EXPECT_NE(graph->kpwgts, nullptr);
    EXPECT_NE(graph->nrinfo, nullptr);
}

TEST(HGraph, freeing_the_kway_arrays_leaves_where_and_the_bisection_arrays)
{
    const HGraphPtr graph(CreateHGraph__());
    allocate_all(graph.get());
    free_kway_arrays(graph.get());
    EXPECT_EQ(graph->nrinfo, nullptr);
    EXPECT_EQ(graph->crinfo, nullptr);
    EXPECT_EQ(graph->nrdata, nullptr);
    EXPECT_EQ(graph->crdata, nullptr);
    EXPECT_EQ(graph->kpwgts, nullptr);
    EXPECT_EQ(graph->islandmap, nullptr);
    EXPECT_NE(graph->where, nullptr);
    EXPECT_NE(graph->gain, nullptr);
}

TEST(HGraph, each_vertex_lists_its_hyperedges_once_and_in_increasing_order)
{
    const HGraphPtr graph = make_incident(4, {{2, 0}, {1, 2, 0}, {2, 1}}, {5, 7, 11});
    EXPECT_EQ(hyperedges_of(graph.get(), 0), (std::vector<int>{0, 1}));
    EXPECT_EQ(hyperedges_of(graph.get(), 1), (std::vector<int>{1, 2}));
    EXPECT_EQ(hyperedges_of(graph.get(), 2), (std::vector<int>{0, 1, 2}));
    EXPECT_EQ(to_ints(graph->incptr, 5), (std::vector<int>{0, 2, 4, 7, 7}));
    EXPECT_EQ(to_ints(graph->adjwgt, 4), (std::vector<int>{12, 18, 23, 0}));
}

TEST(HGraph, a_vertex_in_no_hyperedge_has_an_empty_list_and_adjacent_weight_0)
{
    const HGraphPtr graph = make_incident(3, {{0, 2}}, {9});
    EXPECT_EQ(hyperedges_of(graph.get(), 1), std::vector<int>{});
    EXPECT_EQ(graph->adjwgt[1], 0);
}

TEST(HGraph, a_hypergraph_without_hyperedges_has_empty_incidence)
{
    const HGraphPtr graph = make_incident(3, {});
    EXPECT_EQ(to_ints(graph->incptr, 4), (std::vector<int>{0, 0, 0, 0}));
    EXPECT_EQ(graph->incind, nullptr);
    EXPECT_EQ(to_ints(graph->adjwgt, 3), (std::vector<int>{0, 0, 0}));
    EXPECT_TRUE(hgraph_ok(graph.get(), HG_LISTS | HG_INCIDENCE));
}

TEST(HGraph, the_edge_weight_is_the_weight_over_size_less_one_in_single_precision)
{
    const HGraphPtr graph =
        make_incident(5, {{0, 1}, {0, 1, 2, 3}, {4}, {0, 1, 2, 3}}, {7, 2, 3, 1});
    EXPECT_EQ(graph->edgewgt[0], 7.0f);
    EXPECT_EQ(graph->edgewgt[1], static_cast<float>(2.0 / 3));
    EXPECT_TRUE(std::isinf(graph->edgewgt[2]));
    EXPECT_GT(graph->edgewgt[2], 0);
    EXPECT_EQ(graph->edgewgt[3], static_cast<float>(1.0 / 3));
    /* 16777217 does not fit a single, so dividing in single would round twice */
    EXPECT_EQ(edge_weight(50331651, 4), static_cast<float>(50331651.0 / 3));
}

TEST(HGraph, the_first_pin_in_another_part_is_found_wherever_it_stands)
{
    for (int size = 0; size <= 6; size++) {
        std::vector<int> pins(static_cast<size_t>(size));
        for (int j = 0; j < size; j++) pins[static_cast<size_t>(j)] = j;
        const HGraphPtr graph = make_hgraph(7, {{6}, pins, {6, 0}});
        for (int other = 1; other <= size; other++) { // size: none
            std::vector<int> where(7, 3);
            for (int v = other; v < size; v++) where[static_cast<size_t>(v)] = v == other ? 1 : 3;
            EXPECT_EQ(end_of_part(graph.get(), where.data(), 1), 1 + other);
            bool cutnets[] = {true, other == size, true};
            mark_cut_nets(graph.get(), where.data(), cutnets);
            EXPECT_FALSE(cutnets[0]);
            EXPECT_EQ(cutnets[1], other < size);
            EXPECT_FALSE(cutnets[2]);
        }
    }
    const HGraphPtr graph = make_hgraph(1, {{}});
    const int where[] = {0};
    EXPECT_EQ(end_of_part(graph.get(), where, 0), 0);
    bool cut = true;
    mark_cut_nets(graph.get(), where, &cut);
    EXPECT_FALSE(cut);
}

TEST(HGraph, adjacent_weights_reach_the_largest_total)
{
    const HGraphPtr graph = make_incident(2, {{0, 1}, {0, 1}}, {2147483645, 1});
    EXPECT_EQ(graph->adjwgt[0], 2147483646);
}

static int max_cell_weight(std::vector<int> cellwgt, int coarsento, int *heavy)
{
    PartCtrl ctrl = {};
    ctrl.CoarsenTo = coarsento;
    ctrl.heavycells = -1;
    const int result = ComputeMaxCellWgt__(&ctrl, static_cast<int>(cellwgt.size()), cellwgt.data());
    *heavy = ctrl.heavycells;
    return result;
}

TEST(HGraph, with_equal_weights_no_vertex_is_heavy_and_the_limit_is_twice_the_average_of_coarsest)
{
    int heavy;
    EXPECT_EQ(max_cell_weight(std::vector<int>(1000, 3), 100, &heavy), 60);
    EXPECT_EQ(heavy, 0);
}

TEST(HGraph, heavy_vertices_are_left_out_of_the_limit)
{
    std::vector<int> weights(100, 10);
    weights[17] = 5000;
    int heavy; // total 5990, limit 119; without the heavy one 2 x 990 / 99
    EXPECT_EQ(max_cell_weight(weights, 100, &heavy), 20);
    EXPECT_EQ(heavy, 1);
}

TEST(HGraph, a_vertex_of_exactly_the_limit_is_not_heavy)
{
    int heavy; // total 100, limit 2 x 100 / 10 = 20
    EXPECT_EQ(max_cell_weight({20, 20, 20, 20, 20}, 10, &heavy), 20);
    EXPECT_EQ(heavy, 0);
    EXPECT_EQ(max_cell_weight({21, 20, 20, 20, 19}, 10, &heavy), 2 * 79 / 9);
    EXPECT_EQ(heavy, 1);
}

TEST(HGraph, twice_a_total_beyond_32_bits_is_not_wrapped)
{
    int heavy;
    EXPECT_EQ(max_cell_weight({2147483646}, 100, &heavy), 0);
    EXPECT_EQ(heavy, 1);
    EXPECT_EQ(max_cell_weight(std::vector<int>(200, 10737418), 100, &heavy), 42949672);
    EXPECT_EQ(heavy, 0);
}

TEST(HGraph, no_vertices_give_limit_0_and_no_heavy_one)
{
    int heavy;
    EXPECT_EQ(max_cell_weight({}, 100, &heavy), 0);
    EXPECT_EQ(heavy, 0);
}

/* A bisected hypergraph in which every stage holds: sides 0 0 1 1 1, hyperedges 1 and 2 cut. */
static HGraphPtr bisected()
{
    HGraphPtr graph = make_incident(5, {{0, 1}, {1, 2, 3}, {0, 4}, {2, 3, 4}}, {3, 5, 7, 2},
                                    {10, 20, 30, 40, 50});
    graph->where = new_array({0, 0, 1, 1, 1});
    graph->ndeg[0] = new_array({2, 1, 1, 0});
    graph->ndeg[1] = new_array({0, 2, 1, 3});
    graph->gain = new_array({7 - 3, 5 - 3, -2, -2, 7 - 2});
    graph->mincut = 12;
    graph->pwgts[0] = 30;
    graph->pwgts[1] = 120;
    return graph;
}

constexpr int EVERY_STAGE = HG_LISTS | HG_INCIDENCE | HG_WHERE | HG_GAINS;

TEST(HGraph, a_sound_record_passes_every_stage)
{
    EXPECT_TRUE(hgraph_ok(bisected().get(), EVERY_STAGE));
    EXPECT_TRUE(hgraph_ok(make_hgraph(2, {}).get(), HG_LISTS));
    EXPECT_TRUE(hgraph_ok(make_incident(2, {{}, {1}}).get(), HG_LISTS | HG_INCIDENCE));
}

/* The invariant that is broken by the change, at this stage; none is before. */
template <class Change> static std::string sees(int stage, Change change)
{
    const HGraphPtr graph = bisected();
    EXPECT_TRUE(hgraph_ok(graph.get(), EVERY_STAGE));
    change(graph.get());
    return broken_rule([&] { return hgraph_ok(graph.get(), stage); });
}

TEST(HGraph, the_checker_sees_damaged_lists)
{
    EXPECT_EQ(sees(HG_LISTS, [](HGraph *g) { g->netptr[0] = 1; }), "H1");
    EXPECT_EQ(sees(HG_LISTS, [](HGraph *g) { g->netptr[2] = 1; }), "H1"); // falls
    EXPECT_EQ(sees(HG_LISTS, [](HGraph *g) { g->netind[1] = 0; }), "H1"); // twice in one
    EXPECT_EQ(sees(HG_LISTS, [](HGraph *g) { g->netind[4] = 5; }), "H1"); // beyond the last
    EXPECT_EQ(sees(HG_LISTS, [](HGraph *g) { g->netind[4] = -1; }), "H1");
    EXPECT_EQ(sees(HG_LISTS, [](HGraph *g) { g->ncells = -1; }), "H1");
    EXPECT_EQ(sees(HG_LISTS, [](HGraph *g) { g->nnets = -1; }), "H1");
    EXPECT_EQ(sees(HG_LISTS, [](HGraph *g) { g->nislands = -1; }), "H1");
    EXPECT_EQ(sees(HG_LISTS, [](HGraph *g) { g->ncells = 4; }), "H1"); // vertex 4 is listed
    EXPECT_EQ(sees(HG_LISTS, [](HGraph *g) { QXfree__(&g->netptr, LTERM); }), "H1");
}

TEST(HGraph, the_checker_sees_damaged_incidence)
{
    EXPECT_EQ(sees(HG_INCIDENCE, [](HGraph *g) { g->incptr[0] = 1; }), "H2");
    EXPECT_EQ(sees(HG_INCIDENCE, [](HGraph *g) { g->incptr[2]++; }), "H2");
    EXPECT_EQ(sees(HG_INCIDENCE, [](HGraph *g) { g->incptr[2]--; }), "H2");
    EXPECT_EQ(sees(HG_INCIDENCE, [](HGraph *g) { g->incptr[5]--; }), "H2");
    EXPECT_EQ(sees(HG_INCIDENCE, [](HGraph *g) { g->incind[0] = 1; }), "H2"); // not its hyperedge
    EXPECT_EQ(sees(HG_INCIDENCE, [](HGraph *g) { g->incind[0] = 2; }), "H2"); // the same one twice
    EXPECT_EQ(sees(HG_INCIDENCE, [](HGraph *g) { g->incind[0] = 4; }), "H2"); // no hyperedge
    EXPECT_EQ(sees(HG_INCIDENCE, [](HGraph *g) { g->incind[0] = -1; }), "H2");
    EXPECT_EQ(sees(HG_INCIDENCE, [](HGraph *g) { g->adjwgt[3]++; }), "H3");
    EXPECT_EQ(sees(HG_INCIDENCE, [](HGraph *g) { g->edgewgt[3] = 2.0f; }), "H4");
    EXPECT_EQ(sees(HG_INCIDENCE, [](HGraph *g) { g->netwgt[1]++; }), "H3");
}

TEST(HGraph, the_checker_sees_sides_that_are_neither_0_nor_1)
{
    EXPECT_EQ(sees(HG_WHERE, [](HGraph *g) { g->where[4] = 2; }), "H5");
    EXPECT_EQ(sees(HG_WHERE, [](HGraph *g) { g->where[0] = -1; }), "H5");
}

TEST(HGraph, the_checker_sees_stale_refinement_figures)
{
    EXPECT_EQ(sees(HG_GAINS, [](HGraph *g) { g->where[2] = 0; }), "H6");
    EXPECT_EQ(sees(HG_GAINS, [](HGraph *g) { g->ndeg[0][1]++; }), "H6");
    EXPECT_EQ(sees(HG_GAINS, [](HGraph *g) { g->ndeg[1][3]--; }), "H6");
    EXPECT_EQ(sees(HG_GAINS, [](HGraph *g) { g->mincut--; }), "H6");
    EXPECT_EQ(sees(HG_GAINS, [](HGraph *g) { g->pwgts[0]++; }), "H6");
    EXPECT_EQ(sees(HG_GAINS, [](HGraph *g) { g->pwgts[1]--; }), "H6");
    for (int v = 0; v < 5; v++)
        EXPECT_EQ(sees(HG_GAINS, [v](HGraph *g) { g->gain[v]--; }), "H6") << "vertex " << v;
}

TEST(HGraph, hooks_leave_the_record_as_it_is)
{
    const HGraphPtr graph = bisected();
    EXPECT_EQ(CheckDegrees(graph.get()), 1);
    EXPECT_EQ(CheckHGraph(graph.get()), 1);
    EXPECT_EQ(CheckHeap(nullptr), 1);
    EXPECT_EQ(ComputeCut__(graph.get()), graph->mincut);
    EXPECT_EQ(broken_rule([&] { return hgraph_ok(graph.get(), EVERY_STAGE); }), "");
    graph->netind[1] = 0; // a breakpoint in the hook would show it
    EXPECT_EQ(CheckHGraph(graph.get()), 1);
}

/* Moves past such a hyperedge leave it out or in, so that nothing is known of this gain. */
TEST(HGraph, a_hyperedge_of_one_pin_leaves_the_gain_of_its_vertex_open)
{
    const HGraphPtr graph = make_incident(2, {{0, 1}, {1}}, {3, 5}, {10, 20});
    graph->where = new_array({0, 1});
    graph->ndeg[0] = new_array({1, 0});
    graph->ndeg[1] = new_array({1, 1});
    graph->gain = new_array({3, 77});
    graph->mincut = 3;
    graph->pwgts[0] = 10;
    graph->pwgts[1] = 20;
    EXPECT_EQ(broken_rule([&] { return hgraph_ok(graph.get(), EVERY_STAGE); }), "");
    graph->gain[0] = 4;
    EXPECT_EQ(broken_rule([&] { return hgraph_ok(graph.get(), EVERY_STAGE); }), "H6");
}

TEST(HGraph, the_checker_looks_only_at_the_stages_it_is_asked_for)
{
    EXPECT_EQ(sees(HG_LISTS, [](HGraph *g) { g->adjwgt[0]++; }), "");
    EXPECT_EQ(sees(HG_LISTS | HG_INCIDENCE, [](HGraph *g) { g->where[0] = 9; }), "");
    EXPECT_EQ(sees(HG_LISTS | HG_INCIDENCE | HG_WHERE, [](HGraph *g) { g->mincut++; }), "");
    EXPECT_EQ(sees(0, [](HGraph *g) { g->ncells = -1; }), "");
}
