// SPDX-License-Identifier: MIT
/* search/tests/flow_test.cpp: flows between parts against a network with every node spelt out. */
#include <gtest/gtest.h>

#include <climits>
#include <numeric>

#include "broken.h"
#include "search/flow.h"
#include "search_support.h"

namespace
{

constexpr Objective OBJECTIVES[] = {Objective::cut, Objective::km1, Objective::soed};

/* Maximum flow the plain way: a matrix of capacities, one shortest path at a time. */
struct PlainNetwork {
    explicit PlainNetwork(int nodes)
        : n(nodes),
          left(static_cast<size_t>(nodes), std::vector<int64_t>(static_cast<size_t>(nodes)))
    {
    }
    int64_t &at(int from, int to)
    {
        return left[static_cast<size_t>(from)][static_cast<size_t>(to)];
    }
    int64_t max_flow(int source, int sink)
    {
        int64_t sum = 0;
        for (;;) {
            std::vector<int> from(static_cast<size_t>(n), -1), queue = {source};
            from[static_cast<size_t>(source)] = source;
            for (size_t head = 0; head < queue.size(); head++)
                for (int v = 0; v < n; v++)
                    if (from[static_cast<size_t>(v)] < 0 && at(queue[head], v) > 0) {
                        from[static_cast<size_t>(v)] = queue[head];
                        queue.push_back(v);
                    }
            if (from[static_cast<size_t>(sink)] < 0) return sum;
            int64_t room = INT64_MAX;
            for (int v = sink; v != source; v = from[static_cast<size_t>(v)])
                room = std::min(room, at(from[static_cast<size_t>(v)], v));
            for (int v = sink; v != source; v = from[static_cast<size_t>(v)]) {
                at(from[static_cast<size_t>(v)], v) -= room;
                at(v, from[static_cast<size_t>(v)]) += room;
            }
            sum += room;
        }
    }
    int n;
    std::vector<std::vector<int64_t>> left;
};

constexpr int64_t UNBOUNDED = int64_t{1} << 40;

/* The least weight of a cut of net, with two nodes a hyperedge. */
int64_t plain_min_cut(const FlowNet *net)
{
    PlainNetwork plain(net->nnodes + 2 * net->nedges);
    for (int e = 0; e < net->nedges; e++) {
        const int in = net->nnodes + 2 * e, out = in + 1;
        plain.at(in, out) = net->edges[e].left;
        for (int j = net->edges[e].begin; j < net->edges[e + 1].begin; j++) {
            plain.at(net->pins[j], in) = UNBOUNDED;
            plain.at(out, net->pins[j]) = UNBOUNDED;
        }
    }
    return plain.max_flow(SOURCE, SINK);
}

/* The weight of the hyperedges of net with nodes on both sides; with what they are at the start. */
int64_t weight_of_cut(const FlowNet *net, const std::vector<int> &capacity,
                      const std::vector<bool> &source)
{
    int64_t sum = 0;
    for (int e = 0; e < net->nedges; e++) {
        int count = 0;
        for (int j = net->edges[e].begin; j < net->edges[e + 1].begin; j++)
            count += source[static_cast<size_t>(net->pins[j])];
        if (count > 0 && count < net->edges[e + 1].begin - net->edges[e].begin)
            sum += capacity[static_cast<size_t>(e)];
    }
    return sum;
}

/* A random partition, one that keeps its bounds if it can, and everything to refine it. */
struct Case {
    explicit Case(unsigned seed, int least_parts = 2, int most_parts = 8, int most_vertices = 60)
        : random(seed),
          n(4 + static_cast<int>(random() % static_cast<unsigned>(most_vertices - 3))),
          nparts(least_parts +
                 static_cast<int>(random() % static_cast<unsigned>(most_parts - least_parts + 1))),
          graph(random_hypergraph(random, n, 2 * n, 2 + static_cast<int>(seed % 9), seed % 2 == 0)),
          bounds(graph.get(), nparts, 3 + static_cast<int>(seed % 40)),
          objective(OBJECTIVES[seed % 3]), fixed(static_cast<size_t>(n), -1)
    {
        std::vector<int> where(static_cast<size_t>(n));
        for (int v = 0; v < n; v++) where[static_cast<size_t>(v)] = v * nparts / n;
        if (seed % 5 == 0) where = random_partition(random, n, nparts);
        if (seed % 4 == 0)
            for (int v = 0; v < n; v += 3)
                fixed[static_cast<size_t>(v)] = where[static_cast<size_t>(v)];
        open_parts(&parts, graph.get(), &bounds, objective, seed % 4 == 0 ? fixed.data() : nullptr);
        load_parts(&parts, where.data());
        open_flow_work(&work, graph.get());
        options = FLOW_OPTIONS;
        options.first_share = 0.2 * (1 + seed % 4);
        options.most_share = 1;
        options.equal = seed % 7 != 0;
    }
    ~Case()
    {
        close_flow_work(&work);
        close_parts(&parts);
    }
    Case(const Case &) = delete;
    Case &operator=(const Case &) = delete;

    /* The network of parts 0 and 1 with regions of up to that weight. */
    void build(int64_t most, int vertices = INT_MAX)
    {
        std::vector<int> seeds(static_cast<size_t>(graph->nnets));
        std::iota(seeds.begin(), seeds.end(), 0);
        const int64_t limit[2] = {std::min(most, parts.weight[0]), std::min(most, parts.weight[1])};
        build_flow_net(&work.net, &parts, 0, 1, seeds.data(), graph->nnets, limit, vertices);
    }

    std::mt19937 random;
    int n, nparts;
    HGraphPtr graph;
    TestBounds bounds;
    Objective objective;
    std::vector<int> fixed;
    Parts parts;
    FlowWork work;
    FlowOptions options;
};

TEST(FlowNet, is_well_formed_and_its_old_cut_is_what_the_region_could_gain)
{
    for (unsigned seed = 1; seed <= 200; seed++) {
        Case c(seed);
        c.build(static_cast<int64_t>(seed % 30));
        ASSERT_TRUE(flow_net_ok(&c.work.net, c.graph.get())) << "seed " << seed;
        std::vector<bool> source(static_cast<size_t>(c.work.net.nnodes));
        std::vector<int> capacity;
        for (int e = 0; e < c.work.net.nedges; e++) capacity.push_back(c.work.net.edges[e].left);
        for (int u = 0; u < c.work.net.nnodes; u++)
            source[static_cast<size_t>(u)] = u != SINK && u < c.work.net.first[1];
        EXPECT_EQ(c.work.net.oldcut, weight_of_cut(&c.work.net, capacity, source))
            << "seed " << seed;
    }
}

TEST(FlowNet, any_cut_of_the_network_changes_the_objective_by_as_much_as_the_old_cut)
{
    for (unsigned seed = 1; seed <= 200; seed++) {
        Case c(seed);
        c.build(40);
        const FlowNet *const net = &c.work.net;
        std::vector<bool> source(static_cast<size_t>(net->nnodes));
        std::vector<int> capacity;
        for (int e = 0; e < net->nedges; e++) capacity.push_back(net->edges[e].left);
        source[SOURCE] = true;
        const int64_t before = c.parts.value;
        for (int u = 2; u < net->nnodes; u++) {
            const int side = static_cast<int>(c.random() % 2);
            source[static_cast<size_t>(u)] = side == 0;
            if (c.parts.part[net->vertex[u]] != side) move_vertex(&c.parts, net->vertex[u], side);
        }
        EXPECT_EQ(c.parts.value - before, weight_of_cut(net, capacity, source) - net->oldcut)
            << "seed " << seed;
    }
}

TEST(FlowNet, regions_keep_their_limits_and_hold_no_fixed_vertex)
{
    for (unsigned seed = 1; seed <= 100; seed++) {
        Case c(seed);
        const int64_t limit = static_cast<int64_t>(seed % 20);
        c.build(limit, 1 + static_cast<int>(seed % 7));
        EXPECT_LE(c.work.net.first[1] - c.work.net.first[0], 1 + static_cast<int>(seed % 7));
        EXPECT_LE(c.work.net.nnodes - c.work.net.first[1], 1 + static_cast<int>(seed % 7));
        int64_t weight[2] = {0, 0};
        for (int u = 2; u < c.work.net.nnodes; u++) {
            const int v = c.work.net.vertex[u], side = u >= c.work.net.first[1];
            EXPECT_EQ(c.parts.part[v], side);
            EXPECT_FALSE(is_fixed(&c.parts, v));
            weight[side] += c.graph->cellwgt[v];
        }
        for (int side = 0; side < 2; side++) {
            EXPECT_LE(weight[side], limit);
            EXPECT_EQ(weight[side] + c.work.net.weight[side], c.parts.weight[side]);
        }
    }
}

TEST(FlowNet, the_broken_rule_is_named)
{
    Case c(2);
    c.build(40);
    FlowNet *const net = &c.work.net;
    const auto ok = [&] { return flow_net_ok(net, c.graph.get()); };
    ASSERT_GT(net->nedges, 1);
    ASSERT_EQ(broken_rule(ok), "");
    const int pin = net->arcs[net->nodes[2].begin].pin, other = net->arcs[net->nodes[3].begin].pin;
    EXPECT_EQ(broken_by(net->arcs[net->nodes[2].begin].pin, other, ok), "N1");
    EXPECT_EQ(broken_by(net->pins[pin], SOURCE, ok), "N1");
    EXPECT_EQ(broken_by(net->npins, net->npins + 1, ok), "N1");
    net->flow[0]++;
    EXPECT_EQ(broken_rule(ok), "N3");
    net->flow[0]--;
    EXPECT_EQ(broken_by(net->edges[0].left, net->edges[0].left + 1, ok), "N3");
    EXPECT_EQ(broken_by(net->number[1], 3, ok), "N4");
    EXPECT_EQ(broken_by(net->edgeof[1], 3, ok), "N4");
    // both ends in one hyperedge, seen from the hyperedges alone
    net->nnodes = 0;
    net->nodes[0].begin = net->npins;
    ASSERT_EQ(broken_rule(ok), "");
    net->pins[net->edges[0].begin] = SOURCE;
    net->pins[net->edges[0].begin + 1] = SINK;
    EXPECT_EQ(broken_rule(ok), "N2");
}

TEST(FlowCut, without_bounds_weighs_what_the_plain_network_says)
{
    int flows = 0;
    for (unsigned seed = 1; seed <= 300; seed++) {
        Case c(seed);
        c.build(static_cast<int64_t>(2 + seed % 20));
        const int64_t least = plain_min_cut(&c.work.net);
        const FlowBounds all = {{INT_MAX, INT_MAX}, {0, 0}};
        ASSERT_GE(find_balanced_cut(&c.work.net, &c.work.cut, &all, INT_MAX, INT64_MAX, nullptr),
                  0);
        EXPECT_EQ(c.work.cut.value, least) << "seed " << seed;
        EXPECT_TRUE(flow_net_ok(&c.work.net, c.graph.get())) << "seed " << seed;
        EXPECT_TRUE(flow_cut_ok(&c.work.net, &c.work.cut)) << "seed " << seed;
        flows += least > 0;
    }
    EXPECT_GT(flows, 100);
}

TEST(FlowCut, keeps_the_bounds_and_weighs_what_it_says)
{
    int found = 0;
    for (unsigned seed = 1; seed <= 400; seed++) {
        Case c(seed);
        c.build(30);
        const FlowNet *const net = &c.work.net;
        std::vector<int> capacity;
        for (int e = 0; e < net->nedges; e++) capacity.push_back(net->edges[e].left);
        const int64_t total = c.parts.weight[0] + c.parts.weight[1];
        const int64_t most = total / 2 + static_cast<int64_t>(seed % 10);
        const FlowBounds bounds = {{most, most + 2}, {total / 4, total / 3}};
        const int side =
            find_balanced_cut(&c.work.net, &c.work.cut, &bounds, INT_MAX - 1, INT64_MAX, nullptr);
        if (side < 0) continue;
        found++;
        std::vector<bool> source(static_cast<size_t>(net->nnodes));
        int64_t weight[2] = {0, 0};
        for (int u = 0; u < net->nnodes; u++) {
            const bool settled = net->nodes[u].level[side] == SETTLED;
            source[static_cast<size_t>(u)] = settled == (side == SOURCE);
            weight[source[static_cast<size_t>(u)] ? 0 : 1] += net->weight[u];
        }
        EXPECT_TRUE(source[SOURCE]);
        EXPECT_FALSE(source[SINK]);
        EXPECT_EQ(c.work.cut.value, weight_of_cut(net, capacity, source)) << "seed " << seed;
        for (int x = 0; x < 2; x++) {
            EXPECT_LE(weight[x], bounds.most[x]) << "seed " << seed;
            EXPECT_GE(weight[x], bounds.least[x]) << "seed " << seed;
        }
    }
    EXPECT_GT(found, 200);
}

/* The least objective over all ways to put the vertices of the region that keep the bounds. */
int64_t least_of_all(const FlowNet *net, const std::vector<int> &capacity, const FlowBounds &bounds)
{
    const int n = net->nnodes - 2;
    int64_t least = INT64_MAX;
    for (unsigned mask = 0; mask < 1u << n; mask++) {
        std::vector<bool> source(static_cast<size_t>(net->nnodes));
        int64_t weight[2] = {net->weight[0], net->weight[1]};
        source[SOURCE] = true;
        for (int i = 0; i < n; i++) {
            source[static_cast<size_t>(2 + i)] = (mask >> i & 1) != 0;
            weight[(mask >> i & 1) != 0 ? 0 : 1] += net->weight[2 + i];
        }
        bool fits = true;
        for (int x = 0; x < 2; x++)
            fits = fits && weight[x] <= bounds.most[x] && weight[x] >= bounds.least[x];
        if (fits) least = std::min(least, weight_of_cut(net, capacity, source));
    }
    return least;
}

TEST(FlowCut, is_never_below_the_least_of_all_cuts_and_equals_it_more_often_than_not)
{
    int found = 0, equal = 0;
    for (unsigned seed = 1; seed <= 200; seed++) {
        Case c(seed, 2, 3, 12);
        c.build(30);
        const FlowNet *const net = &c.work.net;
        std::vector<int> capacity;
        for (int e = 0; e < net->nedges; e++) capacity.push_back(net->edges[e].left);
        const int64_t total = c.parts.weight[0] + c.parts.weight[1];
        const FlowBounds bounds = {{total * 5 / 8 + 1, total * 5 / 8 + 1}, {0, 0}};
        const int64_t least = least_of_all(net, capacity, bounds);
        if (find_balanced_cut(&c.work.net, &c.work.cut, &bounds, INT_MAX - 1, INT64_MAX, nullptr) <
            0)
            continue;
        found++;
        EXPECT_GE(c.work.cut.value, least) << "seed " << seed;
        equal += c.work.cut.value == least;
    }
    EXPECT_GT(found, 120);
    EXPECT_GT(equal * 2, found);
}

/* n vertices of which the pairs in edges share a hyperedge each. */
HGraphPtr graph_of(int n, const std::vector<std::pair<int, int>> &edges)
{
    HGraph *const graph = CreateHGraph__();
    graph->ncells = n;
    graph->nnets = static_cast<int>(edges.size());
    graph->nislands = graph->nfixed = 0;
    std::vector<int> ptr = {0}, ind;
    for (const auto &[u, v] : edges) {
        ind.push_back(u);
        ind.push_back(v);
        ptr.push_back(static_cast<int>(ind.size()));
    }
    graph->netptr = new_array(ptr);
    graph->netind = new_array(ind);
    graph->cellwgt = new_array(std::vector<int>(static_cast<size_t>(n), 1));
    graph->netwgt = new_array(std::vector<int>(edges.size(), 1));
    CreateIncidentHGraph__(graph);
    return HGraphPtr(graph);
}

TEST(FlowCut, gives_up_between_the_growths_of_one_flow)
{
    // paths of every even length between fixed ends: each length takes a growth of its own
    constexpr int NPATHS = 30;
    std::vector<std::pair<int, int>> edges;
    std::vector<int> where, fixed;
    for (int length = 1; length <= NPATHS; length++)
        for (int i = 0; i < 2 * length + 2; i++) {
            const int v = static_cast<int>(where.size()), side = i > length;
            where.push_back(side);
            fixed.push_back(i == 0 || i == 2 * length + 1 ? side : -1);
            if (i > 0) edges.push_back({v - 1, v});
        }
    const HGraphPtr graph = graph_of(static_cast<int>(where.size()), edges);
    const TestBounds bounds(graph.get(), 2, 10);
    Parts parts;
    FlowWork work;
    open_parts(&parts, graph.get(), &bounds, Objective::cut, fixed.data());
    load_parts(&parts, where.data());
    open_flow_work(&work, graph.get());
    std::vector<int> seeds(edges.size());
    std::iota(seeds.begin(), seeds.end(), 0);
    const int64_t limit[2] = {parts.weight[0], parts.weight[1]};
    const FlowBounds all = {{INT_MAX, INT_MAX}, {0, 0}};
    FlowNet *const net = &work.net;
    for (const bool whole : {true, false}) {
        build_flow_net(net, &parts, 0, 1, seeds.data(), graph->nnets, limit, INT_MAX);
        const int64_t start = net->visits, budget = whole ? INT64_MAX : start;
        const int side = find_balanced_cut(net, &work.cut, &all, INT_MAX, budget, nullptr);
        EXPECT_EQ(side < 0, !whole);
        if (whole) {
            EXPECT_EQ(work.cut.value, NPATHS);
            EXPECT_GT(net->visits - start, 10 * net->npins);
        } else
            EXPECT_LT(net->visits - start, 4 * net->npins);
    }
    close_flow_work(&work);
    close_parts(&parts);
}

TEST(FlowCut, the_broken_rule_is_named)
{
    Case c(2);
    FlowNet *const net = &c.work.net;
    FlowCut *const cut = &c.work.cut;
    const FlowBounds all = {{INT_MAX, INT_MAX}, {0, 0}};
    const auto ok = [&] { return flow_cut_ok(net, cut); };
    c.build(6);
    ASSERT_EQ(find_balanced_cut(net, cut, &all, INT_MAX, INT64_MAX, nullptr), SOURCE);
    ASSERT_EQ(broken_rule(ok), "");
    ASSERT_GT(cut->value, 0);
    EXPECT_EQ(broken_by(net->nodes[SINK].level[SOURCE], SETTLED, ok), "F1");
    EXPECT_EQ(broken_by(net->nodes[SINK].level[SOURCE], cut->side[SOURCE].base, ok), "F2");
    int e = 0;
    while (net->edges[e].half[SOURCE] != SETTLED || net->edges[e].full[SOURCE] == SETTLED) {
        e++;
        ASSERT_LT(e, net->nedges);
    }
    EXPECT_EQ(broken_by(net->edges[e].left, net->edges[e].left + 1, ok), "F3");
}

/* Refines a case and checks what every refinement must keep. */
void refine_and_check(Case &c, unsigned seed, bool pair)
{
    const int64_t before = c.parts.value, excess = excess_of(&c.parts);
    const std::vector<int64_t> weight(c.parts.weight, c.parts.weight + c.nparts);
    const int64_t gain = pair ? refine_pair_by_flow(&c.parts, 0, 1, &c.options, &c.work)
                              : refine_by_flows(&c.parts, &c.options, &c.work);
    ASSERT_EQ(gain, before - c.parts.value) << "seed " << seed;
    ASSERT_GE(gain, 0) << "seed " << seed;
    ASSERT_TRUE(parts_ok(&c.parts))
        << "seed " << seed; // figures as fresh ones, fixed vertices kept
    ASSERT_LE(excess_of(&c.parts), excess) << "seed " << seed;
    for (int p = 0; p < c.nparts; p++) {
        EXPECT_LE(c.parts.weight[p], std::max(weight[static_cast<size_t>(p)], c.bounds.most[p]));
        EXPECT_GE(c.parts.weight[p], std::min(weight[static_cast<size_t>(p)], c.bounds.least[p]));
        if (pair && p > 1) {
            EXPECT_EQ(c.parts.weight[p], weight[static_cast<size_t>(p)]);
        }
    }
}

TEST(Flow, pair_never_worse_bounds_never_lost_fixed_kept_figures_fresh)
{
    int gains = 0;
    for (unsigned seed = 1; seed <= 400; seed++) {
        Case c(seed);
        const int64_t before = c.parts.value;
        refine_and_check(c, seed, true);
        gains += c.parts.value < before;
    }
    EXPECT_GT(gains, 100);
}

TEST(Flow, a_pair_that_gains_nothing_changes_only_if_its_heavier_part_gets_lighter)
{
    int changes = 0;
    for (unsigned seed = 1; seed <= 400; seed++) {
        Case c(seed);
        const FlowBounds bounds = {{std::max(c.bounds.most[0], c.parts.weight[0]),
                                    std::max(c.bounds.most[1], c.parts.weight[1])},
                                   {0, 0}};
        for (;;) { // until nothing is gained, so that the last call is one of the kind
            const std::vector<int> where(c.parts.part, c.parts.part + c.n);
            const double before = heavier_load(&bounds, c.parts.weight[0], c.parts.weight[1]);
            if (refine_pair_by_flow(&c.parts, 0, 1, &c.options, &c.work) > 0) continue;
            if (std::equal(where.begin(), where.end(), c.parts.part)) break;
            changes++;
            ASSERT_LT(heavier_load(&bounds, c.parts.weight[0], c.parts.weight[1]), before)
                << "seed " << seed;
        }
    }
    EXPECT_GT(changes, 5);
}

TEST(Flow, all_pairs_never_worse_bounds_never_lost_fixed_kept_figures_fresh)
{
    int gains = 0;
    for (unsigned seed = 1; seed <= 400; seed++) {
        Case c(seed);
        const int64_t before = c.parts.value;
        refine_and_check(c, seed, false);
        gains += c.parts.value < before;
    }
    EXPECT_GT(gains, 200);
}

TEST(Flow, lower_bounds_are_never_lost)
{
    for (unsigned seed = 1; seed <= 100; seed++) {
        Case c(seed);
        for (int p = 0; p < c.nparts; p++)
            c.bounds.leasts[static_cast<size_t>(p)] = c.parts.weight[p] - seed % 3;
        refine_and_check(c, seed, false);
    }
}

TEST(Flow, the_same_call_gives_the_same_result)
{
    for (unsigned seed = 1; seed <= 30; seed++) {
        Case c(seed), d(seed);
        refine_by_flows(&c.parts, &c.options, &c.work);
        refine_by_flows(&d.parts, &d.options, &d.work);
        EXPECT_TRUE(std::equal(c.parts.part, c.parts.part + c.n, d.parts.part)) << "seed " << seed;
        EXPECT_EQ(c.work.net.visits, d.work.net.visits);
    }
}

TEST(Flow, a_budget_ends_the_search_and_leaves_a_valid_partition)
{
    for (unsigned seed = 1; seed <= 60; seed++) {
        Case whole(seed), c(seed);
        refine_by_flows(&whole.parts, &whole.options, &whole.work);
        c.options.budget = whole.work.net.visits / 3;
        refine_and_check(c, seed, false);
        EXPECT_LE(c.work.net.visits, whole.work.net.visits);
    }
}

TEST(Flow, without_a_budget_nothing_is_tried)
{
    Case c(3);
    c.options.budget = 0;
    EXPECT_EQ(refine_by_flows(&c.parts, &c.options, &c.work), 0);
    EXPECT_EQ(c.work.ncalls, 0);
    c.build(6);
    const FlowBounds all = {{INT_MAX, INT_MAX}, {0, 0}};
    EXPECT_EQ(find_balanced_cut(&c.work.net, &c.work.cut, &all, INT_MAX, 0, nullptr), -1);
    const volatile int cancel = 1;
    EXPECT_EQ(find_balanced_cut(&c.work.net, &c.work.cut, &all, INT_MAX, INT64_MAX, &cancel), -1);
}

TEST(Flow, cancelled_before_it_begins_it_changes_nothing)
{
    Case c(3);
    const volatile int cancel = 1;
    c.options.cancel = &cancel;
    EXPECT_EQ(refine_by_flows(&c.parts, &c.options, &c.work), 0);
    EXPECT_EQ(c.work.ncalls, 0);
}

/* A ring of n vertices in which every two neighbours share a hyperedge. */
HGraphPtr ring(int n)
{
    std::vector<std::pair<int, int>> edges;
    for (int v = 0; v < n; v++) edges.push_back({v, (v + 1) % n});
    return graph_of(n, edges);
}

TEST(Flow, pieces_that_stray_on_a_ring_come_home)
{
    const HGraphPtr graph = ring(120);
    const TestBounds bounds(graph.get(), 2, 10);
    std::vector<int> where(120);
    for (int v = 0; v < 120; v++) where[static_cast<size_t>(v)] = v / 60;
    for (const int v : {10, 11, 12, 30, 31, 75, 76, 77, 78, 100})
        where[static_cast<size_t>(v)] = 1 - where[static_cast<size_t>(v)];
    Parts parts;
    FlowWork work;
    open_parts(&parts, graph.get(), &bounds, Objective::cut, nullptr);
    load_parts(&parts, where.data());
    open_flow_work(&work, graph.get());
    ASSERT_EQ(parts.value, 10);
    EXPECT_EQ(refine_by_flows(&parts, &FLOW_OPTIONS, &work), 8);
    EXPECT_TRUE(within_bounds(&parts));
    close_flow_work(&work);
    close_parts(&parts);
}

TEST(Flow, equal_cuts_are_taken_for_balance_only_when_asked)
{
    const HGraphPtr graph = ring(40);
    const TestBounds bounds(graph.get(), 2, 20);
    for (const bool equal : {false, true}) {
        std::vector<int> where(40, 1);
        for (int v = 0; v < 23; v++) where[static_cast<size_t>(v)] = 0;
        Parts parts;
        FlowWork work;
        open_parts(&parts, graph.get(), &bounds, Objective::km1, nullptr);
        load_parts(&parts, where.data());
        open_flow_work(&work, graph.get());
        FlowOptions options = FLOW_OPTIONS;
        options.equal = equal;
        EXPECT_EQ(refine_by_flows(&parts, &options, &work), 0);
        EXPECT_EQ(parts.weight[0], equal ? 20 : 23);
        close_flow_work(&work);
        close_parts(&parts);
    }
}

} // namespace
