// SPDX-License-Identifier: MIT
/* zorpelx/cli/sweep_page.cpp: a sweep as one page of HTML, and a page for each of its best
 * partitions.
 *
 * The page is made of the sections, tables and pictures that report is made of. Figures that the
 * JSON answer has too say where, in data-figure.
 */
#include "sweep_page.h"

#include "bounds.h"
#include "draw.h"
#include "markup.h"
#include "page.h"
#include "version.h"

constexpr size_t MOST_RUNS = 2000; // in the table of all runs

static std::string short_name(const std::string &name)
{
    const size_t slash = name.rfind('/');
    return short_markup(slash == std::string::npos ? name : name.substr(slash + 1), 60);
}

/* Where the JSON answer has the n-th of the best runs. */
static std::string best_pointer(size_t n, const char *field)
{
    return pointer_to("best", static_cast<int64_t>(n), field);
}

static const char *objective_field(const Settings &settings)
{
    const std::string name = choice_name(&Settings::objective, settings.objective);
    return name == "km1" ? "connectivity" : name == "soed" ? "soed" : "cut";
}

static std::string link_to(const std::string &file, const std::string &shown)
{
    return file.empty() ? shown : "<a href=\"" + markup(file) + "\">" + shown + "</a>";
}

static std::vector<Cell> best_row(const SweepShown &sweep, size_t n)
{
    const SweepGroup &group = sweep.groups[n];
    const SweepCell &cell = sweep.plan[group.best];
    const SweepResult &result = sweep.results[group.best];
    return {{link_to(sweep.reports[n], grouped(group.nparts)), true, ""},
            {decimal(group.epsilon, 2) + " %", true, ""},
            number_cell(objective_of(sweep.settings, result),
                        best_pointer(n, objective_field(sweep.settings))),
            percent_cell(result.imbalance_percent, best_pointer(n, "imbalance_percent")),
            word_cell(PRESET_ROWS[cell.preset].name),
            number_cell(cell.seed, best_pointer(n, "seed")),
            {decimal(result.seconds, 2) + " s", true, ""},
            word_cell(result.valid ? "yes" : "<strong>no</strong>")};
}

static std::string best_table(const SweepShown &sweep)
{
    Table table = {
        "best-table",
        "The best run for each number of parts and epsilon; the number of parts leads to "
        "the report about its partition",
        {{"Parts", true, ""},
         {"Epsilon", true, ""},
         {"Objective", true, ""},
         {"Heaviest part", true, ""},
         {"Preset", false, ""},
         {"Seed", true, ""},
         {"Time", true, ""},
         {"Within bounds", false, ""}},
        {}};
    for (size_t n = 0; n < sweep.groups.size(); n++) table.rows.push_back(best_row(sweep, n));
    return table_markup(table);
}

/* The best is what any run of the group found; the median says what one run is worth. */
static std::string presets_table(const SweepShown &sweep)
{
    Table table = {"presets-table",
                   "What each preset is worth, the best of its group in bold",
                   {{"Parts", true, ""},
                    {"Epsilon", true, ""},
                    {"Preset", false, ""},
                    {"Runs", true, ""},
                    {"Best", true, ""},
                    {"Median", true, ""},
                    {"Median time", true, ""}},
                   {}};
    for (const SweepGroup &group : sweep.groups)
        for (int64_t preset = 0; preset < NPRESETS; preset++) {
            const Summary row =
                summary_of(sweep.settings, sweep.plan, sweep.results, group, preset);
            if (row.runs == 0) continue;
            const std::string best = grouped(objective_of(sweep.settings, sweep.results[row.best]));
            table.rows.push_back(
                {number_cell(group.nparts),
                 {decimal(group.epsilon, 2) + " %", true, ""},
                 word_cell(PRESET_ROWS[preset].name),
                 number_cell(static_cast<int64_t>(row.runs)),
                 {row.best == group.best ? "<strong>" + best + "</strong>" : best, true, ""},
                 number_cell(row.median_objective),
                 {decimal(row.median_seconds, 2) + " s", true, ""}});
        }
    return table_markup(table);
}

static std::vector<Cell> run_row(const SweepCell &cell, const SweepResult &result, int64_t n)
{
    const auto at = [n](const char *field) { return pointer_to("runs", n, field); };
    return {number_cell(cell.nparts, at("nparts")),
            {decimal(cell.epsilon, 2) + " %", true, ""},
            word_cell(PRESET_ROWS[cell.preset].name),
            number_cell(cell.seed, at("seed")),
            number_cell(result.cut, at("cut")),
            number_cell(result.connectivity, at("connectivity")),
            percent_cell(result.imbalance_percent, at("imbalance_percent")),
            {decimal(result.seconds, 2) + " s", true, ""},
            word_cell(result.valid ? "yes" : "no")};
}

static std::string runs_table(const SweepShown &sweep)
{
    Table table = {"runs-table",
                   "All runs, as in sweep.csv",
                   {{"Parts", true, ""},
                    {"Epsilon", true, ""},
                    {"Preset", false, ""},
                    {"Seed", true, ""},
                    {"Cut", true, ""},
                    {"Connectivity", true, ""},
                    {"Heaviest part", true, ""},
                    {"Time", true, ""},
                    {"Within bounds", false, ""}},
                   {}};
    int64_t n = 0;
    for (size_t i = 0; i < sweep.plan.size() && table.rows.size() < MOST_RUNS; i++)
        if (sweep.results[i].done)
            table.rows.push_back(run_row(sweep.plan[i], sweep.results[i], n++));
    if (table.rows.size() == MOST_RUNS) table.caption = "The first runs; sweep.csv has all";
    return folded("All runs as a table", table_markup(table));
}

static int64_t count_done(const SweepShown &sweep)
{
    int64_t ndone = 0;
    for (const SweepResult &result : sweep.results) ndone += result.done;
    return ndone;
}

static std::string lead_of(const SweepShown &sweep)
{
    const int64_t planned = static_cast<int64_t>(sweep.plan.size()), ndone = count_done(sweep);
    const std::string done = figure_markup("span", number_cell(ndone, "/done"));
    return ndone == planned
               ? done + (planned == 1 ? " run is done." : " runs are done.")
               : done + " of " + figure_markup("span", number_cell(planned, "/planned")) +
                     (planned == 1 ? " run is" : " runs are") +
                     " done; the same command goes on from there.";
}

static std::string file_text(const SweepShown &sweep)
{
    return "<dl class=\"headlines\">\n" +
           headline("Vertices", number_cell(sweep.graph.nvertices), "") +
           headline("Hyperedges", number_cell(sweep.graph.nnets), "") +
           headline("Pins", number_cell(static_cast<int64_t>(sweep.graph.pins.size())), "") +
           "</dl>\n<p class=\"files\">Hypergraph <code>" + markup(sweep.settings.hypergraph) +
           "</code></p>\n";
}

std::string sweep_page(const SweepShown &sweep, const std::vector<Picture> &pictures)
{
    const std::string title = "Sweep of " + short_name(sweep.settings.hypergraph);
    return framed_page({title, "", lead_of(sweep), ZORPELX_CLI_VERSION},
                       {{"best", "The best partitions", best_table(sweep) + file_text(sweep)},
                        {"against-time", "Quality against time",
                         figure_of(pictures, "time") + presets_table(sweep)},
                        {"against-balance", "Quality against balance",
                         figure_of(pictures, "balance") + runs_table(sweep)}});
}

std::string best_page(const Settings &settings, const Hypergraph &graph, const SweepGroup &group,
                      const std::vector<int> &part, const std::string &name)
{
    Account account = account_of(graph, {{name, group.nparts, {part.begin(), part.end()}}},
                                 static_cast<size_t>(settings.limit > 0 ? settings.limit : 20));
    account.name = settings.hypergraph;
    account.version = ZORPELX_CLI_VERSION;
    account.first = settings.first;
    const PartBounds bounds =
        search_bounds(group.nparts, group.epsilon, -1, {}, total_weight(account.figures[0].weight));
    account.allowed = {bounds.least, bounds.most, group.epsilon};
    return page_of(account, draw_all(account));
}
