/* zorpelx/files/hypergraph.h: a hypergraph as its file has it; what every reader makes and every
 * writer takes. */
#ifndef ZORPELX_FILES_HYPERGRAPH_H
#define ZORPELX_FILES_HYPERGRAPH_H

#include <cstdint>
#include <vector>

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

int64_t net_size(const Hypergraph &graph, int64_t e);
int64_t total_weight(const std::vector<int64_t> &weights);

/* H1 and H2 hold, and no number is out of range. */
bool hypergraph_ok(const Hypergraph &graph);

#endif
