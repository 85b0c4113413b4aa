/* SPDX-License-Identifier: MIT */
/* mpi/distributed/refine_ranks.h: a partition of one level is improved, and brought within bounds.
 */
#ifndef ZORPEL_MPI_DISTRIBUTED_REFINE_RANKS_H
#define ZORPEL_MPI_DISTRIBUTED_REFINE_RANKS_H

#include "distributed/division.h"

/* Moves vertices to parts where the objective falls, in rounds of turns, until a round gains next
 * to nothing. Bounds that hold are kept; the objective never rises.
 * The result depends on the hypergraph, the partition and seed only. Returns the objective.
 * Source  Gottesbueren, Hamann, Deterministic parallel hypergraph partitioning, Euro-Par 2022
 *         (moves of a turn are decided together, the best of them applied within bounds). */
int64_t refine_level(Ranks *ranks, const Level *level, const Goal *goal, uint64_t seed,
                     Division *division);

/* Moves vertices out of parts that are too heavy to parts that have room, those that cost least for
 * their weight first, until all are within most, or it gets no better. Returns the excess left. */
int64_t rebalance_level(Ranks *ranks, const Level *level, const Goal *goal, uint64_t seed,
                        Division *division);

#endif
