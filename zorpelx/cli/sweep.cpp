// SPDX-License-Identifier: MIT
/* zorpelx/cli/sweep.cpp: the sweep command: many settings over one hypergraph.
 *
 * The runs are taken in the order of the plan by as many threads as there are to be runs at once;
 * each calls the library, which works in processes of its own. A result is in the journal before it
 * counts. Table and pictures are made at the end, of whatever there is.
 */
#include <algorithm>
#include <cstdio>
#include <exception>
#include <map>
#include <mutex>
#include <thread>

#include "commands.h"
#include "digest.h"
#include "input.h"
#include "output.h"
#include "pictures.h"
#include "progress.h"
#include "solving.h"
#include "sweep_journal.h"
#include "sweep_page.h"
#include "told.h"
#include "version.h"
#include "write_hgr.h"

/* All that the threads share. */
struct SweepAtWork {
    const Settings *settings;
    std::vector<SweepCell> plan;
    std::vector<SweepResult> results; // by plan
    Problem problem;
    SweepJournal journal;
    std::map<size_t, std::vector<int>> parts; // of runs that were the best of their group
    std::mutex mutex;                         // of all below, and of results and parts
    size_t next = 0;                          // run that is not taken yet
    Status stopped = STATUS_OK;               // by a signal, a deadline or a failure
    std::string why;
    std::exception_ptr thrown; // the first
};

static std::string folder_of(const Settings &settings)
{
    if (!settings.output.empty()) return settings.output;
    if (is_stream_name(settings.hypergraph))
        fail(STATUS_USAGE, "-o is needed: the hypergraph comes from a stream");
    return plain_name(settings.hypergraph) + ".sweep";
}

static std::string best_name(const std::string &folder, int64_t nparts, double epsilon)
{
    return folder + text_of("/best.e%g.part.%lld", epsilon, static_cast<long long>(nparts));
}

/* CSV, pictures, page; the best partition of each number of parts and epsilon with its page. */
static std::vector<std::string> output_names(const std::string &folder,
                                             const std::vector<SweepCell> &plan)
{
    std::vector<std::string> names = {folder + "/sweep.csv", folder + "/cut-time.svg",
                                      folder + "/cut-balance.svg", folder + "/sweep.html"};
    for (const SweepCell &cell : plan) {
        const std::string name = best_name(folder, cell.nparts, cell.epsilon);
        if (std::find(names.begin(), names.end(), name) != names.end()) continue;
        names.push_back(name);
        names.push_back(name + ".html"); // behind its partition
    }
    return names;
}

static Json head_of(const Settings &settings, const Problem &problem)
{
    return {{"sweep", 1},
            {"version", ZORPELX_CLI_VERSION},
            {"hypergraph", digest_of(problem.graph)},
            {"objective", choice_name(&Settings::objective, settings.objective)}};
}

static void take_journal(SweepAtWork *sweep)
{
    for (size_t i = 0; i < sweep->journal.lines.size(); i++) try {
            const SweepCell cell = cell_of_line(sweep->journal.lines[i]);
            for (size_t run = 0; run < sweep->plan.size(); run++)
                if (is_same_cell(sweep->plan[run], cell))
                    sweep->results[run] = result_of_line(sweep->journal.lines[i]);
        } catch (const Json::exception &) {
            fail(STATUS_BAD_INPUT, "%s:%zu: this is no line of a journal",
                 shown_name(sweep->journal.name).c_str(), i + 2);
        }
}

static SweepResult result_of(const Solution &solution, Status status)
{
    const Figures &figures = solution.figures;
    return {true,
            status == STATUS_OK,
            figures.cut,
            figures.ncut,
            figures.km1,
            figures.soed,
            imbalance_percent(figures),
            solution.result.seconds,
            digest_of(solution.part)};
}

/* Keeps the partition if no other of its number of parts and epsilon is better so far. */
static void keep_if_best(SweepAtWork *sweep, size_t run, const Solution &solution)
{
    for (const SweepGroup &group : groups_of(*sweep->settings, sweep->plan, sweep->results)) {
        if (group.best != run) continue;
        for (const size_t other : group.runs) sweep->parts.erase(other);
        sweep->parts[run] = solution.part;
    }
}

static void take_result(SweepAtWork *sweep, size_t run, Status status, const Solution &solution)
{
    const std::lock_guard hold(sweep->mutex);
    if (status != STATUS_OK && (status != STATUS_INFEASIBLE || solution.result.finished == 0)) {
        if (sweep->stopped == STATUS_OK) {
            sweep->stopped = status;
            sweep->why = solution.result.message;
        }
        return;
    }
    sweep->results[run] = result_of(solution, status);
    append_line(sweep->journal, sweep_line(sweep->plan[run], sweep->results[run]));
    keep_if_best(sweep, run, solution);
}

static size_t count_done(const SweepAtWork &sweep)
{
    return static_cast<size_t>(
        std::count_if(sweep.results.begin(), sweep.results.end(),
                      [](const SweepResult &result) { return result.done; }));
}

static std::string runs_text(const SweepAtWork &sweep)
{
    return counted(static_cast<int64_t>(sweep.plan.size()), "run", "runs");
}

/* The next run that is to be made; the number of runs if there is none. */
static size_t take_run(SweepAtWork *sweep)
{
    const std::lock_guard hold(sweep->mutex);
    while (sweep->next < sweep->plan.size() && sweep->results[sweep->next].done) sweep->next++;
    if (sweep->stopped != STATUS_OK || sweep->thrown || caught_signal() != 0)
        return sweep->plan.size();
    if (wants_progress(*sweep->settings))
        fprintf(stderr, "\r%zu of %s ", count_done(*sweep), runs_text(*sweep).c_str());
    return sweep->next < sweep->plan.size() ? sweep->next++ : sweep->next;
}

static void work(SweepAtWork *sweep)
{
    try {
        for (size_t run; (run = take_run(sweep)) < sweep->plan.size();) {
            Solution solution = {};
            const Settings settings = settings_of_cell(*sweep->settings, sweep->plan[run]);
            const Status status = solve(settings, sweep->problem, false, &solution);
            take_result(sweep, run, status, solution);
        }
    } catch (...) {
        const std::lock_guard hold(sweep->mutex);
        if (!sweep->thrown) sweep->thrown = std::current_exception();
    }
}

#ifdef __SANITIZE_ADDRESS__
constexpr size_t MOST_AT_ONCE = 1; // the sanitizer's heap does not outlive a fork beside threads
#else
constexpr size_t MOST_AT_ONCE = SIZE_MAX;
#endif

static void run_all(SweepAtWork *sweep)
{
    const size_t processors = std::max(1u, std::thread::hardware_concurrency());
    const size_t wanted =
        sweep->settings->jobs > 0 ? static_cast<size_t>(sweep->settings->jobs) : processors;
    catch_signals();
    std::vector<std::thread> threads;
    const size_t n = std::min({wanted, 2 * processors, sweep->plan.size(), MOST_AT_ONCE});
    for (size_t i = 0; i < n; i++) threads.emplace_back(work, sweep);
    for (std::thread &thread : threads) thread.join();
    if (wants_progress(*sweep->settings)) fputc('\n', stderr);
    if (sweep->thrown) std::rethrow_exception(sweep->thrown);
}

/* The partition of a run; made again if an earlier process made it. */
static std::vector<int> part_of_run(SweepAtWork *sweep, size_t run)
{
    const auto known = sweep->parts.find(run);
    if (known != sweep->parts.end()) return known->second;
    Settings settings = settings_of_cell(*sweep->settings, sweep->plan[run]);
    settings.timeout = 0;
    Solution solution = {};
    const Status status = solve(settings, sweep->problem, false, &solution);
    if (status != STATUS_OK && status != STATUS_INFEASIBLE)
        fail(status, "%s", solution.result.message);
    if (digest_of(solution.part) != sweep->results[run].sha256)
        fail(STATUS_FAILED, "%s: the run of %lld parts, seed %lld gives another partition now",
             shown_name(sweep->journal.name).c_str(),
             static_cast<long long>(sweep->plan[run].nparts),
             static_cast<long long>(sweep->plan[run].seed));
    return solution.part;
}

/* The best partition of each group and the report about it, where the sweep is whole or has the
 * partition at hand; the others are made when it goes on. Puts the names of the reports in place.
 */
static void write_best(SweepAtWork *sweep, const std::string &folder,
                       const std::vector<std::string> &names, SweepShown *shown,
                       std::vector<std::string> *texts)
{
    const bool whole = sweep->stopped == STATUS_OK && caught_signal() == 0;
    for (size_t n = 0; n < shown->groups.size(); n++) {
        const SweepGroup &group = shown->groups[n];
        if (!whole && sweep->parts.count(group.best) == 0) continue;
        const std::vector<int> part = part_of_run(sweep, group.best);
        const std::string name = best_name(folder, group.nparts, group.epsilon);
        const size_t place =
            static_cast<size_t>(std::find(names.begin(), names.end(), name) - names.begin());
        (*texts)[place] = numbers_text(part.data(), part.size());
        (*texts)[place + 1] = best_page(*sweep->settings, sweep->problem.graph, group, part, name);
        shown->reports[n] = names[place + 1].substr(folder.size() + 1);
    }
}

/* The contents of the outputs, by their names; best partitions only where there are results. */
static void write_all_outputs(SweepAtWork *sweep, const std::string &folder, const Writer &writer,
                              const std::vector<std::string> &names)
{
    const auto groups = groups_of(*sweep->settings, sweep->plan, sweep->results);
    const Settings &settings = *sweep->settings;
    SweepShown shown = {settings, sweep->problem.graph, sweep->plan, sweep->results, groups, {}};
    shown.reports.resize(groups.size());
    const std::vector<Picture> pictures = {
        time_picture(settings, sweep->plan, sweep->results, groups),
        balance_picture(settings, sweep->plan, sweep->results, groups)};
    std::vector<std::string> texts(names.size());
    write_best(sweep, folder, names, &shown, &texts);
    texts[0] = sweep_csv(sweep->plan, sweep->results, groups);
    texts[1] = picture_file(pictures[0]);
    texts[2] = picture_file(pictures[1]);
    texts[3] = sweep_page(shown, pictures);
    std::vector<std::string_view> contents;
    for (const std::string &text : texts)
        contents.push_back(text.empty() ? std::string_view() : std::string_view(text));
    write_together(writer, contents);
}

static void print_answer(const SweepAtWork &sweep, const std::string &folder, Status status)
{
    const Settings &settings = *sweep.settings;
    const auto groups = groups_of(settings, sweep.plan, sweep.results);
    if (settings.format == FORMAT_JSON) {
        Json json = answer_json(settings, SWEEP, status, sweep.why);
        json["folder"] = folder;
        json.update(sweep_json(settings, sweep.plan, sweep.results, groups));
        fputs(json_text(json).c_str(), stdout);
        return;
    }
    if (!settings.quiet)
        fputs(sweep_table(settings, sweep.plan, sweep.results, groups).c_str(), stdout);
    if (!settings.quiet)
        printf("%s: %zu of %s; * is the best of its parts and epsilon\n",
               shown_name(folder).c_str(), count_done(sweep), runs_text(sweep).c_str());
}

static Status status_of(const SweepAtWork &sweep)
{
    if (caught_signal() != 0) return static_cast<Status>(128 + caught_signal());
    if (sweep.stopped != STATUS_OK) return sweep.stopped;
    const auto valid = [](const SweepResult &result) { return result.valid; };
    return std::all_of(sweep.results.begin(), sweep.results.end(), valid) ? STATUS_OK
                                                                          : STATUS_INFEASIBLE;
}

static void tell_end(const SweepAtWork &sweep, Status status)
{
    if (count_done(sweep) < sweep.plan.size())
        tell(text_of("%zu of %s %s done%s%s; the same command goes on from there",
                     count_done(sweep), runs_text(sweep).c_str(),
                     sweep.plan.size() == 1 ? "is" : "are", sweep.why.empty() ? "" : ": ",
                     sweep.why.c_str()));
    else if (status == STATUS_INFEASIBLE)
        tell("some partitions are not within their limits: the column valid of sweep.csv has them");
}

/* The problem is the same for every run, so it is read for the least number of parts. */
static Problem read_problem_of(const Settings &settings, const std::vector<SweepCell> &plan)
{
    Settings reading = settings;
    reading.nparts = plan[0].nparts;
    return read_problem(reading);
}

Status run_sweep(const Settings &settings)
{
    const std::string folder = folder_of(settings);
    SweepAtWork sweep;
    sweep.settings = &settings;
    sweep.plan = sweep_plan(settings);
    sweep.results.resize(sweep.plan.size());
    sweep.problem = read_problem_of(settings, sweep.plan);
    make_folder(folder);
    const std::vector<std::string> names = output_names(folder, sweep.plan);
    const Writer writer = open_writer(names, {settings.hypergraph});
    sweep.journal = open_journal(folder + "/journal.jsonl", head_of(settings, sweep.problem));
    take_journal(&sweep);
    run_all(&sweep);
    const Status status = status_of(sweep);
    write_all_outputs(&sweep, folder, writer, names);
    close_journal(&sweep.journal);
    tell_end(sweep, status);
    print_answer(sweep, folder, status);
    return status;
}
