// SPDX-License-Identifier: MIT
/* tests/unit/match_star_test.cpp: first-choice matching. On fewer than 16 vertices the random order
 * is the order of numbers.
 */
#include "coarsen/match_star.h"

#include "levels.h"
#include "matchings.h"

static Nets match(const std::string &name, HGraph *graph, int maxweight = 1000, int maxnetsize = 50)
{
    PartCtrl ctrl = make_ctrl();
    ctrl.MaxCellWgt = maxweight;
    ctrl.maxnetsize = maxnetsize;
    run_matching(name, &ctrl, graph);
    return groups_of(graph);
}

/* Vertex 0 joined to each of the others. */
static Nets star(int leaves)
{
    Nets nets;
    for (int v = 1; v <= leaves; v++) nets.push_back({0, v});
    return nets;
}

TEST(MatchStar, four_of_ten_vertices_join_a_partner_and_no_more)
{
    for (const std::string name : {"EdgesStars0", "EdgesStars1", "CEdgesStars"}) {
        Ints all(10);
        std::iota(all.begin(), all.end(), 0);
        const Level level = make_level(10, {all});
        level->where = new_array(Ints(10, 0));
        EXPECT_EQ(match(name, level.get()).size(), 6u);
    }
}

TEST(MatchStar, group_grows_while_the_quota_lasts)
{
    const Level level = make_level(6, star(5)); // 2.4: three may join
    EXPECT_EQ(match("EdgesStars0", level.get()), (Nets{{0, 1, 2, 3}, {4}, {5}}));
}

TEST(MatchStar, full_group_is_not_offered)
{
    const Level level = make_level(6, star(5));
    EXPECT_EQ(match("EdgesStars0", level.get(), 3), (Nets{{0, 1, 2}, {3}, {4}, {5}}));
}

TEST(MatchStar, single_vertex_weighs_as_a_group_when_others_join_it)
{
    // 0 (weight 5) finds nobody light enough and stays single; 1 would make its group 7
    const Level level =
        make_level(4, {{0, 1}, {1, 2}, {2, 3}, {0, 1, 3}}, {9, 1, 1, 1}, {5, 2, 1, 1});
    const Nets groups = match("EdgesStars0", level.get(), 6);
    for (size_t c = 0; c < groups.size(); c++) EXPECT_LE(level->coarser->cellwgt[c], 6);
}

TEST(MatchStar, fixed_vertices_never_receive_members)
{
    for (const std::string name : {"EdgesStars0", "EdgesStars1", "CEdgesStars"}) {
        const Level level = make_level(6, star(5), {}, {}, 1);
        level->where = new_array(Ints(6, 0));
        EXPECT_EQ(match(name, level.get()).size(), 6u);
        EXPECT_EQ(level->cellmap[0], 0);
    }
}

TEST(MatchStar, on_ties_a_later_candidate_replaces_a_grouped_one)
{
    // 0 takes 1 for 9; 4 sees 1 (grouped) and 5 (free) alike, the later one wins
    const Level level =
        make_level(7, {{0, 1}, {4, 1, 5}, {1, 6}, {5, 6}, {1, 5, 6}, {2, 3}}, {9, 2, 1, 1, 1, 1});
    const Nets groups = match("EdgesStars0", level.get());
    EXPECT_NE(std::find(groups.begin(), groups.end(), Ints{4, 5}), groups.end());
}

TEST(MatchStar, on_ties_the_first_candidate_stays_if_it_is_free)
{
    const Level level = make_level(3, {{0, 1, 2}}, {}, {1, 5, 2});
    EXPECT_EQ(match("EdgesStars0", level.get(), 6), (Nets{{0, 1}, {2}})); // weight does not matter
}

TEST(MatchStar, members_are_listed_in_increasing_order)
{
    const Level level = make_level(6, {{5, 0}, {5, 1}, {5, 2}, {5, 3}, {5, 4}});
    for (const Ints &group : match("EdgesStars0", level.get()))
        EXPECT_TRUE(std::is_sorted(group.begin(), group.end()));
}

/* Vertices 0 and 1 are joined by 2 strong hyperedges; the others by a weak one of 12 pins only. */
static Level weakly_joined()
{
    Ints pins = {0, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12};
    return make_level(13, {pins, {0, 1}, {0, 1}}, {1, 1, 1});
}

TEST(MatchStar, weak_hyperedges_do_not_count_for_the_order_but_for_the_partner)
{
    const Level level = weakly_joined();
    PartCtrl ctrl = make_ctrl();
    Ints keys(13), partners(13), htable(26, -1);
    EXPECT_EQ(ComputeAllWeights__(&ctrl, level.get(), keys.data(), partners.data(), htable.data()),
              51);
    EXPECT_EQ(keys[0], 50); // 100 / 2
    EXPECT_EQ(keys[1], 50);
    EXPECT_EQ(Ints(keys.begin() + 2, keys.end()), Ints(11, 51)); // last
    EXPECT_EQ(partners[0], 1);
    EXPECT_EQ(partners[1], 0);
    EXPECT_EQ(Ints(partners.begin() + 2, partners.end()), Ints(11, -1));
    EXPECT_EQ(htable, Ints(26, -1));
    // 1 and 0 first; the weak ones still pair up among themselves, up to the quota of 6
    EXPECT_EQ(match("EdgesStars1", level.get()),
              (Nets{{0, 1}, {2, 3}, {4, 5}, {6, 7}, {8, 9}, {10, 11}, {12}}));
}

TEST(MatchStar, strength_of_exactly_a_tenth_counts)
{
    Ints pins(11);
    std::iota(pins.begin(), pins.end(), 0);
    const Level level = make_level(11, {pins}); // 1 / 10 in single precision is above 0.1
    PartCtrl ctrl = make_ctrl();
    Ints keys(11), partners(11), htable(22, -1);
    EXPECT_EQ(ComputeAllWeights__(&ctrl, level.get(), keys.data(), partners.data(), htable.data()),
              1000);
    EXPECT_EQ(keys[0], 999);
}

TEST(MatchStar, vertex_with_no_partner_light_enough_comes_last)
{
    const Level level = make_level(3, {{0, 1}, {1, 2}}, {4, 2}, {9, 1, 1});
    PartCtrl ctrl = make_ctrl();
    ctrl.MaxCellWgt = 8;
    Ints keys(3), partners(3), htable(6, -1);
    EXPECT_EQ(ComputeAllWeights__(&ctrl, level.get(), keys.data(), partners.data(), htable.data()),
              51);
    EXPECT_EQ(keys, (Ints{51, 50, 50}));
}

/* Vertex 0 is joined to 1 by 1.1 and to 2 by 1; nweak hyperedges of 12 pins join it to 2, and
 * others give 1 so high a degree that 0 comes first. */
static Level contested(int nweak)
{
    Nets nets = {{0, 1}, {0, 2}, {0, 1, 3, 4, 5, 6, 7, 8, 9, 10, 11}};
    for (int i = 0; i < nweak; i++) nets.push_back({0, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12});
    nets.insert(nets.end(), 5, {1, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13});
    return make_level(14, nets);
}

static int partner_of_0(const Level &level)
{
    PartCtrl ctrl = make_ctrl();
    const size_t n = static_cast<size_t>(level.get()->ncells);
    const size_t m = static_cast<size_t>(level.get()->nnets);
    Ints keys(n), partners(n), htable(2 * (n + m), -1);
    ComputeAllWeights__(&ctrl, level.get(), keys.data(), partners.data(), htable.data());
    return partners[0];
}

TEST(MatchStar, partner_is_sure_while_its_lead_exceeds_all_that_the_survey_skips)
{
    EXPECT_EQ(partner_of_0(contested(0)), 1);
    EXPECT_EQ(partner_of_0(contested(1)), 1);  // a lead of 0.1, 1/11 skipped
    EXPECT_EQ(partner_of_0(contested(2)), -1); // 2/11 skipped
}

TEST(MatchStar, skipped_hyperedges_that_make_up_for_the_lead_decide)
{
    // 0 is the first in order: 1 has the same strength, but a higher degree
    const Nets groups = match("EdgesStars1", contested(2).get(), 2);
    EXPECT_EQ(groups[0], (Ints{0, 2}));
}

TEST(MatchStar, partner_is_not_sure_in_a_tie_or_a_lead_within_rounding)
{
    EXPECT_EQ(partner_of_0(make_level(3, {{0, 1}, {0, 2}})), -1);
    EXPECT_EQ(partner_of_0(make_level(3, {{0, 1}, {0, 2}}, {1 << 24, (1 << 24) - 1})), -1);
    EXPECT_EQ(partner_of_0(make_level(3, {{0, 1}, {0, 2}}, {1 << 10, (1 << 10) - 1})), 1);
}

TEST(MatchStar, partner_not_joined_by_a_strong_hyperedge_may_win)
{
    // 11 weak hyperedges of 1/11 beat a strong one of 1/2
    Nets nets(11, Nets::value_type{0, 1, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13});
    nets.push_back({0, 2, 3});
    EXPECT_EQ(partner_of_0(make_level(14, nets)), -1);
}

TEST(MatchStar, sure_partner_whose_group_is_full_is_passed_over)
{
    // 3 would surely join 2, but 1 has done so
    const Level level = make_level(4, {{1, 2}, {2, 3}, {0, 3}}, {4, 3, 1}, {1, 4, 4, 1});
    EXPECT_EQ(match("EdgesStars1", level.get(), 8), (Nets{{1, 2}, {0, 3}}));
}

TEST(RestrictedMatchStar, vertex_with_all_neighbours_in_other_parts_stays_single)
{
    const Level level = make_level(6, star(5));
    level->where = new_array({0, 1, 1, 1, 1, 0});
    match("CEdgesStars", level.get());
    EXPECT_EQ(sorted_groups_of(level.get()), (Nets{{0, 5}, {1}, {2}, {3}, {4}}));
}

TEST(RestrictedMatchStar, large_hyperedges_contribute_nothing)
{
    const Level level = make_level(5, {{0, 1, 2}, {3, 4}});
    level->where = new_array(Ints(5, 0));
    EXPECT_EQ(match("CEdgesStars", level.get(), 1000, 2), (Nets{{0}, {1}, {2}, {3, 4}}));
}
