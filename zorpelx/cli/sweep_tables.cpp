// SPDX-License-Identifier: MIT
/* zorpelx/cli/sweep_tables.cpp: what a sweep came to: table, CSV and JSON. */
#include "sweep_tables.h"

#include <algorithm>

#include "casts.h"
#include "failure.h"

std::vector<SweepGroup> groups_of(const Settings &settings, const std::vector<SweepCell> &plan,
                                  const std::vector<SweepResult> &results)
{
    std::vector<SweepGroup> groups;
    for (size_t i = 0; i < plan.size(); i++) {
        if (!results[i].done) continue;
        const auto same = [&](const SweepGroup &group) {
            return group.nparts == plan[i].nparts && group.epsilon == plan[i].epsilon;
        };
        auto group = std::find_if(groups.begin(), groups.end(), same);
        if (group == groups.end())
            group = groups.insert(groups.end(), {plan[i].nparts, plan[i].epsilon, {}, i});
        group->runs.push_back(i);
        if (is_better_result(settings, results[i], results[group->best])) group->best = i;
    }
    return groups;
}

std::string group_name(const SweepGroup &group)
{
    return text_of("%lld parts, epsilon %g %%", ll(group.nparts), group.epsilon);
}

template <class T> static T median(std::vector<T> values)
{
    std::sort(values.begin(), values.end());
    return values[(values.size() - 1) / 2];
}

Summary summary_of(const Settings &settings, const std::vector<SweepCell> &plan,
                   const std::vector<SweepResult> &results, const SweepGroup &group, int64_t preset)
{
    Summary summary = {0, plan.size(), 0, 0};
    std::vector<int64_t> objectives;
    std::vector<double> seconds;
    for (const size_t i : group.runs) {
        if (plan[i].preset != preset) continue;
        objectives.push_back(objective_of(settings, results[i]));
        seconds.push_back(results[i].seconds);
        if (summary.best == plan.size() ||
            is_better_result(settings, results[i], results[summary.best]))
            summary.best = i;
    }
    summary.runs = objectives.size();
    if (objectives.empty()) return summary;
    summary.median_objective = median(objectives);
    summary.median_seconds = median(seconds);
    return summary;
}

std::string sweep_table(const Settings &settings, const std::vector<SweepCell> &plan,
                        const std::vector<SweepResult> &results,
                        const std::vector<SweepGroup> &groups)
{
    std::string text = text_of("  %6s %8s  %-8s %5s %12s %12s %10s %6s %10s\n", "parts", "epsilon",
                               "preset", "runs", "best", "median", "heaviest", "seed", "time");
    for (const SweepGroup &group : groups)
        for (int64_t preset = 0; preset < NPRESETS; preset++) {
            const Summary row = summary_of(settings, plan, results, group, preset);
            if (row.runs == 0) continue;
            text += text_of("%c %6lld %6g %%  %-8s %5zu %12lld %12lld %8.2f %% %6lld %8.2f s\n",
                            row.best == group.best ? '*' : ' ', ll(group.nparts), group.epsilon,
                            PRESET_ROWS[preset].name, row.runs,
                            ll(objective_of(settings, results[row.best])), ll(row.median_objective),
                            results[row.best].imbalance_percent, ll(plan[row.best].seed),
                            row.median_seconds);
        }
    return text;
}

static bool is_best(const std::vector<SweepGroup> &groups, size_t run)
{
    return std::any_of(groups.begin(), groups.end(),
                       [run](const SweepGroup &group) { return group.best == run; });
}

std::string sweep_csv(const std::vector<SweepCell> &plan, const std::vector<SweepResult> &results,
                      const std::vector<SweepGroup> &groups)
{
    std::string text = "nparts,epsilon,preset,seed,valid,cut,cut_hyperedges,connectivity,soed,"
                       "imbalance_percent,seconds,best,sha256\n";
    for (size_t i = 0; i < plan.size(); i++) {
        const SweepResult &result = results[i];
        if (!result.done) continue;
        text += text_of("%lld,%.17g,%s,%lld,%s,%lld,%lld,%lld,%lld,%.17g,%.6f,%s,%s\n",
                        ll(plan[i].nparts), plan[i].epsilon, PRESET_ROWS[plan[i].preset].name,
                        ll(plan[i].seed), result.valid ? "true" : "false", ll(result.cut),
                        ll(result.cut_hyperedges), ll(result.connectivity), ll(result.soed),
                        result.imbalance_percent, result.seconds,
                        is_best(groups, i) ? "true" : "false", result.sha256.c_str());
    }
    return text;
}

Json sweep_json(const Settings &settings, const std::vector<SweepCell> &plan,
                const std::vector<SweepResult> &results, const std::vector<SweepGroup> &groups)
{
    Json runs = Json::array(), best = Json::array();
    for (size_t i = 0; i < plan.size(); i++)
        if (results[i].done) runs.push_back(sweep_line(plan[i], results[i]));
    for (const SweepGroup &group : groups)
        best.push_back(sweep_line(plan[group.best], results[group.best]));
    return {{"objective", choice_name(&Settings::objective, settings.objective)},
            {"planned", plan.size()},
            {"done", runs.size()},
            {"runs", runs},
            {"best", best}};
}
