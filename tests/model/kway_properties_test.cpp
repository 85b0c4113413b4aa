// SPDX-License-Identifier: MIT
/* tests/model/kway_properties_test.cpp: what k-way records, refinement and uncoarsening must keep,
 * on thousands of random levels. Everything is recounted from the pin lists.
 */
#include <gtest/gtest.h>

#include "chains.h"
#include "coarsen/coarsen.h"
#include "kway/kway_gains.h"
#include "kway/stale_records.h"
#include "kway/uncoarsen_kway.h"
#include "kway/refine_random.h"
#include "levels.h"
#include "spare/kway_updates.h"

/* The records of graph against those computed anew on an equal level. Votes (ties) of pins that a
 * move did not revisit may be old. */
static void compare_with_fresh_records(const PartCtrl &ctrl, const HGraph *graph, HGraph *fresh)
{
    QXfree__(&fresh->where, &fresh->kpwgts, &fresh->nrinfo, &fresh->crinfo, &fresh->nrdata,
             &fresh->crdata, &fresh->kplace, LTERM);
    AllocateKwayRefinementMemory__(&ctrl, fresh);
    std::copy(graph->where, graph->where + graph->ncells, fresh->where);
    ComputeInitKwayGains__(&ctrl, fresh);
    ASSERT_EQ(graph->mincut, fresh->mincut);
    ASSERT_EQ(graph->minsoed, fresh->minsoed);
    ASSERT_EQ(to_ints(graph->kpwgts, ctrl.nparts), to_ints(fresh->kpwgts, ctrl.nparts));
    using Row = std::vector<Ints>;
    for (int e = 0; e < graph->nnets; e++) {
        Row rows[2];
        for (int i = 0; i < 2; i++) {
            const NetKwayInfo &net = (i == 0 ? graph : fresh)->nrinfo[e];
            for (int k = 0; k < net.ndegrees; k++)
                rows[i].push_back({net.degrees[k].pid, net.degrees[k].num});
            std::sort(rows[i].begin(), rows[i].end());
        }
        ASSERT_EQ(rows[0], rows[1]) << "hyperedge " << e;
    }
    for (int v = 0; v < graph->ncells; v++) {
        Row rows[2];
        for (int i = 0; i < 2; i++) {
            const CellKwayInfo &cell = (i == 0 ? graph : fresh)->crinfo[v];
            rows[i].push_back({-1, cell.id, cell.ed});
            for (int k = 0; k < cell.ndegrees; k++)
                rows[i].push_back({cell.degrees[k].pid, cell.degrees[k].num, cell.degrees[k].soed});
            std::sort(rows[i].begin(), rows[i].end());
        }
        ASSERT_EQ(rows[0], rows[1]) << "vertex " << v;
    }
}

static PartCtrl random_kway_ctrl(Draw &draw)
{
    PartCtrl ctrl = make_ctrl();
    ctrl.nparts = between(draw, 2, 7);
    ctrl.ubfactor = 1.0f + 0.1f * static_cast<float>(between(draw, 0, 12));
    return ctrl;
}

TEST(KwayProperties, records_equal_a_fresh_computation_after_any_moves)
{
    for (unsigned seed = 0; seed < 800; seed++) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        Draw draw(seed), same(seed);
        LevelLimits limits;
        limits.maxsize = 12;
        limits.unitnets = true;
        const Level level = random_level(draw, limits), twin = random_level(same, limits);
        HGraph *const graph = level.get();
        const PartCtrl ctrl = random_kway_ctrl(draw);
        const Ints parts = random_parts(draw, graph->ncells, ctrl.nparts);
        AllocateKwayRefinementMemory__(&ctrl, graph);
        std::copy(parts.begin(), parts.end(), graph->where);
        ComputeInitKwayGains__(&ctrl, graph);
        Ints marker(at(graph->ncells), -1), updind(at(graph->ncells));
        Ints order(at(graph->ncells));
        std::iota(order.begin(), order.end(), 0);
        std::shuffle(order.begin(), order.end(), draw);
        for (int v : order) {
            const int from = graph->where[v], to = below(draw, ctrl.nparts);
            if (from == to) continue;
            graph->where[v] = to;
            graph->kpwgts[from] -= graph->cellwgt[v];
            graph->kpwgts[to] += graph->cellwgt[v];
            graph->mincut = fresh_cut(graph, graph->where);
            graph->minsoed = fresh_soed(graph, graph->where);
            KwayUpdateGainInfo__(graph, v, from, to, marker.data(), updind.data());
        }
        compare_with_fresh_records(ctrl, graph, twin.get());
        ASSERT_TRUE(kway_ok(&ctrl, graph));
        if (HasFatalFailure()) return;
    }
}

/* A hyperedge's record, in order; that of an uncut one need not have a list. */
static std::vector<Ints> net_record(const HGraph *graph, int e)
{
    const NetKwayInfo &net = graph->nrinfo[e];
    if (net.ndegrees == 1) return {{1}};
    std::vector<Ints> rows;
    for (int k = 0; k < net.ndegrees; k++) rows.push_back({net.degrees[k].pid, net.degrees[k].num});
    return rows;
}

/* All of a vertex's record, in order. */
static std::vector<Ints> whole_record(const HGraph *graph, int v)
{
    const CellKwayInfo &cell = graph->crinfo[v];
    std::vector<Ints> rows = {{cell.ndegrees, cell.id, cell.ed}};
    for (int k = 0; k < cell.ndegrees; k++) {
        const KwayPartDeg &entry = cell.degrees[k];
        rows.push_back({entry.pid, entry.num, entry.ties, entry.soed});
    }
    return rows;
}

TEST(KwayProperties, records_read_late_are_those_of_updates_at_once)
{
    int nties = 0; // ties that a computation from scratch would give otherwise
    for (unsigned seed = 0; seed < 1200; seed++) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        Draw draw(seed), same(seed);
        LevelLimits limits;
        limits.maxsize = 25;
        const Level level = random_level(draw, limits), twin = random_level(same, limits);
        HGraph *const late = level.get(), *const once = twin.get();
        const PartCtrl ctrl = random_kway_ctrl(draw);
        const Ints parts = random_parts(draw, late->ncells, ctrl.nparts);
        for (HGraph *graph : {late, once}) {
            AllocateKwayRefinementMemory__(&ctrl, graph);
            std::copy(parts.begin(), parts.end(), graph->where);
        }
        Ints marker(at(late->ncells)), updind(at(late->ncells)), order(at(late->ncells));
        Ints othermarker(at(late->ncells));
        std::iota(order.begin(), order.end(), 0);
        StaleRecords stale;
        open_stale(late, &stale);
        ComputeInitKwayGains__(&ctrl, once);
        if (seed % 2 == 0)
            outline_records(&ctrl, late, &stale, seed % 4 == 0);
        else
            ComputeInitKwayGains__(&ctrl, late);
        ASSERT_EQ(late->mincut, once->mincut);
        ASSERT_EQ(late->minsoed, once->minsoed);
        const int read = between(draw, 0, 3); // vertices a move
        for (int pass = 0; pass < 3; pass++) {
            marker.assign(marker.size(), -1);
            othermarker = marker;
            std::shuffle(order.begin(), order.end(), draw);
            for (int v : order) {
                const int from = late->where[v], to = below(draw, ctrl.nparts);
                if (from == to) continue;
                late->where[v] = once->where[v] = to;
                note_kway_move(late, v, from, to, marker.data(), &stale);
                KwayUpdateGainInfo__(once, v, from, to, othermarker.data(), updind.data());
                for (int i = 0; i < read; i++) {
                    const int u = below(draw, late->ncells);
                    refresh_outline(late, &stale, u);
                    ASSERT_EQ(late->crinfo[u].id, once->crinfo[u].id) << "vertex " << u;
                    ASSERT_EQ(late->crinfo[u].ed, once->crinfo[u].ed) << "vertex " << u;
                    if (draw() % 2 == 0) continue;
                    refresh_record(late, &stale, u);
                    ASSERT_EQ(whole_record(late, u), whole_record(once, u)) << "vertex " << u;
                }
            }
        }
        refresh_all(late, &stale);
        ASSERT_TRUE(late_ok(late, once));
        for (int e = 0; e < late->nnets; e++)
            ASSERT_EQ(net_record(late, e), net_record(once, e)) << "hyperedge " << e;
        for (int v = 0; v < late->ncells; v++) {
            const std::vector<Ints> kept = whole_record(once, v);
            ComputeKwayGainsSet__(once, 1, &v);
            nties += kept != whole_record(once, v);
        }
        close_stale(&stale);
    }
    EXPECT_GT(nties, 100);
}

struct KwayRefiner {
    const char *name;
    bool soed;
    void (*run)(PartCtrl *ctrl, HGraph *graph, int npasses);
};

static void PrintTo(const KwayRefiner &row, std::ostream *out)
{
    *out << row.name;
}

static const KwayRefiner KWAY_REFINERS[] = {
    {"Cut", false, RefineCutKway_Random__},
    {"SOED", true, RefineSOEDKway_Random__},
};

class KwayRefinerProperties : public testing::TestWithParam<KwayRefiner>
{
};

/* The sum that SOED refinement lowers: uncut hyperedges count once. */
static int touched_parts(const HGraph *graph, const int *where)
{
    int touched = 0;
    for (int e = 0; e < graph->nnets; e++) touched += lambda_of(graph, e, where) * graph->netwgt[e];
    return touched;
}

TEST_P(KwayRefinerProperties, never_worse_bounds_kept_fixed_stay_records_fresh)
{
    int nbetter = 0;
    for (unsigned seed = 0; seed < 1500; seed++) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        Draw draw(seed), same(seed);
        const Level level = random_level(draw), twin = random_level(same);
        HGraph *const graph = level.get();
        PartCtrl ctrl = random_kway_ctrl(draw);
        const Ints parts = random_parts(draw, graph->ncells, ctrl.nparts);
        AllocateKwayRefinementMemory__(&ctrl, graph);
        std::copy(parts.begin(), parts.end(), graph->where);
        const Ints before = part_weights(graph, graph->where, ctrl.nparts);
        const int cut = fresh_cut(graph, graph->where),
                  touched = touched_parts(graph, graph->where);
        const float total = static_cast<float>(sum(graph->cellwgt, graph->ncells));
        const float nparts = static_cast<float>(ctrl.nparts);
        const int most = static_cast<int>(ctrl.ubfactor * total / nparts);
        const int least = static_cast<int>(total / (nparts * ctrl.ubfactor));
        srand(seed);
        GetParam().run(&ctrl, graph, KWAY_PASSES);
        for (int v = 0; v < graph->nfixed; v++) ASSERT_EQ(graph->where[v], parts[at(v)]);
        const Ints after = part_weights(graph, graph->where, ctrl.nparts);
        for (int p = 0; p < ctrl.nparts; p++) {
            ASSERT_LE(after[at(p)], std::max(most, before[at(p)]));
            ASSERT_GE(after[at(p)], std::min(least, before[at(p)]));
        }
        if (!GetParam().soed) {
            ASSERT_LE(graph->mincut, cut);
        }
        if (GetParam().soed) {
            ASSERT_LE(touched_parts(graph, graph->where), touched);
        }
        ASSERT_EQ(graph->mincut, fresh_cut(graph, graph->where));
        ASSERT_EQ(graph->minsoed, fresh_soed(graph, graph->where));
        ASSERT_EQ(graph->objval, GetParam().soed ? graph->minsoed : graph->mincut);
        compare_with_fresh_records(ctrl, graph, twin.get());
        if (HasFatalFailure()) return;
        nbetter += graph->mincut < cut;
    }
    EXPECT_GT(nbetter, 200);
}

INSTANTIATE_TEST_SUITE_P(refiners, KwayRefinerProperties, testing::ValuesIn(KWAY_REFINERS),
                         [](const auto &row) { return std::string(row.param.name); });

TEST(KwayProperties, uncoarsening_keeps_the_level_and_lowers_the_objective)
{
    for (unsigned seed = 0; seed < 400; seed++) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        Draw draw(seed);
        Level level = random_level(draw, chain_limits(one_in(draw, 2)));
        PartCtrl ctrl = chain_ctrl(draw, level.get());
        ctrl.nparts = between(draw, 2, 6);
        ctrl.ubfactor = 3.0f;
        ctrl.RType = one_in(draw, 3) ? static_cast<int>(RTYPE_NONE) : between(draw, 1, 2);
        const int n = level->ncells;
        const Ints pins = to_ints(level->netind, level->netptr[level->nnets]);
        srand(seed);
        HGraph *const coarsest = Coarsen__(&ctrl, level.get());
        if (coarsest == level.get()) continue;
        AllocateKwayRefinementMemory__(&ctrl, coarsest);
        const Ints parts = random_parts(draw, coarsest->ncells, ctrl.nparts);
        std::copy(parts.begin(), parts.end(), coarsest->where);
        const int cut = fresh_cut(coarsest, coarsest->where);
        const int touched = touched_parts(coarsest, coarsest->where) + coarsest->removedwgt;
        const Ints fixed = to_ints(coarsest->where, coarsest->nfixed);
        RefineKway__(&ctrl, level.get(), coarsest);
        ASSERT_EQ(level->coarser, nullptr);
        ASSERT_EQ(level->ncells, n);
        ASSERT_EQ(to_ints(level->netind, level->netptr[level->nnets]), pins);
        ASSERT_EQ(to_ints(level->where, level->nfixed), fixed);
        ASSERT_EQ(to_ints(level->kpwgts, ctrl.nparts),
                  part_weights(level.get(), level->where, ctrl.nparts));
        ASSERT_EQ(level->mincut, fresh_cut(level.get(), level->where));
        ASSERT_EQ(level->minsoed, fresh_soed(level.get(), level->where));
        if (ctrl.RType == RTYPE_NONE) {
            ASSERT_EQ(level->mincut, cut);
        }
        if (ctrl.RType == OBJECTIVE_CUT) {
            ASSERT_LE(level->mincut, cut);
        }
        if (ctrl.RType == OBJECTIVE_SOED) {
            ASSERT_LE(touched_parts(level.get(), level->where), touched);
        }
    }
}
