/* SPDX-License-Identifier: MIT */
/* zorpelx/cli/machine.h: what kind of machine and program this is. */
#ifndef ZORPELX_CLI_MACHINE_H
#define ZORPELX_CLI_MACHINE_H

#include <string>

/* Nothing in it names this machine or whose it is. */
struct Machine {
    std::string system;       // "Linux"
    std::string architecture; // "x86_64"
    std::string processor;    // model, as the system calls it; "" if it does not
    unsigned processors;      // that the process may use
    long long memory_mib;
    std::string compiler; // of this program
};

Machine this_machine();

/* The time in UTC, as "2026-01-31T12:00:00Z". */
std::string time_now();

#endif
