/* SPDX-License-Identifier: MIT */
/* mpi/distributed/select_moves.h: the moves that fit, the best of all ranks first. */
#ifndef ZORPEL_MPI_DISTRIBUTED_SELECT_MOVES_H
#define ZORPEL_MPI_DISTRIBUTED_SELECT_MOVES_H

#include "distributed/division.h"

enum class Side { from, to };

/* Keeps, for each part, the moves of the smallest keys, over all ranks, as long as their weights
 * together are within room.
 *   side   which of a move's parts is meant
 *   room   in  [nparts]
 *   reach  whether the move that passes the room is kept too, and all of its key
 * Moves of equal keys into (or out of) one part are kept or left together.
 * Cost  one sum over ranks where all fit, at most four more, of 256 numbers for each part. */
void select_moves(Ranks *ranks, Side side, const std::vector<int64_t> &room, bool reach,
                  std::vector<Move> *moves);

#endif
