/* SPDX-License-Identifier: MIT */
/* search/search_state.h: a search at work, and what its steps have made of it so far.
 *
 * A step makes a Member: a part for each cluster of the reduction. It is completed by the islands,
 * measured, shown to the caller if it is the best so far, and taken into the pool, in the order of
 * the jobs' numbers.
 */
#ifndef ZORPEL_SEARCH_SEARCH_STATE_H
#define ZORPEL_SEARCH_SEARCH_STATE_H

#include <cstddef>
#include <mutex>

#include "search/pool.h"
#include "search/search.h"
#include "search/task.h"

constexpr int MOST_BATCH = 16; // combinations at a time, however wide the schedule

struct Search {
    const FlatHypergraph *flat;
    const SearchOptions *options;
    const Reduction *reduction;
    SearchTask task;
    Pool pool;
    int njobs, alljobs; // that gave a result, and all of the schedule
    int next;           // number of the next job; those that nobody has made yet have one too
    Found best;         // published
    int *whole;         // [nvtxs] for publishing
    std::mutex publishing;
    bool stopped; // by the fleet
    SearchReport report;
};

inline size_t at_least_one(int n)
{
    return n > 0 ? static_cast<size_t>(n) : 1;
}

/* A member without parts yet. */
Member new_member(const Search *search);

/* Sets the member's objective and its excess. */
void measure(const Search *search, Member *member);

/* Tries to bring member within the bounds by moves of all clusters, islands included. */
void mend(const Search *search, Member *member);

/* Gives the islands parts, the heaviest first, and sees to the bounds. */
void complete(const Search *search, Member *member);

/* Shows member to the caller, as the best so far. */
void publish(Search *search, const Member *member, const char *step);

/* Shows member to the caller at once if it is better than what was shown. Threads may call it. */
void publish_if_better(Search *search, const Member *member, const char *step);

/* Takes member, whose part it owns from now on, into the pool if it is good enough. */
void take_in(Search *search, Member member, SearchStep step, double seconds);

/* The steps' report as it is now, for the caller. */
void show_report(const Search *search);

/* The graph of all clusters: islands have empty ranges at the end of the incidence. The caller
 * frees incptr; all else is the reduction's. */
HGraph with_islands(const Reduction *reduction);

/* Of a clock that never goes back. */
double search_seconds();

#endif
