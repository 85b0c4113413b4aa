// SPDX-License-Identifier: MIT
/* zorpelx/cli/replay.cpp: the replay command: a recorded run made again and compared.
 *
 * The run makes a record of its own; the two are compared field by field, but for the machine, the
 * time and the names of files.
 */
#include <cstdio>

#include "commands.h"
#include "difference.h"
#include "digest.h"
#include "input.h"
#include "output.h"
#include "record.h"
#include "write_hgr.h"
#include "told.h"

struct Replay {
    Record record;
    Problem problem;
    Solution solution;
    std::vector<Difference> found;
    bool ran;
};

/* What is to be the same. */
static Json comparable(Json record)
{
    for (const char *const field : {"version", "machine", "time", "sha256"}) record.erase(field);
    for (const char *const path :
         {"/hypergraph", "/partition", "/inputs/fix", "/inputs/start", "/inputs/together"}) {
        const Json::json_pointer place(path);
        if (record.contains(place) && record[place].is_object()) record[place].erase("file");
    }
    return record;
}

/* The settings of the run, with its files where they are now. */
static Settings settings_for(const Record &record, const Settings &given)
{
    Settings settings = settings_of(record, given);
    const Json &inputs = record.json["inputs"];
    settings.hypergraph = given.hypergraph;
    settings.fix = file_of(record, inputs["fix"], given.fix);
    settings.start = file_of(record, inputs["start"], given.start);
    settings.together = file_of(record, inputs["together"], given.together);
    return settings;
}

/* A run that nothing cut short must not be cut short by the deadline and the cap of then, which
 * another machine may need more of. */
static Settings settings_at_work(const Record &record, const Settings &recorded,
                                 const Settings &given)
{
    Settings settings = recorded;
    const bool repeatable = is_repeatable(record.json["run"], record.json["options"]);
    if (repeatable || was_given(given, &Settings::timeout)) settings.timeout = given.timeout;
    if (repeatable || was_given(given, &Settings::memory)) settings.memory = given.memory;
    return settings;
}

/* The digests of what is read. */
static std::vector<Difference> input_differences(const Record &record, const Settings &settings,
                                                 const Problem &problem)
{
    const Json &json = record.json;
    const Json now = {{"hypergraph", hypergraph_record("", problem.graph)},
                      {"inputs",
                       {{"fix", input_record(settings.fix, problem.fixed)},
                        {"start", input_record(settings.start, problem.start)},
                        {"together", input_record(settings.together, problem.groups)}}},
                      {"partition", nullptr}};
    const Json recorded = {
        {"hypergraph", json["hypergraph"]}, {"inputs", json["inputs"]}, {"partition", nullptr}};
    return differences(comparable(recorded), comparable(now));
}

static void run_again(const Settings &recorded, const Settings &given, Replay *replay)
{
    const Settings settings = settings_at_work(replay->record, recorded, given);
    catch_signals();
    const Status status = solve(settings, replay->problem, true, &replay->solution);
    if (caught_signal() != 0 || replay->solution.result.finished == 0)
        fail(status, "%s", replay->solution.result.message);
    const Json now = record_of(recorded, replay->problem, replay->solution, status, "partition");
    replay->found = differences(comparable(replay->record.json), comparable(now));
    replay->ran = true;
}

static Replay make_replay(const Settings &given)
{
    Replay replay = {};
    replay.record = read_record(given);
    const Settings settings = settings_for(replay.record, given);
    Settings reading = settings;
    reading.timeout = given.timeout;
    reading.memory = given.memory;
    replay.problem = read_problem(reading);
    replay.found = input_differences(replay.record, settings, replay.problem);
    if (replay.found.empty()) run_again(settings, given, &replay);
    if (!replay.record.fault.empty())
        replay.found.insert(replay.found.begin(),
                            {"sha256", replay.record.json["sha256"], replay.record.fault});
    return replay;
}

static bool is_told_repeatable(const Replay &replay)
{
    return replay.record.json["repeatable"].get<bool>();
}

static std::string closing_sentence(const Replay &replay)
{
    if (replay.found.empty())
        return "the same: options, generator, run, every figure and the partition";
    std::string text =
        "it differs in " + counted(static_cast<int64_t>(replay.found.size()), "field", "fields");
    if (!replay.ran) return text + "; nothing was run";
    if (!is_told_repeatable(replay))
        text += "; time or memory cut the recorded run short, so another need not be the same";
    return text;
}

static void print_text(const Settings &settings, const Replay &replay)
{
    FILE *const to = settings.output == "-" ? stderr : stdout;
    for (const Difference &difference : replay.found)
        fprintf(to, "  DIFFERS: %s\n", difference_text(difference).c_str());
    if (!settings.quiet)
        fprintf(to, "%s: %s\n", shown_name(settings.record).c_str(),
                closing_sentence(replay).c_str());
}

static Json replay_json(const Settings &settings, const Replay &replay, Status status)
{
    Json found = Json::array();
    for (const Difference &difference : replay.found)
        found.push_back({{"field", difference.field},
                         {"recorded", difference.recorded},
                         {"now", difference.now}});
    Json json = answer_json(settings, REPLAY, status, "");
    json.update({{"record", settings.record},
                 {"same", replay.found.empty()},
                 {"ran", replay.ran},
                 {"repeatable", is_told_repeatable(replay)},
                 {"differences", found},
                 {"seconds", replay.solution.result.seconds}});
    return json;
}

static void check_outputs(const Settings &settings)
{
    if (settings.output == "-" && settings.format == FORMAT_JSON)
        fail(STATUS_USAGE, "--format json needs another -o than standard output");
}

Status run_replay(const Settings &settings)
{
    check_outputs(settings);
    const Writer writer =
        open_writer({settings.output}, {settings.record, settings.hypergraph, settings.fix,
                                        settings.start, settings.together});
    const Replay replay = make_replay(settings);
    const Status status = replay.found.empty() ? STATUS_OK : STATUS_FAILED;
    if (replay.ran) {
        const std::vector<int> &part = replay.solution.part;
        write_together(writer, {numbers_text(part.data(), part.size())});
    }
    if (settings.format == FORMAT_JSON)
        fputs(json_text(replay_json(settings, replay, status)).c_str(), stdout);
    else
        print_text(settings, replay);
    return status;
}
