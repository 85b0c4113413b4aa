/* SPDX-License-Identifier: MIT */
/* spare/pqueue.h: a gain queue whose form is chosen when it is made.
 *
 * The refiners choose once for a bisection and then use the forms of core/gain_queue.h directly.
 * This record is for callers that want one type and may pay for the choice at every call.
 */
#ifndef ZORPEL_SPARE_PQUEUE_H
#define ZORPEL_SPARE_PQUEUE_H

#include "core/gain_queue.h"

struct PQueue {
    int type;           // QueueForm, fixed at creation
    BucketQueue bucket; // type 1
    HeapQueue tree;     // type 2
};

/* Chooses the form and allocates; released by PQueueFree__. */
void PQueueInit__(PQueue *queue, int maxnodes, int gainspan);
void PQueueReset__(PQueue *queue); // empties, keeps the arrays
void PQueueFree__(PQueue *queue);

/* These return 0. gain is the vertex's current key, within the span; the bucket form can do without
 * it. */
int PQueueInsert__(PQueue *queue, int vertex, int gain);
int PQueueDelete(PQueue *queue, int vertex, int gain);
int PQueueUpdate__(PQueue *queue, int vertex, int oldgain, int newgain);

/* The vertex of highest gain, -1 when empty; GetMax removes it. */
int PQueueGetMax__(PQueue *queue);
int PQueueSeeMax__(PQueue *queue);

/* queue_fitting_top. */
int PQueueSeeConstraintMax(PQueue *queue, int limit, const int *vwgt);

/* The invariants of the queue's form. */
inline bool pqueue_ok(const PQueue *queue)
{
    return queue->type == PQ_BUCKETS ? queue_ok(&queue->bucket) : queue_ok(&queue->tree);
}

#endif
