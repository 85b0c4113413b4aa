// SPDX-License-Identifier: MIT
/* zorpelx/cli/verify.cpp: the verify command: every figure of a partition, and what was claimed. */
#include <algorithm>
#include <cmath>
#include <cstdio>

#include "bounds.h"
#include "casts.h"
#include "claims.h"
#include "byname.h"
#include "commands.h"
#include "escaped.h"
#include "figures.h"
#include "hypergraph.h"
#include "input.h"
#include "json.h"
#include "output.h"
#include "recorded_options.h"
#include "report.h"
#include "sizes.h"

constexpr int64_t MOST_PARTS = 1000000; // as -k takes
constexpr size_t MOST_LISTED = 20;      // empty parts named in a text

struct Verified {
    Hypergraph graph;
    std::vector<int64_t> part;
    Figures figures;
    std::vector<Claim> claims;
};

static Claim check_report(const Settings &settings, const std::string &report,
                          const Verified &verified)
{
    const int ubfactor =
        was_given(settings, &Settings::ubfactor) ? static_cast<int>(settings.ubfactor) : 0;
    const std::string fault =
        fault_of_report(report, {verified.graph, verified.part, verified.figures.nparts,
                                 !settings.fix.empty(), ubfactor});
    if (!fault.empty()) return {"report", false, fault};
    return {"report", true, text_of("%zu bytes are what zorpel prints", report.size())};
}

static Claim check_fix(const Settings &settings, const Verified &verified,
                       const std::vector<int64_t> &fix)
{
    const std::vector<int64_t> &part = verified.part;
    int64_t nfixed = 0, nwrong = 0, first = 0;
    for (size_t v = 0; v < fix.size(); v++) {
        if (fix[v] < 0) continue;
        nfixed++;
        if (fix[v] == part[v]) continue;
        if (nwrong++ == 0) first = static_cast<int64_t>(v);
    }
    if (nwrong == 0)
        return {
            "fixed", true,
            counted(nfixed, "vertex is where it is fixed", "vertices are where they are fixed")};
    return {"fixed", false,
            text_of("%lld of %lld fixed vertices are elsewhere; the first is vertex %s, in part "
                    "%lld instead of %lld",
                    ll(nwrong), ll(nfixed),
                    vertex_label(verified.graph, first, first_vertex(settings)).c_str(),
                    ll(part[static_cast<size_t>(first)]), ll(fix[static_cast<size_t>(first)]))};
}

static Claim check_balance(const Settings &settings, const Verified &verified)
{
    const std::vector<int64_t> &weight = verified.figures.weight;
    const PartBounds bounds =
        engine_bounds(verified.figures.nparts, static_cast<int>(settings.ubfactor),
                      total_weight(weight), !settings.fix.empty());
    const int64_t bad = part_outside(bounds, weight);
    if (bad < 0)
        return {"balance", true,
                text_of("every part is within --ubfactor %lld, between %lld and %lld",
                        ll(settings.ubfactor),
                        ll(*std::min_element(bounds.least.begin(), bounds.least.end())),
                        ll(*std::max_element(bounds.most.begin(), bounds.most.end())))};
    const size_t p = static_cast<size_t>(bad);
    return {"balance", false,
            text_of("part %zu weighs %lld, not between %lld and %lld", p, ll(weight[p]),
                    ll(bounds.least[p]), ll(bounds.most[p]))};
}

/* Counted by itself: what the search promises is at most (1 + epsilon / 100) times the average
 * rounded up, in whole units of weight. */
static Claim check_epsilon(double percent, const Figures &figures)
{
    const int64_t heaviest = *std::max_element(figures.weight.begin(), figures.weight.end());
    const int64_t total = total_weight(figures.weight), n = figures.nparts;
    const long double average = static_cast<long double>(total / n + (total % n != 0));
    const bool within = static_cast<long double>(heaviest) <=
                        average * (1 + static_cast<long double>(percent) / 100) * (1 + 1e-12L);
    return {"epsilon", within,
            text_of("the heaviest part is %.3f %% above the average%s", imbalance_percent(figures),
                    text_of(within ? ", within --epsilon %g" : ", not within --epsilon %g", percent)
                        .c_str())};
}

static Claim check_cut(int64_t expected, int64_t cut)
{
    if (cut == expected) return {"cut", true, text_of("it is %lld", ll(cut))};
    return {"cut", false, text_of("it is %lld, not %lld", ll(cut), ll(expected))};
}

/* As many parts as asked for, or as the report says, or as the name of the partition file says.
 * The numbers in the file do not: parts without a vertex have none there. */
static int64_t count_parts(const Settings &settings, const std::string &report)
{
    if (settings.nparts > 0) return settings.nparts;
    if (!settings.report.empty()) {
        const int64_t told = parts_in_report(report);
        if (told > MOST_PARTS)
            fail(STATUS_BAD_INPUT, "%s: it names more than %lld parts",
                 shown_name(settings.report).c_str(), ll(MOST_PARTS));
        if (told > 0) return told;
    }
    const int64_t nparts = parts_in_name(settings.partition);
    if (nparts >= 2 && nparts <= MOST_PARTS) return nparts;
    fail(STATUS_USAGE, "%s: its name does not end with .part.K for 2 parts or more: -k is needed",
         shown_name(settings.partition).c_str());
}

static void check_parts(const Settings &settings, const std::vector<int64_t> &part, int64_t nparts)
{
    const auto largest = std::max_element(part.begin(), part.end());
    if (*largest >= nparts)
        fail(STATUS_BAD_INPUT, "%s: vertex %lld is in part %lld, and there are %lld parts",
             shown_name(settings.partition).c_str(), ll(largest - part.begin() + 1), ll(*largest),
             ll(nparts));
}

static std::string read_report(const Settings &settings)
{
    if (settings.report.empty()) return "";
    Budget budget = budget_for(settings, settings.report);
    return or_fail([&] { return std::string(view_of(read_bytes(settings.report, &budget))); });
}

static Verified verify_files(const Settings &settings)
{
    const bool reported = !settings.report.empty();
    Reading reading = reading_of(settings);
    if (reported) reading.lines = LINES_PIECES;
    Findings findings;
    Verified verified;
    verified.graph = read_hypergraph(settings, reading, &findings);
    if (!settings.quiet) tell_warnings(settings.hypergraph, findings);
    verified.part = read_partition(settings, verified.graph);
    const std::string report = read_report(settings);
    const int64_t nparts = count_parts(settings, report);
    check_parts(settings, verified.part, nparts);
    verified.figures = figures_of(verified.graph, verified.part, nparts);
    const std::vector<int64_t> fix = fixed_vertices(settings, verified.graph, nparts);
    if (!fix.empty()) verified.claims.push_back(check_fix(settings, verified, fix));
    if (was_given(settings, &Settings::expect))
        verified.claims.push_back(check_cut(settings.expect, verified.figures.cut));
    if (was_given(settings, &Settings::ubfactor))
        verified.claims.push_back(check_balance(settings, verified));
    if (was_given(settings, &Settings::epsilon))
        verified.claims.push_back(check_epsilon(settings.epsilon, verified.figures));
    if (reported) verified.claims.push_back(check_report(settings, report, verified));
    return verified;
}

static std::vector<size_t> empty_parts(const Figures &figures)
{
    std::vector<size_t> empty;
    for (size_t p = 0; p < figures.vertices.size(); p++)
        if (figures.vertices[p] == 0) empty.push_back(p);
    return empty;
}

/* "3 of 8 parts are empty: 5, 6, 7"; nothing if none is. */
static std::string empty_parts_text(const Figures &figures)
{
    const std::vector<size_t> empty = empty_parts(figures);
    if (empty.empty()) return "";
    std::string text = text_of("%zu of %lld parts %s empty: ", empty.size(), ll(figures.nparts),
                               empty.size() == 1 ? "is" : "are");
    for (size_t i = 0; i < empty.size() && i < MOST_LISTED; i++)
        text += (i > 0 ? ", " : "") + std::to_string(empty[i]);
    return text + (empty.size() > MOST_LISTED ? ", ..." : "");
}

/* Absorption with six decimals; the whole part may have more digits than a double. */
static std::string absorption_text(const Figures &figures)
{
    constexpr long double MILLION = 1000000;
    const int64_t millionths = static_cast<int64_t>(std::roundl(figures.fraction * MILLION));
    return text_of("%lld.%06lld", ll(figures.whole + millionths / 1000000),
                   ll(millionths % 1000000));
}

static double absorption_number(const Figures &figures)
{
    return static_cast<double>(static_cast<long double>(figures.whole) + figures.fraction);
}

static void print_figures(const Verified &verified)
{
    const Figures &figures = verified.figures;
    printf("  Hyperedge cut            %12lld   (%lld of %s)\n", ll(figures.cut), ll(figures.ncut),
           counted(verified.graph.nnets, "hyperedge", "hyperedges").c_str());
    printf("  Sum of external degrees  %12lld\n", ll(figures.soed));
    printf("  Connectivity minus one   %12lld\n", ll(figures.km1));
    printf("  Scaled cost              %12.6Le\n", figures.scaled_cost);
    printf("  Absorption               %12s\n", absorption_text(figures).c_str());
    printf("  Heaviest part            %10.3f %%   above the average\n\n",
           imbalance_percent(figures));
    const std::string empty = empty_parts_text(figures);
    if (!empty.empty()) printf("  %s\n\n", empty.c_str());
    printf("  part   vertices     weight  external degree\n");
    for (size_t p = 0; p < figures.weight.size(); p++)
        printf("  %4zu %10lld %10lld %16lld\n", p, ll(figures.vertices[p]), ll(figures.weight[p]),
               ll(figures.external[p]));
}

static void print_cut(const Verified &verified)
{
    const bool named = has_net_labels(verified.graph);
    printf("\n  cut hyperedge     weight   vertices  parts%s\n", named ? "  name" : "");
    for (const int64_t e : cut_hyperedges(verified.graph, verified.part))
        printf("  %13lld %10lld %10lld %6lld%s%s\n", ll(e + 1),
               ll(verified.graph.netwgt[static_cast<size_t>(e)]), ll(net_size(verified.graph, e)),
               ll(parts_of_net(verified.graph, verified.part, e)), named ? "  " : "",
               named ? escaped(net_label(verified.graph, e)).c_str() : "");
}

static void print_text(const Settings &settings, const Verified &verified)
{
    const Hypergraph &graph = verified.graph;
    if (!settings.quiet) {
        printf("%s: %s\n%s: %s\n\n", shown_name(settings.hypergraph).c_str(),
               sizes_of(graph).c_str(), shown_name(settings.partition).c_str(),
               counted(verified.figures.nparts, "part", "parts").c_str());
        print_figures(verified);
    }
    if (settings.list_cut) print_cut(verified);
    if (!settings.quiet && !verified.claims.empty()) puts("");
    for (const Claim &claim : verified.claims)
        if (!settings.quiet || !claim.holds)
            printf("  %s: %s: %s\n", claim.holds ? "true" : "FALSE", claim.name.c_str(),
                   claim.text.c_str());
}

static Json parts_json(const Figures &figures)
{
    Json parts = Json::array();
    for (size_t p = 0; p < figures.weight.size(); p++)
        parts.push_back({{"part", p},
                         {"vertices", figures.vertices[p]},
                         {"weight", figures.weight[p]},
                         {"external_degree", figures.external[p]}});
    return parts;
}

static Json cut_json(const Verified &verified)
{
    Json list = Json::array();
    for (const int64_t e : cut_hyperedges(verified.graph, verified.part)) {
        list.push_back({{"hyperedge", e + 1},
                        {"weight", verified.graph.netwgt[static_cast<size_t>(e)]},
                        {"vertices", net_size(verified.graph, e)},
                        {"parts", parts_of_net(verified.graph, verified.part, e)}});
        if (has_net_labels(verified.graph)) list.back()["name"] = net_label(verified.graph, e);
    }
    return list;
}

/* A scaled cost that is not finite becomes null: JSON has no infinity. */
static Json figures_json(const Settings &settings, const Verified &verified, Status status)
{
    const Figures &figures = verified.figures;
    Json json = answer_json(settings, VERIFY, status, "");
    json.update({{"partition", settings.partition},
                 {"vertices", verified.graph.nvertices},
                 {"hyperedges", verified.graph.nnets},
                 {"pins", verified.graph.pins.size()},
                 {"nparts", figures.nparts},
                 {"cut", figures.cut},
                 {"cut_hyperedges", figures.ncut},
                 {"soed", figures.soed},
                 {"connectivity", figures.km1},
                 {"scaled_cost", static_cast<double>(figures.scaled_cost)},
                 {"absorption", absorption_number(figures)},
                 {"imbalance_percent", imbalance_percent(figures)},
                 {"empty_parts", empty_parts(figures)},
                 {"parts", parts_json(figures)}});
    if (settings.list_cut) json["cut_list"] = cut_json(verified);
    Json claims = Json::array();
    for (const Claim &claim : verified.claims)
        claims.push_back({{"claim", claim.name}, {"holds", claim.holds}, {"text", claim.text}});
    json["claims"] = claims;
    return json;
}

/* A row for each figure: no column is ever left empty. */
static void print_csv(const Settings &settings, const Verified &verified)
{
    const Figures &figures = verified.figures;
    printf("figure,value\nvertices,%lld\nhyperedges,%lld\npins,%zu\nnparts,%lld\n",
           ll(verified.graph.nvertices), ll(verified.graph.nnets), verified.graph.pins.size(),
           ll(figures.nparts));
    printf("cut,%lld\ncut_hyperedges,%lld\nsoed,%lld\nconnectivity,%lld\n", ll(figures.cut),
           ll(figures.ncut), ll(figures.soed), ll(figures.km1));
    printf("scaled_cost,%.17Lg\nabsorption,%s\nimbalance_percent,%.17g\n", figures.scaled_cost,
           absorption_text(figures).c_str(), imbalance_percent(figures));
    printf("empty_parts,%zu\n", empty_parts(figures).size());
    for (size_t p = 0; p < figures.weight.size(); p++)
        printf("part_%zu_vertices,%lld\npart_%zu_weight,%lld\npart_%zu_external_degree,%lld\n", p,
               ll(figures.vertices[p]), p, ll(figures.weight[p]), p, ll(figures.external[p]));
    if (settings.list_cut)
        for (const int64_t e : cut_hyperedges(verified.graph, verified.part))
            printf("cut_hyperedge,%lld\n", ll(e + 1));
    for (const Claim &claim : verified.claims)
        printf("claim_%s,%s\n", claim.name.c_str(), claim.holds ? "true" : "false");
}

/* Reads the hypergraph as the recorded run did, and looks for the files of the record. */
static Settings settings_with(const Record &record, const Settings &given)
{
    Settings settings = given;
    set_reading(record.json["options"], shown_name(record.name), &settings);
    if (settings.nparts == 0) settings.nparts = settings_of(record, given).nparts;
    settings.partition = file_of(record, record.json["partition"], given.partition);
    settings.fix = file_of(record, record.json["inputs"]["fix"], given.fix);
    if (settings.partition == "-")
        fail(STATUS_USAGE, "%s: its partition went to standard output: name the file",
             shown_name(record.name).c_str());
    return settings;
}

static Status end_of_verify(const Settings &settings, const Verified &verified)
{
    const std::string empty = empty_parts_text(verified.figures);
    if (!empty.empty() && !settings.quiet) tell(empty);
    const auto holds = [](const Claim &claim) { return claim.holds; };
    const Status status = std::all_of(verified.claims.begin(), verified.claims.end(), holds)
                              ? STATUS_OK
                              : STATUS_FAILED;
    if (settings.format == FORMAT_JSON)
        fputs(json_text(figures_json(settings, verified, status)).c_str(), stdout);
    else if (settings.format == FORMAT_CSV)
        print_csv(settings, verified);
    else
        print_text(settings, verified);
    return status;
}

static Status verify_record(const Settings &given)
{
    const Record record = read_record(given);
    const Settings settings = settings_with(record, given);
    Verified verified = verify_files(settings);
    const std::vector<Claim> claims =
        claims_of_record(settings, record, verified.graph, verified.part, verified.figures);
    verified.claims.insert(verified.claims.end(), claims.begin(), claims.end());
    return end_of_verify(settings, verified);
}

Status run_verify(const Settings &settings)
{
    open_writer({}, {settings.hypergraph, settings.partition, settings.fix, settings.report,
                     settings.record});
    if (!settings.record.empty()) return verify_record(settings);
    if (settings.partition.empty())
        fail(STATUS_USAGE, "a partition file is needed, or --record, which names one");
    return end_of_verify(settings, verify_files(settings));
}
