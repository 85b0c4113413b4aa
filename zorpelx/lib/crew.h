/* SPDX-License-Identifier: MIT */
/* zorpelx/lib/crew.h: threads for the engine in a child process. */
#ifndef ZORPELX_LIB_CREW_H
#define ZORPELX_LIB_CREW_H

#include "partition/halves.h"

/* Prepares this process, which belongs to the engine alone, for nthreads threads, and makes a crew
 * that adds nthreads - 1 to the calling one. */
Crew make_crew(int nthreads, bool ordered);

#endif
