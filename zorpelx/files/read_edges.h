/* SPDX-License-Identifier: MIT */
/* zorpelx/files/read_edges.h: the reader of edge lists: a graph, two vertices a line. */
#ifndef ZORPELX_FILES_READ_EDGES_H
#define ZORPELX_FILES_READ_EDGES_H

#include "formats.h"

Recognised recognise_edges(std::string_view bytes);

/* Each line names two vertices and may give a weight; blanks, a comma or a semicolon stand between
 * them. Lines that begin with # or % are comments. Each edge becomes a hyperedge of two vertices,
 * in the order of the lines; an edge from a vertex to itself is left out and told. */
Hypergraph read_edges(std::string_view bytes, const Reading &reading, Findings *findings,
                      Budget *budget);

#endif
