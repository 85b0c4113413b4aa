/* core/pqueue.cpp: the gain queue, as bucket lists or as a binary heap.
 *
 * Ties decide results: a bucket gives its latest vertex first, and a heap entry never passes one
 * of equal key. No operation allocates after PQueueInit__ or checks its arguments.
 */
#include "core/pqueue.h"

#include <cassert>
#include <climits>
#include <cstddef>
#include <cstdlib>

#include "core/errors.h"
#include "core/memory.h"

/* Limits up to this are not worth a search for a vertex that fits. */
constexpr int UNSEARCHED_LIMIT = 1000;

static size_t bucket_count(const PQueue *queue)
{
    return 2 * static_cast<size_t>(queue->gainspan) + 1;
}

static void empty_buckets(PQueue *queue)
{
    queue->maxgain = queue->nextgain = -queue->gainspan;
    for (int gain = -queue->gainspan; gain <= queue->gainspan; gain++)
        queue->buckets[gain] = place_of(queue->maxnodes);
}

/* Initialises one queue, or two over the same vertices. */
static void init_queues(PQueue *queues, int nqueues, int maxnodes, int gainspan)
{
    const size_t n = static_cast<size_t>(maxnodes);
    for (PQueue *queue = queues; queue < queues + nqueues; queue++) {
        *queue = {};
        queue->maxnodes = maxnodes;
        queue->type = 3LL * maxnodes < gainspan ? PQ_HEAP : PQ_BUCKETS;
        if (queue->type == PQ_BUCKETS) continue;
        queue->heap = alloc_array<HeapEntry>(n, "PQueueInit: queue->heap");
        queue->locator = ismalloc__(n, PQ_NONE, "PQueueInit: queue->locator");
    }
    if (queues->type == PQ_HEAP) return;
    queues->gainspan = gainspan;
    const size_t nbuckets = bucket_count(queues);
    const size_t nodewords = (n + 1) * NODE_WORDS;
    const size_t words = nodewords + static_cast<size_t>(nqueues) * nbuckets;
    if (words > UINT_MAX) errexit__("Too many vertices for the gain queue: %d\n", maxnodes);
    unsigned *const block = alloc_array<unsigned>(words, "PQueueInit: queue->nodes");
    for (size_t v = 0; v < n; v++) block[v * NODE_WORDS] = 0;
    for (int i = 0; i < nqueues; i++) {
        PQueue *const queue = &queues[i];
        queue->gainspan = gainspan;
        queue->nodes = reinterpret_cast<BucketNode *>(block);
        queue->buckets = block + nodewords + static_cast<size_t>(i) * nbuckets + gainspan;
        queue->origin = static_cast<unsigned>(queue->buckets - block);
        empty_buckets(queue);
    }
}

void PQueueInit__(PQueue *queue, int maxnodes, int gainspan)
{
    init_queues(queue, 1, maxnodes, gainspan);
}

void init_queue_pair(PQueue queues[2], int maxnodes, int gainspan)
{
    init_queues(queues, 2, maxnodes, gainspan);
}

/* Takes every vertex out of its list. */
static void release_nodes(PQueue *queue)
{
    unsigned *const block = block_of(queue);
    for (int gain = -queue->gainspan; gain <= queue->gainspan; gain++)
        for (unsigned node = queue->buckets[gain]; node != place_of(queue->maxnodes);
             node = block[node + 1])
            block[node] = 0;
}

void PQueueReset__(PQueue *queue)
{
    if (queue->type == PQ_BUCKETS) {
        if (queue->nnodes > 0) release_nodes(queue);
        queue->nnodes = 0;
        empty_buckets(queue);
        return;
    }
    queue->nnodes = 0;
    for (int i = 0; i < queue->maxnodes; i++) queue->locator[i] = PQ_NONE;
}

void PQueueFree__(PQueue *queue)
{
    QXfree__(&queue->nodes, &queue->heap, &queue->locator, LTERM);
    queue->buckets = nullptr;
    queue->maxnodes = 0;
}

void free_queue_pair(PQueue queues[2])
{
    queues[1].nodes = nullptr; // shared
    PQueueFree__(&queues[0]);
    PQueueFree__(&queues[1]);
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
    assert(queue->type == PQ_HEAP || (-queue->gainspan <= gain && gain <= queue->gainspan));
    if (queue->type == PQ_BUCKETS) {
        bucket_insert(queue, vertex, gain);
        return 0;
    }
    queue->nnodes++;
    sift_up(queue, queue->nnodes - 1, gain, vertex);
    return 0;
}

int PQueueDelete(PQueue *queue, int vertex, int)
{
    if (queue->type == PQ_BUCKETS) {
        bucket_delete(queue, vertex);
        bucket_settle(queue);
    } else {
        heap_delete(queue, vertex);
    }
    return 0;
}

int PQueueUpdate__(PQueue *queue, int vertex, int oldgain, int newgain)
{
    if (oldgain == newgain) return 0;
    if (queue->type == PQ_BUCKETS) {
        bucket_move(queue, vertex, newgain);
        bucket_settle(queue);
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

int PQueueSeeMax__(PQueue *queue)
{
    if (queue->nnodes == 0) return PQ_NONE;
    if (queue->type == PQ_BUCKETS) return bucket_top(queue);
    return queue->heap[0].val;
}

static int fitting_in_buckets(PQueue *queue, int limit, const int *vwgt)
{
    const unsigned end = place_of(queue->maxnodes);
    const int best = bucket_top(queue);
    for (int gain = queue->maxgain; gain > 0; gain--)
        for (unsigned node = queue->buckets[gain]; node != end; node = block_of(queue)[node + 1]) {
            const int v = static_cast<int>(node / NODE_WORDS);
            if (vwgt[v] <= limit) return v;
        }
    return best;
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

int PQueueSeeConstraintMax(PQueue *queue, int limit, const int *vwgt)
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

/* Vertices that say they are in a list of this queue or of the other one of its pair. */
static int held_nodes(const PQueue *queue)
{
    int held = 0;
    for (int v = 0; v < queue->maxnodes; v++) held += bucket_holds(queue, v);
    return held;
}

static bool buckets_ok(const PQueue *queue)
{
    const unsigned *const block = block_of(queue);
    int listed = 0, highest = -queue->gainspan;
    for (int gain = -queue->gainspan; gain <= queue->gainspan; gain++) {
        unsigned slot = queue->origin + static_cast<unsigned>(gain);
        for (unsigned node; (node = block[slot]) != place_of(queue->maxnodes); slot = node + 1) {
            if (node > place_of(queue->maxnodes) || node % NODE_WORDS != 0) return false;
            if (listed++ >= queue->nnodes || block[node] != slot) return false;
            if (gain > queue->nextgain && gain < queue->maxgain) return false;
            highest = gain;
        }
    }
    return listed == queue->nnodes && held_nodes(queue) >= listed && queue->maxgain >= highest &&
           queue->nextgain <= queue->maxgain;
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
