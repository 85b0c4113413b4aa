/* SPDX-License-Identifier: MIT */
/* spare/kway_updates.h: k-way records brought up to date at once.
 *
 * Refinement lets records wait until they are read (kway/stale_records.h). This is the plain rule
 * that it must agree with, and tests compare the two.
 */
#ifndef ZORPEL_SPARE_KWAY_UPDATES_H
#define ZORPEL_SPARE_KWAY_UPDATES_H

#include "core/hgraph.h"

/* Recomputes the records of the n vertices in list from the hyperedges' records. */
void ComputeKwayGainsSet__(HGraph *graph, int n, const int *list);

/* Brings the records up to date after v moved (where, kpwgts, mincut, minsoed are already so).
 *   marker  in/out  [ncells] vertex numbers as stamps; no entry may be v before
 *   updind  work    [ncells] */
void KwayUpdateGainInfo__(HGraph *graph, int v, int from, int to, int *marker, int *updind);

#endif
