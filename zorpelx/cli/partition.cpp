/* zorpelx/cli/partition.cpp: the partition command.
 *
 * The work is the library's, in processes of its own; here are files, signals and the progress
 * line. Whatever is delivered is counted afresh by the code of verify before it is written.
 */
#include <algorithm>
#include <chrono>
#include <climits>
#include <cmath>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <unordered_map>

#include "advice.h"
#include "commands.h"
#include "figures.h"
#include "hypergraph.h"
#include "input.h"
#include "json.h"
#include "output.h"
#include "progress.h"
#include "zorpelx.h"

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
    std::vector<int> eptr, eind, vwgts, hewgts, fixed, start, groups, part;
    std::vector<double> capacities;
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

static void show_trace(void *, int start, const char *text, size_t length)
{
    fprintf(stderr, "start %d:\n", start);
    fwrite(text, 1, length, stderr);
    fputc('\n', stderr);
}

/* What reading the files has left of so many seconds; 0 for no limit. */
static double time_left(double seconds, const Job &job)
{
    constexpr double AT_ONCE = 1e-9; // 0 would mean no limit
    if (seconds == 0) return 0;
    const double spent = std::chrono::duration<double>(Clock::now() - job.began).count();
    return std::max(seconds - spent, AT_ONCE);
}

static void set_options(const Settings &settings, Job *job)
{
    zorpelx_options *const options = &job->options;
    zorpelx_options_init(options, sizeof *options);
    options->nparts = static_cast<int>(settings.nparts);
    options->ubfactor = static_cast<int>(settings.ubfactor);
    options->epsilon = wants_engine(settings) ? -1 : settings.epsilon;
    options->least = was_given(settings, &Settings::least) ? settings.least : -1;
    options->capacities = job->capacities.empty() ? nullptr : job->capacities.data();
    options->objective = static_cast<int>(settings.objective);
    options->preset = static_cast<int>(settings.preset);
    options->time = time_left(settings.time, *job);
    options->start = job->start.empty() ? nullptr : job->start.data();
    options->keep_price = static_cast<int>(settings.keep_price);
    options->groups = job->groups.empty() ? nullptr : job->groups.data();
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
    options->timeout = time_left(settings.timeout, *job);
    options->memory = static_cast<size_t>(settings.memory) << 20;
    options->fixed = job->fixed.empty() ? nullptr : job->fixed.data();
    options->cancel = &cancel;
    if (wants_progress(settings)) {
        options->on_progress = show_progress;
        options->user = const_cast<Settings *>(&settings);
    }
    if (settings.trace > 0) options->on_trace = show_trace;
}

/* Groups numbered from 0 without gaps. */
static std::vector<int> dense_groups(const std::vector<int64_t> &groups)
{
    std::unordered_map<int64_t, int> number;
    std::vector<int> dense;
    for (const int64_t group : groups)
        dense.push_back(
            group < 0 ? -1 : number.emplace(group, static_cast<int>(number.size())).first->second);
    return dense;
}

/* "3,3,2", or a file of such numbers. */
static std::vector<double> read_capacities(const Settings &settings)
{
    std::vector<double> capacities;
    if (settings.capacities.empty()) return capacities;
    std::string text = settings.capacities;
    if (text.find_first_not_of("0123456789.,eE+- ") != std::string::npos)
        text = read_text(settings, settings.capacities);
    std::replace(text.begin(), text.end(), ',', ' ');
    const char *at = text.c_str();
    for (;;) {
        at += strspn(at, " \t\r\n");
        if (*at == '\0') break;
        char *end = nullptr;
        const double size = strtod(at, &end);
        if (end == at || !(size > 0) || std::isinf(size))
            fail(STATUS_USAGE, "--capacities: number %zu is not above 0", capacities.size() + 1);
        capacities.push_back(size);
        at = end;
    }
    if (capacities.size() != static_cast<size_t>(settings.nparts))
        fail(STATUS_USAGE, "--capacities has %zu numbers; there are %lld parts", capacities.size(),
             ll(settings.nparts));
    return capacities;
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
    job.capacities = read_capacities(settings);
    if (!settings.start.empty())
        job.start = narrowed(
            read_vertex_numbers(settings, settings.start, job.graph.nvertices, 0, settings.nparts));
    if (!settings.together.empty())
        job.groups = dense_groups(
            read_vertex_numbers(settings, settings.together, job.graph.nvertices, -1, INT_MAX));
    return job;
}

static void check_feasible(const Settings &settings, const Job &job)
{
    if (!wants_engine(settings)) return; // the search says who is to blame
    const Advice advice =
        advise(job.graph.vertexwgt, job.fix, settings.nparts, static_cast<int>(settings.ubfactor));
    if (advice.verdict == INFEASIBLE && !settings.force)
        fail(STATUS_INFEASIBLE,
             "%lld parts are not possible with --ubfactor %lld: %s (--force "
             "goes on)",
             ll(settings.nparts), ll(settings.ubfactor), advice.reason.c_str());
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
    if (job->options.on_progress != nullptr) clear_progress();
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
            {"method", wants_engine(settings) ? "engine" : "search"},
            {"epsilon", wants_engine(settings) ? Json(nullptr) : Json(settings.epsilon)},
            {"least", was_given(settings, &Settings::least) ? Json(settings.least) : Json(nullptr)},
            {"capacities", settings.capacities.empty() ? Json(nullptr) : Json(settings.capacities)},
            {"objective", choice_name(&Settings::objective, settings.objective)},
            {"start", settings.start.empty() ? Json(nullptr) : Json(settings.start)},
            {"keep_in_place", settings.keep_price},
            {"together", settings.together.empty() ? Json(nullptr) : Json(settings.together)},
            {"time", settings.time},
            {"ubfactor", wants_engine(settings) ? Json(settings.ubfactor) : Json(nullptr)},
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

static Json result_json(const Settings &settings, const Job &job, Status status)
{
    const Figures &figures = job.figures;
    Json parts = Json::array();
    for (size_t p = 0; p < figures.weight.size(); p++)
        parts.push_back({{"part", p},
                         {"vertices", figures.vertices[p]},
                         {"weight", figures.weight[p]},
                         {"external_degree", figures.external[p]}});
    Json json = answer_json(settings, PARTITION, status, job.result.message);
    json.update({{"partition", job.output},
                 {"vertices", job.graph.nvertices},
                 {"hyperedges", job.graph.nnets},
                 {"pins", job.graph.pins.size()},
                 {"options", options_json(settings)},
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
                 {"moved_weight", settings.start.empty() ? Json(nullptr) : Json(job.result.moved)},
                 {"jobs", job.result.jobs},
                 {"seconds", job.result.seconds}});
    return json;
}

static void print_result(const Job &job, bool taken)
{
    const Figures &figures = job.figures;
    fprintf(
        taken ? stderr : stdout,
        "%s: %lld parts, cut %lld of %lld, external degrees %lld, heaviest part is %.2f %% above "
        "average, seed %d, %.2f s\n",
        shown_output(job.output).c_str(), ll(figures.nparts), ll(figures.cut),
        ll(total_weight(job.graph.netwgt)), ll(figures.soed), imbalance_percent(figures),
        job.result.seed, job.result.seconds);
}

static std::string output_name(const Settings &settings)
{
    if (!settings.output.empty()) return settings.output;
    if (is_stream_name(settings.hypergraph)) return "-";
    return plain_name(settings.hypergraph) + ".part." + std::to_string(settings.nparts);
}

static void check_usage(const Settings &settings)
{
    const struct {
        Field field;
        const char *name;
    } searching[] = {{&Settings::epsilon, "--epsilon"},         {&Settings::least, "--least"},
                     {&Settings::capacities, "--capacities"},   {&Settings::start, "--start"},
                     {&Settings::together, "--together"},       {&Settings::time, "--time"},
                     {&Settings::keep_price, "--keep-in-place"}};
    for (const auto &option : searching)
        if (wants_engine(settings) && was_given(settings, option.field))
            fail(STATUS_USAGE,
                 "%s is of the search; --ubfactor, --runs and the schemes are of the engine alone: "
                 "leave one or the other out",
                 option.name);
    if (settings.keep_price > 0 && settings.start.empty())
        fail(STATUS_USAGE, "--keep-in-place needs --start");
    if (settings.json == "-" && settings.output.empty() && output_name(settings) == "-")
        fail(STATUS_USAGE, "--json - needs -o when the hypergraph comes from a stream");
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
    tell(std::string(status == STATUS_INFEASIBLE
                         ? "the best partition found is not within its limits: "
                         : "") +
         result.message);
}

static void warn_of_parts(const Settings &settings, const Job &job)
{
    const int64_t empty = settings.nparts - job.graph.nvertices;
    if (empty > 0)
        tell(text_of("%lld parts for %lld vertices: at least %lld will be empty",
                     ll(settings.nparts), ll(job.graph.nvertices), ll(empty)));
}

/* Parts that are not what the command line let hope for, although nothing has failed. */
static void warn_of_result(const Settings &settings, const Job &job)
{
    const Figures &figures = job.figures;
    const int64_t empty = std::count(figures.vertices.begin(), figures.vertices.end(), 0);
    if (empty > 0)
        tell(text_of("%lld of %lld parts %s empty", ll(empty), ll(figures.nparts),
                     empty == 1 ? "is" : "are"));
    const double excess = imbalance_percent(figures);
    if (!was_given(settings, &Settings::ubfactor) ||
        excess <= static_cast<double>(settings.ubfactor))
        return;
    const auto heaviest = std::max_element(figures.weight.begin(), figures.weight.end());
    tell(text_of("part %lld is %.2f %% above the average: --ubfactor %lld bounds each bisection, "
                 "--epsilon %lld bounds the parts",
                 ll(heaviest - figures.weight.begin()), excess, ll(settings.ubfactor),
                 ll(settings.ubfactor)));
}

/* From the files to a partition that has been counted again. */
static Status make_partition(const Settings &settings, Job *job)
{
    *job = read_files(settings);
    if (!settings.quiet) warn_of_parts(settings, *job);
    check_feasible(settings, *job);
    job->output = output_name(settings);
    const int outcome = partition(settings, job);
    const Status status = final_status(outcome, job->result);
    if (job->result.finished == 0) fail(status, "%s", job->result.message);
    recount(settings, job);
    return status;
}

/* Tells of a failure where the figures would be; the partition file stays as it is. */
static void write_failure(const Settings &settings, const Writer &writer, const Failure &failure)
{
    if (settings.json.empty()) return;
    const std::string json =
        json_text(answer_json(settings, PARTITION, failure.status, failure.text));
    try {
        write_together(writer, {std::string_view(), json});
    } catch (...) { // the first failure is the one to tell
    }
}

Status run_partition(const Settings &given)
{
    Settings settings = given;
    apply_preset(&settings);
    check_usage(settings);
    const Writer writer =
        open_writer({output_name(settings), settings.json},
                    {settings.hypergraph, settings.fix, settings.start, settings.together});
    Job job = {};
    Status status = STATUS_OK;
    try {
        status = make_partition(settings, &job);
        std::string json;
        if (!settings.json.empty()) json = json_text(result_json(settings, job, status));
        write_together(writer, {partition_text(job.part), json});
    } catch (...) {
        const Failure failure = current_failure();
        write_failure(settings, writer, failure);
        throw;
    }
    print_message(status, job.result);
    if (settings.quiet) return status;
    if (status == STATUS_OK) warn_of_result(settings, job);
    print_result(job, standard_output_taken(writer));
    return status;
}
