// SPDX-License-Identifier: MIT
/* zorpelx/files/checks.cpp: what shows once a hypergraph file is read to its end. */
#include <algorithm>
#include <cstdint>
#include <tuple>
#include <vector>

#include "casts.h"
#include "fileerror.h"
#include "reading.h"

/* Where the weight of something stands; the header's place if the file has none for it. */
static Place place_of_weight(const Scan &scan, const std::vector<Place> &places, size_t i)
{
    return i < places.size() ? places[i] : scan.header;
}

/* Not by addition: 2147483647 weights of 63 bits would wrap. */
static void check_sum(Scan *scan, const std::vector<int64_t> &weights, bool weighted,
                      const std::vector<Place> &places, const char *kind)
{
    int64_t left = MOST_TOTAL;
    for (size_t i = 0; i < weights.size(); i++) {
        if (weights[i] > left) {
            add_finding(scan->findings, RULE_SUM,
                        weighted ? place_of_weight(*scan, places, i) : scan->header,
                        text_of("the weights of the %s total more than %lld from here on", kind,
                                ll(MOST_TOTAL)));
            return;
        }
        left -= std::max(weights[i], int64_t{0});
    }
}

static void check_weightless(Scan *scan, const Hypergraph &graph)
{
    const bool weightless = std::all_of(graph.vertexwgt.begin(), graph.vertexwgt.end(),
                                        [](int64_t weight) { return weight == 0; });
    if (weightless)
        add_finding(scan->findings, RULE_WEIGHTLESS, place_of_weight(*scan, scan->wgtplace, 0),
                    "every vertex weighs 0");
}

static void check_isolated(Scan *scan)
{
    for (size_t v = 0; v < scan->last.size(); v++)
        if (scan->last[v] == -1)
            add_finding(scan->findings, RULE_ISLANDS, place_of_weight(*scan, scan->wgtplace, v),
                        text_of("vertex %lld is in no hyperedge",
                                ll(static_cast<int64_t>(v) + scan->reading.first)));
}

/* A number that depends on the vertices of hyperedge e, not on their order. */
static uint64_t mixed_pins(const Hypergraph &graph, int64_t e)
{
    uint64_t sum = 0;
    for (int64_t j = graph.start[static_cast<size_t>(e)];
         j < graph.start[static_cast<size_t>(e) + 1]; j++) {
        uint64_t x = static_cast<uint64_t>(graph.pins[static_cast<size_t>(j)]) + 1;
        x *= 0x9e3779b97f4a7c15; // scatters neighbouring numbers over all 64 bits
        x ^= x >> 29;
        x *= 0xbf58476d1ce4e5b9;
        sum += x ^ x >> 32;
    }
    return sum;
}

static std::vector<int32_t> sorted_pins(const Hypergraph &graph, int64_t e)
{
    const auto begin = graph.pins.begin() + graph.start[static_cast<size_t>(e)];
    std::vector<int32_t> pins(begin, begin + net_size(graph, e));
    std::sort(pins.begin(), pins.end());
    return pins;
}

struct MixedNet {
    uint64_t mix;
    int64_t size, e;
};

static bool mix_before(const MixedNet &a, const MixedNet &b)
{
    return std::tuple(a.mix, a.size, a.e) < std::tuple(b.mix, b.size, b.e);
}

/* Hyperedges in the order of a mix of their vertices, so that twins stand side by side; only
 * neighbours of the same mix are compared. O(pins + hyperedges x log hyperedges). */
static void check_twins(Scan *scan, const Hypergraph &graph)
{
    const size_t nnets = static_cast<size_t>(graph.nnets);
    charge(scan->budget, nnets * sizeof(MixedNet));
    std::vector<MixedNet> nets(nnets);
    for (size_t i = 0; i < nnets; i++) {
        const int64_t e = static_cast<int64_t>(i);
        nets[i] = {mixed_pins(graph, e), net_size(graph, e), e};
    }
    check_time(*scan->budget);
    std::sort(nets.begin(), nets.end(), mix_before);
    for (size_t i = 1; i < nnets; i++) {
        const MixedNet &a = nets[i - 1], &b = nets[i];
        if (b.size < 2 || a.mix != b.mix || a.size != b.size) continue;
        if (sorted_pins(graph, a.e) != sorted_pins(graph, b.e)) continue;
        add_finding(scan->findings, RULE_TWIN_NETS, scan->netplace[static_cast<size_t>(b.e)],
                    text_of("hyperedge %lld joins the same vertices as hyperedge %lld", ll(b.e + 1),
                            ll(a.e + 1)));
    }
    give_back(scan->budget, nnets * sizeof(MixedNet));
}

void check_whole(Scan *scan, const Hypergraph &graph)
{
    if (scan->reading.first == 1 && scan->zero.line > 0 && scan->largest < graph.nvertices)
        add_finding(scan->findings, RULE_ZERO_BASED, scan->zero,
                    text_of("the smallest vertex number is 0, the largest %lld of %lld (--from 0)",
                            ll(scan->largest), ll(graph.nvertices)));
    if (scan->crlf > 0) add_finding(scan->findings, RULE_LINE_ENDS, {scan->crlf, 1}, "CR LF");
    check_sum(scan, graph.netwgt, graph.netweights, scan->netplace, "hyperedges");
    check_sum(scan, graph.vertexwgt, graph.vertexweights, scan->wgtplace, "vertices");
    check_weightless(scan, graph);
    const int64_t used = static_cast<int64_t>(graph.pins.size());
    if (used > std::max(scan->room, int64_t{0}))
        add_finding(scan->findings, RULE_NO_ROOM, scan->tight,
                    text_of("zorpel makes room for %lld vertex entries, and there are %lld",
                            ll(std::max(scan->room, int64_t{0})), ll(used)));
    if (!scan->reading.notes) return;
    check_isolated(scan);
    check_twins(scan, graph);
}
