// SPDX-License-Identifier: MIT
/* spare/part_cuts.cpp: each part's external degree.
 *
 * Hyperedge by hyperedge: count its pins in each part, charge the parts if there are several, and
 * clear the counts again on the way.
 */
#include "spare/part_cuts.h"

#include <cassert>

#include "core/memory.h"
#include "core/vectors.h"

/* Counts the vertices of e in each part into pdegrees; true if they are in several. An empty
 * hyperedge is not cut. */
static bool count_pins(int e, const int *eptr, const int *eind, const int *part, int *pdegrees)
{
    for (int j = eptr[e]; j < eptr[e + 1]; j++) pdegrees[part[eind[j]]]++;
    const int size = eptr[e + 1] - eptr[e];
    return size > 0 && pdegrees[part[eind[eptr[e]]]] != size;
}

void ComputePartCuts(int nhedges, int nparts, const int *eptr, const int *eind, const int *hewgts,
                     const int *part, int *pcuts)
{
    assert(nparts > 0 && (nhedges <= 0 || eptr[0] <= eptr[nhedges]));
    int *pdegrees = ismalloc__(static_cast<size_t>(nparts), 0, "ComputePartCuts: pdegrees");
    iset__(nparts, 0, pcuts);
    for (int e = 0; e < nhedges; e++) {
        const bool cut = count_pins(e, eptr, eind, part, pdegrees);
        for (int j = eptr[e]; j < eptr[e + 1]; j++) {
            const int p = part[eind[j]];
            assert(0 <= p && p < nparts);
            if (cut && pdegrees[p] > 0) pcuts[p] += (hewgts != nullptr ? hewgts[e] : 1);
            pdegrees[p] = 0;
        }
    }
    QXfree__(&pdegrees, LTERM);
}
