// SPDX-License-Identifier: MIT
/* search/flow.cpp: which pairs of parts are refined by flows, with regions of which size.
 *
 * Small regions are tried first: they cost little and mostly find what there is. Regions of twice
 * the size follow when a round gains too little, up to the largest. Their size is a share of the
 * part and not of the room that balance leaves: balance is seen to by the search for the cut.
 */
#include "search/flow.h"

#include <algorithm>

#include "core/heavy_assert.h"
#include "core/memory.h"

/* Hyperedges of more parts are seeds of no pair: each would be one of too many. */
constexpr int MOST_SEED_PARTS = 16;

/* A hyperedge that parts a < b both touch. */
struct FlowSeed {
    int a, b, net;
};

/* The seeds [begin, end) of one pair. */
struct FlowPair {
    int64_t cut;
    int begin, end;
};

void open_flow_work(FlowWork *work, const HGraph *graph)
{
    open_flow_net(&work->net, graph);
    open_flow_cut(&work->cut, graph);
    work->ncalls = work->ngains = 0;
}

void close_flow_work(FlowWork *work)
{
    close_flow_net(&work->net);
    close_flow_cut(&work->cut);
}

static bool is_over(const FlowOptions *options, const FlowWork *work, int64_t budget)
{
    return work->net.visits >= budget || was_set(options->cancel);
}

/* Moves the vertices of the region to their side of the cut. Returns the fall of the objective. */
static int64_t apply_cut(Parts *parts, int a, int b, const FlowNet *net, int side)
{
    const int64_t before = parts->value;
    assert(a != b && (side == SOURCE || side == SINK));
    for (int u = 2; u < net->nnodes; u++) {
        const bool settled = net->nodes[u].level[side] == SETTLED;
        const int to = settled == (side == SOURCE) ? a : b, v = net->vertex[u];
        assert(parts->part[v] == a || parts->part[v] == b);
        if (parts->part[v] != to) move_vertex(parts, v, to);
    }
    return before - parts->value;
}

/* What the parts may weigh: their bounds, or what they weigh now where that is outside. */
static FlowBounds bounds_of_pair(const Parts *parts, int a, int b)
{
    const int64_t *const most = parts->bounds->most, *const least = parts->bounds->least;
    const int64_t *const weight = parts->weight;
    return {{std::max(most[a], weight[a]), std::max(most[b], weight[b])},
            {std::min(least[a], weight[a]), std::min(least[b], weight[b])}};
}

/* One network of the pair; budget is the number of visits at which to give up. */
static int64_t refine_pair(Parts *parts, int a, int b, const int *seeds, int nseeds, double share,
                           const FlowOptions *options, int64_t budget, FlowWork *work)
{
    FlowNet *const net = &work->net;
    FlowCut *const cut = &work->cut;
    const int64_t limit[2] = {static_cast<int64_t>(share * static_cast<double>(parts->weight[a])),
                              static_cast<int64_t>(share * static_cast<double>(parts->weight[b]))};
    const int most = nseeds < INT_MAX / options->per_seed ? nseeds * options->per_seed : INT_MAX;
    const FlowBounds bounds = bounds_of_pair(parts, a, b);
    assert(nseeds >= 0 && share > 0 && options->per_seed > 0);
    work->ncalls++;
    build_flow_net(net, parts, a, b, seeds, nseeds, limit, most);
    if (net->oldcut == 0 || net->oldcut >= MOST_FLOW) return 0;
    const int side = find_balanced_cut(net, cut, &bounds, net->oldcut - (options->equal ? 0 : 1),
                                       budget, options->cancel);
    if (side < 0) return 0;
    const int64_t own = cut->side[side].settled, rest = cut->total - own;
    assert(cut->value <= net->oldcut && own >= 0 && rest >= 0);
    assert(cut->total == parts->weight[a] + parts->weight[b]);
    const double before = heavier_load(&bounds, parts->weight[a], parts->weight[b]);
    const double after =
        side == SOURCE ? heavier_load(&bounds, own, rest) : heavier_load(&bounds, rest, own);
    if (cut->value == net->oldcut && after >= before) return 0;
    [[maybe_unused]] const int64_t expected = net->oldcut - cut->value;
    const int64_t gain = apply_cut(parts, a, b, net, side);
    assert(gain == expected && gain >= 0);
    work->ngains += gain > 0;
    return gain;
}

int64_t refine_pair_by_flow(Parts *parts, int a, int b, const FlowOptions *options, FlowWork *work)
{
    const HGraph *const graph = parts->graph;
    int *seeds = alloc_pool<int>(static_cast<size_t>(graph->nnets), "flow: seeds");
    int nseeds = 0;
    for (int e = 0; e < graph->nnets; e++)
        if (parts->touched[e] > 1 && pins_in(parts, e, a) > 0 && pins_in(parts, e, b) > 0)
            seeds[nseeds++] = e;
    const int64_t visits = work->net.visits;
    const int64_t budget =
        options->budget < INT64_MAX - visits ? visits + options->budget : INT64_MAX;
    const int64_t gain =
        refine_pair(parts, a, b, seeds, nseeds, options->first_share, options, budget, work);
    QXfree__(&seeds, LTERM);
    return gain;
}

/* Seeds of all pairs of which a part is active. */
struct FlowRound {
    FlowSeed *seeds;
    FlowPair *pairs;
    int *nets; // of the seeds
    int nseeds, npairs;
};

/* Calls take for every pair of active parts of which e could be a seed. */
template <class Take>
static void for_pairs_of(const Parts *parts, const bool *active, int e, Take take)
{
    const int n = parts->touched[e];
    if (n < 2 || n > (parts->objective == Objective::cut ? 2 : MOST_SEED_PARTS)) return;
    const PinCount *const list = parts->counts + parts->graph->netptr[e];
    assert(n <= parts->nparts);
    for (int i = 0; i < n; i++)
        for (int j = 0; j < i; j++)
            if (active[list[i].part] || active[list[j].part])
                take(std::min(list[i].part, list[j].part), std::max(list[i].part, list[j].part));
}

static void open_round(FlowRound *round, const Parts *parts, const bool *active)
{
    const HGraph *const graph = parts->graph;
    size_t nseeds = 0;
    for (int e = 0; e < graph->nnets; e++)
        for_pairs_of(parts, active, e, [&](int, int) { nseeds++; });
    round->seeds = alloc_array<FlowSeed>(nseeds, "flow: seeds");
    round->pairs = alloc_array<FlowPair>(nseeds, "flow: pairs");
    round->nets = alloc_array<int>(nseeds, "flow: nets");
    round->nseeds = round->npairs = 0;
    for (int e = 0; e < graph->nnets; e++)
        for_pairs_of(parts, active, e, [&](int a, int b) {
            round->seeds[round->nseeds++] = {a, b, e};
        });
    std::sort(round->seeds, round->seeds + round->nseeds, [](const FlowSeed &x, const FlowSeed &y) {
        return x.a != y.a ? x.a < y.a : x.b != y.b ? x.b < y.b : x.net < y.net;
    });
    for (int i = 0; i < round->nseeds; i++) {
        const FlowSeed *const seed = &round->seeds[i];
        round->nets[i] = seed->net;
        if (i == 0 || seed[-1].a != seed->a || seed[-1].b != seed->b)
            round->pairs[round->npairs++] = {0, i, i};
        FlowPair *const pair = &round->pairs[round->npairs - 1];
        pair->cut +=
            price_of_cut(parts->objective, graph->netwgt[seed->net], parts->touched[seed->net] > 2);
        pair->end = i + 1;
        assert(seed->a < seed->b && pair->begin < pair->end);
    }
    std::sort(round->pairs, round->pairs + round->npairs, [](const FlowPair &x, const FlowPair &y) {
        return x.cut != y.cut ? x.cut > y.cut : x.begin < y.begin;
    });
}

static void close_round(FlowRound *round)
{
    QXfree__(&round->seeds, &round->pairs, &round->nets, LTERM);
}

/* Tries every pair with an active part; afterwards the parts that gained are the active ones. */
static int64_t refine_round(Parts *parts, bool *active, double share, const FlowOptions *options,
                            int64_t budget, FlowWork *work)
{
    FlowRound round;
    int64_t sum = 0;
    open_round(&round, parts, active);
    std::fill(active, active + parts->nparts, false);
    for (int i = 0; i < round.npairs && !is_over(options, work, budget); i++) {
        const FlowPair *const pair = &round.pairs[i];
        const int a = round.seeds[pair->begin].a, b = round.seeds[pair->begin].b;
        const int64_t gain = refine_pair(parts, a, b, round.nets + pair->begin,
                                         pair->end - pair->begin, share, options, budget, work);
        assert(gain >= 0);
        if (gain == 0) continue;
        active[a] = active[b] = true;
        sum += gain;
    }
    close_round(&round);
    return sum;
}

int64_t refine_by_flows(Parts *parts, const FlowOptions *options, FlowWork *work)
{
    HEAVY_ASSERT(parts_ok(parts));
    const int64_t before = parts->value, visits = work->net.visits;
    const int64_t budget =
        options->budget < INT64_MAX - visits ? visits + options->budget : INT64_MAX;
    bool *active = alloc_array<bool>(static_cast<size_t>(parts->nparts), "flow: active");
    for (double share = options->first_share; !is_over(options, work, budget); share *= 2) {
        share = std::min(share, options->most_share);
        std::fill(active, active + parts->nparts, true);
        for (;;) {
            const double value = static_cast<double>(parts->value);
            const int64_t gain = refine_round(parts, active, share, options, budget, work);
            if (static_cast<double>(gain) <= options->least_gain * value) break;
        }
        if (share >= options->most_share) break;
    }
    QXfree__(&active, LTERM);
    HEAVY_ASSERT(parts_ok(parts));
    assert(parts->value <= before && work->net.visits >= visits);
    return before - parts->value;
}
