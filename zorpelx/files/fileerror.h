/* SPDX-License-Identifier: MIT */
/* zorpelx/files/fileerror.h: how reading gives up: a status and a sentence, thrown to whoever
 * asked for the file. */
#ifndef ZORPELX_FILES_FILEERROR_H
#define ZORPELX_FILES_FILEERROR_H

#include <cstdarg>
#include <string>

struct FileError {
    int status;       // ZORPELX_*: _BAD_INPUT, _SYSTEM, _NO_MEMORY, _TIMEOUT or _CANCELLED
    std::string text; // begins with the name of the file
};

[[noreturn]] void file_error(int status, const char *format, ...)
    __attribute__((format(printf, 2, 3)));

/* Text as printf would write it. */
std::string formatted(const char *format, va_list arguments);
std::string text_of(const char *format, ...) __attribute__((format(printf, 1, 2)));

#endif
