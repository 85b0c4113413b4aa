// SPDX-License-Identifier: MIT
/* zorpelx/files/builder.cpp: how readers of formats other than hypergraph files make the record. */
#include "builder.h"

#include <algorithm>
#include <cassert>
#include <climits>
#include <cstdarg>
#include <cstdio>
#include <utility>

#include "casts.h"
#include "fileerror.h"
#include "sizes.h"
#include "zorpelx.h"

constexpr int64_t MOST_WEIGHT = 2147483646; // total of one kind of weights, as in hypergraph files
constexpr int64_t MOST_NUMBER = INT_MAX - 1;
constexpr uint64_t CLOCK_STEPS = uint64_t{1} << 18; // between two looks at the clock

Builder open_builder(Findings *findings, Budget *budget)
{
    Builder builder = {};
    builder.graph = {0, 0, false, false, {0}, {}, {}, {}};
    builder.ordered = true;
    builder.findings = findings;
    builder.budget = budget;
    charge(budget, builder.graph.start.capacity() * sizeof(int64_t));
    return builder;
}

static void check_number(const Builder &builder, int64_t count, const char *what)
{
    if (count > MOST_NUMBER)
        file_error(ZORPELX_BAD_INPUT, "%s: more than %lld %s, which 32 bits do not count",
                   builder.budget->name.c_str(), ll(MOST_NUMBER), what);
}

void need_vertices(Builder *builder, int64_t count)
{
    check_number(*builder, count, "vertices");
    builder->graph.nvertices = std::max(builder->graph.nvertices, count);
}

void need_nets(Builder *builder, int64_t count)
{
    check_number(*builder, count, "hyperedges");
    builder->graph.nnets = std::max(builder->graph.nnets, count);
}

int32_t named_vertex(Builder *builder, std::string_view name)
{
    const int32_t v = intern(&builder->vertices, name, builder->budget);
    if (v >= builder->graph.nvertices) need_vertices(builder, int64_t{v} + 1);
    return v;
}

int32_t named_net(Builder *builder, std::string_view name)
{
    const int32_t e = intern(&builder->nets, name, builder->budget);
    if (e >= builder->graph.nnets) need_nets(builder, int64_t{e} + 1);
    return e;
}

/* Hyperedges from the last that has an end up to e end here. */
static void end_nets_before(Builder *builder, int64_t e)
{
    std::vector<int64_t> *const start = &builder->graph.start;
    while (static_cast<int64_t>(start->size()) <= e)
        push_charged(builder->budget, start, static_cast<int64_t>(builder->graph.pins.size()));
}

/* Pins no longer come in order: from here on each is kept with its hyperedge. */
static void leave_order(Builder *builder)
{
    const Hypergraph &graph = builder->graph;
    builder->ordered = false;
    charge(builder->budget, graph.pins.capacity() * sizeof(int32_t));
    builder->net.reserve(graph.pins.capacity());
    for (size_t e = 0; e < graph.start.size(); e++) {
        const size_t end = e + 1 < graph.start.size() ? at(graph.start[e + 1]) : graph.pins.size();
        builder->net.resize(end, static_cast<int32_t>(e));
    }
}

void add_pin(Builder *builder, int32_t e, int32_t v)
{
    Hypergraph *const graph = &builder->graph;
    assert(e >= 0 && e < graph->nnets && v >= 0 && v < graph->nvertices);
    if (builder->ordered) {
        const int64_t open = static_cast<int64_t>(graph->start.size()) - 1;
        if (e > open) end_nets_before(builder, e);
        if (e < open) leave_order(builder);
    }
    if (graph->pins.size() >= INT_MAX)
        file_error(ZORPELX_BAD_INPUT, "%s: more than %d vertex entries, which 32 bits do not count",
                   builder->budget->name.c_str(), INT_MAX);
    push_charged(builder->budget, &graph->pins, v);
    if (!builder->ordered) push_charged(builder->budget, &builder->net, e);
    if (++builder->steps % CLOCK_STEPS == 0) check_time(*builder->budget);
}

static void set_weight(Builder *builder, std::vector<int64_t> *weights, int32_t i, int64_t weight)
{
    while (weights->size() <= at(i)) push_charged(builder->budget, weights, int64_t{1});
    (*weights)[at(i)] = weight;
}

void set_vertex_weight(Builder *builder, int32_t v, int64_t weight)
{
    assert(v >= 0 && v < builder->graph.nvertices);
    builder->graph.vertexweights = true;
    set_weight(builder, &builder->graph.vertexwgt, v, weight);
}

void set_net_weight(Builder *builder, int32_t e, int64_t weight)
{
    assert(e >= 0 && e < builder->graph.nnets);
    builder->graph.netweights = true;
    set_weight(builder, &builder->graph.netwgt, e, weight);
}

/* By counting: count, prefix sum, place. Pins of one hyperedge keep their order. */
static void sort_pins(Builder *builder)
{
    Hypergraph *const graph = &builder->graph;
    const size_t npins = graph->pins.size();
    charge(builder->budget, (at(graph->nnets) + 1) * sizeof(int64_t) + npins * sizeof(int32_t));
    std::vector<int64_t> start(at(graph->nnets) + 1, 0);
    for (const int32_t e : builder->net) start[at(e) + 1]++;
    for (size_t e = 1; e < start.size(); e++) start[e] += start[e - 1];
    std::vector<int32_t> pins(npins);
    for (size_t i = 0; i < npins; i++) pins[at(start[at(builder->net[i])]++)] = graph->pins[i];
    for (size_t e = start.size() - 1; e > 0; e--) start[e] = start[e - 1];
    start[0] = 0;
    check_time(*builder->budget);
    give_back(builder->budget, graph->start.capacity() * sizeof(int64_t) +
                                   graph->pins.capacity() * sizeof(int32_t) +
                                   builder->net.capacity() * sizeof(int32_t));
    graph->start = std::move(start);
    graph->pins = std::move(pins);
    builder->net = {};
}

/* Pins of few are compared with each other, which takes no memory of its own. Pins begin at `pins`,
 * are count in number, and are written to `kept`, which is no further. Returns how many stay. */
static size_t drop_among_few(const int32_t *pins, size_t count, int32_t *kept)
{
    size_t nkept = 0;
    for (size_t i = 0; i < count; i++) {
        const int32_t v = pins[i];
        bool again = false;
        for (size_t j = 0; j < nkept; j++) again = again || kept[j] == v;
        kept[nkept] = v;
        nkept += !again;
    }
    return nkept;
}

/* The same for any number. last[v] is the last hyperedge that v was met in. */
static size_t drop_among_many(const int32_t *pins, size_t count, int32_t *kept, int32_t e,
                              std::vector<int32_t> *last)
{
    size_t nkept = 0;
    for (size_t i = 0; i < count; i++) {
        const int32_t v = pins[i];
        const bool again = (*last)[at(v)] == e;
        (*last)[at(v)] = e;
        kept[nkept] = v;
        nkept += !again;
    }
    return nkept;
}

/* Leaves out every pin of a hyperedge that has it already; returns how many. */
static int64_t drop_repeated(Builder *builder)
{
    constexpr size_t FEW = 8;
    Hypergraph *const graph = &builder->graph;
    std::vector<int32_t> last; // made for the first hyperedge that needs it
    int32_t *const pins = graph->pins.data();
    size_t kept = 0;
    for (size_t e = 0; e + 1 < graph->start.size(); e++) {
        const size_t begin = at(graph->start[e]), count = at(graph->start[e + 1]) - begin;
        graph->start[e] = static_cast<int64_t>(kept);
        if (count > FEW && last.empty()) {
            charge(builder->budget, at(graph->nvertices) * sizeof(int32_t));
            last.assign(at(graph->nvertices), -1);
        }
        kept += count <= FEW ? drop_among_few(pins + begin, count, pins + kept)
                             : drop_among_many(pins + begin, count, pins + kept,
                                               static_cast<int32_t>(e), &last);
    }
    const int64_t dropped = static_cast<int64_t>(graph->pins.size() - kept);
    graph->start.back() = static_cast<int64_t>(kept);
    graph->pins.resize(kept);
    give_back(builder->budget, last.size() * sizeof(int32_t));
    return dropped;
}

static void fill_weights(Builder *builder, std::vector<int64_t> *weights, int64_t count)
{
    if (weights->capacity() < at(count)) {
        charge(builder->budget, at(count) * sizeof(int64_t));
        give_back(builder->budget, weights->capacity() * sizeof(int64_t));
        weights->reserve(at(count));
    }
    weights->resize(at(count), 1);
}

/* Not by addition, which could wrap. */
static void check_sum(Builder *builder, const std::vector<int64_t> &weights, const char *kind)
{
    int64_t left = MOST_WEIGHT;
    for (const int64_t weight : weights) {
        if (weight > left) {
            add_finding(
                builder->findings, RULE_SUM, {0, 0},
                text_of("the weights of the %s total more than %lld", kind, ll(MOST_WEIGHT)));
            return;
        }
        left -= std::max(weight, int64_t{0});
    }
}

static void check_built(Builder *builder)
{
    const Hypergraph &graph = builder->graph;
    if (graph.nvertices < 2)
        add_finding(builder->findings, RULE_COUNTS, {0, 0}, nets_and_vertices(graph));
    check_sum(builder, graph.netwgt, "hyperedges");
    check_sum(builder, graph.vertexwgt, "vertices");
    const bool weightless = std::all_of(graph.vertexwgt.begin(), graph.vertexwgt.end(),
                                        [](int64_t weight) { return weight == 0; });
    if (weightless && graph.nvertices > 0)
        add_finding(builder->findings, RULE_WEIGHTLESS, {0, 0}, "every vertex weighs 0");
}

Hypergraph finish_hypergraph(Builder *builder, int64_t *nrepeated)
{
    Hypergraph *const graph = &builder->graph;
    if (builder->ordered)
        end_nets_before(builder, graph->nnets);
    else
        sort_pins(builder);
    const int64_t dropped = drop_repeated(builder);
    if (nrepeated != nullptr) *nrepeated = dropped;
    fill_weights(builder, &graph->netwgt, graph->nnets);
    fill_weights(builder, &graph->vertexwgt, graph->nvertices);
    if (count_names(builder->vertices.names) > 0)
        graph->vertexnames = take_names(&builder->vertices, builder->budget);
    if (count_names(builder->nets.names) > 0)
        graph->netnames = take_names(&builder->nets, builder->budget);
    check_built(builder);
    return std::move(*graph);
}

void tell_note(Findings *findings, Place place, std::string text)
{
    add_finding(findings, RULE_TOLD, place, std::move(text));
}

void tell_warning(Findings *findings, Place place, std::string text)
{
    add_finding(findings, RULE_CONTRADICTS, place, std::move(text));
}

void bad_input(const Budget &budget, Place place, const char *format, ...)
{
    constexpr size_t LONGEST = 1024;
    char text[LONGEST];
    va_list arguments;
    va_start(arguments, format);
    vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    if (place.line == 0) file_error(ZORPELX_BAD_INPUT, "%s: %s", budget.name.c_str(), text);
    file_error(ZORPELX_BAD_INPUT, "%s:%lld:%lld: %s", budget.name.c_str(), ll(place.line),
               ll(place.column), text);
}
