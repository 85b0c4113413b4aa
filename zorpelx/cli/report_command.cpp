// SPDX-License-Identifier: MIT
/* zorpelx/cli/report_command.cpp: the report command: from the files to a page, figures and
 * pictures. */
#include <algorithm>
#include <cstdio>

#include "bounds.h"
#include "commands.h"
#include "draw.h"
#include "history.h"
#include "input.h"
#include "output.h"
#include "page.h"
#include "pictures.h"
#include "report_json.h"
#include "told.h"
#include "version.h"

/* What is written, and what the inputs say before anything is counted. */
struct ReportPlan {
    std::vector<std::string> names;    // of the outputs: page, JSON, then the pictures
    std::vector<std::string> pictures; // their names, in the order of draw_all()
    std::string converter;             // for PNG; empty: SVG alone
    RunTold run;
};

static std::string page_name(const Settings &settings)
{
    if (!settings.output.empty()) return settings.output;
    const std::string &partition = settings.partitions[0];
    return is_stream_name(partition) ? "-" : plain_name(partition) + ".html";
}

static std::vector<std::string> picture_names(const Settings &settings)
{
    std::vector<std::string> names = {"sizes", "matrix", "touched", "parts", "hypergraph"};
    if (!settings.history.empty()) names.push_back("history");
    for (size_t i = 2; i <= settings.partitions.size(); i++)
        names.push_back(std::string("moves").append(std::to_string(i)));
    return names;
}

static void plan_pictures(const Settings &settings, ReportPlan *plan)
{
    plan->pictures = picture_names(settings);
    plan->converter = find_converter();
    if (plan->converter.empty() && !settings.quiet)
        tell("rsvg-convert is not installed (librsvg2-bin in Debian): the pictures are written as "
             "SVG alone");
    make_folder(settings.pictures);
    for (const std::string &name : plan->pictures) {
        plan->names.push_back(settings.pictures + '/' + name + ".svg");
        if (!plan->converter.empty())
            plan->names.push_back(settings.pictures + '/' + name + ".png");
    }
}

static ReportPlan plan_report(const Settings &settings)
{
    ReportPlan plan = {};
    plan.run.epsilon = plan.run.least = -1;
    plan.names = {page_name(settings), settings.json};
    if (settings.json == "-" && plan.names[0] == "-")
        fail(STATUS_USAGE, "the page and --json cannot both go to standard output");
    if (!settings.history.empty())
        plan.run =
            read_history(read_text(settings, settings.history), shown_name(settings.history));
    if (!settings.pictures.empty()) plan_pictures(settings, &plan);
    return plan;
}

static Writer open_report(const Settings &settings, const ReportPlan &plan)
{
    std::vector<std::string> inputs = {settings.hypergraph, settings.history};
    inputs.insert(inputs.end(), settings.partitions.begin(), settings.partitions.end());
    return open_writer(plan.names, inputs);
}

/* As many parts as asked for, or as the name tells, or as the largest number does. */
static int64_t count_parts(const Settings &settings, const std::string &name,
                           const std::vector<int64_t> &part)
{
    const int64_t largest = part.empty() ? 0 : *std::max_element(part.begin(), part.end());
    const int64_t told = settings.nparts > 0 ? settings.nparts : parts_in_name(name);
    if (told > 0 && largest >= told)
        fail(STATUS_BAD_INPUT, "%s: a vertex is in part %lld, and there are %lld parts",
             shown_name(name).c_str(), static_cast<long long>(largest),
             static_cast<long long>(told));
    constexpr int64_t MOST_PARTS = 1000000; // as -k takes
    if (largest >= MOST_PARTS)
        fail(STATUS_BAD_INPUT, "%s: part number %lld is beyond %lld", shown_name(name).c_str(),
             static_cast<long long>(largest), static_cast<long long>(MOST_PARTS - 1));
    return told > 0 ? told : largest + 1;
}

static std::vector<NamedPartition> read_divisions(Settings settings, const Hypergraph &graph)
{
    std::vector<NamedPartition> divisions;
    for (const std::string &name : settings.partitions) {
        settings.partition = name;
        std::vector<int64_t> part = read_partition(settings, graph);
        const int64_t nparts = count_parts(settings, name, part);
        divisions.push_back({name, nparts, std::move(part)});
    }
    return divisions;
}

static Allowed allowed_by(double epsilon, double least, const Figures &figures)
{
    const PartBounds bounds =
        search_bounds(figures.nparts, epsilon, least, {}, total_weight(figures.weight));
    return {bounds.least, bounds.most, epsilon};
}

static Account make_account(const Settings &settings, const ReportPlan &plan,
                            const Hypergraph &graph)
{
    Account account = account_of(graph, read_divisions(settings, graph),
                                 static_cast<size_t>(settings.limit));
    account.name = settings.hypergraph;
    account.version = ZORPELX_CLI_VERSION;
    account.first = settings.first;
    account.history = plan.run.history;
    const bool same_parts = plan.run.nparts == account.figures[0].nparts;
    if (was_given(settings, &Settings::epsilon))
        account.allowed = allowed_by(settings.epsilon, -1, account.figures[0]);
    else if (plan.run.epsilon >= 0 && same_parts)
        account.allowed = allowed_by(plan.run.epsilon, plan.run.least, account.figures[0]);
    return account;
}

static std::vector<std::string> picture_contents(const Settings &settings, const ReportPlan &plan,
                                                 const std::vector<Picture> &pictures)
{
    std::vector<std::string> contents;
    for (const Picture &picture : pictures) {
        contents.push_back(picture_file(picture));
        if (plan.converter.empty()) continue;
        contents.push_back(png_of(plan.converter, contents.back()));
        if (contents.back().empty())
            fail(STATUS_FAILED, "rsvg-convert made no PNG of the picture %s of %s",
                 picture.name.c_str(), shown_name(settings.hypergraph).c_str());
    }
    return contents;
}

/* Page, JSON, pictures: all of them appear together. */
static void write_report(const Settings &settings, const ReportPlan &plan, const Writer &writer)
{
    Findings findings;
    const Hypergraph graph = read_hypergraph(settings, reading_of(settings), &findings);
    if (!settings.quiet) tell_warnings(settings.hypergraph, findings);
    const Account account = make_account(settings, plan, graph);
    const std::vector<Picture> pictures = draw_all(account);
    std::vector<std::string> texts = {page_of(account, pictures), ""};
    if (!settings.json.empty()) {
        Json json = answer_json(settings, REPORT, STATUS_OK, "");
        add_report(account, &json);
        texts[1] = json_text(json);
    }
    if (!settings.pictures.empty())
        for (std::string &text : picture_contents(settings, plan, pictures))
            texts.push_back(std::move(text));
    write_together(writer, {texts.begin(), texts.end()});
    if (!settings.quiet)
        fprintf(standard_output_taken(writer) ? stderr : stdout, "%s: %s, %zu bytes\n",
                shown_output(plan.names[0]).c_str(),
                counted(static_cast<int64_t>(pictures.size()), "picture", "pictures").c_str(),
                texts[0].size());
}

/* Tells of a failure where the figures would be; the page stays as it is. */
static void write_failure(const Settings &settings, const ReportPlan &plan, const Writer &writer,
                          const Failure &failure)
{
    if (settings.json.empty()) return;
    const std::string json = json_text(answer_json(settings, REPORT, failure.status, failure.text));
    std::vector<std::string_view> contents(plan.names.size());
    contents[1] = json;
    try {
        write_together(writer, contents);
    } catch (...) { // the first failure is the one to tell
    }
}

Status run_report(const Settings &settings)
{
    const ReportPlan plan = plan_report(settings);
    const Writer writer = open_report(settings, plan);
    try {
        write_report(settings, plan, writer);
    } catch (...) {
        write_failure(settings, plan, writer, current_failure());
        throw;
    }
    return STATUS_OK;
}
