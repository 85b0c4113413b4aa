// SPDX-License-Identifier: MIT
/* zorpelx/cli/bounds.cpp: what each part may weigh. */
#include "bounds.h"

#include <algorithm>
#include <cmath>

#include "advice.h"

constexpr long double CLOSE = 1e-12L; // of a product: its last bits are nobody's loss
constexpr long double CLOSER = 1e-9L; // of a share of the weight, which is divided first

/* The average of each part: rounded up it is what the upper bound is taken of. */
static std::vector<long double> averages(int64_t nparts, const std::vector<double> &capacities,
                                         int64_t total)
{
    long double sum = 0;
    for (const double capacity : capacities) sum += capacity;
    std::vector<long double> list;
    for (int64_t p = 0; p < nparts; p++)
        list.push_back(capacities.empty()
                           ? static_cast<long double>(total) / static_cast<long double>(nparts)
                           : static_cast<long double>(total) *
                                 (capacities[static_cast<size_t>(p)] / sum));
    return list;
}

PartBounds search_bounds(int64_t nparts, double epsilon, double least,
                         const std::vector<double> &capacities, int64_t total)
{
    PartBounds bounds;
    for (const long double average : averages(nparts, capacities, total)) {
        const long double rounded = std::ceil(average * (1 - CLOSER));
        const long double most = rounded * (1 + static_cast<long double>(epsilon) / 100);
        bounds.most.push_back(
            static_cast<int64_t>(std::min(most * (1 + CLOSE), static_cast<long double>(total))));
        const long double low = average * (1 - static_cast<long double>(least) / 100 - CLOSER);
        const int64_t wanted = least < 0 ? 0 : static_cast<int64_t>(std::ceil(low));
        bounds.least.push_back(std::clamp<int64_t>(wanted, 0, bounds.most.back()));
    }
    return bounds;
}

PartBounds engine_bounds(int64_t nparts, int ubfactor, int64_t total, bool fixed)
{
    const PartRanges limits = part_ranges(nparts, ubfactor, total);
    if (!fixed && (nparts == 2 || nparts > MOST_POLISHED)) return {limits.least, limits.most};
    const size_t n = static_cast<size_t>(nparts);
    return {std::vector<int64_t>(n, limits.lightest), std::vector<int64_t>(n, limits.heaviest)};
}

int64_t part_outside(const PartBounds &bounds, const std::vector<int64_t> &weight)
{
    for (size_t p = 0; p < weight.size(); p++)
        if (weight[p] < bounds.least[p] || weight[p] > bounds.most[p])
            return static_cast<int64_t>(p);
    return -1;
}
