// SPDX-License-Identifier: MIT
/* tests/unit/recursive_test.cpp: recursive bisection into any number of parts. */
#include "partition/recursive.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <regex>

#include "support.h"

static HGraphPtr labelled(int ncells, const Nets &nets)
{
    HGraphPtr graph = make_hgraph(ncells, nets);
    graph->keep = 1;
    graph->label = imalloc__(static_cast<size_t>(ncells), "test");
    for (int v = 0; v < ncells; v++) graph->label[v] = v;
    return graph;
}

struct Divided {
    std::vector<int> part;
    int cut;
    std::string trace;
};

/* MLRB__ alone, without polish. */
static Divided bisect_into(PartCtrl ctrl, int k, int offset, const Nets &nets, int ncells)
{
    Divided result = {std::vector<int>(static_cast<size_t>(ncells), -1), -1, ""};
    ctrl.nparts = k;
    const HGraphPtr graph = labelled(ncells, nets);
    result.trace = capture_stdout(
        [&] { result.cut = MLRB__(&ctrl, graph.get(), result.part.data(), k, offset); });
    EXPECT_EQ(graph->label, nullptr);
    EXPECT_EQ(pins_of(graph.get()), nets);
    return result;
}

/* The shares that the bisections aimed at, in their order. */
static std::vector<std::string> shares(const std::string &trace)
{
    static const std::regex share("balance=([0-9.]+)\\]");
    std::vector<std::string> found;
    for (std::sregex_iterator i(trace.begin(), trace.end(), share), end; i != end; ++i)
        found.push_back((*i)[1]);
    return found;
}

static std::vector<std::string> shares_of(int k)
{
    PartCtrl ctrl = default_ctrl();
    ctrl.dbglvl = DBG_BISECTION;
    return shares(bisect_into(ctrl, k, 0, random_nets(1, 200, 260, 4), 200).trace);
}

TEST(Recursive, the_left_half_gets_the_floor_of_half_the_parts_and_comes_first)
{
    using Shares = std::vector<std::string>;
    EXPECT_EQ(shares_of(2), (Shares{"0.50"}));
    EXPECT_EQ(shares_of(3), (Shares{"0.33", "0.50"}));
    EXPECT_EQ(shares_of(4), (Shares{"0.50", "0.50", "0.50"}));
    EXPECT_EQ(shares_of(5), (Shares{"0.40", "0.50", "0.33", "0.50"}));
    EXPECT_EQ(shares_of(7), (Shares{"0.43", "0.33", "0.50", "0.50", "0.50", "0.50"}));
}

TEST(Recursive, every_part_gets_its_share_of_the_vertices)
{
    for (int k = 2; k <= 9; k++) {
        const Divided result = bisect_into(default_ctrl(), k, 0, random_nets(2, 400, 500, 4), 400);
        for (int p = 0; p < k; p++) {
            const auto size = std::count(result.part.begin(), result.part.end(), p);
            EXPECT_NEAR(static_cast<double>(size), 400.0 / k, 0.35 * 400 / k) << "of " << k;
        }
    }
}

TEST(Recursive, parts_are_numbered_from_the_offset)
{
    const Divided from_0 = bisect_into(default_ctrl(), 5, 0, random_nets(3, 80, 90, 4), 80);
    Divided from_10 = bisect_into(default_ctrl(), 5, 10, random_nets(3, 80, 90, 4), 80);
    for (int &p : from_10.part) p -= 10;
    EXPECT_EQ(from_10.part, from_0.part);
    EXPECT_EQ(*std::min_element(from_0.part.begin(), from_0.part.end()), 0);
    EXPECT_EQ(*std::max_element(from_0.part.begin(), from_0.part.end()), 4);
}

TEST(Recursive, parts_are_written_in_the_callers_numbering)
{
    PartCtrl ctrl = default_ctrl();
    const HGraphPtr graph = labelled(30, random_nets(4, 30, 40, 3));
    for (int v = 0; v < 30; v++) graph->label[v] = 2 * (29 - v);
    std::vector<int> part(60, -1);
    MLRB__(&ctrl, graph.get(), part.data(), 3, 0);
    const Divided plain = bisect_into(ctrl, 3, 0, random_nets(4, 30, 40, 3), 30);
    for (size_t v = 0; v < 30; v++) {
        EXPECT_EQ(part[2 * (29 - v)], plain.part[v]);
        EXPECT_EQ(part[2 * v + 1], -1);
    }
}

TEST(Recursive, a_record_that_is_not_kept_is_freed)
{
    PartCtrl ctrl = default_ctrl();
    HGraph *const graph = labelled(10, {{0, 1}, {2, 3}}).release();
    graph->keep = 0;
    int part[10];
    MLRB__(&ctrl, graph, part, 2, 0); // a leak checker sees whether it is
    for (int p : part) EXPECT_TRUE(p == 0 || p == 1);
}

TEST(Recursive, without_reconstruction_the_sum_of_cuts_is_the_cut_of_the_parts)
{
    for (int k : {2, 3, 4, 7, 16}) {
        const Nets nets = random_nets(static_cast<unsigned>(k), 150, 200, 6);
        const Divided result = bisect_into(default_ctrl(), k, 0, nets, 150);
        EXPECT_EQ(result.cut, cut_of(nets, {}, result.part)) << k << " parts";
    }
}

TEST(Recursive, with_reconstruction_a_hyperedge_counts_at_each_bisection_that_cuts_it)
{
    PartCtrl ctrl = default_ctrl();
    ctrl.Reconst = 1;
    const Nets nets = random_nets(5, 150, 200, 12);
    const Divided result = bisect_into(ctrl, 8, 0, nets, 150);
    EXPECT_GT(result.cut, cut_of(nets, {}, result.part));
}

/* The whole partitioning; the reported cut is checked. */
static Divided partition(PartCtrl *ctrl, const Nets &nets, int ncells)
{
    Divided result = {std::vector<int>(static_cast<size_t>(ncells), -1), -1, ""};
    const HGraphPtr graph = make_hgraph(ncells, nets);
    result.trace = capture_stdout(
        [&] { result.cut = MultilevelPartition__(ctrl, graph.get(), result.part.data()); });
    EXPECT_EQ(pins_of(graph.get()), nets);
    EXPECT_EQ(graph->label, nullptr);
    return result;
}

TEST(Recursive, two_parts_are_one_bisection_without_polish)
{
    PartCtrl ctrl = default_ctrl();
    ctrl.kwayrefine = 1;
    ctrl.dbglvl = DBG_DETAIL;
    const Nets nets = random_nets(6, 100, 120, 4);
    const Divided result = partition(&ctrl, nets, 100);
    EXPECT_EQ(count_lines_with(result.trace, "Bisecting"), 1);
    EXPECT_EQ(count_lines_with(result.trace, "          ["), 0);
    EXPECT_EQ(ctrl.ubfactor, 0.05f);
    EXPECT_EQ(result.cut, cut_of(nets, {}, result.part));
}

TEST(Recursive, three_parts_are_0_on_the_left_and_1_and_2_on_the_right)
{
    PartCtrl ctrl = default_ctrl();
    ctrl.nparts = 3;
    /* two cliques joined by little: the small one is the left third */
    Nets nets;
    for (int v = 0; v < 30; v++)
        for (int u : {v + 1, v + 2, v + 3})
            if (u < 30 && (v < 10) == (u < 10)) nets.push_back({v, u});
    nets.push_back({9, 10});
    const Divided result = partition(&ctrl, nets, 30);
    for (int p = 0; p < 3; p++)
        EXPECT_NEAR(static_cast<double>(std::count(result.part.begin(), result.part.end(), p)), 10,
                    2);
    EXPECT_EQ(std::count(result.part.begin(), result.part.begin() + 10, 0), 10);
}

TEST(Recursive, the_polish_is_bounded_by_the_balance_reached_and_restores_the_scheme)
{
    PartCtrl plain = default_ctrl(), polished = default_ctrl();
    plain.nparts = polished.nparts = 4;
    plain.RType = polished.RType = RTYPE_EEFM;
    polished.kwayrefine = 1;
    const Nets nets = random_nets(7, 1200, 1500, 5); // enough that V-cycles coarsen and refine
    partition(&plain, nets, 1200);
    EXPECT_EQ(plain.ubfactor, 0.05f);
    const Divided after = partition(&polished, nets, 1200);
    EXPECT_EQ(polished.RType, RTYPE_EEFM);
    EXPECT_GE(polished.ubfactor, 1.0f); // a ratio now, and not restored
    EXPECT_LT(polished.ubfactor, 1.3f);
    EXPECT_EQ(after.cut, cut_of(nets, {}, after.part));
    int heaviest = 0;
    for (int p = 0; p < 4; p++)
        heaviest = std::max(heaviest,
                            static_cast<int>(std::count(after.part.begin(), after.part.end(), p)));
    EXPECT_LE(heaviest, static_cast<int>(polished.ubfactor * 300.0f) + 1);
}

TEST(Recursive, the_polish_brings_the_cut_down)
{
    int lower = 0;
    for (unsigned seed = 1; seed <= 10; seed++) {
        PartCtrl plain = default_ctrl(), polished = default_ctrl();
        plain.nparts = polished.nparts = 8;
        polished.kwayrefine = 1; // also makes more trials, so runs may differ before the polish
        const Nets nets = random_nets(seed, 250, 350, 4);
        lower += partition(&polished, nets, 250).cut <= partition(&plain, nets, 250).cut;
    }
    EXPECT_GE(lower, 8);
}

TEST(Recursive, nothing_is_timed_without_the_timing_bit)
{
    PartCtrl ctrl = default_ctrl();
    ctrl.nparts = 4;
    ctrl.kwayrefine = 1;
    ctrl.VCycle = VCYCLE_ALL;
    partition(&ctrl, random_nets(8, 300, 400, 4), 300);
    for (double timer : ctrl.timers) EXPECT_EQ(timer, 0.0);
}

TEST(Recursive, the_bound_of_merged_weights_set_last_is_that_of_the_last_bisection)
{
    PartCtrl ctrl = default_ctrl();
    ctrl.nparts = 4;
    partition(&ctrl, random_nets(9, 4000, 5000, 3), 4000);
    EXPECT_NEAR(ctrl.MaxCellWgt, 2 * 2000 / 100, 4); // of a half, not of the whole
}
