// SPDX-License-Identifier: MIT
/* partition/runs.cpp: independent multilevel runs of one hypergraph, the best one kept.
 *
 * Coarsening works on a copy without the large hyperedges; its result is refined on the whole
 * hypergraph, and V-cycles work on the whole. The generator is seeded once per hypergraph, so with
 * a given seed every bisection starts from the same random sequence: kept on purpose.
 */
#include "partition/runs.h"

#include <cassert>
#include <algorithm>

#include "coarsen/coarsen.h"
#include "core/memory.h"
#include "core/random.h"
#include "core/trace.h"
#include "core/vectors.h"
#include "partition/prune.h"

constexpr int MANY_RUNS = 11;
constexpr int MOST_KEPT = 3;
constexpr double NEAR_BEST = 1.2; // V-cycles on all runs: below this times the best value,
constexpr int WITHIN_BEST = 19;   // or at most this much above it

/* Candidates for the V-cycles after the last run. A slot holds no partition as long as its value is
 * the start value: a run whose value is not below that is never stored. */
struct RunStore {
    int nslots;
    int *parts[MOST_KEPT]; // [ncells] each
    long long values[MOST_KEPT];
};

/* All runs of one hypergraph. Who owns what:
 *
 *   graph   the caller's: the whole. It comes and goes without where; lists and weights stay
 *   sgraph  made and freed here: the whole without its large hyperedges. Where there are none it
 *           borrows graph's lists and incidence, so it is freed first
 *   where   one array, made by uncoarsening for sgraph, handed to graph after it, freed with the
 *           run's other results:
 *
 *                     sgraph->where   graph->where
 *     partition_pruned    made             -
 *     take_over             -           handed over, refined on the whole
 *     vcycles               -           refined
 *     end of the run        -           copied to part or a slot if good, freed
 *     finish_store          -           made anew, a slot's partition refined, freed
 *
 *   part    the caller's; written whenever a run is the best so far
 *   store   its slots are made by open_store and freed by finish_store
 */
struct Runs {
    const RunScheme *scheme;
    PartCtrl *ctrl;
    HGraph *graph;
    HGraph *sgraph;
    int *part;         // [ncells] best partition so far
    long long start;   // of the best value, see RunScheme
    long long best;    // its value
    long long bestrun; // best value on sgraph
    double sum;        // of the runs' values
    RunStore store;
};

static int value_of(const Runs *runs)
{
    return runs->graph->*runs->scheme->value;
}

static int *copy_where(const HGraph *graph, int *to)
{
    return icopy__(graph->ncells, graph->where, to);
}

static void open_store(Runs *runs)
{
    const PartCtrl *const ctrl = runs->ctrl;
    RunStore *const store = &runs->store;
    store->nslots = 0;
    if (ctrl->VCycle != VCYCLE_END) return;
    const int most = ctrl->Nruns < MANY_RUNS ? runs->scheme->kept_few : runs->scheme->kept_many;
    store->nslots = std::min(most, ctrl->Nruns);
    assert(store->nslots <= MOST_KEPT);
    for (int i = 0; i < store->nslots; i++) {
        store->parts[i] =
            imalloc__(static_cast<size_t>(runs->graph->ncells), "Hypergraph_Bisection: parts[i]");
        store->values[i] = runs->start;
    }
}

/* Puts graph's partition in the place of the worst stored one if it is better. */
static void offer_to_store(Runs *runs)
{
    RunStore *const store = &runs->store;
    if (store->nslots == 0) return;
    const long long *const worst = std::max_element(store->values, store->values + store->nslots);
    if (*worst <= value_of(runs)) return;
    const size_t slot = static_cast<size_t>(worst - store->values);
    assert(value_of(runs) < runs->start); // so that the slot is filled
    store->values[slot] = value_of(runs);
    copy_where(runs->graph, store->parts[slot]);
}

static void keep_if_best(Runs *runs)
{
    if (value_of(runs) >= runs->best) return;
    runs->best = value_of(runs);
    copy_where(runs->graph, runs->part);
}

/* One multilevel run on sgraph; true if it is the best so far. */
static bool partition_pruned(Runs *runs)
{
    const RunScheme *const scheme = runs->scheme;
    HGraph *const coarsest = Coarsen__(runs->ctrl, runs->sgraph);
    scheme->initial(runs->ctrl, coarsest);
    scheme->uncoarsen(runs->ctrl, runs->sgraph, coarsest);
    const int value = runs->sgraph->*scheme->value;
    assert(runs->sgraph->nislands == 0);
    if (value >= runs->bestrun) return false;
    runs->bestrun = value;
    return true;
}

/* Lets graph take over the partition of sgraph, refined on the whole if hyperedges were left out.
 */
static void take_over(Runs *runs)
{
    const RunScheme *const scheme = runs->scheme;
    PartCtrl *const ctrl = runs->ctrl;
    HGraph *const graph = runs->graph, *const sgraph = runs->sgraph;
    const bool trace = (ctrl->dbglvl & DBG_DETAIL) != 0;
    int *where = sgraph->where;
    sgraph->where = nullptr;
    assert(graph->where == nullptr && sgraph->ncells == graph->ncells);
    if (sgraph->nnets == graph->nnets) {
        graph->where = where;
        scheme->adopt_values(graph, sgraph);
    } else {
        if (trace) {
            print_trace(ctrl, "[%d, ", scheme->measure(ctrl, graph, where));
            flush_traces(ctrl);
        }
        if (graph->incptr == nullptr) CreateIncidentHGraph__(graph);
        scheme->allocate(ctrl, graph);
        QXfree__(&graph->where, LTERM);
        graph->where = where;
        scheme->refine(ctrl, graph);
        if (trace) {
            print_trace(ctrl, "%d]", value_of(runs));
            flush_traces(ctrl);
        }
    }
    if (trace)
        print_trace(ctrl, " [%4.2f]\n",
                    static_cast<double>(scheme->balance(ctrl, graph, graph->where)));
}

/* Whether this run deserves V-cycles of its own. */
static bool wants_vcycles(const Runs *runs, bool newmin)
{
    const long long value = value_of(runs);
    switch (runs->ctrl->VCycle) {
    case VCYCLE_ALL:
        return static_cast<double>(value) < NEAR_BEST * static_cast<double>(runs->best) ||
               value - runs->best <= WITHIN_BEST;
    case VCYCLE_FORMIN:
        return value <= runs->best || newmin;
    default:
        return false;
    }
}

static void make_run(Runs *runs, int run)
{
    const RunScheme *const scheme = runs->scheme;
    PartCtrl *const ctrl = runs->ctrl;
    HGraph *const graph = runs->graph;
    const bool newmin = partition_pruned(runs);
    if (ctrl->dbglvl & DBG_DETAIL) {
        scheme->trace_trial(ctrl, run, runs->sgraph);
        flush_traces(ctrl);
    }
    take_over(runs);
    assert(runs->sgraph->where == nullptr);
    free_cycle_arrays(graph);
    free_kway_arrays(graph);
    if (wants_vcycles(runs, newmin)) scheme->vcycles(ctrl, graph);
    if (ctrl->dbglvl & DBG_RUN)
        scheme->trace_run(ctrl, run, graph, scheme->balance(ctrl, graph, graph->where));
    runs->sum += value_of(runs);
    if (run == 0) copy_where(graph, runs->part); // even one beyond the start value is a result
    keep_if_best(runs);
    offer_to_store(runs);
    FreeRootHGraph__(graph);
    FreeRootHGraph__(runs->sgraph);
}

static void finish_slot(Runs *runs, const int *parts, long long value)
{
    assert(value < runs->start);
    HGraph *const graph = runs->graph;
    icopy__(graph->ncells, parts, graph->where);
    graph->*runs->scheme->value = static_cast<int>(value);
    runs->scheme->vcycles(runs->ctrl, graph);
    keep_if_best(runs);
}

/* V-cycles on the stored candidates, which are freed. */
static void finish_store(Runs *runs)
{
    HGraph *const graph = runs->graph;
    RunStore *const store = &runs->store;
    if (store->nslots == 0) return;
    graph->where = imalloc__(static_cast<size_t>(graph->ncells), "Hypergraph_Bisection: where");
    for (int i = 0; i < store->nslots; i++) {
        if (store->values[i] < runs->start) finish_slot(runs, store->parts[i], store->values[i]);
        QXfree__(&store->parts[i], LTERM);
    }
    FreeRootHGraph__(graph);
}

int best_of_runs(PartCtrl *ctrl, HGraph *graph, int *part, const RunScheme *scheme)
{
    const bool summarise = (ctrl->dbglvl & (DBG_BISECTION | DBG_DETAIL)) != 0;
    if (summarise) scheme->trace_header(ctrl, graph);
    // else the runs come first: they need no incidence of the whole, but memory at their peak
    if (!has_large_nets(ctrl, graph)) CreateIncidentHGraph__(graph);
    Runs runs = {};
    runs.scheme = scheme;
    runs.ctrl = ctrl;
    runs.graph = graph;
    runs.part = part;
    runs.sgraph = PruneHGraph__(ctrl, graph);
    runs.start = scheme->startfactor * sum_wide(graph->nnets, graph->netwgt) + 1;
    runs.best = runs.bestrun = runs.start;
    assert(runs.start > 0 && ctrl->Nruns > 0 && runs.sgraph->nnets <= graph->nnets);
    ctrl->MaxCellWgt = ComputeMaxCellWgt__(ctrl, graph->ncells, graph->cellwgt);
    open_store(&runs);

    const int ctype = ctrl->CType;
    InitRandom__(&ctrl->random, ctrl->seed);
    for (int run = 0; run < ctrl->Nruns; run++) {
        if (ctype == CTYPE_HFC) ctrl->CType = run % 2 == 0 ? CTYPE_HFC : CTYPE_FC;
        make_run(&runs, run);
    }
    ctrl->CType = ctype;
    finish_store(&runs);
    assert(graph->where == nullptr && runs.sgraph->where == nullptr);
    if (runs.best == runs.start) runs.best = scheme->measure(ctrl, graph, part);
    if (summarise)
        scheme->trace_summary(ctrl, static_cast<int>(runs.best), runs.sum / ctrl->Nruns,
                              scheme->balance(ctrl, graph, part));
    FreeHGraph__(runs.sgraph);
    return static_cast<int>(runs.best);
}
