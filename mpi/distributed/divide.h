/* SPDX-License-Identifier: MIT */
/* mpi/distributed/divide.h: the partition of a hypergraph that no rank holds as a whole. */
#ifndef ZORPEL_MPI_DISTRIBUTED_DIVIDE_H
#define ZORPEL_MPI_DISTRIBUTED_DIVIDE_H

#include "distributed/gather_level.h"

struct DivideOptions {
    Goal goal;
    Finishing finishing;
    int64_t fits; // pins, and vertices, that rank 0 takes as a whole
    /* Is told of every level, on every rank; or null. */
    void (*watch)(const Ranks *ranks, const char *stage, int depth, const Level *level,
                  int64_t value);
};

/* What came out, the same on all ranks. */
struct Divided {
    int levels;
    std::vector<int64_t> pins; // of each level of the first cycle, the finest first
    int64_t value, excess;
    std::vector<int64_t> weight; // [nparts]
};

/* Partitions the hypergraph of level 0, which is used up, into part [own vertices].
 * The result depends on the hypergraph and the options only, not on the number of ranks. */
Divided divide(Ranks *ranks, Level *level, const DivideOptions *options, std::vector<int> *part);

#endif
