// SPDX-License-Identifier: MIT
/* tests/unit/coarsen_test.cpp: the coarsening drivers. */
#include "coarsen/coarsen.h"

#include "levels.h"
#include "matchings.h"
#include "core/islands.h"
#include "traces.h"

/* Disjoint stars: every matching of pairs merges one leaf a star and level. */
static Level stars(int count, int vertices)
{
    Nets nets;
    for (int i = 0; i < count; i++)
        for (int leaf = 1; leaf < vertices; leaf++)
            nets.push_back({i * vertices, i * vertices + leaf});
    return make_level(count * vertices, nets);
}

static PartCtrl traced_ctrl(int ctype, int coarsento)
{
    PartCtrl ctrl = make_ctrl();
    ctrl.CType = ctype;
    ctrl.CoarsenTo = coarsento;
    ctrl.dbglvl = DBG_COARSEN;
    return ctrl;
}

static std::string coarsen(PartCtrl ctrl, HGraph *graph, bool restricted = false)
{
    srand(7);
    return printed_by([&] { restricted ? CCoarsen__(&ctrl, graph) : Coarsen__(&ctrl, graph); });
}

/* The sizes of the levels, from the statistics lines. */
static Ints sizes(const std::string &trace)
{
    Ints ncells;
    for (const std::string &line : lines_with(trace, "["))
        ncells.push_back(std::stoi(line.substr(1)));
    return ncells;
}

static const std::string RELAXED = "\n" + std::string(35, '-') + "\n";

TEST(Coarsen, level_small_enough_is_returned_unchanged)
{
    for (const bool restricted : {false, true}) {
        const Level level = make_level(5, path_nets(5));
        level->level = 9;
        level->where = restricted ? new_array(Ints(5, 0)) : nullptr;
        PartCtrl ctrl = make_ctrl();
        ctrl.CoarsenTo = 5;
        ctrl.CType = 1;
        HGraph *const coarsest =
            restricted ? CCoarsen__(&ctrl, level.get()) : Coarsen__(&ctrl, level.get());
        EXPECT_EQ(coarsest, level.get());
        EXPECT_EQ(level->level, 0);
        EXPECT_EQ(level->coarser, nullptr);
        EXPECT_EQ(level->cellmap, nullptr);
    }
}

TEST(Coarsen, merging_nothing_is_slow_progress)
{
    const Level level = make_level(20, path_nets(20));
    PartCtrl ctrl = traced_ctrl(CTYPE_EDGE, 5);
    ctrl.MaxCellWgt = 1;
    const std::string trace = coarsen(ctrl, level.get());
    EXPECT_EQ(sizes(trace), (Ints{20, 20}));
    EXPECT_NE(trace.find("\nSlow progress in coarsening. Aborted at 20 nodes\n\n"),
              std::string::npos);
}

TEST(Coarsen, edge_matching_ends_at_the_first_level_above_four_fifths)
{
    const Level level = stars(20, 6); // 120, 100: five sixths
    const std::string trace = coarsen(traced_ctrl(CTYPE_EDGE, 10), level.get());
    EXPECT_EQ(sizes(trace), (Ints{120, 100}));
    EXPECT_EQ(trace.find(RELAXED), std::string::npos);
}

TEST(Coarsen, exactly_four_fifths_is_progress)
{
    const Level level = stars(20, 5); // 100, 80, 60, 40, 20
    const std::string trace = coarsen(traced_ctrl(CTYPE_EDGE, 20), level.get());
    EXPECT_EQ(sizes(trace), (Ints{100, 80, 60, 40, 20}));
    EXPECT_EQ(trace.substr(trace.size() - 2), "\n\n"); // the loop ended by itself
    EXPECT_EQ(trace.find("Slow"), std::string::npos);
}

TEST(Coarsen, hyperedge_schemes_get_a_relaxed_ratio_after_the_first_slow_level)
{
    for (const int ctype : {CTYPE_HEDGE, CTYPE_HEDGE_ONLY, CTYPE_HEDGE_EDGE}) {
        const Level level = stars(20, 7); // 6/7 is slow, 5/6 then is not
        const std::string trace = coarsen(traced_ctrl(ctype, 75), level.get());
        EXPECT_EQ(sizes(trace), (Ints{140, 120, 100, 80, 60}));
        EXPECT_EQ(trace.find(RELAXED), trace.rfind(RELAXED));
        EXPECT_NE(trace.find(RELAXED), std::string::npos);
        EXPECT_EQ(trace.find("Slow"), std::string::npos);
    }
}

TEST(Coarsen, relaxed_ratio_is_86_of_a_hundred)
{
    const Level level = stars(20, 8); // 7/8 is slow; 6/7, or 0.857, then is not
    const std::string trace = coarsen(traced_ctrl(CTYPE_HEDGE, 110), level.get());
    EXPECT_EQ(sizes(trace), (Ints{160, 140, 120, 100}));
    EXPECT_EQ(trace.find("Slow"), std::string::npos);
}

TEST(Coarsen, relaxed_ratio_is_no_more_than_86_of_a_hundred)
{
    /* 29 stars of 239 vertices: 210/239 is slow, and so is 181/210, or 0.8619, even then. */
    Nets nets;
    int n = 0;
    for (int i = 0; i < 29; i++) {
        const int center = n, vertices = i < 7 ? 9 : 8;
        for (int leaf = 1; leaf < vertices; leaf++) nets.push_back({center, center + leaf});
        n += vertices;
    }
    const Level level = make_level(n, nets);
    const std::string trace = coarsen(traced_ctrl(CTYPE_HEDGE, 100), level.get());
    EXPECT_EQ(sizes(trace), (Ints{239, 210, 181}));
    EXPECT_NE(trace.find("Aborted at 181 nodes"), std::string::npos);
}

TEST(Coarsen, second_slow_level_ends_coarsening)
{
    for (const int ctype : {CTYPE_HEDGE, CTYPE_HEDGE_ONLY, CTYPE_HEDGE_EDGE}) {
        const Level level = stars(20, 9); // 8/9, then 7/8 is above 0.86
        const std::string trace = coarsen(traced_ctrl(ctype, 75), level.get());
        EXPECT_EQ(sizes(trace), (Ints{180, 160, 140}));
        EXPECT_NE(trace.find("Aborted at 140 nodes"), std::string::npos);
    }
}

TEST(Coarsen, slow_hyperedge_matching_gives_way_to_pairs)
{
    Nets nets;
    for (int v = 0; v < 30; v += 3) nets.push_back({v, v + 1, v + 2});
    const Level level = make_level(30, nets);
    PartCtrl ctrl = traced_ctrl(CTYPE_HEDGE_ONLY, 25);
    ctrl.MaxCellWgt = 2; // no hyperedge fits whole, every pair does
    EXPECT_EQ(sizes(coarsen(ctrl, level.get())), (Ints{30, 30, 20}));
}

/* The chain that a scheme's matchings make when called one by one. */
static std::vector<Ints> chain_by_hand(HGraph *graph, PartCtrl ctrl, int nlevels,
                                       const std::function<std::string(int)> &scheme)
{
    std::vector<Ints> cellmaps;
    srand(7);
    for (int i = 0; i < nlevels; i++) {
        SeparateIslands__(graph);
        graph = run_matching(scheme(i), &ctrl, graph);
    }
    for (graph = graph->finer; graph != nullptr; graph = graph->finer)
        cellmaps.push_back(to_ints(graph->cellmap, graph->ncells));
    std::reverse(cellmaps.begin(), cellmaps.end());
    return cellmaps;
}

static std::vector<Ints> chain_of(const HGraph *graph)
{
    std::vector<Ints> cellmaps;
    for (; graph->coarser != nullptr; graph = graph->coarser)
        cellmaps.push_back(to_ints(graph->cellmap, graph->ncells));
    return cellmaps;
}

static Level large_level()
{
    Draw draw(11);
    LevelLimits limits;
    limits.mincells = limits.maxcells = 1500;
    limits.heavy = limits.wide = false;
    return random_level(draw, limits);
}

TEST(Coarsen, each_scheme_calls_its_matching)
{
    const struct {
        int ctype;
        const char *matching;
    } rows[] = {{CTYPE_FC, "EdgesStars0"},           {CTYPE_GFC, "EdgesStars1"},
                {CTYPE_HEDGE, "HedgesPHedgesEdges"}, {CTYPE_EDGE, "Edges"},
                {CTYPE_HEDGE_ONLY, "Hedges"},        {CTYPE_HEDGE_EDGE, "HedgesEdges"}};
    for (const auto &row : rows) {
        const Level level = large_level(), twin = large_level();
        PartCtrl ctrl = traced_ctrl(row.ctype, 1400); // one level
        coarsen(ctrl, level.get());
        EXPECT_EQ(chain_of(level.get()),
                  chain_by_hand(twin.get(), ctrl, 1, [&](int) { return row.matching; }))
            << row.matching;
    }
}

TEST(Coarsen, hybrid_scheme_visits_by_strength_on_four_levels_of_each_call)
{
    const auto hybrid = [](int i) { return i < 4 ? "EdgesStars1" : "EdgesStars0"; };
    const auto strength = [](int) { return "EdgesStars1"; };
    const PartCtrl ctrl = traced_ctrl(CTYPE_HFC, 60);
    const Level level = large_level(), twin = large_level(), other = large_level();
    const std::string trace = coarsen(ctrl, level.get());
    const std::vector<Ints> chain = chain_of(level.get());
    const int nlevels = static_cast<int>(chain.size());
    ASSERT_GE(nlevels, 6);
    EXPECT_EQ(trace.find("Slow"), std::string::npos);
    EXPECT_EQ(chain, chain_by_hand(twin.get(), ctrl, nlevels, hybrid));
    EXPECT_NE(chain, chain_by_hand(other.get(), ctrl, nlevels, strength));
    const Level again = large_level(); // a second call counts anew
    coarsen(ctrl, again.get());
    EXPECT_EQ(chain_of(again.get()), chain);
}

TEST(Coarsen, unknown_scheme_ends_the_process)
{
    const Level level = make_level(5, path_nets(5));
    level->where = new_array(Ints(5, 0));
    for (const int ctype : {0, 8, -1}) {
        PartCtrl ctrl = traced_ctrl(ctype, 2);
        ctrl.dbglvl = 0;
        EXPECT_EXIT(Coarsen__(&ctrl, level.get()), testing::ExitedWithCode(0),
                    "Unknown matching type! " + std::to_string(ctype));
    }
    for (const int ctype : {2, -1, 5}) {
        PartCtrl ctrl = traced_ctrl(ctype, 2);
        ctrl.dbglvl = 0;
        EXPECT_EXIT(CCoarsen__(&ctrl, level.get()), testing::ExitedWithCode(0),
                    "Unknown matching type! " + std::to_string(ctype));
    }
    PartCtrl small = traced_ctrl(8, 5); // not asked for a matching, no complaint
    small.dbglvl = 0;
    EXPECT_EQ(Coarsen__(&small, level.get()), level.get());
}

TEST(Coarsen, trace_tells_the_statistics_of_each_level)
{
    const Level level = make_level(4, {{1, 2, 0, 3}, {0, 3}}, {3, 4});
    level->removedwgt = 5;
    PartCtrl ctrl = traced_ctrl(CTYPE_EDGE, 3);
    EXPECT_EQ(coarsen(ctrl, level.get()),
              "----------------------------------------------------------\n"
              "[     4      2   1.50   3.00   0.50   0.25,      7      5     12   1.75]\n"
              "[     2      1   1.00   2.00   0.50   0.00,      3      9     12   1.50]\n"
              "\n");
    EXPECT_EQ(level->coarser->level, 1);
}

TEST(Coarsen, large_nets_have_four_pins_and_more)
{
    const Ints netptr = {0, 3, 7, 7, 12};
    EXPECT_EQ(NumOfLargeNets__(4, netptr.data()), 2);
    EXPECT_EQ(NumOfLargeNets__(0, netptr.data()), 0);
}

TEST(Coarsen, islands_are_parked_before_each_level_is_matched)
{
    const Level level = make_level(12, path_nets(8));
    PartCtrl ctrl = traced_ctrl(CTYPE_EDGE, 3);
    coarsen(ctrl, level.get());
    EXPECT_EQ(level->nislands, 4);
    EXPECT_EQ(level->coarser->ncells, 4);
}

TEST(RestrictedCoarsen, partition_moves_down_to_the_coarsest_level)
{
    Draw draw(3);
    for (const int ctype : {RESTRICTED_STARS, RESTRICTED_EDGES}) {
        LevelLimits limits;
        limits.mincells = limits.maxcells = 300;
        limits.islands = false;
        const Level level = random_level(draw, limits);
        const Ints parts = random_parts(draw, 300, 3);
        level->where = new_array(parts);
        coarsen(traced_ctrl(ctype, 40), level.get(), true);
        for (int v = 0; v < 300; v++) {
            int c = v;
            const HGraph *graph = level.get();
            for (; graph->coarser != nullptr; graph = graph->coarser) {
                EXPECT_EQ(graph->where, nullptr);
                EXPECT_EQ(graph->cutnets, nullptr);
                c = graph->cellmap[c];
            }
            EXPECT_EQ(graph->where[c], parts[at(v)]);
            EXPECT_EQ(graph->cutnets, nullptr);
        }
    }
}

TEST(RestrictedCoarsen, all_hyperedges_may_vanish)
{
    Nets pairs;
    for (int v = 0; v < 80; v += 2) pairs.push_back({v, v + 1});
    const Level level = make_level(80, pairs);
    level->where = new_array(Ints(80, 0));
    coarsen(traced_ctrl(RESTRICTED_EDGES, 10), level.get(), true);
    ASSERT_NE(level->coarser, nullptr);
    EXPECT_EQ(level->coarser->nnets, 0);
    EXPECT_EQ(level->coarser->removedwgt, 40);
}

TEST(RestrictedCoarsen, first_slow_level_is_the_last)
{
    for (const int ctype : {RESTRICTED_STARS, RESTRICTED_EDGES}) {
        const Level level = stars(20, 6);
        level->where = new_array(Ints(120, 0));
        PartCtrl ctrl = traced_ctrl(ctype, 10);
        ctrl.MaxCellWgt = 2; // stars of two: one leaf each
        const std::string trace = coarsen(ctrl, level.get(), true);
        EXPECT_EQ(sizes(trace), (Ints{120, 100}));
        EXPECT_NE(trace.find("Aborted at 100 nodes"), std::string::npos);
        EXPECT_EQ(trace.find(RELAXED), std::string::npos);
    }
}

TEST(RestrictedCoarsen, trace_closes_with_an_empty_line)
{
    const Level level = stars(20, 4);
    level->where = new_array(Ints(80, 1));
    const std::string trace = coarsen(traced_ctrl(RESTRICTED_EDGES, 20), level.get(), true);
    EXPECT_EQ(sizes(trace), (Ints{80, 60, 40, 20}));
    EXPECT_EQ(trace.substr(trace.size() - 2), "\n\n");
}

TEST(RestrictedCoarsen, large_hyperedges_merge_nobody_though_they_do_elsewhere)
{
    Ints all(30);
    std::iota(all.begin(), all.end(), 0);
    PartCtrl ctrl = traced_ctrl(RESTRICTED_EDGES, 10);
    ctrl.maxnetsize = 29;
    const Level restricted = make_level(30, {all}), free = make_level(30, {all});
    restricted->where = new_array(Ints(30, 0));
    EXPECT_EQ(sizes(coarsen(ctrl, restricted.get(), true)), (Ints{30, 30}));
    ctrl.CType = CTYPE_EDGE;
    EXPECT_EQ(sizes(coarsen(ctrl, free.get())), (Ints{30, 15, 8}));
}
