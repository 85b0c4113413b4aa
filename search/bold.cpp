// SPDX-License-Identifier: MIT
/* search/bold.cpp: refinement that leaves the bounds for a while.
 *
 * With tight bounds a group of vertices that belongs elsewhere cannot move there one by one: the
 * part is full before the first of them has paid. Within wider bounds it can, and what has become
 * too heavy gives up what costs least afterwards. Often that is worse in the end: then the
 * partition is what it was.
 */
#include "search/bold.h"

#include <algorithm>
#include <cassert>

#include "core/heavy_assert.h"
#include "core/memory.h"
#include "core/vectors.h"
#include "search/rebalance.h"

constexpr double WIDER = 0.2; // of what a part may weigh: so much more for a while

static bool is_worse(const Parts *parts, int64_t excess, int64_t value)
{
    const int64_t now = excess_of(parts);
    return now != excess ? now > excess : parts->value > value;
}

/* One round within bounds that leave each part more room. */
static void refine_beyond(Parts *parts, KwayFmWork *work, Random *random)
{
    const Bounds *const own = parts->bounds;
    const size_t nparts = static_cast<size_t>(own->nparts);
    int64_t *most = alloc_array<int64_t>(nparts, "search: wider bounds");
    for (int p = 0; p < own->nparts; p++) {
        assert(own->most[p] >= 0 && own->least[p] >= 0);
        most[p] = own->most[p] + static_cast<int64_t>(WIDER * static_cast<double>(own->most[p]));
    }
    const Bounds wider = {own->nparts, most, own->least};
    parts->bounds = &wider;
    refine_kway_fm(parts, work, 1, random);
    parts->bounds = own;
    QXfree__(&most, LTERM);
}

int64_t refine_boldly(Parts *parts, KwayFmWork *work, int nrounds, Random *random)
{
    const int n = parts->graph->ncells;
    const int64_t value = parts->value, excess = excess_of(parts);
    assert(n > 0 && nrounds > 0);
    int *before = imalloc__(static_cast<size_t>(n), "search: partition before");
    icopy__(n, parts->part, before);
    refine_beyond(parts, work, random);
    rebalance(parts, work);
    refine_kway_fm(parts, work, nrounds, random);
    if (is_worse(parts, excess, value)) {
        load_parts(parts, before);
        clear_gain_cache(&work->cache);
    }
    QXfree__(&before, LTERM);
    assert(!is_worse(parts, excess, value));
    HEAVY_ASSERT(parts_ok(parts));
    return value - parts->value;
}
