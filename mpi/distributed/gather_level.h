/* SPDX-License-Identifier: MIT */
/* mpi/distributed/gather_level.h: a level that one rank can hold is partitioned there. */
#ifndef ZORPEL_MPI_DISTRIBUTED_GATHER_LEVEL_H
#define ZORPEL_MPI_DISTRIBUTED_GATHER_LEVEL_H

#include "distributed/division.h"

struct Crew;

/* How the gathered level is partitioned. */
struct Finishing {
    int preset; // of the search's schedules
    uint64_t seed;
    int threads;
    Crew *crew; // where threads come from; null: none
};

/* Gathers the level on rank 0, partitions it by the search, and gives every rank the parts of its
 * vertices.
 *   mostpins  in      of a level that has more, rank 0 takes hyperedges of at most so many pins
 *   draw      in      searches of one run differ by it
 *   division  in/out  if it has parts, the search starts with them too
 * Weights that total more than 2147483646 are divided by a power of two for the search,
 * so that bounds may be missed by a little.
 * Ends all ranks if the level has more than 2147482624 vertices. */
void divide_gathered(Ranks *ranks, const Level *level, const Goal *goal, const Finishing *finishing,
                     int64_t mostpins, uint64_t draw, Division *division);

#endif
