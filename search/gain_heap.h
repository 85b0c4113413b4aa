/* SPDX-License-Identifier: MIT */
/* search/gain_heap.h: vertices ordered by the gain of their best move; the largest on top.
 *
 * An addressable heap of four children a node. Equal gains stand in an order that depends on the
 * operations alone, so results do not depend on the machine.
 * Source: Williams, Algorithm 232: Heapsort, CACM 7(6), 1964; Johnson, Priority queues with update
 * and finding minimum spanning trees, Information Processing Letters 4(3), 1975 (d children).
 */
#ifndef ZORPEL_SEARCH_GAIN_HEAP_H
#define ZORPEL_SEARCH_GAIN_HEAP_H

#include <cassert>
#include <cstdint>

/*   G1  place[nodes[i].v] == i for i < n; -1 for every vertex that is not in the heap
 *   G2  no node's gain is above its parent's, (i - 1) / 4
 */
struct GainHeap {
    struct Node {
        int64_t gain;
        int v;
    };
    int n;
    Node *nodes; // [vertices]
    int *place;  // [vertices]
};

void open_gain_heap(GainHeap *heap, int nvertices);
void close_gain_heap(GainHeap *heap);

inline bool in_heap(const GainHeap *heap, int v)
{
    assert(v >= 0 && heap->place[v] < heap->n); // G1
    return heap->place[v] >= 0;
}

inline int top_of(const GainHeap *heap)
{
    assert(heap->n > 0);
    return heap->nodes[0].v;
}

inline int64_t top_gain(const GainHeap *heap)
{
    assert(heap->n > 0);
    return heap->nodes[0].gain;
}

/* Puts v, which is in the heap or not, at its gain. */
void put_in_heap(GainHeap *heap, int v, int64_t gain);
void remove_from_heap(GainHeap *heap, int v);
void empty_heap(GainHeap *heap);

/* Tests G1 and G2. */
bool gain_heap_ok(const GainHeap *heap, int nvertices);

#endif
