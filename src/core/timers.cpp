/* core/timers.cpp: the CPU clock and the timers of a run. */
#include "core/timers.h"

#include <sys/resource.h>

#include <cstdio>

double seconds__()
{
    rusage usage;
    getrusage(RUSAGE_SELF, &usage);
    return static_cast<double>(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) +
           static_cast<double>(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) * 1e-6;
}

void InitTimers__(PartCtrl *ctrl)
{
    for (double &timer : ctrl->timers) timer = 0;
}

void start_timer(PartCtrl *ctrl, Timer timer)
{
    if (ctrl->dbglvl & DBG_TIME) ctrl->timers[timer] -= seconds__();
}

void stop_timer(PartCtrl *ctrl, Timer timer)
{
    if (ctrl->dbglvl & DBG_TIME) ctrl->timers[timer] += seconds__();
}

void PrintTimers__(const PartCtrl *ctrl, int full)
{
    const double *const timers = ctrl->timers;
    printf("\nTiming Information ---------------------------------------------------------");
    printf("\n Multilevel: \t\t %7.3f", timers[TIME_MULTILEVEL]);
    printf("\n     Coarsening: \t\t %7.3f", timers[TIME_COARSENING]);
    printf("\n     Initial Partition: \t %7.3f", timers[TIME_INITPARTITION]);
    printf("\n     Uncoarsening: \t\t %7.3f", timers[TIME_UNCOARSENING]);
    printf("\n             Aux1: \t\t %7.3f", timers[TIME_AUX1]);
    printf("\n             Aux2: \t\t %7.3f", timers[TIME_AUX2]);
    printf("\n             Aux3: \t\t %7.3f", timers[TIME_AUX3]);
    printf("\n             Aux4: \t\t %7.3f", timers[TIME_AUX4]);
    if (full) {
        printf("\n        Refinement: \t\t\t %7.3f", timers[TIME_REFINEMENT]);
        printf("\n            Initialize: \t\t\t %7.3f", timers[TIME_INITIALIZE]);
        printf("\n            Iterate: \t\t\t\t %7.3f", timers[TIME_ITERATE]);
        printf("\n            Wrap Up: \t\t\t\t %7.3f", timers[TIME_WRAPUP]);
    }
    printf("\n Total: \t\t %7.3f", timers[TIME_TOTAL]);
    printf("\n----------------------------------------------------------------------------");
}
