/* SPDX-License-Identifier: MIT */
/* mpi/distributed/read_binary.h: the binary form of a hypergraph, in shares. */
#ifndef ZORPEL_MPI_DISTRIBUTED_READ_BINARY_H
#define ZORPEL_MPI_DISTRIBUTED_READ_BINARY_H

#include "distributed/read_share.h"

/* Reads the header and compares what it says with the size of the file. */
void read_binary_header(const FileShare *share, ShareHeader *header, ShareFault *fault);

/* Reads the hyperedges whose pins begin in this rank's share of all pins; sets level->weight. */
bool read_binary(Ranks *ranks, FileShare *share, const ShareHeader *header, LooseNets *nets,
                 Level *level, ShareFault *fault);

/* The first byte of each array. */
struct BinaryPlaces {
    int64_t ptr, pins, netweight, weight, end;
};
BinaryPlaces binary_places(const ShareHeader *header);

#endif
