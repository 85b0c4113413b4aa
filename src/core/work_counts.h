/* SPDX-License-Identifier: MIT */
/* core/work_counts.h: exact counts of the work done, in builds that ask for them.
 *
 * Seconds vary with the machine and its load; these do not. The counted build (ZORPEL_COUNT_WORK)
 * serves benchmarks and the test that guards against more work; in all others a count is nothing.
 */
#ifndef ZORPEL_CORE_WORK_COUNTS_H
#define ZORPEL_CORE_WORK_COUNTS_H

enum WorkKind {
    WORK_CANDIDATE_PINS, // pins looked at in search of partners
    WORK_CONTRACT_PINS,  // pins and incidences mapped to a coarser level
    WORK_GAIN_PINS,      // pins looked at to compute gains from scratch
    WORK_QUEUED,         // vertices queued at the start of a pass
    WORK_MOVES,          // moves of a pass, tried or final
    WORK_MOVED_NETS,     // hyperedges counted anew because a pin moved
    WORK_SCANNED_PINS,   // pins looked at in search of gains to bring up to date
    WORK_UPDATES,        // gains brought up to date
    WORK_UNDONE,         // moves undone, or made again, to get back to the best point
    WORK_KWAY_MOVES,     // moves between many parts
    WORK_KWAY_RECORDS,   // vertices whose k-way record was computed
    WORK_KINDS
};

#ifdef ZORPEL_COUNT_WORK
extern long long work_counts[WORK_KINDS];

inline void count_work(WorkKind kind, long long n)
{
    work_counts[kind] += n;
}
#else
inline void count_work(WorkKind, long long)
{
}
#endif

#endif
