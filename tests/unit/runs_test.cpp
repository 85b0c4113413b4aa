// SPDX-License-Identifier: MIT
/* tests/unit/runs_test.cpp: which run is kept and which gets V-cycles, driven by scripts: each run
 * finds the value that the script holds for it, and marks its partition with its number.
 */
#include "partition/runs.h"

#include <gtest/gtest.h>

#include "support.h"

/* Values by run; V-cycles take off what the script holds for the loop. */
static std::vector<int> run_values, cycle_gains;
static int run, cycled;            // runs begun, V-cycle loops made
static std::vector<int> schemes;   // CType of each run
static std::vector<int> cycled_at; // number of the run that each V-cycle loop worked on
static std::vector<int> averages;  // what the summary was told, times 10

static void scripted_initial(PartCtrl *ctrl, HGraph *)
{
    schemes.push_back(ctrl->CType);
}

/* Vertex 0 of the partition carries the number of the run. */
static void scripted_uncoarsen(PartCtrl *, HGraph *graph, HGraph *)
{
    graph->where = ismalloc__(static_cast<size_t>(graph->ncells), 0, "test");
    graph->where[0] = run;
    graph->mincut = run_values.at(static_cast<size_t>(run));
    run++;
}

static void scripted_adopt(HGraph *graph, const HGraph *sgraph)
{
    graph->mincut = sgraph->mincut;
}

static int scripted_measure(const PartCtrl *, const HGraph *, const int *)
{
    return 777;
}

static void scripted_allocate(PartCtrl *, HGraph *graph)
{
    graph->where = ismalloc__(static_cast<size_t>(graph->ncells), 0, "test");
}

static void scripted_refine(PartCtrl *, HGraph *graph)
{
    graph->mincut = 500 + graph->where[0];
}

static void scripted_vcycles(PartCtrl *, HGraph *graph)
{
    cycled_at.push_back(graph->where[0]);
    const size_t loop = static_cast<size_t>(cycled++);
    if (loop < cycle_gains.size()) graph->mincut -= cycle_gains[loop];
    graph->where[1] = cycled;
}

static float scripted_balance(const PartCtrl *, const HGraph *, const int *)
{
    return 0.25f;
}

static void no_header(const PartCtrl *, const HGraph *)
{
}
static void no_trial(const PartCtrl *, int, const HGraph *)
{
}
static void no_run(const PartCtrl *, int, const HGraph *, float)
{
}

static void note_summary(const PartCtrl *, int, double average, float)
{
    averages.push_back(static_cast<int>(average * 10));
}

struct Kept {
    int value, run, cycle; // cycle: the V-cycle loop that the partition came out of, 0 if none
};

/* Runs the script on three vertices and hyperedges of this total weight. */
static Kept keep(const std::vector<int> &values, int mode, const std::vector<int> &gains = {},
                 int netwgt = 1000000, int maxnetsize = MAX_NET_SIZE, int ctype = CTYPE_EDGE)
{
    static const RunScheme scheme = {&HGraph::mincut,
                                     1,
                                     1,
                                     3,
                                     scripted_initial,
                                     scripted_uncoarsen,
                                     scripted_adopt,
                                     scripted_measure,
                                     scripted_allocate,
                                     scripted_refine,
                                     scripted_vcycles,
                                     scripted_balance,
                                     no_header,
                                     no_trial,
                                     no_run,
                                     note_summary};
    run_values = values;
    cycle_gains = gains;
    run = cycled = 0;
    schemes.clear();
    cycled_at.clear();
    averages.clear();
    PartCtrl ctrl = default_ctrl();
    ctrl.Nruns = static_cast<int>(values.size());
    ctrl.VCycle = mode;
    ctrl.CType = ctype;
    ctrl.maxnetsize = maxnetsize;
    ctrl.dbglvl = DBG_BISECTION;
    const HGraphPtr graph = make_hgraph(3, {{0, 1, 2}}, {netwgt});
    int part[3] = {-1, -1, -1};
    const int value = best_of_runs(&ctrl, graph.get(), part, &scheme);
    EXPECT_EQ(run, ctrl.Nruns);
    EXPECT_EQ(ctrl.CType, ctype);
    return {value, part[0], part[1]};
}

TEST(Runs, the_best_run_is_kept_and_the_earlier_one_on_ties)
{
    const Kept kept = keep({50, 40, 45, 40}, VCYCLE_NO);
    EXPECT_EQ(kept.value, 40);
    EXPECT_EQ(kept.run, 1);
    EXPECT_EQ(cycled, 0);
}

TEST(Runs, the_average_of_all_runs_is_reported)
{
    keep({50, 41, 45}, VCYCLE_NO);
    EXPECT_EQ(averages, (std::vector<int>{453}));
}

TEST(Runs, hybrid_first_choice_alternates_with_first_choice)
{
    keep({1, 1, 1, 1}, VCYCLE_NO, {}, 1000, MAX_NET_SIZE, CTYPE_HFC);
    EXPECT_EQ(schemes, (std::vector<int>{CTYPE_HFC, CTYPE_FC, CTYPE_HFC, CTYPE_FC}));
    keep({1, 1, 1}, VCYCLE_NO, {}, 1000, MAX_NET_SIZE, CTYPE_GFC);
    EXPECT_EQ(schemes, std::vector<int>(3, CTYPE_GFC));
}

TEST(Runs, at_the_end_up_to_ten_runs_give_their_best_one_vcycles)
{
    const Kept kept = keep({50, 40, 45, 40}, VCYCLE_END, {3});
    EXPECT_EQ(cycled_at, (std::vector<int>{1}));
    EXPECT_EQ(kept.value, 37);
    EXPECT_EQ(kept.run, 1);
    EXPECT_EQ(kept.cycle, 1);
}

TEST(Runs, at_the_end_without_gain_the_partition_of_the_run_stays)
{
    const Kept kept = keep({50, 40, 45}, VCYCLE_END, {0});
    EXPECT_EQ(kept.value, 40);
    EXPECT_EQ(kept.cycle, 0);
}

TEST(Runs, from_eleven_runs_on_three_candidates_get_vcycles_in_the_order_of_their_slots)
{
    /* Slots fill with 50 30 40; 35 replaces 50, the worst; 45 nothing; 29 replaces 40. */
    const Kept kept = keep({50, 30, 40, 35, 45, 29, 60, 60, 60, 60, 60}, VCYCLE_END, {0, 9, 0});
    EXPECT_EQ(cycled_at, (std::vector<int>{3, 1, 5}));
    EXPECT_EQ(kept.value, 21);
    EXPECT_EQ(kept.run, 1);
    EXPECT_EQ(kept.cycle, 2);
}

TEST(Runs, ten_runs_keep_one_candidate)
{
    keep(std::vector<int>(10, 5), VCYCLE_END);
    EXPECT_EQ(cycled_at, (std::vector<int>{0}));
}

TEST(Runs, a_value_equal_to_the_worst_candidate_does_not_replace_it)
{
    keep({40, 40, 40}, VCYCLE_END);
    EXPECT_EQ(cycled_at, (std::vector<int>{0}));
}

TEST(Runs, for_min_runs_vcycles_when_the_run_is_as_good_as_the_best)
{
    keep({50, 60, 50, 40, 41}, VCYCLE_FORMIN);
    EXPECT_EQ(cycled_at, (std::vector<int>{0, 2, 3}));
}

TEST(Runs, for_min_compares_with_the_best_after_vcycles_but_marks_minima_before_them)
{
    /* Loop 0 takes 50 to 20. Run 1 finds 45: above 20, but a new minimum of runs. Run 2 finds 46:
     * neither. */
    keep({50, 45, 46}, VCYCLE_FORMIN, {30});
    EXPECT_EQ(cycled_at, (std::vector<int>{0, 1}));
}

TEST(Runs, always_runs_vcycles_below_six_fifths_of_the_best_or_within_19_of_it)
{
    /* Best 1000: 1199 is below 1200, 1200 is not and is 200 above. */
    keep({1000, 1199, 1200, 1300}, VCYCLE_ALL);
    EXPECT_EQ(cycled_at, (std::vector<int>{0, 1}));
    /* Best 10: 12 is not below 12, but within 19; so is 29, and 30 is not. */
    keep({10, 12, 29, 30}, VCYCLE_ALL);
    EXPECT_EQ(cycled_at, (std::vector<int>{0, 1, 2}));
}

TEST(Runs, always_accepts_an_equal_value_of_0)
{
    keep({0, 0, 19, 20}, VCYCLE_ALL);
    EXPECT_EQ(cycled_at, (std::vector<int>{0, 1, 2}));
}

TEST(Runs, vcycles_during_the_runs_count_for_the_best)
{
    const Kept kept = keep({50, 49}, VCYCLE_ALL, {5, 1});
    EXPECT_EQ(kept.value, 45);
    EXPECT_EQ(kept.run, 0);
    EXPECT_EQ(kept.cycle, 1);
    EXPECT_EQ(averages, (std::vector<int>{465}));
}

TEST(Runs, with_hyperedges_left_out_the_run_is_refined_on_the_whole)
{
    const Kept kept = keep({50, 40}, VCYCLE_NO, {}, 1000000, 2);
    EXPECT_EQ(kept.value, 500); // as scripted_refine has it for run 0
    EXPECT_EQ(kept.run, 0);
}

TEST(Runs, without_hyperedges_a_cut_of_0_is_still_taken)
{
    const Kept kept = keep({0, 0}, VCYCLE_END, {}, 0);
    EXPECT_EQ(kept.value, 0);
    EXPECT_EQ(kept.run, 0);
}

TEST(Runs, a_value_beyond_the_start_value_leaves_the_first_run_measured_afresh)
{
    const Kept kept = keep({90, 80}, VCYCLE_NO, {}, 10);
    EXPECT_EQ(kept.run, 0);
    EXPECT_EQ(kept.value, 777);
}

TEST(Runs, at_the_end_slots_that_no_run_has_filled_get_no_vcycles)
{
    const Kept none = keep({90, 80}, VCYCLE_END, {}, 10);
    EXPECT_EQ(cycled_at, std::vector<int>());
    EXPECT_EQ(none.run, 0);
    EXPECT_EQ(none.value, 777);
    const Kept two = keep({90, 90, 90, 90, 7, 90, 90, 90, 90, 90, 5}, VCYCLE_END, {1, 2}, 10);
    EXPECT_EQ(cycled_at, (std::vector<int>{4, 10}));
    EXPECT_EQ(two.value, 3);
    EXPECT_EQ(two.cycle, 2);
    keep({11, 10}, VCYCLE_END, {}, 10); // the start value itself, and the first below it
    EXPECT_EQ(cycled_at, (std::vector<int>{1}));
}
