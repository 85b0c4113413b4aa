// SPDX-License-Identifier: MIT
/* faults/fault_memory.cpp: every allocation of small runs over all schemes fails once, alone and
 * with all later ones.
 *
 * Each time the process must end with status 0 and one sentence that names the array. The names
 * seen are written to a file, for the comparison with those in the sources. The linker sends only
 * the engine's own calls of malloc here (--wrap), never those of the C library.
 */
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <set>
#include <string>
#include <unistd.h>
#include <vector>

#include "coarsen/coarsen.h"
#include "coarsen/collapse.h"
#include "core/heavy_assert.h"
#include "core/hgraph.h"
#include "core/memory.h"
#include "core/sort.h"
#include "driver/reports.h"
#include "fault_points.h"
#include "spare/dump.h"
#include "spare/direct.h"
#include "core/ctrl.h"
#include "partition/recursive.h"
#include "refine/fm.h"
#include "refine/gains.h"
#include "refine/uncoarsen.h"
#include "zorpel.h"
#include "spare/part_cuts.h"
#include "spare/hooks.h"

int program_main(int nwords, char **words);

/* The program's seed: the same points at every moment. */
extern "C" time_t __wrap_time(time_t *)
{
    return 1;
}

extern "C" void *__real_malloc(size_t size);
extern "C" void *__wrap_malloc(size_t size)
{
    if (!fault_here()) return __real_malloc(size);
    errno = ENOMEM;
    return nullptr;
}

static std::set<std::string> seen; // names of arrays in messages

static void judge_message(const Ending &ending)
{
    if (ending.signalled || ending.status != 0)
        return complain("%s %d, message: %s", ending.signalled ? "signal" : "status", ending.status,
                        ending.message.c_str());
    const std::string begin = "Memory allocation failed for ",
                      middle = ". Requested size: ", end = " bytes\n\n";
    const std::string &text = ending.message;
    const size_t at = text.rfind(middle);
    const size_t digits = at == std::string::npos ? 0 : at + middle.size();
    if (at == std::string::npos || at <= begin.size() ||
        text.compare(0, begin.size(), begin) != 0 || text.size() < digits + end.size() + 1 ||
        text.compare(text.size() - end.size(), end.size(), end) != 0 || atoi(&text[digits]) <= 0)
        return complain("not the message of a failed allocation: %s", text.c_str());
    seen.insert(text.substr(begin.size(), at - begin.size()));
}

/* ---- a small hypergraph -------------------------------------------------------------------- */

constexpr int NVTXS = 16, NHEDGES = 20, NPINS = 3 * (NHEDGES - 2) + 2 * 2;

// Triples in a ring, one of them twice, and an island.
struct Small {
    int eptr[NHEDGES + 1], eind[NPINS], vwgts[NVTXS], hewgts[NHEDGES];
};

static Small make_small()
{
    Small small = {};
    int used = 0;
    for (int e = 0; e < NHEDGES; e++) {
        small.eptr[e] = used;
        const int size = e < NHEDGES - 2 ? 3 : 2;
        for (int i = 0; i < size; i++)
            small.eind[used++] = (e % 17 + i * (1 + e % 2)) % (NVTXS - 1);
        small.hewgts[e] = 1 + e % 3;
    }
    small.eptr[NHEDGES] = used;
    for (int v = 0; v < NVTXS; v++) small.vwgts[v] = 1 + v % 2;
    return small;
}

static const Small SMALL = make_small();

static HGraph *small_record()
{
    HGraph *const graph = CreateHGraph__();
    graph->ncells = NVTXS;
    graph->nnets = NHEDGES;
    graph->nfixed = 0;
    graph->netptr = imalloc__(NHEDGES + 1, "netptr");
    graph->netind = imalloc__(NPINS, "netind");
    graph->cellwgt = imalloc__(NVTXS, "cellwgt");
    graph->netwgt = imalloc__(NHEDGES, "netwgt");
    memcpy(graph->netptr, SMALL.eptr, sizeof SMALL.eptr);
    memcpy(graph->netind, SMALL.eind, sizeof SMALL.eind);
    memcpy(graph->cellwgt, SMALL.vwgts, sizeof SMALL.vwgts);
    memcpy(graph->netwgt, SMALL.hewgts, sizeof SMALL.hewgts);
    return graph;
}

/* ---- runs ---------------------------------------------------------------------------------- */

static PartCtrl make_ctrl(int ctype, int rtype, int nparts)
{
    PartCtrl ctrl = {};
    ctrl.nparts = nparts;
    ctrl.ubfactor = 0.05f;
    ctrl.CoarsenTo = 5;
    ctrl.maxnetsize = MAX_NET_SIZE;
    ctrl.Nruns = 1;
    ctrl.CType = ctype;
    ctrl.RType = rtype;
    return ctrl;
}

static void partition_shallow(PartCtrl *ctrl, bool all_later)
{
    int part[NVTXS];
    for (int v = 0; v < NVTXS; v++) part[v] = ctrl->fixed && v < 3 ? v % ctrl->nparts : -1;
    HGraph *const graph = small_record();
    arm_faults(all_later, judge_message);
    MultilevelPartition__(ctrl, graph, part);
    disarm_faults();
    FreeHGraph__(graph);
}

// Every matching with every refinement; the other options take turns.
static void try_schemes(bool all_later)
{
    int turn = all_later ? 5 : 0;
    for (int ctype = 1; ctype <= 7; ctype++) {
        for (int rtype = 1; rtype <= 3; rtype++, turn++) {
            PartCtrl ctrl = make_ctrl(ctype, rtype, 2 + turn % 2);
            ctrl.VCycle = turn % 4;
            ctrl.Reconst = turn / 2 % 2;
            ctrl.fixed = turn / 3 % 2;
            ctrl.kwayrefine = turn % 5 == 0;
            partition_shallow(&ctrl, all_later);
        }
    }
}

// The triples are left out, so that the whole and its pruned copy differ.
static void try_pruning(bool all_later)
{
    PartCtrl ctrl = make_ctrl(CTYPE_FC, 1, 2);
    ctrl.maxnetsize = 2;
    partition_shallow(&ctrl, all_later);
}

static void try_direct(bool all_later, int objective)
{
    int part[NVTXS];
    PartCtrl ctrl = make_ctrl(objective == OBJECTIVE_CUT ? CTYPE_FC : CTYPE_EDGE, objective, 3);
    ctrl.ubfactor = 1.1f;
    ctrl.dbglvl = DBG_RUN;
    ctrl.VCycle = objective;
    HGraph *const graph = small_record();
    graph->keep = 1;
    arm_faults(all_later, judge_message);
    MultilevelKwayPartition__(&ctrl, graph, part);
    disarm_faults();
    FreeHGraph__(graph);
}

static void try_entries(bool all_later)
{
    const int options[ZORPEL_NOPTIONS] = {1, 1, 1, 1, 1, 0, 0, 1, 0};
    int part[NVTXS] = {0, 1, 0, 1, 1}, cut;
    arm_faults(all_later, judge_message);
    ZORPEL_2WayRefine(NVTXS, NHEDGES, SMALL.vwgts, SMALL.eptr, SMALL.eind, SMALL.hewgts, 5, options,
                      part, &cut);
    ZORPEL_PartRecursive(NVTXS, NHEDGES, nullptr, SMALL.eptr, SMALL.eind, nullptr, 2, 5, options,
                         part, &cut);
    disarm_faults();
}

/* Routines that the program does not call. */
static void try_others(bool all_later)
{
    HGraph *const graph = small_record();
    graph->nislands = 0;
    int pcuts[2];
    CreateIncidentHGraph__(graph);
    AllocateRefinementMemory__(graph);
    for (int v = 0; v < NVTXS; v++) graph->where[v] = v % 2;
    ComputeInitGains__(graph);
    arm_faults(all_later, judge_message);
    CheckDegrees(graph);
    hgraph_ok(graph, HG_LISTS | HG_INCIDENCE | HG_WHERE | HG_GAINS);
    ComputeActualSOED__(graph, graph->where);
    Print_Pins(graph, graph->where, 2);
    WriteConnectedHGraph(graph);
    ComputePartCuts(NHEDGES, 2, SMALL.eptr, SMALL.eind, SMALL.hewgts, graph->where, pcuts);
    const NetLists nets = {NHEDGES, graph->netptr, graph->netind, graph->netwgt};
    NetLists merged;
    CollapseSameHEdges__(&nets, &merged);
    disarm_faults();
    QXfree__(&merged.netptr, &merged.netind, &merged.netwgt, LTERM);
    FreeHGraph__(graph);
}

// A V-cycle, which the program makes on larger inputs only.
static void try_vcycle(bool all_later)
{
    PartCtrl ctrl = make_ctrl(RESTRICTED_STARS, RTYPE_EEFM, 2);
    ctrl.splitratio = 0.5f;
    ctrl.MaxCellWgt = 6;
    HGraph *const graph = small_record();
    graph->nislands = 0;
    CreateIncidentHGraph__(graph);
    graph->where = imalloc__(NVTXS, "where"); // the other arrays of a cycle are gone by then
    for (int v = 0; v < NVTXS; v++) graph->where[v] = v / (NVTXS / 2);
    arm_faults(all_later, judge_message);
    HGraph *const coarsest = CCoarsen__(&ctrl, graph);
    Refine__(&ctrl, graph, coarsest);
    disarm_faults();
    FreeHGraph__(graph);
}

// A level that is refined as a relabelled copy, with a hyperedge too large for packed counts.
static void try_large_level(bool all_later)
{
    constexpr int NVERTS = HEAVY_ASSERTS ? 400 : 5000, LARGE = 300;
    PartCtrl ctrl = make_ctrl(CTYPE_FC, RTYPE_FM, 2);
    ctrl.splitratio = 0.5f;
    HGraph *const graph = CreateHGraph__();
    graph->ncells = NVERTS;
    graph->nnets = NVERTS;
    graph->nfixed = graph->nislands = 0;
    graph->netptr = imalloc__(NVERTS + 1, "netptr");
    graph->netind = imalloc__(2 * (NVERTS - 1) + LARGE, "netind");
    graph->cellwgt = ismalloc__(NVERTS, 1, "cellwgt");
    graph->netwgt = ismalloc__(NVERTS, 1, "netwgt");
    graph->nearby = imalloc__(NVERTS, "nearby");
    for (int e = 0; e < NVERTS - 1; e++) {
        graph->netptr[e] = 2 * e;
        graph->netind[2 * e] = e;
        graph->netind[2 * e + 1] = e + 1;
    }
    graph->netptr[NVERTS - 1] = 2 * (NVERTS - 1);
    graph->netptr[NVERTS] = 2 * (NVERTS - 1) + LARGE;
    for (int i = 0; i < LARGE; i++) graph->netind[2 * (NVERTS - 1) + i] = i;
    CreateIncidentHGraph__(graph);
    AllocateRefinementMemory__(graph);
    for (int v = 0; v < NVERTS; v++) {
        graph->nearby[v] = NVERTS - 1 - v;
        graph->where[v] = v / 100 % 2;
    }
    ComputeInitGains__(graph);
    arm_faults(all_later, judge_message);
    Refine_FM__(&ctrl, graph, 2);
    disarm_faults();
    FreeHGraph__(graph);
}

// Pairs that are too far from their places for insertion, and an order that splits off 24 pairs at
// each partition: the two sorts that need memory then.
static void try_sorts(bool all_later)
{
    constexpr int n = 2000;
    static KeyValue far[n], lopsided[n];
    int place[n], next = 0;
    for (int i = 0; i < n; i++) {
        far[i] = {i % (n / 2), i};
        lopsided[i].val = place[i] = i;
    }
    while (next < n) {
        const int low = next, middle = low + (n - 1 - low) / 2;
        while (next < n && next < low + 23) {
            lopsided[place[next]].key = next;
            next++;
        }
        if (next == n) break;
        lopsided[place[middle]].key = next;
        place[middle] = place[next++];
    }
    arm_faults(all_later, judge_message);
    ikeysort__(n, far);
    dkeysort__(n, far);
    ikeysort__(n, lopsided);
    disarm_faults();
}

static void write_text(const char *name, const char *text)
{
    FILE *const file = fopen(name, "w");
    if (file == nullptr || fputs(text, file) < 0 || fclose(file) != 0) abort();
}

static void try_program(bool all_later)
{
    write_text("m.hgr", "3 4 11\n2 1 2\n1 2 3\n3 3 4\n1\n1\n2\n1\n");
    write_text("m.fix", "0\n-1\n-1\n1\n");
    char word[11][8] = {"zorpel", "m.hgr", "m.fix", "2", "5", "1", "5", "1", "0", "0", "0"};
    char *words[11];
    for (int i = 0; i < 11; i++) words[i] = word[i];
    arm_faults(all_later, judge_message);
    program_main(11, words);
    disarm_faults();
}

int main(int argc, char **argv)
{
    if (argc != 2) return 2;
    FILE *const names = fopen(argv[1], "w");
    if (names == nullptr || freopen("/dev/null", "w", stdout) == nullptr) return 2;
    for (const bool all_later : {false, true}) {
        try_schemes(all_later);
        try_pruning(all_later);
        try_direct(all_later, OBJECTIVE_CUT);
        try_direct(all_later, OBJECTIVE_SOED);
        try_entries(all_later);
        try_others(all_later);
        try_vcycle(all_later);
        try_large_level(all_later);
        try_sorts(all_later);
        try_program(all_later);
    }
    for (const std::string &name : seen) fprintf(names, "%s\n", name.c_str());
    if (fclose(names) != 0) return 2;
    fprintf(stderr, "%ld failed allocations, %zu names, %d complaints\n", count_points(),
            seen.size(), count_complaints());
    return count_complaints() > 0 || count_points() == 0;
}
