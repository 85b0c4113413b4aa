// SPDX-License-Identifier: MIT
/* zorpelx/files/areas.cpp: areas of cells by their type. */
#include "areas.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "builder.h"
#include "bytes.h"
#include "casts.h"
#include "fileerror.h"
#include "told.h"
#include "whole_weights.h"
#include "zorpelx.h"

void set_area(Areas *areas, std::string_view type, double area, Budget *budget)
{
    const int32_t number = intern(&areas->types, type, budget);
    while (areas->area.size() <= at(number)) push_charged(budget, &areas->area, 0.0);
    areas->area[at(number)] = area;
}

static std::string_view trimmed(std::string_view text)
{
    constexpr const char *BLANKS = " \t\r\n\v\f";
    const size_t begin = text.find_first_not_of(BLANKS);
    if (begin == std::string_view::npos) return text.substr(0, 0);
    text = text.substr(begin, text.find_last_not_of(BLANKS) - begin + 1);
    const bool quoted = text.size() > 1 && text[0] == '"' && text.back() == '"';
    return quoted ? text.substr(1, text.size() - 2) : text;
}

/* Whether the whole text is a number that can be an area. */
static bool is_area(std::string_view text, double *area)
{
    const std::string word(text);
    char *end = nullptr;
    *area = strtod(word.c_str(), &end);
    return !word.empty() && *end == '\0' && std::isfinite(*area) && *area >= 0;
}

/* A line of the table; a header may be the first. */
static void take_row(Areas *areas, std::string_view text, std::string_view line, bool *first,
                     Budget *budget)
{
    if (trimmed(line).empty() || line[0] == '#') return;
    const size_t comma = line.rfind(',');
    if (comma == std::string_view::npos)
        bad_input(*budget, place_of(text, line.data()), "there should be TYPE,AREA here");
    const std::string_view word = trimmed(line.substr(comma + 1));
    double area = 0;
    if (is_area(word, &area))
        set_area(areas, trimmed(line.substr(0, comma)), area, budget);
    else if (!*first)
        bad_input(*budget, place_of(text, line.data() + comma + 1),
                  "an area is a number, not below 0");
    *first = false;
}

static Areas read_table(std::string_view bytes, Budget *budget)
{
    Areas areas;
    bool first = true;
    for (size_t begin = 0; begin < bytes.size();) {
        const size_t end = std::min(bytes.find('\n', begin), bytes.size());
        take_row(&areas, bytes, bytes.substr(begin, end - begin), &first, budget);
        begin = end + 1;
    }
    return areas;
}

static bool is_liberty(std::string_view bytes)
{
    const std::string_view head = bytes.substr(0, size_t{1} << 16);
    const size_t library = head.find("library"), brace = head.find('{');
    return library != std::string_view::npos && brace != std::string_view::npos && library < brace;
}

Areas read_areas(std::string_view bytes, Budget *budget)
{
    bytes = without_mark(bytes);
    Areas areas = is_liberty(bytes) ? read_liberty(bytes, budget) : read_table(bytes, budget);
    if (areas.area.empty())
        file_error(ZORPELX_BAD_INPUT, "%s: there are no areas", budget->name.c_str());
    return areas;
}

/* By kind: its area, or -1. */
static std::vector<double> areas_of_kinds(const Hypergraph &graph, const Areas &areas)
{
    std::vector<double> area;
    for (int64_t k = 0; k < count_names(graph.kindnames); k++) {
        const int32_t number = find_name(areas.types, name_of(graph.kindnames, k));
        area.push_back(number >= 0 ? areas.area[at(number)] : -1);
    }
    return area;
}

static void tell_without(const Hypergraph &graph, const std::vector<double> &area,
                         const std::string &name, Findings *findings)
{
    std::vector<bool> met(area.size(), false);
    for (size_t v = 0; v < graph.kind.size(); v++)
        if (graph.kind[v] >= 0 && graph.vertexwgt[v] > 0) met[at(graph.kind[v])] = true;
    std::vector<int64_t> without;
    for (size_t k = 0; k < area.size(); k++)
        if (met[k] && area[k] < 0) without.push_back(static_cast<int64_t>(k));
    if (without.empty()) return;
    const int64_t count = static_cast<int64_t>(without.size());
    tell_warning(
        findings, {0, 0},
        text_of("%s no area in %s and %s as 1: ", counted(count, "type has", "types have").c_str(),
                name.c_str(), count == 1 ? "counts" : "count") +
            listed(without.size(),
                   [&](size_t i) { return std::string(name_of(graph.kindnames, without[i])); }));
}

void weigh_by_area(Hypergraph *graph, const Areas &areas, const std::string &name,
                   Findings *findings, const Budget &budget)
{
    if (graph->kind.empty())
        file_error(ZORPELX_BAD_INPUT, "%s: areas are of types of cells, which this file has not",
                   budget.name.c_str());
    const std::vector<double> area = areas_of_kinds(*graph, areas);
    tell_without(*graph, area, name, findings);
    std::vector<double> weight;
    for (size_t v = 0; v < graph->kind.size(); v++) {
        const double known = graph->kind[v] >= 0 ? area[at(graph->kind[v])] : -1;
        weight.push_back(known >= 0 ? known : static_cast<double>(graph->vertexwgt[v]));
    }
    graph->vertexwgt = whole_weights(weight, "areas", findings);
    graph->vertexweights = true;
}

void weigh_by_file(Hypergraph *graph, const std::string &path, Findings *findings, Budget *budget)
{
    Budget own = *budget; // what the file takes is given back at its end
    own.name = path;
    if (path == "-")
        file_error(ZORPELX_BAD_INPUT, "%s: the file of areas cannot be standard input",
                   budget->name.c_str());
    const Bytes bytes = read_bytes(path, &own);
    weigh_by_area(graph, read_areas(view_of(bytes), &own), path, findings, *budget);
}

static bool fits_one(std::string_view name, std::string_view patterns)
{
    while (!patterns.empty()) {
        const size_t comma = std::min(patterns.find(','), patterns.size());
        if (comma > 0 && name_fits(name, patterns.substr(0, comma))) return true;
        patterns.remove_prefix(std::min(comma + 1, patterns.size()));
    }
    return false;
}

/* Copies hyperedge e to the place of hyperedge `kept`, which is not behind it. */
static void move_net(Hypergraph *graph, int64_t e, int64_t kept, Names *names)
{
    const int64_t begin = graph->start[at(e)], end = graph->start[at(e) + 1];
    const int64_t to = graph->start[at(kept)];
    for (int64_t i = begin; i < end; i++) graph->pins[at(to + i - begin)] = graph->pins[at(i)];
    graph->start[at(kept) + 1] = to + end - begin;
    graph->netwgt[at(kept)] = graph->netwgt[at(e)];
    if (count_names(graph->netnames) == 0) return;
    const std::string_view name = name_of(graph->netnames, e);
    if (names->start.empty()) names->start.push_back(0);
    names->text.insert(names->text.end(), name.begin(), name.end());
    names->start.push_back(static_cast<int64_t>(names->text.size()));
}

void skip_nets(Hypergraph *graph, const std::string &patterns, Findings *findings)
{
    Names names;
    int64_t kept = 0;
    for (int64_t e = 0; e < graph->nnets; e++)
        if (!fits_one(net_label(*graph, e), patterns)) {
            // the end of e is read before it is written: kept <= e
            move_net(graph, e, kept++, &names);
        }
    const int64_t skipped = graph->nnets - kept;
    if (skipped > 0) {
        graph->nnets = kept;
        graph->start.resize(at(kept) + 1);
        graph->pins.resize(at(graph->start.back()));
        graph->netwgt.resize(at(kept));
        graph->netnames = std::move(names);
    }
    const std::string text =
        counted(skipped, "hyperedge is", "hyperedges are") + " left out by --skip-nets";
    if (skipped > 0) return tell_note(findings, {0, 0}, text);
    tell_warning(findings, {0, 0}, text_of("no hyperedge fits --skip-nets %s", patterns.c_str()));
}
