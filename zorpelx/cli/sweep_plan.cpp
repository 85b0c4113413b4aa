// SPDX-License-Identifier: MIT
/* zorpelx/cli/sweep_plan.cpp: the runs of a sweep, and what came of them. */
#include "sweep_plan.h"

#include <algorithm>
#include <climits>
#include <tuple>

#include "escaped.h"
#include "failure.h"
#include "zorpelx.h"

static std::vector<std::string> words_of(const std::string &list)
{
    std::vector<std::string> words(1);
    for (const char c : list) {
        if (c == ',')
            words.emplace_back();
        else
            words.back() += c;
    }
    return words;
}

/* The row of partition's option for a field, whose rules hold for each word of a list. */
static const OptionRow &row_of_partition(const Field &field)
{
    return *std::find_if(OPTIONS.begin(), OPTIONS.end(), [&](const OptionRow &row) {
        return (row.commands & PARTITION) != 0 && row.field == field;
    });
}

/* The values of a list such as "2,4,8", each once, in its order. */
template <class T>
static std::vector<T> values_of(const std::string &list, const char *option, T Settings::*field)
{
    std::vector<T> values;
    for (const std::string &word : words_of(list)) {
        Settings settings = {};
        const std::string why = set_field(row_of_partition(field), word, &settings);
        if (!why.empty()) fail(STATUS_USAGE, "%s: %s", option, escaped(why).c_str());
        if (std::find(values.begin(), values.end(), settings.*field) == values.end())
            values.push_back(settings.*field);
    }
    return values;
}

std::vector<SweepCell> sweep_plan(const Settings &settings)
{
    constexpr size_t MOST = 1000000;
    const auto nparts = values_of(settings.sweep_nparts, "--nparts", &Settings::nparts);
    const auto epsilons = values_of(settings.sweep_epsilons, "--epsilon", &Settings::epsilon);
    auto presets = values_of(settings.sweep_presets, "--preset", &Settings::preset);
    std::sort(presets.begin(), presets.end());
    const size_t seeds = static_cast<size_t>(settings.seeds);
    if (nparts.size() * epsilons.size() * presets.size() > MOST / seeds)
        fail(STATUS_USAGE, "more than %zu runs", MOST);
    if (settings.seed < 0 || settings.seed > INT_MAX - settings.seeds)
        fail(STATUS_USAGE, "--seed: the seeds should be between 0 and %d", INT_MAX);
    std::vector<SweepCell> plan;
    for (int64_t seed = settings.seed; seed < settings.seed + settings.seeds; seed++)
        for (const int64_t preset : presets)
            for (const int64_t k : nparts)
                for (const double epsilon : epsilons) plan.push_back({k, epsilon, preset, seed});
    return plan;
}

Settings settings_of_cell(const Settings &settings, const SweepCell &cell)
{
    Settings one = fallback_settings();
    one.hypergraph = settings.hypergraph;
    one.objective = settings.objective;
    one.timeout = settings.timeout;
    one.memory = settings.memory;
    one.nparts = cell.nparts;
    one.epsilon = cell.epsilon;
    one.preset = cell.preset;
    one.seed = cell.seed;
    one.starts = one.jobs = one.threads = 1;
    one.progress = PROGRESS_NEVER;
    return one;
}

Json sweep_line(const SweepCell &cell, const SweepResult &result)
{
    return {{"nparts", cell.nparts},
            {"epsilon", cell.epsilon},
            {"preset", PRESET_ROWS[cell.preset].name},
            {"seed", cell.seed},
            {"valid", result.valid},
            {"cut", result.cut},
            {"cut_hyperedges", result.cut_hyperedges},
            {"connectivity", result.connectivity},
            {"soed", result.soed},
            {"imbalance_percent", result.imbalance_percent},
            {"seconds", result.seconds},
            {"sha256", result.sha256}};
}

static int64_t preset_named(const std::string &name)
{
    for (int64_t preset = 0; preset < NPRESETS; preset++)
        if (name == PRESET_ROWS[preset].name) return preset;
    return -1;
}

SweepCell cell_of_line(const Json &line)
{
    return {line.at("nparts").get<int64_t>(), line.at("epsilon").get<double>(),
            preset_named(line.at("preset").get<std::string>()), line.at("seed").get<int64_t>()};
}

SweepResult result_of_line(const Json &line)
{
    return {true,
            line.at("valid").get<bool>(),
            line.at("cut").get<int64_t>(),
            line.at("cut_hyperedges").get<int64_t>(),
            line.at("connectivity").get<int64_t>(),
            line.at("soed").get<int64_t>(),
            line.at("imbalance_percent").get<double>(),
            line.at("seconds").get<double>(),
            line.at("sha256").get<std::string>()};
}

bool is_same_cell(const SweepCell &a, const SweepCell &b)
{
    return a.nparts == b.nparts && a.epsilon == b.epsilon && a.preset == b.preset &&
           a.seed == b.seed;
}

int64_t objective_of(const Settings &settings, const SweepResult &result)
{
    if (settings.objective == ZORPELX_KM1) return result.connectivity;
    return settings.objective == ZORPELX_SOED ? result.soed : result.cut;
}

bool is_better_result(const Settings &settings, const SweepResult &a, const SweepResult &b)
{
    const auto rank = [&](const SweepResult &result) {
        return std::tuple(!result.valid, objective_of(settings, result), result.imbalance_percent);
    };
    return rank(a) < rank(b);
}
