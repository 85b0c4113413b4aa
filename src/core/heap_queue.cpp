// SPDX-License-Identifier: MIT
/* core/heap_queue.cpp: the binary heap of vertices by gain.
 *
 * A vertex on its way moves as a hole: the entries that it passes are shifted, and it is written
 * once, where it stops. All comparisons are strict, so equal gains keep their places.
 */
#include "core/heap_queue.h"

#include <cstddef>

#include "core/memory.h"

void open_queues(HeapQueue *queues, int nqueues, int maxnodes, int)
{
    assert((nqueues == 1 || nqueues == 2) && maxnodes >= 0);
    const size_t n = static_cast<size_t>(maxnodes);
    for (HeapQueue *queue = queues; queue < queues + nqueues; queue++) {
        *queue = {};
        queue->maxnodes = maxnodes;
        queue->heap = alloc_array<HeapEntry>(n, "PQueueInit: queue->heap");
        queue->locator = ismalloc__(n, PQ_NONE, "PQueueInit: queue->locator");
    }
}

void close_queues(HeapQueue *queues, int nqueues)
{
    for (HeapQueue *queue = queues; queue < queues + nqueues; queue++) {
        QXfree__(&queue->heap, &queue->locator, LTERM);
        queue->maxnodes = 0;
    }
}

void queue_reset(HeapQueue *queue)
{
    queue->nnodes = 0;
    for (int v = 0; v < queue->maxnodes; v++) queue->locator[v] = PQ_NONE;
}

/* Stores (key, vertex) at position i of the heap. */
static void heap_place(HeapQueue *queue, int i, int key, int vertex)
{
    assert(0 <= i && i < queue->nnodes && 0 <= vertex && vertex < queue->maxnodes);
    queue->heap[i] = {key, vertex};
    queue->locator[vertex] = i;
}

static void sift_up(HeapQueue *queue, int i, int key, int vertex)
{
    assert(0 <= i && i < queue->nnodes);
    const HeapEntry *const heap = queue->heap;
    for (int parent; i > 0; i = parent) {
        parent = (i - 1) / 2;
        if (heap[parent].key >= key) break;
        heap_place(queue, i, heap[parent].key, heap[parent].val);
    }
    heap_place(queue, i, key, vertex);
}

static void sift_down(HeapQueue *queue, int i, int key, int vertex)
{
    const HeapEntry *const heap = queue->heap;
    const int nnodes = queue->nnodes;
    assert(0 <= i && i < nnodes);
    for (int child; (child = 2 * i + 1) < nnodes; i = child) {
        const bool has_right = child + 1 < nnodes;
        if (heap[child].key > key) {
            if (has_right && heap[child + 1].key > heap[child].key) child++;
        } else if (has_right && heap[child + 1].key > key) {
            child++;
        } else {
            break;
        }
        heap_place(queue, i, heap[child].key, heap[child].val);
    }
    heap_place(queue, i, key, vertex);
}

void queue_insert(HeapQueue *queue, int vertex, int gain)
{
    assert(!queue_holds(queue, vertex) && queue->nnodes < queue->maxnodes);
    queue->nnodes++;
    sift_up(queue, queue->nnodes - 1, gain, vertex);
}

void queue_delete(HeapQueue *queue, int vertex)
{
    assert(queue_holds(queue, vertex) && queue->nnodes > 0);
    const int i = queue->locator[vertex];
    assert(i < queue->nnodes && queue->heap[i].val == vertex);
    queue->locator[vertex] = PQ_NONE;
    queue->nnodes--;
    if (queue->nnodes == 0) return;
    const HeapEntry last = queue->heap[queue->nnodes];
    if (last.val == vertex) return;
    if (last.key > queue->heap[i].key)
        sift_up(queue, i, last.key, last.val);
    else
        sift_down(queue, i, last.key, last.val);
}

void queue_update(HeapQueue *queue, int vertex, int oldgain, int newgain)
{
    assert(oldgain != newgain && queue_holds(queue, vertex));
    const int i = queue->locator[vertex];
    assert(queue->heap[i].val == vertex && queue->heap[i].key == oldgain);
    if (oldgain < newgain)
        sift_up(queue, i, newgain, vertex);
    else
        sift_down(queue, i, newgain, vertex);
}

int queue_fitting(HeapQueue *queue, int limit, const int *vwgt)
{
    assert(queue->nnodes > 0);
    const HeapEntry *const heap = queue->heap;
    for (int i = 0; i < queue->nnodes; i++) {
        if (heap[i].key >= 1) {
            if (vwgt[heap[i].val] <= limit) return heap[i].val;
        } else if (heap[i / 2].key < 1) { // i/2, not the parent: kept on purpose
            break;
        }
    }
    return heap[0].val;
}
