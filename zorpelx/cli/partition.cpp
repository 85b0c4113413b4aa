// SPDX-License-Identifier: MIT
/* zorpelx/cli/partition.cpp: the partition command: what it writes and reports.
 *
 * The work is the library's, in processes of its own, called by solving.cpp.
 */
#include <algorithm>
#include <climits>
#include <cstdio>
#include <numeric>
#include <random>

#include "casts.h"
#include "commands.h"
#include "input.h"
#include "json.h"
#include "output.h"
#include "partition_hooks.h"
#include "record.h"
#include "shard.h"

/* What one call works on and brings forth. */
struct Job {
    Problem problem;
    Solution solution;
    std::string output;
};

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

static Json history_json(const std::vector<SeenStep> &history)
{
    Json list = Json::array();
    for (const SeenStep &seen : history)
        list.push_back(
            {{"seconds", seen.seconds}, {"objective", seen.objective}, {"step", seen.step}});
    return list;
}

/* How the search came by its result; null for the engine, whose starts are one run of it. */
static Json search_json(const Settings &settings, const zorpelx_result &result)
{
    if (wants_engine(settings)) return nullptr;
    static const char *const names[ZORPELX_NSTEPS] = {"packing", "start", "member", "combination",
                                                      "exact"};
    Json steps = Json::array();
    for (int i = 0; i < ZORPELX_NSTEPS; i++) {
        const zorpelx_step &step = result.steps[i];
        if (step.made == 0) continue;
        steps.push_back({{"step", names[i]},
                         {"made", step.made},
                         {"better", step.better},
                         {"gained", step.gained},
                         {"seconds", step.seconds}});
    }
    return {{"pool", result.pool}, {"generations", result.generations}, {"steps", steps}};
}

/* The share of the vertices that are not where the start has them, in percent. */
static Json moved_percent(const Settings &settings, const Job &job)
{
    if (settings.start.empty()) return nullptr;
    const std::vector<int> &start = job.problem.start, &part = job.solution.part;
    int64_t moved = 0;
    for (size_t v = 0; v < start.size(); v++) moved += start[v] != part[v];
    return start.empty() ? 0.0
                         : 100 * static_cast<double>(moved) / static_cast<double>(start.size());
}

static Json result_json(const Settings &settings, const Job &job, Status status)
{
    const Figures &figures = job.solution.figures;
    Json parts = Json::array();
    for (size_t p = 0; p < figures.weight.size(); p++)
        parts.push_back({{"part", p},
                         {"vertices", figures.vertices[p]},
                         {"weight", figures.weight[p]},
                         {"external_degree", figures.external[p]}});
    Json json = answer_json(settings, PARTITION, status, job.solution.result.message);
    json.update(
        {{"partition", job.output},
         {"vertices", job.problem.graph.nvertices},
         {"hyperedges", job.problem.graph.nnets},
         {"pins", job.problem.graph.pins.size()},
         {"options", options_json(settings)},
         {"valid", job.solution.result.valid == 1},
         {"seed", job.solution.result.seed},
         {"finished", job.solution.result.finished},
         {"failed", job.solution.result.failed},
         {"cut", figures.cut},
         {"cut_hyperedges", figures.ncut},
         {"soed", figures.soed},
         {"connectivity", figures.km1},
         {"imbalance_percent", imbalance_percent(figures)},
         {"parts", parts},
         {"moved_weight", settings.start.empty() ? Json(nullptr) : Json(job.solution.result.moved)},
         {"moved_percent", moved_percent(settings, job)},
         {"jobs", job.solution.result.jobs},
         {"history", history_json(job.solution.history)},
         {"search", search_json(settings, job.solution.result)},
         {"seconds", job.solution.result.seconds}});
    return json;
}

/* How full the fullest part is: over the average part, or over its share if parts are unequal. */
static std::string fullest(const Job &job)
{
    const Figures &figures = job.solution.figures;
    const std::vector<double> &sizes = job.problem.capacities;
    if (sizes.empty())
        return text_of("heaviest part is %.2f %% above average", imbalance_percent(figures));
    const double all = std::accumulate(sizes.begin(), sizes.end(), 0.0);
    const double total = static_cast<double>(
        std::accumulate(figures.weight.begin(), figures.weight.end(), int64_t{0}));
    double most = -100;
    for (size_t p = 0; p < sizes.size() && total > 0; p++) {
        const double share = total * sizes[p] / all;
        most = std::max(most, 100 * (static_cast<double>(figures.weight[p]) / share - 1));
    }
    return text_of("fullest part is %.2f %% above its share", total > 0 ? most : 0.0);
}

static void print_result(const Job &job, bool taken)
{
    const Figures &figures = job.solution.figures;
    fprintf(taken ? stderr : stdout,
            "%s: %lld parts, cut %lld of %lld, external degrees %lld, %s, seed %d, %.2f s\n",
            shown_output(job.output).c_str(), ll(figures.nparts), ll(figures.cut),
            ll(total_weight(job.problem.graph.netwgt)), ll(figures.soed), fullest(job).c_str(),
            job.solution.result.seed, job.solution.result.seconds);
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
    } searching[] = {{&Settings::epsilon, "--epsilon"},          {&Settings::least, "--least"},
                     {&Settings::capacities, "--capacities"},    {&Settings::start, "--start"},
                     {&Settings::together, "--together"},        {&Settings::time, "--time"},
                     {&Settings::keep_price, "--keep-in-place"}, {&Settings::share, "--share"}};
    for (const auto &option : searching)
        if (wants_engine(settings) && was_given(settings, option.field))
            fail(STATUS_USAGE,
                 "%s is of the search; --ubfactor, --runs and the schemes are of the engine alone: "
                 "leave one or the other out",
                 option.name);
    if (settings.keep_price > 0 && settings.start.empty())
        fail(STATUS_USAGE, "--keep-in-place needs --start");
    for (const auto &[file, option] :
         {std::pair{settings.json, "--json"}, std::pair{settings.record, "--record"}})
        if (file == "-" && settings.output.empty() && output_name(settings) == "-")
            fail(STATUS_USAGE, "%s - needs -o when the hypergraph comes from a stream", option);
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
    const int64_t empty = settings.nparts - job.problem.graph.nvertices;
    if (empty > 0)
        tell(text_of("%lld parts for %lld vertices: at least %lld will be empty",
                     ll(settings.nparts), ll(job.problem.graph.nvertices), ll(empty)));
}

/* Parts that are not what the command line let hope for, although nothing has failed. */
static void warn_of_result(const Settings &settings, const Job &job)
{
    const Figures &figures = job.solution.figures;
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
static Status make_partition(const Settings &settings, PartitionHooks *hooks, Job *job)
{
    job->problem = hooks->read(settings);
    if (!settings.quiet) warn_of_parts(settings, *job);
    check_feasible(settings, job->problem);
    job->output = output_name(settings);
    catch_signals();
    hooks->begin(settings, job->problem);
    const Status status = solve(settings, job->problem, true, &job->solution, hooks->sharing());
    hooks->end(status, job->solution);
    if (job->solution.result.finished == 0) fail(status, "%s", job->solution.result.message);
    return status;
}

static Json with_more(Json json, PartitionHooks *hooks)
{
    hooks->add_to(&json);
    return json;
}

/* Tells of a failure where the figures would be; the partition file stays as it is. */
static void write_failure(const Settings &settings, const Writer &writer, const Failure &failure)
{
    if (settings.json.empty()) return;
    const std::string json =
        json_text(answer_json(settings, PARTITION, failure.status, failure.text));
    try {
        write_together(writer, {std::string_view(), json, std::string_view()});
    } catch (...) { // the first failure is the one to tell
    }
}

/* A record holds the seed, so it is drawn here if chance is to choose it. */
static void draw_seed(Settings *settings)
{
    if (settings->seed >= 0) return;
    std::random_device chance;
    const int most = INT_MAX - static_cast<int>(settings->starts - 1);
    settings->seed = std::uniform_int_distribution<int>(1, most)(chance);
}

Problem PartitionHooks::read(const Settings &settings)
{
    return read_problem(settings);
}

Status run_partition(const Settings &settings)
{
    if (is_shared(settings)) return run_shard(settings);
    PartitionHooks none;
    return partition_with(settings, &none);
}

Status partition_with(const Settings &given, PartitionHooks *hooks)
{
    Settings settings = given;
    apply_preset(&settings);
    check_usage(settings);
    if (!settings.record.empty()) draw_seed(&settings);
    const Writer writer =
        open_writer({output_name(settings), settings.json, settings.record},
                    {settings.hypergraph, settings.fix, settings.start, settings.together});
    Job job = {};
    Status status = STATUS_OK;
    try {
        status = make_partition(settings, hooks, &job);
        std::string json, record;
        if (!settings.json.empty())
            json = json_text(with_more(result_json(settings, job, status), hooks));
        if (!settings.record.empty())
            record =
                record_text(record_of(settings, job.problem, job.solution, status, job.output));
        write_together(writer, {partition_text(job.solution.part), json, record});
    } catch (...) {
        const Failure failure = current_failure();
        write_failure(settings, writer, failure);
        throw;
    }
    print_message(status, job.solution.result);
    if (settings.quiet) return status;
    if (status == STATUS_OK) warn_of_result(settings, job);
    print_result(job, standard_output_taken(writer));
    return status;
}
