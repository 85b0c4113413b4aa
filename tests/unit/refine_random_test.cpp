// SPDX-License-Identifier: MIT
/* tests/unit/refine_random_test.cpp: greedy k-way refinement. On fewer than 16 vertices the random
 * order is the order of numbers.
 */
#include "kway/refine_random.h"

#include "kway_levels.h"
#include "traces.h"

static std::string refine(PartCtrl ctrl, HGraph *graph, bool soed = false, int npasses = 10)
{
    ctrl.dbglvl = DBG_PASS | DBG_MOVE;
    return printed_by(
        [&] { (soed ? RefineSOEDKway_Random__ : RefineCutKway_Random__)(&ctrl, graph, npasses); });
}

static size_t moves(const std::string &trace)
{
    return count_lines(trace, "\tMoving");
}

static size_t passes(const std::string &trace)
{
    return count_lines(trace, "\tCut:");
}

TEST(RefineRandom, without_passes_only_the_values_are_computed)
{
    for (const bool soed : {false, true}) {
        const PartCtrl ctrl = kway_ctrl(2, 2.0f);
        const Level level = make_level(4, path_nets(4), {3, 4, 5});
        set_parts(ctrl, level.get(), {0, 1, 0, 1});
        level->mincut = level->minsoed = level->objval = 77;
        EXPECT_EQ(refine(ctrl, level.get(), soed, 0), "");
        EXPECT_EQ(to_ints(level->where, 4), (Ints{0, 1, 0, 1}));
        EXPECT_EQ(level->mincut, 12);
        EXPECT_EQ(level->objval, soed ? 24 : 12);
    }
}

TEST(RefineRandom, vertex_moves_where_it_uncuts)
{
    const PartCtrl ctrl = kway_ctrl(2, 2.0f);
    const Level level = make_level(4, {{0, 1}, {0, 2}, {1, 2}, {0, 3}}, {2, 2, 2, 1});
    set_parts(ctrl, level.get(), {1, 0, 0, 1});
    refine(ctrl, level.get());
    EXPECT_EQ(level->where[0], 0);
    EXPECT_EQ(level->mincut, fresh_cut(level.get(), level->where));
}

TEST(RefineRandom, vertex_with_every_neighbouring_part_full_never_moves)
{
    for (const bool soed : {false, true}) {
        // parts weigh 3 and 3: 3.9 is the most, so one more does not fit
        const Level level = make_level(6, {{0, 3}, {0, 4}, {0, 5}});
        set_parts(kway_ctrl(2, 1.3f), level.get(), {0, 0, 0, 1, 1, 1});
        EXPECT_EQ(moves(refine(kway_ctrl(2, 1.3f), level.get(), soed)), 0u);
        EXPECT_GT(moves(refine(kway_ctrl(2, 1.5f), level.get(), soed)), 0u);
    }
}

TEST(RefineRandom, part_at_its_lower_bound_gives_nobody_up)
{
    for (const bool soed : {false, true}) {
        // three parts of average 4: at 1.5 the least is 2, so part 0 keeps its two vertices
        const Ints parts = {0, 0, 1, 1, 1, 1, 1, 2, 2, 2, 2, 2};
        const Nets nets = {{0, 2}, {1, 2}};
        const Level level = make_level(12, nets), loose = make_level(12, nets);
        set_parts(kway_ctrl(3, 1.5f), level.get(), parts);
        refine(kway_ctrl(3, 1.5f), level.get(), soed);
        EXPECT_EQ(level->where[0], 0);
        EXPECT_EQ(level->where[1], 0);
        set_parts(kway_ctrl(3, 4.0f), loose.get(), parts); // the least is 1
        refine(kway_ctrl(3, 4.0f), loose.get(), soed, 1);
        EXPECT_EQ(loose->where[0], 1);
        EXPECT_EQ(loose->where[1], 0);
    }
}

TEST(RefineRandom, parked_islands_are_never_visited)
{
    const PartCtrl ctrl = kway_ctrl(2, 2.0f);
    const Level level = make_level(3, path_nets(3));
    level->nislands = 2;
    AllocateKwayRefinementMemory__(&ctrl, level.get());
    const Ints parts = {0, 1, 0, 9, 9};
    std::copy(parts.begin(), parts.end(), level->where);
    refine(ctrl, level.get());
    EXPECT_EQ(level->where[3], 9);
    EXPECT_EQ(level->where[4], 9);
    EXPECT_EQ(sum(level->kpwgts, 2), 3);
    level->nislands = 0;
}

TEST(RefineRandom, pass_of_moves_that_change_no_objective_is_the_last)
{
    for (const bool soed : {false, true}) {
        // 1 is drawn equally to both ends; part 0 is heavier by more than its weight
        const PartCtrl ctrl = kway_ctrl(2, 2.0f);
        const Level level = make_level(6, {{0, 1}, {1, 2}});
        set_parts(ctrl, level.get(), {0, 0, 1, 0, 0, 0});
        const std::string trace = refine(ctrl, level.get(), soed);
        EXPECT_EQ(level->minsoed, 2);
        EXPECT_GE(moves(trace), 1u);
        EXPECT_EQ(passes(trace), 1u);
    }
}

TEST(RefineRandom, equal_parts_at_ratio_1_are_frozen)
{
    for (const bool soed : {false, true}) {
        const PartCtrl ctrl = kway_ctrl(3, 1.0f);
        const Level level = make_level(6, {{0, 2}, {0, 3}, {1, 4}});
        set_parts(ctrl, level.get(), {0, 0, 1, 1, 2, 2});
        EXPECT_EQ(moves(refine(ctrl, level.get(), soed)), 0u);
    }
}

TEST(RefineRandom, fixed_vertices_never_move)
{
    for (const bool soed : {false, true}) {
        const PartCtrl ctrl = kway_ctrl(2, 2.0f);
        const Level level = make_level(4, {{0, 1}, {0, 2}, {0, 3}}, {}, {}, 4);
        set_parts(ctrl, level.get(), {0, 1, 1, 1});
        EXPECT_EQ(moves(refine(ctrl, level.get(), soed)), 0u);
    }
}

TEST(RefineRandom, complete_tie_goes_to_the_lighter_part_then_to_the_later_entry)
{
    // vertex 0 is drawn alike to parts 1 and 2
    const PartCtrl ctrl = kway_ctrl(3, 3.0f);
    const Nets nets = {{0, 1}, {0, 2}};
    const Level even = make_level(3, nets), uneven = make_level(3, nets, {}, {1, 1, 2});
    set_parts(ctrl, even.get(), {0, 1, 2});
    EXPECT_EQ(lines_with(refine(ctrl, even.get(), false, 1), "\tMoving")[0],
              "\tMoving      0[  2] (  0 ->   2) [   0    1    1    0]     1     2");
    set_parts(ctrl, uneven.get(), {0, 1, 2});
    EXPECT_EQ(lines_with(refine(ctrl, uneven.get(), false, 1), "\tMoving")[0],
              "\tMoving      0[  2] (  0 ->   1) [   0    1    1    0]     1     2");
}

TEST(RefineRandom, zero_gain_move_needs_a_strict_improvement_of_balance)
{
    // 2 stands between two fixed vertices; the difference must exceed its weight
    const PartCtrl ctrl = kway_ctrl(2, 2.0f);
    const Nets nets = {{0, 2}, {2, 1}};
    const Level near = make_level(4, nets, {}, {1, 1, 1, 0}, 2);
    set_parts(ctrl, near.get(), {0, 1, 0, 0}); // 2 against 1
    EXPECT_EQ(moves(refine(ctrl, near.get())), 0u);
    const Level far = make_level(4, nets, {}, {1, 1, 1, 1}, 2);
    set_parts(ctrl, far.get(), {0, 1, 0, 0}); // 3 against 1
    EXPECT_EQ(moves(refine(ctrl, far.get(), false, 1)), 1u);
}

/* Vertex 0 alone in part 0 on a hyperedge of three parts, and tied to 3 within part 0. */
static Level three_part_level(int w, const Ints &cellwgt = {})
{
    return make_level(4, {{0, 1, 2}, {0, 3}}, {w, 1}, cellwgt);
}

TEST(RefineSoed, positive_soed_move_is_made_although_the_cut_rises)
{
    const PartCtrl ctrl = kway_ctrl(3, 3.0f);
    const Level level = three_part_level(2), cut = three_part_level(2);
    set_parts(ctrl, level.get(), {0, 1, 2, 0});
    EXPECT_EQ(level->mincut, 2);
    const std::string trace = refine(ctrl, level.get(), true, 1);
    EXPECT_EQ(lines_with(trace, "\tMoving")[0],
              "\tMoving      0[  2] (  0 ->   2) [   1    0    1    0]     3     6");
    set_parts(ctrl, cut.get(), {0, 1, 2, 0});
    for (const std::string &line : lines_with(refine(ctrl, cut.get(), false, 1), "\tMoving"))
        EXPECT_EQ(line.find("\tMoving      0"), std::string::npos); // not for the cut's sake
}

TEST(RefineSoed, level_soed_and_a_worse_cut_are_refused_even_for_balance)
{
    const PartCtrl ctrl = kway_ctrl(3, 3.0f);
    const Level level = three_part_level(1, {1, 1, 1, 50});
    set_parts(ctrl, level.get(), {0, 1, 2, 0});
    EXPECT_EQ(level->crinfo[0].id, 1);
    EXPECT_EQ(entry_of(level.get(), 0, 1).soed, 0);
    const std::string trace = refine(ctrl, level.get(), true);
    EXPECT_EQ(level->where[0], 0);
}

TEST(RefineSoed, passes_end_when_neither_value_changes)
{
    const PartCtrl ctrl = kway_ctrl(2, 2.0f);
    const Level level = make_level(4, {{0, 1}, {0, 2}, {1, 2}, {0, 3}}, {2, 2, 2, 1});
    set_parts(ctrl, level.get(), {1, 0, 0, 1});
    const std::string trace = refine(ctrl, level.get(), true);
    const auto ends = lines_with(trace, "\tCut:");
    ASSERT_GE(ends.size(), 2u);
    EXPECT_EQ(ends.back().substr(0, 30), ends[ends.size() - 2].substr(0, 30));
    EXPECT_EQ(level->objval, level->minsoed);
}

TEST(RefineRandom, header_tells_bounds_rounded_to_single)
{
    const PartCtrl ctrl = kway_ctrl(3, 1.1f);
    const Level level = make_level(10, {{0, 1}}, {4});
    set_parts(ctrl, level.get(), {0, 1, 2, 0, 0, 0, 1, 1, 2, 2});
    EXPECT_EQ(lines_with(refine(ctrl, level.get(), false, 1), "Partitions")[0],
              "Partitions: [    3,    4], Balance: [1.10,     3,    3], Init Cut:     4, "
              "Init SOED:     8");
}
