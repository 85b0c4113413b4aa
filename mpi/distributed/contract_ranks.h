/* SPDX-License-Identifier: MIT */
/* mpi/distributed/contract_ranks.h: the next coarser level, over ranks. */
#ifndef ZORPEL_MPI_DISTRIBUTED_CONTRACT_RANKS_H
#define ZORPEL_MPI_DISTRIBUTED_CONTRACT_RANKS_H

#include "distributed/cluster_rounds.h"

/* Makes each cluster a vertex of the coarser level, numbered in the order of the leaders; identical
 * hyperedges become one, those within a cluster go.
 *   level       in/out  coarse is set
 *   clustering  in      used up
 * Cost  pins once over the network, and a sort of each rank's hyperedges. */
void contract_level(Ranks *ranks, Level *level, Clustering *clustering, Level *coarser);

#endif
