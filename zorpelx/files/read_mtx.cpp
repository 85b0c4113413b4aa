// SPDX-License-Identifier: MIT
/* zorpelx/files/read_mtx.cpp: the reader of Matrix Market files.
 *
 * Entries become pins as they are read: of a row and a column one is the hyperedge and the other
 * the vertex. In the fine-grain model an entry becomes a vertex with two pins; entries that are
 * listed twice are found first, row by row.
 */
#include "read_mtx.h"

#include <climits>

#include "builder.h"
#include "casts.h"
#include "fileerror.h"
#include "walk.h"

constexpr std::string_view BANNER = "%%matrixmarket";

/* What the banner and the line of sizes say. */
struct MatrixKind {
    int nvalues;    // numbers of an entry behind row and column
    bool symmetric; // an entry stands for the one across the diagonal, too
    int64_t nrows, ncolumns, nentries;
};

struct MatrixScan {
    Walk walk;
    MatrixKind kind;
    Builder builder;
    bool fine, transposed; // fine-grain; hyperedges are columns
    int64_t nread;         // entries of the file
};

Recognised recognise_mtx(std::string_view bytes)
{
    Walk walk = walk_over(bytes);
    return small_letters(take_text(&walk)) == BANNER ? CERTAIN : UNLIKE;
}

[[noreturn]] static void bad_banner(const MatrixScan &scan, const Place &place, const char *what,
                                    std::string_view word)
{
    if (word.empty())
        bad_input(*scan.builder.budget, place, "the %s of the matrix is missing", what);
    bad_input(*scan.builder.budget, place, "%s is not known as the %s of a matrix",
              shown_text(word).c_str(), what);
}

/* The next word of the banner, in small letters. */
static std::string banner_word(MatrixScan *scan, Place *place)
{
    skip_blanks(&scan->walk);
    *place = place_of(scan->walk);
    return small_letters(take_text(&scan->walk));
}

static int count_values(const MatrixScan &scan, const Place &place, const std::string &field)
{
    if (field == "pattern") return 0;
    if (field == "real" || field == "double" || field == "integer" || field == "unsigned-integer")
        return 1;
    if (field == "complex") return 2;
    bad_banner(scan, place, "field", field);
}

static bool is_symmetric(const MatrixScan &scan, const Place &place, const std::string &symmetry)
{
    if (symmetry == "general") return false;
    if (symmetry == "symmetric" || symmetry == "skew-symmetric" || symmetry == "hermitian")
        return true;
    bad_banner(scan, place, "symmetry", symmetry);
}

static void read_banner(MatrixScan *scan)
{
    Place place = place_of(scan->walk);
    const std::string first = banner_word(scan, &place);
    if (first != BANNER)
        bad_input(*scan->builder.budget, place,
                  "a Matrix Market file begins with %%%%MatrixMarket");
    const std::string object = banner_word(scan, &place);
    if (object != "matrix") bad_banner(*scan, place, "object", object);
    const std::string layout = banner_word(scan, &place);
    if (layout == "array")
        bad_input(*scan->builder.budget, place,
                  "an array lists every entry and has no sparsity to partition by; store the "
                  "matrix in coordinate format");
    if (layout != "coordinate") bad_banner(*scan, place, "layout", layout);
    const std::string field = banner_word(scan, &place);
    scan->kind.nvalues = count_values(*scan, place, field);
    const std::string symmetry = banner_word(scan, &place);
    scan->kind.symmetric = is_symmetric(*scan, place, symmetry);
    next_line(&scan->walk);
}

/* To the next line that is neither blank nor a comment; false at the end of the text. */
static bool find_line(MatrixScan *scan)
{
    Walk *const walk = &scan->walk;
    for (;;) {
        skip_space(walk);
        if (text_ended(*walk)) return false;
        if (*walk->at != '%') return true;
        next_line(walk);
    }
}

[[noreturn]] static void not_whole(const MatrixScan &scan, const char *what)
{
    Walk walk = scan.walk;
    skip_blanks(&walk);
    bad_input(*scan.builder.budget, place_of(walk), "%s where %s should be",
              shown_here(walk).c_str(), what);
}

static int64_t take_size(MatrixScan *scan, const char *what)
{
    int64_t size = 0;
    skip_blanks(&scan->walk);
    if (!take_whole(&scan->walk, &size)) not_whole(*scan, what);
    return size;
}

static void read_sizes(MatrixScan *scan)
{
    if (!find_line(scan))
        bad_input(*scan->builder.budget, place_of(scan->walk), "the line of sizes is missing");
    const Place place = place_of(scan->walk);
    MatrixKind *const kind = &scan->kind;
    kind->nrows = take_size(scan, "the number of rows");
    kind->ncolumns = take_size(scan, "the number of columns");
    kind->nentries = take_size(scan, "the number of entries");
    if (kind->symmetric && kind->nrows != kind->ncolumns)
        bad_input(*scan->builder.budget, place, "a symmetric matrix of %lld rows and %lld columns",
                  ll(kind->nrows), ll(kind->ncolumns));
    // what a file announces takes memory only as far as its length bears it out
    constexpr int64_t MOST_A_BYTE = 16, FREE = 1000000;
    const int64_t length = scan->walk.end - scan->walk.at;
    for (const int64_t size : {kind->nrows, kind->ncolumns})
        if (size >= INT_MAX || (size > FREE && size / MOST_A_BYTE > length))
            bad_input(*scan->builder.budget, place, "%lld rows and %lld columns with %lld entries",
                      ll(kind->nrows), ll(kind->ncolumns), ll(kind->nentries));
    next_line(&scan->walk);
}

/* A number such as -1.5e+3, nan or inf, by its form alone. */
static bool skip_real(Walk *walk)
{
    const char *s = walk->at, *const end = walk->end;
    if (s < end && (*s == '-' || *s == '+')) s++;
    const char *const digits = s;
    int64_t count = 0;
    for (; s < end && *s >= '0' && *s <= '9'; s++) count++;
    if (s < end && *s == '.')
        for (s++; s < end && *s >= '0' && *s <= '9'; s++) count++;
    if (count > 0 && s < end && (*s == 'e' || *s == 'E' || *s == 'd' || *s == 'D')) {
        s++;
        if (s < end && (*s == '-' || *s == '+')) s++;
        const char *const exponent = s;
        while (s < end && *s >= '0' && *s <= '9') s++;
        if (s == exponent) return false;
    }
    walk->at = s;
    if (count == 0) {
        walk->at = digits;
        const std::string word = small_letters(take_text(walk));
        return word == "nan" || word == "inf" || word == "infinity";
    }
    return s == end || *s == '\n' || is_walk_blank(*s);
}

static void skip_values(MatrixScan *scan)
{
    for (int i = 0; i < scan->kind.nvalues; i++) {
        skip_blanks(&scan->walk);
        const Walk before = scan->walk;
        if (line_ended(scan->walk) || !skip_real(&scan->walk)) {
            scan->walk = before;
            not_whole(*scan, "a value");
        }
    }
    skip_blanks(&scan->walk);
    if (!line_ended(scan->walk)) not_whole(*scan, "the end of the line");
}

/* A row or column number, from 0. */
static int32_t take_index(MatrixScan *scan, int64_t size, const char *what)
{
    int64_t index = 0;
    skip_blanks(&scan->walk);
    const Place place = place_of(scan->walk);
    if (!take_whole(&scan->walk, &index)) not_whole(*scan, what);
    if (index < 1 || index > size)
        bad_input(*scan->builder.budget, place, "%s is %lld; it should be from 1 to %lld", what,
                  ll(index), ll(size));
    return static_cast<int32_t>(index - 1);
}

static void add_entry(MatrixScan *scan, int32_t row, int32_t column)
{
    Builder *const builder = &scan->builder;
    if (scan->fine) {
        push_charged(builder->budget, &builder->graph.provenance.row, row);
        push_charged(builder->budget, &builder->graph.provenance.column, column);
    } else if (scan->transposed) {
        add_pin(builder, column, row);
    } else {
        add_pin(builder, row, column);
    }
}

static void read_entries(MatrixScan *scan)
{
    for (; find_line(scan); scan->nread++) {
        if ((scan->nread & 0xffff) == 0) check_time(*scan->builder.budget);
        const int32_t row = take_index(scan, scan->kind.nrows, "the row");
        const int32_t column = take_index(scan, scan->kind.ncolumns, "the column");
        skip_values(scan);
        add_entry(scan, row, column);
        if (scan->kind.symmetric && row != column) add_entry(scan, column, row);
    }
}

static void tell_count(const MatrixScan &scan)
{
    const int64_t missing = scan.kind.nentries - scan.nread;
    if (missing != 0)
        tell_warning(scan.builder.findings, place_of(scan.walk),
                     text_of("%lld entries, %lld %s than announced", ll(scan.nread),
                             ll(missing > 0 ? missing : -missing), missing > 0 ? "less" : "more"));
}

static void tell_repeated(Findings *findings, int64_t nrepeated)
{
    if (nrepeated > 0)
        tell_warning(findings, {0, 0},
                     text_of("entries that are listed twice, or on both sides of the diagonal of a "
                             "symmetric matrix, counted once: %lld",
                             ll(nrepeated)));
}

/* Marks entries that stand in their row before; returns how many. Entries are gone through row by
 * row, by counting. */
static int64_t mark_repeated(const MatrixScan &scan, std::vector<bool> *repeated)
{
    const Provenance &from = scan.builder.graph.provenance;
    const size_t nrows = static_cast<size_t>(scan.kind.nrows), nentries = from.row.size();
    std::vector<int64_t> start(nrows + 1, 0);
    for (const int32_t row : from.row) start[static_cast<size_t>(row) + 1]++;
    for (size_t i = 0; i < nrows; i++) start[i + 1] += start[i];
    std::vector<int32_t> order(nentries), last(static_cast<size_t>(scan.kind.ncolumns), -1);
    for (size_t i = 0; i < nentries; i++)
        order[static_cast<size_t>(start[static_cast<size_t>(from.row[i])]++)] =
            static_cast<int32_t>(i);
    int64_t count = 0;
    for (const int32_t i : order) {
        int32_t *const mark = &last[static_cast<size_t>(from.column[static_cast<size_t>(i)])];
        const int32_t row = from.row[static_cast<size_t>(i)];
        if (*mark == row) {
            (*repeated)[static_cast<size_t>(i)] = true;
            count++;
        }
        *mark = row;
    }
    return count;
}

static int64_t drop_repeated_entries(MatrixScan *scan)
{
    Provenance *const from = &scan->builder.graph.provenance;
    const size_t nentries = from->row.size();
    const size_t room = nentries * (sizeof(int32_t) + 1) +
                        static_cast<size_t>(scan->kind.nrows) * sizeof(int64_t) +
                        static_cast<size_t>(scan->kind.ncolumns) * sizeof(int32_t);
    charge(scan->builder.budget, room);
    std::vector<bool> repeated(nentries, false);
    const int64_t count = mark_repeated(*scan, &repeated);
    size_t kept = 0;
    for (size_t i = 0; i < nentries; i++) {
        if (repeated[i]) continue;
        from->row[kept] = from->row[i];
        from->column[kept++] = from->column[i];
    }
    from->row.resize(kept);
    from->column.resize(kept);
    give_back(scan->builder.budget, room);
    return count;
}

/* Rows first, then columns, each with its entries. */
static void make_fine(MatrixScan *scan)
{
    Builder *const builder = &scan->builder;
    const Provenance &from = builder->graph.provenance;
    const int32_t nrows = static_cast<int32_t>(scan->kind.nrows);
    need_vertices(builder, static_cast<int64_t>(from.row.size()));
    need_nets(builder, scan->kind.nrows + scan->kind.ncolumns);
    for (size_t i = 0; i < from.row.size(); i++) {
        add_pin(builder, from.row[i], static_cast<int32_t>(i));
        add_pin(builder, nrows + from.column[i], static_cast<int32_t>(i));
    }
}

/* Vertices weigh what they have of nonzeros, which is their pins. */
static void weigh_by_pins(Hypergraph *graph)
{
    graph->vertexweights = true;
    graph->vertexwgt.assign(static_cast<size_t>(graph->nvertices), 0);
    for (const int32_t v : graph->pins) graph->vertexwgt[static_cast<size_t>(v)]++;
}

Hypergraph read_mtx(std::string_view bytes, const Reading &reading, Findings *findings,
                    Budget *budget)
{
    MatrixScan scan = {walk_over(bytes),
                       {},
                       open_builder(findings, budget),
                       reading.model == "fine-grain",
                       reading.model == "column-net",
                       0};
    read_banner(&scan);
    read_sizes(&scan);
    const int64_t nrows = scan.kind.nrows, ncolumns = scan.kind.ncolumns;
    if (!scan.fine) {
        need_nets(&scan.builder, scan.transposed ? ncolumns : nrows);
        need_vertices(&scan.builder, scan.transposed ? nrows : ncolumns);
    }
    read_entries(&scan);
    tell_count(scan);
    int64_t nrepeated = scan.fine ? drop_repeated_entries(&scan) : 0;
    if (scan.fine) make_fine(&scan);
    Hypergraph graph = finish_hypergraph(&scan.builder, scan.fine ? nullptr : &nrepeated);
    tell_repeated(findings, nrepeated);
    if (!scan.fine) weigh_by_pins(&graph);
    graph.provenance.nrows = nrows;
    graph.provenance.ncolumns = ncolumns;
    return graph;
}
