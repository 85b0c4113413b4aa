// SPDX-License-Identifier: MIT
/* search/tests/search_test.cpp: overlays, reductions and whole searches, against brute force. */
#include <gtest/gtest.h>

#include "broken.h"
#include "search/overlay.h"
#include "search/search.h"
#include "search_support.h"

namespace
{

constexpr Objective OBJECTIVES[] = {Objective::cut, Objective::km1, Objective::soed};

TEST(Overlay, cells_are_what_all_partitions_keep_together)
{
    for (unsigned seed = 1; seed <= 50; seed++) {
        std::mt19937 random(seed);
        const int n = 1 + static_cast<int>(random() % 40), k = 1 + static_cast<int>(random() % 5);
        const std::vector<int> a = random_partition(random, n, k),
                               b = random_partition(random, n, k);
        std::vector<int> label(static_cast<size_t>(n), 0);
        split_cells(n, a.data(), k, label.data());
        const int ncells = split_cells(n, b.data(), k, label.data());
        int largest = 0;
        for (size_t u = 0; u < label.size(); u++) {
            largest = std::max(largest, label[u]);
            for (size_t v = 0; v < label.size(); v++)
                ASSERT_EQ(label[u] == label[v], a[u] == a[v] && b[u] == b[v]) << "seed " << seed;
        }
        EXPECT_EQ(largest + 1, ncells);
    }
}

/* Flat arrays of a random hypergraph. */
struct FlatCase {
    explicit FlatCase(unsigned seed, int most = 40)
        : random(seed), n(2 + static_cast<int>(random() % static_cast<unsigned>(most - 1))),
          graph(
              random_hypergraph(random, n, 1 + static_cast<int>(random() % 60), 5, seed % 2 == 0)),
          flat({graph->ncells, graph->nnets, graph->netptr, graph->netind, graph->cellwgt,
                graph->netwgt})
    {
    }
    std::mt19937 random;
    int n;
    HGraphPtr graph;
    FlatHypergraph flat;
};

TEST(Reduction, the_broken_rule_is_named)
{
    FlatCase c(3);
    std::vector<int> fixed(static_cast<size_t>(c.n), -1);
    fixed[0] = 1;
    const Constraints constraints = {fixed.data(), nullptr};
    Reduction reduction;
    open_reduction(&reduction, &c.flat, &constraints, 2);
    const auto ok = [&] { return reduction_ok(&reduction, &c.flat, 2); };
    ASSERT_EQ(broken_rule(ok), "");
    const int first = reduction.graph->incptr[2];
    EXPECT_EQ(broken_by(reduction.cluster[0], reduction.nclusters, ok), "R1");
    EXPECT_EQ(broken_by(reduction.fixed[1], 0, ok), "R2");
    EXPECT_EQ(broken_by(reduction.fixed[2], 0, ok), "R2");
    EXPECT_EQ(broken_by(reduction.graph->incptr[2], reduction.graph->incptr[3], ok), "R3");
    EXPECT_EQ(broken_by(reduction.weight[2], reduction.weight[2] + 1, ok), "R4");
    EXPECT_EQ(first, reduction.graph->incptr[2]);
    close_reduction(&reduction);
}

TEST(Reduction, partitions_of_clusters_cost_what_they_cost_on_the_whole)
{
    for (unsigned seed = 1; seed <= 100; seed++) {
        FlatCase c(seed);
        const int k = 2 + static_cast<int>(seed % 4);
        std::vector<int> fixed(static_cast<size_t>(c.n), -1), group(static_cast<size_t>(c.n), -1);
        for (int v = 0; v < c.n; v++) {
            if (c.random() % 5 == 0)
                fixed[static_cast<size_t>(v)] = v % k;
            else if (c.random() % 3 == 0)
                group[static_cast<size_t>(v)] = static_cast<int>(c.random() % 4);
        }
        const Constraints constraints = {seed % 3 != 0 ? fixed.data() : nullptr,
                                         seed % 2 != 0 ? group.data() : nullptr};
        Reduction reduction;
        open_reduction(&reduction, &c.flat, &constraints, k);
        ASSERT_TRUE(hgraph_ok(reduction.graph, HG_LISTS | HG_INCIDENCE)) << "seed " << seed;
        std::vector<int> part = random_partition(c.random, reduction.nclusters, k);
        for (int p = 0; reduction.fixed != nullptr && p < k; p++) part[static_cast<size_t>(p)] = p;
        std::vector<int> whole(static_cast<size_t>(c.n));
        int64_t weight = 0;
        for (int i = 0; i < reduction.nclusters; i++) weight += reduction.weight[i];
        for (size_t v = 0; v < whole.size(); v++) {
            whole[v] = part[static_cast<size_t>(reduction.cluster[v])];
            weight -= c.graph->cellwgt[v];
            if (constraints.fixed != nullptr && fixed[v] >= 0) {
                ASSERT_EQ(whole[v], fixed[v]);
            }
            for (size_t u = 0; constraints.group != nullptr && u < v; u++)
                if (group[u] >= 0 && group[u] == group[v]) {
                    ASSERT_EQ(whole[u], whole[v]);
                }
        }
        EXPECT_EQ(weight, 0);
        for (const Objective objective : OBJECTIVES)
            ASSERT_EQ(objective_of(reduction.graph, k, objective, part.data()),
                      objective_of(c.graph.get(), k, objective, whole.data()))
                << "seed " << seed;
        close_reduction(&reduction);
    }
}

/* The least objective of all partitions within the bounds, none empty; -1 if there is none. */
int64_t brute_force(const FlatCase &c, const Bounds &bounds, Objective objective)
{
    const int k = bounds.nparts;
    std::vector<int> where(static_cast<size_t>(c.n), 0);
    int64_t best = -1;
    for (;;) {
        std::vector<int64_t> weight(static_cast<size_t>(k), 0);
        for (size_t v = 0; v < where.size(); v++)
            weight[static_cast<size_t>(where[v])] += c.graph->cellwgt[v];
        bool ok = true;
        for (int p = 0; p < k; p++)
            ok = ok && weight[static_cast<size_t>(p)] <= bounds.most[p] &&
                 weight[static_cast<size_t>(p)] >= bounds.least[p];
        if (ok) {
            const int64_t value = objective_of(c.graph.get(), k, objective, where.data());
            if (best < 0 || value < best) best = value;
        }
        size_t v = 0;
        while (v < where.size() && ++where[v] == k) where[v++] = 0;
        if (v == where.size()) return best;
    }
}

TEST(Search, best_finds_the_optimum_of_small_hypergraphs)
{
    int cases = 0, optimal = 0;
    for (unsigned seed = 1; seed <= 60; seed++) {
        FlatCase c(seed, seed % 3 == 0 ? 11 : 9);
        const int k = seed % 3 == 0 ? 2 : 2 + static_cast<int>(seed % 2);
        const TestBounds bounds(c.graph.get(), k, 5 * static_cast<int>(seed % 5));
        const Objective objective = OBJECTIVES[seed % 3];
        const int64_t least = brute_force(c, bounds, objective);
        if (least < 0) continue;
        SearchOptions options = {};
        options.schedule = SCHEDULES[PRESET_BEST];
        options.seed = seed;
        std::vector<int> part(static_cast<size_t>(c.n));
        const Constraints none = {nullptr, nullptr};
        const Found found =
            search_partition(&c.flat, &none, &bounds, objective, &options, part.data());
        ASSERT_EQ(found.objective, objective_of(c.graph.get(), k, objective, part.data()));
        if (found.excess == 0) {
            ASSERT_GE(found.objective, least);
        }
        cases++;
        optimal += found.excess == 0 && found.objective == least;
    }
    EXPECT_GT(cases, 30);
    EXPECT_GE(optimal * 100, 99 * cases) << optimal << " of " << cases;
}

TEST(Search, bounds_fixed_vertices_and_groups_are_kept_and_every_published_partition_is_better)
{
    struct Seen {
        int64_t objective = INT64_MAX, excess = INT64_MAX;
        int calls = 0;
        bool improved = true;
    };
    for (unsigned seed = 1; seed <= 60; seed++) {
        FlatCase c(seed, 200);
        const int k = 2 + static_cast<int>(seed % 5);
        const TestBounds bounds(c.graph.get(), k, 10);
        std::vector<int> fixed(static_cast<size_t>(c.n), -1), group(static_cast<size_t>(c.n), -1);
        for (int v = 0; v < c.n; v++) {
            if (c.random() % 12 == 0)
                fixed[static_cast<size_t>(v)] =
                    static_cast<int>(c.random() % static_cast<unsigned>(k));
            else if (c.random() % 12 == 0)
                group[static_cast<size_t>(v)] = v % 3;
        }
        const Constraints constraints = {fixed.data(), group.data()};
        SearchOptions options = {};
        options.schedule = SCHEDULES[seed % NPRESETS];
        options.schedule.ncombined = 2;
        options.seed = seed;
        Seen seen;
        options.user = &seen;
        options.publish = [](void *user, const int *, const Found *found) {
            Seen *const s = static_cast<Seen *>(user);
            s->improved =
                s->improved && (found->excess < s->excess ||
                                (found->excess == s->excess && found->objective <= s->objective));
            s->objective = found->objective;
            s->excess = found->excess;
            s->calls++;
        };
        std::vector<int> part(static_cast<size_t>(c.n)), again(part);
        const Found found = search_partition(&c.flat, &constraints, &bounds, OBJECTIVES[seed % 3],
                                             &options, part.data());
        EXPECT_TRUE(seen.improved && seen.calls > 0) << "seed " << seed;
        EXPECT_EQ(seen.objective, found.objective);
        std::vector<int64_t> weight(static_cast<size_t>(k), 0);
        for (size_t v = 0; v < part.size(); v++) {
            weight[static_cast<size_t>(part[v])] += c.graph->cellwgt[v];
            if (fixed[v] >= 0) {
                ASSERT_EQ(part[v], fixed[v]);
            }
            for (size_t u = 0; u < v; u++)
                if (group[u] >= 0 && group[u] == group[v]) {
                    ASSERT_EQ(part[u], part[v]);
                }
        }
        int64_t excess = 0;
        for (int p = 0; p < k; p++)
            excess += std::max<int64_t>(weight[static_cast<size_t>(p)] - bounds.most[p], 0);
        EXPECT_EQ(found.excess, excess) << "seed " << seed;
        EXPECT_EQ(found.objective,
                  objective_of(c.graph.get(), k, OBJECTIVES[seed % 3], part.data()));
        search_partition(&c.flat, &constraints, &bounds, OBJECTIVES[seed % 3], &options,
                         again.data());
        EXPECT_EQ(part, again);
    }
}

TEST(Search, roomy_members_come_back_into_bounds_that_have_little_room)
{
    int differ = 0;
    for (unsigned seed = 1; seed <= 20; seed++) {
        std::mt19937 random(seed);
        const int n = 400;
        const HGraphPtr graph = random_hypergraph(random, n, 800, 5, seed % 2 == 0);
        const FlatHypergraph flat = {
            n, graph->nnets, graph->netptr, graph->netind, graph->cellwgt, graph->netwgt};
        const int k = 3 + static_cast<int>(seed % 4);
        for (const int epsilon : {2, 20}) {
            const TestBounds bounds(graph.get(), k, epsilon);
            Found found[2];
            std::vector<int> part[2];
            for (const bool roomy : {false, true}) {
                SearchOptions options = {};
                options.schedule = SCHEDULES[PRESET_FAST];
                options.schedule.nmembers = 2;
                options.schedule.ncombined = 0;
                options.schedule.roomy = roomy;
                options.seed = seed;
                part[roomy].resize(static_cast<size_t>(n));
                const Constraints none = {};
                found[roomy] = search_partition(&flat, &none, &bounds, OBJECTIVES[seed % 3],
                                                &options, part[roomy].data());
                EXPECT_EQ(found[roomy].objective,
                          objective_of(graph.get(), k, OBJECTIVES[seed % 3], part[roomy].data()));
            }
            EXPECT_EQ(found[1].excess, found[0].excess) << "seed " << seed;
            if (epsilon == 20)
                EXPECT_EQ(part[0], part[1]) << "seed " << seed;
            else
                differ += part[0] != part[1];
        }
    }
    EXPECT_GT(differ, 10);
}

} // namespace
