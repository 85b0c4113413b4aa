/* zorpelx/cli/partition.cpp: the partition command.
 *
 * The work is the library's, in processes of its own; here are files, signals and the progress
 * line. Whatever is delivered is counted afresh by the code of verify before it is written.
 */
#include <algorithm>
#include <chrono>
#include <climits>
#include <csignal>
#include <cstdio>
#include <unistd.h>

#include <nlohmann/json.hpp>

#include "advice.h"
#include "commands.h"
#include "figures.h"
#include "hypergraph.h"
#include "input.h"
#include "output.h"
#include "version.h"
#include "zorpelx.h"

using Json = nlohmann::ordered_json;

using Clock = std::chrono::steady_clock;

static volatile int cancel = 0; // set by a signal: which one

static long long ll(int64_t number)
{
    return number;
}

/* What one call works on and brings forth. */
struct Job {
    Clock::time_point began;
    Hypergraph graph;
    std::vector<int64_t> fix; // empty without a fix file
    std::vector<int> eptr, eind, vwgts, hewgts, fixed, part;
    zorpelx_options options;
    zorpelx_result result;
    Figures figures;
    std::string output;
};

static std::vector<int> narrowed(const std::vector<int64_t> &numbers)
{
    std::vector<int> narrow(numbers.size());
    std::transform(numbers.begin(), numbers.end(), narrow.begin(),
                   [](int64_t number) { return static_cast<int>(number); });
    return narrow;
}

/* The first interrupt asks for what is there; the next one ends the process as usual. */
static void ask_to_stop(int signal)
{
    cancel = signal;
}

static void catch_signals()
{
    struct sigaction action = {};
    action.sa_handler = ask_to_stop;
    action.sa_flags = static_cast<int>(SA_RESETHAND | SA_RESTART);
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
}

static int show_progress(void *, const zorpelx_progress *progress)
{
    fprintf(stderr, "\r%d of %d starts, %lld of %lld runs, %lld levels", progress->finished,
            progress->starts, ll(progress->runs), ll(progress->allruns), ll(progress->levels));
    if (progress->cut >= 0)
        fprintf(stderr, ", cut %lld", ll(progress->cut));
    else if (progress->run_cut >= 0)
        fprintf(stderr, ", bisection %d", progress->run_cut);
    fprintf(stderr, ", %.1f s\x1b[K", progress->seconds);
    fflush(stderr);
    return 0;
}

static void show_trace(void *, int start, const char *text, size_t length)
{
    fprintf(stderr, "start %d:\n", start);
    fwrite(text, 1, length, stderr);
    fputc('\n', stderr);
}

static bool wants_progress(const Settings &settings)
{
    if (settings.progress == PROGRESS_AUTO) return !settings.quiet && isatty(STDERR_FILENO) == 1;
    return settings.progress == PROGRESS_ALWAYS;
}

/* What reading the files has left of --timeout; 0 without one. */
static double time_left(const Settings &settings, const Job &job)
{
    constexpr double AT_ONCE = 1e-9; // 0 would mean no deadline
    if (settings.timeout == 0) return 0;
    const double spent = std::chrono::duration<double>(Clock::now() - job.began).count();
    return std::max(settings.timeout - spent, AT_ONCE);
}

static void set_options(const Settings &settings, Job *job)
{
    zorpelx_options *const options = &job->options;
    zorpelx_options_init(options, sizeof *options);
    options->nparts = static_cast<int>(settings.nparts);
    options->ubfactor = static_cast<int>(settings.imbalance);
    options->nruns = static_cast<int>(settings.runs);
    options->ctype = static_cast<int>(settings.matching);
    options->rtype = static_cast<int>(settings.refine);
    options->vcycle = static_cast<int>(settings.vcycle);
    options->reconst = static_cast<int>(settings.reconst);
    options->polish = static_cast<int>(settings.polish);
    options->trace = static_cast<int>(settings.trace);
    options->seed = static_cast<int>(settings.seed);
    options->starts = static_cast<int>(settings.starts);
    options->jobs = static_cast<int>(settings.jobs);
    options->threads = static_cast<int>(settings.threads);
    options->timeout = time_left(settings, *job);
    options->memory = static_cast<size_t>(settings.memory) << 20;
    options->fixed = job->fixed.empty() ? nullptr : job->fixed.data();
    options->cancel = &cancel;
    if (wants_progress(settings)) options->on_progress = show_progress;
    if (settings.trace > 0) options->on_trace = show_trace;
}

static Job read_files(const Settings &settings)
{
    Job job = {};
    job.began = Clock::now();
    Findings findings;
    job.graph = read_hypergraph(settings, reading_of(settings), &findings);
    if (!settings.quiet) tell_warnings(settings.hypergraph, findings);
    if (job.graph.pins.size() > INT_MAX)
        fail(STATUS_BAD_INPUT, "%s: more than %d vertex entries",
             shown_name(settings.hypergraph).c_str(), INT_MAX);
    if (!settings.fix.empty()) job.fix = read_fix(settings, job.graph.nvertices, settings.nparts);
    return job;
}

/* --keep chooses the imbalance once the weights are known. */
static void choose_imbalance(const Job &job, Settings *settings)
{
    if (!was_given(*settings, &Settings::keep)) return;
    const int64_t total = total_weight(job.graph.vertexwgt);
    settings->imbalance = largest_factor(settings->nparts, total, settings->keep);
    if (settings->imbalance == 0)
        fail(STATUS_INFEASIBLE, "%s",
             no_factor_text(settings->nparts, total, settings->keep).c_str());
}

static void check_feasible(const Settings &settings, const Job &job)
{
    const Advice advice =
        advise(job.graph.vertexwgt, job.fix, settings.nparts, static_cast<int>(settings.imbalance));
    if (advice.verdict == INFEASIBLE && !settings.force)
        fail(STATUS_INFEASIBLE,
             "%lld parts are not possible with --imbalance %lld: %s (--force "
             "goes on)",
             ll(settings.nparts), ll(settings.imbalance), advice.reason.c_str());
}

static std::string output_name(const Settings &settings)
{
    if (!settings.output.empty()) return settings.output;
    if (settings.hypergraph == "-") return "-";
    return plain_name(settings.hypergraph) + ".part." + std::to_string(settings.nparts);
}

static int partition(const Settings &settings, Job *job)
{
    job->eptr = narrowed(job->graph.start);
    job->eind.assign(job->graph.pins.begin(), job->graph.pins.end());
    job->vwgts = narrowed(job->graph.vertexwgt);
    job->hewgts = narrowed(job->graph.netwgt);
    job->fixed = narrowed(job->fix);
    job->part.assign(job->vwgts.size(), 0);
    set_options(settings, job);
    zorpelx_result_init(&job->result, sizeof job->result);
    const zorpelx_hypergraph hypergraph = {static_cast<int>(job->graph.nvertices),
                                           static_cast<int>(job->graph.nnets),
                                           job->eptr.data(),
                                           job->eind.data(),
                                           job->vwgts.data(),
                                           job->hewgts.data()};
    catch_signals();
    const int status =
        zorpelx_partition(&hypergraph, &job->options, job->part.data(), &job->result);
    if (job->options.on_progress != nullptr) fputs("\r\x1b[K", stderr);
    return status;
}

/* Counts what was delivered again; that it differs would be a fault of the program. */
static void recount(const Settings &settings, Job *job)
{
    const std::vector<int64_t> part(job->part.begin(), job->part.end());
    for (const int64_t p : part)
        if (p < 0 || p >= settings.nparts) fail(STATUS_FAILED, "a vertex is in part %lld", ll(p));
    job->figures = figures_of(job->graph, part, settings.nparts);
    if (job->figures.cut != job->result.cut || job->figures.soed != job->result.soed)
        fail(STATUS_FAILED,
             "cut %lld and sum of external degrees %lld are %lld and %lld when "
             "counted again",
             ll(job->result.cut), ll(job->result.soed), ll(job->figures.cut),
             ll(job->figures.soed));
}

static std::string partition_text(const std::vector<int> &part)
{
    std::string text;
    for (const int p : part) text += std::to_string(p) + '\n';
    return text;
}

static Json options_json(const Settings &settings)
{
    return {{"nparts", settings.nparts},
            {"imbalance", settings.imbalance},
            {"preset", PRESET_ROWS[settings.preset].name},
            {"runs", settings.runs},
            {"matching", choice_name(&Settings::matching, settings.matching)},
            {"refine", choice_name(&Settings::refine, settings.refine)},
            {"vcycle", choice_name(&Settings::vcycle, settings.vcycle)},
            {"reconst", settings.reconst == 1},
            {"polish", settings.polish == 1},
            {"fix", settings.fix.empty() ? Json(nullptr) : Json(settings.fix)},
            {"seed", settings.seed},
            {"starts", settings.starts},
            {"timeout", settings.timeout},
            {"memory_mib", settings.memory}};
}

static Json result_json(const Settings &settings, const Job &job, int status)
{
    const Figures &figures = job.figures;
    Json parts = Json::array();
    for (size_t p = 0; p < figures.weight.size(); p++)
        parts.push_back({{"part", p},
                         {"vertices", figures.vertices[p]},
                         {"weight", figures.weight[p]},
                         {"external_degree", figures.external[p]}});
    return {{"version", ZORPELX_CLI_VERSION},
            {"hypergraph", settings.hypergraph},
            {"partition", job.output},
            {"vertices", job.graph.nvertices},
            {"hyperedges", job.graph.nnets},
            {"pins", job.graph.pins.size()},
            {"options", options_json(settings)},
            {"status", status},
            {"message", job.result.message},
            {"valid", job.result.valid == 1},
            {"seed", job.result.seed},
            {"finished", job.result.finished},
            {"failed", job.result.failed},
            {"cut", figures.cut},
            {"cut_hyperedges", figures.ncut},
            {"soed", figures.soed},
            {"connectivity", figures.km1},
            {"imbalance_percent", imbalance_percent(figures)},
            {"parts", parts},
            {"seconds", job.result.seconds}};
}

static void print_result(const Settings &settings, const Job &job)
{
    const bool taken = job.output == "-" || settings.json == "-";
    const Figures &figures = job.figures;
    fprintf(taken ? stderr : stdout,
            "%s: %lld parts, cut %lld of %lld, external degrees %lld, heaviest part %.2f %% above "
            "average, seed %d, %.2f s\n",
            shown_output(job.output).c_str(), ll(figures.nparts), ll(figures.cut),
            ll(total_weight(job.graph.netwgt)), ll(figures.soed), imbalance_percent(figures),
            job.result.seed, job.result.seconds);
}

static void check_usage(const Settings &settings)
{
    if (was_given(settings, &Settings::keep) && was_given(settings, &Settings::imbalance))
        fail(STATUS_USAGE, "--keep chooses the imbalance: leave --imbalance out");
    if (settings.output == "-" && settings.json == "-")
        fail(STATUS_USAGE, "-o - and --json - both want standard output");
    if (settings.hypergraph == "-" && settings.output.empty() && settings.json == "-")
        fail(STATUS_USAGE, "--json - needs -o when the hypergraph comes from standard input");
}

/* The status of the process: the signal's if one asked to stop, 4 for a partition that is not
 * within its limits. */
static Status final_status(int status, const zorpelx_result &result)
{
    if (status == ZORPELX_CANCELLED) return static_cast<Status>(128 + cancel);
    if (status == ZORPELX_OK && result.valid == 0) return STATUS_INFEASIBLE;
    return static_cast<Status>(status);
}

/* What there is to say about a run that delivered something. */
static void print_message(Status status, const zorpelx_result &result)
{
    if (result.message[0] == '\0') return;
    fprintf(stderr, "zorpelx: %s%s\n",
            status == STATUS_INFEASIBLE ? "the best partition found is not within its limits: "
                                        : "",
            result.message);
}

Status run_partition(const Settings &given)
{
    Settings settings = given;
    apply_preset(&settings);
    check_usage(settings);
    check_outputs({output_name(settings), settings.json}, {settings.hypergraph, settings.fix});
    Job job = read_files(settings);
    choose_imbalance(job, &settings);
    check_feasible(settings, job);
    job.output = output_name(settings);
    const int outcome = partition(settings, &job);
    const Status status = final_status(outcome, job.result);
    if (job.result.finished == 0) fail(status, "%s", job.result.message);
    recount(settings, &job);
    write_whole(job.output, partition_text(job.part));
    if (!settings.json.empty())
        write_whole(
            settings.json,
            result_json(settings, job, status).dump(2, ' ', false, Json::error_handler_t::replace) +
                "\n");
    print_message(status, job.result);
    if (!settings.quiet) print_result(settings, job);
    return status;
}
