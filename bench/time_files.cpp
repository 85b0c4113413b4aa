// SPDX-License-Identifier: MIT
/* bench/time_files.cpp: zorpel-io, which times the program's own reader and writer.
 *
 *   zorpel-io FILE [NPARTS]
 * Reads a hypergraph file, gives vertex v part v % NPARTS (2) and writes the partition file beside
 * the hypergraph, where it stays. Prints one line of CSV: CPU seconds of reading, of writing,
 * vertices, hyperedges, pins after repeated ones are dropped.
 */
#include <cstdio>
#include <cstdlib>
#include <vector>

#include "core/timers.h"
#include "io/partfile.h"
#include "io/read_hgraph.h"

int main(int nwords, char **words)
{
    const int nparts = nwords == 3 ? atoi(words[2]) : 2;
    if (nwords < 2 || nwords > 3 || nparts < 1) {
        fputs("usage: zorpel-io FILE [NPARTS]\n", stderr);
        return 2;
    }
    double reading = -seconds__();
    HGraph *const graph = ReadHGraph(words[1]);
    reading += seconds__();
    std::vector<int> part(static_cast<size_t>(graph->ncells));
    for (size_t v = 0; v < part.size(); v++) part[v] = static_cast<int>(v) % nparts;
    double writing = -seconds__();
    WriteHGraphPart(graph->ncells, part.data(), words[1]);
    writing += seconds__();
    printf("%.6f,%.6f,%d,%d,%d\n", reading, writing, graph->ncells, graph->nnets,
           graph->netptr[graph->nnets]);
    FreeHGraph__(graph);
    return 0;
}
