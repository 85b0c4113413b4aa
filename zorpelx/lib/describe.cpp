// SPDX-License-Identifier: MIT
/* zorpelx/lib/describe.cpp: what a hypergraph is like, for callers in C. */
#include <algorithm>
#include <cstddef>

#include "check.h"
#include "measures.h"
#include "records.h"

/* Sizes and degrees count to 2^31, so the bins that double are few. */
static_assert(ZORPELX_MOST_BINS >= 5 + 29);

static zorpelx_spread shown(const Spread &spread)
{
    zorpelx_spread show = {spread.least, spread.most, average(spread), 0, {}};
    for (const Bin &bin : spread.bins) show.bins[show.nbins++] = {bin.least, bin.most, bin.count};
    return show;
}

static Hypergraph lists_of(const zorpelx_hypergraph &h)
{
    Hypergraph graph = {};
    graph.nvertices = h.nvtxs;
    graph.nnets = h.nhedges;
    graph.start.assign(h.eptr, h.eptr + h.nhedges + 1);
    graph.pins.assign(h.eind, h.eind + h.eptr[h.nhedges]);
    return graph;
}

static int64_t total_of(const int *weights, int n)
{
    int64_t total = n;
    for (int i = 0; weights != nullptr && i < n; i++) total += weights[i] - 1;
    return total;
}

static zorpelx_stats stats_of(const zorpelx_hypergraph &h)
{
    const Measures measures = measure(lists_of(h));
    zorpelx_stats stats = {};
    stats.size = sizeof stats;
    stats.pins = h.eptr[h.nhedges];
    stats.vertex_weight = total_of(h.vwgts, h.nvtxs);
    stats.hyperedge_weight = total_of(h.hewgts, h.nhedges);
    stats.components = measures.components.number;
    stats.largest_component = measures.components.largest;
    stats.islands = measures.islands;
    stats.parked = measures.parked;
    stats.large_hyperedges = measures.large;
    stats.single_vertex_hyperedges = measures.single;
    stats.memory = measures.memory;
    stats.sizes = shown(measures.sizes);
    stats.degrees = shown(measures.degrees);
    return stats;
}

int zorpelx_describe(const zorpelx_hypergraph *hypergraph, zorpelx_stats *stats, char *message)
{
    return reporting_to(message, [&]() -> Fault {
        Watch watch;
        if (Fault found = check_hypergraph(hypergraph, Totals::Any, watch)) return found;
        if (stats == nullptr) return fault(ZORPELX_BAD_OPTION, "stats is null.");
        if (!size_is_known(*stats))
            return fault(ZORPELX_BAD_OPTION,
                         "The size of stats is %zu instead of %zu; set it by zorpelx_stats_init().",
                         stats->size, sizeof *stats);
        hand_back(stats_of(*hypergraph), stats);
        return {};
    });
}
