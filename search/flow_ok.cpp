// SPDX-License-Identifier: MIT
/* search/flow_ok.cpp: the invariants of flow networks and of their cuts, tested from scratch. */
#include <algorithm>

#include "core/holds.h"
#include "search/flow_cut.h"

/* N2 and N3 of one hyperedge. */
static bool flow_edge_ok(const FlowNet *net, const FlowNear *near)
{
    const FlowEdge *const e = &net->edges[near->edge];
    int64_t sum = 0, used = 0;
    int ends = 0;
    for (int j = e->begin; j < e[1].begin; j++) {
        sum += net->flow[j];
        used += std::max(net->flow[j], 0);
        ends += net->pins[j] <= SINK;
    }
    HOLDS(N2, ends < 2 && e[1].begin - e->begin >= 2);
    HOLDS(N3, sum == 0 && e->left >= 0 && used + e->left == near->capacity);
    return true;
}

bool flow_net_ok(const FlowNet *net, const HGraph *graph)
{
    for (int u = 0; u < net->nnodes; u++)
        for (int i = net->nodes[u].begin; i < net->nodes[u + 1].begin; i++) {
            const FlowArc arc = net->arcs[i];
            HOLDS(N1, net->pins[arc.pin] == u && arc.pin >= net->edges[arc.edge].begin &&
                          arc.pin < net->edges[arc.edge + 1].begin);
        }
    HOLDS(N1, net->nodes[net->nnodes].begin == net->npins);
    for (int i = 0; i < net->nnear; i++)
        if (net->near[i].edge >= 0 && !flow_edge_ok(net, &net->near[i])) return false;
    for (int v = 0; v < graph->ncells; v++) HOLDS(N4, net->number[v] == -1);
    for (int e = 0; e < graph->nnets; e++) HOLDS(N4, net->edgeof[e] == -1);
    return true;
}

static bool settled(const FlowNet *net, int x, int u)
{
    return net->nodes[u].level[x] == SETTLED;
}

/* F3 of one hyperedge as side x sees it. */
static bool half_settled_ok(const FlowNet *net, const FlowEdge *e, int x)
{
    if (e->half[x] != SETTLED || e->full[x] == SETTLED) return true;
    HOLDS(F3, e->left == 0);
    for (int j = e->begin; j < e[1].begin; j++)
        HOLDS(F3,
              (x == SOURCE ? net->flow[j] : -net->flow[j]) <= 0 || settled(net, x, net->pins[j]));
    return true;
}

bool flow_cut_ok(const FlowNet *net, const FlowCut *cut)
{
    for (int u = 0; u < net->nnodes; u++) {
        HOLDS(F1, !settled(net, SOURCE, u) || !settled(net, SINK, u));
        for (int x = SOURCE; x <= SINK; x++) {
            const FlowSide *const side = &cut->side[x];
            HOLDS(F2,
                  side->stale || !settled(net, 1 - x, u) || net->nodes[u].level[x] < side->base);
        }
    }
    for (int i = 0; i < net->nedges; i++)
        for (int x = SOURCE; x <= SINK; x++)
            if (!half_settled_ok(net, &net->edges[i], x)) return false;
    return true;
}
