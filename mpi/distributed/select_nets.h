/* SPDX-License-Identifier: MIT */
/* mpi/distributed/select_nets.h: the hyperedges that one rank is to hold. */
#ifndef ZORPEL_MPI_DISTRIBUTED_SELECT_NETS_H
#define ZORPEL_MPI_DISTRIBUTED_SELECT_NETS_H

#include "distributed/level.h"

/* Own hyperedges, rising, such that those of all ranks have at most so many pins: all of them if
 * that is enough, otherwise the heaviest for their pins, and among like ones some by lot.
 * What is selected depends on the hypergraph only, not on who owns what.
 * Cost  O(pins) on each rank; a few sums over ranks. */
std::vector<int> select_nets(Ranks *ranks, const Level *level, int64_t mostpins);

#endif
