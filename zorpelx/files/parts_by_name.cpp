// SPDX-License-Identifier: MIT
/* zorpelx/files/parts_by_name.cpp: partitions as tables of names and parts.
 *
 * annotate writes its rows in the order of the vertices, so each row is held against the next
 * vertex first; names are looked up from the first row on that stands elsewhere.
 */
#include "parts_by_name.h"

#include <algorithm>
#include <charconv>
#include <climits>
#include <unordered_map>

#include "bytes.h"
#include "casts.h"
#include "told.h"
#include "walk.h"

constexpr int64_t SEVERAL = -2;
constexpr int64_t CLOCK_ROWS = 4096; // between two looks at the deadline

struct PartTable {
    std::string_view text;
    size_t at;
    Place place;      // of the row last begun
    int64_t newlines; // within quotes of that row
    char separator;
    const Hypergraph *graph;
    Budget *budget;
    std::unordered_map<std::string, int64_t> number; // of each name, once one is looked up
};

static std::string_view header_of(std::string_view text)
{
    std::string_view line = text.substr(0, text.find('\n'));
    if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
    return line;
}

bool has_parts_by_name(std::string_view bytes)
{
    const std::string_view header = header_of(without_mark(bytes));
    return header == "vertex,part" || header == "vertex\tpart";
}

/* A field in quotes may hold separators, ends of lines and, doubled, quotes. */
static std::string quoted_cell(PartTable *table)
{
    std::string field;
    for (table->at++; table->at < table->text.size(); table->at++) {
        const char c = table->text[table->at];
        if (c == '\n') table->newlines++;
        if (c == '"') {
            table->at++;
            if (table->at == table->text.size() || table->text[table->at] != '"') return field;
        }
        field += c;
    }
    bad_input(*table->budget, table->place, "a quote that begins here does not end");
}

static std::string take_cell(PartTable *table)
{
    if (table->at < table->text.size() && table->text[table->at] == '"') return quoted_cell(table);
    const size_t begin = table->at;
    const char ends[] = {table->separator, '\n', '\0'};
    table->at = std::min(table->text.find_first_of(ends, begin), table->text.size());
    std::string field(table->text.substr(begin, table->at - begin));
    if (!field.empty() && field.back() == '\r') field.pop_back();
    return field;
}

static bool take_char(PartTable *table, char c)
{
    if (table->at == table->text.size() || table->text[table->at] != c) return false;
    table->at++;
    return true;
}

static int64_t look_up(PartTable *table, const std::string &name)
{
    const Hypergraph &graph = *table->graph;
    if (table->number.empty()) {
        constexpr size_t NODE = 80; // bytes of an entry, about, besides long names
        charge(table->budget,
               static_cast<size_t>(graph.nvertices) * NODE + graph.vertexnames.text.size());
        for (int64_t v = 0; v < graph.nvertices; v++)
            if (const auto [place, isnew] = table->number.emplace(vertex_label(graph, v, 1), v);
                !isnew)
                place->second = SEVERAL;
    }
    const auto found = table->number.find(name);
    return found == table->number.end() ? -1 : found->second;
}

static int64_t vertex_of_row(PartTable *table, const std::string &name, int64_t next)
{
    if (next < table->graph->nvertices && vertex_label(*table->graph, next, 1) == name) return next;
    const int64_t v = look_up(table, name);
    if (v == SEVERAL)
        bad_input(*table->budget, table->place, "several vertices are called %s",
                  shown_text(name).c_str());
    if (v < 0)
        bad_input(*table->budget, table->place, "no vertex is called %s", shown_text(name).c_str());
    return v;
}

static int64_t part_of_row(const PartTable &table, const std::string &field)
{
    int64_t part = -1;
    const char *const end = field.data() + field.size();
    const auto [stop, error] = std::from_chars(field.data(), end, part);
    if (error != std::errc() || stop != end || part < 0 || part >= INT_MAX)
        bad_input(*table.budget, table.place, "%s is not a part number", shown_text(field).c_str());
    return part;
}

static void place_row(PartTable *table, std::vector<int64_t> *parts, int64_t next)
{
    const std::string name = take_cell(table);
    if (!take_char(table, table->separator))
        bad_input(*table->budget, table->place, "a row without a part");
    const std::string field = take_cell(table);
    if (table->at < table->text.size() && !take_char(table, '\n'))
        if (!take_char(table, '\r') || !take_char(table, '\n'))
            bad_input(*table->budget, table->place, "a row of more than a name and a part");
    int64_t &part = (*parts)[static_cast<size_t>(vertex_of_row(table, name, next))];
    if (part >= 0)
        bad_input(*table->budget, table->place, "vertex %s has a part already",
                  shown_text(name).c_str());
    part = part_of_row(*table, field);
}

std::vector<int64_t> scan_parts_by_name(std::string_view bytes, const Hypergraph &graph,
                                        Budget *budget)
{
    const std::string_view text = without_mark(bytes);
    const size_t size = static_cast<size_t>(graph.nvertices);
    charge(budget, size * sizeof(int64_t));
    std::vector<int64_t> parts(size, -1);
    const size_t header_end = std::min(text.find('\n'), text.size() - 1) + 1;
    const char separator = text[sizeof("vertex") - 1];
    PartTable table = {text, header_end, {1, 1}, 0, separator, &graph, budget, {}};
    int64_t nrows = 0;
    while (table.at < text.size()) {
        table.place.line += 1 + table.newlines;
        table.newlines = 0;
        if (take_char(&table, '\n')) continue;
        place_row(&table, &parts, nrows++);
        if (nrows % CLOCK_ROWS == 0) check_time(*budget);
    }
    for (int64_t v = 0; v < graph.nvertices; v++)
        if (parts[at(v)] < 0)
            bad_input(*budget, {0, 0}, "vertex %s has no row",
                      shown_text(vertex_label(graph, v, 1)).c_str());
    return parts;
}
