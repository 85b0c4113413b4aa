/* refine/fm_steps.h: the steps that the refiners of a bisection share (refine/ only). */
#ifndef ZORPEL_REFINE_FM_STEPS_H
#define ZORPEL_REFINE_FM_STEPS_H

#include <cstddef>
#include <cstdlib>

#include "core/hgraph.h"
#include "core/memory.h"
#include "core/numbers.h"
#include "core/pqueue.h"
#include "core/random.h"
#include "core/vectors.h"
#include "partition/ctrl.h"

constexpr int NOT_MOVED = -1; // moved[v] of a vertex that may still move

/* Lower bounds of the two sides' weights. The precisions differ on purpose. */
inline void set_weight_bounds(const PartCtrl *ctrl, const int pwgts[2], int minpwgts[2])
{
    const int total = pwgts[0] + pwgts[1];
    minpwgts[0] = trunc_int((ctrl->splitratio - ctrl->ubfactor) * static_cast<float>(total));
    minpwgts[1] = trunc_int(
        (1.0 - static_cast<double>(ctrl->splitratio) - static_cast<double>(ctrl->ubfactor)) *
        total);
}

inline bool within_bounds(const int pwgts[2], const int minpwgts[2])
{
    return pwgts[0] >= minpwgts[0] && pwgts[1] >= minpwgts[1];
}

/* How far a side is above its bound; saturates. */
inline int room_of(int pwgt, int minpwgt)
{
    return trunc_int(static_cast<double>(static_cast<long long>(pwgt) - minpwgt));
}

/* The bound of every gain on the level: the largest adjwgt, 0 on an empty one. */
inline int gain_bound(const HGraph *graph)
{
    return graph->ncells > 0 ? graph->adjwgt[iamax__(graph->ncells, graph->adjwgt)] : 0;
}

inline int weight_difference(const int pwgts[2])
{
    return abs(pwgts[0] - pwgts[1]);
}

/* Puts v on side to, with its weight. */
inline void change_side(HGraph *graph, int v, int from, int to)
{
    graph->where[v] = to;
    graph->pwgts[to] += graph->cellwgt[v];
    graph->pwgts[from] -= graph->cellwgt[v];
}

/* Empties the queues and refills them with the movable vertices in a new random order; fixed ones
 * are marked in moved. onlyside -1: each vertex into the queue of its side; else only the vertices
 * of that side, all into queues[0], and fixed vertices of the other side stay unmarked. */
inline void fill_queues(const HGraph *graph, PQueue *queues, int *perm, int *moved, int onlyside)
{
    RandomPermute__(perm, graph->ncells, 1);
    for (int i = 0; i < graph->ncells; i++) {
        const int v = perm[i];
        const int side = graph->where[v];
        if (onlyside >= 0 && side != onlyside) continue;
        if (v >= graph->nfixed)
            PQueueInsert__(&queues[onlyside >= 0 ? 0 : side], v, graph->gain[v]);
        else
            moved[v] = 1;
    }
}

/* Work of one refinement by passes; the arrays live as long as the call. */
struct FmWork {
    int nqueues; // 2, or 1 where only one side gives vertices
    PQueue queues[2];
    int *moved; // [ncells] NOT_MOVED, 1 for a fixed vertex, else the number of its step
    int *swaps; // [ncells] the vertex of each step
    int *perm;  // [ncells] order of queueing
    int minpwgts[2];
    int initcut, newcut;              // at the start of the pass, after the moves so far
    int nswaps;                       // steps of this pass
    int mincut, mincutorder, mindiff; // best point: cut, its last step (-1: the start), |weights|
};

inline void open_work(const HGraph *graph, FmWork *work, int nqueues)
{
    const size_t n = static_cast<size_t>(graph->ncells);
    const int span = gain_bound(graph);
    work->nqueues = nqueues;
    for (int i = 0; i < nqueues; i++) PQueueInit__(&work->queues[i], graph->ncells, span);
    work->moved = imalloc__(n, "FM_Refine: moved");
    work->swaps = imalloc__(n, "FM_Refine: swaps");
    work->perm = imalloc__(n, "FM_Refine: perm");
}

inline void close_work(FmWork *work)
{
    for (int i = 0; i < work->nqueues; i++) PQueueFree__(&work->queues[i]);
    QXfree__(&work->moved, &work->swaps, &work->perm, LTERM);
}

/* Empties the queues and makes the present bisection the best point. */
inline void reset_pass(const HGraph *graph, FmWork *work)
{
    for (int i = 0; i < work->nqueues; i++) PQueueReset__(&work->queues[i]);
    iset__(graph->ncells, NOT_MOVED, work->moved);
    work->initcut = work->newcut = work->mincut = graph->mincut;
    work->mindiff = weight_difference(graph->pwgts);
    work->mincutorder = -1;
    work->nswaps = 0;
}

/* Records the point that step nswaps reached if it is the best: within bounds and a smaller cut or,
 * with BalanceBreaksTies, an equal cut and better balance. */
template <bool BalanceBreaksTies> inline bool note_best(const HGraph *graph, FmWork *work)
{
    if (!within_bounds(graph->pwgts, work->minpwgts) || work->newcut > work->mincut) return false;
    const int diff = weight_difference(graph->pwgts);
    if (work->newcut == work->mincut && (!BalanceBreaksTies || diff >= work->mindiff)) return false;
    work->mincut = work->newcut;
    work->mincutorder = work->nswaps;
    work->mindiff = diff;
    return true;
}

/* Which neighbours' gains a move brings up to date, and which of them are queued. */
struct UpdateRules {
    bool all_pins; // every pin but the moved vertex (gains stay exact); else unmoved pins only
    bool one_side; // only pins on side from are queued, all in queues[0]
    bool queues;   // queue entries follow the gains
};

/* The gain of a pin on side pinside after a move of another pin of e, weight w, from one side to
 * the other, which left nfrom and nto pins there. */
inline int updated_gain(int gain, bool on_to, int nfrom, int nto, int w)
{
    if (on_to) {
        if (nfrom == 0) gain -= w;
        if (nto == 2) gain -= w;
    } else {
        if (nfrom == 1) gain += w;
        if (nto == 1) gain += w;
    }
    return gain;
}

/* Brings pin counts, gains and queue entries up to date after v moved from one side to the other.
 * A hyperedge that keeps two pins on from and has three on to changes no gain. */
template <UpdateRules R>
inline void update_neighbours(HGraph *graph, PQueue *queues, const int *moved, int v, int from)
{
    const int to = 1 - from;
    const int *const incptr = graph->incptr, *const incind = graph->incind;
    const int *const netptr = graph->netptr, *const netind = graph->netind;
    const int *const where = graph->where, *const netwgt = graph->netwgt;
    int *const gain = graph->gain;
    int *const degfrom = graph->ndeg[from], *const degto = graph->ndeg[to];
    for (int j = incptr[v]; j < incptr[v + 1]; j++) {
        const int e = incind[j];
        const int nto = ++degto[e], nfrom = --degfrom[e];
        if (nto > 2 && nfrom > 1) continue;
        const int w = netwgt[e];
        for (int i = netptr[e]; i < netptr[e + 1]; i++) {
            const int u = netind[i];
            if (R.all_pins ? u == v : moved[u] != NOT_MOVED) continue;
            const int side = where[u];
            const int oldgain = gain[u];
            gain[u] = updated_gain(oldgain, side == to, nfrom, nto, w);
            if (!R.queues || (R.all_pins && moved[u] != NOT_MOVED)) continue;
            if (R.one_side && side != from) continue;
            PQueueUpdate__(&queues[R.one_side ? 0 : side], u, oldgain, gain[u]);
        }
    }
}

#endif
