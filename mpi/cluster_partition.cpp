/* mpi/cluster_partition.cpp: the partition command of zorpelx-mpi. */
#include "cluster_commands.h"
#include "commands.h"

Status run_cluster_partition(const Settings &settings, MPI_Comm ranks)
{
    int rank, status = STATUS_OK;
    MPI_Comm_rank(ranks, &rank);
    if (rank == 0) status = run_partition(settings);
    MPI_Bcast(&status, 1, MPI_INT, 0, ranks);
    return static_cast<Status>(status);
}
