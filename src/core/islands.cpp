// SPDX-License-Identifier: MIT
/* core/islands.cpp: vertices without hyperedges.
 *
 * An island cannot influence the cut, so it is kept out of matching and refinement and only serves
 * to even out the weights afterwards. The others keep their order, islands stand in reverse order
 * of discovery; islandmap (finest level) or the finer level's cellmap remember who is who.
 */
#include "core/islands.h"

#include <cassert>
#include <cstdlib>
#include <cstring>

#include "core/heavy_assert.h"
#include "core/memory.h"

/* x[to[i]] = old x[i] for i < n, by way of aux (n entries). */
static void permute(int n, const int *to, int *x, int *aux)
{
    assert(n >= 0 && x != aux);
    if (n > 0) memcpy(aux, x, static_cast<size_t>(n) * sizeof *x);
    for (int i = 0; i < n; i++) x[to[i]] = aux[i];
}

static void renumber(int n, const int *to, int *x)
{
    assert(n >= 0);
    for (int i = 0; i < n; i++) x[i] = to[x[i]];
}

/* Fills perm with the number of each vertex after parking; returns the count of the others. */
static int park_numbers(const HGraph *graph, int nfixed, int *perm)
{
    for (int v = 0; v < nfixed; v++) perm[v] = v;
    int next = nfixed, last = graph->ncells;
    for (int v = nfixed; v < graph->ncells; v++)
        perm[v] = graph->incptr[v + 1] > graph->incptr[v] ? next++ : --last;
    assert(next == last);
    return next;
}

static bool has_islands(const HGraph *graph, int nfixed)
{
    int found = 0;
    for (int v = nfixed; v < graph->ncells; v++) found |= graph->incptr[v] == graph->incptr[v + 1];
    return found != 0;
}

/* Drops the empty ranges of incptr from the first free vertex on. */
static void compact_incidence(int *incptr, int nfixed, int n)
{
    int kept = nfixed;
    assert(0 <= nfixed && nfixed <= n);
    for (int v = nfixed; v < n; v++)
        if (incptr[v + 1] > incptr[kept]) incptr[++kept] = incptr[v + 1];
}

void SeparateIslands__(HGraph *graph)
{
    const int n = graph->ncells, nfixed = graph->nfixed > 0 ? graph->nfixed : 0;
    graph->nislands = 0;
    if (!has_islands(graph, nfixed)) return;
    int *perm = imalloc__(static_cast<size_t>(n), "SeparateIslands: ncells");
    const int ncells = park_numbers(graph, nfixed, perm);
    assert(nfixed <= ncells && ncells < n);
    graph->ncells = ncells;
    graph->nislands = n - ncells;
    int *aux = imalloc__(static_cast<size_t>(n), "SeparateIslands: aux");
    compact_incidence(graph->incptr, nfixed, n);
    if (graph->where != nullptr) permute(n, perm, graph->where, aux);
    permute(n, perm, graph->cellwgt, aux);
    permute(n, perm, graph->adjwgt, aux);
    renumber(graph->netptr[graph->nnets], perm, graph->netind);
    if (graph->finer != nullptr) {
        renumber(graph->finer->ncells, perm, graph->finer->cellmap);
    } else {
        graph->islandmap = imalloc__(static_cast<size_t>(n), "SeparateIslands: graph->islandmap");
        memcpy(graph->islandmap, perm, static_cast<size_t>(n) * sizeof *perm);
    }
    QXfree__(&perm, &aux, LTERM);
    HEAVY_ASSERT(hgraph_ok(graph, HG_LISTS | HG_INCIDENCE));
}

void PartitionIslands__(HGraph *graph)
{
    for (int v = graph->ncells; v < graph->ncells + graph->nislands; v++) {
        const int side = graph->pwgts[0] >= graph->pwgts[1] ? 1 : 0;
        assert(graph->cellwgt[v] >= 0);
        graph->where[v] = side;
        graph->pwgts[side] += graph->cellwgt[v];
    }
}

void CombineIslands__(HGraph *graph)
{
    if (graph->nislands == 0) return;
    const int n = graph->ncells, all = n + graph->nislands;
    assert(graph->islandmap != nullptr && graph->finer == nullptr);
    int *imap = imalloc__(static_cast<size_t>(all), "CombineIslands: imap");
    int *aux = imalloc__(static_cast<size_t>(all) + 1, "CombineIslands: aux");
    for (int v = 0; v < all; v++) imap[graph->islandmap[v]] = v;
    renumber(graph->netptr[graph->nnets], imap, graph->netind);
    permute(all, imap, graph->cellwgt, aux);
    permute(all, imap, graph->adjwgt, aux);
    permute(all, imap, graph->where, aux);

    int *const degree = aux; // of each vertex, at its place before parking
    for (int v = 0; v < all; v++) degree[v] = 0;
    for (int v = 0; v < n; v++) degree[imap[v]] = graph->incptr[v + 1] - graph->incptr[v];
    graph->incptr[0] = 0;
    for (int v = 0; v < all; v++) graph->incptr[v + 1] = graph->incptr[v] + degree[v];
    graph->ncells = all;
    graph->nislands = 0;
    QXfree__(&imap, &aux, LTERM);
    HEAVY_ASSERT(hgraph_ok(graph, HG_LISTS | HG_INCIDENCE));
}
