// SPDX-License-Identifier: MIT
/* zorpelx/files/fileerror.cpp: formatted texts and errors. */
#include "fileerror.h"

#include <cstdio>

std::string formatted(const char *format, va_list arguments)
{
    va_list again;
    va_copy(again, arguments);
    const int length = vsnprintf(nullptr, 0, format, again);
    va_end(again);
    std::string text(length > 0 ? static_cast<size_t>(length) : 0, '\0');
    vsnprintf(text.data(), text.size() + 1, format, arguments);
    return text;
}

std::string text_of(const char *format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    std::string text = formatted(format, arguments);
    va_end(arguments);
    return text;
}

void file_error(int status, const char *format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    std::string text = formatted(format, arguments);
    va_end(arguments);
    throw FileError{status, std::move(text)};
}
