/* SPDX-License-Identifier: MIT */
/* spare/dump.h: writers for inspecting hypergraphs while developing; vertices are numbered from 1.
 * None ends its last record with a newline. */
#ifndef ZORPEL_SPARE_DUMP_H
#define ZORPEL_SPARE_DUMP_H

#include "core/hgraph.h"

/* Prints sizes and hyperedges; needs netwgt. */
void DumpHGraph(const HGraph *graph);

/* Writes "hgr.<ncells>" with both kinds of weights, which must be there. */
void WriteHGraph(const HGraph *graph);

/* Writes "new.hgr" without weights and without the vertices that lie in no hyperedge (by incptr);
 * the others are renumbered in order. */
void WriteConnectedHGraph(const HGraph *graph);

/* Prints, for each of the nparts parts of where, how many cut hyperedges have a vertex in it. */
void Print_Pins(const HGraph *graph, const int *where, int nparts);

#endif
