/* zorpelx/files/hypergraph.cpp: a hypergraph as its file has it. */
#include "hypergraph.h"

#include <cstddef>
#include <numeric>

int64_t net_size(const Hypergraph &graph, int64_t e)
{
    return graph.start[static_cast<size_t>(e) + 1] - graph.start[static_cast<size_t>(e)];
}

int64_t total_weight(const std::vector<int64_t> &weights)
{
    return std::accumulate(weights.begin(), weights.end(), int64_t{0});
}

static bool pins_ok(const Hypergraph &graph)
{
    std::vector<int64_t> last(static_cast<size_t>(graph.nvertices), -1);
    for (size_t e = 0; e + 1 < graph.start.size(); e++)
        for (int64_t j = graph.start[e]; j < graph.start[e + 1]; j++) {
            const int64_t v = graph.pins[static_cast<size_t>(j)];
            if (v < 0 || v >= graph.nvertices) return false;
            if (last[static_cast<size_t>(v)] == static_cast<int64_t>(e)) return false;
            last[static_cast<size_t>(v)] = static_cast<int64_t>(e);
        }
    return true;
}

bool hypergraph_ok(const Hypergraph &graph)
{
    if (graph.nvertices < 0 || graph.nnets < 0) return false;
    if (graph.start.size() != static_cast<size_t>(graph.nnets) + 1) return false;
    if (graph.netwgt.size() != static_cast<size_t>(graph.nnets)) return false;
    if (graph.vertexwgt.size() != static_cast<size_t>(graph.nvertices)) return false;
    if (graph.start.front() != 0) return false;
    if (graph.start.back() != static_cast<int64_t>(graph.pins.size())) return false;
    for (size_t e = 1; e < graph.start.size(); e++)
        if (graph.start[e] < graph.start[e - 1]) return false;
    return pins_ok(graph);
}
