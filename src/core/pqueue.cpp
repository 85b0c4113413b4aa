/* core/pqueue.cpp: the gain queue, as bucket lists or as a binary heap.
 *
 * Ties decide results: a bucket gives its latest vertex first, and a heap entry never passes one
 * of equal key. No operation allocates after PQueueInit__ or checks its arguments.
 */
#include "core/pqueue.h"

#include <cassert>
#include <cstddef>
#include <cstdlib>

#include "core/memory.h"

/* Limits up to this are not worth a search for a vertex that fits. */
constexpr int UNSEARCHED_LIMIT = 1000;

static size_t bucket_count(const PQueue *queue)
{
    return 2 * static_cast<size_t>(queue->gainspan) + 1;
}

static void empty_buckets(PQueue *queue)
{
    queue->maxgain = -queue->gainspan;
    for (int gain = -queue->gainspan; gain <= queue->gainspan; gain++)
        queue->buckets[gain] = PQ_NONE;
}

void PQueueInit__(PQueue *queue, int maxnodes, int gainspan)
{
    queue->nnodes = 0;
    queue->maxnodes = maxnodes;
    queue->nodes = nullptr;
    queue->buckets = nullptr;
    queue->heap = nullptr;
    queue->locator = nullptr;
    const size_t n = static_cast<size_t>(maxnodes);
    if (3LL * maxnodes < gainspan) {
        queue->type = PQ_HEAP;
        queue->heap = alloc_array<HeapEntry>(n, "PQueueInit: queue->heap");
        queue->locator = ismalloc__(n, PQ_NONE, "PQueueInit: queue->locator");
        return;
    }
    queue->type = PQ_BUCKETS;
    queue->gainspan = gainspan;
    queue->nodes = alloc_array<BucketNode>(n, "PQueueInit: queue->nodes");
    for (int i = 0; i < maxnodes; i++) queue->nodes[i].id = i;
    queue->buckets = imalloc__(bucket_count(queue), "PQueueInit: queue->buckets") + gainspan;
    empty_buckets(queue);
}

void PQueueReset__(PQueue *queue)
{
    queue->nnodes = 0;
    if (queue->type == PQ_BUCKETS) {
        empty_buckets(queue);
        return;
    }
    for (int i = 0; i < queue->maxnodes; i++) queue->locator[i] = PQ_NONE;
}

void PQueueFree__(PQueue *queue)
{
    if (queue->type == PQ_BUCKETS) {
        queue->buckets -= queue->gainspan; // the base designates gain 0
        QXfree__(&queue->nodes, &queue->buckets, LTERM);
    } else {
        QXfree__(&queue->heap, &queue->locator, LTERM);
    }
    queue->maxnodes = 0;
}

/* Lowers maxgain to the highest non-empty bucket. */
static void settle_maxgain(PQueue *queue)
{
    if (queue->nnodes == 0) {
        queue->maxgain = -queue->gainspan;
        return;
    }
    while (queue->buckets[queue->maxgain] == PQ_NONE) queue->maxgain--;
}

static void bucket_insert(PQueue *queue, int vertex, int gain)
{
    assert(-queue->gainspan <= gain && gain <= queue->gainspan);
    BucketNode *const nodes = queue->nodes;
    const int head = queue->buckets[gain];
    nodes[vertex].prev = PQ_NONE;
    nodes[vertex].next = head;
    if (head != PQ_NONE) nodes[head].prev = vertex;
    queue->buckets[gain] = vertex;
    queue->nnodes++;
    if (gain > queue->maxgain) queue->maxgain = gain;
}

static void bucket_delete(PQueue *queue, int vertex, int gain)
{
    BucketNode *const nodes = queue->nodes;
    const int prev = nodes[vertex].prev, next = nodes[vertex].next;
    assert(prev != PQ_NONE || queue->buckets[gain] == vertex);
    if (prev != PQ_NONE)
        nodes[prev].next = next;
    else
        queue->buckets[gain] = next;
    if (next != PQ_NONE) nodes[next].prev = prev;
    queue->nnodes--;
    if (gain == queue->maxgain && queue->buckets[gain] == PQ_NONE) settle_maxgain(queue);
}

/* Stores (key, vertex) at position i of the heap. */
static void heap_place(PQueue *queue, int i, int key, int vertex)
{
    queue->heap[i] = {key, vertex};
    queue->locator[vertex] = i;
}

static void sift_up(PQueue *queue, int i, int key, int vertex)
{
    const HeapEntry *const heap = queue->heap;
    for (int parent; i > 0; i = parent) {
        parent = (i - 1) / 2;
        if (heap[parent].key >= key) break;
        heap_place(queue, i, heap[parent].key, heap[parent].val);
    }
    heap_place(queue, i, key, vertex);
}

static void sift_down(PQueue *queue, int i, int key, int vertex)
{
    const HeapEntry *const heap = queue->heap;
    const int nnodes = queue->nnodes;
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

static void heap_delete(PQueue *queue, int vertex)
{
    const int i = queue->locator[vertex];
    assert(i >= 0 && queue->heap[i].val == vertex);
    queue->locator[vertex] = PQ_NONE;
    queue->nnodes--;
    if (queue->nnodes <= 0) return;
    const HeapEntry last = queue->heap[queue->nnodes];
    if (last.val == vertex) return;
    if (last.key > queue->heap[i].key)
        sift_up(queue, i, last.key, last.val);
    else
        sift_down(queue, i, last.key, last.val);
}

int PQueueInsert__(PQueue *queue, int vertex, int gain)
{
    if (queue->type == PQ_BUCKETS) {
        bucket_insert(queue, vertex, gain);
        return 0;
    }
    queue->nnodes++;
    sift_up(queue, queue->nnodes - 1, gain, vertex);
    return 0;
}

int PQueueDelete(PQueue *queue, int vertex, int gain)
{
    if (queue->type == PQ_BUCKETS)
        bucket_delete(queue, vertex, gain);
    else
        heap_delete(queue, vertex);
    return 0;
}

int PQueueUpdate__(PQueue *queue, int vertex, int oldgain, int newgain)
{
    if (oldgain == newgain) return 0;
    if (queue->type == PQ_BUCKETS) {
        bucket_delete(queue, vertex, oldgain);
        bucket_insert(queue, vertex, newgain);
        return 0;
    }
    const int i = queue->locator[vertex];
    if (oldgain < newgain)
        sift_up(queue, i, newgain, vertex);
    else
        sift_down(queue, i, newgain, vertex);
    return 0;
}

int PQueueGetMax__(PQueue *queue)
{
    const int vertex = PQueueSeeMax__(queue);
    if (vertex == PQ_NONE) return PQ_NONE;
    PQueueDelete(queue, vertex, queue->type == PQ_BUCKETS ? queue->maxgain : 0);
    return vertex;
}

int PQueueSeeMax__(const PQueue *queue)
{
    if (queue->nnodes == 0) return PQ_NONE;
    if (queue->type == PQ_BUCKETS) return queue->nodes[queue->buckets[queue->maxgain]].id;
    return queue->heap[0].val;
}

static int fitting_in_buckets(const PQueue *queue, int limit, const int *vwgt)
{
    for (int gain = queue->maxgain; gain > 0; gain--)
        for (int v = queue->buckets[gain]; v != PQ_NONE; v = queue->nodes[v].next)
            if (vwgt[v] <= limit) return v;
    return queue->buckets[queue->maxgain];
}

static int fitting_in_heap(const PQueue *queue, int limit, const int *vwgt)
{
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

int PQueueSeeConstraintMax(const PQueue *queue, int limit, const int *vwgt)
{
    if (queue->nnodes == 0) return PQ_NONE;
    if (limit <= UNSEARCHED_LIMIT) return PQueueSeeMax__(queue);
    return queue->type == PQ_BUCKETS ? fitting_in_buckets(queue, limit, vwgt)
                                     : fitting_in_heap(queue, limit, vwgt);
}

static bool heap_ok(const PQueue *queue)
{
    int located = 0;
    for (int v = 0; v < queue->maxnodes; v++) located += queue->locator[v] != PQ_NONE;
    if (located != queue->nnodes) return false;
    for (int i = 0; i < queue->nnodes; i++) {
        if (i > 0 && queue->heap[(i - 1) / 2].key < queue->heap[i].key) return false;
        const int v = queue->heap[i].val;
        if (v < 0 || v >= queue->maxnodes || queue->locator[v] != i) return false;
    }
    return true;
}

static bool buckets_ok(const PQueue *queue)
{
    int listed = 0, highest = -queue->gainspan;
    for (int gain = -queue->gainspan; gain <= queue->gainspan; gain++) {
        int prev = PQ_NONE;
        for (int v = queue->buckets[gain]; v != PQ_NONE; v = queue->nodes[v].next) {
            if (v < 0 || v >= queue->maxnodes || queue->nodes[v].id != v) return false;
            if (queue->nodes[v].prev != prev || listed++ >= queue->nnodes) return false;
            prev = v;
            highest = gain;
        }
    }
    return listed == queue->nnodes && queue->maxgain == highest;
}

bool pqueue_ok(const PQueue *queue)
{
    if (queue->nnodes < 0 || queue->nnodes > queue->maxnodes) return false;
    return queue->type == PQ_BUCKETS ? buckets_ok(queue) : heap_ok(queue);
}

int CheckHeap(const PQueue *)
{
    return 1;
}
