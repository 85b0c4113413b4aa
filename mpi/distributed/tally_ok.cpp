// SPDX-License-Identifier: MIT
/* mpi/distributed/tally_ok.cpp: the predicate of a table of sums. */
#include "core/holds.h"
#include "distributed/tally.h"

#include <algorithm>
#include <bit>

bool tally_ok(const Tally *tally)
{
    const size_t size = tally->keys.size();
    HOLDS(V1, std::has_single_bit(size) && size > tally->taken.size());
    HOLDS(V1, tally->sums.size() == size && tally->marks.size() == size);
    std::vector<char> seen(size, 0);
    for (const int place : tally->taken) {
        HOLDS(V2, place >= 0 && static_cast<size_t>(place) < size);
        HOLDS(V2, seen[static_cast<size_t>(place)]++ == 0);
        HOLDS(V2, tally->keys[static_cast<size_t>(place)] >= 0);
    }
    const auto used =
        std::count_if(tally->keys.begin(), tally->keys.end(), [](int64_t key) { return key >= 0; });
    HOLDS(V2, static_cast<size_t>(used) == tally->taken.size());
    for (const int place : tally->taken)
        HOLDS(V3, tally_place(tally, tally->keys[static_cast<size_t>(place)]) ==
                      static_cast<size_t>(place));
    return true;
}
