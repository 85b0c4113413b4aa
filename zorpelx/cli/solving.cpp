// SPDX-License-Identifier: MIT
/* zorpelx/cli/solving.cpp: from the files of the partition command to a partition.
 *
 * The only file of the program that calls the library. Whatever the library delivers is counted
 * afresh by the code of verify.
 */
#include "solving.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "advice.h"
#include "byname.h"
#include "casts.h"
#include "input.h"
#include "progress.h"

using Clock = std::chrono::steady_clock;

static volatile int cancel = 0; // set by a signal: which one

/* The first interrupt asks for what is there; the next one ends the process as usual. */
static void ask_to_stop(int signal)
{
    cancel = signal;
}

void stop_solving(int signal)
{
    cancel = signal;
}

void catch_signals()
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
static double time_left(double seconds, const Problem &problem)
{
    constexpr double AT_ONCE = 1e-9; // 0 would mean no limit
    if (seconds == 0) return 0;
    const double spent = std::chrono::duration<double>(Clock::now() - problem.began).count();
    return std::max(seconds - spent, AT_ONCE);
}

constexpr double ENDLESS = 1e9; // seconds

static void share(const Sharing &sharing, zorpelx_options *options)
{
    options->channel = sharing.channel;
    options->channel_user = sharing.user;
    if (sharing.endless) options->time = ENDLESS;
}

static zorpelx_options options_for(const Settings &settings, const Problem &problem, bool shown)
{
    zorpelx_options chosen;
    zorpelx_options *const options = &chosen;
    zorpelx_options_init(options, sizeof *options);
    options->nparts = static_cast<int>(settings.nparts);
    options->ubfactor = static_cast<int>(settings.ubfactor);
    options->epsilon = wants_engine(settings) ? -1 : settings.epsilon;
    options->least = was_given(settings, &Settings::least) ? settings.least : -1;
    options->capacities = problem.capacities.empty() ? nullptr : problem.capacities.data();
    options->objective = static_cast<int>(settings.objective);
    options->preset = static_cast<int>(settings.preset);
    options->time = time_left(settings.time, problem);
    options->start = problem.start.empty() ? nullptr : problem.start.data();
    options->keep_price = static_cast<int>(settings.keep_price);
    options->groups = problem.groups.empty() ? nullptr : problem.groups.data();
    options->nruns = static_cast<int>(settings.runs);
    options->ctype = static_cast<int>(settings.matching);
    options->rtype = static_cast<int>(settings.refine);
    options->vcycle = static_cast<int>(settings.vcycle);
    options->reconst = static_cast<int>(settings.reconst);
    options->polish = static_cast<int>(settings.polish);
    options->trace = static_cast<int>(settings.trace);
    options->seed = static_cast<int>(settings.seed);
    options->starts = static_cast<int>(settings.starts);
    options->shared = settings.share && settings.starts > 1;
    options->jobs = static_cast<int>(settings.jobs);
    options->threads = static_cast<int>(settings.threads);
    options->timeout = time_left(settings.timeout, problem);
    options->memory = static_cast<size_t>(settings.memory) << 20;
    options->fixed = problem.fixed.empty() ? nullptr : problem.fixed.data();
    options->cancel = &cancel;
    if (shown && settings.trace > 0) options->on_trace = show_trace;
    return chosen;
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

static void narrow_arrays(Problem *problem)
{
    const Hypergraph &graph = problem->graph;
    problem->eptr = narrowed(graph.start);
    problem->vwgts = narrowed(graph.vertexwgt);
    problem->hewgts = narrowed(graph.netwgt);
    problem->fixed = narrowed(problem->fix);
}

Problem read_problem(const Settings &settings)
{
    Problem problem = {};
    problem.began = Clock::now();
    Findings findings;
    problem.graph = read_hypergraph(settings, reading_of(settings), &findings);
    if (!settings.quiet) tell_warnings(settings.hypergraph, findings);
    if (problem.graph.pins.size() > INT_MAX)
        fail(STATUS_BAD_INPUT, "%s: more than %d vertex entries",
             shown_name(settings.hypergraph).c_str(), INT_MAX);
    problem.fix = fixed_vertices(settings, problem.graph, settings.nparts);
    problem.capacities = read_capacities(settings);
    if (!settings.start.empty())
        problem.start = narrowed(
            read_vertex_numbers(settings, settings.start, problem.graph, 0, settings.nparts));
    problem.groups = dense_groups(vertex_groups(settings, problem.graph));
    narrow_arrays(&problem);
    return problem;
}

void check_feasible(const Settings &settings, const Problem &problem)
{
    if (!wants_engine(settings)) return; // the search says who is to blame
    const Advice advice = advise(problem.graph.vertexwgt, problem.fix, settings.nparts,
                                 static_cast<int>(settings.ubfactor));
    if (advice.verdict == INFEASIBLE && !settings.force)
        fail(STATUS_INFEASIBLE,
             "%lld parts are not possible with --ubfactor %lld: %s (--force "
             "goes on)",
             ll(settings.nparts), ll(settings.ubfactor), advice.reason.c_str());
}

int caught_signal()
{
    return cancel;
}

static Status final_status(int status, const zorpelx_result &result)
{
    if (status == ZORPELX_CANCELLED && cancel != 0) return static_cast<Status>(128 + cancel);
    if (status == ZORPELX_OK && result.valid == 0) return STATUS_INFEASIBLE;
    return static_cast<Status>(status);
}

/* Counts what was delivered again; that it differs would be a fault of the program. */
static Figures recount(const Settings &settings, const Problem &problem, const Solution &solution)
{
    const std::vector<int64_t> part(solution.part.begin(), solution.part.end());
    for (const int64_t p : part)
        if (p < 0 || p >= settings.nparts) fail(STATUS_FAILED, "a vertex is in part %lld", ll(p));
    Figures figures = figures_of(problem.graph, part, settings.nparts);
    const zorpelx_result &result = solution.result;
    if (figures.cut != result.cut || figures.soed != result.soed)
        fail(STATUS_FAILED,
             "cut %lld and sum of external degrees %lld are %lld and %lld when "
             "counted again",
             ll(result.cut), ll(result.soed), ll(figures.cut), ll(figures.soed));
    return figures;
}

/* The library counts vertices from 0 and says so; whoever reads files counts them from 1. */
static void count_from_one(char *message)
{
    static const std::string words = " (counted from 0)";
    std::string text = message;
    for (size_t end; (end = text.find(words)) != std::string::npos;) {
        const size_t last = text.find_last_not_of("0123456789", end - 1);
        const size_t begin = last == std::string::npos ? 0 : last + 1;
        const long long number = atoll(text.substr(begin, end - begin).c_str()) + 1;
        text.replace(begin, end + words.size() - begin, std::to_string(number));
    }
    strcpy(message, text.c_str()); // one digit more at most, and 17 characters less
}

/* What a run is watched for: its progress line, and its history. */
struct Watched {
    const Settings *settings;
    bool line;
    std::vector<SeenStep> *history;
};

static int watch(void *user, const zorpelx_progress *progress)
{
    const Watched *const watched = static_cast<const Watched *>(user);
    std::vector<SeenStep> &history = *watched->history;
    if (progress->objective >= 0 &&
        (history.empty() || progress->objective < history.back().objective))
        history.push_back({progress->seconds, progress->objective,
                           progress->step == nullptr ? "" : progress->step});
    return watched->line ? show_progress(const_cast<Settings *>(watched->settings), progress) : 0;
}

int64_t objective_of(const Settings &settings, const Figures &figures)
{
    if (settings.objective == ZORPELX_KM1) return figures.km1;
    return settings.objective == ZORPELX_SOED ? figures.soed : figures.cut;
}

/* What is delivered may have been found after the last look. */
static void end_history(const Settings &settings, Solution *solution)
{
    if (wants_engine(settings)) solution->history.clear();
    const int64_t objective = objective_of(settings, solution->figures);
    std::vector<SeenStep> &history = solution->history;
    while (!history.empty() && history.back().objective < objective) history.pop_back();
    if (history.empty() || history.back().objective != objective)
        history.push_back({solution->result.seconds, objective, "end"});
}

Status solve(const Settings &settings, const Problem &problem, bool shown, Solution *solution,
             const Sharing *sharing)
{
    zorpelx_options options = options_for(settings, problem, shown);
    if (sharing != nullptr) share(*sharing, &options);
    Watched watched = {&settings, shown && wants_progress(settings), &solution->history};
    solution->history.clear();
    options.on_progress = watch;
    options.user = &watched;
    const zorpelx_hypergraph hypergraph = {static_cast<int>(problem.graph.nvertices),
                                           static_cast<int>(problem.graph.nnets),
                                           problem.eptr.data(),
                                           problem.graph.pins.data(),
                                           problem.vwgts.data(),
                                           problem.hewgts.data()};
    solution->part.assign(problem.vwgts.size(), 0);
    zorpelx_result_init(&solution->result, sizeof solution->result);
    const int status =
        zorpelx_partition(&hypergraph, &options, solution->part.data(), &solution->result);
    count_from_one(solution->result.message);
    if (watched.line) clear_progress();
    if (solution->result.finished > 0) {
        solution->figures = recount(settings, problem, *solution);
        end_history(settings, solution);
    }
    return final_status(status, solution->result);
}

std::string generator_check(bool searching, int64_t seed)
{
    uint64_t number = 0;
    zorpelx_generator_check(searching ? 1 : 0, static_cast<int>(seed), &number);
    return text_of("%016llx", static_cast<unsigned long long>(number));
}
