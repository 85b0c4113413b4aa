/* SPDX-License-Identifier: MIT */
/* api.c: partitions a small hypergraph given as arrays and prints the parts and the cut.
 *
 * Two groups of four vertices, each held together by three hyperedges, and one hyperedge between:
 *
 *     0 --- 1         4 --- 5
 *     |     |         |     |
 *     3 --- 2 ------- 7 --- 6      (each group also lies in one hyperedge of four)
 */
#include <stdio.h>

#include "zorpel.h"

int main(void)
{
    enum { NVTXS = 8, NHEDGES = 7 };
    const int eptr[NHEDGES + 1] = {0, 4, 6, 8, 12, 14, 16, 18};
    const int eind[18] = {0, 1, 2, 3, 0, 1, 2, 3, /* hyperedges 0, 1, 2 */
                          4, 5, 6, 7, 4, 5, 6, 7, /* hyperedges 3, 4, 5 */
                          2, 7};                  /* hyperedge 6 */
    const int hewgts[NHEDGES] = {2, 3, 3, 2, 3, 3, 1};
    int options[ZORPEL_NOPTIONS] = {0};
    int part[NVTXS], cut, v;

    options[ZORPEL_OPT_USE] = 1;
    options[ZORPEL_OPT_NRUNS] = 10;
    options[ZORPEL_OPT_CTYPE] = ZORPEL_CTYPE_HFC;
    options[ZORPEL_OPT_RTYPE] = ZORPEL_RTYPE_FM;
    options[ZORPEL_OPT_VCYCLE] = ZORPEL_VCYCLE_END;
    options[ZORPEL_OPT_SEED] = 1;

    /* NULL: every vertex weighs 1. Two parts, each with 45 to 55 % of the weight. */
    ZORPEL_PartRecursive(NVTXS, NHEDGES, NULL, eptr, eind, hewgts, 2, 5, options, part, &cut);

    printf("parts:");
    for (v = 0; v < NVTXS; v++) printf(" %d", part[v]);
    printf("\ncut: %d\n", cut);
    return 0;
}
