// SPDX-License-Identifier: MIT
/* tests/unit/balance_test.cpp: greedy repair of an unbalanced bisection. */
#include "refine/balance.h"

#include "levels.h"
#include "traces.h"

static std::string balance(HGraph *graph, float ubfactor = 0.05f)
{
    PartCtrl ctrl = make_ctrl();
    ctrl.ubfactor = ubfactor;
    ctrl.dbglvl = DBG_PASS;
    return printed_by([&] { Balance__(&ctrl, graph); });
}

TEST(Balance, bisection_within_its_bounds_is_returned_untouched)
{
    const Level level = make_level(4, path_nets(4));
    set_sides(level.get(), {0, 1, 0, 1});
    level->mincut = 77;
    level->pwgts[0] = level->pwgts[1] = 99;
    EXPECT_EQ(balance(level.get()), "");
    EXPECT_EQ(to_ints(level->where, 4), (Ints{0, 1, 0, 1}));
    EXPECT_EQ(level->mincut, 77);
    EXPECT_EQ(level->pwgts[0], 2); // always recomputed
    EXPECT_EQ(level->pwgts[1], 2);
}

TEST(Balance, vertices_too_heavy_for_the_slack_are_discarded_one_by_one)
{
    const Level level = make_level(3, {{0, 2}, {1, 2}}, {}, {75, 75, 40});
    set_sides(level.get(), {0, 0, 1});
    const std::string trace = balance(level.get(), 0.1f); // either side needs 76
    EXPECT_EQ(count_lines(trace, "Partitions[B]: [     2,     150]  [     1,      40]"), 1u);
    EXPECT_EQ(to_ints(level->where, 3), (Ints{0, 0, 1}));
    EXPECT_EQ(level->mincut, 2);
}

TEST(Balance, best_gain_moves_first_and_only_as_often_as_needed)
{
    const Level level = make_level(6, {{0, 5}, {1, 2}}, {3, 2});
    set_sides(level.get(), {0, 0, 0, 0, 0, 1});
    balance(level.get(), 0.17f); // each side needs 1.98, truncated to 1
    EXPECT_EQ(to_ints(level->where, 6), (Ints{0, 0, 0, 0, 0, 1}));
    balance(level.get(), 0.1f); // 2.4: two
    EXPECT_EQ(to_ints(level->where, 6), (Ints{1, 0, 0, 0, 0, 1}));
    EXPECT_EQ(level->mincut, 0);
}

TEST(Balance, side_1_gives_when_side_0_is_short)
{
    const Level level = make_level(6, {{0, 1}, {1, 2}}, {5, 1});
    set_sides(level.get(), {0, 1, 1, 1, 1, 1});
    balance(level.get());
    EXPECT_EQ(level->where[1], 0);
    EXPECT_EQ(level->pwgts[0], 2);
}

TEST(Balance, fixed_vertices_stay_but_their_gains_are_kept_current)
{
    const Level level = make_level(6, {{0, 2}, {0, 3}, {1, 4}}, {}, {}, 2);
    set_sides(level.get(), {0, 0, 0, 0, 0, 1});
    balance(level.get());
    EXPECT_EQ(level->where[0], 0);
    EXPECT_EQ(level->where[1], 0);
    EXPECT_EQ(level->pwgts[1], 2);
    EXPECT_TRUE(hgraph_ok(level.get(), HG_WHERE | HG_GAINS));
}

TEST(Balance, cut_may_rise_and_mincut_reports_it)
{
    const Level level = make_level(4, {{0, 1}, {1, 2}, {2, 3}, {3, 0}}, {2, 2, 2, 2});
    set_sides(level.get(), {0, 0, 0, 0});
    balance(level.get());
    EXPECT_EQ(level->pwgts[1], 1);
    EXPECT_EQ(level->mincut, 4);
    EXPECT_EQ(fresh_cut(level.get(), level->where), 4);
}

TEST(Balance, nothing_to_move_leaves_the_bisection_unbalanced)
{
    const Level level = make_level(3, path_nets(3), {}, {}, 3);
    set_sides(level.get(), {0, 0, 0});
    EXPECT_EQ(count_lines(balance(level.get()), "Partitions[B]: [     0,       3]"), 1u);
    EXPECT_EQ(to_ints(level->where, 3), Ints(3, 0));
    EXPECT_EQ(level->mincut, 0);
}
