/* SPDX-License-Identifier: MIT */
/* search/flow_net.h: the network of one pair of parts around their cut.
 *
 * A region of vertices on both sides of the cut stays as it is; the rest of the first part is
 * contracted into the source, the rest of the second into the sink. What such a network knows of
 * the hypergraph is exact: a cut of the network and the change of the objective agree.
 */
#ifndef ZORPEL_SEARCH_FLOW_NET_H
#define ZORPEL_SEARCH_FLOW_NET_H

#include <climits>
#include <cstdint>

#include "search/parts.h"

enum FlowEnd { SOURCE = 0, SINK = 1 };

/* A flow is less than this, so that it fits an int. */
constexpr int64_t MOST_FLOW = INT_MAX;

/* Sides of the network are named by the end that they grow from. A level is that of the last
 * growth if it is at least the base of that growth, or SETTLED. */
constexpr int SETTLED = INT_MAX;

struct FlowNode {
    int begin;    // its first arc
    int next;     // arc at which the search for a path goes on
    int level[2]; // of each side
};

/* A hyperedge of the network. Of a side it can be reached in two ways: all its pins are reached, if
 * it has capacity left or a reached pin gives back flow; or just those that give back flow. */
struct FlowEdge {
    int begin;   // its first pin
    int left;    // capacity that is left
    int full[2]; // level from which all pins are reached, of each side
    int half[2]; // level from which the first pin is reached
    int any;     // pin at which the search for a path goes on
    int back;    // the same among the pins that give back flow
};

struct FlowArc {
    int edge; // hyperedge
    int pin;  // place of the vertex among its pins
};

/* What a hyperedge near the cut is to the pair of parts. */
struct FlowNear {
    int net;       // number in the hypergraph
    int capacity;  // what the objective pays for its being cut between the parts; 0: nothing
    int npins[2];  // its pins in each part
    int inside[2]; // and of these in the region
    int growths;   // bit p: met by the growth of the region of part p
    int edge;      // its number in the network, -1: not there
};

/* Nodes 0 and 1 are SOURCE and SINK; the region of the first part and then that of the second
 * follow, each by increasing distance from the cut.
 *   N1  arcs of node u, [nodes[u].begin, nodes[u+1].begin), and pins of hyperedge e,
 *       [edges[e].begin, edges[e+1].begin), are two views of the same pins
 *   N2  a hyperedge has two nodes or more and not both ends
 *   N3  flow of a pin is positive from the vertex into the hyperedge; it sums to 0 over the pins
 *       and the positive ones and left to the capacity
 *   N4  outside of a call every entry of number and edgeof is -1
 */
struct FlowNet {
    int nnodes, nedges, npins;
    int nnear;      // hyperedges met, those left out included
    int first[2];   // where the region of each part begins
    int64_t oldcut; // weight of the hyperedges of the network that the parts cut now

    FlowNode *nodes; // [ncells + 3]
    FlowEdge *edges; // [nnets + 1]
    FlowArc *arcs;   // [npins]
    int *pins;       // [npins] node of each pin
    int *flow;       // [npins]
    int *vertex;     // [ncells + 2] of each node, -1: an end
    int64_t *weight; // [ncells + 2] of each node
    int *depth;      // [ncells + 2] hops from the cut, 0 at the cut
    FlowNear *near;  // [nnets] hyperedges that were met, in this order

    int *number;    // [ncells] node of each vertex of the region
    int *edgeof;    // [nnets] place in near of each hyperedge
    int64_t visits; // pins looked at, in all
};

void open_flow_net(FlowNet *net, const HGraph *graph);
void close_flow_net(FlowNet *net);

/* What the objective pays for a hyperedge of weight w being cut between two parts, others telling
 * whether it touches more parts than these; 0 if it pays no less without. */
inline int64_t price_of_cut(Objective objective, int64_t w, bool others)
{
    if (objective == Objective::km1) return w;
    if (objective == Objective::soed) return others ? w : 2 * w;
    return others ? 0 : w;
}

/* Builds the network of parts a and b around the hyperedges of seeds [nseeds] that they cut.
 * Each part's region weighs at most limit[0], limit[1] and has at most most vertices. Fixed
 * vertices stay outside. */
void build_flow_net(FlowNet *net, const Parts *parts, int a, int b, const int *seeds, int nseeds,
                    const int64_t limit[2], int most);

/* Tests N1 to N4. */
bool flow_net_ok(const FlowNet *net, const HGraph *graph);

#endif
