// SPDX-License-Identifier: MIT
/* partition/crew_ok.cpp: the invariants of the threads of a call.
 *
 * Threads come and go while W1 is tested, so one reading of the counter has to do. W2 is for the
 * thread of the caller when it is alone.
 */
#include "core/holds.h"
#include "partition/halves.h"

bool crew_ok(const Crew *crew)
{
    HOLDS(W1, crew->others >= 0 && crew->idle.load() <= crew->others + 1);
    return true;
}

bool crew_at_rest_ok(const Crew *crew)
{
    HOLDS(W2, crew->idle.load() == crew->others);
    return crew_ok(crew);
}
