/* core/pqueue.h: the gain queue of one side of a bisection, a max-priority queue of vertices.
 *
 * A vertex is in the queue at most once, under its current gain; callers pass that gain to delete
 * or update it. The bucket form keeps one list per gain, last in, first out; the heap form serves
 * gain ranges that are wide for the number of vertices.
 * Source: Fiduccia & Mattheyses, DAC 1982 (buckets); Hagen, Huang & Kahng, TCAD 16(10), 1997 (why
 *         last in, first out); Williams, Algorithm 232: Heapsort, CACM 7(6), 1964 (heap).
 */
#ifndef ZORPEL_CORE_PQUEUE_H
#define ZORPEL_CORE_PQUEUE_H

enum QueueForm { PQ_BUCKETS = 1, PQ_HEAP = 2 };

constexpr int PQ_NONE = -1; // no vertex

/* One vertex of the bucket form; 16 bytes, so that an update touches one cache line a vertex. */
struct BucketNode {
    unsigned slot; // which int of the block refers to this node: a bucket or another node's next
    int next;      // next vertex in the bucket, maxnodes at its end; node i describes vertex i
    int key;       // for the caller: the refiners keep the gain here, queued or not,
    int first;     // and the start of the vertex's hyperedges
};

struct HeapEntry {
    int key; // gain
    int val; // vertex
};

/*   Q1  heap form: heap[(i-1)/2].key >= heap[i].key for 0 < i < nnodes
 *   Q2  heap form: locator[heap[i].val] == i; locator is -1 for every absent vertex
 *   Q3  bucket form: maxgain is the highest non-empty bucket, -gainspan when nnodes == 0
 *   Q4  bucket form: slot and next agree, and the lists hold nnodes vertices in all
 *   Q5  bucket form: nextgain <= maxgain, and the buckets between the two are empty
 */
struct PQueue {
    int type;          // QueueForm, fixed at creation
    int nnodes;        // vertices in the queue
    int maxnodes;      // vertices are 0..maxnodes-1; 0 once freed
    int maxgain;       // bucket form: see Q3
    int nextgain;      // bucket form: where to look when the best bucket gets empty, see Q5
    int gainspan;      // bucket form: gains lie in -gainspan..gainspan
    BucketNode *nodes; // [maxnodes + 1] bucket form; the last one takes the writes to no vertex
    int *buckets;      // [-gainspan..gainspan] bucket form: first vertex of each list, or maxnodes;
                       // in one block with the nodes, which the queues of a pair share
    HeapEntry *heap;   // [maxnodes] heap form
    int *locator;      // [maxnodes] heap form: position in heap, or -1
};

/* Chooses the form (heap when 3 maxnodes < gainspan) and allocates; released by PQueueFree__. */
void PQueueInit__(PQueue *queue, int maxnodes, int gainspan);
void PQueueReset__(PQueue *queue); // empties, keeps the arrays
void PQueueFree__(PQueue *queue);

/* Two queues over the same vertices, each of which is in at most one: same form, shared nodes. */
void init_queue_pair(PQueue queues[2], int maxnodes, int gainspan);
void free_queue_pair(PQueue queues[2]);

/* These return 0. gain is the vertex's current key, within the span. */
int PQueueInsert__(PQueue *queue, int vertex, int gain);
int PQueueDelete(PQueue *queue, int vertex, int gain);
int PQueueUpdate__(PQueue *queue, int vertex, int oldgain, int newgain);

/* The vertex of highest gain, -1 when empty; GetMax removes it. */
int PQueueGetMax__(PQueue *queue);
int PQueueSeeMax__(const PQueue *queue);

/* The best vertex of positive gain with vwgt <= limit; the plain maximum when there is none or
 * when limit is at most 1000. Not removed. -1 when empty. */
int PQueueSeeConstraintMax(const PQueue *queue, int limit, const int *vwgt);

/* The bucket form's operations, inline for the refiners' inner loops. A node knows the int that
 * refers to it, and the end of a list refers to a node of its own, so that linking and unlinking
 * are the same four stores wherever in a list the vertex is: no branch to mispredict. */
inline void bucket_link(PQueue *queue, int vertex, int gain)
{
    BucketNode *const nodes = queue->nodes;
    int *const bucket = &queue->buckets[gain];
    const int head = *bucket;
    nodes[vertex].slot = static_cast<unsigned>(bucket - reinterpret_cast<int *>(nodes));
    nodes[vertex].next = head;
    nodes[head].slot = static_cast<unsigned>(&nodes[vertex].next - reinterpret_cast<int *>(nodes));
    *bucket = vertex;
}

inline void bucket_unlink(PQueue *queue, int vertex)
{
    BucketNode *const nodes = queue->nodes;
    const unsigned slot = nodes[vertex].slot;
    const int next = nodes[vertex].next;
    reinterpret_cast<int *>(nodes)[slot] = next;
    nodes[next].slot = slot;
}

inline bool bucket_empty(const PQueue *queue, int gain)
{
    return queue->buckets[gain] == queue->maxnodes;
}

/* Lowers maxgain, whose bucket is empty, to the highest non-empty one. */
inline void bucket_settle(PQueue *queue)
{
    int gain = queue->nextgain;
    if (queue->nnodes == 0)
        gain = -queue->gainspan;
    else
        while (bucket_empty(queue, gain)) gain--;
    queue->maxgain = queue->nextgain = gain;
}

/* Notes that a vertex has come into a bucket above nextgain. A gain that leaps to the top and is
 * gone a moment later thus costs no walk over the buckets below it. */
inline void bucket_raise(PQueue *queue, int gain)
{
    if (gain > queue->maxgain) {
        queue->nextgain = queue->maxgain;
        queue->maxgain = gain;
    } else if (gain < queue->maxgain) {
        queue->nextgain = gain;
    }
}

inline void bucket_insert(PQueue *queue, int vertex, int gain)
{
    bucket_link(queue, vertex, gain);
    queue->nnodes++;
    if (gain > queue->nextgain) bucket_raise(queue, gain);
}

inline void bucket_delete(PQueue *queue, int vertex, int gain)
{
    bucket_unlink(queue, vertex);
    queue->nnodes--;
    if (gain == queue->maxgain && bucket_empty(queue, gain)) bucket_settle(queue);
}

/* Moves the vertex to the head of another bucket. Both ends are linked before maxgain is looked
 * for, so the search never goes below the new bucket. */
inline void bucket_move(PQueue *queue, int vertex, int oldgain, int newgain)
{
    bucket_unlink(queue, vertex);
    bucket_link(queue, vertex, newgain);
    if (newgain > queue->nextgain) bucket_raise(queue, newgain);
    if (oldgain == queue->maxgain && bucket_empty(queue, oldgain)) bucket_settle(queue);
}

/* Tests Q1 to Q5 from scratch. */
bool pqueue_ok(const PQueue *queue);

int CheckHeap(const PQueue *queue); // a hook for debugging; checks nothing, always 1

#endif
