/* SPDX-License-Identifier: MIT */
/* tests/unit/lopsided.h: an order of keys that is hard on the quicksort. */
#ifndef ZORPEL_TESTS_UNIT_LOPSIDED_H
#define ZORPEL_TESTS_UNIT_LOPSIDED_H

#include <numeric>
#include <utility>
#include <vector>

/* An order of n keys of which each partition splits off the 24 smallest: the 23 first of the range,
 * and its middle as the pivot, which ends up behind them. */
inline std::vector<int> lopsided_order(int n)
{
    std::vector<int> place(static_cast<size_t>(n)), a(place.size());
    std::iota(place.begin(), place.end(), 0); // of what now stands at i
    int next = 0;
    const auto assign = [&](int i) {
        a[static_cast<size_t>(place[static_cast<size_t>(i)])] = next++;
    };
    while (n > next + 100) {
        const int low = next, middle = low + (n - 1 - low) / 2;
        while (next < low + 23) assign(next);
        assign(middle);
        std::swap(place[static_cast<size_t>(low + 23)], place[static_cast<size_t>(middle)]);
    }
    while (next < n) assign(next);
    return a;
}

#endif
