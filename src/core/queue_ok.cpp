// SPDX-License-Identifier: MIT
/* core/queue_ok.cpp: the invariants of the gain queues, tested from scratch.
 *
 * Bucket queues are followed link by link, backwards pointers included; the count of nodes bounds
 * the walk, so a list that runs in a circle ends it. Heaps are compared with the table of places.
 */
#include "core/holds.h"
#include "core/gain_queue.h"

bool queue_ok(const BucketQueue *queue)
{
    HOLDS(Q1, 0 <= queue->nnodes && queue->nnodes <= queue->maxnodes);
    const unsigned *const block = block_of(queue), end = place_of(queue->maxnodes);
    int listed = 0, highest = -queue->gainspan;
    for (int gain = -queue->gainspan; gain <= queue->gainspan; gain++) {
        unsigned slot = queue->origin + static_cast<unsigned>(gain);
        for (unsigned node; (node = block[slot]) != end; slot = node + 1) {
            HOLDS(Q2, node < end && node % NODE_WORDS == 0 && block[node] == slot);
            HOLDS(Q3, listed < queue->nnodes); // nor does a list run in a circle
            HOLDS(Q5, gain <= queue->nextgain || gain >= queue->maxgain);
            listed++;
            highest = gain;
        }
    }
    HOLDS(Q3, listed == queue->nnodes);
    HOLDS(Q4, queue->maxgain >= highest);
    HOLDS(Q5, queue->nextgain <= queue->maxgain);
    return true;
}

bool queue_ok(const HeapQueue *queue)
{
    HOLDS(P1, 0 <= queue->nnodes && queue->nnodes <= queue->maxnodes);
    for (int i = 0; i < queue->nnodes; i++) {
        HOLDS(P2, i == 0 || queue->heap[(i - 1) / 2].key >= queue->heap[i].key);
        const int v = queue->heap[i].val;
        HOLDS(P3, 0 <= v && v < queue->maxnodes && queue->locator[v] == i);
    }
    int located = 0;
    for (int v = 0; v < queue->maxnodes; v++) located += queue->locator[v] != PQ_NONE;
    HOLDS(P4, located == queue->nnodes);
    return true;
}
