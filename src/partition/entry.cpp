// SPDX-License-Identifier: MIT
/* partition/entry.cpp: the exported entry points.
 *
 * Each checks its arguments before anything is built, copies the caller's arrays into a fresh
 * record, runs the work and copies the result out. Every entry of every array is checked, in
 * O(vertices + pins): whatever the arrays hold, a call ends in a result or in one sentence.
 * Messages count vertices and hyperedges from 0, as the arrays do.
 */
#include "partition/entry.h"

#include <cassert>
#include <climits>

#include "core/errors.h"
#include "core/heavy_assert.h"
#include "core/memory.h"
#include "core/timers.h"
#include "core/vectors.h"
#include "partition/recursive.h"
#include "refine/fm.h"
#include "refine/gains.h"
#include "zorpel.h"

constexpr int REFINE_PASSES = 10;          // of ZORPEL_2WayRefine
constexpr int MOST_COUNT = INT_MAX - 1023; // of anything: an index may look this far ahead

static PartCtrl make_ctrl(int nparts, int ubfactor, const int *options)
{
    static const int defaults[ZORPEL_NOPTIONS] = {
        1, 10, ZORPEL_CTYPE_HFC, ZORPEL_RTYPE_FM, ZORPEL_VCYCLE_END, 0, 0, -1, 0};
    if (options == nullptr) errexit__("The options array is missing.\n");
    if (options[ZORPEL_OPT_USE] == 0) options = defaults;
    PartCtrl ctrl = {};
    ctrl.nparts = nparts;
    ctrl.ubfactor = static_cast<float>(ubfactor / 100.0);
    ctrl.CoarsenTo = COARSEN_TO;
    ctrl.maxnetsize = MAX_NET_SIZE;
    ctrl.Nruns = options[ZORPEL_OPT_NRUNS];
    ctrl.CType = options[ZORPEL_OPT_CTYPE];
    ctrl.RType = options[ZORPEL_OPT_RTYPE];
    ctrl.VCycle = options[ZORPEL_OPT_VCYCLE];
    ctrl.Reconst = options[ZORPEL_OPT_RECONST];
    ctrl.fixed = options[ZORPEL_OPT_FIXED];
    ctrl.seed = options[ZORPEL_OPT_SEED];
    ctrl.dbglvl = options[ZORPEL_OPT_DBGLVL];
    return ctrl;
}

static bool outside(int value, int least, int most)
{
    return value < least || value > most;
}

static void check_options(const PartCtrl *ctrl, int ubfactor)
{
    if (ctrl->nparts < 2) errexit__("Nparts should be at least 2.\n");
    if (outside(ubfactor, 1, 49)) errexit__("UBfactor should be between 1 and 49.\n");
    if (ctrl->Nruns < 1) errexit__("Nruns should be at least 1.\n");
    if (outside(ctrl->CType, 1, 5)) errexit__("Ctype should be between 1 and 5.\n");
    if (outside(ctrl->RType, 1, 3)) errexit__("Rtype should be between 1 and 3.\n");
    if (outside(ctrl->VCycle, 0, 3)) errexit__("Vcycle should be between 0 and 3.\n");
    if (outside(ctrl->Reconst, 0, 1)) errexit__("Reconst should be between 0 and 1.\n");
    if (outside(ctrl->fixed, 0, 1)) errexit__("Fixed should be between 0 and 1.\n");
}

/* kind names what is counted. */
static void check_count(int n, const char *kind)
{
    if (n < 0) errexit__("The number of %s should not be negative.\n", kind);
    if (n > MOST_COUNT) errexit__("The number of %s should be at most %d.\n", kind, MOST_COUNT);
}

static void check_starts(int nvtxs, int nhedges, const int *eptr, const int *eind)
{
    check_count(nvtxs, "vertices");
    check_count(nhedges, "hyperedges");
    if (eptr == nullptr) errexit__("The array of hyperedge starts is missing.\n");
    if (eptr[0] != 0) errexit__("The first hyperedge should start at 0.\n");
    for (int e = 0; e < nhedges; e++)
        if (eptr[e + 1] < eptr[e]) errexit__("Hyperedge %d ends before it starts.\n", e);
    check_count(eptr[nhedges], "pins");
    if (eind == nullptr && eptr[nhedges] > 0)
        errexit__("The array of the hyperedges' vertices is missing.\n");
}

/* Every vertex of a hyperedge is a vertex, listed once. */
static void check_pins(int nvtxs, int nhedges, const int *eptr, const int *eind)
{
    int *last = ismalloc__(static_cast<size_t>(nvtxs), -1, "ZORPEL: last"); // hyperedge with each
    for (int e = 0; e < nhedges; e++)
        for (int j = eptr[e]; j < eptr[e + 1]; j++) {
            const int v = eind[j];
            if (outside(v, 0, nvtxs - 1))
                errexit__("Hyperedge %d lists vertex %d; there are %d, counted from 0.\n", e, v,
                          nvtxs);
            if (last[v] == e) errexit__("Hyperedge %d lists vertex %d more than once.\n", e, v);
            last[v] = e;
        }
    QXfree__(&last, LTERM);
}

/* kind names the weights in messages. */
static void check_weights(int n, const int *wgts, const char *kind)
{
    if (wgts == nullptr) return;
    for (int i = 0; i < n; i++)
        if (wgts[i] < 0) errexit__("The weight of %s %d should not be negative.\n", kind, i);
    if (sum_wide(n, wgts) > MOST_WEIGHT)
        errexit__("The %s weights should total at most 2147483646.\n", kind);
}

/* Entries of part outside least..most end the process. */
static void check_parts(int nvtxs, const int *part, int least, int most)
{
    for (int v = 0; v < nvtxs; v++)
        if (outside(part[v], least, most))
            errexit__("The part of vertex %d should be between %d and %d.\n", v, least, most);
}

/* Compression makes a vertex of each part, beside the free ones. */
static void check_compressed(int nvtxs, int nparts, const int *part)
{
    long long n = nparts;
    for (int v = 0; v < nvtxs; v++) n += part[v] == -1;
    if (n > MOST_COUNT)
        errexit__("The parts and the free vertices together should number at most %d.\n",
                  MOST_COUNT);
}

static void check_results(int nvtxs, const int *part, const int *edgecut)
{
    if (part == nullptr && nvtxs > 0) errexit__("The part array is missing.\n");
    if (edgecut == nullptr) errexit__("The place for the cut is missing.\n");
}

static void check_arrays(int nvtxs, int nhedges, const int *vwgts, const int *eptr, const int *eind,
                         const int *hewgts, const int *part, const int *edgecut)
{
    check_starts(nvtxs, nhedges, eptr, eind);
    check_weights(nvtxs, vwgts, "vertex");
    check_weights(nhedges, hewgts, "hyperedge");
    check_results(nvtxs, part, edgecut);
    check_pins(nvtxs, nhedges, eptr, eind);
}

/* A copy of wgts [n], all 1 when that is null. */
static int *copy_weights(int n, const int *wgts, const char *text)
{
    if (wgts == nullptr) return ismalloc__(static_cast<size_t>(n), 1, text);
    return icopy__(n, wgts, imalloc__(static_cast<size_t>(n), text));
}

// bytes: enough for a run to reuse its memory, and what any run uses, for a pin that is not pruned
constexpr size_t KEPT_PER_PIN = 96, USED_PER_PIN = 48;

/* Pins of the hyperedges that pruning leaves. */
static size_t unpruned_pins(int nhedges, const int *eptr)
{
    assert(nhedges >= 0 && eptr[0] == 0);
    size_t npins = 0;
    for (int e = 0; e < nhedges; e++) {
        const int size = eptr[e + 1] - eptr[e];
        npins += static_cast<size_t>(size <= MAX_NET_SIZE ? size : 0);
    }
    return npins;
}

static HGraph *copy_hypergraph(int nvtxs, int nhedges, const int *vwgts, const int *eptr,
                               const int *eind, const int *hewgts)
{
    keep_freed_memory(KEPT_PER_PIN * static_cast<size_t>(eptr[nhedges]),
                      USED_PER_PIN * unpruned_pins(nhedges, eptr));
    HGraph *const graph = CreateHGraph__();
    graph->ncells = nvtxs;
    assert(nvtxs >= 0 && nhedges >= 0 && eptr[0] == 0);
    graph->nnets = nhedges;
    graph->cellwgt = copy_weights(nvtxs, vwgts, "ZORPEL: graph->cellwgt");
    graph->netwgt = copy_weights(nhedges, hewgts, "ZORPEL: graph->netwgt");
    graph->netptr = imalloc__(static_cast<size_t>(nhedges) + 1, "ZORPEL: graph->netptr");
    graph->netind = imalloc__(static_cast<size_t>(eptr[nhedges]), "ZORPEL: graph->netind");
    icopy__(nhedges + 1, eptr, graph->netptr);
    icopy__(eptr[nhedges], eind, graph->netind);
    HEAVY_ASSERT(hgraph_ok(graph, HG_LISTS));
    return graph;
}

static void start_total(PartCtrl *ctrl)
{
    if (ctrl->dbglvl & DBG_TIME) InitTimers__(ctrl);
    start_timer(ctrl, TIME_TOTAL);
}

static void stop_total(PartCtrl *ctrl)
{
    stop_timer(ctrl, TIME_TOTAL);
    if (ctrl->dbglvl & DBG_TIME) PrintTimers__(ctrl, 0);
}

static void partition_recursive(int nvtxs, int nhedges, const int *vwgts, const int *eptr,
                                const int *eind, const int *hewgts, int nparts, int ubfactor,
                                const int *options, int *part, int *edgecut, int kwayrefine,
                                Crew *crew)
{
    PartCtrl ctrl = make_ctrl(nparts, ubfactor, options);
    ctrl.kwayrefine = kwayrefine;
    ctrl.crew = crew;
    if (crew != nullptr) ctrl.random = own_generator(1); // where rand() starts
    check_options(&ctrl, ubfactor);
    check_arrays(nvtxs, nhedges, vwgts, eptr, eind, hewgts, part, edgecut);
    if (ctrl.fixed) {
        check_parts(nvtxs, part, -1, nparts - 1);
        check_compressed(nvtxs, nparts, part);
    }

    start_total(&ctrl);
    HGraph *const graph = copy_hypergraph(nvtxs, nhedges, vwgts, eptr, eind, hewgts);
    HEAVY_ASSERT(ctrl_ok(&ctrl) && (crew == nullptr || crew_at_rest_ok(crew)));
    start_timer(&ctrl, TIME_MULTILEVEL);
    *edgecut = MultilevelPartition__(&ctrl, graph, part);
    stop_timer(&ctrl, TIME_MULTILEVEL);
    HEAVY_ASSERT(crew == nullptr || crew_at_rest_ok(crew));
    stop_total(&ctrl);
    FreeHGraph__(graph);
}

void ZORPEL_PartRecursive(int nvtxs, int nhedges, const int *vwgts, const int *eptr,
                          const int *eind, const int *hewgts, int nparts, int ubfactor,
                          const int *options, int *part, int *edgecut)
{
    partition_recursive(nvtxs, nhedges, vwgts, eptr, eind, hewgts, nparts, ubfactor, options, part,
                        edgecut, nparts < KWAY_POLISH_PARTS, nullptr);
}

void ZORPEL_PartRecursiveInternal(int nvtxs, int nhedges, const int *vwgts, const int *eptr,
                                  const int *eind, const int *hewgts, int nparts, int ubfactor,
                                  const int *options, int *part, int *edgecut)
{
    partition_recursive(nvtxs, nhedges, vwgts, eptr, eind, hewgts, nparts, ubfactor, options, part,
                        edgecut, 0, nullptr);
}

void partition_with_crew(int nvtxs, int nhedges, const int *vwgts, const int *eptr, const int *eind,
                         const int *hewgts, int nparts, int ubfactor, const int *options, int *part,
                         int *edgecut, int polish, Crew *crew)
{
    partition_recursive(nvtxs, nhedges, vwgts, eptr, eind, hewgts, nparts, ubfactor, options, part,
                        edgecut, polish && nparts < KWAY_POLISH_PARTS, crew);
}

void ZORPEL_2WayRefine(int nvtxs, int nhedges, const int *vwgts, const int *eptr, const int *eind,
                       const int *hewgts, int ubfactor, const int *options, int *part, int *edgecut)
{
    PartCtrl ctrl = make_ctrl(2, ubfactor, options);
    ctrl.Reconst = 0;
    ctrl.fixed = 0;
    ctrl.splitratio = 0.5f;
    check_arrays(nvtxs, nhedges, vwgts, eptr, eind, hewgts, part, edgecut);
    check_parts(nvtxs, part, 0, 1);

    start_total(&ctrl);
    HGraph *const graph = copy_hypergraph(nvtxs, nhedges, vwgts, eptr, eind, hewgts);
    graph->nfixed = 0;
    CreateIncidentHGraph__(graph);
    AllocateRefinementMemory__(graph);
    icopy__(nvtxs, part, graph->where);
    Refine_FM__(&ctrl, graph, REFINE_PASSES);
    icopy__(nvtxs, graph->where, part);
    *edgecut = graph->mincut;
    stop_total(&ctrl);
    FreeHGraph__(graph);
}
