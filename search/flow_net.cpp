// SPDX-License-Identifier: MIT
/* search/flow_net.cpp: the region around a cut and its network.
 *
 * Two breadth-first searches from the cut collect the region. The network is then filled from the
 * vertices of the region, never from the hyperedges: a hyperedge that lies mostly outside costs
 * its pins inside. Whether it has pins outside is known from the pin counts of the partition.
 */
#include "search/flow_net.h"

#include <algorithm>
#include <cstdlib>

#include "core/heavy_assert.h"
#include "core/memory.h"

void open_flow_net(FlowNet *net, const HGraph *graph)
{
    const size_t n = static_cast<size_t>(graph->ncells), m = static_cast<size_t>(graph->nnets);
    const size_t npins = static_cast<size_t>(graph->netptr[graph->nnets]) + 1;
    net->nodes = alloc_pool<FlowNode>(n + 3, "flow: nodes");
    net->edges = alloc_pool<FlowEdge>(m + 1, "flow: edges");
    net->arcs = alloc_pool<FlowArc>(npins, "flow: arcs");
    net->pins = alloc_pool<int>(npins, "flow: pins");
    net->flow = alloc_pool<int>(npins, "flow: flow");
    net->vertex = alloc_pool<int>(n + 2, "flow: vertex");
    net->weight = alloc_pool<int64_t>(n + 2, "flow: weight");
    net->depth = alloc_pool<int>(n + 2, "flow: depth");
    net->near = alloc_pool<FlowNear>(m, "flow: near");
    net->number = ismalloc__(n, -1, "flow: number");
    net->edgeof = ismalloc__(m, -1, "flow: edgeof");
    net->visits = 0;
    net->nnodes = net->nedges = net->npins = 0;
}

void close_flow_net(FlowNet *net)
{
    QXfree__(&net->nodes, &net->edges, &net->arcs, &net->pins, &net->flow, &net->vertex,
             &net->weight, &net->depth, &net->near, &net->number, &net->edgeof, LTERM);
}

/* What a growth of the region of one part may still take. */
struct Room {
    int side; // 0 or 1: first or second part of the pair
    int part;
    int end;       // nodes at which it is over
    int64_t left;  // weight
    int64_t least; // with less left it is over
};

static bool is_full(const FlowNet *net, const Room *room)
{
    return room->left < room->least || net->nnodes >= room->end;
}

/* The two parts of a network being built. */
struct Pair {
    const Parts *parts;
    int a, b;
};

/* The record of hyperedge e, made when it is met first. */
static FlowNear *near_of(FlowNet *net, const Pair *pair, int e)
{
    if (net->edgeof[e] >= 0) return &net->near[net->edgeof[e]];
    const Parts *const parts = pair->parts;
    const int ina = pins_in(parts, e, pair->a), inb = pins_in(parts, e, pair->b);
    const bool others = parts->touched[e] > (ina > 0 ? 1 : 0) + (inb > 0 ? 1 : 0);
    const int64_t capacity = price_of_cut(parts->objective, parts->graph->netwgt[e], others);
    assert(net->nnear < parts->graph->nnets && capacity >= 0);
    FlowNear *const near = &net->near[net->nnear];
    *near = {e, static_cast<int>(std::min(capacity, MOST_FLOW)), {ina, inb}, {0, 0}, 0, -1};
    net->edgeof[e] = net->nnear++;
    return near;
}

/* Takes the pins of a hyperedge into the region, if its growth meets it for the first time. */
static void take_pins(FlowNet *net, const Parts *parts, FlowNear *near, int depth, Room *room)
{
    const HGraph *const graph = parts->graph;
    if ((near->growths & 1 << room->side) != 0) return;
    near->growths |= 1 << room->side;
    if (near->capacity == 0 || near->inside[room->side] == near->npins[room->side]) return;
    const int begin = graph->netptr[near->net], end = graph->netptr[near->net + 1];
    net->visits += end - begin;
    for (int j = begin; j < end; j++) {
        const int v = graph->netind[j];
        if (parts->part[v] != room->part || net->number[v] >= 0 || is_fixed(parts, v)) continue;
        if (graph->cellwgt[v] > room->left) continue;
        assert(net->nnodes < graph->ncells + 2);
        room->left -= graph->cellwgt[v];
        net->number[v] = net->nnodes;
        net->vertex[net->nnodes] = v;
        net->weight[net->nnodes] = graph->cellwgt[v];
        net->depth[net->nnodes++] = depth;
        if (is_full(net, room)) return;
    }
}

/* Appends the vertices of room's part around the seeds, closest to the cut first. */
static void grow_region(FlowNet *net, const Pair *pair, const int *seeds, int nseeds, Room *room)
{
    const HGraph *const graph = pair->parts->graph;
    int head = net->nnodes;
    for (int i = 0; i < nseeds && !is_full(net, room); i++) {
        FlowNear *const near = near_of(net, pair, seeds[i]);
        if (near->npins[0] > 0 && near->npins[1] > 0) take_pins(net, pair->parts, near, 0, room);
    }
    for (; head < net->nnodes && !is_full(net, room); head++) {
        const int v = net->vertex[head], depth = net->depth[head] + 1;
        for (int i = graph->incptr[v]; i < graph->incptr[v + 1]; i++) {
            take_pins(net, pair->parts, near_of(net, pair, graph->incind[i]), depth, room);
            if (is_full(net, room)) break;
        }
    }
}

/* Counts the pins inside of every hyperedge that the region meets. met receives the places in near
 * of the hyperedges of each node in turn. */
static void count_inside(FlowNet *net, const Pair *pair, int *met)
{
    const HGraph *const graph = pair->parts->graph;
    int nmet = 0;
    for (int u = 2; u < net->nnodes; u++) {
        const int v = net->vertex[u], side = u >= net->first[1];
        for (int i = graph->incptr[v]; i < graph->incptr[v + 1]; i++) {
            FlowNear *const near = near_of(net, pair, graph->incind[i]);
            near->inside[side]++;
            assert(near->inside[side] <= near->npins[side]);
            met[nmet++] = net->edgeof[graph->incind[i]];
        }
    }
    net->visits += nmet;
}

/* Gives numbers and places for their pins to the hyperedges that belong to the network. */
static void choose_edges(FlowNet *net)
{
    int nedges = 0, npins = 0;
    net->oldcut = 0;
    for (int i = 0; i < net->nnear; i++) {
        FlowNear *const near = &net->near[i];
        const int ends = near->npins[0] > near->inside[0] && near->npins[1] > near->inside[1]
                             ? 2
                             : near->npins[0] + near->npins[1] > near->inside[0] + near->inside[1];
        const int size = near->inside[0] + near->inside[1] + ends;
        net->edgeof[near->net] = -1;
        if (ends == 2 || size < 2 || near->capacity == 0) continue;
        if (near->npins[0] > 0 && near->npins[1] > 0) net->oldcut += near->capacity;
        assert(near->npins[0] >= near->inside[0] && near->npins[1] >= near->inside[1]);
        near->edge = nedges;
        net->edges[nedges++] = {npins, near->capacity, {-1, -1}, {-1, -1}, npins, npins};
        npins += size;
    }
    assert(net->oldcut >= 0);
    net->nedges = nedges;
    net->npins = npins;
    net->edges[nedges].begin = npins;
}

static void add_arc(FlowNet *net, int u, int edge, int *narcs)
{
    const int pin = net->edges[edge].any++;
    assert(0 <= edge && edge < net->nedges && pin < net->edges[edge + 1].begin);
    net->pins[pin] = u;
    net->arcs[(*narcs)++] = {edge, pin};
}

/* Fills arcs and pins; met is what count_inside gave. */
static void fill_pins(FlowNet *net, const HGraph *graph, const int *met)
{
    int narcs = 0, nmet = 0;
    for (int end = SOURCE; end <= SINK; end++) {
        net->nodes[end] = {narcs, narcs, {-1, -1}};
        for (int i = 0; i < net->nnear; i++) {
            const FlowNear *const near = &net->near[i];
            if (near->edge >= 0 && near->npins[end] > near->inside[end])
                add_arc(net, end, near->edge, &narcs);
        }
    }
    for (int u = 2; u < net->nnodes; u++) {
        const int v = net->vertex[u];
        net->nodes[u] = {narcs, narcs, {-1, -1}};
        for (int i = graph->incptr[v]; i < graph->incptr[v + 1]; i++) {
            const int edge = net->near[met[nmet++]].edge;
            if (edge >= 0) add_arc(net, u, edge, &narcs);
        }
        net->number[v] = -1;
    }
    net->nodes[net->nnodes] = {narcs, narcs, {-1, -1}};
    assert(narcs == net->npins);
}

void build_flow_net(FlowNet *net, const Parts *parts, int a, int b, const int *seeds, int nseeds,
                    const int64_t limit[2], int most)
{
    const int part[2] = {a, b};
    assert(a != b && limit[0] >= 0 && limit[1] >= 0 && most >= 0);
    const Pair pair = {parts, a, b};
    net->nnear = 0;
    int64_t total = 0;
    for (int p = 0; p < parts->nparts; p++) total += parts->weight[p];
    net->nnodes = 2;
    net->vertex[SOURCE] = net->vertex[SINK] = -1;
    net->depth[SOURCE] = net->depth[SINK] = INT_MAX;
    for (int side = 0; side < 2; side++) {
        net->first[side] = net->nnodes;
        const int end = most < INT_MAX - net->nnodes ? net->nnodes + most : INT_MAX;
        Room room = {side, part[side], end, limit[side], total / std::max(parts->graph->ncells, 1)};
        grow_region(net, &pair, seeds, nseeds, &room);
        net->weight[side] = parts->weight[part[side]] - (limit[side] - room.left);
        assert(room.left >= 0 && net->weight[side] >= 0);
    }
    int *const met = net->flow; // no flow yet
    count_inside(net, &pair, met);
    choose_edges(net);
    fill_pins(net, parts->graph, met);
    std::fill(net->flow, net->flow + net->npins, 0);
    HEAVY_ASSERT(flow_net_ok(net, parts->graph));
}
