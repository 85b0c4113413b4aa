/* SPDX-License-Identifier: MIT */
/* zorpelx/lib/records.h: records of programs built with this or an older header.
 *
 * A record starts with its size. Later versions add fields at the end, so a smaller size means an
 * older header: what it lacks is at its default, and nothing beyond it is read or written. A size
 * that is larger than this library's, or no version's, is refused.
 */
#ifndef ZORPELX_LIB_RECORDS_H
#define ZORPELX_LIB_RECORDS_H

#include "fault.h"

/* Fills the options of this library's size from those of the caller's. */
Fault adopt_options(const zorpelx_options *given, zorpelx_options *known);

/* Whether the size of a record of the caller's is one that a version of the header had. */
bool size_is_known(const zorpelx_result &result);
bool size_is_known(const zorpelx_quality &quality);
bool size_is_known(const zorpelx_stats &stats);

/* Copies a record of this library's size into one of the caller's, whose size stays. */
void hand_back(const zorpelx_result &known, zorpelx_result *result);
void hand_back(const zorpelx_quality &known, zorpelx_quality *quality);
void hand_back(const zorpelx_stats &known, zorpelx_stats *stats);

#endif
