// SPDX-License-Identifier: MIT
/* zorpelx/cli/tests/advice_test.cpp: limits against the library's, verdicts against all
 * assignments. */
#include "advice.h"

#include <algorithm>
#include <random>

#include <gtest/gtest.h>

#include "core/ctrl.h"
#include "measures.h"
#include "reading.h"
#include "zorpelx.h"

TEST(advice, numbers_written_again_are_the_engines)
{
    EXPECT_EQ(MOST_POLISHED + 1, KWAY_POLISH_PARTS);
    EXPECT_EQ(PRUNED_SIZE, MAX_NET_SIZE);
    EXPECT_EQ(MOST_TOTAL, MOST_WEIGHT);
}

TEST(advice, limits_without_polish_are_the_librarys)
{
    const int64_t totals[] = {0, 1, 7, 100, 49345, 16777217, 2147483646};
    for (int nparts = 2; nparts <= 130; nparts += nparts < 20 ? 1 : 22)
        for (int factor = 1; factor <= 49; factor += 4)
            for (const int64_t total : totals) {
                std::vector<int64_t> least(static_cast<size_t>(nparts)), most = least;
                ASSERT_EQ(zorpelx_part_limits(nparts, factor, 0, total, least.data(), most.data()),
                          ZORPELX_OK);
                const PartRanges limits = part_ranges(nparts, factor, total);
                EXPECT_EQ(limits.least, least) << nparts << ' ' << factor << ' ' << total;
                EXPECT_EQ(limits.most, most) << nparts << ' ' << factor << ' ' << total;
            }
}

TEST(advice, limits_with_polish_are_the_librarys)
{
    for (int nparts = 3; nparts <= 64; nparts++)
        for (const int64_t total : {int64_t{1}, int64_t{1000}, int64_t{2147483646}}) {
            std::vector<int64_t> least(static_cast<size_t>(nparts)), most = least;
            ASSERT_EQ(zorpelx_part_limits(nparts, 7, 1, total, least.data(), most.data()),
                      ZORPELX_OK);
            const PartRanges limits = part_ranges(nparts, 7, total);
            EXPECT_EQ(limits.lightest, least[0]) << nparts << ' ' << total;
            EXPECT_EQ(limits.heaviest, most[0]) << nparts << ' ' << total;
        }
}

TEST(advice, the_factor_compounds)
{
    const PartRanges limits = part_ranges(16, 5, 1000000);
    EXPECT_NEAR(static_cast<double>(limits.most[0]), 1e6 * 0.55 * 0.55 * 0.55 * 0.55, 4);
    EXPECT_NEAR(static_cast<double>(limits.least[3]), 1e6 * 0.45 * 0.45 * 0.45 * 0.45, 4);
    EXPECT_NEAR(worst_excess(limits, 1000000), 46.41, 0.01);
}

TEST(advice, the_largest_factor_is_the_last_that_keeps_the_promise)
{
    for (const int64_t nparts : {2, 3, 4, 8, 16})
        for (const double percent : {1.0, 3.0, 10.0, 50.0}) {
            const int factor = largest_factor(nparts, 1000000, percent);
            const auto excess = [&](int ub) {
                return worst_excess(part_ranges(nparts, ub, 1000000), 1000000);
            };
            EXPECT_LE(factor > 0 ? excess(factor) : 0, percent);
            EXPECT_GT(factor < MOST_UBFACTOR ? excess(factor + 1) : 100, percent);
        }
    EXPECT_EQ(largest_factor(16, 1000000, 3), 0);
    EXPECT_EQ(largest_factor(2, 1000000, 3), 1);
}

/* Lower bounds of a bisection, written down anew. */
static bool sides_fit(int64_t nparts, int factor, int64_t side0, int64_t side1)
{
    const float share =
        static_cast<float>(static_cast<double>(nparts / 2) / static_cast<double>(nparts));
    const float ub = static_cast<float>(factor / 100.0);
    const auto total = side0 + side1;
    const auto least0 = static_cast<int64_t>((share - ub) * static_cast<float>(total));
    const auto least1 = static_cast<int64_t>(
        (1.0 - static_cast<double>(share) - static_cast<double>(ub)) * static_cast<double>(total));
    return side0 >= least0 && side1 >= least1;
}

static bool tree_fits(const std::vector<int64_t> &weight, size_t begin, int64_t nparts, int factor)
{
    if (nparts == 1) return true;
    int64_t side[2] = {0, 0};
    const int64_t half = nparts / 2;
    for (int64_t p = 0; p < nparts; p++) side[p >= half] += weight[begin + static_cast<size_t>(p)];
    return sides_fit(nparts, factor, side[0], side[1]) && tree_fits(weight, begin, half, factor) &&
           tree_fits(weight, begin + static_cast<size_t>(half), nparts - half, factor);
}

/* Some order of the parts fits the tree of bisections. */
static bool some_order_fits(std::vector<int64_t> weight, int factor)
{
    std::sort(weight.begin(), weight.end());
    do
        if (tree_fits(weight, 0, static_cast<int64_t>(weight.size()), factor)) return true;
    while (std::next_permutation(weight.begin(), weight.end()));
    return false;
}

static bool assignable(const std::vector<int64_t> &weights, const std::vector<int64_t> &fix,
                       size_t v, int factor, std::vector<int64_t> *parts)
{
    if (v == weights.size()) return some_order_fits(*parts, factor);
    for (size_t p = 0; p < parts->size(); p++) {
        if (!fix.empty() && fix[v] >= 0 && static_cast<size_t>(fix[v]) != p) continue;
        (*parts)[p] += weights[v];
        const bool fits = assignable(weights, fix, v + 1, factor, parts);
        (*parts)[p] -= weights[v];
        if (fits) return true;
    }
    return false;
}

TEST(advice, verdicts_agree_with_all_assignments)
{
    std::mt19937 random(20);
    const auto below = [&](unsigned n) { return static_cast<int64_t>(random() % n); };
    int verdicts[3] = {0, 0, 0};
    for (int round = 0; round < 1500; round++) {
        const int64_t nparts = 2 + below(3);
        const int factor = static_cast<int>(1 + below(30));
        std::vector<int64_t> weights, fix;
        for (int64_t n = 2 + below(6); n > 0; n--)
            weights.push_back(below(4) == 0 ? below(60) : below(8));
        if (round % 3 == 0)
            for (size_t v = 0; v < weights.size(); v++)
                fix.push_back(below(2) == 0 ? -1 : below(static_cast<unsigned>(nparts)));
        std::vector<int64_t> parts(static_cast<size_t>(nparts), 0);
        const bool possible = assignable(weights, fix, 0, factor, &parts);
        const Advice advice = advise(weights, fix, nparts, factor);
        verdicts[advice.verdict]++;
        if (advice.verdict == FEASIBLE) {
            EXPECT_TRUE(possible) << "round " << round;
        }
        if (advice.verdict == INFEASIBLE) {
            EXPECT_FALSE(possible) << "round " << round << ": " << advice.reason;
        }
    }
    EXPECT_GT(verdicts[FEASIBLE], 200);
    EXPECT_GT(verdicts[INFEASIBLE], 200);
}

TEST(advice, heavy_vertices_exceed_a_fiftieth)
{
    EXPECT_EQ(heavy_vertices({2, 3, 93, 2}), (std::vector<int64_t>{2, 1}));
    EXPECT_TRUE(heavy_vertices(std::vector<int64_t>(50, 1)).empty());
}
