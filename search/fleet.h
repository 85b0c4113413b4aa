/* SPDX-License-Identifier: MIT */
/* search/fleet.h: who makes the jobs of a batch.
 *
 * A batch is a range of numbered jobs. What a job gives depends on its number and on what the
 * batches before it gave, so it does not matter who makes it: threads of this process, others, or a
 * run of last week that has left its results.
 */
#ifndef ZORPEL_SEARCH_FLEET_H
#define ZORPEL_SEARCH_FLEET_H

#include <cstdint>

/* What a job gives. */
struct JobResult {
    int job;
    int64_t objective, excess;
    int *part; // [nclusters] part of each cluster
};

enum FleetTurn {
    FLEET_MAKE, // make the job whose number is in the result
    FLEET_TAKE, // take the result: somebody else has made it
    FLEET_OVER, // every job of the batch is made, here or by others, and was taken
    FLEET_STOP, // no more is to be made: the search ends with what it has
};

/* Every job of a batch is made or taken once in a process; one that is both counts once.
 *   open  opens the batch of jobs first to first + n - 1; all its turns are over before the next.
 *         An independent batch needs nothing of those before it.
 *   turn  what to do next; several threads call it at once, and it may wait. result->part is room
 *         for a result that is taken.
 *   made  hands over what was made after FLEET_MAKE; several threads call it at once */
struct Fleet {
    void *user;
    void (*open)(void *user, int first, int n, bool independent, int nclusters);
    FleetTurn (*turn)(void *user, JobResult *result);
    void (*made)(void *user, const JobResult *result);
};

#endif
