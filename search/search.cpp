// SPDX-License-Identifier: MIT
/* search/search.cpp: a pool of partitions, improved by combining the best of them.
 *
 * Jobs are numbered: first the members of the pool, then combinations in batches. What a job does
 * depends on its number, the seed and the results of earlier batches only, and results are taken
 * in by number: so neither threads nor timing change what is found.
 *
 * Stages: reduce, pack, members, batches of combinations, complete by the islands.
 */
#include "search/search.h"

#include <algorithm>
#include <cassert>
#include <climits>

#include "core/memory.h"
#include "core/vectors.h"
#include "search/exact.h"
#include "search/job_batch.h"
#include "search/job_kinds.h"
#include "search/rebalance.h"

constexpr int MOST_NET_SIZE = 1000; // larger hyperedges never take part in coarsening
constexpr int64_t RATING_COST = 64; // pins looked at for each when clusters are formed
constexpr int ENDLESS_POOL = 16;    // partitions that a search without an end keeps, at least
constexpr int ENDLESS_COMBINED = 4; // combinations that it makes for each new member
constexpr int MOST_JOBS = INT_MAX - MOST_BATCH - MOST_POOL; // jobs are numbered by ints

const char *const STEP_NAMES[NSTEPS] = {"packing", "start", "member", "combination", "exact"};

/* Hyperedges above this size stay out of coarsening: 50 at least, as in the engine, and more while
 * looking at every pin's neighbours costs a bounded number of pins. */
static int size_limit(const HGraph *graph)
{
    int *count = ismalloc__(MOST_NET_SIZE + 1, 0, "search: sizes");
    for (int e = 0; e < graph->nnets; e++)
        if (net_size(graph, e) <= MOST_NET_SIZE) count[net_size(graph, e)]++;
    const int64_t most = RATING_COST * graph->netptr[graph->nnets];
    assert(most >= 0);
    int64_t cost = 0;
    int limit = 0;
    for (int64_t size = 0; size <= MOST_NET_SIZE; size++) {
        cost += count[size] * size * size;
        if (cost > most) break;
        limit = static_cast<int>(size);
    }
    QXfree__(&count, LTERM);
    return std::max(limit, MAX_NET_SIZE);
}

static void take_start(Search *search)
{
    const int *const start = search->options->start;
    if (start == nullptr) return;
    const double begun = search_seconds();
    Member member = new_member(search);
    for (int v = 0; v < search->flat->nvtxs; v++)
        member.part[search->reduction->cluster[v]] = start[v];
    for (int c = 0; search->reduction->fixed != nullptr && c < search->reduction->nclusters; c++)
        if (search->reduction->fixed[c] >= 0) member.part[c] = search->reduction->fixed[c];
    measure(search, &member);
    if (member.excess > 0) mend(search, &member);
    publish_if_better(search, &member, STEP_NAMES[STEP_START]);
    take_in(search, member, STEP_START, search_seconds() - begun);
}

/* A partition within the bounds at once, however bad. */
static void take_packing(Search *search)
{
    const double begun = search_seconds();
    Member member = new_member(search);
    HGraph graph = {};
    graph.ncells = search->reduction->nclusters;
    graph.cellwgt = search->reduction->weight;
    pack(&graph, search->task.bounds, search->reduction->fixed, false, member.part);
    measure(search, &member);
    publish_if_better(search, &member, STEP_NAMES[STEP_PACKING]);
    take_in(search, member, STEP_PACKING, search_seconds() - begun);
}

/* Replaces the best partition of a very small hypergraph by an optimum; false if it may not be one.
 */
static bool solve_small(Search *search)
{
    const Reduction *const reduction = search->reduction;
    if (reduction->nclusters > EXACT_VERTICES || search->task.bounds->nparts > EXACT_PARTS)
        return false;
    const double begun = search_seconds();
    Member member = new_member(search);
    const Member *const best = &search->pool.members[0];
    icopy__(reduction->nclusters, best->part, member.part);
    member.objective = best->objective;
    member.excess = best->excess;
    HGraph graph = with_islands(reduction);
    const bool solved = solve_exactly(&graph, search->task.bounds, search->task.objective,
                                      reduction->fixed, search->options->schedule.exact,
                                      &member.objective, &member.excess, member.part);
    QXfree__(&graph.incptr, LTERM);
    publish_if_better(search, &member, STEP_NAMES[STEP_EXACT]);
    take_in(search, member, STEP_EXACT, search_seconds() - begun);
    return solved && search->best.excess == 0;
}

static bool is_over(const Search *search)
{
    return search->stopped || is_cancelled(&search->task) || search->next > MOST_JOBS ||
           (search->best.objective == 0 && search->best.excess == 0);
}

static void make_members(Search *search, int n)
{
    for (int made = 0; made < n && !is_over(search); made += MOST_POOL)
        make_batch(search, std::min(n - made, MOST_POOL), STEP_MEMBER, make_member);
}

static void make_combinations(Search *search, int n)
{
    const int batch = search->options->schedule.batch;
    for (int made = 0; made < n && !is_over(search); made += batch)
        make_batch(search, std::min(n - made, batch), STEP_COMBINATION, combine);
}

static void run_schedule(Search *search)
{
    const Schedule *const schedule = &search->options->schedule;
    make_members(search, schedule->nmembers);
    make_combinations(search, schedule->ncombined);
    // without an end: fresh blood from time to time, or the pool has nothing left to combine
    while (search->options->endless && !is_over(search)) {
        make_members(search, schedule->batch);
        make_combinations(search, ENDLESS_COMBINED * schedule->batch);
    }
}

Found search_partition(const FlatHypergraph *flat, const Constraints *constraints,
                       const Bounds *bounds, Objective objective, const SearchOptions *options,
                       int *part)
{
    Reduction reduction;
    open_reduction(&reduction, flat, constraints, bounds->nparts);
    Search search = {};
    search.best = {INT64_MAX, INT64_MAX, 0, 0, ""};
    search.flat = flat;
    search.options = options;
    search.reduction = &reduction;
    search.task = {reduction.graph, bounds, objective, reduction.fixed, size_limit(reduction.graph),
                   options->cancel};
    search.pool.most = std::clamp(options->schedule.nmembers, 1, MOST_POOL);
    if (options->endless) search.pool.most = std::max(search.pool.most, ENDLESS_POOL);
    search.whole = imalloc__(at_least_one(flat->nvtxs), "search: whole");
    search.alljobs =
        options->endless ? -1 : options->schedule.nmembers + options->schedule.ncombined;
    take_packing(&search);
    take_start(&search);
    // what never ends begins with the optimum, in case there is nothing left to do
    const bool solved = options->endless && solve_small(&search);
    if (reduction.graph->nnets > 0 && bounds->nparts > 1 && !solved) run_schedule(&search);
    if (!options->endless) solve_small(&search);
    // of equals the first by number is delivered, whichever was published
    publish(&search, &search.pool.members[0], search.best.step);
    for (int v = 0; v < flat->nvtxs; v++)
        part[v] = search.pool.members[0].part[reduction.cluster[v]];
    show_report(&search);
    close_pool(&search.pool);
    QXfree__(&search.whole, LTERM);
    close_reduction(&reduction);
    return search.best;
}
