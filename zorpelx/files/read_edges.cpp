// SPDX-License-Identifier: MIT
/* zorpelx/files/read_edges.cpp: the reader of edge lists. */
#include "read_edges.h"

#include <algorithm>

#include "builder.h"
#include "fileerror.h"
#include "known.h"
#include "walk.h"

static bool is_between(char c)
{
    return is_walk_blank(c) || c == ',' || c == ';';
}

static void skip_between(Walk *walk)
{
    while (walk->at < walk->end && is_between(*walk->at)) walk->at++;
}

static std::string_view take_name(Walk *walk)
{
    skip_between(walk);
    const char *const begin = walk->at;
    while (!line_ended(*walk) && !is_between(*walk->at)) walk->at++;
    return {begin, static_cast<size_t>(walk->at - begin)};
}

/* The weight at the end of a line; -1 if there is none. */
static int64_t take_weight(Walk *walk, const Budget &budget)
{
    skip_between(walk);
    if (line_ended(*walk)) return -1;
    int64_t weight = 0;
    const Place place = place_of(*walk);
    if (!take_whole(walk, &weight))
        bad_input(budget, place, "%s where a weight, a whole number from 0, should be",
                  shown_here(*walk).c_str());
    skip_between(walk);
    if (!line_ended(*walk))
        bad_input(budget, place_of(*walk), "%s where the end of the line should be",
                  shown_here(*walk).c_str());
    return weight;
}

/* Lines read and not yet added: their names are asked for while more lines are read. */
struct EdgeLine {
    std::string_view from, to;
    int64_t weight; // -1: none
};
constexpr size_t EDGE_BLOCK = 64;

struct EdgeScan {
    Builder builder;
    Walk walk;
    EdgeLine lines[EDGE_BLOCK];
    size_t nlines;
    int64_t nloops;
};

static EdgeLine take_line(EdgeScan *scan)
{
    Walk *const walk = &scan->walk;
    const std::string_view from = take_name(walk), to = take_name(walk);
    if (to.empty())
        bad_input(*scan->builder.budget, place_of(*walk),
                  "the line ends where a second vertex should be");
    prefetch_name(scan->builder.vertices, from);
    prefetch_name(scan->builder.vertices, to);
    return {from, to, take_weight(walk, *scan->builder.budget)};
}

static void add_edge(EdgeScan *scan, const EdgeLine &line)
{
    Builder *const builder = &scan->builder;
    const int32_t u = named_vertex(builder, line.from), v = named_vertex(builder, line.to);
    if (u == v) {
        scan->nloops++;
        return;
    }
    const int64_t e = builder->graph.nnets;
    need_nets(builder, e + 1);
    add_pin(builder, static_cast<int32_t>(e), u);
    add_pin(builder, static_cast<int32_t>(e), v);
    if (line.weight >= 0) set_net_weight(builder, static_cast<int32_t>(e), line.weight);
}

static void add_edges(EdgeScan *scan)
{
    for (size_t i = 0; i < scan->nlines; i++) add_edge(scan, scan->lines[i]);
    scan->nlines = 0;
}

/* The numbers in the rest of the line; 0 if there is anything else. */
static int count_numbers(Walk *walk)
{
    int64_t number = 0;
    int count = 0;
    for (skip_between(walk); !line_ended(*walk); skip_between(walk), count++)
        if (!take_whole(walk, &number)) return 0;
    return count;
}

/* Lines of two or of three numbers, below a comment that begins with #, as no hypergraph file has.
 */
Recognised recognise_edges(std::string_view bytes)
{
    Walk walk = walk_over(bytes.substr(0, MOST_LOOKED_AT));
    skip_space(&walk);
    if (text_ended(walk) || *walk.at != '#') return OPEN;
    walk.at++;
    skip_blanks(&walk);
    if (line_ended(walk)) return OPEN; // it says nothing
    int each = 0;
    for (next_line(&walk), skip_space(&walk); !text_ended(walk);
         next_line(&walk), skip_space(&walk)) {
        if (*walk.at == '#') continue;
        const int count = count_numbers(&walk);
        if (each == 0) each = count;
        // the last line looked at may be cut off
        if (count != each && walk.at - bytes.data() < static_cast<int64_t>(MOST_LOOKED_AT))
            return OPEN;
    }
    return each == 2 || each == 3 ? LIKE : OPEN;
}

/* Room for as many edges as the begin of the file lets expect, and no more than it can hold. */
static void reserve_edges(Builder *builder, std::string_view bytes)
{
    constexpr size_t SAMPLE = size_t{1} << 20, SHORTEST = 4; // "1 2" and its newline
    const std::string_view head = bytes.substr(0, SAMPLE);
    if (head.size() == bytes.size()) return;
    const size_t nlines = static_cast<size_t>(std::count(head.begin(), head.end(), '\n'));
    const size_t expected = (bytes.size() / SAMPLE + 1) * nlines;
    const size_t nedges = std::min(expected + expected / 32, bytes.size() / SHORTEST);
    reserve_charged(builder->budget, &builder->graph.pins, 2 * nedges);
    reserve_charged(builder->budget, &builder->graph.start, nedges + 1);
}

Hypergraph read_edges(std::string_view bytes, const Reading &, Findings *findings, Budget *budget)
{
    EdgeScan scan = {open_builder(findings, budget), walk_over(bytes), {}, 0, 0};
    reserve_edges(&scan.builder, bytes);
    Walk *const walk = &scan.walk;
    for (skip_space(walk); !text_ended(*walk); skip_space(walk)) {
        if (*walk->at != '#' && *walk->at != '%') scan.lines[scan.nlines++] = take_line(&scan);
        if (scan.nlines == EDGE_BLOCK) add_edges(&scan);
        next_line(walk);
    }
    add_edges(&scan);
    if (scan.nloops > 0)
        tell_note(findings, {0, 0},
                  text_of("edges that join a vertex to itself, left out: %lld",
                          static_cast<long long>(scan.nloops)));
    return finish_hypergraph(&scan.builder);
}
