// SPDX-License-Identifier: MIT
/* zorpelx/cli/tests/layout_test.cpp: what a report is made of: matching of parts, clusters, places
 * in pictures, names as markup. */
#include <algorithm>
#include <cmath>
#include <numeric>
#include <random>

#include <gtest/gtest.h>

#include "account.h"
#include "assignment.h"
#include "cluster.h"
#include "layout.h"
#include "markup.h"
#include "pivots.h"

static int64_t gain_of(const std::vector<std::vector<int64_t>> &gain,
                       const std::vector<size_t> &chosen)
{
    int64_t sum = 0;
    for (size_t i = 0; i < chosen.size(); i++) sum += gain[i][chosen[i]];
    return sum;
}

static int64_t best_by_trial(const std::vector<std::vector<int64_t>> &gain)
{
    std::vector<size_t> order(gain[0].size());
    std::iota(order.begin(), order.end(), 0);
    int64_t best = 0;
    do {
        best = std::max(best, gain_of(gain, {order.begin(),
                                             order.begin() + static_cast<ptrdiff_t>(gain.size())}));
    } while (std::next_permutation(order.begin(), order.end()));
    return best;
}

TEST(Assignment, is_the_best_of_all_orders)
{
    std::mt19937 random(5);
    for (int round = 0; round < 400; round++) {
        const size_t m = 1 + random() % 6, n = 1 + random() % m;
        std::vector<std::vector<int64_t>> gain(n, std::vector<int64_t>(m));
        for (auto &row : gain)
            for (int64_t &g : row) g = random() % 4 == 0 ? 0 : random() % 50;
        const std::vector<size_t> chosen = best_assignment(gain);
        std::vector<size_t> sorted = chosen;
        std::sort(sorted.begin(), sorted.end());
        ASSERT_EQ(std::unique(sorted.begin(), sorted.end()), sorted.end());
        ASSERT_LT(sorted.back(), m);
        ASSERT_EQ(gain_of(gain, chosen), best_by_trial(gain));
    }
    EXPECT_TRUE(best_assignment({}).empty());
}

/* A grid of hyperedges of two vertices, in stripes of parts. */
static Hypergraph grid(int32_t side)
{
    Hypergraph graph = {};
    graph.nvertices = static_cast<int64_t>(side) * side;
    graph.start.push_back(0);
    for (int32_t v = 0; v < side * side; v++)
        for (const int32_t step : {1, side}) {
            if (step == 1 ? v % side == side - 1 : v + side >= side * side) continue;
            graph.pins.insert(graph.pins.end(), {v, v + step});
            graph.start.push_back(static_cast<int64_t>(graph.pins.size()));
        }
    graph.nnets = static_cast<int64_t>(graph.start.size()) - 1;
    graph.netwgt.assign(static_cast<size_t>(graph.nnets), 1);
    graph.vertexwgt.assign(static_cast<size_t>(graph.nvertices), 1);
    return graph;
}

static NamedPartition stripes(const Hypergraph &graph, int64_t nparts)
{
    NamedPartition division = {"", nparts, {}};
    for (int64_t v = 0; v < graph.nvertices; v++)
        division.part.push_back(v * nparts / graph.nvertices);
    return division;
}

TEST(Clusters, are_within_parts_and_no_more_than_asked_for)
{
    const Hypergraph graph = grid(100);
    for (const int64_t nparts : {1, 3, 8, 2000}) {
        const NamedPartition division = stripes(graph, nparts);
        const std::vector<int32_t> cluster = clusters_of(graph, division, 500);
        const int32_t number = *std::max_element(cluster.begin(), cluster.end()) + 1;
        EXPECT_LE(number, std::max<int64_t>(500, nparts));
        std::vector<int64_t> part(static_cast<size_t>(number), -1);
        for (size_t v = 0; v < cluster.size(); v++) {
            int64_t &of_cluster = part[static_cast<size_t>(cluster[v])];
            if (of_cluster < 0) of_cluster = division.part[v];
            ASSERT_EQ(of_cluster, division.part[v]);
        }
        EXPECT_EQ(std::count(part.begin(), part.end(), -1), 0);
    }
}

TEST(Clusters, are_made_of_islands_as_well)
{
    Hypergraph graph = grid(1);
    graph.nvertices = 3000;
    graph.vertexwgt.assign(3000, 1);
    const std::vector<int32_t> cluster = clusters_of(graph, stripes(graph, 4), 100);
    EXPECT_LE(*std::max_element(cluster.begin(), cluster.end()), 99);
}

static std::vector<Link> links_of_grid(const Hypergraph &graph)
{
    std::vector<Link> links;
    for (size_t j = 0; j < graph.pins.size(); j += 2)
        links.push_back({graph.pins[j], graph.pins[j + 1], 1});
    return links;
}

static double distance(const Spot &a, const Spot &b)
{
    return std::sqrt((a.x - b.x) * (a.x - b.x) + (a.y - b.y) * (a.y - b.y));
}

TEST(Layout, fills_its_rectangle_and_is_the_same_again)
{
    const std::vector<Link> links = links_of_grid(grid(20));
    const std::vector<Spot> places = lay_out(400, links, 300, 200),
                            again = lay_out(400, links, 300, 200);
    double right = 0, bottom = 0;
    for (size_t v = 0; v < places.size(); v++) {
        ASSERT_EQ(places[v].x, again[v].x);
        ASSERT_EQ(places[v].y, again[v].y);
        ASSERT_GE(places[v].x, -1e-9);
        ASSERT_GE(places[v].y, -1e-9);
        right = std::max(right, places[v].x);
        bottom = std::max(bottom, places[v].y);
    }
    EXPECT_LE(right, 300 + 1e-9);
    EXPECT_LE(bottom, 200 + 1e-9);
    EXPECT_GT(std::max(right / 300, bottom / 200), 0.99);
}

TEST(Layout, neighbours_are_near_and_corners_are_far)
{
    const std::vector<Link> links = links_of_grid(grid(20));
    const std::vector<Spot> places = lay_out(400, links, 400, 400);
    double near = 0;
    for (const Link &link : links)
        near +=
            distance(places[static_cast<size_t>(link.from)], places[static_cast<size_t>(link.to)]);
    near /= static_cast<double>(links.size());
    EXPECT_LT(near, 40); // a random layout has 200
    EXPECT_GT(distance(places[0], places[399]), 250);
    EXPECT_GT(distance(places[19], places[380]), 250);
}

TEST(Layout, takes_islands_pairs_and_points_on_one_spot)
{
    EXPECT_TRUE(lay_out(0, {}, 10, 10).empty());
    for (const size_t nnodes : {size_t{1}, size_t{2}, size_t{3}, size_t{50}}) {
        const std::vector<Spot> places = lay_out(nnodes, {}, 10, 10);
        for (const Spot &place : places) {
            EXPECT_TRUE(std::isfinite(place.x) && std::isfinite(place.y));
            EXPECT_TRUE(place.x >= -1e-9 && place.x <= 10 + 1e-9);
        }
        for (size_t v = 1; v < nnodes; v++) EXPECT_GT(distance(places[0], places[v]), 1e-3);
    }
}

TEST(Contents, prefixes_are_levels_or_names_without_numbers)
{
    EXPECT_EQ(name_prefix("core/alu/_12_", 1), "core");
    EXPECT_EQ(name_prefix("core/alu/_12_", 2), "core/alu");
    EXPECT_EQ(name_prefix("core/alu/_12_", 5), "core/alu");
    EXPECT_EQ(name_prefix("core.alu.x", 1), "core");
    EXPECT_EQ(name_prefix("data[12]", 1), "data");
    EXPECT_EQ(name_prefix("x12", 1), "x");
    EXPECT_EQ(name_prefix("123", 1), "");
    EXPECT_EQ(name_prefix("", 1), "");
    EXPECT_EQ(name_prefix("/a/b", 1), "/a");
}

TEST(Markup, leaves_nothing_that_is_markup)
{
    EXPECT_EQ(markup("<b>&\"'"), "&lt;b&gt;&amp;&quot;&#39;");
    EXPECT_EQ(markup("a\nb").find('\n'), std::string::npos);
    EXPECT_EQ(short_markup("abcdefghij", 10), "abcdefghij");
    EXPECT_EQ(short_markup("abcdefghijklmno", 10), "abcd...mno");
    const std::string wide = "\u00e4\u00e4\u00e4\u00e4\u00e4\u00e4\u00e4\u00e4";
    EXPECT_EQ(short_markup(wide, 10).find('\\'), std::string::npos); // no letter is cut in two
}

TEST(Markup, numbers)
{
    EXPECT_EQ(grouped(0), "0");
    EXPECT_EQ(grouped(999), "999");
    EXPECT_EQ(grouped(1000), "1,000");
    EXPECT_EQ(grouped(-1234567), "-1,234,567");
    EXPECT_EQ(grouped(INT64_MAX), "9,223,372,036,854,775,807");
    EXPECT_EQ(decimal(-0.001, 2), "0.00");
    EXPECT_EQ(decimal(-1.5, 1), "-1.5");
    EXPECT_EQ(length(12), "12");
    EXPECT_EQ(length(-0.04), "0");
    EXPECT_EQ(length(-1.25), "-1.3");
}
