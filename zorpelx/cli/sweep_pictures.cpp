// SPDX-License-Identifier: MIT
/* zorpelx/cli/sweep_pictures.cpp: the results of a sweep as pictures. */
#include <algorithm>

#include "draw_scatter.h"
#include "failure.h"
#include "sweep_tables.h"

static std::vector<std::string> preset_names()
{
    std::vector<std::string> names;
    for (const PresetRow &row : PRESET_ROWS) names.push_back(std::string("preset ") + row.name);
    return names;
}

std::string objective_title(const Settings &settings)
{
    const std::string name = choice_name(&Settings::objective, settings.objective);
    if (name == "km1") return "connectivity minus one";
    return name == "soed" ? "sum of external degrees" : "cut";
}

static std::string point_title(const Settings &settings, const SweepCell &cell,
                               const SweepResult &result)
{
    return text_of("preset %s, seed %lld: %lld, heaviest part %.2f %% above average, %.2f s",
                   PRESET_ROWS[cell.preset].name, static_cast<long long>(cell.seed),
                   static_cast<long long>(objective_of(settings, result)), result.imbalance_percent,
                   result.seconds);
}

static Point point_of(const Settings &settings, const SweepCell &cell, const SweepResult &result,
                      double x, bool best)
{
    return {x, static_cast<double>(objective_of(settings, result)),
            static_cast<size_t>(cell.preset), best, point_title(settings, cell, result)};
}

Picture time_picture(const Settings &settings, const std::vector<SweepCell> &plan,
                     const std::vector<SweepResult> &results, const std::vector<SweepGroup> &groups)
{
    constexpr double SHORTEST = 0.001; // seconds, of a logarithmic axis
    const std::string name = objective_title(settings);
    Scatter scatter = {"time",
                       name + " against time: " + settings.hypergraph,
                       "A point for each run of a sweep; the best of each panel is ringed.",
                       "seconds",
                       name,
                       true,
                       preset_names(),
                       {}};
    for (const SweepGroup &group : groups) {
        Panel panel = {group_name(group), {}, {}};
        for (const size_t i : group.runs)
            panel.points.push_back(point_of(settings, plan[i], results[i],
                                            std::max(results[i].seconds, SHORTEST),
                                            i == group.best));
        scatter.panels.push_back(panel);
    }
    return draw_scatter(scatter);
}

Picture balance_picture(const Settings &settings, const std::vector<SweepCell> &plan,
                        const std::vector<SweepResult> &results,
                        const std::vector<SweepGroup> &groups)
{
    const std::string name = objective_title(settings);
    Scatter scatter = {"balance",
                       name + " against balance: " + settings.hypergraph,
                       "A point for each run of a sweep, a line for each epsilon; the best of each "
                       "epsilon is ringed.",
                       "heaviest part above the average, %",
                       name,
                       false,
                       preset_names(),
                       {}};
    for (const SweepGroup &group : groups) {
        const std::string title = text_of("%lld parts", static_cast<long long>(group.nparts));
        auto panel = std::find_if(scatter.panels.begin(), scatter.panels.end(),
                                  [&](const Panel &known) { return known.title == title; });
        if (panel == scatter.panels.end())
            panel = scatter.panels.insert(scatter.panels.end(), {title, {}, {}});
        panel->marks.push_back(group.epsilon);
        for (const size_t i : group.runs)
            panel->points.push_back(point_of(settings, plan[i], results[i],
                                             results[i].imbalance_percent, i == group.best));
    }
    return draw_scatter(scatter);
}
