// SPDX-License-Identifier: MIT
/* search/job_kinds.cpp: members by coarsenings of their own, and combinations of two. */
#include "search/job_kinds.h"

#include <algorithm>
#include <cassert>

#include "core/memory.h"
#include "search/bisect.h"
#include "search/multilevel.h"
#include "search/overlay.h"

// generators that draw parents are numbered from here
constexpr uint64_t PARENTS = uint64_t{1} << 40;
constexpr int COARSEST_A_PART = 150; // vertices of the coarsest level, at least

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

void make_member(const Search *search, int job, Member *result)
{
    const Schedule *const schedule = &search->options->schedule;
    if (job < schedule->nengine) {
        make_engine_member(search, job, result);
        return;
    }
    Pass pass = base_pass(search, job);
    pass.scheme = job % 2 == 0 ? CTYPE_HFC : CTYPE_FC;
    pass.coarsest = member_coarsest(search, job);
    pass.flows = schedule->flows > 1;
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
    pass.coarsest = std::max(schedule->combined_coarsest, COARSEST_A_PART / 2 * k);
    pass.flows = schedule->flows > 0;
    make_pass(&search->task, &pass, result->part);
    QXfree__(&label, LTERM);
}
