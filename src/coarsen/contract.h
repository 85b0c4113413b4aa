/* SPDX-License-Identifier: MIT */
/* coarsen/contract.h: construction of the next coarser level. */
#ifndef ZORPEL_COARSEN_CONTRACT_H
#define ZORPEL_COARSEN_CONTRACT_H

#include "core/hgraph.h"
#include "core/ctrl.h"

/* Contracts the groups of graph (cellmap, mptr, mind) into cnvtxs vertices.
 *   graph  in/out  gets netmap and coarser; needs incidence
 *   cnvtxs in      coarse vertices; a group may be empty, as that of a part without fixed vertices
 * The new level has lists, incidence and weights; pins stand in increasing order, hyperedges in
 * increasing key order. Hyperedges of one coarse vertex are dropped (removedwgt counts them),
 * identical ones merged. Cost O(pins log size) and a sort of the hyperedges. Charges "Aux2". */
void CreateCoarseHGraph__(PartCtrl *ctrl, HGraph *graph, int cnvtxs);

#endif
