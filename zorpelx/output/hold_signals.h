/* SPDX-License-Identifier: MIT */
/* zorpelx/output/hold_signals.h: signals of this thread, held back while files are written. */
#ifndef ZORPELX_OUTPUT_HOLD_SIGNALS_H
#define ZORPELX_OUTPUT_HOLD_SIGNALS_H

#include <csignal>

/* What held_signals() found. */
struct Held {
    sigset_t mask, pending;
};

/* Holds back what the system sends to a thread that writes past its file size limit or into a
 * pipe without a reader, so that the write fails instead. */
Held hold_write_signals();

/* Holds back everything that can be. */
Held hold_all_signals();

/* Restores the mask; signals of a failed write that have come since are taken away first. */
void release_signals(const Held &held);

#endif
