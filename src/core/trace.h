/* SPDX-License-Identifier: MIT */
/* core/trace.h: where the traces of a call go. */
#ifndef ZORPEL_CORE_TRACE_H
#define ZORPEL_CORE_TRACE_H

#include "core/ctrl.h"

/* Prints on ctrl->traces, or on standard output if that is null. Whether there is anything to say
 * is for the caller to know. */
void print_trace(const PartCtrl *ctrl, const char *format, ...)
    __attribute__((format(printf, 2, 3)));

/* Puts out a text [size] that was printed elsewhere. */
void write_trace(const PartCtrl *ctrl, const char *text, size_t size);

/* Passes on what was printed. */
void flush_traces(const PartCtrl *ctrl);

#endif
