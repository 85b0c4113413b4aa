/* SPDX-License-Identifier: MIT */
/* zorpelx/files/builder.h: how readers of formats other than hypergraph files make the record.
 *
 * A reader adds vertices and hyperedges, by number or by name, then pins in any order: a pin is one
 * vertex of one hyperedge. Where pins come hyperedge by hyperedge, in order, nothing is sorted and
 * nothing is held twice; a matrix read by rows for its columns, or a table in any order, is sorted
 * once, by counting.
 *
 *     Builder builder = open_builder(findings, budget);
 *     const int32_t e = named_net(&builder, "clk"), v = named_vertex(&builder, "u1");
 *     add_pin(&builder, e, v);
 *     builder.graph.fixed = ...                     // whatever else the format has
 *     return finish_hypergraph(&builder);
 *
 * Numbers and names are not mixed within one kind. A vertex in one hyperedge twice is kept once.
 */
#ifndef ZORPELX_FILES_BUILDER_H
#define ZORPELX_FILES_BUILDER_H

#include "hypergraph.h"
#include "interner.h"
#include "rules.h"

/*   P1  net and graph.pins are of one length: pin i is a vertex of hyperedge net[i]; net stays
 *       empty while the pins come hyperedge by hyperedge, and graph.start then tells
 *   P2  netwgt and vertexwgt of the graph are as long as weights were set, at most */
struct Builder {
    Hypergraph graph;
    Interner vertices, nets; // those that have names
    std::vector<int32_t> net;
    bool ordered; // pins have come hyperedge by hyperedge so far
    Findings *findings;
    Budget *budget;
    uint64_t steps; // pins, for looks at the clock
};

Builder open_builder(Findings *findings, Budget *budget);

/* A vertex or hyperedge by name, new or not. */
int32_t named_vertex(Builder *builder, std::string_view name);
int32_t named_net(Builder *builder, std::string_view name);

/* There are at least so many, numbered from 0; those by name count by themselves.
 * Errors  FileError: more than 2^31 - 2 */
void need_vertices(Builder *builder, int64_t count);
void need_nets(Builder *builder, int64_t count);

/* Vertex v is in hyperedge e; both are there.
 * Errors  FileError: more than 2^31 - 1 pins; past the budget */
void add_pin(Builder *builder, int32_t e, int32_t v);

/* Weights from 0 on; of those that are never set, 1. */
void set_vertex_weight(Builder *builder, int32_t v, int64_t weight);
void set_net_weight(Builder *builder, int32_t e, int64_t weight);

/* The record, whole: pins sorted by hyperedge, repeated ones left out, names taken over. What no
 * partitioner takes is a finding: fewer than 2 vertices, weights beyond 32 bits.
 *   nrepeated  out: pins left out; or null */
Hypergraph finish_hypergraph(Builder *builder, int64_t *nrepeated = nullptr);

/* Something to tell about a file: a note for what the user should know, such as "7 constants are
 * left out"; a warning where the file contradicts itself, such as a count that is off. Programs
 * print both unless they are to be quiet; a strict run refuses warnings. */
void tell_note(Findings *findings, Place place, std::string text);
void tell_warning(Findings *findings, Place place, std::string text);

/* Ends reading with "FILE:LINE:COLUMN: text". */
[[noreturn]] void bad_input(const Budget &budget, Place place, const char *format, ...)
    __attribute__((format(printf, 3, 4)));

#endif
