// SPDX-License-Identifier: MIT
/* zorpelx/lib/starts.cpp: several starts at work in child processes, the best one delivered.
 *
 * The caller's thread hands out starts to idle workers, sleeps until one rings or a moment is
 * over, compares what came out and looks at the clock and the cancel flag. True all the time: best
 * is the best of the starts taken in so far, by an order that no timing can change.
 */
#include <algorithm>
#include <cassert>
#include <climits>
#include <cstring>
#include <memory>
#include <optional>
#include <random>
#include <thread>
#include <tuple>
#include <utility>
#include <vector>

#include "check.h"
#include "evaluate.h"
#include "leaving.h"
#include "limits.h"
#include "records.h"
#include "searching.h"
#include "trim.h"
#include "worker.h"

constexpr double LONGEST_SLEEP = 0.02;   // seconds until a silent death is noticed
constexpr double PROGRESS_EVERY = 0.1;   // seconds
constexpr unsigned MOST_A_PROCESSOR = 2; // jobs or threads: more take memory and bring nothing

/* What decides between one start and another. */
struct Candidate {
    int seed = 0;
    int objective = ZORPELX_CUT;
    int64_t excess = 0; // weight outside the limits
    Fault blemish;      // why it is not valid
    zorpelx_quality quality = {};
    int jobs = 0, alljobs = 0;
    SearchReport report = {};

    int64_t value() const
    {
        return objective == ZORPELX_CUT   ? quality.cut
               : objective == ZORPELX_KM1 ? quality.connectivity
                                          : quality.soed;
    }

    bool better_than(const Candidate &other) const { return rank() < other.rank(); }

  private:
    std::tuple<bool, int64_t, int64_t, int64_t, int64_t, int64_t, int> rank() const
    {
        return {bool(blemish),         excess, value(), quality.cut, quality.soed,
                quality.heaviest_part, seed};
    }
};

static int first_seed(const zorpelx_options &options)
{
    if (options.seed >= 0) return options.seed;
    std::random_device chance;
    return std::uniform_int_distribution<int>(1, INT_MAX - (options.starts - 1))(chance);
}

static unsigned count_processors()
{
    return std::max(1u, std::thread::hardware_concurrency());
}

static size_t count_jobs(const zorpelx_options &options)
{
    const unsigned processors = count_processors();
    const unsigned jobs = options.jobs > 0 ? static_cast<unsigned>(options.jobs) : processors;
    return std::min({jobs, MOST_A_PROCESSOR * processors, static_cast<unsigned>(options.starts)});
}

/* Threads of each of so many jobs. */
static int count_threads(const zorpelx_options &options, size_t njobs)
{
    const unsigned processors = count_processors();
    const unsigned share = std::max(1u, processors / static_cast<unsigned>(njobs));
    const unsigned threads = options.threads > 0 ? static_cast<unsigned>(options.threads) : share;
    return static_cast<int>(std::min(threads, MOST_A_PROCESSOR * processors));
}

/* As many as 64 bits can hold, at most. */
static int64_t all_runs(const zorpelx_options &options)
{
    const int64_t bisections = int64_t{options.starts} * (options.nparts - 1);
    int64_t runs;
    return __builtin_mul_overflow(bisections, options.nruns, &runs) ? INT64_MAX : runs;
}

class Call
{
  public:
    Call(const zorpelx_hypergraph &hypergraph, const zorpelx_options &chosen, Watch &heeded);
    /* Makes all starts, or as many as there is time for; a fault if the caller is to know. */
    Fault run();
    void report(zorpelx_result *result) const;
    void deliver(int *part) const;

    /* For a jump out of the call: from a callback everything is released; from a signal handler,
     * which may have interrupted anything, the children and files are. */
    static void release_after_jump(void *call);

  private:
    using Workers = std::vector<std::unique_ptr<Worker>>;

    bool unfinished() const { return next < o.starts || busy > 0; }
    void hire();
    void hand_out();
    void collect();
    bool time_is_over() const;
    void harvest();
    bool salvage(Worker &worker);
    void take_in(Worker &worker);
    void take_partition(const Worker &worker);
    void note_failure(int seed, const Fault &why);
    Fault blame(const std::vector<int64_t> &pwgts) const;
    Fault outside(const int *part, int p, int64_t weight) const;
    Fault blemish_of(const int *part, const std::vector<int64_t> &pwgts) const;
    void tell_progress(bool now);
    Fault outcome() const;
    template <class Callback> void call_back(const Callback &callback);

    const zorpelx_hypergraph &h;
    const zorpelx_options &o;
    Watch &watch;
    const int seed0;
    const Trimmed trimmed;
    Evaluator evaluator;
    const Charge charge;
    std::vector<Limits> limits; // [nparts]
    Bell bell;
    std::optional<Charge> workers_charge;
    Workers workers;
    int threads = 1;             // of each child
    size_t allowance = SIZE_MAX; // most bytes that a child may add
    int next = 0;                // start to be handed out
    int busy = 0;                // workers at work
    int failed_seed = INT_MAX;
    Fault failure; // of the failed start with the least seed
    int cut_short_seed = INT_MAX;
    Fault cut_short; // the same of the searches that ran out of memory with a partition
    Counts counts;
    double told = 0;          // when progress was told last
    double looked = 0;        // when deaths were looked for last
    bool calling = false;     // the caller's code is at work
    bool told_enough = false; // the progress callback has cancelled
    std::optional<Candidate> best;
    std::vector<int> best_part; // [nvtxs]
};

static int64_t total_weight(const zorpelx_hypergraph &h, Watch &watch)
{
    if (h.vwgts == nullptr) return h.nvtxs;
    int64_t total = 0;
    for (int v = 0; v < h.nvtxs; v++) {
        watch.step();
        total += h.vwgts[v];
    }
    return total;
}

static int weight_of(const zorpelx_hypergraph &h, int v)
{
    return h.vwgts != nullptr ? h.vwgts[v] : 1;
}

/* The part that a vertex of each group is fixed in, or -1; empty without groups. */
static std::vector<int> parts_of_groups(const zorpelx_hypergraph &h, const zorpelx_options &o)
{
    std::vector<int> parts;
    if (o.groups == nullptr) return parts;
    parts.assign(static_cast<size_t>(h.nvtxs), -1);
    for (int v = 0; o.fixed != nullptr && v < h.nvtxs; v++)
        if (o.groups[v] >= 0 && o.fixed[v] >= 0)
            parts[static_cast<size_t>(o.groups[v])] = o.fixed[v];
    return parts;
}

/* The part that a vertex must be in, by itself or by its group, or -1. */
static int part_asked(const zorpelx_options &o, const std::vector<int> &group_parts, int v)
{
    if (o.fixed != nullptr && o.fixed[v] >= 0) return o.fixed[v];
    return o.groups != nullptr && o.groups[v] >= 0 ? group_parts[static_cast<size_t>(o.groups[v])]
                                                   : -1;
}

/* Whether there are vertices with weight for every part, groups counting as one. */
static bool parts_can_be_filled(const zorpelx_hypergraph &h, const zorpelx_options &o, Watch &watch)
{
    const size_t grouped = o.groups != nullptr ? static_cast<size_t>(h.nvtxs) : 0;
    const size_t nparts = static_cast<size_t>(o.nparts);
    const Charge charge(watch, grouped * sizeof(int) + grouped / 8 + nparts / 8, "marks of groups");
    const std::vector<int> group_parts = parts_of_groups(h, o);
    std::vector<bool> counted(grouped), filled(nparts);
    int64_t nfilled = 0;
    for (int v = 0; v < h.nvtxs; v++) {
        watch.step();
        if (weight_of(h, v) == 0) continue;
        const int p = part_asked(o, group_parts, v), group = grouped > 0 ? o.groups[v] : -1;
        if (p < 0 && group < 0) {
            nfilled++;
            continue;
        }
        std::vector<bool> &marks = p >= 0 ? filled : counted;
        const size_t place = static_cast<size_t>(p >= 0 ? p : group);
        nfilled += !marks[place];
        marks[place] = true;
    }
    return nfilled >= o.nparts;
}

static std::vector<Limits> limits_of(const zorpelx_hypergraph &h, const zorpelx_options &o,
                                     Watch &watch)
{
    const int64_t total = total_weight(h, watch);
    if (!is_search(o)) return part_limits(o.nparts, o.ubfactor, o.polish != 0, total);
    std::vector<Limits> limits = part_bounds(o.nparts, o.epsilon, o.least, o.capacities, total);
    if (o.least < 0 && !parts_can_be_filled(h, o, watch)) // some part must stay empty
        for (Limits &limit : limits) limit.least = 0;
    return limits;
}

static size_t bytes_held(const zorpelx_hypergraph &h, const zorpelx_options &o)
{
    return static_cast<size_t>(h.nvtxs) * sizeof(int) +
           static_cast<size_t>(o.nparts) * sizeof(Limits);
}

Call::Call(const zorpelx_hypergraph &hypergraph, const zorpelx_options &chosen, Watch &heeded)
    : h(hypergraph), o(chosen), watch(heeded), seed0(first_seed(chosen)),
      trimmed(hypergraph, heeded), evaluator(hypergraph, chosen.nparts, heeded),
      charge(heeded, bytes_held(hypergraph, chosen), "the best partition and the limits of parts"),
      limits(limits_of(h, o, heeded)), best_part(static_cast<size_t>(h.nvtxs))
{
    hire();
}

/* As many workers as there are jobs and as the cap has room for. What a child may take depends on
 * neither. */
void Call::hire()
{
    const size_t room = watch.room(), place = Worker::footprint(h.nvtxs, is_search(o));
    const size_t njobs = std::min(count_jobs(o), std::max<size_t>(1, room / place));
    workers_charge.emplace(watch, njobs * place, "the partition of a start");
    if (room != SIZE_MAX) allowance = room - place;
    threads = count_threads(o, njobs);
    for (size_t i = 0; i < njobs; i++)
        workers.push_back(std::make_unique<Worker>(bell, h.nvtxs, is_search(o)));
}

void Call::release_after_jump(void *argument)
{
    Call *const call = static_cast<Call *>(argument);
    if (call->calling)
        delete call;
    else
        for (const auto &worker : call->workers) worker->abandon();
}

/* Lets the caller's code run, which need not return. */
template <class Callback> void Call::call_back(const Callback &callback)
{
    calling = true;
    try {
        callback();
    } catch (...) {
        const std::exception_ptr thrown = std::current_exception();
        if (thrown == nullptr) throw; // none of C++: the thread ends
        throw LeftByException{thrown};
    }
    calling = false;
}

/* Gives the idle workers starts. A system that refuses a process is asked again once another
 * start has ended; with none at work the start has failed. */
void Call::hand_out()
{
    for (const auto &worker : workers) {
        if (next == o.starts) return;
        if (worker->state() != Worker::State::Idle) continue;
        const Task task = {&trimmed.hypergraph(), &o, &limits, threads, allowance, next,
                           seed0 + next};
        if (Fault refused = worker->start(task)) {
            if (busy > 0) return;
            note_failure(task.seed, refused);
        } else {
            busy++;
        }
        next++;
    }
}

void Call::note_failure(int seed, const Fault &why)
{
    watch.note_end(false);
    if (seed > failed_seed) return;
    failed_seed = seed;
    failure = why;
}

/* The vertices that no part, or not theirs, can hold within a search's limits. */
Fault Call::blame(const std::vector<int64_t> &pwgts) const
{
    if (!is_search(o)) return {};
    int64_t most = 0, excess = 0;
    for (size_t p = 0; p < limits.size(); p++) {
        most = std::max(most, limits[p].most);
        excess = std::max(excess, pwgts[p] - limits[p].most);
    }
    if (excess <= 0) return {};
    const std::vector<int> group_parts = parts_of_groups(h, o);
    std::vector<int64_t> asked(pwgts.size(), 0), grouped(group_parts.size(), 0);
    for (int v = 0; v < h.nvtxs; v++) {
        const int weight = weight_of(h, v), p = part_asked(o, group_parts, v);
        if (weight > most)
            return fault(
                ZORPELX_FAILED,
                "Vertex %d (counted from 0) weighs %d, and no part may weigh more than %lld.", v,
                weight, static_cast<long long>(most));
        if (p >= 0) asked[static_cast<size_t>(p)] += weight;
        if (o.groups == nullptr || o.groups[v] < 0) continue;
        int64_t &group = grouped[static_cast<size_t>(o.groups[v])];
        group += weight;
        if (group > most)
            return fault(ZORPELX_FAILED,
                         "The vertices in the group of vertex %d (counted from 0) weigh more than "
                         "%lld, which is "
                         "the most that a part may weigh.",
                         v, static_cast<long long>(most));
    }
    for (size_t p = 0; p < asked.size(); p++)
        if (asked[p] > limits[p].most)
            return fault(ZORPELX_FAILED,
                         "The vertices fixed in part %zu weigh %lld; it may weigh at most %lld.", p,
                         static_cast<long long>(asked[p]), static_cast<long long>(limits[p].most));
    return {};
}

/* The heaviest vertex of a part. */
static int heaviest_in(const zorpelx_hypergraph &h, const int *part, int p)
{
    int heaviest = -1;
    for (int v = 0; v < h.nvtxs; v++)
        if (part[v] == p && (heaviest < 0 || weight_of(h, v) > weight_of(h, heaviest)))
            heaviest = v;
    return heaviest;
}

/* A part outside its limits; a search says what makes it so heavy. */
Fault Call::outside(const int *part, int p, int64_t weight) const
{
    const Limits &limit = limits[static_cast<size_t>(p)];
    const int v = is_search(o) && weight > limit.most ? heaviest_in(h, part, p) : -1;
    if (v < 0)
        return fault(ZORPELX_FAILED, "Part %d weighs %lld; its limits are %lld and %lld.", p,
                     static_cast<long long>(weight), static_cast<long long>(limit.least),
                     static_cast<long long>(limit.most));
    return fault(ZORPELX_FAILED,
                 "Part %d weighs %lld; its limits are %lld and %lld. Its heaviest vertex is %d "
                 "(counted from 0) and weighs %d.",
                 p, static_cast<long long>(weight), static_cast<long long>(limit.least),
                 static_cast<long long>(limit.most), v, weight_of(h, v));
}

/* Why a partition does not keep what was asked for. */
Fault Call::blemish_of(const int *part, const std::vector<int64_t> &pwgts) const
{
    for (int v = 0; o.fixed != nullptr && v < h.nvtxs; v++)
        if (o.fixed[v] != -1 && o.fixed[v] != part[v])
            return fault(ZORPELX_FAILED, "Vertex %d is in part %d instead of part %d.", v, part[v],
                         o.fixed[v]);
    if (Fault found = blame(pwgts)) return found;
    for (size_t p = 0; p < pwgts.size(); p++)
        if (pwgts[p] < limits[p].least || pwgts[p] > limits[p].most)
            return outside(part, static_cast<int>(p), pwgts[p]);
    return {};
}

void Call::take_partition(const Worker &worker)
{
    const int seed = worker.task().seed;
    const int *const part = worker.part();
    if (Fault found = check_partition(&h, o.nparts, part, watch)) { // not to be trusted
        note_failure(seed, fault(ZORPELX_FAILED, "The start with seed %d left rubbish: %s", seed,
                                 found.sentence.c_str()));
        return;
    }
    Candidate candidate;
    candidate.seed = seed;
    candidate.objective = o.objective;
    candidate.jobs = worker.shown().jobs;
    candidate.alljobs = worker.shown().alljobs;
    candidate.report = worker.shown().report;
    candidate.quality = evaluator.evaluate(part);
    for (size_t p = 0; is_search(o) && p < limits.size(); p++) {
        const int64_t weight = evaluator.pwgts()[p];
        candidate.excess += std::max<int64_t>(weight - limits[p].most, 0) +
                            std::max<int64_t>(limits[p].least - weight, 0);
    }
    candidate.blemish = blemish_of(part, evaluator.pwgts());
    watch.note_end(true);
    if (best && !candidate.better_than(*best)) return;
    std::copy(part, part + h.nvtxs, best_part.begin());
    best = std::move(candidate);
}

/* Several threads hold more memory at once than one, how much more is a matter of timing. So a
 * start that ran out of it is made again with one: whether a cap is enough does not depend on
 * threads. */
static bool made_again(Worker &worker)
{
    Task task = worker.task();
    if (worker.state() != Worker::State::Failed || task.threads == 1) return false;
    if (worker.failure().status != ZORPELX_NO_MEMORY) return false;
    task.threads = 1;
    worker.stop();
    return !worker.start(task);
}

/* Takes what a search had found when it ran out of memory. A mere packing is not worth it: it would
 * pass for the result of a search. Returns false if there is nothing to take. */
bool Call::salvage(Worker &worker)
{
    const int seed = worker.task().seed;
    const Board &board = worker.shown();
    if (!is_search(o) || worker.failure().status != ZORPELX_NO_MEMORY) return false;
    if (board.published == 0 || strcmp(board.step, STEP_NAMES[STEP_PACKING]) == 0) return false;
    worker.harvest();
    take_partition(worker);
    if (seed > cut_short_seed) return true;
    cut_short_seed = seed;
    cut_short = fault(ZORPELX_NO_MEMORY,
                      "Memory ran out in the start with seed %d; the best partition that it had "
                      "found by then counts.",
                      seed);
    return true;
}

void Call::take_in(Worker &worker)
{
    worker.scan(&counts);
    if (made_again(worker)) return;
    if (worker.state() == Worker::State::Done)
        take_partition(worker);
    else if (!salvage(worker))
        note_failure(worker.task().seed, worker.failure());
    call_back([&] { worker.deliver_trace(); });
    worker.stop();
    busy--;
}

/* Whether a search with a time of its own has had it; without any partition it goes on. */
bool Call::time_is_over() const
{
    if (!is_search(o) || o.time <= 0 || watch.seconds() < o.time) return false;
    return best || std::any_of(workers.begin(), workers.end(), [](const auto &worker) {
               return worker->state() == Worker::State::Busy && worker->shown().published > 0;
           });
}

/* Ends all starts and takes what the searches among them have found so far. */
void Call::harvest()
{
    watch.close();
    for (const auto &worker : workers) {
        if (!is_search(o) || worker->state() != Worker::State::Busy) continue;
        worker->harvest();
        busy--;
        if (worker->state() == Worker::State::Done) take_partition(*worker);
        worker->stop();
    }
    next = o.starts;
}

void Call::collect()
{
    const bool for_deaths = watch.seconds() - looked >= LONGEST_SLEEP;
    if (for_deaths) looked = watch.seconds();
    for (const auto &worker : workers) {
        if (worker->state() != Worker::State::Busy) continue;
        worker->poll(for_deaths);
        if (worker->state() == Worker::State::Busy) continue;
        take_in(*worker);
        tell_progress(true);
    }
}

void Call::tell_progress(bool now)
{
    if (o.on_progress == nullptr || told_enough) return;
    if (!now && watch.seconds() - told < PROGRESS_EVERY) return;
    for (const auto &worker : workers)
        if (worker->state() == Worker::State::Busy) worker->scan(&counts);
    zorpelx_progress progress = {};
    progress.size = sizeof progress;
    progress.starts = o.starts;
    progress.running = busy;
    progress.finished = watch.nfinished();
    progress.failed = watch.nfailed();
    progress.runs = counts.runs;
    progress.allruns = all_runs(o);
    progress.levels = counts.levels;
    progress.level_vtxs = counts.level_vtxs;
    progress.run_cut = counts.run_cut;
    progress.cut = best ? best->quality.cut : -1;
    progress.objective = best ? best->value() : -1;
    progress.step = "";
    for (const auto &worker : workers) {
        const Board &board = worker->shown();
        if (worker->state() != Worker::State::Busy || board.published == 0) continue;
        progress.jobs += board.jobs;
        progress.alljobs = board.alljobs < 0 ? -1 : progress.alljobs + board.alljobs;
        if (progress.objective >= 0 && progress.objective <= board.objective) continue;
        progress.objective = board.objective;
        progress.step = board.step;
    }
    told = progress.seconds = watch.seconds();
    call_back([&] { told_enough = o.on_progress(o.user, &progress) != 0; });
    if (told_enough) watch.cancel();
}

Fault Call::run()
{
    try {
        while (unfinished()) {
            if (time_is_over()) {
                harvest();
                break;
            }
            watch.look();
            hand_out();
            bell.wait(std::min(LONGEST_SLEEP, watch.left()));
            collect();
            tell_progress(false);
        }
    } catch (const Stopped &stopped) {
        const bool nothing = !best;
        harvest();
        for (const auto &worker : workers) worker->stop();
        if (!nothing || !best) return stopped.why;
        return fault(stopped.why.status,
                     stopped.why.status == ZORPELX_TIMEOUT
                         ? "The deadline came first; the best partition found by then is kept."
                         : "Cancelled; the best partition found by then is kept.");
    }
    return outcome();
}

/* How a call ends that made all its starts. A success may have something to say too. */
Fault Call::outcome() const
{
    if (!best) return failure;
    const Fault &note = best->blemish ? best->blemish : failure ? failure : cut_short;
    return {ZORPELX_OK, note.sentence};
}

static_assert(static_cast<int>(NSTEPS) == static_cast<int>(ZORPELX_NSTEPS));

void Call::report(zorpelx_result *result) const
{
    result->dropped = trimmed.dropped();
    result->finished = watch.nfinished();
    result->failed = watch.nfailed();
    if (!best) return;
    result->seed = best->seed;
    result->valid = !best->blemish;
    result->cut = best->quality.cut;
    result->soed = best->quality.soed;
    result->imbalance = best->quality.imbalance;
    result->connectivity = best->quality.connectivity;
    result->jobs = best->jobs;
    result->alljobs = best->alljobs;
    result->pool = best->report.pool;
    result->generations = best->report.generations;
    for (int i = 0; i < NSTEPS; i++) {
        const StepReport &step = best->report.steps[i];
        result->steps[i] = {step.made, step.better, step.gained, step.seconds};
    }
    for (int v = 0; o.start != nullptr && v < h.nvtxs; v++)
        if (best_part[static_cast<size_t>(v)] != o.start[v]) result->moved += weight_of(h, v);
}

void Call::deliver(int *part) const
{
    if (best) std::copy(best_part.begin(), best_part.end(), part);
}

static Fault check_outputs(const zorpelx_hypergraph *hypergraph, const int *part)
{
    if (part == nullptr && hypergraph->nvtxs > 0)
        return fault(ZORPELX_BAD_OPTION, "part is null; it should have room for %d vertices.",
                     hypergraph->nvtxs);
    return {};
}

/* The checked call. It stands on the heap, where a jump can leave it to be released. */
static Fault make_starts(const zorpelx_hypergraph &hypergraph, const zorpelx_options &options,
                         Watch &watch, int *part, zorpelx_result *result)
{
    Call *const call = new Call(hypergraph, options, watch);
    const std::unique_ptr<Call> owner(call);
    const JumpGuard guard(Call::release_after_jump, call);
    Fault outcome = call->run();
    call->report(result);
    call->deliver(part);
    return outcome;
}

/* What a caller finds in the result that leaves the call by an exception or a jump. */
static void foresee_leaving(zorpelx_result *result)
{
    zorpelx_result left = {};
    left.status = ZORPELX_CANCELLED;
    put_message(left.message, "A callback left the call.");
    hand_back(left, result);
}

int zorpelx_partition(const zorpelx_hypergraph *hypergraph, const zorpelx_options *options,
                      int *part, zorpelx_result *result)
{
    if (result == nullptr || !size_is_known(*result)) return ZORPELX_BAD_OPTION;
    zorpelx_result known = {};
    zorpelx_options chosen;
    std::optional<Watch> watch;
    try {
        known.status = reporting_to(known.message, [&]() -> Fault {
            if (Fault found = adopt_options(options, &chosen)) return found;
            watch.emplace(chosen);
            if (Fault found = check_call(hypergraph, chosen, *watch)) return found;
            if (Fault found = check_outputs(hypergraph, part)) return found;
            if (chosen.shared != 0) chosen.shared = std::exchange(chosen.starts, 1);
            foresee_leaving(result);
            return make_starts(*hypergraph, chosen, *watch, part, &known);
        });
    } catch (const LeftByException &left) {
        std::rethrow_exception(left.thrown);
    }
    if (watch) known.seconds = watch->seconds();
    hand_back(known, result);
    return known.status;
}
