/* SPDX-License-Identifier: MIT */
/* partition/split.h: the two halves of a bisected hypergraph. */
#ifndef ZORPEL_PARTITION_SPLIT_H
#define ZORPEL_PARTITION_SPLIT_H

#include "core/hgraph.h"
#include "core/ctrl.h"

/* Fills two new records with the sub-hypergraphs of sides 0 and 1 of bisection [ncells], vertices
 * in their order, with label, lists and weights. Cut hyperedges are dropped or, with
 * ctrl->Reconst, kept as their pieces of more than one vertex and identical ones merged. */
void SplitGraphPart__(const PartCtrl *ctrl, const HGraph *graph, const int *bisection,
                      HGraph *lgraph, HGraph *rgraph);

#endif
