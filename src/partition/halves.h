/* SPDX-License-Identifier: MIT */
/* partition/halves.h: the two halves of a bisection side by side, in two threads. */
#ifndef ZORPEL_PARTITION_HALVES_H
#define ZORPEL_PARTITION_HALVES_H

#include <atomic>

#include "core/hgraph.h"
#include "core/ctrl.h"

/* A half of fewer pins takes less time than it takes to start a thread for it. */
constexpr int WORTH_A_THREAD = 1000;

/* The right half of a bisection, to be partitioned by a thread of its own. */
struct Half {
    PartCtrl ctrl; // its own: generator, timers, traces
    HGraph *graph;
    int *part;
    int k, offset;
    int cut; // out
};

/* The threads of one call, shared by the control records of all its halves. Where threads come from
 * is for the program around the engine to say.
 *   W1  idle is at most others + 1: even the caller's thread gives its place back while it waits.
 *       It may be below 0 between the end of a half and its waiter's return
 *   W2  before and after a call, idle is others: each half gave back the place that it took
 */
struct Crew {
    /* Runs work(what) in a thread, which it returns; null, and nothing is run, if none can be had.
     */
    void *(*start)(void (*work)(void *what), void *what);
    void (*await)(void *thread); // returns when its work is done

    std::atomic<int> idle; // places for threads at work that nobody has
    bool ordered;          // traces come out in the order in which one thread would print them
    int least_pins;        // a half of fewer gets no thread: WORTH_A_THREAD, less in tests
    int others;            // threads wanted besides the caller's, 0 or more
};
bool crew_ok(const Crew *crew);         // tests W1, at any moment
bool crew_at_rest_ok(const Crew *crew); // and W2, outside of a call

/* Partitions the halves of a bisection as MLRB__ does, the left one into parts offset to offset +
 * left - 1, the right one into right parts behind them, side by side if crew has an idle thread
 * and both are worth one.
 *   ctrl    in/out  afterwards as if one thread had gone through left, then right: generator,
 *                   MaxCellWgt, timers and traces
 *   cut     out     sum of the cuts of both
 * False, and nothing is done, if there is no thread to be had. Frees both halves otherwise. */
bool partition_side_by_side(PartCtrl *ctrl, HGraph *lgraph, HGraph *rgraph, int *part, int left,
                            int right, int offset, long long *cut);

#endif
