/* SPDX-License-Identifier: MIT */
/* spare/part_cuts.h: each part's external degree alone; the report counts it along with the rest. */
#ifndef ZORPEL_SPARE_PART_CUTS_H
#define ZORPEL_SPARE_PART_CUTS_H

/* Sums into pcuts[p] the weight of the cut hyperedges with a vertex in p. */
void ComputePartCuts(int nhedges, int nparts, const int *eptr, const int *eind, const int *hewgts,
                     const int *part, int *pcuts);

#endif
