/* mpi/cluster_commands.cpp: the table of the commands of zorpelx-mpi. */
#include "cluster_commands.h"

const ProgramRow ZORPELX_MPI = {"zorpelx-mpi", "Partition hypergraphs by many processes."};

const std::vector<CommandRow> CLUSTER_COMMANDS = {
    {PARTITION | CLUSTER_PARTITION, "partition", "Divide a hypergraph into parts.",
     "The ranks share one search. The partition is the same for any number of ranks.",
     &ZORPELX_MPI},
};

Status run_cluster_command(const CommandRow &, const Settings &settings, MPI_Comm ranks)
{
    return run_cluster_partition(settings, ranks);
}
