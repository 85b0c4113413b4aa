// SPDX-License-Identifier: MIT
/* bench/stages.cpp: takes the stages from a library, or from the timers that it printed.
 *
 * Printed timers overlap and are told to the millisecond. Which of matching's work they charge is
 * the library's own affair, so all of coarsening but contraction counts as matching.
 */
#include "stages.h"

#include <dlfcn.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

/* The number after a label, 0 if it is not there. */
static double printed_seconds(const char *printed, const char *label)
{
    const char *const found = strstr(printed, label);
    return found == nullptr ? 0 : strtod(found + strlen(label), nullptr);
}

static void print_printed_stages(const char *printed)
{
    const double coarsening = printed_seconds(printed, " Coarsening:");
    const double contraction = printed_seconds(printed, " Aux2:");
    const double initial = printed_seconds(printed, " Initial Partition:");
    const double uncoarsening = printed_seconds(printed, " Uncoarsening:");
    const double total = printed_seconds(printed, " Total:");
    printf(",matching=%.3f,contraction=%.3f,initial=%.3f,refinement=%.3f,other=%.3f",
           coarsening - contraction, contraction, initial, uncoarsening,
           total - coarsening - initial - uncoarsening);
}

void print_stages(void *library, const char *printed)
{
    const auto seconds_of =
        reinterpret_cast<StageSeconds *>(dlsym(library, "zorpel_stage_seconds"));
    if (seconds_of == nullptr) {
        print_printed_stages(printed);
        return;
    }
    const double *seconds;
    const char *const *names;
    const int n = seconds_of(&seconds, &names);
    for (int i = 0; i < n; i++) printf(",%s=%.6f", names[i], seconds[i]);
}
