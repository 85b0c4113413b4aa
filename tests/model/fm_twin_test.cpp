// SPDX-License-Identifier: MIT
/* tests/model/fm_twin_test.cpp: every two-way refiner against a plain twin, move by move.
 *
 * The twin has no gain buckets, no pin counts and no incremental gains: a queue is a list that is
 * scanned for the best vertex, a gain is counted from the pins. It writes the trace that the
 * refiner should print; traces, sides, cuts and weights must agree on random levels.
 */
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <numeric>

#include "core/heavy_assert.h"
#include "core/random.h"
#include "print_to.h"
#include "levels.h"
#include "plain_queue.h"
#include "refine/balance.h"
#include "refine/fm.h"
#include "refine/oneway.h"

struct Twin {
    const HGraph *graph;
    const PartCtrl *ctrl;
    Ints where, locked;
    PlainQueue queues[2];
    int pwgts[2], minpwgts[2];
    std::string trace;
};

static void open_twin(Twin &twin, const HGraph *graph, const PartCtrl *ctrl, const Ints &where)
{
    twin.graph = graph;
    twin.ctrl = ctrl;
    twin.where = where;
    const int span =
        graph->ncells > 0 ? *std::max_element(graph->adjwgt, graph->adjwgt + graph->ncells) : 0;
    twin.queues[0].heap = twin.queues[1].heap = 3 * graph->ncells < span;
    const Ints weights = part_weights(graph, where.data(), 2);
    twin.pwgts[0] = weights[0];
    twin.pwgts[1] = weights[1];
}

static void set_twin_bounds(Twin &twin)
{
    const int total = twin.pwgts[0] + twin.pwgts[1];
    const float split = twin.ctrl->splitratio, slack = twin.ctrl->ubfactor;
    twin.minpwgts[0] = static_cast<int>((split - slack) * static_cast<float>(total));
    twin.minpwgts[1] =
        static_cast<int>((1.0 - static_cast<double>(split) - static_cast<double>(slack)) * total);
}

/* What hyperedge e adds to the gain of its pin v. */
static int share(const Twin &twin, int e, int v)
{
    int own = 0, other = 0;
    for (int u : net_pins(twin.graph, e)) (twin.where[at(u)] == twin.where[at(v)] ? own : other)++;
    if (other == 0) return -twin.graph->netwgt[e];
    return own == 1 ? twin.graph->netwgt[e] : 0;
}

static Ints nets_of(const HGraph *graph, int v)
{
    return to_ints(graph->incind + graph->incptr[v], graph->incptr[v + 1] - graph->incptr[v]);
}

static int plain_gain(const Twin &twin, int v)
{
    int gain = 0;
    for (int e : nets_of(twin.graph, v)) gain += share(twin, e, v);
    return gain;
}

static void flip(Twin &twin, int v)
{
    const int from = twin.where[at(v)];
    twin.where[at(v)] = 1 - from;
    twin.pwgts[from] -= twin.graph->cellwgt[v];
    twin.pwgts[1 - from] += twin.graph->cellwgt[v];
}

/* Moves v; unlocked neighbours change their places in the queues, hyperedge by hyperedge.
 * oneside -1: both sides are queued, else that side only, in queues[0]. */
static void move_in_twin(Twin &twin, int v, int oneside)
{
    const Ints nets = nets_of(twin.graph, v);
    std::vector<Ints> before(nets.size());
    for (size_t i = 0; i < nets.size(); i++)
        for (int u : net_pins(twin.graph, nets[i])) before[i].push_back(share(twin, nets[i], u));
    flip(twin, v);
    for (size_t i = 0; i < nets.size(); i++) {
        const Ints pins = net_pins(twin.graph, nets[i]);
        for (size_t j = 0; j < pins.size(); j++) {
            const int u = pins[j], side = twin.where[at(u)];
            if (u == v || twin.locked[at(u)] || (oneside >= 0 && side != oneside)) continue;
            const int delta = share(twin, nets[i], u) - before[i][j];
            if (delta != 0) plain_change(twin.queues[oneside >= 0 ? 0 : side], u, delta);
        }
    }
}

static void fill_twin(Twin &twin, int oneside)
{
    const int n = twin.graph->ncells;
    Ints perm(at(n));
    RandomPermute__(perm.data(), n, 1);
    twin.locked.assign(at(n), 0);
    twin.queues[0].entries.clear();
    twin.queues[1].entries.clear();
    for (int v : perm) {
        const int side = twin.where[at(v)];
        if (oneside >= 0 && side != oneside) continue;
        if (v < twin.graph->nfixed)
            twin.locked[at(v)] = 1;
        else
            plain_insert(twin.queues[oneside >= 0 ? 0 : side], v, plain_gain(twin, v));
    }
}

static bool in_bounds(const Twin &twin)
{
    return twin.pwgts[0] >= twin.minpwgts[0] && twin.pwgts[1] >= twin.minpwgts[1];
}

static int imbalance(const Twin &twin)
{
    return std::abs(twin.pwgts[0] - twin.pwgts[1]);
}

struct Variant {
    const char *name;
    bool constrained, exact;
};

/* The vertex to move next, -1 when both queues are empty. */
static int choose_in_twin(const Twin &twin, const Variant &variant)
{
    const int *const wgt = twin.graph->cellwgt;
    int tops[2], room[2];
    for (int side = 0; side < 2; side++) {
        room[side] = twin.pwgts[side] - twin.minpwgts[side];
        tops[side] = variant.constrained ? plain_fitting_top(twin.queues[side], room[side], wgt)
                                         : plain_top(twin.queues[side]);
    }
    if (tops[0] < 0 || tops[1] < 0) return std::max(tops[0], tops[1]);
    const int gain0 = plain_gain(twin, tops[0]), gain1 = plain_gain(twin, tops[1]);
    if (gain0 > gain1) return wgt[tops[0]] > room[0] ? tops[1] : tops[0];
    if (gain0 < gain1) return wgt[tops[1]] > room[1] ? tops[0] : tops[1];
    return room[0] < room[1] ? tops[1] : tops[0];
}

static void print_move(Twin &twin, const Variant &variant, int v, int from, int gain, int newcut)
{
    print_to(twin.trace, "Gains from moving %8d from %2d: %4d, \tNewcut: %d", v, from, gain,
             newcut);
    if (variant.exact) {
        twin.trace += "\n";
        return;
    }
    if (variant.constrained)
        print_to(twin.trace, " [%6d %6d %6d]\n", twin.graph->cellwgt[v], twin.pwgts[0],
                 twin.pwgts[1]);
    else
        print_to(twin.trace, " [%6d %6d]\n", twin.pwgts[0], twin.pwgts[1]);
}

static void print_header(Twin &twin, const Variant &variant, int cut)
{
    print_to(twin.trace, "%s: [%6d,%8d]  [%6d,%8d], Initial Cut: %8d [%d] [%d",
             variant.constrained && !variant.exact ? "Partitions2" : "Partitions",
             static_cast<int>(twin.queues[0].entries.size()), twin.pwgts[0],
             static_cast<int>(twin.queues[1].entries.size()), twin.pwgts[1], cut,
             fresh_cut(twin.graph, twin.where.data()), twin.minpwgts[0]);
    if (!variant.exact) print_to(twin.trace, " %d", twin.minpwgts[1]);
    twin.trace += "]\n";
}

static int twin_fm(Twin &twin, const Variant &variant, int npasses, float fraction)
{
    const int limit = static_cast<int>(static_cast<float>(twin.graph->ncells) * fraction);
    int cut = fresh_cut(twin.graph, twin.where.data());
    for (int pass = 0; pass < npasses; pass++) {
        if (!variant.exact) cut = fresh_cut(twin.graph, twin.where.data());
        set_twin_bounds(twin);
        fill_twin(twin, -1);
        if (pass == 0) print_header(twin, variant, cut);
        const int initcut = cut;
        int newcut = cut, diff = imbalance(twin), best = -1;
        Ints steps;
        for (int v; (v = choose_in_twin(twin, variant)) >= 0;) {
            const int from = twin.where[at(v)], gain = plain_gain(twin, v);
            const int step = static_cast<int>(steps.size());
            plain_remove(twin.queues[from], v);
            twin.locked[at(v)] = 1;
            steps.push_back(v);
            newcut -= gain;
            move_in_twin(twin, v, -1);
            const bool tie = newcut == cut && !variant.exact && imbalance(twin) < diff;
            if (in_bounds(twin) && (newcut < cut || tie)) {
                cut = newcut;
                diff = imbalance(twin);
                best = step;
            } else if (variant.exact && newcut > cut && step - best > limit) {
                break;
            }
            print_move(twin, variant, v, from, gain, newcut);
        }
        while (static_cast<int>(steps.size()) > best + 1) {
            flip(twin, steps.back());
            steps.pop_back();
        }
        print_to(twin.trace, "\tMinimum Cut: %8d", cut);
        if (variant.exact) print_to(twin.trace, " [%8d]", fresh_cut(twin.graph, twin.where.data()));
        print_to(twin.trace, " at %5d [%6d %6d]\n", best, twin.pwgts[0], twin.pwgts[1]);
        if (cut == initcut) break;
    }
    return cut;
}

static int twin_oneway(Twin &twin, int npasses)
{
    static const Variant variant = {"", false, true};
    int cut = fresh_cut(twin.graph, twin.where.data());
    int from = twin.pwgts[0] >= twin.pwgts[1] ? 0 : 1;
    set_twin_bounds(twin);
    for (int pass = 0; pass < npasses; pass++, from = 1 - from) {
        fill_twin(twin, from);
        if (pass == 0)
            print_to(twin.trace, "1-way Partitions: [%6d %8d %8d] Initial Cut: %8d [%d] [%d %d]\n",
                     static_cast<int>(twin.queues[0].entries.size()), twin.pwgts[from],
                     twin.pwgts[1 - from], cut, cut, twin.minpwgts[0], twin.minpwgts[1]);
        const int initcut = cut;
        int newcut = cut, diff = imbalance(twin), best = -1;
        Ints steps; // -1 for a vertex that was skipped
        for (int v; (v = plain_top(twin.queues[0])) >= 0;) {
            const int gain = plain_gain(twin, v);
            const bool held = twin.graph->cellwgt[v] > twin.pwgts[from] - twin.minpwgts[from];
            if (held && gain <= 0) break;
            plain_remove(twin.queues[0], v);
            twin.locked[at(v)] = 1;
            steps.push_back(held ? -1 : v);
            if (held) continue;
            newcut -= gain;
            move_in_twin(twin, v, from);
            if (in_bounds(twin) && (newcut < cut || (newcut == cut && imbalance(twin) < diff))) {
                cut = newcut;
                diff = imbalance(twin);
                best = static_cast<int>(steps.size()) - 1;
            }
            print_move(twin, variant, v, from, gain, newcut);
        }
        while (static_cast<int>(steps.size()) > best + 1) {
            if (steps.back() >= 0) flip(twin, steps.back());
            steps.pop_back();
        }
        print_to(twin.trace, "\tMinimum Cut: %8d [%8d] at %5d [%6d %6d] [%d]\n", cut,
                 fresh_cut(twin.graph, twin.where.data()), best, twin.pwgts[0], twin.pwgts[1],
                 from);
        if (pass % 2 == 1 && cut == initcut) break;
    }
    return cut;
}

static int twin_balance(Twin &twin)
{
    int cut = fresh_cut(twin.graph, twin.where.data());
    set_twin_bounds(twin);
    if (in_bounds(twin)) return cut;
    fill_twin(twin, -1);
    print_to(twin.trace, "Partitions[B]: [%6d,%8d]  [%6d,%8d], Initial Cut: %8d [%d] [%d]\n",
             static_cast<int>(twin.queues[0].entries.size()), twin.pwgts[0],
             static_cast<int>(twin.queues[1].entries.size()), twin.pwgts[1], cut, cut,
             twin.minpwgts[0]);
    for (int step = 0; step < twin.graph->ncells && !in_bounds(twin); step++) {
        const int from = twin.pwgts[0] >= twin.minpwgts[0] ? 0 : 1;
        const int v = plain_top(twin.queues[from]);
        if (v < 0) break;
        plain_remove(twin.queues[from], v);
        twin.locked[at(v)] = 1;
        if (twin.graph->cellwgt[v] > twin.pwgts[from] - twin.minpwgts[from]) continue;
        cut -= plain_gain(twin, v);
        move_in_twin(twin, v, -1);
    }
    return cut;
}

/* ---- the comparison ---- */

struct Case {
    const char *name;
    bool unitnets; // hyperedges of one vertex allowed: their cut is counted as it is told
    void (*refine)(PartCtrl *ctrl, HGraph *graph, int npasses);
    int (*twin)(Twin &twin, int npasses);
};

static void PrintTo(const Case &row, std::ostream *out)
{
    *out << row.name;
}

constexpr float SHARE = 0.1f;
constexpr Variant FM = {"FM", false, false}, FM2 = {"FM2", true, false};
constexpr Variant EEFM = {"EEFM", false, true}, EEFM2 = {"EEFM2", true, true};

static const Case CASES[] = {
    {"FM", true, Refine_FM__, [](Twin &t, int np) { return twin_fm(t, FM, np, 0); }},
    {"FM2", true, Refine_FM2__, [](Twin &t, int np) { return twin_fm(t, FM2, np, 0); }},
    {"EEFM", false, [](PartCtrl *c, HGraph *g, int np) { Refine_EEFM__(c, g, np, SHARE); },
     [](Twin &t, int np) { return twin_fm(t, EEFM, np, SHARE); }},
    {"EEFM2", false, [](PartCtrl *c, HGraph *g, int np) { Refine_EEFM2__(c, g, np, SHARE); },
     [](Twin &t, int np) { return twin_fm(t, EEFM2, np, SHARE); }},
    {"OneWay", false, Refine_OneWayFM__, twin_oneway},
    {"Balance", false, [](PartCtrl *c, HGraph *g, int) { Balance__(c, g); },
     [](Twin &t, int) { return twin_balance(t); }},
};

class TwoWayTwin : public testing::TestWithParam<Case>
{
};

/* Refines a level from these sides by both; returns the twin as it ends. */
static Twin compare_on_level(const Case &row, HGraph *graph, PartCtrl ctrl, int npasses,
                             const Ints &sides, unsigned seed)
{
    ctrl.dbglvl = DBG_PASS | DBG_MOVE;
    set_sides(graph, sides);
    Twin twin;
    open_twin(twin, graph, &ctrl, sides);
    srand(seed);
    const int cut = row.twin(twin, npasses);
    twin.ctrl = nullptr; // of this call

    srand(seed);
    testing::internal::CaptureStdout();
    row.refine(&ctrl, graph, npasses);
    EXPECT_TRUE(testing::internal::GetCapturedStdout() == twin.trace);
    EXPECT_EQ(to_ints(graph->where, graph->ncells), twin.where);
    EXPECT_EQ(graph->mincut, cut);
    EXPECT_EQ(graph->pwgts[0], twin.pwgts[0]);
    EXPECT_EQ(graph->pwgts[1], twin.pwgts[1]);
    return twin;
}

/* Refines a random level by both; returns whether its queues are heaps. */
static bool compare_with_twin(const Case &row, LevelLimits limits, unsigned seed)
{
    Draw draw(seed);
    limits.unitnets = row.unitnets;
    Level level = random_level(draw, limits);
    const PartCtrl ctrl = random_bisection_ctrl(draw);
    const int npasses = between(draw, 1, 6);
    const Ints sides = random_parts(draw, level->ncells, 2);
    return compare_on_level(row, level.get(), ctrl, npasses, sides, seed).queues[0].heap;
}

TEST_P(TwoWayTwin, agrees_move_by_move_in_both_queue_forms)
{
    int nheap = 0, nbuckets = 0;
    for (unsigned seed = 0; seed < 1200 && !HasFailure(); seed++) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        (compare_with_twin(GetParam(), {}, seed) ? nheap : nbuckets)++;
    }
    EXPECT_GT(nheap, 50);
    EXPECT_GT(nbuckets, 50);
}

/* On levels of which hyperedges hold most vertices. */
static void compare_on_giants(const Case &row, LevelLimits limits, unsigned rounds)
{
    for (unsigned seed = 0; seed < rounds && !testing::Test::HasFailure(); seed++) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        compare_with_twin(row, limits, seed);
    }
}

TEST_P(TwoWayTwin, agrees_on_hyperedges_with_more_pins_than_a_byte_counts)
{
    compare_on_giants(GetParam(), {.mincells = 290, .maxcells = 320, .giants = 2}, 4);
}

TEST_P(TwoWayTwin, agrees_on_hyperedges_about_as_large_as_can_be_packed)
{
    compare_on_giants(GetParam(), {.mincells = 126, .maxcells = 150, .giants = 3}, 40);
}

static Ints random_weights(Draw &draw, size_t n, int most)
{
    Ints weights;
    for (size_t i = 0; i < n; i++) weights.push_back(between(draw, 1, most));
    return weights;
}

/* One hyperedge of this size, another that holds all but its first pin, pairs at random, and thirty
 * vertices in neither. */
static Level level_with_large(Draw &draw, int size, int nfixed)
{
    const int n = size + 30;
    Nets nets(2);
    for (int v = 0; v < size; v++) {
        nets[0].push_back(v);
        if (v > 0) nets[1].push_back(v);
    }
    for (int i = 0; i < n; i++) {
        const int u = below(draw, n), v = below(draw, n);
        if (u != v) nets.push_back({u, v});
    }
    return make_level(n, nets, random_weights(draw, nets.size(), 9), {}, nfixed);
}

static PartCtrl loose_ctrl()
{
    PartCtrl ctrl = make_ctrl();
    ctrl.ubfactor = 0.49f;
    return ctrl;
}

TEST_P(TwoWayTwin, agrees_when_all_pins_but_a_few_of_a_large_hyperedge_are_on_one_side)
{
    for (const int size : {127, 128, 129, 131, 150, 260}) {
        for (const int away : {0, 1, 2}) {
            for (const int side : {0, 1}) {
                SCOPED_TRACE(testing::Message() << size << " pins, " << away << " not on " << side);
                Draw draw(static_cast<unsigned>(size + away));
                const Level level = level_with_large(draw, size, away == 1 ? 2 : 0);
                Ints sides(at(level->ncells), side);
                for (int i = 0; i < away; i++) sides[at(size / 2 + i)] = 1 - side;
                for (int v = size; v < level->ncells; v++) sides[at(v)] = 1 - side;
                compare_on_level(GetParam(), level.get(), loose_ctrl(), 2, sides, 1);
                if (HasFailure()) return;
            }
        }
    }
}

/* Numbers of the best points of the passes, in order. */
static Ints best_points(const std::string &trace)
{
    Ints points;
    for (size_t i = 0; (i = trace.find(" at ", i)) != std::string::npos; i++)
        points.push_back(std::stoi(trace.substr(i + 4)));
    return points;
}

/* Two clusters of vertices in chains, a large hyperedge in each and one over both; a few vertices
 * stand on the wrong side, so that the first passes are best after a few moves, and the refinement
 * takes counts back to the start of the pass. */
TEST_P(TwoWayTwin, agrees_after_passes_that_are_best_early_with_large_hyperedges)
{
    size_t early = 0;
    for (unsigned seed = 0; seed < 12 && !HasFailure(); seed++) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        Draw draw(seed);
        const int half = 140 + below(draw, 20), n = 2 * half;
        Nets nets(3);
        Ints sides;
        for (int v = 0; v < n; v++) {
            nets[v < half ? 0 : 1].push_back(v);
            if (v % 2 == 0 || v > half / 2) nets[2].push_back(v);
            const int next = v < half ? (v + 1) % half : half + (v + 1 - half) % half;
            nets.push_back({v, next});
            nets.push_back({v, v < half ? below(draw, half) : half + below(draw, half)});
            if (nets.back()[0] == nets.back()[1]) nets.pop_back();
            sides.push_back(v < half ? 0 : 1);
        }
        for (int i = 0; i < 12; i++) sides[at(below(draw, n))] ^= 1;
        const Level level =
            make_level(n, nets, random_weights(draw, nets.size(), 4), {}, seed % 3 == 0 ? 3 : 0);
        PartCtrl ctrl = make_ctrl();
        ctrl.ubfactor = 0.1f;
        const Twin twin = compare_on_level(GetParam(), level.get(), ctrl, 6, sides, seed);
        const Ints points = best_points(twin.trace);
        for (size_t i = 0; i + 1 < points.size(); i++) early += points[i] >= 0 && points[i] < n / 4;
    }
    const std::string name = GetParam().name;
    if (name == "FM" || name == "FM2") {
        EXPECT_GT(early, 8u);
    }
}

/* Levels of which the refiners work on a copy that is numbered anew. */
TEST_P(TwoWayTwin, agrees_on_levels_that_are_relabelled)
{
    const int n = HEAVY_ASSERTS ? 300 : 4096 + 57;
    for (const unsigned seed : {1u, 2u}) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        Draw draw(seed);
        Nets nets;
        for (int v = 0; v < n; v++) {
            const int u = (v + 1 + below(draw, 40)) % n;
            nets.push_back({v, u});
            if (v % 3 == 0 && (v + 50) % n != u) nets.back().push_back((v + 50) % n);
        }
        nets.push_back({});
        for (int v = 0; v < n; v += n / 150) nets.back().push_back(v);
        const Level level =
            make_level(n, nets, random_weights(draw, nets.size(), 3), {}, seed == 1 ? 0 : 5);
        Ints order(at(n));
        std::iota(order.begin(), order.end(), 0);
        std::shuffle(order.begin(), order.end(), draw);
        level->nearby = new_array(order);
        Ints sides;
        for (int v = 0; v < n; v++) sides.push_back(v / 64 % 2);
        PartCtrl ctrl = make_ctrl();
        ctrl.ubfactor = 0.1f;
        compare_on_level(GetParam(), level.get(), ctrl, 2, sides, seed);
        if (HasFailure()) return;
    }
}

INSTANTIATE_TEST_SUITE_P(refiners, TwoWayTwin, testing::ValuesIn(CASES),
                         [](const auto &row) { return std::string(row.param.name); });
