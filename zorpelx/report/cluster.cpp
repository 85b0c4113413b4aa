// SPDX-License-Identifier: MIT
/* zorpelx/report/cluster.cpp: clusters of vertices, for pictures of large hypergraphs.
 *
 * Neighbours of one part are joined as long as their cluster stays within a size, which doubles
 * from round to round, small hyperedges first. What has no neighbours left to join is joined in the
 * order of numbers at the end.
 */
#include "cluster.h"

#include <algorithm>
#include <numeric>

/* Disjoint sets: above[v] leads to the root, whose size counts. */
struct Sets {
    std::vector<int32_t> above;
    std::vector<int64_t> size;
    int64_t number;
};

static int32_t root_of(Sets *sets, int32_t v)
{
    std::vector<int32_t> &above = sets->above;
    while (above[static_cast<size_t>(v)] != v) {
        const int32_t next = above[static_cast<size_t>(v)];
        above[static_cast<size_t>(v)] = above[static_cast<size_t>(next)]; // halves the path
        v = next;
    }
    return v;
}

static void join(Sets *sets, int32_t u, int32_t v, int64_t most)
{
    int32_t a = root_of(sets, u), b = root_of(sets, v);
    if (a == b) return;
    const int64_t size = sets->size[static_cast<size_t>(a)] + sets->size[static_cast<size_t>(b)];
    if (size > most) return;
    if (a > b) std::swap(a, b);
    sets->above[static_cast<size_t>(b)] = a;
    sets->size[static_cast<size_t>(a)] = size;
    sets->number--;
}

/* Hyperedges of at most so many vertices, the small ones first. */
static std::vector<int64_t> small_nets_first(const Hypergraph &graph)
{
    constexpr int64_t LARGEST = 50; // beyond, to be in one hyperedge says little
    std::vector<int64_t> nets;
    for (int64_t e = 0; e < graph.nnets; e++)
        if (net_size(graph, e) > 1 && net_size(graph, e) <= LARGEST) nets.push_back(e);
    std::stable_sort(nets.begin(), nets.end(),
                     [&](int64_t a, int64_t b) { return net_size(graph, a) < net_size(graph, b); });
    return nets;
}

static void join_neighbours(const Hypergraph &graph, const NamedPartition &division, int64_t e,
                            int64_t most, Sets *sets)
{
    const size_t begin = static_cast<size_t>(graph.start[static_cast<size_t>(e)]);
    const size_t end = static_cast<size_t>(graph.start[static_cast<size_t>(e) + 1]);
    for (size_t j = begin + 1; j < end; j++) {
        const int32_t u = graph.pins[j - 1], v = graph.pins[j];
        if (division.part[static_cast<size_t>(u)] == division.part[static_cast<size_t>(v)])
            join(sets, u, v, most);
    }
}

/* Clusters of one part that are next to each other by number. */
static void join_rest(const NamedPartition &division, int64_t most, Sets *sets)
{
    std::vector<int32_t> last(static_cast<size_t>(division.nparts), -1);
    for (size_t v = 0; v < division.part.size(); v++) {
        const int32_t root = root_of(sets, static_cast<int32_t>(v));
        int32_t &before = last[static_cast<size_t>(division.part[v])];
        if (before >= 0) join(sets, before, root, most);
        before = root_of(sets, root);
    }
}

static std::vector<int32_t> numbered(Sets *sets)
{
    std::vector<int32_t> number(sets->above.size(), -1), cluster(sets->above.size());
    int32_t next = 0;
    for (size_t v = 0; v < cluster.size(); v++) {
        int32_t &of_root = number[static_cast<size_t>(root_of(sets, static_cast<int32_t>(v)))];
        if (of_root < 0) of_root = next++;
        cluster[v] = of_root;
    }
    return cluster;
}

std::vector<int32_t> clusters_of(const Hypergraph &graph, const NamedPartition &division,
                                 int64_t most)
{
    Sets sets = {std::vector<int32_t>(division.part.size()),
                 std::vector<int64_t>(division.part.size(), 1), graph.nvertices};
    std::iota(sets.above.begin(), sets.above.end(), 0);
    const std::vector<int64_t> nets = small_nets_first(graph);
    int64_t size = 2;
    for (; sets.number > most && size <= 4 * (graph.nvertices / most + 1); size *= 2)
        for (const int64_t e : nets) {
            if (sets.number <= most) break;
            join_neighbours(graph, division, e, size, &sets);
        }
    for (; sets.number > std::max(most, division.nparts) && size <= 4 * graph.nvertices; size *= 2)
        join_rest(division, size, &sets);
    return numbered(&sets);
}
