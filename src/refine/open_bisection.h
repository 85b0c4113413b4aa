/* SPDX-License-Identifier: MIT */
/* refine/open_bisection.h: the record that owns a bisection while it is refined.
 *
 * A level's where, gain and ndeg are made for those who read them. While a refiner runs, the
 * bisection lives here in a form made for moving vertices: a byte per vertex for its side, 16 for
 * gain and queue links, and per hyperedge 8 bytes for what a move changes and 16 for what stays.
 *
 *     open_bisection     arrays for one level; nothing is known of the sides yet
 *     load_bisection     sides from the level's where; weights, counts, gains and cut from scratch
 *     fill_queues        queues the free vertices
 *     move_vertex, undo_vertex (refine/move_vertex.h)
 *     store_bisection    where, pwgts, mincut, gain and ndeg of the level
 *     close_bisection
 *
 * Two levels are in play. original is the caller's, which load and store read and write. level is
 * what is refined: original itself, or on large levels a copy of it whose numbers keep neighbours
 * together. All numbers in the record are those of level.
 */
#ifndef ZORPEL_REFINE_OPEN_BISECTION_H
#define ZORPEL_REFINE_OPEN_BISECTION_H

#include <cassert>
#include <cstdint>

#include "core/hgraph.h"
#include "core/gain_queue.h"
#include "core/random.h"
#include "core/vectors.h"
#include "refine/net_counts.h"
#include "refine/relabel.h"

/*   B1  side holds 0 or 1, and pwgts the weight of each side
 *   B2  counts of e hold the number of its pins on each side
 *   B3  and the exclusive or of its pins on side 0; with that of all its pins, which nets has, one
 *       that is alone on its side is known without a look at the list
 *   B4  nets holds weight, place and exclusive or of the pins of each hyperedge
 *   B5  counts of e hold the number of its pins that are queued, unless rules are exact
 *   B6  gains of queued vertices, under exact rules of all vertices, are falls of the cut by their
 *       moves; not at vertices of a hyperedge with one pin
 *   B7  a queued vertex is free, and in the queue of its side; under its gain, if entries follow
 *   B8  cut is the weight of the hyperedges with pins on both sides, unless single
 *   B9  the fixed bit of counts marks the hyperedges with fixed pins; every large hyperedge has a
 *       place of its own in large
 */
template <class Queue> struct OpenBisection {
    HGraph *original;     // whose bisection this is
    const HGraph *level;  // what is refined: original, or copy.level
    Relabelled copy;      // of original; unused (vertex is null) where level is original
    uint8_t *side;        // [ncells]
    FmNet *nets;          // [nnets] copy's, if there is one
    PackedCounts *counts; // [nnets]
    NetCounts *large;     // [nlarge] of hyperedges that are not small enough to be packed
    int nlarge;
    bool single;     // a hyperedge has one pin: gains and cut drift as that moves
    Queue queues[2]; // of each side; gains are their keys, queued or not
    int *perm;       // [ncells] order of queueing
    int pwgts[2];    // weight of each side
    int cut;
};

using BucketBisection = OpenBisection<BucketQueue>;
using HeapBisection = OpenBisection<HeapQueue>;

/* What moves keep up to date, beside sides, weights, cut and pin counts. */
struct MoveRules {
    bool exact;   // all gains; else those of queued vertices only, and the counts of queued pins
    bool requeue; // queue entries follow the gains
};
constexpr MoveRules QUEUED_GAINS = {.exact = false, .requeue = true};
constexpr MoveRules ALL_GAINS = {.exact = true, .requeue = true};
constexpr MoveRules ALL_GAINS_UNQUEUED = {.exact = true, .requeue = false};

/* span bounds the gains. */
template <class Queue> void open_bisection(OpenBisection<Queue> *b, HGraph *original, int span);
template <class Queue> void close_bisection(OpenBisection<Queue> *b);

/* Sides, pwgts, counts (nqueued as if every free vertex were queued), gains and cut; O(pins). The
 * queues stay as they are. */
template <class Queue> void load_bisection(OpenBisection<Queue> *b);

/* Sides and pwgts alone. */
template <class Queue> void load_sides(OpenBisection<Queue> *b);

/* The gains must be exact. */
template <class Queue> void store_bisection(const OpenBisection<Queue> *b);

/* Empties the queues. */
template <class Queue> void empty_queues(OpenBisection<Queue> *b);

/* Fills the queues, which are empty, with the free vertices of the sides that give, in a new random
 * order. */
template <class Queue>
void fill_queues(Generator *random, OpenBisection<Queue> *b, const bool gives[2]);

/* Takes the counts back to what they were before each free vertex changed sides once. */
template <class Queue> void reverse_counts(OpenBisection<Queue> *b);

/* The cut by the counts. */
template <class Queue> int cut_of_counts(const OpenBisection<Queue> *b);

/* Tests B1 to B9 and the queues from scratch, as far as moves by these rules keep them. */
template <class Queue> bool bisection_ok(const OpenBisection<Queue> *b, MoveRules rules);

/* Opens graph's bisection in the form that suits its gains, calls refine with the record, and
 * closes it. */
template <typename Refine> inline void with_open_bisection(HGraph *graph, Refine refine)
{
    const int span = largest_of(graph->ncells, graph->adjwgt); // no gain is larger
    const auto run = [&](auto b) {
        open_bisection(&b, graph, span);
        refine(&b);
        close_bisection(&b);
    };
    if (queue_form(graph->ncells, span) == PQ_HEAP)
        run(HeapBisection{});
    else
        run(BucketBisection{});
}

template <class Queue> inline int side_of(const OpenBisection<Queue> *b, int v)
{
    assert(0 <= v && v < b->level->ncells && b->side[v] <= 1);
    return b->side[v];
}

template <class Queue> inline int &gain_of(OpenBisection<Queue> *b, int v)
{
    return queue_key(&b->queues[0], v);
}

template <class Queue> inline int gain_of(const OpenBisection<Queue> *b, int v)
{
    return queue_key(&b->queues[0], v);
}

/* The counts of hyperedge e, unpacked. */
template <class Queue> inline NetCounts net_counts(const OpenBisection<Queue> *b, int e)
{
    assert(0 <= e && e < b->level->nnets);
    const PackedCounts counts = b->counts[e];
    if (is_large(counts)) [[unlikely]] {
        assert(low_word(counts) < b->nlarge);
        return b->large[low_word(counts)];
    }
    return unpack_counts(counts);
}

/* The number in original of a vertex of level, and back. */
template <class Queue> inline int original_of(const OpenBisection<Queue> *b, int v)
{
    assert(0 <= v && v < b->level->ncells);
    return b->copy.vertex != nullptr ? b->copy.vertex[v] : v;
}
template <class Queue> inline int refined_of(const OpenBisection<Queue> *b, int v)
{
    assert(0 <= v && v < b->original->ncells);
    return b->copy.label != nullptr ? b->copy.label[v] : v;
}

#endif
