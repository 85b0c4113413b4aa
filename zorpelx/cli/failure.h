/* SPDX-License-Identifier: MIT */
/* zorpelx/cli/failure.h: exit statuses of zorpelx, and how a command gives up. */
#ifndef ZORPELX_CLI_FAILURE_H
#define ZORPELX_CLI_FAILURE_H

#include <string>
#include <vector>

#include "fileerror.h" // text_of, formatted

enum Status : int {
    STATUS_OK = 0,
    STATUS_FAILED = 1,     // the run failed, or what was to be verified is not so
    STATUS_USAGE = 2,      // the command line is wrong
    STATUS_BAD_INPUT = 3,  // a file does not hold what it should
    STATUS_INFEASIBLE = 4, // no partition can be within the balance asked for, or none was found
    STATUS_IO = 5,         // a file cannot be opened, read or written
    STATUS_MEMORY = 6,     // out of memory, or past the cap
    STATUS_TIMEOUT = 124   // the deadline passed; the best finished start was delivered if any
};                         // after a signal 128 and its number, hence the type

/* What the statuses mean, those of signals included; without a full stop. */
struct StatusRow {
    const char *number;
    const char *meaning;
};
extern const std::vector<StatusRow> STATUS_ROWS;

/* Thrown to give up: caught by main alone, which prints the text and ends with the status. */
struct Failure {
    Status status;
    std::string text;
};

/* What the exception at hand means; called in a catch block only. */
Failure current_failure();

/* Prints "zorpelx: ", the text and a newline on standard error, after what standard output holds.
 * What a terminal would obey is shown escaped, but for newlines. */
void tell(const std::string &text);

[[noreturn]] void fail(Status status, const char *format, ...)
    __attribute__((format(printf, 2, 3)));

#endif
