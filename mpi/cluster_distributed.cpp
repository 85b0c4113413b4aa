// SPDX-License-Identifier: MIT
/* mpi/cluster_distributed.cpp: partition --distributed: files and options around divide(). */
#include "cluster_distributed.h"

#include <cstdio>
#include <cstring>
#include <ctime>
#include <unistd.h>

#include "casts.h"
#include "distributed/divide.h"
#include "distributed/rate_moves.h"
#include "distributed/read_share.h"
#include "input.h"
#include "json.h"
#include "lib/crew.h"
#include "output.h"
#include "told.h"
#include "zorpelx.h"

Status tell_fault(const Ranks *ranks, const std::string &name, const ShareFault &fault)
{
    if (ranks->rank == 0) tell(shown_name(name) + ": " + fault.text);
    return fault.kind == FAULT_IO ? STATUS_IO : STATUS_BAD_INPUT;
}

int64_t peak_memory()
{
    FILE *const file = fopen("/proc/self/status", "r");
    char line[256];
    long long kib = 0;
    while (file != nullptr && fgets(line, sizeof line, file) != nullptr)
        if (sscanf(line, "VmHWM: %lld", &kib) == 1) break;
    if (file != nullptr) fclose(file);
    return kib * 1024;
}

/* Options that say nothing here would be obeyed by nobody. */
static void refuse_options(const Settings &settings)
{
    const Field obeyed[] = {&Settings::hypergraph, &Settings::distributed, &Settings::nparts,
                            &Settings::epsilon,    &Settings::least,       &Settings::objective,
                            &Settings::preset,     &Settings::fix,         &Settings::seed,
                            &Settings::threads,    &Settings::fits,        &Settings::gather,
                            &Settings::output,     &Settings::json,        &Settings::progress,
                            &Settings::quiet,      &Settings::first};
    for (size_t i = 0; i < OPTIONS.size(); i++)
        if (settings.given[i] &&
            std::find(std::begin(obeyed), std::end(obeyed), OPTIONS[i].field) == std::end(obeyed))
            fail(STATUS_USAGE, "%s does not go with --distributed", long_name(OPTIONS[i]).c_str());
}

/* What a run works on. */
struct DistributedJob {
    Settings settings;
    Ranks ranks;
    ShareHeader header;
    Level level;
    DivideOptions options;
    std::unique_ptr<Crew> crew; // of rank 0
    std::vector<int> part;
    Divided divided;
    std::vector<std::pair<std::string, double>> seconds; // by stage
    std::string output;
};

static double now()
{
    return MPI_Wtime();
}

static Status read_files(DistributedJob *job)
{
    Ranks *const ranks = &job->ranks;
    const Settings &settings = job->settings;
    ShareFault fault = {};
    LooseNets nets;
    if (!read_hypergraph_share(ranks, settings.hypergraph.c_str(), settings.first, &job->header,
                               &nets, &job->level, &fault))
        return tell_fault(ranks, settings.hypergraph, fault);
    if (!settings.fix.empty() &&
        !read_vertex_numbers(ranks, settings.fix.c_str(), job->header.nvertices, -1,
                             settings.nparts - 1, &job->level.fixed, &fault))
        return tell_fault(ranks, settings.fix, fault);
    const bool any = std::any_of(job->level.fixed.begin(), job->level.fixed.end(),
                                 [](int part) { return part >= 0; });
    if (most_of_all(ranks, any) == 0)
        job->level.fixed.clear();
    else
        job->level.fixed.resize(job->level.weight.size(), -1);
    open_level(ranks, &job->level, &nets);
    return STATUS_OK;
}

static void set_goal(DistributedJob *job)
{
    static const Objective objectives[] = {Objective::cut, Objective::km1, Objective::soed};
    const Settings &settings = job->settings;
    Goal *const goal = &job->options.goal;
    goal->nparts = static_cast<int>(settings.nparts);
    goal->objective = objectives[settings.objective];
    goal->most.resize(static_cast<size_t>(goal->nparts));
    goal->least.resize(goal->most.size());
    const double least = was_given(settings, &Settings::least) ? settings.least : -1;
    if (zorpelx_part_bounds(goal->nparts, settings.epsilon, least, nullptr, job->level.totalweight,
                            goal->least.data(), goal->most.data()) != ZORPELX_OK)
        fail(STATUS_USAGE, "these bounds cannot be");
}

static void watch_level(const Ranks *ranks, const char *stage, int depth, const Level *level,
                        int64_t value)
{
    if (ranks->rank != 0) return;
    fprintf(stderr, "%8.2f s  %s level %d: %lld vertices, %lld hyperedges, %lld pins",
            static_cast<double>(clock()) / CLOCKS_PER_SEC, stage, depth, ll(level->nvertices),
            ll(level->nnets), ll(level->npins));
    if (value > 0) fprintf(stderr, ", objective %lld", ll(value));
    fputc('\n', stderr);
}

static void set_options(DistributedJob *job)
{
    const Settings &settings = job->settings;
    int64_t seed = settings.seed >= 0 ? settings.seed : static_cast<int64_t>(time(nullptr));
    tell_all(&job->ranks, &seed, sizeof seed);
    const int threads = settings.threads > 0 ? static_cast<int>(settings.threads)
                                             : static_cast<int>(sysconf(_SC_NPROCESSORS_ONLN));
    if (job->ranks.rank == 0) job->crew.reset(new Crew(make_crew(threads, false)));
    job->options.finishing = {static_cast<int>(settings.preset), static_cast<uint64_t>(seed),
                              threads, job->crew.get()};
    job->options.fits = settings.fits;
    const bool shown = settings.progress == PROGRESS_ALWAYS ||
                       (settings.progress == PROGRESS_AUTO && isatty(STDERR_FILENO));
    job->options.watch = shown && !settings.quiet ? watch_level : nullptr;
}

/* "OUTPUT.slice-2-of-4" */
static std::string slice_name(const DistributedJob &job)
{
    if (job.settings.gather) return job.ranks.rank == 0 ? job.output : "";
    return text_of("%s.slice-%d-of-%d", job.output.c_str(), job.ranks.rank + 1, job.ranks.nranks);
}

static std::string part_lines(const std::vector<int> &part)
{
    std::string text;
    for (const int p : part) text += std::to_string(p) + '\n';
    return text;
}

/* With --gather all lines on rank 0. */
static std::string gathered_lines(DistributedJob *job)
{
    std::string text = part_lines(job->part);
    if (!job->settings.gather) return text;
    Mail<char> mail;
    mail.first.assign(static_cast<size_t>(job->ranks.nranks) + 1,
                      static_cast<int64_t>(text.size()));
    mail.first[0] = 0;
    mail.records.assign(text.begin(), text.end());
    exchange(&job->ranks, &mail);
    return std::string(mail.records.begin(), mail.records.end());
}

static int64_t value_by(DistributedJob *job, Objective objective)
{
    Goal goal = job->options.goal;
    Division division;
    goal.objective = objective;
    division.part = job->part;
    load_division(&job->ranks, &job->level, &goal, &division);
    return rate_moves(&job->ranks, &job->level, &goal, &division, nullptr, nullptr);
}

/* What each rank took and sent; counted is as it was before these figures are collected. */
static Json ranks_json(DistributedJob *job, const Ranks &counted, int64_t worked)
{
    const std::pair<const char *, int64_t> figures[] = {
        {"vertices", nown_of(&job->level)},
        {"pins", static_cast<int64_t>(job->level.netind.size())},
        {"bytes_sent", counted.bytes},
        {"bytes_of_sums", counted.summed},
        {"messages_sent", counted.messages},
        {"steps", counted.steps},
        {"peak_memory_bytes", peak_memory()}};
    Json list = Json::array();
    for (int r = 0; r < job->ranks.nranks; r++) list.push_back({{"rank", r}});
    const auto add = [&](const char *name, int64_t value, const auto &shown) {
        const std::vector<int64_t> values = list_all(&job->ranks, value);
        for (size_t r = 0; r < values.size(); r++) list[r][name] = shown(values[r]);
    };
    const auto seconds = [](int64_t time) { return static_cast<double>(time) / 1e9; };
    for (const auto &[name, value] : figures) add(name, value, [](int64_t count) { return count; });
    add("seconds_working", worked, seconds);
    add("seconds_waiting", counted.waiting, seconds);
    return list;
}

static std::string complaint_of(const Divided &divided)
{
    if (divided.excess == 0) return "";
    return text_of("no partition within the bounds was found; the parts are %lld outside in all",
                   ll(divided.excess));
}

static Json report_json(DistributedJob *job)
{
    const Ranks counted = job->ranks;
    const int64_t worked = processor_time() - counted.waiting;
    const Level &level = job->level;
    Json seconds = Json::object();
    for (const auto &[stage, time] : job->seconds) seconds[stage] = time;
    const int64_t cut = value_by(job, Objective::cut), km1 = value_by(job, Objective::km1);
    Json report = answer_json(job->settings, PARTITION,
                              job->divided.excess > 0 ? STATUS_INFEASIBLE : STATUS_OK,
                              complaint_of(job->divided));
    report.update(Json{{"nvertices", job->header.nvertices},
                       {"nhyperedges", job->header.nnets},
                       {"npins", level.npins},
                       {"nparts", job->settings.nparts},
                       {"objective", choice_name(&Settings::objective, job->settings.objective)},
                       {"cut", cut},
                       {"km1", km1},
                       {"soed", cut + km1},
                       {"part_weights", job->divided.weight},
                       {"most", job->options.goal.most[0]},
                       {"excess", job->divided.excess},
                       {"levels", job->divided.levels},
                       {"level_pins", job->divided.pins},
                       {"seconds", seconds},
                       {"ranks", ranks_json(job, counted, worked)}});
    return report;
}

static Status finish(DistributedJob *job, const Writer &writer)
{
    const Json report = report_json(job);
    const std::string lines = gathered_lines(job),
                      json = job->settings.json.empty() ? "" : json_text(report);
    const Status status = on_all_ranks(&job->ranks, [&] {
        std::vector<std::string_view> contents = {lines};
        contents.push_back(job->ranks.rank == 0 ? std::string_view(json) : std::string_view());
        write_together(writer, contents);
    });
    if (status != STATUS_OK || job->ranks.rank != 0) return status;
    if (!job->settings.quiet && !standard_output_taken(writer))
        printf("cut %lld, km1 %lld, heaviest part %lld of %lld allowed; %s, %s: %s\n",
               ll(report["cut"].get<int64_t>()), ll(report["km1"].get<int64_t>()),
               ll(*std::max_element(job->divided.weight.begin(), job->divided.weight.end())),
               ll(job->options.goal.most[0]),
               counted(job->divided.levels, "level", "levels").c_str(),
               counted(job->ranks.nranks, "rank", "ranks").c_str(),
               shown_output(job->settings.gather ? job->output : slice_name(*job)).c_str());
    if (job->divided.excess > 0) tell(complaint_of(job->divided));
    return status;
}

static Status read_and_divide(DistributedJob *job)
{
    double start = now();
    const auto lap = [&](const char *stage) {
        job->seconds.push_back({stage, now() - start});
        start = now();
    };
    const Status status = read_files(job);
    if (status != STATUS_OK) return status;
    lap("read");
    set_goal(job);
    set_options(job);
    job->divided = divide(&job->ranks, &job->level, &job->options, &job->part);
    lap("partition");
    return STATUS_OK;
}

Status run_distributed_partition(const Settings &settings, MPI_Comm comm)
{
    refuse_options(settings);
    DistributedJob job = {};
    job.settings = settings;
    job.ranks = ranks_of(comm);
    job.output = !settings.output.empty()
                     ? settings.output
                     : text_of("%s.part.%lld", settings.hypergraph.c_str(), ll(settings.nparts));
    Writer writer(nullptr, nullptr);
    Status status = on_all_ranks(&job.ranks, [&] {
        if (job.output == "-" && !settings.gather)
            fail(STATUS_USAGE, "standard output takes the partition with --gather only");
        writer = open_writer({slice_name(job), job.ranks.rank == 0 ? settings.json : ""},
                             {settings.hypergraph, settings.fix});
    });
    if (status == STATUS_OK) status = read_and_divide(&job);
    if (status == STATUS_OK) status = finish(&job, writer);
    return status == STATUS_OK && job.divided.excess > 0 ? STATUS_INFEASIBLE : status;
}
