/* SPDX-License-Identifier: MIT */
/* mpi/distributed/rate_moves.h: what moves of vertices would change, from exchanged pin counts. */
#ifndef ZORPEL_MPI_DISTRIBUTED_RATE_MOVES_H
#define ZORPEL_MPI_DISTRIBUTED_RATE_MOVES_H

#include "distributed/division.h"

/* What one rank's hyperedges say of a vertex. The gain of a move to part p is the sum of the values
 * for part -1 and for p, less what it costs to cut all of the vertex's hyperedges. */
struct Share {
    int vertex; // of the receiver
    int part;   // -1: any
    int64_t value;
};

/* Whose shares are wanted. */
struct Turn {
    uint64_t seed;
    int turn, turns;        // vertices of one turn of so many, by lot
    std::vector<char> from; // [nparts] only those in a part that is marked; empty: all
    uint64_t salt = 0;      // of the lot
};

/* Computes the objective, and the shares of the vertices in cut hyperedges whose turn it is.
 *   turn   null: none
 *   mail   out  by sender, vertices rising
 * Cost  O(pins) on each rank; one exchange of the boundary's shares. */
int64_t rate_moves(Ranks *ranks, const Level *level, const Goal *goal, const Division *division,
                   const Turn *turn, Mail<Share> *mail);

inline bool has_turn(const Turn *turn, int64_t vertex)
{
    return turn->turns == 1 || lot(turn->seed, static_cast<uint64_t>(vertex), turn->salt) %
                                       static_cast<uint64_t>(turn->turns) ==
                                   static_cast<uint64_t>(turn->turn);
}

#endif
