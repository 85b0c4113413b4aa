// SPDX-License-Identifier: MIT
/* tests/model/coarsen_twin_test.cpp: matchings, contraction and collapsing against plain twins.
 *
 * The twins keep groups as lists and look partners up by scanning; only the random permutation and
 * the sorts, whose order among equals decides results, are the engine's own.
 */
#include <gtest/gtest.h>

#include "coarsen/collapse.h"
#include "core/random.h"
#include "core/sort.h"
#include "levels.h"
#include "matchings.h"

static Ints nets_of(const HGraph *graph, int v)
{
    return to_ints(graph->incind + graph->incptr[v], graph->incptr[v + 1] - graph->incptr[v]);
}

static float strength(const HGraph *graph, int e)
{
    return static_cast<float>(static_cast<double>(graph->netwgt[e]) / (net_size(graph, e) - 1));
}

/* ---- matchings ---- */

struct MatchTwin {
    const HGraph *graph;
    const PartCtrl *ctrl;
    const Matching *row;
    Nets groups;
    Ints group;    // of each vertex, -1 while free
    bool fits_any; // hyperedges of little strength are left out, grouping does not matter
};

static int weight_of(const MatchTwin &twin, const Ints &vertices)
{
    int weight = 0;
    for (int v : vertices) weight += twin.graph->cellwgt[v];
    return weight;
}

static void add_group(MatchTwin &twin, const Ints &vertices)
{
    for (int v : vertices) twin.group[at(v)] = static_cast<int>(twin.groups.size());
    twin.groups.push_back(vertices);
}

static bool eligible(const MatchTwin &twin, int u, int v)
{
    const int limit = twin.ctrl->MaxCellWgt - twin.graph->cellwgt[u], c = twin.group[at(v)];
    if (v == u || twin.graph->cellwgt[v] > limit) return false;
    if (twin.fits_any) return true;
    if (twin.row->restricted && twin.graph->where[v] != twin.graph->where[u]) return false;
    if (c < 0) return true;
    return twin.row->star && c >= twin.graph->nfixed &&
           weight_of(twin, twin.groups[at(c)]) <= limit;
}

struct Scored {
    int v;
    float score;
};

static std::vector<Scored> candidates(const MatchTwin &twin, int u)
{
    std::vector<Scored> list;
    for (int e : nets_of(twin.graph, u)) {
        if (twin.row->restricted && net_size(twin.graph, e) > twin.ctrl->maxnetsize) continue;
        const float score = strength(twin.graph, e);
        if (twin.fits_any && static_cast<double>(score) < 0.1) continue;
        for (int v : net_pins(twin.graph, e)) {
            if (!eligible(twin, u, v)) continue;
            const auto known = std::find_if(list.begin(), list.end(),
                                            [v](const Scored &other) { return other.v == v; });
            if (known == list.end())
                list.push_back({v, score});
            else
                known->score += score;
        }
    }
    return list;
}

static int partner(const MatchTwin &twin, int u)
{
    Scored best = {-1, 0};
    for (const Scored &other : candidates(twin, u)) {
        const bool tie = best.v >= 0 && other.score == best.score;
        const bool yields =
            tie && (twin.row->star ? twin.group[at(best.v)] >= 0
                                   : twin.graph->cellwgt[best.v] > twin.graph->cellwgt[other.v]);
        if (best.v < 0 || other.score > best.score || yields) best = other;
    }
    return best.v;
}

/* Sorts order by increasing key, equals as they stand. */
static void order_by(Ints &order, const Ints &keys)
{
    std::stable_sort(order.begin(), order.end(),
                     [&keys](int u, int v) { return keys[at(u)] < keys[at(v)]; });
}

static Ints order_by_degree(const MatchTwin &twin)
{
    const int n = twin.graph->ncells;
    Ints order(at(n)), keys;
    RandomPermute__(order.data(), n, 1);
    for (int v = 0; v < n; v++)
        keys.push_back(
            std::min(static_cast<int>(nets_of(twin.graph, v).size()), twin.ctrl->maxnetsize));
    order_by(order, keys);
    return order;
}

static void order_by_strength(MatchTwin &twin, Ints &order)
{
    Ints keys;
    twin.fits_any = true;
    for (int v = 0; v < twin.graph->ncells; v++) {
        float best = 0;
        for (const Scored &other : candidates(twin, v)) best = std::max(best, other.score);
        keys.push_back(best > 0 ? static_cast<int>(100.0 / static_cast<double>(best)) : 1 << 20);
    }
    twin.fits_any = false;
    order_by(order, keys);
}

static void match_vertices(MatchTwin &twin)
{
    const int n = twin.graph->ncells;
    Ints order = order_by_degree(twin);
    if (std::string(twin.row->name) == "EdgesStars1") order_by_strength(twin, order);
    int joined = 0;
    for (int u : order) {
        if (twin.group[at(u)] >= 0) continue;
        const bool may_join = !twin.row->star || 0.4 * n > joined;
        const int v = may_join ? partner(twin, u) : -1;
        joined += v >= 0;
        if (v >= 0 && twin.group[at(v)] >= 0) {
            twin.group[at(u)] = twin.group[at(v)];
            twin.groups[at(twin.group[at(v)])].push_back(u);
        } else if (v >= 0) {
            add_group(twin, {u, v});
        } else {
            add_group(twin, {u});
        }
    }
    if (twin.row->star)
        for (Ints &group : twin.groups) std::sort(group.begin(), group.end());
}

static Ints free_pins(const MatchTwin &twin, int e)
{
    Ints pins;
    for (int v : net_pins(twin.graph, e))
        if (twin.group[at(v)] < 0) pins.push_back(v);
    return pins;
}

static void match_hyperedges(MatchTwin &twin)
{
    const HGraph *const graph = twin.graph;
    const std::string name = twin.row->name;
    Ints order(at(graph->nnets));
    std::vector<KeyValue> pairs;
    RandomPermute__(order.data(), graph->nnets, 1);
    for (int e : order) pairs.push_back({graph->ncells * graph->netwgt[e] - net_size(graph, e), e});
    dkeysort__(graph->nnets, pairs.data());
    for (int partial = 0; partial <= (name == "HedgesPHedgesEdges"); partial++) {
        for (const KeyValue &pair : pairs) {
            const int size = net_size(graph, pair.val);
            const Ints pins = free_pins(twin, pair.val);
            const int nfree = static_cast<int>(pins.size());
            const bool enough = partial ? 2 * nfree > size : nfree == size && size > 0;
            if (enough && weight_of(twin, pins) <= twin.ctrl->MaxCellWgt) add_group(twin, pins);
        }
    }
    if (name != "Hedges") {
        match_vertices(twin);
        return;
    }
    for (int v = 0; v < graph->ncells; v++)
        if (twin.group[at(v)] < 0) add_group(twin, {v});
}

static Nets twin_groups(const HGraph *graph, const PartCtrl *ctrl, const Matching &row)
{
    MatchTwin twin = {graph, ctrl, &row, {}, Ints(at(graph->ncells), -1), false};
    for (int v = 0; v < graph->nfixed; v++) add_group(twin, {v});
    if (row.hedges)
        match_hyperedges(twin);
    else
        match_vertices(twin);
    return twin.groups;
}

/* ---- contraction ---- */

struct Lists {
    Nets nets;
    Ints wgts;
};

/* Merges equal hyperedges in key order; place says where each went. */
static Lists merge_in_key_order(const Lists &lists, unsigned (*key)(const Ints &pins), Ints &place)
{
    std::vector<KeyValue> pairs;
    for (size_t t = 0; t < lists.nets.size(); t++)
        pairs.push_back({static_cast<int>(key(lists.nets[t])), static_cast<int>(t)});
    ikeysort__(static_cast<int>(pairs.size()), pairs.data());
    Lists merged;
    place.assign(lists.nets.size(), -1);
    for (size_t i = 0; i < pairs.size(); i++) {
        const Ints &pins = lists.nets[at(pairs[i].val)];
        if (place[at(pairs[i].val)] >= 0) continue;
        for (size_t j = i; j < pairs.size(); j++) {
            const Ints &other = lists.nets[at(pairs[j].val)];
            if (place[at(pairs[j].val)] >= 0) continue;
            if (pairs[j].key != pairs[i].key || other.size() != pins.size()) break;
            if (other != pins) continue;
            place[at(pairs[j].val)] = static_cast<int>(merged.nets.size());
            if (j == i) merged.wgts.push_back(0);
            merged.wgts.back() += lists.wgts[at(pairs[j].val)];
        }
        merged.nets.push_back(pins);
    }
    return merged;
}

static unsigned positional_key(const Ints &pins)
{
    unsigned key = 0, position = 0;
    for (int pin : pins) key += ++position * static_cast<unsigned>(pin) * 100;
    return key + position;
}

static unsigned additive_key(const Ints &pins)
{
    unsigned key = 0, position = 0;
    for (int pin : pins) key += 100 * (static_cast<unsigned>(pin) + 100 * ++position);
    return key + position;
}

static void compare_contraction(const HGraph *graph)
{
    const HGraph *const coarser = graph->coarser;
    Lists provisional;
    Ints origin;
    int dropped = 0;
    for (int e = 0; e < graph->nnets; e++) {
        std::set<int> pins;
        for (int v : net_pins(graph, e)) pins.insert(graph->cellmap[v]);
        if (pins.size() == 1) {
            dropped += graph->netwgt[e];
            ASSERT_EQ(graph->netmap[e], -1);
            continue;
        }
        origin.push_back(e);
        provisional.nets.emplace_back(pins.begin(), pins.end());
        provisional.wgts.push_back(graph->netwgt[e]);
    }
    Ints place;
    const Lists merged = merge_in_key_order(provisional, positional_key, place);
    ASSERT_EQ(coarser->removedwgt, graph->removedwgt + dropped);
    ASSERT_EQ(coarser->nnets, static_cast<int>(merged.nets.size()));
    for (size_t t = 0; t < origin.size(); t++) ASSERT_EQ(graph->netmap[origin[t]], place[t]);
    for (int d = 0; d < coarser->nnets; d++) {
        ASSERT_EQ(net_pins(coarser, d), merged.nets[at(d)]);
        ASSERT_EQ(coarser->netwgt[d], merged.wgts[at(d)]);
        if (net_size(coarser, d) < 2) continue;
        ASSERT_EQ(coarser->edgewgt[d], strength(coarser, d));
    }
    for (int c = 0; c < coarser->ncells; c++) {
        Ints met;
        int weight = 0, adjacent = 0;
        for (int v : group_of(graph, c)) {
            weight += graph->cellwgt[v];
            for (int e : nets_of(graph, v)) {
                const int d = graph->netmap[e];
                if (d < 0 || std::find(met.begin(), met.end(), d) != met.end()) continue;
                met.push_back(d);
                adjacent += coarser->netwgt[d];
            }
        }
        ASSERT_EQ(nets_of(coarser, c), met);
        ASSERT_EQ(coarser->cellwgt[c], weight);
        ASSERT_EQ(coarser->adjwgt[c], adjacent);
    }
}

class MatchingTwin : public testing::TestWithParam<Matching>
{
};

TEST_P(MatchingTwin, groups_and_coarser_level_are_the_same)
{
    for (unsigned seed = 0; seed < 1000; seed++) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        Draw draw(seed);
        LevelLimits limits;
        limits.unitnets = one_in(draw, 3);
        Level level = random_level(draw, limits);
        PartCtrl ctrl = make_ctrl();
        ctrl.maxnetsize = between(draw, 2, 9);
        // at least 1, for a level of weightless vertices would let them join fixed ones
        ctrl.MaxCellWgt = one_in(draw, 3) ? 1000000 : between(draw, 1, 25);
        level->removedwgt = below(draw, 10);
        level->where = new_array(random_parts(draw, level->ncells, 3));
        srand(seed);
        const Nets expected = twin_groups(level.get(), &ctrl, GetParam());
        srand(seed);
        run_matching(GetParam(), &ctrl, level.get());
        ASSERT_EQ(groups_of(level.get()), expected);
        for (size_t c = 0; c < expected.size(); c++)
            for (int v : expected[c]) ASSERT_EQ(level->cellmap[v], static_cast<int>(c));
        compare_contraction(level.get());
        if (HasFatalFailure()) return;
    }
}

INSTANTIATE_TEST_SUITE_P(matchings, MatchingTwin, testing::ValuesIn(all_matchings()),
                         [](const auto &row) { return std::string(row.param.name); });

TEST(CollapseTwin, merges_as_the_plain_twin_does)
{
    for (unsigned seed = 0; seed < 2000; seed++) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        Draw draw(seed);
        LevelLimits limits;
        limits.unitnets = true;
        limits.maxcells = one_in(draw, 2) ? 5 : 60;
        const Level level = random_level(draw, limits);
        Lists lists;
        for (int e = 0; e < level->nnets; e++) {
            lists.nets.push_back(net_pins(level.get(), e));
            std::sort(lists.nets.back().begin(), lists.nets.back().end());
            lists.wgts.push_back(level->netwgt[e]);
        }
        Ints place;
        const Lists expected = merge_in_key_order(lists, additive_key, place);
        const NetLists nets = {level->nnets, level->netptr, level->netind, level->netwgt};
        NetLists out;
        CollapseSameHEdges__(&nets, &out);
        ASSERT_EQ(out.nnets, static_cast<int>(expected.nets.size()));
        for (int d = 0; d < out.nnets; d++)
            ASSERT_EQ(to_ints(out.netind + out.netptr[d], out.netptr[d + 1] - out.netptr[d]),
                      expected.nets[at(d)]);
        ASSERT_EQ(to_ints(out.netwgt, out.nnets), expected.wgts);
        for (int e = 0; e < level->nnets; e++) // the caller's pins were sorted in place
            ASSERT_EQ(net_pins(level.get(), e), lists.nets[at(e)]);
        QXfree__(&out.netptr, &out.netind, &out.netwgt, LTERM);
    }
}
