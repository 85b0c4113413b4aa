// SPDX-License-Identifier: MIT
/* core/work_counts.cpp: the counted build's own two symbols.
 *
 * Only libzorpel_counted is compiled with ZORPEL_COUNT_WORK; for every other library this file is
 * empty. The names are in the order of the enumeration in the header.
 */
#include "core/work_counts.h"

#ifdef ZORPEL_COUNT_WORK
long long work_counts[WORK_KINDS];

/* The count of each kind so far with its name; returns how many kinds there are. For programs that
 * load the counted library. */
extern "C" [[gnu::visibility("default")]] int zorpel_work_counts(const long long **counts,
                                                                 const char *const **names)
{
    static const char *const kinds[WORK_KINDS] = {
        "candidate_pins", "contract_pins", "gain_pins", "queued",     "moves",       "moved_nets",
        "scanned_pins",   "updates",       "undone",    "kway_moves", "kway_records"};
    *counts = work_counts;
    *names = kinds;
    return WORK_KINDS;
}
#endif
