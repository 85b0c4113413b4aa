// SPDX-License-Identifier: MIT
/* tests/unit/kway_gains_test.cpp: the k-way records, from scratch and after moves. */
#include "kway/kway_gains.h"

#include "kway_levels.h"

TEST(KwayGains, hyperedge_inside_one_part_counts_for_no_objective)
{
    const Level level = make_level(3, {{0, 1, 2}}, {5});
    set_parts(kway_ctrl(3, 1.5f), level.get(), {2, 2, 2});
    EXPECT_EQ(level->mincut, 0);
    EXPECT_EQ(level->minsoed, 0);
    EXPECT_EQ(level->nrinfo[0].ndegrees, 1);
    for (int v = 0; v < 3; v++) {
        EXPECT_EQ(level->crinfo[v].id, 5);
        EXPECT_EQ(level->crinfo[v].ed, 0);
        EXPECT_EQ(level->crinfo[v].ndegrees, 0); // nowhere to go
    }
}

TEST(KwayGains, two_pins_in_two_parts_count_once_for_the_cut_and_twice_for_soed)
{
    const Level level = make_level(2, {{0, 1}}, {7});
    set_parts(kway_ctrl(3, 1.5f), level.get(), {0, 2});
    EXPECT_EQ(level->mincut, 7);
    EXPECT_EQ(level->minsoed, 14);
    for (int v = 0; v < 2; v++) {
        const KwayPartDeg entry = entry_of(level.get(), v, 2 - level->where[v]);
        EXPECT_EQ(entry.num - level->crinfo[v].id, 7);               // cut gain
        EXPECT_EQ(entry.num - level->crinfo[v].id + entry.soed, 14); // SOED gain
        EXPECT_EQ(entry.ties, 0);
    }
}

TEST(KwayGains, records_of_a_hyperedge_in_three_parts)
{
    const Level level = make_level(5, {{0, 1, 2, 3, 4}, {0, 3}}, {3, 2});
    set_parts(kway_ctrl(3, 1.5f), level.get(), {0, 1, 1, 1, 2});
    EXPECT_EQ(level->mincut, 5);
    EXPECT_EQ(level->minsoed, 3 * 3 + 2 * 2);
    const NetKwayInfo &net = level->nrinfo[0];
    ASSERT_EQ(net.ndegrees, 3);
    EXPECT_EQ(net.degrees[0].pid, 0); // in order of first appearance
    EXPECT_EQ(net.degrees[1].pid, 1);
    EXPECT_EQ(net.degrees[1].num, 3);
    EXPECT_EQ(net.degrees[2].pid, 2);
    EXPECT_EQ(level->crinfo[0].id, 0);
    EXPECT_EQ(level->crinfo[0].ed, 5);
    const KwayPartDeg to1 = entry_of(level.get(), 0, 1), to2 = entry_of(level.get(), 0, 2);
    EXPECT_EQ(to1.num, 2);  // the pair only
    EXPECT_EQ(to1.soed, 5); // both hyperedges touch part 1
    EXPECT_EQ(to1.ties, 1); // fewer pins here than there, and as many
    EXPECT_EQ(to2.num, 0);
    EXPECT_EQ(to2.soed, 5 - (5 - 3));
    EXPECT_EQ(to2.ties, 0);
    EXPECT_EQ(entry_of(level.get(), 1, 0).ties, -1); // three pins here, one there
}

TEST(KwayGains, part_weights_are_summed)
{
    const Level level = make_level(4, {}, {}, {1, 2, 4, 8});
    set_parts(kway_ctrl(3, 1.5f), level.get(), {2, 0, 2, 2});
    EXPECT_EQ(to_ints(level->kpwgts, 3), (Ints{2, 0, 13}));
}

TEST(KwayGains, moves_there_and_back_restore_the_records)
{
    const PartCtrl ctrl = kway_ctrl(3, 1.5f);
    const Level level = make_level(5, {{0, 1, 2, 3, 4}, {0, 3}, {1, 2}}, {3, 2, 4});
    set_parts(ctrl, level.get(), {0, 1, 1, 1, 2});
    const int cut = level->mincut;
    move_vertex(level.get(), 0, 1);
    EXPECT_TRUE(kway_ok(&ctrl, level.get()));
    EXPECT_EQ(level->nrinfo[0].ndegrees, 2);
    EXPECT_EQ(level->nrinfo[1].ndegrees, 1);
    EXPECT_EQ(level->crinfo[3].id, 2);
    move_vertex(level.get(), 0, 0);
    EXPECT_TRUE(kway_ok(&ctrl, level.get()));
    EXPECT_EQ(level->mincut, cut);
}

TEST(KwayGains, last_part_of_a_hyperedge_takes_the_place_of_one_that_vanishes)
{
    const Level level = make_level(4, {{0, 1, 2, 3}});
    set_parts(kway_ctrl(4, 4.0f), level.get(), {0, 1, 2, 3});
    move_vertex(level.get(), 0, 2);
    const NetKwayInfo &net = level->nrinfo[0];
    ASSERT_EQ(net.ndegrees, 3);
    EXPECT_EQ(net.degrees[0].pid, 3);
    EXPECT_EQ(net.degrees[1].pid, 1);
    EXPECT_EQ(net.degrees[2].pid, 2);
    EXPECT_EQ(net.degrees[2].num, 2);
}

TEST(KwayGains, pins_of_a_hyperedge_that_stays_well_held_keep_their_old_votes)
{
    // part 0 keeps two of three pins, part 1 goes from two to three
    const Level level = make_level(6, {{0, 1, 2, 3, 4}, {2, 5}});
    set_parts(kway_ctrl(3, 3.0f), level.get(), {0, 0, 0, 1, 1, 2});
    EXPECT_EQ(entry_of(level.get(), 1, 1).ties, -1);
    move_vertex(level.get(), 0, 1);
    EXPECT_EQ(entry_of(level.get(), 1, 1).ties, -1); // 2 against 3 pins would be +1
    EXPECT_EQ(entry_of(level.get(), 0, 0).ties, -1); // the moved vertex itself is computed anew
    const Ints list = {1};
    ComputeKwayGainsSet__(level.get(), 1, list.data());
    EXPECT_EQ(entry_of(level.get(), 1, 1).ties, 1);
}

TEST(KwayGains, vertex_without_hyperedges_moves_alone)
{
    const PartCtrl ctrl = kway_ctrl(2, 2.0f);
    const Level level = make_level(3, {{0, 1}});
    set_parts(ctrl, level.get(), {0, 1, 0});
    move_vertex(level.get(), 2, 1);
    EXPECT_EQ(level->crinfo[2].ndegrees, 0);
    EXPECT_EQ(level->crinfo[2].id, 0);
    EXPECT_TRUE(kway_ok(&ctrl, level.get()));
}

TEST(KwayGains, check_sees_a_wrong_record)
{
    const PartCtrl ctrl = kway_ctrl(2, 2.0f);
    const Level level = make_level(3, path_nets(3));
    set_parts(ctrl, level.get(), {0, 1, 0});
    EXPECT_TRUE(kway_ok(&ctrl, level.get()));
    for (int *const field :
         {&level->mincut, &level->minsoed, &level->kpwgts[1], &level->crinfo[0].id,
          &level->crinfo[0].ed, &level->crinfo[1].ndegrees, &level->crinfo[1].degrees[0].num,
          &level->crinfo[1].degrees[0].soed, &level->nrinfo[0].degrees[1].num}) {
        (*field)--;
        EXPECT_FALSE(kway_ok(&ctrl, level.get()));
        (*field)++;
    }
}
