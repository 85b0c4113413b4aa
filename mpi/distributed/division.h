/* SPDX-License-Identifier: MIT */
/* mpi/distributed/division.h: a partition of one level over ranks, while it is being improved. */
#ifndef ZORPEL_MPI_DISTRIBUTED_DIVISION_H
#define ZORPEL_MPI_DISTRIBUTED_DIVISION_H

#include "distributed/level.h"
#include "search/parts.h"

/* What is asked of a partition. */
struct Goal {
    int nparts;
    Objective objective;
    std::vector<int64_t> most, least; // [nparts] bounds of the parts' weights
};

/*   X1  part[v] is in 0..nparts-1; a fixed vertex is in its part
 *   X2  seen[g] is the part of ghost g
 *   X3  weight[p] is the weight of the vertices in p, over all ranks
 */
struct Division {
    std::vector<int> part;       // [own]
    std::vector<int> seen;       // [nghosts]
    std::vector<int64_t> weight; // [nparts]
};

/* One vertex that would change its part. Moves with smaller keys go first: the leading byte is how
 * good the move is, the others are a lot drawn from the vertex's number. */
struct Move {
    int vertex; // own
    int from, to;
    uint32_t key;
    int64_t weight;
};

/* Takes part as it is set, and computes everything else. */
void load_division(Ranks *ranks, const Level *level, const Goal *goal, Division *division);

/* Makes the moves of all ranks; to the parts that they name, or back again. */
void make_moves(Ranks *ranks, const Level *level, const std::vector<Move> &moves, bool back,
                Division *division);

/* By how much parts are outside their bounds, in all. */
int64_t excess_of(const Goal *goal, const Division *division);

/* What a weight of one costs in a hyperedge that touches d parts. */
inline int64_t cost_of(Objective objective, int d)
{
    return net_cost(objective, 1, d);
}

/* Tests X1 to X3; all ranks call it together. */
bool division_ok(Ranks *ranks, const Level *level, const Goal *goal, const Division *division);

#endif
