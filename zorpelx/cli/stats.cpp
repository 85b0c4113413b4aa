// SPDX-License-Identifier: MIT
/* zorpelx/cli/stats.cpp: the stats command: what a hypergraph is like. */
#include <algorithm>
#include <cstdio>

#include "advice.h"
#include "casts.h"
#include "commands.h"
#include "escaped.h"
#include "hypergraph.h"
#include "input.h"
#include "json.h"
#include "measures.h"
#include "output.h"
#include "sizes.h"

constexpr int BAR = 40; // characters of the longest bar

struct Stats {
    Hypergraph graph;
    Measures measures;
    std::vector<int64_t> heavy;
};

static Stats collect(Hypergraph graph)
{
    Stats stats = {{}, measure(graph), heavy_vertices(graph.vertexwgt)};
    stats.graph = std::move(graph);
    return stats;
}

static void draw(const char *title, const Spread &spread)
{
    printf("\n  %s: %lld to %lld, %.2f on average\n", title, ll(spread.least), ll(spread.most),
           average(spread));
    int64_t longest = 1;
    for (const Bin &bin : spread.bins) longest = std::max(longest, bin.count);
    for (const Bin &bin : spread.bins) {
        if (bin.most == 0 && bin.count == 0) continue;
        const std::string range = bin.least == bin.most
                                      ? std::to_string(bin.least)
                                      : text_of("%lld-%lld", ll(bin.least), ll(bin.most));
        const int64_t length = (bin.count * BAR + longest - 1) / longest; // 1 for a count of 1
        printf("    %13s %9lld %s\n", range.c_str(), ll(bin.count),
               std::string(static_cast<size_t>(length), '#').c_str());
    }
}

static void print_heavy(const Stats &stats, int64_t first)
{
    const std::vector<int64_t> &weights = stats.graph.vertexwgt;
    const int64_t total = total_weight(weights);
    printf("\n  Heavy vertices (above %lld, a fiftieth of the weight): %zu\n", ll(2 * total / 100),
           stats.heavy.size());
    for (size_t i = 0; i < stats.heavy.size() && i < 10; i++) {
        const int64_t weight = weights[static_cast<size_t>(stats.heavy[i])];
        printf("    vertex %s weighs %lld, %.2f %% of all\n",
               escaped(vertex_label(stats.graph, stats.heavy[i], first)).c_str(), ll(weight),
               100 * static_cast<double>(weight) / static_cast<double>(total));
    }
    if (stats.heavy.size() > 10) puts("    ...");
}

static void print_text(const Settings &settings, const Stats &stats)
{
    const Hypergraph &graph = stats.graph;
    printf("%s: %s\n", shown_name(settings.hypergraph).c_str(), sizes_of(graph).c_str());
    printf("  Vertices weigh %lld%s, hyperedges %lld%s\n", ll(total_weight(graph.vertexwgt)),
           graph.vertexweights ? "" : " (1 each)", ll(total_weight(graph.netwgt)),
           graph.netweights ? "" : " (1 each)");
    printf("  Components: %lld, the largest of %s\n", ll(stats.measures.components.number),
           counted(stats.measures.components.largest, "vertex", "vertices").c_str());
    printf("  Vertices in no hyperedge: %lld; in none of 2 to %lld vertices: %lld\n",
           ll(stats.measures.islands), ll(PRUNED_SIZE), ll(stats.measures.parked));
    printf("  Hyperedges of more than %lld vertices, left out of coarsening: %lld\n",
           ll(PRUNED_SIZE), ll(stats.measures.large));
    printf("  Hyperedges of one vertex, never cut: %lld\n", ll(stats.measures.single));
    draw("Hyperedge sizes", stats.measures.sizes);
    draw("Vertex degrees", stats.measures.degrees);
    print_heavy(stats, first_vertex(settings));
    printf("\n  Memory of one start: about %.1f MiB\n",
           static_cast<double>(stats.measures.memory) / (1 << 20));
}

static Json spread_json(const Spread &spread)
{
    Json bins = Json::array();
    for (const Bin &bin : spread.bins)
        bins.push_back({{"least", bin.least}, {"most", bin.most}, {"count", bin.count}});
    return {{"least", spread.least},
            {"most", spread.most},
            {"average", average(spread)},
            {"bins", bins}};
}

static Json heavy_json(const Stats &stats, int64_t first)
{
    Json heavy = Json::array();
    for (const int64_t v : stats.heavy) {
        heavy.push_back(
            {{"vertex", v + first}, {"weight", stats.graph.vertexwgt[static_cast<size_t>(v)]}});
        if (has_vertex_labels(stats.graph))
            heavy.back()["name"] = vertex_label(stats.graph, v, first);
    }
    return heavy;
}

static Json stats_json(const Settings &settings, const Stats &stats)
{
    const Hypergraph &graph = stats.graph;
    Json json = answer_json(settings, STATS, STATUS_OK, "");
    json.update({{"vertices", graph.nvertices},
                 {"hyperedges", graph.nnets},
                 {"pins", graph.pins.size()},
                 {"vertex_weights", graph.vertexweights},
                 {"hyperedge_weights", graph.netweights},
                 {"total_vertex_weight", total_weight(graph.vertexwgt)},
                 {"total_hyperedge_weight", total_weight(graph.netwgt)},
                 {"components", stats.measures.components.number},
                 {"largest_component", stats.measures.components.largest},
                 {"islands", stats.measures.islands},
                 {"parked", stats.measures.parked},
                 {"large_hyperedges", stats.measures.large},
                 {"single_vertex_hyperedges", stats.measures.single},
                 {"sizes", spread_json(stats.measures.sizes)},
                 {"degrees", spread_json(stats.measures.degrees)},
                 {"heavy_vertices", heavy_json(stats, first_vertex(settings))},
                 {"memory_bytes", stats.measures.memory}});
    return json;
}

Status run_stats(const Settings &settings)
{
    open_writer({}, {settings.hypergraph});
    Findings findings;
    const Stats stats =
        collect(read_hypergraph(settings, reading_of_any_size(settings), &findings));
    tell_warnings(settings.hypergraph, findings);
    if (settings.format == FORMAT_JSON)
        fputs(json_text(stats_json(settings, stats)).c_str(), stdout);
    else
        print_text(settings, stats);
    return STATUS_OK;
}
