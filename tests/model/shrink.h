/* SPDX-License-Identifier: MIT */
/* tests/model/shrink.h: makes a failing sequence short enough to read. */
#ifndef ZORPEL_TESTS_MODEL_SHRINK_H
#define ZORPEL_TESTS_MODEL_SHRINK_H

#include <cstddef>
#include <vector>

/* Drops stretches of a sequence that fails, ever shorter ones, as long as the rest still fails.
 * The result fails, and no single step of it can be left out. */
template <class Step, class Fails>
std::vector<Step> shrink(std::vector<Step> steps, const Fails &fails)
{
    using Offset = typename std::vector<Step>::difference_type;
    for (size_t length = (steps.size() + 1) / 2; length > 0;) {
        bool dropped = false;
        for (size_t at = 0; at + length <= steps.size();) {
            std::vector<Step> rest = steps;
            const auto first = rest.begin() + static_cast<Offset>(at);
            rest.erase(first, first + static_cast<Offset>(length));
            if (fails(rest)) {
                steps = rest;
                dropped = true;
            } else {
                at += length;
            }
        }
        if (length > 1)
            length /= 2;
        else if (!dropped)
            length = 0;
    }
    return steps;
}

#endif
