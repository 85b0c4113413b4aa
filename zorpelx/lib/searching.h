/* SPDX-License-Identifier: MIT */
/* zorpelx/lib/searching.h: the search in a start's own process, and what it leaves there. */
#ifndef ZORPELX_LIB_SEARCHING_H
#define ZORPELX_LIB_SEARCHING_H

#include <cstdint>
#include <vector>

#include "fault.h"
#include "limits.h"
#include "partition/halves.h"
#include "search/search.h"

/* What a start that is at work has to show, in memory that both processes see. A partition is
 * written into the buffer that is not the latest, and the count raised last, so that the latest is
 * whole whenever the process ends.
 *   B1  with published > 0 the buffer (published - 1) % 2 holds a whole partition
 */
struct Board {
    int done;      // the start ended as it should
    int published; // partitions so far
    int jobs, alljobs;
    int64_t objective, excess; // of the latest
    char step[16];             // what found it
    SearchReport report;
};

inline bool is_search(const zorpelx_options &options)
{
    return options.epsilon >= 0;
}

/* The bounds of a search's parts, see zorpelx_part_bounds(). */
std::vector<Limits> part_bounds(int nparts, double epsilon, double least, const double *capacities,
                                int64_t total);

/* Searches by checked options and publishes every better partition.
 *   channel  socket over which the jobs are shared; -1: they are not
 *   parts    [2 x nvtxs] out: the buffers of board */
void search_and_publish(const zorpelx_hypergraph &hypergraph, const zorpelx_options &options,
                        const std::vector<Limits> &limits, int seed, Crew *crew, int threads,
                        int channel, Board *board, int *parts);

#endif
