/* SPDX-License-Identifier: MIT */
/* model/torture_check.h: makes the call of a case and judges what comes back.
 *
 * The figures of a partition are counted here, from the case's own lists, by code that shares
 * nothing with the engine.
 */
#ifndef ZORPEL_TESTS_TORTURE_CHECK_H
#define ZORPEL_TESTS_TORTURE_CHECK_H

#include <string>
#include <vector>

#include "torture_case.h"

// What a call left behind.
struct Outcome {
    std::vector<int> part;
    int edgecut;
    std::string output; // what it printed
};

// The figures of a partition, in 64 bits.
struct Figures {
    long long cut, soed;
    double absorption;
    std::vector<long long> weight, degree; // [nparts]
};

Figures count_figures(const Case &c, const std::vector<int> &part, int nparts);

/* Makes the call and collects what it prints. With a crew a partition by bisection is made by its
 * threads, with a generator of its own. */
Outcome make_call(const Case &c, struct Crew *crew = nullptr);

/* Makes the calls that a case needs and judges them; an empty text when all is well. */
std::string check_case(const Case &c);

/* Judges an outcome alone: parts, fixed vertices, alarms, cut, bounds. */
std::string check_outcome(const Case &c, const Outcome &outcome);

#endif
