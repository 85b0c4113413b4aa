// SPDX-License-Identifier: MIT
/* tests/unit/vcycle_test.cpp: the V-cycle loop, driven by a script of values. */
#include "partition/vcycle.h"

#include <gtest/gtest.h>

#include "support.h"

/* What the scripted uncoarsening finds and does. */
static std::vector<int> script;
static std::vector<int> schemes, sizes;

static void next_value(PartCtrl *ctrl, HGraph *graph, HGraph *coarsest)
{
    EXPECT_EQ(coarsest, graph); // few vertices: there is nothing to coarsen
    const size_t cycle = schemes.size();
    schemes.push_back(ctrl->CType);
    sizes.push_back(ctrl->CoarsenTo);
    graph->mincut = script.at(cycle);
}

struct Loop {
    int cycles, result;
    std::string trace;
};

/* Runs the loop from this value through the script. */
static Loop run_loop(int start, const std::vector<int> &values, int most, bool shows_start = false)
{
    script = values;
    schemes.clear();
    sizes.clear();
    PartCtrl ctrl = default_ctrl();
    ctrl.CType = CTYPE_GFC;
    ctrl.CoarsenTo = 55;
    ctrl.dbglvl = DBG_DETAIL;
    const HGraphPtr graph = make_incident(4, {{0, 1}, {2, 3}});
    graph->where = new_array({0, 0, 1, 1});
    graph->mincut = start;
    const VCycleKind kind = {&HGraph::mincut, next_value, shows_start};
    Loop loop = {0, 0, ""};
    loop.trace =
        capture_stdout([&] { loop.result = run_vcycles(&ctrl, graph.get(), most, &kind); });
    loop.cycles = static_cast<int>(schemes.size());
    EXPECT_EQ(ctrl.CType, CTYPE_GFC);
    EXPECT_EQ(ctrl.CoarsenTo, 55);
    return loop;
}

TEST(VCycle, two_first_cycles_without_improvement_are_all)
{
    EXPECT_EQ(run_loop(10, {10, 10, 1}, 10).cycles, 2);
}

TEST(VCycle, an_improvement_allows_one_cycle_without)
{
    EXPECT_EQ(run_loop(10, {9, 9, 8, 8, 8, 1}, 10).cycles, 5);
    EXPECT_EQ(run_loop(10, {10, 9, 9, 9, 1}, 10).cycles, 4);
}

TEST(VCycle, no_more_cycles_are_made_than_allowed)
{
    EXPECT_EQ(run_loop(100, {9, 8, 7, 6, 5, 4, 3, 2, 1, 0}, 10).cycles, 10);
    EXPECT_EQ(run_loop(100, {9, 8, 7}, 1).cycles, 1);
    EXPECT_EQ(run_loop(100, {}, 0).cycles, 0);
}

TEST(VCycle, a_worse_value_counts_as_no_improvement_and_stands_at_the_end)
{
    const Loop loop = run_loop(10, {8, 9, 8, 1}, 10); // 8 is not below the best
    EXPECT_EQ(loop.cycles, 3);
    EXPECT_EQ(loop.result, 8);
    EXPECT_EQ(run_loop(10, {12, 11}, 10).result, 11);
}

TEST(VCycle, cycles_alternate_the_restricted_schemes_and_coarsen_to_1000)
{
    run_loop(10, {9, 8, 7, 7, 7}, 10);
    EXPECT_EQ(schemes, (std::vector<int>{RESTRICTED_STARS, RESTRICTED_EDGES, RESTRICTED_STARS,
                                         RESTRICTED_EDGES, RESTRICTED_STARS}));
    EXPECT_EQ(sizes, std::vector<int>(5, 1000));
}

TEST(VCycle, the_trace_is_one_line_with_each_cycle_and_the_last_value)
{
    EXPECT_EQ(run_loop(10, {8, 9, 9}, 10).trace, "          [8 9 9 (min = 9)]\n");
    EXPECT_EQ(run_loop(10, {8, 9, 9}, 10, true).trace, "          [10 8 9 9 (min = 9)]\n");
}
