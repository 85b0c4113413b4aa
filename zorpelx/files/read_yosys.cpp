// SPDX-License-Identifier: MIT
/* zorpelx/files/read_yosys.cpp: netlists in JSON, as Yosys writes them.
 *
 *     {"modules": {NAME: {"attributes": {"top": ...},
 *                         "ports": {NAME: {"direction": D, "bits": [BIT, ...]}},
 *                         "cells": {NAME: {"type": T, "connections": {PORT: [BIT, ...]}}},
 *                         "netnames": {NAME: {"hide_name": 0, "bits": [BIT, ...]}}}}}
 *
 * A BIT is the number of a net of its module, or a string: "0", "1", "x" or "z". Members may come
 * in any order; those not named here are skipped.
 * Source: Yosys, manual of the command write_json.
 */
#include "read_yosys.h"

#include <algorithm>

#include "fileerror.h"
#include "json_scan.h"
#include "zorpelx.h"

/* What reading carries along. */
struct YosysScan {
    JsonScan json;
    NetDesign design;
    Budget *budget;
};

static int32_t take_bit(JsonScan *json)
{
    const char *const begin = next_value(json);
    if (json_kind(json) == JSON_STRING) {
        const std::string_view word = take_string(json);
        if (word != "0" && word != "1" && word != "x" && word != "z")
            json_error(*json, begin, "a bit is a number or one of \"0\", \"1\", \"x\" and \"z\"");
        return CONSTANT_BIT;
    }
    int64_t bit = 0;
    if (json_kind(json) != JSON_NUMBER || !is_whole(take_number(json), &bit) || bit < 0 ||
        bit >= INT32_MAX)
        json_error(*json, begin, "a bit is a number from 0 to 2147483646, or a string");
    return static_cast<int32_t>(bit);
}

/* Adds the bits of a list to the module's; returns how many. */
static int32_t take_bits(YosysScan *scan, NetModule *module)
{
    int32_t width = 0;
    for (JsonList list = open_array(&scan->json); next_item(&scan->json, &list); width++)
        push_charged(scan->budget, &module->bits, take_bit(&scan->json));
    return width;
}

static int64_t take_integer(JsonScan *json, int64_t least, int64_t most)
{
    const char *const begin = next_value(json);
    int64_t value = 0;
    if (json_kind(json) != JSON_NUMBER || !is_whole(take_number(json), &value) || value < least ||
        value > most)
        json_error(*json, begin, "there should be a whole number from %lld to %lld",
                   static_cast<long long>(least), static_cast<long long>(most));
    return value;
}

/* A port or a wire. */
static NetBundle take_bundle(YosysScan *scan, NetModule *module, std::string_view name)
{
    JsonScan *const json = &scan->json;
    NetBundle bundle = {name, static_cast<int64_t>(module->bits.size()), 0, 0, false, false, false};
    const char *const begin = next_value(json);
    bool bits = false;
    std::string_view key;
    for (JsonList list = open_object(json); next_key(json, &list, &key);) {
        if (key == "bits" && !bits) {
            bundle.width = take_bits(scan, module);
            bits = true;
        } else if (key == "hide_name") {
            bundle.hidden = take_integer(json, 0, 1) == 1;
        } else if (key == "offset") {
            bundle.offset = static_cast<int32_t>(take_integer(json, INT32_MIN, INT32_MAX));
        } else if (key == "direction") {
            bundle.output = take_string(json) == "output";
        } else if (key == "upto") {
            bundle.upto = take_integer(json, 0, 1) == 1;
        } else {
            skip_value(json);
        }
    }
    if (!bits) json_error(*json, begin, "there is no list of bits");
    return bundle;
}

static void take_bundles(YosysScan *scan, NetModule *module, std::vector<NetBundle> *bundles)
{
    std::string_view name;
    for (JsonList list = open_object(&scan->json); next_key(&scan->json, &list, &name);)
        push_charged(scan->budget, bundles, take_bundle(scan, module, name));
}

static void take_connections(YosysScan *scan, NetModule *module)
{
    std::string_view port;
    for (JsonList list = open_object(&scan->json); next_key(&scan->json, &list, &port);)
        add_connection(&scan->design, module, port, take_bits(scan, module), scan->budget);
}

static void take_cell(YosysScan *scan, NetModule *module, std::string_view name)
{
    JsonScan *const json = &scan->json;
    const char *const begin = next_value(json);
    const NetCell cell = {name, static_cast<int64_t>(module->connections.size()),
                          static_cast<int64_t>(module->bits.size()), -1};
    push_charged(scan->budget, &module->cells, cell);
    bool connections = false;
    std::string_view key;
    for (JsonList list = open_object(json); next_key(json, &list, &key);) {
        if (key == "type") {
            module->cells.back().type =
                intern(&scan->design.types, take_string(json), scan->budget);
        } else if (key == "connections" && !connections) {
            take_connections(scan, module);
            connections = true;
        } else {
            skip_value(json);
        }
    }
    if (module->cells.back().type < 0) json_error(*json, begin, "a cell without a type");
}

/* Attributes are numbers or strings of binary digits. */
static bool take_flag(JsonScan *json)
{
    if (json_kind(json) == JSON_STRING) {
        const std::string_view word = take_string(json);
        return word.find('1') != std::string_view::npos;
    }
    return skip_value(json) != "0";
}

static void take_attributes(JsonScan *json, NetModule *module)
{
    std::string_view key;
    for (JsonList list = open_object(json); next_key(json, &list, &key);) {
        if (key == "top")
            module->top = take_flag(json);
        else if (key == "blackbox" || key == "whitebox")
            module->blackbox = take_flag(json) || module->blackbox;
        else
            skip_value(json);
    }
}

static void take_module(YosysScan *scan, std::string_view name)
{
    JsonScan *const json = &scan->json;
    NetModule module = {};
    module.name = name;
    std::string_view key;
    for (JsonList list = open_object(json); next_key(json, &list, &key);) {
        if (key == "attributes")
            take_attributes(json, &module);
        else if (key == "ports")
            take_bundles(scan, &module, &module.ports);
        else if (key == "netnames")
            take_bundles(scan, &module, &module.wires);
        else if (key == "cells")
            for (JsonList cells = open_object(json); next_key(json, &cells, &key);)
                take_cell(scan, &module, key);
        else
            skip_value(json);
    }
    settle_bits(&module, scan->budget);
    scan->design.modules.push_back(std::move(module));
    charge(scan->budget, sizeof module);
}

static void take_file(YosysScan *scan)
{
    JsonScan *const json = &scan->json;
    const char *const begin = next_value(json);
    bool modules = false;
    std::string_view key;
    for (JsonList list = open_object(json); next_key(json, &list, &key);) {
        if (key == "modules") {
            for (JsonList each = open_object(json); next_key(json, &each, &key);)
                take_module(scan, key);
            modules = true;
        } else {
            skip_value(json);
        }
    }
    end_json(json);
    if (!modules) json_error(*json, begin, "a Yosys netlist has \"modules\"; there are none here");
}

Hypergraph read_yosys_origins(std::string_view bytes, const std::string &top, Findings *findings,
                              Budget *budget, std::vector<NetOrigin> *origins)
{
    YosysScan scan = {json_over(bytes, budget), {}, budget};
    take_file(&scan);
    const size_t module = top_module(scan.design, top, *budget);
    return flatten_design(scan.design, module, findings, budget, origins);
}

Hypergraph read_yosys(std::string_view bytes, const Reading &reading, Findings *findings,
                      Budget *budget)
{
    return read_yosys_origins(bytes, reading.top, findings, budget, nullptr);
}

Recognised recognise_yosys(std::string_view bytes)
{
    return has_top_key(bytes, "modules") ? CERTAIN : UNLIKE;
}
