// SPDX-License-Identifier: MIT
/* zorpelx/files/read_edges.cpp: the reader of edge lists. */
#include "read_edges.h"

#include "builder.h"
#include "fileerror.h"
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

/* Returns whether the line has an edge of two vertices. */
static bool add_edge(Builder *builder, Walk *walk)
{
    const std::string_view from = take_name(walk), to = take_name(walk);
    if (to.empty())
        bad_input(*builder->budget, place_of(*walk),
                  "the line ends where a second vertex should be");
    const int64_t weight = take_weight(walk, *builder->budget);
    const int32_t u = named_vertex(builder, from), v = named_vertex(builder, to);
    if (u == v) return false;
    const int64_t e = builder->graph.nnets;
    need_nets(builder, e + 1);
    add_pin(builder, static_cast<int32_t>(e), u);
    add_pin(builder, static_cast<int32_t>(e), v);
    if (weight >= 0) set_net_weight(builder, static_cast<int32_t>(e), weight);
    return true;
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
    constexpr size_t MOST_LOOKED_AT = size_t{1} << 16;
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

Hypergraph read_edges(std::string_view bytes, const Reading &, Findings *findings, Budget *budget)
{
    Builder builder = open_builder(findings, budget);
    Walk walk = walk_over(bytes);
    int64_t nloops = 0;
    for (skip_space(&walk); !text_ended(walk); skip_space(&walk)) {
        if (*walk.at != '#' && *walk.at != '%' && !add_edge(&builder, &walk)) nloops++;
        next_line(&walk);
    }
    if (nloops > 0)
        tell_note(findings, {0, 0},
                  text_of("edges that join a vertex to itself, left out: %lld",
                          static_cast<long long>(nloops)));
    return finish_hypergraph(&builder);
}
