/* SPDX-License-Identifier: MIT */
/* io/read_hgraph.h: the hypergraph file. */
#ifndef ZORPEL_IO_READ_HGRAPH_H
#define ZORPEL_IO_READ_HGRAPH_H

#include "core/hgraph.h"

/* Number of vertex entries on the hyperedge lines of the file, repeated ones included. */
int GetNetListSize(const char *name);

/* Reads a hypergraph file into a new record: ncells, nnets, netptr, netind and, where the file has
 * them, netwgt and cellwgt (null otherwise). A vertex that a hyperedge lists again is dropped.
 * Errors: a malformed file ends the process with a message; nothing is checked about weights. */
HGraph *ReadHGraph(const char *name);

#endif
