// SPDX-License-Identifier: MIT
/* zorpelx/cli/input.cpp: the files of a command, read within its caps. */
#include "input.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <unordered_map>

#include "casts.h"
#include "partfiles.h"
#include "parts_by_name.h"

#include "escaped.h"
#include "told.h"

static const double began = budget_clock(); // the program

std::string shown_name(const std::string &name)
{
    return name == "-" ? "standard input" : escaped(name);
}

Budget budget_for(const Settings &settings, const std::string &name)
{
    return make_budget(shown_name(name), static_cast<size_t>(settings.memory) << 20,
                       settings.timeout, began);
}

Reading reading_of(const Settings &settings)
{
    Reading reading = {static_cast<LineMode>(settings.lines), first_vertex(settings), false};
    reading.path = settings.hypergraph;
    reading.model = settings.model;
    reading.skip_nets = settings.skip_nets;
    reading.areas = settings.areas;
    reading.top = settings.top_module;
    return reading;
}

Reading reading_of_any_size(const Settings &settings)
{
    Reading reading = reading_of(settings);
    reading.few = true;
    return reading;
}

const FormatRow *format_of(const Settings &settings)
{
    return settings.from >= 0 ? &format_rows()[static_cast<size_t>(settings.from)] : nullptr;
}

static void check_findings(const Settings &settings, const std::string &name,
                           const Findings &findings)
{
    const Finding *const bad = refusal(findings, settings.strict, settings.force);
    if (bad == nullptr) return;
    const bool forcible = bad->severity == LOSS && first_finding(findings, ERROR) == nullptr;
    fail(STATUS_BAD_INPUT, "%s\n(zorpelx lint says more%s)",
         finding_line(shown_name(name), *bad).c_str(),
         forcible ? "; --force goes on without what is lost" : "");
}

Source read_source(const Settings &settings, const Reading &reading, Findings *findings)
{
    Budget budget = budget_for(settings, settings.hypergraph);
    Source source = or_fail([&] {
        Bytes bytes = read_bytes(settings.hypergraph, &budget);
        Hypergraph graph =
            read_any(view_of(bytes), format_of(settings), reading, findings, &budget);
        return Source{std::move(bytes), std::move(graph)};
    });
    const bool own = source.graph.provenance.format == format_rows()[0].name; // it knows by itself
    if (reading.few && !own && source.graph.nvertices < 2) forget_rule(findings, RULE_COUNTS);
    check_findings(settings, settings.hypergraph, *findings);
    return source;
}

Hypergraph read_hypergraph(const Settings &settings, const Reading &reading, Findings *findings)
{
    return read_source(settings, reading, findings).graph;
}

std::string format_names(bool (*holds)(const FormatRow &row))
{
    std::string names;
    for (const FormatRow &row : format_rows())
        if (holds(row)) names.append(names.empty() ? "" : ", ").append(row.name);
    return names;
}

static void tell_count(const std::string &name, int64_t count, const char *what)
{
    if (count > 0)
        fprintf(stderr, "zorpelx: %s: %lld %s%s; zorpelx lint says more\n",
                shown_name(name).c_str(), ll(count), what, count == 1 ? "" : "s");
}

/* What readers want the user to know, in their words. */
static void tell_told(const std::string &name, const Findings &findings)
{
    for (const Finding &finding : findings.listed) {
        if (finding.rule != RULE_TOLD && finding.rule != RULE_CONTRADICTS) continue;
        std::string place = shown_name(name);
        if (finding.place.line > 0)
            place += text_of(":%lld:%lld", ll(finding.place.line), ll(finding.place.column));
        fprintf(stderr, "zorpelx: %s: %s\n", place.c_str(), escaped(finding.text).c_str());
    }
}

void tell_warnings(const std::string &name, const Findings &findings)
{
    tell_told(name, findings);
    tell_count(name, count_errors(findings), "error");
    tell_count(name, findings.severities[WARNING] - findings.count[RULE_CONTRADICTS], "warning");
}

std::vector<int64_t> read_fix(const Settings &settings, const Hypergraph &graph, int64_t nparts)
{
    Findings findings;
    Budget budget = budget_for(settings, settings.fix);
    std::vector<int64_t> fix = or_fail([&] {
        const Bytes bytes = read_bytes(settings.fix, &budget);
        const std::string_view text = view_of(bytes);
        if (has_parts_by_name(text))
            return scan_parts_by_name(text, labels_of(graph), {nparts, true}, &budget);
        return scan_fix(text, graph.nvertices, nparts, &findings, &budget);
    });
    check_findings(settings, settings.fix, findings);
    if (!settings.quiet) tell_warnings(settings.fix, findings);
    return fix;
}

std::vector<int64_t> read_vertex_numbers(const Settings &settings, const std::string &name,
                                         const Hypergraph &graph, int64_t least, int64_t most)
{
    Budget budget = budget_for(settings, name);
    const int64_t nvertices = graph.nvertices;
    bool unended = false;
    std::vector<int64_t> numbers = or_fail([&] {
        const Bytes bytes = read_bytes(name, &budget);
        const std::string_view text = view_of(bytes);
        if (has_parts_by_name(text))
            return scan_parts_by_name(text, labels_of(graph), {most, least < 0}, &budget);
        return scan_numbers(text, &budget, &unended);
    });
    if (numbers.size() != static_cast<size_t>(nvertices))
        fail(
            STATUS_BAD_INPUT, "%s: %s; there %s", shown_name(name).c_str(),
            counted(static_cast<int64_t>(numbers.size()), "number", "numbers").c_str(),
            ((nvertices == 1 ? "is " : "are ") + counted(nvertices, "vertex", "vertices")).c_str());
    for (size_t v = 0; v < numbers.size(); v++)
        if (numbers[v] < least || numbers[v] >= most)
            fail(STATUS_BAD_INPUT, "%s: vertex %zu has %lld; it should be between %lld and %lld",
                 shown_name(name).c_str(), v + 1, static_cast<long long>(numbers[v]),
                 static_cast<long long>(least), static_cast<long long>(most - 1));
    if (unended && !settings.quiet)
        fprintf(stderr, "zorpelx: %s: the last line has no newline: it may have been cut off\n",
                shown_name(name).c_str());
    return numbers;
}

int64_t parts_in_name(const std::string &file)
{
    static const std::string mark = ".part.";
    const std::string name = plain_name(file);
    const size_t place = name.rfind(mark);
    if (place == std::string::npos) return 0;
    const std::string digits = name.substr(place + mark.size());
    const bool number =
        !digits.empty() && digits.size() <= 7 &&
        std::all_of(digits.begin(), digits.end(), [](unsigned char c) { return isdigit(c) != 0; });
    return number ? std::stoll(digits) : 0;
}

std::vector<int> dense_groups(const std::vector<int64_t> &groups)
{
    std::unordered_map<int64_t, int> number;
    std::vector<int> dense;
    for (const int64_t group : groups)
        dense.push_back(
            group < 0 ? -1 : number.emplace(group, static_cast<int>(number.size())).first->second);
    return dense;
}

std::string read_text(const Settings &settings, const std::string &name)
{
    Budget budget = budget_for(settings, name);
    return or_fail([&] {
        const Bytes bytes = read_bytes(name, &budget);
        return std::string(view_of(bytes));
    });
}

std::vector<int64_t> read_partition(const Settings &settings, const Hypergraph &graph)
{
    Budget budget = budget_for(settings, settings.partition);
    bool unended = false;
    std::vector<int64_t> part = or_fail([&] {
        const Bytes bytes = read_bytes(settings.partition, &budget);
        return scan_partition_or_table(view_of(bytes), labels_of(graph), &budget, &unended);
    });
    if (unended && !settings.quiet)
        fprintf(stderr, "zorpelx: %s: the last line has no newline: it may have been cut off\n",
                shown_name(settings.partition).c_str());
    return part;
}
