/* SPDX-License-Identifier: MIT */
/* search/parts.h: a k-way partition of one hypergraph while it is being improved.
 *
 * Every step of the search works on this record: it knows how many pins of each hyperedge lie in
 * each part, so that the change of the objective by a move is a sum over the vertex's hyperedges.
 */
#ifndef ZORPEL_SEARCH_PARTS_H
#define ZORPEL_SEARCH_PARTS_H

#include <cassert>
#include <cstddef>
#include <cstdint>

#include "core/hgraph.h"

/* What is minimised, summed over the hyperedges: with w the weight of a hyperedge and d the number
 * of parts that it touches, w if d > 1; w (d - 1); w d if d > 1. */
enum class Objective { cut, km1, soed };

/* What every part may weigh. Weights of parts are kept in 64 bits. */
struct Bounds {
    int nparts;
    int64_t *most;  // [nparts] no part weighs more
    int64_t *least; // [nparts] none less, where that can be had
};

/* One part that a hyperedge touches. */
struct PinCount {
    int part;
    int npins; // pins in it, > 0
};

/*   P1  part[v] is in 0..nparts-1 for every vertex
 *   P2  weight[p] is the weight of the vertices in p
 *   P3  the first touched[e] entries of counts at netptr[e] name each part that e touches once,
 *       with its pins, in no order
 *   P4  value is the objective of part
 *   P5  a fixed vertex is in its part
 */
struct Parts {
    const HGraph *graph; // lists, incidence and weights; islands not parked
    const Bounds *bounds;
    Objective objective;
    int nparts;
    const int *fixed; // [ncells] part of each vertex that must stay there, -1: free; null: all free

    int *part;        // [ncells]
    int64_t *weight;  // [nparts]
    int *touched;     // [nnets] parts that each hyperedge touches
    PinCount *counts; // [netptr[nnets]] storage of the lists: those of e begin at netptr[e]
    int64_t value;    // the objective
};

/* Others set the flag while it is looked at. */
inline bool was_set(const volatile int *flag)
{
    return flag != nullptr && __atomic_load_n(flag, __ATOMIC_RELAXED) != 0;
}

/* Allocates the arrays; contents are not set. */
void open_parts(Parts *parts, const HGraph *graph, const Bounds *bounds, Objective objective,
                const int *fixed);
void close_parts(Parts *parts);

/* Takes the partition where [ncells] and computes everything else, in O(pins x parts touched). */
void load_parts(Parts *parts, const int *where);

/* The pins of e in part p. */
inline int pins_in(const Parts *parts, int e, int p)
{
    assert(0 <= e && e < parts->graph->nnets && 0 <= p && p < parts->nparts);
    const PinCount *const list = parts->counts + parts->graph->netptr[e];
    for (int i = 0; i < parts->touched[e]; i++)
        if (list[i].part == p) return list[i].npins;
    return 0;
}

/* What a hyperedge of weight w that touches d parts costs. */
inline int64_t net_cost(Objective objective, int64_t w, int d)
{
    assert(w >= 0 && d >= 0);
    if (d < 2) return 0;
    return objective == Objective::cut ? w : objective == Objective::km1 ? w * (d - 1) : w * d;
}

inline bool is_fixed(const Parts *parts, int v)
{
    assert(0 <= v && v < parts->graph->ncells);
    return parts->fixed != nullptr && parts->fixed[v] >= 0;
}

/* Whether all parts are within their bounds. */
bool within_bounds(const Parts *parts);

/* By how much parts are outside their bounds, in all. */
int64_t excess_of(const Parts *parts);

/* A pin that went from one part to another. */
struct MovedPin {
    int left;     // pins that the hyperedge still has in the one
    int met;      // pins that it had in the other
    int ntouched; // parts that it touched before
};

/* Takes a pin of e from part from to part to; value follows. For callers that do with the vertex
 * and the weights what move_vertex does. */
MovedPin move_pin(Parts *parts, int e, int from, int to);

/* Puts v, which is free, into part to, another than its own. */
void move_vertex(Parts *parts, int v, int to);

/* The fall of the objective if v moved to part to, another than its own. */
int64_t gain_of_move(const Parts *parts, int v, int to);

/* The objective of where, from the lists alone. */
int64_t objective_of(const HGraph *graph, int nparts, Objective objective, const int *where);

/* Tests P1 to P5 from scratch. */
bool parts_ok(const Parts *parts);

#endif
