/* zorpelx/cli/checks.cpp: what shows once a hypergraph file is read to its end. */
#include <algorithm>
#include <numeric>

#include "failure.h"
#include "reading.h"

constexpr int64_t MOST_WEIGHT = 2147483646; // total of one kind of weights

static long long ll(int64_t number)
{
    return number;
}

/* Where the weight of something stands; the header's place if the file has none for it. */
static Place place_of_weight(const Scan &scan, const std::vector<Place> &places, size_t i)
{
    return i < places.size() ? places[i] : scan.header;
}

/* Not by addition: 2147483647 weights of 63 bits would wrap. */
static void check_sum(Scan *scan, const std::vector<int64_t> &weights, bool weighted,
                      const std::vector<Place> &places, const char *kind)
{
    int64_t left = MOST_WEIGHT;
    for (size_t i = 0; i < weights.size(); i++) {
        if (weights[i] > left) {
            add_finding(scan->findings, RULE_SUM,
                        weighted ? place_of_weight(*scan, places, i) : scan->header,
                        text_of("the weights of the %s total more than %lld from here on", kind,
                                ll(MOST_WEIGHT)));
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

/* Hyperedges ordered by their vertices, so that twins stand together. */
static void check_twins(Scan *scan, const Hypergraph &graph)
{
    std::vector<int32_t> pins = graph.pins;
    std::vector<int64_t> order(static_cast<size_t>(graph.nnets));
    std::iota(order.begin(), order.end(), 0);
    const auto at = [&](int64_t e) { return pins.begin() + graph.start[static_cast<size_t>(e)]; };
    for (const int64_t e : order) std::sort(at(e), at(e + 1));
    const auto before = [&](int64_t a, int64_t b) {
        return std::lexicographical_compare(at(a), at(a + 1), at(b), at(b + 1));
    };
    std::stable_sort(order.begin(), order.end(), before);
    for (size_t i = 1; i < order.size(); i++) {
        const int64_t a = order[i - 1], b = order[i];
        if (net_size(graph, b) > 1 && !before(a, b))
            add_finding(scan->findings, RULE_TWIN_NETS, scan->netplace[static_cast<size_t>(b)],
                        text_of("hyperedge %lld joins the same vertices as hyperedge %lld",
                                ll(b + 1), ll(a + 1)));
    }
}

void check_whole(Scan *scan, const Hypergraph &graph)
{
    if (scan->reading.first == 1 && scan->zero.line > 0 && scan->largest < graph.nvertices)
        add_finding(scan->findings, RULE_ZERO_BASED, scan->zero,
                    text_of("the smallest vertex number is 0, the largest %lld of %lld",
                            ll(scan->largest), ll(graph.nvertices)));
    if (scan->crlf > 0) add_finding(scan->findings, RULE_LINE_ENDS, {scan->crlf, 1}, "CR LF");
    check_sum(scan, graph.netwgt, graph.netweights, scan->netplace, "hyperedges");
    check_sum(scan, graph.vertexwgt, graph.vertexweights, scan->wgtplace, "vertices");
    check_weightless(scan, graph);
    const int64_t used = static_cast<int64_t>(graph.pins.size());
    if (used > scan->room)
        add_finding(scan->findings, RULE_NO_ROOM, scan->tight,
                    text_of("zorpel makes room for %lld vertex entries, and there are %lld",
                            ll(std::max(scan->room, int64_t{0})), ll(used)));
    check_isolated(scan);
    check_twins(scan, graph);
}
