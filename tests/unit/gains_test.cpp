// SPDX-License-Identifier: MIT
/* tests/unit/gains_test.cpp: gains, pin counts and cut from scratch. */
#include "refine/gains.h"

#include "levels.h"
#include "spare/hooks.h"

TEST(Gains, hyperedge_on_one_side_lowers_every_gain_and_is_not_cut)
{
    const Level level = make_level(4, {{0, 1, 2}}, {5});
    set_sides(level.get(), {0, 0, 0, 1});
    EXPECT_EQ(to_ints(level->gain, 4), (Ints{-5, -5, -5, 0}));
    EXPECT_EQ(level->mincut, 0);
}

TEST(Gains, hyperedge_with_one_pin_on_each_side_raises_both_gains)
{
    const Level level = make_level(2, {{0, 1}}, {7});
    set_sides(level.get(), {1, 0});
    EXPECT_EQ(to_ints(level->gain, 2), (Ints{7, 7}));
    EXPECT_EQ(level->mincut, 7);
}

TEST(Gains, only_the_lonely_pin_of_a_cut_hyperedge_gains)
{
    const Level level = make_level(3, {{0, 1, 2}}, {4});
    set_sides(level.get(), {0, 0, 1});
    EXPECT_EQ(to_ints(level->gain, 3), (Ints{0, 0, 4}));
    EXPECT_EQ(level->ndeg[0][0], 2);
    EXPECT_EQ(level->ndeg[1][0], 1);
}

TEST(Gains, two_pins_on_each_side_gain_nothing)
{
    const Level level = make_level(4, {{0, 1, 2, 3}}, {4});
    set_sides(level.get(), {0, 1, 0, 1});
    EXPECT_EQ(to_ints(level->gain, 4), Ints(4, 0));
    EXPECT_EQ(level->mincut, 4);
}

TEST(Gains, level_without_hyperedges_has_no_cut_and_no_gains)
{
    const Level level = make_level(3, {}, {}, {2, 3, 4});
    set_sides(level.get(), {0, 1, 1});
    EXPECT_EQ(level->mincut, 0);
    EXPECT_EQ(to_ints(level->gain, 3), Ints(3, 0));
    EXPECT_EQ(ComputeCut__(level.get()), 0);
    EXPECT_EQ(level->pwgts[0], 2);
    EXPECT_EQ(level->pwgts[1], 7);
}

TEST(Gains, hyperedge_of_one_vertex_counts_against_it)
{
    const Level level = make_level(2, {{0}, {0, 1}}, {3, 5});
    set_sides(level.get(), {0, 1});
    EXPECT_EQ(to_ints(level->gain, 2), (Ints{2, 5}));
    EXPECT_EQ(level->mincut, 5);
}

TEST(Gains, empty_hyperedge_counts_for_nothing)
{
    const Level level = make_level(2, {{}, {0, 1}}, {3, 5});
    set_sides(level.get(), {0, 1});
    EXPECT_EQ(level->mincut, 5);
    EXPECT_EQ(ComputeCut__(level.get()), 5);
}

TEST(Gains, sides_other_than_0_and_1_are_refused_by_the_check)
{
    const Level level = make_level(2, {{0, 1}});
    set_sides(level.get(), {0, 1});
    EXPECT_TRUE(hgraph_ok(level.get(), HG_WHERE | HG_GAINS));
    level->where[1] = 2;
    EXPECT_FALSE(hgraph_ok(level.get(), HG_WHERE));
}

TEST(Gains, cut_by_pin_counts_follows_the_counts_not_the_sides)
{
    const Level level = make_level(3, path_nets(3), {2, 3});
    set_sides(level.get(), {0, 0, 1});
    level->where[1] = 1;
    EXPECT_EQ(ComputeCut__(level.get()), 3);
    ComputeInitGains__(level.get());
    EXPECT_EQ(ComputeCut__(level.get()), 2);
}

TEST(Gains, parked_islands_get_a_side_entry_but_no_gain)
{
    const Level level = make_level(2, {{0, 1}});
    level->nislands = 1;
    AllocateRefinementMemory__(level.get());
    for (int v = 0; v < 3; v++) level->where[v] = v % 2;
    ComputeInitGains__(level.get());
    EXPECT_EQ(level->where[2], 0);
    EXPECT_EQ(level->pwgts[0], 1);
    level->nislands = 0;
}

TEST(Gains, check_degrees_changes_nothing)
{
    const Level level = make_level(3, path_nets(3));
    set_sides(level.get(), {0, 1, 1});
    level->gain[0] = 77;
    CheckDegrees(level.get());
    EXPECT_EQ(to_ints(level->gain, 3), (Ints{77, 0, -1}));
    EXPECT_EQ(level->mincut, 1);
}
