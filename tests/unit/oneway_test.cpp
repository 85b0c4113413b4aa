// SPDX-License-Identifier: MIT
/* tests/unit/oneway_test.cpp: FM passes in one direction. */
#include "refine/oneway.h"

#include "levels.h"
#include "traces.h"

static std::string refine(HGraph *graph, int npasses, float ubfactor = 0.45f)
{
    PartCtrl ctrl = make_ctrl();
    ctrl.ubfactor = ubfactor;
    ctrl.dbglvl = DBG_PASS | DBG_MOVE;
    return printed_by([&] { Refine_OneWayFM__(&ctrl, graph, npasses); });
}

/* The giving side of each pass, the last field of its line. */
static std::string givers(const std::string &trace)
{
    std::string sides;
    for (const std::string &line : lines_with(trace, "\tMinimum Cut"))
        sides += line[line.size() - 2];
    return sides;
}

TEST(OneWay, equal_weights_start_from_side_0_and_alternate)
{
    const Level level = make_level(4, {{0, 1}, {2, 3}});
    set_sides(level.get(), {0, 0, 1, 1});
    EXPECT_EQ(givers(refine(level.get(), 10)), "01");
}

TEST(OneWay, heavier_side_gives_first)
{
    const Level level = make_level(4, {{0, 1}, {2, 3}}, {}, {1, 1, 2, 1});
    set_sides(level.get(), {0, 0, 1, 1});
    EXPECT_EQ(givers(refine(level.get(), 10)), "10");
}

TEST(OneWay, one_pass_never_meets_the_stop_test)
{
    const Level level = make_level(4, {{0, 1}, {2, 3}});
    set_sides(level.get(), {0, 0, 1, 1});
    EXPECT_EQ(givers(refine(level.get(), 1)), "0");
}

TEST(OneWay, improving_return_pass_is_followed_by_another_pair)
{
    // moving 3 back to side 0 pays, moving off side 0 does not
    const Level level = make_level(5, {{0, 1}, {0, 2}, {1, 2}, {2, 3}}, {}, {2, 2, 2, 1, 3});
    set_sides(level.get(), {0, 0, 0, 1, 1});
    const std::string trace = refine(level.get(), 10, 0.2f);
    EXPECT_EQ(givers(trace), "0101");
    EXPECT_EQ(level->mincut, 0);
}

TEST(OneWay, side_at_its_bound_with_no_gain_ends_the_pass_before_any_move)
{
    const Level level = make_level(4, {{0, 1}, {2, 3}}, {}, {5, 5, 5, 5});
    set_sides(level.get(), {0, 0, 1, 1});
    EXPECT_EQ(moved_vertices(refine(level.get(), 10, 0.05f)), Ints());
}

TEST(OneWay, held_vertex_of_positive_gain_is_skipped_for_the_next)
{
    // heavy 0 gains 4 and is held back; light 1 gains 2 and moves
    const Level level = make_level(5, {{0, 3}, {1, 4}}, {4, 2}, {9, 1, 1, 5, 5});
    set_sides(level.get(), {0, 0, 0, 1, 1});
    const std::string trace = refine(level.get(), 1, 0.2f);
    EXPECT_EQ(moved_vertices(trace)[0], 1);
    EXPECT_EQ(level->where[0], 0);
    EXPECT_EQ(level->where[1], 1);
    EXPECT_EQ(lines_with(trace, "\tMinimum Cut")[0],
              "\tMinimum Cut:        4 [       4] at     1 [    10     11] [0]");
}

TEST(OneWay, receiving_side_never_moves_and_fixed_vertices_stay)
{
    const Level level = make_level(6, {{0, 3}, {1, 4}, {2, 5}}, {}, {}, 1);
    set_sides(level.get(), {0, 0, 0, 1, 1, 1});
    for (int v : moved_vertices(refine(level.get(), 1))) {
        EXPECT_GT(v, 0);
        EXPECT_LT(v, 3);
    }
    EXPECT_EQ(level->where[0], 0);
}

TEST(OneWay, header_names_the_giving_side_first)
{
    const Level level = make_level(3, {{0, 1}, {1, 2}}, {}, {1, 2, 4});
    set_sides(level.get(), {0, 0, 1});
    EXPECT_EQ(lines_with(refine(level.get(), 1), "1-way")[0],
              "1-way Partitions: [     1        4        3] Initial Cut:        1 [1] [0 0]");
}

TEST(OneWay, gains_are_exact_after_skips_and_rollbacks)
{
    const Level level = make_level(5, {{0, 3}, {1, 4}, {0, 1, 2}}, {4, 2, 3}, {9, 1, 1, 5, 5});
    set_sides(level.get(), {0, 0, 0, 1, 1});
    refine(level.get(), 6, 0.2f);
    EXPECT_TRUE(hgraph_ok(level.get(), HG_WHERE | HG_GAINS));
}

TEST(OneWay, without_passes_nothing_is_computed)
{
    const Level level = make_level(2, {{0, 1}});
    set_sides(level.get(), {0, 1});
    level->mincut = 77;
    EXPECT_EQ(refine(level.get(), 0), "");
    EXPECT_EQ(level->mincut, 77);
}
