// SPDX-License-Identifier: MIT
/* coarsen/coarsen.cpp: the multilevel coarsening drivers.
 *
 * One loop serves ordinary and restricted coarsening: park the islands, match and contract, look at
 * the progress. A scheme that stalls once is replaced by edge matching where it has a fallback, and
 * the ratio asked for is relaxed; a second slow level ends coarsening, as the first one does for
 * edge matching and in restricted coarsening.
 */
#include "coarsen/coarsen.h"

#include <algorithm>
#include <cassert>
#include <cstdlib>
#include <cstring>

#include "coarsen/match_edges.h"
#include "coarsen/match_hedges.h"
#include "coarsen/match_star.h"
#include "core/errors.h"
#include "core/heavy_assert.h"
#include "core/memory.h"
#include "core/numbers.h"
#include "core/timers.h"
#include "core/trace.h"
#include "core/vectors.h"
#include "core/islands.h"

constexpr int STRENGTH_LEVELS = 4;         // levels that HFC visits by strength of connection
constexpr float PROGRESS_RATIO = 0.8f;     // of the finer level's vertices: more is slow progress
constexpr double RATIO_RELAXATION = 1.075; // after the first slow level
constexpr int LARGE_NET = 4;               // pins, for the trace only

int NumOfLargeNets__(int nnets, const int *netptr)
{
    int nlarge = 0;
    for (int e = 0; e < nnets; e++) nlarge += netptr[e + 1] - netptr[e] >= LARGE_NET;
    return nlarge;
}

/* Work arrays of all levels. */
struct CoarsenWork {
    MatchWork match;  // sized by the finest level: m = max(ncells, nnets)
    bool *cutnets[2]; // [m] restricted: of a level and of the next coarser one, in turn
    bool restricted;  // the parts of where are kept (V-cycles)
};

/* What tells the two ways to coarsen apart. */
struct ChainRules {
    bool restricted;
};

static CoarsenWork open_work(const HGraph *graph, ChainRules rules)
{
    const size_t m = static_cast<size_t>(std::max(graph->ncells, graph->nnets));
    CoarsenWork work;
    work.restricted = rules.restricted;
    work.match.htable = ismalloc__(2 * m, -1, "Coarsen: htable");
    work.match.perm = imalloc__(m, "Coarsen: perm");
    work.match.vpairs = imalloc__(2 * m, "Coarsen: vpairs");
    work.cutnets[0] = rules.restricted ? alloc_array<bool>(2 * m, "Coarsen: cutnets") : nullptr;
    work.cutnets[1] = rules.restricted ? work.cutnets[0] + m : nullptr;
    return work;
}

[[gnu::cold]] static void trace_level(const PartCtrl *ctrl, const HGraph *graph)
{
    const double ncells = graph->ncells, nnets = graph->nnets;
    const int netwgt = iasum__(graph->nnets, graph->netwgt);
    print_trace(ctrl, "[%6d %6d %6.2f %6.2f %6.2f %6.2f, %6d %6d %6d %6.2f]\n", graph->ncells,
                graph->nnets, graph->incptr[graph->ncells] / ncells,
                graph->netptr[graph->nnets] / nnets, nnets / ncells,
                NumOfLargeNets__(graph->nnets, graph->netptr) / ncells, netwgt, graph->removedwgt,
                netwgt + graph->removedwgt, netwgt / ncells);
}

/* level counts the contractions made so far in this call. */
static void match_level(PartCtrl *ctrl, HGraph *graph, const MatchWork *work, int level, bool slow)
{
    switch (match_scheme(ctrl)) {
    case CTYPE_HFC:
        Match_EdgesStars__(ctrl, graph, work,
                           level < STRENGTH_LEVELS ? VisitOrder::by_strength
                                                   : VisitOrder::by_degree);
        return;
    case CTYPE_FC:
        Match_EdgesStars__(ctrl, graph, work, VisitOrder::by_degree);
        return;
    case CTYPE_GFC:
        Match_EdgesStars__(ctrl, graph, work, VisitOrder::by_strength);
        return;
    case CTYPE_HEDGE:
    case CTYPE_HEDGE_ONLY:
    case CTYPE_HEDGE_EDGE:
        if (slow) break;
        if (match_scheme(ctrl) == CTYPE_HEDGE)
            Match_Hedges_PHedges_Edges__(ctrl, graph, work);
        else if (match_scheme(ctrl) == CTYPE_HEDGE_ONLY)
            Match_Hedges__(ctrl, graph, work);
        else
            Match_Hedges_Edges__(ctrl, graph, work);
        return;
    case CTYPE_EDGE:
        break;
    default:
        errexit__("Unknown matching type! %d\n", ctrl->CType);
    }
    Match_Edges__(ctrl, graph, work);
}

/* The marks that are not the level's. A level has them only while its coarser level is made: it
 * passes them on, and the next level but one writes over them. */
static bool *other_marks(const HGraph *graph, const CoarsenWork *work)
{
    assert(graph->cutnets == work->cutnets[0] || graph->cutnets == work->cutnets[1]);
    return work->cutnets[graph->cutnets == work->cutnets[0] ? 1 : 0];
}

/* Says which hyperedges of the coarser level the partition cuts: those that cut ones became. */
static void carry_cut_nets(HGraph *graph, const CoarsenWork *work)
{
    HGraph *const coarser = graph->coarser;
    bool *const marks = other_marks(graph, work);
    assert(coarser->nnets <= graph->nnets && marks != graph->cutnets);
    memset(marks, 0, static_cast<size_t>(std::max(coarser->nnets, 1)));
    for (int e = 0; e < graph->nnets; e++) // dropped ones are not cut, wherever they are noted
        marks[at_least_0(graph->netmap[e])] |= graph->cutnets[e];
    coarser->cutnets = marks;
    graph->cutnets = nullptr;
}

/* Moves the partition of graph down to its coarser level. */
static void carry_partition(HGraph *graph, const CoarsenWork *work)
{
    HGraph *const coarser = graph->coarser;
    int *const cwhere = imalloc__(static_cast<size_t>(coarser->ncells), "CCoarsen: cwhere");
    for (int v = 0; v < graph->ncells; v++) {
        assert(0 <= graph->cellmap[v] && graph->cellmap[v] < coarser->ncells);
        cwhere[graph->cellmap[v]] = graph->where[v];
    }
    QXfree__(&graph->where, LTERM);
    coarser->where = cwhere;
    carry_cut_nets(graph, work);
}

static void match_restricted(PartCtrl *ctrl, HGraph *graph, const CoarsenWork *work)
{
    HEAVY_ASSERT(cut_nets_ok(graph));
    if (restricted_scheme(ctrl) == RESTRICTED_STARS)
        CMatch_EdgesStars__(ctrl, graph, graph->where, &work->match);
    else if (restricted_scheme(ctrl) == RESTRICTED_EDGES)
        CMatch_Edges__(ctrl, graph, graph->where, &work->match);
    else
        errexit__("Unknown matching type! %d\n", ctrl->CType);
}

/* Too few vertices of finer disappeared in coarser. */
static bool slow_progress(const HGraph *finer, const HGraph *coarser, float ratio)
{
    return static_cast<float>(coarser->ncells) > static_cast<float>(finer->ncells) * ratio ||
           coarser->ncells == finer->ncells;
}

/* Makes the next level of graph. */
static HGraph *coarsen_level(PartCtrl *ctrl, HGraph *graph, const CoarsenWork *work, int level,
                             bool slow)
{
    SeparateIslands__(graph);
    start_timer(ctrl, TIME_AUX1);
    if (work->restricted)
        match_restricted(ctrl, graph, work);
    else
        match_level(ctrl, graph, &work->match, level, slow);
    stop_timer(ctrl, TIME_AUX1);
    assert(graph->coarser != nullptr && graph->coarser->finer == graph);
    assert(graph->coarser->ncells <= graph->ncells && graph->coarser->nfixed == graph->nfixed);
    if (work->restricted) carry_partition(graph, work);
    graph->coarser->level = level + 1;
    return graph->coarser;
}

static HGraph *coarsen_chain(PartCtrl *ctrl, HGraph *graph, ChainRules rules)
{
    const bool trace = (ctrl->dbglvl & DBG_COARSEN) != 0;
    start_timer(ctrl, TIME_COARSENING);
    CoarsenWork work = open_work(graph, rules);
    assert(ctrl->CoarsenTo > 0);
    HEAVY_ASSERT(ctrl_ok(ctrl));
    graph->level = 0;
    if (trace) {
        print_trace(ctrl, "----------------------------------------------------------\n");
        trace_level(ctrl, graph);
    }
    if (rules.restricted) {
        mark_cut_nets(graph, graph->where, work.cutnets[0]);
        graph->cutnets = work.cutnets[0];
    }
    float ratio = PROGRESS_RATIO;
    bool slow = false, aborted = false;
    for (int level = 0; graph->ncells > ctrl->CoarsenTo && !aborted; level++) {
        graph = coarsen_level(ctrl, graph, &work, level, slow);
        if (trace) trace_level(ctrl, graph);
        if (!slow_progress(graph->finer, graph, ratio)) continue;
        aborted = rules.restricted || slow || match_scheme(ctrl) == CTYPE_EDGE;
        if (aborted) {
            if (trace)
                print_trace(ctrl, "\nSlow progress in coarsening. Aborted at %d nodes\n\n",
                            graph->ncells);
        } else {
            if (trace) print_trace(ctrl, "-----------------------------------\n");
            ratio = static_cast<float>(ratio * RATIO_RELAXATION);
            slow = true;
        }
    }
    if (trace && !aborted) print_trace(ctrl, "\n");
    graph->cutnets = nullptr;
    QXfree__(&work.match.htable, &work.match.perm, &work.match.vpairs, &work.cutnets[0], LTERM);
    stop_timer(ctrl, TIME_COARSENING);
    return graph;
}

HGraph *Coarsen__(PartCtrl *ctrl, HGraph *graph)
{
    return coarsen_chain(ctrl, graph, {.restricted = false});
}

HGraph *CCoarsen__(PartCtrl *ctrl, HGraph *graph)
{
    return coarsen_chain(ctrl, graph, {.restricted = true});
}
