// SPDX-License-Identifier: MIT
/* zorpelx/files/formats.cpp: the table of formats. */
#include "formats.h"

#include <algorithm>
#include <cassert>
#include <cctype>

#include "annotate_yosys.h"
#include "areas.h"
#include "expand.h"
#include "fileerror.h"
#include "read_blif.h"
#include "read_cnf.h"
#include "read_edges.h"
#include "read_bookshelf.h"
#include "read_hif.h"
#include "read_jsonl.h"
#include "read_mtx.h"
#include "read_table.h"
#include "read_verilog.h"
#include "read_yosys.h"
#include "write_drawing.h"
#include "write_hgr.h"
#include "write_hif.h"
#include "write_jsonl.h"
#include "write_mtx.h"
#include "write_table.h"
#include "zorpelx.h"

static Hypergraph read_hgr(std::string_view bytes, const Reading &reading, Findings *findings,
                           Budget *budget)
{
    return scan_hypergraph(bytes, reading, findings, budget);
}

/* A hyperedge without vertices would be a blank line, which readers refuse. */
static std::string write_hgr(const Hypergraph &graph, Budget *)
{
    return hgr_text(with_nets(graph, [&](int64_t e) { return net_size(graph, e) > 0; }));
}

/* Of several rows that are certain or alike the first is taken. */
constexpr FormatRow TABLE[] = {
    {"hgr", "hypergraph file", ".hgr", "", nullptr, read_hgr, write_hgr, nullptr,
     KEEPS_VERTEX_WEIGHTS | KEEPS_NET_WEIGHTS | KEEPS_ISLANDS},
    {"mtx", "Matrix Market file", ".mtx .mm", "row-net column-net fine-grain", recognise_mtx,
     read_mtx, nullptr, annotate_mtx, 0, true},
    {"cnf", "DIMACS CNF file", ".cnf .dimacs .wcnf", "primal dual literal", recognise_cnf, read_cnf,
     nullptr, nullptr, 0},
    {"yosys", "Yosys netlist", ".json", "", recognise_yosys, read_yosys, nullptr, annotate_yosys, 0,
     true},
    {"hif", "HIF file", ".hif .json", "", recognise_hif, read_hif, write_hif, annotate_hif,
     KEEPS_ALL},
    {"blif", "BLIF netlist", ".blif .eblif", "", recognise_blif, read_blif, nullptr, nullptr, 0},
    {"bookshelf", "Bookshelf benchmark", ".aux", "", recognise_bookshelf, read_bookshelf, nullptr,
     annotate_bookshelf, 0, true},
    {"verilog", "Verilog file", ".v .sv", "", recognise_verilog, read_verilog, nullptr, nullptr, 0},
    {"csv", "CSV file of memberships", ".csv", "", recognise_csv, read_csv, write_csv, annotate_csv,
     KEEPS_ALL},
    {"tsv", "TSV file of memberships", ".tsv .tab", "", recognise_tsv, read_tsv, write_tsv,
     annotate_tsv, KEEPS_ALL},
    {"jsonl", "JSON lines file of memberships", ".jsonl .ndjson", "", recognise_jsonl, read_jsonl,
     write_jsonl, annotate_jsonl, KEEPS_ALL},
    {"edges", "edge list", ".edges .edgelist .el", "", recognise_edges, read_edges, nullptr,
     nullptr, 0},
    {"dot", "Graphviz drawing", ".dot .gv", "", nullptr, nullptr, nullptr, annotate_dot, 0},
    {"graphml", "GraphML file", ".graphml", "", nullptr, nullptr, nullptr, annotate_graphml, 0},
};

std::span<const FormatRow> format_rows()
{
    return TABLE;
}

const FormatRow *find_format(std::string_view name)
{
    for (const FormatRow &row : TABLE)
        if (row.name == name) return &row;
    return nullptr;
}

static std::string suffix_of(const std::string &path)
{
    const std::string name = plain_name(path);
    const size_t dot = name.rfind('.'), slash = name.rfind('/');
    if (dot == std::string::npos || (slash != std::string::npos && dot < slash)) return "";
    std::string suffix = name.substr(dot);
    for (char &c : suffix) c = static_cast<char>(tolower(static_cast<unsigned char>(c)));
    return suffix;
}

/* Whether a list of words between blanks has this one. */
static bool lists(std::string_view list, std::string_view word)
{
    while (!word.empty() && !list.empty()) {
        const size_t blank = std::min(list.find(' '), list.size());
        if (list.substr(0, blank) == word) return true;
        list.remove_prefix(std::min(blank + 1, list.size()));
    }
    return false;
}

bool has_suffix(const FormatRow &row, const std::string &path)
{
    return lists(row.suffixes, suffix_of(path));
}

const FormatRow *format_of_suffix(const std::string &path)
{
    for (const FormatRow &row : TABLE)
        if (has_suffix(row, path)) return &row;
    return nullptr;
}

const FormatRow *detect_format(std::string_view bytes, const std::string &path)
{
    const std::string suffix = suffix_of(path);
    const FormatRow *alike = nullptr, *called = nullptr;
    for (const FormatRow &row : TABLE) {
        if (row.read == nullptr) continue;
        const Recognised found = row.recognise == nullptr ? OPEN : row.recognise(bytes);
        if (found == CERTAIN) return &row;
        if (found == LIKE && alike == nullptr) alike = &row;
        if (found != UNLIKE && called == nullptr && lists(row.suffixes, suffix)) called = &row;
    }
    if (called != nullptr) return called;
    return alike != nullptr ? alike : &TABLE[0];
}

static std::string first_word(std::string_view list)
{
    return std::string(list.substr(0, list.find(' ')));
}

/* The model that is read by. */
static std::string chosen_model(const FormatRow &row, const Reading &reading, const Budget &budget)
{
    if (reading.model.empty()) return first_word(row.models);
    if (row.models[0] == '\0')
        file_error(ZORPELX_BAD_INPUT, "%s: a %s has no models to choose from", budget.name.c_str(),
                   row.title);
    if (!lists(row.models, reading.model))
        file_error(ZORPELX_BAD_INPUT, "%s: the models of a %s are %s", budget.name.c_str(),
                   row.title, row.models);
    return reading.model;
}

Hypergraph read_any(std::string_view bytes, const FormatRow *row, const Reading &reading,
                    Findings *findings, Budget *budget)
{
    if (row == nullptr) row = detect_format(bytes, reading.path);
    Reading chosen = reading;
    chosen.model = chosen_model(*row, reading, *budget);
    Hypergraph graph = row->read(bytes, chosen, findings, budget);
    graph.provenance.format = row->name;
    graph.provenance.model = chosen.model;
    graph.provenance.top = chosen.top;
    if (!chosen.skip_nets.empty()) skip_nets(&graph, chosen.skip_nets, findings);
    if (!chosen.areas.empty()) weigh_by_file(&graph, chosen.areas, findings, budget);
    assert(hypergraph_ok(graph));
    return graph;
}

static bool has_entries(const std::vector<int32_t> &entries)
{
    return std::any_of(entries.begin(), entries.end(), [](int32_t entry) { return entry >= 0; });
}

static bool has_islands(const Hypergraph &graph)
{
    std::vector<bool> met(static_cast<size_t>(graph.nvertices), false);
    for (const int32_t v : graph.pins) met[static_cast<size_t>(v)] = true;
    return std::find(met.begin(), met.end(), false) != met.end();
}

static bool has_empty_nets(const Hypergraph &graph)
{
    for (int64_t e = 0; e < graph.nnets; e++)
        if (net_size(graph, e) == 0) return true;
    return false;
}

std::vector<Lost> lost_by(const FormatRow &row, const Hypergraph &graph)
{
    const struct {
        unsigned bit;
        bool there;
        Lost lost;
    } features[] = {
        {KEEPS_VERTEX_NAMES, count_names(graph.vertexnames) > 0, {"names of vertices", false}},
        {KEEPS_NET_NAMES, count_names(graph.netnames) > 0, {"names of hyperedges", false}},
        {KEEPS_VERTEX_WEIGHTS, graph.vertexweights, {"weights of vertices", true}},
        {KEEPS_NET_WEIGHTS, graph.netweights, {"weights of hyperedges", true}},
        {KEEPS_KINDS, has_entries(graph.kind), {"kinds of vertices", false}},
        {KEEPS_FIXED, has_entries(graph.fixed), {"fixed vertices", true}},
        {KEEPS_GROUPS, has_entries(graph.group), {"groups of vertices", true}},
        {KEEPS_ISLANDS, has_islands(graph), {"vertices in no hyperedge", true}},
        {KEEPS_EMPTY_NETS, has_empty_nets(graph), {"hyperedges without vertices", false}},
    };
    std::vector<Lost> lost;
    for (const auto &feature : features)
        if (feature.there && (row.keeps & feature.bit) == 0) lost.push_back(feature.lost);
    return lost;
}
