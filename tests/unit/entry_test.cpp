// SPDX-License-Identifier: MIT
/* tests/unit/entry_test.cpp: what the entry points do with arguments they accept. */
#include <gtest/gtest.h>

#include <algorithm>
#include <ctime>

#include "calls.h"
#include "refine/fm.h"
#include "refine/gains.h"

static Problem random_problem(unsigned seed, int nvtxs, int nhedges)
{
    return make_problem(nvtxs, random_nets(seed, nvtxs, nhedges, 5));
}

static void expect_parts(const Result &result, int nparts)
{
    for (int p : result.part) {
        EXPECT_GE(p, 0);
        EXPECT_LT(p, nparts);
    }
}

TEST(Entry, ubfactor_1_and_49_are_accepted)
{
    const Problem problem = random_problem(1, 40, 60);
    for (int ubfactor : {1, 49}) {
        const Result result = partition(problem, 2, ubfactor, quick_options());
        expect_parts(result, 2);
        EXPECT_EQ(result.cut, cut_of(problem.nets, {}, result.part));
    }
}

TEST(Entry, every_scheme_gives_a_partition_and_its_cut)
{
    Problem problem = random_problem(2, 300, 400);
    problem.hewgts = random_ints(3, 400, 1, 9);
    problem.vwgts = random_ints(4, 300, 1, 9);
    for (int slot : {ZORPEL_OPT_CTYPE, ZORPEL_OPT_RTYPE, ZORPEL_OPT_VCYCLE, ZORPEL_OPT_RECONST}) {
        const int last = slot == ZORPEL_OPT_CTYPE ? 5 : slot == ZORPEL_OPT_RECONST ? 1 : 3;
        for (int value = slot <= ZORPEL_OPT_RTYPE ? 1 : 0; value <= last; value++) {
            const Result result = partition(problem, 3, 5, options_with(slot, value));
            expect_parts(result, 3);
            EXPECT_EQ(result.cut, cut_of(problem.nets, problem.hewgts, result.part))
                << "slot " << slot << " value " << value;
        }
    }
}

TEST(Entry, an_equal_seed_gives_an_equal_result_whatever_the_generator_did_before)
{
    const Problem problem = random_problem(5, 200, 260);
    srand(1);
    const Result first = partition(problem, 4, 5, options_with(ZORPEL_OPT_SEED, 7));
    srand(2);
    EXPECT_EQ(partition(problem, 4, 5, options_with(ZORPEL_OPT_SEED, 7)), first);
    EXPECT_EQ(partition(problem, 4, 5, options_with(ZORPEL_OPT_SEED, 7)), first);
    bool other = false;
    for (int seed = 8; seed < 18 && !other; seed++)
        other = partition(problem, 4, 5, options_with(ZORPEL_OPT_SEED, seed)) != first;
    EXPECT_TRUE(other) << "ten other seeds change nothing";
}

/* The result with these options and the generator's next draw, which tells how many there were. */
static std::pair<Result, int> with_next_draw(const Problem &problem, const Options &options)
{
    const Result result = partition(problem, 2, 5, options);
    return {result, rand()};
}

TEST(Entry, slot_0_equal_to_0_takes_every_default_whatever_the_others_hold)
{
    const Problem problem = random_problem(6, 1100, 1200); // enough that V-cycles coarsen and draw
    const Options ignored = {0, -5, 99, -1, 44, 7, 12, 3, -1};
    const time_t start = time(nullptr);
    const auto by_default = with_next_draw(problem, ignored);
    const time_t end = time(nullptr);
    bool found = false; // the default seed is the clock, read somewhere between start and end
    for (time_t seed = start; seed <= end && !found; seed++)
        found = with_next_draw(problem, {1, 10, 1, 1, 1, 0, 0, static_cast<int>(seed), 0}) ==
                by_default;
    EXPECT_TRUE(found);
}

TEST(Entry, slot_0_other_than_0_takes_the_options_as_passed)
{
    const Problem problem = random_problem(6, 60, 90);
    for (int use : {1, -1, 12}) {
        Options options = quick_options();
        options[ZORPEL_OPT_USE] = use;
        EXPECT_EQ(with_next_draw(problem, options), with_next_draw(problem, quick_options()));
    }
}

TEST(Entry, absent_weights_equal_weights_of_1)
{
    Problem absent = random_problem(7, 150, 200), ones = absent;
    ones.vwgts.assign(150, 1);
    ones.hewgts.assign(200, 1);
    for (int nparts : {2, 5})
        EXPECT_EQ(partition(absent, nparts, 5, quick_options()),
                  partition(ones, nparts, 5, quick_options()));
    const std::vector<int> sides = random_ints(8, 150, 0, 1);
    srand(4);
    const Result first = refine(absent, 5, quick_options(), sides);
    srand(4);
    EXPECT_EQ(refine(ones, 5, quick_options(), sides), first);
}

TEST(Entry, the_callers_arrays_are_not_changed)
{
    Problem problem = random_problem(9, 150, 200);
    problem.vwgts = random_ints(10, 150, 0, 5);
    problem.hewgts = random_ints(11, 200, 0, 5);
    for (std::vector<int> &net : problem.nets) std::sort(net.rbegin(), net.rend());
    problem.eind.clear();
    for (const std::vector<int> &net : problem.nets)
        problem.eind.insert(problem.eind.end(), net.begin(), net.end());
    const Problem before = problem;
    Options options = quick_options();
    options[ZORPEL_OPT_RECONST] = 1;
    options[ZORPEL_OPT_FIXED] = 1;
    const Options options_before = options;
    std::vector<int> fix(150, -1);
    fix[3] = 2;
    partition(problem, 4, 5, options, fix);
    refine(problem, 5, options, std::vector<int>(150, 0));
    EXPECT_EQ(problem.vwgts, before.vwgts);
    EXPECT_EQ(problem.hewgts, before.hewgts);
    EXPECT_EQ(problem.eptr, before.eptr);
    EXPECT_EQ(problem.eind, before.eind);
    EXPECT_EQ(options, options_before);
}

/* Lines of trial figures for each summary of an initial bisection. */
static int trials_per_bisection(Partitioner entry, int nparts)
{
    const Problem problem = random_problem(12, 200, 300);
    const std::string trace = capture_stdout([&] {
        partition_by(entry, problem, nparts, 30, options_with(ZORPEL_OPT_DBGLVL, ZORPEL_DBG_INIT));
    });
    const int best = count_lines_with(trace, "Bestcut Icut:");
    const int all = count_lines_with(trace, "");
    EXPECT_GT(best, 0);
    EXPECT_EQ((all - best) % best, 0);
    return (all - best) / best;
}

TEST(Entry, twenty_trials_are_made_up_to_64_parts_and_ten_from_65_on)
{
    EXPECT_EQ(trials_per_bisection(ZORPEL_PartRecursive, 2), 20);
    EXPECT_EQ(trials_per_bisection(ZORPEL_PartRecursive, 64), 20);
    EXPECT_EQ(trials_per_bisection(ZORPEL_PartRecursive, 65), 10);
    EXPECT_EQ(trials_per_bisection(ZORPEL_PartRecursiveInternal, 2), 10);
    EXPECT_EQ(trials_per_bisection(ZORPEL_PartRecursiveInternal, 64), 10);
}

/* How many k-way V-cycle loops the trace shows. */
static int polishes(Partitioner entry, int nparts)
{
    const Problem problem = random_problem(13, 200, 300);
    const std::string trace = capture_stdout([&] {
        partition_by(entry, problem, nparts, 30,
                     options_with(ZORPEL_OPT_DBGLVL, ZORPEL_DBG_DETAIL));
    });
    return count_lines_with(trace, "          [");
}

TEST(Entry, three_to_64_parts_are_polished_and_others_are_not)
{
    EXPECT_EQ(polishes(ZORPEL_PartRecursive, 2), 0);
    EXPECT_EQ(polishes(ZORPEL_PartRecursive, 3), 1);
    EXPECT_EQ(polishes(ZORPEL_PartRecursive, 64), 1);
    EXPECT_EQ(polishes(ZORPEL_PartRecursive, 65), 0);
    EXPECT_EQ(polishes(ZORPEL_PartRecursiveInternal, 3), 0);
}

TEST(Entry, weights_totalling_2147483646_are_accepted)
{
    Problem problem = make_problem(4, {{0, 1}, {2, 3}, {1, 2}});
    problem.vwgts = {1073741823, 1073741823, 0, 0};
    problem.hewgts = {1073741822, 1073741823, 1};
    const Result result = partition(problem, 2, 5, quick_options());
    EXPECT_EQ(result.cut, cut_of(problem.nets, problem.hewgts, result.part));
    srand(1);
    const Result refined = refine(problem, 5, quick_options(), {0, 1, 0, 1});
    EXPECT_EQ(refined.cut, cut_of(problem.nets, problem.hewgts, refined.part));
}

TEST(Entry, one_weight_may_be_the_whole_total)
{
    Problem problem = make_problem(6, {{0, 1}, {1, 2, 3}, {3, 4, 5}, {0, 5}});
    problem.vwgts = {2147483646, 0, 0, 0, 0, 0};
    problem.hewgts = {0, 0, 2147483646, 0};
    for (int nparts : {2, 3, 5}) {
        const Result result = partition(problem, nparts, 5, quick_options());
        expect_parts(result, nparts);
        EXPECT_EQ(result.cut, cut_of(problem.nets, problem.hewgts, result.part));
    }
}

TEST(Entry, weights_of_0_are_accepted)
{
    Problem problem = random_problem(14, 50, 70);
    problem.vwgts.assign(50, 0);
    problem.hewgts.assign(70, 0);
    for (int nparts : {2, 4}) {
        const Result result = partition(problem, nparts, 5, quick_options());
        expect_parts(result, nparts);
        EXPECT_EQ(result.cut, 0);
    }
}

TEST(Entry, hypergraphs_without_hyperedges_are_balanced_at_cut_0)
{
    const Problem problem = make_problem(40, {});
    for (int nparts : {2, 4}) {
        const Result result = partition(problem, nparts, 5, quick_options());
        expect_parts(result, nparts);
        EXPECT_EQ(result.cut, 0);
        const auto in_0 = std::count(result.part.begin(), result.part.end(), 0);
        EXPECT_NEAR(static_cast<double>(in_0), 40.0 / nparts, 2);
    }
}

TEST(Entry, a_hypergraph_without_vertices_has_cut_0)
{
    const Problem problem = make_problem(0, {});
    for (int nparts : {2, 3, 65}) EXPECT_EQ(partition(problem, nparts, 5, quick_options()).cut, 0);
    EXPECT_EQ(refine(problem, 5, quick_options(), {}).cut, 0);
    int cut = -1;
    const int eptr[] = {0};
    const Options options = quick_options();
    ZORPEL_PartRecursive(0, 0, nullptr, eptr, nullptr, nullptr, 2, 5, options.data(), nullptr,
                         &cut);
    EXPECT_EQ(cut, 0);
}

TEST(Entry, more_parts_than_vertices_leave_some_empty)
{
    const Problem problem = make_problem(3, {{0, 1}, {1, 2}});
    for (int nparts : {4, 64, 65, 200}) {
        const Result result = partition(problem, nparts, 5, quick_options());
        expect_parts(result, nparts);
        EXPECT_EQ(result.cut, cut_of(problem.nets, {}, result.part));
    }
}

TEST(Entry, fixed_vertices_end_in_their_part)
{
    const Problem problem = random_problem(15, 120, 150);
    std::vector<int> fix(120, -1);
    for (size_t v = 0; v < 120; v += 7) fix[v] = static_cast<int>(v % 5);
    for (Partitioner entry : {ZORPEL_PartRecursive, ZORPEL_PartRecursiveInternal}) {
        const Result result =
            partition_by(entry, problem, 5, 10, options_with(ZORPEL_OPT_FIXED, 1), fix);
        expect_parts(result, 5);
        for (size_t v = 0; v < 120; v += 7) EXPECT_EQ(result.part[v], fix[v]) << "vertex " << v;
    }
}

TEST(Entry, without_the_fixed_option_the_part_array_is_not_read)
{
    const Problem problem = random_problem(16, 60, 80);
    EXPECT_EQ(partition(problem, 3, 5, quick_options(), std::vector<int>(60, 12345)),
              partition(problem, 3, 5, quick_options(), std::vector<int>(60, 1)));
}

TEST(Entry, the_timers_are_printed_once_at_the_end_under_their_bit)
{
    const Problem problem = random_problem(17, 60, 80);
    const Options timed = options_with(ZORPEL_OPT_DBGLVL, ZORPEL_DBG_TIME);
    const std::vector<std::string> traces = {
        capture_stdout([&] { partition(problem, 3, 5, timed); }),
        capture_stdout([&] { refine(problem, 5, timed, std::vector<int>(60, 0)); })};
    for (const std::string &trace : traces) {
        EXPECT_EQ(trace.find("\nTiming Information ---"), 0u);
        EXPECT_EQ(count_lines_with(trace, " Multilevel: "), 1);
        EXPECT_EQ(count_lines_with(trace, " Total: "), 1);
        EXPECT_EQ(count_lines_with(trace, "Wrap Up"), 0);
    }
    EXPECT_EQ(capture_stdout([&] { partition(problem, 3, 5, quick_options()); }), "");
    EXPECT_EQ(capture_stdout([&] { refine(problem, 5, quick_options(), std::vector<int>(60)); }),
              "");
}

TEST(Entry, refining_a_bisection_lowers_its_cut_and_keeps_it_exact)
{
    Problem problem = random_problem(18, 200, 240);
    problem.hewgts = random_ints(19, 240, 1, 9);
    const std::vector<int> sides = random_ints(20, 200, 0, 1);
    srand(1);
    const Result result = refine(problem, 10, quick_options(), sides);
    expect_parts(result, 2);
    EXPECT_EQ(result.cut, cut_of(problem.nets, problem.hewgts, result.part));
    EXPECT_LT(result.cut, cut_of(problem.nets, problem.hewgts, sides));
}

TEST(Entry, refining_seeds_nothing_and_looks_at_no_option_but_the_traces)
{
    const Problem problem = random_problem(21, 100, 130);
    const std::vector<int> sides = random_ints(22, 100, 0, 1);
    srand(1);
    const Result first = refine(problem, 5, quick_options(), sides);
    const int next = rand();
    const Options odd = {1, 0, 99, 42, -8, 3, 1, 12345, 0};
    srand(1);
    EXPECT_EQ(refine(problem, 5, odd, sides), first);
    EXPECT_EQ(rand(), next);
    srand(2);
    refine(problem, 5, quick_options(), sides);
    EXPECT_NE(rand(), next); // so the draws did come from the caller's seed
}

TEST(Entry, refining_is_ten_passes_of_fm_around_halves)
{
    const Problem problem = random_problem(24, 400, 500);
    for (unsigned seed = 1; seed <= 5; seed++) {
        const std::vector<int> sides = random_ints(seed, 400, 0, 1);
        PartCtrl ctrl = default_ctrl();
        ctrl.ubfactor = static_cast<float>(0.03);
        const HGraphPtr twin = make_incident(400, problem.nets);
        AllocateRefinementMemory__(twin.get());
        for (int v = 0; v < 400; v++) twin->where[v] = sides[static_cast<size_t>(v)];
        srand(seed);
        Refine_FM__(&ctrl, twin.get(), 10);
        srand(seed);
        const Result result = refine(problem, 3, quick_options(), sides);
        EXPECT_EQ(result.part, to_ints(twin->where, 400));
        EXPECT_EQ(result.cut, twin->mincut);
    }
}

TEST(Entry, refining_accepts_any_ubfactor)
{
    const Problem problem = random_problem(23, 50, 60);
    for (int ubfactor : {-5, 0, 50, 1000})
        expect_parts(refine(problem, ubfactor, quick_options(), random_ints(1, 50, 0, 1)), 2);
}
