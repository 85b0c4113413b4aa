/* SPDX-License-Identifier: MIT */
/* mpi/cluster_partition.h: one search, shared by all ranks. */
#ifndef ZORPEL_MPI_CLUSTER_PARTITION_H
#define ZORPEL_MPI_CLUSTER_PARTITION_H

#include "failure.h"
#include "letters.h"

/* How the ranks stand to each other. */
struct Sharers {
    MPI_Comm all;
    int rank, n;
    int here; // on this host
};

/* Both return when the search is over everywhere that is still alive.
 *   lost  out: a rank is lost, so that MPI must not be finalized */
Status lead_search(const Settings &settings, const Sharers &ranks, bool *lost);
Status follow_search(const Settings &settings, const Sharers &ranks, bool *lost);

double seconds_now();

/* A signal asks for the best that there is, as often as it comes. */
void heed_signals();

/* Threads for the search of a rank, if the command line does not say. */
Settings with_threads(const Settings &settings, const Sharers &ranks);

constexpr double BEAT_EVERY = 0.5; // seconds

#endif
