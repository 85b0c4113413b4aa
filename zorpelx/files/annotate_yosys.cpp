// SPDX-License-Identifier: MIT
/* zorpelx/files/annotate_yosys.cpp: the parts of a Yosys netlist as attributes of its cells.
 *
 * The netlist is read again, for the cells that its vertices come from; then the text is copied,
 * with attributes put in on the way. Nothing else of it changes.
 */
#include "annotate_yosys.h"

#include <algorithm>
#include <map>

#include "fileerror.h"
#include "json_copy.h"
#include "read_yosys.h"
#include "zorpelx.h"

constexpr std::string_view PART = "zorpel_part", PARTS = "zorpel_parts";

/* Parts by module and cell, and by port of the top module; several where there are several. */
struct CellParts {
    std::map<std::pair<int32_t, int32_t>, std::vector<int64_t>> cell, port;
};

/* What copying carries along. */
struct Copying {
    JsonCopy copy;
    const CellParts &parts;
    int32_t module, cell;
    std::map<std::string, const std::vector<int64_t> *, std::less<>> wires; // parts of the module's
};

static CellParts parts_of(const std::vector<NetOrigin> &origins, const std::vector<int64_t> &part)
{
    CellParts parts;
    for (size_t v = 0; v < origins.size(); v++) {
        auto &all = origins[v].port ? parts.port : parts.cell;
        all[{origins[v].module, origins[v].item}].push_back(part[v]);
    }
    return parts;
}

/* Yosys writes numbers as 32 binary digits. A text of digits alone would be taken for one. */
static std::string attribute_of(const std::vector<int64_t> &parts)
{
    constexpr int WIDTH = 32;
    const bool same =
        std::all_of(parts.begin(), parts.end(), [&](int64_t part) { return part == parts[0]; });
    std::string value = "\"";
    value.append(same ? PART : PARTS).append("\": \"");
    if (same)
        for (int bit = WIDTH - 1; bit >= 0; bit--) value += (parts[0] >> bit & 1) != 0 ? '1' : '0';
    else
        for (size_t i = 0; i < parts.size(); i++)
            value += (i == 0 ? "parts " : " ") + std::to_string(parts[i]);
    return value + '"';
}

/* The object of a cell or wire, whose attributes are made if it has none. */
static void copy_object(Copying *copying, const std::vector<int64_t> &parts)
{
    static constexpr std::string_view OWN[] = {PART, PARTS};
    copy_with_attribute(&copying->copy, "attributes", attribute_of(parts), OWN);
}

static void copy_cells(Copying *copying)
{
    JsonScan *const json = &copying->copy.json;
    std::string_view name;
    for (JsonList list = open_object(json); next_key(json, &list, &name); copying->cell++) {
        const auto parts = copying->parts.cell.find({copying->module, copying->cell});
        if (parts == copying->parts.cell.end())
            skip_value(json);
        else
            copy_object(copying, parts->second);
    }
}

static void note_ports(Copying *copying)
{
    JsonScan *const json = &copying->copy.json;
    std::string_view name;
    int32_t port = 0;
    for (JsonList list = open_object(json); next_key(json, &list, &name); port++) {
        const auto parts = copying->parts.port.find({copying->module, port});
        if (parts != copying->parts.port.end()) copying->wires[std::string(name)] = &parts->second;
        skip_value(json);
    }
}

static void copy_wires(Copying *copying)
{
    JsonScan *const json = &copying->copy.json;
    std::string_view name;
    for (JsonList list = open_object(json); next_key(json, &list, &name);) {
        const auto parts = copying->wires.find(name);
        if (parts == copying->wires.end())
            skip_value(json);
        else
            copy_object(copying, *parts->second);
    }
}

/* Yosys writes ports before wires; where they come after, wires get no parts. */
static void copy_module(Copying *copying)
{
    JsonScan *const json = &copying->copy.json;
    copying->cell = 0;
    copying->wires.clear();
    std::string_view key;
    for (JsonList list = open_object(json); next_key(json, &list, &key);) {
        if (key == "cells")
            copy_cells(copying);
        else if (key == "ports")
            note_ports(copying);
        else if (key == "netnames")
            copy_wires(copying);
        else
            skip_value(json);
    }
    copying->module++;
}

static std::string annotated_text(std::string_view bytes, const CellParts &parts, Budget *budget)
{
    Copying copying = {copy_over(bytes, budget), parts, 0, 0, {}};
    JsonScan *const json = &copying.copy.json;
    std::string_view key;
    for (JsonList list = open_object(json); next_key(json, &list, &key);) {
        if (key == "modules")
            for (JsonList each = open_object(json); next_key(json, &each, &key);)
                copy_module(&copying);
        else
            skip_value(json);
    }
    copy_to(&copying.copy, json->end);
    charge(budget, copying.copy.text.size());
    return std::move(copying.copy.text);
}

std::vector<WrittenFile> annotate_yosys(const Hypergraph &graph, const Annotation &annotation,
                                        Budget *budget)
{
    Findings findings;
    std::vector<NetOrigin> origins;
    const Hypergraph again =
        read_yosys_origins(annotation.original, graph.provenance.top, &findings, budget, &origins);
    if (again.nvertices != graph.nvertices)
        file_error(ZORPELX_BAD_INPUT, "%s: the file has changed since it was read",
                   budget->name.c_str());
    const CellParts parts = parts_of(origins, annotation.part);
    return {{"", annotated_text(annotation.original, parts, budget)}};
}
