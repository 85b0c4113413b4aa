// SPDX-License-Identifier: MIT
/* spare/kway_updates.cpp: k-way records brought up to date at once.
 *
 * After a move every hyperedge of the vertex is brought up to date, then every vertex whose gains
 * that changes, each once. Refinement does the second half later, and only for vertices that it
 * looks at (kway/stale_records.h); both must leave the same records, which the tests compare.
 */
#include "spare/kway_updates.h"

#include <cassert>

#include "kway/part_lists.h"

void ComputeKwayGainsSet__(HGraph *graph, int n, const int *list)
{
    for (int i = 0; i < n; i++) compute_record(graph, list[i]);
}

void KwayUpdateGainInfo__(HGraph *graph, int v, int from, int to, int *marker, int *updind)
{
    int nupdates = 0;
    assert(from != to && graph->where[v] == to && marker[v] != v);
    marker[v] = v;
    updind[nupdates++] = v;
    for (int j = graph->incptr[v]; j < graph->incptr[v + 1]; j++) {
        const int e = graph->incind[j];
        const PinMove move = find_move(&graph->nrinfo[e], from, to);
        move_pin(&graph->nrinfo[e], move, to);
        if (!gains_change(move)) continue;
        for (int p = graph->netptr[e]; p < graph->netptr[e + 1]; p++) {
            const int u = graph->netind[p];
            assert(0 <= u && u < graph->ncells);
            if (marker[u] == v) continue;
            marker[u] = v;
            updind[nupdates++] = u;
        }
    }
    assert(nupdates <= graph->ncells);
    ComputeKwayGainsSet__(graph, nupdates, updind);
}
