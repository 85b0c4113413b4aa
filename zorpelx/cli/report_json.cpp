// SPDX-License-Identifier: MIT
/* zorpelx/cli/report_json.cpp: a report as JSON. */
#include "report_json.h"

#include <algorithm>

static Json parts_json(const Account &account)
{
    const Figures &figures = account.figures[0];
    Json parts = Json::array();
    for (size_t p = 0; p < figures.weight.size(); p++) {
        const PartFacts &part = account.facts.parts[p];
        Json row = {{"part", p},
                    {"vertices", figures.vertices[p]},
                    {"weight", figures.weight[p]},
                    {"external_degree", figures.external[p]},
                    {"boundary_vertices", part.boundary},
                    {"cut_hyperedges", part.cutnets},
                    {"cut_pins", part.cutpins},
                    {"inner_hyperedges", part.inner},
                    {"inner_weight", part.innerwgt}};
        if (!account.allowed.most.empty()) {
            row["least"] = account.allowed.least[p];
            row["most"] = account.allowed.most[p];
        }
        parts.push_back(row);
    }
    return parts;
}

static Json pairs_json(const Facts &facts)
{
    Json pairs = Json::array();
    for (const PairFacts &pair : facts.pairs)
        pairs.push_back({{"parts", {pair.first, pair.second}},
                         {"hyperedges", pair.number},
                         {"weight", pair.weight}});
    return pairs;
}

static Json touched_json(const Facts &facts)
{
    Json touched = Json::array();
    for (const TouchedFacts &row : facts.touched)
        touched.push_back(
            {{"parts", row.parts}, {"hyperedges", row.number}, {"weight", row.weight}});
    return touched;
}

static void add_name(const Hypergraph &graph, int64_t e, Json *row)
{
    if (!graph.netnames.start.empty()) (*row)["name"] = net_label(graph, e);
}

static Json costly_json(const Account &account)
{
    Json list = Json::array();
    for (const CostlyNet &net : account.facts.costly) {
        Json shares = Json::array();
        for (const PartShare &share : net.shares)
            shares.push_back({{"part", share.part}, {"vertices", share.vertices}});
        Json row = {{"hyperedge", net.net + 1},
                    {"weight", net.weight},
                    {"vertices", net.size},
                    {"parts", net.shares.size()},
                    {"shares", shares}};
        add_name(*account.graph, net.net, &row);
        list.push_back(row);
    }
    return list;
}

static Json contents_json(const std::vector<PartContents> &contents)
{
    Json list = Json::array();
    for (size_t p = 0; p < contents.size(); p++) {
        Json groups = Json::array();
        for (const GroupFacts &group : contents[p].groups)
            groups.push_back(
                {{"name", group.name}, {"vertices", group.vertices}, {"weight", group.weight}});
        list.push_back({{"part", p},
                        {"groups", groups},
                        {"other_groups", contents[p].nothers},
                        {"other_vertices", contents[p].vertices}});
    }
    return list;
}

static Json partitions_json(const Account &account)
{
    Json list = Json::array();
    for (size_t i = 0; i < account.divisions.size(); i++) {
        const Figures &figures = account.figures[i];
        list.push_back({{"partition", account.divisions[i].name},
                        {"nparts", figures.nparts},
                        {"cut", figures.cut},
                        {"cut_hyperedges", figures.ncut},
                        {"soed", figures.soed},
                        {"connectivity", figures.km1},
                        {"imbalance_percent", imbalance_percent(figures)}});
    }
    return list;
}

static Json changes_json(const Hypergraph &graph, int64_t number, int64_t weight,
                         const std::vector<ChangedNet> &heaviest)
{
    Json list = Json::array();
    for (const ChangedNet &changed : heaviest) {
        Json row = {
            {"hyperedge", changed.net + 1}, {"weight", changed.weight}, {"parts", changed.parts}};
        add_name(graph, changed.net, &row);
        list.push_back(row);
    }
    return {{"hyperedges", number}, {"weight", weight}, {"heaviest", list}};
}

static Json twins_json(const Account &account, size_t i)
{
    const Likeness &likeness = account.agreements[i - 1];
    Json list = Json::array();
    for (size_t q = 0; q < likeness.parts.twin.size(); q++) {
        const int64_t p = likeness.parts.twin[q];
        list.push_back({{"part", q},
                        {"twin", p < 0 ? Json(nullptr) : Json(p)},
                        {"external_degree_first",
                         p < 0 ? 0 : account.figures[0].external[static_cast<size_t>(p)]},
                        {"external_degree", account.figures[i].external[q]}});
    }
    return list;
}

static Json comparison_json(const Account &account, size_t i)
{
    const Likeness &likeness = account.agreements[i - 1];
    const Hypergraph &graph = *account.graph;
    const int64_t all = graph.nvertices;
    const double same = all == 0 ? 100
                                 : 100 * static_cast<double>(all - likeness.parts.moved_vertices) /
                                       static_cast<double>(all);
    return {
        {"partition", account.divisions[i].name},
        {"agreement_percent", same},
        {"best_matching", likeness.parts.exact},
        {"adjusted_rand", likeness.parts.adjusted_rand},
        {"moved_vertices", likeness.parts.moved_vertices},
        {"moved_weight", likeness.parts.moved_weight},
        {"newly_cut", changes_json(graph, likeness.ncut, likeness.cutwgt, likeness.cut)},
        {"no_longer_cut", changes_json(graph, likeness.nmend, likeness.mendwgt, likeness.mended)},
        {"parts", twins_json(account, i)}};
}

static Json words_json(const Words &words)
{
    Json parts = Json::array();
    for (size_t p = 0; p < words.sent.size(); p++)
        parts.push_back({{"part", p}, {"sent", words.sent[p]}, {"received", words.received[p]}});
    return {{"total", words.total},
            {"most_sent", *std::max_element(words.sent.begin(), words.sent.end())},
            {"most_received", *std::max_element(words.received.begin(), words.received.end())},
            {"parts", parts}};
}

static Json transactions_json(const Account &account)
{
    const int64_t all = account.graph->nnets, single = all - account.figures[0].ncut;
    return {{"single_part", single},
            {"single_part_percent",
             all == 0 ? 100 : 100 * static_cast<double>(single) / static_cast<double>(all)}};
}

static Json history_json(const History &history)
{
    Json list = Json::array();
    for (const Improvement &step : history.improvements)
        list.push_back(
            {{"seconds", step.seconds}, {"objective", step.objective}, {"step", step.step}});
    return list;
}

/* What is there for some hypergraphs only. */
static void add_extras(const Account &account, Json *json)
{
    if (!account.kinds.empty()) (*json)["contents_by_kind"] = contents_json(account.kinds);
    if (!account.prefixes.empty()) (*json)["contents_by_name"] = contents_json(account.prefixes);
    if (account.origin == FROM_MATRIX) (*json)["words"] = words_json(account.words);
    if (account.origin == FROM_FORMULA)
        (*json)["shared_variables"] = {{"number", account.variables.number},
                                       {"parts", account.variables.shared}};
    if (account.origin == FROM_MEMBERSHIPS) (*json)["transactions"] = transactions_json(account);
    if (!account.history.improvements.empty()) (*json)["history"] = history_json(account.history);
}

void add_report(const Account &account, Json *json)
{
    const Figures &figures = account.figures[0];
    const Hypergraph &graph = *account.graph;
    Json comparisons = Json::array();
    for (size_t i = 1; i < account.divisions.size(); i++)
        comparisons.push_back(comparison_json(account, i));
    json->update({{"partition", account.divisions[0].name},
                  {"vertices", graph.nvertices},
                  {"hyperedges", graph.nnets},
                  {"pins", graph.pins.size()},
                  {"nparts", figures.nparts},
                  {"cut", figures.cut},
                  {"cut_hyperedges", figures.ncut},
                  {"soed", figures.soed},
                  {"connectivity", figures.km1},
                  {"imbalance_percent", imbalance_percent(figures)},
                  {"parts", parts_json(account)},
                  {"pairs", pairs_json(account.facts)},
                  {"unpaired_hyperedges", account.facts.unpaired},
                  {"touched", touched_json(account.facts)},
                  {"costly", costly_json(account)},
                  {"drawn",
                   {{"points", account.sketch.part.size()},
                    {"clusters", account.sketch.clustered},
                    {"hyperedges", account.sketch.netwgt.size()},
                    {"left_out", account.sketch.left_out}}},
                  {"partitions", partitions_json(account)},
                  {"comparisons", comparisons}});
    add_extras(account, json);
}
