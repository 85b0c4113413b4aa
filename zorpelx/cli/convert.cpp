// SPDX-License-Identifier: MIT
/* zorpelx/cli/convert.cpp: the convert and annotate commands: hypergraphs and partitions in other
 * formats. */
#include <cstdio>

#include "casts.h"
#include "commands.h"
#include "escaped.h"
#include "input.h"
#include "json.h"
#include "output.h"
#include "sizes.h"

/* The format named by --to; null if there is none. */
static const FormatRow *wanted_format(const Settings &settings)
{
    return settings.to >= 0 ? &format_rows()[static_cast<size_t>(settings.to)] : nullptr;
}

static const FormatRow *output_format(const Settings &settings)
{
    const FormatRow *row = wanted_format(settings);
    if (row == nullptr) row = format_of_suffix(settings.output);
    if (row == nullptr)
        fail(STATUS_USAGE, "%s: no format has this ending: --to is needed",
             shown_output(settings.output).c_str());
    if (row->write == nullptr)
        fail(STATUS_USAGE, "a %s is read and not written; --to takes %s", row->title,
             format_names([](const FormatRow &r) { return r.write != nullptr; }).c_str());
    return row;
}

/* What comes out is never compressed, and should not be called so. */
static void check_ending(const Settings &settings)
{
    if (plain_name(settings.output) != settings.output)
        fail(STATUS_USAGE, "%s: files are written plain; leave the ending of the compression out",
             shown_output(settings.output).c_str());
}

/* "names of vertices, fixed vertices" */
static std::string lost_text(const std::vector<Lost> &lost, bool mattering)
{
    std::string text;
    for (const Lost &thing : lost)
        if (thing.matters == mattering) text.append(text.empty() ? "" : ", ").append(thing.what);
    return text;
}

static void check_lost(const Settings &settings, const FormatRow &row,
                       const std::vector<Lost> &lost)
{
    const std::string grave = lost_text(lost, true), light = lost_text(lost, false);
    if (!grave.empty() && !settings.force)
        fail(STATUS_BAD_INPUT, "a %s does not keep %s (--force goes on without)", row.title,
             grave.c_str());
    const std::string all = grave + (grave.empty() || light.empty() ? "" : ", ") + light;
    if (!all.empty() && !settings.quiet)
        tell(text_of("a %s does not keep %s", row.title, all.c_str()));
}

static Json lost_json(const std::vector<Lost> &lost)
{
    Json list = Json::array();
    for (const Lost &thing : lost) list.push_back(thing.what);
    return list;
}

static Json graph_json(const Settings &settings, Command command, const Hypergraph &graph)
{
    Json json = answer_json(settings, command, STATUS_OK, "");
    json.update(
        {{"output", settings.output},
         {"from", graph.provenance.format},
         {"model", graph.provenance.model.empty() ? Json(nullptr) : Json(graph.provenance.model)},
         {"vertices", graph.nvertices},
         {"hyperedges", graph.nnets},
         {"pins", graph.pins.size()}});
    return json;
}

/* Standard output takes what is written or what is told of it. */
static void check_answer(const Settings &settings, const Writer &writer)
{
    if (settings.format == FORMAT_JSON && standard_output_taken(writer))
        fail(STATUS_USAGE, "the output and --format json both want standard output");
}

Status run_convert(const Settings &settings)
{
    const FormatRow *const row = output_format(settings);
    check_ending(settings);
    const Writer writer = open_writer({settings.output}, {settings.hypergraph});
    check_answer(settings, writer);
    Findings findings;
    const Hypergraph graph = read_hypergraph(settings, reading_of_any_size(settings), &findings);
    if (!settings.quiet) tell_warnings(settings.hypergraph, findings);
    const std::vector<Lost> lost = lost_by(*row, graph);
    check_lost(settings, *row, lost);
    Budget budget = budget_for(settings, settings.output);
    const std::string text = or_fail([&] { return row->write(graph, &budget); });
    write_together(writer, {text});
    if (settings.format == FORMAT_JSON) {
        Json json = graph_json(settings, CONVERT, graph);
        json.update({{"to", row->name}, {"lost", lost_json(lost)}});
        fputs(json_text(json).c_str(), stdout);
    } else if (!settings.quiet && !standard_output_taken(writer)) {
        printf("%s: %s: %s\n", shown_output(settings.output).c_str(), row->title,
               sizes_of(graph).c_str());
    }
    return STATUS_OK;
}

/* What the ending of the output says; null if that is its own format, or none that takes parts. */
static const FormatRow *ending_format(const Settings &settings, const FormatRow &own)
{
    if (is_stream_name(settings.output) || has_suffix(own, settings.output)) return nullptr;
    for (const FormatRow &row : format_rows())
        if (row.annotate != nullptr && !row.needs_own && has_suffix(row, settings.output))
            return &row;
    return nullptr;
}

/* What is asked for, by name or by ending; its own format if parts are written back into it,
 * otherwise a table. */
static const FormatRow *annotated_format(const Settings &settings, const Hypergraph &graph)
{
    const FormatRow *row = wanted_format(settings);
    const FormatRow *const own = find_format(graph.provenance.format);
    if (row == nullptr) row = ending_format(settings, *own);
    if (row == nullptr) row = own->annotate != nullptr ? own : find_format("csv");
    if (row->annotate == nullptr)
        fail(STATUS_USAGE, "parts are not written into a %s; --to takes %s", row->title,
             format_names([](const FormatRow &r) { return r.annotate != nullptr; }).c_str());
    if (row->needs_own && row != own)
        fail(STATUS_USAGE, "parts are written into a %s if the hypergraph comes from one",
             row->title);
    return row;
}

static int64_t parts_of(const Settings &settings, const std::vector<int64_t> &part)
{
    int64_t nparts = 1;
    for (const int64_t p : part) nparts = std::max(nparts, p + 1);
    if (settings.nparts > 0 && nparts > settings.nparts)
        fail(STATUS_BAD_INPUT, "%s: a vertex is in part %lld, and there are %lld parts",
             shown_name(settings.partition).c_str(), ll(nparts - 1), ll(settings.nparts));
    return std::max(nparts, settings.nparts);
}

/* The files' names: the output and, behind it, the endings of the others. */
static std::vector<std::string> names_of(const Settings &settings,
                                         const std::vector<WrittenFile> &files)
{
    if (files.size() > 1 && is_stream_name(settings.output))
        fail(STATUS_USAGE, "%zu files are written: -o names the first", files.size());
    std::vector<std::string> names;
    for (const WrittenFile &file : files) names.push_back(settings.output + file.ending);
    return names;
}

static void write_files(const Writer &writer, const std::vector<WrittenFile> &files)
{
    std::vector<std::string_view> texts;
    for (const WrittenFile &file : files) texts.push_back(file.text);
    write_together(writer, texts);
}

static void print_annotated(const Settings &settings, const Hypergraph &graph, const FormatRow &row,
                            const std::vector<std::string> &names, bool taken)
{
    if (settings.format == FORMAT_JSON) {
        Json json = graph_json(settings, ANNOTATE, graph);
        json.update({{"partition", settings.partition}, {"to", row.name}, {"files", names}});
        fputs(json_text(json).c_str(), stdout);
    } else if (!settings.quiet && !taken) {
        for (const std::string &name : names) printf("%s\n", shown_output(name).c_str());
    }
}

Status run_annotate(const Settings &given)
{
    Settings settings = given;
    if (settings.output.empty()) settings.output.assign(1, '-');
    const std::vector<std::string> inputs = {settings.hypergraph, settings.partition};
    open_writer({settings.output}, inputs); // told before anything is read
    check_ending(settings);
    Findings findings;
    const Source source = read_source(settings, reading_of_any_size(settings), &findings);
    if (!settings.quiet) tell_warnings(settings.hypergraph, findings);
    const FormatRow *const row = annotated_format(settings, source.graph);
    const std::vector<int64_t> part = read_partition(settings, source.graph);
    const Annotation annotation = {part, parts_of(settings, part), view_of(source.bytes),
                                   settings.hypergraph};
    Budget budget = budget_for(settings, settings.output);
    const std::vector<WrittenFile> files =
        or_fail([&] { return row->annotate(source.graph, annotation, &budget); });
    const std::vector<std::string> names = names_of(settings, files);
    const Writer writer = open_writer(names, inputs);
    check_answer(settings, writer);
    write_files(writer, files);
    print_annotated(settings, source.graph, *row, names, standard_output_taken(writer));
    return STATUS_OK;
}
