// SPDX-License-Identifier: MIT
/* zorpelx/files/write_table.cpp: tables as text: memberships, and partitions by name. */
#include "write_table.h"

#include "members.h"

struct TableText {
    std::string text;
    char separator;
    bool begun; // the row has a field
    Budget *budget;
};

/* Quoted where the reader, or any other, would take the plain text for something else. */
static bool wants_quotes(std::string_view text, char separator)
{
    if (text.empty() || text.front() == ' ' || text.back() == ' ') return true;
    for (const char c : text)
        if (c == separator || c == '"' || c == '\n' || c == '\r' || c == '\t') return true;
    return false;
}

static void put_separator(TableText *table)
{
    if (table->begun) table->text += table->separator;
    table->begun = true;
}

static void put_field(TableText *table, std::string_view field)
{
    put_separator(table);
    if (!wants_quotes(field, table->separator)) {
        table->text += field;
        return;
    }
    table->text += '"';
    for (const char c : field) {
        if (c == '"') table->text += '"';
        table->text += c;
    }
    table->text += '"';
}

static void end_row(TableText *table)
{
    table->text += '\n';
    table->begun = false;
}

static void put_header(TableText *table, const Hypergraph &graph)
{
    const std::pair<Role, bool> columns[] = {{ROLE_NET, true},
                                             {ROLE_VERTEX, true},
                                             {ROLE_NET_WEIGHT, graph.netweights},
                                             {ROLE_VERTEX_WEIGHT, graph.vertexweights},
                                             {ROLE_KIND, !graph.kind.empty()},
                                             {ROLE_FIXED, !graph.fixed.empty()},
                                             {ROLE_GROUP, !graph.group.empty()}};
    for (const auto &[role, there] : columns)
        if (there) put_field(table, name_of_role(role));
    end_row(table);
}

static void put_entry(TableText *table, const std::vector<int32_t> &entries, int64_t v)
{
    if (entries.empty()) return;
    const int32_t entry = v < 0 ? -1 : entries[static_cast<size_t>(v)];
    put_separator(table);
    if (entry >= 0) table->text += std::to_string(entry);
}

/* One row; e or v may be -1 for none. */
static void put_row(TableText *table, const Hypergraph &graph, int64_t e, int64_t v)
{
    e >= 0 ? put_field(table, net_label(graph, e)) : put_separator(table);
    v >= 0 ? put_field(table, vertex_label(graph, v, 1)) : put_separator(table);
    if (graph.netweights) {
        put_separator(table);
        if (e >= 0) table->text += std::to_string(graph.netwgt[static_cast<size_t>(e)]);
    }
    if (graph.vertexweights) {
        put_separator(table);
        if (v >= 0) table->text += std::to_string(graph.vertexwgt[static_cast<size_t>(v)]);
    }
    if (!graph.kind.empty()) {
        const int32_t kind = v < 0 ? -1 : graph.kind[static_cast<size_t>(v)];
        if (kind >= 0)
            put_field(table, name_of(graph.kindnames, kind));
        else
            put_separator(table);
    }
    put_entry(table, graph.fixed, v);
    put_entry(table, graph.group, v);
    end_row(table);
}

static std::string write_table(const Hypergraph &graph, char separator, Budget *budget)
{
    TableText table = {{}, separator, false, budget};
    std::vector<bool> met(static_cast<size_t>(graph.nvertices), false);
    put_header(&table, graph);
    for (int64_t e = 0; e < graph.nnets; e++) {
        const size_t begin = static_cast<size_t>(graph.start[static_cast<size_t>(e)]);
        const size_t end = static_cast<size_t>(graph.start[static_cast<size_t>(e) + 1]);
        if (begin == end) put_row(&table, graph, e, -1);
        for (size_t i = begin; i < end; i++) {
            put_row(&table, graph, e, graph.pins[i]);
            met[static_cast<size_t>(graph.pins[i])] = true;
        }
        if (e % 4096 == 0) check_time(*budget);
    }
    for (int64_t v = 0; v < graph.nvertices; v++)
        if (!met[static_cast<size_t>(v)]) put_row(&table, graph, -1, v);
    return std::move(table.text);
}

std::string write_csv(const Hypergraph &graph, Budget *budget)
{
    return write_table(graph, ',', budget);
}

std::string write_tsv(const Hypergraph &graph, Budget *budget)
{
    return write_table(graph, '\t', budget);
}

static std::vector<WrittenFile> annotate_table(const Hypergraph &graph,
                                               const Annotation &annotation, char separator,
                                               Budget *budget)
{
    TableText table = {{}, separator, false, budget};
    put_field(&table, name_of_role(ROLE_VERTEX));
    put_field(&table, "part");
    end_row(&table);
    for (int64_t v = 0; v < graph.nvertices; v++) {
        put_field(&table, vertex_label(graph, v, 1));
        put_field(&table, std::to_string(annotation.part[static_cast<size_t>(v)]));
        end_row(&table);
    }
    return {{"", std::move(table.text)}};
}

std::vector<WrittenFile> annotate_csv(const Hypergraph &graph, const Annotation &annotation,
                                      Budget *budget)
{
    return annotate_table(graph, annotation, ',', budget);
}

std::vector<WrittenFile> annotate_tsv(const Hypergraph &graph, const Annotation &annotation,
                                      Budget *budget)
{
    return annotate_table(graph, annotation, '\t', budget);
}
