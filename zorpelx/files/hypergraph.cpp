// SPDX-License-Identifier: MIT
/* zorpelx/files/hypergraph.cpp: a hypergraph as its file has it. */
#include "hypergraph.h"

#include <algorithm>
#include <cstddef>
#include <numeric>

#include "fileerror.h"

int64_t net_size(const Hypergraph &graph, int64_t e)
{
    return graph.start[static_cast<size_t>(e) + 1] - graph.start[static_cast<size_t>(e)];
}

int64_t total_weight(const std::vector<int64_t> &weights)
{
    return std::accumulate(weights.begin(), weights.end(), int64_t{0});
}

/* Of a nonzero of a matrix "row,column"; of a literal its number with its sign. */
std::string vertex_label(const Hypergraph &graph, int64_t v, int64_t first)
{
    const Provenance &from = graph.provenance;
    const size_t i = static_cast<size_t>(v);
    if (i < from.row.size()) return text_of("%d,%d", from.row[i] + 1, from.column[i] + 1);
    if (from.model == "literal" && graph.vertexnames.start.empty())
        return text_of("%s%lld", v % 2 == 1 ? "-" : "", static_cast<long long>(v / 2 + 1));
    return name_or_number(graph.vertexnames, v, first);
}

std::string net_label(const Hypergraph &graph, int64_t e)
{
    const Provenance &from = graph.provenance;
    if (from.row.empty()) return name_or_number(graph.netnames, e, 1);
    const bool row = e < from.nrows;
    return text_of("%s %lld", row ? "row" : "column",
                   static_cast<long long>((row ? e : e - from.nrows) + 1));
}

bool has_vertex_labels(const Hypergraph &graph)
{
    const Provenance &from = graph.provenance;
    return count_names(graph.vertexnames) > 0 || !from.row.empty() || from.model == "literal";
}

bool has_net_labels(const Hypergraph &graph)
{
    return count_names(graph.netnames) > 0 || !graph.provenance.row.empty();
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

/* As many as there should be, or none. */
static bool some_names_ok(const Names &names, int64_t count)
{
    return names_ok(names) && (names.start.empty() || count_names(names) == count);
}

static bool some_entries_ok(const std::vector<int32_t> &entries, int64_t nvertices, int64_t most)
{
    if (entries.empty()) return true;
    if (entries.size() != static_cast<size_t>(nvertices)) return false;
    return std::all_of(entries.begin(), entries.end(),
                       [most](int32_t entry) { return entry >= -1 && entry < most; });
}

static bool extras_ok(const Hypergraph &graph)
{
    return some_names_ok(graph.vertexnames, graph.nvertices) &&
           some_names_ok(graph.netnames, graph.nnets) && names_ok(graph.kindnames) &&
           some_entries_ok(graph.kind, graph.nvertices, count_names(graph.kindnames)) &&
           some_entries_ok(graph.fixed, graph.nvertices, INT32_MAX) &&
           some_entries_ok(graph.group, graph.nvertices, INT32_MAX);
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
    return pins_ok(graph) && extras_ok(graph);
}
