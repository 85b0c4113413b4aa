/* SPDX-License-Identifier: MIT */
/* core/bucket_queue.h: the gain queue of one side as bucket lists, one list per gain.
 *
 * A list gives its latest vertex first. A queue, or two queues over the same vertices, live in one
 * block of words. Links are places in that block, counted in words from its start:
 *
 *     place 0        4              4 n          4 n + 4       + 2 G + 1      + 2 G + 1
 *           +--------+----- - - ----+------------+-------------+--------------+
 *           | node 0 | node 1 . . . |  node n    | buckets     | buckets      |
 *           |        |              |  (nobody)  | -G .. 0 .. G| of the other |
 *           +--------+----- - - ----+------------+-------------+--------------+
 *           slot next key first                        ^ origin: place of bucket 0
 *
 * A node knows the word that refers to it (slot), and the last node of every list refers to node
 * n, which describes nobody. So linking and unlinking are the same four stores wherever in a list
 * the vertex is: there is no branch to mispredict.
 * Source: Fiduccia & Mattheyses, DAC 1982; Hagen, Huang & Kahng, TCAD 16(10), 1997 (why last in,
 *         first out).
 */
#ifndef ZORPEL_CORE_BUCKET_QUEUE_H
#define ZORPEL_CORE_BUCKET_QUEUE_H

#include <cassert>

constexpr int PQ_NONE = -1; // no vertex

/* One vertex; 16 bytes, so that an update touches one cache line a vertex. */
struct BucketNode {
    unsigned slot; // place of the word that refers to this node: a bucket or another node's next;
                   // 0, which is neither, while the vertex is in no queue
    unsigned next; // place of the next node in the bucket, that of node maxnodes at its end
    int key;       // for the caller: the refiners keep the gain here, queued or not,
    int first;     // and the start of the vertex's hyperedges
};
constexpr unsigned NODE_WORDS = sizeof(BucketNode) / sizeof(unsigned);

/*   Q1  0 <= nnodes <= maxnodes
 *   Q2  each list is linked both ways and ends at node maxnodes
 *   Q3  the lists hold nnodes vertices in all
 *   Q4  no vertex is above bucket maxgain, which is not empty, or -gainspan when all buckets are;
 *       after the inline operations it may be empty until queue_settle
 *   Q5  nextgain <= maxgain, and the buckets between the two are empty
 */
struct BucketQueue {
    int nnodes;        // vertices in the queue
    int maxnodes;      // vertices are 0..maxnodes-1; 0 once freed
    int maxgain;       // see Q4
    int nextgain;      // where to look when the best bucket gets empty, see Q5
    int gainspan;      // gains lie in -gainspan..gainspan
    unsigned origin;   // place of bucket 0
    BucketNode *nodes; // [maxnodes + 1] the block; the last node takes the writes to no vertex
    unsigned *buckets; // [-gainspan..gainspan] place of each list's first node, or of node maxnodes
};

/* Opens nqueues queues, 1 or 2, over the same vertices, each of which is in at most one of them. */
void open_queues(BucketQueue *queues, int nqueues, int maxnodes, int gainspan);
void close_queues(BucketQueue *queues, int nqueues);

/* Empties the queue, keeps the arrays. */
void queue_reset(BucketQueue *queue);

/* The first vertex, from the highest gain down, of positive gain and vwgt <= limit; the best vertex
 * if there is none. Not removed; the queue is not empty. */
int queue_fitting(BucketQueue *queue, int limit, const int *vwgt);

/* Tests Q1 to Q5 from scratch. */
bool queue_ok(const BucketQueue *queue);

inline unsigned *block_of(const BucketQueue *queue)
{
    return reinterpret_cast<unsigned *>(queue->nodes);
}

inline unsigned place_of(int vertex)
{
    assert(vertex >= 0);
    return NODE_WORDS * static_cast<unsigned>(vertex);
}

inline bool is_vertex_of(const BucketQueue *queue, int vertex)
{
    return 0 <= vertex && vertex < queue->maxnodes;
}

inline bool is_gain_of(const BucketQueue *queue, int gain)
{
    return -queue->gainspan <= gain && gain <= queue->gainspan;
}

/* The first vertex of a bucket, maxnodes if it is empty. */
inline int bucket_head(const BucketQueue *queue, int gain)
{
    assert(is_gain_of(queue, gain));
    return static_cast<int>(queue->buckets[gain] / NODE_WORDS);
}

inline bool bucket_empty(const BucketQueue *queue, int gain)
{
    assert(is_gain_of(queue, gain));
    return queue->buckets[gain] == place_of(queue->maxnodes);
}

/* Whether the vertex is in the queue, or in the other one of its pair. */
inline bool queue_holds(const BucketQueue *queue, int vertex)
{
    assert(is_vertex_of(queue, vertex));
    return queue->nodes[vertex].slot != 0;
}

/* The caller's number of a vertex, queued or not. */
inline int &queue_key(BucketQueue *queue, int vertex)
{
    assert(is_vertex_of(queue, vertex));
    return queue->nodes[vertex].key;
}

inline int queue_key(const BucketQueue *queue, int vertex)
{
    assert(is_vertex_of(queue, vertex));
    return queue->nodes[vertex].key;
}

inline void bucket_link(BucketQueue *queue, int vertex, int gain)
{
    assert(is_vertex_of(queue, vertex) && is_gain_of(queue, gain));
    unsigned *const block = block_of(queue);
    const unsigned node = place_of(vertex), slot = queue->origin + static_cast<unsigned>(gain);
    const unsigned head = block[slot];
    assert(head != node && head <= place_of(queue->maxnodes));
    block[node] = slot;
    block[node + 1] = head;
    block[head] = node + 1;
    block[slot] = node;
}

/* Takes the vertex out of its list; its slot stays. */
inline void bucket_unlink(BucketQueue *queue, int vertex)
{
    assert(queue_holds(queue, vertex));
    unsigned *const block = block_of(queue);
    const unsigned node = place_of(vertex), slot = block[node], next = block[node + 1];
    assert(block[slot] == node && next <= place_of(queue->maxnodes) && next != node);
    block[slot] = next;
    block[next] = slot;
}

/* Lowers maxgain to the highest non-empty bucket. The operations below leave that to the next look
 * at the best vertex: until then the bucket may have been filled again. */
inline void queue_settle(BucketQueue *queue)
{
    if (!bucket_empty(queue, queue->maxgain)) return;
    int gain = queue->nextgain;
    if (queue->nnodes == 0)
        gain = -queue->gainspan;
    else
        while (bucket_empty(queue, gain)) gain--;
    assert(is_gain_of(queue, gain) && gain <= queue->nextgain);
    queue->maxgain = queue->nextgain = gain;
}

/* The vertex of highest gain of a queue that is not empty. */
inline int bucket_top(BucketQueue *queue)
{
    assert(queue->nnodes > 0);
    queue_settle(queue);
    assert(!bucket_empty(queue, queue->maxgain));
    return bucket_head(queue, queue->maxgain);
}

/* The vertex of highest gain, PQ_NONE when empty; not removed. */
inline int queue_top(BucketQueue *queue)
{
    return queue->nnodes == 0 ? PQ_NONE : bucket_top(queue);
}

/* Notes that a vertex has come into a bucket above nextgain. A gain that leaps to the top and is
 * gone a moment later thus costs no walk over the buckets below it. */
inline void bucket_raise(BucketQueue *queue, int gain)
{
    assert(gain > queue->nextgain);
    if (gain > queue->maxgain) {
        queue->nextgain = queue->maxgain;
        queue->maxgain = gain;
    } else if (gain < queue->maxgain) {
        queue->nextgain = gain;
    }
}

inline void queue_insert(BucketQueue *queue, int vertex, int gain)
{
    assert(!queue_holds(queue, vertex) && queue->nnodes < queue->maxnodes);
    bucket_link(queue, vertex, gain);
    queue->nnodes++;
    if (gain > queue->nextgain) bucket_raise(queue, gain);
    assert(gain <= queue->maxgain && queue_holds(queue, vertex));
}

inline void queue_delete(BucketQueue *queue, int vertex)
{
    assert(queue->nnodes > 0);
    bucket_unlink(queue, vertex);
    queue->nodes[vertex].slot = 0;
    queue->nnodes--;
}

/* Moves the vertex, which is in this queue, to the head of the bucket of newgain. */
inline void queue_update(BucketQueue *queue, int vertex, [[maybe_unused]] int oldgain, int newgain)
{
    assert(oldgain != newgain && is_gain_of(queue, oldgain));
    bucket_unlink(queue, vertex);
    bucket_link(queue, vertex, newgain);
    if (newgain > queue->nextgain) bucket_raise(queue, newgain);
    assert(newgain <= queue->maxgain && bucket_head(queue, newgain) == vertex);
}

#endif
