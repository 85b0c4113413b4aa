/* SPDX-License-Identifier: MIT */
/* coarsen/grouping.h: groups of vertices under construction, and visiting orders (coarsen/ only).
 */
#ifndef ZORPEL_COARSEN_GROUPING_H
#define ZORPEL_COARSEN_GROUPING_H

#include <algorithm>
#include <cassert>

#include "coarsen/partner.h"
#include "core/random.h"
#include "core/sort.h"

/* Groups listed one after the other: that of coarse vertex c is mind[mptr[c]..mptr[c+1]-1]. The
 * arrays belong to the level.
 *   J1  mptr[0] is 0, every closed group has members, and the last one ends at nlisted
 *   J2  the members of group c have c in cellmap
 *   J3  every vertex is listed once, or its cellmap is SINGLE
 *   J4  fixed vertices are alone in the groups of their own numbers
 */
struct Grouping {
    int *cellmap; // [ncells] coarse vertex, SINGLE while free
    int *mptr;    // [ncells + 1]
    int *mind;    // [ncells]
    int ngroups;  // closed groups
    int nlisted;  // vertices in mind
};

inline void list_vertex(Grouping *groups, int v)
{
    assert(v >= 0 && groups->cellmap[v] == SINGLE);
    groups->cellmap[v] = groups->ngroups;
    groups->mind[groups->nlisted++] = v;
}

inline void close_group(Grouping *groups)
{
    assert(groups->mptr[groups->ngroups] < groups->nlisted);
    groups->mptr[++groups->ngroups] = groups->nlisted;
}

inline void group_alone(Grouping *groups, int v)
{
    assert(groups->mptr[groups->ngroups] == groups->nlisted); // no group is open
    list_vertex(groups, v);
    close_group(groups);
}

/* Takes over the level's cellmap (all SINGLE), mptr and mind; the fixed vertices become groups of
 * their own under their own numbers. */
inline Grouping open_grouping(const HGraph *graph)
{
    Grouping groups = {graph->cellmap, graph->mptr, graph->mind, 0, 0};
    assert(graph->nfixed >= 0 && graph->nfixed <= graph->ncells);
    groups.mptr[0] = 0;
    for (int v = 0; v < graph->nfixed; v++) group_alone(&groups, v);
    return groups;
}

/* Tests J1 to J4 after the last group was closed. */
bool grouping_ok(const HGraph *graph, const Grouping *groups);

/* Writes each vertex's degree, capped at maxnetsize, into keys. */
inline void degree_keys(const PartCtrl *ctrl, const HGraph *graph, int *keys)
{
    for (int v = 0; v < graph->ncells; v++)
        keys[v] = std::min(graph->incptr[v + 1] - graph->incptr[v], ctrl->maxnetsize);
}

/* Lists the vertices in order by increasing capped degree, at random among equals. random and keys
 * are workspace of ncells entries; random may not be order. */
inline void order_by_degree(PartCtrl *ctrl, const HGraph *graph, int *random, int *keys, int *order)
{
    assert(graph->ncells == 0 || (random != order && keys != order));
    RandomPermute__(&ctrl->random, random, graph->ncells, 1);
    degree_keys(ctrl, graph, keys);
    BucketSortKeysInc(graph->ncells, ctrl->maxnetsize + 1, keys, random, order);
}

#endif
