// SPDX-License-Identifier: MIT
/* zorpelx/cli/outlook.cpp: what bounds balance and cut of a hypergraph.
 *
 * All is proved, nothing guessed: a bound holds for every partition within the bounds on the parts.
 *   balance  a vertex that outweighs a part; more vertices above half a part than parts; fixed
 *            vertices that outweigh their part; a packing, heaviest first, that shows it possible
 *   cut      a hyperedge that weighs more than a part, or whose vertices are fixed in several; a
 *            component that outweighs a part costs at least its lightest hyperedge
 */
#include "outlook.h"

#include <algorithm>
#include <numeric>
#include <queue>

#include "casts.h"

static int64_t root_of(std::vector<int64_t> *parent, int64_t v)
{
    while ((*parent)[at(v)] != v) {
        (*parent)[at(v)] = (*parent)[at((*parent)[at(v)])];
        v = (*parent)[at(v)];
    }
    return v;
}

static std::vector<int64_t> joined_vertices(const Hypergraph &graph, std::vector<bool> *in_net)
{
    std::vector<int64_t> parent(at(graph.nvertices));
    std::iota(parent.begin(), parent.end(), 0);
    for (int64_t e = 0; e < graph.nnets; e++)
        for (int64_t j = graph.start[at(e)]; j < graph.start[at(e) + 1]; j++) {
            const int64_t v = graph.pins[at(j)], first = graph.pins[at(graph.start[at(e)])];
            (*in_net)[at(v)] = true;
            parent[at(root_of(&parent, v))] = root_of(&parent, first);
        }
    return parent;
}

Pieces pieces_of(const Hypergraph &graph)
{
    std::vector<bool> in_net(at(graph.nvertices));
    std::vector<int64_t> parent = joined_vertices(graph, &in_net);
    std::vector<int64_t> number(at(graph.nvertices), -1);
    Pieces pieces = {std::vector<int64_t>(at(graph.nvertices), -1), {}, {}, 0, 0};
    for (int64_t v = 0; v < graph.nvertices; v++) {
        if (!in_net[at(v)]) {
            pieces.islands++;
            pieces.island_weight += graph.vertexwgt[at(v)];
            continue;
        }
        int64_t *const piece = &number[at(root_of(&parent, v))];
        if (*piece < 0) {
            *piece = static_cast<int64_t>(pieces.weight.size());
            pieces.weight.push_back(0);
            pieces.vertices.push_back(0);
        }
        pieces.of_vertex[at(v)] = *piece;
        pieces.weight[at(*piece)] += graph.vertexwgt[at(v)];
        pieces.vertices[at(*piece)]++;
    }
    return pieces;
}

/* The heaviest part when items are put, heaviest first, into the lightest part.
 *   loads  what the parts weigh before */
static int64_t packed_weight(std::vector<int64_t> items, const std::vector<int64_t> &loads)
{
    std::sort(items.rbegin(), items.rend());
    std::priority_queue<int64_t, std::vector<int64_t>, std::greater<>> parts(loads.begin(),
                                                                             loads.end());
    int64_t heaviest = *std::max_element(loads.begin(), loads.end());
    for (const int64_t item : items) {
        const int64_t load = parts.top() + item;
        parts.pop();
        parts.push(load);
        heaviest = std::max(heaviest, load);
    }
    return heaviest;
}

static void note_vertices(const Hypergraph &graph, const std::vector<int64_t> &fix,
                          Outlook *outlook)
{
    for (int64_t v = 0; v < graph.nvertices; v++) {
        const int64_t weight = graph.vertexwgt[at(v)];
        if (outlook->heaviest < 0 || weight > graph.vertexwgt[at(outlook->heaviest)])
            outlook->heaviest = v;
        outlook->too_heavy += weight > outlook->most;
        outlook->heavy += weight > outlook->most / 2;
        if (!fix.empty() && fix[at(v)] >= 0) outlook->fixed[at(fix[at(v)])] += weight;
    }
    for (int64_t p = outlook->nparts - 1; p >= 0; p--)
        if (outlook->fixed[at(p)] > outlook->most) outlook->overfull = p;
}

static void judge_balance(const Hypergraph &graph, const std::vector<int64_t> &fix,
                          Outlook *outlook)
{
    std::vector<int64_t> free;
    for (int64_t v = 0; v < graph.nvertices; v++)
        if (fix.empty() || fix[at(v)] < 0) free.push_back(graph.vertexwgt[at(v)]);
    outlook->packed = packed_weight(std::move(free), outlook->fixed);
    const int64_t n = outlook->nparts, total = outlook->total;
    const int64_t vertex = outlook->heaviest < 0 ? 0 : graph.vertexwgt[at(outlook->heaviest)];
    outlook->least_heaviest =
        std::max({total / n + (total % n != 0), vertex,
                  *std::max_element(outlook->fixed.begin(), outlook->fixed.end())});
    outlook->feasible = outlook->packed <= outlook->most;
    outlook->infeasible = outlook->least_heaviest > outlook->most || outlook->heavy > n;
}

/* How many parts a hyperedge must touch. */
static Forced forced_parts(const Hypergraph &graph, int64_t e, int64_t most,
                           const std::vector<int64_t> &fix, std::vector<int64_t> *places)
{
    int64_t weight = 0;
    places->clear();
    for (int64_t j = graph.start[at(e)]; j < graph.start[at(e) + 1]; j++) {
        const int64_t v = graph.pins[at(j)];
        weight += graph.vertexwgt[at(v)];
        if (!fix.empty() && fix[at(v)] >= 0) places->push_back(fix[at(v)]);
    }
    std::sort(places->begin(), places->end());
    const int64_t fixed = std::unique(places->begin(), places->end()) - places->begin();
    const int64_t by_weight = most > 0 ? (weight + most - 1) / most : 0;
    return {e, std::max(fixed, by_weight), fixed > by_weight};
}

static void add_forced(const Hypergraph &graph, const Forced &forced, Outlook *outlook)
{
    const int64_t weight = graph.netwgt[at(forced.net)];
    outlook->forced.push_back(forced);
    outlook->cut += weight;
    outlook->connectivity += weight * (forced.parts - 1);
    outlook->soed += weight * forced.parts;
}

/* A component that outweighs a part is cut somewhere: at its lightest hyperedge at best. */
static void add_split_pieces(const Hypergraph &graph, Outlook *outlook)
{
    const Pieces &pieces = outlook->pieces;
    std::vector<int64_t> lightest(pieces.weight.size(), -1);
    for (int64_t e = 0; e < graph.nnets; e++) {
        if (net_size(graph, e) < 2) continue;
        int64_t *const known =
            &lightest[at(pieces.of_vertex[at(graph.pins[at(graph.start[at(e)])])])];
        const int64_t weight = graph.netwgt[at(e)];
        if (*known < 0 || weight < *known) *known = weight;
    }
    for (const Forced &forced : outlook->forced) // counted already
        lightest[at(pieces.of_vertex[at(graph.pins[at(graph.start[at(forced.net)])])])] = -1;
    for (size_t piece = 0; piece < lightest.size(); piece++) {
        if (pieces.weight[piece] <= outlook->most || lightest[piece] < 0) continue;
        outlook->split_pieces++;
        outlook->cut += lightest[piece];
        outlook->connectivity += lightest[piece];
        outlook->soed += 2 * lightest[piece];
    }
}

static void judge_cut(const Hypergraph &graph, const std::vector<int64_t> &fix, Outlook *outlook)
{
    std::vector<int64_t> places;
    for (int64_t e = 0; e < graph.nnets; e++) {
        const int64_t size = net_size(graph, e);
        if (size > LARGE_SIZE) {
            outlook->large++;
            outlook->large_pins += size;
        }
        const Forced forced = forced_parts(graph, e, outlook->most, fix, &places);
        if (forced.parts > 1) add_forced(graph, forced, outlook);
    }
    add_split_pieces(graph, outlook);
}

static bool components_fit(const Hypergraph &graph, const std::vector<int64_t> &fix,
                           const Outlook &outlook)
{
    const auto is_fixed = [](int64_t part) { return part >= 0; };
    if (std::any_of(fix.begin(), fix.end(), is_fixed)) return false; // not looked into
    std::vector<int64_t> items = outlook.pieces.weight;
    for (int64_t v = 0; v < graph.nvertices; v++)
        if (outlook.pieces.of_vertex[at(v)] < 0) items.push_back(graph.vertexwgt[at(v)]);
    const std::vector<int64_t> empty(at(outlook.nparts), 0);
    return packed_weight(std::move(items), empty) <= outlook.most;
}

Outlook outlook_of(const Hypergraph &graph, int64_t nparts, int64_t most,
                   const std::vector<int64_t> &fix)
{
    Outlook outlook = {};
    outlook.nparts = nparts;
    outlook.total = total_weight(graph.vertexwgt);
    outlook.most = most;
    outlook.heaviest = outlook.overfull = -1;
    outlook.fixed.assign(at(nparts), 0);
    outlook.pieces = pieces_of(graph);
    note_vertices(graph, fix, &outlook);
    judge_balance(graph, fix, &outlook);
    judge_cut(graph, fix, &outlook);
    outlook.can_be_uncut = components_fit(graph, fix, outlook);
    return outlook;
}
