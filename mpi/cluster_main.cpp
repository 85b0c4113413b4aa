// SPDX-License-Identifier: MIT
/* mpi/cluster_main.cpp: zorpelx-mpi, from the command line to a command and its status.
 *
 * Rank 0 speaks for all where all have the same to say. A rank that fails alone ends the others.
 */
#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <mpi.h>

#include "app.h"
#include "cluster_commands.h"
#include "commands.h"
#include "escaped.h"
#include "leak_check.h"
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

/* The command that this rank's words ask for; null: they asked for help, which was given. */
static const CommandRow *read_words(std::vector<std::string> words, int rank, Settings *settings)
{
    words = without_help_command(words, CLUSTER_COMMANDS);
    *settings = fallback_settings();
    settings->words = words;
    const ParsedWords parsed = parse_words(words, settings, CLUSTER_COMMANDS);
    const CommandRow *const row = parsed.command;
    if (parsed.wish == WISH_VERSION) {
        print("zorpelx-mpi " ZORPELX_CLI_VERSION "\n", rank);
        return nullptr;
    }
    if (parsed.wish == WISH_HELP) {
        print(row != nullptr ? help_of(*row) : help(), rank);
        return nullptr;
    }
    if (parsed.wish == WISH_UNCLEAR) refuse_words(parsed, words, CLUSTER_COMMANDS);
    if (row == nullptr) fail(STATUS_USAGE, "a command is needed; see --help");
    return row;
}

enum WordsKind { WORDS_WRONG, WORDS_ANSWERED, WORDS_RUN };

/* Whether all ranks run, or all have given help: one that would wait for ranks which have nothing
 * to run would wait forever. The first rank with wrong words speaks for all. */
static Status agree_on_words(WordsKind mine, const std::string &fault, int rank)
{
    int nranks;
    MPI_Comm_size(MPI_COMM_WORLD, &nranks);
    const int kind = mine;
    std::vector<int> kinds(static_cast<size_t>(nranks));
    MPI_Allgather(&kind, 1, MPI_INT, kinds.data(), 1, MPI_INT, MPI_COMM_WORLD);
    const auto wrong = std::find(kinds.begin(), kinds.end(), WORDS_WRONG);
    if (wrong != kinds.end()) {
        const int speaker = static_cast<int>(wrong - kinds.begin());
        if (rank != speaker) return STATUS_USAGE;
        tell(rank == 0 ? fault : text_of("rank %d: %s", rank, fault.c_str()));
        return STATUS_USAGE;
    }
    const auto other =
        std::find_if(kinds.begin(), kinds.end(), [&](int k) { return k != kinds[0]; });
    if (other == kinds.end()) return STATUS_OK;
    if (rank == 0)
        tell(text_of("rank %d has another command line than rank 0",
                     static_cast<int>(other - kinds.begin())));
    return STATUS_USAGE;
}

static Status run(const std::vector<std::string> &words, int rank)
{
    Settings settings;
    WordsKind kind = WORDS_WRONG;
    std::string fault;
    const CommandRow *row = nullptr;
    try {
        row = read_words(words, rank, &settings);
        kind = row != nullptr ? WORDS_RUN : WORDS_ANSWERED;
    } catch (...) {
        const Failure failure = current_failure();
        if (failure.status != STATUS_USAGE) throw;
        fault = failure.text;
    }
    const Status agreed = agree_on_words(kind, fault, rank);
    if (agreed != STATUS_OK || row == nullptr) return agreed;
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
    check_leaks();
    MPI_Finalize();
    return status;
}
