// SPDX-License-Identifier: MIT
/* search/job_batch.cpp: threads take numbers of jobs until there are none left. Results wait for
 * the end of the batch and are taken in by number, whoever was first. */
#include "search/job_batch.h"

#include <algorithm>
#include <atomic>
#include <cassert>

#include "core/errors.h"
#include "core/memory.h"

/* Jobs of one batch. */
struct Batch {
    Search *search;
    const Fleet *fleet;
    SearchStep step;
    int first, n;    // numbers of the jobs
    double *seconds; // [n] that each took
    Member *results; // [n] part is null until there is one
    JobWork *work;
    std::atomic<int> next; // without a fleet: the first that nobody makes
};

/* This process makes all jobs. */
static FleetTurn next_here(void *place, JobResult *result)
{
    Batch *const batch = static_cast<Batch *>(place);
    const int i = batch->next++;
    result->job = batch->first + i;
    return i < batch->n ? FLEET_MAKE : FLEET_OVER;
}

/* What others have made is counted again: a wrong file or another version must not pass. */
static void check_taken(const Search *search, const JobResult *result, Member *member)
{
    const Reduction *const reduction = search->reduction;
    bool right = true;
    for (int c = 0; c < reduction->nclusters && right; c++) {
        const int p = member->part[c],
                  fixed = reduction->fixed != nullptr ? reduction->fixed[c] : -1;
        right = 0 <= p && p < search->task.bounds->nparts && (fixed < 0 || fixed == p);
    }
    if (right) measure(search, member);
    if (!right || member->objective != result->objective || member->excess != result->excess)
        errexit__("What others made of job %d of the search is not what they say.", result->job);
}

static void file_result(Batch *batch, int job, Member *member)
{
    publish_if_better(batch->search, member, STEP_NAMES[batch->step]);
    Search *const search = batch->search;
    const int i = job - batch->first;
    assert(0 <= i && i < batch->n);
    search->publishing.lock();
    std::swap(batch->results[i], *member);
    search->publishing.unlock();
    if (member->part != nullptr)
        QXfree__(&member->part, LTERM); // it was there already
    else if (search->options->done != nullptr)
        __atomic_fetch_add(search->options->done, 1, __ATOMIC_RELAXED);
}

static void work_off(void *place)
{
    Batch *const batch = static_cast<Batch *>(place);
    Search *const search = batch->search;
    const Fleet *const fleet = batch->fleet;
    for (;;) {
        Member member = new_member(search);
        JobResult result = {0, 0, 0, member.part};
        const FleetTurn turn = fleet->turn(fleet->user, &result);
        if (turn == FLEET_MAKE) {
            const double start = search_seconds();
            batch->work(search, result.job, &member);
            complete(search, &member);
            batch->seconds[result.job - batch->first] = search_seconds() - start;
            result = {result.job, member.objective, member.excess, member.part};
            if (fleet->made != nullptr) fleet->made(fleet->user, &result);
        } else if (turn == FLEET_TAKE) {
            check_taken(search, &result, &member);
        } else {
            QXfree__(&member.part, LTERM);
            if (turn == FLEET_STOP) __atomic_store_n(&search->stopped, true, __ATOMIC_RELAXED);
            return;
        }
        file_result(batch, result.job, &member);
    }
}

void make_batch(Search *search, int n, SearchStep step, JobWork *work)
{
    constexpr int MOST = MOST_POOL;
    const SearchOptions *const options = search->options;
    Member results[MOST] = {};
    double seconds[MOST] = {};
    Batch batch = {search,  options->fleet, step, search->next, std::min(n, MOST),
                   seconds, results,        work, {0}};
    const Fleet here = {&batch, nullptr, next_here, nullptr};
    if (batch.fleet == nullptr) batch.fleet = &here;
    if (batch.fleet->open != nullptr)
        batch.fleet->open(batch.fleet->user, batch.first, batch.n, step == STEP_MEMBER,
                          search->reduction->nclusters);
    void *threads[MOST];
    int nthreads = 0;
    while (options->crew != nullptr && nthreads + 1 < std::min(options->threads, batch.n)) {
        threads[nthreads] = options->crew->start(work_off, &batch);
        if (threads[nthreads] == nullptr) break;
        nthreads++;
    }
    work_off(&batch);
    for (int i = 0; i < nthreads; i++) options->crew->await(threads[i]);
    for (int i = 0; i < batch.n; i++)
        if (results[i].part != nullptr) {
            search->njobs++;
            take_in(search, results[i], step, seconds[i]);
        }
    search->next += batch.n; // and not by what came back: a shard lacks what is of others
    assert(search->njobs <= search->next);
    search->report.generations += step == STEP_COMBINATION;
    show_report(search);
}
