// SPDX-License-Identifier: MIT
/* search/overlay.cpp: cells of an overlay of partitions.
 *
 * Vertices are listed by label, counted and placed; within a label a table of parts with stamps
 * says which cell a part has become: O(n + cells + parts), whatever their product.
 */
#include "search/overlay.h"

#include <algorithm>
#include <cassert>

#include "core/memory.h"

int split_cells(int n, const int *partition, int nparts, int *label)
{
    int nlabels = 0, ncells = 0;
    for (int v = 0; v < n; v++) nlabels = std::max(nlabels, label[v] + 1);
    int *start = ismalloc__(static_cast<size_t>(nlabels) + 1, 0, "search: cells");
    int *order = imalloc__(static_cast<size_t>(n) + 1, "search: order of cells");
    int *stamp = ismalloc__(static_cast<size_t>(nparts), -1, "search: stamps of parts");
    int *cell = imalloc__(static_cast<size_t>(nparts), "search: cell of part");
    for (int v = 0; v < n; v++) start[label[v] + 1]++;
    for (int l = 0; l < nlabels; l++) start[l + 1] += start[l];
    for (int v = 0; v < n; v++) order[start[label[v]]++] = v; // starts become ends
    for (int i = 0, l = 0; i < n; i++) {
        while (i >= start[l]) l++;
        const int v = order[i], p = partition[v];
        assert(label[v] == l && 0 <= p && p < nparts);
        if (stamp[p] != l) {
            stamp[p] = l;
            cell[p] = ncells++;
        }
        label[v] = cell[p];
    }
    QXfree__(&start, &order, &stamp, &cell, LTERM);
    assert(ncells <= n);
    return ncells;
}
