/* SPDX-License-Identifier: MIT */
/* core/gain_queue.h: the gain queue of one side of a bisection, a max-priority queue of vertices.
 *
 * A vertex is in the queue at most once, under its current gain. Two forms serve: bucket lists, and
 * a heap where the range of gains is wide for the number of vertices. Each is a type of its own,
 * and both have the same face, which the refiners are templates over:
 *
 *     open_queues, close_queues    one queue, or two over the same vertices
 *     queue_reset                  empties it
 *     queue_holds, queue_key       whether a vertex is queued; the caller's number of it
 *     queue_insert, queue_delete, queue_update
 *     queue_top, queue_fitting     the best vertex; the best one that fits
 *     queue_ok                     the invariants
 */
#ifndef ZORPEL_CORE_GAIN_QUEUE_H
#define ZORPEL_CORE_GAIN_QUEUE_H

#include <cassert>

#include "core/bucket_queue.h"
#include "core/heap_queue.h"

enum QueueForm { PQ_BUCKETS = 1, PQ_HEAP = 2 };

/* The form for so many vertices and gains of -gainspan to gainspan. */
inline QueueForm queue_form(int maxnodes, int gainspan)
{
    assert(maxnodes >= 0 && gainspan >= 0);
    return 3LL * maxnodes < gainspan ? PQ_HEAP : PQ_BUCKETS;
}

/* Limits up to this are not worth a search for a vertex that fits. */
constexpr int UNSEARCHED_LIMIT = 1000;

/* The best vertex of positive gain with vwgt <= limit; the plain maximum when there is none or when
 * limit is at most 1000. PQ_NONE when empty. Not removed. */
template <class Queue> inline int queue_fitting_top(Queue *queue, int limit, const int *vwgt)
{
    if (limit <= UNSEARCHED_LIMIT || queue->nnodes == 0) return queue_top(queue);
    return queue_fitting(queue, limit, vwgt);
}

#endif
