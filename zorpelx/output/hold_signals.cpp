// SPDX-License-Identifier: MIT
/* zorpelx/output/hold_signals.cpp: signals of this thread, held back while files are written. */
#include "hold_signals.h"

#include <initializer_list>

static Held hold(const sigset_t &set)
{
    Held held;
    sigpending(&held.pending);
    pthread_sigmask(SIG_BLOCK, &set, &held.mask);
    return held;
}

Held hold_write_signals()
{
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, SIGXFSZ);
    sigaddset(&set, SIGPIPE);
    return hold(set);
}

/* A fault of the program itself is not held back: the process must not go on after it. */
Held hold_all_signals()
{
    sigset_t set;
    sigfillset(&set);
    for (const int fatal : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT, SIGTRAP})
        sigdelset(&set, fatal);
    return hold(set);
}

void release_signals(const Held &held)
{
    for (const int signal : {SIGXFSZ, SIGPIPE}) {
        if (sigismember(&held.pending, signal) == 1) continue; // not of these writes
        sigset_t set;
        sigemptyset(&set);
        sigaddset(&set, signal);
        const timespec at_once = {0, 0};
        sigtimedwait(&set, nullptr, &at_once);
    }
    pthread_sigmask(SIG_SETMASK, &held.mask, nullptr);
}
