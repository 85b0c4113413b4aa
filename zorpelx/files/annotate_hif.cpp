// SPDX-License-Identifier: MIT
/* zorpelx/files/annotate_hif.cpp: the parts of an HIF file as attributes of its nodes.
 *
 * A file that was HIF is copied, with an attribute put into each record of a node; what else it
 * says, known here or not, stays as it is. Nodes that only incidences name get records at the end
 * of the first list of nodes. Any other hypergraph is written anew.
 */
#include "builder.h"
#include "json_copy.h"
#include "read_hif.h"
#include "write_hif.h"

/* What copying carries along. */
struct HifCopy {
    JsonCopy copy;
    const Hypergraph &graph;
    const std::vector<int64_t> &part;
    Interner numbers;         // vertices by name
    std::vector<bool> listed; // [nvertices]: has a record
    size_t end;               // in the text: of the first list of nodes; 0: there is none
    bool empty;               // that list
};

static std::string attribute_of(const HifCopy &work, int64_t v)
{
    return '"' + std::string(HIF_PART) + "\": " + std::to_string(work.part[static_cast<size_t>(v)]);
}

/* The vertex of the record that comes next, which is not passed. */
static int64_t vertex_of(const HifCopy &work, Budget *budget)
{
    JsonScan ahead = json_over({work.copy.json.next, work.copy.json.end}, budget);
    std::string_view key, name;
    std::string scratch;
    for (JsonList list = open_object(&ahead); next_key(&ahead, &list, &key);) {
        if (key == "node")
            name = take_hif_id(&ahead, &scratch);
        else
            skip_value(&ahead);
    }
    return find_name(work.numbers, name);
}

static void copy_nodes(HifCopy *work, Budget *budget)
{
    static constexpr std::string_view OWN[] = {HIF_PART};
    JsonScan *const json = &work->copy.json;
    bool empty = true;
    const char *last = nullptr;
    for (JsonList list = open_array(json); next_item(json, &list); last = json->next) {
        const int64_t v = vertex_of(*work, budget);
        empty = false;
        if (v < 0) {
            skip_value(json);
            continue;
        }
        work->listed[static_cast<size_t>(v)] = true;
        copy_with_attribute(&work->copy, "attrs", attribute_of(*work, v), OWN);
    }
    if (work->end > 0) return;
    copy_to(&work->copy, last == nullptr ? json->next - 1 : last);
    work->end = work->copy.text.size();
    work->empty = empty;
}

/* Records of the nodes that have none. */
static std::string missing_nodes(const HifCopy &work, bool begun, Budget *budget)
{
    std::string text;
    for (int64_t v = 0; v < work.graph.nvertices; v++) {
        if (work.listed[static_cast<size_t>(v)]) continue;
        text += begun ? ", {\"node\": " : "{\"node\": ";
        add_hif_id(&text, vertex_label(work.graph, v, 1), budget);
        text += ", \"attrs\": {" + attribute_of(work, v) + "}}";
        begun = true;
    }
    return text;
}

static std::string copied_hif(const Hypergraph &graph, const Annotation &annotation, Budget *budget)
{
    HifCopy work = {copy_over(annotation.original, budget),
                    graph,
                    annotation.part,
                    {},
                    std::vector<bool>(static_cast<size_t>(graph.nvertices), false),
                    0,
                    true};
    for (int64_t v = 0; v < graph.nvertices; v++)
        intern(&work.numbers, vertex_label(graph, v, 1), budget);
    JsonScan *const json = &work.copy.json;
    std::string_view key;
    JsonList list = open_object(json);
    const size_t inside = static_cast<size_t>(json->next - annotation.original.data());
    while (next_key(json, &list, &key)) {
        if (key == "nodes")
            copy_nodes(&work, budget);
        else
            skip_value(json);
    }
    copy_to(&work.copy, json->end);
    const std::string missing = missing_nodes(work, work.end > 0 && !work.empty, budget);
    if (missing.empty()) return std::move(work.copy.text);
    if (work.end > 0) return work.copy.text.insert(work.end, missing);
    return work.copy.text.insert(inside, "\"nodes\": [" + missing + "], ");
}

std::vector<WrittenFile> annotate_hif(const Hypergraph &graph, const Annotation &annotation,
                                      Budget *budget)
{
    if (graph.provenance.format != "hif" || annotation.original.empty())
        return {{"", hif_text(graph, &annotation.part, budget)}};
    std::string text = copied_hif(graph, annotation, budget);
    charge(budget, text.size());
    return {{"", std::move(text)}};
}
