/* tests/unit/collapse_test.cpp: merging of identical hyperedges in bare lists. */
#include "coarsen/collapse.h"

#include "levels.h"

struct Collapsed {
    Nets nets;
    Ints wgts;
    int first; // of the pointers
};

static Collapsed collapse(const Nets &nets, const Ints &wgts)
{
    Ints netptr = {0}, netind;
    for (const Ints &net : nets) {
        netind.insert(netind.end(), net.begin(), net.end());
        netptr.push_back(static_cast<int>(netind.size()));
    }
    int nnets, *outptr, *outind, *outwgt;
    CollapseSameHEdges__(static_cast<int>(nets.size()), netptr.data(), netind.data(), wgts.data(),
                         &nnets, &outptr, &outind, &outwgt);
    Collapsed collapsed = {{}, to_ints(outwgt, nnets), outptr[0]};
    for (int d = 0; d < nnets; d++)
        collapsed.nets.push_back(to_ints(outind + outptr[d], outptr[d + 1] - outptr[d]));
    QXfree__(&outptr, &outind, &outwgt, LTERM);
    return collapsed;
}

TEST(CollapseTest, same_pins_in_any_order_become_one_hyperedge)
{
    const Collapsed result = collapse({{3, 1, 2}, {2, 3, 1}}, {1, 1});
    EXPECT_EQ(result.nets, (Nets{{1, 2, 3}}));
    EXPECT_EQ(result.wgts, (Ints{2}));
}

TEST(CollapseTest, different_sizes_are_never_merged)
{
    EXPECT_EQ(collapse({{1, 2}, {1, 2, 3}, {1}}, {1, 1, 1}).nets.size(), 3u);
}

TEST(CollapseTest, without_duplicates_the_hyperedges_come_in_key_order_with_sorted_pins)
{
    // keys 3 + 100 x 608, 2 + 100 x 309, 2 + 100 x 301
    const Collapsed result = collapse({{5, 0, 3}, {8, 1}, {1, 0}}, {4, 5, 6});
    EXPECT_EQ(result.nets, (Nets{{0, 1}, {1, 8}, {0, 3, 5}}));
    EXPECT_EQ(result.wgts, (Ints{6, 5, 4}));
}

TEST(CollapseTest, no_hyperedges_yield_none)
{
    const Collapsed result = collapse({}, {});
    EXPECT_EQ(result.nets, Nets());
    EXPECT_EQ(result.first, 0);
}

TEST(CollapseTest, key_adds_the_position_so_other_pins_of_equal_sum_share_it)
{
    // {0, 4} and {1, 3} have one key: compared pin by pin, they stay apart
    const Collapsed result = collapse({{0, 4}, {1, 3}, {4, 0}}, {1, 2, 4});
    EXPECT_EQ(result.nets, (Nets{{0, 4}, {1, 3}}));
    EXPECT_EQ(result.wgts, (Ints{5, 2}));
}

TEST(CollapseTest, empty_hyperedges_are_merged)
{
    const Collapsed result = collapse({{}, {1}, {}}, {1, 2, 4});
    EXPECT_EQ(result.nets, (Nets{{}, {1}}));
    EXPECT_EQ(result.wgts, (Ints{5, 2}));
}

/* {0, 530152} and {0, ..., 101} have the same key, 102 + 100 x 530451. */
TEST(CollapseTest, equal_key_of_another_size_ends_the_search_for_duplicates)
{
    Ints large(102);
    std::iota(large.begin(), large.end(), 0);
    EXPECT_EQ(collapse({{0, 530152}, large, {530152, 0}}, {1, 1, 1}).nets.size(), 3u);
    EXPECT_EQ(collapse({{0, 530152}, {530152, 0}, large}, {1, 1, 1}).nets.size(), 2u);
}
