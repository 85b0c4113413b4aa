// SPDX-License-Identifier: MIT
/* search/multilevel.cpp: one multilevel pass.
 *
 * The engine's matchings make the levels. With labels only vertices of one label are merged, so
 * that any partition whose parts are unions of labels stays what it is at every level: a V-cycle
 * when the labels are one partition's parts, a combination of several when they are the cells of
 * their overlay. What the coarsest level is partitioned into is then carried back and refined.
 *
 * Stages: prune large hyperedges, coarsen, partition the coarsest level, project and refine level
 * by level, refine on the whole.
 */
#include "search/multilevel.h"

#include <algorithm>
#include <cassert>

#include "coarsen/coarsen.h"
#include "core/memory.h"
#include "core/random.h"
#include "core/vectors.h"
#include "core/ctrl.h"
#include "core/islands.h"
#include "partition/prune.h"
#include "search/bisect.h"
#include "search/bold.h"
#include "search/flow.h"
#include "search/kway_fm.h"
#include "search/rebalance.h"

constexpr int64_t FLOW_PINS = 20; // that flows on a level may look at, for each of its own
constexpr int64_t LEAST_FLOW_PINS = 10000;
constexpr int MOST_BOLD = 6000; // vertices of a level that is refined boldly: larger ones gain less
constexpr int FLOW_GROWTH = 2;  // flows come again once a level has so many times the vertices

static PartCtrl coarsening_ctrl(const SearchTask *task, const Pass *pass)
{
    PartCtrl ctrl = {};
    ctrl.nparts = task->bounds->nparts;
    ctrl.CoarsenTo = pass->coarsest;
    ctrl.Nruns = 1;
    ctrl.splitratio = 0.5f;
    ctrl.RType = RTYPE_FM;
    ctrl.maxnetsize = task->maxnetsize;
    ctrl.CType = pass->scheme;
    ctrl.seed = static_cast<int>(pass->seed % 2147483647u);
    ctrl.random = own_generator(static_cast<unsigned>(ctrl.seed));
    ctrl.MaxCellWgt = ComputeMaxCellWgt__(&ctrl, task->graph->ncells, task->graph->cellwgt);
    // a cluster must fit into a part with others
    int64_t most = task->bounds->most[0];
    for (int p = 1; p < task->bounds->nparts; p++) most = std::min(most, task->bounds->most[p]);
    ctrl.MaxCellWgt =
        std::min(ctrl.MaxCellWgt, static_cast<int>(std::min<int64_t>(most / 8 + 1, 1 << 30)));
    return ctrl;
}

static void refine_level_by_flows(const SearchTask *task, Parts *parts)
{
    const HGraph *const graph = parts->graph;
    FlowWork work;
    FlowOptions options = FLOW_OPTIONS;
    options.cancel = task->cancel;
    options.budget = FLOW_PINS * std::max<int64_t>(graph->netptr[graph->nnets], LEAST_FLOW_PINS);
    open_flow_work(&work, graph);
    refine_by_flows(parts, &options, &work);
    close_flow_work(&work);
}

/* Refines where [ncells] of one level, by flows as well if that is said. */
static void refine_level(const SearchTask *task, const Pass *pass, const HGraph *graph, bool flows,
                         Random *random, int *where)
{
    if (graph->ncells == 0) return;
    assert(pass->rounds > 0 && (graph->nfixed == 0 || graph->nfixed == task->bounds->nparts));
    Parts parts;
    KwayFmWork work;
    open_parts(&parts, graph, task->bounds, task->objective,
               graph->nfixed > 0 ? task->fixed : nullptr);
    open_kway_fm(&work, graph, task->bounds->nparts, task->objective);
    work.cancel = task->cancel;
    load_parts(&parts, where);
    rebalance(&parts, &work);
    refine_kway_fm(&parts, &work, pass->rounds, random);
    if (pass->bold && graph->ncells < MOST_BOLD) refine_boldly(&parts, &work, pass->rounds, random);
    if (flows) refine_level_by_flows(task, &parts);
    icopy__(graph->ncells, parts.part, where);
    close_kway_fm(&work);
    close_parts(&parts);
}

/* Gives the parked vertices parts, each the one with the most room: they cost nothing anywhere. */
static void place_islands(const SearchTask *task, HGraph *graph)
{
    if (graph->nislands == 0) return;
    const int k = task->bounds->nparts;
    int64_t *room = alloc_array<int64_t>(static_cast<size_t>(k), "search: room");
    std::copy(task->bounds->most, task->bounds->most + k, room);
    for (int v = 0; v < graph->ncells; v++) room[graph->where[v]] -= graph->cellwgt[v];
    for (int v = graph->ncells; v < graph->ncells + graph->nislands; v++) {
        const int p = static_cast<int>(std::max_element(room, room + k) - room);
        assert(0 <= p && p < k);
        graph->where[v] = p;
        room[p] -= graph->cellwgt[v];
    }
    QXfree__(&room, LTERM);
}

/* The objective of where on graph, with the excess in front. */
struct Value {
    int64_t excess, objective;
};

static bool better(Value a, Value b)
{
    return a.excess != b.excess ? a.excess < b.excess : a.objective < b.objective;
}

static Value value_of(const SearchTask *task, const HGraph *graph, const int *where)
{
    return {excess_of_partition(task->bounds, graph->ncells, graph->cellwgt, where),
            objective_of(graph, task->bounds->nparts, task->objective, where)};
}

/* Partitions the coarsest level: the best of start, if where holds it, and of the trials. */
static void partition_coarsest(const SearchTask *task, const Pass *pass, HGraph *graph,
                               Random *random, int *where, bool has_start)
{
    const size_t n = static_cast<size_t>(graph->ncells + graph->nislands) + 1;
    int *trial = imalloc__(n, "search: trial");
    Value best = {INT64_MAX, INT64_MAX};
    if (has_start) {
        refine_level(task, pass, graph, pass->flows, random, where);
        best = value_of(task, graph, where);
    }
    for (int t = 0; t < pass->ntrials; t++) {
        const BisectOptions options = {
            1, VCYCLE_NO, t % 2 == 0 ? CTYPE_HFC : CTYPE_FC, task->maxnetsize,
            static_cast<int>((pass->seed * 1000003 + static_cast<uint64_t>(t)) % 2147483647u)};
        bisect_recursively(task, graph, &options, trial);
        refine_level(task, pass, graph, pass->flows, random, trial);
        const Value value = value_of(task, graph, trial);
        if (!better(value, best)) continue;
        best = value;
        icopy__(graph->ncells, trial, where);
    }
    QXfree__(&trial, LTERM);
}

/* Carries the partition of graph to its finer level, frees graph, returns the finer level. */
static HGraph *project(HGraph *graph)
{
    HGraph *const finer = graph->finer;
    const size_t n = static_cast<size_t>(finer->ncells + finer->nislands) + 1;
    QXfree__(&finer->where, LTERM);
    finer->where = imalloc__(n, "search: where");
    for (int v = 0; v < finer->ncells; v++) {
        assert(0 <= finer->cellmap[v] && finer->cellmap[v] < graph->ncells + graph->nislands);
        finer->where[v] = graph->where[finer->cellmap[v]];
    }
    FreeHGraph__(graph);
    finer->coarser = nullptr;
    return finer;
}

int64_t make_pass(const SearchTask *task, const Pass *pass, int *part)
{
    HGraph *const whole = task->graph;
    assert(pass->coarsest > 0 && (pass->start == nullptr || pass->label != nullptr));
    assert(pass->ntrials > 0 || pass->start != nullptr);
    PartCtrl ctrl = coarsening_ctrl(task, pass);
    Random random = random_for(pass->seed, 0);
    HGraph *const finest = PruneHGraph__(&ctrl, whole);
    const int n = whole->ncells;
    int nlabels = 0;
    int *partof = nullptr; // of each label
    if (pass->label != nullptr) {
        finest->where = imalloc__(static_cast<size_t>(n) + 1, "search: labels");
        icopy__(n, pass->label, finest->where);
        for (int v = 0; v < n; v++) nlabels = std::max(nlabels, pass->label[v] + 1);
        if (pass->start != nullptr) {
            partof = ismalloc__(static_cast<size_t>(nlabels), 0, "search: part of label");
            for (int v = 0; v < n; v++) partof[pass->label[v]] = pass->start[v];
            for (int v = 0; v < n; v++) assert(partof[pass->label[v]] == pass->start[v]);
        }
    }
    HGraph *graph = pass->label != nullptr ? CCoarsen__(&ctrl, finest) : Coarsen__(&ctrl, finest);
    if (graph->where == nullptr)
        graph->where =
            imalloc__(static_cast<size_t>(graph->ncells + graph->nislands) + 1, "search: where");
    if (partof != nullptr)
        for (int v = 0; v < graph->ncells + graph->nislands; v++)
            graph->where[v] = partof[graph->where[v]];
    partition_coarsest(task, pass, graph, &random, graph->where, partof != nullptr);
    place_islands(task, graph);
    int64_t nflown = graph->ncells; // vertices of the level that flows refined last
    while (graph != finest) {
        graph = project(graph);
        const bool flows =
            pass->flows && (graph == finest || graph->ncells >= FLOW_GROWTH * nflown);
        if (flows) nflown = graph->ncells;
        refine_level(task, pass, graph, flows, &random, graph->where);
        place_islands(task, graph);
    }
    CombineIslands__(graph);
    assert(graph->ncells == n && graph == finest);
    icopy__(n, graph->where, part);
    if (graph->nnets < whole->nnets) refine_level(task, pass, whole, pass->flows, &random, part);
    free_cycle_arrays(graph);
    FreeHGraph__(graph);
    QXfree__(&partof, LTERM);
    Value value = value_of(task, whole, part);
    if (pass->start != nullptr) {
        const Value start = value_of(task, whole, pass->start);
        if (!better(value, start)) {
            icopy__(n, pass->start, part);
            value = start;
        }
    }
    return value.objective;
}
