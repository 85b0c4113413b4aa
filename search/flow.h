/* SPDX-License-Identifier: MIT */
/* search/flow.h: refinement of a k-way partition by maximum flows between pairs of its parts.
 *
 * A move at a time finds its way only downhill; a minimum cut of a region moves any number of
 * vertices at once. It costs many moves, so a partition should be refined by moves first.
 */
#ifndef ZORPEL_SEARCH_FLOW_H
#define ZORPEL_SEARCH_FLOW_H

#include "search/flow_cut.h"

/* What is tried and for how long. Work is counted, never timed: the same call gives the same
 * result everywhere. */
struct FlowOptions {
    double first_share; // regions weigh this share of their part at first, and twice as much
    double most_share;  // whenever no more is gained, up to this
    int per_seed;       // regions have at most so many vertices of a part a hyperedge cut, > 0
    double least_gain;  // share of the objective that a round must gain for another of its size
    int64_t budget;     // pins that a call may look at
    bool equal;         // cuts of equal weight that are better balanced are taken as well
    const volatile int *cancel; // set to not 0: end soon; null: never
};

inline constexpr FlowOptions FLOW_OPTIONS = {0.1, 0.4, 64, 0.001, INT64_MAX, true, nullptr};

/* Work arrays for one hypergraph and counts of work. */
struct FlowWork {
    FlowNet net;    // net.visits: pins looked at since opened
    FlowCut cut;    // cut.npaths: paths that carried flow since opened
    int64_t ncalls; // networks built
    int64_t ngains; // of which lowered the objective
};

/* Cost  O(vertices + hyperedges) to open; pools as large as the hypergraph of which no more is
 *       used, by memory and by time, than the largest region takes. */
void open_flow_work(FlowWork *work, const HGraph *graph);
void close_flow_work(FlowWork *work);

/* Refines parts a and b around the hyperedges that both touch, with regions of options' first
 * share. Returns the fall of the objective, which is never below 0; with 0 the partition has
 * changed only if the heavier of the two got lighter. Bounds that a part keeps it keeps; one that
 * it exceeds it exceeds by no more.
 *   parts    in/out  moved by move_vertex; fixed vertices stay
 * Errors   out of memory ends the process.
 * Source   Heuer, Sanders, Schlag, Network flow-based refinement for multilevel hypergraph
 *          partitioning, JEA 24, 2019; Gottesbueren, Hamann, Wagner, Evaluation of a flow-based
 *          hypergraph bipartitioning algorithm, ESA 2019. */
int64_t refine_pair_by_flow(Parts *parts, int a, int b, const FlowOptions *options, FlowWork *work);

/* Refines all pairs of adjacent parts, those with the heaviest cut first, round by round: a pair is
 * tried again once one of its parts has changed. Returns the fall of the objective. */
int64_t refine_by_flows(Parts *parts, const FlowOptions *options, FlowWork *work);

#endif
