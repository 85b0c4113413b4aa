// SPDX-License-Identifier: MIT
/* zorpelx/report/facts.cpp: what a report tells of a partition beyond its figures.
 *
 * One pass over the hyperedges finds the parts of each with their numbers of vertices; all counts
 * are taken from that.
 */
#include "facts.h"

#include <algorithm>
#include <map>
#include <unordered_map>

std::vector<PartShare> shares_of(const Hypergraph &graph, const NamedPartition &division, int64_t e,
                                 std::vector<int64_t> *count)
{
    std::vector<PartShare> shares;
    const size_t begin = static_cast<size_t>(graph.start[static_cast<size_t>(e)]);
    const size_t end = static_cast<size_t>(graph.start[static_cast<size_t>(e) + 1]);
    for (size_t j = begin; j < end; j++) {
        const int64_t p = division.part[static_cast<size_t>(graph.pins[j])];
        if ((*count)[static_cast<size_t>(p)]++ == 0) shares.push_back({p, 0});
    }
    for (PartShare &share : shares) {
        share.vertices = (*count)[static_cast<size_t>(share.part)];
        (*count)[static_cast<size_t>(share.part)] = 0;
    }
    std::sort(shares.begin(), shares.end(), [](const PartShare &a, const PartShare &b) {
        return a.vertices != b.vertices ? a.vertices > b.vertices : a.part < b.part;
    });
    return shares;
}

/* Pairs by first x nparts + second, which is below 10^12. */
using Pairs = std::unordered_map<int64_t, PairFacts>;

static void add_pairs(const std::vector<PartShare> &shares, int64_t weight, int64_t nparts,
                      Pairs *pairs)
{
    for (size_t i = 0; i < shares.size(); i++)
        for (size_t j = i + 1; j < shares.size(); j++) {
            const auto [p, q] = std::minmax(shares[i].part, shares[j].part);
            PairFacts &pair =
                pairs->try_emplace(p * nparts + q, PairFacts{p, q, 0, 0}).first->second;
            pair.number++;
            pair.weight += weight;
        }
}

static void add_cut_net(const std::vector<PartShare> &shares, Facts *facts)
{
    for (const PartShare &share : shares) {
        PartFacts &part = facts->parts[static_cast<size_t>(share.part)];
        part.cutnets++;
        part.cutpins += share.vertices;
    }
}

static void mark_boundary(const Hypergraph &graph, int64_t e, std::vector<bool> *boundary)
{
    for (int64_t j = graph.start[static_cast<size_t>(e)];
         j < graph.start[static_cast<size_t>(e) + 1]; j++)
        (*boundary)[static_cast<size_t>(graph.pins[static_cast<size_t>(j)])] = true;
}

static void count_boundary(const NamedPartition &division, const std::vector<bool> &boundary,
                           Facts *facts)
{
    for (size_t v = 0; v < boundary.size(); v++)
        if (boundary[v]) facts->parts[static_cast<size_t>(division.part[v])].boundary++;
}

/* What is asked for first: the cost, by which a hyperedge in more parts counts more. */
static bool is_costlier(const CostlyNet &a, const CostlyNet &b)
{
    const int64_t left = a.weight * (static_cast<int64_t>(a.shares.size()) - 1);
    const int64_t right = b.weight * (static_cast<int64_t>(b.shares.size()) - 1);
    if (left != right) return left > right;
    return a.weight != b.weight ? a.weight > b.weight : a.net < b.net;
}

/* Holds the costliest so far as a heap with the cheapest of them on top. */
static void add_costly(CostlyNet net, size_t most, std::vector<CostlyNet> *costly)
{
    if (most == 0) return;
    if (costly->size() == most) {
        if (!is_costlier(net, costly->front())) return;
        std::pop_heap(costly->begin(), costly->end(), is_costlier);
        costly->pop_back();
    }
    costly->push_back(std::move(net));
    std::push_heap(costly->begin(), costly->end(), is_costlier);
}

static std::vector<PairFacts> sorted_pairs(const Pairs &pairs)
{
    std::vector<PairFacts> list;
    for (const auto &[key, pair] : pairs) list.push_back(pair);
    std::sort(list.begin(), list.end(), [](const PairFacts &a, const PairFacts &b) {
        if (a.weight != b.weight) return a.weight > b.weight;
        if (a.number != b.number) return a.number > b.number;
        return a.first != b.first ? a.first < b.first : a.second < b.second;
    });
    return list;
}

static void add_touched(int64_t parts, int64_t weight, std::map<int64_t, TouchedFacts> *touched)
{
    TouchedFacts &row = touched->try_emplace(parts, TouchedFacts{parts, 0, 0}).first->second;
    row.number++;
    row.weight += weight;
}

Facts facts_of(const Hypergraph &graph, const NamedPartition &division, size_t ncostly)
{
    Facts facts = {};
    facts.parts.resize(static_cast<size_t>(division.nparts));
    Pairs pairs;
    std::map<int64_t, TouchedFacts> touched;
    std::vector<int64_t> count(static_cast<size_t>(division.nparts), 0);
    std::vector<bool> boundary(static_cast<size_t>(graph.nvertices), false);
    for (int64_t e = 0; e < graph.nnets; e++) {
        std::vector<PartShare> shares = shares_of(graph, division, e, &count);
        const int64_t weight = graph.netwgt[static_cast<size_t>(e)];
        const int64_t nparts = static_cast<int64_t>(shares.size());
        add_touched(nparts, weight, &touched);
        if (nparts == 1) {
            facts.parts[static_cast<size_t>(shares[0].part)].inner++;
            facts.parts[static_cast<size_t>(shares[0].part)].innerwgt += weight;
        }
        if (nparts < 2) continue;
        add_cut_net(shares, &facts);
        mark_boundary(graph, e, &boundary);
        if (nparts <= MOST_PAIRED)
            add_pairs(shares, weight, division.nparts, &pairs);
        else
            facts.unpaired++;
        add_costly({e, weight, net_size(graph, e), std::move(shares)}, ncostly, &facts.costly);
    }
    count_boundary(division, boundary, &facts);
    facts.pairs = sorted_pairs(pairs);
    for (const auto &[parts, row] : touched) facts.touched.push_back(row);
    std::sort_heap(facts.costly.begin(), facts.costly.end(), is_costlier);
    return facts;
}
