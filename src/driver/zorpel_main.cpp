// SPDX-License-Identifier: MIT
/* driver/zorpel_main.cpp: the program: read, partition, write, report.
 *
 * Errors end the process with status 0, as everywhere in this program: its callers read messages.
 */
#include <csignal>
#include <cstdio>
#include <cstdlib>

#include "core/errors.h"
#include "core/memory.h"
#include "core/timers.h"
#include "core/vectors.h"
#include "driver/reports.h"
#include "io/partfile.h"
#include "io/read_hgraph.h"
#include "zorpel.h"

constexpr int SHORT_FORM = 10; // words of the command line, the program's name included
constexpr int LONG_FORM = 11;  // with a fix file

struct CommandLine {
    const char *graphfile;
    const char *fixfile; // null in the short form
    int nparts;
    int ubfactor;
    int options[ZORPEL_NOPTIONS];
};

static void print_usage(const char *program)
{
    printf("Usage: \n %s <GraphFile> <Nparts> <UBfactor> <Nruns> <Ctype> <RType> <VCycle> "
           "<Reconst> <dbglvl>\n",
           program);
    puts(" or");
    printf(" %s <GraphFile> <FixFile> <Nparts> <UBfactor> <Nruns> <Ctype> <RType> <VCycle> "
           "<Reconst> <dbglvl>\n",
           program);
    puts("Where:");
    puts(" GraphFile: name of the hypergraph file");
    puts(" FixFile  : name of the file containing pre-assignment of vertices to partitions");
    puts(" Nparts   : number of partitions desired");
    puts(" UBfactor : balance between the partitions (e.g., use 5 for a 45-55 bisection balance)");
    puts(" Nruns    : Number of Iterations ");
    puts(" CType    : HFC(1), FC(2), GFC(3), HEDGE(4), EDGE(5)");
    puts(" RType    : FM(1), 1WayFM(2), EEFM(3)");
    puts(" VCycle   : No(0), @End(1), ForMin(2), All(3)");
    puts(" Reconst  : NoReconstruct_HE(0), Reconstruct_HE (1)");
    puts(" dbglvl   : debug level\n");
}

/* The number at the start of a word, 0 if there is none, as atoi has it. */
static int word_value(const char *word)
{
    return static_cast<int>(strtol(word, nullptr, 10));
}

static CommandLine parse_words(int nwords, char *const *words)
{
    const bool fixed = nwords == LONG_FORM;
    CommandLine line = {words[1], fixed ? words[2] : nullptr, 0, 0, {}};
    char *const *const numbers = words + (fixed ? 3 : 2);
    line.nparts = word_value(numbers[0]);
    line.ubfactor = word_value(numbers[1]);
    line.options[ZORPEL_OPT_USE] = 1;
    line.options[ZORPEL_OPT_NRUNS] = word_value(numbers[2]);
    line.options[ZORPEL_OPT_CTYPE] = word_value(numbers[3]);
    line.options[ZORPEL_OPT_RTYPE] = word_value(numbers[4]);
    line.options[ZORPEL_OPT_VCYCLE] = word_value(numbers[5]);
    line.options[ZORPEL_OPT_RECONST] = word_value(numbers[6]);
    line.options[ZORPEL_OPT_FIXED] = fixed ? 1 : 0;
    line.options[ZORPEL_OPT_SEED] = -1; // from the clock
    line.options[ZORPEL_OPT_DBGLVL] = word_value(numbers[7]);
    return line;
}

static void read_fixed(const CommandLine *line, int nvtxs, int *part)
{
    ReadPartition(nvtxs, part, line->fixfile);
    if (part[iamax__(nvtxs, part)] >= line->nparts) {
        printf("Input Error:\n\tThe file %s contains more than %d sets of pre-assigned "
               "vertices.\n\n",
               line->fixfile, line->nparts);
        exit(0);
    }
    for (int v = 0; v < nvtxs; v++)
        if (part[v] < -1)
            errexit__("Number %d of the file %s is %d; -1 leaves a vertex free.\n", v + 1,
                      line->fixfile, part[v]);
}

static void print_timing(double partitioning, double io)
{
    printf("\n\nTiming Information ---------------------------------------------------------");
    printf("\n  Partitioning Time:\t\t %7.3fsec", partitioning);
    printf("\n           I/O Time:\t\t %7.3fsec", io);
    puts("\n*******************************************************************************");
}

int main(int nwords, char **words)
{
    if (nwords != SHORT_FORM && nwords != LONG_FORM) {
        print_usage(words[0]);
        return 0;
    }
    signal(SIGXFSZ, SIG_IGN); // a write beyond the limit of file sizes fails, and that is reported
    const CommandLine line = parse_words(nwords, words);

    double iotime = -seconds__();
    HGraph *graph = ReadHGraph(line.graphfile);
    iotime += seconds__();
    const int nvtxs = graph->ncells, nhedges = graph->nnets;
    int *part = ismalloc__(static_cast<size_t>(nvtxs), 0, "main: part");
    if (line.fixfile != nullptr) {
        iotime -= seconds__();
        read_fixed(&line, nvtxs, part);
        iotime += seconds__();
    }
    PrintInfo(graph, line.nparts, line.ubfactor, line.options, line.graphfile, MODE_RECURSIVE);

    double parttime = -seconds__();
    int edgecut = 0;
    ZORPEL_PartRecursive(nvtxs, nhedges, graph->cellwgt, graph->netptr, graph->netind,
                         graph->netwgt, line.nparts, line.ubfactor, line.options, part, &edgecut);
    parttime += seconds__();

    iotime -= seconds__();
    WriteHGraphPart(nvtxs, part, line.graphfile);
    iotime += seconds__();
    PrintPartStatistics(nvtxs, nhedges, line.nparts, graph->netptr, graph->netind, graph->netwgt,
                        graph->cellwgt, part);
    print_timing(parttime, iotime);
    QXfree__(&graph->netptr, &graph->netind, &graph->cellwgt, &graph->netwgt, &part, &graph, LTERM);
    if (fflush(stdout) != 0 || ferror(stdout))
        errexit__("Standard output cannot be written whole!\n");
    return 0;
}
