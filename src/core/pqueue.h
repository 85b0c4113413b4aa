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

constexpr int PQ_NONE = -1; // no vertex: end of a list, absent from the heap

struct BucketNode {
    int id;         // vertex; node i describes vertex i
    int prev, next; // neighbours in the bucket, PQ_NONE at its ends
};

struct HeapEntry {
    int key; // gain
    int val; // vertex
};

/*   Q1  heap form: heap[(i-1)/2].key >= heap[i].key for 0 < i < nnodes
 *   Q2  heap form: locator[heap[i].val] == i; locator is -1 for every absent vertex
 *   Q3  bucket form: maxgain is the highest non-empty bucket, -gainspan when nnodes == 0
 *   Q4  bucket form: prev and next agree, and the lists hold nnodes vertices in all
 */
struct PQueue {
    int type;          // QueueForm, fixed at creation
    int nnodes;        // vertices in the queue
    int maxnodes;      // vertices are 0..maxnodes-1; 0 once freed
    int maxgain;       // bucket form: see Q3
    int gainspan;      // bucket form: gains lie in -gainspan..gainspan
    BucketNode *nodes; // [maxnodes] bucket form
    int *buckets;      // [-gainspan..gainspan] bucket form: first vertex of each list, or PQ_NONE
    HeapEntry *heap;   // [maxnodes] heap form
    int *locator;      // [maxnodes] heap form: position in heap, or -1
};

/* Chooses the form (heap when 3 maxnodes < gainspan) and allocates; released by PQueueFree__. */
void PQueueInit__(PQueue *queue, int maxnodes, int gainspan);
void PQueueReset__(PQueue *queue); // empties, keeps the arrays
void PQueueFree__(PQueue *queue);

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

/* Tests Q1 to Q4 from scratch. */
bool pqueue_ok(const PQueue *queue);

int CheckHeap(const PQueue *queue); // a hook for debugging; checks nothing, always 1

#endif
