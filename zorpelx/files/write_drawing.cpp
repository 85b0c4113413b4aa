// SPDX-License-Identifier: MIT
/* zorpelx/files/write_drawing.cpp: small hypergraphs for programs that draw graphs.
 *
 * Names are foreign: DOT has them in quotes with every quote and backslash escaped, GraphML as
 * text of XML. Neither has room for control characters, which become blanks, nor for what is not
 * UTF-8, which becomes a replacement character.
 */
#include "write_drawing.h"

#include <algorithm>

#include "casts.h"
#include "entities.h"
#include "fileerror.h"
#include "json_scan.h"
#include "zorpelx.h"

/* Okabe & Ito, Color universal design, 2008, without black. */
static const char *const COLOURS[] = {"#e69f00", "#56b4e9", "#009e73", "#f0e442",
                                      "#0072b2", "#d55e00", "#cc79a7", "#bbbbbb"};

static void check_size(const Hypergraph &graph, const Budget &budget)
{
    if (graph.nvertices <= MOST_DRAWN && graph.nnets <= MOST_DRAWN) return;
    file_error(
        ZORPELX_BAD_INPUT,
        "%s: %lld vertices and %lld hyperedges are too many to draw one by one (at most %lld); "
        "zorpelx report draws clusters",
        budget.name.c_str(), static_cast<long long>(graph.nvertices),
        static_cast<long long>(graph.nnets), static_cast<long long>(MOST_DRAWN));
}

/* Valid UTF-8 without control characters. */
static std::string clean(std::string_view text)
{
    std::string out;
    while (!text.empty()) {
        const size_t length = utf8_length(text);
        const unsigned char c = static_cast<unsigned char>(text[0]);
        if (length == 0)
            out += "\xef\xbf\xbd";
        else if (length == 1 && (c < ' ' || c == 0x7f))
            out += ' ';
        else if (text.substr(0, length) == "\xef\xbf\xbe" ||
                 text.substr(0, length) == "\xef\xbf\xbf")
            out += "\xef\xbf\xbd"; // U+FFFE and U+FFFF are no characters of XML
        else
            out += text.substr(0, length);
        text.remove_prefix(std::max<size_t>(length, 1));
    }
    return out;
}

static std::string dot_quoted(std::string_view name)
{
    std::string out = "\"";
    for (const char c : clean(name)) {
        if (c == '"' || c == '\\') out += '\\';
        out += c;
    }
    return out + '"';
}

static std::string xml(std::string_view name)
{
    std::string out;
    for (const char c : clean(name)) append_markup(c, &out);
    return out;
}

static bool is_cut(const Hypergraph &graph, const std::vector<int64_t> &part, int64_t e)
{
    const int64_t begin = graph.start[at(e)], end = graph.start[at(e) + 1];
    for (int64_t i = begin; i < end; i++)
        if (part[at(graph.pins[at(i)])] != part[at(graph.pins[at(begin)])]) return true;
    return false;
}

static std::string dot_vertices(const Hypergraph &graph, const Annotation &annotation, int64_t p)
{
    std::string out = text_of("  subgraph cluster_%lld {\n    label = \"part %lld\"; color = "
                              "\"#888888\"; node [fillcolor = \"%s\"];\n",
                              static_cast<long long>(p), static_cast<long long>(p),
                              COLOURS[at(p) % std::size(COLOURS)]);
    for (int64_t v = 0; v < graph.nvertices; v++)
        if (annotation.part[at(v)] == p)
            out += "    v" + std::to_string(v) +
                   " [label = " + dot_quoted(vertex_label(graph, v, 1)) + "];\n";
    return out + "  }\n";
}

static std::string dot_net(const Hypergraph &graph, const std::vector<int64_t> &part, int64_t e)
{
    const int64_t begin = graph.start[at(e)], end = graph.start[at(e) + 1];
    const std::string tip = "tooltip = " + dot_quoted(net_label(graph, e));
    const std::string look = is_cut(graph, part, e) ? ", color = \"#000000\", penwidth = 2" : "";
    const auto vertex = [&](int64_t i) { return "v" + std::to_string(graph.pins[at(i)]); };
    if (end - begin == 2)
        return "  " + vertex(begin) + " -- " + vertex(begin + 1) + " [" + tip + look + "];\n";
    const std::string hub = "e" + std::to_string(e);
    std::string out = "  " + hub + " [shape = point, label = \"\", " + tip + "];\n";
    for (int64_t i = begin; i < end; i++)
        out += "  " + hub + " -- " + vertex(i) + " [" + tip + look + "];\n";
    return out;
}

std::vector<WrittenFile> annotate_dot(const Hypergraph &graph, const Annotation &annotation,
                                      Budget *budget)
{
    check_size(graph, *budget);
    std::vector<int64_t> used = annotation.part;
    std::sort(used.begin(), used.end());
    used.erase(std::unique(used.begin(), used.end()), used.end());
    std::string text = "graph hypergraph {\n  node [shape = box, style = \"rounded,filled\", "
                       "fontname = \"sans-serif\"];\n  edge [color = \"#999999\"];\n";
    for (const int64_t p : used) {
        text += dot_vertices(graph, annotation, p);
        check_time(*budget);
    }
    for (int64_t e = 0; e < graph.nnets; e++) text += dot_net(graph, annotation.part, e);
    text += "}\n";
    charge(budget, text.size());
    return {{"", std::move(text)}};
}

static std::string key(const char *name, const char *of, const char *type)
{
    return text_of("  <key id=\"%s\" for=\"%s\" attr.name=\"%s\" attr.type=\"%s\"/>\n", name, of,
                   name, type);
}

static std::string data(const char *name, const std::string &value)
{
    return text_of("<data key=\"%s\">", name) + value + "</data>";
}

static std::string graphml_vertex(const Hypergraph &graph, const std::vector<int64_t> &part,
                                  int64_t v)
{
    std::string out = "    <node id=\"v" + std::to_string(v) + "\">" + data("type", "vertex") +
                      data("name", xml(vertex_label(graph, v, 1))) +
                      data("part", std::to_string(part[at(v)])) +
                      data("weight", std::to_string(graph.vertexwgt[at(v)]));
    if (!graph.kind.empty() && graph.kind[at(v)] >= 0)
        out += data("kind", xml(name_of(graph.kindnames, graph.kind[at(v)])));
    return out + "</node>\n";
}

static std::string graphml_net(const Hypergraph &graph, const std::vector<int64_t> &part, int64_t e)
{
    const std::string hub = "e" + std::to_string(e);
    std::string out = "    <node id=\"" + hub + "\">" + data("type", "hyperedge") +
                      data("name", xml(net_label(graph, e))) +
                      data("weight", std::to_string(graph.netwgt[at(e)])) +
                      data("cut", is_cut(graph, part, e) ? "true" : "false") + "</node>\n";
    for (int64_t i = graph.start[at(e)]; i < graph.start[at(e) + 1]; i++)
        out += "    <edge source=\"" + hub + "\" target=\"v" + std::to_string(graph.pins[at(i)]) +
               "\"/>\n";
    return out;
}

std::vector<WrittenFile> annotate_graphml(const Hypergraph &graph, const Annotation &annotation,
                                          Budget *budget)
{
    check_size(graph, *budget);
    std::string text = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<graphml "
                       "xmlns=\"http://graphml.graphdrawing.org/xmlns\">\n" +
                       key("type", "node", "string") + key("name", "node", "string") +
                       key("part", "node", "long") + key("weight", "node", "long") +
                       key("kind", "node", "string") + key("cut", "node", "boolean") +
                       "  <graph edgedefault=\"undirected\">\n";
    for (int64_t v = 0; v < graph.nvertices; v++) text += graphml_vertex(graph, annotation.part, v);
    for (int64_t e = 0; e < graph.nnets; e++) text += graphml_net(graph, annotation.part, e);
    text += "  </graph>\n</graphml>\n";
    charge(budget, text.size());
    return {{"", std::move(text)}};
}
