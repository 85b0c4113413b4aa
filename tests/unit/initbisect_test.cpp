// SPDX-License-Identifier: MIT
/* tests/unit/initbisect_test.cpp: bisection of the coarsest level. */
#include "partition/initbisect.h"

#include <gtest/gtest.h>

#include <sstream>

#include "core/random.h"
#include "partition/bisection.h"
#include "refine/balance.h"
#include "refine/fm.h"
#include "refine/gains.h"
#include "support.h"

/* A level of 60 vertices with unequal weights. */
static HGraphPtr level_of_60(unsigned seed)
{
    return make_incident(60, random_nets(seed, 60, 90, 4), random_ints(seed, 90, 1, 5),
                         random_ints(seed + 1, 60, 1, 9));
}

/* What a trial reported. */
struct Trial {
    int w0, w1, cut;
};

/* Bisects with the trace of trials; the last line must name the smallest cut. */
static std::vector<Trial> traced_trials(PartCtrl ctrl, HGraph *graph, unsigned seed)
{
    ctrl.dbglvl = DBG_INIT;
    InitRandom__(static_cast<int>(seed));
    const std::string trace = capture_stdout([&] { InitPartition__(&ctrl, graph); });
    std::istringstream lines(trace);
    std::vector<Trial> trials;
    int best = -1;
    for (std::string line; std::getline(lines, line);) {
        Trial trial;
        if (sscanf(line.c_str(), "Bestcut Icut: %5d", &best) == 1) continue;
        EXPECT_EQ(best, -1) << "the best cut is the last line";
        EXPECT_EQ(sscanf(line.c_str(), "%5d %5d %5d", &trial.w0, &trial.w1, &trial.cut), 3);
        trials.push_back(trial);
    }
    EXPECT_EQ(best, graph->mincut);
    return trials;
}

TEST(InitBisect, a_level_without_vertices_gets_its_arrays_and_no_trial)
{
    PartCtrl ctrl = default_ctrl();
    ctrl.dbglvl = DBG_INIT;
    const HGraphPtr graph = make_incident(2, {});
    graph->ncells = 0;
    graph->nislands = 2;
    srand(3);
    EXPECT_EQ(capture_stdout([&] { InitPartition__(&ctrl, graph.get()); }), "");
    EXPECT_NE(graph->where, nullptr);
    const int next = rand();
    srand(3);
    EXPECT_EQ(rand(), next);
}

TEST(InitBisect, twenty_trials_are_made_before_a_polish_and_ten_otherwise)
{
    PartCtrl ctrl = default_ctrl();
    EXPECT_EQ(traced_trials(ctrl, level_of_60(1).get(), 1).size(), 10u);
    ctrl.kwayrefine = 1;
    EXPECT_EQ(traced_trials(ctrl, level_of_60(1).get(), 1).size(), 20u);
}

TEST(InitBisect, the_earliest_trial_of_the_smallest_cut_is_the_result)
{
    PartCtrl ctrl = default_ctrl();
    ctrl.ubfactor = 0.2f;
    int later_ties = 0;
    for (unsigned seed = 1; seed <= 200; seed++) {
        const HGraphPtr graph =
            make_incident(14, random_nets(seed, 14, 16, 3), {}, random_ints(seed, 14, 1, 9));
        const std::vector<Trial> trials = traced_trials(ctrl, graph.get(), seed);
        size_t best = 0;
        for (size_t i = 1; i < trials.size(); i++)
            if (trials[i].cut < trials[best].cut) best = i;
        for (size_t i = best + 1; i < trials.size(); i++)
            later_ties += trials[i].cut == trials[best].cut && trials[i].w0 != trials[best].w0;
        int w0 = 0;
        for (int v = 0; v < 14; v++) w0 += graph->where[v] == 0 ? graph->cellwgt[v] : 0;
        EXPECT_EQ(graph->mincut, trials[best].cut);
        EXPECT_EQ(w0, trials[best].w0) << "seed " << seed;
        EXPECT_EQ(ComputeActualCut__(graph.get(), graph->where), graph->mincut);
    }
    EXPECT_GT(later_ties, 0);
}

TEST(InitBisect, passes_and_moves_are_not_traced_and_the_level_of_tracing_is_restored)
{
    PartCtrl ctrl = default_ctrl();
    ctrl.dbglvl = DBG_PASS | DBG_MOVE | DBG_RUN;
    const HGraphPtr graph = level_of_60(2);
    InitRandom__(1);
    EXPECT_EQ(capture_stdout([&] { InitPartition__(&ctrl, graph.get()); }), "");
    EXPECT_EQ(ctrl.dbglvl, DBG_PASS | DBG_MOVE | DBG_RUN);
}

TEST(InitBisect, the_time_is_charged_to_the_initial_partition)
{
    PartCtrl ctrl = default_ctrl();
    ctrl.dbglvl = DBG_TIME;
    const HGraphPtr graph = make_incident(3000, random_nets(9, 3000, 4000, 6));
    InitRandom__(1);
    InitPartition__(&ctrl, graph.get());
    EXPECT_GT(ctrl.timers[TIME_INITPARTITION], 0.0);
    EXPECT_EQ(ctrl.timers[TIME_COARSENING], 0.0);
}

TEST(InitBisect, both_sides_hold_their_share)
{
    for (float ratio : {0.5f, 0.25f, 0.4f}) {
        PartCtrl ctrl = default_ctrl();
        ctrl.splitratio = ratio;
        const HGraphPtr graph = make_incident(400, random_nets(3, 400, 500, 4));
        InitRandom__(1);
        InitPartition__(&ctrl, graph.get());
        int w0 = 0;
        for (int v = 0; v < 400; v++) w0 += graph->where[v] == 0;
        EXPECT_NEAR(w0, 400 * static_cast<double>(ratio), 400 * 0.05 + 1);
    }
}

/* A trial told again: the fixed vertices dealt out, side 0 filled in random order as long as it
 * is below its share, then balancing and refinement. */
static Trial retold_trial(PartCtrl *ctrl, HGraph *graph)
{
    int weight[2] = {0, 0}, total = 0;
    for (int v = 0; v < graph->ncells; v++) total += graph->cellwgt[v];
    const int goal = static_cast<int>(static_cast<float>(total) * ctrl->splitratio);
    std::vector<int> perm(static_cast<size_t>(graph->ncells));
    if (graph->nfixed > 0) RandomPermuteFine__(perm.data(), graph->nfixed, 1);
    for (int i = 0; i < graph->nfixed; i++) {
        const int v = perm[static_cast<size_t>(i)];
        graph->where[v] = i < fixed_on_side0(ctrl, graph->nfixed) ? 0 : 1;
        weight[graph->where[v]] += graph->cellwgt[v];
    }
    RandomPermuteFine__(perm.data(), graph->ncells, 1);
    for (int v : perm) {
        if (v < graph->nfixed) continue;
        graph->where[v] = weight[0] < goal ? 0 : 1;
        weight[graph->where[v]] += graph->cellwgt[v];
    }
    Balance__(ctrl, graph);
    if (ctrl->heavycells)
        Refine_FM2__(ctrl, graph, 10);
    else
        Refine_FM__(ctrl, graph, 10);
    return {graph->pwgts[0], graph->pwgts[1], graph->mincut};
}

static bool operator==(const Trial &a, const Trial &b)
{
    return a.w0 == b.w0 && a.w1 == b.w1 && a.cut == b.cut;
}

TEST(InitBisect, each_trial_grows_side_0_in_random_order_then_balances_and_refines)
{
    for (unsigned seed = 1; seed <= 24; seed++) {
        PartCtrl ctrl = default_ctrl();
        ctrl.splitratio = seed % 3 == 0 ? 0.5f : static_cast<float>(1.0 / 3);
        ctrl.heavycells = seed % 2 == 0;
        const HGraphPtr graph = level_of_60(seed), twin = level_of_60(seed);
        graph->nfixed = twin->nfixed = static_cast<int>(seed % 5);
        const std::vector<Trial> trials = traced_trials(ctrl, graph.get(), seed);
        AllocateRefinementMemory__(twin.get());
        InitRandom__(static_cast<int>(seed));
        for (const Trial &trial : trials)
            ASSERT_TRUE(retold_trial(&ctrl, twin.get()) == trial) << "seed " << seed;
    }
}

static int on_side0(int nfixed, double ratio)
{
    PartCtrl ctrl = default_ctrl();
    ctrl.splitratio = static_cast<float>(ratio);
    return fixed_on_side0(&ctrl, nfixed);
}

TEST(InitBisect, one_fixed_vertex_goes_to_side_1_and_of_two_one_goes_to_each)
{
    EXPECT_EQ(on_side0(1, 0.5), 0);
    EXPECT_EQ(on_side0(2, 0.5), 1);
    EXPECT_EQ(on_side0(3, 1.0 / 3), 1);
    EXPECT_EQ(on_side0(5, 0.4), 2);
    EXPECT_EQ(on_side0(0, 0.5), 0);
}

TEST(InitBisect, an_unset_number_of_fixed_vertices_counts_as_none)
{
    EXPECT_EQ(on_side0(-1, 0.5), 0);
}

/* Fixed vertices on side 0 in the bisection of a level with nfixed leading ones. */
static int fixed_found_on_side0(int nfixed)
{
    PartCtrl ctrl = default_ctrl();
    const HGraphPtr graph = level_of_60(5);
    graph->nfixed = nfixed;
    InitRandom__(4);
    InitPartition__(&ctrl, graph.get());
    int found = 0;
    for (int v = 0; v < nfixed; v++) found += graph->where[v] == 0;
    return found;
}

TEST(InitBisect, the_fixed_vertices_are_dealt_out_and_never_moved)
{
    EXPECT_EQ(fixed_found_on_side0(1), 0);
    EXPECT_EQ(fixed_found_on_side0(2), 1);
    EXPECT_EQ(fixed_found_on_side0(8), 4);
    EXPECT_EQ(fixed_found_on_side0(60), 30);
}

TEST(InitBisect, every_trial_draws_the_fixed_vertices_first_and_then_all)
{
    /* All fixed: nothing else is drawn but the permutations of the fixed, of all, and of passes;
     * the first trial deals the first of the permutation to side 0. */
    PartCtrl ctrl = default_ctrl();
    const HGraphPtr graph = make_incident(6, {}, {}, {1, 2, 4, 8, 16, 32});
    graph->nfixed = 6;
    const std::vector<Trial> trials = traced_trials(ctrl, graph.get(), 77);
    int perm[6], w0 = 0;
    InitRandom__(77);
    RandomPermuteFine__(perm, 6, 1);
    for (int i = 0; i < 3; i++) w0 += graph->cellwgt[perm[i]];
    EXPECT_EQ(trials[0].w0, w0);
    EXPECT_EQ(trials[0].w1, 63 - w0);
}
