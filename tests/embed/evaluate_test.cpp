// SPDX-License-Identifier: MIT
/* tests/embed/evaluate_test.cpp: figures of a partition against a naive count. */
#include <climits>
#include <cmath>
#include <gtest/gtest.h>
#include <set>

#include "sample.h"

/* The figures as their definitions say, with reals of 64 bits of precision. */
struct Naive {
    int64_t cut = 0, soed = 0, connectivity = 0;
    long double absorption = 0, scaled_cost = 0;
    std::vector<int64_t> pwgts, pcuts, matrix;
    std::vector<int> hedges;

    Naive(const zorpelx::Hypergraph &h, int nparts, const std::vector<int> &part)
        : pwgts(static_cast<size_t>(nparts)), pcuts(pwgts), matrix(pwgts.size() * pwgts.size())
    {
        for (size_t v = 0; v < part.size(); v++)
            pwgts[static_cast<size_t>(part[v])] += h.vwgts.empty() ? 1 : h.vwgts[v];
        for (size_t e = 0; e + 1 < h.eptr.size(); e++) count(h, e, part);
        for (size_t p = 0; p < pwgts.size(); p++)
            if (pcuts[p] > 0) scaled_cost += static_cast<long double>(pcuts[p]) / pwgts[p];
        scaled_cost /= static_cast<long double>(h.nvtxs) * (nparts - 1);
    }

  private:
    void count(const zorpelx::Hypergraph &h, size_t e, const std::vector<int> &part)
    {
        const int64_t weight = h.hewgts.empty() ? 1 : h.hewgts[e];
        std::multiset<size_t> pins;
        for (int j = h.eptr[e]; j < h.eptr[e + 1]; j++)
            pins.insert(
                static_cast<size_t>(part[static_cast<size_t>(h.eind[static_cast<size_t>(j)])]));
        const std::set<size_t> parts(pins.begin(), pins.end());
        const int64_t degree = static_cast<int64_t>(parts.size());
        for (const size_t p : parts)
            for (const size_t q : parts)
                if (p != q || degree == 1) matrix[p * pwgts.size() + q] += weight;
        if (pins.size() < 2) absorption += 1;
        for (const size_t p : parts)
            if (pins.size() >= 2)
                absorption += static_cast<long double>(pins.count(p) - 1) /
                              static_cast<long double>(pins.size() - 1);
        if (degree < 2) return;
        cut += weight;
        soed += weight * degree;
        connectivity += weight * (degree - 1);
        for (const size_t p : parts) pcuts[p] += weight;
        hedges.push_back(static_cast<int>(e));
    }
};

static std::vector<int> random_part(int nvtxs, int nparts, unsigned seed)
{
    std::mt19937 chance(seed);
    std::vector<int> part(static_cast<size_t>(nvtxs));
    for (int &p : part) p = std::uniform_int_distribution<int>(0, nparts - 1)(chance);
    return part;
}

static void expect_naive(const zorpelx::Hypergraph &h, int nparts, const std::vector<int> &part)
{
    const Naive naive(h, nparts, part);
    const zorpelx::Quality quality = zorpelx::evaluate(h, nparts, part);
    EXPECT_EQ(naive.cut, quality.cut);
    EXPECT_EQ(naive.soed, quality.soed);
    EXPECT_EQ(naive.connectivity, quality.connectivity);
    EXPECT_EQ(static_cast<int>(naive.hedges.size()), quality.cut_hedges);
    EXPECT_EQ(naive.pwgts, quality.pwgts);
    EXPECT_EQ(naive.pcuts, quality.pcuts);
    EXPECT_NEAR(static_cast<double>(naive.absorption), quality.absorption,
                1e-14 * static_cast<double>(naive.absorption));
    EXPECT_NEAR(static_cast<double>(naive.scaled_cost), quality.scaled_cost,
                1e-14 * static_cast<double>(naive.scaled_cost));
    const auto [least, most] = std::minmax_element(naive.pwgts.begin(), naive.pwgts.end());
    int64_t total = 0;
    for (const int64_t weight : naive.pwgts) total += weight;
    EXPECT_EQ(total, quality.total_weight);
    EXPECT_EQ(*least, quality.lightest_part);
    EXPECT_EQ(*most, quality.heaviest_part);
    EXPECT_NEAR(static_cast<double>(*most) * nparts / static_cast<double>(total) - 1,
                quality.imbalance, 1e-15 * nparts);
    EXPECT_EQ(naive.hedges, zorpelx::cut_hyperedges(h, nparts, part));
    EXPECT_EQ(naive.matrix, zorpelx::cut_matrix(h, nparts, part));
}

TEST(Evaluate, agrees_with_a_naive_count_on_random_partitions)
{
    for (unsigned seed = 0; seed < 200; seed++) {
        const int nparts = 2 + static_cast<int>(seed % 9);
        zorpelx::Hypergraph h = random_hypergraph(60, 90, seed, 0);
        if (seed % 3 == 1) h.vwgts.clear();
        if (seed % 4 == 1) h.hewgts.clear();
        SCOPED_TRACE(seed);
        expect_naive(h, nparts, random_part(h.nvtxs, nparts, seed));
        if (HasFailure()) return;
    }
}

TEST(Evaluate, sums_beyond_32_bits_are_exact)
{
    zorpelx::Hypergraph h;
    h.nvtxs = 3;
    h.vwgts = {INT_MAX, INT_MAX, INT_MAX};
    for (int e = 0; e < 3; e++) {
        h.add_hyperedge({0, 1, 2});
        h.hewgts.push_back(INT_MAX);
    }
    const zorpelx::Quality quality = zorpelx::evaluate(h, 3, {0, 1, 2});
    EXPECT_EQ(3LL * INT_MAX, quality.cut);
    EXPECT_EQ(9LL * INT_MAX, quality.soed);
    EXPECT_EQ(6LL * INT_MAX, quality.connectivity);
    EXPECT_EQ(3LL * INT_MAX, quality.total_weight);
    EXPECT_EQ(3LL * INT_MAX, quality.pcuts[1]);
}

TEST(Evaluate, empty_and_weightless_parts_have_figures)
{
    zorpelx::Hypergraph h;
    h.nvtxs = 2;
    h.add_hyperedge({0, 1});
    EXPECT_EQ(1, zorpelx::evaluate(h, 3, {0, 1}).empty_parts);
    EXPECT_EQ(0.5, zorpelx::evaluate(h, 3, {0, 1}).imbalance);
    EXPECT_EQ(0, zorpelx::evaluate(h, 3, {0, 1}).lightest_part);
    h.vwgts = {0, 0};
    EXPECT_EQ(0, zorpelx::evaluate(h, 3, {0, 1}).imbalance);
    EXPECT_TRUE(std::isinf(zorpelx::evaluate(h, 3, {0, 1}).scaled_cost));
    EXPECT_EQ(0, zorpelx::evaluate(h, 1, {0, 0}).scaled_cost);
}

TEST(Evaluate, no_vertices_and_no_hyperedges_are_fine)
{
    const zorpelx::Quality quality = zorpelx::evaluate(zorpelx::Hypergraph(), 2, {});
    EXPECT_EQ(0, quality.cut);
    EXPECT_EQ(0, quality.scaled_cost);
    EXPECT_EQ(2, quality.empty_parts);
}

/* The sentence of the fault of evaluating this. */
static std::string fault_of(const zorpelx::Hypergraph &h, int nparts, const std::vector<int> &part)
{
    try {
        zorpelx::evaluate(h, nparts, part);
    } catch (const zorpelx::Error &error) {
        return std::to_string(error.status()) + " " + error.what();
    }
    return "none";
}

TEST(Evaluate, faults_name_their_place)
{
    zorpelx::Hypergraph h = random_hypergraph(4, 2, 1);
    EXPECT_EQ("3 part[2] is 2; it should be between 0 and 1.", fault_of(h, 2, {0, 1, 2, 0}));
    EXPECT_EQ("3 part[0] is -1; it should be between 0 and 1.", fault_of(h, 2, {-1, 1, 1, 0}));
    EXPECT_EQ("2 nparts is 0; it should be at least 1.", fault_of(h, 0, {0, 0, 0, 0}));
    EXPECT_EQ("3 part should have a part for each vertex.", fault_of(h, 2, {0, 1, 1}));
    h.eind[0] = 4;
    EXPECT_EQ("3 eind[0] is 4, in hyperedge 0; the vertices are numbered from 0 to 3.",
              fault_of(h, 2, {0, 1, 1, 0}));
}

TEST(Evaluate, missing_arrays_are_faults)
{
    const zorpelx::Hypergraph h = random_hypergraph(4, 2, 1);
    const zorpelx_hypergraph view = h.view();
    const int part[4] = {0, 1, 0, 1};
    int hedges[2], count;
    char message[ZORPELX_MESSAGE_SIZE];
    EXPECT_EQ(2, zorpelx_evaluate(&view, 2, part, nullptr, nullptr, nullptr, message));
    EXPECT_STREQ("quality is null.", message);
    EXPECT_EQ(2, zorpelx_cut_hyperedges(&view, 2, part, nullptr, &count, message));
    EXPECT_STREQ("hedges is null.", message);
    EXPECT_EQ(2, zorpelx_cut_hyperedges(&view, 2, part, hedges, nullptr, message));
    EXPECT_STREQ("count is null.", message);
    EXPECT_EQ(2, zorpelx_cut_matrix(&view, 2, part, nullptr, message));
    EXPECT_STREQ("matrix is null.", message);
    EXPECT_EQ(2, zorpelx_cut_matrix(&view, 2, nullptr, nullptr, message));
    EXPECT_STREQ("part is null; it should hold the parts of 4 vertices.", message);
    EXPECT_EQ(2, zorpelx_cut_matrix(nullptr, 2, part, nullptr, message));
    EXPECT_STREQ("The hypergraph is null.", message);
    zorpelx_quality quality = {};
    EXPECT_EQ(2, zorpelx_evaluate(&view, 2, part, &quality, nullptr, nullptr, message));
    EXPECT_EQ(0u, std::string(message).find("The size of quality is 0")) << message;
}
