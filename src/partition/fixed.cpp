// SPDX-License-Identifier: MIT
/* partition/fixed.cpp: pre-assigned vertices.
 *
 * All vertices fixed to one part are merged into one; partitioning keeps these merged vertices
 * apart, each part receiving exactly one, so that the parts can be renumbered afterwards.
 */
#include "partition/fixed.h"

#include <cassert>

#include "coarsen/contract.h"
#include "core/memory.h"
#include "core/vectors.h"

static void free_incidence(HGraph *graph)
{
    QXfree__(&graph->incptr, &graph->incind, &graph->adjwgt, &graph->edgewgt, LTERM);
}

void CompressFixedCells__(PartCtrl *ctrl, HGraph *graph, const int *fix)
{
    const int n = graph->ncells;
    const size_t size = static_cast<size_t>(n);
    int *const mptr = ismalloc__(size + static_cast<size_t>(ctrl->nparts) + 1, 0,
                                 "CompressFixedCells: graph->mptr"); // a group a part may be empty
    int *const mind = imalloc__(size, "CompressFixedCells: graph->mind");
    int *const cellmap = ismalloc__(size, -1, "CompressFixedCells: graph->cellmap");
    int ncompressed = ctrl->nparts;
    for (int v = 0; v < n; v++) {
        assert(-1 <= fix[v] && fix[v] < ctrl->nparts);
        cellmap[v] = fix[v] != -1 ? fix[v] : ncompressed++;
        mptr[cellmap[v]]++;
    }
    counts_to_starts(ncompressed, mptr);
    for (int v = 0; v < n; v++) mind[mptr[cellmap[v]]++] = v;
    ends_to_starts(ncompressed, mptr);
    assert(mptr[ncompressed] == n);
    graph->mptr = mptr;
    graph->mind = mind;
    graph->cellmap = cellmap;
    CreateIncidentHGraph__(graph);
    CreateCoarseHGraph__(ctrl, graph, ncompressed);
    free_incidence(graph);
    free_incidence(graph->coarser);
}

void ProjectFixedCells__(const PartCtrl *ctrl, const HGraph *graph, int *part, const int *fpart)
{
    int *imap = ismalloc__(static_cast<size_t>(ctrl->nparts), 0, "ProjectFixedCells: imap");
    for (int p = 0; p < ctrl->nparts; p++) {
        assert(0 <= fpart[p] && fpart[p] < ctrl->nparts);
        imap[fpart[p]] = p;
    }
    for (int v = 0; v < graph->ncells; v++) part[v] = imap[fpart[graph->cellmap[v]]];
    QXfree__(&imap, LTERM);
}
