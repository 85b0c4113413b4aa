// SPDX-License-Identifier: MIT
/* search/job_kinds.cpp: members by coarsenings of their own, and combinations of two. */
#include "search/job_kinds.h"

#include <algorithm>
#include <cassert>

#include "core/memory.h"
#include "core/vectors.h"
#include "search/bisect.h"
#include "search/multilevel.h"
#include "search/overlay.h"
#include "search/rebalance.h"

// generators that draw parents are numbered from here
constexpr uint64_t PARENTS = uint64_t{1} << 40;
constexpr int COARSEST_A_PART = 150; // vertices of the coarsest level, at least
constexpr double ROOM = 0.06;        // above its share, for a part while a roomy member is made

static uint64_t seed_of(const Search *search, int job)
{
    Random random = random_for(search->options->seed, static_cast<uint64_t>(job) + 2);
    return next_random(&random) >> 16;
}

static Pass base_pass(const Search *search, int job)
{
    const Schedule *const schedule = &search->options->schedule;
    Pass pass = {};
    pass.ntrials = schedule->ntrials;
    pass.rounds = schedule->rounds;
    pass.bold = schedule->bold && search->task.bounds->nparts > 2;
    pass.seed = seed_of(search, job);
    return pass;
}

/* How far a member is coarsened. A hypergraph that is small already is coarsened as well, and of
 * many members some further than others: what starts alike ends alike. */
static int member_coarsest(const Search *search, int job)
{
    const int n = search->task.graph->ncells;
    const int coarsest = std::min(search->options->schedule.coarsest, n / 2) >> (job / 4 % 3);
    return std::max(coarsest, COARSEST_A_PART * search->task.bounds->nparts);
}

static void make_engine_member(const Search *search, int job, Member *result)
{
    const int seed = static_cast<int>(seed_of(search, job) % 2147483647u);
    const BisectOptions options = {1, VCYCLE_NO, CTYPE_HFC, MAX_NET_SIZE, seed};
    bisect_recursively(&search->task, search->task.graph, &options, result->part);
}

static Pass member_pass(const Search *search, int job)
{
    Pass pass = base_pass(search, job);
    pass.scheme = job % 2 == 0 ? CTYPE_HFC : CTYPE_FC;
    pass.coarsest = member_coarsest(search, job);
    pass.flows = search->options->schedule.flows > 1;
    return pass;
}

static int combined_coarsest(const Search *search)
{
    return std::max(search->options->schedule.combined_coarsest,
                    COARSEST_A_PART / 2 * search->task.bounds->nparts);
}

/* By how much bounds have to be multiplied so that every part has some room above its share. */
static double missing_room(const Search *search)
{
    const Bounds *const bounds = search->task.bounds;
    const Reduction *const reduction = search->reduction;
    double total = 0, most = 0;
    for (int c = 0; c < reduction->nclusters; c++) total += reduction->weight[c];
    for (int p = 0; p < bounds->nparts; p++) most += static_cast<double>(bounds->most[p]);
    return most > 0 ? std::max(1.0, (1 + ROOM) * total / most) : 1.0;
}

/* Brings part into the bounds: a V-cycle whose coarse levels move whole clusters at small loss. */
static void bring_back(const Search *search, int job, int *part)
{
    const int n = search->task.graph->ncells;
    int *start = imalloc__(at_least_one(n), "search: start");
    icopy__(n, part, start);
    Pass pass = member_pass(search, job);
    pass.seed++;
    pass.ntrials = 0;
    pass.label = pass.start = start;
    pass.scheme = job % 2 == 0 ? RESTRICTED_STARS : RESTRICTED_EDGES;
    pass.coarsest = combined_coarsest(search);
    make_pass(&search->task, &pass, part);
    QXfree__(&start, LTERM);
}

/* A member within bounds that have some room, brought back into its own afterwards. Levels of a
 * large hypergraph leave much to be refined, and full parts let nothing move. */
static void make_roomy_member(const Search *search, int job, double factor, int *part)
{
    const Bounds *const own = search->task.bounds;
    int64_t *most = alloc_array<int64_t>(static_cast<size_t>(own->nparts), "search: room");
    for (int p = 0; p < own->nparts; p++)
        most[p] = static_cast<int64_t>(factor * static_cast<double>(own->most[p]));
    const Bounds roomy = {own->nparts, most, own->least};
    const HGraph *const graph = search->task.graph;
    SearchTask task = search->task;
    task.bounds = &roomy;
    const Pass pass = member_pass(search, job);
    assert(factor > 1);
    make_pass(&task, &pass, part);
    QXfree__(&most, LTERM);
    if (excess_of_partition(own, graph->ncells, graph->cellwgt, part) > 0)
        bring_back(search, job, part);
}

void make_member(const Search *search, int job, Member *result)
{
    const Schedule *const schedule = &search->options->schedule;
    if (job < schedule->nengine) {
        make_engine_member(search, job, result);
        return;
    }
    const double factor = schedule->roomy && job % 2 == 1 ? missing_room(search) : 1;
    if (factor > 1) {
        make_roomy_member(search, job, factor, result->part);
        return;
    }
    const Pass pass = member_pass(search, job);
    make_pass(&search->task, &pass, result->part);
}

void combine(const Search *search, int job, Member *result)
{
    const Schedule *const schedule = &search->options->schedule;
    const Pool *const pool = &search->pool;
    const int n = search->task.graph->ncells, k = search->task.bounds->nparts;
    const int turn = job - schedule->nmembers;
    int first, second;
    Random random = random_for(search->options->seed, PARENTS + static_cast<uint64_t>(job));
    choose_parents(pool, turn % schedule->batch + turn / schedule->batch % 2, &random, &first,
                   &second);
    int *label = ismalloc__(at_least_one(n), 0, "search: label");
    split_cells(n, pool->members[first].part, k, label);
    split_cells(n, pool->members[second].part, k, label);
    Pass pass = base_pass(search, job);
    assert(first < pool->n && second < pool->n);
    pass.label = label;
    pass.start = pool->members[first].part;
    pass.scheme = turn % 2 == 0 ? RESTRICTED_STARS : RESTRICTED_EDGES;
    pass.coarsest = combined_coarsest(search);
    pass.flows = schedule->flows > 0;
    make_pass(&search->task, &pass, result->part);
    QXfree__(&label, LTERM);
}
