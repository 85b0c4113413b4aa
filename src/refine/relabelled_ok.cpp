// SPDX-License-Identifier: MIT
/* refine/relabelled_ok.cpp: the invariants of a renumbered copy of a level, tested from scratch.
 *
 * The copy's lists are those of the level, in the level's order, with other numbers: a list that
 * were merely a permutation would change results, and is found.
 */
#include <vector>

#include "core/holds.h"
#include "refine/relabel.h"

static bool labels_ok(const HGraph *graph, const Relabelled *copy)
{
    for (int v = 0; v < graph->ncells; v++) {
        const int i = copy->label[v];
        HOLDS(R1, 0 <= i && i < graph->ncells && copy->vertex[i] == v);
        HOLDS(R2, v >= graph->nfixed || i == v);
    }
    std::vector<bool> taken(static_cast<size_t>(graph->nnets));
    for (int e = 0; e < graph->nnets; e++) {
        const int k = copy->netlabel[e];
        HOLDS(R1, 0 <= k && k < graph->nnets && !taken[static_cast<size_t>(k)]);
        taken[static_cast<size_t>(k)] = true;
    }
    return true;
}

/* Whether list i of (ptr, ind), renamed, is list k of (copyptr, copyind). */
static bool same_list(const int *ptr, const int *ind, int i, const int *rename, const int *copyptr,
                      const int *copyind, int k)
{
    const int size = ptr[i + 1] - ptr[i];
    if (copyptr[k + 1] - copyptr[k] != size) return false;
    for (int j = 0; j < size; j++)
        if (copyind[copyptr[k] + j] != rename[ind[ptr[i] + j]]) return false;
    return true;
}

static bool nets_ok(const HGraph *level, const FmNet *nets)
{
    for (int k = 0; k < level->nnets; k++) {
        int pinxor = 0;
        for (int j = level->netptr[k]; j < level->netptr[k + 1]; j++) pinxor ^= level->netind[j];
        HOLDS(R5, nets[k].wgt == level->netwgt[k] && nets[k].pinxor == pinxor);
        HOLDS(R5, nets[k].first == level->netptr[k] && nets[k].end == level->netptr[k + 1]);
    }
    return true;
}

bool relabelled_ok(const HGraph *graph, const Relabelled *copy)
{
    const HGraph *const level = &copy->level;
    if (!labels_ok(graph, copy)) return false;
    HOLDS(R3, level->ncells == graph->ncells && level->nnets == graph->nnets);
    for (int v = 0; v < graph->ncells; v++) {
        const int i = copy->label[v];
        HOLDS(R3, same_list(graph->incptr, graph->incind, v, copy->netlabel, level->incptr,
                            level->incind, i));
        HOLDS(R4, level->cellwgt[i] == graph->cellwgt[v] && level->adjwgt[i] == graph->adjwgt[v]);
    }
    for (int e = 0; e < graph->nnets; e++) {
        const int k = copy->netlabel[e];
        HOLDS(R3, same_list(graph->netptr, graph->netind, e, copy->label, level->netptr,
                            level->netind, k));
        HOLDS(R4, level->netwgt[k] == graph->netwgt[e]);
    }
    return nets_ok(level, copy->nets);
}
