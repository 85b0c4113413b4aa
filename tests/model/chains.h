/* SPDX-License-Identifier: MIT */
/* tests/model/chains.h: levels and settings for tests that coarsen. */
#ifndef ZORPEL_TESTS_CHAINS_H
#define ZORPEL_TESTS_CHAINS_H

#include "levels.h"

inline LevelLimits chain_limits(bool islands)
{
    LevelLimits limits;
    limits.mincells = 40;
    limits.maxcells = 160;
    limits.islands = islands;
    return limits;
}

inline PartCtrl chain_ctrl(Draw &draw, HGraph *graph)
{
    PartCtrl ctrl = random_bisection_ctrl(draw);
    ctrl.CoarsenTo = between(draw, 4, 30);
    ctrl.CType = between(draw, 1, 7);
    ctrl.MaxCellWgt =
        std::max(1, 2 * sum(graph->cellwgt, graph->ncells) / std::max(10, ctrl.CoarsenTo));
    ctrl.heavycells = below(draw, 2);
    return ctrl;
}

inline bool has_islands(const HGraph *graph)
{
    for (; graph != nullptr; graph = graph->coarser) {
        if (graph->nislands > 0) return true;
        for (int v = 0; v < graph->ncells; v++)
            if (graph->incptr[v] == graph->incptr[v + 1]) return true;
    }
    return false;
}

#endif
