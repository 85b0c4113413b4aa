// SPDX-License-Identifier: MIT
/* zorpelx/report/figures.cpp: what a partition is worth.
 *
 * A cut hyperedge of s vertices in c parts adds (s - c) / (s - 1) to the absorption. Its numerators
 * are summed as integers for each size, so that only as many fractions as there are sizes are added
 * at the end, each less than one: the sum is right far beyond the digits of a double.
 */
#include "figures.h"

#include <algorithm>
#include <cmath>
#include <map>

static int64_t part_at(const Hypergraph &graph, const std::vector<int64_t> &part, int64_t pin)
{
    return part[static_cast<size_t>(graph.pins[static_cast<size_t>(pin)])];
}

/* The parts that hold vertices of e, each once, into parts. Mark holds e for a part that was met,
 * so each hyperedge costs its own size only. */
static void collect_parts(const Hypergraph &graph, const std::vector<int64_t> &part, int64_t e,
                          std::vector<int64_t> *mark, std::vector<int64_t> *parts)
{
    parts->clear();
    for (int64_t j = graph.start[static_cast<size_t>(e)];
         j < graph.start[static_cast<size_t>(e) + 1]; j++) {
        const int64_t p = part_at(graph, part, j);
        if ((*mark)[static_cast<size_t>(p)] == e) continue;
        (*mark)[static_cast<size_t>(p)] = e;
        parts->push_back(p);
    }
}

static void add_cut_net(Figures *figures, int64_t weight, const std::vector<int64_t> &parts)
{
    const int64_t touched = static_cast<int64_t>(parts.size());
    figures->cut += weight;
    figures->ncut++;
    figures->soed += touched * weight;
    figures->km1 += (touched - 1) * weight;
    for (const int64_t p : parts) figures->external[static_cast<size_t>(p)] += weight;
}

static void add_absorption(Figures *figures, const std::map<int64_t, int64_t> &numerators)
{
    long double rest = 0;
    for (const auto &[size, numerator] : numerators) {
        figures->whole += numerator / (size - 1);
        rest +=
            static_cast<long double>(numerator % (size - 1)) / static_cast<long double>(size - 1);
    }
    const long double full = std::floor(rest);
    figures->whole += static_cast<int64_t>(full);
    figures->fraction = rest - full;
}

/* A part that weighs nothing and touches no cut hyperedge costs nothing. */
static long double scaled_cost(const Figures &figures, int64_t nvertices)
{
    if (figures.nparts < 2) return 0;
    long double sum = 0;
    for (size_t p = 0; p < figures.weight.size(); p++)
        if (figures.external[p] > 0)
            sum += static_cast<long double>(figures.external[p]) /
                   static_cast<long double>(figures.weight[p]);
    return sum /
           (static_cast<long double>(nvertices) * static_cast<long double>(figures.nparts - 1));
}

static Figures empty_figures(int64_t nparts)
{
    const std::vector<int64_t> zeros(static_cast<size_t>(nparts), 0);
    return {nparts, 0, 0, 0, 0, 0, 0, 0, zeros, zeros, zeros};
}

Figures figures_of(const Hypergraph &graph, const std::vector<int64_t> &part, int64_t nparts)
{
    Figures figures = empty_figures(nparts);
    for (size_t v = 0; v < part.size(); v++) {
        figures.weight[static_cast<size_t>(part[v])] += graph.vertexwgt[v];
        figures.vertices[static_cast<size_t>(part[v])]++;
    }
    std::vector<int64_t> mark(static_cast<size_t>(nparts), -1), parts;
    std::map<int64_t, int64_t> numerators; // of the absorption, by size
    for (int64_t e = 0; e < graph.nnets; e++) {
        collect_parts(graph, part, e, &mark, &parts);
        if (parts.size() < 2) {
            figures.whole++;
            continue;
        }
        add_cut_net(&figures, graph.netwgt[static_cast<size_t>(e)], parts);
        numerators[net_size(graph, e)] += net_size(graph, e) - static_cast<int64_t>(parts.size());
    }
    add_absorption(&figures, numerators);
    figures.scaled_cost = scaled_cost(figures, graph.nvertices);
    return figures;
}

int64_t parts_of_net(const Hypergraph &graph, const std::vector<int64_t> &part, int64_t e)
{
    std::vector<int64_t> parts;
    for (int64_t j = graph.start[static_cast<size_t>(e)];
         j < graph.start[static_cast<size_t>(e) + 1]; j++)
        parts.push_back(part_at(graph, part, j));
    std::sort(parts.begin(), parts.end());
    return std::unique(parts.begin(), parts.end()) - parts.begin();
}

std::vector<int64_t> cut_hyperedges(const Hypergraph &graph, const std::vector<int64_t> &part)
{
    std::vector<int64_t> cut;
    for (int64_t e = 0; e < graph.nnets; e++)
        if (parts_of_net(graph, part, e) > 1) cut.push_back(e);
    return cut;
}

double imbalance_percent(const Figures &figures)
{
    const int64_t total = total_weight(figures.weight);
    const int64_t heaviest = *std::max_element(figures.weight.begin(), figures.weight.end());
    if (total == 0) return 0;
    return 100 * (static_cast<double>(heaviest) * static_cast<double>(figures.nparts) /
                      static_cast<double>(total) -
                  1);
}
