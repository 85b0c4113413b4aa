// SPDX-License-Identifier: MIT
/* mpi/cluster_main.cpp: zorpelx-mpi, from the command line to a command and its status.
 *
 * Rank 0 speaks for all where all have the same to say. A rank that fails alone ends the others.
 */
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <mpi.h>

#include "app.h"
#include "cluster_commands.h"
#include "commands.h"
#include "escaped.h"
#include "output.h"
#include "version.h"
#include "words.h"

static std::string help()
{
    std::string text = "Usage: mpirun -np RANKS zorpelx-mpi COMMAND [ARGUMENTS] [OPTIONS]\n\n";
    text += std::string(ZORPELX_MPI.summary) + "\n\nCommands:\n";
    for (const CommandRow &row : CLUSTER_COMMANDS)
        text += text_of("  %-12s  %s\n", row.name, row.summary);
    return text + "\nzorpelx-mpi COMMAND --help lists the options of a command.\n";
}

static Status print(const std::string &text, int rank)
{
    if (rank == 0) fputs(text.c_str(), stdout);
    flush_output();
    return STATUS_OK;
}

/* Help and version are asked for by exceptions. */
static Status parse_failed(const CLI::App &app, const CLI::ParseError &error,
                           const std::vector<std::string> &words, int rank)
{
    const CommandRow *const row = chosen_command(app, CLUSTER_COMMANDS);
    if (error.get_name() == "CallForVersion")
        return print("zorpelx-mpi " ZORPELX_CLI_VERSION "\n", rank);
    if (error.get_exit_code() == 0) return print(row != nullptr ? help_of(*row) : help(), rank);
    std::string fault = fault_of_words(words, CLUSTER_COMMANDS);
    if (fault.empty()) fault = error.what();
    fail(STATUS_USAGE, "%s\nSee zorpelx-mpi%s%s --help.", escaped(fault).c_str(), row ? " " : "",
         row ? row->name : "");
}

static Status run(std::vector<std::string> words, int rank)
{
    words = without_help_command(words, CLUSTER_COMMANDS);
    Settings settings = fallback_settings();
    settings.words = words;
    const auto app = make_app(&settings, CLUSTER_COMMANDS);
    try {
        app->parse(std::vector<std::string>(words.rbegin(), words.rend())); // the last one first
    } catch (const CLI::ParseError &error) {
        return parse_failed(*app, error, words, rank);
    }
    const CommandRow *const row = chosen_command(*app, CLUSTER_COMMANDS);
    if (row == nullptr) fail(STATUS_USAGE, "a command is needed; see --help");
    const Status status = run_cluster_command(*row, settings, MPI_COMM_WORLD);
    flush_output();
    return status;
}

/* Letters between ranks of a host go through shared memory and not straight out of the sender's,
 * which goes with it: a receive from a killed rank would fail, or never end. A distributed run
 * ends with any of its ranks and keeps the faster way. */
static void outlive_senders(int nwords, char **words)
{
    for (int i = 1; i < nwords; i++)
        if (strcmp(words[i], "--distributed") == 0) return;
    setenv("OMPI_MCA_btl_vader_single_copy_mechanism", "none", 0);
}

int main(int nwords, char **words)
{
    int threads, rank;
    outlive_senders(nwords, words);
    MPI_Init_thread(&nwords, &words, MPI_THREAD_FUNNELED, &threads);
    MPI_Comm_rank(MPI_COMM_WORLD, &rank);
    signal(SIGXFSZ, SIG_IGN); // a write past a file size limit fails, and that is told
    int status;
    try {
        status = run(std::vector<std::string>(words + (nwords > 0), words + nwords), rank);
    } catch (...) {
        const Failure failure = current_failure();
        status = failure.status;
        if (rank == 0 || failure.status != STATUS_USAGE) tell(failure.text);
        if (failure.status != STATUS_USAGE) MPI_Abort(MPI_COMM_WORLD, status);
    }
    MPI_Finalize();
    return status;
}
