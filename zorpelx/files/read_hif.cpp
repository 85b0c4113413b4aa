// SPDX-License-Identifier: MIT
/* zorpelx/files/read_hif.cpp: the Hypergraph Interchange Format.
 *
 *     {"network-type": "undirected" | "directed" | "asc", "metadata": {...},
 *      "nodes": [{"node": ID, "weight": W, "attrs": {...}}, ...],
 *      "edges": [{"edge": ID, "weight": W, "attrs": {...}}, ...],
 *      "incidences": [{"edge": ID, "node": ID, "weight": W, "direction": D, "attrs": {...}}, ...]}
 *
 * Only incidences must be there. A record that comes again adds to the one before. Sources:
 * Coll et al., HIF: the hypergraph interchange format for higher-order networks, Network Science,
 * 2025, and the JSON schema published with it.
 */
#include "read_hif.h"

#include <cmath>
#include <cstdlib>

#include "builder.h"
#include "fileerror.h"
#include "json_scan.h"
#include "told.h"
#include "whole_weights.h"

/* What is in a record of any of the three lists. */
struct HifRecord {
    std::string_view node, edge; // names; with has_* only
    bool has_node, has_edge, has_weight;
    double weight;
    const char *weight_at;
    int32_t kind, fixed, group;
};

/* What reading carries along. Weights are real until all are known. */
struct HifScan {
    JsonScan json;
    Builder builder;
    Interner kinds = {};
    std::vector<double> vertexwgt = {}, netwgt = {};
    std::vector<int32_t> kind = {}, fixed = {}, group = {};
    std::string scratch[2] = {};           // names that are not in the text as they are
    std::vector<int32_t> numbered[2] = {}; // by a node's or an edge's number: its own here, or -1
    std::string_view lastedge = "";
    int32_t lastnet = -1;
    int64_t nweights = 0, ndirections = 0, nattributes = 0; // that are not kept
    Budget *budget = nullptr;
};

bool looks_whole(std::string_view text)
{
    const std::string_view digits = text.substr(!text.empty() && text[0] == '-' ? 1 : 0);
    for (const char c : digits)
        if (c < '0' || c > '9') return false;
    return !digits.empty() && (digits[0] != '0' || text == "0");
}

std::string_view take_hif_id(JsonScan *json, std::string *scratch)
{
    const char *const begin = next_value(json);
    const JsonKind kind = json_kind(json);
    if (kind == JSON_STRING) {
        const std::string_view text = take_string(json);
        if (!looks_whole(text) && (text.empty() || text[0] != '"')) return text;
        return *scratch = json_quoted(text);
    }
    if (kind != JSON_NUMBER) json_error(*json, begin, "a name is a string or a whole number");
    const std::string_view number = take_number(json);
    if (looks_whole(number)) return number;
    int64_t value = 0;
    if (!is_whole(number, &value))
        json_error(*json, begin, "a name is a string or a whole number, not %.40s",
                   std::string(number).c_str());
    return *scratch = std::to_string(value);
}

static double take_weight(JsonScan *json)
{
    const char *const begin = next_value(json);
    if (json_kind(json) != JSON_NUMBER) json_error(*json, begin, "a weight is a number");
    const std::string number(take_number(json));
    const double weight = strtod(number.c_str(), nullptr);
    if (!std::isfinite(weight)) json_error(*json, begin, "a weight that no number can hold");
    return weight;
}

static void take_direction(HifScan *scan)
{
    JsonScan *const json = &scan->json;
    const char *const begin = next_value(json);
    const std::string_view word = json_kind(json) == JSON_STRING ? take_string(json) : "";
    if (word != "head" && word != "tail")
        json_error(*json, begin, "a direction is \"head\" or \"tail\"");
    scan->ndirections++;
}

static int32_t take_small(JsonScan *json)
{
    const char *const begin = next_value(json);
    int64_t value = 0;
    if (json_kind(json) != JSON_NUMBER || !is_whole(take_number(json), &value) || value < -1 ||
        value >= INT32_MAX)
        json_error(*json, begin, "there should be a whole number from -1 to 2147483646");
    return static_cast<int32_t>(value);
}

/* Attributes: those that the writer makes, and others. */
static void take_attributes(HifScan *scan, HifRecord *record)
{
    JsonScan *const json = &scan->json;
    std::string_view key;
    for (JsonList list = open_object(json); next_key(json, &list, &key);) {
        if (key == HIF_KIND && json_kind(json) == JSON_STRING)
            record->kind = intern(&scan->kinds, take_string(json), scan->budget);
        else if (key == HIF_FIXED)
            record->fixed = take_small(json);
        else if (key == HIF_GROUP)
            record->group = take_small(json);
        else {
            skip_value(json);
            scan->nattributes += key != HIF_PART;
        }
    }
}

enum HifFields : unsigned { FIELD_NODE = 1, FIELD_EDGE = 2, FIELD_DIRECTION = 4 };

/* A member of a record; false if records of this list have none of this name. */
static bool take_field(HifScan *scan, std::string_view key, unsigned fields, HifRecord *record)
{
    JsonScan *const json = &scan->json;
    if (key == "node" && (fields & FIELD_NODE) != 0) {
        record->node = take_hif_id(json, &scan->scratch[0]);
        return record->has_node = true;
    }
    if (key == "edge" && (fields & FIELD_EDGE) != 0) {
        record->edge = take_hif_id(json, &scan->scratch[1]);
        return record->has_edge = true;
    }
    if (key == "direction" && (fields & FIELD_DIRECTION) != 0) {
        take_direction(scan);
        return true;
    }
    if (key == "weight") {
        record->weight_at = next_value(json);
        record->weight = take_weight(json);
        return record->has_weight = true;
    }
    if (key != "attrs") return false;
    take_attributes(scan, record);
    return true;
}

static HifRecord take_record(HifScan *scan, unsigned fields, const char *what)
{
    JsonScan *const json = &scan->json;
    HifRecord record = {"", "", false, false, false, 0, nullptr, -1, -1, -1};
    const char *const begin = next_value(json);
    std::string_view key;
    for (JsonList list = open_object(json); next_key(json, &list, &key);) {
        const char *const at = next_value(json);
        if (!take_field(scan, key, fields, &record))
            json_error(*json, at, "%s has no member '%.40s'", what, std::string(key).c_str());
    }
    if ((fields & FIELD_EDGE) != 0 && !record.has_edge)
        json_error(*json, begin, "%s without an \"edge\"", what);
    if ((fields & FIELD_NODE) != 0 && !record.has_node)
        json_error(*json, begin, "%s without a \"node\"", what);
    return record;
}

/* The number that a name is; -1 for others, and for those too large for an array over them. */
static int64_t small_number(std::string_view name)
{
    if (name.size() > 1 && name[0] == '0') return -1; // "02" is another name than 2
    constexpr size_t MOST_DIGITS = 9;
    if (name.empty() || name.size() > MOST_DIGITS) return -1;
    int64_t value = 0;
    for (const char c : name) {
        if (c < '0' || c > '9') return -1;
        value = 10 * value + (c - '0');
    }
    return value;
}

/* Looks a name up. Most files count from 0 or 1: such names are found without their hash. */
template <class Named>
static int32_t find_or_add(HifScan *scan, std::vector<int32_t> *numbered, std::string_view name,
                           const Named &named)
{
    constexpr int64_t SPARSE = 4, FEW = 1000;
    const int64_t number = small_number(name);
    const int64_t known = static_cast<int64_t>(numbered->size());
    if (number >= 0 && number < known && (*numbered)[static_cast<size_t>(number)] >= 0)
        return (*numbered)[static_cast<size_t>(number)];
    const int32_t found = named(&scan->builder, name);
    if (number < 0 || number > SPARSE * found + FEW) return found;
    while (static_cast<int64_t>(numbered->size()) <= number)
        push_charged(scan->budget, numbered, -1);
    return (*numbered)[static_cast<size_t>(number)] = found;
}

static int32_t node_called(HifScan *scan, std::string_view name)
{
    return find_or_add(scan, &scan->numbered[0], name, named_vertex);
}

static int32_t edge_called(HifScan *scan, std::string_view name)
{
    return find_or_add(scan, &scan->numbered[1], name, named_net);
}

/* Makes an entry for i where there was none, and for all before. */
template <class T> static T *entry(HifScan *scan, std::vector<T> *list, int32_t i, T unset)
{
    while (list->size() <= static_cast<size_t>(i)) push_charged(scan->budget, list, unset);
    return &(*list)[static_cast<size_t>(i)];
}

static void set_weight(HifScan *scan, std::vector<double> *weights, int32_t i,
                       const HifRecord &record)
{
    if (!record.has_weight) return;
    if (record.weight < 0)
        json_error(scan->json, record.weight_at, "a weight below 0 cannot be partitioned");
    *entry(scan, weights, i, 1.0) = record.weight;
}

static void take_node(HifScan *scan)
{
    const HifRecord record = take_record(scan, FIELD_NODE, "a node");
    const int32_t v = node_called(scan, record.node);
    set_weight(scan, &scan->vertexwgt, v, record);
    if (record.kind >= 0) *entry(scan, &scan->kind, v, -1) = record.kind;
    if (record.fixed >= 0) *entry(scan, &scan->fixed, v, -1) = record.fixed;
    if (record.group >= 0) *entry(scan, &scan->group, v, -1) = record.group;
}

static void take_edge(HifScan *scan)
{
    const HifRecord record = take_record(scan, FIELD_EDGE, "an edge");
    set_weight(scan, &scan->netwgt, edge_called(scan, record.edge), record);
}

/* Files list incidences edge by edge mostly, so the edge is the one before. */
static int32_t net_of_incidence(HifScan *scan, std::string_view edge)
{
    if (scan->lastnet >= 0 && edge == scan->lastedge) return scan->lastnet;
    const int32_t e = edge_called(scan, edge);
    const bool lasting = edge.data() != scan->scratch[1].data();
    scan->lastnet = lasting ? e : -1;
    scan->lastedge = lasting ? edge : "";
    return e;
}

static void take_incidence(HifScan *scan)
{
    const unsigned fields = FIELD_NODE | FIELD_EDGE | FIELD_DIRECTION;
    const HifRecord record = take_record(scan, fields, "an incidence");
    const int32_t e = net_of_incidence(scan, record.edge);
    add_pin(&scan->builder, e, node_called(scan, record.node));
    scan->nweights += record.has_weight;
}

static void take_type(HifScan *scan)
{
    const char *const begin = next_value(&scan->json);
    const std::string_view type =
        json_kind(&scan->json) == JSON_STRING ? take_string(&scan->json) : "";
    if (type != "undirected" && type != "directed" && type != "asc")
        json_error(scan->json, begin, "a network-type is \"undirected\", \"directed\" or \"asc\"");
}

static void take_list(HifScan *scan, void (*take)(HifScan *))
{
    for (JsonList list = open_array(&scan->json); next_item(&scan->json, &list);) take(scan);
}

static void take_file(HifScan *scan)
{
    JsonScan *const json = &scan->json;
    const char *const begin = next_value(json);
    bool incidences = false;
    std::string_view key;
    for (JsonList list = open_object(json); next_key(json, &list, &key);) {
        const char *const at = next_value(json);
        if (key == "nodes") {
            take_list(scan, take_node);
        } else if (key == "edges") {
            take_list(scan, take_edge);
        } else if (key == "incidences") {
            take_list(scan, take_incidence);
            incidences = true;
        } else if (key == "network-type") {
            take_type(scan);
        } else if (key == "metadata") {
            if (json_kind(json) != JSON_OBJECT) json_error(*json, at, "metadata is an object");
            skip_value(json);
        } else {
            json_error(*json, at, "the format has no member '%.40s'", std::string(key).c_str());
        }
    }
    end_json(json);
    if (!incidences) json_error(*json, begin, "there are no \"incidences\"");
}

static void tell_not_kept(const HifScan &scan, int64_t nrepeated, Findings *findings)
{
    const auto tell = [findings](int64_t count, const char *one, const char *several) {
        if (count > 0) tell_note(findings, {0, 0}, counted(count, one, several));
    };
    tell(nrepeated, "incidence comes again and is left out",
         "incidences come again and are left out");
    tell(scan.nweights, "weight of an incidence is left out", "weights of incidences are left out");
    tell(scan.ndirections, "direction is left out", "directions are left out");
    tell(scan.nattributes, "attribute is left out", "attributes are left out");
}

/* Real weights as whole numbers, one for each of count. */
static void settle_weights(HifScan *scan, std::vector<double> *real, int64_t count,
                           const char *what, std::vector<int64_t> *whole, bool *weighted)
{
    if (real->empty()) return;
    entry(scan, real, static_cast<int32_t>(count) - 1, 1.0);
    charge(scan->budget, real->size() * sizeof(int64_t));
    *whole = whole_weights(*real, what, scan->builder.findings);
    *weighted = true;
    give_back(scan->budget, real->capacity() * sizeof(double));
    *real = {};
}

static void settle_entries(HifScan *scan, std::vector<int32_t> *entries)
{
    if (!entries->empty())
        entry(scan, entries, static_cast<int32_t>(scan->builder.graph.nvertices) - 1, -1);
}

Hypergraph read_hif(std::string_view bytes, const Reading &, Findings *findings, Budget *budget)
{
    HifScan scan = {json_over(bytes, budget), open_builder(findings, budget)};
    scan.budget = budget;
    take_file(&scan);
    Hypergraph *const graph = &scan.builder.graph;
    settle_weights(&scan, &scan.vertexwgt, graph->nvertices, "weights of nodes", &graph->vertexwgt,
                   &graph->vertexweights);
    settle_weights(&scan, &scan.netwgt, graph->nnets, "weights of edges", &graph->netwgt,
                   &graph->netweights);
    settle_entries(&scan, &scan.kind);
    settle_entries(&scan, &scan.fixed);
    settle_entries(&scan, &scan.group);
    graph->kind = std::move(scan.kind);
    graph->kindnames = take_names(&scan.kinds, budget);
    graph->fixed = std::move(scan.fixed);
    graph->group = std::move(scan.group);
    int64_t nrepeated = 0;
    Hypergraph whole = finish_hypergraph(&scan.builder, &nrepeated);
    tell_not_kept(scan, nrepeated, findings);
    return whole;
}

Recognised recognise_hif(std::string_view bytes)
{
    for (const std::string_view key : {"incidences", "network-type"})
        if (has_top_key(bytes, key)) return CERTAIN;
    for (const std::string_view key : {"nodes", "edges", "metadata"})
        if (has_top_key(bytes, key)) return LIKE;
    return UNLIKE;
}
