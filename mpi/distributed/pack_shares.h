/* SPDX-License-Identifier: MIT */
/* mpi/distributed/pack_shares.h: shares of gains on their way to other ranks, in few bytes. */
#ifndef ZORPEL_MPI_DISTRIBUTED_PACK_SHARES_H
#define ZORPEL_MPI_DISTRIBUTED_PACK_SHARES_H

#include "distributed/rate_moves.h"

/* Exchanges shares as exchange() does. Those for one rank have rising vertices, parts from -1 on.
 * Cost  a share of 16 bytes is sent in 3 to 5 where weights are small. */
void exchange_shares(Ranks *ranks, Mail<Share> *mail);

#endif
