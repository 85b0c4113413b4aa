/* SPDX-License-Identifier: MIT */
/* core/errors.h: the fatal exit and checked file opening. */
#ifndef ZORPEL_CORE_ERRORS_H
#define ZORPEL_CORE_ERRORS_H

#include <cstdio>

/* Prints the formatted message and a newline on standard error and ends the process. The status
 * is 0 on purpose, for errors as for success: scripts have always read the message. */
[[noreturn]] void errexit__(const char *format, ...) __attribute__((format(printf, 1, 2)));

/* Opens a file; when that fails prints text and the system's reason and ends the process. */
FILE *QXfopen__(const char *name, const char *mode, const char *text);

void QXfclose__(FILE *file);

#endif
