/* zorpelx/cli/hypergraph.h: a hypergraph, a partition and fixed vertices, as their files have them.
 *
 * The reader follows the rules of zorpel's own but shares nothing with it: it counts in 64 bits,
 * goes on after an error to find the others, and knows the place of all it reads.
 */
#ifndef ZORPELX_CLI_HYPERGRAPH_H
#define ZORPELX_CLI_HYPERGRAPH_H

#include <cstdint>
#include <string>
#include <vector>

#include "scan.h"

/*   H1  hyperedge e joins the distinct vertices pins[start[e]] .. pins[start[e + 1] - 1], from 0
 *   H2  netwgt and vertexwgt are as long as their kind, all 1 if the file has none */
struct Hypergraph {
    int64_t nvertices, nnets;
    bool netweights, vertexweights; // the file has them
    std::vector<int64_t> start;     // [nnets + 1]
    std::vector<int32_t> pins;
    std::vector<int64_t> netwgt;    // [nnets]
    std::vector<int64_t> vertexwgt; // [nvertices]
};

struct Reading {
    LineMode lines;
    int64_t first; // number of the first vertex: 1, or 0 for files numbered from 0
};

int64_t net_size(const Hypergraph &graph, int64_t e);
int64_t total_weight(const std::vector<int64_t> &weights);

/* Reads as much as can be made sense of; what is wrong is added to findings. The record keeps H1
 * and H2 whatever the file holds: vertices and lines that cannot be are left out. */
Hypergraph scan_hypergraph(const std::string &bytes, Reading reading, Findings *findings);

/* One entry per vertex; -1 where the file supplies none. nparts of 0: not known. */
std::vector<int64_t> scan_fix(const std::string &bytes, int64_t nvertices, int64_t nparts,
                              Findings *findings);

/* Reads a hypergraph that is going to be used.
 * Errors  STATUS_BAD_INPUT with the first error found; strict: also with the first warning */
Hypergraph read_hypergraph(const std::string &name, Reading reading, bool strict,
                           Findings *findings);

/* Says on standard error that there were warnings, if there were. */
void tell_warnings(const std::string &name, const Findings &findings);

/* A fix file that is going to be used: one entry from -1 to nparts - 1 per vertex. */
std::vector<int64_t> read_fix(const std::string &name, int64_t nvertices, int64_t nparts);

/* A partition file: exactly one part number per vertex, each from 0 and below 2^31.
 * Errors  STATUS_BAD_INPUT with the place */
std::vector<int64_t> read_partition(const std::string &name, int64_t nvertices);

#endif
