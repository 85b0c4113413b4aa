// SPDX-License-Identifier: MIT
/* core/bucket_queue.cpp: opening, emptying and searching of bucket queues.
 *
 * The operations of the move loop are inline in the header, with a picture of the block. Here is
 * what a pass does once: one block for both queues of a bisection, a node's words 0 as long as it
 * is in no list. Emptying goes through the lists, not through the nodes, as few vertices are left
 * in a queue at the end of a pass. The search for a vertex that fits takes the first of the best
 * positive gain and is content with the top otherwise.
 */
#include "core/bucket_queue.h"

#include <climits>
#include <cstddef>

#include "core/errors.h"
#include "core/memory.h"

static size_t bucket_count(const BucketQueue *queue)
{
    return 2 * static_cast<size_t>(queue->gainspan) + 1;
}

static void empty_buckets(BucketQueue *queue)
{
    queue->maxgain = queue->nextgain = -queue->gainspan;
    for (int gain = -queue->gainspan; gain <= queue->gainspan; gain++)
        queue->buckets[gain] = place_of(queue->maxnodes);
}

void open_queues(BucketQueue *queues, int nqueues, int maxnodes, int gainspan)
{
    assert((nqueues == 1 || nqueues == 2) && maxnodes >= 0 && gainspan >= 0);
    const size_t n = static_cast<size_t>(maxnodes), nodewords = (n + 1) * NODE_WORDS;
    BucketQueue empty = {};
    empty.maxnodes = maxnodes;
    empty.gainspan = gainspan;
    const size_t nbuckets = bucket_count(&empty);
    const size_t words = nodewords + static_cast<size_t>(nqueues) * nbuckets;
    if (words > UINT_MAX) errexit__("Too many vertices for the gain queue: %d\n", maxnodes);
    unsigned *const block = alloc_array<unsigned>(words, "PQueueInit: queue->nodes");
    for (size_t v = 0; v < n; v++) block[v * NODE_WORDS] = 0;
    for (int i = 0; i < nqueues; i++) {
        BucketQueue *const queue = &queues[i];
        *queue = empty;
        queue->nodes = reinterpret_cast<BucketNode *>(block);
        queue->buckets = block + nodewords + static_cast<size_t>(i) * nbuckets + gainspan;
        queue->origin = static_cast<unsigned>(queue->buckets - block);
        empty_buckets(queue);
    }
}

void close_queues(BucketQueue *queues, int nqueues)
{
    QXfree__(&queues[0].nodes, LTERM); // the block of both
    for (int i = 0; i < nqueues; i++) {
        queues[i].nodes = nullptr;
        queues[i].buckets = nullptr;
        queues[i].maxnodes = 0;
    }
}

/* Takes every vertex out of its list. */
static void release_nodes(BucketQueue *queue)
{
    unsigned *const block = block_of(queue);
    for (int gain = -queue->gainspan; gain <= queue->gainspan; gain++)
        for (unsigned node = queue->buckets[gain]; node != place_of(queue->maxnodes);
             node = block[node + 1]) {
            assert(block[node] != 0 && queue->nnodes > 0);
            block[node] = 0;
            queue->nnodes--;
        }
}

void queue_reset(BucketQueue *queue)
{
    if (queue->nnodes > 0) release_nodes(queue);
    assert(queue->nnodes == 0);
    empty_buckets(queue);
}

int queue_fitting(BucketQueue *queue, int limit, const int *vwgt)
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
