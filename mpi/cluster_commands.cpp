// SPDX-License-Identifier: MIT
/* mpi/cluster_commands.cpp: the table of the commands of zorpelx-mpi. */
#include "cluster_commands.h"

#include "cluster_distributed.h"
#include "same_words.h"

const ProgramRow ZORPELX_MPI = {"zorpelx-mpi", "Partition hypergraphs by many processes."};

const std::vector<CommandRow> CLUSTER_COMMANDS = {
    {PARTITION | CLUSTER_PARTITION, "partition", "Divide a hypergraph into parts.",
     "The ranks share one search. The partition is the same for any number of ranks.",
     &ZORPELX_MPI},
    {CLUSTER_VERIFY, "verify", "Count cut, connectivity and weights of a partition.",
     "Each rank reads its share of the hypergraph and of the partition. The code shares nothing "
     "with "
     "the partitioner but the transport and the reading of shares.",
     &ZORPELX_MPI},
    {CLUSTER_CONVERT, "convert", "Write the binary form of a hypergraph.",
     "Ranks find their shares in it without reading the rest, whatever the sizes of hyperedges.",
     &ZORPELX_MPI},
};

Status run_cluster_command(const CommandRow &command, const Settings &settings, MPI_Comm ranks)
{
    const bool search = command.command != CLUSTER_VERIFY && command.command != CLUSTER_CONVERT &&
                        !settings.distributed; // its head compares by letters
    if (!search) {
        const Status status = check_same_words(settings, ranks);
        if (status != STATUS_OK) return status;
    }
    if (command.command == CLUSTER_VERIFY) return run_distributed_verify(settings, ranks);
    if (command.command == CLUSTER_CONVERT) return run_distributed_convert(settings, ranks);
    if (settings.distributed) return run_distributed_partition(settings, ranks);
    return run_cluster_partition(settings, ranks);
}
