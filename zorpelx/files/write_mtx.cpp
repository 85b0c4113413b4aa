// SPDX-License-Identifier: MIT
/* zorpelx/files/write_mtx.cpp: a partition of a matrix: who has which entry, and the matrix in
 * blocks.
 *
 * The file was read once already, so that nothing in it can be wrong; here it is gone through again
 * for its values, which the hypergraph does not hold.
 */
#include "write_mtx.h"

#include <algorithm>
#include <cassert>
#include <numeric>

#include "casts.h"
#include "fileerror.h"
#include "walk.h"

/* An entry of the file. */
struct MtxEntry {
    int32_t row, column; // from 0
    std::string_view values;
};

/* How the matrix is stored. */
struct MtxKind {
    std::string field, symmetry;
    int64_t nrows, ncolumns;
};

/* Where the parts put rows and columns.
 *   place  [size] new number of each, from 0; order: the old number of each new one
 *   part   [size] the part of each, nparts for the border */
struct MtxSide {
    std::vector<int32_t> part, place, order;
};

static bool next_data_line(Walk *walk)
{
    for (skip_space(walk); !text_ended(*walk); skip_space(walk)) {
        if (*walk->at != '%') return true;
        next_line(walk);
    }
    return false;
}

/* Goes through banner and sizes. */
static MtxKind take_kind(Walk *walk)
{
    MtxKind kind = {};
    for (int i = 0; i < 3; i++) { // banner, object, layout
        skip_blanks(walk);
        take_text(walk);
    }
    skip_blanks(walk);
    kind.field = small_letters(take_text(walk));
    skip_blanks(walk);
    kind.symmetry = small_letters(take_text(walk));
    next_line(walk);
    next_data_line(walk);
    take_whole(walk, &kind.nrows);
    skip_blanks(walk);
    take_whole(walk, &kind.ncolumns);
    next_line(walk);
    return kind;
}

static std::string_view rest_of_line(Walk *walk)
{
    skip_blanks(walk);
    const char *const begin = walk->at;
    while (!line_ended(*walk)) walk->at++;
    const char *end = walk->at;
    while (end > begin && is_walk_blank(end[-1])) end--;
    return {begin, static_cast<size_t>(end - begin)};
}

static bool take_entry(Walk *walk, MtxEntry *entry)
{
    int64_t row = 0, column = 0;
    if (!next_data_line(walk)) return false;
    take_whole(walk, &row);
    skip_blanks(walk);
    take_whole(walk, &column);
    *entry = {static_cast<int32_t>(row - 1), static_cast<int32_t>(column - 1), rest_of_line(walk)};
    return true;
}

static std::string negated(std::string_view value)
{
    if (!value.empty() && value[0] == '-') return std::string(value.substr(1));
    if (!value.empty() && value[0] == '+') value.remove_prefix(1);
    std::string text(1, '-');
    return text += value;
}

/* The values of the entry across the diagonal. */
static std::string mirrored(const MtxKind &kind, std::string_view values)
{
    if (kind.symmetry == "symmetric") return std::string(values);
    const size_t blank = values.find_first_of(" \t");
    const std::string_view real = values.substr(0, blank);
    const std::string_view imaginary =
        blank == std::string_view::npos
            ? std::string_view()
            : values.substr(std::min(values.find_first_not_of(" \t", blank), values.size()));
    std::string text = kind.symmetry == "hermitian" ? std::string(real) : negated(real);
    if (imaginary.empty()) return text;
    text += ' ';
    return text += negated(imaginary);
}

/* Calls work(row, column, values) for each entry, mirrored ones behind their own. */
template <class Work>
static void for_each_entry(std::string_view bytes, const Budget &budget, const Work &work)
{
    Walk walk = walk_over(bytes);
    const MtxKind kind = take_kind(&walk);
    MtxEntry entry;
    for (int64_t i = 0; take_entry(&walk, &entry); i++) {
        if (i % 65536 == 0) check_time(budget);
        work(entry.row, entry.column, std::string(entry.values));
        if (kind.symmetry != "general" && entry.row != entry.column)
            work(entry.column, entry.row, mirrored(kind, entry.values));
    }
}

/* The part that alone touches a hyperedge; nparts if there are several, 0 if there is none. */
static int32_t part_of_net(const Hypergraph &graph, const Annotation &annotation, int64_t e)
{
    const size_t begin = at(graph.start[at(e)]), end = at(graph.start[at(e) + 1]);
    if (begin == end) return 0;
    const int64_t part = annotation.part[at(graph.pins[begin])];
    for (size_t i = begin; i < end; i++)
        if (annotation.part[at(graph.pins[i])] != part)
            return static_cast<int32_t>(annotation.nparts);
    return static_cast<int32_t>(part);
}

/* Sorts by part, the old order kept within each. */
static void order_side(MtxSide *side)
{
    side->order.resize(side->part.size());
    std::iota(side->order.begin(), side->order.end(), 0);
    std::stable_sort(side->order.begin(), side->order.end(),
                     [&](int32_t a, int32_t b) { return side->part[at(a)] < side->part[at(b)]; });
    side->place.resize(side->part.size());
    for (size_t i = 0; i < side->order.size(); i++)
        side->place[at(side->order[i])] = static_cast<int32_t>(i);
}

static MtxSide side_of_nets(const Hypergraph &graph, const Annotation &annotation, int64_t first,
                            int64_t count)
{
    MtxSide side;
    for (int64_t e = first; e < first + count; e++)
        side.part.push_back(part_of_net(graph, annotation, e));
    order_side(&side);
    return side;
}

static MtxSide side_of_vertices(const Annotation &annotation)
{
    MtxSide side;
    side.part.assign(annotation.part.begin(), annotation.part.end());
    order_side(&side);
    return side;
}

/* "% part 0: rows 1 to 40, columns 1 to 42" and so on, the border last. */
static void put_blocks(std::string *text, const MtxSide &rows, const MtxSide &columns,
                       int64_t nparts)
{
    size_t row = 0, column = 0;
    for (int64_t p = 0; p <= nparts; p++) {
        const size_t first_row = row, first_column = column;
        while (row < rows.order.size() && rows.part[at(rows.order[row])] == p) row++;
        while (column < columns.order.size() && columns.part[at(columns.order[column])] == p)
            column++;
        *text += p < nparts ? text_of("%% part %lld:", static_cast<long long>(p)) : "% border:";
        *text += row > first_row ? text_of(" rows %zu to %zu,", first_row + 1, row) : " no rows,";
        *text += column > first_column ? text_of(" columns %zu to %zu\n", first_column + 1, column)
                                       : " no columns\n";
    }
}

/* A row or column as a file of numbers. */
static std::string order_text(const MtxSide &side)
{
    std::string text;
    for (const int32_t old : side.order) text += std::to_string(old + 1) + '\n';
    return text;
}

static int64_t count_entries(std::string_view bytes, const Budget &budget)
{
    int64_t count = 0;
    for_each_entry(bytes, budget, [&](int32_t, int32_t, const std::string &) { count++; });
    return count;
}

static void put_entry(std::string *text, int64_t row, int64_t column, const std::string &values)
{
    *text += std::to_string(row + 1) + ' ' + std::to_string(column + 1);
    if (!values.empty()) *text += ' ' + values;
    *text += '\n';
}

static std::string sizes_text(const MtxKind &kind, int64_t nentries)
{
    return text_of("%lld %lld %lld\n", static_cast<long long>(kind.nrows),
                   static_cast<long long>(kind.ncolumns), static_cast<long long>(nentries));
}

/* The number of an entry in the fine-grain model: entries that are listed twice have the first
 * one's. Entries and vertices come in one order. */
static std::vector<int64_t> sorted_entries(const Provenance &from)
{
    std::vector<int64_t> keys(from.row.size());
    std::iota(keys.begin(), keys.end(), 0);
    std::sort(keys.begin(), keys.end(), [&](int64_t a, int64_t b) {
        return std::pair(from.row[at(a)], from.column[at(a)]) <
               std::pair(from.row[at(b)], from.column[at(b)]);
    });
    return keys;
}

static int64_t find_entry(const Provenance &from, const std::vector<int64_t> &sorted, int32_t row,
                          int32_t column)
{
    const auto found =
        std::lower_bound(sorted.begin(), sorted.end(), std::pair(row, column),
                         [&](int64_t a, const std::pair<int32_t, int32_t> &wanted) {
                             return std::pair(from.row[at(a)], from.column[at(a)]) < wanted;
                         });
    assert(found != sorted.end());
    return *found;
}

static std::string distribution_text(const Hypergraph &graph, const Annotation &annotation,
                                     const MtxKind &kind, int64_t nentries, const Budget &budget)
{
    const Provenance &from = graph.provenance;
    const bool fine = from.model == "fine-grain", by_row = from.model == "column-net";
    const std::vector<int64_t> sorted = fine ? sorted_entries(from) : std::vector<int64_t>();
    std::string text = "%%MatrixMarket matrix coordinate integer general\n"
                       "% the value of an entry is 1 + its part\n";
    text += sizes_text(kind, nentries);
    for_each_entry(
        annotation.original, budget, [&](int32_t row, int32_t column, const std::string &) {
            const int64_t v = fine ? find_entry(from, sorted, row, column) : by_row ? row : column;
            put_entry(&text, row, column, std::to_string(1 + annotation.part[at(v)]));
        });
    return text;
}

static std::string permuted_text(const Annotation &annotation, const MtxKind &kind,
                                 int64_t nentries, const MtxSide &rows, const MtxSide &columns,
                                 const Budget &budget)
{
    std::string text =
        text_of("%%%%MatrixMarket matrix coordinate %s general\n", kind.field.c_str());
    put_blocks(&text, rows, columns, annotation.nparts);
    text += sizes_text(kind, nentries);
    for_each_entry(annotation.original, budget,
                   [&](int32_t row, int32_t column, const std::string &values) {
                       put_entry(&text, rows.place[at(row)], columns.place[at(column)], values);
                   });
    return text;
}

std::vector<WrittenFile> annotate_mtx(const Hypergraph &graph, const Annotation &annotation,
                                      Budget *budget)
{
    const Provenance &from = graph.provenance;
    const bool fine = from.model == "fine-grain", by_row = from.model == "column-net";
    const MtxSide rows =
        by_row ? side_of_vertices(annotation) : side_of_nets(graph, annotation, 0, from.nrows);
    const MtxSide columns =
        fine || by_row ? side_of_nets(graph, annotation, fine ? from.nrows : 0, from.ncolumns)
                       : side_of_vertices(annotation);
    Walk walk = walk_over(annotation.original);
    const MtxKind kind = take_kind(&walk);
    const int64_t nentries = count_entries(annotation.original, *budget);
    return {{"", permuted_text(annotation, kind, nentries, rows, columns, *budget)},
            {".distribution.mtx", distribution_text(graph, annotation, kind, nentries, *budget)},
            {".rows", order_text(rows)},
            {".columns", order_text(columns)}};
}
