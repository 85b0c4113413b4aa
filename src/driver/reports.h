/* SPDX-License-Identifier: MIT */
/* driver/reports.h: what the program prints before and after partitioning. */
#ifndef ZORPEL_DRIVER_REPORTS_H
#define ZORPEL_DRIVER_REPORTS_H

#include "core/hgraph.h"

enum PartitionMode { MODE_KWAY = 0, MODE_RECURSIVE = 1 };

/* Prints the banner, the sizes and, unless options is null, the names of the options.
 *   ubfactor in percent; name of the hypergraph file; mode: a PartitionMode */
void PrintInfo(const HGraph *graph, int nparts, int ubfactor, const int *options, const char *name,
               int mode);

/* Prints cut, sum of external degrees, scaled cost and absorption of a partition, and each part's
 * weight and external degree. hewgts and vwgts may be null: every weight is 1. An empty part makes
 * the scaled cost infinite, or not a number: printed as it is. */
void PrintPartStatistics(int nvtxs, int nhedges, int nparts, const int *eptr, const int *eind,
                         const int *hewgts, const int *vwgts, const int *part);

/* Adds each vertex's weight (1 when vwgts is null) to pwgts[part[v]], zeroed by the caller. */
void ComputePartWeights(int n, const int *vwgts, const int *part, int *pwgts);

#endif
