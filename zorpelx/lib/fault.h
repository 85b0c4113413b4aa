/* SPDX-License-Identifier: MIT */
/* zorpelx/lib/fault.h: what went wrong: a status and a sentence. */
#ifndef ZORPELX_LIB_FAULT_H
#define ZORPELX_LIB_FAULT_H

#include <exception>
#include <new>
#include <string>

#include "zorpelx.h"

struct Fault {
    int status = ZORPELX_OK;
    std::string sentence;

    explicit operator bool() const { return status != ZORPELX_OK; }
};

/* The fault of this status, its sentence made as printf() would. */
[[gnu::format(printf, 2, 3)]] Fault fault(int status, const char *format, ...);

/* Copies a sentence into message [ZORPELX_MESSAGE_SIZE], cut if it is too long; or does nothing if
 * message is null. */
void put_message(char *message, const std::string &sentence);

/* Thrown where a call is to end now. */
struct Stopped {
    Fault why;
};

/* Runs work, which returns a Fault, for a caller in C: no exception of the library's or of C++'s
 * own passes; anything else that a callback threw does. */
template <class Work> int reporting_to(char *message, const Work &work)
{
    Fault outcome;
    try {
        outcome = work();
        put_message(message, outcome.sentence);
    } catch (const Stopped &stopped) {
        outcome.status = stopped.why.status;
        put_message(message, stopped.why.sentence);
    } catch (const std::bad_alloc &) {
        outcome.status = ZORPELX_NO_MEMORY;
        put_message(message, "Memory ran out.");
    } catch (const std::exception &unexpected) {
        outcome.status = ZORPELX_SYSTEM;
        put_message(message, unexpected.what());
    }
    return outcome.status;
}

#endif
