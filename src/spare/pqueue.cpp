// SPDX-License-Identifier: MIT
/* spare/pqueue.cpp: the gain queue whose form is chosen when it is made.
 *
 * Ties decide results: a bucket gives its latest vertex first, and a heap entry never passes one
 * of equal key. No operation allocates after PQueueInit__.
 */
#include "spare/pqueue.h"

/* Calls operation on the queue in its form. */
template <typename Operation> static int in_form(PQueue *queue, Operation operation)
{
    return queue->type == PQ_BUCKETS ? operation(&queue->bucket) : operation(&queue->tree);
}

void PQueueInit__(PQueue *queue, int maxnodes, int gainspan)
{
    *queue = {};
    queue->type = queue_form(maxnodes, gainspan);
    in_form(queue, [=](auto *form) {
        open_queues(form, 1, maxnodes, gainspan);
        return 0;
    });
}

void PQueueReset__(PQueue *queue)
{
    in_form(queue, [](auto *form) {
        queue_reset(form);
        return 0;
    });
}

void PQueueFree__(PQueue *queue)
{
    in_form(queue, [](auto *form) {
        close_queues(form, 1);
        return 0;
    });
}

int PQueueInsert__(PQueue *queue, int vertex, int gain)
{
    return in_form(queue, [=](auto *form) {
        queue_insert(form, vertex, gain);
        return 0;
    });
}

int PQueueDelete(PQueue *queue, int vertex, int)
{
    return in_form(queue, [=](auto *form) {
        queue_delete(form, vertex);
        queue_settle(form);
        return 0;
    });
}

int PQueueUpdate__(PQueue *queue, int vertex, int oldgain, int newgain)
{
    if (oldgain == newgain) return 0;
    return in_form(queue, [=](auto *form) {
        queue_update(form, vertex, oldgain, newgain);
        queue_settle(form);
        return 0;
    });
}

int PQueueGetMax__(PQueue *queue)
{
    const int vertex = PQueueSeeMax__(queue);
    if (vertex != PQ_NONE) PQueueDelete(queue, vertex, 0);
    return vertex;
}

int PQueueSeeMax__(PQueue *queue)
{
    return in_form(queue, [](auto *form) { return queue_top(form); });
}

int PQueueSeeConstraintMax(PQueue *queue, int limit, const int *vwgt)
{
    return in_form(queue, [=](auto *form) { return queue_fitting_top(form, limit, vwgt); });
}
