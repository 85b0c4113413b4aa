/* SPDX-License-Identifier: MIT */
/* kway/stale_records.h: vertices' records that wait to be recomputed until they are read.
 *
 * Between two visits most records change more than once, and few are asked for more than id and ed.
 * A record is in one of three states:
 *
 *                      a move changes gains              compute_outline
 *        current  ------------------------->  stale  -------------------->  outlined
 *           ^                                 |   ^                         |      |
 *           |          refresh_record         |   |  a move changes gains   |      |
 *           +---------------------------------+   +-------------------------+      |
 *           +----------------------------------------------------------------------+
 *
 *   S1  state is 0 (current), LISTED (current again), STALE and LISTED, or these and OUTLINED
 *   S2  list holds the n vertices whose state is not 0, each once
 *   S3  records that are not stale are what computing them afresh gives, but for their ties
 *   S4  id and ed of outlined records are so too
 *   S5  what is handed out of the pools lies within them
 *   S6  once refreshed, a record holds what it would hold if it had been recomputed at each change.
 *       Its ties are those of the last change that was more than one of ties, so it is brought up
 *       to that point before a hyperedge's ties change
 */
#ifndef ZORPEL_KWAY_STALE_RECORDS_H
#define ZORPEL_KWAY_STALE_RECORDS_H

#include <cassert>
#include <cstdint>

#include "core/hgraph.h"
#include "core/ctrl.h"

enum StaleState : uint8_t { STALE = 1, LISTED = 2, OUTLINED = 4 };
struct StaleRecords {
    uint8_t *state;     // [ncells] sum of StaleState
    int *list;          // [ncells] the stale vertices, and some that are no longer so
    int n;              // listed
    int64_t looked;     // pins looked at since the list was cleared
    int nparts;         // most entries of a list
    KwayPartDeg *cells; // compact: what is left of crdata
    KwayPartDeg *nets;  // compact: what is left of nrdata
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
    assert(0 <= v && v < graph->ncells);
    if ((stale->state[v] & (STALE | OUTLINED)) == STALE) compute_outline(graph, stale, v);
}

/* Makes v's record, or all, what KwayUpdateGainInfo__ would have left. */
void refresh_record(HGraph *graph, StaleRecords *stale, int v);
void refresh_all(HGraph *graph, StaleRecords *stale);

/* Tests S1 to S5, and K1 to K3 of kway_gains.h, from scratch. */
bool stale_ok(const PartCtrl *ctrl, const HGraph *graph, const StaleRecords *stale);

/* Tests S6 once all is refreshed, entry by entry: atonce is the same level after the same moves,
 * each of them followed by KwayUpdateGainInfo__. */
bool late_ok(const HGraph *graph, const HGraph *atonce);

#endif
