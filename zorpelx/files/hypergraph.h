/* SPDX-License-Identifier: MIT */
/* zorpelx/files/hypergraph.h: a hypergraph as its file has it; what every reader makes and every
 * writer takes. */
#ifndef ZORPELX_FILES_HYPERGRAPH_H
#define ZORPELX_FILES_HYPERGRAPH_H

#include <cstdint>
#include <string>
#include <vector>

#include "names.h"

/* Where a hypergraph comes from, as far as writing parts back takes it. What there is to tell the
 * user about the file is a finding, not here. */
struct Provenance {
    std::string format = {};          // name in the table of formats; empty: made by a program
    std::string model = {};           // for formats that can be read in several ways
    std::string top = {};              // module of a netlist that was asked for, if one was
    int64_t nrows = 0, ncolumns = 0;  // of a matrix; variables and clauses of a formula
    std::vector<int32_t> row = {};    // [nvertices] fine-grain model: of each nonzero, from 0
    std::vector<int32_t> column = {}; // [nvertices]
};

/*   H1  hyperedge e joins the distinct vertices pins[start[e]] .. pins[start[e + 1] - 1], from 0
 *   H2  netwgt and vertexwgt are as long as their kind, all 1 if the file has none
 *   H3  vertexnames and netnames hold a name for each of their kind, or none at all
 *   H4  kind, fixed and group have an entry for each vertex, or are empty; an entry of kind is -1
 *       or the number of a kind's name, one of fixed -1 or a part, one of group -1 or a group */
struct Hypergraph {
    int64_t nvertices, nnets;
    bool netweights, vertexweights; // the file has them
    std::vector<int64_t> start;     // [nnets + 1]
    std::vector<int32_t> pins;
    std::vector<int64_t> netwgt;    // [nnets]
    std::vector<int64_t> vertexwgt; // [nvertices]
    Names vertexnames = {}, netnames = {};
    std::vector<int32_t> kind = {}; // [nvertices] type of a cell, for instance
    Names kindnames = {};
    std::vector<int32_t> fixed = {}; // [nvertices]
    std::vector<int32_t> group = {}; // [nvertices] vertices of equal numbers stay together
    Provenance provenance = {};
};

int64_t net_size(const Hypergraph &graph, int64_t e);
int64_t total_weight(const std::vector<int64_t> &weights);

/* How messages and lists call a vertex or a hyperedge: its name, or what the model makes of its
 * number, or its number, hyperedges from 1 and vertices from `first`. */
std::string vertex_label(const Hypergraph &graph, int64_t v, int64_t first);
std::string net_label(const Hypergraph &graph, int64_t e);

/* Whether they are called anything but their numbers. */
bool has_vertex_labels(const Hypergraph &graph);
bool has_net_labels(const Hypergraph &graph);

/* H1 to H4 hold, and no number is out of range. */
bool hypergraph_ok(const Hypergraph &graph);

#endif
