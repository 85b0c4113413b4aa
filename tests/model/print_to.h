/* SPDX-License-Identifier: MIT */
/* tests/model/print_to.h: the traces of a twin, line by line. */
#ifndef ZORPEL_TESTS_MODEL_PRINT_TO_H
#define ZORPEL_TESTS_MODEL_PRINT_TO_H

#include <cstdarg>
#include <cstdio>
#include <string>

__attribute__((format(printf, 2, 3))) inline void print_to(std::string &text, const char *format,
                                                           ...)
{
    char line[200];
    va_list args;
    va_start(args, format);
    vsnprintf(line, sizeof line, format, args);
    va_end(args);
    text += line;
}

#endif
