// SPDX-License-Identifier: MIT
/* core/timers.cpp: the CPU clock and the timers of a run.
 *
 * A timer is a sum: starting subtracts the clock, stopping adds it, and stages that nest charge the
 * time to each of them. Without DBG_TIME no clock is read. With threads, a stage reads the clock of
 * its own thread.
 */
#include "core/timers.h"

#include <cassert>
#include <sys/resource.h>

#include "core/trace.h"

/* CPU time of the process, or of this thread. */
static double cpu_seconds(int whose)
{
    rusage usage;
    getrusage(whose, &usage);
    return static_cast<double>(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) +
           static_cast<double>(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) * 1e-6;
}

double seconds__()
{
    return cpu_seconds(RUSAGE_SELF);
}

/* Stages that run side by side are charged their own thread's time, so that their sums mean what
 * they do with one thread; the two that begin before the first thread and end after the last are
 * charged the time of the process. */
static double clock_of([[maybe_unused]] const PartCtrl *ctrl, [[maybe_unused]] Timer timer)
{
#ifdef RUSAGE_THREAD
    if (ctrl->crew != nullptr && timer != TIME_TOTAL && timer != TIME_MULTILEVEL)
        return cpu_seconds(RUSAGE_THREAD);
#endif
    return seconds__();
}

void InitTimers__(PartCtrl *ctrl)
{
    for (double &timer : ctrl->timers) timer = 0;
}

void start_timer(PartCtrl *ctrl, Timer timer)
{
    assert(0 <= timer && timer < NTIMERS);
    if (ctrl->dbglvl & DBG_TIME) ctrl->timers[timer] -= clock_of(ctrl, timer);
}

void stop_timer(PartCtrl *ctrl, Timer timer)
{
    assert(0 <= timer && timer < NTIMERS);
    if (ctrl->dbglvl & DBG_TIME) ctrl->timers[timer] += clock_of(ctrl, timer);
}

void PrintTimers__(const PartCtrl *ctrl, int full)
{
    const double *const timers = ctrl->timers;
    print_trace(ctrl,
                "\nTiming Information ---------------------------------------------------------");
    print_trace(ctrl, "\n Multilevel: \t\t %7.3f", timers[TIME_MULTILEVEL]);
    print_trace(ctrl, "\n     Coarsening: \t\t %7.3f", timers[TIME_COARSENING]);
    print_trace(ctrl, "\n     Initial Partition: \t %7.3f", timers[TIME_INITPARTITION]);
    print_trace(ctrl, "\n     Uncoarsening: \t\t %7.3f", timers[TIME_UNCOARSENING]);
    print_trace(ctrl, "\n             Aux1: \t\t %7.3f", timers[TIME_AUX1]);
    print_trace(ctrl, "\n             Aux2: \t\t %7.3f", timers[TIME_AUX2]);
    print_trace(ctrl, "\n             Aux3: \t\t %7.3f", timers[TIME_AUX3]);
    print_trace(ctrl, "\n             Aux4: \t\t %7.3f", timers[TIME_AUX4]);
    if (full) {
        print_trace(ctrl, "\n        Refinement: \t\t\t %7.3f", timers[TIME_REFINEMENT]);
        print_trace(ctrl, "\n            Initialize: \t\t\t %7.3f", timers[TIME_INITIALIZE]);
        print_trace(ctrl, "\n            Iterate: \t\t\t\t %7.3f", timers[TIME_ITERATE]);
        print_trace(ctrl, "\n            Wrap Up: \t\t\t\t %7.3f", timers[TIME_WRAPUP]);
    }
    print_trace(ctrl, "\n Total: \t\t %7.3f", timers[TIME_TOTAL]);
    print_trace(ctrl,
                "\n----------------------------------------------------------------------------");
}
