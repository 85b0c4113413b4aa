// SPDX-License-Identifier: MIT
/* zorpelx/cli/compare.cpp: the compare command: which of two partitions is better, and where.
 *
 * Better is what partition would deliver of the two: first the one that is nearer to its bounds,
 * then the one with the lesser objective, cut, sum of external degrees and heaviest part.
 */
#include <algorithm>
#include <array>
#include <cstdio>
#include <tuple>

#include "agreement.h"
#include "bounds.h"
#include "casts.h"
#include "commands.h"
#include "escaped.h"
#include "figures.h"
#include "input.h"
#include "json.h"
#include "output.h"
#include "sizes.h"
#include "solving.h"
#include "zorpelx.h"

/* One of the two. */
struct Contender {
    std::string file;
    std::vector<int64_t> part;
    Figures figures;
    int64_t objective;
    int64_t excess; // weight outside the bounds
};

/* A hyperedge that costs more in one than in the other. */
struct CheaperNet {
    int64_t net;
    int64_t gain; // what it costs less in the better one
};

struct Compared {
    Hypergraph graph;
    int64_t nparts;
    std::array<Contender, 2> sides;
    Agreement agreement;
    std::array<std::vector<CheaperNet>, 2>
        gains; // hyperedges that cost less in this one, most first
};

static const char SIDE[] = {'A', 'B'};

static int64_t excess_over(const PartBounds &bounds, const std::vector<int64_t> &weight)
{
    int64_t excess = 0;
    for (size_t p = 0; p < weight.size(); p++)
        excess += std::max<int64_t>(weight[p] - bounds.most[p], 0);
    return excess;
}

static Contender read_candidate(const Settings &settings, const std::string &file,
                                const Hypergraph &graph)
{
    Settings reading = settings;
    reading.partition = file;
    return {file, read_partition(reading, graph), {}, 0, 0};
}

/* What -k says, else the names of the files, else the largest number in them. */
static int64_t parts_of(const Settings &settings, const std::array<Contender, 2> &sides)
{
    int64_t nparts = settings.nparts, named = 0;
    if (nparts > 0) return nparts;
    for (const Contender &side : sides) {
        named = std::max(named, parts_in_name(side.file));
        for (const int64_t p : side.part) nparts = std::max(nparts, p + 1);
    }
    return std::max({nparts, named, int64_t{2}});
}

static void weigh(const Settings &settings, const Hypergraph &graph, int64_t nparts,
                  Contender *side)
{
    for (size_t v = 0; v < side->part.size(); v++)
        if (side->part[v] >= nparts)
            fail(STATUS_BAD_INPUT, "%s: vertex %zu is in part %lld, and there are %lld parts",
                 shown_name(side->file).c_str(), v + 1, ll(side->part[v]), ll(nparts));
    side->figures = figures_of(graph, side->part, nparts);
    side->objective = objective_of(settings, side->figures);
    const int64_t total = total_weight(side->figures.weight);
    side->excess =
        excess_over(search_bounds(nparts, settings.epsilon, -1, {}, total), side->figures.weight);
}

static int64_t cost_of_net(const Settings &settings, const Hypergraph &graph,
                           const std::vector<int64_t> &part, int64_t e)
{
    const int64_t touched = parts_of_net(graph, part, e);
    const int64_t weight = graph.netwgt[static_cast<size_t>(e)];
    if (touched < 2) return 0;
    if (settings.objective == ZORPELX_KM1) return weight * (touched - 1);
    return settings.objective == ZORPELX_SOED ? weight * touched : weight;
}

static void find_gains(const Settings &settings, Compared *compared)
{
    for (int64_t e = 0; e < compared->graph.nnets; e++) {
        const int64_t a = cost_of_net(settings, compared->graph, compared->sides[0].part, e);
        const int64_t b = cost_of_net(settings, compared->graph, compared->sides[1].part, e);
        if (a != b) compared->gains[a < b ? 0 : 1].push_back({e, std::abs(a - b)});
    }
    for (std::vector<CheaperNet> &list : compared->gains)
        std::stable_sort(list.begin(), list.end(),
                         [](const CheaperNet &x, const CheaperNet &y) { return x.gain > y.gain; });
}

static Compared compare_files(const Settings &settings)
{
    Compared compared;
    Findings findings;
    compared.graph = read_hypergraph(settings, reading_of(settings), &findings);
    tell_warnings(settings.hypergraph, findings);
    compared.sides = {read_candidate(settings, settings.partition, compared.graph),
                      read_candidate(settings, settings.other, compared.graph)};
    compared.nparts = parts_of(settings, compared.sides);
    for (Contender &side : compared.sides) weigh(settings, compared.graph, compared.nparts, &side);
    compared.agreement =
        agreement_of(compared.sides[0].part, compared.nparts, compared.sides[1].part,
                     compared.nparts, compared.graph.vertexwgt);
    find_gains(settings, &compared);
    return compared;
}

/* -1: A is better; 1: B is; 0: neither. */
static int better_side(const Compared &compared)
{
    const auto rank = [](const Contender &side) {
        const std::vector<int64_t> &weight = side.figures.weight;
        return std::tuple(side.excess, side.objective, side.figures.cut, side.figures.soed,
                          *std::max_element(weight.begin(), weight.end()));
    };
    const auto a = rank(compared.sides[0]), b = rank(compared.sides[1]);
    return a < b ? -1 : b < a ? 1 : 0;
}

/* "cut 172 instead of 176, 2.3 % less" */
static std::string lesser_text(const char *name, int64_t less, int64_t more)
{
    return text_of("%s %lld instead of %lld, %.1f %% less", name, ll(less), ll(more),
                   100.0 * static_cast<double>(more - less) / static_cast<double>(more));
}

static std::string reason(const Settings &settings, const Contender &good, const Contender &bad)
{
    const char *const name = settings.objective == ZORPELX_KM1    ? "connectivity minus one"
                             : settings.objective == ZORPELX_SOED ? "sum of external degrees"
                                                                  : "cut";
    if (good.excess != bad.excess)
        return text_of(good.excess == 0
                           ? "it is within --epsilon %g, the other has %lld of weight too much"
                           : "it is nearer to --epsilon %g, the other has %lld of weight too much",
                       settings.epsilon, ll(bad.excess));
    if (good.objective != bad.objective) return lesser_text(name, good.objective, bad.objective);
    if (good.figures.cut != bad.figures.cut)
        return text_of("equal %s, but ", name) +
               lesser_text("cut", good.figures.cut, bad.figures.cut);
    if (good.figures.soed != bad.figures.soed)
        return text_of("equal %s, but ", name) +
               lesser_text("sum of external degrees", good.figures.soed, bad.figures.soed);
    return text_of("equal %s, but its heaviest part is lighter", name);
}

static std::string verdict(const Settings &settings, const Compared &compared)
{
    const int side = better_side(compared);
    if (side < 0) return "A is better: " + reason(settings, compared.sides[0], compared.sides[1]);
    if (side > 0) return "B is better: " + reason(settings, compared.sides[1], compared.sides[0]);
    if (compared.agreement.moved_vertices == 0)
        return compared.sides[0].part == compared.sides[1].part
                   ? "They are the same partition"
                   : "They are the same partition with other numbers for the parts";
    return "Neither is better: all figures are equal";
}

static void print_row(const char *name, int64_t a, int64_t b)
{
    printf("  %-24s %12lld %12lld %+12lld\n", name, ll(a), ll(b), ll(b - a));
}

static void print_figures(const Settings &settings, const Compared &compared)
{
    const Figures &a = compared.sides[0].figures, &b = compared.sides[1].figures;
    const char *const names[] = {compared.sides[0].excess == 0 ? "yes" : "no",
                                 compared.sides[1].excess == 0 ? "yes" : "no"};
    printf("  %-24s %12s %12s %12s\n", "", "A", "B", "B - A");
    print_row("Hyperedge cut", a.cut, b.cut);
    print_row("Cut hyperedges", a.ncut, b.ncut);
    print_row("Connectivity minus one", a.km1, b.km1);
    print_row("Sum of external degrees", a.soed, b.soed);
    printf("  %-24s %10.3f %% %10.3f %% %+10.3f %%\n", "Heaviest part above", imbalance_percent(a),
           imbalance_percent(b), imbalance_percent(b) - imbalance_percent(a));
    printf("  %-24s %12s %12s\n\n", text_of("Within --epsilon %g", settings.epsilon).c_str(),
           names[0], names[1]);
}

static double share(int64_t part, int64_t whole)
{
    return whole == 0 ? 100 : 100.0 * static_cast<double>(part) / static_cast<double>(whole);
}

static void print_agreement(const Compared &compared)
{
    const Agreement &both = compared.agreement;
    const int64_t nvertices = compared.graph.nvertices;
    const int64_t total = total_weight(compared.graph.vertexwgt);
    printf(
        "  Agreement: %.1f %% of the weight, %.1f %% of the vertices; adjusted Rand index %.3f\n",
        share(both.weight, total), share(both.vertices, nvertices), both.adjusted_rand);
    printf("  Moved between A and B: %s %lld\n\n",
           counted(both.moved_vertices, "vertex that weighs", "vertices that weigh").c_str(),
           ll(both.moved_weight));
    constexpr size_t MOST = 64; // parts that a person looks at
    if (both.matched.size() > MOST) return;
    printf("  part of A  part of B     vertices       weight in both\n");
    for (const Overlap &pair : both.matched)
        printf("  %9lld %10lld %12lld %20lld\n", ll(pair.a), ll(pair.b), ll(pair.vertices),
               ll(pair.weight));
    puts("");
}

static int64_t sum_of(const std::vector<CheaperNet> &list)
{
    int64_t sum = 0;
    for (const CheaperNet &change : list) sum += change.gain;
    return sum;
}

static void print_gains(const Settings &settings, const Compared &compared, size_t side)
{
    const std::vector<CheaperNet> &list = compared.gains[side];
    printf("  Cheaper in %c: %s, by %lld in all\n", SIDE[side],
           counted(static_cast<int64_t>(list.size()), "hyperedge", "hyperedges").c_str(),
           ll(sum_of(list)));
    const size_t shown = std::min(list.size(), static_cast<size_t>(settings.top));
    if (shown > 0) printf("    %12s %12s  parts in A and B  hyperedge\n", "gain", "weight");
    for (size_t i = 0; i < shown; i++) {
        const int64_t e = list[i].net;
        printf("    %12lld %12lld %11lld %5lld  %s\n", ll(list[i].gain),
               ll(compared.graph.netwgt[static_cast<size_t>(e)]),
               ll(parts_of_net(compared.graph, compared.sides[0].part, e)),
               ll(parts_of_net(compared.graph, compared.sides[1].part, e)),
               escaped(net_label(compared.graph, e)).c_str());
    }
}

static void print_text(const Settings &settings, const Compared &compared)
{
    for (size_t side = 0; side < 2; side++)
        printf("%c: %s\n", SIDE[side], shown_name(compared.sides[side].file).c_str());
    printf("%s: %s; %s\n\n", shown_name(settings.hypergraph).c_str(),
           vertices_and_nets(compared.graph).c_str(),
           counted(compared.nparts, "part", "parts").c_str());
    print_figures(settings, compared);
    print_agreement(compared);
    for (size_t side = 0; side < 2; side++) print_gains(settings, compared, side);
    printf("\n%s.\n", verdict(settings, compared).c_str());
}

static Json side_json(const Contender &side)
{
    return {{"file", side.file},
            {"objective", side.objective},
            {"excess_weight", side.excess},
            {"cut", side.figures.cut},
            {"cut_hyperedges", side.figures.ncut},
            {"connectivity", side.figures.km1},
            {"soed", side.figures.soed},
            {"imbalance_percent", imbalance_percent(side.figures)}};
}

static Json agreement_json(const Agreement &agreement)
{
    Json matched = Json::array();
    for (const Overlap &pair : agreement.matched)
        matched.push_back(
            {{"a", pair.a}, {"b", pair.b}, {"vertices", pair.vertices}, {"weight", pair.weight}});
    return {{"vertices", agreement.vertices},
            {"weight", agreement.weight},
            {"moved_vertices", agreement.moved_vertices},
            {"moved_weight", agreement.moved_weight},
            {"adjusted_rand", agreement.adjusted_rand},
            {"matched", matched}};
}

static Json gains_json(const Settings &settings, const Compared &compared, size_t side)
{
    const std::vector<CheaperNet> &list = compared.gains[side];
    Json first = Json::array();
    for (size_t i = 0; i < std::min(list.size(), static_cast<size_t>(settings.top)); i++)
        first.push_back({{"hyperedge", list[i].net + 1},
                         {"name", net_label(compared.graph, list[i].net)},
                         {"gain", list[i].gain}});
    return {{"count", list.size()}, {"gain", sum_of(list)}, {"first", first}};
}

static Json compared_json(const Settings &settings, const Compared &compared)
{
    const int side = better_side(compared);
    Json json = answer_json(settings, COMPARE, STATUS_OK, "");
    json.update({{"nparts", compared.nparts},
                 {"objective", choice_name(&Settings::objective, settings.objective)},
                 {"epsilon", settings.epsilon},
                 {"a", side_json(compared.sides[0])},
                 {"b", side_json(compared.sides[1])},
                 {"better", side == 0 ? Json(nullptr) : Json(side < 0 ? "a" : "b")},
                 {"verdict", verdict(settings, compared)},
                 {"agreement", agreement_json(compared.agreement)},
                 {"cheaper_in_a", gains_json(settings, compared, 0)},
                 {"cheaper_in_b", gains_json(settings, compared, 1)}});
    return json;
}

Status run_compare(const Settings &settings)
{
    open_writer({}, {settings.hypergraph, settings.partition, settings.other});
    const Compared compared = compare_files(settings);
    if (settings.format == FORMAT_JSON)
        fputs(json_text(compared_json(settings, compared)).c_str(), stdout);
    else
        print_text(settings, compared);
    return STATUS_OK;
}
