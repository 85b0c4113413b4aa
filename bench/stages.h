/* SPDX-License-Identifier: MIT */
/* bench/stages.h: seconds of each stage of a call, as zorpel-time tells them. */
#ifndef ZORPEL_BENCH_STAGES_H
#define ZORPEL_BENCH_STAGES_H

/* What a staged library exports (see stage_clock.cpp): the seconds of each stage of the last call,
 * and the stages' names; returns how many there are. */
typedef int StageSeconds(const double **seconds, const char *const **names);

/* Prints ",NAME=SECONDS" for each stage of a call, from the library's own clock if it has one, else
 * from the timers in what it printed. The stages are disjoint and add up to the call. */
void print_stages(void *library, const char *printed);

#endif
