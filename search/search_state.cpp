// SPDX-License-Identifier: MIT
/* search/search_state.cpp: what becomes of a partition that a step has made. */
#include "search/search_state.h"

#include <algorithm>
#include <cassert>
#include <chrono>

#include "core/heavy_assert.h"
#include "core/memory.h"
#include "core/vectors.h"
#include "search/rebalance.h"

HGraph with_islands(const Reduction *reduction)
{
    HGraph graph = *reduction->graph;
    graph.ncells = reduction->nclusters;
    graph.cellwgt = reduction->weight;
    graph.incptr = imalloc__(at_least_one(reduction->nclusters) + 1, "search: incidence");
    const int kept = reduction->graph->ncells;
    icopy__(kept + 1, reduction->graph->incptr, graph.incptr);
    for (int c = kept; c < reduction->nclusters; c++) graph.incptr[c + 1] = graph.incptr[kept];
    return graph;
}

void measure(const Search *search, Member *member)
{
    const Bounds *const bounds = search->task.bounds;
    const Reduction *const reduction = search->reduction;
    for (int c = 0; c < reduction->nclusters; c++)
        assert(reduction->fixed == nullptr || reduction->fixed[c] < 0 ||
               reduction->fixed[c] == member->part[c]);
    member->excess =
        excess_of_partition(bounds, reduction->nclusters, reduction->weight, member->part);
    member->objective =
        objective_of(reduction->graph, bounds->nparts, search->task.objective, member->part);
}

void mend(const Search *search, Member *member)
{
    HGraph graph = with_islands(search->reduction);
    Parts parts;
    KwayFmWork work;
    open_parts(&parts, &graph, search->task.bounds, search->task.objective,
               search->reduction->fixed);
    open_kway_fm(&work, &graph, parts.nparts, parts.objective);
    load_parts(&parts, member->part);
    rebalance(&parts, &work);
    if (!within_bounds(&parts)) {
        pack(&graph, parts.bounds, parts.fixed, true, parts.part);
        load_parts(&parts, parts.part);
    }
    if (!within_bounds(&parts)) {
        pack(&graph, parts.bounds, parts.fixed, false, parts.part);
        load_parts(&parts, parts.part);
    }
    Random random = random_for(search->options->seed, 1);
    if (within_bounds(&parts)) refine_kway_fm(&parts, &work, 3, &random);
    HEAVY_ASSERT(parts_ok(&parts));
    if (excess_of(&parts) < member->excess) {
        icopy__(graph.ncells, parts.part, member->part);
        measure(search, member);
        assert(member->excess == excess_of(&parts));
    }
    close_kway_fm(&work);
    close_parts(&parts);
    QXfree__(&graph.incptr, LTERM);
}

void complete(const Search *search, Member *member)
{
    const Reduction *const reduction = search->reduction;
    const Bounds *const bounds = search->task.bounds;
    const int kept = reduction->graph->ncells, nislands = reduction->nclusters - kept;
    if (nislands > 0) {
        int64_t *weight = alloc_array<int64_t>(at_least_one(bounds->nparts), "search: weights");
        int64_t *most = alloc_array<int64_t>(at_least_one(bounds->nparts), "search: room");
        std::fill(weight, weight + bounds->nparts, 0);
        for (int c = 0; c < kept; c++) weight[member->part[c]] += reduction->weight[c];
        for (int p = 0; p < bounds->nparts; p++) most[p] = bounds->most[p] - weight[p];
        HGraph islands = {};
        islands.ncells = nislands;
        islands.cellwgt = reduction->weight + kept;
        const Bounds room = {bounds->nparts, most, most};
        pack(&islands, &room, nullptr, false, member->part + kept);
        QXfree__(&weight, &most, LTERM);
    }
    measure(search, member);
    if (member->excess > 0) mend(search, member);
}

void publish(Search *search, const Member *member, const char *step)
{
    [[maybe_unused]] const Member shown = {nullptr, search->best.objective, search->best.excess};
    assert(!better(&shown, member));
    search->best = {member->objective, member->excess, search->njobs, search->alljobs, step};
    if (search->options->publish == nullptr) return;
    for (int v = 0; v < search->flat->nvtxs; v++)
        search->whole[v] = member->part[search->reduction->cluster[v]];
    search->options->publish(search->options->user, search->whole, &search->best);
}

void publish_if_better(Search *search, const Member *member, const char *step)
{
    search->publishing.lock();
    const Member shown = {nullptr, search->best.objective, search->best.excess};
    if (better(member, &shown)) publish(search, member, step);
    search->publishing.unlock();
}

void take_in(Search *search, Member member, SearchStep step, double seconds)
{
    Pool *const pool = &search->pool;
    StepReport *const report = &search->report.steps[step];
    const bool best = pool->n == 0 || better(&member, &pool->members[0]);
    report->made++;
    report->better += best;
    report->seconds += seconds;
    if (best && pool->n > 0 && pool->members[0].excess == 0)
        report->gained += pool->members[0].objective - member.objective;
    assert(report->gained >= 0);
    take_into_pool(pool, search->reduction->graph, search->reduction->nclusters, member);
    search->report.pool = pool->n;
    HEAVY_ASSERT(pool_ok(pool, search->reduction->graph, search->reduction->nclusters,
                         search->task.bounds->nparts, search->task.objective));
}

void show_report(const Search *search)
{
    if (search->options->report != nullptr) *search->options->report = search->report;
}

double search_seconds()
{
    using namespace std::chrono;
    return duration<double>(steady_clock::now().time_since_epoch()).count();
}

Member new_member(const Search *search)
{
    return {imalloc__(at_least_one(search->reduction->nclusters), "search: member"), 0, 0};
}
