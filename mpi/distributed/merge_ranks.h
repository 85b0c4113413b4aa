/* SPDX-License-Identifier: MIT */
/* mpi/distributed/merge_ranks.h: identical hyperedges of all ranks become one. */
#ifndef ZORPEL_MPI_DISTRIBUTED_MERGE_RANKS_H
#define ZORPEL_MPI_DISTRIBUTED_MERGE_RANKS_H

#include "distributed/level.h"

/* Divides hyperedges anew among the ranks, by a key that is made from the pins alone, so that
 * identical ones meet, and merges them; their weights add up.
 *   nets  in/out  pins of each rise; out: in the order of their keys, over the ranks as within
 * The order depends on the hyperedges alone. The key begins with the middle pin, so that hyperedges
 * come to stand near to their vertices; where the ranks divide the keys is drawn from samples, so
 * that every rank gets about as many pins, whatever the degrees.
 * Cost  one exchange of all pins; a sort of the rank's hyperedges. */
void merge_nets_of_ranks(Ranks *ranks, LooseNets *nets);

#endif
