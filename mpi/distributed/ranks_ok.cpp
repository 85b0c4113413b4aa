// SPDX-License-Identifier: MIT
/* mpi/distributed/ranks_ok.cpp: the predicates of what ranks count and send. */
#include "core/holds.h"
#include "distributed/ranks.h"

bool ranks_ok(const Ranks *ranks)
{
    HOLDS(A1, ranks->nranks >= 1 && ranks->rank >= 0 && ranks->rank < ranks->nranks);
    HOLDS(A1, ranks->messages >= 0 && ranks->steps >= 0 && ranks->waiting >= 0);
    HOLDS(A1, ranks->summed >= 0 && ranks->bytes >= ranks->summed);
    HOLDS(A1, ranks->nranks > 1 || (ranks->bytes == 0 && ranks->messages == 0));
    int64_t most = 0; // messages a step
    while (1 << most < ranks->nranks) most++;
    if (most < ranks->nranks - 1) most = ranks->nranks - 1;
    HOLDS(A1, ranks->messages <= most * ranks->steps);
    return true;
}

bool mail_ok(const Ranks *ranks, const std::vector<int64_t> &first, const std::vector<int64_t> &at,
             size_t nrecords)
{
    const size_t n = static_cast<size_t>(ranks->nranks);
    HOLDS(A2, first.size() == n + 1 && first[0] == 0);
    HOLDS(A2, first[n] == static_cast<int64_t>(nrecords));
    for (size_t r = 0; r < n; r++) {
        HOLDS(A2, first[r] <= first[r + 1]);
        HOLDS(A2, at.empty() || at[r] == first[r + 1]);
    }
    return true;
}
