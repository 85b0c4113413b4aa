/* SPDX-License-Identifier: MIT */
/* mpi/distributed/read_share.h: a hypergraph that each rank reads a share of.
 *
 * Plain text (.hgr), or the binary form:
 *
 *     place        bytes           what
 *     0            8               "ZORPELB1"
 *     8            8               1: hyperedges have weights; 2: vertices have; 3: both
 *     16, 24, 32   8 each          hyperedges m, vertices n, pins p
 *     40           8 (m + 1)       where the pins of each hyperedge begin; 0 first, p last
 *     ...          8 p             the pins, vertices from 0
 *     ...          8 m, if any     weights of the hyperedges
 *     ...          8 n, if any     weights of the vertices
 *
 * All numbers are signed, of 64 bits, the lowest byte first.
 */
#ifndef ZORPEL_MPI_DISTRIBUTED_READ_SHARE_H
#define ZORPEL_MPI_DISTRIBUTED_READ_SHARE_H

#include "distributed/file_share.h"
#include "distributed/level.h"

constexpr char BINARY_MARK[] = "ZORPELB1";
constexpr int64_t BINARY_HEADER = 40;
constexpr int64_t HAS_NET_WEIGHTS = 1, HAS_VERTEX_WEIGHTS = 2;

/* What the header of a file says. */
struct ShareHeader {
    int64_t nnets, nvertices;
    int64_t npins; // binary only, otherwise 0
    int64_t flags;
    bool binary;
};

/* Reads the rank's share of hyperedges, in the order of the file, and the weights of its vertices.
 *   first  number of the first vertex in a text
 *   nets   out  a repeated pin is kept once, as elsewhere
 *   level  out  nvertices, weight
 * False on all ranks, with the fault, if the file is not as it should be. */
bool read_hypergraph_share(Ranks *ranks, const char *name, int64_t first, ShareHeader *header,
                           LooseNets *nets, Level *level, ShareFault *fault);

/* Reads a number for each of n vertices, one a line, as partition and fix files have them: those of
 * the own vertices.
 *   least, most  in  what may be there */
bool read_vertex_numbers(Ranks *ranks, const char *name, int64_t n, int64_t least, int64_t most,
                         std::vector<int> *numbers, ShareFault *fault);

#endif
