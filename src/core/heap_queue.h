/* SPDX-License-Identifier: MIT */
/* core/heap_queue.h: the gain queue of one side as a binary heap, for gain ranges that are wide for
 * the number of vertices. An entry never passes one of equal gain.
 * Source: Williams, Algorithm 232: Heapsort, CACM 7(6), 1964.
 */
#ifndef ZORPEL_CORE_HEAP_QUEUE_H
#define ZORPEL_CORE_HEAP_QUEUE_H

#include <cassert>

#include "core/bucket_queue.h"

struct HeapEntry {
    int key; // gain
    int val; // vertex
};

/*   P1  0 <= nnodes <= maxnodes
 *   P2  heap[(i-1)/2].key >= heap[i].key for 0 < i < nnodes
 *   P3  locator[heap[i].val] == i for 0 <= i < nnodes
 *   P4  locator is -1 for every absent vertex
 */
struct HeapQueue {
    int nnodes;      // vertices in the queue
    int maxnodes;    // vertices are 0..maxnodes-1; 0 once freed
    HeapEntry *heap; // [maxnodes]
    int *locator;    // [maxnodes] position in heap, or -1
    int *keys;       // [maxnodes] the caller's, not owned: the refiners keep the gains here
};

/* The face is that of bucket_queue.h. */
void open_queues(HeapQueue *queues, int nqueues, int maxnodes, int gainspan);
void close_queues(HeapQueue *queues, int nqueues);
void queue_reset(HeapQueue *queue);
void queue_insert(HeapQueue *queue, int vertex, int gain);
void queue_delete(HeapQueue *queue, int vertex);
void queue_update(HeapQueue *queue, int vertex, int oldgain, int newgain);
bool queue_ok(const HeapQueue *queue); // P1 to P4

/* As in bucket_queue.h, but the search goes by position and may stop early; see its code. */
int queue_fitting(HeapQueue *queue, int limit, const int *vwgt);

inline bool queue_holds(const HeapQueue *queue, int vertex)
{
    assert(0 <= vertex && vertex < queue->maxnodes);
    return queue->locator[vertex] != PQ_NONE;
}

inline int &queue_key(HeapQueue *queue, int vertex)
{
    assert(0 <= vertex && vertex < queue->maxnodes);
    return queue->keys[vertex];
}

inline int queue_key(const HeapQueue *queue, int vertex)
{
    assert(0 <= vertex && vertex < queue->maxnodes);
    return queue->keys[vertex];
}

inline void queue_settle(HeapQueue *)
{
}

inline int queue_top(HeapQueue *queue)
{
    assert(queue->nnodes >= 0);
    return queue->nnodes == 0 ? PQ_NONE : queue->heap[0].val;
}

#endif
