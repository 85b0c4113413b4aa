/* SPDX-License-Identifier: MIT */
/* coarsen/match_work.h: the work arrays of the matchings, which live as long as a coarsening. */
#ifndef ZORPEL_COARSEN_MATCH_WORK_H
#define ZORPEL_COARSEN_MATCH_WORK_H

/* With m the larger one of the finest level's ncells and nnets. */
struct MatchWork {
    int *perm;   // [m] order of visits
    int *htable; // [2 m] all -1 between calls
    int *vpairs; // [2 m] keys and orders
};

#endif
