/* SPDX-License-Identifier: MIT */
/* mpi/cluster_commands.h: the commands of zorpelx-mpi. Every rank calls them together. */
#ifndef ZORPEL_MPI_CLUSTER_COMMANDS_H
#define ZORPEL_MPI_CLUSTER_COMMANDS_H

#include <vector>

#include <mpi.h>

#include "failure.h"
#include "options.h"

extern const ProgramRow ZORPELX_MPI;
extern const std::vector<CommandRow> CLUSTER_COMMANDS;

/* Returns the status of the process, the same on every rank; throws Failure. */
Status run_cluster_command(const CommandRow &command, const Settings &settings, MPI_Comm ranks);

Status run_cluster_partition(const Settings &settings, MPI_Comm ranks);

#endif
