/* SPDX-License-Identifier: MIT */
/* core/timers.h: the CPU clock and the timers of a run. */
#ifndef ZORPEL_CORE_TIMERS_H
#define ZORPEL_CORE_TIMERS_H

#include "core/ctrl.h"

/* CPU time of the process, user and system, in seconds. */
double seconds__();

void InitTimers__(PartCtrl *ctrl);

/* A timer is charged by subtracting the clock at the start and adding it at the end of the work,
 * under DBG_TIME only. */
void start_timer(PartCtrl *ctrl, Timer timer);
void stop_timer(PartCtrl *ctrl, Timer timer);

/* Prints the timers; full adds the breakdown of refinement. */
void PrintTimers__(const PartCtrl *ctrl, int full);

#endif
