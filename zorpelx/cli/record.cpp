// SPDX-License-Identifier: MIT
/* zorpelx/cli/record.cpp: what a record of a run holds, and its text. */
#include "record.h"

#include "digest.h"
#include "machine.h"
#include "recorded_options.h"
#include "version.h"

Json hypergraph_record(const std::string &file, const Hypergraph &graph)
{
    return {{"file", file},
            {"vertices", graph.nvertices},
            {"hyperedges", graph.nnets},
            {"pins", graph.pins.size()},
            {"vertex_weight", total_weight(graph.vertexwgt)},
            {"hyperedge_weight", total_weight(graph.netwgt)},
            {"sha256", digest_of(graph)}};
}

Json input_record(const std::string &file, const std::vector<int> &numbers)
{
    if (numbers.empty()) return nullptr;
    return {{"file", file}, {"sha256", digest_of(numbers)}};
}

Json partition_record(const std::string &file, const std::vector<int> &part)
{
    return {{"file", file}, {"sha256", digest_of(part)}};
}

Json figures_record(const Figures &figures, bool valid, const Json &moved)
{
    Json parts = Json::array();
    for (size_t p = 0; p < figures.weight.size(); p++)
        parts.push_back({{"vertices", figures.vertices[p]},
                         {"weight", figures.weight[p]},
                         {"external_degree", figures.external[p]}});
    return {{"valid", valid},
            {"cut", figures.cut},
            {"cut_hyperedges", figures.ncut},
            {"connectivity", figures.km1},
            {"soed", figures.soed},
            {"imbalance_percent", imbalance_percent(figures)},
            {"moved_weight", moved},
            {"parts", parts}};
}

static Json inputs_record(const Settings &settings, const Problem &problem)
{
    return {{"fix", input_record(settings.fix, problem.fixed)},
            {"start", input_record(settings.start, problem.start)},
            {"together", input_record(settings.together, problem.groups)}};
}

static Json run_record(const zorpelx_result &result, Status status)
{
    return {{"status", status},        {"message", result.message},
            {"seed", result.seed},     {"finished", result.finished},
            {"failed", result.failed}, {"jobs", result.jobs}};
}

bool is_repeatable(const Json &run, const Json &options)
{
    const int status = run["status"].get<int>();
    const bool whole = status == STATUS_OK || status == STATUS_INFEASIBLE;
    const bool timed = options["time"].is_number() && options["time"].get<double>() > 0;
    return whole && !timed && run["failed"].get<int>() == 0;
}

static Json machine_record(const Settings &settings)
{
    const Machine machine = this_machine();
    return {{"system", machine.system},
            {"architecture", machine.architecture},
            {"processor", machine.processor},
            {"processors", machine.processors},
            {"memory_mib", machine.memory_mib},
            {"compiler", machine.compiler},
            {"jobs", settings.jobs},
            {"threads", settings.threads}};
}

Json record_of(const Settings &settings, const Problem &problem, const Solution &solution,
               Status status, const std::string &partition)
{
    const zorpelx_result &result = solution.result;
    const Json moved = settings.start.empty() ? Json(nullptr) : Json(result.moved);
    const bool searching = !wants_engine(settings);
    Json record = {{"record", RECORD_FORMAT},
                   {"version", ZORPELX_CLI_VERSION},
                   {"hypergraph", hypergraph_record(settings.hypergraph, problem.graph)},
                   {"inputs", inputs_record(settings, problem)},
                   {"options", options_record(settings, problem.capacities)},
                   {"generator",
                    {{"name", searching ? "splitmix64" : "additive31"},
                     {"check", generator_check(searching, settings.seed)}}},
                   {"run", run_record(result, status)},
                   {"figures", figures_record(solution.figures, result.valid == 1, moved)},
                   {"partition", partition_record(partition, solution.part)}};
    record["repeatable"] = is_repeatable(record["run"], record["options"]);
    record["machine"] = machine_record(settings);
    record["time"] = {{"written", time_now()}, {"seconds", result.seconds}};
    return record;
}

std::string record_text(Json record)
{
    record.erase("sha256");
    std::string text = json_text(record); // ends with "\n}\n"
    text.resize(text.size() - 3);
    text += ",\n";
    return text + "  \"sha256\": \"" + digest_of(text) + "\"\n}\n";
}
