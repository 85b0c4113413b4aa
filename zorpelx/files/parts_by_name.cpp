// SPDX-License-Identifier: MIT
/* zorpelx/files/parts_by_name.cpp: partitions, pre-assignments and groups as tables of names and
 * parts.
 *
 * annotate writes its rows in the order of the vertices, so each row is held against the next
 * vertex first; names are looked up from the first row on that stands elsewhere.
 */
#include "parts_by_name.h"

#include <algorithm>
#include <cassert>
#include <charconv>
#include <unordered_map>

#include "bytes.h"
#include "casts.h"
#include "partfiles.h"
#include "table_rows.h"
#include "told.h"

constexpr int64_t SEVERAL = -2;      // in place of the number of a name
constexpr int64_t NO_ROW = -2;       // in place of the part of a vertex
constexpr int64_t CLOCK_ROWS = 4096; // between two looks at the deadline

struct PartTable {
    TableRows rows;
    const VertexLabels *vertices;
    PartTableRule rule;
    std::unordered_map<std::string, int64_t> number; // of each name, once one is looked up
};

VertexLabels labels_of(const Hypergraph &graph)
{
    return {graph.nvertices, [&graph](int64_t v) { return vertex_label(graph, v, 1); }};
}

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

static void number_names(PartTable *table)
{
    constexpr size_t NODE = 80; // bytes of an entry, about, besides long names
    const VertexLabels &vertices = *table->vertices;
    Budget *const budget = table->rows.budget;
    charge(budget, static_cast<size_t>(vertices.count) * NODE);
    for (int64_t v = 0; v < vertices.count; v++) {
        const auto [place, isnew] = table->number.emplace(vertices.label(v), v);
        if (!isnew) place->second = SEVERAL;
        if (place->first.size() > sizeof(std::string)) charge(budget, place->first.size());
        if (v % CLOCK_ROWS == 0) check_time(*budget);
    }
}

static int64_t look_up(PartTable *table, const std::string &name)
{
    if (table->number.empty()) number_names(table);
    const auto found = table->number.find(name);
    return found == table->number.end() ? -1 : found->second;
}

static int64_t vertex_of_row(PartTable *table, const TableField &name, int64_t next)
{
    const VertexLabels &vertices = *table->vertices;
    if (next < vertices.count && vertices.label(next) == name.text) return next;
    const int64_t v = look_up(table, std::string(name.text));
    if (v == SEVERAL)
        bad_input(*table->rows.budget, name.place, "several vertices are called %s",
                  shown_text(name.text).c_str());
    if (v < 0)
        bad_input(*table->rows.budget, name.place, "no vertex is called %s",
                  shown_text(name.text).c_str());
    return v;
}

static int64_t part_of_field(const PartTable &table, const TableField &field)
{
    const int64_t least = table.rule.partial ? -1 : 0, most = table.rule.nparts - 1;
    int64_t part = NO_ROW;
    const char *const end = field.text.data() + field.text.size();
    const auto [stop, error] = std::from_chars(field.text.data(), end, part);
    if (error != std::errc() || stop != end)
        bad_input(*table.rows.budget, field.place, "%s is not a part number",
                  shown_text(field.text).c_str());
    if (part < least || part > most)
        bad_input(*table.rows.budget, field.place, "part %lld is not between %lld and %lld",
                  static_cast<long long>(part), static_cast<long long>(least),
                  static_cast<long long>(most));
    return part;
}

static void place_row(PartTable *table, std::vector<int64_t> *parts, int64_t next)
{
    const Budget &budget = *table->rows.budget;
    const std::vector<TableField> &row = table->rows.row;
    if (row.size() < 2) bad_input(budget, row[0].place, "a row without a part");
    if (row.size() > 2) bad_input(budget, row[2].place, "a row of more than a name and a part");
    int64_t &part = (*parts)[at(vertex_of_row(table, row[0], next))];
    if (part != NO_ROW)
        bad_input(budget, row[0].place, "vertex %s has a part already",
                  shown_text(row[0].text).c_str());
    part = part_of_field(*table, row[1]);
}

std::vector<int64_t> scan_parts_by_name(std::string_view bytes, const VertexLabels &vertices,
                                        const PartTableRule &rule, Budget *budget)
{
    assert(has_parts_by_name(bytes) && vertices.count >= 0);
    const char separator = without_mark(bytes)[sizeof("vertex") - 1];
    PartTable table = {open_rows(bytes, separator, budget), &vertices, rule, {}};
    charge(budget, at(vertices.count) * sizeof(int64_t));
    std::vector<int64_t> parts(at(vertices.count), NO_ROW);
    take_row(&table.rows); // the header
    for (int64_t nrows = 0; take_row(&table.rows); nrows++) {
        place_row(&table, &parts, nrows);
        if (nrows % CLOCK_ROWS == 0) check_time(*budget);
    }
    if (rule.partial) std::replace(parts.begin(), parts.end(), NO_ROW, int64_t{-1});
    const auto without = std::find(parts.begin(), parts.end(), NO_ROW);
    if (without != parts.end())
        bad_input(*budget, {0, 0}, "vertex %s has no row",
                  shown_text(vertices.label(without - parts.begin())).c_str());
    return parts;
}

std::vector<int64_t> scan_partition_or_table(std::string_view bytes, const VertexLabels &vertices,
                                             Budget *budget, bool *unended)
{
    if (has_parts_by_name(bytes)) return scan_parts_by_name(bytes, vertices, {}, budget);
    return scan_partition(bytes, vertices.count, budget, unended);
}
