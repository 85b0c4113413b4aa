// SPDX-License-Identifier: MIT
/* tests/unit/contract_test.cpp: construction of the next coarser level. */
#include "coarsen/contract.h"

#include "levels.h"

static const HGraph *contract(HGraph *graph, const Nets &groups)
{
    Ints cellmap(at(graph->ncells), -1);
    for (size_t c = 0; c < groups.size(); c++)
        for (int v : groups[c]) cellmap[at(v)] = static_cast<int>(c);
    const FlatLists members = flat(groups);
    graph->cellmap = new_array(cellmap);
    graph->mptr = new_array(members.ptr);
    graph->mind = new_array(members.ind);
    PartCtrl ctrl = make_ctrl();
    CreateCoarseHGraph__(&ctrl, graph, static_cast<int>(groups.size()));
    return graph->coarser;
}

static Nets alone(int n)
{
    Nets groups;
    for (int v = 0; v < n; v++) groups.push_back({v});
    return groups;
}

TEST(Contract, hyperedge_inside_one_group_vanishes_and_its_weight_is_carried)
{
    const Level level = make_level(4, {{0, 1}, {1, 2}, {2, 3, 0}}, {5, 2, 1});
    level->removedwgt = 10;
    const HGraph *const coarser = contract(level.get(), {{0, 1}, {2}, {3}});
    EXPECT_EQ(coarser->removedwgt, 15);
    EXPECT_EQ(level->netmap[0], -1);
    EXPECT_EQ(coarser->nnets, 2);
    EXPECT_NE(level->netmap[1], -1);
}

TEST(Contract, identical_hyperedges_become_one_of_their_summed_weight)
{
    const Level level = make_level(6, {{5, 1, 2}, {0, 3}, {1, 2, 5}}, {3, 1, 4});
    const HGraph *const coarser = contract(level.get(), alone(6));
    ASSERT_EQ(coarser->nnets, 2);
    EXPECT_EQ(level->netmap[0], level->netmap[2]);
    const int d = level->netmap[0];
    EXPECT_EQ(net_pins(coarser, d), (Ints{1, 2, 5}));
    EXPECT_EQ(coarser->netwgt[d], 7);
    EXPECT_EQ(coarser->edgewgt[d], 3.5f);
}

TEST(Contract, hyperedges_that_become_identical_by_merging_are_merged_too)
{
    const Level level = make_level(4, {{0, 2}, {1, 3}}, {3, 4});
    const HGraph *const coarser = contract(level.get(), {{0, 1}, {2, 3}});
    EXPECT_EQ(coarser->nnets, 1);
    EXPECT_EQ(coarser->netwgt[0], 7);
    EXPECT_EQ(to_ints(coarser->adjwgt, 2), (Ints{7, 7}));
}

TEST(Contract, repeated_pins_are_kept_once_in_increasing_order)
{
    const Level level = make_level(6, {{5, 4, 3, 2, 1, 0}, {3, 0}});
    const HGraph *const coarser = contract(level.get(), {{4, 5}, {0, 1}, {3, 2}});
    EXPECT_EQ(net_pins(coarser, level->netmap[0]), (Ints{0, 1, 2}));
    EXPECT_EQ(net_pins(coarser, level->netmap[1]), (Ints{1, 2}));
    EXPECT_TRUE(hgraph_ok(coarser, HG_LISTS | HG_INCIDENCE));
}

/* What puts all sequences of two numbers in order puts all others in order too. */
TEST(Contract, pins_of_two_groups_in_any_sequence_come_out_in_order)
{
    for (int size = 2; size <= 17; size++) {
        SCOPED_TRACE(testing::Message() << size << " pins");
        Nets nets, groups(2);
        for (int v = 0; v < 2 * size; v++) groups[at(v < size ? 0 : 1)].push_back(v);
        for (int ones = 1; ones + 1 < 1 << size; ones++) {
            nets.emplace_back();
            for (int j = 0; j < size; j++) nets.back().push_back(ones >> j & 1 ? size + j : j);
        }
        const Level level = make_level(2 * size, nets);
        const HGraph *const coarser = contract(level.get(), groups);
        ASSERT_EQ(coarser->nnets, 1);
        EXPECT_EQ(net_pins(coarser, 0), (Ints{0, 1}));
        EXPECT_EQ(coarser->netwgt[0], static_cast<int>(nets.size()));
    }
}

TEST(Contract, pins_are_copied_whatever_their_number)
{
    for (int size = 2; size <= 40; size++) {
        Nets nets = {{}, {}};
        for (int v = 0; v <= size; v++) {
            if (v < size) nets[0].push_back(v);
            if (v > 0) nets[1].push_back(v);
        }
        const Level level = make_level(size + 1, nets);
        const HGraph *const coarser = contract(level.get(), alone(size + 1));
        EXPECT_EQ(net_pins(coarser, level->netmap[0]), nets[0]);
        EXPECT_EQ(net_pins(coarser, level->netmap[1]), nets[1]);
    }
}

TEST(Contract, hyperedges_stand_in_increasing_key_order)
{
    const Level level = make_level(5, {{3, 4}, {0, 4}, {0, 1}, {0, 1, 2}});
    const HGraph *const coarser = contract(level.get(), alone(5));
    // keys 2 + 100 x 11, 2 + 100 x 8, 2 + 100 x 2, 3 + 100 x 8
    EXPECT_EQ(to_ints(level->netmap, 4), (Ints{3, 1, 0, 2}));
    EXPECT_EQ(net_pins(coarser, 0), (Ints{0, 1}));
}

TEST(Contract, incidence_keeps_the_order_of_first_meeting_in_the_group)
{
    const Level level = make_level(4, {{1, 2}, {0, 3}, {0, 2}});
    const HGraph *const coarser = contract(level.get(), {{0, 1}, {2}, {3}});
    // vertex 0 meets hyperedges 1 and 2 first; hyperedges 0 and 2 are the same now
    EXPECT_EQ(to_ints(coarser->incind, 2), (Ints{level->netmap[1], level->netmap[2]}));
    EXPECT_EQ(coarser->incptr[1], 2);
}

TEST(Contract, weights_add_up_and_links_are_set)
{
    const Level level = make_level(4, path_nets(4), {}, {1, 2, 4, 8}, 1);
    const HGraph *const coarser = contract(level.get(), {{0}, {3, 1}, {2}});
    EXPECT_EQ(to_ints(coarser->cellwgt, 3), (Ints{1, 10, 4}));
    EXPECT_EQ(coarser->nfixed, 1);
    EXPECT_EQ(coarser->finer, level.get());
    EXPECT_EQ(level->coarser, coarser);
}

TEST(Contract, empty_hyperedge_stays_an_empty_hyperedge)
{
    const Level level = make_level(2, {{}, {0, 1}, {}}, {3, 1, 4});
    const HGraph *const coarser = contract(level.get(), alone(2));
    ASSERT_EQ(coarser->nnets, 2);
    EXPECT_EQ(net_size(coarser, level->netmap[0]), 0);
    EXPECT_EQ(coarser->netwgt[level->netmap[0]], 7);
    EXPECT_EQ(coarser->removedwgt, 0);
}

/* Hyperedges {1, 176851} and {0, ..., 101} have the same key, 2 + 100 x 353703. */
TEST(Contract, equal_key_of_another_size_ends_the_search_for_duplicates)
{
    Ints large(102);
    std::iota(large.begin(), large.end(), 0);
    const int n = 176852;
    const Level level = make_level(n, {{1, n - 1}, large, {n - 1, 1}});
    EXPECT_EQ(contract(level.get(), alone(n))->nnets, 3);
    const Level neighbours = make_level(n, {{1, n - 1}, {n - 1, 1}, large});
    EXPECT_EQ(contract(neighbours.get(), alone(n))->nnets, 2);
}
