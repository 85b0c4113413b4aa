/* SPDX-License-Identifier: MIT */
/* zorpelx/files/write_drawing.h: small hypergraphs for programs that draw graphs.
 *
 * A hyperedge of two vertices is an edge, any other a small node of its own with an edge to each of
 * its vertices. The colours of parts are those that colour-blind people tell apart.
 */
#ifndef ZORPELX_FILES_WRITE_DRAWING_H
#define ZORPELX_FILES_WRITE_DRAWING_H

#include "formats.h"

constexpr int64_t MOST_DRAWN = 5000; // vertices, and hyperedges: beyond, nobody sees anything

/* Graphviz: each part a box of its own. Errors  FileError: more than MOST_DRAWN */
std::vector<WrittenFile> annotate_dot(const Hypergraph &graph, const Annotation &annotation,
                                      Budget *budget);

/* GraphML: a bipartite graph of vertices ("v0", ...) and hyperedges ("e0", ...) with names, parts,
 * weights, kinds and whether a hyperedge is cut as data. Errors  as above */
std::vector<WrittenFile> annotate_graphml(const Hypergraph &graph, const Annotation &annotation,
                                          Budget *budget);

#endif
