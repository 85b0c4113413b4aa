/* SPDX-License-Identifier: MIT */
/* search/flow_cut.h: balanced minimum cuts of a flow network. */
#ifndef ZORPEL_SEARCH_FLOW_CUT_H
#define ZORPEL_SEARCH_FLOW_CUT_H

#include "search/flow_net.h"

/* What the two parts may weigh, the ends of the network included. */
struct FlowBounds {
    int64_t most[2], least[2];
};

/* Candidates for piercing: those known to open no path to the other side, and the others. */
enum FlowChain { FREE = 0, OPENING = 1 };

/* One side of the network while both grow. Settled nodes are its terminals; reached ones are those
 * to which more flow could be sent from there. Roots are settled nodes that may still send.
 *   F1  no node is settled on both sides
 *   F2  once no path is left, no node reached by one side is settled on the other
 *   F3  a hyperedge that is settled by half has no capacity left, and its pins that give back
 *       flow are settled
 */
struct FlowSide {
    int *queue;     // [nnodes] roots, then the nodes of the last growth in order of their levels
    int *edgequeue; // [2 nedges] hyperedges of the last growth
    int nroots, nqueue, nedgequeue;
    int base;        // level of the roots in the last growth
    bool stale;      // the flow has changed since: what it reached is too much
    bool blocked;    // has no room for any node that it could take
    int64_t settled; // weight of the settled nodes
    int64_t reached; // and of the reached ones
    int *next;       // [nnodes] chains of candidates
    bool *known;     // [nnodes] whether a node was a candidate before
    int *heads[2];   // [nranks] first candidate of each rank, -1: none; see FlowChain
    int top[2];      // no candidate has a higher rank
    int npierced;    // nodes that may have cost flow, since the other side was last refreshed
    int cursor;      // nodes in order of rank that were passed for want of candidates
};

struct FlowCut {
    FlowSide side[2];
    int *hits;  // [nnodes] settled nodes of the other side that the last growth reached
    int *steps; // [2 nnodes] path being searched: arc and pin of each step
    int nhits;
    int nranks;
    int deepest[2];             // depth of each part's region, -1: empty
    int levels;                 // first level of the next growth
    int64_t value;              // of the flow
    int64_t total;              // weight of the network
    int64_t visits;             // of net at which the search gives up
    const volatile int *cancel; // or when this is not 0; null: never
    bool over;                  // it has given up
    int64_t npaths;             // paths augmented, in all
};

void open_flow_cut(FlowCut *cut, const HGraph *graph);
void close_flow_cut(FlowCut *cut);

/* Looks for a cut of net of weight at most limit with both sides within bounds, and among those
 * of the least weight for a balanced one. visits bounds the pins looked at (net->visits); cancel
 * may be null. Returns the side, SOURCE or SINK, whose settled nodes are that side of the cut; -1:
 * none found. cut->value is the weight of the cut.
 * Cost    O(pins) a growth; at most one growth more than nodes and units of flow together.
 * Source  Dinic, Soviet Mathematics Doklady 11, 1970 (levels); Lawler, Networks 3, 1973 (flow
 *         through hyperedges); Yang & Wong, IEEE TCAD 15, 1996 (growing until balanced); Hamann &
 *         Strasser, JEA 23, 2018; Gottesbueren, Hamann, Wagner, ESA 2019 (piercing, flow on
 *         hyperedges without gadgets). */
int find_balanced_cut(FlowNet *net, FlowCut *cut, const FlowBounds *bounds, int64_t limit,
                      int64_t visits, const volatile int *cancel);

/* The greater share of what its side may weigh that one of two sides takes. */
double heavier_load(const FlowBounds *bounds, int64_t weight0, int64_t weight1);

/* Tests F1 to F3. */
bool flow_cut_ok(const FlowNet *net, const FlowCut *cut);

#endif
