// SPDX-License-Identifier: MIT
/* search/schedule.cpp: how much each preset does. docs/SEARCH.md shows what that costs and gives.
 */
#include <algorithm>
#include <climits>

#include "search/search.h"
#include "search/search_state.h"

constexpr int64_t MANY_PINS = 400000; // one partition from scratch is a good one, and takes long

const Schedule SCHEDULES[NPRESETS] = {
    {"fast", 4, 0, 1, 1, 1, 1500, 500, 2, 1, false, false, 100000},
    {"default", 6, 0, 1, 3, 2, 2000, 500, 3, 1, true, false, 1000000},
    {"best", 16, 0, 2, 24, 4, 2000, 1000, 6, 2, true, false, 20000000},
};

Schedule schedule_for(Preset preset, int64_t npins, int nparts, Objective objective)
{
    Schedule schedule = SCHEDULES[preset];
    // Where every part counts that a hyperedge touches, local search takes longer and leaves less
    // to find; in two parts there is less to find.
    const bool less = nparts == 2 || objective != Objective::cut;
    if (preset == PRESET_FAST && less) schedule.nmembers = 3;
    if (preset == PRESET_DEFAULT && less) schedule.ncombined = 2;
    if (preset == PRESET_DEFAULT && nparts == 2) schedule.rounds = 2;
    if (npins <= MANY_PINS) return schedule;
    if (preset == PRESET_FAST) schedule.nmembers = nparts == 2 ? 1 : 2;
    // Where hyperedges join what has nothing else in common, no coarsening of ours comes near a run
    // of the engine; elsewhere that is as good as any other member, and takes half of the time.
    schedule.nengine = nparts == 2;
    schedule.roomy = nparts > 2;
    return schedule;
}

Schedule widened(const Schedule *schedule, int nmembers)
{
    Schedule wide = *schedule;
    wide.nmembers = nmembers;
    wide.ncombined = static_cast<int>(std::min<int64_t>(
        int64_t{schedule->ncombined} * nmembers / schedule->nmembers, INT_MAX - int64_t{nmembers}));
    wide.batch = std::clamp(nmembers / 4, schedule->batch, MOST_BATCH);
    return wide;
}
