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
#include <atomic>
#include <cassert>
#include <chrono>
#include <climits>
#include <mutex>

#include "core/ctrl.h"
#include "core/errors.h"
#include "core/heavy_assert.h"
#include "core/memory.h"
#include "core/vectors.h"
#include "search/bisect.h"
#include "search/exact.h"
#include "search/multilevel.h"
#include "search/overlay.h"
#include "search/pool.h"
#include "search/rebalance.h"

constexpr int MOST_BATCH = 16; // combinations at a time, however wide the schedule

constexpr int64_t MANY_PINS = 400000; // one partition from scratch is a good one, and takes long

const Schedule SCHEDULES[NPRESETS] = {
    {"fast", 4, 0, 1, 1, 1, 1500, 500, 2, 1, false, 100000},
    {"default", 6, 0, 1, 4, 2, 2000, 500, 3, 1, true, 1000000},
    {"best", 16, 0, 2, 24, 4, 2000, 1000, 6, 2, true, 20000000},
};

const char *const STEP_NAMES[NSTEPS] = {"packing", "start", "member", "combination", "exact"};

Schedule schedule_for(Preset preset, int64_t npins, int nparts)
{
    Schedule schedule = SCHEDULES[preset];
    if (preset == PRESET_FAST && nparts == 2) schedule.nmembers = 3;
    if (npins <= MANY_PINS) return schedule;
    if (preset == PRESET_FAST) schedule.nmembers = nparts == 2 ? 1 : 2;
    // Where hyperedges join what has nothing else in common, no coarsening of ours comes near a run
    // of the engine; elsewhere that is as good as any other member, and takes half of the time.
    schedule.nengine = nparts == 2;
    return schedule;
}

Schedule widened(const Schedule *schedule, int nmembers)
{
    Schedule wide = *schedule;
    wide.nmembers = nmembers;
    wide.ncombined = static_cast<int>(std::min<int64_t>(
        int64_t{schedule->ncombined} * nmembers / schedule->nmembers, INT_MAX - int64_t{nmembers}));
    wide.batch = std::clamp(nmembers / 4, schedule->batch, MOST_BATCH);
    return wide;
}

constexpr uint64_t PARENTS = uint64_t{1}
                             << 40;  // generators that draw parents are numbered from here
constexpr int COARSEST_A_PART = 150; // vertices of the coarsest level, at least
constexpr int MOST_NET_SIZE = 1000;  // larger hyperedges never take part in coarsening
constexpr int ENDLESS_POOL = 16;     // partitions that a search without an end keeps, at least
constexpr int ENDLESS_COMBINED = 4;  // combinations that it makes for each new member
constexpr int MOST_JOBS = INT_MAX - MOST_BATCH - MOST_POOL; // jobs are numbered by ints
constexpr int64_t RATING_COST = 64; // pins looked at for each when clusters are formed
struct Search {
    const FlatHypergraph *flat;
    const SearchOptions *options;
    const Reduction *reduction;
    SearchTask task;
    Pool pool;
    int njobs, alljobs; // that gave a result, and all of the schedule
    int next;           // number of the next job; those that nobody has made yet have one too
    Found best;         // published
    int *whole;         // [nvtxs] for publishing
    std::mutex publishing;
    bool stopped; // by the fleet
    SearchReport report;
};

static size_t at_least_one(int n)
{
    return n > 0 ? static_cast<size_t>(n) : 1;
}

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

/* The graph of all clusters: islands have empty ranges at the end of the incidence. */
static HGraph with_islands(const Reduction *reduction)
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

static void measure(const Search *search, Member *member)
{
    const Bounds *const bounds = search->task.bounds;
    const Reduction *const reduction = search->reduction;
    int64_t *weight = alloc_array<int64_t>(at_least_one(bounds->nparts), "search: weights");
    std::fill(weight, weight + bounds->nparts, 0);
    for (int c = 0; c < reduction->nclusters; c++) {
        assert(0 <= member->part[c] && member->part[c] < bounds->nparts);
        assert(reduction->fixed == nullptr || reduction->fixed[c] < 0 ||
               reduction->fixed[c] == member->part[c]);
        weight[member->part[c]] += reduction->weight[c];
    }
    member->excess = 0;
    for (int p = 0; p < bounds->nparts; p++) member->excess += excess_at(bounds, p, weight[p]);
    member->objective =
        objective_of(reduction->graph, bounds->nparts, search->task.objective, member->part);
    QXfree__(&weight, LTERM);
}

/* Tries to bring member within the bounds by moves of all clusters, islands included. */
static void mend(const Search *search, Member *member)
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

/* Gives the islands parts, the heaviest first, and sees to the bounds. */
static void complete(const Search *search, Member *member)
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

static void publish(Search *search, const Member *member, const char *step)
{
    [[maybe_unused]] const Member shown = {nullptr, search->best.objective, search->best.excess};
    assert(!better(&shown, member));
    search->best = {member->objective, member->excess, search->njobs, search->alljobs, step};
    if (search->options->publish == nullptr) return;
    for (int v = 0; v < search->flat->nvtxs; v++)
        search->whole[v] = member->part[search->reduction->cluster[v]];
    search->options->publish(search->options->user, search->whole, &search->best);
}

/* Shows member to the caller at once if it is better than what was shown. */
static void publish_if_better(Search *search, const Member *member, const char *step)
{
    search->publishing.lock();
    const Member shown = {nullptr, search->best.objective, search->best.excess};
    if (better(member, &shown)) publish(search, member, step);
    search->publishing.unlock();
}

/* Takes member, whose part it owns from now on, into the pool if it is good enough. */
static void take_in(Search *search, Member member, SearchStep step, double seconds)
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

static void show_report(const Search *search)
{
    if (search->options->report != nullptr) *search->options->report = search->report;
}

static double seconds_now()
{
    using namespace std::chrono;
    return duration<double>(steady_clock::now().time_since_epoch()).count();
}

static Member new_member(const Search *search)
{
    return {imalloc__(at_least_one(search->reduction->nclusters), "search: member"), 0, 0};
}

/* Jobs of one batch. */
struct Batch {
    Search *search;
    const Fleet *fleet;
    SearchStep step;
    int first, n;    // numbers of the jobs
    double *seconds; // [n] that each took
    Member *results; // [n] part is null until there is one
    void (*work)(const Search *search, int job, Member *result);
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
            const double start = seconds_now();
            batch->work(search, result.job, &member);
            complete(search, &member);
            batch->seconds[result.job - batch->first] = seconds_now() - start;
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

static void make_member(const Search *search, int job, Member *result);

/* Makes n jobs, several at a time, and takes their results in by number. */
static void make_batch(Search *search, int n, SearchStep step,
                       void (*work)(const Search *search, int job, Member *result))
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
        batch.fleet->open(batch.fleet->user, batch.first, batch.n, work == make_member,
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

static void make_member(const Search *search, int job, Member *result)
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

static void combine(const Search *search, int job, Member *result)
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

static void take_start(Search *search)
{
    const int *const start = search->options->start;
    if (start == nullptr) return;
    const double begun = seconds_now();
    Member member = new_member(search);
    for (int v = 0; v < search->flat->nvtxs; v++)
        member.part[search->reduction->cluster[v]] = start[v];
    for (int c = 0; search->reduction->fixed != nullptr && c < search->reduction->nclusters; c++)
        if (search->reduction->fixed[c] >= 0) member.part[c] = search->reduction->fixed[c];
    measure(search, &member);
    if (member.excess > 0) mend(search, &member);
    publish_if_better(search, &member, STEP_NAMES[STEP_START]);
    take_in(search, member, STEP_START, seconds_now() - begun);
}

/* A partition within the bounds at once, however bad. */
static void take_packing(Search *search)
{
    const double begun = seconds_now();
    Member member = new_member(search);
    HGraph graph = {};
    graph.ncells = search->reduction->nclusters;
    graph.cellwgt = search->reduction->weight;
    pack(&graph, search->task.bounds, search->reduction->fixed, false, member.part);
    measure(search, &member);
    publish_if_better(search, &member, STEP_NAMES[STEP_PACKING]);
    take_in(search, member, STEP_PACKING, seconds_now() - begun);
}

/* Replaces the best partition of a very small hypergraph by an optimum; false if it may not be one.
 */
static bool solve_small(Search *search)
{
    const Reduction *const reduction = search->reduction;
    if (reduction->nclusters > EXACT_VERTICES || search->task.bounds->nparts > EXACT_PARTS)
        return false;
    const double begun = seconds_now();
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
    take_in(search, member, STEP_EXACT, seconds_now() - begun);
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
