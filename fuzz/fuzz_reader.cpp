// SPDX-License-Identifier: MIT
/* fuzz/fuzz_reader.cpp: any bytes as a hypergraph file. What is accepted must be a sound record. */
#include <algorithm>

#include "core/hgraph.h"
#include "core/memory.h"
#include "hook.h"
#include "io/read_hgraph.h"

static void read_and_check(void *argument)
{
    const char *const name = static_cast<const char *>(argument);
    HGraph *graph = ReadHGraph(name);
    if (graph->ncells < 2 || graph->nnets < 0) fuzz_finding("counts out of range");
    // a weight that is not positive hides entries from the count, but not from its use as a bound
    const int counted = std::max(0, GetNetListSize(name));
    if (counted < graph->netptr[graph->nnets]) fuzz_finding("more pins than counted");
    if (!hgraph_ok(graph, HG_LISTS)) fuzz_finding("lists not sound");
    QXfree__(&graph->netptr, &graph->netind, &graph->cellwgt, &graph->netwgt, &graph, LTERM);
}

int LLVMFuzzerTestOneInput(const uint8_t *bytes, size_t size)
{
    const char *const name = fuzz_file(0, bytes, size);
    fuzz_survives(read_and_check, const_cast<char *>(name));
    return 0;
}
