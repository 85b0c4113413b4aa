// SPDX-License-Identifier: MIT
/* model/torture_calls.cpp: makes the call of a case, with a clock and an output of its own.
 *
 * The arrays handed over are copies of their exact size, so that the address sanitizer sees every
 * step beyond them, and must come back unchanged. The clock stands still: a seed taken from it is
 * the same on every run, and every case can be repeated.
 */
#include "torture_check.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <sys/mman.h>
#include <unistd.h>

#include "core/hgraph.h"
#include "spare/direct.h"
#include "core/ctrl.h"
#include "partition/entry.h"
#include "partition/recursive.h"

extern "C" time_t time(time_t *place)
{
    constexpr time_t now = 1000000000;
    if (place != nullptr) *place = now;
    return now;
}

/* Standard output goes to a file in memory between the two. */
struct Output {
    int file, kept;
};

static Output begin_output()
{
    static const int file = memfd_create("output", 0);
    fflush(stdout);
    const Output output = {file, dup(STDOUT_FILENO)};
    if (file < 0 || output.kept < 0 || dup2(file, STDOUT_FILENO) < 0) abort();
    return output;
}

static std::string end_output(const Output *output)
{
    fflush(stdout);
    const off_t size = lseek(output->file, 0, SEEK_CUR);
    std::string text(static_cast<size_t>(size), '\0');
    if (pread(output->file, text.data(), text.size(), 0) != size) abort();
    if (ftruncate(output->file, 0) != 0 || lseek(output->file, 0, SEEK_SET) != 0) abort();
    if (dup2(output->kept, STDOUT_FILENO) < 0 || close(output->kept) != 0) abort();
    return text;
}

// A copy on the heap of exactly the list; null when it is empty.
static int *copy_of(const std::vector<int> &list)
{
    if (list.empty()) return nullptr;
    int *const copy = static_cast<int *>(malloc(list.size() * sizeof(int)));
    if (copy == nullptr) abort();
    memcpy(copy, list.data(), list.size() * sizeof(int));
    return copy;
}

static void same_or_abort(const std::vector<int> &list, int *copy)
{
    if (copy != nullptr && memcmp(copy, list.data(), list.size() * sizeof(int)) != 0) {
        fprintf(stderr, "the caller's array was changed\n");
        abort();
    }
    free(copy);
}

// The control record as the entry points fill it, with a target size of the case's own.
static PartCtrl control_of(const Case &c)
{
    PartCtrl ctrl = {};
    ctrl.nparts = c.nparts;
    ctrl.ubfactor = static_cast<float>(c.ubfactor / 100.0);
    ctrl.CoarsenTo = c.coarsento;
    ctrl.maxnetsize = MAX_NET_SIZE;
    ctrl.Nruns = c.options[ZORPEL_OPT_NRUNS];
    ctrl.CType = c.options[ZORPEL_OPT_CTYPE];
    ctrl.RType = c.options[ZORPEL_OPT_RTYPE];
    ctrl.VCycle = c.options[ZORPEL_OPT_VCYCLE];
    ctrl.Reconst = c.options[ZORPEL_OPT_RECONST];
    ctrl.fixed = c.options[ZORPEL_OPT_FIXED];
    ctrl.seed = c.options[ZORPEL_OPT_SEED];
    ctrl.dbglvl = c.options[ZORPEL_OPT_DBGLVL];
    ctrl.kwayrefine = c.polish && c.nparts < KWAY_POLISH_PARTS;
    return ctrl;
}

static int *weights_or_ones(const std::vector<int> &weights, int n)
{
    return copy_of(weights.empty() ? std::vector<int>(static_cast<size_t>(n), 1) : weights);
}

// A record of the case's hypergraph, as the entry points build it.
static HGraph *record_of(const Case &c)
{
    HGraph *const graph = CreateHGraph__();
    graph->ncells = c.nvtxs;
    graph->nnets = count_hedges(c);
    graph->netptr = copy_of(c.eptr);
    graph->netind = copy_of(c.eind);
    graph->cellwgt = weights_or_ones(c.vwgts, c.nvtxs);
    graph->netwgt = weights_or_ones(c.hewgts, graph->nnets);
    graph->nfixed = 0;
    return graph;
}

static void call_by_record(const Case &c, int *part, int *edgecut, Crew *crew)
{
    PartCtrl ctrl = control_of(c);
    ctrl.crew = crew;
    if (crew != nullptr) ctrl.random = own_generator(1);
    HGraph *const graph = record_of(c);
    if (c.entry == ENTRY_DIRECT) {
        ctrl.ubfactor = static_cast<float>(1.0 + c.ubfactor / 100.0);
        graph->keep = 1;
        *edgecut = MultilevelKwayPartition__(&ctrl, graph, part);
    } else {
        *edgecut = MultilevelPartition__(&ctrl, graph, part);
    }
    FreeHGraph__(graph);
}

static void call_entry(const Case &c, int *part, int *edgecut, Crew *crew)
{
    int *const eptr = copy_of(c.eptr), *const eind = copy_of(c.eind);
    int *const vwgts = copy_of(c.vwgts), *const hewgts = copy_of(c.hewgts);
    const int nhedges = count_hedges(c);
    if (c.entry == ENTRY_REFINE) {
        srand(static_cast<unsigned>(c.options[ZORPEL_OPT_SEED]));
        ZORPEL_2WayRefine(c.nvtxs, nhedges, vwgts, eptr, eind, hewgts, c.ubfactor, c.options, part,
                          edgecut);
    } else if (crew != nullptr) {
        partition_with_crew(c.nvtxs, nhedges, vwgts, eptr, eind, hewgts, c.nparts, c.ubfactor,
                            c.options, part, edgecut, c.entry == ENTRY_RECURSIVE, crew);
    } else {
        const auto entry =
            c.entry == ENTRY_RECURSIVE ? ZORPEL_PartRecursive : ZORPEL_PartRecursiveInternal;
        entry(c.nvtxs, nhedges, vwgts, eptr, eind, hewgts, c.nparts, c.ubfactor, c.options, part,
              edgecut);
    }
    same_or_abort(c.eptr, eptr);
    same_or_abort(c.eind, eind);
    same_or_abort(c.vwgts, vwgts);
    same_or_abort(c.hewgts, hewgts);
}

Outcome make_call(const Case &c, Crew *crew)
{
    Outcome outcome = {c.part, -1, {}};
    int *const part = copy_of(c.part);
    const Output output = begin_output();
    if (c.entry == ENTRY_SHALLOW || c.entry == ENTRY_DIRECT)
        call_by_record(c, part, &outcome.edgecut, crew);
    else
        call_entry(c, part, &outcome.edgecut, crew);
    outcome.output = end_output(&output);
    if (part != nullptr) outcome.part.assign(part, part + c.nvtxs);
    free(part);
    return outcome;
}
