/* SPDX-License-Identifier: MIT */
/* tests/unit/kway_levels.h: levels with a k-way partition, for tests. */
#ifndef ZORPEL_TESTS_KWAY_LEVELS_H
#define ZORPEL_TESTS_KWAY_LEVELS_H

#include "kway/kway_gains.h"
#include "levels.h"
#include "spare/kway_updates.h"

inline PartCtrl kway_ctrl(int nparts, float ratio)
{
    PartCtrl ctrl = make_ctrl();
    ctrl.nparts = nparts;
    ctrl.ubfactor = ratio;
    return ctrl;
}

/* K-way arrays with this partition, and the records. */
inline void set_parts(const PartCtrl &ctrl, HGraph *graph, const Ints &parts)
{
    QXfree__(&graph->where, &graph->kpwgts, &graph->nrinfo, &graph->crinfo, &graph->nrdata,
             &graph->crdata, &graph->kplace, LTERM);
    AllocateKwayRefinementMemory__(&ctrl, graph);
    std::copy(parts.begin(), parts.end(), graph->where);
    ComputeInitKwayGains__(&ctrl, graph);
}

/* The entry of v's list for a part; {-1, ...} when there is none. */
inline KwayPartDeg entry_of(const HGraph *graph, int v, int part)
{
    const CellKwayInfo &cell = graph->crinfo[v];
    for (int i = 0; i < cell.ndegrees; i++)
        if (cell.degrees[i].pid == part) return cell.degrees[i];
    return {-1, 0, 0, 0};
}

/* Moves v and brings all values and records up to date. */
inline void move_vertex(HGraph *graph, int v, int to)
{
    const int from = graph->where[v];
    Ints marker(at(graph->ncells), -1), updind(at(graph->ncells));
    graph->where[v] = to;
    graph->kpwgts[from] -= graph->cellwgt[v];
    graph->kpwgts[to] += graph->cellwgt[v];
    graph->mincut = fresh_cut(graph, graph->where);
    graph->minsoed = fresh_soed(graph, graph->where);
    KwayUpdateGainInfo__(graph, v, from, to, marker.data(), updind.data());
}

#endif
