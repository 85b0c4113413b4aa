/* SPDX-License-Identifier: MIT */
/* mpi/distributed/bold_moves.h: refinement by moves that may lose at first. */
#ifndef ZORPEL_MPI_DISTRIBUTED_BOLD_MOVES_H
#define ZORPEL_MPI_DISTRIBUTED_BOLD_MOVES_H

#include "distributed/division.h"

/* Moves many vertices at a time, those too that lose a little by themselves, whatever the bounds;
 * rebalances; and keeps the best partition that it comes through: never a worse one, and none that
 * is further outside its bounds, than it was given. Returns its objective. The result depends on
 * the hypergraph, the partition and seed only. Source  Gilbert, Madduri, Boman, Rajamanickam, Jet:
 * multilevel graph partitioning on graphics processing units, SIAM J. Sci. Comput. 46(5), 2024
 * (losing moves, judged again as if the better ones had been made before them); here for
 * hyperedges, and over ranks. */
int64_t move_boldly(Ranks *ranks, const Level *level, const Goal *goal, uint64_t seed,
                    Division *division);

#endif
