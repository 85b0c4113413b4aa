// SPDX-License-Identifier: MIT
/* tests/unit/match_hedges_test.cpp: matching by whole hyperedges. */
#include "coarsen/match_hedges.h"

#include "levels.h"
#include "matchings.h"

static Nets match(const std::string &name, HGraph *graph, int maxweight = 1000)
{
    PartCtrl ctrl = make_ctrl();
    ctrl.MaxCellWgt = maxweight;
    run_matching(name, &ctrl, graph);
    return groups_of(graph);
}

TEST(MatchHedges, hyperedge_too_heavy_is_taken_neither_whole_nor_in_part)
{
    for (const std::string name : {"HedgesEdges", "HedgesPHedgesEdges"}) {
        const Level level = make_level(3, {{0, 1, 2}}, {}, {4, 4, 4});
        EXPECT_EQ(match(name, level.get(), 11), (Nets{{0, 1}, {2}}));
    }
    const Level fits = make_level(3, {{0, 1, 2}}, {}, {4, 4, 4});
    EXPECT_EQ(match("HedgesPHedgesEdges", fits.get(), 12), (Nets{{0, 1, 2}}));
}

TEST(MatchHedges, one_free_pin_of_two_is_not_more_than_half)
{
    const Level level = make_level(4, {{0, 1, 2}, {2, 3}}, {5, 1});
    EXPECT_EQ(match("HedgesPHedgesEdges", level.get()), (Nets{{0, 1, 2}, {3}}));
}

TEST(MatchHedges, two_free_pins_of_three_become_one_vertex_in_phase_two)
{
    const Level level = make_level(4, {{0, 1}, {3, 1, 2}}, {5, 1});
    EXPECT_EQ(match("HedgesPHedgesEdges", level.get()), (Nets{{0, 1}, {3, 2}})); // in pin order
}

TEST(MatchHedges, two_free_pins_of_four_are_left_to_pairs)
{
    // the pair {2, 3} could only come from phase two: 2 prefers 4
    const Level level = make_level(6, {{0, 1}, {0, 1, 2, 3}, {2, 4, 5, 0, 1}}, {9, 1, 8});
    const Nets groups = match("HedgesPHedgesEdges", level.get());
    EXPECT_EQ(groups[1], (Ints{2, 4, 5})); // three of five
    EXPECT_EQ(groups[2], (Ints{3}));
}

TEST(MatchHedges, partial_hyperedges_are_taken_by_the_middle_scheme_only)
{
    const Nets nets = {{0, 1}, {1, 2, 3, 4, 5}};
    const Level whole = make_level(6, nets, {5, 1}), pairs = make_level(6, nets, {5, 1});
    const Level partial = make_level(6, nets, {5, 1});
    EXPECT_EQ(match("Hedges", whole.get()), (Nets{{0, 1}, {2}, {3}, {4}, {5}}));
    EXPECT_EQ(match("HedgesEdges", pairs.get()), (Nets{{0, 1}, {2, 3}, {4, 5}}));
    EXPECT_EQ(match("HedgesPHedgesEdges", partial.get()), (Nets{{0, 1}, {2, 3, 4, 5}}));
}

TEST(MatchHedges, heavy_hyperedges_come_first_then_small_ones)
{
    const Level heavy = make_level(4, {{2, 3}, {0, 1, 2}}, {2, 3});
    EXPECT_EQ(match("Hedges", heavy.get()), (Nets{{0, 1, 2}, {3}}));
    const Level equal = make_level(4, {{0, 1, 2}, {2, 3}}, {2, 2});
    EXPECT_EQ(match("Hedges", equal.get()), (Nets{{2, 3}, {0}, {1}}));
}

TEST(MatchHedges, order_key_wraps_at_32_bits)
{
    // 10 x 300000000 wraps below zero, so the light hyperedge comes first
    const Level level = make_level(10, {{0, 1, 2}, {2, 3}}, {300000000, 1});
    EXPECT_EQ(match("Hedges", level.get())[0], (Ints{2, 3}));
}

TEST(MatchHedges, hyperedges_that_touch_grouped_vertices_leave_singletons)
{
    const Level level = make_level(4, {{0, 1}, {0, 2}, {0, 1, 2, 3}}, {}, {}, 1);
    EXPECT_EQ(match("Hedges", level.get()), (Nets{{0}, {1}, {2}, {3}}));
    EXPECT_EQ(level->coarser->ncells, level->ncells);
}

TEST(MatchHedges, empty_hyperedge_makes_no_group)
{
    for (const std::string name : {"Hedges", "HedgesEdges", "HedgesPHedgesEdges"}) {
        const Level level = make_level(2, {{}, {0, 1}}, {9, 1});
        EXPECT_EQ(match(name, level.get()), (Nets{{0, 1}}));
    }
}

TEST(MatchHedges, fixed_vertices_stay_alone)
{
    for (const std::string name : {"Hedges", "HedgesEdges", "HedgesPHedgesEdges"}) {
        const Level level = make_level(5, {{0, 1}, {1, 2, 3, 4}}, {}, {}, 2);
        const Nets groups = match(name, level.get());
        EXPECT_EQ(groups[0], Ints{0});
        EXPECT_EQ(groups[1], Ints{1});
    }
}
