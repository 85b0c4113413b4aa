// SPDX-License-Identifier: MIT
/* zorpelx/report/sketch.cpp: what of a hypergraph is drawn. */
#include "sketch.h"

#include <algorithm>
#include <map>
#include <numeric>

#include "cluster.h"

using Points = std::vector<int32_t>; // of one hyperedge, rising

static void take_points(const Hypergraph &graph, const NamedPartition &division, Sketch *sketch)
{
    const size_t npoints =
        sketch->point.empty()
            ? 0
            : static_cast<size_t>(*std::max_element(sketch->point.begin(), sketch->point.end())) +
                  1;
    sketch->part.assign(npoints, 0);
    sketch->vertices.assign(npoints, 0);
    sketch->weight.assign(npoints, 0);
    for (size_t v = 0; v < sketch->point.size(); v++) {
        const size_t c = static_cast<size_t>(sketch->point[v]);
        sketch->part[c] = division.part[v];
        sketch->vertices[c]++;
        sketch->weight[c] += graph.vertexwgt[v];
    }
}

/* The points of a hyperedge, rising, each once; those of one that joins more than are drawn are cut
 * off after one too many. */
static void points_of(const Hypergraph &graph, const Sketch &sketch, int64_t e,
                      std::vector<int64_t> *mark, Points *points)
{
    points->clear();
    for (size_t j = static_cast<size_t>(graph.start[static_cast<size_t>(e)]);
         j < static_cast<size_t>(graph.start[static_cast<size_t>(e) + 1]); j++) {
        const int32_t c = sketch.point[static_cast<size_t>(graph.pins[j])];
        if ((*mark)[static_cast<size_t>(c)] == e) continue;
        (*mark)[static_cast<size_t>(c)] = e;
        points->push_back(c);
        if (points->size() > LARGEST_DRAWN) return;
    }
    std::sort(points->begin(), points->end());
}

struct Joined {
    int64_t weight, number; // of the hyperedges that join the same points
};

static void add_net(const Points &points, const Joined &joined, Sketch *sketch)
{
    bool cut = false;
    for (const int32_t c : points)
        cut = cut ||
              sketch->part[static_cast<size_t>(c)] != sketch->part[static_cast<size_t>(points[0])];
    sketch->pins.insert(sketch->pins.end(), points.begin(), points.end());
    sketch->start.push_back(sketch->pins.size());
    sketch->netwgt.push_back(joined.weight);
    sketch->cut.push_back(cut);
}

/* The heaviest for each point that they join, in the order of their points. */
static void take_nets(const std::map<Points, Joined> &nets, Sketch *sketch)
{
    std::vector<const std::pair<const Points, Joined> *> list;
    for (const auto &net : nets) list.push_back(&net);
    const auto heavier = [](const auto *a, const auto *b) {
        return static_cast<long double>(a->second.weight) *
                   static_cast<long double>(b->first.size()) >
               static_cast<long double>(b->second.weight) *
                   static_cast<long double>(a->first.size());
    };
    std::stable_sort(list.begin(), list.end(), heavier);
    for (size_t i = MOST_DRAWN_NETS; i < list.size(); i++)
        sketch->left_out += list[i]->second.number;
    if (list.size() > MOST_DRAWN_NETS) list.resize(MOST_DRAWN_NETS);
    std::sort(list.begin(), list.end(),
              [](const auto *a, const auto *b) { return a->first < b->first; });
    for (const auto *net : list) add_net(net->first, net->second, sketch);
}

Sketch sketch_of(const Hypergraph &graph, const NamedPartition &division)
{
    Sketch sketch = {};
    sketch.clustered = graph.nvertices > MOST_DRAWN;
    if (sketch.clustered) {
        sketch.point = clusters_of(graph, division, MOST_CLUSTERS);
    } else {
        sketch.point.resize(static_cast<size_t>(graph.nvertices));
        std::iota(sketch.point.begin(), sketch.point.end(), 0);
    }
    take_points(graph, division, &sketch);
    sketch.start.push_back(0);
    std::map<Points, Joined> nets;
    std::vector<int64_t> mark(sketch.part.size(), -1);
    Points points;
    for (int64_t e = 0; e < graph.nnets; e++) {
        points_of(graph, sketch, e, &mark, &points);
        if (points.size() < 2) continue;
        if (points.size() > LARGEST_DRAWN) {
            sketch.left_out++;
            continue;
        }
        Joined &joined = nets[points];
        joined.weight += graph.netwgt[static_cast<size_t>(e)];
        joined.number++;
    }
    take_nets(nets, &sketch);
    return sketch;
}
