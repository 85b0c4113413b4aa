// SPDX-License-Identifier: MIT
/* tests/unit/bisection_test.cpp: one multilevel bisection and its measures. */
#include "partition/bisection.h"

#include <gtest/gtest.h>

#include "support.h"

TEST(Bisection, the_cut_counts_hyperedges_with_vertices_in_several_parts_once)
{
    const HGraphPtr graph =
        make_hgraph(5, {{0, 1}, {1, 2}, {0, 3, 4}, {4}, {}, {2, 3, 1, 4}}, {1, 2, 4, 8, 16, 32});
    const int two[] = {0, 0, 1, 1, 1}, four[] = {0, 1, 2, 3, 3}, one[] = {6, 6, 6, 6, 6};
    EXPECT_EQ(ComputeActualCut__(graph.get(), two), 2 + 4 + 32);
    EXPECT_EQ(ComputeActualCut__(graph.get(), four), 1 + 2 + 4 + 32);
    EXPECT_EQ(ComputeActualCut__(graph.get(), one), 0);
}

TEST(Bisection, the_balance_is_the_share_of_the_lighter_side)
{
    const HGraphPtr graph = make_hgraph(3, {}, {}, {1, 2, 5});
    const int light_0[] = {0, 0, 1}, light_1[] = {1, 0, 0}, all[] = {1, 1, 1};
    EXPECT_EQ(ComputeBalance__(graph.get(), light_0), 0.375f);
    EXPECT_EQ(ComputeBalance__(graph.get(), light_1), 0.125f);
    EXPECT_EQ(ComputeBalance__(graph.get(), all), 0.0f);
    const HGraphPtr thirds = make_hgraph(3, {});
    EXPECT_EQ(ComputeBalance__(thirds.get(), light_0), static_cast<float>(1.0 / 3));
}

TEST(Bisection, the_balance_of_a_total_near_32_bits_is_exact)
{
    const HGraphPtr graph = make_hgraph(2, {}, {}, {1073741823, 1073741823});
    const int where[] = {0, 1};
    EXPECT_EQ(ComputeBalance__(graph.get(), where), 0.5f);
}

struct Bisected {
    std::vector<int> part;
    int cut;
    std::string trace;
};

static Bisected bisect(PartCtrl ctrl, HGraph *graph)
{
    Bisected result = {std::vector<int>(static_cast<size_t>(graph->ncells), -1), -1, ""};
    result.trace = capture_stdout(
        [&] { result.cut = Hypergraph_Bisection__(&ctrl, graph, result.part.data()); });
    EXPECT_EQ(result.cut, ComputeActualCut__(graph, result.part.data()));
    EXPECT_EQ(result.trace.find("Wrong cut!"), std::string::npos);
    for (int side : result.part) EXPECT_TRUE(side == 0 || side == 1);
    return result;
}

static HGraphPtr of_300(unsigned seed)
{
    return make_hgraph(300, random_nets(seed, 300, 400, 5), random_ints(seed, 400, 1, 4));
}

TEST(Bisection, the_returned_cut_is_the_cut_of_the_returned_part_under_every_vcycle_mode)
{
    PartCtrl ctrl = default_ctrl();
    ctrl.Nruns = 4;
    for (int mode = VCYCLE_NO; mode <= VCYCLE_ALL; mode++) {
        ctrl.VCycle = mode;
        const HGraphPtr graph = of_300(1);
        const Bisected result = bisect(ctrl, graph.get());
        EXPECT_GE(ComputeBalance__(graph.get(), result.part.data()), 0.445f);
    }
}

TEST(Bisection, it_is_seeded_anew_each_time)
{
    PartCtrl ctrl = default_ctrl();
    const HGraphPtr first = of_300(2), second = of_300(2);
    srand(1);
    const Bisected one = bisect(ctrl, first.get());
    srand(2);
    const Bisected two = bisect(ctrl, second.get());
    EXPECT_EQ(one.part, two.part);
    EXPECT_EQ(one.cut, two.cut);
}

TEST(Bisection, a_target_share_other_than_half_is_followed)
{
    PartCtrl ctrl = default_ctrl();
    ctrl.splitratio = 0.25f;
    const HGraphPtr graph = of_300(3);
    const Bisected result = bisect(ctrl, graph.get());
    int w0 = 0;
    for (int side : result.part) w0 += side == 0;
    EXPECT_NEAR(w0, 75, 16);
}

TEST(Bisection, large_hyperedges_count_in_the_cut_though_they_are_pruned)
{
    Nets nets = random_nets(4, 120, 150, 4);
    nets.emplace_back();
    for (int v = 0; v < 120; v++) nets.back().push_back(v); // cut whatever happens
    std::vector<int> netwgt(151, 1);
    netwgt[150] = 100000;
    PartCtrl ctrl = default_ctrl();
    ctrl.dbglvl = DBG_DETAIL;
    const HGraphPtr graph = make_hgraph(120, nets, netwgt);
    const Bisected result = bisect(ctrl, graph.get());
    EXPECT_GE(result.cut, 100000);
    int pruned_cut, whole, refined;
    const size_t line = result.trace.find("    Cut of trial    0:");
    ASSERT_EQ(sscanf(result.trace.c_str() + line, "    Cut of trial    0:\t %d [%d, %d]",
                     &pruned_cut, &whole, &refined),
              3)
        << result.trace;
    EXPECT_EQ(whole, pruned_cut + 100000);
    EXPECT_LE(refined, whole);
    EXPECT_EQ(result.cut, refined);
}

TEST(Bisection, without_large_hyperedges_the_run_is_taken_over_unchanged)
{
    PartCtrl ctrl = default_ctrl();
    ctrl.dbglvl = DBG_DETAIL;
    const HGraphPtr graph = of_300(5);
    const Bisected result = bisect(ctrl, graph.get());
    int cut;
    float balance;
    const size_t line = result.trace.find("    Cut of trial    0:");
    ASSERT_EQ(
        sscanf(result.trace.c_str() + line, "    Cut of trial    0:\t %d  [%f]\n", &cut, &balance),
        2)
        << result.trace;
    EXPECT_EQ(result.cut, cut);
}

TEST(Bisection, the_header_and_the_summary_stand_line_by_line)
{
    PartCtrl ctrl = default_ctrl();
    ctrl.dbglvl = DBG_BISECTION;
    const HGraphPtr graph = make_hgraph(4, {{0, 1}, {1, 2}, {2, 3}});
    EXPECT_EQ(bisect(ctrl, graph.get()).trace,
              "\n  Bisecting a hgraph of size [vertices=4, hedges=3, balance=0.50]\n"
              "    The mincut for this bisection = 1, (average = 1.0) (balance = 0.50)\n");
}

TEST(Bisection, a_run_is_one_line_under_its_bit)
{
    PartCtrl ctrl = default_ctrl();
    ctrl.dbglvl = DBG_RUN;
    ctrl.Nruns = 2;
    const HGraphPtr graph = make_hgraph(4, {{0, 1}, {1, 2}, {2, 3}});
    EXPECT_EQ(bisect(ctrl, graph.get()).trace, "    Cut of trial    0:\t      1 [0.50]\n"
                                               "    Cut of trial    1:\t      1 [0.50]\n");
}

/* V-cycle loops that the trace shows. */
static int vcycle_loops(int nruns, int mode)
{
    PartCtrl ctrl = default_ctrl();
    ctrl.Nruns = nruns;
    ctrl.VCycle = mode;
    ctrl.dbglvl = DBG_DETAIL;
    const HGraphPtr graph = of_300(6);
    return count_lines_with(bisect(ctrl, graph.get()).trace, "          [");
}

TEST(Bisection, up_to_ten_runs_keep_one_candidate_and_more_keep_three)
{
    EXPECT_EQ(vcycle_loops(1, VCYCLE_END), 1);
    EXPECT_EQ(vcycle_loops(10, VCYCLE_END), 1);
    EXPECT_EQ(vcycle_loops(11, VCYCLE_END), 3);
    EXPECT_EQ(vcycle_loops(3, VCYCLE_NO), 0);
}

TEST(Bisection, every_option_is_as_before_at_the_end)
{
    PartCtrl ctrl = default_ctrl();
    ctrl.Nruns = 2; // the second run of HFC is made with FC
    ctrl.VCycle = VCYCLE_ALL;
    std::vector<int> part(300);
    const HGraphPtr graph = of_300(7);
    Hypergraph_Bisection__(&ctrl, graph.get(), part.data());
    EXPECT_EQ(ctrl.CType, CTYPE_HFC);
    EXPECT_EQ(ctrl.CoarsenTo, COARSEN_TO);
    EXPECT_EQ(ctrl.RType, RTYPE_FM);
    EXPECT_EQ(ctrl.MaxCellWgt, 2 * 300 / 100);
    EXPECT_EQ(ctrl.heavycells, 0);
}

TEST(Bisection, the_hypergraph_keeps_lists_and_incidence_and_nothing_of_the_runs)
{
    PartCtrl ctrl = default_ctrl();
    ctrl.VCycle = VCYCLE_END;
    const Nets nets = random_nets(8, 300, 400, 5);
    const HGraphPtr graph = make_hgraph(300, nets);
    bisect(ctrl, graph.get());
    EXPECT_EQ(pins_of(graph.get()), nets);
    EXPECT_TRUE(hgraph_ok(graph.get(), HG_LISTS | HG_INCIDENCE));
    EXPECT_EQ(graph->where, nullptr);
    EXPECT_EQ(graph->gain, nullptr);
    EXPECT_EQ(graph->cellmap, nullptr);
    EXPECT_EQ(graph->islandmap, nullptr);
    EXPECT_EQ(graph->nislands, 0);
}
