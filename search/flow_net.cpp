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
    net->net = alloc_pool<int>(m, "flow: net");
    net->number = ismalloc__(n, -1, "flow: number");
    net->edgeof = ismalloc__(m, -1, "flow: edgeof");
    net->seen = ismalloc__(m, 0, "flow: seen");
    net->inside[0] = alloc_pool<int>(m, "flow: inside");
    net->inside[1] = alloc_pool<int>(m, "flow: inside");
    net->growth = 0;
    net->visits = 0;
    net->nnodes = net->nedges = net->npins = 0;
}

void close_flow_net(FlowNet *net)
{
    QXfree__(&net->nodes, &net->edges, &net->arcs, &net->pins, &net->flow, &net->vertex,
             &net->weight, &net->depth, &net->net, &net->number, &net->edgeof, &net->seen,
             &net->inside[0], &net->inside[1], LTERM);
}

/* What a growth of the region of one part may still take. */
struct Room {
    int part;
    int64_t left;
    int64_t least; // with less left it is over
};

static void take_pins(FlowNet *net, const Parts *parts, int e, int depth, Room *room)
{
    const HGraph *const graph = parts->graph;
    const int begin = graph->netptr[e], end = graph->netptr[e + 1];
    net->visits += end - begin;
    for (int j = begin; j < end; j++) {
        const int v = graph->netind[j];
        if (parts->part[v] != room->part || net->number[v] >= 0 || is_fixed(parts, v)) continue;
        if (graph->cellwgt[v] > room->left) continue;
        room->left -= graph->cellwgt[v];
        net->number[v] = net->nnodes;
        net->vertex[net->nnodes] = v;
        net->weight[net->nnodes] = graph->cellwgt[v];
        net->depth[net->nnodes++] = depth;
        if (room->left < room->least) return;
    }
}

/* Appends the vertices of room's part around the seeds, closest to the cut first. */
static void grow_region(FlowNet *net, const Parts *parts, int other, const int *seeds, int nseeds,
                        Room *room)
{
    const HGraph *const graph = parts->graph;
    const int stamp = ++net->growth;
    int head = net->nnodes;
    for (int i = 0; i < nseeds && room->left >= room->least; i++) {
        const int e = seeds[i];
        if (net->seen[e] == stamp || pins_in(parts, e, room->part) == 0 ||
            pins_in(parts, e, other) == 0 || capacity_between(parts, e, room->part, other) == 0)
            continue;
        net->seen[e] = stamp;
        take_pins(net, parts, e, 0, room);
    }
    for (; head < net->nnodes && room->left >= room->least; head++) {
        const int v = net->vertex[head], depth = net->depth[head] + 1;
        for (int i = graph->incptr[v]; i < graph->incptr[v + 1]; i++) {
            const int e = graph->incind[i];
            if (net->seen[e] == stamp) continue;
            net->seen[e] = stamp;
            if (capacity_between(parts, e, room->part, other) == 0) continue;
            take_pins(net, parts, e, depth, room);
            if (room->left < room->least) break;
        }
    }
}

/* Numbers the hyperedges that the region meets and counts their pins in it. */
static int count_inside(FlowNet *net, const HGraph *graph)
{
    int nmet = 0;
    for (int side = 0; side < 2; side++) {
        const int end = side == 0 ? net->first[1] : net->nnodes;
        for (int u = net->first[side]; u < end; u++) {
            const int v = net->vertex[u];
            net->visits += graph->incptr[v + 1] - graph->incptr[v];
            for (int i = graph->incptr[v]; i < graph->incptr[v + 1]; i++) {
                const int e = graph->incind[i];
                if (net->edgeof[e] < 0) {
                    net->edgeof[e] = nmet;
                    net->net[nmet] = e;
                    net->inside[0][nmet] = net->inside[1][nmet] = 0;
                    nmet++;
                }
                net->inside[side][net->edgeof[e]]++;
            }
        }
    }
    return nmet;
}

/* Which of the met hyperedges belong to the network; sets their capacities and where their pins
 * begin. The numbers of the others become -1. */
static void choose_edges(FlowNet *net, const Parts *parts, int a, int b, int nmet)
{
    int nedges = 0, npins = 0;
    int *const inside0 = net->inside[0], *const inside1 = net->inside[1];
    net->oldcut = 0;
    for (int i = 0; i < nmet; i++) {
        const int e = net->net[i], ina = pins_in(parts, e, a), inb = pins_in(parts, e, b);
        const int ends = (ina > inside0[i] ? 1 : 0) + (inb > inside1[i] ? 1 : 0);
        const int size = inside0[i] + inside1[i] + ends;
        const int64_t capacity = capacity_between(parts, e, a, b);
        if (ends == 2 || size < 2 || capacity == 0) {
            net->edgeof[e] = -1;
            continue;
        }
        if (ina > 0 && inb > 0) net->oldcut += capacity;
        net->edgeof[e] = nedges;
        net->net[nedges] = e;
        inside0[nedges] = ina > inside0[i]; // from here on: whether it has the source as a pin
        inside1[nedges] = inb > inside1[i];
        net->edges[nedges] = {npins,    static_cast<int>(std::min(capacity, MOST_FLOW)),
                              {-1, -1}, {-1, -1},
                              npins,    npins};
        npins += size;
        nedges++;
    }
    net->nedges = nedges;
    net->npins = npins;
    net->edges[nedges].begin = npins;
}

static void add_arc(FlowNet *net, int u, int edge, int *narcs)
{
    const int pin = net->edges[edge].any++;
    net->pins[pin] = u;
    net->flow[pin] = 0;
    net->arcs[(*narcs)++] = {edge, pin};
}

static void fill_pins(FlowNet *net, const HGraph *graph)
{
    int narcs = 0;
    for (int end = SOURCE; end <= SINK; end++) {
        net->nodes[end] = {narcs, narcs, {-1, -1}};
        for (int i = 0; i < net->nedges; i++)
            if (net->inside[end][i] != 0) add_arc(net, end, i, &narcs);
    }
    for (int u = 2; u < net->nnodes; u++) {
        const int v = net->vertex[u];
        net->nodes[u] = {narcs, narcs, {-1, -1}};
        for (int i = graph->incptr[v]; i < graph->incptr[v + 1]; i++)
            if (net->edgeof[graph->incind[i]] >= 0)
                add_arc(net, u, net->edgeof[graph->incind[i]], &narcs);
    }
    net->nodes[net->nnodes] = {narcs, narcs, {-1, -1}};
    assert(narcs == net->npins);
}

void build_flow_net(FlowNet *net, const Parts *parts, int a, int b, const int *seeds, int nseeds,
                    const int64_t limit[2])
{
    const HGraph *const graph = parts->graph;
    const int pair[2] = {a, b};
    int64_t total = 0;
    for (int p = 0; p < parts->nparts; p++) total += parts->weight[p];
    net->nnodes = 2;
    net->vertex[SOURCE] = net->vertex[SINK] = -1;
    net->depth[SOURCE] = net->depth[SINK] = INT_MAX;
    for (int side = 0; side < 2; side++) {
        Room room = {pair[side], limit[side], total / std::max(graph->ncells, 1)};
        net->first[side] = net->nnodes;
        grow_region(net, parts, pair[1 - side], seeds, nseeds, &room);
        net->weight[side] = parts->weight[pair[side]] - (limit[side] - room.left);
    }
    const int nmet = count_inside(net, graph);
    choose_edges(net, parts, a, b, nmet);
    fill_pins(net, graph);
    for (int i = 0; i < net->nedges; i++) net->edgeof[net->net[i]] = -1;
    for (int u = 2; u < net->nnodes; u++) net->number[net->vertex[u]] = -1;
    HEAVY_ASSERT(flow_net_ok(net, graph));
}

bool flow_net_ok(const FlowNet *net, const HGraph *graph)
{
    for (int u = 0; u < net->nnodes; u++)
        for (int i = net->nodes[u].begin; i < net->nodes[u + 1].begin; i++) {
            const FlowArc arc = net->arcs[i];
            if (net->pins[arc.pin] != u || arc.pin < net->edges[arc.edge].begin ||
                arc.pin >= net->edges[arc.edge + 1].begin)
                return false; // N1
        }
    if (net->nodes[net->nnodes].begin != net->npins) return false; // N1
    for (int i = 0; i < net->nedges; i++) {
        int64_t sum = 0;
        int ends = 0;
        for (int j = net->edges[i].begin; j < net->edges[i + 1].begin; j++) {
            sum += net->flow[j];
            ends += net->pins[j] <= SINK;
        }
        if (sum != 0 || net->edges[i].left < 0) return false;                            // N3
        if (ends > 1 || net->edges[i + 1].begin - net->edges[i].begin < 2) return false; // N2
    }
    for (int v = 0; v < graph->ncells; v++)
        if (net->number[v] != -1) return false; // N4
    for (int e = 0; e < graph->nnets; e++)
        if (net->edgeof[e] != -1) return false; // N4
    return true;
}
