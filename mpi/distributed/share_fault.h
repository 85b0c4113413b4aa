/* SPDX-License-Identifier: MIT */
/* mpi/distributed/share_fault.h: what is wrong with a file, agreed on by all ranks. */
#ifndef ZORPEL_MPI_DISTRIBUTED_SHARE_FAULT_H
#define ZORPEL_MPI_DISTRIBUTED_SHARE_FAULT_H

#include "distributed/ranks.h"

enum FaultKind { FAULT_NONE, FAULT_IO, FAULT_INPUT };

/* The first fault that a rank has found. */
struct ShareFault {
    int64_t kind; // FaultKind
    int64_t line; // data line from 0, comments not counted; or a place in a binary file
    char text[256];
};

/* Notes a fault, if it is the first. */
void note_fault(ShareFault *fault, FaultKind kind, int64_t line, const char *format, ...)
    __attribute__((format(printf, 4, 5)));

/* Gives all ranks the fault of the smallest line, of the lowest rank. Returns whether there is one.
 */
bool agree_on_fault(Ranks *ranks, ShareFault *fault);

#endif
