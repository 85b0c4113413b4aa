/* SPDX-License-Identifier: MIT */
/* tests/unit/levels.h: hypergraph levels for tests, built by hand or drawn at random, control
 * records that go with them, and counts taken from the pin lists alone.
 */
#ifndef ZORPEL_TESTS_LEVELS_H
#define ZORPEL_TESTS_LEVELS_H

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <numeric>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "hypergraphs.h"
#include "refine/gains.h"

using Draw = std::mt19937;

/* Frees a level and the coarser ones that hang from it. */
struct FreeChain {
    void operator()(HGraph *graph) const
    {
        while (graph != nullptr) {
            HGraph *const coarser = graph->coarser;
            FreeHGraph__(graph);
            graph = coarser;
        }
    }
};
using Level = std::unique_ptr<HGraph, FreeChain>;

inline int sum(const int *array, int n)
{
    return std::accumulate(array, array + n, 0);
}

/* A level with its incidence; weights left out are 1. */
inline Level make_level(int ncells, const Nets &nets, const Ints &netwgt = {},
                        const Ints &cellwgt = {}, int nfixed = 0)
{
    HGraph *const graph = build_hgraph(ncells, nets, netwgt, cellwgt);
    graph->nfixed = nfixed;
    CreateIncidentHGraph__(graph);
    return Level(graph);
}

/* A chain 0-1-2-... of two-pin hyperedges. */
inline Nets path_nets(int ncells)
{
    Nets nets;
    for (int v = 0; v + 1 < ncells; v++) nets.push_back({v, v + 1});
    return nets;
}

/* The settings of an ordinary bisection. */
inline PartCtrl make_ctrl()
{
    PartCtrl ctrl = default_ctrl();
    ctrl.seed = 0;
    ctrl.MaxCellWgt = 1000000;
    return ctrl;
}

/* Two-way arrays with these sides, and the gains. */
inline void set_sides(HGraph *graph, const Ints &sides)
{
    QXfree__(&graph->where, &graph->gain, &graph->ndeg[0], &graph->ndeg[1], LTERM);
    AllocateRefinementMemory__(graph);
    std::copy(sides.begin(), sides.end(), graph->where);
    ComputeInitGains__(graph);
}

inline Ints group_of(const HGraph *graph, int c)
{
    return to_ints(graph->mind + graph->mptr[c], graph->mptr[c + 1] - graph->mptr[c]);
}

inline int lambda_of(const HGraph *graph, int e, const int *where)
{
    std::set<int> parts;
    for (int v : net_pins(graph, e)) parts.insert(where[v]);
    return static_cast<int>(parts.size());
}

inline int fresh_cut(const HGraph *graph, const int *where)
{
    int cut = 0;
    for (int e = 0; e < graph->nnets; e++)
        if (lambda_of(graph, e, where) > 1) cut += graph->netwgt[e];
    return cut;
}

inline int fresh_soed(const HGraph *graph, const int *where)
{
    int soed = 0;
    for (int e = 0; e < graph->nnets; e++) {
        const int lambda = lambda_of(graph, e, where);
        if (lambda > 1) soed += lambda * graph->netwgt[e];
    }
    return soed;
}

inline Ints part_weights(const HGraph *graph, const int *where, int nparts)
{
    Ints weights(at(nparts), 0);
    for (int v = 0; v < graph->ncells; v++) weights[at(where[v])] += graph->cellwgt[v];
    return weights;
}

/* ---- random levels ---- */

inline int below(Draw &draw, int n)
{
    return static_cast<int>(draw() % static_cast<unsigned>(n));
}

inline int between(Draw &draw, int low, int high)
{
    return low + below(draw, high - low + 1);
}

inline bool one_in(Draw &draw, int n)
{
    return below(draw, n) == 0;
}

/* What random levels may contain. */
struct LevelLimits {
    int mincells = 1, maxcells = 60;
    int maxsize = 8;       // most pins of most hyperedges
    bool islands = true;   // vertices without hyperedges, empty hyperedges
    int maxfixed = 3;      // leading fixed vertices
    bool wide = true;      // some levels with hyperedge weights that make the queues heaps
    bool heavy = true;     // some levels with vertices that outweigh the rest
    bool unitnets = false; // some hyperedges of one vertex
    int giants = 0;        // hyperedges of most vertices
};

enum LevelFamily { UNIFORM, LOCAL, PLANTED, HUBS, TWINS, NFAMILIES };

/* A pin for a hyperedge that starts at vertex v. */
inline int random_pin(Draw &draw, LevelFamily family, int n, int v)
{
    const int half = n / 2 + 1;
    switch (family) {
    case LOCAL:
        return (v + below(draw, std::min(n, 6))) % n;
    case PLANTED:
        return one_in(draw, 8) ? below(draw, n)
               : v < half      ? below(draw, half)
                               : between(draw, n / 2, n - 1);
    case HUBS:
        return one_in(draw, 2) ? below(draw, std::min(n, 3)) : below(draw, n);
    default:
        return below(draw, n);
    }
}

inline Ints random_net(Draw &draw, LevelFamily family, int n, int maxsize)
{
    const int wanted = one_in(draw, 2) ? 2 : between(draw, 2, std::max(2, std::min(n, maxsize)));
    Ints pins = {below(draw, n)};
    for (int tries = 0; tries < 4 * wanted && static_cast<int>(pins.size()) < wanted; tries++) {
        const int v = random_pin(draw, family, n, pins[0]);
        if (std::find(pins.begin(), pins.end(), v) == pins.end()) pins.push_back(v);
    }
    if (pins.size() == 1 && n > 1) pins.push_back((pins[0] + 1) % n);
    return pins;
}

inline Nets random_nets(Draw &draw, int n, const LevelLimits &limits)
{
    const LevelFamily family = static_cast<LevelFamily>(below(draw, NFAMILIES));
    const int count = n < 2 ? 0 : between(draw, limits.islands ? 0 : n, 2 * n);
    Nets nets;
    for (int i = 0; i < count; i++) {
        if (family == TWINS && !nets.empty() && one_in(draw, 2)) {
            nets.push_back(nets[at(below(draw, static_cast<int>(nets.size())))]);
            std::shuffle(nets.back().begin(), nets.back().end(), draw);
        } else {
            nets.push_back(random_net(draw, family, n, limits.maxsize));
        }
        if (limits.islands && one_in(draw, 40)) nets.push_back({});
        if (limits.unitnets && one_in(draw, 6)) nets.push_back({below(draw, n)});
    }
    for (int i = 0; i < limits.giants; i++) {
        nets.push_back({});
        for (int v = 0; v < n; v++)
            if (!one_in(draw, 20)) nets.back().push_back(v);
    }
    if (!limits.islands && n > 1) // a ring leaves nobody alone
        for (int v = 0; v < n; v++) nets.push_back({v, (v + 1) % n});
    return nets;
}

inline Level random_level(Draw &draw, const LevelLimits &limits = {})
{
    const int n = between(draw, limits.mincells, limits.maxcells);
    const Nets nets = random_nets(draw, n, limits);
    const int widest = limits.wide && one_in(draw, 3) ? 4000 : one_in(draw, 2) ? 1 : 6;
    const int heaviest = one_in(draw, 2) ? 1 : 9;
    Ints netwgt, cellwgt;
    for (size_t e = 0; e < nets.size(); e++)
        netwgt.push_back(one_in(draw, 20) ? 0 : between(draw, 1, widest));
    for (int v = 0; v < n; v++)
        cellwgt.push_back(one_in(draw, 20) ? 0 : between(draw, 1, heaviest));
    if (limits.heavy && one_in(draw, 4)) {
        const bool huge = one_in(draw, 2); // beyond the room from which candidates must fit
        for (int v = 0; v < n; v++) cellwgt[at(v)] *= huge ? 300 : 1;
        for (int i = 0; i < 1 + n / 16; i++) cellwgt[at(below(draw, n))] *= 10;
    }
    const int nfixed = one_in(draw, 2) ? 0 : below(draw, std::min(n, limits.maxfixed) + 1);
    return make_level(n, nets, netwgt, cellwgt, nfixed);
}

/* A partition: even, lopsided, or all but alone in part 0. */
inline Ints random_parts(Draw &draw, int n, int nparts)
{
    const int spread = below(draw, 4);
    Ints parts;
    for (int v = 0; v < n; v++)
        parts.push_back(spread > 1 || one_in(draw, spread == 0 ? 4 : 12) ? below(draw, nparts) : 0);
    return parts;
}

inline PartCtrl random_bisection_ctrl(Draw &draw)
{
    static const float shares[] = {0.5f, 0.5f, 0.25f, 0.6f, 1.0f / 3};
    static const float factors[] = {0.01f, 0.05f, 0.1f, 0.2f, 0.45f};
    PartCtrl ctrl = make_ctrl();
    ctrl.splitratio = shares[below(draw, 5)];
    ctrl.ubfactor = factors[below(draw, 5)];
    return ctrl;
}

#endif
