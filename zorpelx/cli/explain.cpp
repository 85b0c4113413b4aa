// SPDX-License-Identifier: MIT
/* zorpelx/cli/explain.cpp: the explain command: what bounds a partition, in words with figures. */
#include <algorithm>
#include <cmath>
#include <cstdio>

#include "bounds.h"
#include "byname.h"
#include "casts.h"
#include "commands.h"
#include "duration.h"
#include "escaped.h"
#include "input.h"
#include "json.h"
#include "outlook.h"
#include "output.h"
#include "sizes.h"

struct Explained {
    Hypergraph graph;
    std::vector<int64_t> fix;
    Outlook outlook;
    std::vector<std::string> balance, cut; // sentences
};

static double percent_above(int64_t weight, const Outlook &outlook)
{
    if (outlook.total == 0) return 0;
    const double average = static_cast<double>(outlook.total) / static_cast<double>(outlook.nparts);
    return 100 * (static_cast<double>(weight) / average - 1);
}

static void explain_heavy(const Settings &settings, Explained *explained)
{
    const Outlook &outlook = explained->outlook;
    if (outlook.heaviest < 0) return;
    const int64_t weight = explained->graph.vertexwgt[static_cast<size_t>(outlook.heaviest)];
    const std::string label =
        escaped(vertex_label(explained->graph, outlook.heaviest, first_vertex(settings)));
    if (outlook.too_heavy > 0)
        explained->balance.push_back(
            text_of("%s heavier than a part may be; the heaviest, %s, weighs %lld. At least "
                    "--epsilon %.0f would be needed.",
                    counted(outlook.too_heavy, "vertex is", "vertices are").c_str(), label.c_str(),
                    ll(weight), std::ceil(percent_above(outlook.least_heaviest, outlook))));
    else if (outlook.heavy > outlook.nparts)
        explained->balance.push_back(
            text_of("%lld vertices weigh more than half of what a part may: no two of them fit "
                    "into one part, and there are %lld parts.",
                    ll(outlook.heavy), ll(outlook.nparts)));
    else if (outlook.heavy > 0)
        explained->balance.push_back(
            text_of("%s more than half of what a part may (the heaviest, %s, %lld): each needs a "
                    "part to which only light ones are added.",
                    counted(outlook.heavy, "vertex weighs", "vertices weigh").c_str(),
                    label.c_str(), ll(weight)));
    else
        explained->balance.push_back(
            text_of("No vertex is in the way: the heaviest, %s, weighs %lld, %.2g %% of a part.",
                    label.c_str(), ll(weight),
                    outlook.most == 0
                        ? 0
                        : 100 * static_cast<double>(weight) / static_cast<double>(outlook.most)));
}

static void explain_fixed(Explained *explained)
{
    const Outlook &outlook = explained->outlook;
    const int64_t nfixed = std::count_if(explained->fix.begin(), explained->fix.end(),
                                         [](int64_t part) { return part >= 0; });
    if (nfixed == 0) return;
    const auto heaviest = std::max_element(outlook.fixed.begin(), outlook.fixed.end());
    explained->balance.push_back(text_of(
        "%s fixed; most of their weight is in part %lld, %lld of %lld that it may hold%s.",
        counted(nfixed, "vertex is", "vertices are").c_str(), ll(heaviest - outlook.fixed.begin()),
        ll(*heaviest), ll(outlook.most), outlook.overfull >= 0 ? ": too much" : ""));
}

static void explain_balance(const Settings &settings, Explained *explained)
{
    const Outlook &outlook = explained->outlook;
    explained->balance.push_back(text_of(
        "All vertices weigh %lld, a part %.1f on average; with --epsilon %g none may weigh "
        "more than %lld.",
        ll(outlook.total), static_cast<double>(outlook.total) / static_cast<double>(outlook.nparts),
        settings.epsilon, ll(outlook.most)));
    explain_heavy(settings, explained);
    explain_fixed(explained);
    if (outlook.infeasible)
        explained->balance.push_back("No partition is within these bounds.");
    else if (outlook.feasible)
        explained->balance.push_back(
            text_of("Hyperedges aside, the vertices can be divided so that the heaviest part is "
                    "%.2f %% above the average.",
                    percent_above(outlook.packed, outlook)));
    else
        explained->balance.push_back("Whether a partition is within these bounds is not known: "
                                     "putting the heaviest vertices first finds none.");
}

static void explain_components(Explained *explained)
{
    const Outlook &outlook = explained->outlook;
    const Pieces &pieces = outlook.pieces;
    const int64_t largest =
        pieces.weight.empty() ? 0 : *std::max_element(pieces.weight.begin(), pieces.weight.end());
    const std::string text =
        counted(static_cast<int64_t>(pieces.weight.size()), "component", "components") +
        text_of(", the heaviest with %.1f %% of the weight",
                outlook.total == 0
                    ? 0
                    : 100 * static_cast<double>(largest) / static_cast<double>(outlook.total)) +
        (pieces.islands == 0 ? ""
                             : text_of(", and %s in no hyperedge",
                                       counted(pieces.islands, "vertex", "vertices").c_str()));
    explained->cut.push_back("There " + std::string(pieces.weight.size() == 1 ? "is " : "are ") +
                             text + ".");
    if (outlook.can_be_uncut)
        explained->cut.push_back("Whole components fill the parts: a partition with cut 0 exists.");
    else if (outlook.split_pieces > 0)
        explained->cut.push_back(
            counted(outlook.split_pieces, "component outweighs", "components outweigh") +
            " a part and must be cut, at the lightest hyperedge at best.");
}

static std::string largest_forced(const Explained &explained)
{
    const auto most =
        std::max_element(explained.outlook.forced.begin(), explained.outlook.forced.end(),
                         [](const Forced &x, const Forced &y) { return x.parts < y.parts; });
    return text_of("%s touches at least %s", escaped(net_label(explained.graph, most->net)).c_str(),
                   counted(most->parts, "part", "parts").c_str());
}

static void explain_forced(Explained *explained)
{
    const Outlook &outlook = explained->outlook;
    const int64_t fixed = std::count_if(outlook.forced.begin(), outlook.forced.end(),
                                        [](const Forced &forced) { return forced.fixed; });
    const int64_t heavy = static_cast<int64_t>(outlook.forced.size()) - fixed;
    if (heavy > 0)
        explained->cut.push_back(counted(heavy, "hyperedge is", "hyperedges are") +
                                 " heavier than a part and cut in every partition.");
    if (fixed > 0)
        explained->cut.push_back(counted(fixed, "hyperedge has", "hyperedges have") +
                                 " vertices fixed in several parts and must be cut.");
    if (!outlook.forced.empty())
        explained->cut.push_back("Of these, hyperedge " + largest_forced(*explained) + ".");
}

static void explain_cut(Explained *explained)
{
    const Outlook &outlook = explained->outlook;
    explain_components(explained);
    explain_forced(explained);
    if (outlook.large > 0)
        explained->cut.push_back(
            counted(outlook.large, "hyperedge", "hyperedges") +
            text_of(" of more than %lld vertices (%.1f %% of the pins): too large to guide which "
                    "vertices belong together.",
                    ll(LARGE_SIZE),
                    100 * static_cast<double>(outlook.large_pins) /
                        static_cast<double>(explained->graph.pins.size())));
    explained->cut.push_back(
        text_of("So no partition within the bounds has a cut below %lld, connectivity minus one "
                "below %lld, a sum of external degrees below %lld.",
                ll(outlook.cut), ll(outlook.connectivity), ll(outlook.soed)));
}

static Explained explain_files(const Settings &settings)
{
    Explained explained;
    Findings findings;
    explained.graph = read_hypergraph(settings, reading_of(settings), &findings);
    tell_warnings(settings.hypergraph, findings);
    explained.fix = fixed_vertices(settings, explained.graph, settings.nparts);
    const int64_t total = total_weight(explained.graph.vertexwgt);
    const PartBounds bounds = search_bounds(settings.nparts, settings.epsilon, -1, {}, total);
    explained.outlook = outlook_of(explained.graph, settings.nparts, bounds.most[0], explained.fix);
    explain_balance(settings, &explained);
    explain_cut(&explained);
    return explained;
}

static double seconds_of(int preset, const Settings &settings, const Explained &explained)
{
    return expected_seconds(static_cast<PresetNumber>(preset),
                            static_cast<int64_t>(explained.graph.pins.size()), settings.nparts);
}

/* "0.3 s", "5 s", "2 min", "3 h": no more digits than are known. */
static std::string duration_text(double seconds)
{
    constexpr double MINUTE = 60, HOUR = 3600;
    if (seconds < 1) return text_of("%.1g s", std::max(seconds, 0.01));
    if (seconds < 2 * MINUTE) return text_of("%.0f s", seconds);
    if (seconds < 2 * HOUR) return text_of("%.0f min", seconds / MINUTE);
    return text_of("%.0f h", seconds / HOUR);
}

static PresetNumber preset_for(const Settings &settings, const Explained &explained)
{
    return advised_preset(static_cast<int64_t>(explained.graph.pins.size()), settings.nparts);
}

static void print_presets(const Settings &settings, const Explained &explained)
{
    printf("\nPreset\n  --preset %s. Expected on one processor, within a factor of about three:\n ",
           PRESET_ROWS[preset_for(settings, explained)].name);
    for (int preset = 0; preset < NPRESETS; preset++)
        printf(" %s %s%s", PRESET_ROWS[preset].name,
               duration_text(seconds_of(preset, settings, explained)).c_str(),
               preset + 1 < NPRESETS ? "," : ".\n");
}

static void print_sentences(const char *title, const std::vector<std::string> &sentences)
{
    printf("\n%s\n", title);
    for (const std::string &sentence : sentences) printf("  %s\n", sentence.c_str());
}

static void print_text(const Settings &settings, const Explained &explained)
{
    printf("%s: %s; %s\n", shown_name(settings.hypergraph).c_str(),
           sizes_of(explained.graph).c_str(), counted(settings.nparts, "part", "parts").c_str());
    print_sentences("Balance", explained.balance);
    print_sentences("Cut", explained.cut);
    print_presets(settings, explained);
}

static Json balance_json(const Explained &explained)
{
    const Outlook &outlook = explained.outlook;
    return {{"total_weight", outlook.total},
            {"most", outlook.most},
            {"least_heaviest", outlook.least_heaviest},
            {"packed_heaviest", outlook.packed},
            {"too_heavy_vertices", outlook.too_heavy},
            {"heavy_vertices", outlook.heavy},
            {"fixed_weights", outlook.fixed},
            {"verdict", outlook.infeasible ? "infeasible"
                        : outlook.feasible ? "feasible"
                                           : "undecided"},
            {"sentences", explained.balance}};
}

static Json cut_json(const Settings &settings, const Explained &explained)
{
    const Outlook &outlook = explained.outlook;
    Json forced = Json::array();
    for (size_t i = 0; i < std::min(outlook.forced.size(), static_cast<size_t>(settings.top)); i++)
        forced.push_back({{"hyperedge", outlook.forced[i].net + 1},
                          {"name", net_label(explained.graph, outlook.forced[i].net)},
                          {"parts", outlook.forced[i].parts},
                          {"fixed", outlook.forced[i].fixed}});
    return {{"components", outlook.pieces.weight.size()},
            {"islands", outlook.pieces.islands},
            {"can_be_uncut", outlook.can_be_uncut},
            {"split_components", outlook.split_pieces},
            {"forced_hyperedges", outlook.forced.size()},
            {"forced", forced},
            {"large_hyperedges", outlook.large},
            {"least_cut", outlook.cut},
            {"least_connectivity", outlook.connectivity},
            {"least_soed", outlook.soed},
            {"sentences", explained.cut}};
}

static Json explained_json(const Settings &settings, const Explained &explained, Status status)
{
    Json seconds;
    for (int preset = 0; preset < NPRESETS; preset++)
        seconds[PRESET_ROWS[preset].name] = seconds_of(preset, settings, explained);
    Json json = answer_json(settings, EXPLAIN, status, "");
    json.update({{"vertices", explained.graph.nvertices},
                 {"hyperedges", explained.graph.nnets},
                 {"pins", explained.graph.pins.size()},
                 {"nparts", settings.nparts},
                 {"epsilon", settings.epsilon},
                 {"balance", balance_json(explained)},
                 {"cut", cut_json(settings, explained)},
                 {"preset", PRESET_ROWS[preset_for(settings, explained)].name},
                 {"expected_seconds", seconds}});
    return json;
}

Status run_explain(const Settings &settings)
{
    open_writer({}, {settings.hypergraph, settings.fix});
    const Explained explained = explain_files(settings);
    const Status status = explained.outlook.infeasible ? STATUS_INFEASIBLE : STATUS_OK;
    if (settings.format == FORMAT_JSON)
        fputs(json_text(explained_json(settings, explained, status)).c_str(), stdout);
    else
        print_text(settings, explained);
    return status;
}
