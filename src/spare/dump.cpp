// SPDX-License-Identifier: MIT
/* spare/dump.cpp: writers for inspecting hypergraphs while developing.
 *
 * They write what the reader of hypergraph files takes, vertices from 1, to files in the working
 * folder or to standard output. A file that could not be written whole ends the program, as every
 * failure of a file does.
 */
#include "spare/dump.h"

#include <cassert>
#include <cstdio>
#include <cstdlib>

#include "core/errors.h"
#include "core/memory.h"
#include "core/vectors.h"
#include "io/outfile.h"

/* " %d" for each vertex of e, renumbered by map unless that is null, from 1. */
static void put_pins(FILE *file, const HGraph *graph, int e, const int *map)
{
    for (int j = graph->netptr[e]; j < graph->netptr[e + 1]; j++) {
        const int v = graph->netind[j];
        assert(0 <= v && v < graph->ncells);
        fprintf(file, " %d", (map != nullptr ? map[v] : v) + 1);
    }
}

static FILE *open_dump(const char *name)
{
    return QXfopen__(name, "w", "Can't open output file");
}

void DumpHGraph(const HGraph *graph)
{
    puts("--------------------------");
    printf("%d %d\n", graph->nnets, graph->ncells);
    for (int e = 0; e < graph->nnets; e++) {
        printf("\n[%d]", graph->netwgt[e]);
        put_pins(stdout, graph, e, nullptr);
    }
    puts("\n--------------------------");
}

void WriteHGraph(const HGraph *graph)
{
    char name[32];
    snprintf(name, sizeof name, "hgr.%d", graph->ncells);
    FILE *const file = open_dump(name);
    fprintf(file, "%d %d 11", graph->nnets, graph->ncells);
    for (int e = 0; e < graph->nnets; e++) {
        fprintf(file, "\n%d", graph->netwgt[e]);
        put_pins(file, graph, e, nullptr);
    }
    for (int v = 0; v < graph->ncells; v++) fprintf(file, "\n%d", graph->cellwgt[v]);
    close_whole(file, name, "WriteHGraph");
}

void WriteConnectedHGraph(const HGraph *graph)
{
    int *const cellmap =
        imalloc__(static_cast<size_t>(graph->ncells), "WriteConnectedHGraph: cellmap");
    int connected = 0;
    for (int v = 0; v < graph->ncells; v++)
        cellmap[v] = graph->incptr[v + 1] > graph->incptr[v] ? connected++ : -1;
    FILE *const file = open_dump("new.hgr");
    fprintf(file, "%d %d", graph->nnets, connected);
    for (int e = 0; e < graph->nnets; e++) {
        fprintf(file, "\n");
        put_pins(file, graph, e, cellmap);
    }
    close_whole(file, "new.hgr", "WriteConnectedHGraph");
    free(cellmap);
}

void Print_Pins(const HGraph *graph, const int *where, int nparts)
{
    const size_t n = static_cast<size_t>(nparts);
    int *pins = ismalloc__(n, 0, "Print_Pins:pins");
    int *present = ismalloc__(n, -1, "Print_Pins:present"); // last hyperedge seen in each part
    for (int e = 0; e < graph->nnets; e++) {
        const int begin = graph->netptr[e], end = graph->netptr[e + 1];
        bool cut = false;
        for (int j = begin + 1; j < end && !cut; j++)
            cut = where[graph->netind[j]] != where[graph->netind[begin]];
        for (int j = begin; cut && j < end; j++) {
            const int p = where[graph->netind[j]];
            if (present[p] == e) continue;
            present[p] = e;
            pins[p]++;
        }
    }
    puts("Number of Pins for each partition are: ");
    for (int p = 0; p < nparts; p++) printf("%d ", pins[p]);
    printf("\nTotal number of pins = %d\n", iasum__(nparts, pins));
    QXfree__(&pins, &present, LTERM);
}
