// SPDX-License-Identifier: MIT
/* zorpelx/files/flatten.cpp: the hypergraph of a netlist: its top module with all modules below
 * opened.
 *
 * Modules are opened from the top, each cell's before what follows the cell. A net gets a number
 * when something first meets it in a module; ports of an opened module carry the numbers down.
 * Where a module joins two of its ports, their nets become one (union-find). Last, the nets that
 * join vertices are numbered in the order in which vertices meet them, and the best name of each is
 * looked for among the wires of all opened modules. Where a flat module has its nets in this order
 * already, numbers and names stay as they are.
 */
#include <algorithm>
#include <cassert>
#include <numeric>

#include "casts.h"
#include "clock_nets.h"
#include "fileerror.h"
#include "netlist.h"
#include "told.h"
#include "zorpelx.h"

constexpr int32_t NO_NET = -2; // of a bit that nothing has met yet

/* A module opened once.
 *   net  [nbits of the module] what each bit is joined to: a net, CONSTANT_BIT or NO_NET */
struct Instance {
    size_t module;
    int32_t depth;
    std::string path; // with its separator; empty for the top
    std::vector<int32_t> net;
};

/* The best name of a net so far: bit `bit` of wire `wire` of an instance, or its net `wire`. */
struct NameChoice {
    int32_t instance, wire, bit;
};

/* Pins are kept by vertex, each with the number that its net had then. */
struct Flattening {
    const NetDesign &design;
    Budget *budget;
    std::vector<NetOrigin> *origins;
    Hypergraph graph;
    NetUses uses = {};
    std::vector<int32_t> opened = {}; // by type: the module to open, -1 for none
    std::vector<bool> open = {};      // modules on the path
    bool numbered = false;            // nets keep the numbers that the top module gives them
    std::vector<Instance> instances = {};
    std::vector<int32_t> joined = {};    // union-find over nets
    std::vector<unsigned char> use = {}; // by net
    std::vector<int64_t> first = {};     // by vertex: its first pin
    std::vector<int32_t> pins = {};
    int64_t nconstants = 0; // pins of constants
    uint64_t steps = 0;
};

static void look_at_clock(Flattening *flat)
{
    constexpr uint64_t STEPS = uint64_t{1} << 16;
    if (++flat->steps % STEPS == 0) check_time(*flat->budget);
}

/* Whether two bits of the ports are one net. */
static bool joins_ports(const NetModule &module)
{
    std::vector<int32_t> bits;
    for (const NetBundle &port : module.ports)
        bits.insert(bits.end(), module.bits.begin() + port.bit,
                    module.bits.begin() + port.bit + port.width);
    std::sort(bits.begin(), bits.end());
    const auto net = std::upper_bound(bits.begin(), bits.end(), CONSTANT_BIT);
    return std::adjacent_find(net, bits.end()) != bits.end();
}

/* A module without cells stands for something that is described elsewhere, unless it is only
 * wires. */
static bool is_leaf(const NetModule &module)
{
    return module.blackbox || (module.cells.empty() && !joins_ports(module));
}

static std::vector<int32_t> modules_to_open(const NetDesign &design)
{
    std::vector<int32_t> opened(at(count_names(design.types.names)), -1);
    for (size_t m = 0; m < design.modules.size(); m++) {
        const int32_t type = find_name(design.types, design.modules[m].name);
        if (type >= 0 && !is_leaf(design.modules[m])) opened[at(type)] = static_cast<int32_t>(m);
    }
    return opened;
}

static int32_t root_of(Flattening *flat, int32_t net)
{
    std::vector<int32_t> &joined = flat->joined;
    while (joined[at(net)] != net) net = joined[at(net)] = joined[at(joined[at(net)])];
    return net;
}

static int32_t new_net(Flattening *flat)
{
    constexpr size_t MOST = INT32_MAX - 1;
    if (flat->joined.size() >= MOST)
        file_error(ZORPELX_BAD_INPUT, "%s: more nets than 32 bits count",
                   flat->budget->name.c_str());
    const int32_t net = static_cast<int32_t>(flat->joined.size());
    push_charged(flat->budget, &flat->joined, net);
    push_charged(flat->budget, &flat->use, static_cast<unsigned char>(USE_PLAIN));
    return net;
}

/* The net of a bit of an instance; CONSTANT_BIT if it is a constant. */
static int32_t net_of(Flattening *flat, size_t instance, int32_t bit)
{
    if (bit == CONSTANT_BIT || flat->numbered) return bit;
    int32_t *const net = &flat->instances[instance].net[at(bit)];
    if (*net == NO_NET) *net = new_net(flat);
    return *net;
}

static void add_vertex(Flattening *flat, int32_t kind, std::string_view name, NetOrigin origin)
{
    Hypergraph *const graph = &flat->graph;
    constexpr int64_t MOST = INT32_MAX - 1;
    if (graph->nvertices >= MOST)
        file_error(ZORPELX_BAD_INPUT, "%s: more cells than 32 bits count",
                   flat->budget->name.c_str());
    graph->nvertices++;
    push_charged(flat->budget, &graph->kind, kind);
    push_charged(flat->budget, &graph->vertexwgt, static_cast<int64_t>(origin.port ? 0 : 1));
    push_charged(flat->budget, &flat->first, static_cast<int64_t>(flat->pins.size()));
    add_name(&graph->vertexnames, name, flat->budget);
    if (flat->origins != nullptr) push_charged(flat->budget, flat->origins, origin);
    look_at_clock(flat);
}

static void add_vertex_pin(Flattening *flat, int32_t net, unsigned char use)
{
    if (net == CONSTANT_BIT) {
        flat->nconstants++;
        return;
    }
    push_charged(flat->budget, &flat->pins, net);
    if (use != USE_PLAIN) flat->use[at(net)] |= use;
}

static int64_t connections_end(const NetModule &module, size_t c)
{
    return c + 1 < module.cells.size() ? module.cells[c + 1].connection
                                       : static_cast<int64_t>(module.connections.size());
}

/* Prefetches the nets of cells to come: they are scattered over the module. */
static void prefetch_nets(const Instance &in, const NetModule &module, size_t bit)
{
    constexpr size_t AHEAD = 32, EACH = 4; // bits
    if (bit + AHEAD + EACH > module.bits.size()) return;
    for (size_t i = bit + AHEAD; i < bit + AHEAD + EACH; i++)
        if (module.bits[i] != CONSTANT_BIT) __builtin_prefetch(&in.net[at(module.bits[i])]);
}

static void add_cell(Flattening *flat, size_t instance, size_t c)
{
    const Instance &in = flat->instances[instance];
    const NetModule &module = flat->design.modules[in.module];
    const NetCell &cell = module.cells[c];
    const NetOrigin origin = {static_cast<int32_t>(in.module), static_cast<int32_t>(c), 0, false};
    if (in.path.empty())
        add_vertex(flat, cell.type, cell.name, origin);
    else
        add_vertex(flat, cell.type, in.path + std::string(cell.name), origin);
    int64_t bit = cell.bit;
    if (!flat->numbered) prefetch_nets(in, module, at(bit));
    for (int64_t i = cell.connection; i < connections_end(module, c); i++) {
        const NetConnection &connection = module.connections[at(i)];
        const unsigned char use = use_of(flat->uses, cell.type, connection.port);
        for (int32_t b = 0; b < connection.width; b++, bit++)
            add_vertex_pin(flat, net_of(flat, instance, module.bits[at(bit)]), use);
    }
}

static size_t new_instance(Flattening *flat, size_t module, int32_t depth, std::string path)
{
    const size_t nbits = flat->numbered ? 0 : at(flat->design.modules[module].nbits);
    charge(flat->budget, sizeof(Instance) + path.size() + nbits * sizeof(int32_t));
    flat->instances.push_back({module, depth, std::move(path), {}});
    flat->instances.back().net.assign(nbits, NO_NET);
    look_at_clock(flat);
    return flat->instances.size() - 1;
}

/* A bit of a port of an opened module is joined to what the cell connects there. */
static void join_bit(Flattening *flat, int32_t *inner, int32_t outer)
{
    if (*inner == NO_NET || outer == CONSTANT_BIT) {
        if (*inner == NO_NET) *inner = outer;
        return;
    }
    if (*inner == CONSTANT_BIT)
        *inner = outer;
    else
        flat->joined[at(root_of(flat, outer))] = root_of(flat, *inner);
}

static const NetBundle *port_called(const NetModule &module, std::string_view name)
{
    for (const NetBundle &port : module.ports)
        if (port.name == name) return &port;
    return nullptr;
}

/* The port that a connection is to; those without names, "$1" and so on, go by their order. */
static const NetBundle *connected_port(const NetModule &module, std::string_view name)
{
    const NetBundle *const port = port_called(module, name);
    if (port != nullptr || name.size() < 2 || name[0] != '$') return port;
    const std::string number(name.substr(1));
    if (number.find_first_not_of("0123456789") != std::string::npos) return nullptr;
    const size_t i = strtoul(number.c_str(), nullptr, 10);
    return i >= 1 && i <= module.ports.size() ? &module.ports[i - 1] : nullptr;
}

/* Joins the ports of the inner instance to what cell c of the outer one connects. */
static void join_ports(Flattening *flat, size_t outer, size_t c, size_t inner)
{
    const NetModule &module = flat->design.modules[flat->instances[outer].module];
    const NetModule &below = flat->design.modules[flat->instances[inner].module];
    int64_t bit = module.cells[c].bit;
    for (int64_t i = module.cells[c].connection; i < connections_end(module, c); i++) {
        const NetConnection &connection = module.connections[at(i)];
        const NetBundle *const port =
            connected_port(below, name_of(flat->design.portnames.names, connection.port));
        for (int32_t b = 0; b < connection.width; b++, bit++) {
            if (port == nullptr || b >= port->width) continue;
            const int32_t local = below.bits[at(port->bit + b)];
            if (local == CONSTANT_BIT) continue;
            const int32_t net = net_of(flat, outer, module.bits[at(bit)]);
            join_bit(flat, &flat->instances[inner].net[at(local)], net);
        }
    }
}

static void open_module(Flattening *flat, size_t instance);

static void open_cell(Flattening *flat, size_t instance, size_t c, size_t below)
{
    constexpr int32_t DEEPEST = 500;
    const Instance &in = flat->instances[instance];
    const NetModule &module = flat->design.modules[in.module];
    if (in.depth >= DEEPEST)
        file_error(ZORPELX_BAD_INPUT, "%s: more than %d modules stand one in another",
                   flat->budget->name.c_str(), DEEPEST);
    if (flat->open[below])
        file_error(ZORPELX_BAD_INPUT, "%s: module '%.100s' is a part of itself",
                   flat->budget->name.c_str(),
                   std::string(flat->design.modules[below].name).c_str());
    std::string path = in.path + std::string(module.cells[c].name);
    path += '.';
    const size_t inner = new_instance(flat, below, in.depth + 1, std::move(path));
    join_ports(flat, instance, c, inner);
    open_module(flat, inner);
}

static void open_module(Flattening *flat, size_t instance)
{
    const size_t m = flat->instances[instance].module;
    const NetModule &module = flat->design.modules[m];
    flat->open[m] = true;
    for (size_t c = 0; c < module.cells.size(); c++) {
        const int32_t below = flat->opened[at(module.cells[c].type)];
        if (below < 0)
            add_cell(flat, instance, c);
        else
            open_cell(flat, instance, c, at(below));
    }
    flat->open[m] = false;
}

/* "data[3]" for one bit of several. */
static void append_bit(std::string *name, const NetBundle &bundle, int32_t bit)
{
    if (bundle.width == 1 && bundle.offset == 0) return;
    const int64_t place = bundle.upto ? bundle.width - 1 - bit : bit;
    *name += '[' + std::to_string(bundle.offset + place) + ']';
}

static void add_ports(Flattening *flat, size_t top, int32_t kind)
{
    const NetModule &module = flat->design.modules[top];
    for (size_t p = 0; p < module.ports.size(); p++) {
        const NetBundle &port = module.ports[p];
        for (int32_t b = 0; b < port.width; b++) {
            std::string name(port.output ? flat->design.outputs : "");
            name += port.name;
            append_bit(&name, port, b);
            const NetOrigin origin = {static_cast<int32_t>(top), static_cast<int32_t>(p), b, true};
            add_vertex(flat, kind, name, origin);
            add_vertex_pin(flat, net_of(flat, 0, module.bits[at(port.bit + b)]), USE_PLAIN);
        }
    }
}

/* Hyperedges in the order in which vertices meet them; number[] of nets that none meets is -1.
 * Where no cell was opened the nets have these numbers already. */
static std::vector<int32_t> number_nets(Flattening *flat)
{
    charge(flat->budget, flat->joined.size() * sizeof(int32_t));
    std::vector<int32_t> number(flat->joined.size(), -1);
    if (flat->instances.size() == 1) {
        std::iota(number.begin(), number.end(), 0);
        flat->graph.nnets = static_cast<int64_t>(number.size());
        return number;
    }
    int32_t count = 0;
    for (int32_t &net : flat->pins) {
        const int32_t root = root_of(flat, net);
        if (number[at(root)] < 0) number[at(root)] = count++;
        net = number[at(root)];
    }
    for (size_t n = 0; n < number.size(); n++)
        number[n] = number[at(root_of(flat, static_cast<int32_t>(n)))];
    flat->graph.nnets = count;
    return number;
}

static std::vector<unsigned char> uses_by_edge(const Flattening &flat,
                                               const std::vector<int32_t> &number, int64_t nnets)
{
    std::vector<unsigned char> use(at(nnets), USE_PLAIN);
    for (size_t n = 0; n < number.size(); n++)
        if (number[n] >= 0) use[at(number[n])] |= flat.use[n];
    return use;
}

static const NetModule &module_of(const Flattening &flat, const NameChoice &choice)
{
    return flat.design.modules[flat.instances[at(choice.instance)].module];
}

/* Whether a program made the name. Of names without more to say of them those begin with a dollar.
 */
static bool is_hidden(const Flattening &flat, const NameChoice &choice)
{
    const NetModule &module = module_of(flat, choice);
    if (module.netnames == nullptr) return module.wires[at(choice.wire)].hidden;
    const std::string_view name = name_of(*module.netnames, choice.wire);
    return !name.empty() && name[0] == '$';
}

/* Whether a name is better than the one that a net has: given by the designer rather than made by
 * a program, then further up, then earlier. */
static bool is_better(const Flattening &flat, const NameChoice &had, const NameChoice &found)
{
    if (had.instance < 0) return true;
    const bool hidden = is_hidden(flat, found), was_hidden = is_hidden(flat, had);
    if (hidden != was_hidden) return was_hidden;
    return flat.instances[at(found.instance)].depth < flat.instances[at(had.instance)].depth;
}

/* What a net that joins vertices may be called. */
static void offer_name(const Flattening &flat, const std::vector<int32_t> &number, int32_t net,
                       const NameChoice &found, std::vector<NameChoice> *chosen)
{
    if (net < 0 || number[at(net)] < 0) return;
    NameChoice *const had = &(*chosen)[at(number[at(net)])];
    if (is_better(flat, *had, found)) *had = found;
}

static void choose_names_of(const Flattening &flat, size_t instance,
                            const std::vector<int32_t> &number, std::vector<NameChoice> *chosen)
{
    const Instance &in = flat.instances[instance];
    const NetModule &module = flat.design.modules[in.module];
    const int32_t number_of_instance = static_cast<int32_t>(instance);
    for (size_t w = 0; w < module.wires.size(); w++) {
        const NetBundle &wire = module.wires[w];
        for (int32_t b = 0; b < wire.width; b++) {
            const int32_t bit = module.bits[at(wire.bit + b)];
            offer_name(flat, number, bit < 0 ? NO_NET : in.net[at(bit)],
                       {number_of_instance, static_cast<int32_t>(w), b}, chosen);
        }
    }
    for (int32_t b = 0; module.netnames != nullptr && b < module.nbits; b++)
        offer_name(flat, number, in.net[at(b)], {number_of_instance, b, 0}, chosen);
}

static std::string net_name(const Flattening &flat, const NameChoice &choice, int64_t e)
{
    if (choice.instance < 0) return "$net" + std::to_string(e + 1);
    const NetModule &module = module_of(flat, choice);
    const std::string &path = flat.instances[at(choice.instance)].path;
    if (module.netnames != nullptr)
        return path + std::string(name_of(*module.netnames, choice.wire));
    const NetBundle &wire = module.wires[at(choice.wire)];
    std::string name = path + std::string(wire.name);
    append_bit(&name, wire, choice.bit);
    return name;
}

static Names net_names(const Flattening &flat, const std::vector<int32_t> &number, int64_t nnets)
{
    charge(flat.budget, at(nnets) * sizeof(NameChoice));
    std::vector<NameChoice> chosen(at(nnets), NameChoice{-1, -1, -1});
    for (size_t i = 0; i < flat.instances.size(); i++) choose_names_of(flat, i, number, &chosen);
    check_time(*flat.budget);
    Names names;
    reserve_charged(flat.budget, &names.start, at(nnets) + 1);
    for (int64_t e = 0; e < nnets; e++)
        add_name(&names, net_name(flat, chosen[at(e)], e), flat.budget);
    give_back(flat.budget, at(nnets) * sizeof(NameChoice));
    return names;
}

/* Pins by hyperedge instead of by vertex: count, prefix sum, place. */
static void add_pins(Flattening *flat, Builder *builder)
{
    const size_t npins = flat->pins.size(), nvertices = flat->first.size();
    if (npins > INT32_MAX)
        file_error(ZORPELX_BAD_INPUT, "%s: more than %d vertex entries, which 32 bits do not count",
                   flat->budget->name.c_str(), INT32_MAX);
    std::vector<int64_t> *const start = &builder->graph.start;
    std::vector<int32_t> *const pins = &builder->graph.pins;
    reserve_charged(flat->budget, start, at(flat->graph.nnets) + 1);
    reserve_charged(flat->budget, pins, npins);
    start->assign(at(flat->graph.nnets) + 1, 0);
    pins->resize(npins);
    constexpr size_t AHEAD = 16;
    for (size_t i = 0; i < npins; i++) {
        if (i + AHEAD < npins) __builtin_prefetch(&(*start)[at(flat->pins[i + AHEAD]) + 1], 1);
        (*start)[at(flat->pins[i]) + 1]++;
    }
    for (size_t e = 1; e < start->size(); e++) (*start)[e] += (*start)[e - 1];
    for (size_t v = 0; v < nvertices; v++) {
        const size_t end = v + 1 < nvertices ? at(flat->first[v + 1]) : npins;
        for (size_t i = at(flat->first[v]); i < end; i++) {
            if (i + 2 * AHEAD < npins) {
                __builtin_prefetch(&(*start)[at(flat->pins[i + 2 * AHEAD])], 1);
                __builtin_prefetch(&(*pins)[at((*start)[at(flat->pins[i + AHEAD])])], 1);
            }
            (*pins)[at((*start)[at(flat->pins[i])]++)] = static_cast<int32_t>(v);
        }
    }
    for (size_t e = start->size() - 1; e > 0; e--) (*start)[e] = (*start)[e - 1];
    start->front() = 0;
    check_time(*flat->budget);
    give_back(flat->budget, flat->pins.capacity() * sizeof flat->pins[0]);
    flat->pins = {};
}

static void tell_left_out(const Flattening &flat, Findings *findings)
{
    if (flat.design.nconstants > 0)
        tell_note(findings, {0, 0},
                  counted(flat.design.nconstants, "cell that drives a constant is left out",
                          "cells that drive constants are left out"));
    if (flat.nconstants > 0)
        tell_note(findings, {0, 0},
                  counted(flat.nconstants, "pin is joined to a constant and left out",
                          "pins are joined to constants and left out"));
    if (flat.instances.size() > 1)
        tell_note(findings, {0, 0},
                  counted(static_cast<int64_t>(flat.instances.size()) - 1,
                          "cell is opened: its type is a module of the file",
                          "cells are opened: their types are modules of the file"));
}

/* Ports have a kind of their own, after the types of cells. */
static int32_t port_kind(const NetDesign &design, Names *kinds, Budget *budget)
{
    *kinds = design.types.names;
    charge(budget, kinds->text.size() + kinds->start.size() * sizeof(int64_t));
    add_name(kinds, PORT_KIND, budget);
    return static_cast<int32_t>(count_names(*kinds) - 1);
}

/* A design of nothing but ports is balanced by them. */
static void weigh_ports(Hypergraph *graph)
{
    const bool cells = total_weight(graph->vertexwgt) > 0;
    const bool ports = total_weight(graph->vertexwgt) < graph->nvertices;
    graph->vertexweights = cells && ports;
    if (!cells) std::fill(graph->vertexwgt.begin(), graph->vertexwgt.end(), int64_t{1});
}

/* Numbers the nets that vertices meet and names them; returns the uses of each. */
static std::vector<unsigned char> number_and_name(Flattening *flat, Names *names)
{
    const std::vector<int32_t> number = number_nets(flat);
    *names = net_names(*flat, number, flat->graph.nnets);
    give_back(flat->budget, number.size() * sizeof number[0]);
    return uses_by_edge(*flat, number, flat->graph.nnets);
}

/* The same where the top module numbers its nets so. */
static std::vector<unsigned char> keep_numbers(Flattening *flat, Names *names)
{
    std::swap(*names, *module_of(*flat, {0, 0, 0}).netnames);
    flat->graph.nnets = count_names(*names);
    return std::move(flat->use);
}

/* The record of what was met. */
static Hypergraph finish(Flattening *flat, Findings *findings)
{
    Names netnames;
    const std::vector<unsigned char> use =
        flat->numbered ? keep_numbers(flat, &netnames) : number_and_name(flat, &netnames);
    Builder builder = open_builder(findings, flat->budget);
    need_vertices(&builder, flat->graph.nvertices);
    need_nets(&builder, flat->graph.nnets);
    add_pins(flat, &builder);
    weigh_ports(&flat->graph);
    builder.graph.vertexweights = flat->graph.vertexweights;
    builder.graph.vertexwgt = std::move(flat->graph.vertexwgt);
    builder.graph.vertexnames = std::move(flat->graph.vertexnames);
    builder.graph.kind = std::move(flat->graph.kind);
    builder.graph.kindnames = std::move(flat->graph.kindnames);
    builder.graph.netnames = std::move(netnames);
    Hypergraph graph = finish_hypergraph(&builder);
    tell_left_out(*flat, findings);
    tell_clock_nets(graph, use, findings);
    return graph;
}

/* M4 */
[[maybe_unused]] static bool order_ok(const NetModule &module)
{
    int32_t largest = -1;
    for (const int32_t bit : module.bits) {
        if (bit < 0 || bit > largest + 1) return false;
        largest = std::max(largest, bit);
    }
    return module.netnames != nullptr && count_names(*module.netnames) == largest + 1;
}

/* Nets keep their numbers where no cell is opened and the top module has them in order (M4). */
static void keep_net_numbers(Flattening *flat, const NetModule &module)
{
    flat->numbered = module.ordered && std::all_of(flat->opened.begin(), flat->opened.end(),
                                                   [](int32_t below) { return below < 0; });
    if (!flat->numbered) return;
    assert(order_ok(module));
    charge(flat->budget, at(module.nbits));
    flat->use.assign(at(module.nbits), USE_PLAIN);
}

/* Room for what the top module has by itself. */
static void reserve_for_top(Flattening *flat, const NetModule &module)
{
    const size_t ncells = module.cells.size();
    reserve_charged(flat->budget, &flat->graph.kind, ncells);
    reserve_charged(flat->budget, &flat->graph.vertexwgt, ncells);
    reserve_charged(flat->budget, &flat->first, ncells);
    reserve_charged(flat->budget, &flat->pins, module.bits.size());
    if (!flat->numbered) reserve_charged(flat->budget, &flat->joined, at(module.nbits));
    reserve_charged(flat->budget, &flat->graph.vertexnames.start, ncells + 1);
}

Hypergraph flatten_design(const NetDesign &design, size_t top, Findings *findings, Budget *budget,
                          std::vector<NetOrigin> *origins)
{
    Flattening flat = {design, budget, origins, {0, 0, false, false, {0}, {}, {}, {}}};
    flat.uses = uses_of(design);
    flat.opened = modules_to_open(design);
    flat.open.assign(design.modules.size(), false);
    keep_net_numbers(&flat, design.modules[top]);
    reserve_for_top(&flat, design.modules[top]);
    const int32_t kind = port_kind(design, &flat.graph.kindnames, budget);
    open_module(&flat, new_instance(&flat, top, 0, ""));
    add_ports(&flat, top, kind);
    return finish(&flat, findings);
}
