// SPDX-License-Identifier: MIT
/* zorpelx/files/measures.cpp: sizes, degrees, components and memory of a hypergraph. */
#include "measures.h"

#include <algorithm>
#include <numeric>

/* 0, 1, 2, 3, 4, 5-8, 9-16, and so on, doubling. */
static std::vector<Bin> empty_bins(int64_t largest)
{
    std::vector<Bin> bins;
    for (int64_t n = 0; n <= 4 && n <= largest; n++) bins.push_back({n, n, 0});
    for (int64_t most = 8; most / 2 < largest; most *= 2) bins.push_back({most / 2 + 1, most, 0});
    return bins;
}

static Spread spread_of(const std::vector<int64_t> &numbers)
{
    Spread spread = {0, 0, 0, static_cast<int64_t>(numbers.size()), {}};
    if (numbers.empty()) return spread;
    spread.least = *std::min_element(numbers.begin(), numbers.end());
    spread.most = *std::max_element(numbers.begin(), numbers.end());
    spread.sum = total_weight(numbers);
    spread.bins = empty_bins(spread.most);
    for (const int64_t number : numbers)
        std::find_if(spread.bins.begin(), spread.bins.end(), [&](const Bin &bin) {
            return number <= bin.most;
        })->count++;
    return spread;
}

double average(const Spread &spread)
{
    return spread.count == 0 ? 0
                             : static_cast<double>(spread.sum) / static_cast<double>(spread.count);
}

/* The root of v's tree; trees are halved on the way. */
static int32_t find_root(std::vector<int32_t> *parent, int32_t v)
{
    const auto up = [&](int32_t u) -> int32_t & { return (*parent)[static_cast<size_t>(u)]; };
    while (up(v) != v) v = up(v) = up(up(v));
    return v;
}

static Components components_of(const Hypergraph &graph)
{
    std::vector<int32_t> parent(static_cast<size_t>(graph.nvertices));
    std::iota(parent.begin(), parent.end(), 0);
    for (size_t e = 0; e + 1 < graph.start.size(); e++)
        for (int64_t j = graph.start[e] + 1; j < graph.start[e + 1]; j++) {
            const int32_t u = find_root(&parent, graph.pins[static_cast<size_t>(j)]);
            const int32_t v = find_root(&parent, graph.pins[static_cast<size_t>(j) - 1]);
            parent[static_cast<size_t>(u)] = v;
        }
    std::vector<int64_t> size(parent.size(), 0);
    for (int32_t v = 0; v < graph.nvertices; v++)
        size[static_cast<size_t>(find_root(&parent, v))]++;
    const auto used = [](int64_t n) { return n > 0; };
    return {std::count_if(size.begin(), size.end(), used),
            size.empty() ? 0 : *std::max_element(size.begin(), size.end())};
}

/* Hyperedges of least .. most vertices that each vertex is in. */
static std::vector<int64_t> degrees_of(const Hypergraph &graph, int64_t least, int64_t most)
{
    std::vector<int64_t> degree(static_cast<size_t>(graph.nvertices), 0);
    for (int64_t e = 0; e < graph.nnets; e++) {
        if (net_size(graph, e) < least || net_size(graph, e) > most) continue;
        for (int64_t j = graph.start[static_cast<size_t>(e)];
             j < graph.start[static_cast<size_t>(e) + 1]; j++)
            degree[static_cast<size_t>(graph.pins[static_cast<size_t>(j)])]++;
    }
    return degree;
}

static std::vector<int64_t> net_sizes(const Hypergraph &graph)
{
    std::vector<int64_t> sizes;
    for (int64_t e = 0; e < graph.nnets; e++) sizes.push_back(net_size(graph, e));
    return sizes;
}

/* Bytes that one start takes at its peak. Fitted to runs on twelve hypergraphs of 4 to 100 thousand
 * vertices and 15 to 400 thousand pins, circuits, matrices, meshes and a formula, in 2 and 8 parts:
 * they took 0.6 to 0.95 of it. Large hyperedges are kept once, the others on every level. */
static int64_t memory_estimate(const Hypergraph &graph, int64_t large_pins)
{
    constexpr int64_t FIXED = 7000000;
    const int64_t pins = static_cast<int64_t>(graph.pins.size());
    return FIXED + 24 * pins + 95 * (pins - large_pins) + 160 * graph.nvertices + 120 * graph.nnets;
}

Measures measure(const Hypergraph &graph)
{
    Measures measures = {};
    const std::vector<int64_t> sizes = net_sizes(graph), degrees = degrees_of(graph, 1, INT64_MAX);
    const std::vector<int64_t> kept = degrees_of(graph, 2, PRUNED_SIZE);
    measures.sizes = spread_of(sizes);
    measures.degrees = spread_of(degrees);
    measures.components = components_of(graph);
    measures.islands = std::count(degrees.begin(), degrees.end(), 0);
    measures.parked = std::count(kept.begin(), kept.end(), 0);
    measures.large =
        std::count_if(sizes.begin(), sizes.end(), [](int64_t size) { return size > PRUNED_SIZE; });
    measures.single = std::count(sizes.begin(), sizes.end(), 1);
    int64_t large_pins = 0;
    for (const int64_t size : sizes) large_pins += size > PRUNED_SIZE ? size : 0;
    measures.memory = memory_estimate(graph, large_pins);
    return measures;
}
