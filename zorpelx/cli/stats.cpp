/* zorpelx/cli/stats.cpp: the stats command: what a hypergraph is like. */
#include <algorithm>
#include <cstdio>
#include <numeric>

#include "advice.h"
#include "commands.h"
#include "hypergraph.h"
#include "input.h"
#include "json.h"
#include "output.h"

constexpr int64_t PRUNED_SIZE = 50; // hyperedges of more vertices are left out of coarsening
constexpr int BAR = 40;             // characters of the longest bar

static long long ll(int64_t number)
{
    return number;
}

/* How many numbers are in least .. most. */
struct Bin {
    int64_t least, most, count;
};

struct Spread {
    int64_t least, most, sum, count;
    std::vector<Bin> bins; // up to the last that is not empty
};

struct Components {
    int64_t number;  // islands included
    int64_t largest; // vertices of the largest
};

struct Stats {
    Hypergraph graph;
    Spread sizes, degrees;
    Components components;
    int64_t islands; // vertices in no hyperedge
    int64_t parked;  // vertices in no hyperedge of 2 to 50 vertices
    int64_t large;   // hyperedges of more
    int64_t single;  // hyperedges of one vertex
    std::vector<int64_t> heavy;
    int64_t memory; // bytes of one start, estimated
};

/* 0, 1, 2, 3, 4, 5-8, 9-16, and so on, doubling. */
static std::vector<Bin> empty_bins(int64_t largest)
{
    std::vector<Bin> bins;
    for (int64_t n = 0; n <= 4 && n <= largest; n++) bins.push_back({n, n, 0});
    for (int64_t most = 8; most / 2 < largest; most *= 2) bins.push_back({most / 2 + 1, most, 0});
    return bins;
}

static Spread spread_of(const std::vector<int64_t> &numbers)
{
    Spread spread = {0, 0, 0, static_cast<int64_t>(numbers.size()), {}};
    if (numbers.empty()) return spread;
    spread.least = *std::min_element(numbers.begin(), numbers.end());
    spread.most = *std::max_element(numbers.begin(), numbers.end());
    spread.sum = total_weight(numbers);
    spread.bins = empty_bins(spread.most);
    for (const int64_t number : numbers)
        std::find_if(spread.bins.begin(), spread.bins.end(), [&](const Bin &bin) {
            return number <= bin.most;
        })->count++;
    return spread;
}

static double average(const Spread &spread)
{
    return spread.count == 0 ? 0
                             : static_cast<double>(spread.sum) / static_cast<double>(spread.count);
}

/* The root of v's tree; trees are halved on the way. */
static int32_t find_root(std::vector<int32_t> *parent, int32_t v)
{
    const auto up = [&](int32_t u) -> int32_t & { return (*parent)[static_cast<size_t>(u)]; };
    while (up(v) != v) v = up(v) = up(up(v));
    return v;
}

static Components components_of(const Hypergraph &graph)
{
    std::vector<int32_t> parent(static_cast<size_t>(graph.nvertices));
    std::iota(parent.begin(), parent.end(), 0);
    for (size_t e = 0; e + 1 < graph.start.size(); e++)
        for (int64_t j = graph.start[e] + 1; j < graph.start[e + 1]; j++) {
            const int32_t u = find_root(&parent, graph.pins[static_cast<size_t>(j)]);
            const int32_t v = find_root(&parent, graph.pins[static_cast<size_t>(j) - 1]);
            parent[static_cast<size_t>(u)] = v;
        }
    std::vector<int64_t> size(parent.size(), 0);
    for (int32_t v = 0; v < graph.nvertices; v++)
        size[static_cast<size_t>(find_root(&parent, v))]++;
    const auto used = [](int64_t n) { return n > 0; };
    return {std::count_if(size.begin(), size.end(), used),
            *std::max_element(size.begin(), size.end())};
}

/* Hyperedges of least .. most vertices that each vertex is in. */
static std::vector<int64_t> degrees_of(const Hypergraph &graph, int64_t least, int64_t most)
{
    std::vector<int64_t> degree(static_cast<size_t>(graph.nvertices), 0);
    for (int64_t e = 0; e < graph.nnets; e++) {
        if (net_size(graph, e) < least || net_size(graph, e) > most) continue;
        for (int64_t j = graph.start[static_cast<size_t>(e)];
             j < graph.start[static_cast<size_t>(e) + 1]; j++)
            degree[static_cast<size_t>(graph.pins[static_cast<size_t>(j)])]++;
    }
    return degree;
}

static std::vector<int64_t> sizes_of(const Hypergraph &graph)
{
    std::vector<int64_t> sizes;
    for (int64_t e = 0; e < graph.nnets; e++) sizes.push_back(net_size(graph, e));
    return sizes;
}

/* Bytes that one start takes at its peak. Fitted to runs on twelve hypergraphs of 4 to 100 thousand
 * vertices and 15 to 400 thousand pins, circuits, matrices, meshes and a formula, in 2 and 8 parts:
 * they took 0.6 to 0.95 of it. Large hyperedges are kept once, the others on every level. */
static int64_t memory_estimate(const Hypergraph &graph, int64_t large_pins)
{
    constexpr int64_t FIXED = 7000000;
    const int64_t pins = static_cast<int64_t>(graph.pins.size());
    return FIXED + 24 * pins + 95 * (pins - large_pins) + 160 * graph.nvertices + 120 * graph.nnets;
}

static Stats collect(Hypergraph graph)
{
    Stats stats = {};
    const std::vector<int64_t> sizes = sizes_of(graph), degrees = degrees_of(graph, 1, INT64_MAX);
    const std::vector<int64_t> kept = degrees_of(graph, 2, PRUNED_SIZE);
    stats.sizes = spread_of(sizes);
    stats.degrees = spread_of(degrees);
    stats.components = components_of(graph);
    stats.islands = std::count(degrees.begin(), degrees.end(), 0);
    stats.parked = std::count(kept.begin(), kept.end(), 0);
    stats.large =
        std::count_if(sizes.begin(), sizes.end(), [](int64_t size) { return size > PRUNED_SIZE; });
    stats.single = std::count(sizes.begin(), sizes.end(), 1);
    stats.heavy = heavy_vertices(graph.vertexwgt);
    int64_t large_pins = 0;
    for (const int64_t size : sizes) large_pins += size > PRUNED_SIZE ? size : 0;
    stats.memory = memory_estimate(graph, large_pins);
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
        printf("    vertex %lld weighs %lld, %.2f %% of all\n", ll(stats.heavy[i] + first),
               ll(weight), 100 * static_cast<double>(weight) / static_cast<double>(total));
    }
    if (stats.heavy.size() > 10) puts("    ...");
}

static void print_text(const Settings &settings, const Stats &stats)
{
    const Hypergraph &graph = stats.graph;
    printf("%s: %lld vertices, %lld hyperedges, %zu pins\n",
           shown_name(settings.hypergraph).c_str(), ll(graph.nvertices), ll(graph.nnets),
           graph.pins.size());
    printf("  Vertices weigh %lld%s, hyperedges %lld%s\n", ll(total_weight(graph.vertexwgt)),
           graph.vertexweights ? "" : " (1 each)", ll(total_weight(graph.netwgt)),
           graph.netweights ? "" : " (1 each)");
    printf("  Components: %lld, the largest of %lld vertices\n", ll(stats.components.number),
           ll(stats.components.largest));
    printf("  Vertices in no hyperedge: %lld; in none of 2 to %lld vertices: %lld\n",
           ll(stats.islands), ll(PRUNED_SIZE), ll(stats.parked));
    printf("  Hyperedges of more than %lld vertices, left out of coarsening: %lld\n",
           ll(PRUNED_SIZE), ll(stats.large));
    printf("  Hyperedges of one vertex, never cut: %lld\n", ll(stats.single));
    draw("Hyperedge sizes", stats.sizes);
    draw("Vertex degrees", stats.degrees);
    print_heavy(stats, settings.from);
    printf("\n  Memory of one start: about %.1f MiB\n",
           static_cast<double>(stats.memory) / (1 << 20));
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
    for (const int64_t v : stats.heavy)
        heavy.push_back(
            {{"vertex", v + first}, {"weight", stats.graph.vertexwgt[static_cast<size_t>(v)]}});
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
                 {"components", stats.components.number},
                 {"largest_component", stats.components.largest},
                 {"islands", stats.islands},
                 {"parked", stats.parked},
                 {"large_hyperedges", stats.large},
                 {"single_vertex_hyperedges", stats.single},
                 {"sizes", spread_json(stats.sizes)},
                 {"degrees", spread_json(stats.degrees)},
                 {"heavy_vertices", heavy_json(stats, settings.from)},
                 {"memory_bytes", stats.memory}});
    return json;
}

Status run_stats(const Settings &settings)
{
    open_writer({}, {settings.hypergraph});
    Findings findings;
    const Stats stats = collect(read_hypergraph(settings, reading_of(settings), &findings));
    tell_warnings(settings.hypergraph, findings);
    if (settings.format == FORMAT_JSON)
        fputs(json_text(stats_json(settings, stats)).c_str(), stdout);
    else
        print_text(settings, stats);
    return STATUS_OK;
}
