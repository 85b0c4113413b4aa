/* kway/kway_gains.h: part lists of hyperedges and vertices for k-way refinement. */
#ifndef ZORPEL_KWAY_KWAY_GAINS_H
#define ZORPEL_KWAY_KWAY_GAINS_H

#include <cstdint>

#include "core/hgraph.h"
#include "partition/ctrl.h"

/* Allocates where, kpwgts, kplace, nrinfo, crinfo, nrdata and crdata for ctrl->nparts parts and
 * sets the views into the pools; contents are not set, but ndegrees of hyperedges is 0. */
void AllocateKwayRefinementMemory__(const PartCtrl *ctrl, HGraph *graph);

/* Computes kpwgts, mincut, minsoed and all records from where, islands excluded. */
void ComputeInitKwayGains__(const PartCtrl *ctrl, HGraph *graph);

/* ndegrees of a hyperedge that is known to be within one part before the records are computed, as
 * that of the coarser level was: its pins need not be looked at. */
constexpr int UNCUT = -1;

/* Recomputes the records of the n vertices in list from the hyperedges' records. */
void ComputeKwayGainsSet__(HGraph *graph, int n, const int *list);

/* Brings the records up to date after v moved (where, kpwgts, mincut, minsoed are already so).
 *   marker  in/out  [ncells] vertex numbers as stamps; no entry may be v before
 *   updind  work    [ncells] */
void KwayUpdateGainInfo__(HGraph *graph, int v, int from, int to, int *marker, int *updind);

/* Vertices whose records wait to be recomputed until they are read: between two visits most change
 * more than once, and few are asked for more than id and ed. A record holds what it would hold if
 * it had been recomputed at each change: its ties are of the last change that was more than one of
 * ties, so they are brought up to that point before a hyperedge's ties change. */
enum StaleState : uint8_t { STALE = 1, LISTED = 2, OUTLINED = 4 }; // bits; OUTLINED: id and ed hold
struct StaleRecords {
    uint8_t *state; // [ncells] StaleState
    int *list;      // [ncells] the stale vertices, and some that are no longer so
    int n;          // listed
    int64_t looked; // pins looked at since the list was cleared
    int nparts;
    KwayPartDeg *cells, *nets; // compact: what is left of crdata and nrdata
};

/* All records are current. */
void open_stale(const HGraph *graph, StaleRecords *stale);
void close_stale(StaleRecords *stale);

/* ComputeInitKwayGains__, but of vertices with cut hyperedges only id and ed are computed; the
 * records stay stale. Call it between open_stale and the first move. With compact, lists stand
 * side by side in crdata and nrdata in the order in which they are first needed, those of uncut
 * hyperedges not at all until then: they are few, and at its own place each would often be the only
 * one on its page. */
void outline_records(const PartCtrl *ctrl, HGraph *graph, StaleRecords *stale, bool compact);

/* KwayUpdateGainInfo__, but the records become stale instead. */
void note_kway_move(HGraph *graph, int v, int from, int to, int *marker, StaleRecords *stale);

/* Makes id and ed of v's record current; compute_outline if they are not. */
void compute_outline(HGraph *graph, StaleRecords *stale, int v);
inline void refresh_outline(HGraph *graph, StaleRecords *stale, int v)
{
    if ((stale->state[v] & (STALE | OUTLINED)) == STALE) compute_outline(graph, stale, v);
}

/* Makes v's record, or all, what KwayUpdateGainInfo__ would have left. */
void refresh_record(HGraph *graph, StaleRecords *stale, int v);
void refresh_all(HGraph *graph, StaleRecords *stale);

/* Recomputes everything aside and compares, the order within lists and ties of vertices excepted:
 * an update may leave ties of unvisited pins as they were. */
bool kway_ok(const PartCtrl *ctrl, const HGraph *graph);

#endif
