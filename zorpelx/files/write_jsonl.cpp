// SPDX-License-Identifier: MIT
/* zorpelx/files/write_jsonl.cpp: memberships and partitions as JSON lines.
 *
 * Every vertex has a line of its own before any hyperedge names it: that keeps the order of the
 * vertices, those in no hyperedge, and what is known of each without saying it at every pin.
 */
#include "write_jsonl.h"

#include "casts.h"
#include "json_scan.h"
#include "members.h"

struct LinesText {
    std::string text;
    bool begun; // the line has a key
    size_t charged;
    Budget *budget;
};

static void put_key(LinesText *lines, std::string_view key)
{
    lines->text += lines->begun ? ", \"" : "{\"";
    lines->text += key;
    lines->text += "\": ";
    lines->begun = true;
}

static void put_text(LinesText *lines, std::string_view key, std::string_view value)
{
    put_key(lines, key);
    lines->text += json_quoted(value);
}

static void put_number(LinesText *lines, std::string_view key, int64_t value)
{
    put_key(lines, key);
    lines->text += std::to_string(value);
}

static void put_entry(LinesText *lines, Role role, const std::vector<int32_t> &entries, int64_t v)
{
    if (!entries.empty() && entries[at(v)] >= 0)
        put_number(lines, name_of_role(role), entries[at(v)]);
}

/* Charges what the text has grown by, now and then. */
static void end_line(LinesText *lines)
{
    constexpr size_t STRIDE = size_t{1} << 20;
    lines->text += "}\n";
    lines->begun = false;
    if (lines->text.size() < lines->charged + STRIDE) return;
    charge(lines->budget, lines->text.size() - lines->charged);
    check_time(*lines->budget);
    lines->charged = lines->text.size();
}

static void put_vertex(LinesText *lines, const Hypergraph &graph, int64_t v)
{
    put_text(lines, name_of_role(ROLE_VERTEX), vertex_label(graph, v, 1));
    if (graph.vertexweights)
        put_number(lines, name_of_role(ROLE_VERTEX_WEIGHT), graph.vertexwgt[at(v)]);
    if (!graph.kind.empty() && graph.kind[at(v)] >= 0)
        put_text(lines, name_of_role(ROLE_KIND), name_of(graph.kindnames, graph.kind[at(v)]));
    put_entry(lines, ROLE_FIXED, graph.fixed, v);
    put_entry(lines, ROLE_GROUP, graph.group, v);
    end_line(lines);
}

static void put_net(LinesText *lines, const Hypergraph &graph, int64_t e)
{
    put_text(lines, name_of_role(ROLE_NET), net_label(graph, e));
    if (graph.netweights) put_number(lines, name_of_role(ROLE_NET_WEIGHT), graph.netwgt[at(e)]);
    put_key(lines, "vertices");
    const char *between = "[";
    for (int64_t i = graph.start[at(e)]; i < graph.start[at(e) + 1]; i++, between = ", ") {
        lines->text += between;
        lines->text += json_quoted(vertex_label(graph, graph.pins[at(i)], 1));
    }
    lines->text += net_size(graph, e) == 0 ? "[]" : "]";
    end_line(lines);
}

std::string write_jsonl(const Hypergraph &graph, Budget *budget)
{
    LinesText lines = {{}, false, 0, budget};
    for (int64_t v = 0; v < graph.nvertices; v++) put_vertex(&lines, graph, v);
    for (int64_t e = 0; e < graph.nnets; e++) put_net(&lines, graph, e);
    return std::move(lines.text);
}

std::vector<WrittenFile> annotate_jsonl(const Hypergraph &graph, const Annotation &annotation,
                                        Budget *budget)
{
    LinesText lines = {{}, false, 0, budget};
    for (int64_t v = 0; v < graph.nvertices; v++) {
        put_text(&lines, name_of_role(ROLE_VERTEX), vertex_label(graph, v, 1));
        put_number(&lines, "part", annotation.part[at(v)]);
        end_line(&lines);
    }
    return {{"", std::move(lines.text)}};
}
