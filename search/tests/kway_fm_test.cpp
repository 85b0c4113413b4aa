// SPDX-License-Identifier: MIT
/* search/tests/kway_fm_test.cpp: gain rows, local refinement, rebalancing, packing. */
#include <gtest/gtest.h>

#include "broken.h"
#include "search/bold.h"
#include "search/kway_fm.h"
#include "search/rebalance.h"
#include "search_support.h"

namespace
{

constexpr Objective OBJECTIVES[] = {Objective::cut, Objective::km1, Objective::soed};

/* A random partition of a random hypergraph, some vertices fixed; with many parts rows have marks.
 */
struct RandomCase {
    explicit RandomCase(unsigned seed, bool many = false)
        : random(seed), n((many ? 80 : 4) + static_cast<int>(random() % 60)),
          nparts((many ? 33 : 2) + static_cast<int>(random() % (many ? 40 : 7))),
          objective(OBJECTIVES[seed % 3]),
          graph(
              random_hypergraph(random, n, n + static_cast<int>(random() % 60), 7, seed % 2 == 0)),
          bounds(graph.get(), nparts, static_cast<int>(random() % 30)),
          where(random_partition(random, n, nparts)), fixed(static_cast<size_t>(n), -1)
    {
        for (size_t v = 0; v < fixed.size(); v++)
            if (random() % 6 == 0) fixed[v] = where[v];
        open_parts(&parts, graph.get(), &bounds, objective, seed % 4 == 0 ? fixed.data() : nullptr);
        load_parts(&parts, where.data());
        open_kway_fm(&work, graph.get(), nparts, objective);
    }
    ~RandomCase()
    {
        close_kway_fm(&work);
        close_parts(&parts);
    }

    std::mt19937 random;
    int n, nparts;
    Objective objective;
    HGraphPtr graph;
    TestBounds bounds;
    std::vector<int> where, fixed;
    Parts parts;
    KwayFmWork work;
};

TEST(GainCache, rows_follow_random_moves)
{
    for (unsigned seed = 1; seed <= 120; seed++) {
        RandomCase c(seed, seed > 90);
        GainCache *const cache = &c.work.cache;
        ASSERT_EQ(cache->nmarks > 0, seed > 90);
        for (int step = 0; step < 60; step++) {
            const int v = static_cast<int>(c.random() % static_cast<unsigned>(c.n));
            const int to = static_cast<int>(c.random() % static_cast<unsigned>(c.nparts));
            row_of(cache, &c.parts, static_cast<int>(c.random() % static_cast<unsigned>(c.n)));
            if (to == c.parts.part[v] || is_fixed(&c.parts, v)) continue;
            move_and_update(&c.parts, cache, v, to);
            ASSERT_TRUE(gain_cache_ok(cache, &c.parts)) << "seed " << seed;
        }
        ASSERT_TRUE(parts_ok(&c.parts)) << "seed " << seed;
    }
}

TEST(GainCache, the_broken_rule_is_named)
{
    for (const bool many : {false, true}) {
        RandomCase c(2, many);
        GainCache *const cache = &c.work.cache;
        const int number = row_of(cache, &c.parts, 0), own = c.parts.part[0];
        const auto ok = [&] { return gain_cache_ok(cache, &c.parts); };
        ASSERT_EQ(broken_rule(ok), "");
        EXPECT_EQ(broken_by(cache->row[1], number, ok), "C1");
        EXPECT_EQ(broken_by(cache->row[1], cache->nrows, ok), "C1");
        int *const row = row_at(cache, number), *const gains = gains_in(cache, row);
        EXPECT_EQ(broken_by(row[0], row[0] + 1, ok), "C2");
        if (many) {
            gains[own] = 1; // without a mark it is not a gain
            EXPECT_EQ(broken_rule(ok), "");
            EXPECT_EQ(broken_by(marks_of(row, own), marks_of(row, own) | mark_of(own), ok), "C2");
            int near = 0;
            while (near < c.nparts && gain_in(cache, row, near) == 0) near++;
            ASSERT_LT(near, c.nparts);
            EXPECT_EQ(broken_by(marks_of(row, near), 0, ok), "C2"); // its gain is lost
        } else {
            EXPECT_EQ(broken_by(gains[own], 1, ok), "C2");
        }
    }
}

TEST(KwayFm, never_makes_the_objective_or_the_excess_worse)
{
    int improved = 0;
    for (unsigned seed = 1; seed <= 200; seed++) {
        RandomCase c(seed, seed > 160);
        Random random = random_for(seed, 0);
        const int64_t before = c.parts.value, excess = excess_of(&c.parts);
        const int64_t gain = refine_kway_fm(&c.parts, &c.work, 5, &random);
        ASSERT_EQ(c.parts.value, before - gain) << "seed " << seed;
        ASSERT_GE(gain, 0) << "seed " << seed;
        ASSERT_LE(excess_of(&c.parts), excess) << "seed " << seed;
        ASSERT_TRUE(parts_ok(&c.parts)) << "seed " << seed;
        ASSERT_TRUE(gain_cache_ok(&c.work.cache, &c.parts)) << "seed " << seed;
        ASSERT_EQ(c.parts.value, objective_of(c.graph.get(), c.nparts, c.objective, c.parts.part));
        improved += gain > 0;
    }
    EXPECT_GT(improved, 150); // most random partitions can be improved
}

TEST(Bold, never_makes_the_objective_or_the_excess_worse)
{
    int better = 0;
    for (unsigned seed = 1; seed <= 300; seed++) {
        RandomCase c(seed);
        Random random = random_for(seed, 0);
        if (seed % 3 > 0) { // and from what bounded moves alone leave
            rebalance(&c.parts, &c.work);
            refine_kway_fm(&c.parts, &c.work, 10, &random);
        }
        const int64_t before = c.parts.value, excess = excess_of(&c.parts);
        const int64_t gain = refine_boldly(&c.parts, &c.work, 3, &random);
        const int64_t after = excess_of(&c.parts);
        ASSERT_EQ(c.parts.value, before - gain) << "seed " << seed;
        ASSERT_TRUE(after < excess || (after == excess && gain >= 0)) << "seed " << seed;
        ASSERT_EQ(c.parts.bounds, &c.bounds) << "seed " << seed;
        ASSERT_TRUE(parts_ok(&c.parts)) << "seed " << seed;
        ASSERT_EQ(c.parts.value, objective_of(c.graph.get(), c.nparts, c.objective, c.parts.part));
        better += seed % 3 > 0 && excess == 0 && gain > 0;
    }
    EXPECT_GT(better, 50); // where bounded moves alone were at their end
}

/* Two cliques of so many vertices each, by hyperedges of two; and those of joined. */
static HGraphPtr two_cliques(int size, const std::vector<int> &joined)
{
    HGraph *const graph = CreateHGraph__();
    std::vector<int> ind;
    for (int begin : {0, size})
        for (int u = begin; u < begin + size; u++)
            for (int v = u + 1; v < begin + size; v++) ind.insert(ind.end(), {u, v});
    ind.insert(ind.end(), joined.begin(), joined.end());
    std::vector<int> ptr(ind.size() / 2 + 1);
    for (size_t e = 0; e < ptr.size(); e++) ptr[e] = static_cast<int>(2 * e);
    graph->ncells = 2 * size;
    graph->nnets = static_cast<int>(ptr.size()) - 1;
    graph->netptr = new_array(ptr);
    graph->netind = new_array(ind);
    graph->cellwgt = new_array(std::vector<int>(static_cast<size_t>(2 * size), 1));
    graph->netwgt = new_array(std::vector<int>(ptr.size() - 1, 1));
    CreateIncidentHGraph__(graph);
    return HGraphPtr(graph);
}

/* Each of two cliques is in the other's part; bounds that are tight let no vertex move at all. */
TEST(Bold, cliques_change_places_within_tight_bounds)
{
    const HGraphPtr graph = two_cliques(10, {});
    const TestBounds bounds(graph.get(), 2, 0);
    Parts parts;
    KwayFmWork work;
    open_parts(&parts, graph.get(), &bounds, Objective::cut, nullptr);
    open_kway_fm(&work, graph.get(), 2, Objective::cut);
    std::vector<int> where(20, 1);
    for (int v = 0; v < 8; v++) where[static_cast<size_t>(v)] = 0;
    where[10] = where[11] = 0;
    load_parts(&parts, where.data());
    Random random = random_for(1, 0);
    EXPECT_EQ(refine_kway_fm(&parts, &work, 10, &random), 0);
    EXPECT_EQ(refine_boldly(&parts, &work, 10, &random), 32);
    EXPECT_EQ(parts.value, 0);
    EXPECT_TRUE(within_bounds(&parts));
    close_kway_fm(&work);
    close_parts(&parts);
}

TEST(KwayFm, a_vertex_finds_the_best_of_many_parts)
{
    // vertex p of 0 to 70 is fixed in part p; the last hangs on each by a hyperedge, on one by two
    for (const int best : {1, 31, 32, 33, 63, 64, 70}) {
        HGraph *const graph = CreateHGraph__();
        constexpr int n = 72, nparts = 71;
        std::vector<int> ind, ptr;
        for (int p = 0; p < nparts; p++) ind.insert(ind.end(), {p, n - 1});
        ind.insert(ind.end(), {best, n - 1});
        for (int e = 0; e <= n; e++) ptr.push_back(2 * e);
        graph->ncells = n;
        graph->nnets = n;
        graph->netptr = new_array(ptr);
        graph->netind = new_array(ind);
        graph->cellwgt = new_array(std::vector<int>(n, 1));
        graph->netwgt = new_array(std::vector<int>(n, 1));
        CreateIncidentHGraph__(graph);
        const HGraphPtr owner(graph);
        const TestBounds bounds(graph, nparts, 100);
        std::vector<int> fixed(n), where(n);
        for (int p = 0; p < nparts; p++) fixed[static_cast<size_t>(p)] = p;
        where = fixed;
        fixed[n - 1] = -1;
        where[n - 1] = 0;
        Parts parts;
        KwayFmWork work;
        open_parts(&parts, graph, &bounds, Objective::cut, fixed.data());
        open_kway_fm(&work, graph, nparts, Objective::cut);
        load_parts(&parts, where.data());
        Random random = random_for(1, 0);
        EXPECT_EQ(refine_kway_fm(&parts, &work, 2, &random), 1);
        EXPECT_EQ(parts.part[n - 1], best);
        close_kway_fm(&work);
        close_parts(&parts);
    }
}

TEST(KwayFm, two_cliques_are_found)
{
    const HGraphPtr graph = two_cliques(6, {5, 6});
    const TestBounds bounds(graph.get(), 2, 20);
    Parts parts;
    KwayFmWork work;
    open_parts(&parts, graph.get(), &bounds, Objective::cut, nullptr);
    open_kway_fm(&work, graph.get(), 2, Objective::cut);
    const std::vector<int> where = {0, 0, 0, 0, 0, 1, 0, 1, 1, 1, 1, 1};
    load_parts(&parts, where.data());
    Random random = random_for(1, 0);
    refine_kway_fm(&parts, &work, 10, &random);
    EXPECT_EQ(parts.value, 1);
    close_kway_fm(&work);
    close_parts(&parts);
}

TEST(Rebalance, reaches_the_bounds_of_unit_weights_and_keeps_fixed_vertices)
{
    for (unsigned seed = 1; seed <= 200; seed++) {
        RandomCase c(seed);
        const int64_t excess = excess_of(&c.parts);
        const bool reached = rebalance(&c.parts, &c.work);
        ASSERT_EQ(reached, within_bounds(&c.parts)) << "seed " << seed;
        ASSERT_LE(excess_of(&c.parts), excess) << "seed " << seed;
        ASSERT_TRUE(parts_ok(&c.parts)) << "seed " << seed;
        if (seed % 2 != 0) { // weights of 1, and seeds that are multiples of 4 alone fix vertices
            ASSERT_TRUE(reached) << "seed " << seed;
        }
    }
}

TEST(Pack, heaviest_first_fills_parts_of_unequal_size)
{
    HGraph graph = {};
    std::vector<int> weights = {3, 5, 2, 7, 1, 6};
    graph.ncells = 6;
    graph.cellwgt = weights.data();
    int64_t most[] = {12, 6, 6}, least[] = {0, 0, 0};
    const Bounds bounds = {3, most, least};
    std::vector<int> where(6, 0), fixed = {-1, -1, 2, -1, -1, -1};
    EXPECT_EQ(pack(&graph, &bounds, fixed.data(), false, where.data()), 0);
    EXPECT_EQ(where[2], 2);
    int64_t weight[3] = {};
    for (size_t v = 0; v < 6; v++) weight[where[v]] += weights[v];
    for (int p = 0; p < 3; p++) EXPECT_LE(weight[p], most[p]);
    most[0] = 10; // 24 into 22
    EXPECT_EQ(pack(&graph, &bounds, fixed.data(), false, where.data()), 2);
}

} // namespace
