// SPDX-License-Identifier: MIT
/* mpi/cluster_partition.cpp: the partition command of zorpelx-mpi. */
#include "cluster_partition.h"

#include <chrono>
#include <csignal>
#include <cstdio>
#include <thread>
#include <unistd.h>

#include "cluster_commands.h"
#include "shard.h"

double seconds_now()
{
    using namespace std::chrono;
    return duration<double>(steady_clock::now().time_since_epoch()).count();
}

void heed_signals()
{
    struct sigaction action = {};
    action.sa_handler = stop_solving;
    action.sa_flags = SA_RESTART;
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
}

Settings with_threads(const Settings &settings, const Sharers &ranks)
{
    Settings chosen = settings;
    const unsigned processors = std::max(1u, std::thread::hardware_concurrency());
    if (chosen.threads == 0)
        chosen.threads = std::max(1, static_cast<int>(processors) / std::max(1, ranks.here));
    return chosen;
}

static Sharers look_around(MPI_Comm all)
{
    Sharers ranks = {all, 0, 0, 1};
    MPI_Comm_rank(all, &ranks.rank);
    MPI_Comm_size(all, &ranks.n);
    MPI_Comm host;
    MPI_Comm_split_type(all, MPI_COMM_TYPE_SHARED, 0, MPI_INFO_NULL, &host);
    MPI_Comm_size(host, &ranks.here);
    MPI_Comm_free(&host);
    MPI_Comm_set_errhandler(all, MPI_ERRORS_RETURN);
    return ranks;
}

static void check_usage(const Settings &settings)
{
    if (!settings.shard.empty() || settings.wait)
        fail(STATUS_USAGE, "--shard is for zorpelx; the ranks of zorpelx-mpi share all jobs");
    if (wants_engine(settings))
        fail(STATUS_USAGE,
             "the ranks share a search; --ubfactor, --runs and the schemes are of the "
             "engine alone");
    if (!settings.journal.empty()) check_sharing(settings);
}

Status run_cluster_partition(const Settings &given, MPI_Comm all)
{
    check_usage(given);
    const Sharers ranks = look_around(all);
    Settings settings = with_threads(given, ranks);
    settings.share = true;
    bool lost = false;
    heed_signals();
    const Status status = ranks.rank == 0 ? lead_search(settings, ranks, &lost)
                                          : follow_search(settings, ranks, &lost);
    if (!lost) return status;
    fflush(nullptr);
    _exit(status); // finalizing would wait for the lost
}
