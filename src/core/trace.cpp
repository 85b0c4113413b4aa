// SPDX-License-Identifier: MIT
/* core/trace.cpp: where the traces of a call go.
 *
 * All output of the engine while it partitions passes through these three: to standard output, or
 * to the file on the control record, where the traces of a half wait for their turn.
 */
#include "core/trace.h"

#include <cassert>
#include <cstdarg>

static FILE *trace_file(const PartCtrl *ctrl)
{
    return ctrl->traces != nullptr ? ctrl->traces : stdout;
}

void print_trace(const PartCtrl *ctrl, const char *format, ...)
{
    assert(format != nullptr);
    va_list args;
    va_start(args, format);
    vfprintf(trace_file(ctrl), format, args);
    va_end(args);
}

void flush_traces(const PartCtrl *ctrl)
{
    fflush(trace_file(ctrl));
}

void write_trace(const PartCtrl *ctrl, const char *text, size_t size)
{
    assert(text != nullptr || size == 0);
    fwrite(text, 1, size, trace_file(ctrl));
}
