/* refine/fm_work.h: the records that the refiners of a bisection share (refine/, and callers of
 * refine_fm_again, which keep them).
 *
 * While a refiner runs, the bisection lives in compact records of its own: a byte per vertex for
 * its side, 16 for gain and queue links, and per hyperedge 8 bytes for what a move changes and 16
 * for what stays. The graph's where keeps the bisection at the start of the pass.
 *   F1  counts of e hold the number of its pins on each side
 *   F2  and the exclusive or of its pins on side 0; with pinxor, that of all its pins, one that is
 *       alone on its side is known without a look at the list
 *   F3  and the number of its pins that are queued, under the rules that keep it
 *   F4  a queued vertex is in the queue of its side (or in the only queue) under its gain
 */
#ifndef ZORPEL_REFINE_FM_WORK_H
#define ZORPEL_REFINE_FM_WORK_H

#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "core/heavy_assert.h"
#include "core/hgraph.h"
#include "core/numbers.h"
#include "core/pqueue.h"
#include "partition/ctrl.h"
#include "refine/relabel.h"

/* What changes is packed in a word, so that counting a move reads and writes eight bytes of memory
 * a hyperedge: from the low end 32 bits of F2's exclusive or, then a byte each for the pins on side
 * 0, those on side 1 and the queued ones. A byte's top bit stays free for comparisons. With more
 * pins than that the top bit is set, and the low 32 bits are the hyperedge's place among the large
 * ones. The bit below it marks hyperedges with fixed pins. */
using PackedCounts = uint64_t;
constexpr int PACKED_SIZE = HEAVY_ASSERTS ? 5 : 127;  // most pins of a hyperedge in packed form
constexpr int PACKED_NPINS = 32, PACKED_NQUEUED = 48; // bit positions
constexpr PackedCounts PACKED_LARGE = PackedCounts{1} << 63, PACKED_FIXED = PackedCounts{1} << 62;

/* Counts of a hyperedge of any size. */
struct NetCounts {
    int npins[2]; // pins on each side
    int nqueued;  // pins in a queue
    int xor0;     // exclusive or of the pins on side 0
};

/* Work of one refinement; the arrays live as long as the call. */
struct FmWork {
    int nqueues;          // 2, or 1 where one side gives vertices
    PQueue queues[2];     // one per side, sharing nodes
    uint8_t *side;        // [ncells] of each vertex, 0 or 1
    FmNet *nets;          // [nnets] the copy's, if there is one
    PackedCounts *counts; // [nnets]
    NetCounts *large;     // [nlarge] of hyperedges of more than PACKED_SIZE pins
    int nlarge;
    int *startgain;   // [ncells] gains at the start of the pass
    bool restarted;   // counts and gains are those of the best point of the last pass
    bool single;      // a hyperedge has one pin: gains and cut drift as its pin moves
    int *gain;        // [ncells] heap form: gains; in bucket form they are the nodes' keys
    Relabelled copy;  // what is refined, if not the level itself
    int *swaps;       // [ncells] the vertex of each step
    int *perm;        // [ncells] order of queueing
    int pwgts[2];     // weight of each side
    int initpwgts[2]; // at the start of the pass
    int minpwgts[2];
    int initcut, newcut;              // at the start of the pass, after the moves so far
    int nswaps;                       // steps of this pass
    int mincut, mincutorder, mindiff; // best point: cut, its last step (-1: the start), |weights|
};

/* Lower bounds of the two sides' weights. The precisions differ on purpose. */
inline void set_weight_bounds(const PartCtrl *ctrl, const int pwgts[2], int minpwgts[2])
{
    const int total = pwgts[0] + pwgts[1];
    minpwgts[0] = trunc_int((ctrl->splitratio - ctrl->ubfactor) * static_cast<float>(total));
    minpwgts[1] = trunc_int(
        (1.0 - static_cast<double>(ctrl->splitratio) - static_cast<double>(ctrl->ubfactor)) *
        total);
}

inline bool within_bounds(const int pwgts[2], const int minpwgts[2])
{
    return pwgts[0] >= minpwgts[0] && pwgts[1] >= minpwgts[1];
}

/* How far a side is above its bound; saturates. */
inline int room_of(int pwgt, int minpwgt)
{
    return clamp_int(static_cast<long long>(pwgt) - minpwgt);
}

inline int weight_difference(const int pwgts[2])
{
    return abs(pwgts[0] - pwgts[1]);
}

inline int side_of(const FmWork *work, int v)
{
    return work->side[v];
}

inline bool is_large(PackedCounts counts)
{
    return counts >= PACKED_LARGE;
}

/* The low 32 bits: an exclusive or, or a place among the large hyperedges. */
inline int low_counts(PackedCounts counts)
{
    return static_cast<int>(static_cast<uint32_t>(counts));
}

/* The counts of hyperedge e, unpacked. */
inline NetCounts net_counts(const FmWork *work, int e)
{
    const PackedCounts counts = work->counts[e];
    const int low = low_counts(counts);
    if (is_large(counts)) [[unlikely]]
        return work->large[low];
    return {{static_cast<int>(counts >> PACKED_NPINS & 255),
             static_cast<int>(counts >> (PACKED_NPINS + 8) & 255)},
            static_cast<int>(counts >> PACKED_NQUEUED & 255),
            low};
}

/* The forms of the gain queue are what the templates below are made for. Where a vertex's gain is
 * kept depends on them. */
template <bool Heap> inline int &gain_of(FmWork *work, int v)
{
    return Heap ? work->gain[v] : work->queues[0].nodes[v].key;
}

/* Whether v is in the queue of this index, the only one that it may be in. */
template <bool Heap> inline bool is_queued(const FmWork *work, int index, int v)
{
    return Heap ? work->queues[index].locator[v] != PQ_NONE : bucket_holds(&work->queues[0], v);
}

/* Calls passes, a template over the queue's form. */
template <typename Passes> inline void with_form(const FmWork *work, Passes passes)
{
    if (work->queues[0].type == PQ_HEAP)
        passes.template operator()<true>();
    else
        passes.template operator()<false>();
}

/* Puts v on side to, with its weight. */
inline void change_side(const HGraph *graph, FmWork *work, int v, int from, int to)
{
    work->side[v] = static_cast<uint8_t>(to);
    work->pwgts[to] += graph->cellwgt[v];
    work->pwgts[from] -= graph->cellwgt[v];
}

/* Allocates the work arrays for nqueues queues; the work's form is queues[0].type. Returns the
 * level to refine: graph, or its relabelled copy. */
const HGraph *open_work(HGraph *graph, FmWork *work, int nqueues);
void close_work(FmWork *work, int nqueues);

/* The number in the original level of a vertex of the refined one, and back. */
inline int original_of(const FmWork *work, int v)
{
    return work->copy.vertex != nullptr ? work->copy.vertex[v] : v;
}
inline int refined_of(const FmWork *work, int v)
{
    return work->copy.label != nullptr ? work->copy.label[v] : v;
}

/* Takes sides and side weights from the original graph's where; nobody is queued. */
void load_sides(const HGraph *graph, FmWork *work);

/* Writes the sides into the original graph's where, weights into pwgts and cut into mincut. */
void store_sides(HGraph *graph, const FmWork *work);

/* Computes counts, gains and the cut, left in mincut, from the sides, in O(pins); nqueued as if
 * every free vertex were queued. */
template <bool Heap> void compute_gains(const HGraph *graph, FmWork *work);

/* Writes gains and pin counts into the original graph's arrays, where callers expect them exact. */
template <bool Heap> void store_gains(HGraph *graph, FmWork *work);

/* Keeps the gains as those of the pass that starts. */
template <bool Heap> void save_start(const HGraph *graph, FmWork *work);

/* After a pass that moved every free vertex: takes gains, counts and sides back to its start, then
 * makes the moves up to the best point again: they are few where a pass has many, and nothing needs
 * computing from scratch. */
template <bool Heap>
void restart_at_best(const HGraph *original, const HGraph *graph, FmWork *work);

/* The cut by the pin counts. */
int cut_of_counts(const HGraph *graph, const FmWork *work);

/* Empties the queues and makes the present bisection, of cut work->mincut, the best point. */
void reset_pass(FmWork *work, int nqueues);

/* Fills the queues with the free vertices in a new random order, each into that of its side; with
 * onlyside 0 or 1 only those of that side, all into the first. */
template <bool Heap>
void fill_queues(Generator *random, const HGraph *graph, FmWork *work, int onlyside);

/* Tests F1 to F4 from scratch; exact: gains of all vertices, but nqueued is not kept. */
bool work_ok(const HGraph *graph, FmWork *work, bool exact);

/* Records the point that step nswaps reached if it is the best: within bounds and a smaller cut or,
 * with BalanceBreaksTies, an equal cut and better balance. */
template <bool BalanceBreaksTies> inline bool note_best(FmWork *work)
{
    if (work->newcut > work->mincut || !within_bounds(work->pwgts, work->minpwgts)) return false;
    const int diff = weight_difference(work->pwgts);
    if (work->newcut == work->mincut && (!BalanceBreaksTies || diff >= work->mindiff)) return false;
    work->mincut = work->newcut;
    work->mincutorder = work->nswaps;
    work->mindiff = diff;
    return true;
}

#endif
