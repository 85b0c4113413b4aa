/* SPDX-License-Identifier: MIT */
/* faults/fault_points.h: failures injected one at a time, each in a child process.
 *
 * At every point where a call could fail the process forks: the child sees the failure and runs on
 * to its end, the parent judges that end and goes on as if nothing had been. One run of the work
 * thus tries the 1st, 2nd, 3rd ... failure.
 */
#ifndef ZORPEL_TESTS_FAULT_POINTS_H
#define ZORPEL_TESTS_FAULT_POINTS_H

#include <string>

// How a child ended.
struct Ending {
    bool signalled;
    int status;          // exit status, or the signal
    std::string message; // what it printed on standard error
};

// Between arm and disarm calls fail; judge sees each child's end in the parent.
void arm_faults(bool all_later, void (*judge)(const Ending &ending));

/* In the parent: ends the section. In a child that survived its fault: ends it with SURVIVED. */
void disarm_faults();
constexpr int SURVIVED = 77;

/* Whether the call at hand must fail. Forks in the parent of an armed section. */
bool fault_here();

// Points met since the program began.
long count_points();

/* Reports a broken promise; counted. */
void complain(const char *format, ...) __attribute__((format(printf, 1, 2)));
int count_complaints();

#endif
