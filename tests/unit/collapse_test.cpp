// SPDX-License-Identifier: MIT
/* tests/unit/collapse_test.cpp: merging of identical hyperedges in bare lists. */
#include "coarsen/collapse.h"

#include <ctime>

#include "coarsen/merge_nets.h"
#include "core/heavy_assert.h"
#include "levels.h"

struct Collapsed {
    Nets nets;
    Ints wgts;
    int first; // of the pointers
};

static Collapsed collapse(const Nets &nets, const Ints &wgts)
{
    FlatLists all = flat(nets);
    Ints netwgt = wgts;
    const NetLists lists = {static_cast<int>(nets.size()), all.ptr.data(), all.ind.data(),
                            netwgt.data()};
    NetLists out;
    CollapseSameHEdges__(&lists, &out);
    Collapsed collapsed = {{}, to_ints(out.netwgt, out.nnets), out.netptr[0]};
    for (int d = 0; d < out.nnets; d++)
        collapsed.nets.push_back(
            to_ints(out.netind + out.netptr[d], out.netptr[d + 1] - out.netptr[d]));
    QXfree__(&out.netptr, &out.netind, &out.netwgt, LTERM);
    return collapsed;
}

TEST(Collapse, same_pins_in_any_order_become_one_hyperedge)
{
    const Collapsed result = collapse({{3, 1, 2}, {2, 3, 1}}, {1, 1});
    EXPECT_EQ(result.nets, (Nets{{1, 2, 3}}));
    EXPECT_EQ(result.wgts, (Ints{2}));
}

TEST(Collapse, different_sizes_are_never_merged)
{
    EXPECT_EQ(collapse({{1, 2}, {1, 2, 3}, {1}}, {1, 1, 1}).nets.size(), 3u);
}

TEST(Collapse, without_duplicates_the_hyperedges_come_in_key_order_with_sorted_pins)
{
    // keys 3 + 100 x 608, 2 + 100 x 309, 2 + 100 x 301
    const Collapsed result = collapse({{5, 0, 3}, {8, 1}, {1, 0}}, {4, 5, 6});
    EXPECT_EQ(result.nets, (Nets{{0, 1}, {1, 8}, {0, 3, 5}}));
    EXPECT_EQ(result.wgts, (Ints{6, 5, 4}));
}

TEST(Collapse, no_hyperedges_yield_none)
{
    const Collapsed result = collapse({}, {});
    EXPECT_EQ(result.nets, Nets());
    EXPECT_EQ(result.first, 0);
}

TEST(Collapse, key_adds_the_position_so_other_pins_of_equal_sum_share_it)
{
    // {0, 4} and {1, 3} have one key: compared pin by pin, they stay apart
    const Collapsed result = collapse({{0, 4}, {1, 3}, {4, 0}}, {1, 2, 4});
    EXPECT_EQ(result.nets, (Nets{{0, 4}, {1, 3}}));
    EXPECT_EQ(result.wgts, (Ints{5, 2}));
}

TEST(Collapse, keys_wrap_at_32_bits)
{
    // keys 1 + 100 x 100, 2147483601, and 2147483701, which is negative in 32 bits
    const Collapsed result = collapse({{0}, {21474736}, {21474737}}, {1, 2, 4});
    EXPECT_EQ(result.nets, (Nets{{21474737}, {0}, {21474736}}));
    EXPECT_EQ(result.wgts, (Ints{4, 1, 2}));
}

TEST(Collapse, empty_hyperedges_are_merged)
{
    const Collapsed result = collapse({{}, {1}, {}}, {1, 2, 4});
    EXPECT_EQ(result.nets, (Nets{{}, {1}}));
    EXPECT_EQ(result.wgts, (Ints{5, 2}));
}

/* {0, 530152} and {0, ..., 101} have the same key, 102 + 100 x 530451. */
TEST(Collapse, equal_key_of_another_size_ends_the_search_for_duplicates)
{
    Ints large(102);
    std::iota(large.begin(), large.end(), 0);
    EXPECT_EQ(collapse({{0, 530152}, large, {530152, 0}}, {1, 1, 1}).nets.size(), 3u);
    EXPECT_EQ(collapse({{0, 530152}, {530152, 0}, large}, {1, 1, 1}).nets.size(), 2u);
}

/* What merging should give for hyperedges of one key: numbers and weights of the merged ones. */
struct Merged {
    Ints map, wgts;
    bool operator==(const Merged &) const = default;
};

/* Each hyperedge takes in those of the same pins up to the first of another size. */
static Merged merged_one_by_one(const Nets &nets, const Ints &wgts)
{
    Merged merged = {Ints(nets.size(), -1), {}};
    for (size_t i = 0; i < nets.size(); i++) {
        if (merged.map[i] != -1) continue;
        const int d = static_cast<int>(merged.wgts.size());
        merged.wgts.push_back(0);
        for (size_t j = i; j < nets.size(); j++) {
            if (merged.map[j] != -1) continue;
            if (nets[j].size() != nets[i].size()) break;
            if (nets[j] != nets[i]) continue;
            merged.map[j] = d;
            merged.wgts.back() += wgts[j];
        }
    }
    return merged;
}

static Merged merged_by_engine(const Nets &lists, const Ints &wgts)
{
    const int n = static_cast<int>(lists.size());
    FlatLists all = flat(lists);
    Ints netwgt = wgts, map(at(n), -1), seen(at(n), -1);
    std::vector<KeyValue> pairs;
    for (int e = 0; e < n; e++) pairs.push_back({7, e});
    Ints ptr(at(n) + 1), ind(all.ind.size()), wgt(at(n));
    const NetLists nets = {n, all.ptr.data(), all.ind.data(), netwgt.data()};
    NetLists merged = {0, ptr.data(), ind.data(), wgt.data()};
    merge_identical(&nets, pairs.data(), &merged, map.data(), seen.data());
    for (size_t e = 0; e < lists.size(); e++) {
        const int d = map[e];
        EXPECT_EQ(to_ints(ind.data() + ptr[at(d)], ptr[at(d) + 1] - ptr[at(d)]), lists[e]);
    }
    wgt.resize(at(merged.nnets));
    return {map, wgt};
}

/* The lists of base, its copy, and of one more for each pin, in which that pin is another. */
static Nets one_pin_apart(const Ints &base)
{
    Nets nets = {base, base};
    for (size_t j = 0; j < base.size(); j++) {
        nets.push_back(base);
        nets.back()[j]++;
    }
    return nets;
}

TEST(Collapse, hyperedges_of_one_key_are_merged_only_if_all_pins_are_the_same)
{
    for (int size = 0; size <= 20; size++) {
        Ints base(at(size));
        for (int j = 0; j < size; j++) base[at(j)] = 2 * j;
        const Nets lists = one_pin_apart(base);
        const Merged merged = merged_by_engine(lists, Ints(lists.size(), 1));
        EXPECT_EQ(merged.wgts.size(), lists.size() - 1) << size << " pins";
        EXPECT_EQ(merged.map[0], merged.map[1]);
        EXPECT_EQ(merged.wgts[at(merged.map[0])], 2);
        EXPECT_EQ(std::set<int>(merged.map.begin(), merged.map.end()).size(), lists.size() - 1);
    }
}

TEST(Collapse, many_hyperedges_of_one_key_are_merged_as_if_one_by_one)
{
    Draw draw(3);
    for (const unsigned nsets : {1u, 20u, 300u, 3000u}) {
        for (const unsigned changes : {0u, 1u, 40u}) { // of size, in the run of equal keys
            Nets nets(3000);
            Ints wgts;
            for (size_t e = 0; e < nets.size(); e++) {
                const size_t piece = e * (changes + 1) / nets.size();
                const int set = static_cast<int>(draw() % nsets);
                nets[e] = {set / 50, 100 + set % 50, 200};
                if (piece % 2 == 1) nets[e].push_back(201);
                wgts.push_back(1 + static_cast<int>(draw() % 5));
            }
            EXPECT_EQ(merged_by_engine(nets, wgts), merged_one_by_one(nets, wgts))
                << nsets << " sets, " << changes << " changes of size";
        }
    }
}

TEST(Collapse, pins_of_equal_sums_take_no_quadratic_time)
{
    constexpr int n = HEAVY_ASSERTS ? 40000 : 400000;
    Nets nets;
    for (int i = 0; i < n; i++) nets.push_back({i, 2 * n - i});
    nets.push_back({5, 2 * n - 5});
    const clock_t begin = clock();
    const Collapsed result = collapse(nets, Ints(nets.size(), 1));
    EXPECT_LT(static_cast<double>(clock() - begin) / CLOCKS_PER_SEC, 10);
    EXPECT_EQ(result.nets.size(), at(n));
    EXPECT_EQ(result.nets[5], nets[5]);
    EXPECT_EQ(result.wgts[5], 2);
}
