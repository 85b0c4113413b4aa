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

/* One vertex of the bucket form; 16 bytes, so that an update touches one cache line a vertex. Links
 * are places in the block that nodes and buckets share, counted in words from its start: node i,
 * which describes vertex i, is at place 4 i. */
struct BucketNode {
    unsigned slot; // place of the word that refers to this node: a bucket or another node's next;
                   // 0, which is neither, while the vertex is not in the queue
    unsigned next; // place of the next node in the bucket, that of node maxnodes at its end
    int key;       // for the caller: the refiners keep the gain here, queued or not,
    int first;     // and the start of the vertex's hyperedges
};
constexpr unsigned NODE_WORDS = sizeof(BucketNode) / sizeof(unsigned);

struct HeapEntry {
    int key; // gain
    int val; // vertex
};

/*   Q1  heap form: heap[(i-1)/2].key >= heap[i].key for 0 < i < nnodes
 *   Q2  heap form: locator[heap[i].val] == i; locator is -1 for every absent vertex
 *   Q3  bucket form: no vertex is above bucket maxgain, which is not empty, or -gainspan when all
 *       are; after the inline operations it may be empty until bucket_settle
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
    unsigned origin;   // bucket form: place of bucket 0
    BucketNode *nodes; // [maxnodes + 1] bucket form; the last one takes the writes to no vertex
    unsigned *buckets; // [-gainspan..gainspan] bucket form: place of each list's first node, or of
                       // node maxnodes; in one block with the nodes, which a pair of queues shares
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

/* These return 0. gain is the vertex's current key, within the span; the bucket form can do without
 * it. */
int PQueueInsert__(PQueue *queue, int vertex, int gain);
int PQueueDelete(PQueue *queue, int vertex, int gain);
int PQueueUpdate__(PQueue *queue, int vertex, int oldgain, int newgain);

/* The vertex of highest gain, -1 when empty; GetMax removes it. */
int PQueueGetMax__(PQueue *queue);
int PQueueSeeMax__(PQueue *queue);

/* The best vertex of positive gain with vwgt <= limit; the plain maximum when there is none or
 * when limit is at most 1000. Not removed. -1 when empty. */
int PQueueSeeConstraintMax(PQueue *queue, int limit, const int *vwgt);

/* The bucket form's operations, inline for the refiners' inner loops. A node knows the word that
 * refers to it, and the end of a list refers to a node of its own, so that linking and unlinking
 * are the same four stores wherever in a list the vertex is: no branch to mispredict. */
inline unsigned *block_of(const PQueue *queue)
{
    return reinterpret_cast<unsigned *>(queue->nodes);
}

inline unsigned place_of(int vertex)
{
    return NODE_WORDS * static_cast<unsigned>(vertex);
}

/* The first vertex of a bucket, maxnodes if it is empty. */
inline int bucket_head(const PQueue *queue, int gain)
{
    return static_cast<int>(queue->buckets[gain] / NODE_WORDS);
}

/* Whether the vertex is in the queue, or in the other one of its pair. */
inline bool bucket_holds(const PQueue *queue, int vertex)
{
    return queue->nodes[vertex].slot != 0;
}

inline void bucket_link(PQueue *queue, int vertex, int gain)
{
    unsigned *const block = block_of(queue);
    const unsigned node = place_of(vertex), slot = queue->origin + static_cast<unsigned>(gain);
    const unsigned head = block[slot];
    block[node] = slot;
    block[node + 1] = head;
    block[head] = node + 1;
    block[slot] = node;
}

inline void bucket_unlink(PQueue *queue, int vertex)
{
    unsigned *const block = block_of(queue);
    const unsigned node = place_of(vertex), slot = block[node], next = block[node + 1];
    block[slot] = next;
    block[next] = slot;
}

inline bool bucket_empty(const PQueue *queue, int gain)
{
    return queue->buckets[gain] == place_of(queue->maxnodes);
}

/* Lowers maxgain to the highest non-empty bucket. An update leaves that to the next look at the
 * best vertex: until then the bucket may have been filled again. */
inline void bucket_settle(PQueue *queue)
{
    if (!bucket_empty(queue, queue->maxgain)) return;
    int gain = queue->nextgain;
    if (queue->nnodes == 0)
        gain = -queue->gainspan;
    else
        while (bucket_empty(queue, gain)) gain--;
    queue->maxgain = queue->nextgain = gain;
}

/* The vertex of highest gain of a queue that is not empty. */
inline int bucket_top(PQueue *queue)
{
    bucket_settle(queue);
    return bucket_head(queue, queue->maxgain);
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

inline void bucket_delete(PQueue *queue, int vertex)
{
    bucket_unlink(queue, vertex);
    queue->nodes[vertex].slot = 0;
    queue->nnodes--;
}

/* Moves the vertex to the head of another bucket. */
inline void bucket_move(PQueue *queue, int vertex, int newgain)
{
    bucket_unlink(queue, vertex);
    bucket_link(queue, vertex, newgain);
    if (newgain > queue->nextgain) bucket_raise(queue, newgain);
}

/* Tests Q1 to Q5 from scratch. */
bool pqueue_ok(const PQueue *queue);

int CheckHeap(const PQueue *queue); // a hook for debugging; checks nothing, always 1

#endif
