// SPDX-License-Identifier: MIT
/* tests/unit/match_edges_test.cpp: matching of pairs. On fewer than 16 vertices the random order is
 * the order of numbers, so vertices are visited by degree, then by number.
 */
#include "coarsen/match_edges.h"

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

TEST(MatchEdges, vertex_beyond_the_limit_stays_alone)
{
    const Level level = make_level(3, path_nets(3), {}, {1, 9, 1});
    EXPECT_EQ(match("Edges", level.get(), 8), (Nets{{0}, {2}, {1}}));
}

TEST(MatchEdges, without_hyperedges_nobody_is_merged)
{
    for (const Matching &row : all_matchings()) {
        const Level level = make_level(3, {});
        level->where = new_array({0, 1, 0});
        Nets groups = match(row.name, level.get());
        std::sort(groups.begin(), groups.end());
        EXPECT_EQ(groups, (Nets{{0}, {1}, {2}})) << row.name;
    }
}

TEST(MatchEdges, pair_at_the_limit_is_made_and_above_it_is_not)
{
    const Level fits = make_level(2, {{0, 1}}, {}, {3, 5}),
                not_fits = make_level(2, {{0, 1}}, {}, {3, 5});
    EXPECT_EQ(match("Edges", fits.get(), 8), (Nets{{0, 1}}));
    EXPECT_EQ(match("Edges", not_fits.get(), 7), (Nets{{0}, {1}}));
}

TEST(MatchEdges, equal_scores_go_to_the_lighter_vertex)
{
    const Level level = make_level(3, {{0, 1, 2}}, {}, {1, 5, 2});
    EXPECT_EQ(match("Edges", level.get()), (Nets{{0, 2}, {1}}));
}

TEST(MatchEdges, equal_scores_and_weights_go_to_the_first_met)
{
    const Level level = make_level(3, {{0, 1, 2}}), turned = make_level(3, {{0, 2, 1}});
    EXPECT_EQ(match("Edges", level.get()), (Nets{{0, 1}, {2}}));
    EXPECT_EQ(match("Edges", turned.get()), (Nets{{0, 2}, {1}}));
}

TEST(MatchEdges, scores_add_up_over_shared_hyperedges)
{
    const Level level = make_level(4, {{0, 1, 2}, {0, 2}, {1, 3}, {2, 3}}, {}, {1, 1, 9, 1});
    EXPECT_EQ(match("Edges", level.get())[0], (Ints{0, 2})); // 0.5 + 1 against 0.5
}

TEST(MatchEdges, score_is_weight_over_size_less_one)
{
    // both degrees equal: 0 sees 1 with 6 / 2 and 3 with 2 / 1
    const Level level = make_level(4, {{0, 1, 2}, {0, 3}, {1, 2, 3}}, {6, 2, 1});
    EXPECT_EQ(match("Edges", level.get())[0], (Ints{0, 1}));
}

TEST(MatchEdges, fixed_vertices_stay_unmerged_under_their_numbers)
{
    const Level level = make_level(5, path_nets(5), {}, {}, 2);
    EXPECT_EQ(match("Edges", level.get()), (Nets{{0}, {1}, {4, 3}, {2}}));
    EXPECT_EQ(level->cellmap[0], 0);
    EXPECT_EQ(level->cellmap[1], 1);
}

TEST(MatchEdges, vertex_whose_neighbours_are_all_grouped_stays_alone)
{
    const Level level = make_level(3, path_nets(3));
    EXPECT_EQ(match("Edges", level.get()), (Nets{{0, 1}, {2}}));
}

TEST(MatchEdges, low_degrees_come_first_and_the_cap_makes_high_ones_equal)
{
    // degrees 3, 1, 1, 2, 1
    const Nets nets = {{0, 1}, {0, 3}, {0, 2}, {3, 4}};
    const Level level = make_level(5, nets), capped = make_level(5, nets);
    EXPECT_EQ(match("Edges", level.get()), (Nets{{1, 0}, {2}, {4, 3}}));
    EXPECT_EQ(match("Edges", capped.get(), 1000, 1)[0], (Ints{0, 1}));
}

TEST(MatchEdges, more_than_ten_thousand_candidates_are_weighed)
{
    const int n = 10500;
    Ints all(at(n));
    std::iota(all.begin(), all.end(), 0);
    const Level level = make_level(n, {all});
    EXPECT_EQ(match("Edges", level.get(), 2).size(), at(n / 2));
}

TEST(MatchEdges, level_without_vertices_contracts_to_none)
{
    const Level level = make_level(0, {});
    EXPECT_EQ(match("Edges", level.get()), Nets());
}

TEST(RestrictedMatchEdges, vertex_with_all_neighbours_in_other_parts_stays_single)
{
    const Level level = make_level(4, path_nets(4));
    level->where = new_array({0, 1, 0, 0});
    EXPECT_EQ(sorted_groups_of((match("CEdges", level.get()), level.get())),
              (Nets{{0}, {1}, {2, 3}}));
}

TEST(RestrictedMatchEdges, large_hyperedges_contribute_nothing)
{
    const Nets nets = {{0, 1, 2}, {2, 3}};
    const Level level = make_level(4, nets), at_limit = make_level(4, nets),
                free = make_level(4, nets);
    level->where = new_array(Ints(4, 0));
    at_limit->where = new_array(Ints(4, 0));
    EXPECT_EQ(match("CEdges", level.get(), 1000, 2), (Nets{{0}, {1}, {3, 2}}));
    EXPECT_EQ(match("CEdges", at_limit.get(), 1000, 3), (Nets{{0, 1}, {3, 2}}));
    EXPECT_EQ(match("Edges", free.get(), 1000, 2), (Nets{{0, 1}, {3, 2}}));
}
