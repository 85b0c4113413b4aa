// SPDX-License-Identifier: MIT
/* tests/unit/fm_test.cpp: the four variants of FM refinement. */
#include "refine/fm.h"

#include "levels.h"
#include "traces.h"
#include "spare/hooks.h"

using Refine = void (*)(PartCtrl *ctrl, HGraph *graph, int npasses);

static std::string refine(Refine routine, PartCtrl ctrl, HGraph *graph, int npasses = 10)
{
    ctrl.dbglvl = DBG_PASS | DBG_MOVE;
    return printed_by([&] { routine(&ctrl, graph, npasses); });
}

static void eefm(PartCtrl *ctrl, HGraph *graph, int npasses)
{
    Refine_EEFM__(ctrl, graph, npasses, 0.1f);
}

static void eefm2(PartCtrl *ctrl, HGraph *graph, int npasses)
{
    Refine_EEFM2__(ctrl, graph, npasses, 0.1f);
}

/* Two groups of vertices, each joined pairwise, side 0 and side 1. */
static Level two_cliques(int size0, int size1)
{
    Nets nets;
    for (int u = 0; u < size0 + size1; u++)
        for (int v = u + 1; v < size0 + size1; v++)
            if ((u < size0) == (v < size0)) nets.push_back({u, v});
    Level level = make_level(size0 + size1, nets);
    Ints sides(at(size0), 0);
    sides.insert(sides.end(), at(size1), 1);
    set_sides(level.get(), sides);
    return level;
}

static PartCtrl loose_ctrl()
{
    PartCtrl ctrl = make_ctrl();
    ctrl.ubfactor = 0.45f;
    return ctrl;
}

TEST(Fm, local_optimum_is_restored_after_one_pass)
{
    const Level level = two_cliques(4, 4);
    const Ints sides = to_ints(level->where, 8);
    const std::string trace = refine(Refine_FM__, loose_ctrl(), level.get());
    EXPECT_EQ(to_ints(level->where, 8), sides);
    EXPECT_EQ(moved_vertices(trace).size(), 8u);
    ASSERT_EQ(count_lines(trace, "\tMinimum Cut"), 1u);
    EXPECT_EQ(lines_with(trace, "\tMinimum Cut")[0],
              "\tMinimum Cut:        0 at    -1 [     4      4]");
}

TEST(Fm, pass_that_never_meets_the_bounds_keeps_the_start)
{
    const Level level = make_level(3, {{1, 2}}, {1}, {100, 1, 1});
    set_sides(level.get(), {0, 0, 1});
    refine(Refine_FM__, make_ctrl(), level.get());
    EXPECT_EQ(to_ints(level->where, 3), (Ints{0, 0, 1}));
    EXPECT_EQ(level->mincut, 1);
    EXPECT_EQ(level->pwgts[0], 101);
}

TEST(Fm, with_all_vertices_fixed_nothing_moves)
{
    const Level level = make_level(4, path_nets(4), {}, {}, 4);
    set_sides(level.get(), {0, 1, 0, 1});
    const std::string trace = refine(Refine_FM__, loose_ctrl(), level.get());
    EXPECT_EQ(moved_vertices(trace), Ints());
    EXPECT_EQ(count_lines(trace, "\tMinimum Cut"), 1u);
    EXPECT_EQ(to_ints(level->where, 4), (Ints{0, 1, 0, 1}));
    EXPECT_EQ(level->mincut, 3);
}

TEST(Fm, equal_gains_and_equal_room_take_from_side_0)
{
    const Level level = make_level(2, {{0, 1}});
    set_sides(level.get(), {1, 0});
    EXPECT_EQ(moved_vertices(refine(Refine_FM__, loose_ctrl(), level.get(), 1))[0], 1);
}

TEST(Fm, equal_gains_take_from_the_side_with_more_room)
{
    const Level level = make_level(2, {{0, 1}}, {}, {4, 3});
    set_sides(level.get(), {1, 0});
    EXPECT_EQ(moved_vertices(refine(Refine_FM__, loose_ctrl(), level.get(), 1))[0], 0);
}

TEST(Fm, room_beyond_32_bits_is_compared_whole)
{
    /* The bound of side 0 is far below 0: its room is 3.1 x 10^9. That of side 1 is below 0. */
    const Level level = make_level(2, {}, {}, {2147000000, 1000});
    set_sides(level.get(), {0, 1});
    PartCtrl ctrl = make_ctrl();
    ctrl.splitratio = 0.02f;
    ctrl.ubfactor = 0.49f;
    EXPECT_EQ(moved_vertices(refine(Refine_FM__, ctrl, level.get(), 1))[0], 0);
    set_sides(level.get(), {1, 0});
    ctrl.splitratio = 0.98f;
    EXPECT_EQ(moved_vertices(refine(Refine_FM__, ctrl, level.get(), 1))[0], 0);
}

TEST(Fm, last_queued_of_equal_gains_moves_first)
{
    const Level level = make_level(6, {});
    set_sides(level.get(), Ints(6, 0));
    EXPECT_EQ(moved_vertices(refine(Refine_FM__, loose_ctrl(), level.get(), 1)),
              (Ints{5, 4, 3, 2, 1, 0}));
}

TEST(Fm, without_passes_nothing_is_computed)
{
    for (const Refine routine : {Refine_FM__, Refine_FM2__, eefm, eefm2}) {
        const Level level = make_level(2, {{0, 1}});
        set_sides(level.get(), {0, 1});
        level->mincut = 77;
        EXPECT_EQ(refine(routine, make_ctrl(), level.get(), 0), "");
        EXPECT_EQ(level->mincut, 77);
    }
}

/* Vertex 0 would gain but its side is at the bound; vertex 1 gains less and has no room either. */
TEST(Fm, side_that_stands_in_for_a_refused_one_is_not_tested)
{
    const Level level = make_level(4, {{0, 1}, {0, 2}}, {3, 5}, {10, 10, 1, 1});
    set_sides(level.get(), {0, 1, 1, 0});
    const std::string trace = refine(Refine_FM__, make_ctrl(), level.get(), 1);
    EXPECT_EQ(moved_vertices(trace)[0], 2); // vertex 0 gains 8 and is refused
    const Level tight = make_level(2, {{0, 1}}, {3}, {10, 10});
    set_sides(tight.get(), {0, 1});
    EXPECT_EQ(moved_vertices(refine(Refine_FM__, make_ctrl(), tight.get(), 1)).size(), 2u);
}

TEST(Fm, equal_cut_with_better_balance_is_kept_and_ends_the_refinement)
{
    const Level level = make_level(6, {});
    set_sides(level.get(), Ints(6, 0));
    const std::string trace = refine(Refine_FM__, loose_ctrl(), level.get());
    EXPECT_EQ(level->pwgts[0], 3);
    EXPECT_EQ(count_lines(trace, "\tMinimum Cut"), 1u);
}

TEST(Fm, level_without_vertices_is_refined_to_nothing)
{
    const Level level = make_level(0, {});
    AllocateRefinementMemory__(level.get());
    refine(Refine_FM__, make_ctrl(), level.get());
    EXPECT_EQ(level->mincut, 0);
}

TEST(Fm, bounds_are_rounded_in_two_precisions)
{
    // 0.45 x 20 is 9 in single precision, a little less in double
    const Level level = make_level(20, {});
    set_sides(level.get(), Ints(20, 0));
    const std::string trace = refine(Refine_FM__, make_ctrl(), level.get(), 1);
    EXPECT_NE(lines_with(trace, "Partitions:")[0].find("[9 8]"), std::string::npos) << trace;
}

TEST(ConstrainedFm, small_room_behaves_as_plain_fm)
{
    for (unsigned seed = 0; seed < 300; seed++) {
        LevelLimits limits;
        limits.heavy = false; // at most 60 vertices of weight 9
        Draw draw(seed), same(seed);
        const Level plain = random_level(draw, limits), constrained = random_level(same, limits);
        PartCtrl ctrl = random_bisection_ctrl(draw);
        const Ints sides = random_parts(draw, plain->ncells, 2);
        set_sides(plain.get(), sides);
        set_sides(constrained.get(), sides);
        srand(seed);
        Refine_FM__(&ctrl, plain.get(), 10);
        srand(seed);
        Refine_FM2__(&ctrl, constrained.get(), 10);
        ASSERT_EQ(to_ints(plain->where, plain->ncells), to_ints(constrained->where, plain->ncells));
        ASSERT_EQ(plain->mincut, constrained->mincut);
    }
}

/* Side 0 (6300, bound 4800) holds a heavy vertex 0 of gain 5, a light vertex 1 and a filler; side 1
 * cannot give up its only vertex. */
static Level heavy_top(int lightgain)
{
    Level level = make_level(4, {{0, 3}, {1, 3}}, {5, lightgain}, {5000, 100, 1200, 5700});
    set_sides(level.get(), {0, 0, 0, 1});
    return level;
}

static PartCtrl tenth_ctrl()
{
    PartCtrl ctrl = make_ctrl();
    ctrl.ubfactor = 0.1f;
    return ctrl;
}

TEST(ConstrainedFm, heavy_top_is_passed_over_for_the_best_that_fits)
{
    const Level plain = heavy_top(3), constrained = heavy_top(3), exact = heavy_top(3);
    EXPECT_EQ(moved_vertices(refine(Refine_FM__, tenth_ctrl(), plain.get(), 1))[0], 0);
    EXPECT_EQ(moved_vertices(refine(Refine_FM2__, tenth_ctrl(), constrained.get(), 1))[0], 1);
    EXPECT_EQ(moved_vertices(refine(eefm2, tenth_ctrl(), exact.get(), 1))[0], 1);
}

TEST(ConstrainedFm, heavy_top_stays_the_candidate_when_none_fits)
{
    const Level level = heavy_top(0); // the light vertices gain nothing
    EXPECT_EQ(moved_vertices(refine(Refine_FM2__, tenth_ctrl(), level.get(), 1))[0], 0);
}

TEST(ConstrainedFm, balance_test_decides_about_a_heavy_candidate)
{
    // heavy 1 gains 6 against fixed 0 but may not leave; nobody else on side 0 gains, so 4 moves
    const Level level = make_level(5, {{0, 1}, {1, 4}}, {5, 1}, {5400, 5000, 1200, 100, 300}, 1);
    set_sides(level.get(), {1, 0, 0, 0, 1});
    EXPECT_EQ(moved_vertices(refine(Refine_FM2__, tenth_ctrl(), level.get(), 1))[0], 4);
}

TEST(EarlyExit, limit_is_a_truncated_share_of_the_vertices)
{
    // 25 x 0.1 gives 2: the move with number 2 is taken back, unprinted, and ends the pass
    const Level twenty_five = two_cliques(12, 13);
    EXPECT_EQ(moved_vertices(refine(eefm, loose_ctrl(), twenty_five.get())).size(), 2u);
    const Level thirty = two_cliques(15, 15);
    EXPECT_EQ(moved_vertices(refine(eefm, loose_ctrl(), thirty.get())).size(), 3u);
}

TEST(EarlyExit, early_exit_restores_the_start)
{
    const Level level = two_cliques(12, 13);
    const Ints sides = to_ints(level->where, 25), gain = to_ints(level->gain, 25);
    refine(eefm, loose_ctrl(), level.get());
    EXPECT_EQ(to_ints(level->where, 25), sides);
    EXPECT_EQ(to_ints(level->gain, 25), gain);
    EXPECT_EQ(level->pwgts[0], 12);
}

TEST(EarlyExit, ties_never_end_a_pass)
{
    const Level level = make_level(25, {});
    set_sides(level.get(), Ints(25, 0));
    EXPECT_EQ(moved_vertices(refine(eefm, loose_ctrl(), level.get())).size(), 25u);
}

TEST(EarlyExit, equal_cut_with_better_balance_is_not_a_better_point)
{
    const Level level = make_level(6, {});
    set_sides(level.get(), Ints(6, 0));
    refine(eefm, loose_ctrl(), level.get());
    EXPECT_EQ(level->pwgts[0], 6);
}

TEST(EarlyExit, gains_and_counts_are_exact_on_return)
{
    for (const Refine routine : {eefm, eefm2}) {
        const Level level = make_level(30, path_nets(30));
        Draw draw(5);
        set_sides(level.get(), random_parts(draw, 30, 2));
        refine(routine, loose_ctrl(), level.get());
        EXPECT_EQ(ComputeCut__(level.get()), level->mincut);
        const Ints gain = to_ints(level->gain, 30);
        ComputeInitGains__(level.get());
        EXPECT_EQ(to_ints(level->gain, 30), gain);
    }
}
