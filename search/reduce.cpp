// SPDX-License-Identifier: MIT
/* search/reduce.cpp: clusters of what must stay together, without what cannot matter.
 *
 * Stages: number the clusters (fixed ones, groups, single vertices), find those with hyperedges of
 * two clusters and more, put the others behind them, write the lists, merge identical hyperedges.
 */
#include "search/reduce.h"

#include <algorithm>
#include <cassert>

#include "coarsen/collapse.h"
#include "core/heavy_assert.h"
#include "core/memory.h"

static size_t at_least_one(int n)
{
    return n > 0 ? static_cast<size_t>(n) : 1;
}

/* Gives every vertex its cluster, leading ones for the fixed. */
static int number_clusters(const FlatHypergraph *flat, const Constraints *constraints, int nparts,
                           bool has_fixed, int *cluster)
{
    const int n = flat->nvtxs;
    int nclusters = has_fixed ? nparts : 0, ngroups = 0;
    for (int v = 0; constraints->group != nullptr && v < n; v++)
        ngroups = std::max(ngroups, constraints->group[v] + 1);
    int *of_group = ismalloc__(at_least_one(ngroups), -1, "search: cluster of group");
    for (int v = 0; v < n; v++) { // fixed vertices take their groups along
        cluster[v] = has_fixed ? constraints->fixed[v] : -1;
        const int group = ngroups > 0 ? constraints->group[v] : -1;
        if (cluster[v] >= 0 && group >= 0) of_group[group] = cluster[v];
    }
    for (int v = 0; v < n; v++) {
        if (cluster[v] >= 0) continue;
        const int group = ngroups > 0 ? constraints->group[v] : -1;
        assert(group < ngroups);
        if (group >= 0 && of_group[group] < 0) of_group[group] = nclusters++;
        cluster[v] = group >= 0 ? of_group[group] : nclusters++;
        assert(0 <= cluster[v] && cluster[v] < nclusters); // R1
    }
    QXfree__(&of_group, LTERM);
    return nclusters;
}

static NetLists map_hyperedges(const FlatHypergraph *flat, int nclusters, const int *cluster)
{
    const int m = flat->nhedges;
    NetLists lists = {0, imalloc__(static_cast<size_t>(m) + 1, "search: netptr"),
                      imalloc__(static_cast<size_t>(flat->eptr[m]), "search: netind"),
                      imalloc__(static_cast<size_t>(m), "search: netwgt")};
    int *last = ismalloc__(at_least_one(nclusters), -1, "search: last");
    lists.netptr[0] = 0;
    int used = 0;
    for (int e = 0; e < m; e++) {
        const int first = used, weight = flat->hewgts != nullptr ? flat->hewgts[e] : 1;
        if (weight == 0) continue;
        for (int j = flat->eptr[e]; j < flat->eptr[e + 1]; j++) {
            const int c = cluster[flat->eind[j]];
            if (last[c] == e) continue;
            assert(0 <= c && c < nclusters && used < flat->eptr[m]);
            last[c] = e;
            lists.netind[used++] = c;
        }
        if (used - first < 2) {
            used = first;
            continue;
        }
        lists.netwgt[lists.nnets] = weight;
        lists.netptr[++lists.nnets] = used;
    }
    QXfree__(&last, LTERM);
    return lists;
}

/* Numbers the clusters anew: those without hyperedges last. Returns how many have some. */
static int put_islands_last(const NetLists *lists, int nfixed, int nclusters, int nvtxs,
                            int *cluster)
{
    int *number = ismalloc__(at_least_one(nclusters), -1, "search: number");
    int next = 0;
    for (int j = 0; j < lists->netptr[lists->nnets]; j++) number[lists->netind[j]] = 0;
    for (int c = 0; c < nclusters; c++)
        if (c < nfixed || number[c] == 0) number[c] = next++;
    const int kept = next;
    assert(nfixed <= kept && kept <= nclusters);
    for (int c = 0; c < nclusters; c++)
        if (number[c] < 0) number[c] = next++;
    for (int v = 0; v < nvtxs; v++) cluster[v] = number[cluster[v]];
    for (int j = 0; j < lists->netptr[lists->nnets]; j++)
        lists->netind[j] = number[lists->netind[j]];
    assert(next == nclusters);
    QXfree__(&number, LTERM);
    return kept;
}

void open_reduction(Reduction *reduction, const FlatHypergraph *flat,
                    const Constraints *constraints, int nparts)
{
    const int n = flat->nvtxs;
    bool has_fixed = false;
    for (int v = 0; constraints->fixed != nullptr && v < n; v++)
        has_fixed |= constraints->fixed[v] >= 0;
    const int nfixed = has_fixed ? nparts : 0;
    int *cluster = imalloc__(at_least_one(n), "search: cluster");
    const int nclusters = number_clusters(flat, constraints, nparts, has_fixed, cluster);
    NetLists lists = map_hyperedges(flat, nclusters, cluster);
    const int kept = put_islands_last(&lists, nfixed, nclusters, n, cluster);

    reduction->nclusters = nclusters;
    reduction->cluster = cluster;
    reduction->weight = ismalloc__(at_least_one(nclusters), 0, "search: weight of cluster");
    for (int v = 0; v < n; v++)
        reduction->weight[cluster[v]] += flat->vwgts != nullptr ? flat->vwgts[v] : 1;
    reduction->fixed = nullptr;
    if (has_fixed) {
        reduction->fixed = ismalloc__(at_least_one(nclusters), -1, "search: fixed");
        for (int p = 0; p < nparts; p++) reduction->fixed[p] = p;
    }
    HGraph *const graph = reduction->graph = CreateHGraph__();
    graph->ncells = kept;
    graph->nfixed = nfixed;
    graph->cellwgt = imalloc__(at_least_one(kept), "search: cellwgt");
    std::copy(reduction->weight, reduction->weight + kept, graph->cellwgt);
    NetLists merged;
    CollapseSameHEdges__(&lists, &merged);
    graph->nnets = merged.nnets;
    graph->netptr = merged.netptr;
    graph->netind = merged.netind;
    graph->netwgt = merged.netwgt;
    QXfree__(&lists.netptr, &lists.netind, &lists.netwgt, LTERM);
    CreateIncidentHGraph__(graph);
    HEAVY_ASSERT(reduction_ok(reduction, flat, nparts));
}

void close_reduction(Reduction *reduction)
{
    FreeHGraph__(reduction->graph);
    QXfree__(&reduction->cluster, &reduction->weight, &reduction->fixed, LTERM);
}
