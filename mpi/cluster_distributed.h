/* SPDX-License-Identifier: MIT */
/* mpi/cluster_distributed.h: the commands on hypergraphs that no rank holds as a whole. */
#ifndef ZORPEL_MPI_CLUSTER_DISTRIBUTED_H
#define ZORPEL_MPI_CLUSTER_DISTRIBUTED_H

#include "cluster_commands.h"
#include "distributed/share_fault.h"

/* Every rank calls them, and gets the same status; throw Failure, on every rank. */
Status run_distributed_partition(const Settings &settings, MPI_Comm ranks);
Status run_distributed_verify(const Settings &settings, MPI_Comm ranks);
Status run_distributed_convert(const Settings &settings, MPI_Comm ranks);

/* What rank 0 says of a fault in a file. */
Status tell_fault(const Ranks *ranks, const std::string &name, const ShareFault &fault);

/* Does on each rank what may throw Failure, and has all of them end alike: rank 0 tells of the
 * first failure. STATUS_OK where there is none. */
template <class Work> Status on_all_ranks(Ranks *ranks, const Work &work)
{
    ShareFault fault = {};
    try {
        work();
    } catch (const Failure &failure) {
        note_fault(&fault, FAULT_IO, failure.status, "%s", failure.text.c_str());
    }
    if (!agree_on_fault(ranks, &fault)) return STATUS_OK;
    if (ranks->rank == 0) tell(fault.text);
    return static_cast<Status>(fault.line);
}

/* The most memory that this process has had, in bytes; 0 where the system does not tell. */
int64_t peak_memory();

#endif
