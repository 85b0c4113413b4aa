/* zorpelx/lib/partition.cpp: several starts at work in child processes, the best one delivered.
 *
 * The caller's thread hands out starts to idle workers, sleeps until one rings or a moment is
 * over, compares what came out and looks at the clock and the cancel flag. True all the time: best
 * is the best of the starts taken in so far, by an order that no timing can change.
 */
#include <algorithm>
#include <chrono>
#include <climits>
#include <memory>
#include <optional>
#include <random>
#include <thread>
#include <tuple>
#include <vector>

#include "check.h"
#include "evaluate.h"
#include "limits.h"
#include "trim.h"
#include "worker.h"

constexpr double LONGEST_SLEEP = 0.02; // seconds until a silent death is noticed
constexpr double PROGRESS_EVERY = 0.1; // seconds

/* One start's partition and what decides between it and others. */
struct Candidate {
    int seed = 0;
    Fault blemish; // why it is not valid
    Evaluation evaluation = {};
    std::vector<int> part;

    bool better_than(const Candidate &other) const { return rank() < other.rank(); }

  private:
    std::tuple<bool, int64_t, int64_t, int64_t, int> rank() const
    {
        const zorpelx_quality &quality = evaluation.quality;
        return {bool(blemish), quality.cut, quality.soed, quality.heaviest_part, seed};
    }
};

static int first_seed(const zorpelx_options &options)
{
    if (options.seed >= 0) return options.seed;
    std::random_device chance;
    return std::uniform_int_distribution<int>(1, INT_MAX - (options.starts - 1))(chance);
}

static size_t count_jobs(const zorpelx_options &options)
{
    const unsigned processors = std::max(1u, std::thread::hardware_concurrency());
    const unsigned jobs = options.jobs > 0 ? static_cast<unsigned>(options.jobs) : processors;
    return std::min(jobs, static_cast<unsigned>(options.starts));
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
    Call(const zorpelx_hypergraph &hypergraph, const zorpelx_options &chosen);
    /* Makes all starts, or as many as there is time for; a fault if the caller is to know. */
    Fault run();
    void report(zorpelx_result *result) const;
    const std::optional<Candidate> &winner() const { return best; }

  private:
    using Clock = std::chrono::steady_clock;
    using Workers = std::vector<std::unique_ptr<Worker>>;

    double seconds() const { return std::chrono::duration<double>(Clock::now() - began).count(); }
    bool unfinished() const { return next < o.starts || busy > 0; }
    double nap() const;
    bool cancelled() const;
    Fault stop_reason();
    void hand_out();
    void collect();
    void take_in(Worker &worker);
    void take_partition(const Worker &worker);
    void note_failure(int seed, const Fault &why);
    Fault blemish_of(const int *part, const std::vector<int64_t> &pwgts) const;
    void tell_progress(bool now);
    Fault outcome() const;

    const zorpelx_hypergraph &h;
    const zorpelx_options &o;
    const Clock::time_point began = Clock::now();
    const Trimmed trimmed;
    const int seed0;
    std::vector<Limits> limits; // [nparts]
    Bell bell;
    Workers workers;
    int next = 0; // start to be handed out
    int busy = 0; // workers at work
    int finished = 0, failed = 0;
    int failed_seed = INT_MAX;
    Fault failure; // of the failed start with the least seed
    Counts counts;
    double told = 0; // when progress was told last
    bool stopped_by_callback = false;
    std::optional<Candidate> best;
};

static int64_t total_weight(const zorpelx_hypergraph &h)
{
    int64_t total = 0;
    for (int v = 0; v < h.nvtxs; v++) total += h.vwgts != nullptr ? h.vwgts[v] : 1;
    return total;
}

Call::Call(const zorpelx_hypergraph &hypergraph, const zorpelx_options &chosen)
    : h(hypergraph), o(chosen), trimmed(hypergraph), seed0(first_seed(chosen)),
      limits(part_limits(o.nparts, o.ubfactor, o.polish != 0, total_weight(h)))
{
    for (size_t i = 0; i < count_jobs(o); i++)
        workers.push_back(std::make_unique<Worker>(bell, h.nvtxs));
}

bool Call::cancelled() const
{
    return stopped_by_callback ||
           (o.cancel != nullptr && __atomic_load_n(o.cancel, __ATOMIC_RELAXED) != 0);
}

/* The fault that ends the call now, if any. */
Fault Call::stop_reason()
{
    const char *const kept = finished > 0 ? "the best finished start is kept" : "none has finished";
    if (cancelled())
        return fault(ZORPELX_CANCELLED, "Cancelled after %d of %d starts; %s.", finished + failed,
                     o.starts, kept);
    if (o.timeout > 0 && seconds() >= o.timeout)
        return fault(ZORPELX_TIMEOUT, "The deadline came after %d of %d starts; %s.",
                     finished + failed, o.starts, kept);
    return {};
}

double Call::nap() const
{
    return o.timeout > 0 ? std::min(LONGEST_SLEEP, o.timeout - seconds()) : LONGEST_SLEEP;
}

/* Gives the idle workers starts. A system that refuses a process is asked again once another
 * start has ended; with none at work the start has failed. */
void Call::hand_out()
{
    for (const auto &worker : workers) {
        if (next == o.starts) return;
        if (worker->state() != Worker::State::Idle) continue;
        const Task task = {&trimmed.hypergraph(), &o, next, seed0 + next};
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
    failed++;
    if (seed > failed_seed) return;
    failed_seed = seed;
    failure = why;
}

/* Why a partition does not keep what was asked for. */
Fault Call::blemish_of(const int *part, const std::vector<int64_t> &pwgts) const
{
    for (int v = 0; o.fixed != nullptr && v < h.nvtxs; v++)
        if (o.fixed[v] != -1 && o.fixed[v] != part[v])
            return fault(ZORPELX_FAILED, "Vertex %d is in part %d instead of part %d.", v, part[v],
                         o.fixed[v]);
    for (size_t p = 0; p < pwgts.size(); p++)
        if (pwgts[p] < limits[p].least || pwgts[p] > limits[p].most)
            return fault(ZORPELX_FAILED, "Part %zu weighs %lld; its limits are %lld and %lld.", p,
                         static_cast<long long>(pwgts[p]), static_cast<long long>(limits[p].least),
                         static_cast<long long>(limits[p].most));
    return {};
}

void Call::take_partition(const Worker &worker)
{
    const int seed = worker.task().seed;
    const int *const part = worker.part();
    if (Fault found =
            check_partition(&h, o.nparts, part)) { // a child's memory is not to be trusted
        note_failure(seed, fault(ZORPELX_FAILED, "The start with seed %d left rubbish: %s", seed,
                                 found.sentence.c_str()));
        return;
    }
    finished++;
    Candidate candidate;
    candidate.seed = seed;
    candidate.evaluation = evaluate(h, o.nparts, part);
    candidate.blemish = blemish_of(part, candidate.evaluation.pwgts);
    if (best && !candidate.better_than(*best)) return;
    candidate.part.assign(part, part + h.nvtxs);
    best = std::move(candidate);
}

void Call::take_in(Worker &worker)
{
    worker.scan(&counts);
    if (worker.state() == Worker::State::Done)
        take_partition(worker);
    else
        note_failure(worker.task().seed, worker.failure());
    worker.deliver_trace();
    worker.stop();
    busy--;
}

void Call::collect()
{
    for (const auto &worker : workers) {
        if (worker->state() != Worker::State::Busy) continue;
        worker->poll();
        if (worker->state() == Worker::State::Busy) continue;
        take_in(*worker);
        tell_progress(true);
    }
}

void Call::tell_progress(bool now)
{
    if (o.on_progress == nullptr || stopped_by_callback) return;
    if (!now && seconds() - told < PROGRESS_EVERY) return;
    for (const auto &worker : workers)
        if (worker->state() == Worker::State::Busy) worker->scan(&counts);
    zorpelx_progress progress = {};
    progress.size = sizeof progress;
    progress.starts = o.starts;
    progress.running = busy;
    progress.finished = finished;
    progress.failed = failed;
    progress.runs = counts.runs;
    progress.allruns = all_runs(o);
    progress.levels = counts.levels;
    progress.level_vtxs = counts.level_vtxs;
    progress.run_cut = counts.run_cut;
    progress.cut = best ? best->evaluation.quality.cut : -1;
    told = progress.seconds = seconds();
    stopped_by_callback = o.on_progress(o.user, &progress) != 0;
}

Fault Call::run()
{
    while (unfinished()) {
        if (Fault reason = stop_reason()) {
            for (const auto &worker : workers) worker->stop();
            return reason;
        }
        hand_out();
        bell.wait(nap());
        collect();
        tell_progress(false);
    }
    return outcome();
}

/* How a call ends that made all its starts. A success may have something to say too. */
Fault Call::outcome() const
{
    if (finished == 0) return failure;
    return {ZORPELX_OK, best->blemish ? best->blemish.sentence : failure.sentence};
}

void Call::report(zorpelx_result *result) const
{
    result->seconds = seconds();
    result->dropped = trimmed.dropped();
    result->finished = finished;
    result->failed = failed;
    if (!best) return;
    const zorpelx_quality &quality = best->evaluation.quality;
    result->seed = best->seed;
    result->valid = !best->blemish;
    result->cut = quality.cut;
    result->soed = quality.soed;
    result->imbalance = quality.imbalance;
}

static Fault check_outputs(const zorpelx_hypergraph *hypergraph, const int *part)
{
    if (part == nullptr && hypergraph->nvtxs > 0)
        return fault(ZORPELX_BAD_OPTION, "part is null; it should have room for %d vertices.",
                     hypergraph->nvtxs);
    return {};
}

int zorpelx_partition(const zorpelx_hypergraph *hypergraph, const zorpelx_options *options,
                      int *part, zorpelx_result *result)
{
    if (result == nullptr || result->size != sizeof *result) return ZORPELX_BAD_OPTION;
    zorpelx_result_init(result, result->size);
    result->status = reporting_to(result->message, [&]() -> Fault {
        if (Fault found = check_call(hypergraph, options)) return found;
        if (Fault found = check_outputs(hypergraph, part)) return found;
        Call call(*hypergraph, *options);
        Fault outcome = call.run();
        call.report(result);
        if (call.winner()) std::copy(call.winner()->part.begin(), call.winner()->part.end(), part);
        return outcome;
    });
    return result->status;
}
