// SPDX-License-Identifier: MIT
/* zorpelx/cli/shard.cpp: searches whose jobs are kept in a journal, and spread over shards.
 *
 * The search runs as always and asks for each job; a thread beside it answers from the journal, and
 * lets it make what this process is to make. Shard I of N makes the jobs whose numbers leave I - 1
 * when divided by N. Combinations need the results of all jobs before them: a shard that does not
 * wait ends there, and merge makes them.
 */
#include "shard.h"

#include <atomic>
#include <chrono>
#include <csignal>
#include <exception>
#include <filesystem>
#include <optional>
#include <set>
#include <thread>

#include "app.h"
#include "commands.h"
#include "escaped.h"
#include "input.h"
#include "jobserver.h"
#include "journal.h"
#include "partition_hooks.h"
#include "place.h"
#include "told.h"

constexpr int POLL_EVERY = 20;     // milliseconds
constexpr double READ_EVERY = 0.5; // seconds, of others' results

struct ShardOf {
    int64_t index = 1, count = 1; // from 1
};

static double seconds()
{
    using std::chrono::steady_clock;
    return std::chrono::duration<double>(steady_clock::now().time_since_epoch()).count();
}

static ShardOf shard_of(const Settings &settings)
{
    ShardOf shard;
    if (settings.shard.empty()) return shard;
    long long index, count;
    char rest;
    if (sscanf(settings.shard.c_str(), "%lld/%lld%c", &index, &count, &rest) != 2 || index < 1 ||
        count < index || count > 1000000)
        fail(STATUS_USAGE, "--shard: '%s' is not such as 2/8", escaped(settings.shard).c_str());
    shard = {index, count};
    return shard;
}

bool is_shared(const Settings &settings)
{
    return !settings.journal.empty() || !settings.shard.empty() || settings.wait;
}

void check_sharing(const Settings &settings)
{
    if (settings.journal.empty())
        fail(STATUS_USAGE, "%s needs --journal", settings.wait ? "--wait" : "--shard");
    if (settings.wait && settings.shard.empty()) fail(STATUS_USAGE, "--wait needs --shard");
    if (wants_engine(settings))
        fail(STATUS_USAGE,
             "--journal is of the search; --ubfactor, --runs and the schemes are of the "
             "engine alone: leave one or the other out");
    if (settings.seed < 0) fail(STATUS_USAGE, "--journal needs a seed that is not drawn");
    if (settings.shard.empty()) return;
    for (const auto &[file, option] :
         {std::pair{settings.output, "--output"}, std::pair{settings.json, "--json"},
          std::pair{settings.record, "--record"}})
        if (!file.empty())
            fail(STATUS_USAGE, "%s is for merge: a shard leaves its results in the journal",
                 option);
    if (settings.time > 0)
        fail(STATUS_USAGE,
             "--shard has a share of work, not of time: --timeout ends it, and it goes "
             "on when it is called again");
    if (is_stream_name(settings.hypergraph))
        fail(STATUS_USAGE, "--shard needs a file that merge can read again");
}

/* A journal, and the thread that answers the search. */
class SharedSearch
{
  public:
    SharedSearch(const std::string &folder, const std::string &name, uint64_t digest,
                 const BoardRules &rules)
        : journal(folder, name, digest), waits(rules.wait),
          board(rules, [this](int client, const Message &message, const unsigned char *parts) {
              server.send(client, message, parts);
          })
    {
        learn_all();
        if (!name.empty())
            board.on_result = [this](const JobRecord &record) { journal.append(record); };
        thread = std::thread([this] { serve(); });
    }
    ~SharedSearch() { end(); }
    SharedSearch(const SharedSearch &) = delete;
    SharedSearch &operator=(const SharedSearch &) = delete;

    const Sharing *sharing() const { return &how; }

    /* Ends the thread, and throws what it met. */
    const JobBoard &finish()
    {
        end();
        if (failure) std::rethrow_exception(failure);
        return board;
    }

  private:
    void end()
    {
        ended = true;
        if (thread.joinable()) thread.join();
    }

    void learn_all()
    {
        for (FinishedJob &record : journal.read()) board.learn(std::move(record));
    }

    void step(double *read)
    {
        server.poll(
            POLL_EVERY,
            [this](int client, const Message &message, std::vector<unsigned char> parts) {
                board.hear(client, message, std::move(parts), seconds());
            },
            [this](int client) { board.lose(client); });
        if (!waits || seconds() - *read < READ_EVERY) return;
        learn_all();
        *read = seconds();
        board.look(seconds());
    }

    void serve()
    {
        try {
            double read = seconds();
            while (!ended) step(&read);
        } catch (...) { // a search whose results are lost has no use
            failure = std::current_exception();
            stop_solving(SIGTERM);
        }
    }

    Journal journal;
    bool waits;
    JobServer server;
    JobBoard board;
    Sharing how = {connect_to_server, &server, false};
    std::atomic<bool> ended = false;
    std::exception_ptr failure;
    std::thread thread;
};

static std::string shard_name(const ShardOf &shard)
{
    return text_of("shard-%lld-of-%lld", static_cast<long long>(shard.index),
                   static_cast<long long>(shard.count));
}

static bool is_of(int job, const ShardOf &shard)
{
    return job % shard.count == shard.index - 1;
}

static RunNote note_of(const Settings &settings, const Problem &problem, const ShardOf &shard)
{
    return {digest_of(settings, problem), shard.count, std::filesystem::current_path(),
            settings.words};
}

/* "shards 2, 3 and 5" */
static std::string shards_of(const std::set<int> &jobs, int64_t count)
{
    std::set<int64_t> shards;
    for (const int job : jobs) shards.insert(job % count + 1);
    std::string text = shards.size() == 1 ? "shard " : "shards ";
    size_t left = shards.size();
    for (const int64_t shard : shards) {
        text += std::to_string(shard);
        if (--left > 0) text += left == 1 ? " and " : ", ";
    }
    return text;
}

/* The whole partitioning in one process, with a journal. */
struct JournalHooks : PartitionHooks {
    std::optional<SharedSearch> search;

    void begin(const Settings &settings, const Problem &problem) override
    {
        const RunNote note = note_of(settings, problem, {});
        join_run(settings.journal, note);
        const BoardRules rules = {[](int, bool) { return true; }, false, false};
        search.emplace(settings.journal, shard_name({}), note.digest, rules);
    }
    const Sharing *sharing() override { return search->sharing(); }
    void end(Status, const Solution &) override { search->finish(); }
};

static void tell_shard(const Settings &settings, const ShardOf &shard, const JobBoard &board,
                       int made)
{
    if (settings.quiet) return;
    const std::string name = text_of("shard %lld of %lld", static_cast<long long>(shard.index),
                                     static_cast<long long>(shard.count));
    const std::string jobs = counted(made, "job", "jobs") + " made";
    if (board.absent().empty())
        printf("%s: %s; no other shard is missing: zorpelx merge %s\n", name.c_str(), jobs.c_str(),
               escaped(settings.journal).c_str());
    else
        printf("%s: %s; missing so far: %s\n", name.c_str(), jobs.c_str(),
               shards_of(board.absent(), shard.count).c_str());
}

/* One shard: results in the journal are all that it leaves. */
static Status run_one_shard(const Settings &settings)
{
    const ShardOf shard = shard_of(settings);
    const Problem problem = read_problem(settings);
    const RunNote note = note_of(settings, problem, shard);
    join_run(settings.journal, note);
    const BoardRules rules = {[=](int job, bool) { return is_of(job, shard); }, settings.wait,
                              !settings.wait};
    catch_signals();
    SharedSearch search(settings.journal, shard_name(shard), note.digest, rules);
    Solution solution;
    const Status status = solve(settings, problem, true, &solution, search.sharing());
    const JobBoard &board = search.finish();
    if (solution.result.finished == 0 || status >= STATUS_TIMEOUT)
        fail(status, "%s", solution.result.message);
    tell_shard(settings, shard, board, board.counts_of(0).made);
    return STATUS_OK;
}

Status run_shard(const Settings &given)
{
    Settings settings = given;
    settings.share = true;
    check_sharing(settings);
    if (!settings.shard.empty()) return run_one_shard(settings);
    JournalHooks hooks;
    return partition_with(settings, &hooks);
}

struct MergeHooks : PartitionHooks {
    std::string folder;
    RunNote note;
    bool finishes = false;
    std::optional<SharedSearch> search;

    void begin(const Settings &settings, const Problem &problem) override
    {
        if (digest_of(settings, problem) != note.digest)
            fail(STATUS_BAD_INPUT,
                 "the hypergraph or another file is not what the shards in %s read",
                 escaped(folder).c_str());
        const bool all = finishes;
        const BoardRules rules = {[all](int, bool independent) { return all || !independent; },
                                  false, true};
        search.emplace(folder, "merge", note.digest, rules);
    }
    const Sharing *sharing() override { return search->sharing(); }
    void end(Status status, const Solution &) override
    {
        const JobBoard &board = search->finish();
        if (status >= STATUS_TIMEOUT || board.absent().empty()) return;
        const size_t n = board.absent().size();
        fail(STATUS_FAILED,
             "%s of %s of %lld %s missing; run what is missing, or merge with --finish to make %s "
             "here",
             counted(static_cast<int64_t>(n), "job", "jobs").c_str(),
             shards_of(board.absent(), note.shards).c_str(), static_cast<long long>(note.shards),
             n == 1 ? "is" : "are", n == 1 ? "it" : "them");
    }
};

static std::string found_from(const std::string &folder, const std::string &name)
{
    if (name.empty() || name[0] == '/' || is_stream_name(name)) return name;
    return folder + '/' + name;
}

/* The command line of the first shard, with outputs and limits of this one. */
static Settings settings_of(const RunNote &note, const Settings &merge)
{
    Settings settings = fallback_settings();
    const ParsedWords parsed = parse_words(note.words, &settings);
    if (parsed.wish != WISH_RUN)
        fail(STATUS_BAD_INPUT, "the command line in run.json is wrong: %s",
             escaped(parsed.fault).c_str());
    for (std::string Settings::*file :
         {&Settings::hypergraph, &Settings::fix, &Settings::start, &Settings::together})
        settings.*file = found_from(note.folder, settings.*file);
    if (settings.capacities.find_first_not_of("0123456789.,eE+- ") != std::string::npos)
        settings.capacities = found_from(note.folder, settings.capacities);
    settings.journal = settings.shard = "";
    settings.wait = false;
    settings.share = true;
    settings.output = merge.output;
    settings.json = merge.json;
    settings.record = merge.record;
    settings.quiet = merge.quiet;
    settings.threads = merge.threads;
    settings.memory = merge.memory;
    settings.timeout = merge.timeout;
    settings.progress = merge.progress;
    return settings;
}

Status run_merge(const Settings &merge)
{
    MergeHooks hooks;
    hooks.folder = merge.folder;
    hooks.note = read_run(merge.folder);
    hooks.finishes = merge.finish;
    return partition_with(settings_of(hooks.note, merge), &hooks);
}
