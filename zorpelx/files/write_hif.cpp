// SPDX-License-Identifier: MIT
/* zorpelx/files/write_hif.cpp: the writer of the Hypergraph Interchange Format. */
#include "write_hif.h"

#include "casts.h"
#include "json_scan.h"
#include "read_hif.h"

/* Whether a name is the JSON text of a string, as the reader calls some. */
static bool is_json_string(const std::string &name, Budget *budget)
{
    if (name.size() < 2 || name[0] != '"' || name.back() != '"') return false;
    Budget own = *budget;
    JsonScan scan = json_over(name, &own);
    for (size_t i = 1; i + 1 < name.size(); i++) {
        const bool plain = static_cast<unsigned char>(name[i]) >= ' ' && name[i] != '"';
        if (!plain) return false;
        if (name[i] != '\\') continue;
        if (i + 2 >= name.size() || (name[i + 1] != '"' && name[i + 1] != '\\')) return false;
        i++;
    }
    return json_quoted(take_string(&scan)) == name;
}

void add_hif_id(std::string *text, const std::string &name, Budget *budget)
{
    if (looks_whole(name) || is_json_string(name, budget))
        *text += name;
    else
        *text += json_quoted(name);
}

static void add_attribute(std::string *attributes, std::string_view key, const std::string &value)
{
    *attributes += attributes->empty() ? "\"" : ", \"";
    *attributes += key;
    *attributes += "\": " + value;
}

static void add_entry(std::string *attributes, std::string_view key,
                      const std::vector<int32_t> &entries, int64_t v)
{
    if (!entries.empty() && entries[at(v)] >= 0)
        add_attribute(attributes, key, std::to_string(entries[at(v)]));
}

static std::string attributes_of(const Hypergraph &graph, const std::vector<int64_t> *part,
                                 int64_t v)
{
    std::string attributes;
    if (part != nullptr) add_attribute(&attributes, HIF_PART, std::to_string((*part)[at(v)]));
    if (!graph.kind.empty() && graph.kind[at(v)] >= 0)
        add_attribute(&attributes, HIF_KIND,
                      json_quoted(name_of(graph.kindnames, graph.kind[at(v)])));
    add_entry(&attributes, HIF_FIXED, graph.fixed, v);
    add_entry(&attributes, HIF_GROUP, graph.group, v);
    return attributes;
}

static void add_node(std::string *text, const Hypergraph &graph, const std::vector<int64_t> *part,
                     int64_t v, Budget *budget)
{
    *text += "    {\"node\": ";
    add_hif_id(text, vertex_label(graph, v, 1), budget);
    if (graph.vertexweights) *text += ", \"weight\": " + std::to_string(graph.vertexwgt[at(v)]);
    const std::string attributes = attributes_of(graph, part, v);
    if (!attributes.empty()) *text += ", \"attrs\": {" + attributes + "}";
    *text += v + 1 < graph.nvertices ? "},\n" : "}\n";
}

static void add_edge(std::string *text, const Hypergraph &graph, int64_t e, Budget *budget)
{
    *text += "    {\"edge\": ";
    add_hif_id(text, net_label(graph, e), budget);
    if (graph.netweights) *text += ", \"weight\": " + std::to_string(graph.netwgt[at(e)]);
    *text += e + 1 < graph.nnets ? "},\n" : "}\n";
}

/* The incidences of one edge. */
static void add_incidences(std::string *text, const Hypergraph &graph, int64_t e, Budget *budget)
{
    std::string begin = "    {\"edge\": ";
    add_hif_id(&begin, net_label(graph, e), budget);
    for (int64_t i = graph.start[at(e)]; i < graph.start[at(e) + 1]; i++) {
        *text += begin;
        *text += ", \"node\": ";
        add_hif_id(text, vertex_label(graph, graph.pins[at(i)], 1), budget);
        *text += i + 1 < static_cast<int64_t>(graph.pins.size()) ? "},\n" : "}\n";
    }
}

/* Charges what the text has grown by since `charged`. */
static void charge_growth(const std::string &text, size_t *charged, Budget *budget)
{
    constexpr size_t STRIDE = size_t{1} << 20;
    if (text.size() < *charged + STRIDE) return;
    charge(budget, text.size() - *charged);
    check_time(*budget);
    *charged = text.size();
}

std::string hif_text(const Hypergraph &graph, const std::vector<int64_t> *part, Budget *budget)
{
    size_t charged = 0;
    std::string text = "{\n  \"network-type\": \"undirected\",\n  \"nodes\": [\n";
    for (int64_t v = 0; v < graph.nvertices; v++) {
        add_node(&text, graph, part, v, budget);
        charge_growth(text, &charged, budget);
    }
    text += "  ],\n  \"edges\": [\n";
    for (int64_t e = 0; e < graph.nnets; e++) {
        add_edge(&text, graph, e, budget);
        charge_growth(text, &charged, budget);
    }
    text += "  ],\n  \"incidences\": [\n";
    for (int64_t e = 0; e < graph.nnets; e++) {
        add_incidences(&text, graph, e, budget);
        charge_growth(text, &charged, budget);
    }
    return text + "  ]\n}\n";
}

std::string write_hif(const Hypergraph &graph, Budget *budget)
{
    return hif_text(graph, nullptr, budget);
}
