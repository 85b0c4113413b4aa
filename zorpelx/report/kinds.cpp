// SPDX-License-Identifier: MIT
/* zorpelx/report/kinds.cpp: what a hypergraph is made from, and what the cut means there. */
#include "kinds.h"

#include <algorithm>

static bool is_one_of(const std::string &word, std::initializer_list<const char *> list)
{
    return std::any_of(list.begin(), list.end(), [&](const char *one) { return word == one; });
}

Origin origin_of(const Hypergraph &graph)
{
    const std::string &format = graph.provenance.format, &model = graph.provenance.model;
    if (is_one_of(model, {"row-net", "column-net", "fine-grain"})) return FROM_MATRIX;
    if (is_one_of(model, {"primal", "dual", "literal"})) return FROM_FORMULA;
    if (is_one_of(format, {"yosys", "blif", "bookshelf", "verilog"})) return FROM_NETLIST;
    if (is_one_of(format, {"csv", "tsv", "jsonl", "json-lines"})) return FROM_MEMBERSHIPS;
    return FROM_ANY;
}

/* Whether hyperedge e is a column, whose entry of the vector is sent to those who need it;
 * otherwise it is a row, whose sum is collected. */
static bool is_column(const Hypergraph &graph, int64_t e)
{
    const Provenance &from = graph.provenance;
    return from.model == "column-net" || (from.model == "fine-grain" && e >= from.nrows);
}

/* Part of the nonzero on the diagonal of each row; -1 where there is none. */
static std::vector<int64_t> diagonal_parts(const Hypergraph &graph, const NamedPartition &division)
{
    const Provenance &from = graph.provenance;
    std::vector<int64_t> parts(static_cast<size_t>(from.nrows), -1);
    for (size_t v = 0; v < from.row.size() && v < from.column.size(); v++)
        if (from.row[v] == from.column[v])
            parts[static_cast<size_t>(from.row[v])] = division.part[v];
    return parts;
}

/* The part that owns entry j of the vectors, for every j; empty where the matrix does not say. */
static std::vector<int64_t> owners_of(const Hypergraph &graph, const NamedPartition &division)
{
    const Provenance &from = graph.provenance;
    if (from.nrows != from.ncolumns) return {};
    if (from.model == "fine-grain") return diagonal_parts(graph, division);
    return graph.nvertices == from.nrows && graph.nnets == from.nrows ? division.part
                                                                      : std::vector<int64_t>();
}

Words words_of(const Hypergraph &graph, const NamedPartition &division)
{
    const size_t nparts = static_cast<size_t>(division.nparts);
    Words words = {std::vector<int64_t>(nparts, 0), std::vector<int64_t>(nparts, 0), 0};
    std::vector<int64_t> count(nparts, 0);
    const std::vector<int64_t> owners = owners_of(graph, division);
    for (int64_t e = 0; e < graph.nnets; e++) {
        const std::vector<PartShare> shares = shares_of(graph, division, e, &count);
        if (shares.empty()) continue;
        const bool column = is_column(graph, e);
        const int64_t entry = e >= graph.provenance.nrows && !owners.empty() && column &&
                                      graph.provenance.model == "fine-grain"
                                  ? e - graph.provenance.nrows
                                  : e;
        int64_t owner = owners.empty() ? -1 : owners[static_cast<size_t>(entry)];
        if (owner < 0) owner = shares[0].part;
        for (const PartShare &share : shares) {
            if (share.part == owner) continue;
            words.sent[static_cast<size_t>(column ? owner : share.part)]++;
            words.received[static_cast<size_t>(column ? share.part : owner)]++;
            words.total++;
        }
    }
    return words;
}

/* A hyperedge is a variable: those that are cut are shared. */
static SharedVariables shared_nets(const Hypergraph &graph, const NamedPartition &division)
{
    SharedVariables variables = {0, std::vector<int64_t>(static_cast<size_t>(division.nparts), 0)};
    std::vector<int64_t> count(static_cast<size_t>(division.nparts), 0);
    for (int64_t e = 0; e < graph.nnets; e++) {
        const std::vector<PartShare> shares = shares_of(graph, division, e, &count);
        if (shares.size() < 2) continue;
        variables.number++;
        for (const PartShare &share : shares) variables.shared[static_cast<size_t>(share.part)]++;
    }
    return variables;
}

/* The variable of each vertex: itself, or that of the literal, of which a positive and a negative
 * one follow each other. */
static std::vector<int64_t> variables_of(const Hypergraph &graph)
{
    std::vector<int64_t> variable(static_cast<size_t>(graph.nvertices));
    for (size_t v = 0; v < variable.size(); v++)
        variable[v] = static_cast<int64_t>(graph.provenance.model == "literal" ? v / 2 : v);
    return variable;
}

/* A vertex is a variable or a literal: those in a cut clause are shared. */
static SharedVariables shared_vertices(const Hypergraph &graph, const NamedPartition &division)
{
    SharedVariables variables = {0, std::vector<int64_t>(static_cast<size_t>(division.nparts), 0)};
    std::vector<int64_t> count(static_cast<size_t>(division.nparts), 0);
    std::vector<bool> cut(static_cast<size_t>(graph.nvertices), false);
    for (int64_t e = 0; e < graph.nnets; e++) {
        if (shares_of(graph, division, e, &count).size() < 2) continue;
        for (int64_t j = graph.start[static_cast<size_t>(e)];
             j < graph.start[static_cast<size_t>(e) + 1]; j++)
            cut[static_cast<size_t>(graph.pins[static_cast<size_t>(j)])] = true;
    }
    const std::vector<int64_t> variable = variables_of(graph);
    for (size_t v = 0; v < cut.size(); v++) {
        if (!cut[v]) continue;
        const bool counted = v > 0 && cut[v - 1] && variable[v] == variable[v - 1];
        variables.number += !counted;
        if (!counted || division.part[v] != division.part[v - 1])
            variables.shared[static_cast<size_t>(division.part[v])]++;
    }
    return variables;
}

SharedVariables shared_variables(const Hypergraph &graph, const NamedPartition &division)
{
    return graph.provenance.model == "dual" ? shared_nets(graph, division)
                                            : shared_vertices(graph, division);
}
