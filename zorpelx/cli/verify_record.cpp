// SPDX-License-Identifier: MIT
/* zorpelx/cli/verify_record.cpp: a record held against the files, without running anything.
 *
 * The pieces of the record that follow from the files are made again and compared field by field.
 * The options and the run are taken as they are told: replay repeats them.
 */
#include <algorithm>
#include <climits>
#include <cstdlib>

#include "bounds.h"
#include "byname.h"
#include "casts.h"
#include "claims.h"
#include "difference.h"
#include "input.h"
#include "recorded_options.h"

/* Names of files are nobody's claim. */
static Json without_file(Json json)
{
    if (json.is_object()) json.erase("file");
    return json;
}

/* True, or false with the first difference. */
static Claim claim_same(const std::string &name, const Json &recorded, const Json &now,
                        const std::string &good)
{
    const std::vector<Difference> list = differences(without_file(recorded), without_file(now));
    if (list.empty()) return {name, true, good};
    std::string text = difference_text(list[0]);
    if (list.size() > 1) text += text_of("; and %zu more", list.size() - 1);
    return {name, false, text};
}

/* The 10,000th number of the C library's additive generator, as rand() has it. */
static uint64_t additive_number(int seed)
{
    constexpr int DRAWS = 10000;
    constexpr size_t STATE = 128; // bytes, which makes it the generator of rand()
    char state[STATE] = {};
    random_data data = {};
    int32_t number = 0;
    initstate_r(static_cast<unsigned>(seed), state, sizeof state, &data);
    for (int i = 0; i < DRAWS; i++) random_r(&data, &number);
    return static_cast<uint64_t>(number);
}

/* The 10,000th number of splitmix64, whose n-th state is known without the others. */
static uint64_t splitmix_number(int seed)
{
    constexpr uint64_t STEP = 0x9e3779b97f4a7c15u, SPREAD = 0xd1342543de82ef95u;
    constexpr uint64_t DRAWS = 10001; // the first one is thrown away
    uint64_t z = static_cast<uint64_t>(seed) * SPREAD + DRAWS * STEP;
    z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9u;
    z = (z ^ (z >> 27)) * 0x94d049bb133111ebu;
    return z ^ (z >> 31);
}

static Claim check_generator(const Json &record, bool searching)
{
    const int64_t seed = record["options"]["seed"].get<int64_t>();
    if (seed < 0 || seed > INT_MAX) return {"generator", false, "the seed is not from 0 to 2^31-1"};
    const int start = static_cast<int>(seed);
    const uint64_t number = searching ? splitmix_number(start) : additive_number(start);
    const Json now = {{"name", searching ? "splitmix64" : "additive31"},
                      {"check", text_of("%016llx", static_cast<unsigned long long>(number))}};
    return claim_same("generator", record["generator"], now, "it gives its numbers for this seed");
}

/* Whether vertices are apart that the file of groups holds together. */
static bool groups_are_whole(const std::vector<int> &groups, const std::vector<int64_t> &part)
{
    std::vector<int64_t> place(groups.size(), -1); // of each group: its part
    for (size_t v = 0; v < groups.size(); v++) {
        if (groups[v] < 0) continue;
        int64_t *const known = &place[static_cast<size_t>(groups[v])];
        if (*known >= 0 && *known != part[v]) return false;
        *known = part[v];
    }
    return true;
}

/* The files that the run took beside the hypergraph. */
struct Inputs {
    std::vector<int64_t> fix;
    std::vector<int> start, groups;
};

static bool fixed_are_in_place(const std::vector<int64_t> &fix, const std::vector<int64_t> &part)
{
    for (size_t v = 0; v < fix.size(); v++)
        if (fix[v] >= 0 && fix[v] != part[v]) return false;
    return true;
}

static PartBounds bounds_of(const Settings &recorded, const Inputs &inputs, const Figures &figures,
                            const std::vector<double> &capacities)
{
    const int64_t total = total_weight(figures.weight);
    if (wants_engine(recorded))
        return engine_bounds(figures.nparts, static_cast<int>(recorded.ubfactor), total,
                             !inputs.fix.empty());
    const double least = was_given(recorded, &Settings::least) ? recorded.least : -1;
    return search_bounds(figures.nparts, recorded.epsilon, least, capacities, total);
}

static std::vector<double> capacities_of(const Json &options, int64_t nparts)
{
    std::vector<double> list;
    if (options.contains("capacities") && options["capacities"].is_array())
        for (const Json &size : options["capacities"])
            list.push_back(size.is_number() ? size.get<double>() : 0);
    if (!list.empty() && list.size() != static_cast<size_t>(nparts)) list.clear();
    return list;
}

/* A search may also call a partition invalid for parts that are empty and need not be. */
static bool is_valid(const Settings &recorded, const Json &record, const Inputs &inputs,
                     const std::vector<int64_t> &part, const Figures &figures)
{
    const PartBounds bounds =
        bounds_of(recorded, inputs, figures, capacities_of(record["options"], figures.nparts));
    const bool valid = part_outside(bounds, figures.weight) < 0 &&
                       fixed_are_in_place(inputs.fix, part) &&
                       groups_are_whole(inputs.groups, part);
    const bool empty =
        std::find(figures.weight.begin(), figures.weight.end(), 0) != figures.weight.end();
    return valid && (!empty || wants_engine(recorded) || record["figures"]["valid"].get<bool>());
}

static Json moved_weight(const Inputs &inputs, const Hypergraph &graph,
                         const std::vector<int64_t> &part)
{
    if (inputs.start.empty()) return nullptr;
    int64_t moved = 0;
    for (size_t v = 0; v < part.size(); v++)
        if (inputs.start[v] != part[v]) moved += graph.vertexwgt[v];
    return moved;
}

static Inputs read_inputs(const Settings &settings, const Record &record, const Hypergraph &graph,
                          int64_t nparts)
{
    const Json &recorded = record.json["inputs"];
    Settings files = settings;
    files.fix = file_of(record, recorded["fix"], settings.fix);
    files.start = file_of(record, recorded["start"], settings.start);
    files.together = file_of(record, recorded["together"], settings.together);
    Inputs inputs;
    inputs.fix = fixed_vertices(files, graph, nparts);
    if (!files.start.empty())
        inputs.start = narrowed(read_vertex_numbers(files, files.start, graph, 0, nparts));
    inputs.groups = dense_groups(vertex_groups(files, graph));
    return inputs;
}

static void add_input_claim(const char *name, const Json &recorded, const std::vector<int> &now,
                            std::vector<Claim> *claims)
{
    if (recorded.is_null() && now.empty()) return;
    claims->push_back(claim_same(name, recorded, input_record(now.empty() ? "" : name, now),
                                 "the file is the one of the run"));
}

static Claim check_repeatable(const Json &record)
{
    const bool repeatable = is_repeatable(record["run"], record["options"]);
    return claim_same("repeatable", record["repeatable"], repeatable,
                      repeatable ? "the run gives the same again"
                                 : "time or memory ended the run: another may end elsewhere");
}

static Claim check_bytes(const Record &record)
{
    return {"record", record.fault.empty(),
            record.fault.empty() ? "every byte is as it was written" : record.fault};
}

std::vector<Claim> claims_of_record(const Settings &settings, const Record &record,
                                    const Hypergraph &graph, const std::vector<int64_t> &part,
                                    const Figures &figures)
{
    const Json &json = record.json;
    const Settings recorded = settings_of(record, settings);
    const Inputs inputs = read_inputs(settings, record, graph, figures.nparts);
    std::vector<Claim> claims = {check_bytes(record)};
    claims.push_back(claim_same("hypergraph", json["hypergraph"], hypergraph_record("", graph),
                                "it is the one of the run"));
    add_input_claim("fix", json["inputs"]["fix"], narrowed(inputs.fix), &claims);
    add_input_claim("start", json["inputs"]["start"], inputs.start, &claims);
    add_input_claim("together", json["inputs"]["together"], inputs.groups, &claims);
    claims.push_back(check_generator(json, !wants_engine(recorded)));
    const bool valid = is_valid(recorded, json, inputs, part, figures);
    claims.push_back(claim_same("figures", json["figures"],
                                figures_record(figures, valid, moved_weight(inputs, graph, part)),
                                "all of them are so"));
    claims.push_back(claim_same("partition", json["partition"],
                                partition_record("partition", narrowed(part)),
                                "it is the one of the run"));
    claims.push_back(check_repeatable(json));
    return claims;
}
