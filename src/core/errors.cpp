// SPDX-License-Identifier: MIT
/* core/errors.cpp: the fatal exit and checked file opening.
 *
 * Every unrecoverable condition ends here, with one sentence on standard error and status 0.
 */
#include "core/errors.h"

#include <cassert>
#include <cstdarg>
#include <cstdlib>

void errexit__(const char *format, ...)
{
    assert(format != nullptr);
    va_list args;
    va_start(args, format);
    flockfile(stderr); // another thread may fail at the same time
    vfprintf(stderr, format, args);
    fprintf(stderr, "\n");
    fflush(stderr);
    funlockfile(stderr);
    va_end(args);
    exit(0);
}

FILE *QXfopen__(const char *name, const char *mode, const char *text)
{
    assert(name != nullptr && mode != nullptr && text != nullptr);
    FILE *const file = fopen(name, mode);
    if (file != nullptr) return file;
    perror(text);     // first, before anything else may change the reason
    char detail[512]; // for a debugger only, never shown
    snprintf(detail, sizeof detail, "file: %s, mode: %s, [%s]", name, mode, text);
    exit(0);
}

void QXfclose__(FILE *file)
{
    assert(file != nullptr);
    fclose(file);
}
