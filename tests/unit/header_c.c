/* SPDX-License-Identifier: MIT */
/* tests/unit/header_c.c: zorpel.h compiles alone and first as C11, and links as C. */
#include "zorpel.h"

_Static_assert(ZORPEL_OPT_USE == 0 && ZORPEL_OPT_NRUNS == 1 && ZORPEL_OPT_CTYPE == 2 &&
                   ZORPEL_OPT_RTYPE == 3 && ZORPEL_OPT_VCYCLE == 4 && ZORPEL_OPT_RECONST == 5 &&
                   ZORPEL_OPT_FIXED == 6 && ZORPEL_OPT_SEED == 7 && ZORPEL_OPT_DBGLVL == 8 &&
                   ZORPEL_NOPTIONS == 9,
               "slots of the options array");
_Static_assert(ZORPEL_CTYPE_HFC == 1 && ZORPEL_CTYPE_FC == 2 && ZORPEL_CTYPE_GFC == 3 &&
                   ZORPEL_CTYPE_HEDGE == 4 && ZORPEL_CTYPE_EDGE == 5,
               "matching schemes");
_Static_assert(ZORPEL_RTYPE_FM == 1 && ZORPEL_RTYPE_1WAYFM == 2 && ZORPEL_RTYPE_EEFM == 3,
               "refinement schemes");
_Static_assert(ZORPEL_VCYCLE_NO == 0 && ZORPEL_VCYCLE_END == 1 && ZORPEL_VCYCLE_FORMIN == 2 &&
                   ZORPEL_VCYCLE_ALL == 3,
               "V-cycles");
_Static_assert(ZORPEL_DBG_COARSEN == 1 && ZORPEL_DBG_INIT == 2 && ZORPEL_DBG_PASS == 4 &&
                   ZORPEL_DBG_BISECTION == 8 && ZORPEL_DBG_RUN == 16 && ZORPEL_DBG_TIME == 32 &&
                   ZORPEL_DBG_DETAIL == 128 && ZORPEL_DBG_MOVE == 256,
               "trace bits");

typedef void (*Partitioner)(int, int, const int *, const int *, const int *, const int *, int, int,
                            const int *, int *, int *);
typedef void (*Refiner)(int, int, const int *, const int *, const int *, const int *, int,
                        const int *, int *, int *);

int main(void)
{
    const Partitioner partitioners[2] = {ZORPEL_PartRecursive, ZORPEL_PartRecursiveInternal};
    const Refiner refiner = ZORPEL_2WayRefine;
    const int eptr[3] = {0, 2, 4}, eind[4] = {0, 1, 2, 3};
    const int options[ZORPEL_NOPTIONS] = {0};
    int part[4] = {0, 1, 0, 1}, cut = -1, i, failed = 0;
    for (i = 0; i < 2; i++) {
        partitioners[i](4, 2, 0, eptr, eind, 0, 2, 5, options, part, &cut);
        failed |= cut != 0 || part[0] != part[1] || part[2] != part[3] || part[0] == part[2];
    }
    refiner(4, 2, 0, eptr, eind, 0, 5, options, part, &cut);
    return failed || cut != 0;
}
